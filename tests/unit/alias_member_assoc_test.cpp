// Zone alias associations (zones holding the alias, its members, and its
// VSAN for the associators only) and zone member associations (the zones
// and aliases holding the member, last parent first).
#include "association_test_support.h"

using ::testing::_;
using ::testing::Eq;
using ::testing::Field;
using ::testing::InSequence;
using ::testing::Pointee;
using ::testing::Return;
using ::testing::StrEq;
using ::testing::StrictMock;

using namespace assoc_test;

namespace {

const std::string kAliasId = id_of("A");
const std::string kMemberId = "7^1^M^0";
const char *const kProps[] = {"InstanceID", nullptr};
const char **props() {
    return const_cast<const char **>(kProps);
}
const char *shown(const char *s) {
    return s != nullptr ? s : "(null)";
}

class AliasMemberAssoc : public ::testing::Test {
  protected:
    void SetUp() override { use_test_globals(); }
};

// ---- Zone aliases -------------------------------------------------------------------

struct AliasVisit {
    bool zones;
    bool members;
    bool vsan_lookup;
    bool vsan_delivered;
};

void expect_alias_queries(PlatformMock &m, const AliasVisit &v) {
    answer(EXPECT_CALL(
               m, zs_cim_get_zone_alias_zone_parents_by_instance_id(kQueue, StrEq(kAliasId), _)),
           times(v.zones), hand_back_list<ZoneRecord>({"Z1", "Z2"}));
    answer(EXPECT_CALL(
               m, zs_cim_get_zone_alias_zone_members_by_instance_id(kQueue, StrEq(kAliasId), _)),
           times(v.members), hand_back_list<ZoneMemberRecord>({"M1", "M2"}));
    answer(
        EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, Pointee(Field(&VsanEntry::vsan, kVsan)))),
        times(v.vsan_lookup), Return(0));
    answer(EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)), times(v.vsan_delivered),
           Return(0));
}

Labels expected_alias_labels(const AliasVisit &v, const std::string &kind) {
    Labels out;
    if (v.zones) out = out + Labels{kind + ":Zone.Z1", kind + ":Zone.Z2"};
    if (v.members) out = out + Labels{kind + ":Member.M1", kind + ":Member.M2"};
    if (v.vsan_delivered) out.push_back(kind + ":Vsan");
    return out;
}

struct AliasAssociatorCase {
    const char *assoc_class;
    const char *result_class;
    bool known;
    AliasVisit visit;
};

TEST_F(AliasMemberAssoc, AliasAssociatorNamesSelectByAssocClassAndResultClass) {
    const AliasAssociatorCase cases[] = {
        {nullptr, nullptr, true, {true, true, false, false}},
        {"", "CIM_System", true, {true, true, false, false}},
        {"VORNA_ZoneMemberOfCollection", nullptr, true, {true, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", "cim_zone", true, {true, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", "VORNA_Zone", true, {false, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", "", true, {false, false, false, false}},
        {"VORNA_Vsan", nullptr, true, {false, false, false, false}},
        {"CIM_AdminDomain", "CIM_Zone", true, {false, false, false, false}},
        {"VORNA_ElementSettingData", "VORNA_Zone", true, {false, true, false, false}},
        {"VORNA_ZoneHostedCollection", nullptr, true, {false, false, true, true}},
        {"VORNA_ZoneHostedCollection", "CIM_AdminDomain", true, {false, false, true, true}},
        {"VORNA_ZoneHostedCollection", "vorna_vsan", true, {false, false, true, true}},
        {"VORNA_ZoneHostedCollection", "VORNA_Zone", true, {false, false, true, false}},
        {"VORNA_ZoneHostedCollection", "", true, {false, false, true, false}},
        {"CIM_Component", nullptr, false, {false, false, false, false}},
    };
    for (const AliasAssociatorCase &c : cases) {
        SCOPED_TRACE(std::string(shown(c.assoc_class)) + " / " + shown(c.result_class));
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        answer(EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(StrEq(kAliasId), _, _, _)),
               times(c.known), split_into_vsan());
        expect_alias_queries(m, c.visit);
        answer(EXPECT_CALL(m, zone_fill_reference(StrEq("VORNA_Zone"), StrEq(kNs), _, _broker)),
               times(c.visit.zones, 2), path_labelled<2>(req, "Zone"));
        answer(EXPECT_CALL(m, zone_member_fill_reference(StrEq("VORNA_ZoneMemberSettingData"),
                                                         StrEq(kNs), _, _broker)),
               times(c.visit.members, 2), path_labelled<2>(req, "Member"));
        answer(EXPECT_CALL(m, vsan_fill_reference(StrEq("VORNA_Vsan"), StrEq(kNs), _, _, _broker)),
               times(c.visit.vsan_delivered), fixed_path(req, "Vsan"));

        testing::internal::CaptureStdout();
        EXPECT_EQ(get_zone_alias_associator_names(kAliasId.c_str(), c.assoc_class, c.result_class,
                                                  "Member", "Collection", req.result(), kNs),
                  0);
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(delivered(req), expected_alias_labels(c.visit, "path"));
        EXPECT_EQ(has_line(out, "\t found  zone  -- Z1\n"), c.visit.zones) << out;
        EXPECT_EQ(has_line(out, "getting zone member of zone alias -- " + kAliasId + "\n"),
                  c.visit.members)
            << out;
        if (!c.known) {
            EXPECT_EQ(out, "");
        }
    }
}

TEST_F(AliasMemberAssoc, AliasAssociatorsHandThePropertiesToEveryBuilder) {
    cmpihost::Request req;
    StrictMock<PlatformMock> m;
    InSequence order;
    EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(_, _, _, _))
        .WillOnce(split_into_vsan());
    EXPECT_CALL(m, zs_cim_get_zone_alias_zone_parents_by_instance_id(_, _, _))
        .WillOnce(hand_back_list<ZoneRecord>({"Z1", "Z2"}));
    EXPECT_CALL(m, zone_build_instance(StrEq("VORNA_Zone"), StrEq(kNs), _, Eq(kProps), _broker))
        .Times(2)
        .WillRepeatedly(instance_labelled<2>(req, "Zone"));
    EXPECT_CALL(m, zs_cim_get_zone_alias_zone_members_by_instance_id(_, _, _))
        .WillOnce(hand_back_list<ZoneMemberRecord>({"M1", "M2"}));
    EXPECT_CALL(m, zone_member_build_instance(StrEq("VORNA_ZoneMemberSettingData"), StrEq(kNs), _,
                                              Eq(kProps), _broker))
        .Times(2)
        .WillRepeatedly(instance_labelled<2>(req, "Member"));
    EXPECT_EQ(get_zone_alias_associators(kAliasId.c_str(), nullptr, nullptr, nullptr, nullptr,
                                         props(), req.result(), kNs),
              0);
    EXPECT_EQ(delivered(req), expected_alias_labels({true, true, false, false}, "inst"));

    // The VSAN, through the hosted collection.
    EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(_, _, _, _))
        .WillOnce(split_into_vsan());
    EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, _)).WillOnce(Return(0));
    EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)).WillOnce(Return(0));
    EXPECT_CALL(m, vsan_build_instance(StrEq("VORNA_Vsan"), StrEq(kNs), _, _, Eq(kProps), _broker))
        .WillOnce(fixed_instance(req, "Vsan"));
    EXPECT_EQ(
        get_zone_alias_associators(kAliasId.c_str(), "VORNA_ZoneHostedCollection", "CIM_System",
                                   nullptr, nullptr, props(), req.result(), kNs),
        0);
    EXPECT_EQ(delivered(req).back(), "inst:Vsan");
}

TEST_F(AliasMemberAssoc, AliasAssociatorsFailWhenTheVsanOrDomainIsMissing) {
    for (const bool vsan_missing : {true, false}) {
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(_, _, _, _))
            .WillOnce(split_into_vsan());
        EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, _)).WillOnce(Return(vsan_missing ? 1 : 0));
        answer(EXPECT_CALL(m, dm_cim_get_dmEntry(_, _, _, _)), times(!vsan_missing), Return(1));
        EXPECT_EQ(get_zone_alias_associator_names(kAliasId.c_str(), "VORNA_ZoneHostedCollection",
                                                  nullptr, nullptr, nullptr, req.result(), kNs),
                  -1);
        EXPECT_TRUE(delivered(req).empty());
    }
}

struct AliasReferenceCase {
    const char *result_class;
    const char *role;
    bool known;
    AliasVisit visit;
};

TEST_F(AliasMemberAssoc, AliasReferenceNamesSelectByResultClassAndRole) {
    const AliasReferenceCase cases[] = {
        {"VORNA_ZoneMemberOfCollection", nullptr, true, {true, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", "member", true, {true, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", "Collection", true, {false, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", "", true, {false, false, false, false}},
        {"VORNA_Vsan", nullptr, true, {false, false, false, false}},
        {"CIM_AdminDomain", nullptr, true, {false, false, false, false}},
        {"VORNA_ElementSettingData", "Member", true, {false, true, false, false}},
        {nullptr, nullptr, true, {true, true, false, false}},
        {"", "Collection", true, {true, true, false, false}},
        {"VORNA_ZoneHostedCollection", nullptr, false, {false, false, false, false}},
        {"CIM_Component", nullptr, false, {false, false, false, false}},
    };
    for (const AliasReferenceCase &c : cases) {
        SCOPED_TRACE(std::string(shown(c.result_class)) + " / " + shown(c.role));
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        answer(EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(StrEq(kAliasId), _, _, _)),
               times(c.known), split_into_vsan());
        answer(EXPECT_CALL(m, zs_cim_get_zone_alias_by_instance_id(kQueue, StrEq(kAliasId), _)),
               times(c.known), hand_back_record<ZoneAliasRecord>("A"));
        expect_alias_queries(m, c.visit);
        const auto the_alias = Pointee(Field(&ZoneAliasRecord::name, StrEq("A")));
        answer(EXPECT_CALL(m, zmoc_fill_reference(StrEq("VORNA_ZoneMemberOfCollection"), StrEq(kNs),
                                                  _, the_alias, _broker)),
               times(c.visit.zones, 2), path_labelled<2>(req, "Zone"));
        answer(EXPECT_CALL(
                   m, esd_fill_reference_zoneAliasZoneMember(StrEq("VORNA_ElementSettingData"),
                                                             StrEq(kNs), the_alias, _, _broker)),
               times(c.visit.members, 2), path_labelled<3>(req, "Member"));

        testing::internal::CaptureStdout();
        EXPECT_EQ(get_zone_alias_reference_names(kAliasId.c_str(), c.result_class, c.role,
                                                 req.result(), kNs),
                  0);
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(delivered(req), expected_alias_labels(c.visit, "path"));
        EXPECT_EQ(has_line(out, "\t found  zone  -- Z2\n"), c.visit.zones) << out;
        EXPECT_EQ(has_line(out, "getting zone member of zone alias -- " + kAliasId + "\n"),
                  c.visit.members)
            << out;
    }
}

TEST_F(AliasMemberAssoc, AliasReferencesBuildLinksWithThePropertiesOnTheMemberLinkOnly) {
    cmpihost::Request req;
    StrictMock<PlatformMock> m;
    InSequence order;
    EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(_, _, _, _))
        .WillOnce(split_into_vsan());
    EXPECT_CALL(m, zs_cim_get_zone_alias_by_instance_id(kQueue, _, _))
        .WillOnce(hand_back_record<ZoneAliasRecord>("A"));
    EXPECT_CALL(m, zs_cim_get_zone_alias_zone_parents_by_instance_id(_, _, _))
        .WillOnce(hand_back_list<ZoneRecord>({"Z1", "Z2"}));
    EXPECT_CALL(
        m, zmoc_build_instance(StrEq("VORNA_ZoneMemberOfCollection"), StrEq(kNs), _, _, _broker))
        .Times(2)
        .WillRepeatedly(instance_labelled<2>(req, "Zone"));
    EXPECT_CALL(m, zs_cim_get_zone_alias_zone_members_by_instance_id(_, _, _))
        .WillOnce(hand_back_list<ZoneMemberRecord>({"M1", "M2"}));
    EXPECT_CALL(m, esd_build_instance_zoneAliasZoneMember(StrEq("VORNA_ElementSettingData"),
                                                          StrEq(kNs), _, _, Eq(kProps), _broker))
        .Times(2)
        .WillRepeatedly(instance_labelled<3>(req, "Member"));
    EXPECT_EQ(
        get_zone_alias_references(kAliasId.c_str(), nullptr, nullptr, props(), req.result(), kNs),
        0);
    EXPECT_EQ(delivered(req), expected_alias_labels({true, true, false, false}, "inst"));
}

TEST_F(AliasMemberAssoc, AliasReferencesWithoutTheAliasRecordDeliverNothing) {
    cmpihost::Request req;
    StrictMock<PlatformMock> m;
    EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(_, _, _, _))
        .Times(2)
        .WillRepeatedly(split_into_vsan());
    EXPECT_CALL(m, zs_cim_get_zone_alias_by_instance_id(kQueue, _, _))
        .Times(2)
        .WillRepeatedly(Return(1));
    EXPECT_EQ(get_zone_alias_reference_names(kAliasId.c_str(), nullptr, nullptr, req.result(), kNs),
              -1);
    EXPECT_EQ(
        get_zone_alias_references(kAliasId.c_str(), nullptr, nullptr, nullptr, req.result(), kNs),
        -1);
    EXPECT_TRUE(delivered(req).empty());
}

// ---- Zone members ------------------------------------------------------------------------

struct MemberCase {
    const char *first_class;
    const char *second_class;
    bool known;
    bool zones;
    bool aliases;
};

TEST_F(AliasMemberAssoc, MemberTraversalSelectsByBothClassNamesAndDeliversLastParentFirst) {
    const MemberCase cases[] = {
        {"VORNA_ElementSettingData", nullptr, true, true, false},
        {"VORNA_ElementSettingData", "CIM_Zone", true, true, false},
        {"vorna_elementsettingdata", "cim_namedaddresscollection", true, false, true},
        {"VORNA_ElementSettingData", "", true, true, true},
        {"VORNA_ElementSettingData", "VORNA_Zone", true, false, false},
        {nullptr, "VORNA_Zone", true, true, true},
        {"", nullptr, true, true, true},
        {"VORNA_ZoneMemberOfCollection", nullptr, false, false, false},
    };
    for (const MemberCase &c : cases) {
        SCOPED_TRACE(std::string(shown(c.first_class)) + " / " + shown(c.second_class));
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        GenericLists lists;
        lists.install(m);
        answer(EXPECT_CALL(m, zs_cim_get_zone_member_by_instance_id(kQueue, StrEq(kMemberId), _)),
               times(c.known), hand_back_record<ZoneMemberRecord>("M"));
        answer(EXPECT_CALL(m, zs_cim_get_zone_member_zone_parents_by_instance_id(
                                  kQueue, StrEq(kMemberId), _)),
               times(c.zones), append_parents<ZoneRecord>({"Z1", "Z2"}));
        answer(EXPECT_CALL(m, zs_cim_get_zone_member_zone_alias_parents_by_instance_id(
                                  kQueue, StrEq(kMemberId), _)),
               times(c.aliases), append_parents<ZoneAliasRecord>({"A1"}));
        answer(EXPECT_CALL(m, zone_fill_reference(StrEq("VORNA_Zone"), StrEq(kNs), _, _broker)),
               times(c.zones, 2), path_labelled<2>(req, "Zone"));
        answer(EXPECT_CALL(
                   m, zone_alias_fill_reference(StrEq("VORNA_ZoneAlias"), StrEq(kNs), _, _broker)),
               times(c.aliases), path_labelled<2>(req, "Alias"));

        testing::internal::CaptureStdout();
        EXPECT_EQ(get_zone_member_references(kMemberId.c_str(), c.first_class,
                                             ZONE_ASSOC_ASSOCIATOR_NAMES, c.second_class, nullptr,
                                             req.result(), kNs),
                  0);
        const std::string out = testing::internal::GetCapturedStdout();
        Labels expected;
        if (c.zones) expected = Labels{"path:Zone.Z2", "path:Zone.Z1"};
        if (c.aliases) expected.push_back("path:Alias.A1");
        EXPECT_EQ(delivered(req), expected);
        EXPECT_EQ(lists.allocated, times(c.zones) + times(c.aliases));
        EXPECT_EQ(lists.destroyed, lists.allocated);
        EXPECT_EQ(has_line(out, "getting zone  of zonemember -- " + kMemberId + "\n"), c.zones);
        EXPECT_EQ(has_line(out, "getting zone alias of zonemember -- " + kMemberId + "\n"),
                  c.aliases);
    }
}

TEST_F(AliasMemberAssoc, MemberTraversalBuildsByMode) {
    const auto the_member = Pointee(Field(&ZoneMemberRecord::member_value, StrEq("M")));
    for (int mode = 0; mode <= 5; ++mode) {
        SCOPED_TRACE("mode " + std::to_string(mode));
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        GenericLists lists;
        lists.install(m);
        EXPECT_CALL(m, zs_cim_get_zone_member_by_instance_id(kQueue, _, _))
            .WillOnce(hand_back_record<ZoneMemberRecord>("M"));
        EXPECT_CALL(m, zs_cim_get_zone_member_zone_parents_by_instance_id(kQueue, _, _))
            .WillOnce(append_parents<ZoneRecord>({"Z1", "Z2"}));
        EXPECT_CALL(m, zs_cim_get_zone_member_zone_alias_parents_by_instance_id(kQueue, _, _))
            .WillOnce(append_parents<ZoneAliasRecord>({"A1"}));
        const int n = mode == 1 ? 1 : 0;
        answer(EXPECT_CALL(
                   m, zone_build_instance(StrEq("VORNA_Zone"), StrEq(kNs), _, Eq(kProps), _broker)),
               2 * n, instance_labelled<2>(req, "Zone"));
        answer(EXPECT_CALL(m, zone_alias_build_instance(StrEq("VORNA_ZoneAlias"), StrEq(kNs), _,
                                                        Eq(kProps), _broker)),
               n, instance_labelled<2>(req, "Alias"));
        const int p = mode == 2 ? 1 : 0;
        answer(EXPECT_CALL(m, zone_fill_reference(StrEq("VORNA_Zone"), StrEq(kNs), _, _broker)),
               2 * p, path_labelled<2>(req, "Zone"));
        answer(EXPECT_CALL(
                   m, zone_alias_fill_reference(StrEq("VORNA_ZoneAlias"), StrEq(kNs), _, _broker)),
               p, path_labelled<2>(req, "Alias"));
        const int r = mode == 3 ? 1 : 0;
        answer(EXPECT_CALL(m, esd_build_instance_zoneZoneMember(StrEq("VORNA_ElementSettingData"),
                                                                StrEq(kNs), _, the_member,
                                                                Eq(kProps), _broker)),
               2 * r, instance_labelled<2>(req, "Zone"));
        answer(EXPECT_CALL(m, esd_build_instance_zoneAliasZoneMember(
                                  StrEq("VORNA_ElementSettingData"), StrEq(kNs), _, the_member,
                                  Eq(kProps), _broker)),
               r, instance_labelled<2>(req, "Alias"));
        const int rn = mode == 4 ? 1 : 0;
        answer(
            EXPECT_CALL(m, esd_fill_reference_zoneZoneMember(StrEq("VORNA_ElementSettingData"),
                                                             StrEq(kNs), _, the_member, _broker)),
            2 * rn, path_labelled<2>(req, "Zone"));
        answer(EXPECT_CALL(
                   m, esd_fill_reference_zoneAliasZoneMember(StrEq("VORNA_ElementSettingData"),
                                                             StrEq(kNs), _, the_member, _broker)),
               rn, path_labelled<2>(req, "Alias"));

        EXPECT_EQ(get_zone_member_references(kMemberId.c_str(), nullptr, mode, "", props(),
                                             req.result(), kNs),
                  0);
        const std::string kind = (mode == 1 || mode == 3) ? "inst" : "path";
        const Labels expected =
            (mode >= 1 && mode <= 4)
                ? Labels{kind + ":Zone.Z2", kind + ":Zone.Z1", kind + ":Alias.A1"}
                : Labels{};
        EXPECT_EQ(delivered(req), expected);
        EXPECT_EQ(lists.destroyed, 2);
    }
}

TEST_F(AliasMemberAssoc, MemberTraversalSkipsNullEntriesAndReleasesListsOfFailedQueries) {
    cmpihost::Request req;
    StrictMock<PlatformMock> m;
    GenericLists lists;
    lists.install(m);
    EXPECT_CALL(m, zs_cim_get_zone_member_by_instance_id(kQueue, _, _))
        .WillOnce(hand_back_record<ZoneMemberRecord>("M"));
    EXPECT_CALL(m, zs_cim_get_zone_member_zone_parents_by_instance_id(kQueue, _, _))
        .WillOnce(append_parents<ZoneRecord>({"Z1", "", "Z2"}));
    // A failing alias query that still put a record into the list: nothing of
    // it is delivered, and the list (with its record) is destroyed.
    EXPECT_CALL(m, zs_cim_get_zone_member_zone_alias_parents_by_instance_id(kQueue, _, _))
        .WillOnce(append_parents<ZoneAliasRecord>({"A1"}, 1));
    EXPECT_CALL(m, zone_build_instance(_, _, _, _, _))
        .Times(2)
        .WillRepeatedly(instance_labelled<2>(req, "Zone"));
    EXPECT_EQ(get_zone_member_references(kMemberId.c_str(), "VORNA_ElementSettingData",
                                         ZONE_ASSOC_ASSOCIATORS, "", props(), req.result(), kNs),
              0);
    EXPECT_EQ(delivered(req), (Labels{"inst:Zone.Z2", "inst:Zone.Z1"}));
    EXPECT_EQ(lists.allocated, 2);
    EXPECT_EQ(lists.destroyed, 2);
}

TEST_F(AliasMemberAssoc, AnUnknownMemberYieldsNothingAndMakesNoList) {
    cmpihost::Request req;
    StrictMock<PlatformMock> m;
    EXPECT_CALL(m, zs_cim_get_zone_member_by_instance_id(kQueue, StrEq(kMemberId), _))
        .WillOnce(Return(1));
    EXPECT_EQ(get_zone_member_references(kMemberId.c_str(), nullptr, ZONE_ASSOC_REFERENCES, "",
                                         nullptr, req.result(), kNs),
              -1);
    EXPECT_TRUE(delivered(req).empty());
}

}  // namespace
