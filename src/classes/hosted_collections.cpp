// VORNA_ZoneHostedCollection: each VSAN (Antecedent) and every zone set,
// zone and zone alias it hosts (Dependent), in both databases.
//
// The walk reads the whole VSAN table at once; VSAN 4094 and VSANs without
// a domain entry host nothing here. VORNA_HostedCollection, though accepted
// by the class check, has no instances.
#include "classes/path_keys.h"
#include "platform/zoning_platform.h"
#include "provider/platform_records.h"
#include "provider/zone_provider.h"

namespace {

constexpr const char *kAssociationClass = "VORNA_ZoneHostedCollection";
constexpr const char *kVsanClass = "VORNA_Vsan";
constexpr const char *kAntecedent = "Antecedent";
constexpr const char *kDependent = "Dependent";
// The VSAN that the switch keeps for itself.
constexpr int kReservedVsan = 4094;
constexpr int kDomainEntryMode = 1;

constexpr int kMakeNames = 0;
constexpr int kMakeInstances = 1;

// One kind of hosted collection: its two queries (active first, then the
// editable database) and the builder of its reference.
template <typename Record>
struct CollectionKind {
    int (*databases[2])(int queue, int vsan, int *count, Record **records);
    const char *cls;
    CMPIObjectPath *(*reference)(const char *cls, const char *ns, const Record *record,
                                 const CMPIBroker *broker);
};

static constexpr CollectionKind<ZoneSetRecord> kZoneSets{
    {zs_cim_get_all_active_zone_sets, zs_cim_get_all_non_active_zone_sets},
    "VORNA_ZoneSet",
    zone_set_fill_reference,
};
static constexpr CollectionKind<ZoneRecord> kZones{
    {zs_cim_get_all_active_zones, zs_cim_get_all_non_active_zones},
    "VORNA_Zone",
    zone_fill_reference,
};
static constexpr CollectionKind<ZoneAliasRecord> kZoneAliases{
    {zs_cim_get_all_active_zone_aliases, zs_cim_get_all_non_active_zone_aliases},
    "VORNA_ZoneAlias",
    zone_alias_fill_reference,
};

// One request's walk over the VSANs of the table.
struct HostedWalk {
    int mode;
    const CMPIResult *result;
    const char *ns;
    int queue;
    const CMPIBroker *broker;
};

void deliver_link(const HostedWalk &walk, const CMPIObjectPath *vsan_ref,
                  const CMPIObjectPath *collection_ref) {
    if (walk.mode == kMakeInstances) {
        zone::paths::deliver_instance(
            walk.result, association_class_build_instance_path(kAssociationClass, walk.ns, vsan_ref,
                                                               collection_ref, kAntecedent,
                                                               kDependent, walk.broker));
    } else {
        zone::paths::deliver_path(
            walk.result, zone_hosted_collection_fill_reference(kAssociationClass, walk.ns, vsan_ref,
                                                               collection_ref, walk.broker));
    }
}

// One pass: every collection of one kind in one database of the VSAN. A
// failed query gives nothing; the array is freed once whatever its count.
template <typename Record>
void run_pass(const HostedWalk &walk, const CollectionKind<Record> &kind,
              int (*query)(int, int, int *, Record **), int vsan, const CMPIObjectPath *vsan_ref) {
    int count = 0;
    zone::Owned<Record> records;
    if (query(walk.queue, vsan, &count, records.out()) != 0 || !records) return;
    for (int i = 0; i < count; ++i) {
        const CMPIObjectPath *collection_ref =
            kind.reference(kind.cls, walk.ns, &records.get()[i], walk.broker);
        deliver_link(walk, vsan_ref, collection_ref);
    }
}

template <typename Record>
void run_both_databases(const HostedWalk &walk, const CollectionKind<Record> &kind, int vsan,
                        const CMPIObjectPath *vsan_ref) {
    for (auto query : kind.databases) run_pass(walk, kind, query, vsan, vsan_ref);
}

// Six passes per VSAN: zone sets, zones, aliases, each active database
// before the editable one.
void visit_vsan(const HostedWalk &walk, const VsanEntry &entry) {
    if (entry.vsan == kReservedVsan) return;
    DomainEntry domain{};
    if (dm_cim_get_dmEntry(walk.queue, entry.vsan, kDomainEntryMode, &domain) != 0) return;
    const CMPIObjectPath *vsan_ref =
        vsan_fill_reference(kVsanClass, walk.ns, &entry, &domain, walk.broker);
    run_both_databases(walk, kZoneSets, entry.vsan, vsan_ref);
    run_both_databases(walk, kZones, entry.vsan, vsan_ref);
    run_both_databases(walk, kZoneAliases, entry.vsan, vsan_ref);
}

// A reference the request's path lacks leaves its property null.
void set_reference(CMPIInstance *instance, const char *property, const CMPIObjectPath *ref) {
    if (ref != nullptr)
        instance->ft->setProperty(instance, property, reinterpret_cast<const CMPIValue *>(&ref),
                                  CMPI_ref);
}

}  // namespace

extern "C" {

int get_zone_hosted_collection_helper(const char *, int mode, const CMPIResult *result,
                                      const char *ns, const char **, int queue,
                                      const CMPIBroker *broker) {
    int count = 0;
    zone::Owned<VsanEntry> table;
    if (vsan_cim_get_all_vsanEntry(queue, &count, table.out()) != 0) return -1;
    if (!table) return 0;
    const HostedWalk walk{mode, result, ns, queue, broker};
    for (int i = 0; i < count; ++i) visit_vsan(walk, table.get()[i]);
    return 0;
}

int get_zone_hosted_collection_all_instances(const char *cls, const CMPIResult *result,
                                             const char *ns, int queue, const char **props,
                                             const CMPIBroker *broker) {
    return get_zone_hosted_collection_helper(cls, kMakeInstances, result, ns, props, queue, broker);
}

int get_zone_hosted_collection_keys(const char *cls, const CMPIResult *result, const char *ns,
                                    int queue, const CMPIBroker *broker) {
    return get_zone_hosted_collection_helper(cls, kMakeNames, result, ns, nullptr, queue, broker);
}

// The instance repeats the two references of the request's path, on a path
// whose host is the switch's system name; no zoning query is made, so it is
// returned whether or not the VSAN hosts that collection.
int get_zone_hosted_collection_instance(const CMPIObjectPath *op, const CMPIResult *result,
                                        const char **, int, const CMPIBroker *broker) {
    if (broker == nullptr) return 0;
    const zone::paths::ReferencePair pair =
        zone::paths::reference_pair_of(op, kAntecedent, kDependent);
    CMPIObjectPath *path = broker->eft->newObjectPath(broker, zone::paths::namespace_of(op),
                                                      kAssociationClass, nullptr);
    if (path == nullptr) return 0;
    if (const char *host = getCSName(); host != nullptr) path->ft->setHostname(path, host);
    CMPIInstance *instance = broker->eft->newInstance(broker, path, nullptr);
    if (instance == nullptr) return 0;
    set_reference(instance, kAntecedent, pair.first);
    set_reference(instance, kDependent, pair.second);
    zone::paths::deliver_instance(result, instance);
    return 0;
}

}  // extern "C"
