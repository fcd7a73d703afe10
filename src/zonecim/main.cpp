// zonecim: runs one CIM operation of the zone provider in-process, with
// wbemcli's verbs, object-path syntax, options and output, or manages the
// simulated switch's fabric.
//
//   zonecim [--provider PATH] [--trace] VERB [options] PATH [args]
//   zonecim fabric load FILE | dump | generate [--seed N ...]
//   zonecim serve [--listen ADDRESS:PORT] [--user NAME --password-file FILE]
//
// Exit status: 0 when the provider answered rc 0, 1 when it answered
// anything else (or could not be loaded), 2 for wrong usage.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/cmpihost.h"
#include "schema/schema.h"
#include "zonecim/fabric_command.h"
#include "zonecim/operations.h"
#include "zonecim/output_channel.h"
#include "zonecim/path_syntax.h"
#ifdef ZONECIM_HAVE_SERVER
#include "server/server.h"
#endif

#ifndef ZONECIM_DEFAULT_PROVIDER
#error "ZONECIM_DEFAULT_PROVIDER must name the built provider library"
#endif

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// wbemcli spells its long options with one dash; CLI11 wants two.
struct OptionSpelling {
    std::string_view wbemcli;
    std::string_view ours;
};
static constexpr OptionSpelling kWbemcliOptions[] = {
    {"-ac", "--ac"}, {"-arc", "--arc"}, {"-ar", "--ar"}, {"-arr", "--arr"}, {"-pl", "--pl"},
};

std::vector<std::string> arguments_in_our_spelling(int argc, char **argv) {
    std::vector<std::string> args;
    for (int i = argc - 1; i > 0; --i) {  // CLI11 takes them in reverse
        std::string arg = argv[i];
        for (const auto &spelling : kWbemcliOptions) {
            if (arg == spelling.wbemcli) arg = spelling.ours;
        }
        args.push_back(std::move(arg));
    }
    return args;
}

// CLI11 answers an unknown verb with "a subcommand is required"; say what
// is wrong instead. The verb is the first word that is neither an option
// nor the value of --provider.
void check_verb(const std::vector<std::string> &reversed_args) {
    for (auto it = reversed_args.rbegin(); it != reversed_args.rend(); ++it) {
        if (*it == "--provider") {
            if (++it == reversed_args.rend()) return;
            continue;
        }
        if (it->empty() || (*it)[0] == '-') continue;
        if (*it == "fabric" || *it == "serve") return;
        std::string known;
        for (const auto &info : zonecim::verbs()) {
            if (*it == info.name) return;
            known += std::string(info.name) + ", ";
        }
        throw zonecim::UsageError("unknown verb '" + *it + "'; the verbs are " + known +
                                  "and fabric");
    }
}

struct Command {
    std::string provider = ZONECIM_DEFAULT_PROVIDER;
    bool trace = false;
    zonecim::Operation operation;
    CLI::App *verb = nullptr;
    std::string property_text;  // -pl, or the trailing property list
    std::string fabric_file;
    zonecim::FabricGenerateOptions generate;
};

void add_verb(CLI::App &app, const zonecim::VerbInfo &info, Command &command) {
    CLI::App *sub = app.add_subcommand(std::string(info.name), std::string(info.summary));
    sub->fallthrough();
    sub->add_option("path", command.operation.path,
                    "object path: [http://host:port/][namespace:]Class[.Key=value,...]")
        ->required();
    if (info.verb == zonecim::Verb::CallMethod) {
        sub->add_option("method", command.operation.method_call,
                        "Method[.Param=value,...]; references as Class.Key=\"value\"")
            ->required();
    }
    if (info.takes_property_list) {
        sub->add_option("properties", command.property_text, "property list: Name,Name,...");
        sub->add_option("--pl", command.property_text, "property list: Name,Name,...");
    }
    if (info.takes_association_filters || info.takes_reference_filters) {
        sub->add_option(
            "--arc", command.operation.result_class,
            info.takes_reference_filters ? "association class (ResultClass)" : "result class");
        sub->add_option("--ar", command.operation.role, "role");
    }
    // rin and ri accept -ac and -arr only to say what to use instead.
    sub->add_option("--ac", command.operation.assoc_class, "association class")
        ->group(info.takes_association_filters ? "Options" : "");
    sub->add_option("--arr", command.operation.result_role, "result role")
        ->group(info.takes_association_filters ? "Options" : "");
    sub->callback([&command, sub, info] {
        command.verb = sub;
        command.operation.verb = info.verb;
    });
}

void add_fabric(CLI::App &app, Command &command) {
    CLI::App *fabric =
        app.add_subcommand("fabric", "the simulated switch's fabric (database: ZONE_SIM_DB)");
    fabric->require_subcommand(1);
    CLI::App *load = fabric->add_subcommand("load", "replace the fabric with a JSON description");
    load->add_option("file", command.fabric_file, "fabric description (JSON)")->required();
    fabric->add_subcommand("dump", "print the fabric as JSON");
    CLI::App *generate =
        fabric->add_subcommand("generate", "fill the fabric with generated objects");
    auto &g = command.generate;
    generate->add_option("--seed", g.seed, "random seed");
    generate->add_option("--vsans", g.vsans, "number of VSANs");
    generate->add_option("--zonesets", g.zone_sets, "zone sets");
    generate->add_option("--zones", g.zones, "zones");
    generate->add_option("--aliases", g.aliases, "zone aliases");
    generate->add_option("--members", g.members, "members per zone");
    generate->add_option("--device-aliases", g.device_aliases, "device aliases");
}

void check_filters(const Command &command) {
    const auto &op = command.operation;
    const bool reference_verb =
        op.verb == zonecim::Verb::ReferenceNames || op.verb == zonecim::Verb::References;
    if (reference_verb && op.assoc_class)
        throw zonecim::UsageError(command.verb->get_name() +
                                  " takes the association class with -arc, not -ac");
    if (reference_verb && op.result_role)
        throw zonecim::UsageError(command.verb->get_name() +
                                  " takes no -arr: use -ar for the role");
}

#ifdef ZONECIM_HAVE_SERVER
// ---- zonecim serve: the provider behind CIM-XML over HTTP (src/server) ----
struct ServeCommand {
    zoneserver::ServeOptions options;
    std::string user;
    std::string password_file;
    CLI::App *sub = nullptr;
};

void add_serve(CLI::App &app, ServeCommand &serve) {
    serve.sub =
        app.add_subcommand("serve", "serve the provider to CIM clients (CIM-XML over HTTP)");
    serve.sub->fallthrough();
    serve.sub
        ->add_option("--listen", serve.options.listen, "ADDRESS:PORT to listen on (port 0: any)")
        ->capture_default_str();
    serve.sub->add_option("--user", serve.user, "user name clients must give (HTTP Basic)");
    serve.sub->add_option("--password-file", serve.password_file,
                          "file whose first line is that user's password");
    serve.sub->add_option("--threads", serve.options.threads, "worker threads")
        ->capture_default_str();
}

int run_serve(ServeCommand &serve, const Command &command) {
    serve.options.provider = command.provider;
    serve.options.trace = command.trace;
    if (serve.sub->count("--user") > 0) serve.options.user = serve.user;
    if (serve.sub->count("--password-file") > 0) serve.options.password_file = serve.password_file;
    return zoneserver::serve(serve.options);
}
#endif

int run_fabric(CLI::App &fabric, Command &command) {
    zonecim::OutputChannel out(command.trace);
    if (fabric.got_subcommand("load")) return zonecim::fabric_load(command.fabric_file, out);
    if (fabric.got_subcommand("dump")) return zonecim::fabric_dump(out);
    return zonecim::fabric_generate(command.generate, out);
}

// How often an option of the verb was given; 0 for options it doesn't have.
std::size_t given(const CLI::App &verb, const std::string &name) {
    const CLI::Option *option = verb.get_option_no_throw(name);
    return option == nullptr ? 0 : option->count();
}

int run_verb(Command &command) {
    check_filters(command);
    const std::size_t listed = given(*command.verb, "--pl") + given(*command.verb, "properties");
    if (listed > 1)
        throw zonecim::UsageError("give the property list once: with -pl or after the path");
    if (listed == 1)
        command.operation.properties = zonecim::parse_property_list(command.property_text);

    const zoneschema::Schema &schema = zoneschema::Schema::installed();
    zonecim::OutputChannel out(command.trace);
    auto load = [&command]() {
        std::string error;
        auto provider = cmpihost::Provider::load(command.provider, "ZoneProvider", &error);
        if (!provider) {
            std::fprintf(stderr, "zonecim: can't load the provider %s: %s\n",
                         command.provider.c_str(), error.c_str());
        }
        return provider;
    };
    return zonecim::run_operation(load, schema, command.operation, out);
}

}  // namespace

namespace {

int run_command_line(int argc, char **argv) {
    CLI::App app{
        "zonecim: one CIM operation of the zone provider, run in-process and printed "
        "as wbemcli prints it"};
    app.name("zonecim");
    app.require_subcommand(1);
    Command command;
    app.add_option("--provider", command.provider, "provider library to load")
        ->capture_default_str();
    app.add_flag("--trace", command.trace, "show the provider's trace lines on standard error");
    for (const auto &info : zonecim::verbs()) add_verb(app, info, command);
    add_fabric(app, command);
#ifdef ZONECIM_HAVE_SERVER
    ServeCommand serve;
    add_serve(app, serve);
#endif

    try {
        std::vector<std::string> args = arguments_in_our_spelling(argc, argv);
        check_verb(args);
        app.parse(args);
    } catch (const zonecim::UsageError &e) {
        std::fprintf(stderr, "zonecim: %s\n", e.what());
        return kExitUsage;
    } catch (const CLI::CallForHelp &e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp &e) {
        return app.exit(e);
    } catch (const CLI::ParseError &e) {
        app.exit(e);
        return kExitUsage;
    }

    try {
        if (CLI::App *fabric = app.get_subcommand("fabric"); fabric->parsed())
            return run_fabric(*fabric, command);
#ifdef ZONECIM_HAVE_SERVER
        if (serve.sub->parsed()) return run_serve(serve, command);
#endif
        return run_verb(command);
    } catch (const zonecim::UsageError &e) {
        std::fprintf(stderr, "zonecim: %s\n", e.what());
        return kExitUsage;
    } catch (const std::exception &e) {
        std::fprintf(stderr, "zonecim: %s\n", e.what());
        return kExitFailed;
    }
}

}  // namespace

int main(int argc, char **argv) {
    // Anything thrown while the command line is being set up (a failed
    // allocation, a library's own error) ends the command with a message.
    try {
        return run_command_line(argc, argv);
    } catch (const std::exception &e) {
        std::fprintf(stderr, "zonecim: %s\n", e.what());
    } catch (...) {
        std::fprintf(stderr, "zonecim: unexpected failure\n");
    }
    return kExitFailed;
}
