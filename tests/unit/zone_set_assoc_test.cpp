// Zone set associations: the zones a zone set holds and the VSAN that hosts
// it, selected by the association-class filter, delivered zones first.
#include "association_test_support.h"

using ::testing::_;
using ::testing::AnyNumber;
using ::testing::Eq;
using ::testing::Field;
using ::testing::InSequence;
using ::testing::Pointee;
using ::testing::Return;
using ::testing::StrEq;
using ::testing::StrictMock;

using namespace assoc_test;

namespace {

const std::string kZoneSetId = id_of("ZS");
const char *const kProps[] = {"Name", nullptr};

class ZoneSetAssoc : public ::testing::Test {
  protected:
    void SetUp() override { use_test_globals(); }

    void expect_split(int times_ = 1) {
        answer(EXPECT_CALL(mock,
                           zs_cim_get_fields_from_generic_instance_id(StrEq(kZoneSetId), _, _, _)),
               times_, split_into_vsan());
    }
    void expect_zones(int times_, std::vector<std::string> names, int rc = 0) {
        answer(EXPECT_CALL(mock,
                           zs_cim_get_zone_set_zones_by_instance_id(kQueue, StrEq(kZoneSetId), _)),
               times_, hand_back_list<ZoneRecord>(names, rc));
    }
    void expect_vsan_lookup(int times_, int rc = 0) {
        answer(EXPECT_CALL(mock, vsan_cim_get_vsanEntry(kQueue, 1,
                                                        Pointee(Field(&VsanEntry::vsan, kVsan)))),
               times_, Return(rc));
    }
    void expect_domain_lookup(int times_, int rc = 0) {
        answer(EXPECT_CALL(mock, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)), times_, Return(rc));
    }

    cmpihost::Request request;
    StrictMock<PlatformMock> mock;
};

// One row of the selection table as AssociatorNames sees it.
struct SelectionCase {
    const char *assoc_class;
    const char *result_class;
    int flag;  // -1: the filter names nothing known
    bool zones;
    bool vsan_lookup;
    bool vsan_delivered;
};

TEST_F(ZoneSetAssoc, AssociatorNamesSelectsByAssocClassAndTheVsanByResultClass) {
    const SelectionCase cases[] = {
        {"VORNA_ZoneMemberOfCollection", nullptr, 1, true, false, false},
        {"vorna_zonememberofcollection", "VORNA_Vsan", 1, true, false, false},
        {"VORNA_ZoneHostedCollection", nullptr, 2, false, true, true},
        {nullptr, nullptr, 3, true, true, true},
        {"", nullptr, 3, true, true, true},
        {nullptr, "CIM_System", 3, true, true, true},
        {nullptr, "CIM_ADMINDOMAIN", 3, true, true, true},
        {nullptr, "VORNA_Vsan", 3, true, true, false},
        {nullptr, "", 3, true, true, false},
        {"VORNA_ZoneHostedCollection", "VORNA_Zone", 2, false, true, false},
        {"VORNA_ElementSettingData", nullptr, -1, false, false, false},
        {"CIM_Component", "CIM_System", -1, false, false, false},
    };
    for (const SelectionCase &c : cases) {
        SCOPED_TRACE(std::string(c.assoc_class ? c.assoc_class : "(null)") + " / " +
                     (c.result_class ? c.result_class : "(null)"));
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        answer(
            EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(StrEq(kZoneSetId), _, _, _)),
            times(c.flag >= 0), split_into_vsan());
        answer(
            EXPECT_CALL(m, zs_cim_get_zone_set_zones_by_instance_id(kQueue, StrEq(kZoneSetId), _)),
            times(c.zones), hand_back_list<ZoneRecord>({"Z1", "Z2"}));
        answer(EXPECT_CALL(m, zone_fill_reference(StrEq("VORNA_Zone"), StrEq(kNs), _, _broker)),
               times(c.zones, 2), path_labelled<2>(req, "Zone"));
        answer(EXPECT_CALL(
                   m, vsan_cim_get_vsanEntry(kQueue, 1, Pointee(Field(&VsanEntry::vsan, kVsan)))),
               times(c.vsan_lookup), Return(0));
        answer(EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)), times(c.vsan_delivered),
               Return(0));
        answer(EXPECT_CALL(m, vsan_fill_reference(StrEq("VORNA_Vsan"), StrEq(kNs), _, _, _broker)),
               times(c.vsan_delivered), fixed_path(req, "Vsan"));

        testing::internal::CaptureStdout();
        EXPECT_EQ(get_zone_set_associator_names(kZoneSetId.c_str(), c.assoc_class, c.result_class,
                                                "Collection", "Member", req.result(), kNs),
                  0);
        const std::string out = testing::internal::GetCapturedStdout();

        Labels expected;
        if (c.zones) expected = expected + Labels{"path:Zone.Z1", "path:Zone.Z2"};
        if (c.vsan_delivered) expected.push_back("path:Vsan");
        EXPECT_EQ(delivered(req), expected);
        EXPECT_EQ(req.doneCount(), 0);
        EXPECT_TRUE(has_line(out, "\n\n zone_provider:zone_set_associatorNames() - Start 1 \n"));
        const std::string flag_line = "\n\n zone_provider:zone_set_associatorNames() - flag is " +
                                      std::to_string(c.flag) + " \n";
        EXPECT_EQ(has_line(out, flag_line), c.flag >= 0) << out;
        if (c.flag < 0) {
            EXPECT_FALSE(has_line(out, "flag is")) << out;
        }
        EXPECT_EQ(has_line(out, "\t found  zone -- Z1\n"), c.zones) << out;
    }
}

TEST_F(ZoneSetAssoc, AssociatorsBuildInstancesWithThePropertiesAndSkipANullVsan) {
    {
        InSequence order;
        expect_split();
        expect_zones(1, {"Z1", "Z2"});
        EXPECT_CALL(mock,
                    zone_build_instance(StrEq("VORNA_Zone"), StrEq(kNs), _, Eq(kProps), _broker))
            .Times(2)
            .WillRepeatedly(instance_labelled<2>(request, "Zone"));
        expect_vsan_lookup(1);
        expect_domain_lookup(1);
        EXPECT_CALL(mock,
                    vsan_build_instance(StrEq("VORNA_Vsan"), StrEq(kNs), _, _, Eq(kProps), _broker))
            .WillOnce(Return(nullptr));
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(get_zone_set_associators(kZoneSetId.c_str(), nullptr, nullptr, nullptr, nullptr,
                                       const_cast<const char **>(kProps), request.result(), kNs),
              0);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(delivered(request), (Labels{"inst:Zone.Z1", "inst:Zone.Z2"}));
    EXPECT_TRUE(has_line(out, "\n\n zone_provider:zone_set_associators() - Start  \n"));
    EXPECT_TRUE(has_line(out, "\n\n zone_provider:zone_set_associators() - flag is 3 \n"));
    EXPECT_TRUE(has_line(out, "Vsan object is null\n"));
}

TEST_F(ZoneSetAssoc, AssociatorsDeliverTheVsanInstanceOnlyWhenItHasAHandle) {
    CMPIInstance without_handle{nullptr, nullptr};
    expect_vsan_lookup(2);
    expect_domain_lookup(2);
    EXPECT_CALL(mock, vsan_build_instance(_, _, _, _, _, _))
        .WillOnce(Return(&without_handle))
        .WillOnce(fixed_instance(request, "Vsan"));
    EXPECT_CALL(mock, zs_cim_get_fields_from_generic_instance_id(_, _, _, _))
        .WillRepeatedly(split_into_vsan());

    testing::internal::CaptureStdout();
    get_zone_set_associators(kZoneSetId.c_str(), "VORNA_ZoneHostedCollection", nullptr, nullptr,
                             nullptr, nullptr, request.result(), kNs);
    EXPECT_TRUE(has_line(testing::internal::GetCapturedStdout(), "Vsan object is null\n"));
    EXPECT_TRUE(delivered(request).empty());

    get_zone_set_associators(kZoneSetId.c_str(), "VORNA_ZoneHostedCollection", nullptr, nullptr,
                             nullptr, nullptr, request.result(), kNs);
    EXPECT_EQ(delivered(request), (Labels{"inst:Vsan"}));
}

TEST_F(ZoneSetAssoc, AFailingZonesQueryStillReportsTheVsan) {
    expect_split();
    expect_zones(1, {"leaked if kept"}, 5);
    expect_vsan_lookup(1);
    expect_domain_lookup(1);
    EXPECT_CALL(mock, vsan_fill_reference(_, _, _, _, _)).WillOnce(fixed_path(request, "Vsan"));
    EXPECT_EQ(get_zone_set_associator_names(kZoneSetId.c_str(), nullptr, nullptr, nullptr, nullptr,
                                            request.result(), kNs),
              0);
    EXPECT_EQ(delivered(request), (Labels{"path:Vsan"}));
}

TEST_F(ZoneSetAssoc, AMissingVsanOrDomainEndsTheAssociatorsWithZonesAlreadyDelivered) {
    for (const bool vsan_missing : {true, false}) {
        SCOPED_TRACE(vsan_missing ? "no VSAN" : "no domain");
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        InSequence order;
        EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(_, _, _, _))
            .WillOnce(split_into_vsan());
        EXPECT_CALL(m, zs_cim_get_zone_set_zones_by_instance_id(kQueue, _, _))
            .WillOnce(hand_back_list<ZoneRecord>({"Z1", "Z2", "Z3"}));
        EXPECT_CALL(m, zone_fill_reference(_, _, _, _))
            .Times(3)
            .WillRepeatedly(path_labelled<2>(req, "Zone"));
        EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, _)).WillOnce(Return(vsan_missing ? 1 : 0));
        if (!vsan_missing)
            EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)).WillOnce(Return(1));
        EXPECT_EQ(get_zone_set_associator_names(kZoneSetId.c_str(), nullptr, nullptr, nullptr,
                                                nullptr, req.result(), kNs),
                  -1);
        EXPECT_EQ(delivered(req), (Labels{"path:Zone.Z1", "path:Zone.Z2", "path:Zone.Z3"}));
    }
}

TEST_F(ZoneSetAssoc, ReferenceNamesSelectTheLinksByResultClass) {
    struct Case {
        const char *result_class;
        bool zones;
        bool hosted;
        int rc;
    };
    const Case cases[] = {
        {"VORNA_ZoneMemberOfCollection", true, false, 1},
        {"VORNA_ZONEHOSTEDCOLLECTION", false, true, 1},
        {nullptr, true, true, 1},
        {"", true, true, 1},
        {"VORNA_ElementSettingData", false, false, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.result_class ? c.result_class : "(null)");
        const bool known = c.zones || c.hosted;
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        InSequence order;
        answer(
            EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(StrEq(kZoneSetId), _, _, _)),
            times(known), split_into_vsan());
        answer(EXPECT_CALL(m, zs_cim_get_zone_set_by_instance_id(kQueue, StrEq(kZoneSetId), _)),
               times(known), hand_back_record<ZoneSetRecord>("ZS"));
        answer(
            EXPECT_CALL(m, zs_cim_get_zone_set_zones_by_instance_id(kQueue, StrEq(kZoneSetId), _)),
            times(c.zones), hand_back_list<ZoneRecord>({"Z1", "Z2"}));
        answer(EXPECT_CALL(m, zmoc_fill_reference_zoneSetZone(
                                  StrEq("VORNA_ZoneMemberOfCollection"), StrEq(kNs),
                                  Pointee(Field(&ZoneSetRecord::name, StrEq("ZS"))), _, _broker)),
               times(c.zones, 2), path_labelled<3>(req, "ZoneLink"));
        answer(EXPECT_CALL(
                   m, vsan_cim_get_vsanEntry(kQueue, 1, Pointee(Field(&VsanEntry::vsan, kVsan)))),
               times(c.hosted), Return(0));
        answer(EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)), times(c.hosted), Return(0));
        answer(EXPECT_CALL(m, hosted_collection_fill_reference_zset(
                                  StrEq("VORNA_ZoneHostedCollection"), StrEq(kNs),
                                  Pointee(Field(&VsanEntry::vsan, kVsan)), _,
                                  Pointee(Field(&ZoneSetRecord::name, StrEq("ZS"))), _broker)),
               times(c.hosted), fixed_path(req, "Hosted"));

        testing::internal::CaptureStdout();
        EXPECT_EQ(get_zone_set_reference_names(kZoneSetId.c_str(), c.result_class, "Member",
                                               req.result(), kNs),
                  c.rc);
        const std::string out = testing::internal::GetCapturedStdout();
        Labels expected;
        if (c.zones) expected = Labels{"path:ZoneLink.Z1", "path:ZoneLink.Z2"};
        if (c.hosted) expected.push_back("path:Hosted");
        EXPECT_EQ(delivered(req), expected);
        // Reference names trace nothing of their own.
        EXPECT_FALSE(has_line(out, "zone_provider:")) << out;
        EXPECT_FALSE(has_line(out, "found  zone")) << out;
    }
}

TEST_F(ZoneSetAssoc, ReferencesOfAnEmptyZoneSetDeliverOnlyTheHostedCollection) {
    InSequence order;
    expect_split();
    EXPECT_CALL(mock, zs_cim_get_zone_set_by_instance_id(kQueue, StrEq(kZoneSetId), _))
        .WillOnce(hand_back_record<ZoneSetRecord>("ZS"));
    expect_zones(1, {});
    expect_vsan_lookup(1);
    expect_domain_lookup(1);
    EXPECT_CALL(
        mock, hosted_collection_build_instance_zset(StrEq("VORNA_ZoneHostedCollection"), StrEq(kNs),
                                                    _, _, _, Eq(kProps), _broker))
        .WillOnce(fixed_instance(request, "Hosted"));
    EXPECT_EQ(get_zone_set_references(kZoneSetId.c_str(), nullptr, nullptr,
                                      const_cast<const char **>(kProps), request.result(), kNs),
              0);
    EXPECT_EQ(delivered(request), (Labels{"inst:Hosted"}));
}

TEST_F(ZoneSetAssoc, ReferencesBuildLinkInstancesWithThePropertiesAndTraceEachZone) {
    InSequence order;
    expect_split();
    EXPECT_CALL(mock, zs_cim_get_zone_set_by_instance_id(kQueue, _, _))
        .WillOnce(hand_back_record<ZoneSetRecord>("ZS"));
    expect_zones(1, {"Z1", "Z2"});
    EXPECT_CALL(mock, zmoc_build_instance_zoneSetZone(StrEq("VORNA_ZoneMemberOfCollection"),
                                                      StrEq(kNs), _, _, Eq(kProps), _broker))
        .Times(2)
        .WillRepeatedly(instance_labelled<3>(request, "ZoneLink"));
    testing::internal::CaptureStdout();
    EXPECT_EQ(get_zone_set_references(kZoneSetId.c_str(), "VORNA_ZoneMemberOfCollection", "x",
                                      const_cast<const char **>(kProps), request.result(), kNs),
              0);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(delivered(request), (Labels{"inst:ZoneLink.Z1", "inst:ZoneLink.Z2"}));
    EXPECT_TRUE(has_line(out, "\t found  zone -- Z1\n\t found  zone -- Z2\n")) << out;
}

TEST_F(ZoneSetAssoc, ReferencesWithoutTheZoneSetRecordDeliverNothing) {
    expect_split(2);
    EXPECT_CALL(mock, zs_cim_get_zone_set_by_instance_id(kQueue, _, _))
        .Times(2)
        .WillRepeatedly(Return(1));
    EXPECT_EQ(
        get_zone_set_reference_names(kZoneSetId.c_str(), nullptr, nullptr, request.result(), kNs),
        -1);
    EXPECT_EQ(get_zone_set_references(kZoneSetId.c_str(), nullptr, nullptr, nullptr,
                                      request.result(), kNs),
              -1);
    EXPECT_TRUE(delivered(request).empty());
}

TEST_F(ZoneSetAssoc, EveryRecordIsFreedWhenTheHostedCollectionLookupFails) {
    // The zone nodes, and the zone set record, are released on the failing
    // path too (the sanitizers and valgrind report a leak or a double free).
    for (const bool vsan_missing : {true, false}) {
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(_, _, _, _))
            .WillOnce(split_into_vsan());
        EXPECT_CALL(m, zs_cim_get_zone_set_by_instance_id(kQueue, _, _))
            .WillOnce(hand_back_record<ZoneSetRecord>("ZS"));
        EXPECT_CALL(m, zs_cim_get_zone_set_zones_by_instance_id(kQueue, _, _))
            .WillOnce(hand_back_list<ZoneRecord>({"Z1", "Z2"}));
        EXPECT_CALL(m, zmoc_fill_reference_zoneSetZone(_, _, _, _, _))
            .Times(2)
            .WillRepeatedly(Return(nullptr));  // a builder that fails delivers nothing
        EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, _)).WillOnce(Return(vsan_missing ? 1 : 0));
        answer(EXPECT_CALL(m, dm_cim_get_dmEntry(_, _, _, _)), times(!vsan_missing), Return(2));
        EXPECT_EQ(
            get_zone_set_reference_names(kZoneSetId.c_str(), nullptr, nullptr, req.result(), kNs),
            -1);
        EXPECT_TRUE(delivered(req).empty());
    }
}

}  // namespace
