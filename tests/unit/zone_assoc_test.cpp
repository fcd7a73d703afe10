// Zone associations: the zone sets holding a zone, the aliases it holds, its
// VSAN and its members, selected by (assocClass, resultClass) for the
// associators and by (resultClass, role) for the references, always
// delivered in that order, as names or as objects with the request's
// properties; what a failed lookup leaves delivered.
#include "association_test_support.h"

using namespace assoc_test;

namespace {

const char *const kId = "id^Z";
const Traversals kZone = {get_zone_associator_names, get_zone_associators, get_zone_reference_names,
                          get_zone_references};

// The associators' steps: the neighbours themselves.
const std::vector<Step> kNeighbours = {step('X', "split Z"),
                                       step('S', "sets of zone Z", {"ZoneSet ZS1", "ZoneSet ZS2"}),
                                       step('A', "aliases of zone Z", {"Alias A1", "Alias A2"}),
                                       step('V', "vsan 7"),
                                       step('D', "domain 7", {"Vsan V7"}),
                                       step('M', "members of zone Z", {"Member M1", "Member M2"})};

// The references' steps: the links, of which only the zone set and member
// links get the request's properties.
const std::vector<Step> kLinks = {step('X', "split Z"),
                                  step('G', "get zone Z"),
                                  step('S', "sets of zone Z", {"MOC ZS1/Z", "MOC ZS2/Z"}),
                                  step('A', "aliases of zone Z", {"MOC Z/A1", "MOC Z/A2"}, false),
                                  step('V', "vsan 7"),
                                  step('D', "domain 7", {"Hosted V7/Z"}, false),
                                  step('M', "members of zone Z", {"ESD Z/M1", "ESD Z/M2"})};

TEST(ZoneAssoc, AssociatorsSelectByAssocClassAndResultClass) {
    struct Case {
        const char *assoc_class;
        const char *result_class;
        int flag;  // -1: nothing known, no trace and no platform call
        const char *taken;
    };
    const Case cases[] = {
        {nullptr, nullptr, 15, "XSAVDM"},
        {"", nullptr, 15, "XSAVDM"},
        {"VORNA_ZoneMemberOfCollection", nullptr, 3, "XSA"},
        {"VORNA_ZoneMemberOfCollection", "CIM_ZoneSet", 1, "XS"},
        {"VORNA_ZoneMemberOfCollection", "CIM_NamedAddressCollection", 2, "XA"},
        {"vorna_zonememberofcollection", "VORNA_ZONEALIAS", 2, "XA"},
        {"VORNA_ZoneMemberOfCollection", "VORNA_ZoneSet", 0, "X"},
        {"VORNA_ZoneMemberOfCollection", "", 0, "X"},
        {"VORNA_ZoneHostedCollection", nullptr, 4, "XVD"},
        {"VORNA_ZoneHostedCollection", "VORNA_Zone", 4, "XV"},
        {"VORNA_ElementSettingData", "CIM_Zone", 8, "XM"},
        {nullptr, "CIM_System", 15, "XSAVDM"},
        {nullptr, "cim_admindomain", 15, "XSAVDM"},
        {"", "VORNA_Vsan", 15, "XSAVDM"},
        {nullptr, "VORNA_Zone", 15, "XSAVM"},
        {nullptr, "", 15, "XSAVM"},
        {"CIM_Dependency", nullptr, -1, ""},
        {"VORNA_HostedService", "CIM_ZoneSet", -1, ""},
    };
    for (const Case &c : cases) {
        for (const Entry entry : {kAssociatorNames, kAssociators}) {
            SCOPED_TRACE(std::string(kEntryNames[entry]) + " of " + shown(c.assoc_class) + " / " +
                         shown(c.result_class));
            const bool objects = entry == kAssociators;
            Call call;
            EXPECT_EQ(traverse(call, kZone, entry, kId, c.assoc_class, c.result_class), 0);
            expect_steps(call, kNeighbours, c.taken, objects);
            if (c.flag < 0) {
                EXPECT_EQ(call.out, "");
                continue;
            }
            const std::string start = objects ? "\n\n zone_provider:zone_associators() - "
                                              : "\n\n zone_provider:zone_associatorNames() - ";
            EXPECT_TRUE(call.printed(start + "Start  \n" + start + "flag is " +
                                     std::to_string(c.flag) + " \n"))
                << call.out;
            EXPECT_EQ(call.printed("\t found  zone set -- ZS1\n"), has(c.taken, 'S'));
            EXPECT_EQ(call.printed("\t found  zone alias -- A2\n"), has(c.taken, 'A'));
            EXPECT_EQ(call.printed("\t found  zone member -- M1\n"), has(c.taken, 'M'));
            // Only the instances announce the members query.
            EXPECT_EQ(call.printed("getting zone member of zone -- id^Z\n"),
                      objects && has(c.taken, 'M'));
        }
    }
}

TEST(ZoneAssoc, ReferencesSelectByResultClassAndRole) {
    struct Case {
        const char *result_class;
        const char *role;
        const char *taken;
    };
    const Case cases[] = {
        {"VORNA_ZoneMemberOfCollection", "Member", "XGS"},
        {"VORNA_ZoneMemberOfCollection", "collection", "XGA"},
        {"VORNA_ZoneMemberOfCollection", "Antecedent", "XGSA"},
        {"VORNA_ZoneMemberOfCollection", nullptr, "XGSA"},
        {"VORNA_ZoneMemberOfCollection", "", "XGSA"},
        {"VORNA_ZoneHostedCollection", "Member", "XGVD"},
        {"VORNA_ElementSettingData", nullptr, "XGM"},
        {nullptr, nullptr, "XGSAVDM"},
        {"", "Member", "XGSAVDM"},
        {"VORNA_ZoneAlias", nullptr, ""},
        {"CIM_Component", "Member", ""},
    };
    for (const Case &c : cases) {
        for (const Entry entry : {kReferenceNames, kReferences}) {
            SCOPED_TRACE(std::string(kEntryNames[entry]) + " of " + shown(c.result_class) + " / " +
                         shown(c.role));
            const bool objects = entry == kReferences;
            Call call;
            EXPECT_EQ(traverse(call, kZone, entry, kId, c.result_class, c.role), 0);
            expect_steps(call, kLinks, c.taken, objects);
            // Reference names announce every list query they make, references
            // the members query only.
            EXPECT_EQ(call.printed("getting zone sets of zone -- id^Z\n"),
                      !objects && has(c.taken, 'S'));
            EXPECT_EQ(call.printed("getting zone alias of zone -- id^Z\n"),
                      !objects && has(c.taken, 'A'));
            EXPECT_EQ(call.printed("getting zone member of zone -- id^Z\n"), has(c.taken, 'M'));
            EXPECT_EQ(call.printed("\t found  zone set -- ZS2\n"), has(c.taken, 'S'));
            EXPECT_EQ(call.printed("\t found  zone alias -- A1\n"), has(c.taken, 'A'));
        }
    }
}

TEST(ZoneAssoc, FailedLookupsEndTheTraversalWithWhatWasDeliveredSoFar) {
    struct Case {
        const char *missing;
        Entry entry;
        int rc;
        const char *taken;
    };
    const Case cases[] = {
        // The members come after the VSAN, only when it was found.
        {"vsan 7", kAssociatorNames, -1, "XSAv"},
        {"domain 7", kAssociatorNames, -1, "XSAVd"},
        // A failing query delivers nothing, and frees the list it handed back.
        {"aliases of zone Z", kAssociatorNames, 0, "XSaVDM"},
        {"domain 7", kReferenceNames, -1, "XGSAVd"},
        {"get zone Z", kReferenceNames, -1, "Xg"},
        {"get zone Z", kReferences, -1, "Xg"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(kEntryNames[c.entry]) + " without " + c.missing);
        Call call;
        call.answers.erase(c.missing);
        EXPECT_EQ(traverse(call, kZone, c.entry, kId, nullptr, nullptr), c.rc);
        expect_steps(call, c.entry == kAssociatorNames ? kNeighbours : kLinks, c.taken,
                     builds_objects(c.entry));
    }
}

}  // namespace
