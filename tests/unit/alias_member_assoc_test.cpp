// Zone alias associations (zones holding the alias, its members, and its
// VSAN for the associators only) and zone member associations (the zones
// and aliases holding the member, last parent first, built by mode), as
// names or as objects with the request's properties, with the lookups that
// end them and the generic lists they must free.
#include "association_test_support.h"

using namespace assoc_test;

namespace {

const char *const kAliasId = "id^A";
const char *const kMemberId = "id^M";
const Traversals kAlias = {get_zone_alias_associator_names, get_zone_alias_associators,
                           get_zone_alias_reference_names, get_zone_alias_references};

// ---- Zone aliases -------------------------------------------------------------------

const std::vector<Step> kNeighbours = {step('X', "split A"),
                                       step('Z', "zones of alias A", {"Zone Z1", "Zone Z2"}),
                                       step('M', "members of alias A", {"Member M1", "Member M2"}),
                                       step('V', "vsan 7"), step('D', "domain 7", {"Vsan V7"})};
// Only the member links get the request's properties.
const std::vector<Step> kLinks = {step('X', "split A"), step('G', "get alias A"),
                                  step('Z', "zones of alias A", {"MOC Z1/A", "MOC Z2/A"}, false),
                                  step('M', "members of alias A", {"ESD A/M1", "ESD A/M2"})};

// Every alias traversal traces its zone and member passes.
void expect_alias_traces(const Call &call, const std::string &taken) {
    EXPECT_EQ(call.printed("getting zone of zone alias -- id^A\n\t found  zone  -- Z1\n"),
              has(taken, 'Z'))
        << call.out;
    EXPECT_EQ(call.printed("getting zone member of zone alias -- id^A\n"
                           "\t found  zone member -- M1\n"),
              has(taken, 'M'))
        << call.out;
    if (taken.empty()) {
        EXPECT_EQ(call.out, "");
    }
}

struct AliasCase {
    const char *first;   // assocClass, or resultClass for the references
    const char *second;  // resultClass, or role for the references
    const char *taken;
};

TEST(AliasMemberAssoc, AliasAssociatorsSelectByAssocClassAndResultClass) {
    const AliasCase cases[] = {
        {nullptr, nullptr, "XZM"},
        {"", "CIM_System", "XZM"},
        {"VORNA_ZoneMemberOfCollection", nullptr, "XZ"},
        {"VORNA_ZoneMemberOfCollection", "cim_zone", "XZ"},
        {"VORNA_ZoneMemberOfCollection", "VORNA_Zone", "X"},
        {"VORNA_ZoneMemberOfCollection", "", "X"},
        {"VORNA_Vsan", nullptr, "X"},
        {"CIM_AdminDomain", "CIM_Zone", "X"},
        {"VORNA_ElementSettingData", "VORNA_Zone", "XM"},
        {"VORNA_ZoneHostedCollection", nullptr, "XVD"},
        {"VORNA_ZoneHostedCollection", "CIM_AdminDomain", "XVD"},
        {"VORNA_ZoneHostedCollection", "CIM_System", "XVD"},
        {"VORNA_ZoneHostedCollection", "vorna_vsan", "XVD"},
        {"VORNA_ZoneHostedCollection", "VORNA_Zone", "XV"},
        {"VORNA_ZoneHostedCollection", "", "XV"},
        {"CIM_Component", nullptr, ""},
    };
    for (const AliasCase &c : cases) {
        for (const Entry entry : {kAssociatorNames, kAssociators}) {
            SCOPED_TRACE(std::string(kEntryNames[entry]) + " of " + shown(c.first) + " / " +
                         shown(c.second));
            Call call;
            EXPECT_EQ(traverse(call, kAlias, entry, kAliasId, c.first, c.second), 0);
            expect_steps(call, kNeighbours, c.taken, builds_objects(entry));
            expect_alias_traces(call, c.taken);
        }
    }
}

TEST(AliasMemberAssoc, AliasReferencesSelectByResultClassAndRole) {
    const AliasCase cases[] = {
        {"VORNA_ZoneMemberOfCollection", nullptr, "XGZ"},
        {"VORNA_ZoneMemberOfCollection", "member", "XGZ"},
        {"VORNA_ZoneMemberOfCollection", "Collection", "XG"},
        {"VORNA_ZoneMemberOfCollection", "", "XG"},
        {"VORNA_Vsan", nullptr, "XG"},
        {"CIM_AdminDomain", nullptr, "XG"},
        {"VORNA_ElementSettingData", "Member", "XGM"},
        {nullptr, nullptr, "XGZM"},
        {"", "Collection", "XGZM"},
        {"VORNA_ZoneHostedCollection", nullptr, ""},
        {"CIM_Component", nullptr, ""},
    };
    for (const AliasCase &c : cases) {
        for (const Entry entry : {kReferenceNames, kReferences}) {
            SCOPED_TRACE(std::string(kEntryNames[entry]) + " of " + shown(c.first) + " / " +
                         shown(c.second));
            Call call;
            EXPECT_EQ(traverse(call, kAlias, entry, kAliasId, c.first, c.second), 0);
            expect_steps(call, kLinks, c.taken, builds_objects(entry));
            expect_alias_traces(call, c.taken);
        }
    }
}

TEST(AliasMemberAssoc, AMissingVsanDomainOrAliasEndsTheAliasTraversalWithMinusOne) {
    struct Case {
        const char *missing;
        Entry entry;
        const char *taken;
    };
    const Case cases[] = {
        {"vsan 7", kAssociatorNames, "Xv"},
        {"domain 7", kAssociatorNames, "XVd"},
        {"get alias A", kReferenceNames, "Xg"},
        {"get alias A", kReferences, "Xg"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(kEntryNames[c.entry]) + " without " + c.missing);
        Call call;
        call.answers.erase(c.missing);
        const char *assoc_class =
            c.entry == kAssociatorNames ? "VORNA_ZoneHostedCollection" : nullptr;
        EXPECT_EQ(traverse(call, kAlias, c.entry, kAliasId, assoc_class, nullptr), -1);
        expect_steps(call, c.entry == kAssociatorNames ? kNeighbours : kLinks, c.taken,
                     builds_objects(c.entry));
    }
}

// ---- Zone members ------------------------------------------------------------------------

TEST(AliasMemberAssoc, MemberTraversalSelectsByBothClassNamesAndBuildsByMode) {
    struct Case {
        int mode;
        const char *first_class;
        const char *second_class;
        const char *taken;
        const char *missing = nullptr;  // the query that fails
    };
    constexpr int kNames = ZONE_ASSOC_ASSOCIATOR_NAMES;
    const Case cases[] = {
        {kNames, "VORNA_ElementSettingData", nullptr, "KZ"},
        {kNames, "VORNA_ElementSettingData", "CIM_Zone", "KZ"},
        {kNames, "vorna_elementsettingdata", "cim_namedaddresscollection", "KL"},
        {kNames, "VORNA_ElementSettingData", "", "KZL"},
        {kNames, "VORNA_ElementSettingData", "VORNA_Zone", "K"},
        {kNames, nullptr, "VORNA_Zone", "KZL"},
        {kNames, "", nullptr, "KZL"},
        {kNames, "VORNA_ZoneMemberOfCollection", nullptr, ""},
        // Every mode, with both kinds of parent; unknown modes build nothing.
        {0, nullptr, "", "Kzl"},
        {ZONE_ASSOC_ASSOCIATORS, nullptr, "", "KZL"},
        {ZONE_ASSOC_REFERENCES, nullptr, "", "KZL"},
        {ZONE_ASSOC_REFERENCE_NAMES, nullptr, "", "KZL"},
        {5, nullptr, "", "Kzl"},
        // A failing query that put a record into its list: nothing of it is
        // delivered, and the list is destroyed with its record.
        {ZONE_ASSOC_ASSOCIATORS, nullptr, "", "KZl", "aliases of member M"},
        // An unknown member: -1, and no list is made.
        {ZONE_ASSOC_REFERENCES, nullptr, "", "k", "get member M"},
    };
    // The parents Z2, Z1 (last first, a null entry skipped) and A1, or their
    // links to the member.
    const std::vector<Step> parents = {step('K', "get member M"),
                                       step('Z', "zones of member M", {"Zone Z2", "Zone Z1"}),
                                       step('L', "aliases of member M", {"Alias A1"})};
    const std::vector<Step> links = {step('K', "get member M"),
                                     step('Z', "zones of member M", {"ESD Z2/M", "ESD Z1/M"}),
                                     step('L', "aliases of member M", {"ESD A1/M"})};
    for (const Case &c : cases) {
        SCOPED_TRACE("mode " + std::to_string(c.mode) + ", " + shown(c.first_class) + " / " +
                     shown(c.second_class) + ", failing " + shown(c.missing));
        Call call;
        if (c.missing) call.answers.erase(c.missing);
        EXPECT_EQ(call.capture([&] {
            return get_zone_member_references(kMemberId, c.first_class, c.mode, c.second_class,
                                              props(), call.req.result(), kNs);
        }),
                  has(c.taken, 'k') ? -1 : 0);
        const bool reference =
            c.mode == ZONE_ASSOC_REFERENCES || c.mode == ZONE_ASSOC_REFERENCE_NAMES;
        expect_steps(call, reference ? links : parents, c.taken,
                     c.mode == ZONE_ASSOC_ASSOCIATORS || c.mode == ZONE_ASSOC_REFERENCES);
        const bool zones = has(c.taken, 'Z') || has(c.taken, 'z');
        const bool aliases = has(c.taken, 'L') || has(c.taken, 'l');
        EXPECT_EQ(call.lists_made, int{zones} + int{aliases});
        EXPECT_EQ(call.lists_destroyed, call.lists_made);
        EXPECT_EQ(call.printed("getting zone  of zonemember -- id^M\n"), zones);
        EXPECT_EQ(call.printed("getting zone alias of zonemember -- id^M\n"), aliases);
    }
}

}  // namespace
