// Platform calls the benchmarks use to find their sample objects and to
// set up and undo the changes of the commands they measure.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/zoning_platform.h"

namespace zonebench {

inline int queue() {
    static int handle = [] {
        int q = -1;
        return init_mts(&q) < 0 ? -1 : q;
    }();
    return handle;
}

// Frees a platform list; answers its length.
template <typename Record>
int listLength(Record *list) {
    int n = 0;
    while (list != nullptr) {
        Record *next = list->next;
        std::free(list);
        list = next;
        ++n;
    }
    return n;
}

template <typename Record>
using AllQuery = int (*)(int, int, int *, Record **);

// The InstanceID of the first object of a VSAN's database ("" when none).
template <typename Record>
std::string firstId(AllQuery<Record> query, int vsan) {
    int count = 0;
    Record *records = nullptr;
    if (query(queue(), vsan, &count, &records) != 0) return {};
    std::string id = count > 0 ? records[0].instance_id : "";
    std::free(records);
    return id;
}

inline int zonesHolding(const char *member_id) {
    cim_g_slist *parents = nullptr;
    if (zs_cim_get_zone_member_zone_parents_by_instance_id(queue(), member_id, &parents) != 0)
        return -1;
    const int n = parents != nullptr ? cim_g_slist_length(parents) : 0;
    cim_g_slist_destroy(parents);
    return n;
}

// The first editable member of the VSAN that exactly `zones` zones hold (the
// first member when none does): operations on it then have as much to do
// in a fabric of any size.
inline std::string memberInZones(int vsan, int zones) {
    int count = 0;
    ZoneMemberRecord *members = nullptr;
    if (zs_cim_get_all_non_active_zone_members(queue(), vsan, &count, &members) != 0) return {};
    std::string chosen = members != nullptr ? members->instance_id : "";
    for (ZoneMemberRecord *m = members; m != nullptr; m = m->next) {
        if (zonesHolding(m->instance_id) == zones) {
            chosen = m->instance_id;
            break;
        }
    }
    listLength(members);
    return chosen;
}

inline int numberOf(const std::string &id) {
    int vsan = 0, number = 0, active = 0;
    zs_cim_get_fields_from_generic_instance_id(id.c_str(), &vsan, &number, &active);
    return number;
}

inline std::string objectId(int vsan, int number) {
    return std::to_string(vsan) + "^" + std::to_string(number) + "^0";
}

// A port WWN (16 hex digits) that no device of a generated fabric has.
inline std::string freshMemberWwn(unsigned serial) {
    char wwn[32];
    std::snprintf(wwn, sizeof wwn, "21ff%012x", serial);
    return wwn;
}

// The editable member of the VSAN with that port WWN.
inline std::string freshMemberId(int vsan, unsigned serial) {
    return std::to_string(vsan) + "^2^" + freshMemberWwn(serial) + "^0";
}

struct EncodedMember {
    int vsan = 0;
    uint8_t code = 0;
    unsigned char value[256] = {};
    int length = 0;
    int active = 0;
};

inline EncodedMember encode(const std::string &member_id) {
    EncodedMember member;
    zs_cim_get_fields_from_member_instance_id(member_id.c_str(), &member.vsan, &member.code,
                                              member.value, &member.length, &member.active, 0);
    return member;
}

// Creates a zone, zone set or alias in the editable database; its number,
// 0 when it can't be made.
inline int createObject(int vsan, int type, const std::string &name) {
    void *record = nullptr;
    int error = 0;
    if (zs_cim_create_zoning_object(queue(), ZP_OP_ADD, vsan, type, name.c_str(), &record,
                                    &error) != 0)
        return 0;
    const int number = numberOf(static_cast<const char *>(record));
    std::free(record);
    return number;
}

inline bool removeObject(int vsan, int type, int number) {
    int error = 0;
    return zs_cim_create_zoning_object_with_id(queue(), ZP_OP_REMOVE, vsan, type, number, nullptr,
                                               &error) == 0;
}

// A zone into a zone set (zone_in_set) or an alias into a zone, or out of
// it (operation ZP_OP_REMOVE).
inline bool changeLink(int vsan, bool zone_in_set, int parent, int child, int operation) {
    int error = 0;
    return zone_in_set
               ? zs_cim_add_zone_to_zone_set(queue(), operation, vsan, parent, child, &error) == 0
               : zs_cim_add_alias_to_zone(queue(), operation, vsan, parent, child, &error) == 0;
}

inline bool changeMember(int vsan, int zone, const std::string &member_id, int operation) {
    EncodedMember member = encode(member_id);
    int error = 0;
    return zs_cim_add_zoning_member(queue(), operation, vsan, 0, ZP_OBJECT_ZONE, zone, member.code,
                                    member.value, &member.length, &error) == 0;
}

inline DeviceAliasCommitContext commitContext() {
    DeviceAliasCommitContext context{};
    context.operation = 6;  // change and commit in one session
    return context;
}

// The pWWN 2f:ff:00:00:<serial> as the device-alias calls spell it.
inline std::string serialWwn(uint32_t serial) {
    char text[32];
    std::snprintf(text, sizeof text, "2f:ff:00:00:%02x:%02x:%02x:%02x", (serial >> 24) & 0xff,
                  (serial >> 16) & 0xff, (serial >> 8) & 0xff, serial & 0xff);
    return text;
}

inline bool createDeviceAlias(const std::string &name, uint32_t serial) {
    unsigned char wwn[8];
    if (wwn_cim_get_hex_from_str_wwn(serialWwn(serial).c_str(), wwn) != 0) return false;
    const uint32_t size = static_cast<uint16_t>(tlv_aligned_data_size_get(8)) + 4u;
    std::vector<unsigned char> tlv(size, 0);
    if (tlv_aligned_array_add_tlv(tlv.data(), size, 1, 8, wwn, 0) != 0) return false;
    DeviceAliasCommitContext context = commitContext();
    return ddas_create_device_alias_entry(queue(), name.c_str(), tlv.data(), &context, 0, 0) == 0 &&
           ddas_commit(queue(), &context, 0) == 0;
}

inline bool removeDeviceAlias(const std::string &name) {
    DeviceAliasCommitContext context = commitContext();
    return ddas_remove_device_alias_entry(queue(), name.c_str(), &context, 0) == 0 &&
           ddas_commit(queue(), &context, 0) == 0;
}

// The last entry of the device-alias database.
inline DeviceAliasEntry lastDeviceAlias() {
    void *first = nullptr;
    ddas_iterator *iterator = nullptr;
    DeviceAliasEntry entry{}, last{};
    if (ddas_api_get_all_device_alias_entries(queue(), &first, &iterator) != 0) return last;
    while (ddas_api_iter_get_next_device_alias_entry(iterator, &entry) == 0) last = entry;
    return last;
}

inline unsigned nextSerial() {
    static unsigned serial = 0;
    return ++serial;
}

inline std::string uniqueName(const char *prefix) {
    return std::string(prefix) + std::to_string(nextSerial());
}

}  // namespace zonebench
