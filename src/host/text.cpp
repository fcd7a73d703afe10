// Text forms of paths, instances, values and statuses, and the small helpers
// of the host API.
#include <charconv>

#include "host/cmpihost.h"
#include "host/objects.h"

namespace cmpihost {

namespace detail {

namespace {

// Inside quotes a backslash escapes the next character, so that the text
// reads back with parsePath.
std::string quote(std::string_view raw) {
    std::string out = "\"";
    for (char c : raw) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    out += '"';
    return out;
}

std::string realText(double value) {
    char buffer[64];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return ec == std::errc() ? std::string(buffer, end) : std::string();
}

// A UCS-2 code unit as UTF-8.
std::string char16Text(CMPIChar16 c) {
    std::string out;
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
    return out;
}

std::string arrayText(const CMPIArray *array) {
    auto *state = stateOf<ArrayState>(array);
    if (state == nullptr) return {};
    std::string out;
    for (std::size_t i = 0; i < state->elements.size(); ++i) {
        if (i > 0) out += ',';
        out += renderValue(state->elements[i]);
    }
    return out;
}

}  // namespace

std::string renderValue(const CMPIData &data) {
    if (data.state & CMPI_nullValue) return {};
    if (data.type & CMPI_ARRAY) return arrayText(data.value.array);
    const CMPIValue &v = data.value;
    switch (data.type) {
        case CMPI_string:
            return quote(text(v.string));
        case CMPI_chars:
            return quote(v.chars ? v.chars : "");
        case CMPI_boolean:
            return v.boolean ? "true" : "false";
        case CMPI_char16:
            return char16Text(v.char16);
        case CMPI_uint8:
            return std::to_string(v.uint8);
        case CMPI_uint16:
            return std::to_string(v.uint16);
        case CMPI_uint32:
            return std::to_string(v.uint32);
        case CMPI_uint64:
            return std::to_string(v.uint64);
        case CMPI_sint8:
            return std::to_string(v.sint8);
        case CMPI_sint16:
            return std::to_string(v.sint16);
        case CMPI_sint32:
            return std::to_string(v.sint32);
        case CMPI_sint64:
            return std::to_string(v.sint64);
        case CMPI_real32:
            return realText(v.real32);
        case CMPI_real64:
            return realText(v.real64);
        case CMPI_ref:
            return quote(pathToString(v.ref));
        case CMPI_instance:
            return quote(instanceToString(v.inst));
        case CMPI_dateTime: {
            auto *state = stateOf<DateTimeState>(v.dateTime);
            return state ? dateTimeText(state->micros, state->interval) : std::string();
        }
        default:
            return {};
    }
}

std::string renderPath(const PathState &path, const NamedValues &keys) {
    std::string out;
    if (!path.host.empty()) out += path.host + '/';
    if (!path.nameSpace.empty()) out += path.nameSpace + ':';
    out += path.className;
    char separator = '.';
    for (const auto &[name, data] : keys.items) {
        out += separator;
        out += name + '=' + renderValue(data);
        separator = ',';
    }
    return out;
}

}  // namespace detail

std::string text(const CMPIString *s) {
    // The 1.0 rule: a string's hdl is its characters, whoever made it.
    return s != nullptr && s->hdl != nullptr ? static_cast<const char *>(s->hdl) : "";
}

std::string pathToString(const CMPIObjectPath *path) {
    auto *state = detail::stateOf<detail::PathState>(path);
    return state ? detail::renderPath(*state, state->keys) : std::string();
}

std::string instanceToString(const CMPIInstance *instance) {
    auto *state = detail::stateOf<detail::InstanceState>(instance);
    if (state == nullptr) return {};
    std::string out = detail::renderPath(*detail::stateOf<detail::PathState>(state->path),
                                         detail::refreshedKeys(*state));
    out += ' ';
    bool first = true;
    for (const auto &[name, data] : state->properties.items) {
        if (!first) out += ',';
        out += name + '=' + detail::renderValue(data);
        first = false;
    }
    return out;
}

std::string valueToString(const CMPIData &data) {
    return detail::renderValue(data);
}

std::string dataText(const CMPIData &data) {
    if (data.state & CMPI_nullValue) return {};
    if (data.type == CMPI_string) return text(data.value.string);
    if (data.type == CMPI_chars) return data.value.chars ? data.value.chars : "";
    if (data.type == CMPI_ref) return pathToString(data.value.ref);
    return detail::renderValue(data);
}

// ---- Keys and arguments -----------------------------------------------------

namespace {

CMPIValue refValue(const CMPIObjectPath *ref) {
    CMPIValue value{};
    value.ref = const_cast<CMPIObjectPath *>(ref);
    return value;
}

}  // namespace

void addStringKey(CMPIObjectPath *path, const std::string &name, const std::string &value) {
    if (path == nullptr) return;
    path->ft->addKey(path, name.c_str(), reinterpret_cast<const CMPIValue *>(value.c_str()),
                     CMPI_chars);
}

void addReferenceKey(CMPIObjectPath *path, const std::string &name, const CMPIObjectPath *ref) {
    if (path == nullptr) return;
    const CMPIValue value = refValue(ref);
    path->ft->addKey(path, name.c_str(), &value, CMPI_ref);
}

void addStringArg(CMPIArgs *args, const std::string &name, const std::string &value) {
    if (args == nullptr) return;
    args->ft->addArg(args, name.c_str(), reinterpret_cast<const CMPIValue *>(value.c_str()),
                     CMPI_chars);
}

void addReferenceArg(CMPIArgs *args, const std::string &name, const CMPIObjectPath *ref) {
    if (args == nullptr) return;
    const CMPIValue value = refValue(ref);
    args->ft->addArg(args, name.c_str(), &value, CMPI_ref);
}

void addValueArg(CMPIArgs *args, const std::string &name, const CMPIValue &value, CMPIType type) {
    if (args == nullptr) return;
    args->ft->addArg(args, name.c_str(), &value, type);
}

// ---- Status -------------------------------------------------------------------

namespace {

struct RcName {
    CMPIrc rc;
    const char *name;
};
constexpr RcName kRcNames[] = {
    {CMPI_RC_OK, "CMPI_RC_OK"},
    {CMPI_RC_ERR_FAILED, "CMPI_RC_ERR_FAILED"},
    {CMPI_RC_ERR_ACCESS_DENIED, "CMPI_RC_ERR_ACCESS_DENIED"},
    {CMPI_RC_ERR_INVALID_NAMESPACE, "CMPI_RC_ERR_INVALID_NAMESPACE"},
    {CMPI_RC_ERR_INVALID_PARAMETER, "CMPI_RC_ERR_INVALID_PARAMETER"},
    {CMPI_RC_ERR_INVALID_CLASS, "CMPI_RC_ERR_INVALID_CLASS"},
    {CMPI_RC_ERR_NOT_FOUND, "CMPI_RC_ERR_NOT_FOUND"},
    {CMPI_RC_ERR_NOT_SUPPORTED, "CMPI_RC_ERR_NOT_SUPPORTED"},
    {CMPI_RC_ERR_CLASS_HAS_CHILDREN, "CMPI_RC_ERR_CLASS_HAS_CHILDREN"},
    {CMPI_RC_ERR_CLASS_HAS_INSTANCES, "CMPI_RC_ERR_CLASS_HAS_INSTANCES"},
    {CMPI_RC_ERR_INVALID_SUPERCLASS, "CMPI_RC_ERR_INVALID_SUPERCLASS"},
    {CMPI_RC_ERR_ALREADY_EXISTS, "CMPI_RC_ERR_ALREADY_EXISTS"},
    {CMPI_RC_ERR_NO_SUCH_PROPERTY, "CMPI_RC_ERR_NO_SUCH_PROPERTY"},
    {CMPI_RC_ERR_TYPE_MISMATCH, "CMPI_RC_ERR_TYPE_MISMATCH"},
    {CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED, "CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED"},
    {CMPI_RC_ERR_INVALID_QUERY, "CMPI_RC_ERR_INVALID_QUERY"},
    {CMPI_RC_ERR_METHOD_NOT_AVAILABLE, "CMPI_RC_ERR_METHOD_NOT_AVAILABLE"},
    {CMPI_RC_ERR_METHOD_NOT_FOUND, "CMPI_RC_ERR_METHOD_NOT_FOUND"},
    {CMPI_RC_DO_NOT_UNLOAD, "CMPI_RC_DO_NOT_UNLOAD"},
    {CMPI_RC_NEVER_UNLOAD, "CMPI_RC_NEVER_UNLOAD"},
    {CMPI_RC_ERR_INVALID_HANDLE, "CMPI_RC_ERR_INVALID_HANDLE"},
    {CMPI_RC_ERR_INVALID_DATA_TYPE, "CMPI_RC_ERR_INVALID_DATA_TYPE"},
    {CMPI_RC_ERROR_SYSTEM, "CMPI_RC_ERROR_SYSTEM"},
    {CMPI_RC_ERROR, "CMPI_RC_ERROR"},
};

}  // namespace

const char *rcName(CMPIrc rc) {
    for (const RcName &entry : kRcNames) {
        if (entry.rc == rc) return entry.name;
    }
    return "unknown rc";
}

std::string describe(const Status &status) {
    std::string out =
        "rc " + std::to_string(static_cast<int>(status.rc)) + " (" + rcName(status.rc) + ")";
    if (status.message) out += ": " + *status.message;
    return out;
}

}  // namespace cmpihost
