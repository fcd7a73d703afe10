// CreateZoneSet, CreateZone and CreateZoneAlias: one procedure that makes an
// empty zoning object in the editable database of the zone service's VSAN
// and hands back a reference to it. The table below holds everything in
// which the three methods differ.
#include <cstdio>

#include <cmpidt.h>
#include <cmpift.h>

#include "methods/method_args.h"
#include "platform/zoning_platform.h"
#include "provider/platform_records.h"
#include "provider/zone_provider.h"

namespace {

using namespace zone::methods;

using ReferenceBuilder = CMPIObjectPath *(*)(const char *cls, const char *ns, const void *record,
                                             const CMPIBroker *broker);

enum class OwnReturnValue { None, Uint32Zero, Sint32Zero };

struct CreationMethod {
    unsigned required_count;
    // CreateZoneAlias alone refuses a null argument before looking for text.
    bool refuses_null_state;
    int object_type;
    const char *class_name;
    ReferenceBuilder build_reference;
    const char *output_name;
    OwnReturnValue own_return;
    const char *entry_trace;        // null: none
    const char *no_name_trace;      // null: none
    const char *name_trace_prefix;  // printed as "<prefix><name> \n"; null: none
    // CreateZone reads its two further arguments (and drops them).
    bool reads_further_arguments;
};

static constexpr CreationMethod kZoneSetCreation = {
    1,
    false,
    ZP_OBJECT_ZONE_SET,
    "VORNA_ZoneSet",
    [](const char *cls, const char *ns, const void *record, const CMPIBroker *broker) {
        return zone_set_fill_reference(cls, ns, static_cast<const ZoneSetRecord *>(record), broker);
    },
    "ZoneSet",
    OwnReturnValue::Uint32Zero,
    nullptr,
    "ZoneProvider:: invokeMethod(): No Zoneset name specified\n",
    "ZoneProvider:: invokeMethod(): zoneset name is ",
    false,
};

static constexpr CreationMethod kZoneCreation = {
    3,
    false,
    ZP_OBJECT_ZONE,
    "VORNA_Zone",
    [](const char *cls, const char *ns, const void *record, const CMPIBroker *broker) {
        return zone_fill_reference(cls, ns, static_cast<const ZoneRecord *>(record), broker);
    },
    "Zone",
    OwnReturnValue::None,
    nullptr,
    "No Zone name specified\n",
    "zone name is ",
    true,
};

static constexpr CreationMethod kZoneAliasCreation = {
    1,
    true,
    ZP_OBJECT_ZONE_ALIAS,
    "VORNA_ZoneAlias",
    [](const char *cls, const char *ns, const void *record, const CMPIBroker *broker) {
        return zone_alias_fill_reference(cls, ns, static_cast<const ZoneAliasRecord *>(record),
                                         broker);
    },
    "ZoneAlias",
    OwnReturnValue::Sint32Zero,
    "ZoneAliasCreation: Enter\n",
    nullptr,
    nullptr,
    false,
};

void print_if(const char *trace) {
    if (trace != nullptr) std::printf("%s", trace);
}

// Copies the new object's name, cut to 253 characters, out of position 0;
// false when the argument gives no text (a null value or another type).
bool read_name(const CreationMethod &how, const CMPIArgs *in, char (&name)[zone::kKeyTextSize]) {
    const CMPIData first = argument_at(in, 0);
    if (how.refuses_null_state && is_null_value(first)) {
        std::printf("Bad input parameter!\n");
        return false;
    }
    const char *text = string_value(first);
    if (text == nullptr) {
        print_if(how.no_name_trace);
        return false;
    }
    zone::copy_key_text(name, text);
    if (how.name_trace_prefix != nullptr) std::printf("%s%s \n", how.name_trace_prefix, name);
    if (how.reads_further_arguments) {
        (void)argument_at(in, 1);
        (void)argument_at(in, 2);
    }
    return true;
}

void hand_back_reference(const CreationMethod &how, const void *record, const CMPIResult *result,
                         CMPIArgs *out) {
    const CMPIObjectPath *ref =
        how.build_reference(how.class_name, kOutputNamespace, record, _broker);
    add_output_reference(out, how.output_name, ref);
    switch (how.own_return) {
        case OwnReturnValue::Uint32Zero:
            return_zero(result, CMPI_uint32);
            break;
        case OwnReturnValue::Sint32Zero:
            return_zero(result, CMPI_sint32);
            break;
        case OwnReturnValue::None:
            break;
    }
}

int create_zoning_object(const CreationMethod &how, const CMPIResult *result,
                         const CMPIObjectPath *target, const CMPIArgs *in, CMPIArgs *out) {
    print_if(how.entry_trace);
    const std::optional<unsigned> count = argument_count(in);
    const std::optional<int> vsan = zone_service_vsan(target);
    if (!vsan) return ZONE_SERVICE_KEY_REFUSAL;
    if (!count || *count != how.required_count) return kOutcomeInvalidParameter;

    char name[zone::kKeyTextSize] = {};
    if (!read_name(how, in, name)) return kOutcomeInvalidParameter;
    if (name[0] == '\0') return kOutcomeInvalidParameter;

    zone::Owned<void> record;
    int error = 0;
    if (zs_cim_create_zoning_object(mts_q, ZP_OP_ADD, *vsan, how.object_type, name, record.out(),
                                    &error) != 0)
        return error;
    hand_back_reference(how, record.get(), result, out);
    return kOutcomeSuccess;
}

}  // namespace

extern "C" {

int ZoneSetCreation(CMPIMethodMI *, const CMPIContext *, const CMPIResult *result,
                    const CMPIObjectPath *op, const char *, const CMPIArgs *in, CMPIArgs *out) {
    return create_zoning_object(kZoneSetCreation, result, op, in, out);
}

int ZoneCreation(CMPIMethodMI *, const CMPIContext *, const CMPIResult *result,
                 const CMPIObjectPath *op, const char *, const CMPIArgs *in, CMPIArgs *out) {
    return create_zoning_object(kZoneCreation, result, op, in, out);
}

int ZoneAliasCreation(CMPIMethodMI *, const CMPIContext *, const CMPIResult *result,
                      const CMPIObjectPath *op, const char *, const CMPIArgs *in, CMPIArgs *out) {
    return create_zoning_object(kZoneAliasCreation, result, op, in, out);
}

}  // extern "C"
