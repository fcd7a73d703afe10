// The served classes and their identifying keys, key text taken from object
// paths, WWN text, and the existence check of zoning objects. No state, no
// lock: these run inside whatever lock their caller holds.
#include <cstdio>
#include <cstring>
#include <string_view>

#include <cmpimacs.h>

#include "platform/zoning_platform.h"
#include "provider/platform_records.h"
#include "provider/zone_provider.h"

namespace {

// Which key names identify an instance of a class: one name, or any.
constexpr std::string_view kAnyKey{};

struct ServedClass {
    std::string_view name;
    std::string_view key;  // kAnyKey: the first key of the path, whatever its name
};

// In the order in which the class check tests them.
constexpr ServedClass kServedClasses[] = {
    {"VORNA_ZoneSet", "InstanceID"},
    {"VORNA_Zone", "InstanceID"},
    {"VORNA_ZoneAlias", "InstanceID"},
    {"VORNA_DeviceAlias", "InstanceID"},
    {"VORNA_ZoneMemberSettingData", "InstanceID"},
    {"VORNA_HostedCollection", kAnyKey},
    {"VORNA_ZoneMemberOfCollection", kAnyKey},
    {"VORNA_ElementSettingData", kAnyKey},
    {"VORNA_ZoneService", "Name"},
    {"VORNA_HostedService", kAnyKey},
    {"VORNA_ZoneHostedCollection", kAnyKey},
};

const ServedClass *find_served_class(const char *class_name) {
    for (const ServedClass &served : kServedClasses)
        if (zone::same_name(class_name, served.name)) return &served;
    return nullptr;
}

const char *printable(const char *text) {
    return text != nullptr ? text : "";
}

bool is_string_value(const CMPIData &data) {
    return (data.type == CMPI_string && data.value.string != nullptr &&
            data.value.string->hdl != nullptr) ||
           (data.type == CMPI_chars && data.value.chars != nullptr);
}

const char *string_value(const CMPIData &data) {
    return data.type == CMPI_string ? CMGetCharPtr(data.value.string) : data.value.chars;
}

int hex_digit_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The by-InstanceID lookup and its trace lines, per kind of zoning object.
template <typename Record>
using Lookup = int (*)(int, const char *, Record **);

template <typename Record>
int lookup_and_report(Lookup<Record> lookup, const char *instance_id, const char *found_line,
                      const char *missing_line) {
    zone::Owned<Record> record;
    const bool found = lookup(mts_q, instance_id, record.out()) == 0;
    std::printf("%s\n", found ? found_line : missing_line);
    return found ? 0 : -1;
}

}  // namespace

extern "C" {

int check_class_name_zm(const char *class_name) {
    std::printf("check class name against VORNA_ZoneSet and the other served classes\n");
    if (find_served_class(class_name) != nullptr) return 1;
    std::printf("\tFAIL check class name %s \n", printable(class_name));
    return 0;
}

int check_key_name_zm(const char *class_name, const char *key_name) {
    std::printf("checking key name %s -- %s \n", printable(class_name), printable(key_name));
    const ServedClass *served = find_served_class(class_name);
    if (served != nullptr && (served->key.empty() || zone::same_name(key_name, served->key)))
        return 1;
    std::printf("\tFAIL check key name %s -- %s \n", printable(class_name), printable(key_name));
    return 0;
}

int get_key_from_reference(const CMPIObjectPath *op, const char *key_name, char *buffer) {
    if (op == nullptr || op->ft == nullptr || key_name == nullptr || buffer == nullptr) return -1;
    const int count = static_cast<int>(op->ft->getKeyCount(op, nullptr));
    for (int i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData key = op->ft->getKeyAt(op, static_cast<CMPICount>(i), &name, nullptr);
        const char *name_text = name != nullptr ? CMGetCharPtr(name) : nullptr;
        if (name_text == nullptr || std::strcmp(name_text, key_name) != 0) continue;
        // A key of that name that holds no text counts as missing.
        if (!is_string_value(key)) return -1;
        const char *value = string_value(key);
        const std::size_t length = strnlen(value, zone::kKeyTextSize - 1);
        std::memcpy(buffer, value, length);
        buffer[length] = '\0';
        return 0;
    }
    return -1;
}

uint64_t string_to_wwn(const char *text) {
    uint64_t accumulator = 0;
    for (const char *c = text; c != nullptr && *c != '\0' && *c != '\n'; ++c) {
        const int digit = hex_digit_value(*c);
        if (digit >= 0) accumulator = (accumulator << 4) | static_cast<uint64_t>(digit);
    }
    // The value form keeps the WWN bytes in the order they are written.
    unsigned char bytes[8];
    for (int i = 7; i >= 0; --i) {
        bytes[i] = static_cast<unsigned char>(accumulator & 0xff);
        accumulator >>= 8;
    }
    uint64_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

int validate_zone_instance(const char *instance_id, int kind) {
    switch (kind) {
        case 1:
            return lookup_and_report<ZoneRecord>(zs_cim_get_zone_by_instance_id, instance_id,
                                                 "Zone found ", "Zone Not Found");
        case 2:
            return lookup_and_report<ZoneSetRecord>(zs_cim_get_zone_set_by_instance_id, instance_id,
                                                    "ZoneSet found ", "ZoneSet Not Found");
        case 3:
            return lookup_and_report<ZoneAliasRecord>(zs_cim_get_zone_alias_by_instance_id,
                                                      instance_id, "ZoneAlias found",
                                                      "Zonelias not found");
        default:
            return 0;
    }
}

}  // extern "C"
