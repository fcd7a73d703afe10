// Turns command-line text into the CMPI objects a provider receives, typed by
// the class schema.
//
// Object paths: a key the schema knows takes the property's type (a quoted
// or bare 10 for a string key is the text "10", for a uint16 key the number
// 10; a path or a quoted path for a reference key is a reference). A key the
// schema doesn't know is typed by its spelling (quoted: string; bare
// integer: sint64 or uint64; bare true/false: boolean; unquoted path:
// reference), so that paths the provider should refuse can still be sent.
//
// Method arguments: every argument must name an IN parameter of the method
// as the schema declares it for the target class; they are handed to the
// provider in the order of the declaration, whatever their order on the
// command line, because the provider reads them by position. Anything else
// is a UsageError.
//
// Every CMPI object made here belongs to the cmpihost::Request current on
// the calling thread.
#pragma once

#include <cmpidt.h>
#include <cmpift.h>

#include <string>
#include <string_view>

#include "schema/schema.h"
#include "zonecim/path_syntax.h"

namespace zonecim {

// Where nested paths end, from the schema's property and key names.
NameScope schema_scope(const zoneschema::Schema &schema);

class Marshaller {
  public:
    // default_namespace: the namespace of a top-level path that names none.
    Marshaller(const zoneschema::Schema &schema, std::string default_namespace);

    // Parses and builds an object path; throws UsageError.
    CMPIObjectPath *object_path(std::string_view text) const;
    // Builds an object path from parsed text; nested paths without a
    // namespace take ns.
    CMPIObjectPath *object_path(const TextPath &path, const std::string &ns) const;

    struct MethodCall {
        std::string method;  // as the schema spells it
        CMPIArgs *in = nullptr;
    };
    // Parses "Method.Param=value,..." for the target path's class and builds
    // its input arguments in declared order; throws UsageError.
    MethodCall method_call(const CMPIObjectPath *target, std::string_view text) const;

  private:
    void add_key(CMPIObjectPath *path, const std::string &class_name, const TextBinding &key,
                 const std::string &ns) const;

    const zoneschema::Schema &schema_;
    std::string default_namespace_;
};

}  // namespace zonecim
