// Zone sets, zones, zone aliases and zone members: the four classes share
// one pattern, so every test here runs for all four. The enumerations'
// order and trace lines, what they do with empty or failed queries, the
// release of every array and member node, and the retrieval by InstanceID
// with the status it leaves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "read_side_support.h"

namespace {

using readside::hand_back_array;
using readside::kNamespace;
using readside::kQueue;
using testing::_;
using testing::InSequence;
using testing::Return;
using testing::StrEq;

using M = PlatformMock;

// Retrievals that print nothing of their own; only the zone's reports a
// failed status, its caller's included.
struct QuietRetrieval {
    static constexpr const char *kRetrieved = "";
    static constexpr const char *kUnknown = "";
    static constexpr const char *kUnbuilt = "";
    static constexpr const char *kFailedRetrievalLine = nullptr;
};

// What differs from one class to the next: the platform's queries and
// builders, the three routines, and the trace lines. The traces are those
// of the VSANs of ZoningObjectsTest::three_vsans, the class written in lower
// case.
struct ZoneSetCase : QuietRetrieval {
    using Record = ZoneSetRecord;
    static constexpr const char *kClass = "vorna_zoneset";
    static constexpr auto keys = get_zone_set_keys;
    static constexpr auto all_instances = get_zone_set_all_instances;
    static constexpr auto instance = get_zone_set_instance;
    static auto &active(M &m) { return EXPECT_CALL(m, zs_cim_get_all_active_zone_sets); }
    static auto &non_active(M &m) { return EXPECT_CALL(m, zs_cim_get_all_non_active_zone_sets); }
    static auto &by_id(M &m, const char *id) {
        return EXPECT_CALL(m, zs_cim_get_zone_set_by_instance_id(kQueue, StrEq(id), _));
    }
    static auto &fill(M &m) { return EXPECT_CALL(m, zone_set_fill_reference); }
    static auto &build(M &m) { return EXPECT_CALL(m, zone_set_build_instance); }
    static constexpr const char *kNamesTrace =
        "found 1 active zone set in vsan 1\n"
        "i is 0 class_name is vorna_zoneset name_space is root/zoning \n"
        "found 2 NON active zone set in vsan 1\n"
        "found 1 NON active zone set in vsan 2\n"
        "found 0 active zone set in vsan 3\n"
        "found 0 NON active zone set in vsan 3\n";
    static constexpr const char *kInstancesTrace =
        "found 1 active zone set in vsan 1\n"
        "found 2 NON active zone set in vsan 1\n"
        "found 1 NON active zone set in vsan 2\n"
        "found 0 active zone set in vsan 3\n"
        "found 0 NON active zone set in vsan 3\n";
};

struct ZoneCase : QuietRetrieval {
    using Record = ZoneRecord;
    static constexpr const char *kClass = "vorna_zone";
    static constexpr auto keys = get_zone_keys;
    static constexpr auto all_instances = get_zone_all_instances;
    static constexpr auto instance = get_zone_instance;
    static auto &active(M &m) { return EXPECT_CALL(m, zs_cim_get_all_active_zones); }
    static auto &non_active(M &m) { return EXPECT_CALL(m, zs_cim_get_all_non_active_zones); }
    static auto &by_id(M &m, const char *id) {
        return EXPECT_CALL(m, zs_cim_get_zone_by_instance_id(kQueue, StrEq(id), _));
    }
    static auto &fill(M &m) { return EXPECT_CALL(m, zone_fill_reference); }
    static auto &build(M &m) { return EXPECT_CALL(m, zone_build_instance); }
    static constexpr const char *kNamesTrace =
        "\t FOUND VSAN 1\ngetting zone all instances keys\n"
        "found 1 active zone in vsan 1\n"
        "found 2 NON active zone in vsan 1\n"
        "\t FOUND VSAN 2\ngetting zone all instances keys\n"
        "found 1 NON active zone in vsan 2\n"
        "\t FOUND VSAN 3\ngetting zone all instances keys\n"
        "found 0 active zone in vsan 3\n"
        "found 0 NON active zone in vsan 3\n";
    static constexpr const char *kInstancesTrace =
        "\t FOUND VSAN 1\n"
        "found 1 active zone in vsan 1\n"
        "\tfound zone a1 -- name-a1 \n"
        "found 2 NON active zone in vsan 1\n"
        "\tfound zone x -- name-x \n"
        "\tfound zone n1 -- name-n1 \n"
        "\t FOUND VSAN 2\n"
        "found 1 NON active zone in vsan 2\n"
        "\tfound zone m1 -- name-m1 \n"
        "\t FOUND VSAN 3\n"
        "found 0 active zone in vsan 3\n"
        "found 0 NON active zone in vsan 3\n";
    static constexpr const char *kFailedRetrievalLine =
        "---   in get_zone_instance CMPI GetInstance() failed : ";
};

struct ZoneAliasCase : QuietRetrieval {
    using Record = ZoneAliasRecord;
    static constexpr const char *kClass = "vorna_zonealias";
    static constexpr auto keys = get_zone_alias_keys;
    static constexpr auto all_instances = get_zone_alias_all_instances;
    static constexpr auto instance = get_zone_alias_instance;
    static auto &active(M &m) { return EXPECT_CALL(m, zs_cim_get_all_active_zone_aliases); }
    static auto &non_active(M &m) { return EXPECT_CALL(m, zs_cim_get_all_non_active_zone_aliases); }
    static auto &by_id(M &m, const char *id) {
        return EXPECT_CALL(m, zs_cim_get_zone_alias_by_instance_id(kQueue, StrEq(id), _));
    }
    static auto &fill(M &m) { return EXPECT_CALL(m, zone_alias_fill_reference); }
    static auto &build(M &m) { return EXPECT_CALL(m, zone_alias_build_instance); }
    // Aliases report themselves with the zone wording.
    static constexpr const char *kNamesTrace =
        "found 1 active zone in vsan 1\n"
        "found 2 NON active zone in vsan 1\n"
        "found 1 NON active zone in vsan 2\n"
        "found 0 active zone in vsan 3\n"
        "found 0 NON active zone in vsan 3\n";
    static constexpr const char *kInstancesTrace =
        "found 1 active zone in vsan 1\n"
        "\tfound zone a1 -- name-a1 \n"
        "found 2 NON active zone in vsan 1\n"
        "\tfound zone x -- name-x \n"
        "\tfound zone n1 -- name-n1 \n"
        "found 1 NON active zone in vsan 2\n"
        "\tfound zone m1 -- name-m1 \n"
        "found 0 active zone in vsan 3\n"
        "found 0 NON active zone in vsan 3\n";
};

// Members come as linked lists, each node freed once its object is made;
// their labels are their values.
struct ZoneMemberCase {
    using Record = ZoneMemberRecord;
    static constexpr const char *kClass = "vorna_zonemembersettingdata";
    static constexpr auto keys = get_zone_member_keys;
    static constexpr auto all_instances = get_zone_member_all_instances;
    static constexpr auto instance = get_zone_member_instance;
    static auto &active(M &m) { return EXPECT_CALL(m, zs_cim_get_all_active_zone_members); }
    static auto &non_active(M &m) { return EXPECT_CALL(m, zs_cim_get_all_non_active_zone_members); }
    static auto &by_id(M &m, const char *id) {
        return EXPECT_CALL(m, zs_cim_get_zone_member_by_instance_id(kQueue, StrEq(id), _));
    }
    static auto &fill(M &m) { return EXPECT_CALL(m, zone_member_fill_reference); }
    static auto &build(M &m) { return EXPECT_CALL(m, zone_member_build_instance); }
    static constexpr const char *kNamesTrace = "";
    static constexpr const char *kInstancesTrace =
        "found 1 active zone member in vsan 1\n"
        "\n found  zone member in get_zone_member_all_instances  -- a1\n"
        "found 2 non active zone member in vsan 1\n"
        "\n found  zone member get_zone_member_all_instances -- x\n"
        "\n found  zone member get_zone_member_all_instances -- n1\n"
        "found 1 non active zone member in vsan 2\n"
        "\n found  zone member get_zone_member_all_instances -- m1\n"
        "found 0 active zone member in vsan 3\n"
        "found 0 non active zone member in vsan 3\n";
    static constexpr const char *kRetrieved =
        " get zone member by instance id is success \n"
        "Instance is non null.. Returning Instance \n";
    static constexpr const char *kUnknown = " GET zone member by instance id is failure\n";
    static constexpr const char *kUnbuilt =
        " get zone member by instance id is success \n Instance is null\n";
    static constexpr const char *kFailedRetrievalLine = nullptr;
};

template <typename Case>
class ZoningObjectsTest : public readside::ReadSideTest {
  protected:
    using Record = typename Case::Record;

    // Builders that label each object after its record (and make nothing of
    // record x), checking the class as written, the namespace, property list
    // and broker.
    static std::string label(const Record *r) {
        if constexpr (std::is_same_v<Record, ZoneMemberRecord>)
            return r->member_value;
        else
            return r->instance_id;
    }
    void label_paths() {
        Case::fill(platform).WillRepeatedly(
            [this](const char *cls, const char *ns, const Record *r, const CMPIBroker *broker) {
                EXPECT_STREQ(cls, Case::kClass);
                EXPECT_STREQ(ns, kNamespace);
                EXPECT_EQ(broker, cmpihost::broker());
                return label(r) == "x" ? nullptr : objects.path(label(r));
            });
    }
    void label_instances(const char **props) {
        Case::build(platform).WillRepeatedly([this, props](const char *cls, const char *ns,
                                                           const Record *r, const char **given,
                                                           const CMPIBroker *broker) {
            EXPECT_STREQ(cls, Case::kClass);
            EXPECT_STREQ(ns, kNamespace);
            EXPECT_EQ(given, props);
            EXPECT_EQ(broker, cmpihost::broker());
            return label(r) == "x" ? nullptr : objects.instance(label(r));
        });
    }

    // A query answer for the given VSAN only, on the provider's queue.
    static auto for_vsan(int expected_vsan, std::vector<std::string> ids) {
        return [expected_vsan, ids](int queue, int vsan, int *count, Record **records) {
            EXPECT_EQ(queue, kQueue);
            EXPECT_EQ(vsan, expected_vsan);
            return hand_back_array<Record>(ids)(queue, vsan, count, records);
        };
    }

    // VSAN 1: active [a1], non-active [x, n1]; VSAN 2: the active query
    // fails, non-active [m1]; VSAN 3: an empty answer, then a count of 0
    // without records. Any further query is unexpected.
    void three_vsans() {
        EXPECT_CALL(platform, vsan_cim_get_vsanEntry(kQueue, 0, _))
            .WillRepeatedly(readside::walk_vsans({1, 2, 3}));
        InSequence order;
        Case::active(platform).WillOnce(for_vsan(1, {"a1"}));
        Case::non_active(platform).WillOnce(for_vsan(1, {"x", "n1"}));
        Case::active(platform).WillOnce(Return(1));
        Case::non_active(platform).WillOnce(for_vsan(2, {"m1"}));
        Case::active(platform).WillOnce(for_vsan(3, {}));
        Case::non_active(platform).WillOnce([](int, int, int *count, Record **) {
            *count = 0;
            return 0;
        });
    }
};

using ZoningCases = testing::Types<ZoneSetCase, ZoneCase, ZoneAliasCase, ZoneMemberCase>;
TYPED_TEST_SUITE(ZoningObjectsTest, ZoningCases);

// Names and instances come VSAN by VSAN, the active database before the
// editable one, the class as the request wrote it. A failed query only
// skips its database and prints no count line; an empty one gives nothing;
// a record the builder makes nothing of is skipped and the walk goes on.
// Every array and node is released (the sanitizers see a leak); a switch
// without VSANs gives nothing.
TYPED_TEST(ZoningObjectsTest, EnumerationsComeVsanByVsanActiveFirstWithTheirTraceLines) {
    const char *props[] = {"InstanceID", "ElementName", nullptr};
    for (bool instances : {false, true}) {
        SCOPED_TRACE(instances ? "instances" : "names");
        this->three_vsans();
        instances ? this->label_instances(props) : this->label_paths();
        const CMPIResult *result = this->request.result();
        testing::internal::CaptureStdout();
        EXPECT_EQ(instances ? TypeParam::all_instances(TypeParam::kClass, result, props, kNamespace)
                            : TypeParam::keys(TypeParam::kClass, result, kNamespace),
                  0);
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  instances ? TypeParam::kInstancesTrace : TypeParam::kNamesTrace);
        testing::Mock::VerifyAndClearExpectations(&this->platform);
    }
    EXPECT_CALL(this->platform, vsan_cim_get_vsanEntry(kQueue, 0, _)).WillOnce(Return(1));
    EXPECT_EQ(TypeParam::keys(TypeParam::kClass, this->request.result(), kNamespace), 0);
    EXPECT_EQ(this->objects.delivered(),
              (std::vector<std::string>{"a1", "n1", "m1", "a1", "n1", "m1"}));
    EXPECT_EQ(this->objects.kinds(), "PPPIII");
    EXPECT_EQ(this->request.doneCount(), 0);
}

// The retrieval delivers the record's instance and leaves the status as it
// was; an unknown InstanceID or a builder that makes nothing usable gives
// NOT_FOUND. Only the zone retrieval prints a failed status, including one
// its caller had already set.
TYPED_TEST(ZoningObjectsTest, RetrievalDeliversTheInstanceOrReportsNotFound) {
    using Record = typename TypeParam::Record;
    enum class Built { Object, Null, NullHandle };
    struct Row {
        const char *what;
        bool found;
        Built built;
        bool failed_before = false;  // the caller's status says FAILED "earlier"
    };
    const Row rows[] = {
        {"found", true, Built::Object},
        {"unknown InstanceID", false, Built::Null},
        {"builder gives null", true, Built::Null},
        {"builder gives a null handle", true, Built::NullHandle},
        {"caller's status already failed", true, Built::Object, true},
    };
    const char *props[] = {"Name", nullptr};
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        cmpihost::Request each;
        if (!row.found)
            TypeParam::by_id(this->platform, "1^7^0").WillOnce(Return(3));
        else
            TypeParam::by_id(this->platform, "1^7^0")
                .WillOnce(readside::hand_back_record<Record>("1^7^0"));
        if (row.built == Built::Object)
            this->label_instances(props);
        else if (row.found)
            TypeParam::build(this->platform)
                .WillOnce(Return(row.built == Built::Null ? nullptr : readside::hollow_instance()));
        CMPIStatus st{CMPI_RC_OK, nullptr};
        if (row.failed_before)
            st = {CMPI_RC_ERR_FAILED,
                  cmpihost::broker()->eft->newString(cmpihost::broker(), "earlier", nullptr)};
        testing::internal::CaptureStdout();
        EXPECT_EQ(
            TypeParam::instance(TypeParam::kClass, "1^7^0", each.result(), props, kNamespace, &st),
            0);
        const std::string trace = testing::internal::GetCapturedStdout();
        const bool delivered = row.built == Built::Object;
        const std::string message = row.failed_before ? "earlier"
                                    : delivered       ? "<none>"
                                                      : "Could not find or construct instance";
        EXPECT_EQ(st.rc, row.failed_before ? CMPI_RC_ERR_FAILED
                         : delivered       ? CMPI_RC_OK
                                           : CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(readside::message_of(st), message);
        EXPECT_EQ(each.deliveries().size(), delivered ? 1u : 0u);
        EXPECT_EQ(each.doneCount(), 0);
        const char *line = TypeParam::kFailedRetrievalLine;
        EXPECT_EQ(trace, std::string(delivered   ? TypeParam::kRetrieved
                                     : row.found ? TypeParam::kUnbuilt
                                                 : TypeParam::kUnknown) +
                             (line == nullptr || st.rc == CMPI_RC_OK ? "" : line + message));
        testing::Mock::VerifyAndClearExpectations(&this->platform);
    }
}

}  // namespace
