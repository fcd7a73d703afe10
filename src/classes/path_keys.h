// Reading object paths and delivering into a result, for the handlers of the
// association classes and for deleteInstance.
//
// Everything here tolerates what a client may send: a null path, a key
// without a name, a key whose value is not the expected type. Such input
// reads as "nothing" (an empty text, a null reference) instead of being
// dereferenced.
#pragma once

#include <string_view>

#include <cmpidt.h>
#include <cmpift.h>

#include "provider/platform_records.h"

namespace zone::paths {

// Text of a CMPI string, or the empty text when there is none.
inline const char *text_of(const CMPIString *s) noexcept {
    if (s == nullptr || s->ft == nullptr || s->ft->getCharPtr == nullptr) return "";
    const char *chars = s->ft->getCharPtr(s, nullptr);
    return chars != nullptr ? chars : "";
}

inline const char *class_name_of(const CMPIObjectPath *op) noexcept {
    if (op == nullptr || op->ft == nullptr) return "";
    return text_of(op->ft->getClassName(op, nullptr));
}

inline const char *namespace_of(const CMPIObjectPath *op) noexcept {
    if (op == nullptr || op->ft == nullptr) return "";
    return text_of(op->ft->getNameSpace(op, nullptr));
}

inline bool holds_value(const CMPIData &data) noexcept {
    return (data.state & (CMPI_nullValue | CMPI_notFound | CMPI_badValue)) == 0;
}

// The object path a key holds; null when the key is no reference. Reading a
// string key as a path would hand a CMPIString to code that takes it for a
// path, so the type is looked at even where the key names alone decide.
inline const CMPIObjectPath *reference_in(const CMPIData &data) noexcept {
    if (data.type != CMPI_ref || !holds_value(data)) return nullptr;
    return data.value.ref;
}

// The text a key holds when it is a string; null otherwise.
inline const char *string_in(const CMPIData &data) noexcept {
    if (data.type != CMPI_string || !holds_value(data) || data.value.string == nullptr)
        return nullptr;
    return text_of(data.value.string);
}

inline unsigned key_count_of(const CMPIObjectPath *op) noexcept {
    if (op == nullptr || op->ft == nullptr) return 0;
    return op->ft->getKeyCount(op, nullptr);
}

// Calls visit(name, value) for each key of op in index order, with the name
// copied into a 254-byte field (at most 253 characters). visit returns true
// to stop the walk.
template <typename Visit>
void walk_keys(const CMPIObjectPath *op, Visit &&visit) {
    const unsigned count = key_count_of(op);
    for (unsigned i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData value = op->ft->getKeyAt(op, i, &name, nullptr);
        char key_name[kKeyTextSize];
        copy_key_text(key_name, text_of(name));
        if (visit(static_cast<const char *>(key_name), value)) return;
    }
}

// The two references of an association path, by their key names compared
// without regard to case; a later key of the same name replaces an earlier
// one, and a missing key leaves its reference null.
struct ReferencePair {
    const CMPIObjectPath *first = nullptr;
    const CMPIObjectPath *second = nullptr;
};

inline ReferencePair reference_pair_of(const CMPIObjectPath *op, std::string_view first_key,
                                       std::string_view second_key) {
    ReferencePair pair;
    walk_keys(op, [&](const char *name, const CMPIData &value) {
        if (same_name(name, first_key))
            pair.first = reference_in(value);
        else if (same_name(name, second_key))
            pair.second = reference_in(value);
        return false;
    });
    return pair;
}

// Builders answer null when they can't make an object; nothing is delivered
// then.
inline void deliver_instance(const CMPIResult *result, const CMPIInstance *instance) noexcept {
    if (result != nullptr && instance != nullptr) result->ft->returnInstance(result, instance);
}

inline void deliver_path(const CMPIResult *result, const CMPIObjectPath *path) noexcept {
    if (result != nullptr && path != nullptr) result->ft->returnObjectPath(result, path);
}

// Hands a text to the result as CMPI_chars: the value pointer is the text.
inline void deliver_text(const CMPIResult *result, const char *text) noexcept {
    if (result == nullptr) return;
    result->ft->returnData(result, reinterpret_cast<const CMPIValue *>(text != nullptr ? text : ""),
                           CMPI_chars);
}

inline void deliver_done(const CMPIResult *result) noexcept {
    if (result != nullptr) result->ft->returnDone(result);
}

}  // namespace zone::paths
