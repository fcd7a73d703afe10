// VORNA_ElementSettingData: a zone or zone alias (ManagedElement) and the
// setting data of one of its members (SettingData), in both databases of
// every VSAN.
#include <cstdio>

#include "classes/containment_walk.h"
#include "platform/zoning_platform.h"
#include "provider/trace_line.h"
#include "provider/zone_provider.h"

namespace {

void trace_zone(zone::TraceBatch &out, const ZoneRecord &zone) {
    out.text("\tfound zone ").field(zone.instance_id).text(" -- ").field(zone.name).text(" \n");
}

void trace_zone_alias(zone::TraceBatch &out, const ZoneAliasRecord &alias) {
    out.text("\tfound zone alias")
        .field(alias.instance_id)
        .text(" -- ")
        .field(alias.name)
        .text(" \n");
}

void trace_member(zone::TraceBatch &out, const ZoneMemberRecord &member) {
    out.text("\t found zone zone member -- ").field(member.member_value).text("\n");
}

// Zones first, zone aliases second; the children of both are members.
static constexpr zone::containment::ContainmentFamily kElementSettingData{
    "VORNA_ElementSettingData",
    "ManagedElement",
    "SettingData",
    esd_build_instance,
    zone::containment::ParentKind<ZoneRecord, ZoneMemberRecord>{
        {zs_cim_get_all_active_zones, zs_cim_get_all_non_active_zones},
        zs_cim_get_zone_zone_members_by_instance_id,
        "VORNA_Zone",
        zone_fill_reference,
        "VORNA_ZoneMemberSettingData",
        zone_member_fill_reference,
        esd_fill_reference_zoneZoneMember,
        nullptr,
        trace_zone,
        trace_member,
    },
    zone::containment::ParentKind<ZoneAliasRecord, ZoneMemberRecord>{
        {zs_cim_get_all_active_zone_aliases, zs_cim_get_all_non_active_zone_aliases},
        zs_cim_get_zone_alias_zone_members_by_instance_id,
        "VORNA_ZoneAlias",
        zone_alias_fill_reference,
        "VORNA_ZoneMemberSettingData",
        zone_member_fill_reference,
        esd_fill_reference_zoneAliasZoneMember,
        nullptr,
        trace_zone_alias,
        trace_member,
    },
};

}  // namespace

extern "C" {

int get_esd_all_instances(const char *, const CMPIResult *result, const char **props,
                          const char *ns) {
    using zone::containment::Deliver;
    return zone::containment::enumerate(kElementSettingData,
                                        {Deliver::Instances, result, props, ns});
}

int get_esd_keys(const char *, const CMPIResult *result, const char *ns) {
    using zone::containment::Deliver;
    return zone::containment::enumerate(kElementSettingData, {Deliver::Names, result, nullptr, ns});
}

int get_esd_instance(const CMPIObjectPath *op, const CMPIResult *result, const char **props) {
    return zone::containment::get_instance(kElementSettingData, op, result, props);
}

}  // extern "C"
