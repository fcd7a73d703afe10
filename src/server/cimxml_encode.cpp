#include "server/cimxml_encode.h"

#include <charconv>
#include <cmath>
#include <string>
#include <utility>

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

// The characters of a CMPIString, where they lie (a CMPI 1.0 string's hdl
// is its characters); empty for null.
std::string_view chars_of(const CMPIString *s) {
    return s != nullptr && s->hdl != nullptr ? std::string_view(static_cast<const char *>(s->hdl))
                                             : std::string_view();
}

template <typename Real>
std::string_view real_text(Real value, char (&buffer)[64]) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value < 0 ? "-INF" : "INF";
    const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return ec == std::errc() ? std::string_view(buffer, end - buffer) : std::string_view("0");
}

template <typename Integer>
std::string_view integer_text(Integer value, char (&buffer)[64]) {
    const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string_view(buffer, ec == std::errc() ? end - buffer : 0);
}

// A UCS-2 code unit as UTF-8.
std::string_view char16_text(CMPIChar16 c, char (&buffer)[64]) {
    std::size_t n = 0;
    if (c < 0x80) {
        buffer[n++] = static_cast<char>(c);
    } else if (c < 0x800) {
        buffer[n++] = static_cast<char>(0xC0 | (c >> 6));
        buffer[n++] = static_cast<char>(0x80 | (c & 0x3F));
    } else {
        buffer[n++] = static_cast<char>(0xE0 | (c >> 12));
        buffer[n++] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        buffer[n++] = static_cast<char>(0x80 | (c & 0x3F));
    }
    return std::string_view(buffer, n);
}

std::string_view datetime_text(const CMPIDateTime *datetime) {
    if (datetime == nullptr || datetime->ft == nullptr) return {};
    return chars_of(datetime->ft->getStringFormat(datetime, nullptr));
}

// The text of a scalar that is neither a reference nor an instance: where it
// lies, or in buffer (numbers and the like).
std::string_view scalar_text(CMPIType type, const CMPIValue &v, char (&buffer)[64]) {
    switch (type) {
        case CMPI_string:
            return chars_of(v.string);
        case CMPI_chars:
            return v.chars != nullptr ? std::string_view(v.chars) : std::string_view();
        case CMPI_charsptr:
            return v.dataPtr.ptr != nullptr
                       ? std::string_view(*static_cast<const char *const *>(v.dataPtr.ptr))
                       : std::string_view();
        case CMPI_boolean:
            return v.boolean ? "TRUE" : "FALSE";
        case CMPI_char16:
            return char16_text(v.char16, buffer);
        case CMPI_uint8:
            return integer_text(static_cast<unsigned>(v.uint8), buffer);
        case CMPI_uint16:
            return integer_text(static_cast<unsigned>(v.uint16), buffer);
        case CMPI_uint32:
            return integer_text(v.uint32, buffer);
        case CMPI_uint64:
            return integer_text(v.uint64, buffer);
        case CMPI_sint8:
            return integer_text(static_cast<int>(v.sint8), buffer);
        case CMPI_sint16:
            return integer_text(static_cast<int>(v.sint16), buffer);
        case CMPI_sint32:
            return integer_text(v.sint32, buffer);
        case CMPI_sint64:
            return integer_text(v.sint64, buffer);
        case CMPI_real32:
            return real_text(v.real32, buffer);
        case CMPI_real64:
            return real_text(v.real64, buffer);
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

std::string_view class_name_of(const CMPIObjectPath *path) {
    if (path == nullptr || path->ft == nullptr) return {};
    return chars_of(path->ft->getClassName(path, nullptr));
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

std::string_view Encoder::namespace_of(const CMPIObjectPath *path) const {
    std::string_view ns;
    if (path != nullptr && path->ft != nullptr)
        ns = chars_of(path->ft->getNameSpace(path, nullptr));
    return ns.empty() ? std::string_view(ns_) : ns;
}

const std::vector<zoneschema::Property> &Encoder::declared_properties(
    std::string_view class_name) const {
    auto found = declared_.find(class_name);
    if (found == declared_.end())
        found =
            declared_.emplace(std::string(class_name), schema_.all_properties(class_name)).first;
    return found->second;
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
    char buffer[64];
    out.element("VALUE", scalar_text(data.type, data.value, buffer));
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
        if (!is_null(data)) {
            char buffer[64];
            out.text(scalar_text(data.type, data.value, buffer));
        }
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
            key_binding(out, chars_of(name), data);
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
    std::string_view host;
    if (path != nullptr && path->ft != nullptr)
        host = chars_of(path->ft->getHostname(path, nullptr));
    out.open("INSTANCEPATH").open("NAMESPACEPATH");
    out.element("HOST", host.empty() ? std::string_view(host_) : host);
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

void Encoder::property(XmlWriter &out, std::string_view class_name, std::string_view name,
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
    instance_body(out, instance, class_name_of(path_of(instance)), filter);
}

void Encoder::instance_body(XmlWriter &out, const CMPIInstance *instance,
                            std::string_view class_name, const PropertyFilter &filter) const {
    out.open("INSTANCE").attribute("CLASSNAME", class_name);
    // The names lie in the instance's objects, alive as long as the call.
    std::vector<std::string_view> written;
    if (instance != nullptr && instance->ft != nullptr) {
        const unsigned int count = instance->ft->getPropertyCount(instance, nullptr);
        written.reserve(count);
        for (unsigned int i = 0; i < count; ++i) {
            CMPIString *name_string = nullptr;
            const CMPIData data = instance->ft->getPropertyAt(instance, i, &name_string, nullptr);
            const std::string_view name = chars_of(name_string);
            if (!filter.allows(name)) continue;
            property(out, class_name, name, data);
            written.push_back(name);
        }
    }
    for (const zoneschema::Property &declared : declared_properties(class_name)) {
        if (!filter.allows(declared.name)) continue;
        bool set = false;
        for (const std::string_view name : written)
            if (zoneschema::same_name(name, declared.name)) {
                set = true;
                break;
            }
        if (!set) null_property(out, declared);
    }
    out.close();
}

void Encoder::named_instance(XmlWriter &out, const CMPIInstance *instance,
                             const PropertyFilter &filter) const {
    // One path serves both the name and the class of the instance: every
    // getObjectPath makes a new one.
    const CMPIObjectPath *path = path_of(instance);
    out.open("VALUE.NAMEDINSTANCE");
    instance_name(out, path);
    instance_body(out, instance, class_name_of(path), filter);
    out.close();
}

void Encoder::object_with_path(XmlWriter &out, const CMPIInstance *instance,
                               const PropertyFilter &filter) const {
    const CMPIObjectPath *path = path_of(instance);
    out.open("VALUE.OBJECTWITHPATH");
    instance_path(out, path);
    instance_body(out, instance, class_name_of(path), filter);
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
