// The traversals of one source object: the zones a zone set holds and its
// VSAN; the zone sets holding a zone, the aliases and members it holds and
// its VSAN; the zones holding an alias, its members and its VSAN; the zones
// and aliases holding a member; the VSAN hosting a zone service. Each is
// selected by (assocClass, resultClass) for the associators and by
// (resultClass, role) for the references, delivered in a fixed order, as
// names or as objects with the request's properties, and ended by a failed
// lookup with what was delivered so far.
#include "association_test_support.h"

using namespace assoc_test;

namespace {

const Traversals kZoneSet = {get_zone_set_associator_names, get_zone_set_associators,
                             get_zone_set_reference_names, get_zone_set_references};
const Traversals kZone = {get_zone_associator_names, get_zone_associators, get_zone_reference_names,
                          get_zone_references};
const Traversals kAlias = {get_zone_alias_associator_names, get_zone_alias_associators,
                           get_zone_alias_reference_names, get_zone_alias_references};

// The steps of the associators (the neighbours) and of the references (the
// links), by letter. Only some links get the request's properties.
const std::vector<Step> kSetNeighbours = {step('X', "split ZS"),
                                          step('Z', "zones of set ZS", {"Zone Z1", "Zone Z2"}),
                                          step('V', "vsan 7"), step('D', "domain 7", {"Vsan V7"})};
const std::vector<Step> kSetLinks = {step('X', "split ZS"), step('G', "get set ZS"),
                                     step('Z', "zones of set ZS", {"MOC ZS/Z1", "MOC ZS/Z2"}),
                                     step('V', "vsan 7"), step('D', "domain 7", {"Hosted V7/ZS"})};
const std::vector<Step> kZoneNeighbours = {
    step('X', "split Z"),
    step('S', "sets of zone Z", {"ZoneSet ZS1", "ZoneSet ZS2"}),
    step('A', "aliases of zone Z", {"Alias A1", "Alias A2"}),
    step('V', "vsan 7"),
    step('D', "domain 7", {"Vsan V7"}),
    step('M', "members of zone Z", {"Member M1", "Member M2"})};
const std::vector<Step> kZoneLinks = {
    step('X', "split Z"),
    step('G', "get zone Z"),
    step('S', "sets of zone Z", {"MOC ZS1/Z", "MOC ZS2/Z"}),
    step('A', "aliases of zone Z", {"MOC Z/A1", "MOC Z/A2"}, false),
    step('V', "vsan 7"),
    step('D', "domain 7", {"Hosted V7/Z"}, false),
    step('M', "members of zone Z", {"ESD Z/M1", "ESD Z/M2"})};
const std::vector<Step> kAliasNeighbours = {
    step('X', "split A"), step('Z', "zones of alias A", {"Zone Z1", "Zone Z2"}),
    step('M', "members of alias A", {"Member M1", "Member M2"}), step('V', "vsan 7"),
    step('D', "domain 7", {"Vsan V7"})};
const std::vector<Step> kAliasLinks = {
    step('X', "split A"), step('G', "get alias A"),
    step('Z', "zones of alias A", {"MOC Z1/A", "MOC Z2/A"}, false),
    step('M', "members of alias A", {"ESD A/M1", "ESD A/M2"})};

std::string where(Entry entry, const char *first, const char *second = nullptr) {
    return std::string(kEntryNames[entry]) + " of " + shown(first) + " / " + shown(second);
}

// The head of an associators' trace line.
std::string head(const char *routine, bool objects) {
    return std::string("\n\n zone_provider:") + routine +
           (objects ? "associators() - " : "associatorNames() - ");
}

// ---- Zone sets ----------------------------------------------------------------------

TEST(AssociationTraversals, ZoneSetAssociatorsSelectByAssocClassAndTheVsanByResultClass) {
    struct Case {
        const char *assoc_class, *result_class;
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
            SCOPED_TRACE(where(entry, c.assoc_class, c.result_class));
            const bool objects = entry == kAssociators;
            Call call;
            EXPECT_EQ(traverse(call, kZoneSet, entry, "id^ZS", c.assoc_class, c.result_class), 0);
            expect_steps(call, kSetNeighbours, c.taken, objects);
            const std::string start = head("zone_set_", objects);
            EXPECT_TRUE(call.printed(start + (objects ? "Start  \n" : "Start 1 \n")));
            EXPECT_EQ(call.printed(start + "flag is " + std::to_string(c.flag) + " \n"),
                      c.flag >= 0)
                << call.out;
            EXPECT_EQ(call.printed("\t found  zone -- Z1\n"), has(c.taken, 'Z')) << call.out;
        }
    }
}

TEST(AssociationTraversals, ZoneSetAssociatorsDeliverTheVsanInstanceOnlyWhenItHasAHandle) {
    CMPIInstance without_handle{nullptr, nullptr};
    for (CMPIInstance *built : {static_cast<CMPIInstance *>(nullptr), &without_handle}) {
        SCOPED_TRACE(built ? "no handle" : "null");
        Call call;
        EXPECT_CALL(call.m, vsan_build_instance).WillOnce(Return(built));
        EXPECT_EQ(traverse(call, kZoneSet, kAssociators, "id^ZS", nullptr, nullptr), 0);
        expect_steps(call, kSetNeighbours, "XZVd", true);
        EXPECT_TRUE(call.printed("Vsan object is null\n"));
    }
}

TEST(AssociationTraversals, ZoneSetReferencesSelectTheLinksByResultClass) {
    const std::pair<const char *, const char *> cases[] = {
        {"VORNA_ZoneMemberOfCollection", "XGZ"},
        {"VORNA_ZONEHOSTEDCOLLECTION", "XGVD"},
        {nullptr, "XGZVD"},
        {"", "XGZVD"},
        {"VORNA_ElementSettingData", ""},
    };
    for (const auto &[result_class, taken] : cases) {
        for (const Entry entry : {kReferenceNames, kReferences}) {
            SCOPED_TRACE(where(entry, result_class));
            const bool objects = entry == kReferences;
            Call call;
            // A complete run of reference names answers 1.
            EXPECT_EQ(traverse(call, kZoneSet, entry, "id^ZS", result_class, "Member"),
                      !objects && *taken ? 1 : 0);
            expect_steps(call, kSetLinks, taken, objects);
            // Only the instances trace the zones.
            EXPECT_EQ(call.out, objects && has(taken, 'Z')
                                    ? "\t found  zone -- Z1\n\t found  zone -- Z2\n"
                                    : "");
        }
    }
}

// ---- Zones --------------------------------------------------------------------------

TEST(AssociationTraversals, ZoneAssociatorsSelectByAssocClassAndResultClass) {
    struct Case {
        const char *assoc_class, *result_class;
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
            SCOPED_TRACE(where(entry, c.assoc_class, c.result_class));
            const bool objects = entry == kAssociators;
            Call call;
            EXPECT_EQ(traverse(call, kZone, entry, "id^Z", c.assoc_class, c.result_class), 0);
            expect_steps(call, kZoneNeighbours, c.taken, objects);
            if (c.flag < 0) {
                EXPECT_EQ(call.out, "");
                continue;
            }
            const std::string start = head("zone_", objects);
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

TEST(AssociationTraversals, ZoneReferencesSelectByResultClassAndRole) {
    struct Case {
        const char *result_class, *role, *taken;
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
            SCOPED_TRACE(where(entry, c.result_class, c.role));
            const bool objects = entry == kReferences;
            Call call;
            EXPECT_EQ(traverse(call, kZone, entry, "id^Z", c.result_class, c.role), 0);
            expect_steps(call, kZoneLinks, c.taken, objects);
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

// ---- Zone aliases -------------------------------------------------------------------

struct AliasCase {
    const char *first;   // assocClass, or resultClass for the references
    const char *second;  // resultClass, or role for the references
    const char *taken;
};

// Every alias traversal runs its cases for both of its entries and traces
// its zone and member passes.
void expect_alias_selections(const AliasCase *begin, const AliasCase *end, Entry names,
                             Entry objects, const std::vector<Step> &steps) {
    for (const AliasCase *c = begin; c != end; ++c) {
        for (const Entry entry : {names, objects}) {
            SCOPED_TRACE(where(entry, c->first, c->second));
            Call call;
            EXPECT_EQ(traverse(call, kAlias, entry, "id^A", c->first, c->second), 0);
            expect_steps(call, steps, c->taken, builds_objects(entry));
            EXPECT_EQ(call.printed("getting zone of zone alias -- id^A\n\t found  zone  -- Z1\n"),
                      has(c->taken, 'Z'))
                << call.out;
            EXPECT_EQ(call.printed("getting zone member of zone alias -- id^A\n"
                                   "\t found  zone member -- M1\n"),
                      has(c->taken, 'M'))
                << call.out;
            if (*c->taken == '\0') {
                EXPECT_EQ(call.out, "");
            }
        }
    }
}

TEST(AssociationTraversals, AliasAssociatorsSelectByAssocClassAndResultClass) {
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
    expect_alias_selections(std::begin(cases), std::end(cases), kAssociatorNames, kAssociators,
                            kAliasNeighbours);
}

TEST(AssociationTraversals, AliasReferencesSelectByResultClassAndRole) {
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
    expect_alias_selections(std::begin(cases), std::end(cases), kReferenceNames, kReferences,
                            kAliasLinks);
}

// ---- Failed lookups of zone sets, zones and aliases --------------------------------

TEST(AssociationTraversals, FailedLookupsEndTheTraversalWithWhatWasDeliveredSoFar) {
    struct Source {
        const Traversals &traversals;
        const char *id;
        const std::vector<Step> &neighbours, &links;
    };
    const Source set{kZoneSet, "id^ZS", kSetNeighbours, kSetLinks};
    const Source zone{kZone, "id^Z", kZoneNeighbours, kZoneLinks};
    const Source alias{kAlias, "id^A", kAliasNeighbours, kAliasLinks};
    struct Case {
        const Source &source;
        const char *missing;
        Entry entry;
        int rc;
        const char *taken;
        const char *assoc_class = nullptr;
    };
    const char *hosted = "VORNA_ZoneHostedCollection";
    const Case cases[] = {
        {set, "vsan 7", kAssociatorNames, -1, "XZv"},
        {set, "domain 7", kAssociatorNames, -1, "XZVd"},
        // A failing query hands back a list all the same, which is freed.
        {set, "zones of set ZS", kAssociatorNames, 0, "XzVD"},
        // The zone set's links built here fail (null): nothing is delivered
        // for them.
        {set, "vsan 7", kReferenceNames, -1, "XGzv"},
        {set, "domain 7", kReferenceNames, -1, "XGzVd"},
        {set, "get set ZS", kReferenceNames, -1, "Xg"},
        {set, "get set ZS", kReferences, -1, "Xg"},
        // A zone's members come after its VSAN, only when it was found.
        {zone, "vsan 7", kAssociatorNames, -1, "XSAv"},
        {zone, "domain 7", kAssociatorNames, -1, "XSAVd"},
        {zone, "aliases of zone Z", kAssociatorNames, 0, "XSaVDM"},
        {zone, "domain 7", kReferenceNames, -1, "XGSAVd"},
        {zone, "get zone Z", kReferenceNames, -1, "Xg"},
        {zone, "get zone Z", kReferences, -1, "Xg"},
        {alias, "vsan 7", kAssociatorNames, -1, "Xv", hosted},
        {alias, "domain 7", kAssociatorNames, -1, "XVd", hosted},
        {alias, "get alias A", kReferenceNames, -1, "Xg"},
        {alias, "get alias A", kReferences, -1, "Xg"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(kEntryNames[c.entry]) + " of " + c.source.id + " without " +
                     c.missing);
        Call call;
        call.answers.erase(c.missing);
        if (&c.source == &set)
            EXPECT_CALL(call.m, zmoc_fill_reference_zoneSetZone).WillRepeatedly(Return(nullptr));
        EXPECT_EQ(traverse(call, c.source.traversals, c.entry, c.source.id, c.assoc_class, nullptr),
                  c.rc);
        expect_steps(call, c.entry == kAssociatorNames ? c.source.neighbours : c.source.links,
                     c.taken, builds_objects(c.entry));
    }
}

// ---- Zone members ------------------------------------------------------------------

// The zones and aliases holding a member, selected by both class names and
// built by mode, and the generic lists they come in, each freed.
TEST(AssociationTraversals, MemberTraversalSelectsByBothClassNamesAndBuildsByMode) {
    struct Case {
        int mode;
        const char *first_class, *second_class, *taken;
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
            return get_zone_member_references("id^M", c.first_class, c.mode, c.second_class,
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

// ---- The zone service --------------------------------------------------------------

// The zone service's one association: the VSAN hosting it, delivered as the
// VSAN or as the hosted-service link by mode, admitted by the standard link
// name only. The helper is handed the queue and broker, which need not be
// the globals; the service's Name is read as a decimal VSAN number, and only
// an unknown VSAN fails.
TEST(AssociationTraversals, ZoneServiceFilterAndModeChooseWhatIsBuiltFromTheNamedVsan) {
    constexpr int kOwnQueue = 77;
    auto run = [](Call &call, const char *name, int mode, const char *filter) {
        call.queue = kOwnQueue;
        return get_zone_service_associator_reference_helper(
            name, mode, filter, call.req.result(), kNs, props(), kOwnQueue, cmpihost::broker());
    };
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
    // VSAN 10 is known but has no domain entry: nothing, and no failure.
    const std::pair<const char *, int> names[] = {
        {"12abc", 12}, {"abc", 0}, {"  +42", 42}, {"-3", -3}, {"0010", 10}};
    for (const auto &[name, vsan] : names) {
        SCOPED_TRACE(name);
        Call call;
        call.answers.erase("domain 10");
        EXPECT_EQ(run(call, name, ZONE_ASSOC_REFERENCE_NAMES, nullptr), vsan == 10 ? 0 : -1);
        EXPECT_TRUE(call.delivered().empty());
        Labels log = {"vsan " + std::to_string(vsan)};
        if (vsan == 10) log.push_back("domain 10");
        EXPECT_EQ(call.log, log);
    }
}

}  // namespace
