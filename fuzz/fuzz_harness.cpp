// The fuzz targets' shared set-up and input builder (see fuzz_harness.h).
#include "fuzz_harness.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <sstream>

#include "provider/zone_provider.h"
#include "sim/fabric.h"
#include "sim/store.h"

namespace zonefuzz {

namespace {

// ---- Words the builder draws from ------------------------------------------

constexpr std::string_view kClassNames[] = {
    "VORNA_ZoneSet",
    "VORNA_Zone",
    "VORNA_ZoneAlias",
    "VORNA_DeviceAlias",
    "VORNA_ZoneMemberSettingData",
    "VORNA_HostedCollection",
    "VORNA_ZoneMemberOfCollection",
    "VORNA_ElementSettingData",
    "VORNA_ZoneService",
    "VORNA_HostedService",
    "VORNA_ZoneHostedCollection",
    "VORNA_Vsan",
    "CIM_ZoneService",
    "VORNA_DeviceAliasService",
    "CIM_ZoneSet",
    "CIM_Zone",
    "CIM_ManagedElement",
    "CIM_ComputerSystem",
};

constexpr std::string_view kKeyNames[] = {
    "InstanceID",
    "Name",
    "Collection",
    "Member",
    "ManagedElement",
    "SettingData",
    "Antecedent",
    "Dependent",
    "CreationClassName",
    "SystemName",
    "SystemCreationClassName",
    "ElementName",
};

constexpr std::string_view kMethodNames[] = {
    "CreateZoneSet",
    "CreateZone",
    "CreateZoneAlias",
    "CreateZoneMembershipSettingData",
    "AddZone",
    "AddZoneAlias",
    "AddZoneMembershipSettingData",
    "ActivateZoneSet",
    "CreateDeviceAlias",
    "RemoveDeviceAlias",
};

// Argument kinds by position, per method: T name text, M member identifier,
// W port WWN text, R reference, U member type (uint16), B boolean, A anything.
struct MethodShape {
    std::string_view method;
    std::string_view kinds;
};
constexpr MethodShape kMethodShapes[] = {
    {"CreateZoneSet", "T"},
    {"CreateZone", "TAA"},
    {"CreateZoneAlias", "T"},
    {"CreateZoneMembershipSettingData", "UMR"},
    {"AddZone", "RR"},
    {"AddZoneAlias", "RR"},
    {"AddZoneMembershipSettingData", "RR"},
    {"ActivateZoneSet", "RB"},
    {"CreateDeviceAlias", "TW"},
    {"RemoveDeviceAlias", "T"},
};

constexpr std::string_view kArgumentNames[] = {
    "ZoneSetName",
    "ZoneName",
    "ZoneAliasName",
    "ConnectivityMemberType",
    "ConnectivityMemberID",
    "Zone",
    "ZoneSet",
    "ZoneAlias",
    "ZoneMembershipSettingData",
    "Activate",
    "Name",
    "PWWN",
    "DeviceAliasName",
    "Persist",
};

constexpr std::string_view kRoles[] = {
    "Collection", "Member", "ManagedElement", "SettingData", "Antecedent", "Dependent",
};

constexpr std::string_view kPropertyNames[] = {
    "InstanceID",
    "Name",
    "ElementName",
    "Active",
    "ZoneType",
    "ConnectivityMemberType",
    "ConnectivityMemberID",
    "NameFormat",
    "CreationClassName",
    "SystemName",
    "SystemCreationClassName",
    "PWWN",
    "SessionState",
    "RequestedSessionState",
    "CollectionAlias",
    "Collection",
    "Member",
    "ManagedElement",
    "SettingData",
    "Antecedent",
    "Dependent",
    "Other",
};

constexpr std::string_view kNamespaces[] = {"root/cimv2", "root/interop", "", "ROOT/CIMV2",
                                            "root/cimv2/"};

constexpr std::string_view kObjectNames[] = {
    "mgmt_cfg",
    "prod_a_cfg",
    "prod_b_cfg",
    "prod_b_cfg_next",
    "z_mgmt_console",
    "z_db01_array1",
    "z_web01_array1",
    "z_backup01_tape1",
    "z_app01_array2",
    "array1_ctl_a",
    "app03_hba0",
    "db01_hba0",
    "tape1_drive0",
    "fz_set",
    "fz_zone",
    "fz_alias",
    "fz_dev",
    "fz-2",
    "a",
    "Z_DB01_ARRAY1",
};

constexpr std::string_view kMemberIds[] = {
    "31:00:00:00:00:4c:a1:b2",
    "31000000004ca2c0",
    "31-00-00-00-01-8c-22-30",
    "0x0a0102",
    "0a0102",
    "10:17",
    "1:3",
    "240:1",
    "0:70000",
    "10:0x00010002",
    "20:0xffffffff",
    "fc1/5",
    "fc2/5 swwn 30:0a:00:00:00:5a:10:01",
    "fc1/1 domain 10",
    "fc0/0",
    "host-sym",
    "10.0.0.1",
    "10.0.0.0/24",
    "10.0.0.0/255.255.0.0",
    "fe80::1/64",
    "::",
    "db01_hba0",
    "a^b",
    "x y",
};

constexpr CMPIUint16 kMemberTypes[] = {0,  1,  2,  3,     4,     5,     6,     7,     8,     9,
                                       10, 11, 12, 32767, 32768, 32769, 32770, 32771, 32772, 65535};

constexpr std::string_view kOddTexts[] = {
    "",          " ",          "^",        "^^^",
    "10^",       "10^^0",      "-1^-1^-1", "2147483648^1^0",
    "1^1^1^1^1", " 10",        "0x10",     "10abc",
    "+10",       "%s%s%s%n%x", "\\",       "\"",
    "\t\n",      "\xff\xfe",   "0^0^0",    "4096^1^0",
    "10^2^1",    "10^2^0^",    "10^2^-1",  "10^2^2147483647",
};

constexpr std::size_t kLongLengths[] = {63,  64,  65,  67,  68,  69,  252,  253, 254,
                                        255, 256, 287, 288, 289, 300, 1024, 4096};

constexpr int kMaxDepth = 2;
constexpr unsigned kNoKey = ~0u;
constexpr std::size_t kMaxRemembered = 16;

// A copy of a path in the current request, without its host and without
// the key at position `skipped` (kNoKey: with every key).
CMPIObjectPath *copy_path(const CMPIObjectPath *source, unsigned skipped) {
    const std::string ns = cmpihost::text(source->ft->getNameSpace(source, nullptr));
    const std::string cls = cmpihost::text(source->ft->getClassName(source, nullptr));
    const CMPIBroker *broker = cmpihost::broker();
    CMPIObjectPath *copy = broker->eft->newObjectPath(broker, ns.c_str(), cls.c_str(), nullptr);
    const CMPICount count = source->ft->getKeyCount(source, nullptr);
    for (CMPICount i = 0; i < count; ++i) {
        if (i == skipped) continue;
        CMPIString *name = nullptr;
        const CMPIData data = source->ft->getKeyAt(source, i, &name, nullptr);
        const bool null_value = (data.state & CMPI_nullValue) != 0;
        copy->ft->addKey(copy, cmpihost::text(name).c_str(), null_value ? nullptr : &data.value,
                         data.type);
    }
    return copy;
}

// ---- The private switch ------------------------------------------------------

// Standard output goes to /dev/null for good: the provider traces every call.
void silence_stdout() {
    std::fflush(stdout);
    const int null_fd = open("/dev/null", O_WRONLY);
    if (null_fd >= 0) {
        dup2(null_fd, STDOUT_FILENO);
        close(null_fd);
    }
}

std::filesystem::path scratch_parent() {
    // Shared memory when there is some: every write transaction syncs.
    std::error_code ignored;
    if (std::filesystem::is_directory("/dev/shm", ignored) && access("/dev/shm", W_OK) == 0)
        return "/dev/shm";
    return std::filesystem::temp_directory_path();
}

[[noreturn]] void give_up(const std::string &why) {
    std::fprintf(stderr, "zone fuzz harness: %s\n", why.c_str());
    std::abort();
}

std::string read_file(const std::string &file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) give_up("can't read the fabric file " + file);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The file change counter of an SQLite database (bytes 24-27 of its
// header): every committed write transaction changes it.
std::uint32_t change_counter(const std::string &database) {
    const int fd = open(database.c_str(), O_RDONLY);
    if (fd < 0) return 0;
    unsigned char bytes[4] = {};
    const bool read_all = pread(fd, bytes, sizeof bytes, 24) == static_cast<ssize_t>(sizeof bytes);
    close(fd);
    if (!read_all) return 0;
    return (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
           (std::uint32_t{bytes[2]} << 8) | std::uint32_t{bytes[3]};
}

constexpr std::string_view kServedClasses[] = {
    "VORNA_ZoneService",
    "VORNA_HostedService",
    "VORNA_ZoneSet",
    "VORNA_Zone",
    "VORNA_ZoneAlias",
    "VORNA_ZoneMemberSettingData",
    "VORNA_DeviceAlias",
    "VORNA_ZoneMemberOfCollection",
    "VORNA_ElementSettingData",
    "VORNA_HostedCollection",
    "VORNA_ZoneHostedCollection",
};

struct Switch {
    Interfaces mi;
    std::filesystem::path directory;
    std::string database;
    std::string fabric_text;
    std::unique_ptr<zonesim::Store> loader;
    std::uint32_t loaded_counter = 0;
    std::vector<std::string> paths;      // every object of the fabric, as path text
    std::vector<std::string> key_texts;  // every key value text of those paths

    void load() {
        zonesim::FabricError error;
        if (zonesim::loadFabricText(*loader, fabric_text, &error) != 0)
            give_up("fabric refused: " + error.describe());
        loaded_counter = change_counter(database);
    }

    void collect_key_texts(const CMPIObjectPath *path) {
        const CMPICount count = path->ft->getKeyCount(path, nullptr);
        for (CMPICount i = 0; i < count; ++i) {
            const CMPIData value = path->ft->getKeyAt(path, i, nullptr, nullptr);
            if (value.type == CMPI_ref && value.value.ref != nullptr)
                collect_key_texts(value.value.ref);
            else
                key_texts.push_back(cmpihost::dataText(value));
        }
    }

    void collect_paths() {
        for (std::string_view cls : kServedClasses) {
            cmpihost::Request request;
            CMPIObjectPath *op = request.newObjectPath("root/cimv2", std::string(cls));
            mi.instance->ft->enumInstanceNames(mi.instance, request.context(), request.result(),
                                               op);
            for (const cmpihost::Delivery &d : request.deliveries()) {
                if (d.kind != cmpihost::Delivery::Kind::ObjectPath) continue;
                paths.push_back(cmpihost::pathToString(copy_path(d.path, kNoKey)));
                collect_key_texts(d.path);
            }
        }
        std::sort(key_texts.begin(), key_texts.end());
        key_texts.erase(std::unique(key_texts.begin(), key_texts.end()), key_texts.end());
        if (paths.empty() || key_texts.empty()) give_up("the fabric gave no object paths");
        cmpihost::Request request;
        for (const std::string &text : paths) {
            std::string error;
            if (!cmpihost::parsePath(text, &error))
                give_up("a path of the switch doesn't read back: " + text + ": " + error);
        }
    }

    void start() {
        silence_stdout();
        std::string pattern = (scratch_parent() / "zone-fuzz-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) give_up("can't make a scratch directory");
        directory = pattern;
        database = (directory / "switch.db").string();
        setenv("ZONE_SIM_DB", database.c_str(), 1);
        const char *fabric = std::getenv("ZONE_FUZZ_FABRIC");
        fabric_text =
            read_file(fabric != nullptr && *fabric != '\0' ? fabric : ZONE_FUZZ_DEFAULT_FABRIC);
        zonesim::Store::Opened opened = zonesim::Store::open(database);
        if (!opened.store) give_up("can't open " + database + ": " + opened.message);
        loader = std::move(opened.store);
        load();

        cmpihost::Request request;
        CMPIStatus st{CMPI_RC_OK, nullptr};
        const CMPIBroker *broker = cmpihost::broker();
        mi.instance = ZoneProvider_Create_InstanceMI(broker, request.context(), &st);
        mi.association = ZoneProvider_Create_AssociationMI(broker, request.context(), &st);
        mi.method = ZoneProvider_Create_MethodMI(broker, request.context(), &st);
        if (mi.instance == nullptr || mi.association == nullptr || mi.method == nullptr)
            give_up("a factory returned no MI");
    }

    ~Switch() {
        loader.reset();
        std::error_code ignored;
        if (!directory.empty()) std::filesystem::remove_all(directory, ignored);
    }
};

Switch &the_switch() {
    static Switch instance;  // the scratch directory goes at exit
    return instance;
}

std::string recased(std::string_view word, int how) {
    std::string out(word);
    for (char &c : out) {
        const auto u = static_cast<unsigned char>(c);
        if (how == 1) c = static_cast<char>(std::tolower(u));
        if (how == 2) c = static_cast<char>(std::toupper(u));
    }
    return out;
}

}  // namespace

const Interfaces &interfaces() {
    static const bool started = [] {
        Switch &s = the_switch();
        s.start();
        s.collect_paths();
        return true;
    }();
    static_cast<void>(started);
    return the_switch().mi;
}

void restore_fabric_if_changed() {
    Switch &s = the_switch();
    if (change_counter(s.database) != s.loaded_counter) s.load();
}

// ---- InputBuilder ------------------------------------------------------------

InputBuilder::InputBuilder(FuzzedDataProvider &data) : data_(data) {}

const char *InputBuilder::keep(std::string text) {
    texts_.push_back(std::move(text));
    return texts_.back().c_str();
}

const char *InputBuilder::class_name() {
    switch (number<int>(0, 7)) {
        case 0:
            return keep(recased(data_.PickValueInArray(kClassNames), number<int>(1, 2)));
        case 1:
            return keep(std::string(data_.PickValueInArray(kClassNames)) + text());
        case 2:
            return text();
        default:
            return keep(std::string(data_.PickValueInArray(kClassNames)));
    }
}

const char *InputBuilder::key_name() {
    switch (number<int>(0, 7)) {
        case 0:
            return keep(recased(data_.PickValueInArray(kKeyNames), number<int>(1, 2)));
        case 1:
            return text();
        default:
            return keep(std::string(data_.PickValueInArray(kKeyNames)));
    }
}

std::string InputBuilder::number_text() {
    static constexpr long long kNumbers[] = {
        0,    1,    2,  10,           20,           4094,          4095,
        4096, 4097, -1, 2147483647LL, 2147483648LL, -2147483648LL, 9223372036854775807LL};
    std::string out = flag() ? std::to_string(data_.PickValueInArray(kNumbers))
                             : std::to_string(data_.ConsumeIntegral<long long>());
    if (number<int>(0, 7) == 0) out += text();
    return out;
}

std::string InputBuilder::zoning_id_text() {
    static constexpr int kVsans[] = {1, 10, 20, 2, 0, -1, 4096, 4097};
    const int vsan = flag() ? data_.PickValueInArray(kVsans) : data_.ConsumeIntegral<int>();
    const int object = flag() ? number<int>(0, 24) : data_.ConsumeIntegral<int>();
    const int active = flag() ? number<int>(0, 1) : data_.ConsumeIntegral<int>();
    std::string out = std::to_string(vsan) + "^" + std::to_string(object);
    if (number<int>(0, 7) != 0) out += "^" + std::to_string(active);
    if (number<int>(0, 7) == 0) out += "^" + std::string(text());
    return out;
}

std::string InputBuilder::member_id_text() {
    static constexpr int kVsans[] = {1, 10, 20, 2, 0};
    const int vsan = flag() ? data_.PickValueInArray(kVsans) : data_.ConsumeIntegral<int>();
    const unsigned type = data_.PickValueInArray(kMemberTypes);
    std::string member = flag() ? std::string(data_.PickValueInArray(kMemberIds)) : text();
    const int active = flag() ? number<int>(0, 1) : data_.ConsumeIntegral<int>();
    return std::to_string(vsan) + "^" + std::to_string(type) + "^" + member + "^" +
           std::to_string(active);
}

std::string InputBuilder::wwn_text() {
    static constexpr std::string_view kSeparators[] = {":", "", "-", " "};
    const std::string_view separator = data_.PickValueInArray(kSeparators);
    const int bytes = number<int>(0, 3) == 0 ? number<int>(0, 12) : 8;
    std::string out;
    for (int i = 0; i < bytes; ++i) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", data_.ConsumeIntegral<unsigned char>());
        if (i > 0) out += separator;
        out += pair;
    }
    return out;
}

std::string InputBuilder::altered_known_text() {
    const std::vector<std::string> &known = the_switch().key_texts;
    std::string out = known[number<std::size_t>(0, known.size() - 1)];
    switch (number<int>(0, 4)) {
        case 0:
            out.resize(number<std::size_t>(0, out.size()));
            break;
        case 1:
            if (!out.empty()) out.back() = static_cast<char>(data_.ConsumeIntegral<char>());
            break;
        case 2:
            out.insert(number<std::size_t>(0, out.size()), "^");
            break;
        case 3:
            out += text();
            break;
        default:
            out = recased(out, number<int>(1, 2));
            break;
    }
    return out;
}

const char *InputBuilder::text() {
    const std::vector<std::string> &known = the_switch().key_texts;
    switch (number<int>(0, 11)) {
        case 0:
            return keep(known[number<std::size_t>(0, known.size() - 1)]);
        case 1:
            return keep(altered_known_text());
        case 2:
            return keep(zoning_id_text());
        case 3:
            return keep(member_id_text());
        case 4:
            return keep(number_text());
        case 5:
            return keep(wwn_text());
        case 6:
            return keep(std::string(data_.PickValueInArray(kMemberIds)));
        case 7:
            return keep(std::string(data_.PickValueInArray(kOddTexts)));
        case 8: {
            const char fill = flag() ? 'a' : static_cast<char>(number<int>(1, 255));
            return keep(std::string(data_.PickValueInArray(kLongLengths), fill));
        }
        case 9:
            return keep(std::string(data_.PickValueInArray(kObjectNames)));
        case 10:
            return keep(std::string(data_.PickValueInArray(kClassNames)));
        default:
            return keep(data_.ConsumeRandomLengthString(512));
    }
}

CMPIValue InputBuilder::value(CMPIType *type, bool *null_value, int depth) {
    const CMPIBroker *broker = cmpihost::broker();
    CMPIValue v;
    std::memset(&v, 0, sizeof v);
    *null_value = false;
    switch (number<int>(0, 19)) {
        case 0:
        case 1:
        case 2:
            *type = CMPI_string;
            v.string = broker->eft->newString(broker, text(), nullptr);
            break;
        case 3:
            *type = CMPI_chars;
            v.chars = const_cast<char *>(text());
            break;
        case 4:
        case 5:
            *type = CMPI_ref;
            if (depth >= kMaxDepth) {
                *null_value = true;
            } else {
                v.ref = flag() ? known_path() : made_up_path(depth + 1);
            }
            break;
        case 6:
            *type = CMPI_uint16;
            v.uint16 =
                flag() ? data_.PickValueInArray(kMemberTypes) : data_.ConsumeIntegral<CMPIUint16>();
            break;
        case 7:
            *type = CMPI_uint32;
            v.uint32 = data_.ConsumeIntegral<CMPIUint32>();
            break;
        case 8:
            *type = CMPI_sint32;
            v.sint32 = data_.ConsumeIntegral<CMPISint32>();
            break;
        case 9:
            *type = CMPI_uint64;
            v.uint64 = data_.ConsumeIntegral<CMPIUint64>();
            break;
        case 10:
            *type = CMPI_sint64;
            v.sint64 = data_.ConsumeIntegral<CMPISint64>();
            break;
        case 11:
            *type = CMPI_uint8;
            v.uint8 = data_.ConsumeIntegral<CMPIUint8>();
            break;
        case 12:
            *type = CMPI_sint16;
            v.sint16 = data_.ConsumeIntegral<CMPISint16>();
            break;
        case 13:
            *type = CMPI_boolean;
            v.boolean = data_.ConsumeIntegral<CMPIBoolean>();
            break;
        case 14:
            *type = flag() ? CMPI_real64 : CMPI_real32;
            if (*type == CMPI_real64)
                v.real64 = data_.ConsumeFloatingPoint<double>();
            else
                v.real32 = data_.ConsumeFloatingPoint<float>();
            break;
        case 15:
            *type = CMPI_char16;
            v.char16 = data_.ConsumeIntegral<CMPIChar16>();
            break;
        case 16: {
            *type = CMPI_dateTime;
            v.dateTime = flag() ? broker->eft->newDateTime(broker, nullptr)
                                : broker->eft->newDateTimeFromChars(broker, text(), nullptr);
            if (v.dateTime == nullptr) *null_value = true;
            break;
        }
        case 17: {
            const bool strings = flag();
            const CMPIType element = strings ? CMPI_string : CMPI_uint16;
            *type = static_cast<CMPIType>(CMPI_ARRAY | element);
            const CMPICount size = number<CMPICount>(0, 3);
            v.array = broker->eft->newArray(broker, size, element, nullptr);
            for (CMPICount i = 0; v.array != nullptr && i < size; ++i) {
                CMPIValue item;
                std::memset(&item, 0, sizeof item);
                if (strings)
                    item.string = broker->eft->newString(broker, text(), nullptr);
                else
                    item.uint16 = data_.PickValueInArray(kMemberTypes);
                v.array->ft->setElementAt(v.array, i, &item, element);
            }
            if (v.array == nullptr) *null_value = true;
            break;
        }
        case 18:
            *type = CMPI_instance;
            v.inst = instance_for(known_path());
            if (v.inst == nullptr) *null_value = true;
            break;
        default: {
            static constexpr CMPIType kTypes[] = {CMPI_string,  CMPI_ref,     CMPI_uint16,
                                                  CMPI_boolean, CMPI_sint32,  CMPI_null,
                                                  CMPI_chars,   CMPI_dateTime};
            *type = data_.PickValueInArray(kTypes);
            *null_value = true;
            break;
        }
    }
    return v;
}

namespace {

// What addKey and addArg take for a value: the characters themselves for
// CMPI_chars, null for a null value, else the value.
const CMPIValue *stored_form(const CMPIValue &v, CMPIType type, bool null_value) {
    if (null_value) return nullptr;
    if (type == CMPI_chars) return reinterpret_cast<const CMPIValue *>(v.chars);
    return &v;
}

}  // namespace

void InputBuilder::add_key(CMPIObjectPath *path, const char *name, int depth) {
    CMPIType type = CMPI_null;
    bool null_value = false;
    const CMPIValue v = value(&type, &null_value, depth);
    path->ft->addKey(path, name, stored_form(v, type, null_value), type);
}

void InputBuilder::add_argument(CMPIArgs *args, const char *name, int depth) {
    CMPIType type = CMPI_null;
    bool null_value = false;
    const CMPIValue v = value(&type, &null_value, depth);
    args->ft->addArg(args, name, stored_form(v, type, null_value), type);
}

CMPIObjectPath *InputBuilder::known_path() {
    const std::vector<std::string> &paths = the_switch().paths;
    const std::string &chosen = !remembered_.empty() && flag()
                                    ? remembered_[number<std::size_t>(0, remembered_.size() - 1)]
                                    : paths[number<std::size_t>(0, paths.size() - 1)];
    std::string error;
    std::optional<CMPIObjectPath *> path = cmpihost::parsePath(chosen, &error);
    if (!path) give_up("a remembered path doesn't read back: " + chosen + ": " + error);
    return *path;
}

CMPIObjectPath *InputBuilder::copy_without_key(const CMPIObjectPath *source, unsigned skipped) {
    return copy_path(source, skipped);
}

CMPIObjectPath *InputBuilder::altered_path() {
    CMPIObjectPath *path = known_path();
    const int changes = number<int>(1, 3);
    for (int i = 0; i < changes; ++i) {
        const CMPICount keys = path->ft->getKeyCount(path, nullptr);
        switch (number<int>(0, 5)) {
            case 0:
                path->ft->setClassName(path, class_name());
                break;
            case 1:
                path->ft->setNameSpace(path,
                                       keep(std::string(data_.PickValueInArray(kNamespaces))));
                break;
            case 2:
                path = copy_without_key(path, keys == 0 ? 0 : number<unsigned>(0, keys - 1));
                break;
            case 3:
                add_key(path, key_name(), 1);
                break;
            case 4:
                if (keys > 0) {
                    CMPIString *name = nullptr;
                    path->ft->getKeyAt(path, number<unsigned>(0, keys - 1), &name, nullptr);
                    add_key(path, keep(cmpihost::text(name)), 1);
                }
                break;
            default:
                path->ft->setHostname(path, text());
                break;
        }
    }
    return path;
}

CMPIObjectPath *InputBuilder::made_up_path(int depth) {
    const CMPIBroker *broker = cmpihost::broker();
    const char *ns = keep(std::string(data_.PickValueInArray(kNamespaces)));
    CMPIObjectPath *path = broker->eft->newObjectPath(broker, ns, class_name(), nullptr);
    const int keys = number<int>(0, 4);
    for (int i = 0; i < keys; ++i) add_key(path, key_name(), depth);
    return path;
}

CMPIObjectPath *InputBuilder::object_path() {
    switch (number<int>(0, 4)) {
        case 0:
        case 1:
            return known_path();
        case 2:
        case 3:
            return altered_path();
        default:
            return made_up_path(0);
    }
}

CMPIObjectPath *InputBuilder::class_path() {
    if (number<int>(0, 4) == 0) return object_path();
    const CMPIBroker *broker = cmpihost::broker();
    const char *cls =
        flag() ? keep(std::string(data_.PickValueInArray(kServedClasses))) : class_name();
    const char *ns = number<int>(0, 3) == 0 ? keep(std::string(data_.PickValueInArray(kNamespaces)))
                                            : "root/cimv2";
    return broker->eft->newObjectPath(broker, ns, cls, nullptr);
}

CMPIObjectPath *InputBuilder::method_target() {
    static constexpr std::string_view kServices[] = {"VORNA_ZoneService", "CIM_ZoneService",
                                                     "VORNA_DeviceAliasService"};
    static constexpr std::string_view kVsans[] = {"1", "10", "20", "2"};
    switch (number<int>(0, 5)) {
        case 0:
            return object_path();
        case 1: {
            CMPIObjectPath *path = made_up_path(0);
            path->ft->setClassName(path, keep(std::string(data_.PickValueInArray(kServices))));
            return path;
        }
        default: {
            const CMPIBroker *broker = cmpihost::broker();
            CMPIObjectPath *path = broker->eft->newObjectPath(
                broker, "root/cimv2", keep(std::string(data_.PickValueInArray(kServices))),
                nullptr);
            const char *vsan =
                number<int>(0, 3) != 0 ? keep(std::string(data_.PickValueInArray(kVsans))) : text();
            path->ft->addKey(path, "Name", reinterpret_cast<const CMPIValue *>(vsan), CMPI_chars);
            if (number<int>(0, 5) == 0) add_key(path, key_name(), 1);
            return path;
        }
    }
}

const char *InputBuilder::method_name() {
    switch (number<int>(0, 9)) {
        case 0:
            return keep(recased(data_.PickValueInArray(kMethodNames), number<int>(1, 2)));
        case 1:
            return text();
        default:
            return keep(std::string(data_.PickValueInArray(kMethodNames)));
    }
}

void InputBuilder::add_shaped_argument(CMPIArgs *args, char kind, unsigned position) {
    const char *name = keep("Arg" + std::to_string(position));
    // Now and then the right position holds the wrong thing.
    if (number<int>(0, 7) == 0) {
        add_argument(args, name, 1);
        return;
    }
    const CMPIBroker *broker = cmpihost::broker();
    CMPIValue v;
    std::memset(&v, 0, sizeof v);
    switch (kind) {
        case 'T': {
            const char *chosen = number<int>(0, 2) != 0
                                     ? keep(std::string(data_.PickValueInArray(kObjectNames)))
                                     : text();
            v.string = broker->eft->newString(broker, chosen, nullptr);
            args->ft->addArg(args, name, &v, CMPI_string);
            return;
        }
        case 'M':
        case 'W': {
            const char *chosen = flag()   ? keep(std::string(data_.PickValueInArray(kMemberIds)))
                                 : flag() ? keep(wwn_text())
                                          : text();
            v.string = broker->eft->newString(broker, chosen, nullptr);
            args->ft->addArg(args, name, &v, CMPI_string);
            return;
        }
        case 'R':
            v.ref = number<int>(0, 3) != 0 ? known_path() : object_path();
            args->ft->addArg(args, name, &v, CMPI_ref);
            return;
        case 'U':
            v.uint16 = data_.PickValueInArray(kMemberTypes);
            args->ft->addArg(args, name, &v, CMPI_uint16);
            return;
        case 'B':
            v.boolean = flag() ? 1 : 0;
            args->ft->addArg(args, name, &v, CMPI_boolean);
            return;
        default:
            add_argument(args, name, 1);
            return;
    }
}

CMPIArgs *InputBuilder::arguments(const char *method) {
    const CMPIBroker *broker = cmpihost::broker();
    if (number<int>(0, 9) == 0) return nullptr;
    CMPIArgs *args = broker->eft->newArgs(broker, nullptr);
    const MethodShape *shape = nullptr;
    for (const MethodShape &candidate : kMethodShapes)
        if (method != nullptr && candidate.method == method) shape = &candidate;
    if (shape != nullptr && number<int>(0, 3) != 0) {
        std::string kinds(shape->kinds);
        if (number<int>(0, 7) == 0) kinds.pop_back();
        if (number<int>(0, 7) == 0) kinds += 'A';
        for (unsigned i = 0; i < kinds.size(); ++i) add_shaped_argument(args, kinds[i], i);
        return args;
    }
    const int count = number<int>(0, 5);
    for (int i = 0; i < count; ++i) {
        const char *name =
            flag() ? keep(std::string(data_.PickValueInArray(kArgumentNames))) : text();
        add_argument(args, name, 0);
    }
    return args;
}

const char *InputBuilder::class_filter() {
    switch (number<int>(0, 5)) {
        case 0:
        case 1:
            return nullptr;
        case 2:
            return text();
        default:
            return class_name();
    }
}

const char *InputBuilder::role_filter() {
    switch (number<int>(0, 6)) {
        case 0:
        case 1:
        case 2:
            return nullptr;
        case 3:
            return text();
        case 4:
            return keep(recased(data_.PickValueInArray(kRoles), number<int>(1, 2)));
        default:
            return keep(std::string(data_.PickValueInArray(kRoles)));
    }
}

const char **InputBuilder::property_list() {
    if (flag()) return nullptr;
    std::vector<const char *> names;
    const int count = number<int>(0, 6);
    for (int i = 0; i < count; ++i) {
        if (number<int>(0, 4) == 0)
            names.push_back(text());
        else
            names.push_back(
                keep(recased(data_.PickValueInArray(kPropertyNames), number<int>(0, 2))));
    }
    names.push_back(nullptr);
    lists_.push_back(std::move(names));
    return lists_.back().data();
}

CMPIInstance *InputBuilder::instance_for(const CMPIObjectPath *path) {
    const CMPIBroker *broker = cmpihost::broker();
    CMPIInstance *instance = broker->eft->newInstance(broker, path, nullptr);
    if (instance == nullptr) return nullptr;
    const int properties = number<int>(0, 3);
    for (int i = 0; i < properties; ++i) {
        CMPIType type = CMPI_null;
        bool null_value = false;
        const CMPIValue v = value(&type, &null_value, kMaxDepth);
        const CMPIValue *stored = null_value ? nullptr
                                  : type == CMPI_chars
                                      ? reinterpret_cast<const CMPIValue *>(v.chars)
                                      : &v;
        instance->ft->setProperty(instance, key_name(), stored, type);
    }
    return instance;
}

// Kept as text, since the request that made the path ends before the next
// operation; only paths whose text reads back are kept (the text form has
// no host, and keys of some types don't survive it).
void InputBuilder::remember(const CMPIObjectPath *path) {
    if (path == nullptr) return;
    std::string text = cmpihost::pathToString(copy_without_key(path, kNoKey));
    std::string error;
    if (!cmpihost::parsePath(text, &error)) return;
    if (remembered_.size() == kMaxRemembered) remembered_.erase(remembered_.begin());
    remembered_.push_back(std::move(text));
}

void InputBuilder::remember_outputs(const CMPIArgs *out) {
    if (out == nullptr) return;
    const CMPICount count = out->ft->getArgCount(out, nullptr);
    for (CMPICount i = 0; i < count; ++i) {
        const CMPIData data = out->ft->getArgAt(out, i, nullptr, nullptr);
        if (data.type == CMPI_ref && (data.state & CMPI_nullValue) == 0) remember(data.value.ref);
    }
}

void InputBuilder::remember_deliveries(const cmpihost::Request &request) {
    const std::vector<cmpihost::Delivery> &deliveries = request.deliveries();
    if (deliveries.empty()) return;
    const int picks = number<int>(0, 2);
    for (int i = 0; i < picks; ++i) {
        const cmpihost::Delivery &d = deliveries[number<std::size_t>(0, deliveries.size() - 1)];
        if (d.kind == cmpihost::Delivery::Kind::ObjectPath) remember(d.path);
        if (d.kind == cmpihost::Delivery::Kind::Instance && d.instance != nullptr)
            remember(d.instance->ft->getObjectPath(d.instance, nullptr));
    }
}

}  // namespace zonefuzz
