// Factories and queue start-up, the operations that do no work, and the
// helpers every operation relies on: the identifying keys of the served
// classes, key text from object paths, WWN text and the existence check of
// zoning objects. (That each table slot reaches its operation is seen by
// every integration test, which calls the provider through its tables; which
// classes are served, through the instance operations' refusals.)
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "host/cmpihost.h"
#include "platform_mock.h"
#include "provider/zone_provider.h"

using ::testing::_;
using ::testing::DoAll;
using ::testing::Return;
using ::testing::SetArgPointee;
using ::testing::StrEq;
using ::testing::StrictMock;

namespace {

// Each factory call records the broker and opens the queue under the mutex
// (lock, init_mts with the address of mts_q, unlock), also after a cleanup;
// a failed start-up is reported by a line of its own and the factory still
// hands out its static object. The caller's status is left as it was.
TEST(ProviderEntryTest, EveryFactoryCallRecordsTheBrokerAndOpensTheQueue) {
    StrictMock<PlatformMock> platform;
    const CMPIBroker *broker = cmpihost::broker();
    void *first[3] = {};
    for (int init_result : {0, -5}) {
        SCOPED_TRACE(init_result);
        testing::Sequence order;
        for (int i = 0; i < 3; ++i) {
            EXPECT_CALL(platform, mutex_lock()).InSequence(order).RetiresOnSaturation();
            EXPECT_CALL(platform, init_mts(&mts_q))
                .InSequence(order)
                .WillOnce(Return(init_result))
                .RetiresOnSaturation();
            EXPECT_CALL(platform, mutex_unlock()).InSequence(order).RetiresOnSaturation();
        }
        _broker = nullptr;
        CMPIStatus status{CMPI_RC_OK, nullptr};
        testing::internal::CaptureStdout();
        CMPIInstanceMI *instance = ZoneProvider_Create_InstanceMI(broker, nullptr, &status);
        CMPIAssociationMI *association =
            ZoneProvider_Create_AssociationMI(broker, nullptr, &status);
        CMPIMethodMI *method = ZoneProvider_Create_MethodMI(broker, nullptr, &status);
        const std::string line = "get_using_cmi done init mts response q with error\n";
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  init_result == 0 ? "" : line + line + line);
        ASSERT_NE(instance, nullptr);
        ASSERT_NE(association, nullptr);
        ASSERT_NE(method, nullptr);
        EXPECT_EQ(_broker, broker);
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        EXPECT_EQ(status.msg, nullptr);
        EXPECT_EQ(instance->hdl, nullptr);
        // The interface version the broker checks before it uses a table.
        for (int version :
             {instance->ft->ftVersion, instance->ft->miVersion, association->ft->ftVersion,
              association->ft->miVersion, method->ft->ftVersion, method->ft->miVersion})
            EXPECT_EQ(version, 100);
        void *objects[3] = {instance, association, method};
        if (init_result == 0) {
            EXPECT_NE(objects[0], objects[1]);
            EXPECT_NE(objects[1], objects[2]);
            std::copy(objects, objects + 3, first);
            // The cleanups release nothing: the next round gets the same objects.
            EXPECT_EQ(instance->ft->cleanup(instance, nullptr, 1).rc, CMPI_RC_OK);
            EXPECT_EQ(association->ft->cleanup(association, nullptr, 0).rc, CMPI_RC_OK);
            EXPECT_EQ(method->ft->cleanup(method, nullptr, 1).rc, CMPI_RC_OK);
        } else {
            EXPECT_TRUE(std::equal(objects, objects + 3, first));
        }
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

// Creating, modifying and querying instances is not supported, and the
// cleanups succeed, all without a platform call (the strict double fails on
// any), a message or a line of output; so is a property list trace of no
// list or an empty one.
TEST(ProviderEntryTest, DoNothingOperationsTouchNoServiceAndCarryNoMessage) {
    StrictMock<PlatformMock> platform;
    testing::internal::CaptureStdout();
    const CMPIStatus results[] = {
        zone_Provider_CreateInstance(nullptr, nullptr, nullptr, nullptr, nullptr),
        zone_Provider_ModifyInstance(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
        zone_Provider_ExecQuery(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
        zone_Provider_Cleanup(nullptr, nullptr, 1),
        zone_Provider_AssociationCleanup(nullptr, nullptr, 0),
        zone_Provider_MethodCleanup(nullptr, nullptr, 1),
    };
    const char *empty[] = {nullptr};
    print_char_array_zp(nullptr);
    print_char_array_zp(empty);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(results[i].rc, i < 3 ? CMPI_RC_ERR_NOT_SUPPORTED : CMPI_RC_OK) << i;
        EXPECT_EQ(results[i].msg, nullptr) << i;
    }
}

// InstanceID for the zoning objects and device aliases, Name for the zone
// service, any key for the links; the check and a refusal are traced.
TEST(ProviderEntryTest, KeyCheckAcceptsTheIdentifyingKeyOfEachClass) {
    struct Case {
        const char *cls, *key;
        int accepted;
    };
    const Case cases[] = {
        {"VORNA_Zone", "InstanceID", 1},
        {"VORNA_Zone", "instanceid", 1},
        {"VORNA_Zone", "Name", 0},
        {"VORNA_ZoneService", "name", 1},
        {"VORNA_ZoneService", "InstanceID", 0},
        {"VORNA_HostedService", "anything at all", 1},
        {"VORNA_ZoneMemberOfCollection", "Member", 1},
        {"VORNA_ElementSettingData", "x", 1},
        {"VORNA_HostedCollection", "y", 1},
        {"VORNA_ZoneHostedCollection", "Antecedent", 1},
        {"VORNA_DeviceAlias", "InstanceID", 1},
        {"VORNA_Vsan", "Name", 0},
        {"VORNA_DeviceAliasService", "InstanceID", 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.cls) + " " + c.key);
        testing::internal::CaptureStdout();
        EXPECT_EQ(check_key_name_zm(c.cls, c.key), c.accepted);
        const std::string out = testing::internal::GetCapturedStdout();
        const std::string pair = std::string(c.cls) + " -- " + c.key + " \n";
        EXPECT_EQ(out.rfind("checking key name " + pair, 0), 0u) << out;
        EXPECT_EQ(out.find("\tFAIL check key name " + pair) != std::string::npos, c.accepted == 0)
            << out;
    }
}

// Only a string key of exactly the name, cut to 253 characters; otherwise
// -1 and the buffer untouched.
TEST(ProviderEntryTest, KeyFromReferenceTakesTheExactlyNamedStringKey) {
    cmpihost::Request request;
    CMPIObjectPath *path = request.newObjectPath("root/cimv2", "VORNA_Zone");
    const std::string long_value(300, 'z');
    cmpihost::addStringKey(path, "Name", "another key first");
    cmpihost::addStringKey(path, "InstanceID", long_value);
    char buffer[254];
    ASSERT_EQ(get_key_from_reference(path, "InstanceID", buffer), 0);
    EXPECT_EQ(std::string(buffer), long_value.substr(0, 253));

    CMPIObjectPath *no_keys = request.newObjectPath("root/cimv2", "VORNA_ZoneService");
    CMPIObjectPath *numeric = request.newObjectPath("root/cimv2", "VORNA_ZoneService");
    CMPIValue ten{};
    ten.uint32 = 10;
    numeric->ft->addKey(numeric, "Name", &ten, CMPI_uint32);
    CMPIObjectPath *reference = request.newObjectPath("root/cimv2", "VORNA_ElementSettingData");
    cmpihost::addReferenceKey(reference, "ManagedElement", no_keys);
    const std::pair<const CMPIObjectPath *, const char *> refused[] = {
        {path, "INSTANCEID"},          {no_keys, "Name"}, {numeric, "Name"},
        {reference, "ManagedElement"}, {nullptr, "Name"},
    };
    std::strcpy(buffer, "untouched");
    for (const auto &[op, name] : refused) {
        EXPECT_EQ(get_key_from_reference(op, name, buffer), -1) << name;
        EXPECT_STREQ(buffer, "untouched");
    }
}

// The hex digits of the text (no further than a newline) in written order,
// the last sixteen when there are more.
TEST(ProviderEntryTest, WwnTextKeepsTheLastSixteenDigitsInWrittenOrder) {
    struct Case {
        const char *text;
        unsigned char bytes[8];
    };
    const Case cases[] = {
        {"20:00:00:11:22:33:44:55", {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55}},
        {"2000001122334455", {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55}},
        {"20-00-00-11-22-33-44-55", {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55}},
        {"AB:cd:EF:01:23:45:67:89", {0xab, 0xcd, 0xef, 0x01, 0x23, 0x45, 0x67, 0x89}},
        {"ff", {0, 0, 0, 0, 0, 0, 0, 0xff}},
        {"", {0, 0, 0, 0, 0, 0, 0, 0}},
        {"12345678901122334455", {0x56, 0x78, 0x90, 0x11, 0x22, 0x33, 0x44, 0x55}},
        {"ghij 10\n20", {0, 0, 0, 0, 0, 0, 0, 0x10}},
    };
    for (const Case &c : cases) {
        const uint64_t value = string_to_wwn(c.text);
        EXPECT_EQ(std::memcmp(&value, c.bytes, 8), 0) << c.text;
    }
    EXPECT_EQ(string_to_wwn(nullptr), 0u);
}

// Kinds 1, 2, 3 ask for a zone, zone set or alias by InstanceID and free
// the record; any other kind passes without a platform call (the strict
// double fails on any other).
TEST(ProviderEntryTest, ZoningObjectCheckAsksThePlatformForTheKindAndFreesTheRecord) {
    StrictMock<PlatformMock> platform;
    EXPECT_CALL(platform, zs_cim_get_zone_by_instance_id(mts_q, StrEq("1^2^0"), _))
        .WillOnce(
            DoAll(SetArgPointee<2>(static_cast<ZoneRecord *>(std::calloc(1, sizeof(ZoneRecord)))),
                  Return(0)));
    EXPECT_CALL(platform, zs_cim_get_zone_set_by_instance_id(mts_q, StrEq("1^3^0"), _))
        .WillOnce(Return(1));
    EXPECT_CALL(platform, zs_cim_get_zone_alias_by_instance_id(mts_q, StrEq("1^4^1"), _))
        .WillOnce(DoAll(SetArgPointee<2>(static_cast<ZoneAliasRecord *>(
                            std::calloc(1, sizeof(ZoneAliasRecord)))),
                        Return(0)));
    testing::internal::CaptureStdout();
    EXPECT_EQ(validate_zone_instance("1^2^0", 1), 0);
    EXPECT_EQ(validate_zone_instance("1^3^0", 2), -1);
    EXPECT_EQ(validate_zone_instance("1^4^1", 3), 0);
    EXPECT_EQ(validate_zone_instance("1^2^0", 0), 0);
    EXPECT_EQ(validate_zone_instance("1^2^0", 4), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Zone found \nZoneSet Not Found\nZoneAlias found\n");
}

}  // namespace
