// Records filled piece by piece hold what printf would have written, cut
// at the end of each field: the cut may fall inside a number, a separator
// or a text, and every byte after the text stays zero.
#include <climits>
#include <string>

#include <gtest/gtest.h>

#include "sim/records.h"

namespace {

// The bytes a field must hold: the text cut to N - 1 characters, then zeros.
template <std::size_t N>
std::string expectedField(const std::string &text) {
    std::string field = text.substr(0, N - 1);
    field.resize(N, '\0');
    return field;
}

template <std::size_t N>
std::string fieldBytes(const char (&field)[N]) {
    return std::string(field, N);
}

const char *activeSuffix(bool active) {
    return active ? "^1" : "^0";
}

TEST(RecordsTest, MemberInstanceIdIsCutWhereverTheFieldEnds) {
    for (const long long vsan : {1LL, 4094LL, static_cast<long long>(INT_MAX)}) {
        for (const unsigned type : {1U, 65535U}) {
            for (const bool active : {true, false}) {
                // From well inside the field to past its end, so that the cut
                // falls in every piece in turn.
                for (std::size_t length = 250; length <= ZP_INSTANCE_ID_LEN + 4; ++length) {
                    const std::string id_text(length, 'w');
                    const std::string value(length, 'v');
                    ZoneMemberRecord record{};
                    zonesim::fillMemberRecord(&record, static_cast<int>(vsan),
                                              static_cast<std::uint16_t>(type), id_text, active,
                                              value);
                    const std::string whole = std::to_string(vsan) + "^" + std::to_string(type) +
                                              "^" + id_text + activeSuffix(active);
                    ASSERT_EQ(expectedField<ZP_INSTANCE_ID_LEN>(whole),
                              fieldBytes(record.instance_id))
                        << "vsan " << vsan << ", type " << type << ", length " << length;
                    ASSERT_EQ(expectedField<ZP_MEMBER_VALUE_LEN>(value),
                              fieldBytes(record.member_value));
                    EXPECT_EQ(type, record.cim_member_type);
                    EXPECT_EQ(nullptr, record.next);
                }
            }
        }
    }
}

TEST(RecordsTest, ObjectRecordsHoldTheirIdAndNameCutToTheirFields) {
    for (const int number : {0, 7, INT_MAX, INT_MIN}) {
        for (std::size_t length = 60; length <= sizeof(ZoneSetRecord::name) + 2; ++length) {
            const std::string name(length, 'n');
            ZoneSetRecord record{};
            zonesim::fillObjectRecord(&record, 4094, number, length % 2 == 0, name);
            const std::string id =
                "4094^" + std::to_string(number) + activeSuffix(length % 2 == 0);
            EXPECT_EQ(expectedField<ZP_INSTANCE_ID_LEN>(id), fieldBytes(record.instance_id));
            EXPECT_EQ(expectedField<sizeof(ZoneSetRecord::name)>(name), fieldBytes(record.name));
        }
    }
}

}  // namespace
