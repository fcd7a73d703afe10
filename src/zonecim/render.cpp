#include "zonecim/render.h"

#include <array>
#include <cstdio>
#include <string_view>

#include "host/cmpihost.h"

namespace zonecim {

namespace {

struct TypeName {
    CMPIType type;
    std::string_view name;
};

static constexpr std::array<TypeName, 16> kParamTypes{{
    {CMPI_boolean, "boolean"},
    {CMPI_char16, "char16"},
    {CMPI_real32, "real32"},
    {CMPI_real64, "real64"},
    {CMPI_uint8, "uint8"},
    {CMPI_uint16, "uint16"},
    {CMPI_uint32, "uint32"},
    {CMPI_uint64, "uint64"},
    {CMPI_sint8, "sint8"},
    {CMPI_sint16, "sint16"},
    {CMPI_sint32, "sint32"},
    {CMPI_sint64, "sint64"},
    {CMPI_string, "string"},
    {CMPI_chars, "string"},
    {CMPI_dateTime, "datetime"},
    {CMPI_ref, "reference"},
}};

// The names wbemcli gives the CIM status codes it knows.
static constexpr std::array<std::string_view, 18> kStatusNames{{
    "CIM_ERR_OK",
    "CIM_ERR_FAILED",
    "CIM_ERR_ACCESS_DENIED",
    "CIM_ERR_INVALID_NAMESPACE",
    "CIM_ERR_INVALID_PARAMETER",
    "CIM_ERR_INVALID_CLASS",
    "CIM_ERR_NOT_FOUND",
    "CIM_ERR_NOT_SUPPORTED",
    "CIM_ERR_CLASS_HAS_CHILDREN",
    "CIM_ERR_CLASS_HAS_INSTANCES",
    "CIM_ERR_INVALID_SUPERCLASS",
    "CIM_ERR_ALREADY_EXISTS",
    "CIM_ERR_NO_SUCH_PROPERTY",
    "CIM_ERR_TYPE_MISMATCH",
    "CIM_ERR_QUERY_LANGUAGE_NOT_SUPPORTED",
    "CIM_ERR_INVALID_QUERY",
    "CIM_ERR_METHOD_NOT_AVAILABLE",
    "CIM_ERR_METHOD_NOT_FOUND",
}};

std::string quoted(const std::string &text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"') out += '\\';
        out += c;
    }
    return out + "\"";
}

void append_utf8(std::string &out, unsigned code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

std::string real_text(double value, int digits) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*g", digits, value);
    return buffer;
}

// One non-array value; quote_text decides whether strings get quotes.
std::string scalar_text(CMPIType type, const CMPIValue &value, bool quote_text) {
    switch (type) {
        case CMPI_string: {
            const std::string text = cmpihost::text(value.string);
            return quote_text ? quoted(text) : text;
        }
        case CMPI_chars: {
            const std::string text = value.chars ? value.chars : "";
            return quote_text ? quoted(text) : text;
        }
        case CMPI_boolean:
            return value.boolean ? "TRUE" : "FALSE";
        case CMPI_char16: {
            std::string out;
            append_utf8(out, value.char16);
            return out;
        }
        case CMPI_uint8:
            return std::to_string(value.uint8);
        case CMPI_uint16:
            return std::to_string(value.uint16);
        case CMPI_uint32:
            return std::to_string(value.uint32);
        case CMPI_uint64:
            return std::to_string(value.uint64);
        case CMPI_sint8:
            return std::to_string(value.sint8);
        case CMPI_sint16:
            return std::to_string(value.sint16);
        case CMPI_sint32:
            return std::to_string(value.sint32);
        case CMPI_sint64:
            return std::to_string(value.sint64);
        case CMPI_real32:
            return real_text(value.real32, 9);
        case CMPI_real64:
            return real_text(value.real64, 17);
        case CMPI_dateTime:
            if (value.dateTime == nullptr) return {};
            return cmpihost::text(value.dateTime->ft->getStringFormat(value.dateTime, nullptr));
        case CMPI_ref:
            return value.ref ? path_text(value.ref) : std::string();
        case CMPI_instance:
            return value.inst ? path_text(value.inst->ft->getObjectPath(value.inst, nullptr))
                              : std::string();
        default:
            return {};
    }
}

std::string any_text(const CMPIData &data, bool quote_text) {
    if ((data.state & CMPI_nullValue) != 0 || data.type == CMPI_null) return {};
    if ((data.type & CMPI_ARRAY) == 0) return scalar_text(data.type, data.value, quote_text);
    const CMPIArray *array = data.value.array;
    if (array == nullptr) return {};
    const CMPICount size = array->ft->getSize(array, nullptr);
    std::string out;
    for (CMPICount i = 0; i < size; ++i) {
        const CMPIData element = array->ft->getElementAt(array, i, nullptr);
        if (i > 0) out += ',';
        if ((element.state & CMPI_nullValue) == 0)
            out += scalar_text(element.type, element.value, quote_text);
    }
    return out;
}

}  // namespace

std::string path_text(const CMPIObjectPath *path) {
    if (path == nullptr) return {};
    const std::string ns = cmpihost::text(path->ft->getNameSpace(path, nullptr));
    std::string out = ns.empty() ? std::string() : ns + ":";
    out += cmpihost::text(path->ft->getClassName(path, nullptr));
    const unsigned count = path->ft->getKeyCount(path, nullptr);
    for (unsigned i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData key = path->ft->getKeyAt(path, i, &name, nullptr);
        out += i == 0 ? '.' : ',';
        out += cmpihost::text(name) + "=" + value_text(key);
    }
    return out;
}

std::string value_text(const CMPIData &data) {
    return any_text(data, /*quote_text=*/true);
}

std::string bare_value_text(const CMPIData &data) {
    return any_text(data, /*quote_text=*/false);
}

std::string param_type_text(CMPIType type) {
    const CMPIType element = static_cast<CMPIType>(type & ~CMPI_ARRAY);
    for (const auto &entry : kParamTypes) {
        if (entry.type == element) return std::string(entry.name);
    }
    return {};
}

std::string properties_text(const CMPIInstance *instance) {
    std::string out;
    const unsigned count = instance->ft->getPropertyCount(instance, nullptr);
    for (unsigned i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData property = instance->ft->getPropertyAt(instance, i, &name, nullptr);
        if (i > 0) out += ',';
        out += cmpihost::text(name) + "=" + value_text(property);
    }
    return out;
}

std::string instance_text(const CMPIInstance *instance) {
    return path_text(instance->ft->getObjectPath(instance, nullptr)) + " " +
           properties_text(instance);
}

std::string method_text(const CMPIObjectPath *target, const std::string &method,
                        const CMPIData *return_value, const CMPIArgs *out) {
    std::string line = path_text(target) + " " + method + ": ";
    if (return_value != nullptr) line += bare_value_text(*return_value);
    const unsigned count = out ? out->ft->getArgCount(out, nullptr) : 0;
    for (unsigned i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData argument = out->ft->getArgAt(out, i, &name, nullptr);
        line += ", " + cmpihost::text(name) + " (" + param_type_text(argument.type) +
                "): " + bare_value_text(argument);
    }
    return line;
}

std::string status_text(CMPIrc rc, const std::string &message) {
    const auto code = static_cast<std::size_t>(rc);
    const std::string_view name = code > 0 && code < kStatusNames.size()
                                      ? kStatusNames[code]
                                      : "Invalid/Unknown CIM Error Code";
    return "Cim: (" + std::to_string(code) + ") " + std::string(name) + ": " + message;
}

}  // namespace zonecim
