#include "server/cimxml_decode.h"

#include <strings.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

#include "host/cmpihost.h"
#include "server/cim_status.h"

namespace zoneserver {

namespace {

using zoneschema::CimType;

// References nest (a reference key of a reference key ...); a client can't
// need more than a handful, and a hostile one must not exhaust the stack.
constexpr int kMaxReferenceDepth = 8;

struct TypeRow {
    CimType schema;
    CMPIType cmpi;
};

static constexpr TypeRow kTypes[] = {
    {CimType::Boolean, CMPI_boolean}, {CimType::String, CMPI_string},
    {CimType::Char16, CMPI_char16},   {CimType::Datetime, CMPI_dateTime},
    {CimType::Uint8, CMPI_uint8},     {CimType::Sint8, CMPI_sint8},
    {CimType::Uint16, CMPI_uint16},   {CimType::Sint16, CMPI_sint16},
    {CimType::Uint32, CMPI_uint32},   {CimType::Sint32, CMPI_sint32},
    {CimType::Uint64, CMPI_uint64},   {CimType::Sint64, CMPI_sint64},
    {CimType::Real32, CMPI_real32},   {CimType::Real64, CMPI_real64},
    {CimType::Reference, CMPI_ref},
};

const CMPIBroker *broker() {
    return cmpihost::broker();
}

[[noreturn]] void refuse(const std::string &reason) {
    throw CimError(kCimInvalidParameter, reason);
}

bool same(std::string_view a, std::string_view b) {
    return zoneschema::same_name(a, b);
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlank = " \t\r\n";
    const auto first = text.find_first_not_of(kBlank);
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(kBlank);
    return text.substr(first, last - first + 1);
}

std::optional<CimType> type_from_name(std::string_view name) {
    for (const TypeRow &row : kTypes)
        if (same(zoneschema::type_name(row.schema), name)) return row.schema;
    return std::nullopt;
}

// Decimal with an optional sign, or hexadecimal after "0x".
template <typename Int>
std::optional<Int> integer_from_text(std::string_view text) {
    text = trimmed(text);
    bool negative = false;
    if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
        negative = text[0] == '-';
        text.remove_prefix(1);
    }
    int base = 10;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        base = 16;
        text.remove_prefix(2);
    }
    if (text.empty()) return std::nullopt;
    std::uint64_t magnitude = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    if (negative) {
        if constexpr (std::is_unsigned_v<Int>) {
            if (magnitude != 0) return std::nullopt;
            return Int{0};
        } else {
            const auto limit = static_cast<std::uint64_t>(std::numeric_limits<Int>::max()) + 1;
            if (magnitude > limit) return std::nullopt;
            return static_cast<Int>(-static_cast<std::int64_t>(magnitude - 1) - 1);
        }
    }
    if (magnitude > static_cast<std::uint64_t>(std::numeric_limits<Int>::max()))
        return std::nullopt;
    return static_cast<Int>(magnitude);
}

std::optional<double> real_from_text(std::string_view text) {
    text = trimmed(text);
    if (text == "NaN") return std::numeric_limits<double>::quiet_NaN();
    if (text == "INF" || text == "+INF") return std::numeric_limits<double>::infinity();
    if (text == "-INF") return -std::numeric_limits<double>::infinity();
    if (!text.empty() && text[0] == '+') text.remove_prefix(1);
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<bool> boolean_from_text(std::string_view text) {
    text = trimmed(text);
    if (same(text, "true")) return true;
    if (same(text, "false")) return false;
    return std::nullopt;
}

// Exactly one UTF-8 character of the basic multilingual plane.
std::optional<CMPIChar16> char16_from_text(std::string_view text) {
    if (text.empty()) return std::nullopt;
    const auto lead = static_cast<unsigned char>(text[0]);
    std::size_t length = 1;
    std::uint32_t code = lead;
    if (lead >= 0xE0 && lead < 0xF0) {
        length = 3;
        code = lead & 0x0F;
    } else if (lead >= 0xC0 && lead < 0xE0) {
        length = 2;
        code = lead & 0x1F;
    } else if (lead >= 0x80) {
        return std::nullopt;
    }
    if (text.size() != length) return std::nullopt;
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) return std::nullopt;
        code = (code << 6) | (next & 0x3F);
    }
    return static_cast<CMPIChar16>(code);
}

template <typename Int>
Int checked_integer(std::string_view text, std::string_view type, std::string_view what) {
    const std::optional<Int> value = integer_from_text<Int>(text);
    if (!value)
        refuse(std::string(what) + ": \"" + std::string(text) + "\" is no " + std::string(type));
    return *value;
}

TypedValue good(CMPIType type) {
    TypedValue typed;
    typed.type = type;
    typed.null = false;
    return typed;
}

TypedValue null_of(CMPIType type) {
    TypedValue typed;
    typed.type = type;
    return typed;
}

CMPIString *new_string(std::string_view text) {
    return broker()->eft->newString(broker(), std::string(text).c_str(), nullptr);
}

std::string_view text_of(pugi::xml_node node) {
    return node.child_value();
}

std::string class_name_of(const CMPIObjectPath *path) {
    return cmpihost::text(path->ft->getClassName(path, nullptr));
}

// The first child element of node whose name is one of names.
pugi::xml_node first_child_named(pugi::xml_node node,
                                 std::initializer_list<std::string_view> names) {
    for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
        if (child.type() != pugi::node_element) continue;
        for (std::string_view name : names)
            if (name == child.name()) return child;
    }
    return {};
}

// The value element a PARAMVALUE, PROPERTY or KEYBINDING holds, if any.
pugi::xml_node value_child(pugi::xml_node holder) {
    return first_child_named(holder, {"VALUE", "VALUE.ARRAY", "VALUE.REFERENCE", "VALUE.REFARRAY",
                                      "VALUE.NULL", "KEYVALUE"});
}

// An unknown key typed by the VALUETYPE wbemcli picked from its spelling.
TypedValue value_by_value_type(std::string_view text, std::string_view value_type) {
    if (same(value_type, "boolean")) {
        if (const auto flag = boolean_from_text(text)) {
            TypedValue typed = good(CMPI_boolean);
            typed.value.boolean = *flag ? 1 : 0;
            return typed;
        }
    } else if (same(value_type, "numeric")) {
        if (const auto number = integer_from_text<CMPISint64>(text)) {
            TypedValue typed = good(CMPI_sint64);
            typed.value.sint64 = *number;
            return typed;
        }
        if (const auto number = integer_from_text<CMPIUint64>(text)) {
            TypedValue typed = good(CMPI_uint64);
            typed.value.uint64 = *number;
            return typed;
        }
        if (const auto number = real_from_text(text)) {
            TypedValue typed = good(CMPI_real64);
            typed.value.real64 = *number;
            return typed;
        }
    }
    TypedValue typed = good(CMPI_string);
    typed.value.string = new_string(text);
    return typed;
}

}  // namespace

CMPIType cmpi_type(CimType type) {
    for (const TypeRow &row : kTypes)
        if (row.schema == type) return row.cmpi;
    return CMPI_string;
}

TypedValue value_from_text(std::string_view text, CimType type, std::string_view what) {
    TypedValue typed = good(cmpi_type(type));
    CMPIValue &v = typed.value;
    switch (type) {
        case CimType::String:
            v.string = new_string(text);
            break;
        case CimType::Boolean: {
            const auto flag = boolean_from_text(text);
            if (!flag) refuse(std::string(what) + ": \"" + std::string(text) + "\" is no boolean");
            v.boolean = *flag ? 1 : 0;
            break;
        }
        case CimType::Char16: {
            const auto c = char16_from_text(text);
            if (!c) refuse(std::string(what) + ": \"" + std::string(text) + "\" is no char16");
            v.char16 = *c;
            break;
        }
        case CimType::Datetime:
            v.dateTime = broker()->eft->newDateTimeFromChars(
                broker(), std::string(trimmed(text)).c_str(), nullptr);
            if (v.dateTime == nullptr)
                refuse(std::string(what) + ": \"" + std::string(text) + "\" is no datetime");
            break;
        case CimType::Uint8:
            v.uint8 = checked_integer<CMPIUint8>(text, "uint8", what);
            break;
        case CimType::Sint8:
            v.sint8 = checked_integer<CMPISint8>(text, "sint8", what);
            break;
        case CimType::Uint16:
            v.uint16 = checked_integer<CMPIUint16>(text, "uint16", what);
            break;
        case CimType::Sint16:
            v.sint16 = checked_integer<CMPISint16>(text, "sint16", what);
            break;
        case CimType::Uint32:
            v.uint32 = checked_integer<CMPIUint32>(text, "uint32", what);
            break;
        case CimType::Sint32:
            v.sint32 = checked_integer<CMPISint32>(text, "sint32", what);
            break;
        case CimType::Uint64:
            v.uint64 = checked_integer<CMPIUint64>(text, "uint64", what);
            break;
        case CimType::Sint64:
            v.sint64 = checked_integer<CMPISint64>(text, "sint64", what);
            break;
        case CimType::Real32:
        case CimType::Real64: {
            const auto number = real_from_text(text);
            if (!number) refuse(std::string(what) + ": \"" + std::string(text) + "\" is no real");
            if (type == CimType::Real32)
                v.real32 = static_cast<CMPIReal32>(*number);
            else
                v.real64 = *number;
            break;
        }
        case CimType::Reference:
            refuse(std::string(what) + ": a reference can't be read from plain text here");
    }
    return typed;
}

std::string namespace_path(pugi::xml_node local_namespace_path) {
    std::string ns;
    for (pugi::xml_node segment : local_namespace_path.children("NAMESPACE")) {
        if (!ns.empty()) ns += '/';
        ns += segment.attribute("NAME").value();
    }
    return ns;
}

Decoder::Decoder(const zoneschema::Schema &schema, std::string ns)
    : schema_(schema), ns_(std::move(ns)) {}

CMPIObjectPath *Decoder::instance_name(pugi::xml_node node, const std::string &ns) const {
    return instance_name(node, ns, 0);
}

CMPIObjectPath *Decoder::reference(pugi::xml_node node) const {
    return reference(node, 0);
}

CMPIObjectPath *Decoder::instance_name(pugi::xml_node node, const std::string &ns,
                                       int depth) const {
    const std::string class_name = node.attribute("CLASSNAME").value();
    if (class_name.empty()) refuse("INSTANCENAME without CLASSNAME");
    CMPIObjectPath *path =
        broker()->eft->newObjectPath(broker(), ns.c_str(), class_name.c_str(), nullptr);
    if (path == nullptr) throw CimError(kCimFailed, "can't make an object path");

    for (pugi::xml_node binding : node.children("KEYBINDING")) {
        const std::string key = binding.attribute("NAME").value();
        if (key.empty()) refuse("KEYBINDING without NAME in INSTANCENAME of " + class_name);
        const TypedValue typed = key_value(class_name, key, binding, depth);
        path->ft->addKey(path, key.c_str(), typed.pointer(), typed.type);
    }
    // A single key may come without its name: <INSTANCENAME><KEYVALUE>..
    if (pugi::xml_node lone = node.child("KEYVALUE")) {
        const auto keys = schema_.keys(class_name);
        if (keys.size() != 1) refuse("a KEYVALUE without KEYBINDING needs a class with one key");
        const TypedValue typed = key_value(class_name, keys[0].name, node, depth);
        path->ft->addKey(path, keys[0].name.c_str(), typed.pointer(), typed.type);
    }
    return path;
}

TypedValue Decoder::key_value(const std::string &class_name, std::string_view key,
                              pugi::xml_node binding, int depth) const {
    const std::string what = "key " + std::string(key) + " of " + class_name;
    const zoneschema::Property *declared = schema_.find_property(class_name, key);
    if (pugi::xml_node ref = binding.child("VALUE.REFERENCE")) {
        if (declared != nullptr && declared->type != CimType::Reference)
            refuse(what + ": a reference where " +
                   std::string(zoneschema::type_name(declared->type)) + " is declared");
        TypedValue typed = good(CMPI_ref);
        typed.value.ref = reference(ref, depth + 1);
        return typed;
    }
    pugi::xml_node value = binding.child("KEYVALUE");
    if (!value) refuse(what + ": KEYBINDING without KEYVALUE or VALUE.REFERENCE");
    const std::string_view text = text_of(value);
    if (declared != nullptr) {
        if (declared->type == CimType::Reference) {
            // A reference key typed as text: read it as a path.
            std::string error;
            const auto parsed = cmpihost::parsePath(std::string(text), &error);
            if (!parsed) refuse(what + ": not a reference: " + error);
            TypedValue typed = good(CMPI_ref);
            typed.value.ref = *parsed;
            return typed;
        }
        return value_from_text(text, declared->type, what);
    }
    if (const auto type = type_from_name(value.attribute("TYPE").value());
        type && *type != CimType::Reference)
        return value_from_text(text, *type, what);
    return value_by_value_type(text, value.attribute("VALUETYPE").value());
}

CMPIObjectPath *Decoder::reference(pugi::xml_node node, int depth) const {
    if (depth > kMaxReferenceDepth) refuse("references nested too deeply");
    if (std::strcmp(node.name(), "VALUE.REFERENCE") == 0) {
        node = first_child_named(node, {"INSTANCEPATH", "LOCALINSTANCEPATH", "INSTANCENAME",
                                        "CLASSPATH", "LOCALCLASSPATH", "CLASSNAME"});
        if (!node) refuse("VALUE.REFERENCE without a path");
    }
    const std::string_view kind = node.name();
    std::string host;
    std::string ns = ns_;
    pugi::xml_node local_ns;
    if (kind == "INSTANCEPATH" || kind == "CLASSPATH") {
        pugi::xml_node ns_path = node.child("NAMESPACEPATH");
        host = ns_path.child_value("HOST");
        local_ns = ns_path.child("LOCALNAMESPACEPATH");
    } else if (kind == "LOCALINSTANCEPATH" || kind == "LOCALCLASSPATH") {
        local_ns = node.child("LOCALNAMESPACEPATH");
    }
    if (local_ns) {
        const std::string named = namespace_path(local_ns);
        if (!named.empty()) ns = named;
    }

    CMPIObjectPath *path = nullptr;
    if (pugi::xml_node name = kind == "INSTANCENAME" ? node : node.child("INSTANCENAME")) {
        path = instance_name(name, ns, depth);
    } else {
        pugi::xml_node class_name = kind == "CLASSNAME" ? node : node.child("CLASSNAME");
        if (!class_name) refuse("a reference without INSTANCENAME or CLASSNAME");
        path = broker()->eft->newObjectPath(broker(), ns.c_str(),
                                            class_name.attribute("NAME").value(), nullptr);
        if (path == nullptr) throw CimError(kCimFailed, "can't make an object path");
    }
    if (!host.empty()) path->ft->setHostname(path, host.c_str());
    return path;
}

TypedValue Decoder::reference_value(pugi::xml_node holder, std::string_view what) const {
    pugi::xml_node value = value_child(holder);
    if (!value || std::strcmp(value.name(), "VALUE.NULL") == 0) return null_of(CMPI_ref);
    TypedValue typed = good(CMPI_ref);
    if (std::strcmp(value.name(), "VALUE.REFERENCE") == 0) {
        typed.value.ref = reference(value, 1);
        return typed;
    }
    if (std::strcmp(value.name(), "VALUE") != 0)
        refuse(std::string(what) + ": a reference is expected");
    // A reference written as text, the way paths are typed on a command line.
    std::string error;
    const auto parsed = cmpihost::parsePath(std::string(text_of(value)), &error);
    if (!parsed) refuse(std::string(what) + ": not a reference: " + error);
    if (cmpihost::text((*parsed)->ft->getNameSpace(*parsed, nullptr)).empty())
        (*parsed)->ft->setNameSpace(*parsed, ns_.c_str());
    typed.value.ref = *parsed;
    return typed;
}

TypedValue Decoder::declared_value(pugi::xml_node holder, CimType type, bool array,
                                   std::string_view what) const {
    if (!array) {
        if (type == CimType::Reference) return reference_value(holder, what);
        pugi::xml_node value = value_child(holder);
        if (!value || std::strcmp(value.name(), "VALUE.NULL") == 0) return null_of(cmpi_type(type));
        if (std::strcmp(value.name(), "VALUE") != 0 && std::strcmp(value.name(), "KEYVALUE") != 0)
            refuse(std::string(what) + ": a single " + std::string(zoneschema::type_name(type)) +
                   " value is expected");
        return value_from_text(text_of(value), type, what);
    }

    const CMPIType element = cmpi_type(type);
    const auto array_type = static_cast<CMPIType>(CMPI_ARRAY | element);
    pugi::xml_node list = value_child(holder);
    if (!list || std::strcmp(list.name(), "VALUE.NULL") == 0) return null_of(array_type);
    const char *expected = type == CimType::Reference ? "VALUE.REFARRAY" : "VALUE.ARRAY";
    if (std::strcmp(list.name(), expected) != 0)
        refuse(std::string(what) + ": " + expected + " is expected");

    std::vector<pugi::xml_node> items;
    for (pugi::xml_node item = list.first_child(); item; item = item.next_sibling())
        if (item.type() == pugi::node_element) items.push_back(item);
    CMPIArray *cmpi_array =
        broker()->eft->newArray(broker(), static_cast<CMPICount>(items.size()), element, nullptr);
    if (cmpi_array == nullptr) throw CimError(kCimFailed, "can't make an array");
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (std::strcmp(items[i].name(), "VALUE.NULL") == 0) continue;
        TypedValue item;
        if (type == CimType::Reference) {
            item = good(CMPI_ref);
            item.value.ref = reference(items[i], 1);
        } else {
            item = value_from_text(text_of(items[i]), type, what);
        }
        cmpi_array->ft->setElementAt(cmpi_array, static_cast<CMPICount>(i), &item.value, element);
    }
    TypedValue typed = good(array_type);
    typed.value.array = cmpi_array;
    return typed;
}

TypedValue Decoder::undeclared_value(pugi::xml_node holder, std::string_view type_text,
                                     std::string_view what) const {
    pugi::xml_node value = value_child(holder);
    const std::string_view shape = value ? value.name() : "";
    const bool array = shape == "VALUE.ARRAY" || shape == "VALUE.REFARRAY";
    if (const auto type = type_from_name(type_text))
        return declared_value(holder, *type, array, what);
    if (shape == "VALUE.REFERENCE" || shape == "VALUE.REFARRAY")
        return declared_value(holder, CimType::Reference, array, what);
    return declared_value(holder, CimType::String, array, what);
}

CMPIInstance *Decoder::instance(pugi::xml_node node, const CMPIObjectPath *given) const {
    const std::string class_name = node.attribute("CLASSNAME").value();
    if (class_name.empty()) refuse("INSTANCE without CLASSNAME");

    struct Named {
        std::string name;
        TypedValue value;
    };
    std::vector<Named> properties;
    for (pugi::xml_node property = node.first_child(); property;
         property = property.next_sibling()) {
        const std::string_view kind = property.name();
        if (kind != "PROPERTY" && kind != "PROPERTY.ARRAY" && kind != "PROPERTY.REFERENCE")
            continue;
        const std::string name = property.attribute("NAME").value();
        if (name.empty()) refuse("a property of " + class_name + " without NAME");
        const std::string what = "property " + name + " of " + class_name;
        const zoneschema::Property *declared = schema_.find_property(class_name, name);
        TypedValue typed;
        if (kind == "PROPERTY.REFERENCE")
            typed = reference_value(property, what);
        else if (declared != nullptr)
            typed = declared_value(property, declared->type, declared->array, what);
        else
            typed = undeclared_value(property, property.attribute("TYPE").value(), what);
        properties.push_back({name, typed});
    }

    CMPIObjectPath *path = nullptr;
    if (given != nullptr) {
        path = given->ft->clone(given, nullptr);
    } else {
        path = broker()->eft->newObjectPath(broker(), ns_.c_str(), class_name.c_str(), nullptr);
        if (path == nullptr) throw CimError(kCimFailed, "can't make an object path");
        for (const zoneschema::Property &key : schema_.keys(class_name)) {
            for (const Named &property : properties) {
                if (same(property.name, key.name) && !property.value.null)
                    path->ft->addKey(path, key.name.c_str(), property.value.pointer(),
                                     property.value.type);
            }
        }
    }
    CMPIInstance *instance = broker()->eft->newInstance(broker(), path, nullptr);
    if (instance == nullptr) throw CimError(kCimFailed, "can't make an instance");
    for (const Named &property : properties)
        instance->ft->setProperty(instance, property.name.c_str(), property.value.pointer(),
                                  property.value.type);
    return instance;
}

CMPIArgs *Decoder::method_arguments(const CMPIObjectPath *target, std::string_view method,
                                    pugi::xml_node method_call) const {
    CMPIArgs *args = broker()->eft->newArgs(broker(), nullptr);
    if (args == nullptr) throw CimError(kCimFailed, "can't make the arguments");
    const std::string class_name = class_name_of(target);
    const zoneschema::Method *declared = schema_.find_method(class_name, method);

    if (declared == nullptr) {
        // A method the schema doesn't know goes to the provider as sent, in
        // wire order, typed by PARAMTYPE or by the shape of each value.
        for (pugi::xml_node param : method_call.children("PARAMVALUE")) {
            const std::string name = param.attribute("NAME").value();
            if (name.empty()) refuse("PARAMVALUE without NAME");
            const TypedValue typed =
                undeclared_value(param, param.attribute("PARAMTYPE").value(), "parameter " + name);
            args->ft->addArg(args, name.c_str(), typed.pointer(), typed.type);
        }
        return args;
    }

    // Slot per declared parameter; a repeated parameter keeps its last value.
    std::vector<pugi::xml_node> given(declared->parameters.size());
    for (pugi::xml_node param : method_call.children("PARAMVALUE")) {
        const std::string_view name = param.attribute("NAME").value();
        const int position = declared->position_of(name);
        if (position < 0)
            refuse("method " + declared->name + " of " + class_name + " has no parameter " +
                   std::string(name));
        if (!declared->parameters[static_cast<std::size_t>(position)].in)
            refuse(std::string(name) + " is an output parameter of " + declared->name);
        given[static_cast<std::size_t>(position)] = param;
    }
    for (std::size_t i = 0; i < given.size(); ++i) {
        if (!given[i]) continue;
        const zoneschema::Parameter &parameter = declared->parameters[i];
        const TypedValue typed = declared_value(given[i], parameter.type, parameter.array,
                                                "parameter " + parameter.name);
        args->ft->addArg(args, parameter.name.c_str(), typed.pointer(), typed.type);
    }
    return args;
}

}  // namespace zoneserver
