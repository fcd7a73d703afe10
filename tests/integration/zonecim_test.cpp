// The zonecim command end to end: the binary, the provider it loads and the
// simulated switch behind it, on a switch database of the test's own.
//
// What a user relies on: wrong usage is refused with status 2 and a reason
// on standard error; standard output carries results alone, in wbemcli's
// forms (the provider's trace lines go nowhere, or to standard error with
// --trace); a failed operation says so as wbemcli does and exits 1; what
// zonecim prints can be fed back to it.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

extern char **environ;

namespace {

namespace fs = std::filesystem;

struct Outcome {
    int status = -1;  // exit status; -1 when the process didn't exit normally
    std::string out;
    std::string err;

    std::vector<std::string> lines() const {
        std::vector<std::string> found;
        std::istringstream in(out);
        for (std::string line; std::getline(in, line);) found.push_back(line);
        return found;
    }
};

std::string read_file(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

class ZonecimTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/zonecim_test.XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir_ = pattern;
    }
    void TearDown() override {
        std::error_code ignored;
        fs::remove_all(dir_, ignored);
    }

    // Runs zonecim with the arguments, ZONE_SIM_DB naming the test's database.
    Outcome zonecim(const std::vector<std::string> &args) {
        std::vector<std::string> env_text;
        for (char **e = environ; *e != nullptr; ++e) {
            if (std::string(*e).rfind("ZONE_SIM_DB=", 0) != 0) env_text.emplace_back(*e);
        }
        env_text.push_back("ZONE_SIM_DB=" + (dir_ / "switch.db").string());
        std::vector<char *> env;
        for (auto &entry : env_text) env.push_back(entry.data());
        env.push_back(nullptr);

        std::vector<std::string> argv_text{ZONECIM_PATH};
        argv_text.insert(argv_text.end(), args.begin(), args.end());
        std::vector<char *> argv;
        for (auto &arg : argv_text) argv.push_back(arg.data());
        argv.push_back(nullptr);

        const fs::path out = dir_ / "stdout";
        const fs::path err = dir_ / "stderr";
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
        pid_t pid = 0;
        Outcome outcome;
        const int spawned =
            posix_spawn(&pid, ZONECIM_PATH, &actions, nullptr, argv.data(), env.data());
        posix_spawn_file_actions_destroy(&actions);
        if (spawned != 0) {
            ADD_FAILURE() << "can't start " << ZONECIM_PATH;
            return outcome;
        }
        int wait_status = 0;
        waitpid(pid, &wait_status, 0);
        outcome.status = WIFEXITED(wait_status) ? WEXITSTATUS(wait_status) : -1;
        outcome.out = read_file(out);
        outcome.err = read_file(err);
        return outcome;
    }

    // Loads the example fabric; false (with the reason) when it can't be.
    bool load_example() {
        const Outcome loaded =
            zonecim({"fabric", "load", std::string(ZONE_SOURCE_DIR) + "/examples/fabric.json"});
        EXPECT_EQ(loaded.status, 0) << loaded.err;
        EXPECT_EQ(loaded.out, "");
        return loaded.status == 0;
    }

    // The VSANs of the example fabric that carry a zone service.
    static std::set<int> example_vsans() {
        const auto fabric = nlohmann::json::parse(
            read_file(fs::path(ZONE_SOURCE_DIR) / "examples" / "fabric.json"));
        std::set<int> vsans;
        for (const auto &vsan : fabric.at("vsans")) {
            const int number = vsan.at("number").get<int>();
            if (number != 4094) vsans.insert(number);
        }
        return vsans;
    }

    fs::path dir_;
};

const std::string kServiceClass = "root/cimv2:VORNA_ZoneService";

// The VSAN of a zone service path: the text of its key Name.
int vsan_of(const std::string &path) {
    const auto at = path.find(",Name=\"");
    if (at == std::string::npos) return -1;
    return std::atoi(path.c_str() + at + 7);
}

TEST_F(ZonecimTest, WrongUsageExitsWithTwoAndSaysWhy) {
    struct Case {
        std::vector<std::string> args;
        const char *reason;
    };
    const std::string service = kServiceClass + ".Name=\"1\"";
    const std::vector<Case> cases = {
        {{}, "subcommand is required"},
        {{"frobnicate", kServiceClass}, "unknown verb 'frobnicate'"},
        {{"ein"}, "path is required"},
        {{"cm", service}, "method is required"},
        {{"ei", "-nl", kServiceClass}, "-nl"},
        {{"gi", "root/cimv2:VORNA_Zone.InstanceID=\"1^2^0"}, "unterminated quoted string"},
        {{"ei", "root/cimv2:VORNA Zone"}, "expected '.'"},
        {{"cm", service, "CreateZoneSet.Bogus=\"zs1\""}, "has no parameter Bogus"},
        {{"cm", service, "CreateZoneSet.ZoneSet=VORNA_ZoneSet.InstanceID=\"1^1^0\""},
         "output parameter"},
        {{"cm", service, "CreateZone.ZoneName=z1,ZoneType=big"}, "is no uint16"},
        {{"cm", service, "ActivateZoneSet.Activate=maybe"}, "neither true nor false"},
        {{"rin", "-ac", "VORNA_ZoneMemberOfCollection", service}, "with -arc, not -ac"},
        {{"ri", "-arr", "Member", service}, "takes no -arr"},
        {{"gi", "-pl", "Name", service, "ElementName"}, "property list once"},
        {{"ei", "-pl", "Name,,ElementName", kServiceClass}, "bad property list"},
        {{"fabric"}, "subcommand is required"},
        {{"fabric", "load"}, "file is required"},
        {{"fabric", "generate", "--vsans", "5000"}, "out of range"},
    };
    for (const auto &c : cases) {
        std::string shown;
        for (const auto &arg : c.args) shown += arg + " ";
        SCOPED_TRACE(shown);
        const Outcome outcome = zonecim(c.args);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_NE(outcome.err.find(c.reason), std::string::npos) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }

    const Outcome help = zonecim({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char *verb : {"ein", "ei", "gi", "di", "ain", "ai", "rin", "ri", "cm", "fabric"})
        EXPECT_NE(help.out.find(std::string("  ") + verb + " "), std::string::npos) << verb;

    const Outcome unloadable =
        zonecim({"--provider", (dir_ / "none.so").string(), "ein", kServiceClass});
    EXPECT_EQ(unloadable.status, 1);
    EXPECT_NE(unloadable.err.find("can't load the provider"), std::string::npos) << unloadable.err;
    EXPECT_EQ(unloadable.out, "");
}

TEST_F(ZonecimTest, ZoneServicesOfTheExampleFabricOnePerVsan) {
    ASSERT_TRUE(load_example());
    const std::set<int> vsans = example_vsans();
    ASSERT_FALSE(vsans.empty());

    // ein: one path per VSAN, and nothing else on standard output.
    const Outcome names = zonecim({"ein", kServiceClass});
    ASSERT_EQ(names.status, 0) << names.err;
    const auto paths = names.lines();
    std::set<int> seen;
    for (const auto &path : paths) {
        EXPECT_EQ(path.rfind(kServiceClass + ".", 0), 0u) << path;
        seen.insert(vsan_of(path));
    }
    EXPECT_EQ(paths.size(), vsans.size());
    EXPECT_EQ(seen, vsans);
    EXPECT_EQ(names.err, "");

    // ei: the same paths in the same order, each with its properties.
    const Outcome instances = zonecim({"ei", kServiceClass});
    ASSERT_EQ(instances.status, 0) << instances.err;
    const auto lines = instances.lines();
    ASSERT_EQ(lines.size(), paths.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].substr(0, paths[i].size() + 1), paths[i] + " ") << lines[i];
        EXPECT_NE(lines[i].find("SessionState=4"), std::string::npos) << lines[i];
    }

    // A property list leaves the other properties out.
    const Outcome listed = zonecim({"ei", "-pl", "SessionState", kServiceClass});
    ASSERT_EQ(listed.status, 0) << listed.err;
    for (const auto &line : listed.lines()) {
        EXPECT_NE(line.find("SessionState=4"), std::string::npos) << line;
        EXPECT_EQ(line.find("ElementName="), std::string::npos) << line;
    }

    // gi of every printed path: the path it was asked for, as wbemcli shows it.
    for (const auto &path : paths) {
        const Outcome one = zonecim({"gi", path});
        ASSERT_EQ(one.status, 0) << path << "\n" << one.err;
        ASSERT_EQ(one.lines().size(), 1u) << one.out;
        EXPECT_EQ(one.lines()[0].rfind(path + " ", 0), 0u) << one.out;
    }
    // gi by the key the provider reads, written the short way.
    const int first = *vsans.begin();
    const Outcome short_form = zonecim({"gi", kServiceClass + ".Name=" + std::to_string(first)});
    ASSERT_EQ(short_form.status, 0) << short_form.err;
    EXPECT_EQ(short_form.lines().size(), 1u);

    // --trace sends the provider's trace lines to standard error; the
    // results stay as they were.
    const Outcome traced = zonecim({"--trace", "ein", kServiceClass});
    EXPECT_EQ(traced.status, 0);
    EXPECT_EQ(traced.out, names.out);
    EXPECT_NE(traced.err.find("In EnumInstanceNames ZoneProvider"), std::string::npos)
        << traced.err;
}

TEST_F(ZonecimTest, FailedOperationsAreReportedAsWbemcliReportsThem) {
    ASSERT_TRUE(load_example());
    const Outcome missing = zonecim({"gi", kServiceClass + ".Name=\"4000\""});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.out, "");
    EXPECT_EQ(missing.err,
              "*\n* zonecim: Cim: (1) CIM_ERR_FAILED: could not find or construct instance\n*\n");

    const Outcome zone = zonecim({"gi", "root/cimv2:VORNA_Zone.InstanceID=\"4000^1^0\""});
    EXPECT_EQ(zone.status, 1);
    EXPECT_NE(zone.err.find("Cim: (6) CIM_ERR_NOT_FOUND: Could not find or construct instance"),
              std::string::npos)
        << zone.err;

    // A method name is compared exactly by the provider.
    const std::string service =
        kServiceClass + ".Name=\"" + std::to_string(*example_vsans().begin()) + "\"";
    const Outcome unknown_method = zonecim({"cm", service, "createzoneset"});
    EXPECT_EQ(unknown_method.status, 1);
    EXPECT_NE(unknown_method.err.find("Cim: (17) CIM_ERR_METHOD_NOT_FOUND"), std::string::npos)
        << unknown_method.err;
}

TEST_F(ZonecimTest, MethodResultsFeedBackIntoLaterCommands) {
    ASSERT_TRUE(load_example());
    const int vsan = *example_vsans().begin();
    const std::string service = kServiceClass + ".Name=\"" + std::to_string(vsan) + "\"";

    // cm prints "<target> Method: <text>, Out (reference): <path>".
    auto created = [&](const std::string &call, const std::string &output) {
        const Outcome outcome = zonecim({"cm", service, call});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        const std::string head = service + " " + call.substr(0, call.find('.')) + ": Success, " +
                                 output + " (reference): ";
        EXPECT_EQ(outcome.out.rfind(head, 0), 0u) << outcome.out;
        std::string path = outcome.out.substr(std::min(head.size(), outcome.out.size()));
        if (!path.empty() && path.back() == '\n') path.pop_back();
        return path;
    };
    const std::string zone_set = created("CreateZoneSet.ZoneSetName=\"zonecim_zs\"", "ZoneSet");
    const std::string zone =
        created("CreateZone.ZoneName=\"zonecim_z\",ZoneType=2,ZoneSubType=2", "Zone");
    ASSERT_EQ(zone_set.rfind("root/cimv2:VORNA_ZoneSet.InstanceID=", 0), 0u) << zone_set;
    ASSERT_EQ(zone.rfind("root/cimv2:VORNA_Zone.InstanceID=", 0), 0u) << zone;

    // The printed references go back in as arguments, in either order.
    const Outcome added = zonecim({"cm", service, "AddZone.Zone=" + zone + ",ZoneSet=" + zone_set});
    EXPECT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(added.out, service + " AddZone: Success\n");

    const Outcome members =
        zonecim({"ain", "-ac", "VORNA_ZoneMemberOfCollection", "-arc", "VORNA_Zone", zone_set});
    EXPECT_EQ(members.status, 0) << members.err;
    EXPECT_EQ(members.lines(), std::vector<std::string>{zone});

    const Outcome zone_sets = zonecim({"ein", "root/cimv2:VORNA_ZoneSet"});
    ASSERT_EQ(zone_sets.status, 0) << zone_sets.err;
    const auto listed = zone_sets.lines();
    EXPECT_NE(std::find(listed.begin(), listed.end(), zone_set), listed.end()) << zone_sets.out;
}

}  // namespace
