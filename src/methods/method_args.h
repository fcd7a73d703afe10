// Reading the inputs of the zoning methods: the zone service's VSAN from the
// target path, input arguments by position, InstanceID keys of references
// and the fields of a zoning object's InstanceID; and handing plain values
// to the method's result.
//
// Every reader answers "nothing usable" (false, null, nullopt) for bad input
// instead of trusting it: a missing args object, a position holding a value
// of another CMPI type or a null value, a reference without keys. The
// handlers turn that into their refusals, so nothing here can crash on what
// a client sends.
#pragma once

#include <cstdlib>
#include <cstring>
#include <optional>

#include <cmpidt.h>
#include <cmpift.h>

#include "platform/zoning_platform.h"
#include "provider/zone_provider.h"

namespace zone::methods {

// Objects created by the methods are always referenced in this namespace,
// whatever namespace the request used.
inline constexpr const char *kOutputNamespace = "root/cimv2";

// Outcome codes the handlers make themselves.
inline constexpr int kOutcomeSuccess = 0;
inline constexpr int kOutcomeInvalidObject = 1;
inline constexpr int kOutcomeInvalidParameter = 2;
inline constexpr int kOutcomeActiveOrForeign = 3;

// Fields that get_key_from_reference fills: at most 253 characters and a
// terminating zero; one spare byte keeps every key text terminated.
inline constexpr std::size_t kKeyBufferSize = 255;
using KeyBuffer = char[kKeyBufferSize];

inline constexpr long kFirstVsan = 1;
inline constexpr long kLastVsan = 4096;

// The VSAN a zone service stands for: its key "Name" as decimal text.
// Text that is no number reads as 0 and is refused like any number outside
// 1..4096; trailing non-digits are ignored, as strtol does.
inline std::optional<int> zone_service_vsan(const CMPIObjectPath *target) noexcept {
    if (target == nullptr) return std::nullopt;
    KeyBuffer name{};
    if (get_key_from_reference(target, "Name", name) != 0) return std::nullopt;
    const long vsan = std::strtol(name, nullptr, 10);
    if (vsan < kFirstVsan || vsan > kLastVsan) return std::nullopt;
    return static_cast<int>(vsan);
}

// Number of input arguments; nullopt when the request carries no args object.
inline std::optional<unsigned> argument_count(const CMPIArgs *in) noexcept {
    if (in == nullptr || in->ft == nullptr) return std::nullopt;
    CMPIStatus st{CMPI_RC_OK, nullptr};
    const unsigned count = in->ft->getArgCount(in, &st);
    if (st.rc != CMPI_RC_OK) return std::nullopt;
    return count;
}

// True when in holds exactly `required` arguments (false for no args object).
inline bool has_argument_count(const CMPIArgs *in, unsigned required) noexcept {
    const std::optional<unsigned> count = argument_count(in);
    return count.has_value() && *count == required;
}

// The argument at a position, or a null value when it can't be fetched.
inline CMPIData argument_at(const CMPIArgs *in, unsigned position) noexcept {
    CMPIData none{};
    none.type = CMPI_null;
    none.state = CMPI_nullValue;
    if (in == nullptr || in->ft == nullptr) return none;
    CMPIStatus st{CMPI_RC_OK, nullptr};
    const CMPIData data = in->ft->getArgAt(in, position, nullptr, &st);
    if (st.rc != CMPI_RC_OK) return none;
    return data;
}

inline bool is_null_value(const CMPIData &data) noexcept {
    return (data.state & (CMPI_nullValue | CMPI_notFound | CMPI_badValue)) != 0;
}

inline const char *text_of(const CMPIString *s) noexcept {
    if (s == nullptr) return nullptr;
    if (s->ft == nullptr || s->ft->getCharPtr == nullptr) return static_cast<const char *>(s->hdl);
    return s->ft->getCharPtr(s, nullptr);
}

// The text of a string argument; null for a null value or another type.
inline const char *string_value(const CMPIData &data) noexcept {
    if (is_null_value(data)) return nullptr;
    if (data.type == CMPI_string) return text_of(data.value.string);
    if (data.type == CMPI_chars) return data.value.chars;
    return nullptr;
}

inline const char *string_at(const CMPIArgs *in, unsigned position) noexcept {
    return string_value(argument_at(in, position));
}

// The object path held at a position; null when the position holds no
// reference (which every caller treats as a missing InstanceID key).
inline const CMPIObjectPath *reference_at(const CMPIArgs *in, unsigned position) noexcept {
    const CMPIData data = argument_at(in, position);
    if (is_null_value(data) || data.type != CMPI_ref) return nullptr;
    return data.value.ref;
}

inline std::optional<bool> boolean_at(const CMPIArgs *in, unsigned position) noexcept {
    const CMPIData data = argument_at(in, position);
    if (is_null_value(data) || data.type != CMPI_boolean) return std::nullopt;
    return data.value.boolean != 0;
}

inline std::optional<CMPIUint16> uint16_at(const CMPIArgs *in, unsigned position) noexcept {
    const CMPIData data = argument_at(in, position);
    if (is_null_value(data) || data.type != CMPI_uint16) return std::nullopt;
    return data.value.uint16;
}

// Copies the reference's key "InstanceID" into id; false when there is no
// reference or no such key.
inline bool instance_id_of(const CMPIObjectPath *ref, KeyBuffer &id) noexcept {
    if (ref == nullptr) return false;
    return get_key_from_reference(ref, "InstanceID", id) == 0;
}

// Class name of a reference as its path spells it; "" when it has none.
inline const char *class_name_of(const CMPIObjectPath *ref) noexcept {
    if (ref == nullptr || ref->ft == nullptr) return "";
    const char *name = text_of(ref->ft->getClassName(ref, nullptr));
    return name != nullptr ? name : "";
}

// The three fields of a zone set's, zone's or alias's InstanceID.
struct ZoningFields {
    int vsan = 0;
    int number = 0;
    int active = 0;
};

inline std::optional<ZoningFields> split_instance_id(const char *id) noexcept {
    ZoningFields fields;
    if (zs_cim_get_fields_from_generic_instance_id(id, &fields.vsan, &fields.number,
                                                   &fields.active) != 0)
        return std::nullopt;
    return fields;
}

// Zone (parent type 0) or zone alias (2), by the parent's exact class name.
inline std::optional<int> member_parent_type(const CMPIObjectPath *parent) noexcept {
    const char *cls = class_name_of(parent);
    if (std::strcmp(cls, "VORNA_Zone") == 0) return ZP_OBJECT_ZONE;
    if (std::strcmp(cls, "VORNA_ZoneAlias") == 0) return ZP_OBJECT_ZONE_ALIAS;
    return std::nullopt;
}

// ---- The result ------------------------------------------------------------

inline void return_zero(const CMPIResult *result, CMPIType type) noexcept {
    if (result == nullptr || result->ft == nullptr) return;
    if (type == CMPI_uint32) {
        const CMPIUint32 zero = 0;
        result->ft->returnData(result, reinterpret_cast<const CMPIValue *>(&zero), CMPI_uint32);
    } else {
        const CMPISint32 zero = 0;
        result->ft->returnData(result, reinterpret_cast<const CMPIValue *>(&zero), CMPI_sint32);
    }
}

inline void return_done(const CMPIResult *result) noexcept {
    if (result != nullptr && result->ft != nullptr) result->ft->returnDone(result);
}

// Adds a reference to a new object as an output argument. A builder that
// could not make the path leaves the output arguments as they were: the
// object exists all the same, and a null reference would tell the client
// nothing.
inline void add_output_reference(CMPIArgs *out, const char *name,
                                 const CMPIObjectPath *ref) noexcept {
    if (out == nullptr || out->ft == nullptr || ref == nullptr) return;
    out->ft->addArg(out, name, reinterpret_cast<const CMPIValue *>(&ref), CMPI_ref);
}

}  // namespace zone::methods
