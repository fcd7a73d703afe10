// Zone set associations: the zones a zone set holds and the VSAN that hosts
// it, selected by the association-class filter, delivered zones first, as
// names or as objects with the request's properties; what a failed lookup
// leaves delivered and what it returns.
#include "association_test_support.h"

using namespace assoc_test;

namespace {

const char *const kId = "id^ZS";
const Traversals kZoneSet = {get_zone_set_associator_names, get_zone_set_associators,
                             get_zone_set_reference_names, get_zone_set_references};

// The steps of the associators (the neighbours) and of the references (the
// links), by letter.
const std::vector<Step> kNeighbours = {step('X', "split ZS"),
                                       step('Z', "zones of set ZS", {"Zone Z1", "Zone Z2"}),
                                       step('V', "vsan 7"), step('D', "domain 7", {"Vsan V7"})};
const std::vector<Step> kLinks = {step('X', "split ZS"), step('G', "get set ZS"),
                                  step('Z', "zones of set ZS", {"MOC ZS/Z1", "MOC ZS/Z2"}),
                                  step('V', "vsan 7"), step('D', "domain 7", {"Hosted V7/ZS"})};

TEST(ZoneSetAssoc, AssociatorsSelectByAssocClassAndTheVsanByResultClass) {
    struct Case {
        const char *assoc_class;
        const char *result_class;
        int flag;  // -1: the filter names nothing known
        const char *taken;
    };
    const Case cases[] = {
        {"VORNA_ZoneMemberOfCollection", nullptr, 1, "XZ"},
        {"vorna_zonememberofcollection", "VORNA_Vsan", 1, "XZ"},
        {"VORNA_ZoneHostedCollection", nullptr, 2, "XVD"},
        {nullptr, nullptr, 3, "XZVD"},
        {"", nullptr, 3, "XZVD"},
        {nullptr, "CIM_System", 3, "XZVD"},
        {nullptr, "CIM_ADMINDOMAIN", 3, "XZVD"},
        {nullptr, "VORNA_Vsan", 3, "XZV"},
        {nullptr, "", 3, "XZV"},
        {"VORNA_ZoneHostedCollection", "VORNA_Zone", 2, "XV"},
        {"VORNA_ElementSettingData", nullptr, -1, ""},
        {"CIM_Component", "CIM_System", -1, ""},
    };
    for (const Case &c : cases) {
        for (const Entry entry : {kAssociatorNames, kAssociators}) {
            SCOPED_TRACE(std::string(kEntryNames[entry]) + " of " + shown(c.assoc_class) + " / " +
                         shown(c.result_class));
            const bool objects = entry == kAssociators;
            Call call;
            EXPECT_EQ(traverse(call, kZoneSet, entry, kId, c.assoc_class, c.result_class), 0);
            expect_steps(call, kNeighbours, c.taken, objects);
            const std::string start = objects ? "\n\n zone_provider:zone_set_associators() - "
                                              : "\n\n zone_provider:zone_set_associatorNames() - ";
            EXPECT_TRUE(call.printed(start + (objects ? "Start  \n" : "Start 1 \n")));
            EXPECT_EQ(call.printed(start + "flag is " + std::to_string(c.flag) + " \n"),
                      c.flag >= 0)
                << call.out;
            EXPECT_EQ(call.printed("\t found  zone -- Z1\n"), has(c.taken, 'Z')) << call.out;
        }
    }
}

TEST(ZoneSetAssoc, AssociatorsDeliverTheVsanInstanceOnlyWhenItHasAHandle) {
    CMPIInstance without_handle{nullptr, nullptr};
    for (CMPIInstance *built : {static_cast<CMPIInstance *>(nullptr), &without_handle}) {
        SCOPED_TRACE(built ? "no handle" : "null");
        Call call;
        EXPECT_CALL(call.m, vsan_build_instance).WillOnce(Return(built));
        EXPECT_EQ(traverse(call, kZoneSet, kAssociators, kId, nullptr, nullptr), 0);
        expect_steps(call, kNeighbours, "XZVd", true);
        EXPECT_TRUE(call.printed("Vsan object is null\n"));
    }
}

TEST(ZoneSetAssoc, ReferencesSelectTheLinksByResultClass) {
    struct Case {
        const char *result_class;
        const char *taken;
    };
    const Case cases[] = {
        {"VORNA_ZoneMemberOfCollection", "XGZ"},
        {"VORNA_ZONEHOSTEDCOLLECTION", "XGVD"},
        {nullptr, "XGZVD"},
        {"", "XGZVD"},
        {"VORNA_ElementSettingData", ""},
    };
    for (const Case &c : cases) {
        for (const Entry entry : {kReferenceNames, kReferences}) {
            SCOPED_TRACE(std::string(kEntryNames[entry]) + " of " + shown(c.result_class));
            const bool objects = entry == kReferences;
            Call call;
            const int rc = traverse(call, kZoneSet, entry, kId, c.result_class, "Member");
            // A complete run of reference names answers 1.
            EXPECT_EQ(rc, !objects && *c.taken ? 1 : 0);
            expect_steps(call, kLinks, c.taken, objects);
            // Only the instances trace the zones.
            EXPECT_EQ(call.out, objects && has(c.taken, 'Z')
                                    ? "\t found  zone -- Z1\n\t found  zone -- Z2\n"
                                    : "");
        }
    }
}

TEST(ZoneSetAssoc, FailedLookupsEndTheTraversalWithWhatWasDeliveredSoFar) {
    struct Case {
        const char *missing;
        Entry entry;
        int rc;
        const char *taken;
    };
    const Case cases[] = {
        {"vsan 7", kAssociatorNames, -1, "XZv"},
        {"domain 7", kAssociatorNames, -1, "XZVd"},
        // A failing query hands back a list all the same, which is freed.
        {"zones of set ZS", kAssociatorNames, 0, "XzVD"},
        // The links built here fail (null): nothing is delivered for them.
        {"vsan 7", kReferenceNames, -1, "XGzv"},
        {"domain 7", kReferenceNames, -1, "XGzVd"},
        {"get set ZS", kReferenceNames, -1, "Xg"},
        {"get set ZS", kReferences, -1, "Xg"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(kEntryNames[c.entry]) + " without " + c.missing);
        Call call;
        call.answers.erase(c.missing);
        EXPECT_CALL(call.m, zmoc_fill_reference_zoneSetZone).WillRepeatedly(Return(nullptr));
        EXPECT_EQ(traverse(call, kZoneSet, c.entry, kId, nullptr, nullptr), c.rc);
        expect_steps(call, c.entry == kAssociatorNames ? kNeighbours : kLinks, c.taken,
                     builds_objects(c.entry));
    }
}

}  // namespace
