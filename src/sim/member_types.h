// Zone member types of the simulated switch.
//
// A zone member is named by a CIM member type (what the client sees) and, on
// the zone server side, by a one-byte member type code and an encoded value
// of a fixed length per code. This unit owns the one table that ties the two
// together and everything that converts between text and encoded value:
//
//   CIM  code  length  kind              text form
//   2      1     24    WWN text          16 hex digits, optional ':' or '-'
//                                        between the pairs; kept as written
//   3      2      8    FC ID text        6 hex digits, optional 0x; as written
//   4      3      8    domain:port       "3:17" (domain 1-239, port 0-65535)
//   5      4     24    WWN text          node WWN, as for type 2
//   6      5      8    WWN               fabric-port WWN, "21:00:..:b2"
//   10   109      8    WWN               port WWN; 231 is its add-time code
//   11     6      8    domain+interface  "10:0x00010002" (interface in hex)
//   32768  7     64    interface name    fc<slot>/<port>, optionally followed
//                                        by " swwn <WWN>" or " domain <id>"
//   32769  8    255    symbolic name     1-255 printable characters
//   32770  9     64    IP address        IPv4[/prefix|/mask], IPv6[/prefix]
//   32771 10     64    device alias      1-64 of letters, digits, - _ $ ^
//
// Binary kinds (4, 6, 10, 11) are canonicalised: their member text is what
// the formatter makes of the value (WWNs lower case with colons). Text kinds
// keep the client's text byte for byte, NUL-padded to the value length (a
// text may fill the whole value, so read it with strnlen).
//
// The zone server receives 231 instead of 109 when the provider adds a port
// WWN member; both codes name the same member type, so compare codes with
// same_member_code().
//
// Member InstanceIDs ("vsan^cim type^member text^active") may carry '^'
// inside the member text (device-alias and symbolic names allow it): the
// text is everything between the second '^' and the last one.
//
// Nothing here is exported from the library except the extern "C"
// operations of platform/zoning_platform.h; the C++ API below is for the
// other units of the simulated switch. None of it throws except the
// std::string conveniences, which may throw std::bad_alloc.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zonesim {

inline constexpr uint8_t kPortWwnCode = 109;
inline constexpr uint8_t kPortWwnAddCode = 231;
// Longest encoded value; also the size of the provider's value buffers.
inline constexpr std::size_t kMaxMemberValueLength = 255;
// A buffer of this size holds any member text and its NUL (formatters write
// at most 128 bytes; texts are at most kMaxMemberValueLength bytes).
inline constexpr std::size_t kMemberTextSize = kMaxMemberValueLength + 1;

enum class MemberKind : uint8_t {
    WwnText,
    FcidText,
    DomainPort,
    Wwn,
    DomainInterface,
    InterfaceName,
    SymbolicName,
    IpAddress,
    DeviceAliasName,
};

// Formats an encoded value into a text of at most 128 bytes (with its NUL).
using MemberFormatter = int (*)(char *out, const unsigned char *value);

struct MemberType {
    uint16_t cim_type;
    uint8_t code;
    uint8_t value_length;
    MemberKind kind;
    MemberFormatter formatter;  // null for text kinds
};

// 231 and 109 are one member type; every other code is its own.
constexpr uint8_t canonical_member_code(uint8_t code) {
    return code == kPortWwnAddCode ? kPortWwnCode : code;
}
constexpr bool same_member_code(uint8_t a, uint8_t b) {
    return canonical_member_code(a) == canonical_member_code(b);
}

// Rows of the table; null when unknown. member_type_by_code accepts 231.
const MemberType *member_type_by_cim(uint32_t cim_type);
const MemberType *member_type_by_code(uint8_t code);

std::optional<uint8_t> member_code_of_cim_type(uint32_t cim_type);
// 231 answers the CIM type of 109.
std::optional<uint16_t> cim_type_of_member_code(uint8_t code);
// Value length in bytes of that code; -1 when unknown.
int member_value_length(uint8_t code);

// Checks the text against the code's form and, when it fits, writes exactly
// member_value_length(code) bytes into value. Nothing is written on refusal.
bool encode_member_value(uint8_t code, std::string_view text, unsigned char *value);
bool is_valid_member_text(uint8_t code, std::string_view text);

// The member text of an encoded value: the formatter's output for binary
// kinds, the stored text for text kinds. False (and out empty) for an
// unknown code or an out buffer too small; kMemberTextSize always fits.
bool member_value_text(uint8_t code, const unsigned char *value, char *out, std::size_t out_size);
std::string member_value_text(uint8_t code, const unsigned char *value);

// Whether two encoded values of one member type name the same member, as
// the switch compares them: WWN texts by their bytes (case and separators
// don't matter), FC ID texts by their digits, everything else byte for byte.
bool same_member_value(uint8_t code, const unsigned char *a, const unsigned char *b);

// The member InstanceID "vsan^cim type^member text^active"; empty for an
// unknown code.
std::string member_instance_id(int vsan, uint8_t code, const unsigned char *value, int active);

struct MemberInstanceIdFields {
    int vsan = 0;
    uint32_t cim_type = 0;
    std::string_view text;  // points into the InstanceID given
    int active = 0;
};
// Splits a member InstanceID; nullopt when it isn't of the member form
// (numbers are plain decimals, the VSAN and type non-negative).
std::optional<MemberInstanceIdFields> split_member_instance_id(std::string_view id);

// WWN text to its 8 bytes in text order (16 hex digits, optionally with the
// same ':' or '-' between every pair); false for anything else.
bool parse_wwn_text(std::string_view text, unsigned char wwn[8]);
// "21:00:00:24:ff:4c:a1:b2": lower case, 23 characters and a NUL.
void format_wwn(const unsigned char wwn[8], char out[24]);

// Type-length-value arrays as tlv_aligned_array_add_tlv writes them: items
// of a 16-bit type and a 16-bit length (host order), the value padded with
// zeros to a multiple of 4 bytes; a zero type and length end the array.
struct TlvItem {
    uint16_t type;
    uint16_t length;
    const unsigned char *value;
};
// The first item of that type within size bytes; nullopt when absent or
// when an item runs past the buffer.
std::optional<TlvItem> find_tlv(const unsigned char *buffer, std::size_t size, uint16_t type);

}  // namespace zonesim
