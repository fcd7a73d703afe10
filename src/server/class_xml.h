// Class definitions of the schema as CIM-XML CLASS elements, for GetClass
// and EnumerateClasses: properties with their types and Key qualifiers,
// references with their classes, methods with their parameters (IN/OUT
// qualifiers, PARAMETER.REFERENCE for references), and the superclass.
// wbemcli types the arguments of `cm` from exactly this.
#pragma once

#include "schema/schema.h"
#include "server/cimxml_encode.h"
#include "server/xml_writer.h"

namespace zoneserver {

struct ClassView {
    // Only what the class declares itself (no inherited properties or methods).
    bool local_only = true;
    bool include_qualifiers = true;
    // CLASSORIGIN (the class that first declared the element) and PROPAGATED.
    bool include_class_origin = false;
    PropertyFilter properties;
};

void write_class(XmlWriter &out, const zoneschema::Schema &schema, const zoneschema::Class &cls,
                 const ClassView &view);

}  // namespace zoneserver
