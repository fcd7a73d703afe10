// Names of zone sets, zones, aliases and device aliases on the simulated
// switch: 1 to 64 characters, each a letter, a digit or one of - _ $ ^.
#pragma once

#include <string_view>

namespace zonesim {

constexpr bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '$' || c == '^';
}

constexpr bool isValidName(std::string_view name) {
    if (name.empty() || name.size() > 64) return false;
    for (char c : name)
        if (!isNameCharacter(c)) return false;
    return true;
}

}  // namespace zonesim
