// Associations of a zone set: the zones it holds (member of collection, the
// zone set is the Collection) and the VSAN whose database it belongs to
// (hosted collection, the VSAN is the Antecedent). The caller has checked
// that the zone set exists and holds the platform mutex.
#include <cstdio>

#include "associations/association_support.h"

namespace {

using namespace zone::assoc;

// Neighbour kinds of a zone set.
enum : int { kZones = 1, kVsan = 2 };

// The association-class filter: assocClass for associators, resultClass for
// references.
constexpr SelectionRow kZoneSetSelection[] = {
    {named("VORNA_ZoneMemberOfCollection"), kAny, kZones},
    {named("VORNA_ZoneHostedCollection"), kAny, kVsan},
    {kNullOrEmpty, kAny, kZones | kVsan},
};

// resultClass names under which the associators still report the VSAN.
constexpr std::string_view kVsanResultClasses[] = {"CIM_AdminDomain", "CIM_System"};

template <Output out>
void trace_associators_start() {
    if constexpr (out == Output::Names)
        std::printf("\n\n zone_provider:zone_set_associatorNames() - Start 1 \n");
    else
        std::printf("\n\n zone_provider:zone_set_associators() - Start  \n");
}

template <Output out>
void trace_associators_flag(int flag) {
    if constexpr (out == Output::Names)
        std::printf("\n\n zone_provider:zone_set_associatorNames() - flag is %d \n", flag);
    else
        std::printf("\n\n zone_provider:zone_set_associators() - flag is %d \n", flag);
}

template <Output out>
void deliver_zone(const Traversal &req, const ZoneRecord *zone) {
    std::printf("\t found  zone -- %s\n", zone->name);
    deliver_neighbour<out>(req, zone);
}

template <Output out>
void deliver_vsan(const Traversal &req, const VsanEntry &vsan, const DomainEntry &domain) {
    if constexpr (out == Output::Names) {
        deliver_neighbour<out>(req, vsan, domain);
    } else {
        // An instance without a handle is as good as none.
        const CMPIInstance *instance =
            vsan_build_instance("VORNA_Vsan", req.ns, &vsan, &domain, req.props, _broker);
        if (instance != nullptr && instance->hdl != nullptr)
            deliver(req.result, instance);
        else
            std::printf("Vsan object is null\n");
    }
}

template <Output out>
int associators(const Traversal &req, const char *assoc_class, const char *result_class) {
    trace_associators_start<out>();
    const int flag = select_flag(kZoneSetSelection, assoc_class, nullptr);
    if (flag == kUnknownFilter) return 0;
    trace_associators_flag<out>(flag);
    const int vsan = vsan_of(req.id);

    // The zones are reported whatever the resultClass says.
    if (flag & kZones)
        for_each_node<ZoneRecord>(zs_cim_get_zone_set_zones_by_instance_id, req.id,
                                  [&](const ZoneRecord *zone) { deliver_zone<out>(req, zone); });

    if (flag & kVsan) {
        const VsanStep step =
            visit_hosting_vsan(mts_q, vsan, null_or_one_of(result_class, kVsanResultClasses),
                               [&](const VsanEntry &entry, const DomainEntry &domain) {
                                   deliver_vsan<out>(req, entry, domain);
                               });
        if (lookup_failed(step)) return -1;
    }
    return 0;
}

template <Output out>
void deliver_zone_link(const Traversal &req, const ZoneSetRecord *zone_set,
                       const ZoneRecord *zone) {
    if constexpr (out == Output::Names) {
        deliver(req.result, zmoc_fill_reference_zoneSetZone(kMemberOfCollectionClass, req.ns,
                                                            zone_set, zone, _broker));
    } else {
        std::printf("\t found  zone -- %s\n", zone->name);
        deliver(req.result, zmoc_build_instance_zoneSetZone(kMemberOfCollectionClass, req.ns,
                                                            zone_set, zone, req.props, _broker));
    }
}

template <Output out>
void deliver_hosted_collection(const Traversal &req, const VsanEntry &vsan,
                               const DomainEntry &domain, const ZoneSetRecord *zone_set) {
    if constexpr (out == Output::Names)
        deliver(req.result, hosted_collection_fill_reference_zset(
                                kHostedCollectionClass, req.ns, &vsan, &domain, zone_set, _broker));
    else
        deliver(req.result,
                hosted_collection_build_instance_zset(kHostedCollectionClass, req.ns, &vsan,
                                                      &domain, zone_set, req.props, _broker));
}

template <Output out>
int references(const Traversal &req, const char *result_class) {
    const int flag = select_flag(kZoneSetSelection, result_class, nullptr);
    if (flag == kUnknownFilter) return 0;
    const int vsan = vsan_of(req.id);

    zone::Owned<ZoneSetRecord> zone_set;
    if (zs_cim_get_zone_set_by_instance_id(mts_q, req.id, zone_set.out()) != 0) return -1;

    if (flag & kZones)
        for_each_node<ZoneRecord>(
            zs_cim_get_zone_set_zones_by_instance_id, req.id,
            [&](const ZoneRecord *zone) { deliver_zone_link<out>(req, zone_set.get(), zone); });

    if (flag & kVsan) {
        const VsanStep step = visit_hosting_vsan(
            mts_q, vsan, true, [&](const VsanEntry &entry, const DomainEntry &domain) {
                deliver_hosted_collection<out>(req, entry, domain, zone_set.get());
            });
        if (lookup_failed(step)) return -1;
    }
    // Reference names report a complete run with 1.
    return out == Output::Names ? 1 : 0;
}

}  // namespace

// Exported under their plain names: the object manager and the other
// units of the library find them there.
#pragma GCC visibility push(default)
extern "C" {

int get_zone_set_associator_names(const char *id, const char *assoc_class, const char *result_class,
                                  const char * /*role*/, const char * /*result_role*/,
                                  const CMPIResult *result, const char *ns) {
    return associators<Output::Names>({id, ns, nullptr, result}, assoc_class, result_class);
}

int get_zone_set_associators(const char *id, const char *assoc_class, const char *result_class,
                             const char * /*role*/, const char * /*result_role*/,
                             const char **props, const CMPIResult *result, const char *ns) {
    return associators<Output::Objects>({id, ns, props, result}, assoc_class, result_class);
}

int get_zone_set_reference_names(const char *id, const char *result_class, const char * /*role*/,
                                 const CMPIResult *result, const char *ns) {
    return references<Output::Names>({id, ns, nullptr, result}, result_class);
}

int get_zone_set_references(const char *id, const char *result_class, const char * /*role*/,
                            const char **props, const CMPIResult *result, const char *ns) {
    return references<Output::Objects>({id, ns, props, result}, result_class);
}

}  // extern "C"
#pragma GCC visibility pop
