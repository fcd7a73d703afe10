// The zone service of each VSAN (VORNA_ZoneService), through which the
// zoning methods are invoked, and the hosted service link that ties it to
// the system hosting it (VORNA_HostedService). Both are listed from the VSAN
// table; VSAN 4094 is never listed. The instance contents are the builders'.
#include <cstdlib>

#include <cmpimacs.h>

#include "platform/zoning_platform.h"
#include "provider/platform_records.h"
#include "provider/zone_provider.h"

namespace {

constexpr const char *kZoneServiceClass = "VORNA_ZoneService";
constexpr const char *kHostedServiceClass = "VORNA_HostedService";
// The switch's reserved VSAN: it carries no zone service of its own.
constexpr int kUnlistedVsan = 4094;
constexpr int kDomainEntryOfVsan = 1;
constexpr const char *kZoneServiceNotFound = "could not find or construct instance";

const char *text_or_empty(const CMPIString *s) {
    if (s == nullptr) return "";
    const char *chars = CMGetCharPtr(s);
    return chars != nullptr ? chars : "";
}

bool is_null_instance(const CMPIInstance *instance) {
    return instance == nullptr || instance->hdl == nullptr;
}

void deliver(const CMPIResult *result, const CMPIInstance *instance) {
    if (instance != nullptr) CMReturnInstance(result, instance);
}

void deliver(const CMPIResult *result, const CMPIObjectPath *path) {
    if (path != nullptr) CMReturnObjectPath(result, path);
}

// Calls fn with every entry of the VSAN table, in table order, except the
// unlisted VSAN. -1 when the table can't be read.
template <typename Fn>
int for_each_listed_vsan(int queue, Fn &&fn) {
    int count = 0;
    VsanEntry *entries = nullptr;
    if (vsan_cim_get_all_vsanEntry(queue, &count, &entries) != 0) return -1;
    const zone::Owned<VsanEntry> table(entries);
    for (int i = 0; entries != nullptr && i < count; ++i)
        if (entries[i].vsan != kUnlistedVsan) fn(entries[i]);
    return 0;
}

// Lists one hosted service per VSAN that the domain manager knows.
template <typename Fn>
int for_each_hosted_vsan(int queue, Fn &&fn) {
    return for_each_listed_vsan(queue, [&](const VsanEntry &entry) {
        DomainEntry domain{};
        if (dm_cim_get_dmEntry(queue, entry.vsan, kDomainEntryOfVsan, &domain) == 0)
            fn(entry, domain);
    });
}

// The VSAN number of a zone service key: decimal, as strtol reads it.
int vsan_of_key(const char *key) {
    return static_cast<int>(std::strtol(key != nullptr ? key : "", nullptr, 10));
}

void refuse_zone_service(CMPIStatus *st, const CMPIBroker *broker) {
    if (st == nullptr) return;
    st->rc = CMPI_RC_ERR_FAILED;
    st->msg = broker != nullptr ? CMNewString(broker, kZoneServiceNotFound, nullptr) : nullptr;
}

// The reference that a key of the request carries; null for any other value.
const CMPIObjectPath *reference_of(const CMPIData &value) {
    return value.type == CMPI_ref ? value.value.ref : nullptr;
}

void set_reference(CMPIInstance *instance, const char *name, const CMPIObjectPath *ref) {
    CMPIValue value{};
    value.ref = const_cast<CMPIObjectPath *>(ref);
    CMSetProperty(instance, name, &value, CMPI_ref);
}

}  // namespace

extern "C" {

int get_zone_service_helper(const char *, int mode, const CMPIResult *result, const char **props,
                            const char *ns, int queue, const CMPIBroker *broker) {
    return for_each_listed_vsan(queue, [&](const VsanEntry &entry) {
        if (mode == 1)
            deliver(result, zone_service_build_instance(kZoneServiceClass, ns, entry.vsan, props,
                                                        queue, broker));
        else
            deliver(result, zone_service_fill_reference(kZoneServiceClass, ns, entry.vsan, broker));
    });
}

int get_zone_service_all_instances(const char *cls, const CMPIResult *result, const char *ns,
                                   int queue, const CMPIBroker *broker) {
    return get_zone_service_helper(cls, 1, result, nullptr, ns, queue, broker);
}

int get_zone_service_keys(const char *cls, const CMPIResult *result, const char *ns, int queue,
                          const CMPIBroker *broker) {
    return get_zone_service_helper(cls, 0, result, nullptr, ns, queue, broker);
}

// Serves any VSAN the table accepts, 4094 included.
int get_zone_service_instance(const char *, const char *key, const CMPIResult *result,
                              const char **props, const char *ns, int queue,
                              const CMPIBroker *broker, CMPIStatus *st) {
    const int vsan = vsan_of_key(key);
    if (vsan_cim_check_vsan_index(vsan) != 0) {
        refuse_zone_service(st, broker);
        return -1;
    }
    const CMPIInstance *instance =
        zone_service_build_instance(kZoneServiceClass, ns, vsan, props, queue, broker);
    if (is_null_instance(instance))
        refuse_zone_service(st, broker);
    else
        CMReturnInstance(result, instance);
    return 0;
}

int get_hosted_service_all_instances(const char *, const CMPIResult *result, const char *ns,
                                     int queue, const char **props, const CMPIBroker *broker) {
    return for_each_hosted_vsan(queue, [&](const VsanEntry &entry, const DomainEntry &domain) {
        deliver(result, hosted_service_build_instance(kHostedServiceClass, ns, &entry, &domain,
                                                      props, broker));
    });
}

int get_hosted_service_keys(const char *, const CMPIResult *result, const char *ns, int queue,
                            const CMPIBroker *broker) {
    return for_each_hosted_vsan(queue, [&](const VsanEntry &entry, const DomainEntry &domain) {
        deliver(result,
                hosted_service_fill_reference(kHostedServiceClass, ns, &entry, &domain, broker));
    });
}

// The link is rebuilt from the two references the client sent, without
// asking the platform whether they name anything.
int get_hosted_service_instance(const CMPIObjectPath *op, const CMPIResult *result, const char **,
                                int, const CMPIBroker *broker, CMPIStatus *st) {
    const CMPIObjectPath *antecedent = nullptr;
    const CMPIObjectPath *dependent = nullptr;
    const unsigned int key_count = CMGetKeyCount(op, nullptr);
    for (unsigned int i = 0; i < key_count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData value = CMGetKeyAt(op, i, &name, st);
        char key_name[zone::kKeyTextSize];
        zone::copy_key_text(key_name, text_or_empty(name));
        if (zone::same_name(key_name, "Antecedent"))
            antecedent = reference_of(value);
        else if (zone::same_name(key_name, "Dependent"))
            dependent = reference_of(value);
    }

    if (broker == nullptr) return 0;
    CMPIObjectPath *path = CMNewObjectPath(broker, text_or_empty(CMGetNameSpace(op, nullptr)),
                                           kHostedServiceClass, nullptr);
    if (path == nullptr) return 0;
    if (const char *host = getCSName(); host != nullptr) CMSetHostname(path, host);
    CMPIInstance *instance = CMNewInstance(broker, path, nullptr);
    if (instance == nullptr) return 0;
    set_reference(instance, "Antecedent", antecedent);
    set_reference(instance, "Dependent", dependent);
    CMReturnInstance(result, instance);
    return 0;
}

}  // extern "C"
