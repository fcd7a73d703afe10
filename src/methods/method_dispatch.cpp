// invokeMethod: picks the handler of an extrinsic method by its exact name,
// runs it under the zoning mutex and turns its outcome code into the text
// that becomes the method's return value.
#include <cstdio>
#include <cstring>
#include <string_view>

#include <cmpidt.h>
#include <cmpift.h>

#include "methods/method_args.h"
#include "platform/zoning_platform.h"
#include "provider/zone_provider.h"

namespace {

using MethodHandler = int (*)(CMPIMethodMI *, const CMPIContext *, const CMPIResult *,
                              const CMPIObjectPath *, const char *, const CMPIArgs *, CMPIArgs *);

struct MethodEntry {
    std::string_view name;
    MethodHandler handler;
};

// Method names and target classes are compared exactly: case matters.
static constexpr MethodEntry kMethods[] = {
    {"CreateZoneSet", ZoneSetCreation},
    {"CreateZone", ZoneCreation},
    {"CreateZoneAlias", ZoneAliasCreation},
    {"CreateZoneMembershipSettingData", ZoneMemberCreation},
    {"AddZone", AddZone},
    {"AddZoneAlias", AddZoneAlias},
    {"AddZoneMembershipSettingData", AddZoneMembershipSettingData},
    {"ActivateZoneSet", ActivateZoneSet},
    {"CreateDeviceAlias", CreateDeviceAlias},
    {"RemoveDeviceAlias", RemoveDeviceAlias},
};

// Every method is served on every one of these classes.
static constexpr std::string_view kTargetClasses[] = {
    "CIM_ZoneService",
    "VORNA_ZoneService",
    "VORNA_DeviceAliasService",
};

struct OutcomeText {
    int outcome;
    const char *text;
};

// The provider's own outcomes and the zone server codes that share their
// numbers; any other code is described by the platform's syserr2str.
static constexpr OutcomeText kOutcomeTexts[] = {
    {0, "Success"},
    {1, "Invalid Zoning Object"},
    {2, "Invalid Number of Parameters Passed/Invalid Parameter"},
    {3, "Zone Service Active Zone Config Not Supported"},
    {4, "Zone Already Present"},
    {21, "Zone Set Not Present"},
    {22, "Zone already member in ZoneSet"},
    {23, "Zone Not Present"},
    {24, "Operation Not Supported"},
};

constexpr const char *kSuccessText = "Success";

MethodHandler find_handler(const char *method) noexcept {
    if (method == nullptr) return nullptr;
    for (const MethodEntry &entry : kMethods)
        if (entry.name == method) return entry.handler;
    return nullptr;
}

bool is_target_class(const char *cls) noexcept {
    for (std::string_view accepted : kTargetClasses)
        if (accepted == cls) return true;
    return false;
}

const char *outcome_text(int outcome) noexcept {
    if (outcome == zone::methods::kOutcomeInvalidParameter)
        std::printf("create zone set can't find key\n");
    for (const OutcomeText &row : kOutcomeTexts)
        if (row.outcome == outcome) return row.text;
    std::printf("syserr_format \n");
    const char *text = syserr2str(outcome);
    return text != nullptr ? text : "";
}

void return_text(const CMPIResult *result, const char *text) noexcept {
    if (result == nullptr || result->ft == nullptr) return;
    // CMPI_chars: the value pointer is the text itself.
    result->ft->returnData(result, reinterpret_cast<const CMPIValue *>(text), CMPI_chars);
}

CMPIStatus status_with_message(CMPIrc rc, const char *message) noexcept {
    CMPIString *msg = nullptr;
    if (_broker != nullptr && _broker->eft != nullptr)
        msg = _broker->eft->newString(_broker, message, nullptr);
    return CMPIStatus{rc, msg};
}

// Holds the zoning mutex for one call, so that every way out releases it.
class ZoningMutex {
  public:
    ZoningMutex() { mutex_lock(); }
    ~ZoningMutex() { mutex_unlock(); }
    ZoningMutex(const ZoningMutex &) = delete;
    ZoningMutex &operator=(const ZoningMutex &) = delete;
};

const char *target_class_name(const CMPIObjectPath *op) noexcept {
    if (op == nullptr) return "";
    return zone::methods::class_name_of(op);
}

CMPIStatus invoke_under_mutex(CMPIMethodMI *mi, const CMPIContext *ctx, const CMPIResult *result,
                              const CMPIObjectPath *op, const char *method, const CMPIArgs *in,
                              CMPIArgs *out, const char *cls) {
    ZoningMutex held;
    CMPIStatus status{CMPI_RC_OK, nullptr};
    if (!is_target_class(cls)) {
        status = status_with_message(CMPI_RC_ERR_FAILED, "invoke Method");
        return_text(result, kSuccessText);
    } else {
        const MethodHandler handler = find_handler(method);
        if (handler == nullptr) return CMPIStatus{CMPI_RC_ERR_METHOD_NOT_FOUND, nullptr};
        const int outcome = handler(mi, ctx, result, op, method, in, out);
        if (outcome == ZONE_SERVICE_KEY_REFUSAL)
            status = status_with_message(CMPI_RC_ERR_INVALID_PARAMETER, "invalid zoneservice key");
        else
            return_text(result, outcome_text(outcome));
    }
    zone::methods::return_done(result);
    std::printf("ZoneProvider:invokeMethod(): Exit \n");
    return status;
}

}  // namespace

extern "C" CMPIStatus zone_Provider_InvokeMethod(CMPIMethodMI *mi, const CMPIContext *ctx,
                                                 const CMPIResult *result, const CMPIObjectPath *op,
                                                 const char *method, const CMPIArgs *in,
                                                 CMPIArgs *out) {
    try {
        const char *cls = target_class_name(op);
        std::printf("ZoneProvider:invokeMethod(): className is %s\n", cls);
        return invoke_under_mutex(mi, ctx, result, op, method, in, out, cls);
    } catch (...) {
        // Nothing in the handlers throws; this only keeps the C boundary
        // closed should a future change let something escape.
        return CMPIStatus{CMPI_RC_ERR_FAILED, nullptr};
    }
}
