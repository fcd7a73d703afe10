// Zone members: the walk over every VSAN's member lists, active first, the
// release of each node, and the retrieval by InstanceID.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "read_side_support.h"

namespace {

using readside::hand_back_members;
using readside::kNamespace;
using readside::kQueue;
using testing::_;
using testing::InSequence;
using testing::Return;
using testing::StrEq;

class ZoneMembersTest : public readside::ReadSideTest {
  protected:
    static auto for_vsan(int expected_vsan, std::vector<std::string> labels) {
        return [expected_vsan, labels](int queue, int vsan, int *count, ZoneMemberRecord **list) {
            EXPECT_EQ(vsan, expected_vsan);
            return hand_back_members(labels)(queue, vsan, count, list);
        };
    }

    // VSAN 1: active [a1, a2], non-active [n1]; VSAN 2: the active query
    // fails, non-active [m1]; VSAN 3: both lists empty.
    void three_vsans() {
        EXPECT_CALL(platform, vsan_cim_get_vsanEntry(kQueue, 0, _))
            .WillRepeatedly(readside::walk_vsans({1, 2, 3}));
        InSequence order;
        EXPECT_CALL(platform, zs_cim_get_all_active_zone_members(kQueue, 1, _, _))
            .WillOnce(for_vsan(1, {"a1", "a2"}));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zone_members(kQueue, 1, _, _))
            .WillOnce(for_vsan(1, {"n1"}));
        EXPECT_CALL(platform, zs_cim_get_all_active_zone_members(kQueue, 2, _, _))
            .WillOnce(Return(1));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zone_members(kQueue, 2, _, _))
            .WillOnce(for_vsan(2, {"m1"}));
        EXPECT_CALL(platform, zs_cim_get_all_active_zone_members(kQueue, 3, _, _))
            .WillOnce(for_vsan(3, {}));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zone_members(kQueue, 3, _, _))
            .WillOnce(for_vsan(3, {}));
    }
};

TEST_F(ZoneMembersTest, InstancesComeVsanByVsanActiveFirstEachNodeFreed) {
    three_vsans();
    const char *props[] = {"InstanceID", nullptr};
    EXPECT_CALL(platform,
                zone_member_build_instance(StrEq("vorna_zonemembersettingdata"), StrEq(kNamespace),
                                           _, props, cmpihost::broker()))
        .WillRepeatedly([this](const char *, const char *, const ZoneMemberRecord *member,
                               const char **, const CMPIBroker *) {
            // Built before the node is released; a node freed too early
            // shows up under the sanitizers.
            return objects.instance(member->member_value);
        });

    testing::internal::CaptureStdout();
    EXPECT_EQ(get_zone_member_all_instances("vorna_zonemembersettingdata", request.result(), props,
                                            kNamespace),
              0);
    const std::string trace = testing::internal::GetCapturedStdout();

    EXPECT_EQ(objects.delivered(), (std::vector<std::string>{"a1", "a2", "n1", "m1"}));
    EXPECT_EQ(objects.kinds(), "IIII");
    EXPECT_EQ(request.doneCount(), 0);
    EXPECT_EQ(trace,
              "found 2 active zone member in vsan 1\n"
              "\n found  zone member in get_zone_member_all_instances  -- a1\n"
              "\n found  zone member in get_zone_member_all_instances  -- a2\n"
              "found 1 non active zone member in vsan 1\n"
              "\n found  zone member get_zone_member_all_instances -- n1\n"
              "found 1 non active zone member in vsan 2\n"
              "\n found  zone member get_zone_member_all_instances -- m1\n"
              "found 0 active zone member in vsan 3\n"
              "found 0 non active zone member in vsan 3\n");
}

TEST_F(ZoneMembersTest, NamesMatchTheInstancesWithoutTraces) {
    three_vsans();
    EXPECT_CALL(platform, zone_member_fill_reference(StrEq("VORNA_ZoneMemberSettingData"),
                                                     StrEq(kNamespace), _, cmpihost::broker()))
        .WillRepeatedly([this](const char *, const char *, const ZoneMemberRecord *member,
                               const CMPIBroker *) { return objects.path(member->member_value); });

    testing::internal::CaptureStdout();
    EXPECT_EQ(get_zone_member_keys("VORNA_ZoneMemberSettingData", request.result(), kNamespace), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");

    EXPECT_EQ(objects.delivered(), (std::vector<std::string>{"a1", "a2", "n1", "m1"}));
    EXPECT_EQ(objects.kinds(), "PPPP");
}

TEST_F(ZoneMembersTest, MembersWithoutABuiltObjectAreSkippedAndStillFreed) {
    EXPECT_CALL(platform, vsan_cim_get_vsanEntry(kQueue, 0, _))
        .WillRepeatedly(readside::walk_vsans({4}));
    EXPECT_CALL(platform, zs_cim_get_all_active_zone_members(kQueue, 4, _, _))
        .WillOnce(for_vsan(4, {"x", "y", "z"}));
    EXPECT_CALL(platform, zs_cim_get_all_non_active_zone_members(kQueue, 4, _, _))
        .WillOnce(Return(2));
    EXPECT_CALL(platform, zone_member_fill_reference(_, _, _, _))
        .WillRepeatedly([this](const char *, const char *, const ZoneMemberRecord *member,
                               const CMPIBroker *) -> CMPIObjectPath * {
            return std::string(member->member_value) == "y" ? nullptr
                                                            : objects.path(member->member_value);
        });
    get_zone_member_keys("VORNA_ZoneMemberSettingData", request.result(), kNamespace);
    EXPECT_EQ(objects.delivered(), (std::vector<std::string>{"x", "z"}));
}

TEST_F(ZoneMembersTest, NoVsanGivesNothing) {
    EXPECT_CALL(platform, vsan_cim_get_vsanEntry(kQueue, 0, _)).WillOnce(Return(1));
    EXPECT_EQ(get_zone_member_all_instances("VORNA_ZoneMemberSettingData", request.result(),
                                            nullptr, kNamespace),
              0);
    EXPECT_TRUE(request.deliveries().empty());
}

TEST_F(ZoneMembersTest, RetrievalDeliversTheMember) {
    EXPECT_CALL(platform, zs_cim_get_zone_member_by_instance_id(kQueue, StrEq("1^1^m^0"), _))
        .WillOnce([](int, const char *, ZoneMemberRecord **record) {
            *record = readside::member_list({"m"});
            return 0;
        });
    const char *props[] = {"InstanceID", nullptr};
    EXPECT_CALL(platform,
                zone_member_build_instance(StrEq("VORNA_ZoneMemberSettingData"), StrEq(kNamespace),
                                           _, props, cmpihost::broker()))
        .WillOnce(Return(objects.instance("m")));
    CMPIStatus st{CMPI_RC_OK, nullptr};
    testing::internal::CaptureStdout();
    EXPECT_EQ(get_zone_member_instance("VORNA_ZoneMemberSettingData", "1^1^m^0", request.result(),
                                       props, kNamespace, &st),
              0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              " get zone member by instance id is success \n"
              "Instance is non null.. Returning Instance \n");
    EXPECT_EQ(st.rc, CMPI_RC_OK);
    EXPECT_EQ(st.msg, nullptr);
    EXPECT_EQ(objects.delivered(), (std::vector<std::string>{"m"}));
}

TEST_F(ZoneMembersTest, RetrievalReportsNotFound) {
    struct Row {
        const char *what;
        bool found;
        CMPIInstance *built;
        const char *trace;
    };
    const Row rows[] = {
        {"unknown member", false, nullptr, " GET zone member by instance id is failure\n"},
        {"builder gives null", true, nullptr,
         " get zone member by instance id is success \n Instance is null\n"},
        {"builder gives a null handle", true, readside::hollow_instance(),
         " get zone member by instance id is success \n Instance is null\n"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        if (row.found) {
            EXPECT_CALL(platform, zs_cim_get_zone_member_by_instance_id(kQueue, StrEq("q"), _))
                .WillOnce([](int, const char *, ZoneMemberRecord **record) {
                    *record = readside::member_list({"q"});
                    return 0;
                });
            EXPECT_CALL(platform, zone_member_build_instance(_, _, _, _, _))
                .WillOnce(Return(row.built));
        } else {
            EXPECT_CALL(platform, zs_cim_get_zone_member_by_instance_id(kQueue, StrEq("q"), _))
                .WillOnce(Return(4));
        }
        CMPIStatus st{CMPI_RC_OK, nullptr};
        testing::internal::CaptureStdout();
        get_zone_member_instance("VORNA_ZoneMemberSettingData", "q", request.result(), nullptr,
                                 kNamespace, &st);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), row.trace);
        EXPECT_EQ(st.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(readside::message_of(st), "Could not find or construct instance");
        EXPECT_TRUE(request.deliveries().empty());
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

}  // namespace
