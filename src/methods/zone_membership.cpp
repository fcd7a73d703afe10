// CreateZoneMembershipSettingData and AddZoneMembershipSettingData: a member
// (a device or port named by type and identifier) joins a zone or a zone
// alias of the editable database. A new member is created by the same zone
// server call that puts it into its first parent, and its InstanceID is
// made here, in the member form "vsan^cim type^member text^active".
#include <cstdio>
#include <cstring>

#include <cmpidt.h>
#include <cmpift.h>

#include "methods/method_args.h"
#include "platform/zoning_platform.h"
#include "provider/platform_records.h"
#include "provider/zone_provider.h"

namespace {

using namespace zone::methods;

// The zone server takes members of code 109 under the code 231.
constexpr uint8_t kMemberCodeAsGiven = 109;
constexpr uint8_t kMemberCodeForAdd = 231;

// Encoded member values; the member-instance splitter wants at least 255.
constexpr int kMemberValueSize = 256;
// Text field the member formatters write into.
constexpr std::size_t kMemberTextSize = 128;

using MemberFormatter = int (*)(char *out, const unsigned char *value);

// Member types whose InstanceID carries the formatted member value instead
// of the client's spelling of it.
struct FormattedMemberType {
    CMPIUint16 cim_type;
    MemberFormatter format;
    const char *trace_prefix;  // printed as "<prefix><text> \n"
};

static constexpr FormattedMemberType kFormattedMemberTypes[] = {
    {4, zs_cim_sprintf_dom_port, "member_id for cim_member_type == 4 :: "},
    {6, cim_sprintf_wwn, "member_id :: "},
    {10, cim_sprintf_wwn, "member_id :: "},
    {11, cim_sprintf_dom_interface_hex, "member_id for cim_member_type == 11 :: "},
};

constexpr const char *kMemberClass = "VORNA_ZoneMemberSettingData";
constexpr const char *kMemberOutputName = "ZoneMembershipSettingData";

// ---- CreateZoneMembershipSettingData ------------------------------------------

// A member as the client describes it, converted for the zone server.
struct NewMember {
    CMPIUint16 cim_type = 0;
    char identifier[zone::kKeyTextSize] = {};
    uint8_t code = 0;
    unsigned char value[kMemberValueSize] = {};
    int value_length = 0;
};

// Type, code, length and encoded value; false (outcome 2) when the platform
// knows no such member.
bool convert_member(NewMember &member) {
    if (decode_cim_member_type(member.cim_type, &member.code) != 0) {
        std::printf(" ZoneProvider:invokeMethod(): decode_cim_member_type - Invalid param 1 \n");
        return false;
    }
    member.value_length = get_member_value_length(member.code);
    // A value longer than the field could not be held; it is refused as an
    // unknown length rather than written past the field.
    if (member.value_length <= 0 || member.value_length > kMemberValueSize) {
        std::printf(" ZoneProvider:invokeMethod(): get_member_value_length\n");
        return false;
    }
    if (get_member_value_from_cim_member_type_value(member.identifier, member.code, member.value) !=
        0) {
        std::printf(
            " ZoneProvider:invokeMethod(): Error get_member_value_from_cim_member_type_value\n");
        return false;
    }
    // The value was converted with the code as given; only the add call
    // takes the replacement.
    if (member.code == kMemberCodeAsGiven) member.code = kMemberCodeForAdd;
    return true;
}

// The text that names the member inside its InstanceID: the formatted
// value for the types that have a formatter, else the client's identifier.
const char *member_text(const NewMember &member, char (&formatted)[kMemberTextSize]) {
    for (const FormattedMemberType &type : kFormattedMemberTypes) {
        if (type.cim_type != member.cim_type) continue;
        type.format(formatted, member.value);
        formatted[kMemberTextSize - 1] = '\0';
        std::printf("%s%s \n", type.trace_prefix, formatted);
        return formatted;
    }
    return member.identifier;
}

// The reference to the new member, in the fixed output namespace.
void hand_back_member(const NewMember &member, int vsan, CMPIArgs *out) {
    char formatted[kMemberTextSize] = {};
    const char *text = member_text(member, formatted);

    ZoneMemberRecord record{};
    std::snprintf(record.instance_id, sizeof record.instance_id, "%d^%d^%s^%d", vsan,
                  static_cast<int>(member.cim_type), text, 0);
    record.cim_member_type = member.cim_type;
    std::snprintf(record.member_value, sizeof record.member_value, "%s", member.identifier);
    const CMPIObjectPath *ref =
        zone_member_fill_reference(kMemberClass, kOutputNamespace, &record, _broker);
    add_output_reference(out, kMemberOutputName, ref);
}

int create_member(const CMPIResult *result, const CMPIObjectPath *target, const CMPIArgs *in,
                  CMPIArgs *out) {
    const std::optional<int> vsan = zone_service_vsan(target);
    if (!vsan) return ZONE_SERVICE_KEY_REFUSAL;
    std::printf(" ZoneProvider:invokeMethod(): Crt ZoneMbrData - start \n");
    if (!has_argument_count(in, 3)) return kOutcomeInvalidParameter;

    NewMember member;
    const std::optional<CMPIUint16> cim_type = uint16_at(in, 0);
    if (!cim_type) return kOutcomeInvalidParameter;
    member.cim_type = *cim_type;
    const char *identifier = string_at(in, 1);
    if (identifier == nullptr) return kOutcomeInvalidParameter;
    zone::copy_key_text(member.identifier, identifier);
    const CMPIObjectPath *parent = reference_at(in, 2);
    std::printf(" ZoneProvider:invokeMethod(): ZoneMbrData - Type is %u, id is %s \n",
                static_cast<unsigned>(member.cim_type), member.identifier);

    // The member is checked before its parent is looked at.
    if (!convert_member(member)) return kOutcomeInvalidParameter;

    KeyBuffer parent_id{};
    if (!instance_id_of(parent, parent_id)) {
        std::printf(" ZoneProvider:invokeMethod(): ZoneMbrData - Incvalid param 2 \n");
        return kOutcomeInvalidParameter;
    }
    const std::optional<int> parent_type = member_parent_type(parent);
    if (!parent_type) {
        std::printf(" ZoneProvider:invokeMethod(): ZoneMbrData - Incvalid param 3 \n");
        return kOutcomeInvalidParameter;
    }
    std::printf(" ZoneProvider:invokeMethod(): ZoneMbrData - parent type is %d \n", *parent_type);
    const std::optional<ZoningFields> parent_fields = split_instance_id(parent_id);
    if (!parent_fields) return kOutcomeInvalidObject;
    std::printf("vsan_index %d z_v_id %d \n", *vsan, parent_fields->vsan);
    if (parent_fields->active != 0 || parent_fields->vsan != *vsan) return kOutcomeActiveOrForeign;

    std::printf(" ZoneProvider:invokeMethod(): ZoneMbrData - Before add zoning member %s \n",
                parent_id);
    int error = 0;
    if (zs_cim_add_zoning_member(mts_q, ZP_OP_ADD, *vsan, 0, *parent_type, parent_fields->number,
                                 member.code, member.value, &member.value_length, &error) != 0) {
        std::printf("Error in ZoneMembershipSettingData\n");
        return error;
    }
    hand_back_member(member, *vsan, out);
    return_zero(result, CMPI_sint32);
    std::printf("No Error in ZoneMembershipSettingData\n");
    return kOutcomeSuccess;
}

// ---- AddZoneMembershipSettingData -----------------------------------------------

// An existing member, as its InstanceID describes it.
struct ExistingMember {
    KeyBuffer id{};
    int vsan = 0;
    uint8_t code = 0;
    unsigned char value[kMemberValueSize] = {};
    int value_length = 0;
    int active = 0;
};

bool split_member_id(ExistingMember &member) {
    return zs_cim_get_fields_from_member_instance_id(member.id, &member.vsan, &member.code,
                                                     member.value, &member.value_length,
                                                     &member.active, 0) == 0;
}

// Each refusal prints its own line with a fixed number, then answers.
int refuse(const char *error_name, int number, int outcome) {
    std::printf(" ZoneProvider:invokeMethod(): Add  ZoneMbrData - %s is %d\n", error_name, number);
    return outcome;
}

int add_member(const CMPIResult *result, const CMPIObjectPath *target, const CMPIArgs *in) {
    const std::optional<int> vsan = zone_service_vsan(target);
    if (!vsan) return ZONE_SERVICE_KEY_REFUSAL;
    debug_attach_hook();
    std::printf(" ZoneProvider:invokeMethod(): Add  ZoneMbrData - start \n");
    if (!has_argument_count(in, 2))
        return refuse("error 6", kOutcomeInvalidParameter, kOutcomeInvalidParameter);

    const CMPIObjectPath *parent = reference_at(in, 0);
    ExistingMember member;
    KeyBuffer parent_id{};
    if (!instance_id_of(reference_at(in, 1), member.id) || !instance_id_of(parent, parent_id))
        return refuse("error", kOutcomeInvalidParameter, kOutcomeInvalidParameter);
    std::printf(
        " ZoneProvider:invokeMethod(): Add  ZoneMbrData - zone name is %s, zmbr name is "
        "%s\n",
        parent_id, member.id);

    const std::optional<int> parent_type = member_parent_type(parent);
    if (!parent_type) return refuse("error 2", kOutcomeInvalidParameter, kOutcomeInvalidParameter);
    if (!split_member_id(member))
        return refuse("error 4", kOutcomeInvalidObject, kOutcomeInvalidObject);
    const std::optional<ZoningFields> zone = split_instance_id(parent_id);
    if (!zone) return refuse("error 4", kOutcomeInvalidObject, kOutcomeInvalidObject);

    std::printf(
        " ZoneProvider:invokeMethod(): Add  ZoneMbrData - z_active is %d, zm_active is "
        "%d\n",
        zone->active, member.active);
    std::printf(
        " ZoneProvider:invokeMethod(): Add  ZoneMbrData - zm_v_id is %d, z_v_id is %d, "
        "vsan_index is %d\n",
        member.vsan, zone->vsan, *vsan);
    if (zone->active != 0 || member.active != 0 || member.vsan != *vsan || *vsan != zone->vsan)
        return refuse("error 3", kOutcomeActiveOrForeign, kOutcomeActiveOrForeign);

    std::printf(" ZoneProvider:invokeMethod(): Add  ZoneMbrData - Before add zoning\n");
    for (int i = 0; i < 2; ++i)
        std::printf("*** zone %s and zone mem name %s in new_zone_provider **\n", parent_id,
                    member.id);
    int error = 0;
    if (zs_cim_add_zoning_member(mts_q, ZP_OP_ADD, *vsan, zone->active, *parent_type, zone->number,
                                 member.code, member.value, &member.value_length, &error) != 0)
        return refuse("error 5", 4, error);

    std::printf(" ZoneProvider:invokeMethod(): Add  ZoneMbrData - ret code is %d\n", 0);
    return_zero(result, CMPI_sint32);
    return_done(result);
    return kOutcomeSuccess;
}

}  // namespace

extern "C" {

int ZoneMemberCreation(CMPIMethodMI *, const CMPIContext *, const CMPIResult *result,
                       const CMPIObjectPath *op, const char *, const CMPIArgs *in, CMPIArgs *out) {
    return create_member(result, op, in, out);
}

int AddZoneMembershipSettingData(CMPIMethodMI *, const CMPIContext *, const CMPIResult *result,
                                 const CMPIObjectPath *op, const char *, const CMPIArgs *in,
                                 CMPIArgs *) {
    return add_member(result, op, in);
}

}  // extern "C"
