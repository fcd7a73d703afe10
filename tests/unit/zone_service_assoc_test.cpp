// The zone service's one association: the VSAN hosting it, delivered as the
// VSAN or as the hosted-service link by mode, admitted by the standard link
// name only, with the service's Name read as the VSAN number.
#include "association_test_support.h"

using namespace assoc_test;

namespace {

// The helper is handed the queue and broker; they need not be the globals.
constexpr int kOwnQueue = 77;

int run(Call &call, const char *name, int mode, const char *filter) {
    call.queue = kOwnQueue;
    return get_zone_service_associator_reference_helper(name, mode, filter, call.req.result(), kNs,
                                                        props(), kOwnQueue, cmpihost::broker());
}

TEST(ZoneServiceAssoc, TheFilterAndTheModeChooseWhatIsBuilt) {
    struct Case {
        int mode;
        const char *filter;
        Labels expected;
        bool looked_up;
    };
    const Case cases[] = {
        {ZONE_ASSOC_ASSOCIATORS, nullptr, {"inst:Vsan V10+p"}, true},
        {ZONE_ASSOC_ASSOCIATOR_NAMES, "", {"path:Vsan V10"}, true},
        // The link instance is built without the request's property list.
        {ZONE_ASSOC_REFERENCES, "CIM_HostedService", {"inst:Service V10"}, true},
        {ZONE_ASSOC_REFERENCE_NAMES, "cim_hostedservice", {"path:Service V10"}, true},
        {0, nullptr, {}, true},
        {5, nullptr, {}, true},
        {ZONE_ASSOC_ASSOCIATOR_NAMES, "VORNA_HostedService", {}, false},
        {ZONE_ASSOC_ASSOCIATORS, "CIM_ZoneHostedCollection", {}, false},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE("mode " + std::to_string(c.mode) + ", filter " + shown(c.filter));
        Call call;
        EXPECT_EQ(run(call, "10", c.mode, c.filter), 0);
        EXPECT_EQ(call.delivered(), c.expected);
        EXPECT_EQ(call.log, (c.looked_up ? Labels{"vsan 10", "domain 10"} : Labels{}));
    }
}

TEST(ZoneServiceAssoc, TheNameIsADecimalVsanNumberAndOnlyAnUnknownVsanFails) {
    struct Case {
        const char *name;
        int vsan;
    };
    // VSAN 10 is known but has no domain entry: nothing, and no failure.
    const Case cases[] = {{"12abc", 12}, {"abc", 0}, {"  +42", 42}, {"-3", -3}, {"0010", 10}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        Call call;
        call.answers.erase("domain 10");
        EXPECT_EQ(run(call, c.name, ZONE_ASSOC_REFERENCE_NAMES, nullptr), c.vsan == 10 ? 0 : -1);
        EXPECT_TRUE(call.delivered().empty());
        Labels log = {"vsan " + std::to_string(c.vsan)};
        if (c.vsan == 10) log.push_back("domain 10");
        EXPECT_EQ(call.log, log);
    }
}

}  // namespace
