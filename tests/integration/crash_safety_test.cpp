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

#include <cerrno>
#include <cstring>
#include <set>

#include "switch_fixture.h"

namespace zonetest {
namespace {

constexpr int kVsan = 10;
const std::string kZoneSet = zoning_path("VORNA_ZoneSet", "10^1^0");  // prod_a_cfg

std::string lower(std::string text) {
    for (char &c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// The child: runs the series of round `round` until killed, writing one
// line per acknowledged change to ack_fd:
//   zone NAME               the zone was created
//   zone-in-set NAME        the zone was added to the zone set
//   member NAME WWN         the member was created in the zone
//   device-alias NAME WWN   the device alias was created
void run_series(const cmpihost::Provider &provider, int round, int ack_fd) {
    // true when the method answered "Success".
    auto invoke = [&](const char *method, const std::vector<Arg> &args,
                      const char *output = nullptr, std::string *created = nullptr) {
        const auto [status, text] =
            call_zone_service(provider, kVsan, method, args, output, created);
        return status.rc == CMPI_RC_OK && text == "Success";
    };
    auto acknowledge = [ack_fd](const std::string &what) {
        const std::string line = what + "\n";
        // One write per line (well below PIPE_BUF): a line is whole or absent.
        if (write(ack_fd, line.data(), line.size()) != static_cast<ssize_t>(line.size())) _exit(3);
    };
    // The child would go on far longer than any round lets it.
    for (unsigned i = 0; i < 100000; ++i) {
        const std::string suffix = std::to_string(round) + "_" + std::to_string(i);
        const std::string zone = "crash_z_" + suffix;
        char wwn[17];
        std::snprintf(wwn, sizeof wwn, "3100%04x%08x", round & 0xffff, i);
        char pwwn[24];
        std::snprintf(pwwn, sizeof pwwn, "32:00:%02x:%02x:%02x:%02x:%02x:5a", round & 0xff,
                      (i >> 24) & 0xff, (i >> 16) & 0xff, (i >> 8) & 0xff, i & 0xff);
        std::string zone_id;
        if (invoke("CreateZone",
                   {{"ZoneName", CMPI_string, zone},
                    {"ZoneType", CMPI_uint16, "2"},
                    {"ZoneSubType", CMPI_uint16, "2"}},
                   "Zone", &zone_id))
            acknowledge("zone " + zone);
        if (zone_id.empty()) continue;
        const std::string zone_path = zoning_path("VORNA_Zone", zone_id);
        if (invoke("AddZone", {{"ZoneSet", CMPI_ref, kZoneSet}, {"Zone", CMPI_ref, zone_path}}))
            acknowledge("zone-in-set " + zone);
        if (invoke("CreateZoneMembershipSettingData",
                   {{"ConnectivityMemberType", CMPI_uint16, "2"},  // port WWN
                    {"ConnectivityMemberID", CMPI_string, wwn},
                    {"SystemSpecificCollection", CMPI_ref, zone_path}}))
            acknowledge("member " + zone + " " + wwn);
        if (invoke("CreateDeviceAlias", {{"DeviceAliasName", CMPI_string, "crash_da_" + suffix},
                                         {"PWWN", CMPI_string, pwwn}}))
            acknowledge("device-alias crash_da_" + suffix + " " + pwwn);
    }
}

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
        for (const nlohmann::json &zone_set : full.at("zone_sets"))
            if (zone_set.at("number").get<int>() == 1)
                for (const nlohmann::json &zone : zone_set.at("zones"))
                    found.insert("zone-in-set " + zone.get<std::string>());
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
    std::vector<std::string> run_and_kill(int round, std::size_t kill_after) {
        std::vector<std::string> acknowledged;
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
            dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);  // the provider's trace lines
            run_series(provider(), round, fds[1]);
            _exit(0);
        }
        close(fds[1]);
        FILE *acks = fdopen(fds[0], "r");
        char line[256];
        bool killed = false;
        while (std::fgets(line, sizeof line, acks) != nullptr) {
            acknowledged.emplace_back(line, std::strcspn(line, "\n"));
            if (!killed && acknowledged.size() >= kill_after) {
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
};

TEST_F(CrashSafetyTest, AKilledWriterLosesNoAcknowledgedChange) {
    // Rounds on the same database, each killed at another point of its
    // series; every later round starts from what the kill left.
    const std::size_t kill_points[] = {7, 61, 150};
    std::set<std::string> all_acknowledged;
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const std::vector<std::string> acknowledged = run_and_kill(round, kill_points[round]);
        ASSERT_GE(acknowledged.size(), kill_points[round]);
        all_acknowledged.insert(acknowledged.begin(), acknowledged.end());

        // SQLite's own check of the file, when its shell is installed.
        if (std::system("command -v sqlite3 >/dev/null 2>&1") == 0) {
            const Outcome check =
                run_program("sqlite3", {std::getenv("ZONE_SIM_DB"), "PRAGMA integrity_check;"});
            EXPECT_EQ(check.status, 0) << check.err;
            EXPECT_EQ(check.out, "ok\n");
        }
        const std::set<std::string> present = changes_in_dump(fabric_dump());
        for (const std::string &change : all_acknowledged)
            EXPECT_TRUE(present.count(change)) << "lost " << change;
        if (HasFailure()) return;
    }
    // Every kind of change was made and checked.
    for (const std::string kind : {"zone ", "zone-in-set ", "member ", "device-alias "})
        EXPECT_TRUE(std::any_of(all_acknowledged.begin(), all_acknowledged.end(),
                                [&](const std::string &line) { return line.starts_with(kind); }))
            << kind;
}

}  // namespace
}  // namespace zonetest
