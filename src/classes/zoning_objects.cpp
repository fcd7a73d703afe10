// Zone sets, zones and zone aliases (VORNA_ZoneSet, VORNA_Zone,
// VORNA_ZoneAlias): the core zoning objects of every VSAN. The three classes
// follow one pattern, driven by the per-class table below: enumerations walk
// every VSAN and, within a VSAN, list the active database first and the
// editable one after it, never merging the two; a retrieval asks the
// platform for one record by its InstanceID.
#include <cstdio>
#include <string_view>

#include <cmpimacs.h>

#include "platform/zoning_platform.h"
#include "provider/platform_records.h"
#include "provider/trace_line.h"
#include "provider/zone_provider.h"

namespace {

constexpr const char *kNotFound = "Could not find or construct instance";

// What an enumeration prints besides its count lines.
enum class VsanTrace {
    None,
    FoundVsan,            // "\t FOUND VSAN %d\n"
    FoundVsanGettingKeys  // the same, then "getting zone all instances keys\n"
};
enum class RecordTrace {
    None,
    IndexActiveOnly,  // "i is %d class_name is %s name_space is %s \n", active database only
    IdAndName         // "\tfound zone %s -- %s \n", both databases
};
struct EnumerationTrace {
    VsanTrace per_vsan;
    RecordTrace per_record;
};

template <typename Record>
struct ZoningClass {
    int (*all_active)(int, int, int *, Record **);
    int (*all_non_active)(int, int, int *, Record **);
    int (*by_instance_id)(int, const char *, Record **);
    CMPIInstance *(*build_instance)(const char *, const char *, const Record *, const char **,
                                    const CMPIBroker *);
    CMPIObjectPath *(*fill_reference)(const char *, const char *, const Record *,
                                      const CMPIBroker *);
    // The middles of "found %d active <noun> in vsan %d\n" and of its
    // editable-database twin, spelled out whole: one copy a line.
    std::string_view active_count_middle;
    std::string_view non_active_count_middle;
    EnumerationTrace names;
    EnumerationTrace instances;
    bool trace_failed_retrieval;
};

static constexpr ZoningClass<ZoneSetRecord> kZoneSets{
    zs_cim_get_all_active_zone_sets,
    zs_cim_get_all_non_active_zone_sets,
    zs_cim_get_zone_set_by_instance_id,
    zone_set_build_instance,
    zone_set_fill_reference,
    " active zone set in vsan ",
    " NON active zone set in vsan ",
    {VsanTrace::None, RecordTrace::IndexActiveOnly},
    {VsanTrace::None, RecordTrace::None},
    false,
};

static constexpr ZoningClass<ZoneRecord> kZones{
    zs_cim_get_all_active_zones,
    zs_cim_get_all_non_active_zones,
    zs_cim_get_zone_by_instance_id,
    zone_build_instance,
    zone_fill_reference,
    " active zone in vsan ",
    " NON active zone in vsan ",
    {VsanTrace::FoundVsanGettingKeys, RecordTrace::None},
    {VsanTrace::FoundVsan, RecordTrace::IdAndName},
    true,
};

// Aliases report themselves with the zone wording.
static constexpr ZoningClass<ZoneAliasRecord> kZoneAliases{
    zs_cim_get_all_active_zone_aliases,
    zs_cim_get_all_non_active_zone_aliases,
    zs_cim_get_zone_alias_by_instance_id,
    zone_alias_build_instance,
    zone_alias_fill_reference,
    " active zone in vsan ",
    " NON active zone in vsan ",
    {VsanTrace::None, RecordTrace::None},
    {VsanTrace::None, RecordTrace::IdAndName},
    false,
};

const char *text_or_empty(const CMPIString *s) {
    if (s == nullptr) return "";
    const char *chars = CMGetCharPtr(s);
    return chars != nullptr ? chars : "";
}

void trace_vsan(zone::TraceBatch &out, VsanTrace trace, int vsan) {
    if (trace == VsanTrace::None) return;
    out.text("\t FOUND VSAN ").number(vsan).text("\n");
    if (trace == VsanTrace::FoundVsanGettingKeys) out.text("getting zone all instances keys\n");
}

enum class Database { Active, NonActive };

void trace_count(zone::TraceBatch &out, std::string_view middle, int count, int vsan) {
    out.text("found ").number(count).text(middle).number(vsan).text("\n");
}

const char *or_empty(const char *text) {
    return text != nullptr ? text : "";
}

// What one enumeration passes down to its trace lines: its class and
// namespace, measured once, and the batch of its lines.
struct Walk {
    std::string_view cls_text;
    std::string_view ns_text;
    zone::TraceBatch out;
};

// Record texts are printed no further than their fields reach.
template <typename Record>
void trace_record(Walk &walk, RecordTrace trace, Database database, int index,
                  const Record &record) {
    zone::TraceBatch &out = walk.out;
    if (trace == RecordTrace::IndexActiveOnly && database == Database::Active)
        out.text("i is ")
            .number(index)
            .text(" class_name is ")
            .text(walk.cls_text)
            .text(" name_space is ")
            .text(walk.ns_text)
            .text(" \n");
    else if (trace == RecordTrace::IdAndName)
        out.text("\tfound zone ")
            .field(record.instance_id)
            .text(" -- ")
            .field(record.name)
            .text(" \n");
}

// One database of one VSAN: the array is read, each record is handed to
// deliver in array order, and the array is released. A query that fails
// hands back nothing, so nothing is printed, delivered or released.
template <typename Record, typename Deliver>
void list_database(Walk &walk, int (*query)(int, int, int *, Record **), Database database,
                   const ZoningClass<Record> &kind, const EnumerationTrace &trace, int vsan,
                   Deliver &&deliver) {
    int count = 0;
    Record *records = nullptr;
    if (query(mts_q, vsan, &count, &records) != 0) return;
    const zone::Owned<Record> owner(records);
    trace_count(
        walk.out,
        database == Database::Active ? kind.active_count_middle : kind.non_active_count_middle,
        count, vsan);
    for (int i = 0; records != nullptr && i < count; ++i) {
        trace_record(walk, trace.per_record, database, i, records[i]);
        deliver(records[i]);
    }
}

template <typename Record, typename Deliver>
void enumerate(const ZoningClass<Record> &kind, const EnumerationTrace &trace, const char *cls,
               const char *ns, Deliver &&deliver) {
    Walk walk{or_empty(cls), or_empty(ns), {}};
    zone::for_each_vsan(mts_q, [&](int vsan) {
        trace_vsan(walk.out, trace.per_vsan, vsan);
        list_database(walk, kind.all_active, Database::Active, kind, trace, vsan, deliver);
        list_database(walk, kind.all_non_active, Database::NonActive, kind, trace, vsan, deliver);
    });
}

template <typename Record>
int list_names(const ZoningClass<Record> &kind, const char *cls, const CMPIResult *result,
               const char *ns) {
    enumerate(kind, kind.names, cls, ns, [&](const Record &record) {
        if (const CMPIObjectPath *path = kind.fill_reference(cls, ns, &record, _broker))
            CMReturnObjectPath(result, path);
    });
    return 0;
}

template <typename Record>
int list_instances(const ZoningClass<Record> &kind, const char *cls, const CMPIResult *result,
                   const char **props, const char *ns) {
    enumerate(kind, kind.instances, cls, ns, [&](const Record &record) {
        if (const CMPIInstance *instance = kind.build_instance(cls, ns, &record, props, _broker))
            CMReturnInstance(result, instance);
    });
    return 0;
}

void report_not_found(CMPIStatus *st) {
    if (st == nullptr) return;
    st->rc = CMPI_RC_ERR_NOT_FOUND;
    st->msg = _broker != nullptr ? CMNewString(_broker, kNotFound, nullptr) : nullptr;
}

// Whichever database and VSAN the InstanceID names is the platform's lookup
// to resolve.
template <typename Record>
int retrieve(const ZoningClass<Record> &kind, const char *cls, const char *instance_id,
             const CMPIResult *result, const char **props, const char *ns, CMPIStatus *st) {
    zone::Owned<Record> record;
    if (kind.by_instance_id(mts_q, instance_id != nullptr ? instance_id : "", record.out()) != 0) {
        report_not_found(st);
    } else {
        const CMPIInstance *instance = kind.build_instance(cls, ns, record.get(), props, _broker);
        if (instance == nullptr || instance->hdl == nullptr)
            report_not_found(st);
        else
            CMReturnInstance(result, instance);
    }
    if (kind.trace_failed_retrieval && st != nullptr && st->rc != CMPI_RC_OK)
        std::printf("---   in get_zone_instance CMPI GetInstance() failed : %s",
                    text_or_empty(st->msg));
    return 0;
}

}  // namespace

extern "C" {

int get_zone_set_keys(const char *cls, const CMPIResult *result, const char *ns) {
    return list_names(kZoneSets, cls, result, ns);
}

int get_zone_set_all_instances(const char *cls, const CMPIResult *result, const char **props,
                               const char *ns) {
    return list_instances(kZoneSets, cls, result, props, ns);
}

int get_zone_set_instance(const char *cls, const char *instance_id, const CMPIResult *result,
                          const char **props, const char *ns, CMPIStatus *st) {
    return retrieve(kZoneSets, cls, instance_id, result, props, ns, st);
}

int get_zone_keys(const char *cls, const CMPIResult *result, const char *ns) {
    return list_names(kZones, cls, result, ns);
}

int get_zone_all_instances(const char *cls, const CMPIResult *result, const char **props,
                           const char *ns) {
    return list_instances(kZones, cls, result, props, ns);
}

int get_zone_instance(const char *cls, const char *instance_id, const CMPIResult *result,
                      const char **props, const char *ns, CMPIStatus *st) {
    return retrieve(kZones, cls, instance_id, result, props, ns, st);
}

int get_zone_alias_keys(const char *cls, const CMPIResult *result, const char *ns) {
    return list_names(kZoneAliases, cls, result, ns);
}

int get_zone_alias_all_instances(const char *cls, const CMPIResult *result, const char **props,
                                 const char *ns) {
    return list_instances(kZoneAliases, cls, result, props, ns);
}

int get_zone_alias_instance(const char *cls, const char *instance_id, const CMPIResult *result,
                            const char **props, const char *ns, CMPIStatus *st) {
    return retrieve(kZoneAliases, cls, instance_id, result, props, ns, st);
}

}  // extern "C"
