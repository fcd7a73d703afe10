// CMPI objects and values in CIM-XML, as CIM clients read them.
//
// Shapes (the ones wbemcli and other clients insist on):
// - INSTANCENAME with KEYBINDINGs: KEYVALUE with VALUETYPE string, boolean
//   or numeric, or a VALUE.REFERENCE for a reference key;
// - references inside instances, keys and method outputs as VALUE.REFERENCE
//   holding a LOCALINSTANCEPATH;
// - full paths (OBJECTPATH, VALUE.OBJECTWITHPATH) as INSTANCEPATH with a
//   HOST: the path's own host name, or the server's;
// - a NULL value is an element without VALUE; nothing is self-closed.
//
// A path or instance without a namespace takes the request's namespace.
#pragma once

#include <cmpidt.h>
#include <cmpift.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "schema/schema.h"
#include "server/xml_writer.h"

namespace zoneserver {

// The properties a request asked for: all of them, or those of a
// PropertyList (names compared without regard to case).
class PropertyFilter {
  public:
    PropertyFilter() = default;
    explicit PropertyFilter(std::optional<std::vector<std::string>> names);
    PropertyFilter(const PropertyFilter &other);
    PropertyFilter &operator=(const PropertyFilter &other);

    bool allows(std::string_view name) const;
    bool all() const { return !names_.has_value(); }
    // The list as a provider takes it: names and a terminating null, or null
    // for all properties. Valid while this filter lives unchanged.
    const char **cmpi_list();

  private:
    std::optional<std::vector<std::string>> names_;
    std::vector<const char *> pointers_;
};

// The CIM-XML spelling of a CMPI type ("uint16", "string", "reference",
// "datetime"); the element type for arrays. CMPI_chars is a string.
std::string_view cim_type_name(CMPIType type);

// <LOCALNAMESPACEPATH> with one NAMESPACE per '/'-separated segment.
void write_local_namespace(XmlWriter &out, std::string_view ns);

class Encoder {
  public:
    // ns: the request's namespace; host: HOST of full paths without one.
    Encoder(const zoneschema::Schema &schema, std::string ns, std::string host);

    // VALUE, VALUE.ARRAY or VALUE.REFERENCE; nothing for a NULL value.
    void value(XmlWriter &out, const CMPIData &data) const;

    void instance_name(XmlWriter &out, const CMPIObjectPath *path) const;
    void local_instance_path(XmlWriter &out, const CMPIObjectPath *path) const;
    void instance_path(XmlWriter &out, const CMPIObjectPath *path) const;
    // OBJECTPATH holding an INSTANCEPATH.
    void object_path(XmlWriter &out, const CMPIObjectPath *path) const;

    // INSTANCE: the properties the provider set, in that order, then the
    // properties of the class that it left unset, as NULL; only those the
    // filter allows.
    void instance(XmlWriter &out, const CMPIInstance *instance, const PropertyFilter &filter) const;
    // VALUE.NAMEDINSTANCE: INSTANCENAME and INSTANCE.
    void named_instance(XmlWriter &out, const CMPIInstance *instance,
                        const PropertyFilter &filter) const;
    // VALUE.OBJECTWITHPATH: INSTANCEPATH and INSTANCE.
    void object_with_path(XmlWriter &out, const CMPIInstance *instance,
                          const PropertyFilter &filter) const;

    // RETURNVALUE with PARAMTYPE; nothing for a NULL value.
    void return_value(XmlWriter &out, const CMPIData &data) const;
    // PARAMVALUE with PARAMTYPE; nothing for a NULL value (wbemcli can't
    // read an output parameter without one).
    void param_value(XmlWriter &out, std::string_view name, const CMPIData &data) const;

  private:
    void key_binding(XmlWriter &out, std::string_view name, const CMPIData &data) const;
    void property(XmlWriter &out, std::string_view class_name, std::string_view name,
                  const CMPIData &data) const;
    void null_property(XmlWriter &out, const zoneschema::Property &property) const;
    void reference_value(XmlWriter &out, const CMPIObjectPath *path) const;
    void instance_body(XmlWriter &out, const CMPIInstance *instance, std::string_view class_name,
                       const PropertyFilter &filter) const;
    std::string_view namespace_of(const CMPIObjectPath *path) const;
    // The properties of a class, inherited ones included, worked out once
    // per class and encoder rather than once per instance.
    const std::vector<zoneschema::Property> &declared_properties(std::string_view class_name) const;

    const zoneschema::Schema &schema_;
    std::string ns_;
    std::string host_;
    // An encoder serves one request, on one thread at a time.
    mutable std::map<std::string, std::vector<zoneschema::Property>, std::less<>> declared_;
};

}  // namespace zoneserver
