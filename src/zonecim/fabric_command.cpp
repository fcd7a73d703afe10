#include "zonecim/fabric_command.h"

#include <climits>
#include <cstdio>
#include <memory>
#include <string>

#include "zonecim/path_syntax.h"

#if ZONECIM_HAVE_FABRIC
#include "sim/fabric.h"
#include "sim/sim_errors.h"
#include "sim/store.h"
#endif

namespace zonecim {

#if ZONECIM_HAVE_FABRIC

namespace {

// The switch database of ZONE_SIM_DB, or null after saying why not.
std::unique_ptr<zonesim::Store> open_store() {
    const std::string path = zonesim::Store::defaultPath();
    auto opened = zonesim::Store::open(path);
    if (!opened.store) {
        std::fprintf(
            stderr, "zonecim: can't open the switch database %s: %s\n", path.c_str(),
            opened.message.empty() ? zonesim::errorText(opened.code) : opened.message.c_str());
    }
    return std::move(opened.store);
}

int count_setting(const std::optional<unsigned> &given, int fallback, const char *option) {
    if (!given) return fallback;
    if (*given > static_cast<unsigned>(INT_MAX))
        throw UsageError(std::string(option) + " " + std::to_string(*given) + " is too large");
    return static_cast<int>(*given);
}

int load_text(zonesim::Store &store, const std::string &text, const std::string &origin) {
    zonesim::FabricError error;
    if (zonesim::loadFabricText(store, text, &error) == 0) return 0;
    std::fprintf(stderr, "zonecim: %s: %s\n", origin.c_str(), error.describe().c_str());
    return 1;
}

}  // namespace

int fabric_load(const std::string &file, OutputChannel &) {
    auto store = open_store();
    if (!store) return 1;
    zonesim::FabricError error;
    if (zonesim::loadFabric(*store, file, &error) == 0) return 0;
    std::fprintf(stderr, "zonecim: can't load %s: %s\n", file.c_str(), error.describe().c_str());
    return 1;
}

int fabric_dump(OutputChannel &out) {
    auto store = open_store();
    if (!store) return 1;
    std::string text;
    if (const int code = zonesim::dumpFabricText(*store, &text); code != 0) {
        std::fprintf(stderr, "zonecim: can't dump the fabric: %s\n", zonesim::errorText(code));
        return 1;
    }
    if (!text.empty() && text.back() == '\n') text.pop_back();
    out.line(text);
    return 0;
}

// The generated fabric replaces the database's; `fabric dump` shows it.
int fabric_generate(const FabricGenerateOptions &options, OutputChannel &) {
    zonesim::GeneratorSettings settings;
    if (options.seed) settings.seed = *options.seed;
    settings.vsans = count_setting(options.vsans, settings.vsans, "--vsans");
    settings.zone_sets = count_setting(options.zone_sets, settings.zone_sets, "--zonesets");
    settings.zones = count_setting(options.zones, settings.zones, "--zones");
    settings.aliases = count_setting(options.aliases, settings.aliases, "--aliases");
    settings.members_per_zone =
        count_setting(options.members, settings.members_per_zone, "--members");
    settings.device_aliases =
        count_setting(options.device_aliases, settings.device_aliases, "--device-aliases");
    const std::string text = zonesim::generateFabric(settings);
    if (text.empty()) throw UsageError("these generator settings are out of range");
    auto store = open_store();
    if (!store) return 1;
    return load_text(*store, text, "the generated fabric");
}

#else  // no fabric library in this build

namespace {

int not_available() {
    std::fprintf(stderr,
                 "zonecim: fabric commands are not available: this build has no fabric library "
                 "of the simulated switch\n");
    return 1;
}

}  // namespace

int fabric_load(const std::string &, OutputChannel &) {
    return not_available();
}
int fabric_dump(OutputChannel &) {
    return not_available();
}
int fabric_generate(const FabricGenerateOptions &, OutputChannel &) {
    return not_available();
}

#endif

}  // namespace zonecim
