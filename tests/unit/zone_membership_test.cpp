// CreateZoneMembershipSettingData and AddZoneMembershipSettingData: member
// conversion through the platform, the 109 -> 231 code, the member
// InstanceID and its text by member type, the add call, and every refusal
// with its trace and outcome.
#include <array>

#include "methods/method_fixture.h"

namespace {

using namespace method_test;

constexpr std::array<unsigned char, 8> kWwn = {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55};
constexpr uint8_t kWwnCode = 3;
constexpr const char *kWwnText = "2000001122334455";
constexpr const char *kMemberId = "10^6^wwn^0";

// The platform's answers, in call order, for a member joining parent "p1"
// in VSAN 10. A call stops at its first refusal: `calls` says how many of
// these it reaches. Creating: decode, length, value, parent split, add.
// Adding an existing member: member split, parent split, add.
struct Platform {
    int calls;
    int decode = 0, length = 8, value = 0;
    int member_split = 0, member_vsan = 10, member_active = 0;
    int split = 0, vsan = 10, active = 0, add = 0;
    CMPIUint16 type = 6;
    uint8_t code = kWwnCode;
    uint32_t added_code = kWwnCode;
    int parent_type = 0;
    std::string identifier = kWwnText;
};

class ZoneMembershipTest : public MethodTest {
  protected:
    CMPIObjectPath *parent(const char *cls = "VORNA_Zone") { return zoningRef(cls, "p1"); }
    CMPIArgs *wwnMember(const CMPIObjectPath *parent) {
        return argsOf({u16(6), str(kWwnText), ref(parent)});
    }

    // Expects the platform calls of creating (or else adding) a member, up
    // to `calls` of them.
    void expectCalls(const Platform &p, bool create) {
        InSequence order;
        int made = 0;
        auto next = [&] { return made++ < p.calls; };
        if (create) {
            if (!next()) return;
            EXPECT_CALL(platform, decode_cim_member_type(p.type, _))
                .WillOnce(DoAll(SetArgPointee<1>(p.code), Return(p.decode)));
            if (!next()) return;
            EXPECT_CALL(platform, get_member_value_length(p.code)).WillOnce(Return(p.length));
            if (!next()) return;
            EXPECT_CALL(platform,
                        get_member_value_from_cim_member_type_value(StrEq(p.identifier), p.code, _))
                .WillOnce([answer = p.value](const char *, uint8_t, unsigned char *value) {
                    std::memcpy(value, kWwn.data(), kWwn.size());
                    return answer;
                });
        } else {
            if (!next()) return;
            EXPECT_CALL(platform, zs_cim_get_fields_from_member_instance_id(StrEq(kMemberId), _, _,
                                                                            _, _, _, 0))
                .WillOnce([p](const char *, int *vsan, uint8_t *code, unsigned char *value,
                              int *length, int *active, int) {
                    *vsan = p.member_vsan;
                    *code = kWwnCode;
                    std::memcpy(value, kWwn.data(), kWwn.size());
                    *length = 8;
                    *active = p.member_active;
                    return p.member_split;
                });
        }
        const int number = create ? 4 : 12;
        if (!next()) return;
        splits("p1", p.vsan, number, p.active, p.split);
        if (!next()) return;
        addsMember(p, number);
    }
    // The add call gets the parent's fields and the encoded WWN; a refusal
    // comes with the zone server's code 57.
    void addsMember(const Platform &p, int number) {
        EXPECT_CALL(platform, zs_cim_add_zoning_member(kQueue, 1, 10, 0, p.parent_type, number,
                                                       p.added_code, _, _, _))
            .WillOnce([answer = p.add](int, int, int, int, int, int, uint32_t, unsigned char *value,
                                       int *length, int *error) {
                EXPECT_EQ(*length, 8);
                EXPECT_THAT(std::vector<unsigned char>(value, value + 8),
                            testing::ElementsAreArray(kWwn));
                *error = answer != 0 ? 57 : 0;
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

// A new member is converted, added to its parent and named: types 4, 6, 10
// and 11 by the platform's formatting of the converted value, the others by
// the client's identifier (cut to 253 characters). Code 109 converts the
// value as 109 and is added as 231. The reference goes to the output.
TEST_F(ZoneMembershipTest, CreatesAMemberInItsParentAndNamesItByType) {
    struct Case {
        CMPIUint16 type;
        const char *parent_class;
        int parent_type;
        const char *formatted;  // null: the client's text stays
        const char *trace;
        uint8_t code;
        std::string identifier;
    };
    const std::string wwn = "20:00:00:11:22:33:44:55";
    const Case cases[] = {
        {6, "VORNA_Zone", 0, wwn.c_str(), "member_id :: 20:00:00:11:22:33:44:55 \n", kWwnCode,
         kWwnText},
        {4, "VORNA_Zone", 0, "0x01:5", "member_id for cim_member_type == 4 :: 0x01:5 \n", kWwnCode,
         "Client Spelling 4"},
        {10, "VORNA_ZoneAlias", 2, wwn.c_str(), "member_id :: 20:00", kWwnCode, "Spelling 10"},
        {11, "VORNA_Zone", 0, "0x01:0x1a", "member_id for cim_member_type == 11 :: 0x01:0x1a \n",
         kWwnCode, "Client Spelling 11"},
        {1, "VORNA_ZoneAlias", 2, nullptr, "", 109, "Client Spelling 1"},
        {5, "VORNA_Zone", 0, nullptr, "", kWwnCode, std::string(300, 'i')},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.type);
        const std::string identifier = c.identifier.substr(0, 253);
        ZoneMemberRecord seen{};
        output = request.newArgs();
        auto writes = [text = c.formatted](char *out, const unsigned char *value) {
            EXPECT_EQ(std::memcmp(value, kWwn.data(), kWwn.size()), 0);
            std::strcpy(out, text);
            return 0;
        };
        {
            InSequence order;
            expectCalls(Platform{.calls = 5,
                                 .type = c.type,
                                 .code = c.code,
                                 .added_code = c.code == 109 ? 231u : c.code,
                                 .parent_type = c.parent_type,
                                 .identifier = identifier},
                        true);
            if (c.type == 4) EXPECT_CALL(platform, zs_cim_sprintf_dom_port(_, _)).WillOnce(writes);
            if (c.type == 6 || c.type == 10)
                EXPECT_CALL(platform, cim_sprintf_wwn(_, _)).WillOnce(writes);
            if (c.type == 11)
                EXPECT_CALL(platform, cim_sprintf_dom_interface_hex(_, _)).WillOnce(writes);
            buildsMemberReference(seen);
        }
        EXPECT_EQ(call(ZoneMemberCreation, zoneService("10"),
                       argsOf({u16(c.type), str(c.identifier), ref(parent(c.parent_class))})),
                  0);
        const std::string text = c.formatted != nullptr ? c.formatted : identifier;
        EXPECT_EQ(std::string(seen.instance_id),
                  "10^" + std::to_string(c.type) + "^" + text + "^0");
        EXPECT_EQ(seen.cim_member_type, c.type);
        EXPECT_EQ(std::string(seen.member_value), identifier);
        EXPECT_EQ(outputRef(),
                  "ZoneMembershipSettingData -> root/cimv2:VORNA_ZoneMemberSettingData");
        EXPECT_THAT(trace, HasSubstr(c.trace));
        EXPECT_THAT(trace, HasSubstr(" ZoneProvider:invokeMethod(): ZoneMbrData - Type is " +
                                     std::to_string(c.type) + ", id is " + identifier + " \n"));
        EXPECT_THAT(trace, HasSubstr("No Error in ZoneMembershipSettingData\n"));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_EQ(returned(), std::vector<std::string>(std::size(cases), "sint32 0"));
    EXPECT_EQ(request.doneCount(), 0);
}

TEST_F(ZoneMembershipTest, CreationRefusalsLeaveTheZoneServerAlone) {
    struct Case {
        const char *what;
        Platform answers;
        CMPIArgs *in;
        int outcome;
        const char *trace;
    };
    CMPIArgs *member = wwnMember(parent());
    const Case cases[] = {
        // The parent is wrong too: the member type is reported first.
        {"unknown member type", Platform{.calls = 1, .decode = -1},
         wwnMember(parent("VORNA_ZoneSet")), 2, "decode_cim_member_type - Invalid param 1 \n"},
        {"no value length", Platform{.calls = 2, .length = 0}, member, 2,
         "get_member_value_length\n"},
        // A length the value field can't hold is no length either.
        {"value length over 256", Platform{.calls = 2, .length = 257}, member, 2,
         "get_member_value_length\n"},
        {"unconvertible identifier", Platform{.calls = 3, .value = -1}, member, 2,
         "Error get_member_value_from_cim_member_type_value\n"},
        {"parent without InstanceID", Platform{.calls = 3},
         wwnMember(pathIn("root/cimv2", "VORNA_Zone")), 2, "ZoneMbrData - Incvalid param 2 \n"},
        {"parent position holds no reference", Platform{.calls = 3},
         argsOf({u16(6), str(kWwnText), str("p1")}), 2, "ZoneMbrData - Incvalid param 2 \n"},
        {"parent class in other case", Platform{.calls = 3}, wwnMember(parent("vorna_zone")), 2,
         "ZoneMbrData - Incvalid param 3 \n"},
        {"parent InstanceID can't be split", Platform{.calls = 4, .split = -1}, member, 1,
         "ZoneMbrData - parent type is 0 \n"},
        {"active parent", Platform{.calls = 4, .active = 1}, member, 3,
         "vsan_index 10 z_v_id 10 \n"},
        {"parent of another VSAN", Platform{.calls = 4, .vsan = 11}, member, 3,
         "vsan_index 10 z_v_id 11 \n"},
        {"zone server refuses", Platform{.calls = 5, .add = -1}, member, 57,
         "Error in ZoneMembershipSettingData\n"},
        {"two arguments", Platform{.calls = 0}, argsOf({u16(6), str("x")}), 2, ""},
        {"member type as a string", Platform{.calls = 0},
         argsOf({str("6"), str("x"), ref(parent())}), 2, ""},
        {"identifier that is no text", Platform{.calls = 0},
         argsOf({u16(6), u16(6), ref(parent())}), 2, ""},
        {"null identifier", Platform{.calls = 0},
         argsOf({u16(6), nullOf(CMPI_string), ref(parent())}), 2, ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        expectCalls(c.answers, true);
        EXPECT_EQ(call(ZoneMemberCreation, zoneService("10"), c.in), c.outcome);
        EXPECT_THAT(trace, HasSubstr(c.trace));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_EQ(outputCount(), 0u);
    EXPECT_TRUE(returned().empty());
}

// An existing member is added to its parent with the code and value its
// InstanceID gives; member first, then the parent are split and checked.
// Each refusal prints its own numbered line.
TEST_F(ZoneMembershipTest, AddsAnExistingMemberOrPrintsTheRefusalLine) {
    struct Case {
        const char *what;
        Platform answers;
        CMPIArgs *in;
        int outcome;
        const char *line;
    };
    const Arg member = ref(zoningRef("VORNA_ZoneMemberSettingData", kMemberId));
    CMPIArgs *both = argsOf({ref(parent()), member});
    const Case cases[] = {
        {"added to an alias", Platform{.calls = 3, .parent_type = 2},
         argsOf({ref(parent("VORNA_ZoneAlias")), member}), 0, "ret code is 0"},
        {"one argument", Platform{.calls = 0}, argsOf({ref(parent())}), 2, "error 6 is 2"},
        {"member without InstanceID", Platform{.calls = 0},
         argsOf({ref(parent()), ref(pathIn("root/cimv2", "VORNA_ZoneMemberSettingData"))}), 2,
         "error is 2"},
        {"parent is no reference", Platform{.calls = 0}, argsOf({str("p1"), member}), 2,
         "error is 2"},
        {"parent is a zone set", Platform{.calls = 0},
         argsOf({ref(parent("VORNA_ZoneSet")), member}), 2, "error 2 is 2"},
        {"member InstanceID can't be split", Platform{.calls = 1, .member_split = -1}, both, 1,
         "error 4 is 1"},
        {"parent InstanceID can't be split", Platform{.calls = 2, .split = -1}, both, 1,
         "error 4 is 1"},
        {"active member", Platform{.calls = 2, .member_active = 1}, both, 3, "error 3 is 3"},
        {"active parent", Platform{.calls = 2, .active = 1}, both, 3, "error 3 is 3"},
        {"member of another VSAN", Platform{.calls = 2, .member_vsan = 11}, both, 3,
         "error 3 is 3"},
        {"parent of another VSAN", Platform{.calls = 2, .vsan = 11}, both, 3, "error 3 is 3"},
        {"zone server refuses", Platform{.calls = 3, .add = -1}, both, 57, "error 5 is 4"},
    };
    const std::string twice = "*** zone p1 and zone mem name 10^6^wwn^0 in new_zone_provider **\n";
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        expectCalls(c.answers, false);
        EXPECT_EQ(call(AddZoneMembershipSettingData, zoneService("10"), c.in), c.outcome);
        EXPECT_THAT(trace,
                    HasSubstr(std::string(" ZoneProvider:invokeMethod(): Add  ZoneMbrData - ") +
                              c.line + "\n"));
        EXPECT_THAT(trace, HasSubstr("\nstat fail for /etc/cim_debug_provider_zone\n"));
        // Printed twice just before the zone server is asked.
        EXPECT_EQ(trace.find(twice + twice) != std::string::npos, c.answers.calls == 3);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_EQ(returned(), std::vector<std::string>{"sint32 0"});
    EXPECT_EQ(request.doneCount(), 1);
    EXPECT_EQ(outputCount(), 0u);
}

}  // namespace
