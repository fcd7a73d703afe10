// Member types, WWN texts and TLV packing of the simulated switch.
//
// The C++ API of the unit is hidden inside libzoning_platform.so, so the
// unit is compiled into this program as well; the extern "C" operations
// tested here are the same code the library exports.
#include "sim/member_types.cpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using zonesim::kMaxMemberValueLength;

uint8_t code_of(uint32_t cim_type) {
    uint8_t code = 0;
    EXPECT_EQ(decode_cim_member_type(cim_type, &code), 0) << "CIM type " << cim_type;
    return code;
}

std::vector<unsigned char> encode(uint32_t cim_type, const std::string &text, int *result) {
    uint8_t code = code_of(cim_type);
    std::vector<unsigned char> value(kMaxMemberValueLength, 0xaa);
    *result = get_member_value_from_cim_member_type_value(text.c_str(), code, value.data());
    return value;
}

TEST(MemberTypes, EveryCimTypeHasItsCodeAndValueLength) {
    struct Row {
        uint32_t cim_type;
        uint8_t code;
        int length;
    };
    static constexpr Row kRows[] = {
        {2, 1, 24}, {3, 2, 8},      {4, 3, 8},       {5, 4, 24},     {6, 5, 8},       {10, 109, 8},
        {11, 6, 8}, {32768, 7, 64}, {32769, 8, 255}, {32770, 9, 64}, {32771, 10, 64},
    };
    for (const Row &row : kRows) {
        uint8_t code = 0;
        ASSERT_EQ(decode_cim_member_type(row.cim_type, &code), 0) << row.cim_type;
        EXPECT_EQ(code, row.code) << row.cim_type;
        EXPECT_EQ(get_member_value_length(code), row.length) << row.cim_type;
        EXPECT_EQ(zonesim::cim_type_of_member_code(code), row.cim_type) << row.cim_type;
        // Binary kinds are canonicalised by a formatter; text kinds have none.
        const bool binary =
            row.cim_type == 4 || row.cim_type == 6 || row.cim_type == 10 || row.cim_type == 11;
        EXPECT_EQ(zonesim::member_type_by_cim(row.cim_type)->formatter != nullptr, binary)
            << row.cim_type;
    }
    // The add-time port WWN code is the same member type as 109.
    EXPECT_EQ(get_member_value_length(231), 8);
    EXPECT_EQ(zonesim::cim_type_of_member_code(231), 10u);
    EXPECT_TRUE(zonesim::same_member_code(231, 109));
    EXPECT_FALSE(zonesim::same_member_code(231, 5));
    unsigned char value[8];
    EXPECT_EQ(get_member_value_from_cim_member_type_value("21:00:00:24:ff:4c:a1:b2", 231, value),
              0);
}

TEST(MemberTypes, UnknownTypesAndCodesAreRefused) {
    for (uint32_t cim_type : {0u, 1u, 7u, 8u, 9u, 12u, 32767u, 32772u, 65535u, 65536u + 2u}) {
        uint8_t code = 77;
        EXPECT_NE(decode_cim_member_type(cim_type, &code), 0) << cim_type;
        EXPECT_EQ(code, 77) << "code written for " << cim_type;
    }
    EXPECT_NE(decode_cim_member_type(2, nullptr), 0);
    for (int code : {0, 11, 12, 108, 110, 230, 232, 255}) {
        EXPECT_LE(get_member_value_length(static_cast<uint8_t>(code)), 0) << code;
        unsigned char value[kMaxMemberValueLength];
        EXPECT_NE(get_member_value_from_cim_member_type_value("21:00:00:24:ff:4c:a1:b2",
                                                              static_cast<uint8_t>(code), value),
                  0)
            << code;
    }
    unsigned char value[kMaxMemberValueLength];
    EXPECT_NE(get_member_value_from_cim_member_type_value(nullptr, 1, value), 0);
    EXPECT_NE(get_member_value_from_cim_member_type_value("21000024ff4ca1b2", 1, nullptr), 0);
}

// Text -> value -> member text, and the member text encodes to the same
// value again (what the zone server relies on when it reads an InstanceID).
TEST(MemberTypes, IdentifiersEncodeAndComeBackAsTheirMemberText) {
    struct Row {
        uint32_t cim_type;
        const char *text;
        const char *member_text;
    };
    static const Row kRows[] = {
        {2, "21000024ff4ca1b2", "21000024ff4ca1b2"},
        {2, "21:00:00:24:FF:4c:A1:b2", "21:00:00:24:FF:4c:A1:b2"},
        {2, "21-00-00-24-ff-4c-a1-b2", "21-00-00-24-ff-4c-a1-b2"},
        {3, "0x010203", "0x010203"},
        {3, "0A0B0C", "0A0B0C"},
        {4, "3:17", "3:17"},
        {4, "003:0", "3:0"},
        {4, "239:65535", "239:65535"},
        {5, "20000024FF4CA1B2", "20000024FF4CA1B2"},
        {6, "21-00-00-24-FF-4C-A1-B2", "21:00:00:24:ff:4c:a1:b2"},
        {10, "21000024FF4CA1B2", "21:00:00:24:ff:4c:a1:b2"},
        {10, "21:00:00:24:ff:4c:a1:b2", "21:00:00:24:ff:4c:a1:b2"},
        {11, "10:0x1000", "10:0x00001000"},
        {11, "1:0XFFFFFFFF", "1:0xffffffff"},
        {32768, "fc1/2", "fc1/2"},
        {32768, "FC64/1024 swwn 20:00:00:05:30:00:00:01", "FC64/1024 swwn 20:00:00:05:30:00:00:01"},
        {32768, "fc2/48 domain 10", "fc2/48 domain 10"},
        {32769, "iqn.1991-05.com.example:host 1", "iqn.1991-05.com.example:host 1"},
        {32770, "10.1.2.3", "10.1.2.3"},
        {32770, "10.1.2.0/24", "10.1.2.0/24"},
        {32770, "10.1.2.0/255.255.255.0", "10.1.2.0/255.255.255.0"},
        {32770, "fe80::1/64", "fe80::1/64"},
        {32771, "Host_a-1$^x", "Host_a-1$^x"},
        {32771, "1alias", "1alias"},
    };
    for (const Row &row : kRows) {
        SCOPED_TRACE(std::to_string(row.cim_type) + " " + row.text);
        int result = -1;
        std::vector<unsigned char> value = encode(row.cim_type, row.text, &result);
        ASSERT_EQ(result, 0);
        uint8_t code = code_of(row.cim_type);
        const auto length = static_cast<std::size_t>(get_member_value_length(code));
        // Nothing is written past the value's length.
        for (std::size_t i = length; i < value.size(); ++i) ASSERT_EQ(value[i], 0xaa) << i;
        EXPECT_EQ(zonesim::member_value_text(code, value.data()), row.member_text);

        std::vector<unsigned char> again = encode(row.cim_type, row.member_text, &result);
        ASSERT_EQ(result, 0);
        EXPECT_EQ(std::memcmp(value.data(), again.data(), length), 0);
    }
}

TEST(MemberTypes, TextKindsKeepTheClientTextNulPadded) {
    int result = -1;
    std::vector<unsigned char> value = encode(32771, "alias1", &result);
    ASSERT_EQ(result, 0);
    EXPECT_EQ(std::memcmp(value.data(), "alias1", 6), 0);
    for (std::size_t i = 6; i < 64; ++i) EXPECT_EQ(value[i], 0) << i;

    // A text may fill its whole value: 255 characters of a symbolic name.
    std::string longest(255, 'n');
    value = encode(32769, longest, &result);
    ASSERT_EQ(result, 0);
    EXPECT_EQ(zonesim::member_value_text(code_of(32769), value.data()), longest);
    encode(32769, longest + "n", &result);
    EXPECT_NE(result, 0);
}

TEST(MemberTypes, MalformedIdentifiersAreRefusedAndLeaveTheValueAlone) {
    struct Row {
        uint32_t cim_type;
        const char *text;
    };
    static const Row kRows[] = {
        {2, ""},
        {2, "21000024ff4ca1b"},
        {2, "21000024ff4ca1b2a"},
        {2, "21:00:00:24:ff:4c:a1-b2"},
        {2, "21:00:00:24:ff:4c:a1:g2"},
        {2, "0x21000024ff4ca1"},
        {2, " 21000024ff4ca1b2"},
        {2, "21000024ff4ca1b2 "},
        {2, "21.00.00.24.ff.4c.a1.b2"},
        {2, "2:100:00:24:ff:4c:a1:b2"},
        {3, "0x01020"},
        {3, "0x0102030"},
        {3, "0x01020g"},
        {3, "x010203"},
        {4, "0:1"},
        {4, "240:1"},
        {4, "3:65536"},
        {4, "3:"},
        {4, ":17"},
        {4, "3:17:1"},
        {4, "-3:17"},
        {4, "3 :17"},
        {4, "0x3:17"},
        {4, "3:100000"},
        {5, "20000024FF4CA1"},
        {6, "21:00:00:24:ff:4c:a1"},
        {6, "21:00:00:24:ff:4c:a1:b2:"},
        {10, "hello world"},
        {10, ""},
        {11, "10:1000"},
        {11, "10:0x"},
        {11, "10:0x123456789"},
        {11, "0:0x1"},
        {11, "10:0x1g"},
        {32768, "fc1"},
        {32768, "fc0/1"},
        {32768, "fc1/0"},
        {32768, "fc65/1"},
        {32768, "eth1/1"},
        {32768, "fc1/2 "},
        {32768, "fc1/2 swwn 20:00"},
        {32768, "fc1/2 domain 240"},
        {32768, "fc1/2 vsan 3"},
        {32769, ""},
        {32769, "tab\tinside"},
        {32770, "10.1.2"},
        {32770, "10.1.2.256"},
        {32770, "10.1.2.0/33"},
        {32770, "10.1.2.0/"},
        {32770, "10.1.2.0/255.0.255.0"},
        {32770, "fe80::1/129"},
        {32770, "fe80::1/255.255.0.0"},
        {32770, "host.example.com"},
        {32771, ""},
        {32771, "alias name"},
        {32771, "alias.name"},
    };
    for (const Row &row : kRows) {
        SCOPED_TRACE(std::to_string(row.cim_type) + " \"" + row.text + "\"");
        int result = 0;
        std::vector<unsigned char> value = encode(row.cim_type, row.text, &result);
        EXPECT_NE(result, 0);
        for (std::size_t i = 0; i < value.size(); ++i) ASSERT_EQ(value[i], 0xaa) << i;
    }
    // The longest alias name is 64 characters.
    int result = -1;
    encode(32771, std::string("a") + std::string(63, 'b'), &result);
    EXPECT_EQ(result, 0);
    encode(32771, std::string("a") + std::string(64, 'b'), &result);
    EXPECT_NE(result, 0);
}

TEST(MemberTypes, WwnTextsAreReadStrictly) {
    static const unsigned char kBytes[8] = {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55};
    for (const char *text :
         {"20:00:00:11:22:33:44:55", "2000001122334455", "20-00-00-11-22-33-44-55"}) {
        unsigned char wwn[8] = {};
        ASSERT_EQ(wwn_cim_get_hex_from_str_wwn(text, wwn), 0) << text;
        EXPECT_EQ(std::memcmp(wwn, kBytes, 8), 0) << text;
    }
    unsigned char wwn[8];
    EXPECT_EQ(wwn_cim_get_hex_from_str_wwn("AB:cd:EF:01:23:45:67:89", wwn), 0);
    EXPECT_EQ(wwn[0], 0xab);
    EXPECT_EQ(wwn[2], 0xef);
    for (const char *text :
         {"", "20:00:00:11:22:33:44", "20:00:00:11:22:33:44:55:66", "20:00:00:11-22:33:44:55",
          "200000112233445", "20000011223344555", "0x2000001122334455", "20 00 00 11 22 33 44 55",
          "2000001122334455\n", "2:000:00:11:22:33:44:55", "zz:00:00:11:22:33:44:55"}) {
        unsigned char untouched[8] = {1, 2, 3, 4, 5, 6, 7, 8};
        EXPECT_NE(wwn_cim_get_hex_from_str_wwn(text, untouched), 0) << "\"" << text << "\"";
        EXPECT_EQ(untouched[0], 1) << text;
    }
    EXPECT_NE(wwn_cim_get_hex_from_str_wwn(nullptr, wwn), 0);
    EXPECT_NE(wwn_cim_get_hex_from_str_wwn("2000001122334455", nullptr), 0);
}

TEST(MemberTypes, FormattersWriteCanonicalTexts) {
    static const unsigned char kWwn[8] = {0x21, 0x00, 0x00, 0x24, 0xff, 0x4c, 0xa1, 0xb2};
    char out[128];
    EXPECT_EQ(cim_sprintf_wwn(out, kWwn), 23);
    EXPECT_STREQ(out, "21:00:00:24:ff:4c:a1:b2");

    static const unsigned char kDomainPort[8] = {0, 0, 0, 239, 0, 0, 0xff, 0xff};
    EXPECT_EQ(zs_cim_sprintf_dom_port(out, kDomainPort), 9);
    EXPECT_STREQ(out, "239:65535");

    static const unsigned char kDomainInterface[8] = {0, 0, 0, 10, 0x01, 0x00, 0x20, 0x0a};
    EXPECT_GT(cim_sprintf_dom_interface_hex(out, kDomainInterface), 0);
    EXPECT_STREQ(out, "10:0x0100200a");

    EXPECT_LT(cim_sprintf_wwn(nullptr, kWwn), 0);
    EXPECT_LT(cim_sprintf_wwn(out, nullptr), 0);
    EXPECT_LT(zs_cim_sprintf_dom_port(out, nullptr), 0);
    EXPECT_LT(cim_sprintf_dom_interface_hex(nullptr, kDomainInterface), 0);
}

TEST(MemberTypes, SameMemberValueComparesAsTheSwitchDoes) {
    struct Row {
        uint32_t cim_type;
        const char *a;
        const char *b;
        bool same;
    };
    static const Row kRows[] = {
        {2, "21000024ff4ca1b2", "21:00:00:24:FF:4C:A1:B2", true},
        {2, "21000024ff4ca1b2", "21000024ff4ca1b3", false},
        {3, "0x0a0B0c", "0A0b0C", true},
        {3, "0x0a0b0c", "0x0a0b0d", false},
        {10, "21000024ff4ca1b2", "21-00-00-24-ff-4c-a1-b2", true},
        {32771, "Alias", "alias", false},
        {32771, "alias", "alias", true},
        {32768, "fc1/2", "fc1/3", false},
    };
    for (const Row &row : kRows) {
        SCOPED_TRACE(std::string(row.a) + " vs " + row.b);
        int result = -1;
        std::vector<unsigned char> a = encode(row.cim_type, row.a, &result);
        ASSERT_EQ(result, 0);
        std::vector<unsigned char> b = encode(row.cim_type, row.b, &result);
        ASSERT_EQ(result, 0);
        EXPECT_EQ(zonesim::same_member_value(code_of(row.cim_type), a.data(), b.data()), row.same);
    }
}

TEST(MemberTypes, MemberInstanceIdsSplitAroundTheirText) {
    int result = -1;
    std::vector<unsigned char> alias = encode(32771, "a^b", &result);
    ASSERT_EQ(result, 0);
    std::string id = zonesim::member_instance_id(10, code_of(32771), alias.data(), 0);
    EXPECT_EQ(id, "10^32771^a^b^0");
    auto fields = zonesim::split_member_instance_id(id);
    ASSERT_TRUE(fields.has_value());
    EXPECT_EQ(fields->vsan, 10);
    EXPECT_EQ(fields->cim_type, 32771u);
    EXPECT_EQ(fields->text, "a^b");
    EXPECT_EQ(fields->active, 0);

    std::vector<unsigned char> wwn = encode(10, "21000024FF4CA1B2", &result);
    ASSERT_EQ(result, 0);
    EXPECT_EQ(zonesim::member_instance_id(4094, 231, wwn.data(), 1),
              "4094^10^21:00:00:24:ff:4c:a1:b2^1");
    EXPECT_EQ(zonesim::member_instance_id(1, 0, wwn.data(), 0), "");

    for (const char *bad : {"", "10", "10^2", "10^2^x", "x^2^t^0", "10^y^t^0", "10^2^t^",
                            "10^2^t^z", "-1^2^t^0", "10^^t^0"}) {
        EXPECT_FALSE(zonesim::split_member_instance_id(bad).has_value()) << bad;
    }
    auto empty_text = zonesim::split_member_instance_id("1^2^^0");
    ASSERT_TRUE(empty_text.has_value());
    EXPECT_EQ(empty_text->text, "");
}

TEST(Tlv, AlignedSizesAndTheLimitOfTheLengthField) {
    EXPECT_EQ(tlv_aligned_data_size_get(0), 4u);
    EXPECT_EQ(tlv_aligned_data_size_get(1), 8u);
    EXPECT_EQ(tlv_aligned_data_size_get(4), 8u);
    EXPECT_EQ(tlv_aligned_data_size_get(8), 12u);
    EXPECT_EQ(tlv_aligned_data_size_get(9), 16u);
    EXPECT_EQ(tlv_aligned_data_size_get(65535), 65540u);
    EXPECT_EQ(tlv_aligned_data_size_get(65536), 0u);
    EXPECT_EQ(tlv_aligned_data_size_get(UINT32_MAX), 0u);
}

TEST(Tlv, ItemsAreAppendedWhileATerminatorStillFits) {
    static const unsigned char kWwn[8] = {0x21, 0, 0, 0x24, 0xff, 0x4c, 0xa1, 0xb2};
    // The device-alias create call's buffer: one 8-byte item and its end.
    unsigned char buffer[16];
    std::memset(buffer, 0, sizeof buffer);
    ASSERT_EQ(tlv_aligned_array_add_tlv(buffer, sizeof buffer, 1, 8, kWwn, 0), 0);
    uint16_t type = 0;
    uint16_t length = 0;
    std::memcpy(&type, buffer, 2);
    std::memcpy(&length, buffer + 2, 2);
    EXPECT_EQ(type, 1);
    EXPECT_EQ(length, 8);
    EXPECT_EQ(std::memcmp(buffer + 4, kWwn, 8), 0);
    for (int i = 12; i < 16; ++i) EXPECT_EQ(buffer[i], 0) << i;
    // Full: a second item does not fit.
    EXPECT_NE(tlv_aligned_array_add_tlv(buffer, sizeof buffer, 2, 0, nullptr, 0), 0);
    // Readers that know no size stop at the terminator.
    auto item = zonesim::find_tlv(buffer, SIZE_MAX, 1);
    ASSERT_TRUE(item.has_value());
    EXPECT_EQ(item->length, 8);
    EXPECT_EQ(std::memcmp(item->value, kWwn, 8), 0);
    EXPECT_FALSE(zonesim::find_tlv(buffer, SIZE_MAX, 2).has_value());

    // No room for the terminator behind the item.
    unsigned char exact[12] = {};
    EXPECT_NE(tlv_aligned_array_add_tlv(exact, sizeof exact, 1, 8, kWwn, 0), 0);
    for (unsigned char byte : exact) EXPECT_EQ(byte, 0);

    // Several items, padded to 4 bytes each.
    unsigned char large[64] = {};
    ASSERT_EQ(tlv_aligned_array_add_tlv(large, sizeof large, 7, 3, "abc", 0), 0);
    ASSERT_EQ(tlv_aligned_array_add_tlv(large, sizeof large, 1, 8, kWwn, 0), 0);
    ASSERT_EQ(tlv_aligned_array_add_tlv(large, sizeof large, 9, 0, nullptr, 0), 0);
    auto abc = zonesim::find_tlv(large, sizeof large, 7);
    auto wwn = zonesim::find_tlv(large, sizeof large, 1);
    auto empty = zonesim::find_tlv(large, sizeof large, 9);
    ASSERT_TRUE(abc && wwn && empty);
    EXPECT_EQ(abc->value, large + 4);
    EXPECT_EQ(wwn->value, large + 12);
    EXPECT_EQ(empty->value, large + 24);
    EXPECT_EQ(empty->length, 0);
    EXPECT_EQ(large[7], 0);  // padding of "abc"
}

TEST(Tlv, BadItemsAndBuffersAreRefused) {
    unsigned char buffer[32] = {};
    const unsigned char value[4] = {1, 2, 3, 4};
    EXPECT_NE(tlv_aligned_array_add_tlv(nullptr, 32, 1, 4, value, 0), 0);
    EXPECT_NE(tlv_aligned_array_add_tlv(buffer, sizeof buffer, 0, 4, value, 0), 0);
    EXPECT_NE(tlv_aligned_array_add_tlv(buffer, sizeof buffer, 0x10000, 4, value, 0), 0);
    EXPECT_NE(tlv_aligned_array_add_tlv(buffer, sizeof buffer, 1, 0x10000, value, 0), 0);
    EXPECT_NE(tlv_aligned_array_add_tlv(buffer, sizeof buffer, 1, 4, nullptr, 0), 0);
    EXPECT_NE(tlv_aligned_array_add_tlv(buffer, 3, 1, 0, nullptr, 0), 0);
    for (unsigned char byte : buffer) EXPECT_EQ(byte, 0);

    // An item whose length runs past the buffer stops both the writer and
    // the reader.
    const uint16_t type = 5;
    const uint16_t length = 100;
    std::memcpy(buffer, &type, 2);
    std::memcpy(buffer + 2, &length, 2);
    EXPECT_NE(tlv_aligned_array_add_tlv(buffer, sizeof buffer, 1, 4, value, 0), 0);
    EXPECT_FALSE(zonesim::find_tlv(buffer, sizeof buffer, 5).has_value());
    EXPECT_FALSE(zonesim::find_tlv(nullptr, 16, 5).has_value());
}

}  // namespace
