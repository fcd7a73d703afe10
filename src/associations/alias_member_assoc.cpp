// Associations at the lower end of the zoning graph.
//
// A zone alias is held by zones (member of collection, the alias is the
// Member), holds zone members (element setting data, the alias is the
// ManagedElement) and, for the associator operations only, is hosted by its
// VSAN. A zone member is the SettingData of the element setting data that
// link it to the zones and aliases holding it. All of this runs inside the
// platform mutex held by the association operation.
#include <cstdio>

#include "associations/association_support.h"

namespace {

using namespace zone::assoc;

// ---- Zone aliases ---------------------------------------------------------------

// Neighbour kinds of an alias. The VSAN class names select a kind of their own
// that visits nothing: an alias reaches its VSAN only through the hosted
// collection.
enum : int { kZones = 1, kVsanNamed = 2, kMembers = 4, kHostingVsan = 8 };
constexpr int kWithoutFilter = kZones | kVsanNamed | kMembers;

// Associators: by assocClass, then resultClass.
constexpr SelectionRow kAliasAssociatorSelection[] = {
    {named("VORNA_ZoneMemberOfCollection"), kNull, kZones},
    {named("VORNA_ZoneMemberOfCollection"), named("CIM_Zone"), kZones},
    {named("VORNA_ZoneMemberOfCollection"), kAny, 0},
    {named("VORNA_Vsan"), kAny, kVsanNamed},
    {named("CIM_AdminDomain"), kAny, kVsanNamed},
    {named("VORNA_ElementSettingData"), kAny, kMembers},
    {named("VORNA_ZoneHostedCollection"), kAny, kHostingVsan},
    {kNullOrEmpty, kAny, kWithoutFilter},
};

// References: by resultClass, then role. The hosted collection of an alias is
// not served here.
constexpr SelectionRow kAliasReferenceSelection[] = {
    {named("VORNA_ZoneMemberOfCollection"), kNull, kZones},
    {named("VORNA_ZoneMemberOfCollection"), named("Member"), kZones},
    {named("VORNA_ZoneMemberOfCollection"), kAny, 0},
    {named("VORNA_Vsan"), kAny, kVsanNamed},
    {named("CIM_AdminDomain"), kAny, kVsanNamed},
    {named("VORNA_ElementSettingData"), kAny, kMembers},
    {kNullOrEmpty, kAny, kWithoutFilter},
};

// resultClass names under which the associators still report the VSAN.
constexpr std::string_view kVsanResultClasses[] = {"CIM_AdminDomain", "CIM_System", "VORNA_Vsan"};

void trace_zone(const ZoneRecord *zone) {
    std::printf("\t found  zone  -- %s\n", zone->name);
}

void trace_member(const ZoneMemberRecord *member) {
    std::printf("\t found  zone member -- %s\n", member->member_value);
}

void trace_zones_query(const char *id) {
    std::printf("getting zone of zone alias -- %s\n", id);
}

void trace_members_query(const char *id) {
    std::printf("getting zone member of zone alias -- %s\n", id);
}

template <Output out>
int alias_associators(const Traversal &req, const char *assoc_class, const char *result_class) {
    const int flag = select_flag(kAliasAssociatorSelection, assoc_class, result_class);
    if (flag == kUnknownFilter) return 0;
    const int vsan = vsan_of(req.id);

    if (flag & kZones) {
        trace_zones_query(req.id);
        for_each_node<ZoneRecord>(zs_cim_get_zone_alias_zone_parents_by_instance_id, req.id,
                                  [&](const ZoneRecord *zone) {
                                      trace_zone(zone);
                                      deliver_neighbour<out>(req, zone);
                                  });
    }

    if (flag & kMembers) {
        trace_members_query(req.id);
        for_each_node<ZoneMemberRecord>(zs_cim_get_zone_alias_zone_members_by_instance_id, req.id,
                                        [&](const ZoneMemberRecord *member) {
                                            trace_member(member);
                                            deliver_neighbour<out>(req, member);
                                        });
    }

    if (flag & kHostingVsan) {
        const VsanStep step =
            visit_hosting_vsan(mts_q, vsan, null_or_one_of(result_class, kVsanResultClasses),
                               [&](const VsanEntry &entry, const DomainEntry &domain) {
                                   deliver_neighbour<out>(req, entry, domain);
                               });
        if (lookup_failed(step)) return -1;
    }
    return 0;
}

template <Output out>
void deliver_zone_link(const Traversal &req, const ZoneAliasRecord *alias, const ZoneRecord *zone) {
    trace_zone(zone);
    if constexpr (out == Output::Names)
        deliver(req.result,
                zmoc_fill_reference(kMemberOfCollectionClass, req.ns, zone, alias, _broker));
    else
        deliver(req.result,
                zmoc_build_instance(kMemberOfCollectionClass, req.ns, zone, alias, _broker));
}

template <Output out>
void deliver_member_link(const Traversal &req, const ZoneAliasRecord *alias,
                         const ZoneMemberRecord *member) {
    trace_member(member);
    if constexpr (out == Output::Names)
        deliver(req.result, esd_fill_reference_zoneAliasZoneMember(kElementSettingDataClass, req.ns,
                                                                   alias, member, _broker));
    else
        deliver(req.result,
                esd_build_instance_zoneAliasZoneMember(kElementSettingDataClass, req.ns, alias,
                                                       member, req.props, _broker));
}

template <Output out>
int alias_references(const Traversal &req, const char *result_class, const char *role) {
    const int flag = select_flag(kAliasReferenceSelection, result_class, role);
    if (flag == kUnknownFilter) return 0;
    vsan_of(req.id);

    zone::Owned<ZoneAliasRecord> alias;
    if (zs_cim_get_zone_alias_by_instance_id(mts_q, req.id, alias.out()) != 0) return -1;

    if (flag & kZones) {
        trace_zones_query(req.id);
        for_each_node<ZoneRecord>(
            zs_cim_get_zone_alias_zone_parents_by_instance_id, req.id,
            [&](const ZoneRecord *zone) { deliver_zone_link<out>(req, alias.get(), zone); });
    }

    if (flag & kMembers) {
        trace_members_query(req.id);
        for_each_node<ZoneMemberRecord>(zs_cim_get_zone_alias_zone_members_by_instance_id, req.id,
                                        [&](const ZoneMemberRecord *member) {
                                            deliver_member_link<out>(req, alias.get(), member);
                                        });
    }
    return 0;
}

// ---- Zone members ------------------------------------------------------------------

// Parent kinds of a member.
enum : int { kParentZones = 1, kParentAliases = 2 };

// By the first class name (assocClass or resultClass), then the second
// (resultClass for the associators, the empty text for the references).
constexpr SelectionRow kMemberSelection[] = {
    {named("VORNA_ElementSettingData"), kNull, kParentZones},
    {named("VORNA_ElementSettingData"), named("CIM_Zone"), kParentZones},
    {named("VORNA_ElementSettingData"), named("CIM_NamedAddressCollection"), kParentAliases},
    {named("VORNA_ElementSettingData"), kEmpty, kParentZones | kParentAliases},
    {named("VORNA_ElementSettingData"), kAny, 0},
    {kNullOrEmpty, kAny, kParentZones | kParentAliases},
};

// The builders of one kind of parent: the parent itself and its link to the
// member, each as an instance and as an object path.
template <typename Parent>
struct ParentBuilders {
    const char *parent_class;
    CMPIInstance *(*build)(const char *, const char *, const Parent *, const char **,
                           const CMPIBroker *);
    CMPIObjectPath *(*fill)(const char *, const char *, const Parent *, const CMPIBroker *);
    CMPIInstance *(*build_link)(const char *, const char *, const Parent *,
                                const ZoneMemberRecord *, const char **, const CMPIBroker *);
    CMPIObjectPath *(*fill_link)(const char *, const char *, const Parent *,
                                 const ZoneMemberRecord *, const CMPIBroker *);
};

constexpr ParentBuilders<ZoneRecord> kZoneParents{
    "VORNA_Zone", zone_build_instance, zone_fill_reference, esd_build_instance_zoneZoneMember,
    esd_fill_reference_zoneZoneMember};

constexpr ParentBuilders<ZoneAliasRecord> kAliasParents{
    "VORNA_ZoneAlias", zone_alias_build_instance, zone_alias_fill_reference,
    esd_build_instance_zoneAliasZoneMember, esd_fill_reference_zoneAliasZoneMember};

struct MemberTraversal {
    Traversal request;
    int mode;
    const ZoneMemberRecord *member;
};

template <typename Parent>
void deliver_parent(const MemberTraversal &t, const ParentBuilders<Parent> &builders,
                    const Parent *parent) {
    const Traversal &req = t.request;
    switch (t.mode) {
        case ZONE_ASSOC_ASSOCIATORS:
            deliver(req.result,
                    builders.build(builders.parent_class, req.ns, parent, req.props, _broker));
            break;
        case ZONE_ASSOC_ASSOCIATOR_NAMES:
            deliver(req.result, builders.fill(builders.parent_class, req.ns, parent, _broker));
            break;
        case ZONE_ASSOC_REFERENCES:
            deliver(req.result, builders.build_link(kElementSettingDataClass, req.ns, parent,
                                                    t.member, req.props, _broker));
            break;
        case ZONE_ASSOC_REFERENCE_NAMES:
            deliver(req.result, builders.fill_link(kElementSettingDataClass, req.ns, parent,
                                                   t.member, _broker));
            break;
        default:
            break;
    }
}

// Hands the parents found by the query to deliver_parent, last entry first,
// skipping empty entries. The list is destroyed whether or not the query
// succeeded.
template <typename Parent>
void deliver_parents_last_first(const MemberTraversal &t, zone::OwnedGList &list,
                                int (*query)(int, const char *, cim_g_slist **),
                                const ParentBuilders<Parent> &builders) {
    if (query(mts_q, t.request.id, list.out()) != 0) return;
    for (int i = cim_g_slist_length(list.get()) - 1; i >= 0; --i) {
        const auto *parent = static_cast<const Parent *>(cim_g_slist_nth_data(list.get(), i));
        if (parent != nullptr) deliver_parent(t, builders, parent);
    }
}

int member_references(const Traversal &req, const char *first_class, int mode,
                      const char *second_class) {
    const int flag = select_flag(kMemberSelection, first_class, second_class);
    if (flag == kUnknownFilter) return 0;

    zone::Owned<ZoneMemberRecord> member;
    if (zs_cim_get_zone_member_by_instance_id(mts_q, req.id, member.out()) != 0) return -1;
    const MemberTraversal t{req, mode, member.get()};

    if (flag & kParentZones) {
        zone::OwnedGList zones;
        std::printf("getting zone  of zonemember -- %s\n", req.id);
        deliver_parents_last_first(t, zones, zs_cim_get_zone_member_zone_parents_by_instance_id,
                                   kZoneParents);
    }

    if (flag & kParentAliases) {
        zone::OwnedGList aliases;
        std::printf("getting zone alias of zonemember -- %s\n", req.id);
        deliver_parents_last_first(
            t, aliases, zs_cim_get_zone_member_zone_alias_parents_by_instance_id, kAliasParents);
    }
    return 0;
}

}  // namespace

// Exported under their plain names: the object manager and the other
// units of the library find them there.
#pragma GCC visibility push(default)
extern "C" {

int get_zone_alias_associator_names(const char *id, const char *assoc_class,
                                    const char *result_class, const char * /*role*/,
                                    const char * /*result_role*/, const CMPIResult *result,
                                    const char *ns) {
    return alias_associators<Output::Names>({id, ns, nullptr, result}, assoc_class, result_class);
}

int get_zone_alias_associators(const char *id, const char *assoc_class, const char *result_class,
                               const char * /*role*/, const char * /*result_role*/,
                               const char **props, const CMPIResult *result, const char *ns) {
    return alias_associators<Output::Objects>({id, ns, props, result}, assoc_class, result_class);
}

int get_zone_alias_reference_names(const char *id, const char *result_class, const char *role,
                                   const CMPIResult *result, const char *ns) {
    return alias_references<Output::Names>({id, ns, nullptr, result}, result_class, role);
}

int get_zone_alias_references(const char *id, const char *result_class, const char *role,
                              const char **props, const CMPIResult *result, const char *ns) {
    return alias_references<Output::Objects>({id, ns, props, result}, result_class, role);
}

int get_zone_member_references(const char *id, const char *first_class, int mode,
                               const char *second_class, const char **props,
                               const CMPIResult *result, const char *ns) {
    return member_references({id, ns, props, result}, first_class, mode, second_class);
}

}  // extern "C"
#pragma GCC visibility pop
