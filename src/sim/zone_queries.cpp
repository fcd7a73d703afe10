// The zone server's queries: whole databases, objects by InstanceID or
// number, parents and children. Every answer is gathered in one read
// transaction and turned into caller-owned records afterwards.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "platform/zoning_platform.h"
#include "sim/fault_injection.h"
#include "sim/generic_list.h"
#include "sim/instance_ids.h"
#include "sim/member_identity.h"
#include "sim/platform_state.h"
#include "sim/records.h"
#include "sim/sim_errors.h"

namespace zonesim {
namespace {

// Records the store keeps rendered (see Store::renderedObjects) are copied in
// one piece. Else the records are made from the rows as they come, inside
// the read: an enumeration lists tens of thousands of objects, and an object
// (or a member with its texts and encoded value) built first and copied
// into its record afterwards cost as much as reading the row.
template <typename Record>
int allObjects(int queue, int vsan, bool active, ObjectKind kind, int *count, Record **records) {
    if (count == nullptr || records == nullptr) return kErrInvalidArgument;
    RecordArray<Record> array;
    int code = withStore(queue, false, [&](Store &store) {
        if (!store.vsan(vsan, nullptr)) return kErrVsanNotConfigured;
        auto render = [](const Store::ObjectRow &row, void *record) {
            fillObjectRecord(static_cast<Record *>(record), row.vsan, row.number, row.active,
                             row.name);
        };
        if (const std::string *kept =
                store.renderedObjects(vsan, active, kind, sizeof(Record), render))
            return array.copyOf(*kept) ? kOk : kErrUnknown;
        if (!array.reserve(store.listedObjectCount(vsan, active, kind))) return kErrUnknown;
        bool complete = true;
        store.forEachObject(vsan, active, kind, [&](const Store::ObjectRow &row) {
            Record *record = complete ? array.add() : nullptr;
            if (record == nullptr) {
                complete = false;
                return;
            }
            fillObjectRecord(record, row.vsan, row.number, row.active, row.name);
        });
        return complete ? kOk : kErrUnknown;
    });
    return code != kOk ? code : array.handOver(count, records);
}

int allMembers(int queue, int vsan, bool active, int *count, ZoneMemberRecord **list) {
    if (count == nullptr || list == nullptr) return kErrInvalidArgument;
    RecordList<ZoneMemberRecord> members;
    int code = withStore(queue, false, [&](Store &store) {
        if (!store.vsan(vsan, nullptr)) return kErrVsanNotConfigured;
        bool complete = true;
        store.forEachMember(vsan, active, [&](const Store::MemberRow &row) {
            ZoneMemberRecord *record = complete ? members.add() : nullptr;
            if (record == nullptr) {
                complete = false;
                return;
            }
            fillMemberRecord(record, row.vsan, row.cim_type, row.id_text, row.active,
                             row.value_text);
        });
        return complete ? kOk : kErrUnknown;
    });
    if (code != kOk) return code;
    *count = static_cast<int>(members.size());
    *list = members.handOver();
    return kOk;
}

// The object of that kind named by a ZoningInstanceId.
bool findObject(Store &store, const char *instance_id, ObjectKind kind, ZoningObject *out) {
    GenericId id;
    return instance_id != nullptr && parseGenericId(instance_id, &id) &&
           store.object(id.vsan, id.active != 0, kind, id.number, out);
}

template <typename Record>
int objectById(int queue, const char *instance_id, ObjectKind kind, Record **record) {
    if (instance_id == nullptr || record == nullptr) return kErrInvalidArgument;
    ZoningObject object;
    int code = withStore(queue, false, [&](Store &store) {
        return findObject(store, instance_id, kind, &object) ? kOk : kErrNotFound;
    });
    if (code != kOk) return code;
    Record *made = newRecord<Record>(object);
    if (made == nullptr) return kErrUnknown;
    *record = made;
    return kOk;
}

enum class Relation { Children, Parents };

// The row of the object of that kind named by a ZoningInstanceId.
bool findObjectRow(Store &store, const char *instance_id, ObjectKind kind, std::int64_t *row) {
    GenericId id;
    return instance_id != nullptr && parseGenericId(instance_id, &id) &&
           store.objectRow(id.vsan, id.active != 0, kind, id.number, row);
}

// What visit finds around the object of that kind named by the id, as a
// list of records made straight from what the store hands over: a walk asks
// this of every zone.
template <typename Record, typename Source, typename Visit>
int listAround(int queue, const char *instance_id, ObjectKind kind, Record **list, Visit &&visit) {
    if (instance_id == nullptr || list == nullptr) return kErrInvalidArgument;
    RecordList<Record> found;
    int code = withStore(queue, false, [&](Store &store) {
        std::int64_t row = 0;
        if (!findObjectRow(store, instance_id, kind, &row)) return kErrNotFound;
        bool complete = true;
        visit(store, row, [&](const Source &source) {
            Record *record = complete ? found.add() : nullptr;
            if (record == nullptr) {
                complete = false;
                return;
            }
            fillRecord(record, source);
        });
        return complete ? kOk : kErrUnknown;
    });
    if (code != kOk) return code;
    *list = found.handOver();
    return kOk;
}

template <typename Record>
int relatives(int queue, const char *instance_id, ObjectKind kind, Relation relation,
              Record **list) {
    const auto which =
        relation == Relation::Children ? Store::Relative::Child : Store::Relative::Parent;
    return listAround<Record, ZoningObject>(
        queue, instance_id, kind, list, [which](Store &store, std::int64_t row, const auto &add) {
            store.forEachRelative(row, which, add);
        });
}

int membersOf(int queue, const char *instance_id, ObjectKind kind, ZoneMemberRecord **list) {
    return listAround<ZoneMemberRecord, Member>(
        queue, instance_id, kind, list,
        [](Store &store, std::int64_t row, const auto &add) { store.forEachMemberOf(row, add); });
}

// The member named by a member InstanceID, as stored.
int findMember(Store &store, const char *instance_id, Member *out) {
    Member named;
    if (int code = memberFromInstanceId(instance_id, &named)) return code;
    return store.member(named.vsan, named.active, named.code, named.key, out) ? kOk : kErrNotFound;
}

int memberById(int queue, const char *instance_id, ZoneMemberRecord **record) {
    if (instance_id == nullptr || record == nullptr) return kErrInvalidArgument;
    Member member;
    int code = withStore(queue, false,
                         [&](Store &store) { return findMember(store, instance_id, &member); });
    if (code != kOk) return code;
    ZoneMemberRecord *made = newRecord<ZoneMemberRecord>(member);
    if (made == nullptr) return kErrUnknown;
    *record = made;
    return kOk;
}

// Appends the zones (or aliases) holding the member to the generic list,
// making the list when the caller's variable holds none.
template <typename Record>
int memberParents(int queue, const char *instance_id, ObjectKind parent_kind, cim_g_slist **list) {
    if (instance_id == nullptr || list == nullptr) return kErrInvalidArgument;
    std::vector<ZoningObject> parents;
    int code = withStore(queue, false, [&](Store &store) {
        Member member;
        if (int rc = findMember(store, instance_id, &member)) return rc;
        parents = store.memberParents(member, parent_kind);
        return kOk;
    });
    if (code != kOk) return code;
    if (*list == nullptr && (*list = cim_g_slist_alloc()) == nullptr) return kErrUnknown;
    for (const ZoningObject &parent : parents) {
        Record *record = newRecord<Record>(parent);
        if (record == nullptr) return kErrUnknown;
        if (!appendToList(*list, record)) {
            std::free(record);
            return kErrUnknown;
        }
    }
    return kOk;
}

template <typename Record>
int objectByNumber(int queue, ObjectKind kind, int number, int vsan, int active, int *found,
                   Record **record) {
    ZoningObject object;
    bool exists = false;
    int code = withStore(queue, false, [&](Store &store) {
        if (!store.vsan(vsan, nullptr)) return kErrVsanNotConfigured;
        exists = store.object(vsan, active != 0, kind, number, &object);
        return kOk;
    });
    if (code != kOk || !exists) return code;
    if (record != nullptr) {
        Record *made = newRecord<Record>(object);
        if (made == nullptr) return kErrUnknown;
        *record = made;
    }
    if (found != nullptr) *found = 1;
    return kOk;
}

}  // namespace
}  // namespace zonesim

using namespace zonesim;

#pragma GCC visibility push(default)
extern "C" {

int zs_cim_get_all_active_zone_sets(int queue, int vsan, int *count, ZoneSetRecord **records) {
    if (injectFault(__func__)) return kInjectedFault;
    return allObjects(queue, vsan, true, ObjectKind::ZoneSet, count, records);
}
int zs_cim_get_all_non_active_zone_sets(int queue, int vsan, int *count, ZoneSetRecord **records) {
    if (injectFault(__func__)) return kInjectedFault;
    return allObjects(queue, vsan, false, ObjectKind::ZoneSet, count, records);
}
int zs_cim_get_all_active_zones(int queue, int vsan, int *count, ZoneRecord **records) {
    if (injectFault(__func__)) return kInjectedFault;
    return allObjects(queue, vsan, true, ObjectKind::Zone, count, records);
}
int zs_cim_get_all_non_active_zones(int queue, int vsan, int *count, ZoneRecord **records) {
    if (injectFault(__func__)) return kInjectedFault;
    return allObjects(queue, vsan, false, ObjectKind::Zone, count, records);
}
int zs_cim_get_all_active_zone_aliases(int queue, int vsan, int *count, ZoneAliasRecord **records) {
    if (injectFault(__func__)) return kInjectedFault;
    return allObjects(queue, vsan, true, ObjectKind::Alias, count, records);
}
int zs_cim_get_all_non_active_zone_aliases(int queue, int vsan, int *count,
                                           ZoneAliasRecord **records) {
    if (injectFault(__func__)) return kInjectedFault;
    return allObjects(queue, vsan, false, ObjectKind::Alias, count, records);
}
int zs_cim_get_all_active_zone_members(int queue, int vsan, int *count, ZoneMemberRecord **list) {
    if (injectFault(__func__)) return kInjectedFault;
    return allMembers(queue, vsan, true, count, list);
}
int zs_cim_get_all_non_active_zone_members(int queue, int vsan, int *count,
                                           ZoneMemberRecord **list) {
    if (injectFault(__func__)) return kInjectedFault;
    return allMembers(queue, vsan, false, count, list);
}

int zs_cim_get_zone_set_by_instance_id(int queue, const char *instance_id, ZoneSetRecord **record) {
    if (injectFault(__func__)) return kInjectedFault;
    return objectById(queue, instance_id, ObjectKind::ZoneSet, record);
}
int zs_cim_get_zone_by_instance_id(int queue, const char *instance_id, ZoneRecord **record) {
    if (injectFault(__func__)) return kInjectedFault;
    return objectById(queue, instance_id, ObjectKind::Zone, record);
}
int zs_cim_get_zone_alias_by_instance_id(int queue, const char *instance_id,
                                         ZoneAliasRecord **record) {
    if (injectFault(__func__)) return kInjectedFault;
    return objectById(queue, instance_id, ObjectKind::Alias, record);
}
int zs_cim_get_zone_member_by_instance_id(int queue, const char *instance_id,
                                          ZoneMemberRecord **record) {
    if (injectFault(__func__)) return kInjectedFault;
    return memberById(queue, instance_id, record);
}

int zs_cim_get_zone_set_zones_by_instance_id(int queue, const char *zone_set_id,
                                             ZoneRecord **list) {
    if (injectFault(__func__)) return kInjectedFault;
    return relatives(queue, zone_set_id, ObjectKind::ZoneSet, Relation::Children, list);
}
int zs_cim_get_zone_zone_set_parents_by_instance_id(int queue, const char *zone_id,
                                                    ZoneSetRecord **list) {
    if (injectFault(__func__)) return kInjectedFault;
    return relatives(queue, zone_id, ObjectKind::Zone, Relation::Parents, list);
}
int zs_cim_get_zone_zone_aliases_by_instance_id(int queue, const char *zone_id,
                                                ZoneAliasRecord **list) {
    if (injectFault(__func__)) return kInjectedFault;
    return relatives(queue, zone_id, ObjectKind::Zone, Relation::Children, list);
}
int zs_cim_get_zone_zone_members_by_instance_id(int queue, const char *zone_id,
                                                ZoneMemberRecord **list) {
    if (injectFault(__func__)) return kInjectedFault;
    return membersOf(queue, zone_id, ObjectKind::Zone, list);
}
int zs_cim_get_zone_alias_zone_parents_by_instance_id(int queue, const char *alias_id,
                                                      ZoneRecord **list) {
    if (injectFault(__func__)) return kInjectedFault;
    return relatives(queue, alias_id, ObjectKind::Alias, Relation::Parents, list);
}
int zs_cim_get_zone_alias_zone_members_by_instance_id(int queue, const char *alias_id,
                                                      ZoneMemberRecord **list) {
    if (injectFault(__func__)) return kInjectedFault;
    return membersOf(queue, alias_id, ObjectKind::Alias, list);
}
int zs_cim_get_zone_member_zone_parents_by_instance_id(int queue, const char *member_id,
                                                       cim_g_slist **list) {
    if (injectFault(__func__)) return kInjectedFault;
    return memberParents<ZoneRecord>(queue, member_id, ObjectKind::Zone, list);
}
int zs_cim_get_zone_member_zone_alias_parents_by_instance_id(int queue, const char *member_id,
                                                             cim_g_slist **list) {
    if (injectFault(__func__)) return kInjectedFault;
    return memberParents<ZoneAliasRecord>(queue, member_id, ObjectKind::Alias, list);
}

int zs_cim_get_zone_set(int queue, int zone_set_number, int vsan, int active, int *found,
                        ZoneSetRecord **record) {
    if (injectFault(__func__)) return kInjectedFault;
    return objectByNumber(queue, ObjectKind::ZoneSet, zone_set_number, vsan, active, found, record);
}
int zs_cim_get_zone(int queue, int zone_number, int vsan, int active, int *found,
                    ZoneRecord **record) {
    if (injectFault(__func__)) return kInjectedFault;
    return objectByNumber(queue, ObjectKind::Zone, zone_number, vsan, active, found, record);
}

int zs_cim_get_fields_from_generic_instance_id(const char *instance_id, int *vsan, int *number,
                                               int *active) {
    GenericId id;
    if (instance_id == nullptr || vsan == nullptr || number == nullptr || active == nullptr ||
        !parseGenericId(instance_id, &id))
        return kErrInvalidArgument;
    *vsan = id.vsan;
    *number = id.number;
    *active = id.active;
    return kOk;
}

int zs_cim_get_fields_from_member_instance_id(const char *instance_id, int *vsan,
                                              uint8_t *member_type, unsigned char *value,
                                              int *value_length, int *active, int reserved) {
    if (vsan == nullptr || member_type == nullptr || value == nullptr || value_length == nullptr ||
        active == nullptr || reserved != 0)
        return kErrInvalidArgument;
    return guarded([&] {
        Member member;
        if (int code = memberFromInstanceId(instance_id, &member)) return code;
        *vsan = member.vsan;
        *member_type = member.code;
        std::memcpy(value, member.value.data(), member.value.size());
        *value_length = static_cast<int>(member.value.size());
        *active = member.active ? 1 : 0;
        return kOk;
    });
}

}  // extern "C"
#pragma GCC visibility pop
