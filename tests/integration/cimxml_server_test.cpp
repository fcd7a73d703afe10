// `zonecim serve` end to end: the server process, the provider it loads and
// the simulated switch behind it, on a switch database of the test's own
// (the example fabric), driven by wbemcli as a CIM client and by raw HTTP
// requests.
//
// What a client relies on: every served class enumerates and reads back as
// zonecim reads it in-process; associations agree with zonecim; the zoning
// workflow of `cm` changes the switch, as a second enumeration shows; CIM
// failures come back with their status; malformed, oversized and
// unauthenticated requests are refused with the right HTTP answer and the
// server keeps serving; SIGTERM stops it cleanly.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

extern char **environ;

namespace {

namespace fs = std::filesystem;

#ifdef ZONECIM_PATH
const char *const kZonecim = ZONECIM_PATH;
#else
const char *const kZonecim = nullptr;
#endif

std::string read_file(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::string> lines_of(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// The provider the server loads: the build's, unless the environment names
// another one.
std::string provider_path() {
    if (const char *path = std::getenv("ZONE_PROVIDER_PATH"); path != nullptr && *path != '\0')
        return path;
    return ZONE_PROVIDER_PATH;
}

bool wbemcli_installed() {
    const char *path = std::getenv("PATH");
    std::istringstream dirs(path != nullptr ? path : "/usr/bin");
    for (std::string dir; std::getline(dirs, dir, ':');)
        if (!dir.empty() && ::access((fs::path(dir) / "wbemcli").c_str(), X_OK) == 0) return true;
    return false;
}

// The part of a wbemcli line before the first space outside quotes: the
// object path.
std::string path_part(const std::string &line) {
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\\' && quoted) {
            ++i;
        } else if (line[i] == '"') {
            quoted = !quoted;
        } else if (line[i] == ' ' && !quoted) {
            return line.substr(0, i);
        }
    }
    return line;
}

// A path without its "host[:port]/" part: what precedes the namespace,
// which starts with "root" here.
std::string without_host(const std::string &path) {
    if (path.rfind("root/", 0) == 0) return path;
    const auto slash = path.find('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::vector<std::string> paths_without_host(const std::vector<std::string> &lines) {
    std::vector<std::string> paths;
    for (const auto &line : lines) paths.push_back(without_host(path_part(line)));
    return paths;
}

struct Outcome {
    int status = -1;  // exit status; -1 when the process didn't exit normally
    std::string out;
    std::string err;
    std::vector<std::string> lines() const { return lines_of(out); }
};

// The environment of the test with ZONE_SIM_DB naming db, and without proxy
// settings (wbemcli would send its requests to a proxy).
std::vector<std::string> child_environment(const fs::path &db) {
    std::vector<std::string> env;
    for (char **e = environ; *e != nullptr; ++e) {
        const std::string entry = *e;
        std::string name = entry.substr(0, entry.find('='));
        std::transform(name.begin(), name.end(), name.begin(), ::tolower);
        if (name == "zone_sim_db" || name.find("proxy") != std::string::npos) continue;
        env.push_back(entry);
    }
    env.push_back("ZONE_SIM_DB=" + db.string());
    return env;
}

std::vector<char *> pointers(std::vector<std::string> &texts) {
    std::vector<char *> out;
    for (auto &text : texts) out.push_back(text.data());
    out.push_back(nullptr);
    return out;
}

// ---- Raw HTTP ---------------------------------------------------------------------

struct HttpReply {
    int status = 0;
    std::string head;  // status line and headers
    std::string body;
};

// Sends text on a new connection to 127.0.0.1:port and reads until the
// server closes it. Sending stops quietly when the server has stopped
// reading.
HttpReply raw_request(int port, const std::string &text) {
    HttpReply reply;
    const int sock = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(sock, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
        ::close(sock);
        return reply;
    }
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t n = ::send(sock, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (n <= 0) break;
        sent += static_cast<std::size_t>(n);
    }
    std::string received;
    char buffer[65536];
    for (ssize_t n; (n = ::recv(sock, buffer, sizeof buffer, 0)) > 0;)
        received.append(buffer, static_cast<std::size_t>(n));
    ::close(sock);
    const auto end_of_head = received.find("\r\n\r\n");
    reply.head = received.substr(0, end_of_head);
    if (end_of_head != std::string::npos) reply.body = received.substr(end_of_head + 4);
    if (received.rfind("HTTP/1.1 ", 0) == 0) reply.status = std::atoi(received.c_str() + 9);
    return reply;
}

std::string post(const std::string &body, const std::string &extra_headers = "") {
    return "POST /cimom HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/xml; "
           "charset=\"utf-8\"\r\nConnection: close\r\nCIMOperation: MethodCall\r\n"
           "CIMMethod: EnumerateInstanceNames\r\nCIMObject: root%2Fcimv2\r\n" +
           extra_headers + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string enumerate_names_body(const std::string &class_name) {
    return R"(<?xml version="1.0" encoding="utf-8" ?><CIM CIMVERSION="2.0" DTDVERSION="2.0">)"
           R"(<MESSAGE ID="4711" PROTOCOLVERSION="1.0"><SIMPLEREQ><IMETHODCALL NAME="EnumerateInstanceNames">)"
           R"(<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="cimv2"/></LOCALNAMESPACEPATH>)"
           R"(<IPARAMVALUE NAME="ClassName"><CLASSNAME NAME=")" +
           class_name + R"("/></IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>)";
}

int free_port() {
    const int sock = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(sock, reinterpret_cast<sockaddr *>(&address), sizeof address);
    socklen_t length = sizeof address;
    ::getsockname(sock, reinterpret_cast<sockaddr *>(&address), &length);
    ::close(sock);
    return ntohs(address.sin_port);
}

// ---- The server process -----------------------------------------------------------

// One `zonecim serve` process. Its standard error (where it says where it
// listens, then logs every request) is read by a thread of its own until
// the process closes it.
class ServerProcess {
  public:
    ServerProcess(const fs::path &db, const std::vector<std::string> &extra_args) {
        for (int attempt = 0; attempt < 3 && port_ == 0; ++attempt) start(db, extra_args);
    }
    ~ServerProcess() { stop(); }
    ServerProcess(const ServerProcess &) = delete;
    ServerProcess &operator=(const ServerProcess &) = delete;

    int port() const { return port_; }

    // SIGTERM; the exit status (-1 when it didn't exit normally).
    int stop() {
        if (pid_ <= 0) return exit_status_;
        ::kill(pid_, SIGTERM);
        int status = 0;
        ::waitpid(pid_, &status, 0);
        pid_ = -1;
        if (reader_.joinable()) reader_.join();
        exit_status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return exit_status_;
    }

    std::string log() {
        std::lock_guard<std::mutex> lock(mutex_);
        return log_;
    }

  private:
    void start(const fs::path &db, const std::vector<std::string> &extra_args) {
        int pipe_ends[2];
        if (::pipe2(pipe_ends, O_CLOEXEC) != 0) return;
        const int port = free_port();
        std::vector<std::string> args{kZonecim, "--provider", provider_path(),
                                      "serve",  "--listen",   "127.0.0.1:" + std::to_string(port)};
        args.insert(args.end(), extra_args.begin(), extra_args.end());
        std::vector<std::string> env = child_environment(db);
        auto argv = pointers(args);
        auto envp = pointers(env);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, pipe_ends[1], STDERR_FILENO);
        const int spawned =
            posix_spawn(&pid_, kZonecim, &actions, nullptr, argv.data(), envp.data());
        posix_spawn_file_actions_destroy(&actions);
        ::close(pipe_ends[1]);
        if (spawned != 0) {
            ::close(pipe_ends[0]);
            pid_ = -1;
            return;
        }
        {
            std::lock_guard<std::mutex> lock(mutex_);
            log_.clear();
            closed_ = false;
        }
        reader_ = std::thread([this, fd = pipe_ends[0]] { read_log(fd); });
        // Ready once it says where it listens; gone when it closes stderr.
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(
            lock, [this] { return closed_ || log_.find("listening on ") != std::string::npos; });
        if (log_.find("listening on ") != std::string::npos) {
            port_ = port;
            return;
        }
        lock.unlock();
        int status = 0;
        ::waitpid(pid_, &status, 0);
        pid_ = -1;
        reader_.join();
    }

    void read_log(int fd) {
        char buffer[4096];
        for (ssize_t n; (n = ::read(fd, buffer, sizeof buffer)) > 0;) {
            std::lock_guard<std::mutex> lock(mutex_);
            log_.append(buffer, static_cast<std::size_t>(n));
            changed_.notify_all();
        }
        ::close(fd);
        std::lock_guard<std::mutex> lock(mutex_);
        closed_ = true;
        changed_.notify_all();
    }

    pid_t pid_ = -1;
    int port_ = 0;
    int exit_status_ = -1;
    std::thread reader_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::string log_;
    bool closed_ = false;
};

class CimXmlServerTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (kZonecim == nullptr) GTEST_SKIP() << "the zonecim command is not built";
        if (!wbemcli_installed()) GTEST_SKIP() << "wbemcli is not installed";
        char pattern[] = "/tmp/cimxml_server_test.XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        dir_ = pattern;
        const Outcome loaded =
            zonecim({"fabric", "load", std::string(ZONE_SOURCE_DIR) + "/examples/fabric.json"});
        ASSERT_EQ(loaded.status, 0) << loaded.err;
    }
    void TearDown() override {
        if (server_) {
            EXPECT_EQ(server_->stop(), 0) << server_->log();
            EXPECT_NE(server_->log().find("stopped"), std::string::npos) << server_->log();
        }
        server_.reset();
        std::error_code ignored;
        if (!dir_.empty()) fs::remove_all(dir_, ignored);
    }

    fs::path db() const { return dir_ / "switch.db"; }

    void start_server(const std::vector<std::string> &extra_args = {}) {
        server_ = std::make_unique<ServerProcess>(db(), extra_args);
        ASSERT_NE(server_->port(), 0) << "the server did not start:\n" << server_->log();
        url_ = "http://127.0.0.1:" + std::to_string(server_->port()) + "/root/cimv2:";
    }

    Outcome run(const std::string &program, const std::vector<std::string> &args) {
        std::vector<std::string> argv_text{program};
        argv_text.insert(argv_text.end(), args.begin(), args.end());
        std::vector<std::string> env = child_environment(db());
        auto argv = pointers(argv_text);
        auto envp = pointers(env);
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
            posix_spawnp(&pid, program.c_str(), &actions, nullptr, argv.data(), envp.data());
        posix_spawn_file_actions_destroy(&actions);
        if (spawned != 0) {
            ADD_FAILURE() << "can't start " << program;
            return outcome;
        }
        int status = 0;
        ::waitpid(pid, &status, 0);
        outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        outcome.out = read_file(out);
        outcome.err = read_file(err);
        return outcome;
    }

    Outcome zonecim(const std::vector<std::string> &args) {
        std::vector<std::string> all{"--provider", provider_path()};
        all.insert(all.end(), args.begin(), args.end());
        return run(kZonecim, all);
    }

    // wbemcli VERB [options] URL-of(path) [args]: the path is appended to
    // the server's namespace URL.
    Outcome wbemcli(const std::string &verb, const std::string &path,
                    const std::vector<std::string> &options = {},
                    const std::vector<std::string> &trailing = {}) {
        std::vector<std::string> args{verb};
        args.insert(args.end(), options.begin(), options.end());
        args.push_back(url_ + path);
        args.insert(args.end(), trailing.begin(), trailing.end());
        return run("wbemcli", args);
    }

    // Lines of a wbemcli verb that must succeed.
    std::vector<std::string> ok_lines(const std::string &verb, const std::string &path,
                                      const std::vector<std::string> &options = {},
                                      const std::vector<std::string> &trailing = {}) {
        const Outcome outcome = wbemcli(verb, path, options, trailing);
        EXPECT_EQ(outcome.status, 0) << verb << " " << path << "\n" << outcome.err;
        return outcome.lines();
    }

    // Lines of the same operation run in-process by zonecim.
    std::vector<std::string> in_process(const std::vector<std::string> &args) {
        const Outcome outcome = zonecim(args);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return outcome.lines();
    }

    // Served classes of the schema: those the provider enumerates.
    static std::vector<std::string> served_classes() {
        const auto schema = nlohmann::json::parse(
            read_file(fs::path(ZONE_SOURCE_DIR) / "schema" / "zoning_classes.json"));
        std::vector<std::string> served;
        for (const auto &cls : schema.at("classes")) {
            if (!cls.contains("provider")) continue;
            for (const auto &kind : cls.at("provider"))
                if (kind == "instance") served.push_back(cls.at("name").get<std::string>());
        }
        return served;
    }

    fs::path dir_;
    std::unique_ptr<ServerProcess> server_;
    std::string url_;
};

const std::string kService =
    "VORNA_ZoneService.SystemCreationClassName=\"VORNA_Vsan\",SystemName=\"10\","
    "CreationClassName=\"VORNA_ZoneService\",Name=\"10\"";

TEST_F(CimXmlServerTest, EveryServedClassReadsAsZonecimReadsItInProcess) {
    start_server();
    const auto classes = served_classes();
    ASSERT_FALSE(classes.empty());
    for (const auto &cls : classes) {
        SCOPED_TRACE(cls);
        const auto names = ok_lines("ein", cls);
        const auto expected = in_process({"ein", "root/cimv2:" + cls});
        EXPECT_EQ(paths_without_host(names), expected);
        // ei: the same objects in the same order, each with its properties.
        const auto instances = ok_lines("ei", cls);
        ASSERT_EQ(instances.size(), names.size());
        for (std::size_t i = 0; i < names.size(); ++i) {
            EXPECT_EQ(path_part(instances[i]), names[i]);
            EXPECT_GT(instances[i].size(), names[i].size() + 1) << instances[i];
        }
        // gi of the first name reads that object back.
        if (!names.empty()) {
            const auto one =
                ok_lines("gi", without_host(names[0]).substr(std::string("root/cimv2:").size()));
            ASSERT_EQ(one.size(), 1u);
            EXPECT_EQ(one[0].substr(one[0].find(' ')), instances[0].substr(instances[0].find(' ')));
        }
    }

    // A CIM_ superclass is served by its VORNA_ subclasses.
    EXPECT_EQ(paths_without_host(ok_lines("ein", "CIM_ZoneSet")),
              in_process({"ein", "root/cimv2:VORNA_ZoneSet"}));
    EXPECT_EQ(ok_lines("ein", "CIM_ZoneService").size(),
              ok_lines("ein", "VORNA_ZoneService").size());
    const auto zone = ok_lines("ein", "VORNA_Zone").at(0);
    const std::string zone_key = zone.substr(zone.find(".InstanceID="));
    const auto through_superclass = ok_lines("gi", "CIM_Zone" + zone_key);
    ASSERT_EQ(through_superclass.size(), 1u);
    EXPECT_NE(through_superclass[0].find("ElementName="), std::string::npos);

    // A property list leaves the other properties out.
    for (const auto &line : ok_lines("ei", "VORNA_ZoneService", {}, {"SessionState"})) {
        EXPECT_NE(line.find("SessionState=4"), std::string::npos) << line;
        EXPECT_EQ(line.find("ElementName="), std::string::npos) << line;
    }

    // Class definitions: every class is listed, and classes carry their
    // methods for `cm`.
    EXPECT_GE(ok_lines("ecn", "", {}, {}).size(), 1u);
    const auto service_class = ok_lines("gcd", "VORNA_ZoneService");
    std::string definition;
    for (const auto &line : service_class) definition += line;
    EXPECT_NE(definition.find("<METHOD NAME=\"ActivateZoneSet\""), std::string::npos) << definition;
    EXPECT_NE(definition.find("<PARAMETER.REFERENCE NAME=\"ZoneSet\""), std::string::npos);
}

// Answers of a few hundred objects: many times what the server encodes in
// one go and far beyond one block of its markup. Every object must arrive,
// once, in order, whole.
TEST_F(CimXmlServerTest, LongAnswersCarryEveryObjectInOrder) {
    const Outcome generated =
        zonecim({"fabric", "generate", "--vsans", "2", "--zonesets", "2", "--zones", "150",
                 "--aliases", "20", "--members", "2", "--device-aliases", "150"});
    ASSERT_EQ(generated.status, 0) << generated.err;
    start_server();
    for (const std::string cls : {"VORNA_ZoneMemberSettingData", "CIM_ManagedElement"}) {
        SCOPED_TRACE(cls);
        const auto names = ok_lines("ein", cls);
        if (cls.rfind("VORNA_", 0) == 0) {
            EXPECT_EQ(paths_without_host(names), in_process({"ein", "root/cimv2:" + cls}));
        }
        ASSERT_GT(names.size(), 300u);
        const auto instances = ok_lines("ei", cls);
        ASSERT_EQ(instances.size(), names.size());
        for (std::size_t i = 0; i < names.size(); ++i) {
            EXPECT_EQ(path_part(instances[i]), names[i]);
            EXPECT_NE(instances[i].find("ElementName="), std::string::npos) << instances[i];
        }
    }
}

TEST_F(CimXmlServerTest, AssociationsAgreeWithZonecimAndWithEachOther) {
    start_server();
    const std::string zone_set = "VORNA_ZoneSet.InstanceID=\"10^1^0\"";
    const std::string zone = "VORNA_Zone.InstanceID=\"10^2^0\"";
    const std::string service = kService;
    for (const auto &source : {zone_set, zone, service}) {
        SCOPED_TRACE(source);
        const auto associator_names = ok_lines("ain", source);
        EXPECT_FALSE(associator_names.empty());
        EXPECT_EQ(paths_without_host(associator_names),
                  in_process({"ain", "root/cimv2:" + source}));
        const auto associators = ok_lines("ai", source);
        EXPECT_EQ(paths_without_host(associators), paths_without_host(associator_names));

        const auto reference_names = ok_lines("rin", source);
        EXPECT_FALSE(reference_names.empty());
        EXPECT_EQ(paths_without_host(reference_names), in_process({"rin", "root/cimv2:" + source}));
        EXPECT_EQ(paths_without_host(ok_lines("ri", source)), paths_without_host(reference_names));
    }

    // Filters reach the provider: only the zones of the zone set.
    const auto zones = ok_lines("ain", zone_set, {"-ac", "VORNA_ZoneMemberOfCollection"});
    EXPECT_EQ(paths_without_host(zones),
              in_process({"ain", "-ac", "VORNA_ZoneMemberOfCollection", "root/cimv2:" + zone_set}));
    for (const auto &line : zones) EXPECT_NE(line.find(":VORNA_Zone."), std::string::npos) << line;
    // A superclass of the association class selects its served subclasses.
    EXPECT_EQ(paths_without_host(ok_lines("ain", zone_set, {"-ac", "CIM_MemberOfCollection"})),
              paths_without_host(zones));
}

TEST_F(CimXmlServerTest, TheZoningWorkflowThroughCmChangesTheSwitch) {
    start_server();
    // "<target> Method: Success, Out (reference): root/cimv2:Class.Key=..."
    // -> the reference as a `cm` argument takes it: Class.Key=...
    auto created = [&](const std::string &call, const std::string &output) {
        const auto lines = ok_lines("cm", kService, {}, {call});
        EXPECT_EQ(lines.size(), 1u);
        const std::string line = lines.empty() ? "" : lines[0];
        const std::string head =
            call.substr(0, call.find('.')) + ": Success, " + output + " (reference): root/cimv2:";
        const auto at = line.find(head);
        EXPECT_NE(at, std::string::npos) << line;
        return at == std::string::npos ? std::string() : line.substr(at + head.size());
    };
    const std::string zone_set = created("CreateZoneSet.ZoneSetName=\"srv_zs\"", "ZoneSet");
    const std::string zone =
        created("CreateZone.ZoneName=\"srv_z\",ZoneType=2,ZoneSubType=2", "Zone");
    ASSERT_EQ(zone_set.rfind("VORNA_ZoneSet.InstanceID=\"10^", 0), 0u) << zone_set;
    ASSERT_EQ(zone.rfind("VORNA_Zone.InstanceID=\"10^", 0), 0u) << zone;
    const std::string member = created(
        "CreateZoneMembershipSettingData.ConnectivityMemberType=2,"
        "ConnectivityMemberID=\"21000024ff4ca9c9\",SystemSpecificCollection=" +
            zone,
        "ZoneMembershipSettingData");
    ASSERT_EQ(member.rfind("VORNA_ZoneMemberSettingData.InstanceID=", 0), 0u) << member;

    // Arguments in another order than declared still reach the provider
    // in the declared one.
    const auto added =
        ok_lines("cm", kService, {}, {"AddZone.Zone=" + zone + ",ZoneSet=" + zone_set});
    ASSERT_EQ(added.size(), 1u);
    EXPECT_NE(added[0].find("AddZone: Success"), std::string::npos) << added[0];
    const auto members = ok_lines("ain", zone_set, {"-ac", "VORNA_ZoneMemberOfCollection"});
    EXPECT_EQ(paths_without_host(members), std::vector<std::string>{"root/cimv2:" + zone});
    const auto settings = ok_lines("ain", zone, {"-ac", "VORNA_ElementSettingData"});
    EXPECT_EQ(paths_without_host(settings), std::vector<std::string>{"root/cimv2:" + member});

    const auto activated =
        ok_lines("cm", kService, {}, {"ActivateZoneSet.ZoneSet=" + zone_set + ",Activate=true"});
    ASSERT_EQ(activated.size(), 1u);
    EXPECT_NE(activated[0].find("ActivateZoneSet: Success"), std::string::npos) << activated[0];
    // The active copy of the zone set now exists (flag 1 instead of 0).
    std::string active = "root/cimv2:" + zone_set;
    active.replace(active.size() - 3, 3, "^1\"");
    const auto zone_sets = paths_without_host(ok_lines("ein", "VORNA_ZoneSet"));
    EXPECT_NE(std::find(zone_sets.begin(), zone_sets.end(), active), zone_sets.end()) << active;

    // Deleting the zone from the editable database.
    EXPECT_EQ(wbemcli("di", zone).status, 0);
    const Outcome gone = wbemcli("gi", zone);
    EXPECT_EQ(gone.status, 16);
    EXPECT_NE(gone.err.find("Cim: (6)"), std::string::npos) << gone.err;
    // Active objects are not the client's to change.
    const Outcome refused = wbemcli("di", active.substr(std::string("root/cimv2:").size()));
    EXPECT_EQ(refused.status, 16);
    EXPECT_NE(refused.err.find("Cim: ("), std::string::npos) << refused.err;
}

TEST_F(CimXmlServerTest, DeviceAliasesComeAndGoThroughTheirMethods) {
    start_server();
    auto aliases = [&] {
        std::string all;
        for (const auto &line : ok_lines("ei", "VORNA_DeviceAlias")) all += line + "\n";
        return all;
    };
    ASSERT_EQ(aliases().find("srv_alias"), std::string::npos);
    const std::string alias_service =
        "VORNA_DeviceAliasService.SystemCreationClassName=\"VORNA_Vsan\",SystemName=\"1\","
        "CreationClassName=\"VORNA_DeviceAliasService\",Name=\"1\"";
    const auto created = ok_lines("cm", alias_service, {},
                                  {"CreateDeviceAlias.PWWN=\"21:00:00:24:ff:4c:a9:c9\","
                                   "DeviceAliasName=\"srv_alias\""});
    ASSERT_EQ(created.size(), 1u);
    EXPECT_NE(created[0].find("CreateDeviceAlias: Success"), std::string::npos) << created[0];
    const std::string after_create = aliases();
    EXPECT_NE(after_create.find("ElementName=\"srv_alias\""), std::string::npos) << after_create;
    EXPECT_NE(after_create.find("21:00:00:24:ff:4c:a9:c9"), std::string::npos) << after_create;

    const auto removed =
        ok_lines("cm", kService, {}, {"RemoveDeviceAlias.DeviceAliasName=\"srv_alias\""});
    ASSERT_EQ(removed.size(), 1u);
    EXPECT_NE(removed[0].find("RemoveDeviceAlias: Success"), std::string::npos) << removed[0];
    EXPECT_EQ(aliases().find("srv_alias"), std::string::npos);
}

TEST_F(CimXmlServerTest, CimFailuresComeBackWithTheirStatus) {
    start_server();
    struct Case {
        std::string verb;
        std::string path;
        const char *shown;
    };
    const std::vector<Case> cases = {
        {"gi", "VORNA_Zone.InstanceID=\"4000^1^0\"", "Cim: (6) CIM_ERR_NOT_FOUND: "},
        {"ein", "VORNA_NoSuchClass", "Cim: (5) CIM_ERR_INVALID_CLASS: "},
        {"gc", "VORNA_NoSuchClass", "Cim: (6) CIM_ERR_NOT_FOUND: "},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.verb + " " + c.path);
        const Outcome outcome = wbemcli(c.verb, c.path);
        EXPECT_EQ(outcome.status, 16);
        EXPECT_NE(outcome.err.find(c.shown), std::string::npos) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
    const Outcome other_namespace = run(
        "wbemcli",
        {"ein", "http://127.0.0.1:" + std::to_string(server_->port()) + "/root/other:VORNA_Zone"});
    EXPECT_EQ(other_namespace.status, 16);
    EXPECT_NE(other_namespace.err.find("Cim: (3)"), std::string::npos) << other_namespace.err;
    // The provider compares method names exactly.
    const Outcome method = wbemcli("cm", kService, {}, {"createzoneset"});
    EXPECT_NE(method.err.find("Cim: (17)"), std::string::npos) << method.err;
}

TEST_F(CimXmlServerTest, BadRequestsAreRefusedAndTheServerKeepsServing) {
    start_server();
    const int port = server_->port();
    const HttpReply good = raw_request(port, post(enumerate_names_body("VORNA_ZoneService")));
    ASSERT_EQ(good.status, 200) << good.head;
    EXPECT_NE(good.head.find("CIMOperation: MethodResponse"), std::string::npos) << good.head;
    EXPECT_NE(good.body.find("<INSTANCENAME CLASSNAME=\"VORNA_ZoneService\">"), std::string::npos);

    struct Case {
        std::string request;
        int status;
        const char *header;
    };
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<VALUE.REFERENCE>";
    const std::vector<Case> cases = {
        {post("<CIM><MESSAGE ID=\"1\""), 400, "CIMError: request-not-well-formed"},
        {post("\x01\x02 not xml at all"), 400, "CIMError: request-not-well-formed"},
        {post("<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
              "PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL NAME=\"GetInstance\">"
              "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE "
              "NAME=\"cimv2\"/></LOCALNAMESPACEPATH>"
              "<IPARAMVALUE NAME=\"InstanceName\">" +
              deep),
         400, "CIMError: request-not-well-formed"},
        {post(
             "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
             "<MULTIREQ></MULTIREQ></MESSAGE></CIM>"),
         501, "CIMError: multiple-requests-unsupported"},
        // Over the body limit: refused on the announced length.
        {"POST /cimom HTTP/1.1\r\nHost: x\r\nCIMOperation: MethodCall\r\nConnection: close\r\n"
         "Content-Length: 5000000\r\n\r\n",
         413, ""},
        {"GET /cimom HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n", 501, ""},
        {"POST /cimom HTTP/1.1\r\nHost: x\r\nConnection: close\r\nContent-Length: 2\r\n\r\nab", 400,
         "CIMError: request-not-valid"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.request.substr(0, 120));
        const HttpReply reply = raw_request(port, c.request);
        EXPECT_EQ(reply.status, c.status) << reply.head;
        EXPECT_NE(reply.head.find(c.header), std::string::npos) << reply.head;
        // And the next request is served as before.
        const HttpReply next = raw_request(port, post(enumerate_names_body("VORNA_ZoneService")));
        EXPECT_EQ(next.status, 200);
        EXPECT_EQ(next.body, good.body);
    }

    // An unknown operation is a CIM error, not a protocol one.
    std::string unknown = enumerate_names_body("VORNA_ZoneService");
    unknown.replace(unknown.find("\"EnumerateInstanceNames\""), 24, "\"Frobnicate\"");
    const HttpReply not_supported = raw_request(port, post(unknown));
    EXPECT_EQ(not_supported.status, 200);
    EXPECT_NE(not_supported.body.find("<ERROR CODE=\"7\""), std::string::npos)
        << not_supported.body;

    // Clients in parallel all get the whole answer.
    std::vector<HttpReply> replies(8);
    std::vector<std::thread> clients;
    for (auto &reply : replies)
        clients.emplace_back([&reply, port] {
            reply = raw_request(port, post(enumerate_names_body("VORNA_ZoneMemberSettingData")));
        });
    for (auto &client : clients) client.join();
    for (const auto &reply : replies) {
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(reply.body, replies[0].body);
    }
    EXPECT_NE(replies[0].body.find("VORNA_ZoneMemberSettingData"), std::string::npos);
}

TEST_F(CimXmlServerTest, WithAUserOnlyItsCredentialsAreServed) {
    const fs::path password = dir_ / "password";
    std::ofstream(password) << "s3cret\n";
    start_server({"--user", "admin", "--password-file", password.string()});
    const int port = server_->port();
    const std::string body = enumerate_names_body("VORNA_ZoneService");

    const HttpReply anonymous = raw_request(port, post(body));
    EXPECT_EQ(anonymous.status, 401);
    EXPECT_NE(anonymous.head.find("WWW-Authenticate: Basic realm="), std::string::npos)
        << anonymous.head;
    // base64("admin:wrong") and base64("admin:s3cret")
    EXPECT_EQ(raw_request(port, post(body, "Authorization: Basic YWRtaW46d3Jvbmc=\r\n")).status,
              401);
    EXPECT_EQ(raw_request(port, post(body, "Authorization: Basic YWRtaW46czNjcmV0\r\n")).status,
              200);

    const std::string where = "127.0.0.1:" + std::to_string(port) + "/root/cimv2:VORNA_ZoneService";
    const Outcome refused = run("wbemcli", {"ein", "http://admin:nope@" + where});
    EXPECT_EQ(refused.status, 16);
    EXPECT_NE(refused.err.find("Invalid username/password"), std::string::npos) << refused.err;
    const Outcome served = run("wbemcli", {"ein", "http://admin:s3cret@" + where});
    EXPECT_EQ(served.status, 0) << served.err;
    EXPECT_FALSE(served.lines().empty());
}

}  // namespace
