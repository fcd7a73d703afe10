#include "server/class_xml.h"

#include <string>
#include <vector>

namespace zoneserver {

namespace {

using zoneschema::CimType;

void boolean_qualifier(XmlWriter &out, std::string_view name, bool value) {
    out.open("QUALIFIER").attribute("NAME", name).attribute("TYPE", "boolean");
    out.element("VALUE", value ? "TRUE" : "FALSE");
    out.close();
}

// Where an element of the class comes from: the root-most class of the chain
// that declares it, and whether this class inherits it rather than
// declaring it itself.
struct Origin {
    std::string class_name;
    bool propagated = false;
};

template <typename Declares>
Origin origin_of(const zoneschema::Schema &schema, const zoneschema::Class &cls,
                 Declares declares) {
    Origin origin{cls.name, false};
    for (const zoneschema::Class *ancestor : schema.superclass_chain(cls.name))
        if (declares(*ancestor)) origin.class_name = ancestor->name;
    origin.propagated = !declares(cls);
    return origin;
}

Origin property_origin(const zoneschema::Schema &schema, const zoneschema::Class &cls,
                       const std::string &name) {
    return origin_of(schema, cls, [&name](const zoneschema::Class &c) {
        for (const auto &p : c.properties)
            if (zoneschema::same_name(p.name, name)) return true;
        return false;
    });
}

Origin method_origin(const zoneschema::Schema &schema, const zoneschema::Class &cls,
                     const std::string &name) {
    return origin_of(schema, cls, [&name](const zoneschema::Class &c) {
        for (const auto &m : c.methods)
            if (zoneschema::same_name(m.name, name)) return true;
        return false;
    });
}

void origin_attributes(XmlWriter &out, const ClassView &view, const Origin &origin) {
    if (!view.include_class_origin) return;
    out.attribute("CLASSORIGIN", origin.class_name);
    if (origin.propagated) out.attribute("PROPAGATED", "true");
}

void write_property(XmlWriter &out, const zoneschema::Schema &schema, const zoneschema::Class &cls,
                    const zoneschema::Property &property, const ClassView &view) {
    const bool reference = property.type == CimType::Reference;
    if (reference && !property.array) {
        out.open("PROPERTY.REFERENCE").attribute("NAME", property.name);
        if (!property.reference_class.empty())
            out.attribute("REFERENCECLASS", property.reference_class);
    } else {
        out.open(property.array ? "PROPERTY.ARRAY" : "PROPERTY")
            .attribute("NAME", property.name)
            .attribute("TYPE", zoneschema::type_name(property.type));
    }
    origin_attributes(out, view, property_origin(schema, cls, property.name));
    if (view.include_qualifiers && property.key) boolean_qualifier(out, "Key", true);
    out.close();
}

void write_parameter(XmlWriter &out, const zoneschema::Parameter &parameter,
                     const ClassView &view) {
    const bool reference = parameter.type == CimType::Reference;
    if (reference) {
        out.open(parameter.array ? "PARAMETER.REFARRAY" : "PARAMETER.REFERENCE")
            .attribute("NAME", parameter.name);
        if (!parameter.reference_class.empty())
            out.attribute("REFERENCECLASS", parameter.reference_class);
    } else {
        out.open(parameter.array ? "PARAMETER.ARRAY" : "PARAMETER")
            .attribute("NAME", parameter.name)
            .attribute("TYPE", zoneschema::type_name(parameter.type));
    }
    if (view.include_qualifiers) {
        boolean_qualifier(out, "IN", parameter.in);
        if (parameter.out) boolean_qualifier(out, "OUT", true);
    }
    out.close();
}

void write_method(XmlWriter &out, const zoneschema::Schema &schema, const zoneschema::Class &cls,
                  const zoneschema::Method &method, const ClassView &view) {
    out.open("METHOD")
        .attribute("NAME", method.name)
        .attribute("TYPE", zoneschema::type_name(method.return_type));
    origin_attributes(out, view, method_origin(schema, cls, method.name));
    for (const auto &parameter : method.parameters) write_parameter(out, parameter, view);
    out.close();
}

}  // namespace

void write_class(XmlWriter &out, const zoneschema::Schema &schema, const zoneschema::Class &cls,
                 const ClassView &view) {
    out.open("CLASS").attribute("NAME", cls.name);
    if (!cls.superclass.empty()) out.attribute("SUPERCLASS", cls.superclass);
    if (view.include_qualifiers) {
        if (cls.association) boolean_qualifier(out, "Association", true);
        if (cls.abstract) boolean_qualifier(out, "Abstract", true);
    }

    const std::vector<zoneschema::Property> properties =
        view.local_only ? cls.properties : schema.all_properties(cls.name);
    for (const auto &property : properties) {
        if (!view.properties.allows(property.name)) continue;
        write_property(out, schema, cls, property, view);
    }

    std::vector<const zoneschema::Method *> methods;
    if (view.local_only) {
        for (const auto &method : cls.methods) methods.push_back(&method);
    } else {
        methods = schema.all_methods(cls.name);
    }
    for (const zoneschema::Method *method : methods) write_method(out, schema, cls, *method, view);
    out.close();
}

}  // namespace zoneserver
