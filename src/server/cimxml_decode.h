// CIM-XML of a request turned into the CMPI objects a provider receives,
// typed by the class schema.
//
// Clients type loosely: wbemcli sends a key as "numeric" when the user typed
// digits, sends method arguments without PARAMTYPE and references as
// INSTANCEPATH, LOCALINSTANCEPATH or a bare INSTANCENAME. So a key or a
// parameter that the schema knows takes the schema's type; one it doesn't
// know is typed by what the client said (TYPE, PARAMTYPE, VALUETYPE, or the
// shape of the value). Booleans are read without regard to case.
//
// Method arguments are handed over in the order the schema declares the
// method's parameters, whatever order the client sent them in, because the
// provider reads them by position.
//
// Every CMPI object made here belongs to the cmpihost::Request current on the
// calling thread. Input the provider must not see throws CimError (code 4,
// CIM_ERR_INVALID_PARAMETER, with a reason).
#pragma once

#include <cmpidt.h>
#include <cmpift.h>

#include <pugixml.hpp>

#include <string>
#include <string_view>

#include "schema/schema.h"

namespace zoneserver {

// A value ready for addKey, addArg or setProperty.
struct TypedValue {
    CMPIValue value{};
    CMPIType type = CMPI_null;
    bool null = true;

    // What to hand to the CMPI setters: null for a NULL value.
    const CMPIValue *pointer() const { return null ? nullptr : &value; }
};

// The CMPI type of a schema type (CMPI_ref for references).
CMPIType cmpi_type(zoneschema::CimType type);

// The text of a VALUE (or any element) as a value of the type; throws
// CimError 4 naming what (e.g. "key Name of class X") when it isn't one.
TypedValue value_from_text(std::string_view text, zoneschema::CimType type, std::string_view what);

// "root/cimv2" from <LOCALNAMESPACEPATH><NAMESPACE NAME="root"/>...
std::string namespace_path(pugi::xml_node local_namespace_path);

class Decoder {
  public:
    // ns: the namespace of the request, for references that name none.
    Decoder(const zoneschema::Schema &schema, std::string ns);

    // INSTANCENAME as an object path in namespace ns.
    CMPIObjectPath *instance_name(pugi::xml_node node, const std::string &ns) const;
    // VALUE.REFERENCE (or one of the path elements it may hold directly).
    CMPIObjectPath *reference(pugi::xml_node node) const;
    // INSTANCE as a new instance. Its path: the given one, or one made of
    // the instance's class and its properties the schema marks as keys.
    CMPIInstance *instance(pugi::xml_node node, const CMPIObjectPath *path) const;
    // The PARAMVALUE children of a METHODCALL as the method's input
    // arguments (see above).
    CMPIArgs *method_arguments(const CMPIObjectPath *target, std::string_view method,
                               pugi::xml_node method_call) const;

  private:
    CMPIObjectPath *instance_name(pugi::xml_node node, const std::string &ns, int depth) const;
    CMPIObjectPath *reference(pugi::xml_node node, int depth) const;
    TypedValue key_value(const std::string &class_name, std::string_view key,
                         pugi::xml_node binding, int depth) const;
    TypedValue declared_value(pugi::xml_node holder, zoneschema::CimType type, bool array,
                              std::string_view what) const;
    TypedValue undeclared_value(pugi::xml_node holder, std::string_view type_text,
                                std::string_view what) const;
    TypedValue reference_value(pugi::xml_node holder, std::string_view what) const;

    const zoneschema::Schema &schema_;
    std::string ns_;
};

}  // namespace zoneserver
