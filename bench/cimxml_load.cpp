// cimxml_load: a load generator for `zonecim serve` (or any CIM-XML
// server). Concurrent clients, each on a keep-alive connection of its own,
// issue EnumerateInstances or EnumerateInstanceNames of one class until N
// requests have been made, then requests/s and objects/s are printed.
//
//   cimxml_load [--url http://127.0.0.1:5988] [--class VORNA_Zone]
//               [--op ei|ein] [--clients 4] [--requests 1000]
//               [--user NAME --password TEXT] [--namespace root/cimv2]
//
// Exit status: 0 when every request was answered with objects or an empty
// result, 1 when any failed (HTTP error, CIM ERROR, unreadable answer),
// 2 for wrong usage.
#include <httplib.h>
#include <pugixml.hpp>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "server/xml_writer.h"

namespace {

struct Options {
    std::string url = "http://127.0.0.1:5988";
    std::string class_name = "VORNA_Zone";
    std::string op = "ei";
    std::string ns = "root/cimv2";
    int clients = 4;
    long requests = 1000;
    std::string user;
    std::string password;
};

[[noreturn]] void usage(const char *reason) {
    std::fprintf(stderr,
                 "cimxml_load: %s\n"
                 "usage: cimxml_load [--url URL] [--class CLASS] [--op ei|ein] [--clients N]\n"
                 "                   [--requests N] [--user NAME --password TEXT]"
                 " [--namespace NS]\n",
                 reason);
    std::exit(2);
}

long positive_number(const char *text, const char *option) {
    char *end = nullptr;
    const long value = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || value <= 0)
        usage((std::string(option) + " wants a positive number").c_str());
    return value;
}

Options parse_options(int argc, char **argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view option = argv[i];
        if (i + 1 >= argc) usage(("missing value after " + std::string(option)).c_str());
        const char *value = argv[++i];
        if (option == "--url")
            options.url = value;
        else if (option == "--class")
            options.class_name = value;
        else if (option == "--op")
            options.op = value;
        else if (option == "--namespace")
            options.ns = value;
        else if (option == "--clients")
            options.clients = static_cast<int>(positive_number(value, "--clients"));
        else if (option == "--requests")
            options.requests = positive_number(value, "--requests");
        else if (option == "--user")
            options.user = value;
        else if (option == "--password")
            options.password = value;
        else
            usage(("unknown option " + std::string(option)).c_str());
    }
    if (options.op != "ei" && options.op != "ein") usage("--op is ei or ein");
    return options;
}

std::string escaped(std::string_view text) {
    std::string out;
    zoneserver::append_escaped(out, text);
    return out;
}

std::string request_body(const Options &options, const std::string &operation) {
    std::string ns;
    std::size_t start = 0;
    while (start <= options.ns.size()) {
        std::size_t end = options.ns.find('/', start);
        if (end == std::string::npos) end = options.ns.size();
        if (end > start)
            ns += "<NAMESPACE NAME=\"" + escaped(options.ns.substr(start, end - start)) + "\"/>";
        start = end + 1;
    }
    std::string body =
        "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
        "<MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL NAME=\"" +
        operation + "\"><LOCALNAMESPACEPATH>" + ns +
        "</LOCALNAMESPACEPATH>"
        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"" +
        escaped(options.class_name) + "\"/></IPARAMVALUE>";
    if (operation == "EnumerateInstances")
        body +=
            "<IPARAMVALUE NAME=\"DeepInheritance\"><VALUE>TRUE</VALUE></IPARAMVALUE>"
            "<IPARAMVALUE NAME=\"LocalOnly\"><VALUE>FALSE</VALUE></IPARAMVALUE>";
    return body + "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

// The objects in an answer, or -1 when it is a CIM error or unreadable.
long objects_in(const std::string &answer) {
    pugi::xml_document doc;
    if (!doc.load_buffer(answer.data(), answer.size())) return -1;
    const pugi::xml_node response =
        doc.child("CIM").child("MESSAGE").child("SIMPLERSP").child("IMETHODRESPONSE");
    if (!response || response.child("ERROR")) return -1;
    long count = 0;
    for (pugi::xml_node object : response.child("IRETURNVALUE").children()) {
        if (object.type() == pugi::node_element) ++count;
    }
    return count;
}

struct Totals {
    std::atomic<long> next{0};
    std::atomic<long> done{0};
    std::atomic<long> failed{0};
    std::atomic<long> objects{0};
};

void run_client(const Options &options, const std::string &operation, const std::string &body,
                Totals &totals) {
    httplib::Client client(options.url);
    client.set_keep_alive(true);
    client.set_read_timeout(60);
    if (!options.user.empty()) client.set_basic_auth(options.user, options.password);
    const httplib::Headers headers = {{"CIMOperation", "MethodCall"},
                                      {"CIMMethod", operation},
                                      {"CIMObject", "root%2Fcimv2"},
                                      {"CIMProtocolVersion", "1.0"}};
    while (totals.next.fetch_add(1) < options.requests) {
        const auto reply =
            client.Post("/cimom", headers, body, "application/xml; charset=\"utf-8\"");
        long objects = -1;
        if (reply && reply->status == 200) objects = objects_in(reply->body);
        if (objects < 0) {
            ++totals.failed;
        } else {
            totals.objects += objects;
        }
        ++totals.done;
    }
}

}  // namespace

int main(int argc, char **argv) {
    const Options options = parse_options(argc, argv);
    const std::string operation =
        options.op == "ei" ? "EnumerateInstances" : "EnumerateInstanceNames";
    const std::string body = request_body(options, operation);

    Totals totals;
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::thread> clients;
    for (int i = 0; i < options.clients; ++i)
        clients.emplace_back(run_client, std::cref(options), std::cref(operation), std::cref(body),
                             std::ref(totals));
    for (auto &client : clients) client.join();
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    const long done = totals.done.load();
    std::printf("%s %s: %ld requests by %d clients in %.3f s, %ld failed\n", operation.c_str(),
                options.class_name.c_str(), done, options.clients, seconds, totals.failed.load());
    std::printf("%.1f requests/s, %.1f objects/s (%ld objects)\n", done / seconds,
                totals.objects.load() / seconds, totals.objects.load());
    return totals.failed.load() == 0 ? 0 : 1;
}
