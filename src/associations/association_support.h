// Shared shapes of the association traversals: the selection tables that
// turn the request's class and role filters into a set of neighbour kinds,
// delivery into the CMPI result, the walk over a platform list, and the
// lookup of the VSAN that hosts a zoning object.
//
// Every traversal runs inside the platform mutex that the association
// operation holds; nothing here takes a lock or keeps state.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "platform/zoning_platform.h"
#include "provider/platform_records.h"
#include "provider/zone_provider.h"

namespace zone::assoc {

// ---- Selection tables ------------------------------------------------------

// How one filter argument (a class name or a role) is matched by a row.
enum class Match : unsigned char {
    Any,          // whatever the request gave, null included
    Null,         // the request gave no text at all
    Empty,        // the request gave the empty text
    NullOrEmpty,  // no text or the empty text
    Name,         // the given name, compared without regard to case
};

struct Pattern {
    Match kind;
    std::string_view name{};

    bool accepts(const char *text) const {
        switch (kind) {
            case Match::Any:
                return true;
            case Match::Null:
                return text == nullptr;
            case Match::Empty:
                return text != nullptr && *text == '\0';
            case Match::NullOrEmpty:
                return null_or_empty(text);
            case Match::Name:
                return same_name(text, name);
        }
        return false;
    }
};

inline constexpr Pattern kAny{Match::Any};
inline constexpr Pattern kNull{Match::Null};
inline constexpr Pattern kEmpty{Match::Empty};
inline constexpr Pattern kNullOrEmpty{Match::NullOrEmpty};
constexpr Pattern named(std::string_view name) {
    return {Match::Name, name};
}

// One row: when both filters match, the traversal visits the neighbour kinds
// whose bits are set in flag (0: none, though the traversal still runs).
struct SelectionRow {
    Pattern first;
    Pattern second;
    int flag;
};

// The filter names no class the traversal knows: it returns at once,
// without a trace and without asking the platform anything.
inline constexpr int kUnknownFilter = -1;

// The flag of the first row that matches, in table order.
inline int select_flag(std::span<const SelectionRow> rows, const char *first, const char *second) {
    for (const SelectionRow &row : rows)
        if (row.first.accepts(first) && row.second.accepts(second)) return row.flag;
    return kUnknownFilter;
}

// True when text is null or one of names (case-insensitive): the resultClass
// filter that decides whether the hosting VSAN is wanted.
inline bool null_or_one_of(const char *text, std::span<const std::string_view> names) {
    if (text == nullptr) return true;
    for (std::string_view name : names)
        if (same_name(text, name)) return true;
    return false;
}

// ---- Delivery ---------------------------------------------------------------

// Whether a traversal delivers object paths (the *Names operations) or
// instances.
enum class Output { Names, Objects };

// A builder that could not make its object hands back null; nothing is
// delivered for it.
inline void deliver(const CMPIResult *result, const CMPIInstance *instance) {
    if (instance != nullptr) result->ft->returnInstance(result, instance);
}
inline void deliver(const CMPIResult *result, const CMPIObjectPath *path) {
    if (path != nullptr) result->ft->returnObjectPath(result, path);
}

// What every traversal carries: the source's InstanceID, the namespace of
// the source path, the request's property list (null for the *Names
// operations) and the result to deliver into.
struct Traversal {
    const char *id;
    const char *ns;
    const char **props;
    const CMPIResult *result;
};

// The neighbours themselves, as the associator operations deliver them: an
// object path built by the record's fill_reference builder, or an instance
// built by its build_instance builder with the request's property list.
template <Output out>
void deliver_neighbour(const Traversal &t, const ZoneSetRecord *zone_set) {
    if constexpr (out == Output::Names)
        deliver(t.result, zone_set_fill_reference("VORNA_ZoneSet", t.ns, zone_set, _broker));
    else
        deliver(t.result,
                zone_set_build_instance("VORNA_ZoneSet", t.ns, zone_set, t.props, _broker));
}

template <Output out>
void deliver_neighbour(const Traversal &t, const ZoneRecord *zone) {
    if constexpr (out == Output::Names)
        deliver(t.result, zone_fill_reference("VORNA_Zone", t.ns, zone, _broker));
    else
        deliver(t.result, zone_build_instance("VORNA_Zone", t.ns, zone, t.props, _broker));
}

template <Output out>
void deliver_neighbour(const Traversal &t, const ZoneAliasRecord *alias) {
    if constexpr (out == Output::Names)
        deliver(t.result, zone_alias_fill_reference("VORNA_ZoneAlias", t.ns, alias, _broker));
    else
        deliver(t.result,
                zone_alias_build_instance("VORNA_ZoneAlias", t.ns, alias, t.props, _broker));
}

template <Output out>
void deliver_neighbour(const Traversal &t, const ZoneMemberRecord *member) {
    if constexpr (out == Output::Names)
        deliver(t.result,
                zone_member_fill_reference("VORNA_ZoneMemberSettingData", t.ns, member, _broker));
    else
        deliver(t.result, zone_member_build_instance("VORNA_ZoneMemberSettingData", t.ns, member,
                                                     t.props, _broker));
}

template <Output out>
void deliver_neighbour(const Traversal &t, const VsanEntry &vsan, const DomainEntry &domain) {
    if constexpr (out == Output::Names)
        deliver(t.result, vsan_fill_reference("VORNA_Vsan", t.ns, &vsan, &domain, _broker));
    else
        deliver(t.result,
                vsan_build_instance("VORNA_Vsan", t.ns, &vsan, &domain, t.props, _broker));
}

// ---- Platform lists ---------------------------------------------------------

template <typename Record>
using ListQuery = int (*)(int, const char *, Record **);

// Asks the platform for the list of records related to id and hands each
// node, in list order, to visit; every node is unlinked and freed right after
// it was visited. A failed query visits nothing (and still frees whatever
// list it may have handed back).
template <typename Record, typename Visit>
void for_each_node(ListQuery<Record> query, const char *id, Visit &&visit) {
    OwnedList<Record> list;
    if (query(mts_q, id, list.out()) != 0) return;
    list.visit(visit);
}

// ---- The hosting VSAN ---------------------------------------------------------

// The VSAN number of a zone set's, zone's or alias's InstanceID (its first
// field); 0 when the platform could not split it.
inline int vsan_of(const char *instance_id) {
    int vsan = 0;
    int number = 0;
    int active = 0;
    zs_cim_get_fields_from_generic_instance_id(instance_id, &vsan, &number, &active);
    return vsan;
}

enum class VsanStep { Delivered, NotWanted, NoVsan, NoDomain };

inline bool lookup_failed(VsanStep step) {
    return step == VsanStep::NoVsan || step == VsanStep::NoDomain;
}

// Looks the VSAN up in the VSAN table and, when it is wanted, its domain
// entry, then hands both to deliver. The VSAN entry is read even when the
// resultClass filter leaves the VSAN out: a VSAN that does not exist ends the
// traversal either way.
template <typename Deliver>
VsanStep visit_hosting_vsan(int queue, int vsan_number, bool wanted, Deliver &&deliver_vsan) {
    VsanEntry vsan{};
    vsan.vsan = vsan_number;
    if (vsan_cim_get_vsanEntry(queue, ZP_VSAN_GIVEN, &vsan) != 0) return VsanStep::NoVsan;
    if (!wanted) return VsanStep::NotWanted;
    DomainEntry domain{};
    if (dm_cim_get_dmEntry(queue, vsan_number, 1, &domain) != 0) return VsanStep::NoDomain;
    deliver_vsan(vsan, domain);
    return VsanStep::Delivered;
}

// ---- Association classes of what the reference operations deliver ----------

inline constexpr const char *kMemberOfCollectionClass = "VORNA_ZoneMemberOfCollection";
inline constexpr const char *kHostedCollectionClass = "VORNA_ZoneHostedCollection";
inline constexpr const char *kElementSettingDataClass = "VORNA_ElementSettingData";
inline constexpr const char *kHostedServiceClass = "VORNA_HostedService";

}  // namespace zone::assoc
