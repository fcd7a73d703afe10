// zonecim fabric load|dump|generate: the simulated switch's fabric, read
// from or written to the switch database that ZONE_SIM_DB names.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "zonecim/output_channel.h"

namespace zonecim {

struct FabricGenerateOptions {
    std::optional<std::uint64_t> seed;
    std::optional<unsigned> vsans;
    std::optional<unsigned> zone_sets;
    std::optional<unsigned> zones;
    std::optional<unsigned> aliases;
    std::optional<unsigned> members;  // per zone
    std::optional<unsigned> device_aliases;
};

// Each returns the exit status of the command: 0 done, 1 failed (the
// reason on standard error). load replaces the database's whole state with
// the file's; dump prints the state as a fabric file; generate replaces the
// state with a generated fabric (options not given keep the generator's
// defaults).
int fabric_load(const std::string &file, OutputChannel &out);
int fabric_dump(OutputChannel &out);
int fabric_generate(const FabricGenerateOptions &options, OutputChannel &out);

}  // namespace zonecim
