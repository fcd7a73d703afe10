// ZoningInstanceIds of zone sets, zones and aliases: "VSAN^NUMBER^ACTIVE",
// three plain decimal numbers (ZoningObject::instanceId() writes them).
#pragma once

#include <string_view>

namespace zonesim {

struct GenericId {
    int vsan = 0;
    int number = 0;
    int active = 0;
};

// A field of 1 to 9 decimal digits and nothing else.
constexpr bool parseIdField(std::string_view field, int *value) {
    if (field.empty() || field.size() > 9) return false;
    int n = 0;
    for (char c : field) {
        if (c < '0' || c > '9') return false;
        n = n * 10 + (c - '0');
    }
    *value = n;
    return true;
}

constexpr bool parseGenericId(std::string_view text, GenericId *out) {
    std::size_t first = text.find('^');
    if (first == std::string_view::npos) return false;
    std::size_t second = text.find('^', first + 1);
    if (second == std::string_view::npos) return false;
    GenericId id;
    if (!parseIdField(text.substr(0, first), &id.vsan) ||
        !parseIdField(text.substr(first + 1, second - first - 1), &id.number) ||
        !parseIdField(text.substr(second + 1), &id.active))
        return false;
    *out = id;
    return true;
}

}  // namespace zonesim
