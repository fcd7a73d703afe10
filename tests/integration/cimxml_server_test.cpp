// `zonecim serve` end to end: the server process, the provider it loads and
// the simulated switch behind it, on the test's own switch database, driven
// by wbemcli as a CIM client and by raw HTTP requests.
//
// What a client relies on: every served class enumerates and reads back as
// zonecim reads it in-process; associations agree with zonecim; the zoning
// and device-alias methods of `cm` change the switch, as a second
// enumeration shows; CIM failures come back with their status; malformed,
// oversized and unauthenticated requests are refused with the right HTTP
// answer and the server keeps serving; SIGTERM stops it cleanly.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>

#include <nlohmann/json.hpp>

#include <cstring>
#include <thread>
#include <tuple>

#include "switch_fixture.h"

extern char **environ;

namespace zonetest {
namespace {

// The object path of a wbemcli line (the part before the first space
// outside quotes) without its "host[:port]/" part: what precedes the
// namespace, which starts with "root" here.
std::string path_of(const std::string &line) {
    bool quoted = false;
    std::size_t end = 0;
    for (; end < line.size() && (quoted || line[end] != ' '); ++end) {
        if (line[end] == '\\' && quoted)
            ++end;
        else if (line[end] == '"')
            quoted = !quoted;
    }
    const std::string path = line.substr(0, end);
    const std::size_t slash = path.rfind("root/", 0) == 0 ? std::string::npos : path.find('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::vector<std::string> line_paths(const std::vector<std::string> &lines) {
    std::vector<std::string> paths;
    for (const std::string &line : lines) paths.push_back(path_of(line));
    return paths;
}

// ---- Raw HTTP -------------------------------------------------------------------

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
    if (::connect(sock, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0) {
        for (std::size_t sent = 0; sent < text.size();) {
            const ssize_t n = ::send(sock, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
            if (n <= 0) break;
            sent += static_cast<std::size_t>(n);
        }
        char buffer[65536];
        for (ssize_t n; (n = ::recv(sock, buffer, sizeof buffer, 0)) > 0;)
            reply.body.append(buffer, static_cast<std::size_t>(n));
    }
    ::close(sock);
    if (reply.body.rfind("HTTP/1.1 ", 0) == 0) reply.status = std::atoi(reply.body.c_str() + 9);
    const auto end_of_head = reply.body.find("\r\n\r\n");
    reply.head = reply.body.substr(0, end_of_head);
    reply.body = end_of_head == std::string::npos ? "" : reply.body.substr(end_of_head + 4);
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

// ---- The server process ---------------------------------------------------------

// One `zonecim serve` process on a port of its choosing. Its standard error,
// where it says where it listens and then logs every request, goes to a
// temporary file.
class Server {
  public:
    explicit Server(const std::vector<std::string> &extra_args) : log_(std::tmpfile()) {
        std::vector<std::string> args{ZONECIM_PATH, "serve", "--listen", "127.0.0.1:0"};
        args.insert(args.end(), extra_args.begin(), extra_args.end());
        std::vector<char *> argv;
        for (std::string &arg : args) argv.push_back(arg.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, fileno(log_), STDERR_FILENO);
        if (posix_spawn(&pid_, ZONECIM_PATH, &actions, nullptr, argv.data(), environ) != 0)
            pid_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        // Ready once it says where it listens; given up on when it ends first.
        const std::string ready = "listening on 127.0.0.1:";
        for (int i = 0; i < 6000 && pid_ > 0 && port_ == 0; ++i) {
            const std::string text = log();
            if (const auto at = text.find(ready); at != std::string::npos)
                port_ = std::atoi(text.c_str() + at + ready.size());
            else if (waitpid(pid_, nullptr, WNOHANG) == pid_)
                pid_ = -1;
            else
                usleep(10000);
        }
    }
    ~Server() {
        stop();
        std::fclose(log_);
    }
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

    int port() const { return port_; }

    // SIGTERM; the exit status (-1 when it didn't exit normally).
    int stop() {
        if (pid_ <= 0) return exit_status_;
        ::kill(pid_, SIGTERM);
        int status = 0;
        ::waitpid(pid_, &status, 0);
        pid_ = -1;
        exit_status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return exit_status_;
    }

    // Read without moving the offset the server writes at.
    std::string log() const {
        std::string text;
        char buffer[4096];
        for (ssize_t n; (n = ::pread(fileno(log_), buffer, sizeof buffer, text.size())) > 0;)
            text.append(buffer, static_cast<std::size_t>(n));
        return text;
    }

  private:
    std::FILE *log_;
    pid_t pid_ = -1;
    int port_ = 0;
    int exit_status_ = -1;
};

class CimXmlServerTest : public SwitchTest {
  protected:
    static void SetUpTestSuite() {
        SwitchTest::SetUpTestSuite();
        // wbemcli would send its requests to a proxy.
        setenv("no_proxy", "127.0.0.1", 1);
    }
    void SetUp() override {
        if (std::system("command -v wbemcli >/dev/null 2>&1") != 0)
            GTEST_SKIP() << "wbemcli is not installed";
        SwitchTest::SetUp();
    }
    void TearDown() override {
        if (!server_) return;
        EXPECT_EQ(server_->stop(), 0) << server_->log();
        EXPECT_NE(server_->log().find("stopped"), std::string::npos) << server_->log();
        server_.reset();
    }

    void start_server(const std::vector<std::string> &extra_args = {}) {
        server_ = std::make_unique<Server>(extra_args);
        ASSERT_NE(server_->port(), 0) << "the server did not start:\n" << server_->log();
        url_ = "http://127.0.0.1:" + std::to_string(server_->port()) + "/root/cimv2:";
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
        return run_program("wbemcli", args);
    }

    // Lines of a wbemcli verb that must succeed.
    std::vector<std::string> ok_lines(const std::string &verb, const std::string &path,
                                      const std::vector<std::string> &options = {},
                                      const std::vector<std::string> &trailing = {}) {
        const Outcome outcome = wbemcli(verb, path, options, trailing);
        EXPECT_EQ(outcome.status, 0) << verb << " " << path << "\n" << outcome.err;
        return outcome.lines();
    }

    // A wbemcli run the server answered with a CIM error: exit 16, the
    // error on standard error, nothing on standard output.
    void cim_error(const std::vector<std::string> &args, const std::string &shown) {
        const Outcome outcome = run_program("wbemcli", args);
        EXPECT_EQ(outcome.status, 16);
        EXPECT_NE(outcome.err.find(shown), std::string::npos) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }

    // Paths the same operation gives run in-process by zonecim.
    std::vector<std::string> in_process(const std::vector<std::string> &args) {
        const Outcome outcome = zonecim(args);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return outcome.lines();
    }

    std::unique_ptr<Server> server_;
    std::string url_;
};

const std::string kService =
    "VORNA_ZoneService.SystemCreationClassName=\"VORNA_Vsan\",SystemName=\"10\","
    "CreationClassName=\"VORNA_ZoneService\",Name=\"10\"";

TEST_F(CimXmlServerTest, ReadsAgreeWithZonecimInProcess) {
    start_server();
    // Every class the schema has the provider serve instances of.
    std::ifstream schema_file(std::string(ZONE_SOURCE_DIR) + "/schema/zoning_classes.json");
    const nlohmann::json schema = nlohmann::json::parse(schema_file);
    std::vector<std::string> served;
    for (const auto &cls : schema.at("classes"))
        if (cls.contains("provider") &&
            std::count(cls["provider"].begin(), cls["provider"].end(), "instance") != 0)
            served.push_back(cls.at("name").get<std::string>());
    ASSERT_FALSE(served.empty());
    for (const std::string &cls : served) {
        SCOPED_TRACE(cls);
        const auto names = ok_lines("ein", cls);
        EXPECT_EQ(line_paths(names), in_process({"ein", "root/cimv2:" + cls}));
        // ei: the same objects in the same order, each with its properties.
        const auto instances = ok_lines("ei", cls);
        ASSERT_EQ(line_paths(instances), line_paths(names));
        for (const std::string &line : instances) {
            const std::string path = path_of(line);
            EXPECT_NE(line.find('=', line.find(path) + path.size()), std::string::npos) << line;
        }
        // gi of the first name reads that object back.
        if (names.empty()) continue;
        const auto one = ok_lines("gi", path_of(names[0]).substr(std::strlen("root/cimv2:")));
        ASSERT_EQ(one.size(), 1u);
        EXPECT_EQ(one[0].substr(one[0].find(' ')), instances[0].substr(instances[0].find(' ')));
    }

    // A CIM_ superclass is served by its VORNA_ subclasses.
    EXPECT_EQ(line_paths(ok_lines("ein", "CIM_ZoneSet")),
              in_process({"ein", "root/cimv2:VORNA_ZoneSet"}));
    EXPECT_EQ(ok_lines("ein", "CIM_ZoneService").size(),
              ok_lines("ein", "VORNA_ZoneService").size());
    const auto zone = ok_lines("gi", "CIM_Zone.InstanceID=\"10^2^0\"");
    ASSERT_EQ(zone.size(), 1u);
    EXPECT_NE(zone[0].find("ElementName="), std::string::npos);

    // A property list leaves the other properties out.
    for (const auto &line : ok_lines("ei", "VORNA_ZoneService", {}, {"SessionState"})) {
        EXPECT_NE(line.find("SessionState=4"), std::string::npos) << line;
        EXPECT_EQ(line.find("ElementName="), std::string::npos) << line;
    }

    // Associations: each way of asking agrees with zonecim and with the
    // others.
    const std::string zone_set = "VORNA_ZoneSet.InstanceID=\"10^1^0\"";
    for (const std::string &source :
         {zone_set, std::string("VORNA_Zone.InstanceID=\"10^2^0\""), kService}) {
        SCOPED_TRACE(source);
        const auto associator_names = line_paths(ok_lines("ain", source));
        EXPECT_FALSE(associator_names.empty());
        EXPECT_EQ(associator_names, in_process({"ain", "root/cimv2:" + source}));
        EXPECT_EQ(line_paths(ok_lines("ai", source)), associator_names);
        const auto reference_names = line_paths(ok_lines("rin", source));
        EXPECT_FALSE(reference_names.empty());
        EXPECT_EQ(reference_names, in_process({"rin", "root/cimv2:" + source}));
        EXPECT_EQ(line_paths(ok_lines("ri", source)), reference_names);
    }
    // Filters reach the provider: only the zones of the zone set; a
    // superclass of the association class selects its served subclasses.
    const auto zones =
        line_paths(ok_lines("ain", zone_set, {"-ac", "VORNA_ZoneMemberOfCollection"}));
    EXPECT_EQ(zones,
              in_process({"ain", "-ac", "VORNA_ZoneMemberOfCollection", "root/cimv2:" + zone_set}));
    for (const auto &path : zones) EXPECT_EQ(path.rfind("root/cimv2:VORNA_Zone.", 0), 0u) << path;
    EXPECT_EQ(line_paths(ok_lines("ain", zone_set, {"-ac", "CIM_MemberOfCollection"})), zones);
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
        if (cls.starts_with("VORNA_")) {
            EXPECT_EQ(line_paths(names), in_process({"ein", "root/cimv2:" + cls}));
        }
        ASSERT_GT(names.size(), 300u);
        const auto instances = ok_lines("ei", cls);
        EXPECT_EQ(line_paths(instances), line_paths(names));
        for (const auto &line : instances)
            EXPECT_NE(line.find("ElementName="), std::string::npos) << line;
    }
}

TEST_F(CimXmlServerTest, MethodsThroughCmChangeTheSwitch) {
    start_server();
    // cm prints "<target> Method: <text>[, Out (reference): root/cimv2:Class.Key=...]";
    // the reference goes back into a `cm` argument as Class.Key=...
    auto call = [&](const std::string &target, const std::string &text,
                    const std::string &output = "") {
        const auto lines = ok_lines("cm", target, {}, {text});
        EXPECT_EQ(lines.size(), 1u);
        const std::string line = lines.empty() ? "" : lines[0];
        std::string head = text.substr(0, text.find('.')) + ": Success";
        if (!output.empty()) head += ", " + output + " (reference): root/cimv2:";
        const auto at = line.find(head);
        EXPECT_NE(at, std::string::npos) << line;
        return at == std::string::npos || output.empty() ? std::string()
                                                         : line.substr(at + head.size());
    };
    const std::string zone_set = call(kService, "CreateZoneSet.ZoneSetName=\"srv_zs\"", "ZoneSet");
    const std::string zone =
        call(kService, "CreateZone.ZoneName=\"srv_z\",ZoneType=2,ZoneSubType=2", "Zone");
    ASSERT_EQ(zone_set.rfind("VORNA_ZoneSet.InstanceID=\"10^", 0), 0u) << zone_set;
    ASSERT_EQ(zone.rfind("VORNA_Zone.InstanceID=\"10^", 0), 0u) << zone;
    // Arguments in another order than declared still reach the provider
    // in the declared one.
    call(kService, "AddZone.Zone=" + zone + ",ZoneSet=" + zone_set);
    EXPECT_EQ(line_paths(ok_lines("ain", zone_set, {"-ac", "VORNA_ZoneMemberOfCollection"})),
              std::vector<std::string>{"root/cimv2:" + zone});

    call(kService, "ActivateZoneSet.ZoneSet=" + zone_set + ",Activate=true");
    // The active copy of the zone set now exists (flag 1 instead of 0).
    const std::string active = zone_set.substr(0, zone_set.size() - 3) + "^1\"";
    const auto zone_sets = line_paths(ok_lines("ein", "VORNA_ZoneSet"));
    EXPECT_NE(std::find(zone_sets.begin(), zone_sets.end(), "root/cimv2:" + active),
              zone_sets.end())
        << active;

    // Deleting the zone from the editable database; active objects are not
    // the client's to change.
    EXPECT_EQ(wbemcli("di", zone).status, 0);
    cim_error({"gi", url_ + zone}, "Cim: (6)");
    cim_error({"di", url_ + active}, "Cim: (");

    // A device alias comes and goes through the device-alias service.
    const std::string alias = "VORNA_DeviceAlias.InstanceID=\"21:00:00:24:ff:4c:a9:c9\"";
    const std::string alias_service =
        "VORNA_DeviceAliasService.SystemCreationClassName=\"VORNA_Vsan\",SystemName=\"1\","
        "CreationClassName=\"VORNA_DeviceAliasService\",Name=\"1\"";
    call(alias_service,
         "CreateDeviceAlias.PWWN=\"21:00:00:24:ff:4c:a9:c9\",DeviceAliasName=\"srv_alias\"");
    EXPECT_NE(ok_lines("gi", alias).at(0).find("ElementName=\"srv_alias\""), std::string::npos);
    call(alias_service, "RemoveDeviceAlias.DeviceAliasName=\"srv_alias\"");
    EXPECT_EQ(ok_lines("gi", alias).at(0).find("srv_alias"), std::string::npos);
}

TEST_F(CimXmlServerTest, FailuresComeBackAsSuchAndTheServerKeepsServing) {
    start_server();
    const int port = server_->port();
    const std::pair<std::vector<std::string>, const char *> cim_failures[] = {
        {{"gi", url_ + "VORNA_Zone.InstanceID=\"4000^1^0\""}, "Cim: (6) CIM_ERR_NOT_FOUND: "},
        {{"ein", url_ + "VORNA_NoSuchClass"}, "Cim: (5) CIM_ERR_INVALID_CLASS: "},
        {{"gc", url_ + "VORNA_NoSuchClass"}, "Cim: (6) CIM_ERR_NOT_FOUND: "},
        {{"ein", "http://127.0.0.1:" + std::to_string(port) + "/root/other:VORNA_Zone"},
         "Cim: (3) "},
        // The provider compares method names exactly.
        {{"cm", url_ + kService, "createzoneset"}, "Cim: (17) "},
    };
    for (const auto &[args, shown] : cim_failures) {
        SCOPED_TRACE(args[1]);
        cim_error(args, shown);
    }

    const HttpReply good = raw_request(port, post(enumerate_names_body("VORNA_ZoneService")));
    ASSERT_EQ(good.status, 200) << good.head;
    EXPECT_NE(good.head.find("CIMOperation: MethodResponse"), std::string::npos) << good.head;
    EXPECT_NE(good.body.find("<INSTANCENAME CLASSNAME=\"VORNA_ZoneService\">"), std::string::npos);
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<VALUE.REFERENCE>";
    const std::string not_well_formed = "CIMError: request-not-well-formed";
    const std::tuple<std::string, int, std::string> bad_requests[] = {
        {post("<CIM><MESSAGE ID=\"1\""), 400, not_well_formed},
        {post("\x01\x02 not xml at all"), 400, not_well_formed},
        {post("<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
              "PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL NAME=\"GetInstance\">"
              "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE "
              "NAME=\"cimv2\"/></LOCALNAMESPACEPATH><IPARAMVALUE NAME=\"InstanceName\">" +
              deep),
         400, not_well_formed},
        {post("<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
              "PROTOCOLVERSION=\"1.0\"><MULTIREQ></MULTIREQ></MESSAGE></CIM>"),
         501, "CIMError: multiple-requests-unsupported"},
        // Over the body limit: refused on the announced length.
        {"POST /cimom HTTP/1.1\r\nHost: x\r\nCIMOperation: MethodCall\r\nConnection: close\r\n"
         "Content-Length: 5000000\r\n\r\n",
         413, ""},
        {"GET /cimom HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n", 501, ""},
        {"POST /cimom HTTP/1.1\r\nHost: x\r\nConnection: close\r\nContent-Length: 2\r\n\r\nab", 400,
         "CIMError: request-not-valid"},
    };
    for (const auto &[request, status, header] : bad_requests) {
        SCOPED_TRACE(request.substr(0, 120));
        const HttpReply reply = raw_request(port, request);
        EXPECT_EQ(reply.status, status) << reply.head;
        EXPECT_NE(reply.head.find(header), std::string::npos) << reply.head;
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
    char password[] = "/tmp/zonetest-password.XXXXXX";
    const int fd = mkstemp(password);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(write(fd, "s3cret\n", 7), 7);
    close(fd);
    start_server({"--user", "admin", "--password-file", password});
    unlink(password);
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
    cim_error({"ein", "http://admin:nope@" + where}, "Invalid username/password");
    const Outcome served = run_program("wbemcli", {"ein", "http://admin:s3cret@" + where});
    EXPECT_EQ(served.status, 0) << served.err;
    EXPECT_FALSE(served.lines().empty());
}

}  // namespace
}  // namespace zonetest
