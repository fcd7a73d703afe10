// leak_soak: a long mixed series of provider requests through the CMPI host
// against the simulated switch, with the process heap in use measured after
// a warm-up and at the end. A provider that keeps anything from one request
// to the next (an unreleased record, list or CMPI object) shows as growth.
//
//   leak_soak [--requests N] [--warmup N] [--bound BYTES]
//             [--provider PATH] [--zonecim PATH] [--fabric FILE]
//
// The switch database is a private file in a new temporary directory,
// loaded from the fabric file with the zonecim command and removed at the
// end. The requests run in cycles that leave the fabric as they found it:
// reads of every kind, then the creation of a zone set, zone, alias and
// member, their grouping, an activation and a deactivation, a device alias
// created and removed, and the deletion of everything the cycle made.
//
// Exit status: 0 when every request answered as expected and the heap grew
// by at most the bound after the warm-up; 1 when it grew more; 2 when a
// request answered otherwise or the set-up failed. The heap is read with
// mallinfo2(), which sees glibc's allocator only: under a sanitizer or
// valgrind the growth reads as nothing and the tool's own leak check is the
// verdict.
#include <fcntl.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/cmpihost.h"
#include "host/quiet_stdout.h"

namespace {

constexpr const char *kNamespace = "root/cimv2";
constexpr int kVsan = 20;
constexpr long kDefaultRequests = 100000;
constexpr long kDefaultBound = 64 * 1024;

struct Options {
    long requests = kDefaultRequests;
    long warmup = -1;  // -1: a tenth of the requests, at most 2,000
    long bound = kDefaultBound;
    std::string provider = ZONE_PROVIDER_PATH;
    std::string zonecim = ZONECIM_PATH;
    std::string fabric = ZONE_FABRIC_FILE;
};

bool parse_options(int argc, char **argv, Options *options) {
    for (int i = 1; i < argc; ++i) {
        const std::string flag = argv[i];
        if (i + 1 >= argc) return false;
        const char *value = argv[++i];
        if (flag == "--requests") {
            options->requests = std::atol(value);
        } else if (flag == "--warmup") {
            options->warmup = std::atol(value);
        } else if (flag == "--bound") {
            options->bound = std::atol(value);
        } else if (flag == "--provider") {
            options->provider = value;
        } else if (flag == "--zonecim") {
            options->zonecim = value;
        } else if (flag == "--fabric") {
            options->fabric = value;
        } else {
            return false;
        }
    }
    if (options->warmup < 0) options->warmup = std::min(options->requests / 10, 2000L);
    return options->requests > 0 && options->warmup < options->requests;
}

long heap_in_use() {
    return static_cast<long>(mallinfo2().uordblks);
}

using cmpihost::QuietStdout;

bool load_fabric(const Options &options) {
    const pid_t child = fork();
    if (child < 0) return false;
    if (child == 0) {
        const int null_fd = open("/dev/null", O_WRONLY);
        dup2(null_fd, STDOUT_FILENO);
        execl(options.zonecim.c_str(), options.zonecim.c_str(), "fabric", "load",
              options.fabric.c_str(), static_cast<char *>(nullptr));
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// ---- the requests ----------------------------------------------------------

class Soak {
  public:
    explicit Soak(const cmpihost::Provider &provider) : provider_(provider) {}

    // Runs requests until `count` more have been made; false when one
    // answered otherwise than expected (reported on stderr).
    bool run(long count) {
        const long end = made_ + count;
        while (made_ < end) {
            if (step_ == 0) cycle_ = build_cycle();
            if (!cycle_[step_]()) return false;
            ++made_;
            step_ = (step_ + 1) % cycle_.size();
        }
        return true;
    }

    long made() const { return made_; }

  private:
    using Step = std::function<bool()>;

    // One cycle of requests; the steps that create objects leave their ids
    // for the steps after them.
    std::vector<Step> build_cycle() {
        ++cycles_;
        return {
            [this] { return enum_names("VORNA_Zone"); },
            [this] { return enum_instances("VORNA_ZoneMemberSettingData"); },
            [this] { return enum_instances("VORNA_ElementSettingData"); },
            [this] { return enum_names("VORNA_ZoneMemberOfCollection"); },
            [this] { return enum_instances("VORNA_DeviceAlias"); },
            [this] { return enum_instances("VORNA_ZoneService"); },
            [this] { return get("VORNA_Zone", "10^2^0"); },
            [this] { return get_service(10); },
            [this] { return associate("VORNA_ZoneSet", "10^1^0"); },
            [this] { return associate("VORNA_Zone", "10^2^0"); },
            [this] { return associate("VORNA_ZoneMemberSettingData", "20^32768^fc2/5^0"); },
            [this] { return create("CreateZoneSet", "ZoneSet", &zone_set_id_); },
            [this] { return create("CreateZone", "Zone", &zone_id_); },
            [this] { return create("CreateZoneAlias", "ZoneAlias", &alias_id_); },
            [this] { return create_member(); },
            [this] {
                return add("AddZone", "VORNA_ZoneSet", zone_set_id_, "VORNA_Zone", zone_id_);
            },
            [this] {
                return add("AddZoneAlias", "VORNA_Zone", zone_id_, "VORNA_ZoneAlias", alias_id_);
            },
            [this] {
                return add("AddZoneMembershipSettingData", "VORNA_ZoneAlias", alias_id_,
                           "VORNA_ZoneMemberSettingData", member_id_);
            },
            [this] { return get("VORNA_ZoneAlias", alias_id_); },
            [this] { return associate("VORNA_ZoneAlias", alias_id_); },
            [this] { return activate(true); },
            [this] { return activate(false); },
            [this] { return device_alias_create(); },
            [this] { return device_alias_remove(); },
            [this] {
                return delete_pair("VORNA_ElementSettingData", "ManagedElement", "VORNA_ZoneAlias",
                                   alias_id_, "SettingData", "VORNA_ZoneMemberSettingData",
                                   member_id_);
            },
            [this] {
                return delete_pair("VORNA_ZoneMemberOfCollection", "Collection", "VORNA_Zone",
                                   zone_id_, "Member", "VORNA_ZoneAlias", alias_id_);
            },
            [this] {
                return delete_pair("VORNA_ZoneMemberOfCollection", "Collection", "VORNA_ZoneSet",
                                   zone_set_id_, "Member", "VORNA_Zone", zone_id_);
            },
            [this] { return delete_object("VORNA_ZoneMemberSettingData", member_id_); },
            [this] { return delete_object("VORNA_ZoneAlias", alias_id_); },
            [this] { return delete_object("VORNA_Zone", zone_id_); },
            [this] { return delete_object("VORNA_ZoneSet", zone_set_id_); },
        };
    }

    // Names that differ from cycle to cycle, so that a leftover of an
    // earlier cycle shows as a refusal instead of passing unnoticed.
    std::string suffix() const { return std::to_string(cycles_ % 1000); }
    std::string member_wwn() const {
        char text[17];
        std::snprintf(text, sizeof text, "31000000ee%06lx", cycles_ % 0x1000000);
        return text;
    }

    bool expect(bool ok, const std::string &what, const cmpihost::Status &status,
                const std::string &detail = "") {
        if (!ok)
            std::fprintf(stderr, "leak_soak: request %ld (%s) answered %s %s\n", made_ + 1,
                         what.c_str(), cmpihost::describe(status).c_str(), detail.c_str());
        return ok;
    }

    static CMPIObjectPath *zoning_path(cmpihost::Request &request, const std::string &cls,
                                       const std::string &id) {
        CMPIObjectPath *path = request.newObjectPath(kNamespace, cls);
        cmpihost::addStringKey(path, "InstanceID", id);
        return path;
    }
    static CMPIObjectPath *service_path(cmpihost::Request &request, int vsan) {
        CMPIObjectPath *path = request.newObjectPath(kNamespace, "VORNA_ZoneService");
        cmpihost::addStringKey(path, "Name", std::to_string(vsan));
        return path;
    }
    static std::string return_text(const cmpihost::Request &request) {
        return cmpihost::returnedText(request);
    }

    bool enum_names(const char *cls) {
        cmpihost::Request request;
        const cmpihost::Status status =
            provider_.enumInstanceNames(request, request.newObjectPath(kNamespace, cls));
        return expect(status.rc == CMPI_RC_OK && !request.deliveries().empty(),
                      std::string("enumInstanceNames ") + cls, status);
    }
    bool enum_instances(const char *cls) {
        cmpihost::Request request;
        const cmpihost::Status status =
            provider_.enumInstances(request, request.newObjectPath(kNamespace, cls), nullptr);
        return expect(status.rc == CMPI_RC_OK && !request.deliveries().empty(),
                      std::string("enumInstances ") + cls, status);
    }
    bool get(const char *cls, const std::string &id) {
        cmpihost::Request request;
        const cmpihost::Status status =
            provider_.getInstance(request, zoning_path(request, cls, id), nullptr);
        return expect(status.rc == CMPI_RC_OK && request.deliveries().size() == 1,
                      std::string("getInstance ") + cls + " " + id, status);
    }
    bool get_service(int vsan) {
        cmpihost::Request request;
        const cmpihost::Status status =
            provider_.getInstance(request, service_path(request, vsan), nullptr);
        return expect(status.rc == CMPI_RC_OK && request.deliveries().size() == 1,
                      "getInstance of a zone service", status);
    }
    // The four association operations from one source count as one
    // request each.
    bool associate(const char *cls, const std::string &id) {
        const std::string what = std::string("associations of ") + cls + " " + id;
        cmpihost::Status status;
        {
            cmpihost::Request request;
            status = provider_.associatorNames(request, zoning_path(request, cls, id), nullptr,
                                               nullptr, nullptr, nullptr);
            if (!expect(status.rc == CMPI_RC_OK, what, status)) return false;
        }
        {
            cmpihost::Request request;
            status = provider_.associators(request, zoning_path(request, cls, id), nullptr, nullptr,
                                           nullptr, nullptr, nullptr);
            if (!expect(status.rc == CMPI_RC_OK, what, status)) return false;
        }
        {
            cmpihost::Request request;
            status =
                provider_.referenceNames(request, zoning_path(request, cls, id), nullptr, nullptr);
            if (!expect(status.rc == CMPI_RC_OK, what, status)) return false;
        }
        cmpihost::Request request;
        status =
            provider_.references(request, zoning_path(request, cls, id), nullptr, nullptr, nullptr);
        made_ += 3;
        return expect(status.rc == CMPI_RC_OK, what, status);
    }

    bool invoke(cmpihost::Request &request, const char *method, CMPIArgs *in, CMPIArgs *out) {
        const cmpihost::Status status =
            provider_.invokeMethod(request, service_path(request, kVsan), method, in, out);
        const std::string text = return_text(request);
        return expect(status.rc == CMPI_RC_OK && text == "Success", method, status, text);
    }

    // CreateZoneSet / CreateZone / CreateZoneAlias; the new object's id
    // from the output reference.
    bool create(const char *method, const char *out_name, std::string *id) {
        cmpihost::Request request;
        CMPIArgs *in = request.newArgs();
        CMPIArgs *out = request.newArgs();
        const std::string name = std::string("soak_") + out_name + "_" + suffix();
        cmpihost::addStringArg(in, "Name", name);
        if (std::strcmp(method, "CreateZone") == 0) {
            CMPIValue number{};
            number.uint16 = 2;
            cmpihost::addValueArg(in, "ZoneType", number, CMPI_uint16);
            cmpihost::addValueArg(in, "ZoneSubType", number, CMPI_uint16);
        }
        if (!invoke(request, method, in, out)) return false;
        return take_reference(out, out_name, id, method);
    }

    bool take_reference(const CMPIArgs *out, const char *name, std::string *id,
                        const char *method) {
        const CMPIData ref = out->ft->getArg(out, name, nullptr);
        if (ref.type != CMPI_ref || ref.value.ref == nullptr) {
            std::fprintf(stderr, "leak_soak: %s gave no %s reference\n", method, name);
            return false;
        }
        *id = cmpihost::dataText(ref.value.ref->ft->getKey(ref.value.ref, "InstanceID", nullptr));
        return true;
    }

    bool create_member() {
        cmpihost::Request request;
        CMPIArgs *in = request.newArgs();
        CMPIArgs *out = request.newArgs();
        CMPIValue type{};
        type.uint16 = 2;  // port WWN
        cmpihost::addValueArg(in, "ConnectivityMemberType", type, CMPI_uint16);
        cmpihost::addStringArg(in, "ConnectivityMemberID", member_wwn());
        cmpihost::addReferenceArg(in, "SystemSpecificCollection",
                                  zoning_path(request, "VORNA_Zone", zone_id_));
        if (!invoke(request, "CreateZoneMembershipSettingData", in, out)) return false;
        return take_reference(out, "ZoneMembershipSettingData", &member_id_,
                              "CreateZoneMembershipSettingData");
    }

    bool add(const char *method, const char *first_class, const std::string &first_id,
             const char *second_class, const std::string &second_id) {
        cmpihost::Request request;
        CMPIArgs *in = request.newArgs();
        cmpihost::addReferenceArg(in, "First", zoning_path(request, first_class, first_id));
        cmpihost::addReferenceArg(in, "Second", zoning_path(request, second_class, second_id));
        return invoke(request, method, in, request.newArgs());
    }

    bool activate(bool on) {
        cmpihost::Request request;
        CMPIArgs *in = request.newArgs();
        cmpihost::addReferenceArg(in, "ZoneSet",
                                  zoning_path(request, "VORNA_ZoneSet", zone_set_id_));
        CMPIValue flag{};
        flag.boolean = on ? 1 : 0;
        cmpihost::addValueArg(in, "Activate", flag, CMPI_boolean);
        return invoke(request, "ActivateZoneSet", in, request.newArgs());
    }

    bool device_alias_create() {
        cmpihost::Request request;
        CMPIArgs *in = request.newArgs();
        char pwwn[24];
        std::snprintf(pwwn, sizeof pwwn, "32:00:00:00:ee:%02lx:%02lx:%02lx", (cycles_ >> 16) & 0xff,
                      (cycles_ >> 8) & 0xff, cycles_ & 0xff);
        cmpihost::addStringArg(in, "DeviceAliasName", "soak_da_" + suffix());
        cmpihost::addStringArg(in, "PWWN", pwwn);
        return invoke(request, "CreateDeviceAlias", in, request.newArgs());
    }
    bool device_alias_remove() {
        cmpihost::Request request;
        CMPIArgs *in = request.newArgs();
        cmpihost::addStringArg(in, "DeviceAliasName", "soak_da_" + suffix());
        return invoke(request, "RemoveDeviceAlias", in, request.newArgs());
    }

    bool delete_object(const char *cls, const std::string &id) {
        cmpihost::Request request;
        const cmpihost::Status status =
            provider_.deleteInstance(request, zoning_path(request, cls, id));
        return expect(status.rc == CMPI_RC_OK, std::string("deleteInstance ") + cls + " " + id,
                      status);
    }
    bool delete_pair(const char *cls, const char *first_role, const char *first_class,
                     const std::string &first_id, const char *second_role, const char *second_class,
                     const std::string &second_id) {
        cmpihost::Request request;
        CMPIObjectPath *path = request.newObjectPath(kNamespace, cls);
        cmpihost::addReferenceKey(path, first_role, zoning_path(request, first_class, first_id));
        cmpihost::addReferenceKey(path, second_role, zoning_path(request, second_class, second_id));
        const cmpihost::Status status = provider_.deleteInstance(request, path);
        return expect(status.rc == CMPI_RC_OK, std::string("deleteInstance ") + cls, status);
    }

    const cmpihost::Provider &provider_;
    std::vector<Step> cycle_;
    std::size_t step_ = 0;
    long made_ = 0;
    long cycles_ = 0;
    std::string zone_set_id_, zone_id_, alias_id_, member_id_;
};

// A private directory for the switch database, removed at the end.
class ScratchDirectory {
  public:
    ScratchDirectory() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "leak-soak-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) path_ = pattern;
    }
    ~ScratchDirectory() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    ScratchDirectory(const ScratchDirectory &) = delete;
    ScratchDirectory &operator=(const ScratchDirectory &) = delete;
    const std::string &path() const { return path_; }

  private:
    std::string path_;
};

int soak(const Options &options) {
    ScratchDirectory scratch;
    if (scratch.path().empty()) {
        std::fprintf(stderr, "leak_soak: cannot make a temporary directory\n");
        return 2;
    }
    setenv("ZONE_SIM_DB", (scratch.path() + "/switch.db").c_str(), 1);
    if (!load_fabric(options)) {
        std::fprintf(stderr, "leak_soak: %s fabric load %s failed\n", options.zonecim.c_str(),
                     options.fabric.c_str());
        return 2;
    }
    std::string error;
    std::unique_ptr<cmpihost::Provider> provider =
        cmpihost::Provider::load(options.provider, "ZoneProvider", &error);
    if (!provider) {
        std::fprintf(stderr, "leak_soak: %s\n", error.c_str());
        return 2;
    }

    Soak series(*provider);
    long before = 0;
    long after = 0;
    bool answered = false;
    {
        QuietStdout quiet;
        answered = series.run(options.warmup);
        before = heap_in_use();
        answered = answered && series.run(options.requests - options.warmup);
        after = heap_in_use();
    }
    if (!answered) return 2;

    const long growth = after - before;
    std::printf("leak_soak: %ld requests (%ld of warm-up)\n", series.made(), options.warmup);
    std::printf("leak_soak: heap in use after the warm-up %ld bytes, at the end %ld bytes\n",
                before, after);
    std::printf("leak_soak: growth %ld bytes (bound %ld)\n", growth, options.bound);
    return growth > options.bound ? 1 : 0;
}

}  // namespace

int main(int argc, char **argv) {
    Options options;
    if (!parse_options(argc, argv, &options)) {
        std::fprintf(stderr,
                     "usage: leak_soak [--requests N] [--warmup N] [--bound BYTES] "
                     "[--provider PATH] [--zonecim PATH] [--fabric FILE]\n");
        return 2;
    }
    return soak(options);
}
