// The HTTP side of `zonecim serve`: cpp-httplib's server with a pool of
// worker threads, Basic authentication, the body limit, the request log,
// and a clean stop on SIGTERM/SIGINT.
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <httplib.h>

#include <atomic>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <memory>
#include <mutex>
#include <thread>

#include "host/cmpihost.h"
#include "schema/schema.h"
#include "server/cimxml_service.h"
#include "server/server.h"

namespace zoneserver {

namespace {

constexpr int kExitCantStart = 1;
constexpr int kExitBadOptions = 2;
constexpr const char *kRealm = "Basic realm=\"cimom\"";
constexpr const char *kXmlContentType = "application/xml; charset=\"utf-8\"";

void say(const std::string &line) {
    std::fprintf(stderr, "zonecim serve: %s\n", line.c_str());
}

std::string base64(std::string_view raw) {
    static constexpr char kAlphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    std::size_t i = 0;
    for (; i + 2 < raw.size(); i += 3) {
        const unsigned n = (static_cast<unsigned char>(raw[i]) << 16) |
                           (static_cast<unsigned char>(raw[i + 1]) << 8) |
                           static_cast<unsigned char>(raw[i + 2]);
        out += kAlphabet[(n >> 18) & 63];
        out += kAlphabet[(n >> 12) & 63];
        out += kAlphabet[(n >> 6) & 63];
        out += kAlphabet[n & 63];
    }
    if (const std::size_t rest = raw.size() - i; rest > 0) {
        unsigned n = static_cast<unsigned char>(raw[i]) << 16;
        if (rest == 2) n |= static_cast<unsigned char>(raw[i + 1]) << 8;
        out += kAlphabet[(n >> 18) & 63];
        out += kAlphabet[(n >> 12) & 63];
        out += rest == 2 ? kAlphabet[(n >> 6) & 63] : '=';
        out += '=';
    }
    return out;
}

// Equal texts, in time that depends on the lengths only.
bool same_secret(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    unsigned char difference = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        difference |= static_cast<unsigned char>(a[i] ^ b[i]);
    return difference == 0;
}

// The first line of the password file, without its line end.
std::optional<std::string> read_password(const std::string &file) {
    std::ifstream in(file);
    std::string line;
    if (!in || !std::getline(in, line)) return std::nullopt;
    while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.pop_back();
    if (line.empty()) return std::nullopt;
    return line;
}

// The "Basic ..." credentials clients must send, or nothing when
// authentication is off.
struct Credentials {
    std::optional<std::string> expected_token;  // base64 of user:password

    bool accepts(const httplib::Request &req) const {
        if (!expected_token) return true;
        const std::string header = req.get_header_value("Authorization");
        constexpr std::string_view kScheme = "basic ";
        if (header.size() < kScheme.size() ||
            !zoneschema::same_name(std::string_view(header).substr(0, kScheme.size()), kScheme))
            return false;
        return same_secret(std::string_view(header).substr(kScheme.size()), *expected_token);
    }
};

// Standard output carries the provider's trace lines; they must never mix
// with anything of ours. Descriptor 1 goes to /dev/null, or to standard
// error when they are wanted.
bool divert_standard_output(bool trace) {
    std::fflush(stdout);
    const int sink = trace ? ::dup(STDERR_FILENO) : ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (sink < 0) return false;
    const bool moved = ::dup2(sink, STDOUT_FILENO) >= 0;
    ::close(sink);
    if (trace) std::setvbuf(stdout, nullptr, _IOLBF, 0);
    return moved;
}

std::string host_name() {
    char name[256] = {};
    if (::gethostname(name, sizeof name - 1) != 0 || name[0] == '\0') return "localhost";
    return name;
}

// The outcome of the request this worker thread is serving, for the log
// line httplib's logger writes on the same thread once the answer is sent.
thread_local std::string t_outcome;

void log_request(const httplib::Request &req, const httplib::Response &res) {
    // Answers httplib gives before any handler of ours runs.
    if (t_outcome.empty() && res.status == 413) t_outcome = "body over the size limit";
    if (t_outcome.empty() && res.status == 400) t_outcome = "not an HTTP request httplib can read";
    std::fprintf(stderr, "zonecim serve: %s %s %s %d %zu %s\n", req.remote_addr.c_str(),
                 req.method.c_str(), req.path.c_str(), res.status, req.body.size(),
                 t_outcome.c_str());
    t_outcome.clear();
}

// Stops the server on SIGTERM or SIGINT. The signals are blocked in every
// thread (the mask is set before any thread starts) and taken here with
// sigwait, so no handler runs in signal context.
class SignalWatch {
  public:
    explicit SignalWatch(httplib::Server &server) : server_(server) {
        sigemptyset(&signals_);
        sigaddset(&signals_, SIGINT);
        sigaddset(&signals_, SIGTERM);
        sigaddset(&signals_, kWakeSignal);
        pthread_sigmask(SIG_BLOCK, &signals_, &previous_);
        thread_ = std::thread([this] { watch(); });
    }
    ~SignalWatch() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            finished_ = true;
        }
        changed_.notify_all();
        // Wakes sigwait when no signal came.
        pthread_kill(thread_.native_handle(), kWakeSignal);
        thread_.join();
        // Takes the wake-up (or a late signal) before unblocking, so that it
        // doesn't end the process.
        const timespec now{0, 0};
        while (sigtimedwait(&signals_, nullptr, &now) > 0) {
        }
        pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
    }
    SignalWatch(const SignalWatch &) = delete;
    SignalWatch &operator=(const SignalWatch &) = delete;

    bool signalled() const { return signalled_; }

  private:
    // Only the destructor sends it, to end sigwait when no signal came.
    static constexpr int kWakeSignal = SIGUSR2;

    void watch() {
        int signal = 0;
        std::unique_lock<std::mutex> lock(mutex_, std::defer_lock);
        for (;;) {
            sigwait(&signals_, &signal);
            lock.lock();
            if (finished_) return;
            if (signal != kWakeSignal) break;
            lock.unlock();
        }
        signalled_ = true;
        say(std::string("stopping on ") + (signal == SIGINT ? "SIGINT" : "SIGTERM"));
        // stop() does nothing until the server runs; ask again until the
        // listening loop has returned.
        while (!finished_) {
            server_.stop();
            changed_.wait_for(lock, std::chrono::milliseconds(50));
        }
    }

    httplib::Server &server_;
    sigset_t signals_{};
    sigset_t previous_{};
    std::mutex mutex_;
    std::condition_variable changed_;
    bool finished_ = false;
    std::atomic<bool> signalled_{false};
    std::thread thread_;
};

// Sends the markup of an answer as it lies, block by block, each block freed
// once it is written: httplib's set_content would copy the whole answer
// first. The length is known, so the answer goes out with Content-Length,
// as one from set_content does.
void send_blocks(httplib::Response &res, XmlText body) {
    if (body.empty()) {
        res.set_content(std::string(), kXmlContentType);
        return;
    }
    struct Outgoing {
        XmlText text;
        std::size_t next = 0;  // the block to write next
        std::size_t sent = 0;  // the bytes of the blocks before it
    };
    const std::size_t length = body.size();
    auto outgoing = std::make_shared<Outgoing>(Outgoing{std::move(body)});
    // httplib asks for the bytes from offset on once it has written
    // everything before; any other offset is no state to resume from.
    auto write_next = [outgoing](std::size_t offset, std::size_t, httplib::DataSink &sink) {
        Outgoing &out = *outgoing;
        const auto &blocks = out.text.blocks();
        while (out.next < blocks.size() && blocks[out.next].empty()) ++out.next;
        if (out.next >= blocks.size() || offset != out.sent) return false;
        const std::string &block = blocks[out.next];
        if (!sink.write(block.data(), block.size())) return false;
        out.sent += block.size();
        out.text.release_block(out.next++);
        return true;
    };
    res.set_content_provider(length, kXmlContentType, std::move(write_next));
}

void answer_not_implemented(const httplib::Request &, httplib::Response &res) {
    t_outcome = "only POST is served";
    res.status = 501;
}

void configure(httplib::Server &server, const ServeOptions &options, const CimXmlService &service,
               const Credentials &credentials) {
    const std::size_t threads = options.threads == 0 ? 1 : options.threads;
    server.new_task_queue = [threads] { return new httplib::ThreadPool(threads); };
    server.set_payload_max_length(options.max_body);
    server.set_keep_alive_max_count(100);
    server.set_keep_alive_timeout(5);
    server.set_read_timeout(10);
    server.set_write_timeout(10);
    // Only SO_REUSEADDR: no other process may share the port with us.
    server.set_socket_options([](socket_t sock) {
        int yes = 1;
        ::setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    server.set_logger(log_request);

    server.Post(R"(.*)", [&service, &credentials](const httplib::Request &req,
                                                  httplib::Response &res) {
        if (!credentials.accepts(req)) {
            t_outcome = "credentials refused";
            res.status = 401;
            res.set_header("WWW-Authenticate", kRealm);
            return;
        }
        const std::string operation = req.get_header_value("CIMOperation");
        if (!zoneschema::same_name(operation, "MethodCall")) {
            t_outcome = operation.empty() ? "no CIMOperation header" : "CIMOperation " + operation;
            res.status = 400;
            res.set_header("CIMError", operation.empty() ? "request-not-valid" : "header-mismatch");
            return;
        }
        Answer answer = service.handle(req.body);
        t_outcome = answer.summary;
        res.status = answer.http_status;
        if (!answer.cim_error.empty()) res.set_header("CIMError", answer.cim_error);
        if (answer.http_status == 200) {
            res.set_header("CIMOperation", "MethodResponse");
            res.set_header("Cache-Control", "no-cache");
            send_blocks(res, std::move(answer.body));
        }
    });
    server.Get(R"(.*)", answer_not_implemented);
    server.Put(R"(.*)", answer_not_implemented);
    server.Delete(R"(.*)", answer_not_implemented);
    server.Patch(R"(.*)", answer_not_implemented);
    server.Options(R"(.*)", answer_not_implemented);
}

// Binds the listening socket; the port actually bound, or 0.
int bind(httplib::Server &server, const ListenAddress &address) {
    if (address.port == 0) {
        const int port = server.bind_to_any_port(address.host);
        return port > 0 ? port : 0;
    }
    return server.bind_to_port(address.host, address.port) ? address.port : 0;
}

std::string shown(const ListenAddress &address, int port) {
    const bool v6 = address.host.find(':') != std::string::npos;
    return (v6 ? "[" + address.host + "]" : address.host) + ":" + std::to_string(port);
}

}  // namespace

std::optional<ListenAddress> parse_listen_address(std::string_view text, std::string *error) {
    auto fail = [error](const std::string &reason) -> std::optional<ListenAddress> {
        if (error != nullptr) *error = reason;
        return std::nullopt;
    };
    ListenAddress address;
    std::string_view port_text;
    if (!text.empty() && text.front() == '[') {
        const std::size_t close = text.find(']');
        if (close == std::string_view::npos || close + 1 >= text.size() || text[close + 1] != ':')
            return fail("expected [ADDRESS]:PORT");
        address.host = std::string(text.substr(1, close - 1));
        port_text = text.substr(close + 2);
    } else {
        const std::size_t colon = text.rfind(':');
        if (colon == std::string_view::npos) return fail("expected ADDRESS:PORT");
        address.host = std::string(text.substr(0, colon));
        if (address.host.find(':') != std::string::npos)
            return fail("write an IPv6 address in brackets: [ADDRESS]:PORT");
        port_text = text.substr(colon + 1);
    }
    if (address.host.empty()) return fail("the address is empty");
    int port = -1;
    const auto [end, ec] =
        std::from_chars(port_text.data(), port_text.data() + port_text.size(), port);
    if (port_text.empty() || ec != std::errc() || end != port_text.data() + port_text.size() ||
        port < 0 || port > 65535)
        return fail("the port must be a number from 0 to 65535");
    address.port = port;
    return address;
}

int serve(const ServeOptions &options) {
    std::string error;
    const auto address = parse_listen_address(options.listen, &error);
    if (!address) {
        say("bad --listen " + options.listen + ": " + error);
        return kExitBadOptions;
    }
    if (options.user.has_value() != options.password_file.has_value()) {
        say("--user and --password-file go together");
        return kExitBadOptions;
    }
    Credentials credentials;
    if (options.user) {
        const auto password = read_password(*options.password_file);
        if (!password) {
            say("can't read a password from " + *options.password_file);
            return kExitCantStart;
        }
        credentials.expected_token = base64(*options.user + ":" + *password);
    }

    if (!divert_standard_output(options.trace)) {
        say("can't divert standard output from the provider's trace lines");
        return kExitCantStart;
    }
    const zoneschema::Schema *schema = nullptr;
    try {
        schema = &zoneschema::Schema::installed();
    } catch (const std::exception &e) {
        say(std::string("can't read the class schema: ") + e.what());
        return kExitCantStart;
    }
    std::unique_ptr<cmpihost::Provider> provider =
        cmpihost::Provider::load(options.provider, "ZoneProvider", &error);
    if (!provider) {
        say("can't load the provider " + options.provider + ": " + error);
        return kExitCantStart;
    }

    // A client that goes away mid-answer must not end the server.
    std::signal(SIGPIPE, SIG_IGN);
    const CimXmlService service(*provider, *schema, host_name());
    bool stopped_by_signal = false;
    bool listened = false;
    {
        httplib::Server server;
        configure(server, options, service, credentials);
        SignalWatch watch(server);
        const int port = bind(server, *address);
        if (port == 0) {
            say("can't listen on " + options.listen);
        } else {
            say("listening on " + shown(*address, port));
            listened = server.listen_after_bind();
            stopped_by_signal = watch.signalled();
        }
    }
    // Every worker has finished: the provider can go.
    provider->cleanupAll(true);
    provider.reset();
    if (stopped_by_signal) {
        say("stopped");
        return 0;
    }
    return listened ? 0 : kExitCantStart;
}

}  // namespace zoneserver
