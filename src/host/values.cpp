// Storing, copying and looking up values of the host's objects.
#include <strings.h>

#include <cstring>

#include "host/objects.h"

namespace cmpihost::detail {

namespace {

// Element codes a value may carry, with the bytes of CMPIValue each one
// occupies (every member sits at offset 0). An array type is one of these
// with CMPI_ARRAY set; CMPI_class is reserved and never stored.
struct ElementType {
    CMPIType type;
    std::size_t bytes;
};
constexpr std::size_t kPointer = sizeof(void *);
constexpr ElementType kElementTypes[] = {
    {CMPI_boolean, sizeof(CMPIBoolean)},
    {CMPI_char16, sizeof(CMPIChar16)},
    {CMPI_real32, sizeof(CMPIReal32)},
    {CMPI_real64, sizeof(CMPIReal64)},
    {CMPI_uint8, sizeof(CMPIUint8)},
    {CMPI_uint16, sizeof(CMPIUint16)},
    {CMPI_uint32, sizeof(CMPIUint32)},
    {CMPI_uint64, sizeof(CMPIUint64)},
    {CMPI_sint8, sizeof(CMPISint8)},
    {CMPI_sint16, sizeof(CMPISint16)},
    {CMPI_sint32, sizeof(CMPISint32)},
    {CMPI_sint64, sizeof(CMPISint64)},
    {CMPI_instance, kPointer},
    {CMPI_ref, kPointer},
    {CMPI_args, kPointer},
    {CMPI_filter, kPointer},
    {CMPI_enumeration, kPointer},
    {CMPI_string, kPointer},
    {CMPI_chars, kPointer},
    {CMPI_dateTime, kPointer},
    {CMPI_ptr, sizeof(CMPIValuePtr)},
    {CMPI_charsptr, kPointer},
};

const ElementType *elementType(CMPIType type) {
    for (const ElementType &element : kElementTypes) {
        if (element.type == type) return &element;
    }
    return nullptr;
}

// Copies only the bytes the type occupies: providers pass the address of a
// plain variable (a CMPIUint16, a CMPIString*), not a whole CMPIValue. An
// array value is its CMPIArray pointer.
// Providers pass the address of a plain scalar (a uint16_t, a CMPIBoolean)
// as the CMPIValue*, so only the type's own bytes are read, byte-wise, never
// through a CMPIValue lvalue that would assume the union's alignment.
CMPIValue readValue(const void *in, CMPIType type) {
    CMPIValue out;
    std::memset(&out, 0, sizeof out);
    const ElementType *element = (type & CMPI_ARRAY) ? nullptr : elementType(type);
    std::memcpy(&out, in, element ? element->bytes : kPointer);
    return out;
}

// Clones the object a stored value points at; false for a foreign object.
bool cloneObjectInto(Arena &arena, CMPIData *data) {
    CMPIValue &v = data->value;
    if (data->type & CMPI_ARRAY) {
        v.array = cloneArray(arena, v.array);
        return v.array != nullptr;
    }
    switch (data->type) {
        case CMPI_string:
            v.string = cloneString(arena, v.string);
            return v.string != nullptr;
        case CMPI_ref:
            v.ref = clonePath(arena, v.ref);
            return v.ref != nullptr;
        case CMPI_instance:
            v.inst = cloneInstance(arena, v.inst);
            return v.inst != nullptr;
        case CMPI_args:
            v.args = cloneArgs(arena, v.args);
            return v.args != nullptr;
        case CMPI_dateTime:
            v.dateTime = cloneDateTime(arena, v.dateTime);
            return v.dateTime != nullptr;
        case CMPI_enumeration:
            v.Enum = cloneEnumeration(arena, v.Enum);
            return v.Enum != nullptr;
        default:
            return true;  // scalars, and filters/pointers kept as given
    }
}

bool holdsObjectPointer(CMPIType type) {
    return (type & CMPI_ARRAY) || ((type & CMPI_ENC) && type != CMPI_ptr);
}

}  // namespace

CMPIData nullData(CMPIType type) {
    CMPIData data;
    std::memset(&data, 0, sizeof data);
    data.type = type;
    data.state = CMPI_nullValue;
    return data;
}

CMPIData notFoundData() {
    CMPIData data = nullData(CMPI_null);
    data.state = CMPI_nullValue | CMPI_notFound;
    return data;
}

bool sameName(std::string_view a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

bool isKnownType(CMPIType type) {
    if (type == CMPI_null) return true;
    return elementType(static_cast<CMPIType>(type & ~CMPI_ARRAY)) != nullptr;
}

CMPIrc storeValue(Arena &arena, const CMPIValue *value, CMPIType type, CMPIData *out) {
    if (!isKnownType(type)) return CMPI_RC_ERR_INVALID_DATA_TYPE;
    if (type == CMPI_chars || type == CMPI_charsptr) {
        // chars: the value pointer is the text; charsptr: it points at one.
        const char *text = value == nullptr     ? nullptr
                           : type == CMPI_chars ? reinterpret_cast<const char *>(value)
                                                : value->chars;
        *out = nullData(CMPI_string);
        if (text != nullptr) {
            out->state = CMPI_goodValue;
            out->value.string = makeString(arena, text);
        }
        return CMPI_RC_OK;
    }
    if (value == nullptr || type == CMPI_null) {
        *out = nullData(type);
        return CMPI_RC_OK;
    }
    CMPIData data;
    data.type = type;
    data.state = CMPI_goodValue;
    data.value = readValue(value, type);
    if (type & CMPI_ARRAY) {
        // An array keeps the element type it was made with (chars as string).
        auto *array = stateOf<ArrayState>(data.value.array);
        if (array != nullptr) data.type = CMPIType(CMPI_ARRAY | array->elementType);
    }
    return copyData(arena, data, out);
}

CMPIrc copyData(Arena &arena, const CMPIData &data, CMPIData *out) {
    *out = data;
    if (data.state & CMPI_nullValue) return CMPI_RC_OK;
    if (holdsObjectPointer(data.type) && data.value.inst == nullptr) {
        out->state = CMPI_nullValue;
        return CMPI_RC_OK;
    }
    if (!cloneObjectInto(arena, out)) {
        *out = nullData(data.type);
        return CMPI_RC_ERR_INVALID_PARAMETER;
    }
    return CMPI_RC_OK;
}

const CMPIData *NamedValues::find(std::string_view name) const {
    for (const auto &[itemName, data] : items) {
        if (sameName(itemName, name)) return &data;
    }
    return nullptr;
}

CMPIData *NamedValues::find(std::string_view name) {
    return const_cast<CMPIData *>(std::as_const(*this).find(name));
}

CMPIrc NamedValues::put(Arena &arena, const char *name, const CMPIValue *value, CMPIType type) {
    if (name == nullptr || *name == '\0') return CMPI_RC_ERR_INVALID_PARAMETER;
    CMPIData stored;
    CMPIrc rc = storeValue(arena, value, type, &stored);
    if (rc != CMPI_RC_OK) return rc;
    if (CMPIData *existing = find(name)) {
        *existing = stored;
    } else {
        items.emplace_back(name, stored);
    }
    return CMPI_RC_OK;
}

CMPIrc NamedValues::copyFrom(Arena &arena, const NamedValues &other) {
    items.clear();
    items.reserve(other.items.size());
    for (const auto &[name, data] : other.items) {
        CMPIData copy;
        CMPIrc rc = copyData(arena, data, &copy);
        if (rc != CMPI_RC_OK) return rc;
        items.emplace_back(name, copy);
    }
    return CMPI_RC_OK;
}

CMPIData getNamed(const NamedValues *values, const char *name, CMPIStatus *rc, CMPIrc missing) {
    if (values == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_HANDLE);
        return notFoundData();
    }
    if (name == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_PARAMETER);
        return notFoundData();
    }
    const CMPIData *found = values->find(name);
    if (found == nullptr) {
        setStatus(rc, missing);
        return notFoundData();
    }
    setStatus(rc, CMPI_RC_OK);
    return *found;
}

CMPIData getNamedAt(const NamedValues *values, unsigned int index, CMPIString **name,
                    CMPIStatus *rc, CMPIrc missing) {
    if (name != nullptr) *name = nullptr;
    if (values == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_HANDLE);
        return notFoundData();
    }
    if (index >= values->items.size()) {
        setStatus(rc, missing);
        return notFoundData();
    }
    const auto &[itemName, data] = values->items[index];
    if (name != nullptr) *name = makeString(currentArena(), itemName);
    setStatus(rc, CMPI_RC_OK);
    return data;
}

}  // namespace cmpihost::detail
