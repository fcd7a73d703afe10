// Zone members made from their names (see member_identity.h).
#include "sim/member_identity.h"

#include <cstring>
#include <optional>

#include "sim/member_types.h"
#include "sim/sim_errors.h"

namespace zonesim {

namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The three bytes of an FC ID text (6 hex digits after an optional 0x).
bool fcidBytes(std::string_view text, std::vector<std::uint8_t> *out) {
    if (text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
        text.remove_prefix(2);
    if (text.size() != 6) return false;
    out->clear();
    for (std::size_t i = 0; i < 6; i += 2) {
        int high = hexDigit(text[i]), low = hexDigit(text[i + 1]);
        if (high < 0 || low < 0) return false;
        out->push_back(static_cast<std::uint8_t>(high * 16 + low));
    }
    return true;
}

// What makes two values one member, as the switch compares them: WWN texts
// by their eight bytes, FC ID texts by their three, everything else byte for
// byte.
std::vector<std::uint8_t> matchKey(const MemberType &type, const std::vector<std::uint8_t> &value,
                                   std::string_view text) {
    if (type.kind == MemberKind::WwnText) {
        unsigned char wwn[8];
        if (parse_wwn_text(text, wwn)) return std::vector<std::uint8_t>(wwn, wwn + 8);
    }
    if (type.kind == MemberKind::FcidText) {
        std::vector<std::uint8_t> fcid;
        if (fcidBytes(text, &fcid)) return fcid;
    }
    return value;
}

// Fills what the value decides: code, value, key and the member text.
int fillFromValue(const MemberType &type, const unsigned char *value, Member *out) {
    char text[kMemberTextSize];
    if (!member_value_text(type.code, value, text, sizeof text)) return kErrInvalidArgument;
    out->cim_type = type.cim_type;
    out->code = type.code;
    out->value.assign(value, value + type.value_length);
    out->id_text = text;
    out->key = matchKey(type, out->value, out->id_text);
    return 0;
}

}  // namespace

int memberFromText(int vsan, bool active, std::uint32_t cim_type, std::string_view text,
                   Member *out) {
    const MemberType *type = member_type_by_cim(cim_type);
    if (type == nullptr || text.size() > kMaxMemberValueLength) return kErrInvalidArgument;
    unsigned char value[kMaxMemberValueLength] = {};
    if (!encode_member_value(type->code, text, value)) return kErrInvalidArgument;
    Member member;
    member.vsan = vsan;
    member.active = active;
    if (int code = fillFromValue(*type, value, &member)) return code;
    member.value_text = std::string(text);
    *out = std::move(member);
    return 0;
}

int memberFromValue(int vsan, bool active, std::uint32_t code, const unsigned char *value,
                    int length, Member *out) {
    if (code > 0xff || value == nullptr) return kErrInvalidArgument;
    const MemberType *type = member_type_by_code(canonical_member_code(static_cast<uint8_t>(code)));
    if (type == nullptr || length != type->value_length) return kErrInvalidArgument;
    Member member;
    member.vsan = vsan;
    member.active = active;
    if (int rc = fillFromValue(*type, value, &member)) return rc;
    // A value that its own text doesn't encode back to is not a valid
    // member; the encoding of the text is what is kept (nothing the caller
    // left behind the text's end).
    unsigned char canonical[kMaxMemberValueLength] = {};
    if (!encode_member_value(type->code, member.id_text, canonical) ||
        !same_member_value(type->code, canonical, value))
        return kErrInvalidArgument;
    if (int rc = fillFromValue(*type, canonical, &member)) return rc;
    member.value_text = member.id_text;
    *out = std::move(member);
    return 0;
}

namespace {

std::optional<MemberInstanceIdFields> memberIdFields(const char *instance_id) {
    if (instance_id == nullptr) return std::nullopt;
    auto fields = split_member_instance_id(instance_id);
    if (!fields || fields->vsan < kMinVsan || fields->vsan > kMaxVsan) return std::nullopt;
    return fields;
}

}  // namespace

int memberFromInstanceId(const char *instance_id, Member *out) {
    auto fields = memberIdFields(instance_id);
    if (!fields) return kErrInvalidArgument;
    return memberFromText(fields->vsan, fields->active != 0, fields->cim_type, fields->text, out);
}

// memberFromText refuses an unknown type, a text too long and a text its
// type can't encode; the rest of what it does can't fail.
int activeOfMemberInstanceId(const char *instance_id, bool *active) {
    auto fields = memberIdFields(instance_id);
    if (!fields) return kErrInvalidArgument;
    const MemberType *type = member_type_by_cim(fields->cim_type);
    if (type == nullptr || fields->text.size() > kMaxMemberValueLength ||
        !is_valid_member_text(type->code, fields->text))
        return kErrInvalidArgument;
    *active = fields->active != 0;
    return 0;
}

}  // namespace zonesim
