// One CIM operation of zonecim, run in-process against a loaded provider
// and printed as wbemcli prints the answer of a CIM server.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/cmpihost.h"
#include "schema/schema.h"
#include "zonecim/output_channel.h"

namespace zonecim {

// wbemcli's verbs that zonecim runs.
enum class Verb {
    EnumInstanceNames,  // ein
    EnumInstances,      // ei
    GetInstance,        // gi
    DeleteInstance,     // di
    AssociatorNames,    // ain
    Associators,        // ai
    ReferenceNames,     // rin
    References,         // ri
    CallMethod,         // cm
};

struct VerbInfo {
    std::string_view name;
    Verb verb;
    std::string_view summary;
    bool takes_property_list;
    bool takes_association_filters;  // -ac, -arc, -ar, -arr
    bool takes_reference_filters;    // -arc, -ar
};

// Every verb, in the order the help lists them.
const std::vector<VerbInfo> &verbs();

struct Operation {
    Verb verb = Verb::EnumInstanceNames;
    std::string path;
    std::optional<std::string> assoc_class;              // -ac
    std::optional<std::string> result_class;             // -arc
    std::optional<std::string> role;                     // -ar
    std::optional<std::string> result_role;              // -arr
    std::optional<std::vector<std::string>> properties;  // -pl; absent: all
    std::string method_call;                             // cm: Method[.Param=value,...]
};

// Loads the provider; null after saying on standard error why it can't.
using ProviderLoader = std::function<std::unique_ptr<cmpihost::Provider>()>;

// Reads the operation's path and arguments (throwing UsageError for input
// that can't be sent, before any provider is loaded), loads the provider and
// runs the operation. Results go to out, a failed status to standard error
// as wbemcli reports it. Returns 0 when the provider answered rc 0, 1
// otherwise or when it could not be loaded.
int run_operation(const ProviderLoader &load, const zoneschema::Schema &schema,
                  const Operation &operation, OutputChannel &out);

}  // namespace zonecim
