// VORNA_DeviceAlias: the switch-wide names of port WWNs, served from the
// device-alias database, and the two methods that change that database.
//
// The enumerations walk the database's iterator, not the VSANs. The methods
// make one change call and then one commit, always both and always in that
// order once the change call was made; the commit's code is only traced.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

#include <cmpidt.h>
#include <cmpift.h>

#include "classes/path_keys.h"
#include "methods/method_args.h"
#include "platform/zoning_platform.h"
#include "provider/platform_records.h"
#include "provider/trace_line.h"
#include "provider/zone_provider.h"

namespace {

// Outcomes of the methods besides the database's own codes.
constexpr int kOutcomeNothingDone = 0;    // wrong argument count: answered "Success"
constexpr int kOutcomeBadArgument = 2;    // an argument the database can't be given
constexpr int kOutcomeCannotEncode = -1;  // pWWN refused by the encoder, or no memory

// The commit context's first field: the database's operation code for a
// device-alias change.
constexpr int32_t kCommitOperation = 6;

constexpr std::size_t kNameFieldSize = ZP_DEVICE_ALIAS_NAME_LEN;  // 67 characters and a zero
constexpr std::size_t kPwwnTextFieldSize = 255;                   // 254 characters and a zero
constexpr std::size_t kWwnSize = 8;
constexpr uint32_t kPwwnTlvType = 1;
// The TLV array holds one item; the aligned item size is taken as 16 bits,
// as the database's array header counts it, plus the 4-byte array header.
constexpr uint32_t kTlvArrayHeaderSize = 4;

const char *printable(const char *text) {
    return text != nullptr ? text : "";
}

// A zero-filled entry of the caller's own; null when memory runs out.
zone::Owned<DeviceAliasEntry> new_entry() {
    return zone::Owned<DeviceAliasEntry>(
        static_cast<DeviceAliasEntry *>(std::calloc(1, sizeof(DeviceAliasEntry))));
}

// ---- Enumeration -------------------------------------------------------

enum class Deliver { Instances, Names };

struct AliasWalk {
    Deliver what;
    const char *cls;
    const CMPIResult *result;
    const char **props;
    const char *ns;
};

// Opens the walk and asks for its size; the count starts at 0 so that a
// failed query counts as no alias. The platform offers no call to release
// the iterator.
int open_walk(const AliasWalk &walk, ddas_iterator **iterator) {
    void *first = nullptr;
    const int opened = ddas_api_get_all_device_alias_entries(mts_q, &first, iterator);
    if (walk.what == Deliver::Names)
        std::printf("\n ret_val from ddas_api_get_all_device_alias_entries: %d ", opened);
    else
        std::printf("\nret_value frm get_all_device_alias_entries =%d", opened);
    int count = 0;
    const int counted = ddas_api_iter_get_num_entries(*iterator, &count);
    std::printf("\nret_value =%d num =  %d", counted, count);
    return count;
}

void deliver_entry(const AliasWalk &walk, const DeviceAliasEntry *entry) {
    if (walk.what == Deliver::Names)
        zone::paths::deliver_path(walk.result,
                                  device_alias_fill_reference(walk.cls, walk.ns, entry, _broker));
    else
        zone::paths::deliver_instance(
            walk.result,
            device_alias_build_instance(walk.cls, walk.ns, entry, walk.props, _broker));
}

// Every alias in the iterator's order; -1 when there is none or memory runs
// out (after the aliases already delivered), else 0.
int walk_aliases(const AliasWalk &walk) {
    ddas_iterator *iterator = nullptr;
    const int count = open_walk(walk, &iterator);
    if (count <= 0) return -1;
    zone::TraceBatch out;
    for (int i = 0; i < count; ++i) {
        zone::Owned<DeviceAliasEntry> entry = new_entry();
        if (!entry) return -1;
        const int fetched = ddas_api_iter_get_next_device_alias_entry(iterator, entry.get());
        if (walk.what == Deliver::Names)
            out.text("\nret_value for get_next_alias_entry= ").number(fetched).text(" ");
        if (fetched != 0) break;
        deliver_entry(walk, entry.get());
    }
    return 0;
}

// ---- Methods -----------------------------------------------------------

// Copies text into a zero-filled field, cut to the field's size less one.
template <std::size_t N>
void copy_cut(char (&field)[N], const char *text) {
    std::memset(field, 0, N);
    std::strncpy(field, text, N - 1);
}

int argument_count_traced(const char *method, const CMPIArgs *in) {
    const int count = static_cast<int>(zone::methods::argument_count(in).value_or(0));
    std::printf("%s: argument count %d\n", method, count);
    return count;
}

DeviceAliasCommitContext new_commit_context() {
    DeviceAliasCommitContext context{};
    context.operation = kCommitOperation;
    return context;
}

// The database's text for its code; also the method's first return value.
void deliver_database_text(const CMPIResult *result, int code) {
    zone::paths::deliver_text(result, printable(syserr2str(code)));
    zone::paths::deliver_done(result);
}

uint32_t pwwn_tlv_array_size() {
    return static_cast<uint16_t>(tlv_aligned_data_size_get(kWwnSize)) + kTlvArrayHeaderSize;
}

// Puts the pWWN into the zero-filled TLV array as the database takes it: one
// item of type 1 and length 8 holding the 8 WWN bytes. False when the text
// is no WWN or the item can't be added.
bool encode_pwwn(const char *pwwn_text, unsigned char *wwn, unsigned char *tlv_array,
                 uint32_t tlv_array_size) {
    return wwn_cim_get_hex_from_str_wwn(pwwn_text, wwn) == 0 &&
           tlv_aligned_array_add_tlv(tlv_array, tlv_array_size, kPwwnTlvType, kWwnSize, wwn, 0) ==
               0;
}

}  // namespace

extern "C" {

int get_device_alias_keys(const char *cls, const CMPIResult *result, const char *ns) {
    std::printf("Inside get_device_alias_keys\n");
    return walk_aliases(AliasWalk{Deliver::Names, cls, result, nullptr, ns});
}

int get_device_alias_instance(const char *cls, const CMPIResult *result, const char **props,
                              const char *ns) {
    std::printf("Inside get_device_alias_instance\n");
    return walk_aliases(AliasWalk{Deliver::Instances, cls, result, props, ns});
}

// The InstanceID is the alias's pWWN. A pWWN without an alias still gives an
// instance: the lookup's code is only traced, and the name field starts all
// zeros so that the instance never carries stale bytes. No status is set.
int get_device_alias_instance_gi(const char *cls, const char *instance_id, const CMPIResult *result,
                                 const char **props, const char *ns) {
    zone::Owned<DeviceAliasEntry> entry = new_entry();
    if (!entry) return -1;
    std::printf("in get_device_alias_instance_gi\n ");
    const uint64_t pwwn = string_to_wwn(instance_id);
    char name[kNameFieldSize] = {};
    const int looked_up = ddas_get_device_alias_given_pwwn(mts_q, pwwn, name);
    std::printf("\nret_val = %d ", looked_up);
    std::memcpy(entry->name, name, sizeof entry->name);
    std::memcpy(entry->pwwn, &pwwn, sizeof entry->pwwn);
    zone::paths::deliver_instance(
        result, device_alias_build_instance(cls, ns, entry.get(), props, _broker));
    return 0;
}

// Arguments by position: 0 the alias name, 1 the pWWN text. A wrong count
// changes nothing (outcome 0). An argument that is not a string, or a pWWN
// text of more than 254 characters that its field can't hold, is refused
// with outcome 2 before the database is called, as the zoning methods
// refuse bad arguments. A name longer than 67 characters is cut.
int CreateDeviceAlias(CMPIMethodMI *, const CMPIContext *, const CMPIResult *result,
                      const CMPIObjectPath *, const char *, const CMPIArgs *in, CMPIArgs *) {
    std::printf("Inside CreateDeviceAlias\n");
    if (argument_count_traced("CreateDeviceAlias", in) != 2) return kOutcomeNothingDone;
    const char *name_text = zone::methods::string_at(in, 0);
    const char *pwwn_text = zone::methods::string_at(in, 1);
    if (name_text == nullptr || pwwn_text == nullptr) return kOutcomeBadArgument;
    if (std::strlen(pwwn_text) >= kPwwnTextFieldSize) return kOutcomeBadArgument;

    char name[kNameFieldSize];
    copy_cut(name, name_text);
    char pwwn[kPwwnTextFieldSize];
    copy_cut(pwwn, pwwn_text);

    const uint32_t tlv_array_size = pwwn_tlv_array_size();
    zone::Owned<unsigned char> tlv_array(
        static_cast<unsigned char *>(std::calloc(tlv_array_size, 1)));
    zone::Owned<unsigned char> wwn(static_cast<unsigned char *>(std::malloc(kWwnSize)));
    if (!tlv_array || !wwn) return kOutcomeCannotEncode;
    if (!encode_pwwn(pwwn, wwn.get(), tlv_array.get(), tlv_array_size)) return kOutcomeCannotEncode;

    DeviceAliasCommitContext context = new_commit_context();
    const int code = ddas_create_device_alias_entry(mts_q, name, tlv_array.get(), &context, 0, 0);
    std::printf("Error before commit: %d %s\n", code, printable(syserr2str(code)));
    const int committed = ddas_commit(mts_q, &context, 0);
    std::printf("Error after commit: %d %s\n", committed, printable(syserr2str(committed)));

    deliver_database_text(result, code);
    return code;
}

// Argument 0: the alias name. A wrong count changes nothing (outcome 0); an
// argument that is not a string is refused with outcome 2 before the
// database is called. The commit's code is not used.
int RemoveDeviceAlias(CMPIMethodMI *, const CMPIContext *, const CMPIResult *result,
                      const CMPIObjectPath *, const char *, const CMPIArgs *in, CMPIArgs *) {
    std::printf("Inside RemoveDeviceAlias\n");
    if (argument_count_traced("RemoveDeviceAlias", in) != 1) return kOutcomeNothingDone;
    const char *name_text = zone::methods::string_at(in, 0);
    if (name_text == nullptr) return kOutcomeBadArgument;

    char name[kNameFieldSize];
    copy_cut(name, name_text);
    std::printf("RemoveDeviceAlias: alias name %s\n", name);

    DeviceAliasCommitContext context = new_commit_context();
    const int code = ddas_remove_device_alias_entry(mts_q, name, &context, 0);
    std::printf("Error: %s\n", printable(syserr2str(code)));
    ddas_commit(mts_q, &context, 0);

    deliver_database_text(result, code);
    return code;
}

}  // extern "C"
