// Served classes and keys, key text from object paths, WWN text, and the
// existence check of zoning objects.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "host/cmpihost.h"
#include "platform_mock.h"
#include "provider/zone_provider.h"

#include <cmpimacs.h>

using ::testing::_;
using ::testing::DoAll;
using ::testing::Return;
using ::testing::SetArgPointee;
using ::testing::StrEq;
using ::testing::StrictMock;

namespace {

struct ClassCase {
    const char *class_name;
    int served;
};

TEST(ClassCheck, AcceptsTheElevenServedClassesInAnyCase) {
    const ClassCase cases[] = {
        {"VORNA_ZoneSet", 1},
        {"vorna_zonealias", 1},
        {"VORNA_ZONE", 1},
        {"VORNA_DeviceAlias", 1},
        {"VORNA_ZoneMemberSettingData", 1},
        {"VORNA_HostedCollection", 1},
        {"VORNA_ZoneMemberOfCollection", 1},
        {"VORNA_ElementSettingData", 1},
        {"VORNA_ZoneService", 1},
        {"VORNA_HostedService", 1},
        {"VORNA_ZoneHostedCollection", 1},
        {"VORNA_DeviceAliasService", 0},
        {"VORNA_Vsan", 0},
        {"CIM_ZoneSet", 0},
        {"VORNA_ZoneSetX", 0},
        {"", 0},
    };
    for (const ClassCase &c : cases) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(check_class_name_zm(c.class_name), c.served) << c.class_name;
        const std::string out = testing::internal::GetCapturedStdout();
        const std::string fail = std::string("\tFAIL check class name ") + c.class_name + " \n";
        EXPECT_EQ(out.find(fail) != std::string::npos, c.served == 0) << out;
    }
}

struct KeyCase {
    const char *class_name;
    const char *key_name;
    int accepted;
};

TEST(KeyCheck, AcceptsTheIdentifyingKeyOfEachClass) {
    const KeyCase cases[] = {
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
    for (const KeyCase &c : cases) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(check_key_name_zm(c.class_name, c.key_name), c.accepted)
            << c.class_name << " " << c.key_name;
        const std::string out = testing::internal::GetCapturedStdout();
        const std::string checking =
            std::string("checking key name ") + c.class_name + " -- " + c.key_name + " \n";
        const std::string fail =
            std::string("\tFAIL check key name ") + c.class_name + " -- " + c.key_name + " \n";
        EXPECT_EQ(out.rfind(checking, 0), 0u) << out;
        EXPECT_EQ(out.find(fail) != std::string::npos, c.accepted == 0) << out;
    }
}

TEST(KeyFromReference, FindsTheExactlyNamedStringKeyAndCutsItTo253Characters) {
    cmpihost::Request request;
    CMPIObjectPath *path = request.newObjectPath("root/cimv2", "VORNA_Zone");
    const std::string long_value(300, 'z');
    cmpihost::addStringKey(path, "Name", "another key first");
    cmpihost::addStringKey(path, "InstanceID", long_value);

    char buffer[254];
    ASSERT_EQ(get_key_from_reference(path, "InstanceID", buffer), 0);
    EXPECT_EQ(std::string(buffer), long_value.substr(0, 253));

    std::memcpy(buffer, "untouched", 10);
    EXPECT_EQ(get_key_from_reference(path, "INSTANCEID", buffer), -1);
    EXPECT_STREQ(buffer, "untouched");

    CMPIObjectPath *lower_only = request.newObjectPath("root/cimv2", "VORNA_Zone");
    cmpihost::addStringKey(lower_only, "instanceid", "x");
    EXPECT_EQ(get_key_from_reference(lower_only, "InstanceID", buffer), -1);
    EXPECT_STREQ(buffer, "untouched");
}

TEST(KeyFromReference, PathsWithoutKeysOrWithNonStringKeysGiveMinusOne) {
    cmpihost::Request request;
    char buffer[254] = "untouched";
    CMPIObjectPath *no_keys = request.newObjectPath("root/cimv2", "VORNA_ZoneService");
    EXPECT_EQ(get_key_from_reference(no_keys, "Name", buffer), -1);

    CMPIObjectPath *numeric = request.newObjectPath("root/cimv2", "VORNA_ZoneService");
    CMPIValue ten;
    ten.uint32 = 10;
    CMAddKey(numeric, "Name", &ten, CMPI_uint32);
    EXPECT_EQ(get_key_from_reference(numeric, "Name", buffer), -1);

    CMPIObjectPath *reference = request.newObjectPath("root/cimv2", "VORNA_ElementSettingData");
    cmpihost::addReferenceKey(reference, "ManagedElement", no_keys);
    EXPECT_EQ(get_key_from_reference(reference, "ManagedElement", buffer), -1);
    EXPECT_EQ(get_key_from_reference(nullptr, "Name", buffer), -1);
    EXPECT_STREQ(buffer, "untouched");
}

struct WwnCase {
    const char *text;
    unsigned char bytes[8];
};

TEST(WwnText, KeepsTheLastSixteenDigitsInWrittenOrder) {
    const WwnCase cases[] = {
        {"20:00:00:11:22:33:44:55", {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55}},
        {"2000001122334455", {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55}},
        {"20-00-00-11-22-33-44-55", {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55}},
        {"AB:cd:EF:01:23:45:67:89", {0xab, 0xcd, 0xef, 0x01, 0x23, 0x45, 0x67, 0x89}},
        {"ff", {0, 0, 0, 0, 0, 0, 0, 0xff}},
        {"", {0, 0, 0, 0, 0, 0, 0, 0}},
        {"12345678901122334455", {0x56, 0x78, 0x90, 0x11, 0x22, 0x33, 0x44, 0x55}},
        {"ghij 10\n20", {0, 0, 0, 0, 0, 0, 0, 0x10}},
    };
    for (const WwnCase &c : cases) {
        const uint64_t value = string_to_wwn(c.text);
        unsigned char bytes[8];
        std::memcpy(bytes, &value, sizeof bytes);
        EXPECT_EQ(std::memcmp(bytes, c.bytes, 8), 0) << c.text;
    }
    EXPECT_EQ(string_to_wwn(nullptr), 0u);
}

template <typename Record>
Record *new_record() {
    return static_cast<Record *>(std::calloc(1, sizeof(Record)));
}

TEST(ZoningObjectCheck, AsksThePlatformForTheKindAndFreesTheRecord) {
    StrictMock<PlatformMock> platform;
    EXPECT_CALL(platform, zs_cim_get_zone_by_instance_id(mts_q, StrEq("1^2^0"), _))
        .WillOnce(DoAll(SetArgPointee<2>(new_record<ZoneRecord>()), Return(0)));
    EXPECT_CALL(platform, zs_cim_get_zone_set_by_instance_id(mts_q, StrEq("1^3^0"), _))
        .WillOnce(Return(1));
    EXPECT_CALL(platform, zs_cim_get_zone_alias_by_instance_id(mts_q, StrEq("1^4^1"), _))
        .WillOnce(DoAll(SetArgPointee<2>(new_record<ZoneAliasRecord>()), Return(0)));

    testing::internal::CaptureStdout();
    EXPECT_EQ(validate_zone_instance("1^2^0", 1), 0);
    EXPECT_EQ(validate_zone_instance("1^3^0", 2), -1);
    EXPECT_EQ(validate_zone_instance("1^4^1", 3), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Zone found \nZoneSet Not Found\nZoneAlias found\n");
}

TEST(ZoningObjectCheck, UnknownKindsPassWithoutAskingThePlatform) {
    StrictMock<PlatformMock> platform;
    testing::internal::CaptureStdout();
    EXPECT_EQ(validate_zone_instance("1^2^0", 0), 0);
    EXPECT_EQ(validate_zone_instance("1^2^0", 4), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
