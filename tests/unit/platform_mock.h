// GoogleMock double of the zoning platform: every operation of
// zoning_platform.h forwards to the PlatformMock installed by the test.
// Generated from the header by tests/unit/gen_platform_mock.py; regenerate
// it when the header changes.
#pragma once

#include <gmock/gmock.h>

#include "platform/zoning_platform.h"

class PlatformMock {
  public:
    PlatformMock();
    ~PlatformMock();
    PlatformMock(const PlatformMock &) = delete;
    PlatformMock &operator=(const PlatformMock &) = delete;

    MOCK_METHOD(int, init_mts, (int*));
    MOCK_METHOD(void, mutex_lock, ());
    MOCK_METHOD(void, mutex_unlock, ());
    MOCK_METHOD(int, vsan_cim_get_vsanEntry, (int, int, VsanEntry*));
    MOCK_METHOD(int, vsan_cim_get_all_vsanEntry, (int, int*, VsanEntry**));
    MOCK_METHOD(int, vsan_cim_check_vsan_index, (int));
    MOCK_METHOD(int, dm_cim_get_dmEntry, (int, int, int, DomainEntry*));
    MOCK_METHOD(int, zs_cim_get_all_active_zone_sets, (int, int, int*, ZoneSetRecord**));
    MOCK_METHOD(int, zs_cim_get_all_non_active_zone_sets, (int, int, int*, ZoneSetRecord**));
    MOCK_METHOD(int, zs_cim_get_all_active_zones, (int, int, int*, ZoneRecord**));
    MOCK_METHOD(int, zs_cim_get_all_non_active_zones, (int, int, int*, ZoneRecord**));
    MOCK_METHOD(int, zs_cim_get_all_active_zone_aliases, (int, int, int*, ZoneAliasRecord**));
    MOCK_METHOD(int, zs_cim_get_all_non_active_zone_aliases, (int, int, int*, ZoneAliasRecord**));
    MOCK_METHOD(int, zs_cim_get_all_active_zone_members, (int, int, int*, ZoneMemberRecord**));
    MOCK_METHOD(int, zs_cim_get_all_non_active_zone_members, (int, int, int*, ZoneMemberRecord**));
    MOCK_METHOD(int, zs_cim_get_zone_set_by_instance_id, (int, const char*, ZoneSetRecord**));
    MOCK_METHOD(int, zs_cim_get_zone_by_instance_id, (int, const char*, ZoneRecord**));
    MOCK_METHOD(int, zs_cim_get_zone_alias_by_instance_id, (int, const char*, ZoneAliasRecord**));
    MOCK_METHOD(int, zs_cim_get_zone_member_by_instance_id, (int, const char*, ZoneMemberRecord**));
    MOCK_METHOD(int, zs_cim_get_zone_set_zones_by_instance_id, (int, const char*, ZoneRecord**));
    MOCK_METHOD(int, zs_cim_get_zone_zone_set_parents_by_instance_id, (int, const char*, ZoneSetRecord**));
    MOCK_METHOD(int, zs_cim_get_zone_zone_aliases_by_instance_id, (int, const char*, ZoneAliasRecord**));
    MOCK_METHOD(int, zs_cim_get_zone_zone_members_by_instance_id, (int, const char*, ZoneMemberRecord**));
    MOCK_METHOD(int, zs_cim_get_zone_alias_zone_parents_by_instance_id, (int, const char*, ZoneRecord**));
    MOCK_METHOD(int, zs_cim_get_zone_alias_zone_members_by_instance_id, (int, const char*, ZoneMemberRecord**));
    MOCK_METHOD(int, zs_cim_get_zone_member_zone_parents_by_instance_id, (int, const char*, cim_g_slist**));
    MOCK_METHOD(int, zs_cim_get_zone_member_zone_alias_parents_by_instance_id, (int, const char*, cim_g_slist**));
    MOCK_METHOD(int, zs_cim_get_zone_set, (int, int, int, int, int*, ZoneSetRecord**));
    MOCK_METHOD(int, zs_cim_get_zone, (int, int, int, int, int*, ZoneRecord**));
    MOCK_METHOD(int, zs_cim_get_fields_from_generic_instance_id, (const char*, int*, int*, int*));
    MOCK_METHOD(int, zs_cim_get_fields_from_member_instance_id, (const char*, int*, uint8_t*, unsigned char*, int*, int*, int));
    MOCK_METHOD(int, zs_cim_create_zoning_object, (int, int, int, int, const char*, void**, int*));
    MOCK_METHOD(int, zs_cim_create_zoning_object_with_id, (int, int, int, int, int, void**, int*));
    MOCK_METHOD(int, zs_cim_add_zone_to_zone_set, (int, int, int, int, int, int*));
    MOCK_METHOD(int, zs_cim_add_alias_to_zone, (int, int, int, int, int, int*));
    MOCK_METHOD(int, zs_cim_add_zoning_member, (int, int, int, int, int, int, uint32_t, unsigned char*, int*, int*));
    MOCK_METHOD(int, zs_cim_activate_zone_set, (int, int, int, int, int*, int*));
    MOCK_METHOD(int, zs_cim_remove_zone_member_from_all_parents, (int, const char*));
    MOCK_METHOD(cim_g_slist*, cim_g_slist_alloc, ());
    MOCK_METHOD(int, cim_g_slist_length, (cim_g_slist*));
    MOCK_METHOD(void*, cim_g_slist_nth_data, (cim_g_slist*, int));
    MOCK_METHOD(void, cim_g_slist_destroy, (cim_g_slist*));
    MOCK_METHOD(const char*, syserr2str, (int));
    MOCK_METHOD(const char*, syserr_format, (int));
    MOCK_METHOD(const char*, getCSName, ());
    MOCK_METHOD(int, decode_cim_member_type, (uint32_t, uint8_t*));
    MOCK_METHOD(int, get_member_value_length, (uint8_t));
    MOCK_METHOD(int, get_member_value_from_cim_member_type_value, (const char*, uint8_t, unsigned char*));
    MOCK_METHOD(int, cim_sprintf_wwn, (char*, const unsigned char*));
    MOCK_METHOD(int, cim_sprintf_dom_interface_hex, (char*, const unsigned char*));
    MOCK_METHOD(int, zs_cim_sprintf_dom_port, (char*, const unsigned char*));
    MOCK_METHOD(int, wwn_cim_get_hex_from_str_wwn, (const char*, unsigned char*));
    MOCK_METHOD(uint32_t, tlv_aligned_data_size_get, (uint32_t));
    MOCK_METHOD(int, tlv_aligned_array_add_tlv, (unsigned char*, uint32_t, uint32_t, uint32_t, const void*, int));
    MOCK_METHOD(int, ddas_api_get_all_device_alias_entries, (int, void**, ddas_iterator**));
    MOCK_METHOD(int, ddas_api_iter_get_num_entries, (ddas_iterator*, int*));
    MOCK_METHOD(int, ddas_api_iter_get_next_device_alias_entry, (ddas_iterator*, DeviceAliasEntry*));
    MOCK_METHOD(int, ddas_get_device_alias_given_pwwn, (int, uint64_t, char*));
    MOCK_METHOD(int, ddas_create_device_alias_entry, (int, const char*, unsigned char*, DeviceAliasCommitContext*, int, int));
    MOCK_METHOD(int, ddas_remove_device_alias_entry, (int, const char*, DeviceAliasCommitContext*, int));
    MOCK_METHOD(int, ddas_commit, (int, DeviceAliasCommitContext*, int));
    MOCK_METHOD(CMPIInstance*, zone_service_build_instance, (const char*, const char*, int, const char**, int, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, zone_service_fill_reference, (const char*, const char*, int, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, hosted_service_build_instance, (const char*, const char*, const VsanEntry*, const DomainEntry*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, hosted_service_fill_reference, (const char*, const char*, const VsanEntry*, const DomainEntry*, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, zone_set_build_instance, (const char*, const char*, const ZoneSetRecord*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, zone_set_fill_reference, (const char*, const char*, const ZoneSetRecord*, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, zone_build_instance, (const char*, const char*, const ZoneRecord*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, zone_fill_reference, (const char*, const char*, const ZoneRecord*, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, zone_alias_build_instance, (const char*, const char*, const ZoneAliasRecord*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, zone_alias_fill_reference, (const char*, const char*, const ZoneAliasRecord*, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, zone_member_build_instance, (const char*, const char*, const ZoneMemberRecord*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, zone_member_fill_reference, (const char*, const char*, const ZoneMemberRecord*, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, device_alias_build_instance, (const char*, const char*, const DeviceAliasEntry*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, device_alias_fill_reference, (const char*, const char*, const DeviceAliasEntry*, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, esd_build_instance, (const char*, const char*, const CMPIObjectPath*, const CMPIObjectPath*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, esd_fill_reference_zoneZoneMember, (const char*, const char*, const ZoneRecord*, const ZoneMemberRecord*, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, esd_fill_reference_zoneAliasZoneMember, (const char*, const char*, const ZoneAliasRecord*, const ZoneMemberRecord*, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, esd_build_instance_zoneZoneMember, (const char*, const char*, const ZoneRecord*, const ZoneMemberRecord*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, esd_build_instance_zoneAliasZoneMember, (const char*, const char*, const ZoneAliasRecord*, const ZoneMemberRecord*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, zmoc_build_instance_MemberCollection, (const char*, const char*, const CMPIObjectPath*, const CMPIObjectPath*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, zmoc_fill_reference_zoneSetZone, (const char*, const char*, const ZoneSetRecord*, const ZoneRecord*, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, zmoc_fill_reference, (const char*, const char*, const ZoneRecord*, const ZoneAliasRecord*, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, zmoc_build_instance_zoneSetZone, (const char*, const char*, const ZoneSetRecord*, const ZoneRecord*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, zmoc_build_instance, (const char*, const char*, const ZoneRecord*, const ZoneAliasRecord*, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, vsan_build_instance, (const char*, const char*, const VsanEntry*, const DomainEntry*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, vsan_fill_reference, (const char*, const char*, const VsanEntry*, const DomainEntry*, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, hosted_collection_build_instance_zset, (const char*, const char*, const VsanEntry*, const DomainEntry*, const ZoneSetRecord*, const char**, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, hosted_collection_fill_reference_zset, (const char*, const char*, const VsanEntry*, const DomainEntry*, const ZoneSetRecord*, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, hosted_collection_build_instance_zone, (const char*, const char*, const VsanEntry*, const DomainEntry*, const ZoneRecord*, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, hosted_collection_fill_reference_zone, (const char*, const char*, const VsanEntry*, const DomainEntry*, const ZoneRecord*, const CMPIBroker*));
    MOCK_METHOD(CMPIObjectPath*, zone_hosted_collection_fill_reference, (const char*, const char*, const CMPIObjectPath*, const CMPIObjectPath*, const CMPIBroker*));
    MOCK_METHOD(CMPIInstance*, association_class_build_instance_path, (const char*, const char*, const CMPIObjectPath*, const CMPIObjectPath*, const char*, const char*, const CMPIBroker*));
};
