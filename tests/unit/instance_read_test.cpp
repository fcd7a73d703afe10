// The instance read operations: class dispatch under the zoning mutex, the
// refusals of unserved classes, the key that getInstance picks, and the
// status and trace lines it ends with.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "read_side_support.h"

namespace {

using readside::hand_back_array;
using readside::hand_back_record;
using readside::kNamespace;
using readside::kQueue;
using testing::_;
using testing::EndsWith;
using testing::HasSubstr;
using testing::InSequence;
using testing::Return;
using testing::StartsWith;
using testing::StrEq;

enum class Op { Names, Instances, Get };

const char *op_name(Op op) {
    return op == Op::Names       ? "enumInstanceNames"
           : op == Op::Instances ? "enumInstances"
                                 : "getInstance";
}

class InstanceReadTest : public readside::ReadSideTest {
  public:
    const char *props_[3] = {"InstanceID", "Name", nullptr};
    const char **props() { return props_; }

    CMPIObjectPath *path_of(const char *cls) { return request.newObjectPath(kNamespace, cls); }

    CMPIStatus run(Op op, const CMPIObjectPath *op_path) {
        switch (op) {
            case Op::Names:
                return zone_Provider_EnumInstanceNames(nullptr, request.context(), request.result(),
                                                       op_path);
            case Op::Instances:
                return zone_Provider_EnumInstances(nullptr, request.context(), request.result(),
                                                   op_path, props());
            case Op::Get:
                return zone_Provider_GetInstance(nullptr, request.context(), request.result(),
                                                 op_path, props());
        }
        return CMPIStatus{CMPI_RC_ERR_FAILED, nullptr};
    }

    // Steps of the VSAN walk: one VSAN delivered, then the end.
    void walk_delivers(int vsan) {
        EXPECT_CALL(platform, vsan_cim_get_vsanEntry(kQueue, 0, _))
            .WillOnce([vsan](int, int, VsanEntry *cursor) {
                cursor->vsan = vsan;
                return 0;
            });
    }
    void walk_ends() {
        EXPECT_CALL(platform, vsan_cim_get_vsanEntry(kQueue, 0, _)).WillOnce(Return(1));
    }
    void table_of(int vsan) {
        EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _))
            .WillOnce([vsan](int, int *count, VsanEntry **entries) {
                *count = 1;
                *entries = static_cast<VsanEntry *>(std::calloc(1, sizeof(VsanEntry)));
                (*entries)->vsan = vsan;
                return 0;
            });
    }
};

// What the handler of each served class does with one object available,
// for each operation. Every call is expected in this order, between the
// taking and the release of the mutex.
using Expectations = std::function<void(InstanceReadTest &, const char *cls, Op op)>;

const CMPIBroker *broker() {
    return cmpihost::broker();
}

void zone_set_handler(InstanceReadTest &t, const char *cls, Op op) {
    auto &p = t.platform;
    if (op == Op::Get) {
        EXPECT_CALL(p, zs_cim_get_zone_set_by_instance_id(kQueue, StrEq("key-text"), _))
            .WillOnce(hand_back_record<ZoneSetRecord>("key-text"));
        EXPECT_CALL(p,
                    zone_set_build_instance(StrEq(cls), StrEq(kNamespace), _, t.props(), broker()))
            .WillOnce(Return(t.objects.instance("object")));
        return;
    }
    t.walk_delivers(8);
    EXPECT_CALL(p, zs_cim_get_all_active_zone_sets(kQueue, 8, _, _))
        .WillOnce(hand_back_array<ZoneSetRecord>({"s"}));
    if (op == Op::Names)
        EXPECT_CALL(p, zone_set_fill_reference(StrEq(cls), StrEq(kNamespace), _, broker()))
            .WillOnce(Return(t.objects.path("object")));
    else
        EXPECT_CALL(p,
                    zone_set_build_instance(StrEq(cls), StrEq(kNamespace), _, t.props(), broker()))
            .WillOnce(Return(t.objects.instance("object")));
    EXPECT_CALL(p, zs_cim_get_all_non_active_zone_sets(kQueue, 8, _, _)).WillOnce(Return(1));
    t.walk_ends();
}

void zone_handler(InstanceReadTest &t, const char *cls, Op op) {
    auto &p = t.platform;
    if (op == Op::Get) {
        EXPECT_CALL(p, zs_cim_get_zone_by_instance_id(kQueue, StrEq("key-text"), _))
            .WillOnce(hand_back_record<ZoneRecord>("key-text"));
        EXPECT_CALL(p, zone_build_instance(StrEq(cls), StrEq(kNamespace), _, t.props(), broker()))
            .WillOnce(Return(t.objects.instance("object")));
        return;
    }
    t.walk_delivers(8);
    EXPECT_CALL(p, zs_cim_get_all_active_zones(kQueue, 8, _, _)).WillOnce(Return(1));
    EXPECT_CALL(p, zs_cim_get_all_non_active_zones(kQueue, 8, _, _))
        .WillOnce(hand_back_array<ZoneRecord>({"z"}));
    if (op == Op::Names)
        EXPECT_CALL(p, zone_fill_reference(StrEq(cls), StrEq(kNamespace), _, broker()))
            .WillOnce(Return(t.objects.path("object")));
    else
        EXPECT_CALL(p, zone_build_instance(StrEq(cls), StrEq(kNamespace), _, t.props(), broker()))
            .WillOnce(Return(t.objects.instance("object")));
    t.walk_ends();
}

void zone_alias_handler(InstanceReadTest &t, const char *cls, Op op) {
    auto &p = t.platform;
    if (op == Op::Get) {
        EXPECT_CALL(p, zs_cim_get_zone_alias_by_instance_id(kQueue, StrEq("key-text"), _))
            .WillOnce(hand_back_record<ZoneAliasRecord>("key-text"));
        EXPECT_CALL(
            p, zone_alias_build_instance(StrEq(cls), StrEq(kNamespace), _, t.props(), broker()))
            .WillOnce(Return(t.objects.instance("object")));
        return;
    }
    t.walk_delivers(8);
    EXPECT_CALL(p, zs_cim_get_all_active_zone_aliases(kQueue, 8, _, _))
        .WillOnce(hand_back_array<ZoneAliasRecord>({"a"}));
    if (op == Op::Names)
        EXPECT_CALL(p, zone_alias_fill_reference(StrEq(cls), StrEq(kNamespace), _, broker()))
            .WillOnce(Return(t.objects.path("object")));
    else
        EXPECT_CALL(
            p, zone_alias_build_instance(StrEq(cls), StrEq(kNamespace), _, t.props(), broker()))
            .WillOnce(Return(t.objects.instance("object")));
    EXPECT_CALL(p, zs_cim_get_all_non_active_zone_aliases(kQueue, 8, _, _)).WillOnce(Return(1));
    t.walk_ends();
}

void zone_member_handler(InstanceReadTest &t, const char *cls, Op op) {
    auto &p = t.platform;
    if (op == Op::Get) {
        EXPECT_CALL(p, zs_cim_get_zone_member_by_instance_id(kQueue, StrEq("key-text"), _))
            .WillOnce([](int, const char *, ZoneMemberRecord **record) {
                *record = readside::member_list({"m"});
                return 0;
            });
        EXPECT_CALL(
            p, zone_member_build_instance(StrEq(cls), StrEq(kNamespace), _, t.props(), broker()))
            .WillOnce(Return(t.objects.instance("object")));
        return;
    }
    t.walk_delivers(8);
    EXPECT_CALL(p, zs_cim_get_all_active_zone_members(kQueue, 8, _, _))
        .WillOnce(readside::hand_back_members({"m"}));
    if (op == Op::Names)
        EXPECT_CALL(p, zone_member_fill_reference(StrEq(cls), StrEq(kNamespace), _, broker()))
            .WillOnce(Return(t.objects.path("object")));
    else
        EXPECT_CALL(
            p, zone_member_build_instance(StrEq(cls), StrEq(kNamespace), _, t.props(), broker()))
            .WillOnce(Return(t.objects.instance("object")));
    EXPECT_CALL(p, zs_cim_get_all_non_active_zone_members(kQueue, 8, _, _)).WillOnce(Return(1));
    t.walk_ends();
}

// The zone service builders always get the literal class name; names are
// listed without a property list.
void zone_service_handler(InstanceReadTest &t, const char *, Op op) {
    auto &p = t.platform;
    if (op == Op::Get) {
        EXPECT_CALL(p, vsan_cim_check_vsan_index(12)).WillOnce(Return(0));
    } else {
        t.table_of(12);
    }
    if (op == Op::Names)
        EXPECT_CALL(p, zone_service_fill_reference(StrEq("VORNA_ZoneService"), StrEq(kNamespace),
                                                   12, broker()))
            .WillOnce(Return(t.objects.path("object")));
    else
        EXPECT_CALL(p, zone_service_build_instance(StrEq("VORNA_ZoneService"), StrEq(kNamespace),
                                                   12, t.props(), kQueue, broker()))
            .WillOnce(Return(t.objects.instance("object")));
}

void hosted_service_handler(InstanceReadTest &t, const char *, Op op) {
    auto &p = t.platform;
    if (op == Op::Get) {
        EXPECT_CALL(p, getCSName()).WillOnce(Return("switch"));
        return;
    }
    t.table_of(12);
    EXPECT_CALL(p, dm_cim_get_dmEntry(kQueue, 12, 1, _)).WillOnce(Return(0));
    if (op == Op::Names)
        EXPECT_CALL(p, hosted_service_fill_reference(StrEq("VORNA_HostedService"),
                                                     StrEq(kNamespace), _, _, broker()))
            .WillOnce(Return(t.objects.path("object")));
    else
        EXPECT_CALL(p, hosted_service_build_instance(StrEq("VORNA_HostedService"),
                                                     StrEq(kNamespace), _, _, t.props(), broker()))
            .WillOnce(Return(t.objects.instance("object")));
}

struct DispatchRow {
    const char *cls;  // as the request writes it
    const char *key_name;
    const char *key_value;
    void (*handler)(InstanceReadTest &, const char *, Op);
};

constexpr DispatchRow kDispatchRows[] = {
    {"VORNA_ZoneSet", "InstanceID", "key-text", zone_set_handler},
    {"vorna_zoneset", "InstanceID", "key-text", zone_set_handler},
    {"VORNA_Zone", "InstanceID", "key-text", zone_handler},
    {"VORNA_ZONE", "instanceid", "key-text", zone_handler},
    {"VORNA_ZoneAlias", "InstanceID", "key-text", zone_alias_handler},
    {"Vorna_ZoneAlias", "InstanceID", "key-text", zone_alias_handler},
    {"VORNA_ZoneMemberSettingData", "InstanceID", "key-text", zone_member_handler},
    {"vorna_zonemembersettingdata", "InstanceID", "key-text", zone_member_handler},
    {"VORNA_ZoneService", "Name", "12", zone_service_handler},
    {"vorna_zoneservice", "name", "12", zone_service_handler},
    {"VORNA_HostedService", "Anything", "x", hosted_service_handler},
    {"VORNA_HOSTEDSERVICE", "Anything", "x", hosted_service_handler},
};

TEST_F(InstanceReadTest, EachServedClassReachesItsHandlerOnceUnderTheMutex) {
    for (const DispatchRow &row : kDispatchRows) {
        for (Op op : {Op::Names, Op::Instances, Op::Get}) {
            SCOPED_TRACE(std::string(row.cls) + " " + op_name(op));
            cmpihost::Request each;
            CMPIObjectPath *op_path = each.newObjectPath(kNamespace, row.cls);
            cmpihost::addStringKey(op_path, row.key_name, row.key_value);
            {
                InSequence order;
                EXPECT_CALL(platform, mutex_lock());
                row.handler(*this, row.cls, op);
                EXPECT_CALL(platform, mutex_unlock());
            }
            testing::internal::CaptureStdout();
            const CMPIStatus st = [&] {
                switch (op) {
                    case Op::Names:
                        return zone_Provider_EnumInstanceNames(nullptr, each.context(),
                                                               each.result(), op_path);
                    case Op::Instances:
                        return zone_Provider_EnumInstances(nullptr, each.context(), each.result(),
                                                           op_path, props());
                    default:
                        return zone_Provider_GetInstance(nullptr, each.context(), each.result(),
                                                         op_path, props());
                }
            }();
            const std::string trace = testing::internal::GetCapturedStdout();
            EXPECT_EQ(st.rc, CMPI_RC_OK);
            EXPECT_EQ(st.msg, nullptr);
            ASSERT_EQ(each.deliveries().size(), 1u);
            EXPECT_EQ(each.deliveries()[0].kind, op == Op::Names
                                                     ? cmpihost::Delivery::Kind::ObjectPath
                                                     : cmpihost::Delivery::Kind::Instance);
            EXPECT_EQ(each.doneCount(), 0);
            EXPECT_THAT(trace, StartsWith(op == Op::Names ? "In EnumInstanceNames ZoneProvider"
                                          : op == Op::Instances ? "In EnumInstances ZoneProvider"
                                                                : ""));
            if (op == Op::Get) {
                EXPECT_THAT(trace, HasSubstr("In Get Instance ZoneProvider"));
                EXPECT_THAT(trace, EndsWith(" Returnng successs always \n"));
                EXPECT_THAT(trace, testing::Not(HasSubstr("GetInstance() failed")));
            }
            testing::Mock::VerifyAndClearExpectations(&platform);
        }
    }
}

TEST_F(InstanceReadTest, UnservedClassesAreRefusedWithoutTheMutexExceptForNames) {
    for (const char *cls : {"VORNA_Vsan", "VORNA_DeviceAliasService", "CIM_ZoneService", ""}) {
        SCOPED_TRACE(cls);
        CMPIObjectPath *op_path = path_of(cls);
        cmpihost::addStringKey(op_path, "InstanceID", "x");

        // The strict platform double fails on any call, the mutex included.
        for (Op op : {Op::Instances, Op::Get}) {
            SCOPED_TRACE(op_name(op));
            testing::internal::CaptureStdout();
            const CMPIStatus st = run(op, op_path);
            const std::string trace = testing::internal::GetCapturedStdout();
            EXPECT_EQ(st.rc, CMPI_RC_ERR_NOT_SUPPORTED);
            EXPECT_EQ(st.msg, nullptr);
            EXPECT_THAT(trace, HasSubstr(std::string("\tFAIL check class name ") + cls + " \n"));
            EXPECT_THAT(trace, testing::Not(HasSubstr("Returnng")));
        }

        // enumInstanceNames does not refuse: it finds no handler and succeeds.
        {
            InSequence order;
            EXPECT_CALL(platform, mutex_lock());
            EXPECT_CALL(platform, mutex_unlock());
        }
        const CMPIStatus st = run(Op::Names, op_path);
        EXPECT_EQ(st.rc, CMPI_RC_OK);
        EXPECT_EQ(st.msg, nullptr);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_TRUE(request.deliveries().empty());
    EXPECT_EQ(request.doneCount(), 0);
}

TEST_F(InstanceReadTest, HostedCollectionIsServedButHasNoInstances) {
    for (const char *cls : {"VORNA_HostedCollection", "vorna_hostedcollection"}) {
        for (Op op : {Op::Names, Op::Instances, Op::Get}) {
            SCOPED_TRACE(std::string(cls) + " " + op_name(op));
            CMPIObjectPath *op_path = path_of(cls);
            cmpihost::addStringKey(op_path, "Whatever", "x");
            {
                InSequence order;
                EXPECT_CALL(platform, mutex_lock());
                EXPECT_CALL(platform, mutex_unlock());
            }
            testing::internal::CaptureStdout();
            const CMPIStatus st = run(op, op_path);
            testing::internal::GetCapturedStdout();
            EXPECT_EQ(st.rc, CMPI_RC_OK);
            EXPECT_EQ(st.msg, nullptr);
            testing::Mock::VerifyAndClearExpectations(&platform);
        }
    }
    EXPECT_TRUE(request.deliveries().empty());
}

TEST_F(InstanceReadTest, GetInstanceReturnsTheHandlersStatusAfterItsFailureLine) {
    for (const char *cls : {"VORNA_ZoneSet", "vorna_ZONESET"}) {
        SCOPED_TRACE(cls);
        CMPIObjectPath *op_path = path_of(cls);
        cmpihost::addStringKey(op_path, "InstanceID", "1^99^0");
        {
            InSequence order;
            EXPECT_CALL(platform, mutex_lock());
            EXPECT_CALL(platform, zs_cim_get_zone_set_by_instance_id(kQueue, StrEq("1^99^0"), _))
                .WillOnce(Return(1));
            EXPECT_CALL(platform, mutex_unlock());
        }
        testing::internal::CaptureStdout();
        const CMPIStatus st = run(Op::Get, op_path);
        const std::string trace = testing::internal::GetCapturedStdout();
        EXPECT_EQ(st.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(readside::message_of(st), "Could not find or construct instance");
        EXPECT_THAT(trace, HasSubstr("\tfound key InstanceID : 1^99^0\n"));
        EXPECT_THAT(trace, EndsWith(std::string("--- ") + cls +
                                    " CMPI GetInstance() failed : Could not find or construct "
                                    "instance Returnng successs always \n"));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_TRUE(request.deliveries().empty());
}

TEST_F(InstanceReadTest, FailureLineWithoutAMessagePrintsAnEmptyText) {
    // Without a broker the zone service refusal carries no message.
    _broker = nullptr;
    CMPIObjectPath *op_path = path_of("VORNA_ZoneService");
    cmpihost::addStringKey(op_path, "Name", "77");
    {
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        EXPECT_CALL(platform, vsan_cim_check_vsan_index(77)).WillOnce(Return(1));
        EXPECT_CALL(platform, mutex_unlock());
    }
    testing::internal::CaptureStdout();
    const CMPIStatus st = run(Op::Get, op_path);
    const std::string trace = testing::internal::GetCapturedStdout();
    EXPECT_EQ(st.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(st.msg, nullptr);
    EXPECT_THAT(trace, EndsWith("--- VORNA_ZoneService CMPI GetInstance() failed :  Returnng "
                                "successs always \n"));
}

// The key getInstance hands on: the first key whose name the class accepts,
// when it is a string; an empty text otherwise.
TEST_F(InstanceReadTest, GetInstancePicksTheFirstAcceptedStringKey) {
    const std::string long_value(300, 'k');
    struct Row {
        const char *what;
        const char *cls;
        std::vector<std::pair<std::string, std::string>> string_keys;
        bool numeric_name_key;
        std::string expected_key;    // what the lookup receives
        std::string expected_trace;  // a line that must be printed
    };
    const std::vector<Row> rows = {
        {"key of another name",
         "VORNA_Zone",
         {{"Name", "z1"}},
         false,
         "",
         "\tFAIL check key name VORNA_Zone -- Name \n"},
        {"no key at all", "VORNA_Zone", {}, false, "", "In Get Instance ZoneProvider"},
        {"accepted key after a refused one",
         "VORNA_Zone",
         {{"Name", "z1"}, {"InstanceID", "z2"}},
         false,
         "z2",
         "\tfound key InstanceID : z2\n"},
        {"key name in another case",
         "VORNA_Zone",
         {{"INSTANCEID", "z3"}},
         false,
         "z3",
         "\tfound key INSTANCEID : z3\n"},
        {"long key text is cut",
         "VORNA_Zone",
         {{"InstanceID", long_value}},
         false,
         long_value.substr(0, 253),
         "\tfound key InstanceID : " + long_value.substr(0, 253)},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        CMPIObjectPath *op_path = path_of(row.cls);
        for (const auto &[name, value] : row.string_keys)
            cmpihost::addStringKey(op_path, name, value);
        {
            InSequence order;
            EXPECT_CALL(platform, mutex_lock());
            EXPECT_CALL(platform,
                        zs_cim_get_zone_by_instance_id(kQueue, StrEq(row.expected_key), _))
                .WillOnce(Return(1));
            EXPECT_CALL(platform, mutex_unlock());
        }
        testing::internal::CaptureStdout();
        const CMPIStatus st = run(Op::Get, op_path);
        const std::string trace = testing::internal::GetCapturedStdout();
        EXPECT_EQ(st.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_THAT(trace, HasSubstr(row.expected_trace));
        // get_zone_instance reports its own failure too.
        EXPECT_THAT(trace, HasSubstr("---   in get_zone_instance CMPI GetInstance() failed : "
                                     "Could not find or construct instance"));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

TEST_F(InstanceReadTest, GetInstanceIgnoresAnAcceptedKeyThatIsNoString) {
    CMPIObjectPath *op_path = path_of("VORNA_ZoneService");
    CMPIValue number{};
    number.uint16 = 12;
    op_path->ft->addKey(op_path, "Name", &number, CMPI_uint16);
    {
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        // The empty key text reads as VSAN 0.
        EXPECT_CALL(platform, vsan_cim_check_vsan_index(0)).WillOnce(Return(1));
        EXPECT_CALL(platform, mutex_unlock());
    }
    testing::internal::CaptureStdout();
    const CMPIStatus st = run(Op::Get, op_path);
    const std::string trace = testing::internal::GetCapturedStdout();
    EXPECT_EQ(st.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(readside::message_of(st), "could not find or construct instance");
    EXPECT_THAT(trace, testing::Not(HasSubstr("found key")));
}

TEST_F(InstanceReadTest, OnlyTheFirstAcceptedKeyIsUsed) {
    // The hosted service accepts any key name: the first one is the key.
    CMPIObjectPath *op_path = path_of("VORNA_HostedService");
    cmpihost::addStringKey(op_path, "First", "one");
    cmpihost::addStringKey(op_path, "Second", "two");
    {
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        EXPECT_CALL(platform, getCSName()).WillOnce(Return("switch"));
        EXPECT_CALL(platform, mutex_unlock());
    }
    testing::internal::CaptureStdout();
    run(Op::Get, op_path);
    const std::string trace = testing::internal::GetCapturedStdout();
    EXPECT_THAT(trace, HasSubstr("\tfound key First : one\n"));
    EXPECT_THAT(trace, testing::Not(HasSubstr("Second")));
}

// The classes whose handlers live in other units: each operation reaches
// the handler that makes the expected kind of object, under the mutex. The
// platform answers "nothing" to every query a row doesn't feed.
class OtherClassesDispatchTest
    : public readside::ReadSideTestWith<testing::NiceMock<PlatformMock>> {
  public:
    const char *props_[2] = {"InstanceID", nullptr};

    OtherClassesDispatchTest() {
        auto &p = platform;
        // Every walk delivers VSAN 8 alone.
        ON_CALL(p, vsan_cim_get_vsanEntry(_, _, _)).WillByDefault([](int, int, VsanEntry *cursor) {
            if (cursor->vsan != 0) return 1;
            cursor->vsan = 8;
            return 0;
        });
        ON_CALL(p, vsan_cim_get_all_vsanEntry(_, _, _)).WillByDefault(Return(1));
        ON_CALL(p, dm_cim_get_dmEntry(_, _, _, _)).WillByDefault(Return(1));
        ON_CALL(p, zs_cim_get_all_active_zone_sets(_, _, _, _)).WillByDefault(Return(1));
        ON_CALL(p, zs_cim_get_all_non_active_zone_sets(_, _, _, _)).WillByDefault(Return(1));
        ON_CALL(p, zs_cim_get_all_active_zones(_, _, _, _)).WillByDefault(Return(1));
        ON_CALL(p, zs_cim_get_all_non_active_zones(_, _, _, _)).WillByDefault(Return(1));
        ON_CALL(p, zs_cim_get_all_active_zone_aliases(_, _, _, _)).WillByDefault(Return(1));
        ON_CALL(p, zs_cim_get_all_non_active_zone_aliases(_, _, _, _)).WillByDefault(Return(1));
        ON_CALL(p, zs_cim_get_all_active_zone_members(_, _, _, _)).WillByDefault(Return(1));
        ON_CALL(p, zs_cim_get_all_non_active_zone_members(_, _, _, _)).WillByDefault(Return(1));
        ON_CALL(p, zs_cim_get_zone_set_zones_by_instance_id(_, _, _)).WillByDefault(Return(1));
        ON_CALL(p, zs_cim_get_zone_zone_aliases_by_instance_id(_, _, _)).WillByDefault(Return(1));
        ON_CALL(p, zs_cim_get_zone_zone_members_by_instance_id(_, _, _)).WillByDefault(Return(1));
        ON_CALL(p, zs_cim_get_zone_alias_zone_members_by_instance_id(_, _, _))
            .WillByDefault(Return(1));
        ON_CALL(p, ddas_api_get_all_device_alias_entries(_, _, _)).WillByDefault(Return(1));
        ON_CALL(p, ddas_api_iter_get_num_entries(_, _)).WillByDefault(Return(1));
        ON_CALL(p, ddas_api_iter_get_next_device_alias_entry(_, _)).WillByDefault(Return(1));
        ON_CALL(p, ddas_get_device_alias_given_pwwn(_, _, _)).WillByDefault(Return(1));
        ON_CALL(p, getCSName()).WillByDefault(Return("switch"));
        ON_CALL(p, syserr2str(_)).WillByDefault(Return("error"));
    }

    CMPIStatus run(Op op, const char *cls) {
        CMPIObjectPath *op_path = request.newObjectPath(kNamespace, cls);
        if (op == Op::Get) add_keys(op_path, cls);
        testing::internal::CaptureStdout();
        CMPIStatus st{CMPI_RC_ERR_FAILED, nullptr};
        {
            InSequence order;
            EXPECT_CALL(platform, mutex_lock());
            EXPECT_CALL(platform, mutex_unlock());
        }
        switch (op) {
            case Op::Names:
                st = zone_Provider_EnumInstanceNames(nullptr, request.context(), request.result(),
                                                     op_path);
                break;
            case Op::Instances:
                st = zone_Provider_EnumInstances(nullptr, request.context(), request.result(),
                                                 op_path, props_);
                break;
            case Op::Get:
                st = zone_Provider_GetInstance(nullptr, request.context(), request.result(),
                                               op_path, props_);
                break;
        }
        testing::internal::GetCapturedStdout();
        return st;
    }

    // Keys of a getInstance: the association classes carry two references.
    void add_keys(CMPIObjectPath *op_path, const char *cls) {
        const std::string name = cls;
        if (name == "VORNA_DeviceAlias") {
            cmpihost::addStringKey(op_path, "InstanceID", "20:00:00:11:22:33:44:55");
            return;
        }
        CMPIObjectPath *first = request.newObjectPath(kNamespace, "VORNA_Zone");
        cmpihost::addStringKey(first, "InstanceID", "first");
        CMPIObjectPath *second = request.newObjectPath(kNamespace, "VORNA_ZoneAlias");
        cmpihost::addStringKey(second, "InstanceID", "second");
        const bool esd = name == "VORNA_ElementSettingData";
        const bool moc = name == "VORNA_ZoneMemberOfCollection";
        cmpihost::addReferenceKey(op_path,
                                  esd   ? "ManagedElement"
                                  : moc ? "Collection"
                                        : "Antecedent",
                                  first);
        cmpihost::addReferenceKey(op_path,
                                  esd   ? "SettingData"
                                  : moc ? "Member"
                                        : "Dependent",
                                  second);
    }

    void feed_one_zone_set_with_one_zone() {
        ON_CALL(platform, zs_cim_get_all_active_zone_sets(_, 8, _, _))
            .WillByDefault(hand_back_array<ZoneSetRecord>({"s"}));
        ON_CALL(platform, zs_cim_get_zone_set_zones_by_instance_id(_, _, _))
            .WillByDefault([](int, const char *, ZoneRecord **list) {
                *list = readside::single_record<ZoneRecord>("z");
                return 0;
            });
    }

    void feed_one_zone_with_one_member() {
        ON_CALL(platform, zs_cim_get_all_active_zones(_, 8, _, _))
            .WillByDefault(hand_back_array<ZoneRecord>({"z"}));
        ON_CALL(platform, zs_cim_get_zone_zone_members_by_instance_id(_, _, _))
            .WillByDefault([](int, const char *, ZoneMemberRecord **list) {
                *list = readside::member_list({"m"});
                return 0;
            });
    }

    void feed_one_device_alias() {
        static int iterator_token;
        auto *iterator = reinterpret_cast<ddas_iterator *>(&iterator_token);
        ON_CALL(platform, ddas_api_get_all_device_alias_entries(kQueue, _, _))
            .WillByDefault([iterator](int, void **, ddas_iterator **out) {
                *out = iterator;
                return 0;
            });
        ON_CALL(platform, ddas_api_iter_get_num_entries(iterator, _))
            .WillByDefault([](ddas_iterator *, int *count) {
                *count = 1;
                return 0;
            });
        ON_CALL(platform, ddas_api_iter_get_next_device_alias_entry(iterator, _))
            .WillByDefault(Return(0));
    }

    void feed_vsan_table() {
        ON_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _))
            .WillByDefault([](int, int *count, VsanEntry **entries) {
                *count = 1;
                *entries = static_cast<VsanEntry *>(std::calloc(1, sizeof(VsanEntry)));
                (*entries)->vsan = 8;
                return 0;
            });
        ON_CALL(platform, dm_cim_get_dmEntry(kQueue, 8, 1, _)).WillByDefault(Return(0));
        ON_CALL(platform, zs_cim_get_all_active_zone_sets(_, 8, _, _))
            .WillByDefault(hand_back_array<ZoneSetRecord>({"s"}));
    }

    void expect_one(Op op) {
        ASSERT_EQ(request.deliveries().size(), 1u);
        EXPECT_EQ(request.deliveries()[0].kind, op == Op::Names
                                                    ? cmpihost::Delivery::Kind::ObjectPath
                                                    : cmpihost::Delivery::Kind::Instance);
    }
};

TEST_F(OtherClassesDispatchTest, DeviceAlias) {
    feed_one_device_alias();
    EXPECT_CALL(platform, device_alias_fill_reference(StrEq("vorna_devicealias"), StrEq(kNamespace),
                                                      _, broker()))
        .WillOnce(Return(objects.path("alias")));
    EXPECT_CALL(platform, device_alias_build_instance(_, _, _, _, _)).Times(0);
    EXPECT_EQ(run(Op::Names, "vorna_devicealias").rc, CMPI_RC_OK);
    expect_one(Op::Names);
}

TEST_F(OtherClassesDispatchTest, DeviceAliasInstances) {
    feed_one_device_alias();
    EXPECT_CALL(platform, device_alias_build_instance(StrEq("VORNA_DeviceAlias"), StrEq(kNamespace),
                                                      _, props_, broker()))
        .WillOnce(Return(objects.instance("alias")));
    EXPECT_CALL(platform, device_alias_fill_reference(_, _, _, _)).Times(0);
    EXPECT_EQ(run(Op::Instances, "VORNA_DeviceAlias").rc, CMPI_RC_OK);
    expect_one(Op::Instances);
}

TEST_F(OtherClassesDispatchTest, DeviceAliasGetInstanceLooksThePwwnUp) {
    const unsigned char bytes[8] = {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55};
    uint64_t pwwn;
    std::memcpy(&pwwn, bytes, sizeof pwwn);
    EXPECT_CALL(platform, ddas_get_device_alias_given_pwwn(kQueue, pwwn, _)).WillOnce(Return(0));
    EXPECT_CALL(platform, device_alias_build_instance(StrEq("VORNA_DeviceAlias"), StrEq(kNamespace),
                                                      _, props_, broker()))
        .WillOnce(Return(objects.instance("alias")));
    EXPECT_EQ(run(Op::Get, "VORNA_DeviceAlias").rc, CMPI_RC_OK);
    expect_one(Op::Get);
}

TEST_F(OtherClassesDispatchTest, ElementSettingData) {
    for (Op op : {Op::Names, Op::Instances}) {
        SCOPED_TRACE(op_name(op));
        feed_one_zone_with_one_member();
        if (op == Op::Names) {
            EXPECT_CALL(platform, esd_fill_reference_zoneZoneMember(_, StrEq(kNamespace), _, _, _))
                .WillOnce(Return(objects.path("link")));
            EXPECT_CALL(platform, esd_build_instance(_, _, _, _, _, _)).Times(0);
        } else {
            EXPECT_CALL(platform, esd_build_instance(_, StrEq(kNamespace), _, _, props_, _))
                .WillOnce(Return(objects.instance("link")));
            EXPECT_CALL(platform, esd_fill_reference_zoneZoneMember(_, _, _, _, _)).Times(0);
        }
        EXPECT_EQ(run(op, "VORNA_ElementSettingData").rc, CMPI_RC_OK);
        EXPECT_EQ(request.deliveries().size(), op == Op::Names ? 1u : 2u);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

TEST_F(OtherClassesDispatchTest, MemberOfCollection) {
    for (Op op : {Op::Names, Op::Instances}) {
        SCOPED_TRACE(op_name(op));
        feed_one_zone_set_with_one_zone();
        if (op == Op::Names) {
            EXPECT_CALL(platform, zmoc_fill_reference_zoneSetZone(_, StrEq(kNamespace), _, _, _))
                .WillOnce(Return(objects.path("link")));
            EXPECT_CALL(platform, zmoc_build_instance_MemberCollection(_, _, _, _, _, _)).Times(0);
        } else {
            EXPECT_CALL(platform,
                        zmoc_build_instance_MemberCollection(_, StrEq(kNamespace), _, _, props_, _))
                .WillOnce(Return(objects.instance("link")));
            EXPECT_CALL(platform, zmoc_fill_reference_zoneSetZone(_, _, _, _, _)).Times(0);
        }
        EXPECT_EQ(run(op, "VORNA_ZoneMemberOfCollection").rc, CMPI_RC_OK);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_EQ(objects.kinds(), "PI");
}

TEST_F(OtherClassesDispatchTest, AssociationGetInstancesAreBuiltFromTheRequestsReferences) {
    EXPECT_CALL(platform, esd_build_instance(StrEq("VORNA_ElementSettingData"), StrEq(kNamespace),
                                             _, _, props_, broker()))
        .WillOnce(Return(objects.instance("esd")));
    EXPECT_EQ(run(Op::Get, "vorna_elementsettingdata").rc, CMPI_RC_OK);
    testing::Mock::VerifyAndClearExpectations(&platform);

    EXPECT_CALL(platform,
                zmoc_build_instance_MemberCollection(StrEq("VORNA_ZoneMemberOfCollection"),
                                                     StrEq(kNamespace), _, _, props_, broker()))
        .WillOnce(Return(objects.instance("moc")));
    EXPECT_EQ(run(Op::Get, "VORNA_ZoneMemberOfCollection").rc, CMPI_RC_OK);
    testing::Mock::VerifyAndClearExpectations(&platform);

    EXPECT_CALL(platform, getCSName()).WillOnce(Return("switch"));
    EXPECT_EQ(run(Op::Get, "VORNA_ZoneHostedCollection").rc, CMPI_RC_OK);

    EXPECT_EQ(objects.delivered().size(), 3u);
    EXPECT_EQ(objects.kinds(), "III");
}

TEST_F(OtherClassesDispatchTest, ZoneHostedCollection) {
    for (Op op : {Op::Names, Op::Instances}) {
        SCOPED_TRACE(op_name(op));
        feed_vsan_table();
        if (op == Op::Names) {
            EXPECT_CALL(platform,
                        zone_hosted_collection_fill_reference(_, StrEq(kNamespace), _, _, broker()))
                .WillOnce(Return(objects.path("link")));
            EXPECT_CALL(platform, association_class_build_instance_path(_, _, _, _, _, _, _))
                .Times(0);
        } else {
            EXPECT_CALL(platform, association_class_build_instance_path(_, StrEq(kNamespace), _, _,
                                                                        _, _, broker()))
                .WillOnce(Return(objects.instance("link")));
            EXPECT_CALL(platform, zone_hosted_collection_fill_reference(_, _, _, _, _)).Times(0);
        }
        EXPECT_EQ(run(op, "VORNA_ZoneHostedCollection").rc, CMPI_RC_OK);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_EQ(objects.kinds(), "PI");
}

}  // namespace
