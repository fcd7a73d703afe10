// Zone sets, zones and zone aliases: the three classes share one pattern, so
// every test here runs for all three.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <string>

#include "read_side_support.h"

namespace {

int count_of(const std::string &text, const std::string &part) {
    int n = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
    return n;
}

using readside::hand_back_array;
using readside::hand_back_record;
using readside::kNamespace;
using readside::kQueue;
using testing::_;
using testing::InSequence;
using testing::Return;
using testing::StrEq;

// What differs from one class to the next: the platform's queries and
// builders, the three routines, and the trace lines.
struct ZoneSetCase {
    using Record = ZoneSetRecord;
    static constexpr const char *kClass = "VORNA_ZoneSet";
    static constexpr auto keys = get_zone_set_keys;
    static constexpr auto all_instances = get_zone_set_all_instances;
    static constexpr auto instance = get_zone_set_instance;
    static auto &active(PlatformMock &m) {
        return EXPECT_CALL(m, zs_cim_get_all_active_zone_sets(kQueue, _, _, _));
    }
    static auto &non_active(PlatformMock &m) {
        return EXPECT_CALL(m, zs_cim_get_all_non_active_zone_sets(kQueue, _, _, _));
    }
    static auto &by_id(PlatformMock &m, const char *id) {
        return EXPECT_CALL(m, zs_cim_get_zone_set_by_instance_id(kQueue, StrEq(id), _));
    }
    static auto &fill(PlatformMock &m, const char *cls) {
        return EXPECT_CALL(m, zone_set_fill_reference(StrEq(cls), StrEq(kNamespace), _, _));
    }
    static auto &build(PlatformMock &m, const char *cls) {
        return EXPECT_CALL(m, zone_set_build_instance(StrEq(cls), StrEq(kNamespace), _, _, _));
    }
    // One VSAN (3): active [a], non-active [b, c].
    static constexpr const char *kNamesTrace =
        "found 1 active zone set in vsan 3\n"
        "i is 0 class_name is VORNA_ZoneSet name_space is root/zoning \n"
        "found 2 NON active zone set in vsan 3\n";
    static constexpr const char *kInstancesTrace =
        "found 1 active zone set in vsan 3\n"
        "found 2 NON active zone set in vsan 3\n";
    static constexpr const char *kFailedRetrievalTrace = "";
};

struct ZoneCase {
    using Record = ZoneRecord;
    static constexpr const char *kClass = "VORNA_Zone";
    static constexpr auto keys = get_zone_keys;
    static constexpr auto all_instances = get_zone_all_instances;
    static constexpr auto instance = get_zone_instance;
    static auto &active(PlatformMock &m) {
        return EXPECT_CALL(m, zs_cim_get_all_active_zones(kQueue, _, _, _));
    }
    static auto &non_active(PlatformMock &m) {
        return EXPECT_CALL(m, zs_cim_get_all_non_active_zones(kQueue, _, _, _));
    }
    static auto &by_id(PlatformMock &m, const char *id) {
        return EXPECT_CALL(m, zs_cim_get_zone_by_instance_id(kQueue, StrEq(id), _));
    }
    static auto &fill(PlatformMock &m, const char *cls) {
        return EXPECT_CALL(m, zone_fill_reference(StrEq(cls), StrEq(kNamespace), _, _));
    }
    static auto &build(PlatformMock &m, const char *cls) {
        return EXPECT_CALL(m, zone_build_instance(StrEq(cls), StrEq(kNamespace), _, _, _));
    }
    static constexpr const char *kNamesTrace =
        "\t FOUND VSAN 3\n"
        "getting zone all instances keys\n"
        "found 1 active zone in vsan 3\n"
        "found 2 NON active zone in vsan 3\n";
    static constexpr const char *kInstancesTrace =
        "\t FOUND VSAN 3\n"
        "found 1 active zone in vsan 3\n"
        "\tfound zone a -- name-a \n"
        "found 2 NON active zone in vsan 3\n"
        "\tfound zone b -- name-b \n"
        "\tfound zone c -- name-c \n";
    static constexpr const char *kFailedRetrievalTrace =
        "---   in get_zone_instance CMPI GetInstance() failed : "
        "Could not find or construct instance";
};

struct ZoneAliasCase {
    using Record = ZoneAliasRecord;
    static constexpr const char *kClass = "VORNA_ZoneAlias";
    static constexpr auto keys = get_zone_alias_keys;
    static constexpr auto all_instances = get_zone_alias_all_instances;
    static constexpr auto instance = get_zone_alias_instance;
    static auto &active(PlatformMock &m) {
        return EXPECT_CALL(m, zs_cim_get_all_active_zone_aliases(kQueue, _, _, _));
    }
    static auto &non_active(PlatformMock &m) {
        return EXPECT_CALL(m, zs_cim_get_all_non_active_zone_aliases(kQueue, _, _, _));
    }
    static auto &by_id(PlatformMock &m, const char *id) {
        return EXPECT_CALL(m, zs_cim_get_zone_alias_by_instance_id(kQueue, StrEq(id), _));
    }
    static auto &fill(PlatformMock &m, const char *cls) {
        return EXPECT_CALL(m, zone_alias_fill_reference(StrEq(cls), StrEq(kNamespace), _, _));
    }
    static auto &build(PlatformMock &m, const char *cls) {
        return EXPECT_CALL(m, zone_alias_build_instance(StrEq(cls), StrEq(kNamespace), _, _, _));
    }
    static constexpr const char *kNamesTrace =
        "found 1 active zone in vsan 3\n"
        "found 2 NON active zone in vsan 3\n";
    static constexpr const char *kInstancesTrace =
        "found 1 active zone in vsan 3\n"
        "\tfound zone a -- name-a \n"
        "found 2 NON active zone in vsan 3\n"
        "\tfound zone b -- name-b \n"
        "\tfound zone c -- name-c \n";
    static constexpr const char *kFailedRetrievalTrace = "";
};

template <typename Case>
class ZoningObjectsTest : public readside::ReadSideTest {
  protected:
    using Record = typename Case::Record;

    // Builders that label each object with the InstanceID of its record.
    void label_paths(const char *cls) {
        Case::fill(platform, cls)
            .WillRepeatedly(
                [this](const char *, const char *, const Record *r, const CMPIBroker *broker) {
                    EXPECT_EQ(broker, cmpihost::broker());
                    return objects.path(r->instance_id);
                });
    }
    void label_instances(const char *cls, const char **props) {
        Case::build(platform, cls)
            .WillRepeatedly([this, props](const char *, const char *, const Record *r,
                                          const char **given, const CMPIBroker *broker) {
                EXPECT_EQ(given, props);
                EXPECT_EQ(broker, cmpihost::broker());
                return objects.instance(r->instance_id);
            });
    }

    // A query answer for the given VSAN only.
    static auto for_vsan(int expected_vsan, std::vector<std::string> ids) {
        return [expected_vsan, ids](int queue, int vsan, int *count, Record **records) {
            EXPECT_EQ(vsan, expected_vsan);
            return hand_back_array<Record>(ids)(queue, vsan, count, records);
        };
    }

    // VSAN 1: active [a1], non-active [n1, n2]; VSAN 2: the active query
    // fails, non-active [m1]. Any further query is unexpected.
    void two_vsans() {
        EXPECT_CALL(platform, vsan_cim_get_vsanEntry(kQueue, 0, _))
            .WillRepeatedly(readside::walk_vsans({1, 2}));
        InSequence order;
        Case::active(platform).WillOnce(for_vsan(1, {"a1"}));
        Case::non_active(platform).WillOnce(for_vsan(1, {"n1", "n2"}));
        Case::active(platform).WillOnce([](int, int vsan, int *, Record **) {
            EXPECT_EQ(vsan, 2);
            return 1;
        });
        Case::non_active(platform).WillOnce(for_vsan(2, {"m1"}));
    }

    void one_vsan_for_traces() {
        EXPECT_CALL(platform, vsan_cim_get_vsanEntry(kQueue, 0, _))
            .WillRepeatedly(readside::walk_vsans({3}));
        Case::active(platform).WillOnce(hand_back_array<Record>({"a"}));
        Case::non_active(platform).WillOnce(hand_back_array<Record>({"b", "c"}));
    }
};

using ZoningCases = testing::Types<ZoneSetCase, ZoneCase, ZoneAliasCase>;
TYPED_TEST_SUITE(ZoningObjectsTest, ZoningCases);

TYPED_TEST(ZoningObjectsTest, NamesComeVsanByVsanActiveFirstWithTheClassAsWritten) {
    this->two_vsans();
    // The class name goes to the builder in the request's own spelling.
    std::string lower = TypeParam::kClass;
    for (char &c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    this->label_paths(lower.c_str());

    testing::internal::CaptureStdout();
    EXPECT_EQ(TypeParam::keys(lower.c_str(), this->request.result(), kNamespace), 0);
    testing::internal::GetCapturedStdout();

    EXPECT_EQ(this->objects.delivered(), (std::vector<std::string>{"a1", "n1", "n2", "m1"}));
    EXPECT_EQ(this->objects.kinds(), "PPPP");
    EXPECT_EQ(this->request.doneCount(), 0);
}

TYPED_TEST(ZoningObjectsTest, InstancesComeInTheSameOrderWithThePropertyList) {
    this->two_vsans();
    const char *props[] = {"InstanceID", "ElementName", nullptr};
    this->label_instances(TypeParam::kClass, props);

    testing::internal::CaptureStdout();
    EXPECT_EQ(
        TypeParam::all_instances(TypeParam::kClass, this->request.result(), props, kNamespace), 0);
    testing::internal::GetCapturedStdout();

    EXPECT_EQ(this->objects.delivered(), (std::vector<std::string>{"a1", "n1", "n2", "m1"}));
    EXPECT_EQ(this->objects.kinds(), "IIII");
    EXPECT_EQ(this->request.doneCount(), 0);
}

TYPED_TEST(ZoningObjectsTest, TraceLinesOfTheEnumerations) {
    this->one_vsan_for_traces();
    this->label_paths(TypeParam::kClass);
    testing::internal::CaptureStdout();
    TypeParam::keys(TypeParam::kClass, this->request.result(), kNamespace);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), TypeParam::kNamesTrace);

    this->one_vsan_for_traces();
    this->label_instances(TypeParam::kClass, nullptr);
    testing::internal::CaptureStdout();
    TypeParam::all_instances(TypeParam::kClass, this->request.result(), nullptr, kNamespace);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), TypeParam::kInstancesTrace);
    EXPECT_EQ(this->objects.delivered(), (std::vector<std::string>{"a", "b", "c", "a", "b", "c"}));
}

TYPED_TEST(ZoningObjectsTest, EmptyAndFailedDatabasesAndMissingBuildsGiveNothing) {
    using Record = typename TypeParam::Record;
    EXPECT_CALL(this->platform, vsan_cim_get_vsanEntry(kQueue, 0, _))
        .WillRepeatedly(readside::walk_vsans({5, 6}));
    {
        InSequence order;
        // A count of 0 with an array: the array is still released.
        TypeParam::active(this->platform).WillOnce(hand_back_array<Record>({}));
        // A count of 0 without an array is accepted too.
        TypeParam::non_active(this->platform).WillOnce([](int, int, int *count, Record **) {
            *count = 0;
            return 0;
        });
        TypeParam::active(this->platform).WillOnce(hand_back_array<Record>({"x", "y"}));
        TypeParam::non_active(this->platform).WillOnce(Return(7));
    }
    // The builder gives nothing for x: only y reaches the result.
    TypeParam::fill(this->platform, TypeParam::kClass)
        .WillRepeatedly([this](const char *, const char *, const Record *r, const CMPIBroker *) {
            return std::string(r->instance_id) == "x" ? nullptr : this->objects.path("y");
        });

    testing::internal::CaptureStdout();
    TypeParam::keys(TypeParam::kClass, this->request.result(), kNamespace);
    const std::string trace = testing::internal::GetCapturedStdout();

    EXPECT_EQ(this->objects.delivered(), (std::vector<std::string>{"y"}));
    EXPECT_EQ(count_of(trace, "found 0 active"), 1) << trace;
    EXPECT_EQ(count_of(trace, "found 0 NON active"), 1) << trace;
    // Only the successful query of VSAN 6 has a count line.
    EXPECT_EQ(count_of(trace, " in vsan 6\n"), 1) << trace;
}

TYPED_TEST(ZoningObjectsTest, AFailedWalkGivesNothing) {
    EXPECT_CALL(this->platform, vsan_cim_get_vsanEntry(kQueue, 0, _))
        .Times(2)
        .WillRepeatedly(Return(1));
    TypeParam::keys(TypeParam::kClass, this->request.result(), kNamespace);
    TypeParam::all_instances(TypeParam::kClass, this->request.result(), nullptr, kNamespace);
    EXPECT_TRUE(this->request.deliveries().empty());
}

TYPED_TEST(ZoningObjectsTest, RetrievalDeliversTheRecordsInstanceAndLeavesTheStatus) {
    using Record = typename TypeParam::Record;
    TypeParam::by_id(this->platform, "1^7^0").WillOnce(hand_back_record<Record>("1^7^0"));
    const char *props[] = {"Name", nullptr};
    this->label_instances("vorna_whatever", props);

    CMPIStatus st{CMPI_RC_OK, nullptr};
    testing::internal::CaptureStdout();
    EXPECT_EQ(TypeParam::instance("vorna_whatever", "1^7^0", this->request.result(), props,
                                  kNamespace, &st),
              0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(st.rc, CMPI_RC_OK);
    EXPECT_EQ(st.msg, nullptr);
    EXPECT_EQ(this->objects.delivered(), (std::vector<std::string>{"1^7^0"}));
    EXPECT_EQ(this->request.doneCount(), 0);
}

TYPED_TEST(ZoningObjectsTest, RetrievalReportsNotFoundForUnknownIdsAndFailedBuilds) {
    using Record = typename TypeParam::Record;
    struct Row {
        const char *what;
        bool found;
        CMPIInstance *built;
    };
    const Row rows[] = {
        {"unknown InstanceID", false, nullptr},
        {"builder gives null", true, nullptr},
        {"builder gives a null handle", true, readside::hollow_instance()},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        if (row.found) {
            TypeParam::by_id(this->platform, "9^9^1").WillOnce(hand_back_record<Record>("9^9^1"));
            TypeParam::build(this->platform, TypeParam::kClass).WillOnce(Return(row.built));
        } else {
            TypeParam::by_id(this->platform, "9^9^1").WillOnce(Return(3));
        }
        CMPIStatus st{CMPI_RC_OK, nullptr};
        testing::internal::CaptureStdout();
        EXPECT_EQ(TypeParam::instance(TypeParam::kClass, "9^9^1", this->request.result(), nullptr,
                                      kNamespace, &st),
                  0);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), TypeParam::kFailedRetrievalTrace);
        EXPECT_EQ(st.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(readside::message_of(st), "Could not find or construct instance");
        EXPECT_TRUE(this->request.deliveries().empty());
        testing::Mock::VerifyAndClearExpectations(&this->platform);
    }
}

// The zone retrieval reports a failure that its caller had already put into
// the status, even when the zone itself was found.
using ZoneRetrieval = readside::ReadSideTest;

TEST_F(ZoneRetrieval, ReportsAStatusTheCallerAlreadySet) {
    EXPECT_CALL(platform, zs_cim_get_zone_by_instance_id(kQueue, StrEq("z"), _))
        .WillOnce(hand_back_record<ZoneRecord>("z"));
    EXPECT_CALL(platform, zone_build_instance(_, _, _, _, _))
        .WillOnce([&](const char *, const char *, const ZoneRecord *, const char **,
                      const CMPIBroker *) { return objects.instance("z"); });
    CMPIStatus st{CMPI_RC_ERR_FAILED,
                  cmpihost::broker()->eft->newString(cmpihost::broker(), "earlier", nullptr)};
    testing::internal::CaptureStdout();
    get_zone_instance("VORNA_Zone", "z", request.result(), nullptr, kNamespace, &st);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "---   in get_zone_instance CMPI GetInstance() failed : earlier");
    EXPECT_EQ(st.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(objects.delivered(), (std::vector<std::string>{"z"}));
}

}  // namespace
