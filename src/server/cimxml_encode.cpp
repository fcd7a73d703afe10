#include "server/cimxml_encode.h"

#include <charconv>
#include <cmath>
#include <string>

#include "host/cmpihost.h"

namespace zoneserver {

namespace {

struct TypeName {
    CMPIType type;
    std::string_view name;
};

static constexpr TypeName kTypeNames[] = {
    {CMPI_boolean, "boolean"}, {CMPI_char16, "char16"},   {CMPI_real32, "real32"},
    {CMPI_real64, "real64"},   {CMPI_uint8, "uint8"},     {CMPI_uint16, "uint16"},
    {CMPI_uint32, "uint32"},   {CMPI_uint64, "uint64"},   {CMPI_sint8, "sint8"},
    {CMPI_sint16, "sint16"},   {CMPI_sint32, "sint32"},   {CMPI_sint64, "sint64"},
    {CMPI_string, "string"},   {CMPI_chars, "string"},    {CMPI_dateTime, "datetime"},
    {CMPI_ref, "reference"},   {CMPI_instance, "string"}, {CMPI_charsptr, "string"},
};

bool is_null(const CMPIData &data) {
    return (data.state & CMPI_nullValue) != 0 || data.type == CMPI_null;
}

CMPIType element_type(CMPIType type) {
    return static_cast<CMPIType>(type & ~CMPI_ARRAY);
}

template <typename Real>
std::string real_text(Real value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value < 0 ? "-INF" : "INF";
    char buffer[64];
    const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return ec == std::errc() ? std::string(buffer, end) : std::string("0");
}

// A UCS-2 code unit as UTF-8.
std::string char16_text(CMPIChar16 c) {
    std::string out;
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
    return out;
}

std::string datetime_text(const CMPIDateTime *datetime) {
    if (datetime == nullptr || datetime->ft == nullptr) return {};
    return cmpihost::text(datetime->ft->getStringFormat(datetime, nullptr));
}

// The text of a scalar that is neither a reference nor an instance.
std::string scalar_text(CMPIType type, const CMPIValue &v) {
    switch (type) {
        case CMPI_string:
            return cmpihost::text(v.string);
        case CMPI_chars:
            return v.chars != nullptr ? v.chars : "";
        case CMPI_charsptr:
            return v.dataPtr.ptr != nullptr ? *static_cast<const char *const *>(v.dataPtr.ptr) : "";
        case CMPI_boolean:
            return v.boolean ? "TRUE" : "FALSE";
        case CMPI_char16:
            return char16_text(v.char16);
        case CMPI_uint8:
            return std::to_string(v.uint8);
        case CMPI_uint16:
            return std::to_string(v.uint16);
        case CMPI_uint32:
            return std::to_string(v.uint32);
        case CMPI_uint64:
            return std::to_string(v.uint64);
        case CMPI_sint8:
            return std::to_string(v.sint8);
        case CMPI_sint16:
            return std::to_string(v.sint16);
        case CMPI_sint32:
            return std::to_string(v.sint32);
        case CMPI_sint64:
            return std::to_string(v.sint64);
        case CMPI_real32:
            return real_text(v.real32);
        case CMPI_real64:
            return real_text(v.real64);
        case CMPI_dateTime:
            return datetime_text(v.dateTime);
        default:
            return {};
    }
}

std::string_view key_value_type(CMPIType type) {
    if (type == CMPI_boolean) return "boolean";
    if ((type & CMPI_INTEGER) != 0 || (type & CMPI_REAL) != 0) return "numeric";
    return "string";
}

std::string class_name_of(const CMPIObjectPath *path) {
    if (path == nullptr || path->ft == nullptr) return {};
    return cmpihost::text(path->ft->getClassName(path, nullptr));
}

const CMPIObjectPath *path_of(const CMPIInstance *instance) {
    if (instance == nullptr || instance->ft == nullptr) return nullptr;
    return instance->ft->getObjectPath(instance, nullptr);
}

}  // namespace

// ---- PropertyFilter -----------------------------------------------------------

PropertyFilter::PropertyFilter(std::optional<std::vector<std::string>> names)
    : names_(std::move(names)) {}

PropertyFilter::PropertyFilter(const PropertyFilter &other) : names_(other.names_) {}

PropertyFilter &PropertyFilter::operator=(const PropertyFilter &other) {
    names_ = other.names_;
    pointers_.clear();
    return *this;
}

bool PropertyFilter::allows(std::string_view name) const {
    if (!names_) return true;
    for (const auto &listed : *names_)
        if (zoneschema::same_name(listed, name)) return true;
    return false;
}

const char **PropertyFilter::cmpi_list() {
    if (!names_) return nullptr;
    pointers_.clear();
    for (const auto &name : *names_) pointers_.push_back(name.c_str());
    pointers_.push_back(nullptr);
    return pointers_.data();
}

// ---- Free helpers -------------------------------------------------------------------

std::string_view cim_type_name(CMPIType type) {
    const CMPIType element = element_type(type);
    for (const TypeName &row : kTypeNames)
        if (row.type == element) return row.name;
    return "string";
}

void write_local_namespace(XmlWriter &out, std::string_view ns) {
    out.open("LOCALNAMESPACEPATH");
    std::size_t start = 0;
    while (start <= ns.size()) {
        std::size_t end = ns.find('/', start);
        if (end == std::string_view::npos) end = ns.size();
        if (end > start)
            out.open("NAMESPACE").attribute("NAME", ns.substr(start, end - start)).close();
        start = end + 1;
    }
    out.close();
}

// ---- Encoder ------------------------------------------------------------------------

Encoder::Encoder(const zoneschema::Schema &schema, std::string ns, std::string host)
    : schema_(schema), ns_(std::move(ns)), host_(std::move(host)) {}

std::string Encoder::namespace_of(const CMPIObjectPath *path) const {
    std::string ns;
    if (path != nullptr && path->ft != nullptr)
        ns = cmpihost::text(path->ft->getNameSpace(path, nullptr));
    return ns.empty() ? ns_ : ns;
}

void Encoder::value(XmlWriter &out, const CMPIData &data) const {
    if (is_null(data)) return;
    if ((data.type & CMPI_ARRAY) != 0) {
        const CMPIArray *array = data.value.array;
        if (array == nullptr || array->ft == nullptr) return;
        const bool references = element_type(data.type) == CMPI_ref;
        out.open(references ? "VALUE.REFARRAY" : "VALUE.ARRAY");
        const CMPICount size = array->ft->getSize(array, nullptr);
        for (CMPICount i = 0; i < size; ++i) {
            const CMPIData element = array->ft->getElementAt(array, i, nullptr);
            if (is_null(element))
                out.open("VALUE.NULL").close();
            else
                value(out, element);
        }
        out.close();
        return;
    }
    if (data.type == CMPI_ref) {
        reference_value(out, data.value.ref);
        return;
    }
    if (data.type == CMPI_instance) {
        // An embedded instance travels as the text of its INSTANCE element.
        XmlWriter embedded;
        instance(embedded, data.value.inst, PropertyFilter());
        out.element("VALUE", embedded.str());
        return;
    }
    out.element("VALUE", scalar_text(data.type, data.value));
}

void Encoder::reference_value(XmlWriter &out, const CMPIObjectPath *path) const {
    out.open("VALUE.REFERENCE");
    local_instance_path(out, path);
    out.close();
}

void Encoder::key_binding(XmlWriter &out, std::string_view name, const CMPIData &data) const {
    out.open("KEYBINDING").attribute("NAME", name);
    if (data.type == CMPI_ref && !is_null(data)) {
        reference_value(out, data.value.ref);
    } else {
        out.open("KEYVALUE").attribute("VALUETYPE", key_value_type(data.type));
        if (!is_null(data)) out.text(scalar_text(data.type, data.value));
        out.close();
    }
    out.close();
}

void Encoder::instance_name(XmlWriter &out, const CMPIObjectPath *path) const {
    out.open("INSTANCENAME").attribute("CLASSNAME", class_name_of(path));
    if (path != nullptr && path->ft != nullptr) {
        const unsigned int count = path->ft->getKeyCount(path, nullptr);
        for (unsigned int i = 0; i < count; ++i) {
            CMPIString *name = nullptr;
            const CMPIData data = path->ft->getKeyAt(path, i, &name, nullptr);
            key_binding(out, cmpihost::text(name), data);
        }
    }
    out.close();
}

void Encoder::local_instance_path(XmlWriter &out, const CMPIObjectPath *path) const {
    out.open("LOCALINSTANCEPATH");
    write_local_namespace(out, namespace_of(path));
    instance_name(out, path);
    out.close();
}

void Encoder::instance_path(XmlWriter &out, const CMPIObjectPath *path) const {
    std::string host;
    if (path != nullptr && path->ft != nullptr)
        host = cmpihost::text(path->ft->getHostname(path, nullptr));
    out.open("INSTANCEPATH").open("NAMESPACEPATH");
    out.element("HOST", host.empty() ? host_ : host);
    write_local_namespace(out, namespace_of(path));
    out.close();
    instance_name(out, path);
    out.close();
}

void Encoder::object_path(XmlWriter &out, const CMPIObjectPath *path) const {
    out.open("OBJECTPATH");
    instance_path(out, path);
    out.close();
}

void Encoder::property(XmlWriter &out, const std::string &class_name, std::string_view name,
                       const CMPIData &data) const {
    const bool null = is_null(data);
    if ((data.type & CMPI_ARRAY) != 0) {
        out.open("PROPERTY.ARRAY")
            .attribute("NAME", name)
            .attribute("TYPE", cim_type_name(data.type));
        value(out, data);
        out.close();
        return;
    }
    if (data.type == CMPI_ref) {
        out.open("PROPERTY.REFERENCE").attribute("NAME", name);
        const zoneschema::Property *declared = schema_.find_property(class_name, name);
        if (declared != nullptr && !declared->reference_class.empty())
            out.attribute("REFERENCECLASS", declared->reference_class);
        if (!null) reference_value(out, data.value.ref);
        out.close();
        return;
    }
    if (data.type == CMPI_null) {
        // A NULL without a type: the class knows it, or it is a string.
        const zoneschema::Property *declared = schema_.find_property(class_name, name);
        if (declared != nullptr) {
            null_property(out, *declared);
            return;
        }
    }
    out.open("PROPERTY").attribute("NAME", name).attribute("TYPE", cim_type_name(data.type));
    if (data.type == CMPI_instance) out.attribute("EmbeddedObject", "instance");
    value(out, data);
    out.close();
}

void Encoder::null_property(XmlWriter &out, const zoneschema::Property &declared) const {
    if (declared.type == zoneschema::CimType::Reference && !declared.array) {
        out.open("PROPERTY.REFERENCE").attribute("NAME", declared.name);
        if (!declared.reference_class.empty())
            out.attribute("REFERENCECLASS", declared.reference_class);
        out.close();
        return;
    }
    out.open(declared.array ? "PROPERTY.ARRAY" : "PROPERTY")
        .attribute("NAME", declared.name)
        .attribute("TYPE", zoneschema::type_name(declared.type))
        .close();
}

void Encoder::instance(XmlWriter &out, const CMPIInstance *instance,
                       const PropertyFilter &filter) const {
    const std::string class_name = class_name_of(path_of(instance));
    out.open("INSTANCE").attribute("CLASSNAME", class_name);
    std::vector<std::string> written;
    if (instance != nullptr && instance->ft != nullptr) {
        const unsigned int count = instance->ft->getPropertyCount(instance, nullptr);
        for (unsigned int i = 0; i < count; ++i) {
            CMPIString *name_string = nullptr;
            const CMPIData data = instance->ft->getPropertyAt(instance, i, &name_string, nullptr);
            std::string name = cmpihost::text(name_string);
            if (!filter.allows(name)) continue;
            property(out, class_name, name, data);
            written.push_back(std::move(name));
        }
    }
    for (const zoneschema::Property &declared : schema_.all_properties(class_name)) {
        if (!filter.allows(declared.name)) continue;
        bool set = false;
        for (const auto &name : written) set = set || zoneschema::same_name(name, declared.name);
        if (!set) null_property(out, declared);
    }
    out.close();
}

void Encoder::named_instance(XmlWriter &out, const CMPIInstance *instance,
                             const PropertyFilter &filter) const {
    out.open("VALUE.NAMEDINSTANCE");
    instance_name(out, path_of(instance));
    this->instance(out, instance, filter);
    out.close();
}

void Encoder::object_with_path(XmlWriter &out, const CMPIInstance *instance,
                               const PropertyFilter &filter) const {
    out.open("VALUE.OBJECTWITHPATH");
    instance_path(out, path_of(instance));
    this->instance(out, instance, filter);
    out.close();
}

void Encoder::return_value(XmlWriter &out, const CMPIData &data) const {
    if (is_null(data)) return;
    out.open("RETURNVALUE").attribute("PARAMTYPE", cim_type_name(data.type));
    value(out, data);
    out.close();
}

void Encoder::param_value(XmlWriter &out, std::string_view name, const CMPIData &data) const {
    if (is_null(data)) return;
    out.open("PARAMVALUE").attribute("NAME", name).attribute("PARAMTYPE", cim_type_name(data.type));
    if (data.type == CMPI_instance) out.attribute("EmbeddedObject", "instance");
    value(out, data);
    out.close();
}

}  // namespace zoneserver
