// The identifying keys of the served classes, key text from object paths,
// WWN text, and the existence check of zoning objects. (Which classes are
// served is seen through the instance operations' refusals.)
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

namespace {

// InstanceID for the zoning objects and device aliases, Name for the zone
// service, any key for the links; the check and a refusal are traced.
TEST(ClassKeys, KeyCheckAcceptsTheIdentifyingKeyOfEachClass) {
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
TEST(ClassKeys, KeyFromReferenceTakesTheExactlyNamedStringKey) {
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
TEST(ClassKeys, WwnTextKeepsTheLastSixteenDigitsInWrittenOrder) {
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
TEST(ClassKeys, ZoningObjectCheckAsksThePlatformForTheKindAndFreesTheRecord) {
    testing::StrictMock<PlatformMock> platform;
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
