// Zone associations: the zone sets holding a zone, the aliases it holds, its
// VSAN and its members, selected by (assocClass, resultClass) for the
// associators and by (resultClass, role) for the references, always
// delivered in that order.
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

const std::string kZoneId = id_of("Z");
const char *const kProps[] = {"InstanceID", nullptr};
const char **props() {
    return const_cast<const char **>(kProps);
}

const char *shown(const char *s) {
    return s != nullptr ? s : "(null)";
}

// Which kinds a request visits, and whether the VSAN that was looked up is
// also delivered.
struct Visit {
    bool zone_sets;
    bool aliases;
    bool vsan_lookup;
    bool vsan_delivered;
    bool members;
};

// Expectations of the list queries and VSAN lookups a traversal of the zone
// makes for the given visit; the lists hold two records each.
void expect_queries(PlatformMock &m, const Visit &v) {
    answer(
        EXPECT_CALL(m, zs_cim_get_zone_zone_set_parents_by_instance_id(kQueue, StrEq(kZoneId), _)),
        times(v.zone_sets), hand_back_list<ZoneSetRecord>({"ZS1", "ZS2"}));
    answer(EXPECT_CALL(m, zs_cim_get_zone_zone_aliases_by_instance_id(kQueue, StrEq(kZoneId), _)),
           times(v.aliases), hand_back_list<ZoneAliasRecord>({"A1", "A2"}));
    answer(
        EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, Pointee(Field(&VsanEntry::vsan, kVsan)))),
        times(v.vsan_lookup), Return(0));
    answer(EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)), times(v.vsan_delivered),
           Return(0));
    answer(EXPECT_CALL(m, zs_cim_get_zone_zone_members_by_instance_id(kQueue, StrEq(kZoneId), _)),
           times(v.members), hand_back_list<ZoneMemberRecord>({"M1", "M2"}));
}

Labels expected_labels(const Visit &v, const std::string &kind, const std::string &vsan_label) {
    Labels out;
    if (v.zone_sets) out = out + Labels{kind + ":ZoneSet.ZS1", kind + ":ZoneSet.ZS2"};
    if (v.aliases) out = out + Labels{kind + ":Alias.A1", kind + ":Alias.A2"};
    if (v.vsan_delivered) out.push_back(kind + ":" + vsan_label);
    if (v.members) out = out + Labels{kind + ":Member.M1", kind + ":Member.M2"};
    return out;
}

// The neighbour builders of AssociatorNames.
void expect_neighbour_paths(PlatformMock &m, cmpihost::Request &req, const Visit &v) {
    answer(EXPECT_CALL(m, zone_set_fill_reference(StrEq("VORNA_ZoneSet"), StrEq(kNs), _, _broker)),
           times(v.zone_sets, 2), path_labelled<2>(req, "ZoneSet"));
    answer(
        EXPECT_CALL(m, zone_alias_fill_reference(StrEq("VORNA_ZoneAlias"), StrEq(kNs), _, _broker)),
        times(v.aliases, 2), path_labelled<2>(req, "Alias"));
    answer(EXPECT_CALL(m, vsan_fill_reference(StrEq("VORNA_Vsan"), StrEq(kNs),
                                              Pointee(Field(&VsanEntry::vsan, kVsan)), _, _broker)),
           times(v.vsan_delivered), fixed_path(req, "Vsan"));
    answer(EXPECT_CALL(m, zone_member_fill_reference(StrEq("VORNA_ZoneMemberSettingData"),
                                                     StrEq(kNs), _, _broker)),
           times(v.members, 2), path_labelled<2>(req, "Member"));
}

class ZoneAssoc : public ::testing::Test {
  protected:
    void SetUp() override { use_test_globals(); }
    void expect_split(PlatformMock &m, int n = 1) {
        answer(EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(StrEq(kZoneId), _, _, _)),
               n, split_into_vsan());
    }
};

struct AssociatorCase {
    const char *assoc_class;
    const char *result_class;
    int flag;  // -1: nothing known, no trace and no platform call
    Visit visit;
};

TEST_F(ZoneAssoc, AssociatorNamesSelectByAssocClassAndResultClass) {
    const AssociatorCase cases[] = {
        {nullptr, nullptr, 15, {true, true, true, true, true}},
        {"", nullptr, 15, {true, true, true, true, true}},
        {"VORNA_ZoneMemberOfCollection", nullptr, 3, {true, true, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", "CIM_ZoneSet", 1, {true, false, false, false, false}},
        {"VORNA_ZoneMemberOfCollection",
         "CIM_NamedAddressCollection",
         2,
         {false, true, false, false, false}},
        {"vorna_zonememberofcollection", "VORNA_ZONEALIAS", 2, {false, true, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", "VORNA_ZoneSet", 0, {false, false, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", "", 0, {false, false, false, false, false}},
        {"VORNA_ZoneHostedCollection", nullptr, 4, {false, false, true, true, false}},
        {"VORNA_ZoneHostedCollection", "VORNA_Zone", 4, {false, false, true, false, false}},
        {"VORNA_ElementSettingData", "CIM_Zone", 8, {false, false, false, false, true}},
        {nullptr, "CIM_System", 15, {true, true, true, true, true}},
        {nullptr, "cim_admindomain", 15, {true, true, true, true, true}},
        {"", "VORNA_Vsan", 15, {true, true, true, true, true}},
        {nullptr, "VORNA_Zone", 15, {true, true, true, false, true}},
        {nullptr, "", 15, {true, true, true, false, true}},
        {"CIM_Dependency", nullptr, -1, {false, false, false, false, false}},
        {"VORNA_HostedService", "CIM_ZoneSet", -1, {false, false, false, false, false}},
    };
    for (const AssociatorCase &c : cases) {
        SCOPED_TRACE(std::string(shown(c.assoc_class)) + " / " + shown(c.result_class));
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        expect_split(m, times(c.flag >= 0));
        expect_queries(m, c.visit);
        expect_neighbour_paths(m, req, c.visit);

        testing::internal::CaptureStdout();
        EXPECT_EQ(get_zone_associator_names(kZoneId.c_str(), c.assoc_class, c.result_class,
                                            "Member", "Collection", req.result(), kNs),
                  0);
        const std::string out = testing::internal::GetCapturedStdout();

        EXPECT_EQ(delivered(req), expected_labels(c.visit, "path", "Vsan"));
        const std::string flag_line =
            "\n\n zone_provider:zone_associatorNames() - flag is " + std::to_string(c.flag) + " \n";
        EXPECT_EQ(has_line(out, "\n\n zone_provider:zone_associatorNames() - Start  \n"),
                  c.flag >= 0)
            << out;
        EXPECT_EQ(has_line(out, flag_line), c.flag >= 0) << out;
        EXPECT_EQ(has_line(out, "\t found  zone set -- ZS1\n"), c.visit.zone_sets) << out;
        EXPECT_EQ(has_line(out, "\t found  zone alias -- A2\n"), c.visit.aliases) << out;
        EXPECT_FALSE(has_line(out, "getting zone member of zone")) << out;
        if (c.flag < 0) {
            EXPECT_EQ(out, "");
        }
    }
}

TEST_F(ZoneAssoc, AssociatorsDeliverInstancesInKindOrderWithTheProperties) {
    cmpihost::Request req;
    StrictMock<PlatformMock> m;
    {
        InSequence order;
        expect_split(m);
        EXPECT_CALL(m, zs_cim_get_zone_zone_set_parents_by_instance_id(kQueue, StrEq(kZoneId), _))
            .WillOnce(hand_back_list<ZoneSetRecord>({"ZS1", "ZS2"}));
        EXPECT_CALL(
            m, zone_set_build_instance(StrEq("VORNA_ZoneSet"), StrEq(kNs), _, Eq(kProps), _broker))
            .Times(2)
            .WillRepeatedly(instance_labelled<2>(req, "ZoneSet"));
        EXPECT_CALL(m, zs_cim_get_zone_zone_aliases_by_instance_id(kQueue, StrEq(kZoneId), _))
            .WillOnce(hand_back_list<ZoneAliasRecord>({"A1", "A2"}));
        EXPECT_CALL(m, zone_alias_build_instance(StrEq("VORNA_ZoneAlias"), StrEq(kNs), _,
                                                 Eq(kProps), _broker))
            .Times(2)
            .WillRepeatedly(instance_labelled<2>(req, "Alias"));
        EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, _)).WillOnce(Return(0));
        EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)).WillOnce(Return(0));
        EXPECT_CALL(m,
                    vsan_build_instance(StrEq("VORNA_Vsan"), StrEq(kNs), _, _, Eq(kProps), _broker))
            .WillOnce(fixed_instance(req, "Vsan"));
        EXPECT_CALL(m, zs_cim_get_zone_zone_members_by_instance_id(kQueue, StrEq(kZoneId), _))
            .WillOnce(hand_back_list<ZoneMemberRecord>({"M1", "M2"}));
        EXPECT_CALL(m, zone_member_build_instance(StrEq("VORNA_ZoneMemberSettingData"), StrEq(kNs),
                                                  _, Eq(kProps), _broker))
            .Times(2)
            .WillRepeatedly(instance_labelled<2>(req, "Member"));
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(get_zone_associators(kZoneId.c_str(), nullptr, nullptr, nullptr, nullptr, props(),
                                   req.result(), kNs),
              0);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(delivered(req), expected_labels({true, true, true, true, true}, "inst", "Vsan"));
    EXPECT_TRUE(has_line(out, "\n\n zone_provider:zone_associators() - Start  \n"));
    EXPECT_TRUE(has_line(out, "\n\n zone_provider:zone_associators() - flag is 15 \n"));
    EXPECT_TRUE(has_line(out, "getting zone member of zone -- " + kZoneId + "\n")) << out;
    EXPECT_EQ(req.doneCount(), 0);
}

TEST_F(ZoneAssoc, AZoneInNothingDeliversOnlyItsVsan) {
    cmpihost::Request req;
    StrictMock<PlatformMock> m;
    expect_split(m);
    EXPECT_CALL(m, zs_cim_get_zone_zone_set_parents_by_instance_id(_, _, _))
        .WillOnce(hand_back_list<ZoneSetRecord>({}));
    EXPECT_CALL(m, zs_cim_get_zone_zone_aliases_by_instance_id(_, _, _))
        .WillOnce(hand_back_list<ZoneAliasRecord>({}, 3));  // a failed query delivers nothing
    EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, _)).WillOnce(Return(0));
    EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)).WillOnce(Return(0));
    EXPECT_CALL(m, vsan_build_instance(_, _, _, _, _, _)).WillOnce(fixed_instance(req, "Vsan"));
    EXPECT_CALL(m, zs_cim_get_zone_zone_members_by_instance_id(_, _, _))
        .WillOnce(hand_back_list<ZoneMemberRecord>({}));
    EXPECT_EQ(get_zone_associators(kZoneId.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr,
                                   req.result(), kNs),
              0);
    EXPECT_EQ(delivered(req), (Labels{"inst:Vsan"}));
}

TEST_F(ZoneAssoc, AMissingVsanStopsBeforeTheMembers) {
    for (const bool vsan_missing : {true, false}) {
        SCOPED_TRACE(vsan_missing ? "no VSAN" : "no domain");
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        InSequence order;
        expect_split(m);
        EXPECT_CALL(m, zs_cim_get_zone_zone_set_parents_by_instance_id(_, _, _))
            .WillOnce(hand_back_list<ZoneSetRecord>({"ZS1", "ZS2"}));
        EXPECT_CALL(m, zone_set_fill_reference(_, _, _, _))
            .Times(2)
            .WillRepeatedly(path_labelled<2>(req, "ZoneSet"));
        EXPECT_CALL(m, zs_cim_get_zone_zone_aliases_by_instance_id(_, _, _))
            .WillOnce(hand_back_list<ZoneAliasRecord>({"A1", "A2"}));
        EXPECT_CALL(m, zone_alias_fill_reference(_, _, _, _))
            .Times(2)
            .WillRepeatedly(path_labelled<2>(req, "Alias"));
        EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, _)).WillOnce(Return(vsan_missing ? 4 : 0));
        answer(EXPECT_CALL(m, dm_cim_get_dmEntry(_, _, _, _)), times(!vsan_missing), Return(4));
        EXPECT_EQ(get_zone_associator_names(kZoneId.c_str(), nullptr, nullptr, nullptr, nullptr,
                                            req.result(), kNs),
                  -1);
        EXPECT_EQ(delivered(req), expected_labels({true, true, false, false, false}, "path", ""));
    }
}

struct ReferenceCase {
    const char *result_class;
    const char *role;
    Visit visit;  // vsan_lookup and vsan_delivered stand for the hosted collection
};

TEST_F(ZoneAssoc, ReferenceNamesSelectByResultClassAndRole) {
    const ReferenceCase cases[] = {
        {"VORNA_ZoneMemberOfCollection", "Member", {true, false, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", "collection", {false, true, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", "Antecedent", {true, true, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", nullptr, {true, true, false, false, false}},
        {"VORNA_ZoneMemberOfCollection", "", {true, true, false, false, false}},
        {"VORNA_ZoneHostedCollection", "Member", {false, false, true, true, false}},
        {"VORNA_ElementSettingData", nullptr, {false, false, false, false, true}},
        {nullptr, nullptr, {true, true, true, true, true}},
        {"", "Member", {true, true, true, true, true}},
        {"VORNA_ZoneAlias", nullptr, {false, false, false, false, false}},
        {"CIM_Component", "Member", {false, false, false, false, false}},
    };
    for (const ReferenceCase &c : cases) {
        SCOPED_TRACE(std::string(shown(c.result_class)) + " / " + shown(c.role));
        const Visit &v = c.visit;
        const bool known = v.zone_sets || v.aliases || v.vsan_lookup || v.members;
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        expect_split(m, times(known));
        answer(EXPECT_CALL(m, zs_cim_get_zone_by_instance_id(kQueue, StrEq(kZoneId), _)),
               times(known), hand_back_record<ZoneRecord>("Z"));
        expect_queries(m, v);
        const auto the_zone = Pointee(Field(&ZoneRecord::name, StrEq("Z")));
        answer(EXPECT_CALL(m, zmoc_fill_reference_zoneSetZone(StrEq("VORNA_ZoneMemberOfCollection"),
                                                              StrEq(kNs), _, the_zone, _broker)),
               times(v.zone_sets, 2), path_labelled<2>(req, "ZoneSet"));
        answer(EXPECT_CALL(m, zmoc_fill_reference(StrEq("VORNA_ZoneMemberOfCollection"), StrEq(kNs),
                                                  the_zone, _, _broker)),
               times(v.aliases, 2), path_labelled<3>(req, "Alias"));
        answer(EXPECT_CALL(
                   m, hosted_collection_fill_reference_zone(StrEq("VORNA_ZoneHostedCollection"),
                                                            StrEq(kNs), _, _, the_zone, _broker)),
               times(v.vsan_delivered), fixed_path(req, "Hosted"));
        answer(EXPECT_CALL(m, esd_fill_reference_zoneZoneMember(StrEq("VORNA_ElementSettingData"),
                                                                StrEq(kNs), the_zone, _, _broker)),
               times(v.members, 2), path_labelled<3>(req, "Member"));

        testing::internal::CaptureStdout();
        EXPECT_EQ(
            get_zone_reference_names(kZoneId.c_str(), c.result_class, c.role, req.result(), kNs),
            0);
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(delivered(req), expected_labels(v, "path", "Hosted"));
        // Reference names announce every list query they make.
        EXPECT_EQ(has_line(out, "getting zone sets of zone -- " + kZoneId + "\n"), v.zone_sets);
        EXPECT_EQ(has_line(out, "getting zone alias of zone -- " + kZoneId + "\n"), v.aliases);
        EXPECT_EQ(has_line(out, "getting zone member of zone -- " + kZoneId + "\n"), v.members);
        EXPECT_EQ(has_line(out, "\t found  zone set -- ZS2\n"), v.zone_sets);
        EXPECT_EQ(has_line(out, "\t found  zone alias -- A1\n"), v.aliases);
    }
}

TEST_F(ZoneAssoc, ReferencesHandThePropertiesToTheZoneSetAndMemberLinksOnly) {
    cmpihost::Request req;
    StrictMock<PlatformMock> m;
    {
        InSequence order;
        expect_split(m);
        EXPECT_CALL(m, zs_cim_get_zone_by_instance_id(kQueue, StrEq(kZoneId), _))
            .WillOnce(hand_back_record<ZoneRecord>("Z"));
        EXPECT_CALL(m, zs_cim_get_zone_zone_set_parents_by_instance_id(_, _, _))
            .WillOnce(hand_back_list<ZoneSetRecord>({"ZS1", "ZS2"}));
        EXPECT_CALL(m, zmoc_build_instance_zoneSetZone(StrEq("VORNA_ZoneMemberOfCollection"),
                                                       StrEq(kNs), _, _, Eq(kProps), _broker))
            .Times(2)
            .WillRepeatedly(instance_labelled<2>(req, "ZoneSet"));
        EXPECT_CALL(m, zs_cim_get_zone_zone_aliases_by_instance_id(_, _, _))
            .WillOnce(hand_back_list<ZoneAliasRecord>({"A1", "A2"}));
        EXPECT_CALL(m, zmoc_build_instance(StrEq("VORNA_ZoneMemberOfCollection"), StrEq(kNs), _, _,
                                           _broker))
            .Times(2)
            .WillRepeatedly(instance_labelled<3>(req, "Alias"));
        EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, _)).WillOnce(Return(0));
        EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)).WillOnce(Return(0));
        EXPECT_CALL(m, hosted_collection_build_instance_zone(StrEq("VORNA_ZoneHostedCollection"),
                                                             StrEq(kNs), _, _, _, _broker))
            .WillOnce(fixed_instance(req, "Hosted"));
        EXPECT_CALL(m, zs_cim_get_zone_zone_members_by_instance_id(_, _, _))
            .WillOnce(hand_back_list<ZoneMemberRecord>({"M1", "M2"}));
        EXPECT_CALL(m, esd_build_instance_zoneZoneMember(StrEq("VORNA_ElementSettingData"),
                                                         StrEq(kNs), _, _, Eq(kProps), _broker))
            .Times(2)
            .WillRepeatedly(instance_labelled<3>(req, "Member"));
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(get_zone_references(kZoneId.c_str(), nullptr, nullptr, props(), req.result(), kNs),
              0);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(delivered(req), expected_labels({true, true, true, true, true}, "inst", "Hosted"));
    // References announce only the members query.
    EXPECT_FALSE(has_line(out, "getting zone sets of zone"));
    EXPECT_FALSE(has_line(out, "getting zone alias of zone"));
    EXPECT_TRUE(has_line(out, "getting zone member of zone -- " + kZoneId + "\n"));
}

TEST_F(ZoneAssoc, ReferencesWithoutTheZoneRecordOrItsVsanStop) {
    // No zone record: nothing else is asked.
    {
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        expect_split(m, 2);
        EXPECT_CALL(m, zs_cim_get_zone_by_instance_id(kQueue, _, _))
            .Times(2)
            .WillRepeatedly(Return(1));
        EXPECT_EQ(get_zone_reference_names(kZoneId.c_str(), nullptr, nullptr, req.result(), kNs),
                  -1);
        EXPECT_EQ(
            get_zone_references(kZoneId.c_str(), nullptr, nullptr, nullptr, req.result(), kNs), -1);
        EXPECT_TRUE(delivered(req).empty());
    }
    // No domain entry: the links before it stay delivered, the members are not
    // visited, and the zone record and every node are freed.
    {
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        InSequence order;
        expect_split(m);
        EXPECT_CALL(m, zs_cim_get_zone_by_instance_id(kQueue, _, _))
            .WillOnce(hand_back_record<ZoneRecord>("Z"));
        EXPECT_CALL(m, zs_cim_get_zone_zone_set_parents_by_instance_id(_, _, _))
            .WillOnce(hand_back_list<ZoneSetRecord>({"ZS1", "ZS2"}));
        EXPECT_CALL(m, zmoc_fill_reference_zoneSetZone(_, _, _, _, _))
            .Times(2)
            .WillRepeatedly(path_labelled<2>(req, "ZoneSet"));
        EXPECT_CALL(m, zs_cim_get_zone_zone_aliases_by_instance_id(_, _, _))
            .WillOnce(hand_back_list<ZoneAliasRecord>({"A1", "A2"}));
        EXPECT_CALL(m, zmoc_fill_reference(_, _, _, _, _))
            .Times(2)
            .WillRepeatedly(path_labelled<3>(req, "Alias"));
        EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, _)).WillOnce(Return(0));
        EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)).WillOnce(Return(9));
        EXPECT_EQ(get_zone_reference_names(kZoneId.c_str(), "", nullptr, req.result(), kNs), -1);
        EXPECT_EQ(delivered(req), expected_labels({true, true, false, false, false}, "path", ""));
    }
}

}  // namespace
