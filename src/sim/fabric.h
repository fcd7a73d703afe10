// Fabric files: the whole state of the simulated switch as JSON, to load,
// to dump, and to generate at any size.
//
//   {
//     "version": 1,                                  (optional; 1 when given)
//     "switch_name": "switch-sim-01",
//     "limits": {"zone_sets": 1000, "zones": 16000, "aliases": 8000,
//                "members": 32000, "device_aliases": 20000},   (optional, each key too)
//     "vsans": [
//       {"number": 10, "name": "VSAN0010",
//        "domain": {"id": 10, "switch_wwn": "30:0a:00:00:00:00:00:01",
//                   "principal_wwn": "30:0a:00:00:00:00:00:01"},   (null or absent: none)
//        "next_number": 12,                          (optional)
//        "full":   {"zone_sets": [...], "zones": [...], "aliases": [...]},
//        "active": {"zone_sets": [...], "zones": [...], "aliases": [...]}}
//     ],
//     "device_aliases": [{"name": "host1_hba0", "pwwn": "31:00:00:00:00:4c:a1:b2"}]
//   }
//
// In a database: zone sets {"name", "number"?, "zones": [zone names]}, zones
// {"name", "number"?, "members": [...], "aliases": [alias names]}, aliases
// {"name", "number"?, "members": [...]}; a member is {"type": <CIM member
// type>, "id": "<identifier text>"}. Names are looked up in the same
// database. Objects are created in file order. An object without a number
// gets the next free one of its VSAN; an active object without a number
// takes the number of the full database's object of the same kind and name
// when there is one, so that its InstanceID matches the editable copy's. The
// active database holds at most one zone set. Every key is checked: unknown
// keys, wrong types, clashing names or numbers, unknown references and
// members that the member type refuses all make the file malformed.
// Capacity limits apply to commands, not to loading.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "sim/store.h"

namespace zonesim {

// Why a fabric file was refused.
struct FabricError {
    int code = 0;            // simulator error code (kErrInvalidArgument when malformed)
    std::string pointer;     // JSON pointer of the offending value ("" for the document)
    std::size_t offset = 0;  // its byte offset in the file, from 0
    std::string message;     // what is wrong with it

    // "<pointer> at byte <offset>: <message>"
    std::string describe() const;
};

// Replaces the whole state of the database with the file's, in one
// transaction; nothing is written when the file is malformed or unreadable.
int loadFabric(Store &store, const std::string &file, FabricError *error);
int loadFabricText(Store &store, std::string_view text, FabricError *error);

// Writes the whole state in the same format (loadFabric reads it back to the
// same state, InstanceIDs included).
int dumpFabric(Store &store, const std::string &file, std::string *message);
int dumpFabricText(Store &store, std::string *text);

// A fabric of the given size, the same for the same settings. Objects are
// spread round-robin over the VSANs (1, 2, 3, ...); every zone is in one zone
// set of its VSAN and has members_per_zone members drawn from the VSAN's
// devices (port WWNs mostly, some FC IDs, domain-port and interface
// members); every alias holds one device and is in one zone; the first zone
// set of every VSAN is active.
struct GeneratorSettings {
    std::uint64_t seed = 1;
    int vsans = 1;
    int zone_sets = 1;
    int zones = 4;
    int aliases = 2;
    int members_per_zone = 2;
    int device_aliases = 4;
};
// The fabric as JSON text, for loadFabricText; an empty text when the
// settings are out of range (negative counts, more VSANs than 4092).
std::string generateFabric(const GeneratorSettings &settings);

}  // namespace zonesim
