// VORNA_ZoneMemberOfCollection: a zone set and each of its zones, a zone and
// each of its zone aliases, in both databases of every VSAN. Zone members
// are not collections' members here; their links are element setting data.
#include <cstdio>

#include "classes/containment_walk.h"
#include "platform/zoning_platform.h"
#include "provider/trace_line.h"
#include "provider/zone_provider.h"

namespace {

// The same words for the editable database's count as for the active one's.
void trace_zone_sets(zone::TraceBatch &out, int count, int vsan) {
    out.text("found ").number(count).text(" active zone set in vsan ").number(vsan).text("\n");
}

void trace_zone_in_zone_set(zone::TraceBatch &out, const ZoneRecord &zone) {
    out.text("\t found zone in zone set -- ").field(zone.name).text("\n");
}

void trace_zone(zone::TraceBatch &out, const ZoneRecord &zone) {
    out.text("\tfound zone ")
        .field(zone.instance_id)
        .text(" -- ")
        .field(zone.name)
        .text(" \ngetting zone alias of zone -- ")
        .field(zone.instance_id)
        .text("\n");
}

void trace_zone_alias(zone::TraceBatch &out, const ZoneAliasRecord &alias) {
    out.text("\t found  zone alias -- ").field(alias.name).text("\n");
}

// Zone sets with their zones first, zones with their aliases second.
static constexpr zone::containment::ContainmentFamily kMemberOfCollection{
    "VORNA_ZoneMemberOfCollection",
    "Collection",
    "Member",
    zmoc_build_instance_MemberCollection,
    zone::containment::ParentKind<ZoneSetRecord, ZoneRecord>{
        {zs_cim_get_all_active_zone_sets, zs_cim_get_all_non_active_zone_sets},
        zs_cim_get_zone_set_zones_by_instance_id,
        "VORNA_ZoneSet",
        zone_set_fill_reference,
        "VORNA_Zone",
        zone_fill_reference,
        zmoc_fill_reference_zoneSetZone,
        trace_zone_sets,
        nullptr,
        trace_zone_in_zone_set,
    },
    zone::containment::ParentKind<ZoneRecord, ZoneAliasRecord>{
        {zs_cim_get_all_active_zones, zs_cim_get_all_non_active_zones},
        zs_cim_get_zone_zone_aliases_by_instance_id,
        "VORNA_Zone",
        zone_fill_reference,
        "VORNA_ZoneAlias",
        zone_alias_fill_reference,
        zmoc_fill_reference,
        nullptr,
        trace_zone,
        trace_zone_alias,
    },
};

}  // namespace

extern "C" {

int get_moc_all_instances(const char *, const CMPIResult *result, const char **props,
                          const char *ns) {
    using zone::containment::Deliver;
    return zone::containment::enumerate(kMemberOfCollection,
                                        {Deliver::Instances, result, props, ns});
}

int get_moc_keys(const char *, const CMPIResult *result, const char *ns) {
    using zone::containment::Deliver;
    return zone::containment::enumerate(kMemberOfCollection, {Deliver::Names, result, nullptr, ns});
}

int get_moc_instance(const CMPIObjectPath *op, const CMPIResult *result, const char **props) {
    return zone::containment::get_instance(kMemberOfCollection, op, result, props);
}

}  // extern "C"
