// The class schema of the zone provider, read from schema/zoning_classes.json.
//
// One machine-readable description of every class the provider serves,
// builds or takes methods on, and of the CIM_ classes they derive from: the
// command line types method arguments with it, the MOF and the registrations
// are generated from the same file, and a CIM-XML front end can answer
// GetClass from it.
//
// Where the file is found: the environment variable ZONE_SCHEMA names it when
// set and not empty; otherwise the path compiled in (the source tree's
// schema/zoning_classes.json) is used.
//
// Names of classes, properties, methods and parameters are compared without
// regard to ASCII case, as CIM names are. Every class lists only what it
// declares itself; the lookups below follow the superclass chain.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zoneschema {

// A schema file that can't be read, isn't JSON or isn't consistent.
class SchemaError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// CIM data types as the schema spells them; "reference" carries a class.
enum class CimType {
    Boolean,
    String,
    Char16,
    Datetime,
    Uint8,
    Sint8,
    Uint16,
    Sint16,
    Uint32,
    Sint32,
    Uint64,
    Sint64,
    Real32,
    Real64,
    Reference,
};

// The schema's spelling of a type ("uint16", "reference", ...).
std::string_view type_name(CimType type);

struct Property {
    std::string name;
    CimType type = CimType::String;
    bool array = false;
    bool key = false;
    std::string reference_class;  // only for CimType::Reference
};

struct Parameter {
    std::string name;
    CimType type = CimType::String;
    bool array = false;
    std::string reference_class;  // only for CimType::Reference
    bool in = true;
    bool out = false;
};

struct Method {
    std::string name;
    CimType return_type = CimType::Uint32;
    std::vector<Parameter> parameters;  // in declared order: the provider reads them by position

    // The parameter of that name, or null.
    const Parameter *find_parameter(std::string_view name) const;
    // Its index in the declared order, or -1.
    int position_of(std::string_view name) const;
};

// What a provider registration has to claim for a class.
struct ProviderTypes {
    bool instance = false;
    bool association = false;
    bool method = false;
    bool any() const { return instance || association || method; }
};

struct Class {
    std::string name;
    std::string superclass;  // empty for a root class
    bool abstract = false;
    bool association = false;
    ProviderTypes provider;
    std::vector<Property> properties;  // declared by this class itself
    std::vector<Method> methods;       // declared by this class itself
};

struct ProviderInfo {
    std::string name;
    std::string location;
    std::string module;
    std::string interface_type;
    std::string interface_version;
    std::string vendor;
    std::string version;
};

class Schema {
  public:
    // Reads and checks a schema file; throws SchemaError.
    static Schema load(const std::string &path);
    // Reads a schema from JSON text; throws SchemaError. origin names it in errors.
    static Schema parse(const std::string &json_text, const std::string &origin);
    // The schema of this installation (ZONE_SCHEMA or the compiled-in path),
    // read once; throws SchemaError when it can't be read.
    static const Schema &installed();
    // The path installed() reads.
    static std::string installed_path();

    const std::string &default_namespace() const { return namespace_; }
    const ProviderInfo &provider() const { return provider_; }
    const std::vector<Class> &classes() const { return classes_; }

    // The class of that name, or null.
    const Class *find(std::string_view name) const;
    // The class itself, then its superclass, up to the root class.
    std::vector<const Class *> superclass_chain(std::string_view name) const;
    // Every class that derives from it, directly or not, in file order.
    std::vector<const Class *> subclasses(std::string_view name) const;
    // True when derived is ancestor or one of its subclasses.
    bool is_a(std::string_view derived, std::string_view ancestor) const;

    // The property as the nearest class of the chain declares it, or null.
    const Property *find_property(std::string_view class_name, std::string_view property) const;
    // Every property of the class with inherited ones, root class first; a
    // redeclared property keeps its first position and takes the nearest
    // declaration.
    std::vector<Property> all_properties(std::string_view class_name) const;
    // The key properties among all_properties.
    std::vector<Property> keys(std::string_view class_name) const;
    // The method as the nearest class of the chain declares it, or null.
    const Method *find_method(std::string_view class_name, std::string_view method) const;
    // Every method of the class with inherited ones (nearest declaration).
    std::vector<const Method *> all_methods(std::string_view class_name) const;

  private:
    void check() const;

    std::string namespace_;
    ProviderInfo provider_;
    std::vector<Class> classes_;
};

// ASCII case-insensitive equality of two names.
bool same_name(std::string_view a, std::string_view b);

}  // namespace zoneschema
