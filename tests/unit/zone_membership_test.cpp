// CreateZoneMembershipSettingData and AddZoneMembershipSettingData: member
// conversion through the platform, the 109 -> 231 code, the member
// InstanceID, the add call, and every refusal with its trace and outcome.
#include <array>
#include <functional>

#include "methods/method_fixture.h"

using ::testing::_;
using ::testing::DoAll;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::SetArgPointee;
using ::testing::StrEq;

namespace {

using namespace method_test;

constexpr std::array<unsigned char, 8> kWwn = {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55};
constexpr uint8_t kWwnCode = 3;

class ZoneMembershipTest : public MethodTest<> {
  protected:
    CMPIArgs *memberArgs(CMPIUint16 type, const std::string &identifier,
                         const CMPIObjectPath *parent) {
        CMPIArgs *in = args();
        CMPIValue v{};
        v.uint16 = type;
        cmpihost::addValueArg(in, "MemberType", v, CMPI_uint16);
        cmpihost::addStringArg(in, "ConnectivityMemberID", identifier);
        cmpihost::addReferenceArg(in, "Collection", parent);
        return in;
    }
    CMPIArgs *wwnMember(const CMPIObjectPath *parent) {
        return memberArgs(6, "2000001122334455", parent);
    }
    CMPIObjectPath *zone() { return zoningRef("VORNA_Zone", "z1"); }

    // The platform knows the member: code, length 8 and the WWN bytes.
    void converts(CMPIUint16 type, uint8_t code, const std::string &identifier) {
        EXPECT_CALL(platform, decode_cim_member_type(type, _))
            .WillOnce(DoAll(SetArgPointee<1>(code), Return(0)));
        EXPECT_CALL(platform, get_member_value_length(code)).WillOnce(Return(8));
        EXPECT_CALL(platform,
                    get_member_value_from_cim_member_type_value(StrEq(identifier), code, _))
            .WillOnce([](const char *, uint8_t, unsigned char *value) {
                std::memcpy(value, kWwn.data(), kWwn.size());
                return 0;
            });
    }
    void splits(const char *id, int vsan, int number, int active) {
        EXPECT_CALL(platform, zs_cim_get_fields_from_generic_instance_id(StrEq(id), _, _, _))
            .WillOnce(DoAll(SetArgPointee<1>(vsan), SetArgPointee<2>(number),
                            SetArgPointee<3>(active), Return(0)));
    }
    // The add call with the encoded WWN; answers `answer`.
    void addsMember(int vsan, int parent_active, int parent_type, int number, uint32_t code,
                    int answer = 0, int error = 0) {
        EXPECT_CALL(platform, zs_cim_add_zoning_member(kQueue, 1, vsan, parent_active, parent_type,
                                                       number, code, _, _, _))
            .WillOnce([=](int, int, int, int, int, int, uint32_t, unsigned char *value, int *length,
                          int *err) {
                EXPECT_EQ(*length, 8);
                EXPECT_THAT(std::vector<unsigned char>(value, value + 8), ElementsAreArray(kWwn));
                *err = error;
                return answer;
            });
    }
    // The reference builder; records what it was given.
    void buildsMemberReference(ZoneMemberRecord &seen) {
        EXPECT_CALL(platform, zone_member_fill_reference(StrEq("VORNA_ZoneMemberSettingData"),
                                                         StrEq("root/cimv2"), _, _broker))
            .WillOnce([this, &seen](const char *, const char *, const ZoneMemberRecord *record,
                                    const CMPIBroker *) {
                seen = *record;
                return pathIn("root/cimv2", "VORNA_ZoneMemberSettingData");
            });
    }
};

TEST_F(ZoneMembershipTest, CreatesAWwnMemberInItsZoneAndNamesItByTheFormattedWwn) {
    ZoneMemberRecord seen{};
    {
        InSequence order;
        converts(6, kWwnCode, "2000001122334455");
        splits("z1", 10, 4, 0);
        addsMember(10, 0, 0, 4, kWwnCode);
        EXPECT_CALL(platform, cim_sprintf_wwn(_, _))
            .WillOnce([](char *out, const unsigned char *value) {
                EXPECT_EQ(std::memcmp(value, kWwn.data(), kWwn.size()), 0);
                std::strcpy(out, "20:00:00:11:22:33:44:55");
                return 0;
            });
        buildsMemberReference(seen);
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(call(ZoneMemberCreation, zoneService("10"), wwnMember(zone())), 0);
    const std::string trace = testing::internal::GetCapturedStdout();

    EXPECT_STREQ(seen.instance_id, "10^6^20:00:00:11:22:33:44:55^0");
    EXPECT_EQ(seen.cim_member_type, 6);
    EXPECT_STREQ(seen.member_value, "2000001122334455");
    ASSERT_EQ(outputCount(), 1u);
    const auto ref = outputRef();
    EXPECT_EQ(ref.name, "ZoneMembershipSettingData");
    EXPECT_EQ(ref.type, CMPI_ref);
    EXPECT_EQ(ref.ns, "root/cimv2");
    EXPECT_EQ(returned(), std::vector<Returned>{sint32Zero()});
    EXPECT_EQ(request.doneCount(), 0);
    EXPECT_THAT(trace, HasSubstr("member_id :: 20:00:00:11:22:33:44:55 \n"));
    EXPECT_THAT(trace, HasSubstr(" ZoneProvider:invokeMethod(): ZoneMbrData - Type is 6, id is "
                                 "2000001122334455 \n"));
    EXPECT_THAT(trace, HasSubstr("No Error in ZoneMembershipSettingData\n"));
}

TEST_F(ZoneMembershipTest, FormatsTheMemberTextByType) {
    struct Case {
        CMPIUint16 type;
        const char *parent_class;
        int parent_type;
        const char *formatted;  // null: the client's text stays
        const char *trace;
    };
    const Case cases[] = {
        {4, "VORNA_Zone", 0, "0x01:5", "member_id for cim_member_type == 4 :: 0x01:5 \n"},
        {10, "VORNA_ZoneAlias", 2, "20:00:00:11:22:33:44:55", "member_id :: 20:00"},
        {11, "VORNA_Zone", 0, "0x01:0x1a", "member_id for cim_member_type == 11 :: 0x01:0x1a \n"},
        {1, "VORNA_ZoneAlias", 2, nullptr, ""},
        {5, "VORNA_Zone", 0, nullptr, ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.type);
        const std::string identifier = "Client Spelling " + std::to_string(c.type);
        ZoneMemberRecord seen{};
        converts(c.type, kWwnCode, identifier);
        splits("p1", 10, 4, 0);
        addsMember(10, 0, c.parent_type, 4, kWwnCode);
        auto writes = [text = c.formatted](char *out, const unsigned char *) {
            std::strcpy(out, text);
            return 0;
        };
        if (c.type == 4) EXPECT_CALL(platform, zs_cim_sprintf_dom_port(_, _)).WillOnce(writes);
        if (c.type == 10) EXPECT_CALL(platform, cim_sprintf_wwn(_, _)).WillOnce(writes);
        if (c.type == 11)
            EXPECT_CALL(platform, cim_sprintf_dom_interface_hex(_, _)).WillOnce(writes);
        buildsMemberReference(seen);

        testing::internal::CaptureStdout();
        EXPECT_EQ(call(ZoneMemberCreation, zoneService("10"),
                       memberArgs(c.type, identifier, zoningRef(c.parent_class, "p1"))),
                  0);
        EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr(c.trace));
        const std::string text = c.formatted != nullptr ? c.formatted : identifier;
        EXPECT_EQ(std::string(seen.instance_id),
                  "10^" + std::to_string(c.type) + "^" + text + "^0");
        EXPECT_EQ(std::string(seen.member_value), identifier);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

TEST_F(ZoneMembershipTest, Code109IsAddedAs231AfterConversionWith109) {
    ZoneMemberRecord seen{};
    converts(1, 109, "member");
    splits("z1", 10, 4, 0);
    addsMember(10, 0, 0, 4, 231);
    buildsMemberReference(seen);
    EXPECT_EQ(call(ZoneMemberCreation, zoneService("10"), memberArgs(1, "member", zone())), 0);
    EXPECT_STREQ(seen.instance_id, "10^1^member^0");
}

TEST_F(ZoneMembershipTest, CutsLongIdentifiersTo253CharactersBeforeConversion) {
    const std::string identifier(300, 'i');
    const std::string cut = identifier.substr(0, 253);
    ZoneMemberRecord seen{};
    converts(1, kWwnCode, cut);
    splits("z1", 10, 4, 0);
    addsMember(10, 0, 0, 4, kWwnCode);
    buildsMemberReference(seen);
    EXPECT_EQ(call(ZoneMemberCreation, zoneService("10"), memberArgs(1, identifier, zone())), 0);
    EXPECT_EQ(std::string(seen.instance_id), "10^1^" + cut + "^0");
    EXPECT_EQ(std::string(seen.member_value), cut);
}

TEST_F(ZoneMembershipTest, CreationRefusalsLeaveTheZoneServerAlone) {
    struct Case {
        const char *what;
        std::function<void()> expect;
        std::function<CMPIArgs *()> in;
        int outcome;
        const char *trace;
    };
    auto wwn_to_zone = [this] { return wwnMember(zone()); };
    const Case cases[] = {
        {"unknown member type",
         [&] { EXPECT_CALL(platform, decode_cim_member_type(6, _)).WillOnce(Return(-1)); },
         // The parent is wrong too: the member type is reported first.
         [this] { return wwnMember(zoningRef("VORNA_ZoneSet", "zs1")); }, 2,
         " ZoneProvider:invokeMethod(): decode_cim_member_type - Invalid param 1 \n"},
        {"no value length",
         [&] {
             EXPECT_CALL(platform, decode_cim_member_type(6, _))
                 .WillOnce(DoAll(SetArgPointee<1>(kWwnCode), Return(0)));
             EXPECT_CALL(platform, get_member_value_length(kWwnCode)).WillOnce(Return(0));
         },
         wwn_to_zone, 2, " ZoneProvider:invokeMethod(): get_member_value_length\n"},
        {"unconvertible identifier",
         [&] {
             EXPECT_CALL(platform, decode_cim_member_type(6, _))
                 .WillOnce(DoAll(SetArgPointee<1>(kWwnCode), Return(0)));
             EXPECT_CALL(platform, get_member_value_length(kWwnCode)).WillOnce(Return(8));
             EXPECT_CALL(platform, get_member_value_from_cim_member_type_value(_, kWwnCode, _))
                 .WillOnce(Return(-1));
         },
         wwn_to_zone, 2,
         " ZoneProvider:invokeMethod(): Error get_member_value_from_cim_member_type_value\n"},
        {"parent without InstanceID", [&] { converts(6, kWwnCode, "2000001122334455"); },
         [this] { return wwnMember(pathIn("root/cimv2", "VORNA_Zone")); }, 2,
         " ZoneProvider:invokeMethod(): ZoneMbrData - Incvalid param 2 \n"},
        {"parent position holds no reference", [&] { converts(6, kWwnCode, "2000001122334455"); },
         [this] {
             CMPIArgs *in = args();
             CMPIValue v{};
             v.uint16 = 6;
             cmpihost::addValueArg(in, "MemberType", v, CMPI_uint16);
             cmpihost::addStringArg(in, "ConnectivityMemberID", "2000001122334455");
             cmpihost::addStringArg(in, "Collection", "z1");
             return in;
         },
         2, " ZoneProvider:invokeMethod(): ZoneMbrData - Incvalid param 2 \n"},
        {"parent class in other case", [&] { converts(6, kWwnCode, "2000001122334455"); },
         [this] { return wwnMember(zoningRef("vorna_zone", "z1")); }, 2,
         " ZoneProvider:invokeMethod(): ZoneMbrData - Incvalid param 3 \n"},
        {"parent InstanceID can't be split",
         [&] {
             converts(6, kWwnCode, "2000001122334455");
             EXPECT_CALL(platform, zs_cim_get_fields_from_generic_instance_id(StrEq("z1"), _, _, _))
                 .WillOnce(Return(-1));
         },
         wwn_to_zone, 1, " ZoneProvider:invokeMethod(): ZoneMbrData - parent type is 0 \n"},
        {"active parent",
         [&] {
             converts(6, kWwnCode, "2000001122334455");
             splits("z1", 10, 4, 1);
         },
         wwn_to_zone, 3, "vsan_index 10 z_v_id 10 \n"},
        {"parent of another VSAN",
         [&] {
             converts(6, kWwnCode, "2000001122334455");
             splits("z1", 11, 4, 0);
         },
         wwn_to_zone, 3, "vsan_index 10 z_v_id 11 \n"},
        {"zone server refuses",
         [&] {
             converts(6, kWwnCode, "2000001122334455");
             splits("z1", 10, 4, 0);
             addsMember(10, 0, 0, 4, kWwnCode, -1, 4);
         },
         wwn_to_zone, 4, "Error in ZoneMembershipSettingData\n"},
        {"two arguments", [] {},
         [this] {
             CMPIArgs *in = args();
             CMPIValue v{};
             v.uint16 = 6;
             cmpihost::addValueArg(in, "MemberType", v, CMPI_uint16);
             cmpihost::addStringArg(in, "ConnectivityMemberID", "x");
             return in;
         },
         2, ""},
        {"no args object", [] {}, [] { return static_cast<CMPIArgs *>(nullptr); }, 2, ""},
        {"member type as a string", [] {},
         [this] {
             CMPIArgs *in = args();
             cmpihost::addStringArg(in, "MemberType", "6");
             cmpihost::addStringArg(in, "ConnectivityMemberID", "x");
             cmpihost::addReferenceArg(in, "Collection", zone());
             return in;
         },
         2, ""},
        {"identifier that is no text", [] {},
         [this] {
             CMPIArgs *in = args();
             CMPIValue v{};
             v.uint16 = 6;
             cmpihost::addValueArg(in, "MemberType", v, CMPI_uint16);
             cmpihost::addValueArg(in, "ConnectivityMemberID", v, CMPI_uint16);
             cmpihost::addReferenceArg(in, "Collection", zone());
             return in;
         },
         2, ""},
        {"null identifier", [] {},
         [this] {
             CMPIArgs *in = args();
             CMPIValue v{};
             v.uint16 = 6;
             cmpihost::addValueArg(in, "MemberType", v, CMPI_uint16);
             CMPIValue none{};
             cmpihost::addValueArg(in, "ConnectivityMemberID", none, CMPI_string);
             cmpihost::addReferenceArg(in, "Collection", zone());
             return in;
         },
         2, ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        c.expect();
        testing::internal::CaptureStdout();
        EXPECT_EQ(call(ZoneMemberCreation, zoneService("10"), c.in()), c.outcome);
        EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr(c.trace));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    for (const std::string &refused : refusedVsanTexts())
        EXPECT_EQ(call(ZoneMemberCreation, zoneService(refused), wwnMember(zone())),
                  ZONE_SERVICE_KEY_REFUSAL);
    EXPECT_EQ(outputCount(), 0u);
    EXPECT_TRUE(returned().empty());
}

// ---- AddZoneMembershipSettingData -------------------------------------------

class AddMembershipTest : public ZoneMembershipTest {
  protected:
    CMPIArgs *parentAndMember(const char *parent_class = "VORNA_ZoneAlias") {
        CMPIArgs *in = args();
        cmpihost::addReferenceArg(in, "Collection", zoningRef(parent_class, "a1"));
        cmpihost::addReferenceArg(in, "Member",
                                  zoningRef("VORNA_ZoneMemberSettingData", "10^6^wwn^0"));
        return in;
    }
    void memberSplits(int vsan, int active, int answer = 0) {
        EXPECT_CALL(platform, zs_cim_get_fields_from_member_instance_id(StrEq("10^6^wwn^0"), _, _,
                                                                        _, _, _, 0))
            .WillOnce([=](const char *, int *v, uint8_t *code, unsigned char *value, int *length,
                          int *a, int) {
                *v = vsan;
                *code = kWwnCode;
                std::memcpy(value, kWwn.data(), kWwn.size());
                *length = 8;
                *a = active;
                return answer;
            });
    }
    static std::string refusalTrace(const char *error, int number) {
        return std::string(" ZoneProvider:invokeMethod(): Add  ZoneMbrData - ") + error + " is " +
               std::to_string(number) + "\n";
    }
};

TEST_F(AddMembershipTest, AddsTheExistingMemberToTheParentWithItsOwnCodeAndValue) {
    {
        InSequence order;
        // Member first, then the parent.
        memberSplits(10, 0);
        splits("a1", 10, 12, 0);
        addsMember(10, 0, 2, 12, kWwnCode);
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(call(AddZoneMembershipSettingData, zoneService("10"), parentAndMember()), 0);
    const std::string trace = testing::internal::GetCapturedStdout();
    EXPECT_EQ(returned(), std::vector<Returned>{sint32Zero()});
    EXPECT_EQ(request.doneCount(), 1);
    EXPECT_EQ(outputCount(), 0u);
    EXPECT_THAT(trace, HasSubstr("\nstat fail for /etc/cim_debug_provider_zone\n"));
    const std::string twice = "*** zone a1 and zone mem name 10^6^wwn^0 in new_zone_provider **\n";
    EXPECT_THAT(trace, HasSubstr(twice + twice));
    EXPECT_THAT(trace,
                HasSubstr(" ZoneProvider:invokeMethod(): Add  ZoneMbrData - ret code is 0\n"));
}

TEST_F(AddMembershipTest, EachRefusalPrintsItsNumberedLine) {
    struct Case {
        const char *what;
        std::function<void()> expect;
        std::function<CMPIArgs *()> in;
        int outcome;
        std::string trace;
    };
    auto both = [this] { return parentAndMember(); };
    const Case cases[] = {
        {"one argument", [] {},
         [this] {
             CMPIArgs *in = args();
             cmpihost::addReferenceArg(in, "Collection", zoningRef("VORNA_Zone", "a1"));
             return in;
         },
         2, refusalTrace("error 6", 2)},
        {"no args object", [] {}, [] { return static_cast<CMPIArgs *>(nullptr); }, 2,
         refusalTrace("error 6", 2)},
        {"member without InstanceID", [] {},
         [this] {
             CMPIArgs *in = args();
             cmpihost::addReferenceArg(in, "Collection", zoningRef("VORNA_Zone", "a1"));
             cmpihost::addReferenceArg(in, "Member",
                                       pathIn("root/cimv2", "VORNA_ZoneMemberSettingData"));
             return in;
         },
         2, refusalTrace("error", 2)},
        {"parent is no reference", [] {},
         [this] {
             CMPIArgs *in = args();
             cmpihost::addStringArg(in, "Collection", "a1");
             cmpihost::addReferenceArg(in, "Member",
                                       zoningRef("VORNA_ZoneMemberSettingData", "10^6^wwn^0"));
             return in;
         },
         2, refusalTrace("error", 2)},
        {"parent is a zone set", [] {}, [this] { return parentAndMember("VORNA_ZoneSet"); }, 2,
         refusalTrace("error 2", 2)},
        {"member InstanceID can't be split", [&] { memberSplits(10, 0, -1); }, both, 1,
         refusalTrace("error 4", 1)},
        {"parent InstanceID can't be split",
         [&] {
             memberSplits(10, 0);
             EXPECT_CALL(platform, zs_cim_get_fields_from_generic_instance_id(StrEq("a1"), _, _, _))
                 .WillOnce(Return(-1));
         },
         both, 1, refusalTrace("error 4", 1)},
        {"active member",
         [&] {
             memberSplits(10, 1);
             splits("a1", 10, 12, 0);
         },
         both, 3, refusalTrace("error 3", 3)},
        {"active parent",
         [&] {
             memberSplits(10, 0);
             splits("a1", 10, 12, 1);
         },
         both, 3, refusalTrace("error 3", 3)},
        {"member of another VSAN",
         [&] {
             memberSplits(11, 0);
             splits("a1", 10, 12, 0);
         },
         both, 3, refusalTrace("error 3", 3)},
        {"parent of another VSAN",
         [&] {
             memberSplits(10, 0);
             splits("a1", 11, 12, 0);
         },
         both, 3, refusalTrace("error 3", 3)},
        {"zone server refuses",
         [&] {
             memberSplits(10, 0);
             splits("a1", 10, 12, 0);
             addsMember(10, 0, 2, 12, kWwnCode, -1, 57);
         },
         both, 57, refusalTrace("error 5", 4)},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        c.expect();
        testing::internal::CaptureStdout();
        EXPECT_EQ(call(AddZoneMembershipSettingData, zoneService("10"), c.in()), c.outcome);
        EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr(c.trace));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    for (const std::string &refused : refusedVsanTexts())
        EXPECT_EQ(call(AddZoneMembershipSettingData, zoneService(refused), parentAndMember()),
                  ZONE_SERVICE_KEY_REFUSAL);
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(request.doneCount(), 0);
}

}  // namespace
