// The class operations, answered from the schema: GetClass,
// EnumerateClasses and EnumerateClassNames. Defaults of the flags are those
// of CIM operations over HTTP: LocalOnly and IncludeQualifiers TRUE,
// IncludeClassOrigin and DeepInheritance FALSE.
#include <vector>

#include "server/cim_status.h"
#include "server/class_xml.h"
#include "server/operations.h"

namespace zoneserver::ops {

namespace {

using zoneschema::Class;

ClassView class_view(const Call &call, bool with_property_list) {
    ClassView view;
    view.local_only = call.params.flag("LocalOnly", true);
    view.include_qualifiers = call.params.flag("IncludeQualifiers", true);
    view.include_class_origin = call.params.flag("IncludeClassOrigin", false);
    if (with_property_list) view.properties = PropertyFilter(call.params.property_list());
    return view;
}

// The classes below ClassName (all of them, or only its direct subclasses
// without DeepInheritance); without ClassName, every class or the root
// classes.
std::vector<const Class *> classes_below(const Call &call) {
    const auto name = call.params.class_name("ClassName");
    const bool deep = call.params.flag("DeepInheritance", false);
    std::vector<const Class *> found;
    if (name) {
        const Class *base = call.schema.find(*name);
        if (base == nullptr)
            throw CimError(kCimInvalidClass, "The specified class does not exist: " + *name);
        for (const Class *sub : call.schema.subclasses(base->name))
            if (deep || zoneschema::same_name(sub->superclass, base->name)) found.push_back(sub);
        return found;
    }
    for (const Class &cls : call.schema.classes())
        if (deep || cls.superclass.empty()) found.push_back(&cls);
    return found;
}

}  // namespace

void get_class(Call &call) {
    const std::string name = call.params.required_class_name("ClassName");
    const Class *cls = call.schema.find(name);
    if (cls == nullptr) throw CimError(kCimNotFound, "The specified class does not exist: " + name);
    write_class(call.result, call.schema, *cls, class_view(call, true));
}

void enumerate_classes(Call &call) {
    const ClassView view = class_view(call, false);
    for (const Class *cls : classes_below(call)) write_class(call.result, call.schema, *cls, view);
}

void enumerate_class_names(Call &call) {
    for (const Class *cls : classes_below(call))
        call.result.open("CLASSNAME").attribute("NAME", cls->name).close();
}

}  // namespace zoneserver::ops
