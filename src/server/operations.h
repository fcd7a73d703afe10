// Inside the CIM-XML service: what one intrinsic operation gets to work with,
// and the handlers of the intrinsic operations.
#pragma once

#include <pugixml.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/cmpihost.h"
#include "schema/schema.h"
#include "server/cimxml_decode.h"
#include "server/cimxml_encode.h"
#include "server/xml_writer.h"

namespace zoneserver::ops {

// The IPARAMVALUEs of an IMETHODCALL by name (names compared without regard
// to case; a repeated name keeps its last value). Accessors throw CimError 4
// for values of the wrong shape.
class Params {
  public:
    void add(pugi::xml_node iparamvalue);
    const std::vector<std::pair<std::string, pugi::xml_node>> &items() const { return items_; }

    // The IPARAMVALUE, or an empty node.
    pugi::xml_node find(std::string_view name) const;
    // CLASSNAME NAME="..." (or a plain VALUE); nullopt when absent or empty.
    std::optional<std::string> class_name(std::string_view name) const;
    std::string required_class_name(std::string_view name) const;
    // TRUE/FALSE in any case; fallback when absent or empty.
    bool flag(std::string_view name, bool fallback) const;
    // The text of a VALUE; nullopt when absent or empty (NULL).
    std::optional<std::string> text(std::string_view name) const;
    // VALUE.ARRAY of names; nullopt (all properties) when absent or NULL.
    std::optional<std::vector<std::string>> property_list() const;
    // The single child element of that name, or CimError 4 naming the
    // parameter.
    pugi::xml_node required_child(std::string_view name, const char *element) const;

  private:
    std::vector<std::pair<std::string, pugi::xml_node>> items_;
};

struct Call {
    const cmpihost::Provider &provider;
    const zoneschema::Schema &schema;
    cmpihost::Request &request;
    std::string ns;  // the request's namespace, spelt as the schema spells it
    Encoder encoder;
    Decoder decoder;
    Params params;
    XmlWriter result;  // content of IRETURNVALUE
    bool returns_value = true;
};

using Handler = void (*)(Call &);

// Instance side (instance_operations.cpp).
void enumerate_instance_names(Call &call);
void enumerate_instances(Call &call);
void get_instance(Call &call);
void delete_instance(Call &call);
void create_instance(Call &call);
void modify_instance(Call &call);
void exec_query(Call &call);
void associators(Call &call);
void associator_names(Call &call);
void references(Call &call);
void reference_names(Call &call);

// Class side (class_operations.cpp).
void get_class(Call &call);
void enumerate_classes(Call &call);
void enumerate_class_names(Call &call);

// Throws CimError carrying the provider's rc and message unless rc is 0.
void check(const cmpihost::Status &status);

}  // namespace zoneserver::ops
