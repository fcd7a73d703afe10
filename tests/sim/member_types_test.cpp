// Member types, WWN texts, member InstanceIDs and TLV packing of the
// simulated switch: the type table, the accepted and refused spellings of
// every kind (a refusal writes nothing), the canonical texts and the
// comparison of members.
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

// The value of a text; bytes the encoder doesn't write stay 0xaa.
std::vector<unsigned char> encode(uint32_t cim_type, const std::string &text, int *result) {
    std::vector<unsigned char> value(kMaxMemberValueLength, 0xaa);
    *result =
        get_member_value_from_cim_member_type_value(text.c_str(), code_of(cim_type), value.data());
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
        SCOPED_TRACE(row.cim_type);
        EXPECT_EQ(code_of(row.cim_type), row.code);
        EXPECT_EQ(get_member_value_length(row.code), row.length);
        EXPECT_EQ(zonesim::cim_type_of_member_code(row.code), row.cim_type);
        // Binary kinds are canonicalised by a formatter; text kinds have none.
        const bool binary =
            row.cim_type == 4 || row.cim_type == 6 || row.cim_type == 10 || row.cim_type == 11;
        EXPECT_EQ(zonesim::member_type_by_cim(row.cim_type)->formatter != nullptr, binary);
    }
    // The add-time port WWN code is the same member type as 109.
    EXPECT_EQ(get_member_value_length(231), 8);
    EXPECT_EQ(zonesim::cim_type_of_member_code(231), 10u);
    EXPECT_TRUE(zonesim::same_member_code(231, 109));
    EXPECT_FALSE(zonesim::same_member_code(231, 5));
    unsigned char value[8];
    EXPECT_EQ(get_member_value_from_cim_member_type_value("21:00:00:24:ff:4c:a1:b2", 231, value),
              0);

    // Unknown types and codes are refused, and nothing is written.
    for (uint32_t cim_type : {0u, 1u, 7u, 8u, 9u, 12u, 32767u, 32772u, 65535u, 65536u + 2u}) {
        uint8_t code = 77;
        EXPECT_NE(decode_cim_member_type(cim_type, &code), 0) << cim_type;
        EXPECT_EQ(code, 77) << "code written for " << cim_type;
    }
    EXPECT_NE(decode_cim_member_type(2, nullptr), 0);
    unsigned char buffer[kMaxMemberValueLength];
    for (int code : {0, 11, 12, 108, 110, 230, 232, 255}) {
        EXPECT_LE(get_member_value_length(static_cast<uint8_t>(code)), 0) << code;
        EXPECT_NE(get_member_value_from_cim_member_type_value("21:00:00:24:ff:4c:a1:b2",
                                                              static_cast<uint8_t>(code), buffer),
                  0)
            << code;
    }
    EXPECT_NE(get_member_value_from_cim_member_type_value(nullptr, 1, buffer), 0);
    EXPECT_NE(get_member_value_from_cim_member_type_value("21000024ff4ca1b2", 1, nullptr), 0);
}

// Text -> value -> member text, and the member text encodes to the same
// value again (what the zone server relies on when it reads an InstanceID).
TEST(MemberTypes, IdentifiersEncodeAndComeBackAsTheirMemberText) {
    struct Row {
        uint32_t cim_type;
        std::string text;
        std::string member_text;
    };
    std::vector<Row> rows = {
        // Binary kinds come back canonical.
        {4, "003:0", "3:0"},
        {4, "239:65535", "239:65535"},
        {6, "21-00-00-24-FF-4C-A1-B2", "21:00:00:24:ff:4c:a1:b2"},
        {10, "21000024FF4CA1B2", "21:00:00:24:ff:4c:a1:b2"},
        {10, "21:00:00:24:ff:4c:a1:b2", "21:00:00:24:ff:4c:a1:b2"},
        {11, "10:0x1000", "10:0x00001000"},
        {11, "1:0XFFFFFFFF", "1:0xffffffff"},
    };
    // Text kinds come back as written; a text may fill its whole value.
    const std::pair<uint32_t, std::vector<std::string>> kept[] = {
        {2, {"21000024ff4ca1b2", "21:00:00:24:FF:4c:A1:b2", "21-00-00-24-ff-4c-a1-b2"}},
        {3, {"0x010203", "0A0B0C"}},
        {5, {"20000024FF4CA1B2"}},
        {32768, {"fc1/2", "FC64/1024 swwn 20:00:00:05:30:00:00:01", "fc2/48 domain 10"}},
        {32769, {"iqn.1991-05.com.example:host 1", std::string(255, 'n')}},
        {32770, {"10.1.2.3", "10.1.2.0/24", "10.1.2.0/255.255.255.0", "fe80::1/64"}},
        {32771, {"Host_a-1$^x", "1alias", "a" + std::string(63, 'b')}},
    };
    for (const auto &[cim_type, texts] : kept)
        for (const std::string &text : texts) rows.push_back({cim_type, text, text});
    for (const Row &row : rows) {
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

    // Text kinds keep the client's text, NUL-padded.
    int result = -1;
    std::vector<unsigned char> value = encode(32771, "alias1", &result);
    ASSERT_EQ(result, 0);
    EXPECT_EQ(std::memcmp(value.data(), "alias1", 6), 0);
    for (std::size_t i = 6; i < 64; ++i) EXPECT_EQ(value[i], 0) << i;
}

TEST(MemberTypes, MalformedIdentifiersAreRefusedAndLeaveTheValueAlone) {
    struct Row {
        uint32_t cim_type;
        std::vector<std::string> texts;
    };
    const Row kRows[] = {
        {2,
         {"", "21000024ff4ca1b", "21000024ff4ca1b2a", "21:00:00:24:ff:4c:a1-b2",
          "21:00:00:24:ff:4c:a1:g2", "0x21000024ff4ca1", " 21000024ff4ca1b2", "21000024ff4ca1b2 ",
          "21.00.00.24.ff.4c.a1.b2", "2:100:00:24:ff:4c:a1:b2"}},
        {3, {"0x01020", "0x0102030", "0x01020g", "x010203"}},
        {4,
         {"0:1", "240:1", "3:65536", "3:", ":17", "3:17:1", "-3:17", "3 :17", "0x3:17",
          "3:100000"}},
        {5, {"20000024FF4CA1"}},
        {6, {"21:00:00:24:ff:4c:a1", "21:00:00:24:ff:4c:a1:b2:"}},
        {10, {"hello world", ""}},
        {11, {"10:1000", "10:0x", "10:0x123456789", "0:0x1", "10:0x1g"}},
        {32768,
         {"fc1", "fc0/1", "fc1/0", "fc65/1", "eth1/1", "fc1/2 ", "fc1/2 swwn 20:00",
          "fc1/2 domain 240", "fc1/2 vsan 3"}},
        {32769, {"", "tab\tinside", std::string(256, 'n')}},
        {32770,
         {"10.1.2", "10.1.2.256", "10.1.2.0/33", "10.1.2.0/", "10.1.2.0/255.0.255.0", "fe80::1/129",
          "fe80::1/255.255.0.0", "host.example.com"}},
        {32771, {"", "alias name", "alias.name", "a" + std::string(64, 'b')}},
    };
    for (const Row &row : kRows) {
        for (const std::string &text : row.texts) {
            SCOPED_TRACE(std::to_string(row.cim_type) + " \"" + text + "\"");
            int result = 0;
            std::vector<unsigned char> value = encode(row.cim_type, text, &result);
            EXPECT_NE(result, 0);
            for (std::size_t i = 0; i < value.size(); ++i) ASSERT_EQ(value[i], 0xaa) << i;
        }
    }
}

// The WWN reader refuses what the type-2 rows above refuse (it is the same
// parser) and the formatters' texts are the round trips above: what is left
// are the bytes, the lengths answered and the missing arguments.
TEST(MemberTypes, WwnReaderAndFormattersAnswerBytesAndLengthsAndRefuseNulls) {
    static const unsigned char kBytes[8] = {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0xab};
    for (const char *text :
         {"20:00:00:11:22:33:44:ab", "20000011223344AB", "20-00-00-11-22-33-44-aB"}) {
        unsigned char wwn[8] = {};
        ASSERT_EQ(wwn_cim_get_hex_from_str_wwn(text, wwn), 0) << text;
        EXPECT_EQ(std::memcmp(wwn, kBytes, 8), 0) << text;
    }
    unsigned char untouched[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_NE(wwn_cim_get_hex_from_str_wwn("20:00:00:11:22:33:44:zz", untouched), 0);
    EXPECT_EQ(untouched[0], 1);
    EXPECT_NE(wwn_cim_get_hex_from_str_wwn(nullptr, untouched), 0);
    EXPECT_NE(wwn_cim_get_hex_from_str_wwn("2000001122334455", nullptr), 0);

    char out[128];
    EXPECT_EQ(cim_sprintf_wwn(out, kBytes), 23);
    static const unsigned char kDomainPort[8] = {0, 0, 0, 239, 0, 0, 0xff, 0xff};
    EXPECT_EQ(zs_cim_sprintf_dom_port(out, kDomainPort), 9);
    EXPECT_GT(cim_sprintf_dom_interface_hex(out, kDomainPort), 0);
    EXPECT_LT(cim_sprintf_wwn(nullptr, kBytes), 0);
    EXPECT_LT(cim_sprintf_wwn(out, nullptr), 0);
    EXPECT_LT(zs_cim_sprintf_dom_port(out, nullptr), 0);
    EXPECT_LT(cim_sprintf_dom_interface_hex(nullptr, kDomainPort), 0);
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
        int result_a = -1, result_b = -1;
        std::vector<unsigned char> a = encode(row.cim_type, row.a, &result_a);
        std::vector<unsigned char> b = encode(row.cim_type, row.b, &result_b);
        ASSERT_EQ(result_a | result_b, 0);
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

TEST(Tlv, ItemsArePaddedAndAppendedWhileATerminatorStillFits) {
    // Aligned sizes, and the limit of the 16-bit length field.
    static constexpr std::pair<uint32_t, uint32_t> kSizes[] = {
        {0, 4}, {1, 8}, {4, 8}, {8, 12}, {9, 16}, {65535, 65540}, {65536, 0}, {UINT32_MAX, 0}};
    for (const auto &[length, size] : kSizes) EXPECT_EQ(tlv_aligned_data_size_get(length), size);

    static const unsigned char kWwn[8] = {0x21, 0, 0, 0x24, 0xff, 0x4c, 0xa1, 0xb2};
    // The device-alias create call's buffer: one 8-byte item and its end.
    unsigned char buffer[16];
    std::memset(buffer, 0, sizeof buffer);
    ASSERT_EQ(tlv_aligned_array_add_tlv(buffer, sizeof buffer, 1, 8, kWwn, 0), 0);
    uint16_t header[2] = {};
    std::memcpy(header, buffer, 4);
    EXPECT_EQ(header[0], 1);
    EXPECT_EQ(header[1], 8);
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
    const uint16_t header[2] = {5, 100};
    std::memcpy(buffer, header, 4);
    EXPECT_NE(tlv_aligned_array_add_tlv(buffer, sizeof buffer, 1, 4, value, 0), 0);
    EXPECT_FALSE(zonesim::find_tlv(buffer, sizeof buffer, 5).has_value());
    EXPECT_FALSE(zonesim::find_tlv(nullptr, 16, 5).has_value());
}

}  // namespace
