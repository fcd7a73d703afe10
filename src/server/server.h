// `zonecim serve`: the zone provider behind CIM operations over HTTP
// (CIM-XML), for CIM clients such as wbemcli.
//
// Safe by default: it listens on 127.0.0.1:5988 only, refuses bodies over
// the size limit with 413, answers malformed requests with 400 and a CIMError
// header, and, given a user and a password file, wants HTTP Basic
// credentials (401 with WWW-Authenticate otherwise). Requests are served in
// parallel by a pool of worker threads. SIGTERM or SIGINT stop it: requests
// in progress are finished, then the provider is cleaned up.
//
// Standard output belongs to the provider's trace lines: it is pointed at
// /dev/null (at standard error with trace on) before the provider is loaded.
// The server's own lines (where it listens, one line per request) go to
// standard error.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zoneserver {

struct ServeOptions {
    std::string listen = "127.0.0.1:5988";  // ADDRESS:PORT, [IPv6]:PORT; port 0: any free one
    std::string provider;                   // provider library to load
    std::optional<std::string> user;        // with password_file: HTTP Basic credentials
    std::optional<std::string> password_file;
    bool trace = false;               // provider trace lines to standard error
    std::size_t threads = 8;          // worker threads, one connection each at a time
    std::size_t max_body = 4u << 20;  // larger request bodies get 413
};

struct ListenAddress {
    std::string host;
    int port = 0;
};

// "127.0.0.1:5988", "localhost:0", "[::1]:5988"; nullopt with a reason when
// the text is none of these.
std::optional<ListenAddress> parse_listen_address(std::string_view text, std::string *error);

// Runs the server until SIGTERM or SIGINT. Returns the exit status: 0 after
// a clean shutdown, 1 when it can't start (provider, schema, address), 2 for
// options that make no sense (the reason on standard error).
int serve(const ServeOptions &options);

}  // namespace zoneserver
