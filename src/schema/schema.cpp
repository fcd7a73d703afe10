#include "schema/schema.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <set>
#include <sstream>
#include <utility>

#ifndef ZONE_SCHEMA_DEFAULT_PATH
#error "ZONE_SCHEMA_DEFAULT_PATH must name the schema file of the source tree"
#endif

namespace zoneschema {

namespace {

using nlohmann::json;

struct TypeSpelling {
    CimType type;
    std::string_view name;
};

static constexpr std::array<TypeSpelling, 15> kTypeSpellings{{
    {CimType::Boolean, "boolean"},
    {CimType::String, "string"},
    {CimType::Char16, "char16"},
    {CimType::Datetime, "datetime"},
    {CimType::Uint8, "uint8"},
    {CimType::Sint8, "sint8"},
    {CimType::Uint16, "uint16"},
    {CimType::Sint16, "sint16"},
    {CimType::Uint32, "uint32"},
    {CimType::Sint32, "sint32"},
    {CimType::Uint64, "uint64"},
    {CimType::Sint64, "sint64"},
    {CimType::Real32, "real32"},
    {CimType::Real64, "real64"},
    {CimType::Reference, "reference"},
}};

char lower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

[[noreturn]] void fail(const std::string &origin, const std::string &what) {
    throw SchemaError(origin + ": " + what);
}

// Members an object may carry; anything else is a typo worth refusing.
void expect_only(const json &object, std::initializer_list<std::string_view> allowed,
                 const std::string &origin, const std::string &where) {
    if (!object.is_object()) fail(origin, where + " is not a JSON object");
    for (const auto &item : object.items()) {
        const bool known = std::any_of(allowed.begin(), allowed.end(),
                                       [&](std::string_view a) { return a == item.key(); });
        if (!known) fail(origin, where + " has an unknown member \"" + item.key() + "\"");
    }
}

std::string text_member(const json &object, const char *member, const std::string &origin,
                        const std::string &where, bool required = true) {
    const auto it = object.find(member);
    if (it == object.end() || it->is_null()) {
        if (required) fail(origin, where + " lacks \"" + member + "\"");
        return {};
    }
    if (!it->is_string()) fail(origin, where + ": \"" + member + "\" is not a string");
    return it->get<std::string>();
}

bool flag_member(const json &object, const char *member, bool fallback, const std::string &origin,
                 const std::string &where) {
    const auto it = object.find(member);
    if (it == object.end()) return fallback;
    if (!it->is_boolean()) fail(origin, where + ": \"" + member + "\" is not true or false");
    return it->get<bool>();
}

CimType parse_type(const std::string &spelling, const std::string &origin,
                   const std::string &where) {
    for (const auto &entry : kTypeSpellings) {
        if (entry.name == spelling) return entry.type;
    }
    fail(origin, where + " has the unknown type \"" + spelling + "\"");
}

Property parse_property(const json &object, const std::string &origin, const std::string &where) {
    expect_only(object, {"name", "type", "array", "key", "reference_class"}, origin, where);
    Property property;
    property.name = text_member(object, "name", origin, where);
    const std::string at = where + " " + property.name;
    property.type = parse_type(text_member(object, "type", origin, at), origin, at);
    property.array = flag_member(object, "array", false, origin, at);
    property.key = flag_member(object, "key", false, origin, at);
    property.reference_class = text_member(object, "reference_class", origin, at, false);
    return property;
}

Parameter parse_parameter(const json &object, const std::string &origin, const std::string &where) {
    expect_only(object, {"name", "type", "array", "reference_class", "in", "out"}, origin, where);
    Parameter parameter;
    parameter.name = text_member(object, "name", origin, where);
    const std::string at = where + " " + parameter.name;
    parameter.type = parse_type(text_member(object, "type", origin, at), origin, at);
    parameter.array = flag_member(object, "array", false, origin, at);
    parameter.reference_class = text_member(object, "reference_class", origin, at, false);
    parameter.in = flag_member(object, "in", true, origin, at);
    parameter.out = flag_member(object, "out", false, origin, at);
    return parameter;
}

Method parse_method(const json &object, const std::string &origin, const std::string &where) {
    expect_only(object, {"name", "return_type", "parameters"}, origin, where);
    Method method;
    method.name = text_member(object, "name", origin, where);
    const std::string at = where + "." + method.name;
    method.return_type = parse_type(text_member(object, "return_type", origin, at), origin, at);
    if (const auto it = object.find("parameters"); it != object.end()) {
        if (!it->is_array()) fail(origin, at + ": \"parameters\" is not a list");
        for (const auto &entry : *it)
            method.parameters.push_back(parse_parameter(entry, origin, at + " parameter"));
    }
    return method;
}

ProviderTypes parse_provider_types(const json &object, const std::string &origin,
                                   const std::string &where) {
    ProviderTypes types;
    const auto it = object.find("provider");
    if (it == object.end()) return types;
    if (!it->is_array()) fail(origin, where + ": \"provider\" is not a list");
    for (const auto &entry : *it) {
        const std::string kind = entry.is_string() ? entry.get<std::string>() : std::string();
        if (kind == "instance")
            types.instance = true;
        else if (kind == "association")
            types.association = true;
        else if (kind == "method")
            types.method = true;
        else
            fail(origin, where + ": provider type \"" + kind +
                             "\" is none of instance, association, method");
    }
    return types;
}

Class parse_class(const json &object, const std::string &origin) {
    expect_only(
        object,
        {"name", "superclass", "abstract", "association", "provider", "properties", "methods"},
        origin, "a class");
    Class cls;
    cls.name = text_member(object, "name", origin, "a class");
    const std::string where = "class " + cls.name;
    cls.superclass = text_member(object, "superclass", origin, where, false);
    cls.abstract = flag_member(object, "abstract", false, origin, where);
    cls.association = flag_member(object, "association", false, origin, where);
    cls.provider = parse_provider_types(object, origin, where);
    if (const auto it = object.find("properties"); it != object.end()) {
        if (!it->is_array()) fail(origin, where + ": \"properties\" is not a list");
        for (const auto &entry : *it)
            cls.properties.push_back(parse_property(entry, origin, where + " property"));
    }
    if (const auto it = object.find("methods"); it != object.end()) {
        if (!it->is_array()) fail(origin, where + ": \"methods\" is not a list");
        for (const auto &entry : *it) cls.methods.push_back(parse_method(entry, origin, where));
    }
    return cls;
}

ProviderInfo parse_provider(const json &object, const std::string &origin) {
    expect_only(
        object,
        {"name", "location", "module", "interface_type", "interface_version", "vendor", "version"},
        origin, "the provider");
    ProviderInfo info;
    info.name = text_member(object, "name", origin, "the provider");
    info.location = text_member(object, "location", origin, "the provider");
    info.module = text_member(object, "module", origin, "the provider");
    info.interface_type = text_member(object, "interface_type", origin, "the provider");
    info.interface_version = text_member(object, "interface_version", origin, "the provider");
    info.vendor = text_member(object, "vendor", origin, "the provider");
    info.version = text_member(object, "version", origin, "the provider");
    return info;
}

template <typename Named>
bool has_duplicate_names(const std::vector<Named> &items, std::string *duplicate) {
    for (std::size_t i = 0; i < items.size(); ++i) {
        for (std::size_t j = i + 1; j < items.size(); ++j) {
            if (same_name(items[i].name, items[j].name)) {
                *duplicate = items[j].name;
                return true;
            }
        }
    }
    return false;
}

}  // namespace

std::string_view type_name(CimType type) {
    for (const auto &entry : kTypeSpellings) {
        if (entry.type == type) return entry.name;
    }
    return "unknown";
}

bool same_name(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (lower(a[i]) != lower(b[i])) return false;
    }
    return true;
}

const Parameter *Method::find_parameter(std::string_view wanted) const {
    const int position = position_of(wanted);
    return position < 0 ? nullptr : &parameters[static_cast<std::size_t>(position)];
}

int Method::position_of(std::string_view wanted) const {
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (same_name(parameters[i].name, wanted)) return static_cast<int>(i);
    }
    return -1;
}

Schema Schema::parse(const std::string &json_text, const std::string &origin) {
    json document;
    try {
        document = json::parse(json_text);
    } catch (const json::exception &e) {
        fail(origin, std::string("not valid JSON: ") + e.what());
    }
    expect_only(document, {"comment", "namespace", "provider", "classes"}, origin, "the document");
    Schema schema;
    schema.namespace_ = text_member(document, "namespace", origin, "the document");
    const auto provider = document.find("provider");
    if (provider == document.end()) fail(origin, "the document lacks \"provider\"");
    schema.provider_ = parse_provider(*provider, origin);
    const auto classes = document.find("classes");
    if (classes == document.end() || !classes->is_array())
        fail(origin, "the document lacks the list \"classes\"");
    for (const auto &entry : *classes) schema.classes_.push_back(parse_class(entry, origin));
    try {
        schema.check();
    } catch (const SchemaError &e) {
        fail(origin, e.what());
    }
    return schema;
}

Schema Schema::load(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw SchemaError(path + ": can't be opened");
    std::ostringstream text;
    text << in.rdbuf();
    if (in.bad()) throw SchemaError(path + ": can't be read");
    return parse(text.str(), path);
}

std::string Schema::installed_path() {
    const char *env = std::getenv("ZONE_SCHEMA");
    if (env != nullptr && *env != '\0') return env;
    return ZONE_SCHEMA_DEFAULT_PATH;
}

const Schema &Schema::installed() {
    // Read once, on first use; a failure is thrown again on every call.
    static const Schema schema = load(installed_path());
    return schema;
}

const Class *Schema::find(std::string_view name) const {
    for (const auto &cls : classes_) {
        if (same_name(cls.name, name)) return &cls;
    }
    return nullptr;
}

std::vector<const Class *> Schema::superclass_chain(std::string_view name) const {
    std::vector<const Class *> chain;
    // check() refuses cycles; the bound only guards a schema built by hand.
    for (const Class *cls = find(name); cls != nullptr && chain.size() <= classes_.size();
         cls = cls->superclass.empty() ? nullptr : find(cls->superclass)) {
        chain.push_back(cls);
    }
    return chain;
}

bool Schema::is_a(std::string_view derived, std::string_view ancestor) const {
    for (const Class *cls : superclass_chain(derived)) {
        if (same_name(cls->name, ancestor)) return true;
    }
    return false;
}

std::vector<const Class *> Schema::subclasses(std::string_view name) const {
    std::vector<const Class *> found;
    for (const auto &cls : classes_) {
        if (!same_name(cls.name, name) && is_a(cls.name, name)) found.push_back(&cls);
    }
    return found;
}

const Property *Schema::find_property(std::string_view class_name,
                                      std::string_view property) const {
    for (const Class *cls : superclass_chain(class_name)) {
        for (const auto &candidate : cls->properties) {
            if (same_name(candidate.name, property)) return &candidate;
        }
    }
    return nullptr;
}

std::vector<Property> Schema::all_properties(std::string_view class_name) const {
    auto chain = superclass_chain(class_name);
    std::reverse(chain.begin(), chain.end());
    std::vector<Property> properties;
    for (const Class *cls : chain) {
        for (const auto &declared : cls->properties) {
            auto same = std::find_if(properties.begin(), properties.end(), [&](const Property &p) {
                return same_name(p.name, declared.name);
            });
            if (same != properties.end())
                *same = declared;
            else
                properties.push_back(declared);
        }
    }
    return properties;
}

std::vector<Property> Schema::keys(std::string_view class_name) const {
    std::vector<Property> found;
    for (auto &property : all_properties(class_name)) {
        if (property.key) found.push_back(std::move(property));
    }
    return found;
}

const Method *Schema::find_method(std::string_view class_name, std::string_view method) const {
    for (const Class *cls : superclass_chain(class_name)) {
        for (const auto &candidate : cls->methods) {
            if (same_name(candidate.name, method)) return &candidate;
        }
    }
    return nullptr;
}

std::vector<const Method *> Schema::all_methods(std::string_view class_name) const {
    std::vector<const Method *> methods;
    for (const Class *cls : superclass_chain(class_name)) {
        for (const auto &declared : cls->methods) {
            const bool overridden =
                std::any_of(methods.begin(), methods.end(),
                            [&](const Method *m) { return same_name(m->name, declared.name); });
            if (!overridden) methods.push_back(&declared);
        }
    }
    return methods;
}

// The rules a schema file must keep, so that everything generated from it
// (MOF, registrations, argument typing) can rely on them.
void Schema::check() const {
    std::string duplicate;
    if (has_duplicate_names(classes_, &duplicate))
        throw SchemaError("class " + duplicate + " is declared twice");

    for (const auto &cls : classes_) {
        const std::string where = "class " + cls.name;
        if (!cls.superclass.empty() && find(cls.superclass) == nullptr)
            throw SchemaError(where + ": unknown superclass " + cls.superclass);
        if (superclass_chain(cls.name).size() > classes_.size())
            throw SchemaError(where + ": its superclass chain loops");
        if (has_duplicate_names(cls.properties, &duplicate))
            throw SchemaError(where + ": property " + duplicate + " is declared twice");
        if (has_duplicate_names(cls.methods, &duplicate))
            throw SchemaError(where + ": method " + duplicate + " is declared twice");
        if (!cls.superclass.empty() && find(cls.superclass)->association && !cls.association)
            throw SchemaError(where + ": derives from an association but is not one");

        for (const auto &property : cls.properties) {
            const std::string at = where + " property " + property.name;
            const bool is_reference = property.type == CimType::Reference;
            if (is_reference != !property.reference_class.empty())
                throw SchemaError(at + ": a reference, and only a reference, names a class");
            if (is_reference && find(property.reference_class) == nullptr)
                throw SchemaError(at + ": unknown class " + property.reference_class);
            if (is_reference && !cls.association)
                throw SchemaError(at + ": only associations have reference properties");
            if (cls.superclass.empty()) continue;
            const Property *inherited = find_property(cls.superclass, property.name);
            if (inherited == nullptr) continue;
            if (inherited->type != property.type || inherited->array != property.array)
                throw SchemaError(at + ": changes the type of the inherited property");
            if (is_reference && !is_a(property.reference_class, inherited->reference_class))
                throw SchemaError(at + ": " + property.reference_class +
                                  " is no kind of the inherited " + inherited->reference_class);
        }

        for (const auto &method : cls.methods) {
            const std::string at = where + " method " + method.name;
            if (method.return_type == CimType::Reference)
                throw SchemaError(at + ": a method can't return a reference");
            if (has_duplicate_names(method.parameters, &duplicate))
                throw SchemaError(at + ": parameter " + duplicate + " is declared twice");
            for (const auto &parameter : method.parameters) {
                const std::string p = at + " parameter " + parameter.name;
                const bool is_reference = parameter.type == CimType::Reference;
                if (is_reference != !parameter.reference_class.empty())
                    throw SchemaError(p + ": a reference, and only a reference, names a class");
                if (is_reference && find(parameter.reference_class) == nullptr)
                    throw SchemaError(p + ": unknown class " + parameter.reference_class);
                if (!parameter.in && !parameter.out) throw SchemaError(p + ": neither IN nor OUT");
            }
        }

        std::size_t references = 0;
        for (const auto &property : all_properties(cls.name)) {
            if (property.type == CimType::Reference) ++references;
        }
        if (cls.association && references < 2)
            throw SchemaError(where + ": an association needs two references");
        if (!cls.abstract && keys(cls.name).empty())
            throw SchemaError(where + ": a concrete class needs a key");
        if (cls.provider.association && !cls.association)
            throw SchemaError(where + ": only an association has an association provider");
        if (cls.provider.method && all_methods(cls.name).empty())
            throw SchemaError(where + ": a method provider for a class without methods");
        if (cls.provider.any() && cls.abstract)
            throw SchemaError(where + ": an abstract class is served by no provider");
    }
}

}  // namespace zoneschema
