// The one association of a zone service: its VSAN (the Antecedent) hosts it
// (the Dependent) through a hosted-service association. At most one object
// is delivered: the VSAN or the association, as an instance or a path.
#include <cstdlib>

#include "associations/association_support.h"

namespace {

using namespace zone::assoc;

// The association-class filter: assocClass for associators, resultClass for
// references. The link is known here only by its standard name.
constexpr SelectionRow kServiceSelection[] = {
    {kNullOrEmpty, kAny, 1},
    {named("CIM_HostedService"), kAny, 1},
};

// The zone service's Name is its VSAN number in decimal; text without a
// leading number reads as VSAN 0.
int vsan_of_service_name(const char *name) {
    return name != nullptr ? static_cast<int>(std::strtol(name, nullptr, 10)) : 0;
}

struct ServiceTraversal {
    int mode;
    const char *ns;
    const char **props;
    const CMPIResult *result;
    const CMPIBroker *broker;
};

void deliver_by_mode(const ServiceTraversal &t, const VsanEntry &vsan, const DomainEntry &domain) {
    switch (t.mode) {
        case ZONE_ASSOC_ASSOCIATORS:
            deliver(t.result,
                    vsan_build_instance("VORNA_Vsan", t.ns, &vsan, &domain, t.props, t.broker));
            break;
        case ZONE_ASSOC_ASSOCIATOR_NAMES:
            deliver(t.result, vsan_fill_reference("VORNA_Vsan", t.ns, &vsan, &domain, t.broker));
            break;
        case ZONE_ASSOC_REFERENCES:
            // The association is built without the request's property list.
            deliver(t.result, hosted_service_build_instance(kHostedServiceClass, t.ns, &vsan,
                                                            &domain, nullptr, t.broker));
            break;
        case ZONE_ASSOC_REFERENCE_NAMES:
            deliver(t.result, hosted_service_fill_reference(kHostedServiceClass, t.ns, &vsan,
                                                            &domain, t.broker));
            break;
        default:
            break;
    }
}

}  // namespace

// Exported under its plain name.
#pragma GCC visibility push(default)
extern "C" int get_zone_service_associator_reference_helper(const char *id, int mode,
                                                            const char *filter,
                                                            const CMPIResult *result,
                                                            const char *ns, const char **props,
                                                            int queue, const CMPIBroker *broker) {
    if (select_flag(kServiceSelection, filter, nullptr) == kUnknownFilter) return 0;
    const ServiceTraversal t{mode, ns, props, result, broker};
    // Both entries are read in every mode: every builder takes both.
    const VsanStep step = visit_hosting_vsan(queue, vsan_of_service_name(id), true,
                                             [&](const VsanEntry &vsan, const DomainEntry &domain) {
                                                 deliver_by_mode(t, vsan, domain);
                                             });
    return step == VsanStep::NoVsan ? -1 : 0;
}
#pragma GCC visibility pop
