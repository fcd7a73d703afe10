// The association classes served as instances: element setting data,
// member of collection and hosted collections. Walk order across VSANs,
// kinds of parent and databases, the same for names and instances; failed
// queries that skip only their own pass or parent (and are freed all the
// same); getInstance built from the request's path alone.
#include "association_test_support.h"

using namespace assoc_test;

namespace {

TEST(AssociationClasses, ElementSettingDataComesVsanByVsanZonesBeforeAliasesActiveFirst) {
    for (const bool instances : {true, false}) {
        SCOPED_TRACE(instances ? "instances" : "names");
        Call c;
        // VSAN 1: zone Z1 (members m1, m2) and alias A1 (m4) active, zone Z1e
        // (m3) and alias A1e (m5) editable. VSAN 2: the active zone query
        // fails; of its editable zones the first one's member query fails;
        // its alias queries find nothing (an empty array, then a failure).
        c.answers = answers_of(
            {"next vsan 0: 1", "next vsan 1: 2", "active zones 1: Z1", "editable zones 1: Z1e",
             "active aliases 1: A1", "editable aliases 1: A1e", "editable zones 2: Z5 Z6",
             "active aliases 2:", "members of zone Z1: m1 m2", "members of zone Z1e: m3",
             "members of zone Z6: m6", "members of alias A1: m4", "members of alias A1e: m5"});
        // The class name as the request wrote it is not used: the builders
        // get the association's own name.
        EXPECT_EQ(c.capture([&] {
            return instances ? get_esd_all_instances("vorna_elementsettingdata", c.req.result(),
                                                     props(), kNs)
                             : get_esd_keys("x", c.req.result(), kNs);
        }),
                  0);
        EXPECT_EQ(c.log, (Labels{"next vsan 0", "active zones 1", "members of zone Z1",
                                 "editable zones 1", "members of zone Z1e", "active aliases 1",
                                 "members of alias A1", "editable aliases 1",
                                 "members of alias A1e", "next vsan 1", "active zones 2",
                                 "editable zones 2", "members of zone Z5", "members of zone Z6",
                                 "active aliases 2", "editable aliases 2", "next vsan 2"}));
        EXPECT_EQ(c.delivered(),
                  instances ? as("inst", {"ESD Zone Z1/Member m1+p", "ESD Zone Z1/Member m2+p",
                                          "ESD Zone Z1e/Member m3+p", "ESD Alias A1/Member m4+p",
                                          "ESD Alias A1e/Member m5+p", "ESD Zone Z6/Member m6+p"})
                            : as("path", {"ESD Z1/m1", "ESD Z1/m2", "ESD Z1e/m3", "ESD A1/m4",
                                          "ESD A1e/m5", "ESD Z6/m6"}));
        EXPECT_TRUE(c.printed("\tfound zone id^Z1 -- Z1 \n\t found zone zone member -- m1\n"))
            << c.out;
        EXPECT_TRUE(
            c.printed("\tfound zone aliasid^A1e -- A1e \n\t found zone zone member -- m5\n"))
            << c.out;
    }
}

TEST(AssociationClasses, MemberOfCollectionGivesZoneSetPairsBeforeZonePairsActiveFirst) {
    for (const bool instances : {true, false}) {
        SCOPED_TRACE(instances ? "instances" : "names");
        Call c;
        // VSAN 1: zone set S1 (zones Z1, Z2) active and S1e (Z1e) editable;
        // Z1 and Z1e hold aliases A1 and A1e, Z2 none. VSAN 3: both zone set
        // queries fail; the alias query of its active zone Z3 fails; its
        // editable zone Z4, in no zone set, still gives its alias A4.
        c.answers =
            answers_of({"next vsan 0: 1", "next vsan 1: 3", "active sets 1: S1",
                        "editable sets 1: S1e", "zones of set S1: Z1 Z2", "zones of set S1e: Z1e",
                        "active zones 1: Z1 Z2", "editable zones 1: Z1e", "aliases of zone Z1: A1",
                        "aliases of zone Z2:", "aliases of zone Z1e: A1e", "active zones 3: Z3",
                        "editable zones 3: Z4", "aliases of zone Z4: A4"});
        EXPECT_EQ(c.capture([&] {
            return instances ? get_moc_all_instances("x", c.req.result(), nullptr, kNs)
                             : get_moc_keys("x", c.req.result(), kNs);
        }),
                  0);
        EXPECT_EQ(c.log, (Labels{"next vsan 0", "active sets 1", "zones of set S1",
                                 "editable sets 1", "zones of set S1e", "active zones 1",
                                 "aliases of zone Z1", "aliases of zone Z2", "editable zones 1",
                                 "aliases of zone Z1e", "next vsan 1", "active sets 3",
                                 "editable sets 3", "active zones 3", "aliases of zone Z3",
                                 "editable zones 3", "aliases of zone Z4", "next vsan 3"}));
        EXPECT_EQ(c.delivered(),
                  instances ? as("inst", {"MOC ZoneSet S1/Zone Z1", "MOC ZoneSet S1/Zone Z2",
                                          "MOC ZoneSet S1e/Zone Z1e", "MOC Zone Z1/Alias A1",
                                          "MOC Zone Z1e/Alias A1e", "MOC Zone Z4/Alias A4"})
                            : as("path", {"MOC S1/Z1", "MOC S1/Z2", "MOC S1e/Z1e", "MOC Z1/A1",
                                          "MOC Z1e/A1e", "MOC Z4/A4"}));
        // The editable pass uses the same words as the active one.
        EXPECT_TRUE(
            c.printed("found 1 active zone set in vsan 1\n"
                      "\t found zone in zone set -- Z1\n\t found zone in zone set -- Z2\n"
                      "found 1 active zone set in vsan 1\n"))
            << c.out;
        EXPECT_TRUE(
            c.printed("\tfound zone id^Z1 -- Z1 \ngetting zone alias of zone -- id^Z1\n"
                      "\t found  zone alias -- A1\n"))
            << c.out;
    }
}

TEST(AssociationClasses, GetInstanceBuildsFromThePathWithoutAnyZoningQuery) {
    Call c;
    CMPIObjectPath *esd = c.req.newObjectPath(kNs, "VORNA_ElementSettingData");
    cmpihost::addReferenceKey(esd, "settingdata", labelled_path(c.req, "member"));
    cmpihost::addReferenceKey(esd, "MANAGEDELEMENT", labelled_path(c.req, "zone"));
    CMPIObjectPath *moc = c.req.newObjectPath(kNs, "VORNA_ZoneMemberOfCollection");
    cmpihost::addReferenceKey(moc, "collection", labelled_path(c.req, "zoneset"));
    cmpihost::addStringKey(moc, "Member", "not a reference");

    EXPECT_EQ(get_esd_instance(esd, c.req.result(), props()), 0);
    EXPECT_EQ(get_moc_instance(moc, c.req.result(), props()), 0);
    // A member key that holds no reference leaves the member null.
    EXPECT_EQ(c.delivered(), as("inst", {"ESD zone/member+p", "MOC zoneset/null+p"}));
    EXPECT_TRUE(c.log.empty());
}

TEST(AssociationClasses, HostedCollectionsMakeSixPassesPerVsanInTableOrder) {
    for (const bool instances : {true, false}) {
        SCOPED_TRACE(instances ? "instances" : "names");
        Call c;
        // VSAN 1 holds zone sets S1/S1e and zones Z1, Z2/Z1e (active/editable)
        // and no alias (an empty array, then a failure); VSAN 4094 is the
        // switch's own; VSAN 5 has no domain entry; VSAN 7's active zone set
        // query fails, and it has the editable zone set S7e, the active zone
        // Z7 and the active alias A7.
        c.answers =
            answers_of({"vsan table: 1 4094 5 7", "domain 1:", "domain 7:", "active sets 1: S1",
                        "editable sets 1: S1e", "active zones 1: Z1 Z2", "editable zones 1: Z1e",
                        "active aliases 1:", "editable sets 7: S7e", "active zones 7: Z7",
                        "editable zones 7:", "active aliases 7: A7", "editable aliases 7:"});
        EXPECT_EQ(instances ? get_zone_hosted_collection_all_instances(
                                  "x", c.req.result(), kNs, kQueue, props(), cmpihost::broker())
                            : get_zone_hosted_collection_keys("x", c.req.result(), kNs, kQueue,
                                                              cmpihost::broker()),
                  0);
        const std::string passes[] = {"active sets ",    "editable sets ",  "active zones ",
                                      "editable zones ", "active aliases ", "editable aliases "};
        Labels log = {"vsan table", "domain 1"};
        for (const std::string &pass : passes) log.push_back(pass + "1");
        log.insert(log.end(), {"domain 5", "domain 7"});
        for (const std::string &pass : passes) log.push_back(pass + "7");
        EXPECT_EQ(c.log, log);
        Labels expected;
        for (const char *link :
             {"Vsan V1/ZoneSet S1", "Vsan V1/ZoneSet S1e", "Vsan V1/Zone Z1", "Vsan V1/Zone Z2",
              "Vsan V1/Zone Z1e", "Vsan V7/ZoneSet S7e", "Vsan V7/Zone Z7", "Vsan V7/Alias A7"})
            expected.push_back(instances
                                   ? std::string("inst:Hosted ") + link + "/Antecedent/Dependent"
                                   : std::string("path:Hosted ") + link);
        EXPECT_EQ(c.delivered(), expected);
    }
}

TEST(AssociationClasses, AnUnreadableOrEmptyVsanTableGivesNothing) {
    Call c;
    // The array of the failed query is freed too.
    EXPECT_EQ(get_zone_hosted_collection_helper("x", 1, c.req.result(), kNs, nullptr, kQueue,
                                                cmpihost::broker()),
              -1);
    c.answers = answers_of({"vsan table:"});
    EXPECT_EQ(get_zone_hosted_collection_helper("x", 0, c.req.result(), kNs, nullptr, kQueue,
                                                cmpihost::broker()),
              0);
    EXPECT_EQ(c.log, (Labels{"vsan table", "vsan table"}));
    EXPECT_TRUE(c.delivered().empty());
}

// The hosted collection and the hosted service are rebuilt from the
// request's path alone, on a path of the switch's own host, repeating the
// request's references whatever the order and case of their key names. A
// key the path lacks, or one of the right name that holds no reference,
// leaves its end without a reference.
TEST(AssociationClasses, HostedLinksRepeatTheRequestsReferencesOnAPathOfTheSwitch) {
    struct Link {
        const char *cls;
        int (*rebuild)(const CMPIObjectPath *, const CMPIResult *);
        const char *text_key;  // what a key holding text leaves of its end
    };
    const Link links[] = {
        {"VORNA_ZoneHostedCollection",
         [](const CMPIObjectPath *op, const CMPIResult *result) {
             return get_zone_hosted_collection_instance(op, result, nullptr, kQueue,
                                                        cmpihost::broker());
         },
         ""},
        {"VORNA_HostedService",
         [](const CMPIObjectPath *op, const CMPIResult *result) {
             CMPIStatus st{CMPI_RC_OK, nullptr};
             const int rc =
                 get_hosted_service_instance(op, result, nullptr, kQueue, cmpihost::broker(), &st);
             EXPECT_EQ(st.rc, CMPI_RC_OK);
             return rc;
         },
         "Antecedent=,"},
    };
    enum Antecedent { kReference, kText, kMissing };
    for (const Link &link : links) {
        for (const Antecedent antecedent : {kReference, kText, kMissing}) {
            SCOPED_TRACE(std::string(link.cls) + " antecedent " + std::to_string(antecedent));
            Call c;
            CMPIObjectPath *vsan = c.req.newObjectPath(kNs, "VORNA_Vsan");
            cmpihost::addStringKey(vsan, "Name", "VSAN1");
            CMPIObjectPath *zone = c.req.newObjectPath(kNs, "VORNA_Zone");
            cmpihost::addStringKey(zone, "InstanceID", "1^10^0");
            CMPIObjectPath *op = c.req.newObjectPath(kNs, link.cls);
            cmpihost::addReferenceKey(op, "dependent", zone);
            if (antecedent == kReference) cmpihost::addReferenceKey(op, "ANTECEDENT", vsan);
            if (antecedent == kText) cmpihost::addStringKey(op, "Antecedent", "not a reference");
            EXPECT_CALL(c.m, getCSName()).WillOnce(Return("switch-7"));

            EXPECT_EQ(link.rebuild(op, c.req.result()), 0);
            EXPECT_TRUE(c.log.empty());
            ASSERT_EQ(c.req.deliveries().size(), 1u);
            EXPECT_EQ(c.req.doneCount(), 0);
            const std::string reference = R"(Antecedent="root/zoning:VORNA_Vsan.Name=\"VSAN1\"",)";
            EXPECT_EQ(cmpihost::instanceToString(c.req.deliveries()[0].instance),
                      "switch-7/root/zoning:" + std::string(link.cls) + " " +
                          (antecedent == kReference ? reference : link.text_key) +
                          R"(Dependent="root/zoning:VORNA_Zone.InstanceID=\"1^10^0\"")");
        }
    }
}

}  // namespace
