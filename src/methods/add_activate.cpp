// AddZone, AddZoneAlias and ActivateZoneSet: the methods that hang existing
// zoning objects together and switch a zone set on or off. Each reads the
// objects' InstanceIDs from its reference arguments, makes sure they belong
// to the zone service's VSAN (and, for the two adds, to the editable
// database) and then leaves the change to the zone server.
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

constexpr int kOutcomeZoneSetNotPresent = 21;
constexpr int kOutcomeZoneAlreadyInZoneSet = 22;
constexpr int kOutcomeZoneNotPresent = 23;
// The zone lookup itself failed, so whether the zone exists is unknown:
// neither "Success" nor "Zone Not Present" would be true. -1 is no code of
// the provider's own, so the dispatcher describes it with the platform's
// text for -1, and the zone set is left unchanged.
constexpr int kOutcomeZoneLookupFailed = -1;

constexpr int kActivate = 1;
constexpr int kDeactivate = -1;

// Two references whose InstanceIDs both have to be read and split.
struct ObjectPair {
    KeyBuffer first_id{};
    KeyBuffer second_id{};
    ZoningFields first;
    ZoningFields second;
};

// Reads the InstanceIDs of the references at positions first_position and
// second_position (in that order) and splits them (in that order).
// Answers 0, or the outcome of the refusal: 2 for a missing key, 1 for an
// InstanceID that can't be split.
int read_object_pair(const CMPIArgs *in, unsigned first_position, unsigned second_position,
                     ObjectPair &pair) {
    const CMPIObjectPath *first_ref = reference_at(in, first_position);
    const CMPIObjectPath *second_ref = reference_at(in, second_position);
    if (!instance_id_of(first_ref, pair.first_id)) return kOutcomeInvalidParameter;
    if (!instance_id_of(second_ref, pair.second_id)) return kOutcomeInvalidParameter;
    const std::optional<ZoningFields> first = split_instance_id(pair.first_id);
    if (!first) return kOutcomeInvalidObject;
    const std::optional<ZoningFields> second = split_instance_id(pair.second_id);
    if (!second) return kOutcomeInvalidObject;
    pair.first = *first;
    pair.second = *second;
    return kOutcomeSuccess;
}

// Only objects of the editable database of the zone service's own VSAN may
// be changed by the two adds.
bool both_editable_in_vsan(const ZoningFields &a, const ZoningFields &b, int vsan) {
    return a.active == 0 && b.active == 0 && a.vsan == vsan && b.vsan == vsan;
}

void succeed(const CMPIResult *result, CMPIType type) {
    return_zero(result, type);
    return_done(result);
}

// ---- AddZone ----------------------------------------------------------------

bool zone_set_exists(int vsan, int zone_set_number) {
    int found = 0;
    zone::Owned<ZoneSetRecord> record;
    (void)zs_cim_get_zone_set(mts_q, zone_set_number, vsan, 0, &found, record.out());
    return found != 0;
}

// 0 when the zone exists, else the outcome to report.
int look_up_zone(int vsan, const ZoningFields &zone) {
    int found = 0;
    zone::Owned<ZoneRecord> record;
    if (zs_cim_get_zone(mts_q, zone.number, vsan, zone.active, &found, record.out()) != 0) {
        std::printf("Failure in Obtaining Zones\n");
        return kOutcomeZoneLookupFailed;
    }
    if (found == 0) {
        std::printf("Zone Not Present\n");
        return kOutcomeZoneNotPresent;
    }
    std::printf("Zone Present\n");
    return kOutcomeSuccess;
}

bool zone_set_holds_zone(const char *zone_set_id, const char *zone_id) {
    zone::OwnedList<ZoneRecord> zones;
    (void)zs_cim_get_zone_set_zones_by_instance_id(mts_q, zone_set_id, zones.out());
    bool held = false;
    zones.visit([&](const ZoneRecord *listed) {
        if (!held && std::strncmp(listed->instance_id, zone_id, ZP_INSTANCE_ID_LEN) == 0)
            held = true;
    });
    return held;
}

int add_zone(const CMPIResult *result, const CMPIObjectPath *target, const CMPIArgs *in) {
    const std::optional<int> vsan = zone_service_vsan(target);
    if (!vsan) return ZONE_SERVICE_KEY_REFUSAL;
    if (!has_argument_count(in, 2)) return kOutcomeInvalidParameter;

    ObjectPair pair;  // first: the zone set, second: the zone
    if (const int refusal = read_object_pair(in, 0, 1, pair); refusal != kOutcomeSuccess)
        return refusal;
    const ZoningFields &zone_set = pair.first;
    const ZoningFields &zone = pair.second;
    if (!both_editable_in_vsan(zone_set, zone, *vsan)) return kOutcomeActiveOrForeign;

    if (!zone_set_exists(*vsan, zone_set.number)) {
        std::printf("No Zoneset Present\n");
        return kOutcomeZoneSetNotPresent;
    }
    if (const int missing = look_up_zone(*vsan, zone); missing != kOutcomeSuccess) return missing;
    if (zone_set_holds_zone(pair.first_id, pair.second_id)) {
        std::printf("Zone already in Zoneset\n");
        return kOutcomeZoneAlreadyInZoneSet;
    }

    int error = 0;
    if (zs_cim_add_zone_to_zone_set(mts_q, ZP_OP_ADD, *vsan, zone_set.number, zone.number,
                                    &error) != 0)
        return error;
    succeed(result, CMPI_sint32);
    return kOutcomeSuccess;
}

// ---- AddZoneAlias -----------------------------------------------------------

int add_zone_alias(const CMPIResult *result, const CMPIObjectPath *target, const CMPIArgs *in) {
    const std::optional<int> vsan = zone_service_vsan(target);
    if (!vsan) return ZONE_SERVICE_KEY_REFUSAL;
    debug_attach_hook();
    if (!has_argument_count(in, 2)) return kOutcomeInvalidParameter;

    ObjectPair pair;  // first: the alias (position 1), second: the zone (position 0)
    if (const int refusal = read_object_pair(in, 1, 0, pair); refusal != kOutcomeSuccess)
        return refusal;
    const ZoningFields &alias = pair.first;
    const ZoningFields &zone = pair.second;
    if (!both_editable_in_vsan(alias, zone, *vsan)) return kOutcomeActiveOrForeign;

    int error = 0;
    if (zs_cim_add_alias_to_zone(mts_q, ZP_OP_ADD, *vsan, zone.number, alias.number, &error) != 0)
        return error;
    succeed(result, CMPI_sint32);
    return kOutcomeSuccess;
}

// ---- ActivateZoneSet --------------------------------------------------------

int activate_zone_set(const CMPIResult *result, const CMPIObjectPath *target, const CMPIArgs *in) {
    const std::optional<int> vsan = zone_service_vsan(target);
    if (!vsan) return ZONE_SERVICE_KEY_REFUSAL;
    debug_attach_hook();
    const std::optional<unsigned> count = argument_count(in);
    if (!count) return kOutcomeInvalidParameter;
    if (*count != 2) return kOutcomeInvalidObject;

    const CMPIObjectPath *zone_set_ref = reference_at(in, 0);
    const std::optional<bool> activate = boolean_at(in, 1);
    if (!activate) return kOutcomeInvalidParameter;
    int activation = *activate ? kActivate : kDeactivate;

    KeyBuffer zone_set_id{};
    if (!instance_id_of(zone_set_ref, zone_set_id)) return kOutcomeInvalidParameter;
    const std::optional<ZoningFields> zone_set = split_instance_id(zone_set_id);
    if (!zone_set) return kOutcomeInvalidObject;
    // Either database may be named here; the zone server decides.
    if (zone_set->vsan != *vsan) return kOutcomeActiveOrForeign;

    int error = 0;
    if (zs_cim_activate_zone_set(mts_q, zone_set->vsan, zone_set->active, zone_set->number,
                                 &activation, &error) != 0)
        return error;
    std::printf("Returning Success\n");
    succeed(result, CMPI_uint32);
    return kOutcomeSuccess;
}

}  // namespace

extern "C" {

int AddZone(CMPIMethodMI *, const CMPIContext *, const CMPIResult *result, const CMPIObjectPath *op,
            const char *, const CMPIArgs *in, CMPIArgs *) {
    return add_zone(result, op, in);
}

int AddZoneAlias(CMPIMethodMI *, const CMPIContext *, const CMPIResult *result,
                 const CMPIObjectPath *op, const char *, const CMPIArgs *in, CMPIArgs *) {
    return add_zone_alias(result, op, in);
}

int ActivateZoneSet(CMPIMethodMI *, const CMPIContext *, const CMPIResult *result,
                    const CMPIObjectPath *op, const char *, const CMPIArgs *in, CMPIArgs *) {
    return activate_zone_set(result, op, in);
}

}  // extern "C"
