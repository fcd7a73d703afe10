// Zone member types, WWN texts and TLV packing of the simulated switch.
#include "sim/member_types.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <new>

#include "platform/zoning_platform.h"

namespace zonesim {
namespace {

constexpr std::size_t kWwnBytes = 8;
constexpr unsigned kMinDomain = 1;
constexpr unsigned kMaxDomain = 239;
constexpr unsigned kMaxPort = 65535;
constexpr unsigned kMaxSlot = 64;
constexpr unsigned kMaxInterfacePort = 1024;
constexpr std::size_t kMaxAliasName = 64;

// ---- the table ----------------------------------------------------------

constexpr MemberType kMemberTypes[] = {
    {2, 1, 24, MemberKind::WwnText, nullptr},
    {3, 2, 8, MemberKind::FcidText, nullptr},
    {4, 3, 8, MemberKind::DomainPort, zs_cim_sprintf_dom_port},
    {5, 4, 24, MemberKind::WwnText, nullptr},
    {6, 5, 8, MemberKind::Wwn, cim_sprintf_wwn},
    {10, kPortWwnCode, 8, MemberKind::Wwn, cim_sprintf_wwn},
    {11, 6, 8, MemberKind::DomainInterface, cim_sprintf_dom_interface_hex},
    {32768, 7, 64, MemberKind::InterfaceName, nullptr},
    {32769, 8, 255, MemberKind::SymbolicName, nullptr},
    {32770, 9, 64, MemberKind::IpAddress, nullptr},
    {32771, 10, 64, MemberKind::DeviceAliasName, nullptr},
};

constexpr bool is_binary(MemberKind kind) {
    return kind == MemberKind::DomainPort || kind == MemberKind::Wwn ||
           kind == MemberKind::DomainInterface;
}

// The table must stay a one-to-one map, with 231 left free for the add-time
// port WWN code, and every row must be able to hold its own values. (Whether
// a binary row has its formatter can't be asked here: with sanitizers the
// address of a function is not a constant expression.)
constexpr bool table_is_consistent() {
    for (std::size_t i = 0; i < std::size(kMemberTypes); ++i) {
        const MemberType &row = kMemberTypes[i];
        if (row.code == 0 || row.code == kPortWwnAddCode || row.value_length == 0) return false;
        if (is_binary(row.kind) && row.value_length != 8) return false;
        for (std::size_t j = i + 1; j < std::size(kMemberTypes); ++j) {
            if (row.cim_type == kMemberTypes[j].cim_type) return false;
            if (row.code == kMemberTypes[j].code) return false;
        }
    }
    return true;
}
static_assert(table_is_consistent(), "member type table is not one-to-one");

// ---- small text helpers -------------------------------------------------

constexpr int hex_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}
constexpr bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool starts_with_ignoring_case(std::string_view text, std::string_view prefix) {
    if (text.size() < prefix.size()) return false;
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        char a = text[i];
        if (a >= 'A' && a <= 'Z') a = static_cast<char>(a - 'A' + 'a');
        if (a != prefix[i]) return false;
    }
    return true;
}

// A plain decimal of 1-5 digits (no sign, no blanks) within [low, high];
// consumes it from the front of text.
std::optional<unsigned> take_decimal(std::string_view &text, unsigned low, unsigned high) {
    std::size_t n = 0;
    unsigned value = 0;
    while (n < text.size() && is_digit(text[n])) {
        if (n == 5) return std::nullopt;
        value = value * 10 + static_cast<unsigned>(text[n] - '0');
        ++n;
    }
    if (n == 0 || value < low || value > high) return std::nullopt;
    text.remove_prefix(n);
    return value;
}

bool take_char(std::string_view &text, char c) {
    if (text.empty() || text.front() != c) return false;
    text.remove_prefix(1);
    return true;
}

bool take_prefix_ignoring_case(std::string_view &text, std::string_view prefix) {
    if (!starts_with_ignoring_case(text, prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

// 1 to max_digits hex digits making up the whole rest of text.
std::optional<uint32_t> whole_hex(std::string_view text, std::size_t max_digits) {
    if (text.empty() || text.size() > max_digits) return std::nullopt;
    uint32_t value = 0;
    for (char c : text) {
        int digit = hex_value(c);
        if (digit < 0) return std::nullopt;
        value = value << 4 | static_cast<uint32_t>(digit);
    }
    return value;
}

void put_be32(unsigned char *out, uint32_t v) {
    out[0] = static_cast<unsigned char>(v >> 24);
    out[1] = static_cast<unsigned char>(v >> 16);
    out[2] = static_cast<unsigned char>(v >> 8);
    out[3] = static_cast<unsigned char>(v);
}

uint32_t get_be32(const unsigned char *in) {
    return static_cast<uint32_t>(in[0]) << 24 | static_cast<uint32_t>(in[1]) << 16 |
           static_cast<uint32_t>(in[2]) << 8 | static_cast<uint32_t>(in[3]);
}

// ---- validators of the text kinds ----------------------------------------

// "0x010203", "0X010203" or "010203".
std::optional<uint32_t> fcid_of(std::string_view text) {
    take_prefix_ignoring_case(text, "0x");
    if (text.size() != 6) return std::nullopt;
    return whole_hex(text, 6);
}

// fc<slot>/<port>, optionally " swwn <WWN>" or " domain <id>".
bool is_interface_name(std::string_view text) {
    if (!take_prefix_ignoring_case(text, "fc")) return false;
    if (!take_decimal(text, 1, kMaxSlot) || !take_char(text, '/')) return false;
    if (!take_decimal(text, 1, kMaxInterfacePort)) return false;
    if (text.empty()) return true;
    unsigned char wwn[kWwnBytes];
    if (take_prefix_ignoring_case(text, " swwn ")) return parse_wwn_text(text, wwn);
    if (take_prefix_ignoring_case(text, " domain ")) {
        return take_decimal(text, kMinDomain, kMaxDomain) && text.empty();
    }
    return false;
}

bool is_symbolic_name(std::string_view text) {
    if (text.empty() || text.size() > kMaxMemberValueLength) return false;
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c <= 0x7e; });
}

bool is_contiguous_ipv4_mask(const in_addr &mask) {
    uint32_t bits = ntohl(mask.s_addr);
    uint32_t inverted = ~bits;
    return (inverted & (inverted + 1)) == 0;
}

// IPv4 with an optional prefix length or dotted mask, IPv6 with an optional
// prefix length.
bool is_ip_address(std::string_view text) {
    if (text.empty() || text.size() >= 64) return false;
    char buffer[64];
    std::memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
    char *slash = std::strchr(buffer, '/');
    std::string_view suffix;
    if (slash != nullptr) {
        *slash = '\0';
        suffix = std::string_view(slash + 1);
        if (suffix.empty()) return false;
    }
    in_addr v4{};
    in6_addr v6{};
    if (inet_pton(AF_INET, buffer, &v4) == 1) {
        if (slash == nullptr) return true;
        if (is_digit(suffix.front()) && suffix.find('.') == std::string_view::npos) {
            return take_decimal(suffix, 0, 32) && suffix.empty();
        }
        in_addr mask{};
        return inet_pton(AF_INET, slash + 1, &mask) == 1 && is_contiguous_ipv4_mask(mask);
    }
    if (inet_pton(AF_INET6, buffer, &v6) == 1) {
        return slash == nullptr || (take_decimal(suffix, 0, 128) && suffix.empty());
    }
    return false;
}

bool is_device_alias_name(std::string_view text) {
    if (text.empty() || text.size() > kMaxAliasName) return false;
    return std::all_of(text.begin(), text.end(), [](char c) {
        return is_letter(c) || is_digit(c) || c == '-' || c == '_' || c == '$' || c == '^';
    });
}

bool is_valid_text_of_kind(MemberKind kind, std::string_view text) {
    unsigned char wwn[kWwnBytes];
    switch (kind) {
        case MemberKind::WwnText:
            return parse_wwn_text(text, wwn);
        case MemberKind::FcidText:
            return fcid_of(text).has_value();
        case MemberKind::InterfaceName:
            return is_interface_name(text);
        case MemberKind::SymbolicName:
            return is_symbolic_name(text);
        case MemberKind::IpAddress:
            return is_ip_address(text);
        case MemberKind::DeviceAliasName:
            return is_device_alias_name(text);
        case MemberKind::DomainPort:
        case MemberKind::Wwn:
        case MemberKind::DomainInterface:
            break;
    }
    return false;
}

// ---- encoders of the binary kinds ----------------------------------------

// "<domain>:<port>", both decimal.
bool encode_domain_port(std::string_view text, unsigned char *value) {
    auto domain = take_decimal(text, kMinDomain, kMaxDomain);
    if (!domain || !take_char(text, ':')) return false;
    auto port = take_decimal(text, 0, kMaxPort);
    if (!port || !text.empty()) return false;
    put_be32(value, *domain);
    put_be32(value + 4, *port);
    return true;
}

// "<domain>:0x<interface>", the domain decimal, the interface 1-8 hex digits.
bool encode_domain_interface(std::string_view text, unsigned char *value) {
    auto domain = take_decimal(text, kMinDomain, kMaxDomain);
    if (!domain || !take_char(text, ':') || !take_prefix_ignoring_case(text, "0x")) return false;
    auto interface = whole_hex(text, 8);
    if (!interface) return false;
    put_be32(value, *domain);
    put_be32(value + 4, *interface);
    return true;
}

bool encode_of_kind(const MemberType &type, std::string_view text, unsigned char *value) {
    switch (type.kind) {
        case MemberKind::DomainPort:
            return encode_domain_port(text, value);
        case MemberKind::Wwn:
            return parse_wwn_text(text, value);
        case MemberKind::DomainInterface:
            return encode_domain_interface(text, value);
        default:
            break;
    }
    if (text.size() > type.value_length || !is_valid_text_of_kind(type.kind, text)) return false;
    std::memset(value, 0, type.value_length);
    std::memcpy(value, text.data(), text.size());
    return true;
}

std::string_view stored_text(const MemberType &type, const unsigned char *value) {
    const char *chars = reinterpret_cast<const char *>(value);
    return std::string_view(chars, strnlen(chars, type.value_length));
}

// ---- TLV layout ----------------------------------------------------------

constexpr uint32_t kTlvHeaderSize = 4;
constexpr uint32_t kTlvMaxField = 0xffff;

constexpr uint32_t padded_to_4(uint32_t size) {
    return (size + 3u) & ~3u;
}

uint16_t read_u16(const unsigned char *in) {
    uint16_t v;
    std::memcpy(&v, in, sizeof v);
    return v;
}

void write_u16(unsigned char *out, uint16_t v) {
    std::memcpy(out, &v, sizeof v);
}

}  // namespace

// ---- table lookups ---------------------------------------------------------

const MemberType *member_type_by_cim(uint32_t cim_type) {
    for (const MemberType &row : kMemberTypes) {
        if (row.cim_type == cim_type) return &row;
    }
    return nullptr;
}

const MemberType *member_type_by_code(uint8_t code) {
    uint8_t canonical = canonical_member_code(code);
    for (const MemberType &row : kMemberTypes) {
        if (row.code == canonical) return &row;
    }
    return nullptr;
}

std::optional<uint8_t> member_code_of_cim_type(uint32_t cim_type) {
    const MemberType *row = member_type_by_cim(cim_type);
    if (row == nullptr) return std::nullopt;
    return row->code;
}

std::optional<uint16_t> cim_type_of_member_code(uint8_t code) {
    const MemberType *row = member_type_by_code(code);
    if (row == nullptr) return std::nullopt;
    return row->cim_type;
}

int member_value_length(uint8_t code) {
    const MemberType *row = member_type_by_code(code);
    return row == nullptr ? -1 : row->value_length;
}

// ---- encoding and decoding -------------------------------------------------

bool encode_member_value(uint8_t code, std::string_view text, unsigned char *value) {
    const MemberType *row = member_type_by_code(code);
    if (row == nullptr || value == nullptr) return false;
    std::array<unsigned char, kMaxMemberValueLength> scratch{};
    if (!encode_of_kind(*row, text, scratch.data())) return false;
    std::memcpy(value, scratch.data(), row->value_length);
    return true;
}

bool is_valid_member_text(uint8_t code, std::string_view text) {
    std::array<unsigned char, kMaxMemberValueLength> scratch{};
    return encode_member_value(code, text, scratch.data());
}

bool member_value_text(uint8_t code, const unsigned char *value, char *out, std::size_t out_size) {
    if (out == nullptr || out_size == 0) return false;
    out[0] = '\0';
    const MemberType *row = member_type_by_code(code);
    if (row == nullptr || value == nullptr) return false;
    if (row->formatter != nullptr) {
        char formatted[128];
        int n = row->formatter(formatted, value);
        if (n < 0 || static_cast<std::size_t>(n) >= out_size) return false;
        std::memcpy(out, formatted, static_cast<std::size_t>(n) + 1);
        return true;
    }
    std::string_view text = stored_text(*row, value);
    if (text.size() >= out_size) return false;
    std::memcpy(out, text.data(), text.size());
    out[text.size()] = '\0';
    return true;
}

std::string member_value_text(uint8_t code, const unsigned char *value) {
    char text[kMemberTextSize];
    member_value_text(code, value, text, sizeof text);
    return text;
}

bool same_member_value(uint8_t code, const unsigned char *a, const unsigned char *b) {
    const MemberType *row = member_type_by_code(code);
    if (row == nullptr || a == nullptr || b == nullptr) return false;
    if (row->kind == MemberKind::WwnText) {
        unsigned char wwn_a[kWwnBytes];
        unsigned char wwn_b[kWwnBytes];
        return parse_wwn_text(stored_text(*row, a), wwn_a) &&
               parse_wwn_text(stored_text(*row, b), wwn_b) &&
               std::memcmp(wwn_a, wwn_b, kWwnBytes) == 0;
    }
    if (row->kind == MemberKind::FcidText) {
        auto fcid_a = fcid_of(stored_text(*row, a));
        return fcid_a && fcid_a == fcid_of(stored_text(*row, b));
    }
    return std::memcmp(a, b, row->value_length) == 0;
}

// ---- member InstanceIDs ----------------------------------------------------

std::string member_instance_id(int vsan, uint8_t code, const unsigned char *value, int active) {
    auto cim_type = cim_type_of_member_code(code);
    char text[kMemberTextSize];
    if (!cim_type || !member_value_text(code, value, text, sizeof text)) return {};
    return std::to_string(vsan) + '^' + std::to_string(*cim_type) + '^' + text + '^' +
           std::to_string(active);
}

namespace {

// A whole field of decimal digits with an optional leading '-' (negative
// only where allowed); no blanks.
std::optional<long> decimal_field(std::string_view field, bool negative_allowed) {
    bool negative = negative_allowed && !field.empty() && field.front() == '-';
    if (negative) field.remove_prefix(1);
    if (field.empty() || field.size() > 9) return std::nullopt;
    long value = 0;
    for (char c : field) {
        if (!is_digit(c)) return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return negative ? -value : value;
}

}  // namespace

std::optional<MemberInstanceIdFields> split_member_instance_id(std::string_view id) {
    std::size_t first = id.find('^');
    if (first == std::string_view::npos) return std::nullopt;
    std::size_t second = id.find('^', first + 1);
    std::size_t last = id.rfind('^');
    if (second == std::string_view::npos || last == second) return std::nullopt;
    auto vsan = decimal_field(id.substr(0, first), false);
    auto cim_type = decimal_field(id.substr(first + 1, second - first - 1), false);
    auto active = decimal_field(id.substr(last + 1), true);
    if (!vsan || !cim_type || !active) return std::nullopt;
    MemberInstanceIdFields fields;
    fields.vsan = static_cast<int>(*vsan);
    fields.cim_type = static_cast<uint32_t>(*cim_type);
    fields.text = id.substr(second + 1, last - second - 1);
    fields.active = static_cast<int>(*active);
    return fields;
}

// ---- WWNs ------------------------------------------------------------------

bool parse_wwn_text(std::string_view text, unsigned char wwn[8]) {
    constexpr std::size_t kBare = 16;
    constexpr std::size_t kSeparated = 23;
    if (text.size() != kBare && text.size() != kSeparated) return false;
    const bool separated = text.size() == kSeparated;
    const char separator = separated ? text[2] : '\0';
    if (separated && separator != ':' && separator != '-') return false;
    unsigned char bytes[kWwnBytes];
    const std::size_t stride = separated ? 3 : 2;
    for (std::size_t i = 0; i < kWwnBytes; ++i) {
        const std::size_t at = i * stride;
        int high = hex_value(text[at]);
        int low = hex_value(text[at + 1]);
        if (high < 0 || low < 0) return false;
        if (separated && i + 1 < kWwnBytes && text[at + 2] != separator) return false;
        bytes[i] = static_cast<unsigned char>(high << 4 | low);
    }
    std::memcpy(wwn, bytes, kWwnBytes);
    return true;
}

void format_wwn(const unsigned char wwn[8], char out[24]) {
    static constexpr char kDigits[] = "0123456789abcdef";
    for (std::size_t i = 0; i < kWwnBytes; ++i) {
        out[i * 3] = kDigits[wwn[i] >> 4];
        out[i * 3 + 1] = kDigits[wwn[i] & 0xf];
        out[i * 3 + 2] = i + 1 < kWwnBytes ? ':' : '\0';
    }
}

// ---- TLV reading -----------------------------------------------------------

std::optional<TlvItem> find_tlv(const unsigned char *buffer, std::size_t size, uint16_t type) {
    if (buffer == nullptr) return std::nullopt;
    std::size_t offset = 0;
    while (size - offset >= kTlvHeaderSize) {
        const uint16_t item_type = read_u16(buffer + offset);
        const uint16_t item_length = read_u16(buffer + offset + 2);
        if (item_type == 0 && item_length == 0) return std::nullopt;
        const std::size_t item_size = kTlvHeaderSize + padded_to_4(item_length);
        if (item_size > size - offset) return std::nullopt;
        if (item_type == type) return TlvItem{item_type, item_length, buffer + offset + 4};
        offset += item_size;
    }
    return std::nullopt;
}

}  // namespace zonesim

// ---- the platform operations -------------------------------------------------

using namespace zonesim;

#pragma GCC visibility push(default)
extern "C" {

int decode_cim_member_type(uint32_t cim_member_type, uint8_t *code) {
    const MemberType *row = member_type_by_cim(cim_member_type);
    if (row == nullptr || code == nullptr) return -1;
    *code = row->code;
    return 0;
}

int get_member_value_length(uint8_t code) {
    return member_value_length(code);
}

int get_member_value_from_cim_member_type_value(const char *text, uint8_t code,
                                                unsigned char *value) {
    if (text == nullptr) return -1;
    return encode_member_value(code, text, value) ? 0 : -1;
}

int cim_sprintf_wwn(char *out, const unsigned char *value) {
    if (out == nullptr || value == nullptr) return -1;
    format_wwn(value, out);
    return 23;
}

int cim_sprintf_dom_interface_hex(char *out, const unsigned char *value) {
    if (out == nullptr || value == nullptr) return -1;
    return std::snprintf(out, 128, "%u:0x%08x", static_cast<unsigned>(get_be32(value)),
                         static_cast<unsigned>(get_be32(value + 4)));
}

int zs_cim_sprintf_dom_port(char *out, const unsigned char *value) {
    if (out == nullptr || value == nullptr) return -1;
    return std::snprintf(out, 128, "%u:%u", static_cast<unsigned>(get_be32(value)),
                         static_cast<unsigned>(get_be32(value + 4)));
}

int wwn_cim_get_hex_from_str_wwn(const char *text, unsigned char *wwn) {
    if (text == nullptr || wwn == nullptr) return -1;
    return parse_wwn_text(text, wwn) ? 0 : -1;
}

// 0 when the value is too large for a 16-bit length field: no item of that
// size can be made.
uint32_t tlv_aligned_data_size_get(uint32_t value_size) {
    if (value_size > kTlvMaxField) return 0;
    return kTlvHeaderSize + padded_to_4(value_size);
}

// Appends after the last item, and only when a zero terminator still fits
// behind the new one, so that readers that know no size find the end.
int tlv_aligned_array_add_tlv(unsigned char *buffer, uint32_t buffer_size, uint32_t type,
                              uint32_t length, const void *value, int /*flags*/) {
    if (buffer == nullptr || type == 0 || type > kTlvMaxField || length > kTlvMaxField) return -1;
    if (value == nullptr && length != 0) return -1;
    uint32_t offset = 0;
    while (buffer_size - offset >= kTlvHeaderSize) {
        const uint16_t item_type = read_u16(buffer + offset);
        const uint16_t item_length = read_u16(buffer + offset + 2);
        if (item_type == 0 && item_length == 0) break;
        const uint32_t item_size = kTlvHeaderSize + padded_to_4(item_length);
        if (item_size > buffer_size - offset) return -1;
        offset += item_size;
    }
    const uint32_t needed = tlv_aligned_data_size_get(length) + kTlvHeaderSize;
    if (buffer_size - offset < kTlvHeaderSize || needed > buffer_size - offset) return -1;
    unsigned char *item = buffer + offset;
    write_u16(item, static_cast<uint16_t>(type));
    write_u16(item + 2, static_cast<uint16_t>(length));
    if (length != 0) std::memcpy(item + kTlvHeaderSize, value, length);
    std::memset(item + kTlvHeaderSize + length, 0, needed - kTlvHeaderSize - length);
    return 0;
}

}  // extern "C"
#pragma GCC visibility pop
