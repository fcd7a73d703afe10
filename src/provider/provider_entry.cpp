// The face the library shows to the CIM object manager: the three factories,
// their static management-interface objects and function tables, the queue
// start-up, the operations that do no work, and the debug hook.
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "platform/zoning_platform.h"
#include "provider/zone_provider.h"

extern "C" {
// Broker of the latest factory call; the last call wins.
const CMPIBroker *_broker = nullptr;
// Messaging response queue; -1 until init_mts opens it.
int mts_q = -1;
}

namespace {

constexpr int kInterfaceVersion = 100;
constexpr const char *kDebugMarker = "/etc/cim_debug_provider_zone";

const CMPIInstanceMIFT instance_table = {
    kInterfaceVersion,
    kInterfaceVersion,
    "instanceZoneProvider",
    zone_Provider_Cleanup,
    zone_Provider_EnumInstanceNames,
    zone_Provider_EnumInstances,
    zone_Provider_GetInstance,
    zone_Provider_CreateInstance,
    zone_Provider_ModifyInstance,
    zone_Provider_DeleteInstance,
    zone_Provider_ExecQuery,
};

const CMPIAssociationMIFT association_table = {
    kInterfaceVersion,         kInterfaceVersion,
    "associationZoneProvider", zone_Provider_AssociationCleanup,
    zone_Provider_Associators, zone_Provider_AssociatorNames,
    zone_Provider_References,  zone_Provider_ReferenceNames,
};

const CMPIMethodMIFT method_table = {
    kInterfaceVersion,           kInterfaceVersion,          "methodZoneProvider",
    zone_Provider_MethodCleanup, zone_Provider_InvokeMethod,
};

// The MI objects are static and never freed; their function tables are
// constant, so the casts below only satisfy the 1.0 field types.
CMPIInstanceMI instance_mi = {nullptr, const_cast<CMPIInstanceMIFT *>(&instance_table)};
CMPIAssociationMI association_mi = {nullptr, const_cast<CMPIAssociationMIFT *>(&association_table)};
CMPIMethodMI method_mi = {nullptr, const_cast<CMPIMethodMIFT *>(&method_table)};

constexpr CMPIStatus status_of(CMPIrc rc) {
    return CMPIStatus{rc, nullptr};
}

}  // namespace

extern "C" {

void initialize(void) {
    mutex_lock();
    if (init_mts(&mts_q) < 0) std::printf("get_using_cmi done init mts response q with error\n");
    mutex_unlock();
}

// Each factory records the broker, (re)opens the queue and hands out its
// static object; it never fails. The context and status are not touched.
CMPIInstanceMI *ZoneProvider_Create_InstanceMI(const CMPIBroker *broker, const CMPIContext *,
                                               CMPIStatus *) {
    _broker = broker;
    initialize();
    return &instance_mi;
}

CMPIAssociationMI *ZoneProvider_Create_AssociationMI(const CMPIBroker *broker, const CMPIContext *,
                                                     CMPIStatus *) {
    _broker = broker;
    initialize();
    return &association_mi;
}

CMPIMethodMI *ZoneProvider_Create_MethodMI(const CMPIBroker *broker, const CMPIContext *,
                                           CMPIStatus *) {
    _broker = broker;
    initialize();
    return &method_mi;
}

// The cleanups release nothing: the queue, the broker and the static objects
// stay valid, so a later factory call works as the first one did.
CMPIStatus zone_Provider_Cleanup(CMPIInstanceMI *, const CMPIContext *, CMPIBoolean) {
    return status_of(CMPI_RC_OK);
}

CMPIStatus zone_Provider_AssociationCleanup(CMPIAssociationMI *, const CMPIContext *, CMPIBoolean) {
    return status_of(CMPI_RC_OK);
}

CMPIStatus zone_Provider_MethodCleanup(CMPIMethodMI *, const CMPIContext *, CMPIBoolean) {
    return status_of(CMPI_RC_OK);
}

// Zoning objects are created only through the zone service's methods.
CMPIStatus zone_Provider_CreateInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                        const CMPIObjectPath *, const CMPIInstance *) {
    return status_of(CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIStatus zone_Provider_ModifyInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                        const CMPIObjectPath *, const CMPIInstance *,
                                        const char **) {
    return status_of(CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIStatus zone_Provider_ExecQuery(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                   const CMPIObjectPath *, const char *, const char *) {
    return status_of(CMPI_RC_ERR_NOT_SUPPORTED);
}

// With the marker file present, stops the whole process (the caller holds
// the platform mutex) until a debugger or SIGCONT continues it.
void debug_attach_hook(void) {
    struct stat marker;
    if (stat(kDebugMarker, &marker) != 0) {
        std::printf("\nstat fail for %s\n", kDebugMarker);
        return;
    }
    std::printf("Attach GDB to process id %d \n", static_cast<int>(getpid()));
    std::fflush(stdout);
    kill(getpid(), SIGSTOP);
}

void print_char_array_zp(const char **list) {
    if (list == nullptr) return;
    for (int i = 0; list[i] != nullptr; ++i)
        std::printf("In Zone Provider:: Property [ %d ] = %s \n", i, list[i]);
}

}  // extern "C"
