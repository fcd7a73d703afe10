// A process killed in the middle of its changes leaves the switch database
// intact and holding every change it acknowledged. A child process runs a
// long series of methods through the provider and writes one line to a
// pipe after each success; the parent kills it with SIGKILL after a number
// of lines, reads what else was acknowledged, and reopens the database:
// SQLite's integrity check passes, the fabric dumps, and every acknowledged
// change is in it. The parent itself never opens the database (it inspects
// it through the zonecim command), so no SQLite connection crosses a fork.
#include <signal.h>

#include <nlohmann/json.hpp>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <set>

#include "switch_fixture.h"

namespace zonetest {
namespace {

constexpr int kVsan = 10;
constexpr const char *kZoneSetId = "10^1^0";  // prod_a_cfg of the editable database
// The child would go on far longer than any round lets it.
constexpr int kSeriesLength = 100000;

// What the child acknowledged, one line each:
//   zone NAME               the zone was created
//   zone-in-set NAME        the zone was added to the zone set
//   member NAME WWN         the member was created in the zone
//   device-alias NAME WWN   the device alias was created
struct Acknowledged {
    std::vector<std::string> lines;
};

std::string lower(std::string text) {
    for (char &c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// ---- the child ---------------------------------------------------------

class ChangeSeries {
  public:
    ChangeSeries(const cmpihost::Provider &provider, int round, int ack_fd)
        : provider_(provider), round_(round), ack_fd_(ack_fd) {}

    // Runs until killed (or to the end of the series).
    void run() {
        for (int i = 0; i < kSeriesLength; ++i) {
            const std::string zone = "crash_z_" + std::to_string(round_) + "_" + std::to_string(i);
            const std::string wwn = member_wwn(i);
            std::string zone_id;
            if (create_zone(zone, &zone_id)) acknowledge("zone " + zone);
            if (zone_id.empty()) continue;
            if (add_to_zone_set(zone_id)) acknowledge("zone-in-set " + zone);
            if (create_member(zone_id, wwn)) acknowledge("member " + zone + " " + wwn);
            const std::string alias =
                "crash_da_" + std::to_string(round_) + "_" + std::to_string(i);
            if (create_device_alias(alias, colon_wwn(i)))
                acknowledge("device-alias " + alias + " " + colon_wwn(i));
        }
    }

  private:
    std::string member_wwn(int i) const {
        char text[17];
        std::snprintf(text, sizeof text, "3100%04x%08x", round_ & 0xffff, static_cast<unsigned>(i));
        return text;
    }
    std::string colon_wwn(int i) const {
        char text[24];
        std::snprintf(text, sizeof text, "32:00:%02x:%02x:%02x:%02x:%02x:%02x", round_ & 0xff,
                      (i >> 24) & 0xff, (i >> 16) & 0xff, (i >> 8) & 0xff, i & 0xff, 0x5a);
        return text;
    }

    void acknowledge(const std::string &what) {
        const std::string line = what + "\n";
        // One write per line (well below PIPE_BUF): a line is whole or absent.
        if (write(ack_fd_, line.data(), line.size()) != static_cast<ssize_t>(line.size())) _exit(3);
    }

    CMPIObjectPath *zone_service(cmpihost::Request &request) const {
        CMPIObjectPath *path = request.newObjectPath(kNamespace, "VORNA_ZoneService");
        cmpihost::addStringKey(path, "Name", std::to_string(kVsan));
        return path;
    }
    static CMPIObjectPath *zoning_path(cmpihost::Request &request, const char *cls,
                                       const std::string &id) {
        CMPIObjectPath *path = request.newObjectPath(kNamespace, cls);
        cmpihost::addStringKey(path, "InstanceID", id);
        return path;
    }

    // The method's return text is the last text handed to the result.
    static std::string return_text(const cmpihost::Request &request) {
        return cmpihost::returnedText(request);
    }

    bool invoke(cmpihost::Request &request, const char *method, CMPIArgs *in, CMPIArgs *out) {
        const cmpihost::Status status =
            provider_.invokeMethod(request, zone_service(request), method, in, out);
        return status.rc == CMPI_RC_OK && return_text(request) == "Success";
    }

    bool create_zone(const std::string &name, std::string *zone_id) {
        cmpihost::Request request;
        CMPIArgs *in = request.newArgs();
        CMPIArgs *out = request.newArgs();
        cmpihost::addStringArg(in, "ZoneName", name);
        CMPIValue number{};
        number.uint16 = 2;
        cmpihost::addValueArg(in, "ZoneType", number, CMPI_uint16);
        cmpihost::addValueArg(in, "ZoneSubType", number, CMPI_uint16);
        if (!invoke(request, "CreateZone", in, out)) return false;
        const CMPIData zone = out->ft->getArg(out, "Zone", nullptr);
        if (zone.type != CMPI_ref || zone.value.ref == nullptr) return true;
        const CMPIData id = zone.value.ref->ft->getKey(zone.value.ref, "InstanceID", nullptr);
        *zone_id = cmpihost::dataText(id);
        return true;
    }

    bool add_to_zone_set(const std::string &zone_id) {
        cmpihost::Request request;
        CMPIArgs *in = request.newArgs();
        cmpihost::addReferenceArg(in, "ZoneSet", zoning_path(request, "VORNA_ZoneSet", kZoneSetId));
        cmpihost::addReferenceArg(in, "Zone", zoning_path(request, "VORNA_Zone", zone_id));
        return invoke(request, "AddZone", in, request.newArgs());
    }

    bool create_member(const std::string &zone_id, const std::string &wwn) {
        cmpihost::Request request;
        CMPIArgs *in = request.newArgs();
        CMPIValue type{};
        type.uint16 = 2;  // port WWN
        cmpihost::addValueArg(in, "ConnectivityMemberType", type, CMPI_uint16);
        cmpihost::addStringArg(in, "ConnectivityMemberID", wwn);
        cmpihost::addReferenceArg(in, "SystemSpecificCollection",
                                  zoning_path(request, "VORNA_Zone", zone_id));
        return invoke(request, "CreateZoneMembershipSettingData", in, request.newArgs());
    }

    bool create_device_alias(const std::string &name, const std::string &pwwn) {
        cmpihost::Request request;
        CMPIArgs *in = request.newArgs();
        cmpihost::addStringArg(in, "DeviceAliasName", name);
        cmpihost::addStringArg(in, "PWWN", pwwn);
        return invoke(request, "CreateDeviceAlias", in, request.newArgs());
    }

    const cmpihost::Provider &provider_;
    int round_;
    int ack_fd_;
};

// ---- the parent --------------------------------------------------------

// What a fabric dump says of the editable database of the VSAN and of the
// device aliases, as the acknowledgement lines would say it.
std::set<std::string> changes_in_dump(const std::string &dump) {
    std::set<std::string> found;
    const nlohmann::json fabric = nlohmann::json::parse(dump);
    for (const nlohmann::json &vsan : fabric.at("vsans")) {
        if (vsan.at("number").get<int>() != kVsan) continue;
        const nlohmann::json &full = vsan.at("full");
        for (const nlohmann::json &zone : full.at("zones")) {
            const std::string name = zone.at("name").get<std::string>();
            found.insert("zone " + name);
            for (const nlohmann::json &member : zone.value("members", nlohmann::json::array()))
                found.insert("member " + name + " " + lower(member.at("id").get<std::string>()));
        }
        for (const nlohmann::json &zone_set : full.at("zone_sets")) {
            if (zone_set.at("number").get<int>() != 1) continue;
            for (const nlohmann::json &zone : zone_set.at("zones"))
                found.insert("zone-in-set " + zone.get<std::string>());
        }
    }
    for (const nlohmann::json &alias : fabric.at("device_aliases"))
        found.insert("device-alias " + alias.at("name").get<std::string>() + " " +
                     lower(alias.at("pwwn").get<std::string>()));
    return found;
}

class CrashSafetyTest : public SwitchTest {
  protected:
    // Forks the series of round `round`, kills it after `kill_after`
    // acknowledgements, and answers every line it acknowledged.
    Acknowledged run_and_kill(int round, std::size_t kill_after) {
        Acknowledged acknowledged;
        int fds[2];
        if (pipe(fds) != 0) {
            ADD_FAILURE() << "pipe: " << std::strerror(errno);
            return acknowledged;
        }
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child < 0) {
            ADD_FAILURE() << "fork: " << std::strerror(errno);
            return acknowledged;
        }
        if (child == 0) {
            close(fds[0]);
            const int null_fd = open("/dev/null", O_WRONLY);
            dup2(null_fd, STDOUT_FILENO);  // the provider's trace lines
            ChangeSeries(provider(), round, fds[1]).run();
            _exit(0);
        }
        close(fds[1]);
        FILE *acks = fdopen(fds[0], "r");
        char line[256];
        bool killed = false;
        while (std::fgets(line, sizeof line, acks) != nullptr) {
            std::string text(line);
            if (!text.empty() && text.back() == '\n') text.pop_back();
            acknowledged.lines.push_back(text);
            if (!killed && acknowledged.lines.size() >= kill_after) {
                kill(child, SIGKILL);
                killed = true;  // lines already in the pipe are still read
            }
        }
        std::fclose(acks);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)
            << "the series ended on its own before it was killed (status " << status << ")";
        return acknowledged;
    }

    static std::string database_path() { return std::getenv("ZONE_SIM_DB"); }

    // SQLite's own check of the file, when its shell is installed.
    static void expect_integrity_ok() {
        if (std::system("command -v sqlite3 >/dev/null 2>&1") != 0) return;
        const std::string command = "sqlite3 '" + database_path() + "' 'PRAGMA integrity_check;'";
        FILE *pipe = popen(command.c_str(), "r");
        ASSERT_NE(pipe, nullptr);
        char buffer[512];
        std::string out;
        while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) out += buffer;
        EXPECT_EQ(pclose(pipe), 0);
        EXPECT_EQ(out, "ok\n");
    }
};

TEST_F(CrashSafetyTest, AKilledWriterLosesNoAcknowledgedChange) {
    // Rounds on the same database, each killed at another point of its
    // series; every later round starts from what the kill left.
    const std::size_t kill_points[] = {7, 61, 150};
    std::set<std::string> all_acknowledged;
    for (int round = 0; round < static_cast<int>(std::size(kill_points)); ++round) {
        const Acknowledged acknowledged = run_and_kill(round, kill_points[round]);
        ASSERT_GE(acknowledged.lines.size(), kill_points[round]) << "round " << round;
        all_acknowledged.insert(acknowledged.lines.begin(), acknowledged.lines.end());

        expect_integrity_ok();
        std::string dump;
        ASSERT_EQ(run_zonecim({"fabric", "dump"}, &dump), 0) << "round " << round;
        const std::set<std::string> present = changes_in_dump(dump);
        for (const std::string &change : all_acknowledged)
            EXPECT_TRUE(present.count(change)) << "round " << round << ": lost " << change;
        if (HasFailure()) return;
    }
}

}  // namespace
}  // namespace zonetest
