// Fabric files (see fabric.h).
#include "sim/fabric.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

#include "sim/member_identity.h"
#include "sim/member_types.h"
#include "sim/naming.h"
#include "sim/sim_errors.h"

namespace zonesim {

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;

std::string FabricError::describe() const {
    return (pointer.empty() ? std::string("(document)") : pointer) + " at byte " +
           std::to_string(offset) + ": " + message;
}

namespace {

constexpr int kFormatVersion = 1;
constexpr int kMinDomain = 1;
constexpr int kMaxDomain = 239;
constexpr int kMaxObjectNumber = 999999999;  // fits the InstanceID's number field

// ---- JSON pointers and where their values lie in the text ------------------------

std::string escapePointerToken(const std::string &token) {
    std::string out;
    for (char c : token) {
        if (c == '~')
            out += "~0";
        else if (c == '/')
            out += "~1";
        else
            out += c;
    }
    return out;
}

std::string childPointer(const std::string &parent, const std::string &key) {
    return parent + "/" + escapePointerToken(key);
}

std::string indexPointer(const std::string &parent, std::size_t index) {
    return parent + "/" + std::to_string(index);
}

void appendUtf8(std::string *out, unsigned code) {
    if (code < 0x80) {
        *out += static_cast<char>(code);
    } else if (code < 0x800) {
        *out += static_cast<char>(0xC0 | (code >> 6));
        *out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        *out += static_cast<char>(0xE0 | (code >> 12));
        *out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        *out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

// Walks JSON text knowing the JSON pointer of every value it meets: finds
// where the value of a pointer starts, or where (and in which value) the
// text stops being JSON.
class JsonWalker {
  public:
    explicit JsonWalker(std::string_view text) : text_(text) {}

    std::size_t offsetOf(const std::string &pointer) {
        reset();
        target_ = &pointer;
        std::string path;
        value(path);
        return found_;
    }

    // False when the text is well formed as far as this walker can tell.
    bool syntaxError(std::string *pointer, std::size_t *offset) {
        reset();
        std::string path;
        if (value(path)) {
            skipSpace();
            if (pos_ == text_.size()) return false;
            path.clear();
        }
        *pointer = path;
        *offset = pos_;
        return true;
    }

  private:
    void reset() {
        pos_ = 0;
        found_ = std::string::npos;
        target_ = nullptr;
    }
    void skipSpace() {
        while (pos_ < text_.size() && (text_[pos_] == ' ' || text_[pos_] == '\t' ||
                                       text_[pos_] == '\n' || text_[pos_] == '\r'))
            ++pos_;
    }
    bool at(char c) const { return pos_ < text_.size() && text_[pos_] == c; }

    bool value(std::string &path) {
        skipSpace();
        if (pos_ >= text_.size()) return false;
        if (target_ != nullptr && path == *target_) {
            found_ = pos_;
            return false;  // stop the walk
        }
        switch (text_[pos_]) {
            case '{':
                return object(path);
            case '[':
                return array(path);
            case '"':
                return string(nullptr);
            default:
                return literal();
        }
    }

    bool object(std::string &path) {
        ++pos_;
        skipSpace();
        if (at('}')) return ++pos_, true;
        for (;;) {
            skipSpace();
            std::string key;
            if (!at('"') || !string(&key)) return false;
            skipSpace();
            if (!at(':')) return false;
            ++pos_;
            std::size_t length = path.size();
            path = childPointer(path, key);
            if (!value(path)) return false;
            path.resize(length);
            skipSpace();
            if (at(',')) {
                ++pos_;
                continue;
            }
            if (at('}')) return ++pos_, true;
            return false;
        }
    }

    bool array(std::string &path) {
        ++pos_;
        skipSpace();
        if (at(']')) return ++pos_, true;
        for (std::size_t index = 0;; ++index) {
            std::size_t length = path.size();
            path = indexPointer(path, index);
            if (!value(path)) return false;
            path.resize(length);
            skipSpace();
            if (at(',')) {
                ++pos_;
                continue;
            }
            if (at(']')) return ++pos_, true;
            return false;
        }
    }

    bool string(std::string *decoded) {
        ++pos_;
        while (pos_ < text_.size()) {
            char c = text_[pos_++];
            if (c == '"') return true;
            if (static_cast<unsigned char>(c) < 0x20) return --pos_, false;
            if (c != '\\') {
                if (decoded != nullptr) *decoded += c;
                continue;
            }
            if (pos_ >= text_.size()) return false;
            char e = text_[pos_++];
            if (e == 'u') {
                if (pos_ + 4 > text_.size()) return false;
                unsigned code = 0;
                for (int i = 0; i < 4; ++i) {
                    char h = text_[pos_++];
                    int digit = (h >= '0' && h <= '9')   ? h - '0'
                                : (h >= 'a' && h <= 'f') ? h - 'a' + 10
                                : (h >= 'A' && h <= 'F') ? h - 'A' + 10
                                                         : -1;
                    if (digit < 0) return false;
                    code = code * 16 + static_cast<unsigned>(digit);
                }
                if (decoded != nullptr) appendUtf8(decoded, code);
                continue;
            }
            static constexpr std::string_view kEscapes = "\"\\/bfnrt";
            static constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
            std::size_t which = kEscapes.find(e);
            if (which == std::string_view::npos) return --pos_, false;
            if (decoded != nullptr) *decoded += kMeanings[which];
        }
        return false;
    }

    bool word(std::string_view w) {
        if (text_.substr(pos_, w.size()) != w) return false;
        pos_ += w.size();
        return true;
    }

    bool digits() {
        std::size_t start = pos_;
        while (pos_ < text_.size() && text_[pos_] >= '0' && text_[pos_] <= '9') ++pos_;
        return pos_ > start;
    }

    bool literal() {
        char c = text_[pos_];
        if (c == 't') return word("true");
        if (c == 'f') return word("false");
        if (c == 'n') return word("null");
        if (at('-')) ++pos_;
        if (!digits()) return false;
        if (at('.')) {
            ++pos_;
            if (!digits()) return false;
        }
        if (at('e') || at('E')) {
            ++pos_;
            if (at('+') || at('-')) ++pos_;
            if (!digits()) return false;
        }
        return true;
    }

    std::string_view text_;
    std::size_t pos_ = 0;
    std::size_t found_ = std::string::npos;
    const std::string *target_ = nullptr;
};

// ---- The fabric as read from a file ---------------------------------------------------

struct FabricObject {
    std::string pointer;
    std::string name;
    std::optional<int> number;
    std::vector<std::pair<std::string, std::string>> children;  // pointer, name
    std::vector<std::pair<std::string, Member>> members;        // pointer, member
};

struct FabricDatabase {
    std::vector<FabricObject> zone_sets, zones, aliases;
};

struct FabricVsan {
    std::string pointer;
    VsanInfo info;
    std::optional<int> next_number;
    FabricDatabase full, active;
};

struct Fabric {
    std::string switch_name = Store::kDefaultSwitchName;
    Limits limits;
    std::vector<FabricVsan> vsans;
    std::vector<std::pair<std::string, DeviceAlias>> device_aliases;
};

// Reads the parsed document into a Fabric, checking every value; the first
// problem is reported with its pointer and byte offset.
class FabricReader {
  public:
    FabricReader(std::string_view text, FabricError *error) : walker_(text), error_(error) {}

    bool fail(const std::string &pointer, const std::string &message) {
        if (error_ != nullptr) {
            error_->code = kErrInvalidArgument;
            error_->pointer = pointer;
            std::size_t offset = walker_.offsetOf(pointer);
            error_->offset = offset == std::string::npos ? 0 : offset;
            error_->message = message;
        }
        return false;
    }

    bool read(const Json &document, Fabric *fabric);

  private:
    bool checkKeys(const Json &object, const std::string &pointer,
                   std::initializer_list<const char *> allowed) {
        if (!object.is_object()) return fail(pointer, "expected an object");
        for (auto it = object.begin(); it != object.end(); ++it) {
            bool known = std::any_of(allowed.begin(), allowed.end(),
                                     [&](const char *key) { return it.key() == key; });
            if (!known) return fail(childPointer(pointer, it.key()), "unknown field");
        }
        return true;
    }

    bool readInt(const Json &object, const std::string &pointer, const char *key, int min, int max,
                 std::optional<int> *out) {
        if (!object.contains(key)) return true;
        const Json &value = object.at(key);
        std::string at = childPointer(pointer, key);
        if (!value.is_number_integer()) return fail(at, "expected an integer");
        long long n = value.get<long long>();
        if (n < min || n > max)
            return fail(
                at, "out of range (" + std::to_string(min) + " to " + std::to_string(max) + ")");
        *out = static_cast<int>(n);
        return true;
    }

    bool readRequiredInt(const Json &object, const std::string &pointer, const char *key, int min,
                         int max, int *out) {
        if (!object.contains(key))
            return fail(pointer, std::string("missing field \"") + key + "\"");
        std::optional<int> value;
        if (!readInt(object, pointer, key, min, max, &value)) return false;
        *out = *value;
        return true;
    }

    bool readString(const Json &object, const std::string &pointer, const char *key, bool required,
                    std::string *out) {
        if (!object.contains(key)) {
            return required ? fail(pointer, std::string("missing field \"") + key + "\"") : true;
        }
        const Json &value = object.at(key);
        if (!value.is_string()) return fail(childPointer(pointer, key), "expected a string");
        *out = value.get<std::string>();
        return true;
    }

    // An optional array field; absent reads as empty.
    bool readArray(const Json &object, const std::string &pointer, const char *key,
                   const Json **out) {
        static const Json kEmpty = Json::array();
        *out = &kEmpty;
        if (!object.contains(key)) return true;
        const Json &value = object.at(key);
        if (!value.is_array()) return fail(childPointer(pointer, key), "expected an array");
        *out = &value;
        return true;
    }

    bool readWwn(const Json &object, const std::string &pointer, const char *key, Wwn *out) {
        std::string text;
        if (!readString(object, pointer, key, false, &text) || text.empty()) return error_ok();
        if (!parse_wwn_text(text, out->data()))
            return fail(childPointer(pointer, key), "not a WWN (16 hex digits, ':' between pairs)");
        return true;
    }
    bool error_ok() const { return error_ == nullptr || error_->code == 0; }

    bool readLimits(const Json &document, Limits *limits);
    bool readVsan(const Json &value, const std::string &pointer, FabricVsan *vsan);
    bool readDomain(const Json &value, const std::string &pointer, int vsan, DomainInfo *domain);
    bool readDatabase(const Json &parent, const std::string &pointer, const char *key, int vsan,
                      bool active, FabricDatabase *database);
    bool readObjects(const Json &database, const std::string &pointer, const char *key,
                     const char *children_key, bool with_members, int vsan, bool active,
                     std::vector<FabricObject> *objects);
    bool readMembers(const Json &object, const std::string &pointer, int vsan, bool active,
                     FabricObject *target);
    bool readDeviceAliases(const Json &document, Fabric *fabric);

    JsonWalker walker_;
    FabricError *error_;
};

bool FabricReader::read(const Json &document, Fabric *fabric) {
    if (!checkKeys(document, "", {"version", "switch_name", "limits", "vsans", "device_aliases"}))
        return false;
    std::optional<int> version;
    if (!readInt(document, "", "version", kFormatVersion, kFormatVersion, &version)) return false;
    if (!readString(document, "", "switch_name", false, &fabric->switch_name)) return false;
    if (fabric->switch_name.empty() || fabric->switch_name.size() > 255)
        return fail("/switch_name", "a switch name has 1 to 255 characters");
    if (!readLimits(document, &fabric->limits)) return false;
    const Json *vsans = nullptr;
    if (!readArray(document, "", "vsans", &vsans)) return false;
    std::set<int> numbers;
    for (std::size_t i = 0; i < vsans->size(); ++i) {
        FabricVsan vsan;
        vsan.pointer = indexPointer("/vsans", i);
        if (!readVsan(vsans->at(i), vsan.pointer, &vsan)) return false;
        if (!numbers.insert(vsan.info.number).second)
            return fail(childPointer(vsan.pointer, "number"), "VSAN listed twice");
        fabric->vsans.push_back(std::move(vsan));
    }
    return readDeviceAliases(document, fabric);
}

bool FabricReader::readLimits(const Json &document, Limits *limits) {
    if (!document.contains("limits")) return true;
    const Json &value = document.at("limits");
    const std::string pointer = "/limits";
    if (!checkKeys(value, pointer, {"zone_sets", "zones", "aliases", "members", "device_aliases"}))
        return false;
    struct Field {
        const char *key;
        int Limits::*field;
    };
    static constexpr Field kFields[] = {{"zone_sets", &Limits::zone_sets},
                                        {"zones", &Limits::zones},
                                        {"aliases", &Limits::aliases},
                                        {"members", &Limits::members},
                                        {"device_aliases", &Limits::device_aliases}};
    for (const Field &field : kFields) {
        std::optional<int> n;
        if (!readInt(value, pointer, field.key, 0, 100000000, &n)) return false;
        if (n) limits->*field.field = *n;
    }
    return true;
}

bool FabricReader::readVsan(const Json &value, const std::string &pointer, FabricVsan *vsan) {
    if (!checkKeys(value, pointer, {"number", "name", "domain", "next_number", "full", "active"}))
        return false;
    if (!readRequiredInt(value, pointer, "number", kMinVsan, kMaxVsan, &vsan->info.number))
        return false;
    char default_name[16];
    std::snprintf(default_name, sizeof default_name, "VSAN%04d", vsan->info.number);
    vsan->info.name = default_name;
    if (!readString(value, pointer, "name", false, &vsan->info.name)) return false;
    if (vsan->info.name.size() > kMaxNameLength)
        return fail(childPointer(pointer, "name"), "a VSAN name has at most 64 characters");
    if (value.contains("domain") && !value.at("domain").is_null()) {
        DomainInfo domain;
        if (!readDomain(value.at("domain"), childPointer(pointer, "domain"), vsan->info.number,
                        &domain))
            return false;
        vsan->info.domain = domain;
    }
    if (!readInt(value, pointer, "next_number", 1, kMaxObjectNumber, &vsan->next_number))
        return false;
    int number = vsan->info.number;
    if (!readDatabase(value, pointer, "full", number, false, &vsan->full)) return false;
    if (!readDatabase(value, pointer, "active", number, true, &vsan->active)) return false;
    if (vsan->active.zone_sets.size() > 1)
        return fail(childPointer(childPointer(pointer, "active"), "zone_sets"),
                    "the active database holds at most one zone set");
    return true;
}

bool FabricReader::readDomain(const Json &value, const std::string &pointer, int vsan,
                              DomainInfo *domain) {
    if (!checkKeys(value, pointer, {"id", "switch_wwn", "principal_wwn"})) return false;
    if (!readRequiredInt(value, pointer, "id", kMinDomain, kMaxDomain, &domain->domain_id))
        return false;
    // Unless given: 30:VV:VV:00:00:00:00:DD (a locally assigned name), the
    // switch its own principal.
    domain->switch_wwn = Wwn{0x30,
                             static_cast<std::uint8_t>(vsan >> 8),
                             static_cast<std::uint8_t>(vsan & 0xff),
                             0x00,
                             0x00,
                             0x00,
                             0x00,
                             static_cast<std::uint8_t>(domain->domain_id)};
    if (!readWwn(value, pointer, "switch_wwn", &domain->switch_wwn)) return false;
    domain->principal_wwn = domain->switch_wwn;
    return readWwn(value, pointer, "principal_wwn", &domain->principal_wwn);
}

bool FabricReader::readDatabase(const Json &parent, const std::string &vsan_pointer,
                                const char *key, int vsan, bool active, FabricDatabase *database) {
    if (!parent.contains(key)) return true;
    const Json &value = parent.at(key);
    std::string pointer = childPointer(vsan_pointer, key);
    if (!checkKeys(value, pointer, {"zone_sets", "zones", "aliases"})) return false;
    return readObjects(value, pointer, "zone_sets", "zones", false, vsan, active,
                       &database->zone_sets) &&
           readObjects(value, pointer, "zones", "aliases", true, vsan, active, &database->zones) &&
           readObjects(value, pointer, "aliases", nullptr, true, vsan, active, &database->aliases);
}

bool FabricReader::readObjects(const Json &database, const std::string &pointer, const char *key,
                               const char *children_key, bool with_members, int vsan, bool active,
                               std::vector<FabricObject> *objects) {
    const Json *list = nullptr;
    if (!readArray(database, pointer, key, &list)) return false;
    std::string list_pointer = childPointer(pointer, key);
    for (std::size_t i = 0; i < list->size(); ++i) {
        const Json &value = list->at(i);
        FabricObject object;
        object.pointer = indexPointer(list_pointer, i);
        bool keys_ok =
            children_key == nullptr
                ? checkKeys(value, object.pointer, {"name", "number", "members"})
            : with_members
                ? checkKeys(value, object.pointer, {"name", "number", "members", children_key})
                : checkKeys(value, object.pointer, {"name", "number", children_key});
        if (!keys_ok) return false;
        if (!readString(value, object.pointer, "name", true, &object.name)) return false;
        if (!isValidName(object.name))
            return fail(childPointer(object.pointer, "name"),
                        "a name has 1 to 64 letters, digits, '-', '_', '$' or '^'");
        if (!readInt(value, object.pointer, "number", 1, kMaxObjectNumber, &object.number))
            return false;
        if (children_key != nullptr) {
            const Json *children = nullptr;
            if (!readArray(value, object.pointer, children_key, &children)) return false;
            std::string children_pointer = childPointer(object.pointer, children_key);
            for (std::size_t c = 0; c < children->size(); ++c) {
                std::string at = indexPointer(children_pointer, c);
                if (!children->at(c).is_string()) return fail(at, "expected a name");
                object.children.emplace_back(at, children->at(c).get<std::string>());
            }
        }
        if (with_members && !readMembers(value, object.pointer, vsan, active, &object))
            return false;
        objects->push_back(std::move(object));
    }
    return true;
}

bool FabricReader::readMembers(const Json &object, const std::string &pointer, int vsan,
                               bool active, FabricObject *target) {
    const Json *members = nullptr;
    if (!readArray(object, pointer, "members", &members)) return false;
    std::string members_pointer = childPointer(pointer, "members");
    for (std::size_t i = 0; i < members->size(); ++i) {
        const Json &value = members->at(i);
        std::string at = indexPointer(members_pointer, i);
        if (!checkKeys(value, at, {"type", "id"})) return false;
        int type = 0;
        std::string id;
        if (!readRequiredInt(value, at, "type", 0, 65535, &type)) return false;
        if (!readString(value, at, "id", true, &id)) return false;
        Member member;
        if (member_type_by_cim(static_cast<std::uint32_t>(type)) == nullptr)
            return fail(childPointer(at, "type"), "unknown member type");
        if (memberFromText(vsan, active, static_cast<std::uint32_t>(type), id, &member) != 0)
            return fail(childPointer(at, "id"),
                        "not a valid identifier of member type " + std::to_string(type));
        target->members.emplace_back(at, std::move(member));
    }
    return true;
}

bool FabricReader::readDeviceAliases(const Json &document, Fabric *fabric) {
    const Json *list = nullptr;
    if (!readArray(document, "", "device_aliases", &list)) return false;
    for (std::size_t i = 0; i < list->size(); ++i) {
        std::string at = indexPointer("/device_aliases", i);
        const Json &value = list->at(i);
        if (!checkKeys(value, at, {"name", "pwwn"})) return false;
        DeviceAlias alias;
        std::string pwwn;
        if (!readString(value, at, "name", true, &alias.name)) return false;
        if (!isValidName(alias.name))
            return fail(childPointer(at, "name"),
                        "a name has 1 to 64 letters, digits, '-', '_', '$' or '^'");
        if (!readString(value, at, "pwwn", true, &pwwn)) return false;
        if (!parse_wwn_text(pwwn, alias.pwwn.data()))
            return fail(childPointer(at, "pwwn"), "not a WWN (16 hex digits, ':' between pairs)");
        fabric->device_aliases.emplace_back(at, std::move(alias));
    }
    return true;
}

// ---- Checks across objects, and object numbers -----------------------------------------

using NameIndex = std::map<std::string, std::size_t>;

struct ResolvedDatabase {
    const FabricDatabase *source = nullptr;
    bool active = false;
    std::vector<int> set_numbers, zone_numbers, alias_numbers;
};

class FabricChecker {
  public:
    FabricChecker(FabricReader &reader) : reader_(reader) {}

    bool check(const Fabric &fabric,
               std::vector<std::pair<ResolvedDatabase, ResolvedDatabase>> *out,
               std::vector<int> *next_numbers);

  private:
    bool uniqueNames(const std::vector<FabricObject> &objects, NameIndex *index) {
        for (std::size_t i = 0; i < objects.size(); ++i)
            if (!index->emplace(objects[i].name, i).second)
                return reader_.fail(childPointer(objects[i].pointer, "name"), "name used twice");
        return true;
    }

    bool knownChildren(const std::vector<FabricObject> &parents, const NameIndex &children) {
        for (const FabricObject &parent : parents) {
            std::set<std::string> seen;
            for (const auto &[pointer, name] : parent.children) {
                if (children.find(name) == children.end())
                    return reader_.fail(pointer, "no object of that name in this database");
                if (!seen.insert(name).second) return reader_.fail(pointer, "listed twice");
            }
        }
        return true;
    }

    bool distinctMembers(const std::vector<FabricObject> &objects) {
        for (const FabricObject &object : objects) {
            std::set<std::pair<int, std::vector<std::uint8_t>>> seen;
            for (const auto &[pointer, member] : object.members)
                if (!seen.emplace(member.code, member.key).second)
                    return reader_.fail(pointer, "member listed twice");
        }
        return true;
    }

    bool checkDatabase(const FabricDatabase &database) {
        NameIndex sets, zones, aliases;
        return uniqueNames(database.zone_sets, &sets) && uniqueNames(database.zones, &zones) &&
               uniqueNames(database.aliases, &aliases) &&
               knownChildren(database.zone_sets, zones) && knownChildren(database.zones, aliases) &&
               distinctMembers(database.zones) && distinctMembers(database.aliases);
    }

    // Numbers given in the file: unique within their database.
    bool explicitNumbers(const FabricDatabase &database, std::set<int> *used, int *highest) {
        for (const auto *objects : {&database.zone_sets, &database.zones, &database.aliases})
            for (const FabricObject &object : *objects) {
                if (!object.number) continue;
                if (!used->insert(*object.number).second)
                    return reader_.fail(childPointer(object.pointer, "number"),
                                        "number used twice in this database");
                *highest = std::max(*highest, *object.number);
            }
        return true;
    }

    bool numberVsan(const FabricVsan &vsan, ResolvedDatabase *full, ResolvedDatabase *active,
                    int *next_number);

    FabricReader &reader_;
};

bool FabricChecker::numberVsan(const FabricVsan &vsan, ResolvedDatabase *full,
                               ResolvedDatabase *active, int *next_number) {
    std::set<int> used_full, used_active;
    int highest = vsan.next_number ? *vsan.next_number - 1 : 0;
    if (!explicitNumbers(vsan.full, &used_full, &highest) ||
        !explicitNumbers(vsan.active, &used_active, &highest))
        return false;
    int next = highest + 1;
    auto fresh = [&](const FabricObject &object) {
        return object.number ? *object.number : next++;
    };

    full->source = &vsan.full;
    for (const FabricObject &object : vsan.full.zone_sets)
        full->set_numbers.push_back(fresh(object));
    for (const FabricObject &object : vsan.full.zones) full->zone_numbers.push_back(fresh(object));
    for (const FabricObject &object : vsan.full.aliases)
        full->alias_numbers.push_back(fresh(object));

    // An active object without a number copies its editable twin's.
    auto twin = [&](const std::vector<FabricObject> &objects, const std::vector<int> &numbers,
                    const std::string &name) -> std::optional<int> {
        for (std::size_t i = 0; i < objects.size(); ++i)
            if (objects[i].name == name) return numbers[i];
        return std::nullopt;
    };
    auto numberActive = [&](const std::vector<FabricObject> &objects,
                            const std::vector<FabricObject> &full_objects,
                            const std::vector<int> &full_numbers, std::vector<int> *numbers) {
        for (const FabricObject &object : objects) {
            if (object.number) {
                numbers->push_back(*object.number);
                continue;
            }
            std::optional<int> number = twin(full_objects, full_numbers, object.name);
            if (number && !used_active.insert(*number).second)
                return reader_.fail(object.pointer, "its editable copy's number " +
                                                        std::to_string(*number) +
                                                        " is taken in the active database");
            numbers->push_back(number ? *number : next++);
        }
        return true;
    };
    active->source = &vsan.active;
    active->active = true;
    if (!numberActive(vsan.active.zone_sets, vsan.full.zone_sets, full->set_numbers,
                      &active->set_numbers) ||
        !numberActive(vsan.active.zones, vsan.full.zones, full->zone_numbers,
                      &active->zone_numbers) ||
        !numberActive(vsan.active.aliases, vsan.full.aliases, full->alias_numbers,
                      &active->alias_numbers))
        return false;
    if (next > kMaxObjectNumber) return reader_.fail(vsan.pointer, "too many objects");
    *next_number = next;
    return true;
}

bool FabricChecker::check(const Fabric &fabric,
                          std::vector<std::pair<ResolvedDatabase, ResolvedDatabase>> *out,
                          std::vector<int> *next_numbers) {
    for (const FabricVsan &vsan : fabric.vsans) {
        if (!checkDatabase(vsan.full) || !checkDatabase(vsan.active)) return false;
        ResolvedDatabase full, active;
        int next = 1;
        if (!numberVsan(vsan, &full, &active, &next)) return false;
        out->emplace_back(std::move(full), std::move(active));
        next_numbers->push_back(next);
    }
    std::set<std::string> names;
    std::set<Wwn> pwwns;
    for (const auto &[pointer, alias] : fabric.device_aliases) {
        if (!names.insert(alias.name).second)
            return reader_.fail(childPointer(pointer, "name"), "device alias name used twice");
        if (!pwwns.insert(alias.pwwn).second)
            return reader_.fail(childPointer(pointer, "pwwn"), "pWWN already has a device alias");
    }
    return true;
}

// ---- Writing a checked fabric -------------------------------------------------------------

int writeDatabase(Store &store, int vsan, const ResolvedDatabase &database) {
    const FabricDatabase &source = *database.source;
    std::vector<ZoningObject> sets, zones, aliases;
    auto insertAll = [&](const std::vector<FabricObject> &objects, const std::vector<int> &numbers,
                         ObjectKind kind, std::vector<ZoningObject> *made) {
        for (std::size_t i = 0; i < objects.size(); ++i) {
            ZoningObject object;
            object.vsan = vsan;
            object.active = database.active;
            object.kind = kind;
            object.number = numbers[i];
            object.name = objects[i].name;
            if (int code = store.insertObject(&object)) return code;
            made->push_back(object);
        }
        return 0;
    };
    if (int code = insertAll(source.zone_sets, database.set_numbers, ObjectKind::ZoneSet, &sets))
        return code;
    if (int code = insertAll(source.zones, database.zone_numbers, ObjectKind::Zone, &zones))
        return code;
    if (int code = insertAll(source.aliases, database.alias_numbers, ObjectKind::Alias, &aliases))
        return code;

    auto byName = [](const std::vector<ZoningObject> &objects) {
        std::map<std::string, const ZoningObject *> index;
        for (const ZoningObject &object : objects) index.emplace(object.name, &object);
        return index;
    };
    auto zone_index = byName(zones), alias_index = byName(aliases);
    for (std::size_t i = 0; i < sets.size(); ++i)
        for (const auto &child : source.zone_sets[i].children)
            if (int code = store.insertLink(sets[i], *zone_index.at(child.second))) return code;
    for (std::size_t i = 0; i < zones.size(); ++i) {
        for (const auto &child : source.zones[i].children)
            if (int code = store.insertLink(zones[i], *alias_index.at(child.second))) return code;
        for (const auto &member : source.zones[i].members)
            if (int code = store.insertMember(zones[i], member.second)) return code;
    }
    for (std::size_t i = 0; i < aliases.size(); ++i)
        for (const auto &member : source.aliases[i].members)
            if (int code = store.insertMember(aliases[i], member.second)) return code;
    return 0;
}

int writeFabric(Store &store, const Fabric &fabric,
                const std::vector<std::pair<ResolvedDatabase, ResolvedDatabase>> &databases,
                const std::vector<int> &next_numbers) {
    return store.write([&] {
        store.clearAll();
        if (int code = store.setSwitchName(fabric.switch_name)) return code;
        if (int code = store.setLimits(fabric.limits)) return code;
        for (std::size_t i = 0; i < fabric.vsans.size(); ++i) {
            const FabricVsan &vsan = fabric.vsans[i];
            if (int code = store.addVsan(vsan.info)) return code;
            store.reserveNumber(vsan.info.number, next_numbers[i] - 1);
            if (int code = writeDatabase(store, vsan.info.number, databases[i].first)) return code;
            if (int code = writeDatabase(store, vsan.info.number, databases[i].second)) return code;
        }
        for (const auto &entry : fabric.device_aliases)
            if (int code = store.addDeviceAlias(entry.second)) return code;
        return 0;
    });
}

bool readFile(const std::string &file, std::string *text) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return false;
    std::ostringstream buffer;
    buffer << in.rdbuf();
    *text = buffer.str();
    return !in.bad();
}

// ---- Dumping ---------------------------------------------------------------------------------

std::string wwnText(const Wwn &wwn) {
    char text[24];
    format_wwn(wwn.data(), text);
    return text;
}

OrderedJson dumpDatabase(Store &store, int vsan, bool active) {
    OrderedJson database = OrderedJson::object();
    auto names = [](const std::vector<ZoningObject> &objects) {
        OrderedJson list = OrderedJson::array();
        for (const ZoningObject &object : objects) list.push_back(object.name);
        return list;
    };
    auto members = [&](const ZoningObject &object) {
        OrderedJson list = OrderedJson::array();
        for (const Member &member : store.members(object))
            list.push_back(OrderedJson{{"type", member.cim_type}, {"id", member.value_text}});
        return list;
    };
    auto dumpKind = [&](ObjectKind kind, const char *key) {
        OrderedJson list = OrderedJson::array();
        for (const ZoningObject &object : store.objects(vsan, active, kind)) {
            OrderedJson entry{{"name", object.name}, {"number", object.number}};
            if (kind == ObjectKind::ZoneSet) entry["zones"] = names(store.children(object));
            if (kind != ObjectKind::ZoneSet) entry["members"] = members(object);
            if (kind == ObjectKind::Zone) entry["aliases"] = names(store.children(object));
            list.push_back(std::move(entry));
        }
        database[key] = std::move(list);
    };
    dumpKind(ObjectKind::ZoneSet, "zone_sets");
    dumpKind(ObjectKind::Zone, "zones");
    dumpKind(ObjectKind::Alias, "aliases");
    return database;
}

OrderedJson dumpState(Store &store) {
    OrderedJson document;
    document["version"] = kFormatVersion;
    document["switch_name"] = store.switchName();
    Limits limits = store.limits();
    document["limits"] = OrderedJson{{"zone_sets", limits.zone_sets},
                                     {"zones", limits.zones},
                                     {"aliases", limits.aliases},
                                     {"members", limits.members},
                                     {"device_aliases", limits.device_aliases}};
    OrderedJson vsans = OrderedJson::array();
    for (const VsanInfo &info : store.vsans()) {
        OrderedJson vsan{{"number", info.number}, {"name", info.name}};
        if (info.domain)
            vsan["domain"] = OrderedJson{{"id", info.domain->domain_id},
                                         {"switch_wwn", wwnText(info.domain->switch_wwn)},
                                         {"principal_wwn", wwnText(info.domain->principal_wwn)}};
        else
            vsan["domain"] = nullptr;
        vsan["next_number"] = store.nextNumber(info.number);
        vsan["full"] = dumpDatabase(store, info.number, false);
        vsan["active"] = dumpDatabase(store, info.number, true);
        vsans.push_back(std::move(vsan));
    }
    document["vsans"] = std::move(vsans);
    OrderedJson aliases = OrderedJson::array();
    for (const DeviceAlias &alias : store.deviceAliases())
        aliases.push_back(OrderedJson{{"name", alias.name}, {"pwwn", wwnText(alias.pwwn)}});
    document["device_aliases"] = std::move(aliases);
    return document;
}

// ---- Generating ------------------------------------------------------------------------------

// splitmix64: a fixed sequence for a seed, on every platform.
class Sequence {
  public:
    explicit Sequence(std::uint64_t seed) : state_(seed) {}
    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    int below(int n) { return n <= 0 ? 0 : static_cast<int>(next() % static_cast<unsigned>(n)); }

  private:
    std::uint64_t state_;
};

// VSAN numbers 1, 2, 3, ... leaving out the reserved 4079.
int generatedVsanNumber(int index) {
    int number = index + 1;
    return number >= 4079 ? number + 1 : number;
}

// The port WWN of device d of VSAN v: 21:00:VV:VV:DD:DD:DD:DD.
std::string deviceWwn(int vsan, int device) {
    char text[24];
    std::snprintf(text, sizeof text, "21:00:%02x:%02x:%02x:%02x:%02x:%02x", (vsan >> 8) & 0xff,
                  vsan & 0xff, (device >> 24) & 0xff, (device >> 16) & 0xff, (device >> 8) & 0xff,
                  device & 0xff);
    return text;
}

// A member naming device d of VSAN v: mostly port WWNs (as clients write
// them, and in the switch's own form), some FC IDs, domain-port and
// interface members, chosen by the sequence.
OrderedJson deviceMember(Sequence &sequence, int vsan, int device, int domain) {
    int pick = sequence.below(20);
    char text[64];
    if (pick < 12) {
        std::string wwn = deviceWwn(vsan, device);
        wwn.erase(std::remove(wwn.begin(), wwn.end(), ':'), wwn.end());
        return OrderedJson{{"type", 2}, {"id", wwn}};
    }
    if (pick < 15) return OrderedJson{{"type", 10}, {"id", deviceWwn(vsan, device)}};
    if (pick < 17) {
        std::snprintf(text, sizeof text, "0x%02x%04x", domain, device & 0xffff);
        return OrderedJson{{"type", 3}, {"id", text}};
    }
    if (pick < 19) {
        std::snprintf(text, sizeof text, "%d:%d", domain, device & 0xffff);
        return OrderedJson{{"type", 4}, {"id", text}};
    }
    std::snprintf(text, sizeof text, "fc%d/%d", 1 + (device / 48) % 64, 1 + device % 48);
    return OrderedJson{{"type", 32768}, {"id", text}};
}

// How many of total objects, dealt round-robin, land on VSAN index i.
int shareOf(int total, int vsans, int i) {
    return total / vsans + (i < total % vsans ? 1 : 0);
}

OrderedJson generateVsan(const GeneratorSettings &settings, Sequence &sequence, int index) {
    int number = generatedVsanNumber(index);
    int domain = 1 + index % kMaxDomain;
    int set_count = shareOf(settings.zone_sets, settings.vsans, index);
    int zone_count = shareOf(settings.zones, settings.vsans, index);
    int alias_count = shareOf(settings.aliases, settings.vsans, index);
    int per_zone = settings.members_per_zone;
    // Enough devices that every device is in about two zones.
    int devices = std::max(per_zone, zone_count * per_zone / 2 + 1);
    char name[80];

    OrderedJson sets = OrderedJson::array(), zones = OrderedJson::array(),
                aliases = OrderedJson::array();
    int next_number = 1;
    for (int s = 0; s < set_count; ++s) {
        std::snprintf(name, sizeof name, "zs_%d_%d", number, s);
        sets.push_back(OrderedJson{
            {"name", name}, {"number", next_number++}, {"zones", OrderedJson::array()}});
    }
    for (int z = 0; z < zone_count; ++z) {
        std::snprintf(name, sizeof name, "z_%d_%d", number, z);
        OrderedJson members = OrderedJson::array();
        int base = sequence.below(devices);
        for (int m = 0; m < per_zone; ++m)
            members.push_back(deviceMember(sequence, number, (base + m) % devices, domain));
        zones.push_back(OrderedJson{{"name", name},
                                    {"number", next_number++},
                                    {"members", std::move(members)},
                                    {"aliases", OrderedJson::array()}});
        if (set_count > 0) sets[z % set_count]["zones"].push_back(name);
    }
    for (int a = 0; a < alias_count; ++a) {
        std::snprintf(name, sizeof name, "a_%d_%d", number, a);
        int device = devices + a;  // a device of its own
        OrderedJson member{{"type", 10}, {"id", deviceWwn(number, device)}};
        aliases.push_back(OrderedJson{
            {"name", name}, {"number", next_number++}, {"members", OrderedJson::array({member})}});
        if (zone_count > 0) zones[a % zone_count]["aliases"].push_back(name);
    }

    // The first zone set is active: a copy of it with its zones and aliases.
    OrderedJson active{{"zone_sets", OrderedJson::array()},
                       {"zones", OrderedJson::array()},
                       {"aliases", OrderedJson::array()}};
    if (set_count > 0) {
        const OrderedJson &first = sets[0];
        active["zone_sets"].push_back(first);
        std::set<std::string> copied_aliases;
        for (const OrderedJson &zone_name : first["zones"]) {
            int z = 0;
            std::sscanf(zone_name.get<std::string>().c_str(), "z_%*d_%d", &z);
            active["zones"].push_back(zones[z]);
            for (const OrderedJson &alias_name : zones[z]["aliases"]) {
                if (!copied_aliases.insert(alias_name.get<std::string>()).second) continue;
                int a = 0;
                std::sscanf(alias_name.get<std::string>().c_str(), "a_%*d_%d", &a);
                active["aliases"].push_back(aliases[a]);
            }
        }
    }
    char wwn[24];
    std::snprintf(wwn, sizeof wwn, "30:%02x:%02x:00:00:00:00:%02x", (number >> 8) & 0xff,
                  number & 0xff, domain);
    std::snprintf(name, sizeof name, "VSAN%04d", number);
    return OrderedJson{{"number", number},
                       {"name", name},
                       {"domain", {{"id", domain}, {"switch_wwn", wwn}, {"principal_wwn", wwn}}},
                       {"next_number", next_number},
                       {"full", {{"zone_sets", sets}, {"zones", zones}, {"aliases", aliases}}},
                       {"active", std::move(active)}};
}

}  // namespace

int loadFabricText(Store &store, std::string_view text, FabricError *error) {
    FabricError local;
    FabricError *report = error != nullptr ? error : &local;
    *report = FabricError{};
    try {
        Json document = Json::parse(text.begin(), text.end(), nullptr, false);
        if (document.is_discarded()) {
            report->code = kErrInvalidArgument;
            report->message = "not valid JSON";
            std::size_t parser_offset = 0;
            try {
                Json strict = Json::parse(text.begin(), text.end());
                static_cast<void>(strict);
            } catch (const Json::parse_error &e) {
                parser_offset = e.byte > 0 ? e.byte - 1 : 0;
                std::string what = e.what();
                std::size_t reason = what.find(": ");
                if (reason != std::string::npos) report->message += what.substr(reason);
            }
            // The walker knows which value the text broke in; for what it
            // lets through, the parser's position stands.
            if (!JsonWalker(text).syntaxError(&report->pointer, &report->offset)) {
                report->pointer.clear();
                report->offset = parser_offset;
            }
            return report->code;
        }
        FabricReader reader(text, report);
        Fabric fabric;
        if (!reader.read(document, &fabric)) return report->code;
        FabricChecker checker(reader);
        std::vector<std::pair<ResolvedDatabase, ResolvedDatabase>> databases;
        std::vector<int> next_numbers;
        if (!checker.check(fabric, &databases, &next_numbers)) return report->code;
        int code = writeFabric(store, fabric, databases, next_numbers);
        if (code != 0) {
            report->code = code;
            report->message = std::string("cannot write the fabric: ") + errorText(code);
        }
        return code;
    } catch (const std::exception &e) {
        report->code = kErrUnknown;
        report->message = e.what();
        return report->code;
    }
}

int loadFabric(Store &store, const std::string &file, FabricError *error) {
    std::string text;
    if (!readFile(file, &text)) {
        if (error != nullptr) {
            *error = FabricError{};
            error->code = kErrStorage;
            error->message = "cannot read " + file;
        }
        return kErrStorage;
    }
    return loadFabricText(store, text, error);
}

int dumpFabricText(Store &store, std::string *text) {
    try {
        OrderedJson document;
        int code = store.read([&] {
            document = dumpState(store);
            return 0;
        });
        if (code == 0) *text = document.dump(2) + "\n";
        return code;
    } catch (...) {
        return kErrUnknown;
    }
}

int dumpFabric(Store &store, const std::string &file, std::string *message) {
    std::string text;
    int code = dumpFabricText(store, &text);
    if (code != 0) {
        if (message != nullptr) *message = errorText(code);
        return code;
    }
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (!out) {
        if (message != nullptr) *message = "cannot write " + file;
        return kErrStorage;
    }
    return 0;
}

std::string generateFabric(const GeneratorSettings &settings) {
    if (settings.vsans < 1 || settings.vsans > 4092 || settings.zone_sets < 0 ||
        settings.zones < 0 || settings.aliases < 0 || settings.members_per_zone < 0 ||
        settings.device_aliases < 0)
        return {};
    Sequence sequence(settings.seed);
    OrderedJson vsans = OrderedJson::array();
    for (int i = 0; i < settings.vsans; ++i) vsans.push_back(generateVsan(settings, sequence, i));
    OrderedJson device_aliases = OrderedJson::array();
    char name[32];
    for (int d = 0; d < settings.device_aliases; ++d) {
        int vsan = generatedVsanNumber(d % settings.vsans);
        std::snprintf(name, sizeof name, "da_%d", d);
        device_aliases.push_back(
            OrderedJson{{"name", name}, {"pwwn", deviceWwn(vsan, d / settings.vsans)}});
    }
    OrderedJson document{{"version", kFormatVersion},
                         {"switch_name", Store::kDefaultSwitchName},
                         {"limits",
                          {{"zone_sets", std::max(1000, settings.zone_sets)},
                           {"zones", std::max(16000, settings.zones)},
                           {"aliases", std::max(8000, settings.aliases)},
                           {"members", std::max(32000, settings.zones * settings.members_per_zone +
                                                           settings.aliases)},
                           {"device_aliases", std::max(20000, settings.device_aliases)}}},
                         {"vsans", std::move(vsans)},
                         {"device_aliases", std::move(device_aliases)}};
    return document.dump(1) + "\n";
}

}  // namespace zonesim
