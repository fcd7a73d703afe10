// Associations of a zone: the zone sets that hold it and the aliases it
// holds (member of collection), the VSAN that hosts it (hosted collection)
// and its members (element setting data). The caller has checked that the
// zone exists and holds the platform mutex.
//
// Delivery order is always zone sets, aliases, the VSAN or its hosted
// collection, then members; within a kind, the order of the platform's list.
#include <cstdio>

#include "associations/association_support.h"

namespace {

using namespace zone::assoc;

// Neighbour kinds of a zone.
enum : int { kZoneSets = 1, kAliases = 2, kVsan = 4, kMembers = 8 };
constexpr int kEverything = kZoneSets | kAliases | kVsan | kMembers;

// Associators: by assocClass, then resultClass.
constexpr SelectionRow kAssociatorSelection[] = {
    {named("VORNA_ZoneMemberOfCollection"), kNull, kZoneSets | kAliases},
    {named("VORNA_ZoneMemberOfCollection"), named("CIM_ZoneSet"), kZoneSets},
    {named("VORNA_ZoneMemberOfCollection"), named("CIM_NamedAddressCollection"), kAliases},
    {named("VORNA_ZoneMemberOfCollection"), named("VORNA_ZoneAlias"), kAliases},
    {named("VORNA_ZoneMemberOfCollection"), kAny, 0},
    {named("VORNA_ZoneHostedCollection"), kAny, kVsan},
    {named("VORNA_ElementSettingData"), kAny, kMembers},
    {kNullOrEmpty, kAny, kEverything},
};

// References: by resultClass (the association class), then role.
constexpr SelectionRow kReferenceSelection[] = {
    {named("VORNA_ZoneMemberOfCollection"), named("Member"), kZoneSets},
    {named("VORNA_ZoneMemberOfCollection"), named("Collection"), kAliases},
    {named("VORNA_ZoneMemberOfCollection"), kAny, kZoneSets | kAliases},
    {named("VORNA_ZoneHostedCollection"), kAny, kVsan},
    {named("VORNA_ElementSettingData"), kAny, kMembers},
    {kNullOrEmpty, kAny, kEverything},
};

// resultClass names under which the associators still report the VSAN.
constexpr std::string_view kVsanResultClasses[] = {"CIM_AdminDomain", "CIM_System", "VORNA_Vsan"};

void trace_member(const ZoneMemberRecord *member) {
    std::printf("\t found  zone member -- %s\n", member->member_value);
}

// ---- Associators: the neighbours themselves ----------------------------------

template <Output out>
void trace_associators(int flag) {
    if constexpr (out == Output::Names) {
        std::printf("\n\n zone_provider:zone_associatorNames() - Start  \n");
        std::printf("\n\n zone_provider:zone_associatorNames() - flag is %d \n", flag);
    } else {
        std::printf("\n\n zone_provider:zone_associators() - Start  \n");
        std::printf("\n\n zone_provider:zone_associators() - flag is %d \n", flag);
    }
}

// Each neighbour in a list is announced with its name before it is delivered.
template <Output out>
void deliver_zone_set(const Traversal &req, const ZoneSetRecord *zone_set) {
    std::printf("\t found  zone set -- %s\n", zone_set->name);
    deliver_neighbour<out>(req, zone_set);
}

template <Output out>
void deliver_alias(const Traversal &req, const ZoneAliasRecord *alias) {
    std::printf("\t found  zone alias -- %s\n", alias->name);
    deliver_neighbour<out>(req, alias);
}

template <Output out>
void deliver_member(const Traversal &req, const ZoneMemberRecord *member) {
    trace_member(member);
    deliver_neighbour<out>(req, member);
}

template <Output out>
int associators(const Traversal &req, const char *assoc_class, const char *result_class) {
    const int flag = select_flag(kAssociatorSelection, assoc_class, result_class);
    if (flag == kUnknownFilter) return 0;
    trace_associators<out>(flag);
    const int vsan = vsan_of(req.id);

    if (flag & kZoneSets)
        for_each_node<ZoneSetRecord>(
            zs_cim_get_zone_zone_set_parents_by_instance_id, req.id,
            [&](const ZoneSetRecord *zone_set) { deliver_zone_set<out>(req, zone_set); });

    if (flag & kAliases)
        for_each_node<ZoneAliasRecord>(
            zs_cim_get_zone_zone_aliases_by_instance_id, req.id,
            [&](const ZoneAliasRecord *alias) { deliver_alias<out>(req, alias); });

    // A resultClass that leaves the VSAN out skips it; the members still follow.
    if (flag & kVsan) {
        const VsanStep step =
            visit_hosting_vsan(mts_q, vsan, null_or_one_of(result_class, kVsanResultClasses),
                               [&](const VsanEntry &entry, const DomainEntry &domain) {
                                   deliver_neighbour<out>(req, entry, domain);
                               });
        if (lookup_failed(step)) return -1;
    }

    if (flag & kMembers) {
        if constexpr (out == Output::Objects)
            std::printf("getting zone member of zone -- %s\n", req.id);
        for_each_node<ZoneMemberRecord>(
            zs_cim_get_zone_zone_members_by_instance_id, req.id,
            [&](const ZoneMemberRecord *member) { deliver_member<out>(req, member); });
    }
    return 0;
}

// ---- References: the association objects --------------------------------------

template <Output out>
void deliver_zone_set_link(const Traversal &req, const ZoneRecord *zone,
                           const ZoneSetRecord *zone_set) {
    std::printf("\t found  zone set -- %s\n", zone_set->name);
    if constexpr (out == Output::Names)
        deliver(req.result, zmoc_fill_reference_zoneSetZone(kMemberOfCollectionClass, req.ns,
                                                            zone_set, zone, _broker));
    else
        deliver(req.result, zmoc_build_instance_zoneSetZone(kMemberOfCollectionClass, req.ns,
                                                            zone_set, zone, req.props, _broker));
}

template <Output out>
void deliver_alias_link(const Traversal &req, const ZoneRecord *zone,
                        const ZoneAliasRecord *alias) {
    std::printf("\t found  zone alias -- %s\n", alias->name);
    if constexpr (out == Output::Names)
        deliver(req.result,
                zmoc_fill_reference(kMemberOfCollectionClass, req.ns, zone, alias, _broker));
    else
        deliver(req.result,
                zmoc_build_instance(kMemberOfCollectionClass, req.ns, zone, alias, _broker));
}

template <Output out>
void deliver_hosted_collection(const Traversal &req, const ZoneRecord *zone, const VsanEntry &vsan,
                               const DomainEntry &domain) {
    if constexpr (out == Output::Names)
        deliver(req.result, hosted_collection_fill_reference_zone(kHostedCollectionClass, req.ns,
                                                                  &vsan, &domain, zone, _broker));
    else
        deliver(req.result, hosted_collection_build_instance_zone(kHostedCollectionClass, req.ns,
                                                                  &vsan, &domain, zone, _broker));
}

template <Output out>
void deliver_member_link(const Traversal &req, const ZoneRecord *zone,
                         const ZoneMemberRecord *member) {
    trace_member(member);
    if constexpr (out == Output::Names)
        deliver(req.result, esd_fill_reference_zoneZoneMember(kElementSettingDataClass, req.ns,
                                                              zone, member, _broker));
    else
        deliver(req.result, esd_build_instance_zoneZoneMember(kElementSettingDataClass, req.ns,
                                                              zone, member, req.props, _broker));
}

template <Output out>
int references(const Traversal &req, const char *result_class, const char *role) {
    const int flag = select_flag(kReferenceSelection, result_class, role);
    if (flag == kUnknownFilter) return 0;
    const int vsan = vsan_of(req.id);

    zone::Owned<ZoneRecord> zone;
    if (zs_cim_get_zone_by_instance_id(mts_q, req.id, zone.out()) != 0) return -1;

    if (flag & kZoneSets) {
        if constexpr (out == Output::Names)
            std::printf("getting zone sets of zone -- %s\n", req.id);
        for_each_node<ZoneSetRecord>(zs_cim_get_zone_zone_set_parents_by_instance_id, req.id,
                                     [&](const ZoneSetRecord *zone_set) {
                                         deliver_zone_set_link<out>(req, zone.get(), zone_set);
                                     });
    }

    if (flag & kAliases) {
        if constexpr (out == Output::Names)
            std::printf("getting zone alias of zone -- %s\n", req.id);
        for_each_node<ZoneAliasRecord>(
            zs_cim_get_zone_zone_aliases_by_instance_id, req.id,
            [&](const ZoneAliasRecord *alias) { deliver_alias_link<out>(req, zone.get(), alias); });
    }

    if (flag & kVsan) {
        const VsanStep step = visit_hosting_vsan(
            mts_q, vsan, true, [&](const VsanEntry &entry, const DomainEntry &domain) {
                deliver_hosted_collection<out>(req, zone.get(), entry, domain);
            });
        if (lookup_failed(step)) return -1;
    }

    if (flag & kMembers) {
        std::printf("getting zone member of zone -- %s\n", req.id);
        for_each_node<ZoneMemberRecord>(zs_cim_get_zone_zone_members_by_instance_id, req.id,
                                        [&](const ZoneMemberRecord *member) {
                                            deliver_member_link<out>(req, zone.get(), member);
                                        });
    }
    return 0;
}

}  // namespace

// Exported under their plain names: the object manager and the other
// units of the library find them there.
#pragma GCC visibility push(default)
extern "C" {

int get_zone_associator_names(const char *id, const char *assoc_class, const char *result_class,
                              const char * /*role*/, const char * /*result_role*/,
                              const CMPIResult *result, const char *ns) {
    return associators<Output::Names>({id, ns, nullptr, result}, assoc_class, result_class);
}

int get_zone_associators(const char *id, const char *assoc_class, const char *result_class,
                         const char * /*role*/, const char * /*result_role*/, const char **props,
                         const CMPIResult *result, const char *ns) {
    return associators<Output::Objects>({id, ns, props, result}, assoc_class, result_class);
}

int get_zone_reference_names(const char *id, const char *result_class, const char *role,
                             const CMPIResult *result, const char *ns) {
    return references<Output::Names>({id, ns, nullptr, result}, result_class, role);
}

int get_zone_references(const char *id, const char *result_class, const char *role,
                        const char **props, const CMPIResult *result, const char *ns) {
    return references<Output::Objects>({id, ns, props, result}, result_class, role);
}

}  // extern "C"
#pragma GCC visibility pop
