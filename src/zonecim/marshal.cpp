#include "zonecim/marshal.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <utility>
#include <vector>

#include "host/cmpihost.h"

namespace zonecim {

namespace {

using zoneschema::CimType;

std::string class_of(const CMPIObjectPath *path) {
    return cmpihost::text(path->ft->getClassName(path, nullptr));
}

bool is_false_or_true(const std::string &text, bool *value) {
    if (zoneschema::same_name(text, "true")) {
        *value = true;
        return true;
    }
    if (zoneschema::same_name(text, "false")) {
        *value = false;
        return true;
    }
    return false;
}

// Whole-text decimal integers only: "10abc", "" and " 1" are refused.
bool parse_signed(const std::string &text, long long *value) {
    if (text.empty() || std::isspace(static_cast<unsigned char>(text[0]))) return false;
    errno = 0;
    char *end = nullptr;
    *value = std::strtoll(text.c_str(), &end, 10);
    return errno == 0 && *end == '\0';
}

bool parse_unsigned(const std::string &text, unsigned long long *value) {
    if (text.empty() || text[0] == '-' || std::isspace(static_cast<unsigned char>(text[0])))
        return false;
    errno = 0;
    char *end = nullptr;
    *value = std::strtoull(text.c_str(), &end, 10);
    return errno == 0 && *end == '\0';
}

bool parse_real(const std::string &text, double *value) {
    if (text.empty() || std::isspace(static_cast<unsigned char>(text[0]))) return false;
    errno = 0;
    char *end = nullptr;
    *value = std::strtod(text.c_str(), &end);
    return errno == 0 && *end == '\0' && std::isfinite(*value);
}

struct IntegerType {
    CimType type;
    CMPIType cmpi;
    bool is_signed;
    long long min;
    unsigned long long max;
};

static constexpr IntegerType kIntegerTypes[] = {
    {CimType::Uint8, CMPI_uint8, false, 0, UINT8_MAX},
    {CimType::Sint8, CMPI_sint8, true, INT8_MIN, INT8_MAX},
    {CimType::Uint16, CMPI_uint16, false, 0, UINT16_MAX},
    {CimType::Sint16, CMPI_sint16, true, INT16_MIN, INT16_MAX},
    {CimType::Uint32, CMPI_uint32, false, 0, UINT32_MAX},
    {CimType::Sint32, CMPI_sint32, true, INT32_MIN, INT32_MAX},
    {CimType::Uint64, CMPI_uint64, false, 0, UINT64_MAX},
    {CimType::Sint64, CMPI_sint64, true, INT64_MIN, INT64_MAX},
};

const IntegerType *integer_type(CimType type) {
    for (const auto &entry : kIntegerTypes) {
        if (entry.type == type) return &entry;
    }
    return nullptr;
}

// A value ready for a CMPI container: text and references go through the
// host's helpers, everything else as a CMPIValue of its type.
struct Typed {
    enum class Kind { Text, Reference, Scalar } kind = Kind::Text;
    std::string text;
    CMPIObjectPath *reference = nullptr;
    CMPIValue value{};
    CMPIType type = CMPI_null;
};

Typed text_value(std::string text) {
    Typed typed;
    typed.text = std::move(text);
    return typed;
}

Typed scalar(CMPIValue value, CMPIType type) {
    Typed typed;
    typed.kind = Typed::Kind::Scalar;
    typed.value = value;
    typed.type = type;
    return typed;
}

Typed integer_value(const IntegerType &type, const std::string &text, const std::string &what) {
    CMPIValue value{};
    if (type.is_signed) {
        long long number = 0;
        if (!parse_signed(text, &number) || number < type.min ||
            number > static_cast<long long>(type.max))
            throw UsageError(what + ": '" + text + "' is no " +
                             std::string(zoneschema::type_name(type.type)));
        switch (type.type) {
            case CimType::Sint8:
                value.sint8 = static_cast<CMPISint8>(number);
                break;
            case CimType::Sint16:
                value.sint16 = static_cast<CMPISint16>(number);
                break;
            case CimType::Sint32:
                value.sint32 = static_cast<CMPISint32>(number);
                break;
            default:
                value.sint64 = static_cast<CMPISint64>(number);
                break;
        }
    } else {
        unsigned long long number = 0;
        if (!parse_unsigned(text, &number) || number > type.max)
            throw UsageError(what + ": '" + text + "' is no " +
                             std::string(zoneschema::type_name(type.type)));
        switch (type.type) {
            case CimType::Uint8:
                value.uint8 = static_cast<CMPIUint8>(number);
                break;
            case CimType::Uint16:
                value.uint16 = static_cast<CMPIUint16>(number);
                break;
            case CimType::Uint32:
                value.uint32 = static_cast<CMPIUint32>(number);
                break;
            default:
                value.uint64 = static_cast<CMPIUint64>(number);
                break;
        }
    }
    return scalar(value, type.cmpi);
}

// A value the schema has no type for, typed by how it was written.
Typed untyped_value(const TextValue &text) {
    if (text.kind == TextValue::Kind::Quoted) return text_value(text.text);
    bool flag = false;
    if (is_false_or_true(text.text, &flag)) {
        CMPIValue value{};
        value.boolean = flag ? 1 : 0;
        return scalar(value, CMPI_boolean);
    }
    long long signed_number = 0;
    if (parse_signed(text.text, &signed_number)) {
        CMPIValue value{};
        value.sint64 = signed_number;
        return scalar(value, CMPI_sint64);
    }
    unsigned long long unsigned_number = 0;
    if (parse_unsigned(text.text, &unsigned_number)) {
        CMPIValue value{};
        value.uint64 = unsigned_number;
        return scalar(value, CMPI_uint64);
    }
    return text_value(text.text);
}

}  // namespace

NameScope schema_scope(const zoneschema::Schema &schema) {
    NameScope scope;
    scope.owner_of_path = [&schema](std::string_view class_name) {
        NameOwner owner;
        const zoneschema::Class *cls = schema.find(class_name);
        if (cls == nullptr) return owner;
        owner.known = true;
        owner.owns = [&schema, name = cls->name](std::string_view property) {
            return schema.find_property(name, property) != nullptr;
        };
        return owner;
    };
    scope.key_of = [&schema](std::string_view class_name, std::string_view name) {
        const zoneschema::Property *property = schema.find_property(class_name, name);
        return property != nullptr && property->key;
    };
    return scope;
}

Marshaller::Marshaller(const zoneschema::Schema &schema, std::string default_namespace)
    : schema_(schema), default_namespace_(std::move(default_namespace)) {}

CMPIObjectPath *Marshaller::object_path(std::string_view text) const {
    const TextPath parsed = parse_path(text, schema_scope(schema_));
    return object_path(parsed, default_namespace_);
}

CMPIObjectPath *Marshaller::object_path(const TextPath &path, const std::string &ns) const {
    const std::string &path_ns = path.name_space.empty() ? ns : path.name_space;
    CMPIStatus rc{CMPI_RC_OK, nullptr};
    CMPIObjectPath *op = cmpihost::broker()->eft->newObjectPath(cmpihost::broker(), path_ns.c_str(),
                                                                path.class_name.c_str(), &rc);
    if (op == nullptr || rc.rc != CMPI_RC_OK)
        throw UsageError("can't make an object path of class " + path.class_name);
    for (const auto &key : path.keys) add_key(op, path.class_name, key, path_ns);
    return op;
}

namespace {

// Everything a conversion needs to know besides the text.
struct Conversion {
    const Marshaller &marshaller;
    const zoneschema::Schema &schema;
    std::string ns;    // namespace for nested paths that name none
    std::string what;  // "key Name of VORNA_ZoneService", for messages
};

CMPIObjectPath *reference_value(const Conversion &c, const TextValue &text) {
    if (text.kind == TextValue::Kind::Path) return c.marshaller.object_path(*text.path, c.ns);
    const std::string refusal = c.what + ": '" + text.text + "' is no object path";
    if (text.kind != TextValue::Kind::Quoted) throw UsageError(refusal);
    TextPath parsed;
    try {
        parsed = parse_path(text.text, schema_scope(c.schema));
    } catch (const UsageError &e) {
        throw UsageError(refusal + " (" + e.what() + ")");
    }
    if (parsed.keys.empty()) throw UsageError(refusal);
    return c.marshaller.object_path(parsed, c.ns);
}

Typed typed_value(const Conversion &c, CimType type, const TextValue &text) {
    if (type == CimType::Reference) {
        Typed typed;
        typed.kind = Typed::Kind::Reference;
        typed.reference = reference_value(c, text);
        return typed;
    }
    if (text.kind == TextValue::Kind::Path)
        throw UsageError(c.what + " is a " + std::string(zoneschema::type_name(type)) +
                         ", not a reference");
    if (const IntegerType *integer = integer_type(type))
        return integer_value(*integer, text.text, c.what);

    CMPIValue value{};
    switch (type) {
        case CimType::String:
            return text_value(text.text);
        case CimType::Boolean: {
            bool flag = false;
            if (!is_false_or_true(text.text, &flag))
                throw UsageError(c.what + ": '" + text.text + "' is neither true nor false");
            value.boolean = flag ? 1 : 0;
            return scalar(value, CMPI_boolean);
        }
        case CimType::Char16:
            if (text.text.size() != 1)
                throw UsageError(c.what + ": '" + text.text + "' is not one character");
            value.char16 = static_cast<unsigned char>(text.text[0]);
            return scalar(value, CMPI_char16);
        case CimType::Real32:
        case CimType::Real64: {
            double number = 0;
            if (!parse_real(text.text, &number))
                throw UsageError(c.what + ": '" + text.text + "' is no number");
            if (type == CimType::Real32) {
                value.real32 = static_cast<CMPIReal32>(number);
                return scalar(value, CMPI_real32);
            }
            value.real64 = number;
            return scalar(value, CMPI_real64);
        }
        case CimType::Datetime: {
            CMPIStatus rc{CMPI_RC_OK, nullptr};
            value.dateTime = cmpihost::broker()->eft->newDateTimeFromChars(cmpihost::broker(),
                                                                           text.text.c_str(), &rc);
            if (value.dateTime == nullptr || rc.rc != CMPI_RC_OK)
                throw UsageError(c.what + ": '" + text.text + "' is no CIM datetime");
            return scalar(value, CMPI_dateTime);
        }
        default:
            break;
    }
    throw UsageError(c.what + ": values of this type can't be given on the command line");
}

void add_to_path(CMPIObjectPath *path, const std::string &name, const Typed &typed) {
    switch (typed.kind) {
        case Typed::Kind::Text:
            cmpihost::addStringKey(path, name, typed.text);
            return;
        case Typed::Kind::Reference:
            cmpihost::addReferenceKey(path, name, typed.reference);
            return;
        case Typed::Kind::Scalar:
            path->ft->addKey(path, name.c_str(), &typed.value, typed.type);
            return;
    }
}

void add_to_args(CMPIArgs *args, const std::string &name, const Typed &typed) {
    switch (typed.kind) {
        case Typed::Kind::Text:
            cmpihost::addStringArg(args, name, typed.text);
            return;
        case Typed::Kind::Reference:
            cmpihost::addReferenceArg(args, name, typed.reference);
            return;
        case Typed::Kind::Scalar:
            cmpihost::addValueArg(args, name, typed.value, typed.type);
            return;
    }
}

}  // namespace

void Marshaller::add_key(CMPIObjectPath *path, const std::string &class_name,
                         const TextBinding &key, const std::string &ns) const {
    const zoneschema::Property *property = schema_.find_property(class_name, key.name);
    const Conversion conversion{*this, schema_, ns, "key " + key.name + " of " + class_name};
    if (property == nullptr) {
        if (key.value.kind == TextValue::Kind::Path) {
            Typed typed;
            typed.kind = Typed::Kind::Reference;
            typed.reference = object_path(*key.value.path, ns);
            add_to_path(path, key.name, typed);
            return;
        }
        add_to_path(path, key.name, untyped_value(key.value));
        return;
    }
    if (property->array) throw UsageError(conversion.what + " is an array: it can't be a key");
    // The key keeps the user's spelling, as a CIM server passes on the client's.
    add_to_path(path, key.name, typed_value(conversion, property->type, key.value));
}

Marshaller::MethodCall Marshaller::method_call(const CMPIObjectPath *target,
                                               std::string_view text) const {
    const std::string class_name = class_of(target);
    auto method_owner = [&](std::string_view method_name) {
        NameOwner owner;
        const zoneschema::Method *method = schema_.find_method(class_name, method_name);
        if (method == nullptr) return owner;
        owner.known = true;
        owner.owns = [method](std::string_view name) {
            return method->find_parameter(name) != nullptr;
        };
        return owner;
    };
    const TextMethodCall call = parse_method_call(text, schema_scope(schema_), method_owner);

    MethodCall built;
    built.method = call.method;
    CMPIStatus rc{CMPI_RC_OK, nullptr};
    built.in = cmpihost::broker()->eft->newArgs(cmpihost::broker(), &rc);
    if (built.in == nullptr) throw UsageError("can't make the method's arguments");
    if (call.arguments.empty()) return built;

    const zoneschema::Method *method = schema_.find_method(class_name, call.method);
    if (method == nullptr)
        throw UsageError(class_name + " declares no method " + call.method +
                         ", so it takes no arguments");

    // Each argument with the position of its parameter; the provider reads
    // them in that order.
    std::vector<std::pair<int, const TextBinding *>> ordered;
    for (const auto &argument : call.arguments) {
        const int position = method->position_of(argument.name);
        if (position < 0)
            throw UsageError(method->name + " of " + class_name + " has no parameter " +
                             argument.name);
        const auto &parameter = method->parameters[static_cast<std::size_t>(position)];
        if (!parameter.in)
            throw UsageError(parameter.name + " is an output parameter of " + method->name);
        const bool repeated = std::any_of(ordered.begin(), ordered.end(),
                                          [&](const auto &seen) { return seen.first == position; });
        if (repeated) throw UsageError(parameter.name + " is given twice");
        ordered.emplace_back(position, &argument);
    }
    std::sort(ordered.begin(), ordered.end(),
              [](const auto &a, const auto &b) { return a.first < b.first; });

    const std::string target_ns = cmpihost::text(target->ft->getNameSpace(target, nullptr));
    for (const auto &[position, argument] : ordered) {
        const auto &parameter = method->parameters[static_cast<std::size_t>(position)];
        if (parameter.array)
            throw UsageError(parameter.name + " is an array, which zonecim can't pass");
        const Conversion conversion{*this, schema_, target_ns,
                                    "argument " + parameter.name + " of " + method->name};
        add_to_args(built.in, argument->name,
                    typed_value(conversion, parameter.type, argument->value));
    }
    return built;
}

}  // namespace zonecim
