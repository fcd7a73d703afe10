// The in-process CMPI host: a broker with the encapsulated objects a
// provider uses, a loader that opens a provider library as a CIM object
// manager does, and a C++ API that runs the operations of its three
// function tables and records what came back.
//
// Ownership. A Request is an arena: every CMPI object the broker makes on a
// thread while a Request is current there (from its construction to its
// destruction) belongs to that Request and is released with it; providers
// never release them. Objects made while no Request is current belong to a
// process-wide arena released at exit. Requests on different threads run
// concurrently; a Request is used by one thread at a time.
//
// In detail:
// - release() on a broker object frees nothing (the arena does, later), so a
//   provider that releases what it made, or releases twice, is harmless.
//   clone() makes a deep copy in the current arena, released the same way.
// - Requests on one thread nest: the newest is current, and when it is
//   destroyed the one before it is current again (destroy them in reverse
//   order of construction, on the thread that made them).
// - While a Provider operation runs, the request it serves is current on
//   the calling thread, whatever was current before.
// - Values put into an object are deep copies owned by the object's arena:
//   strings copied, references, instances, arrays, args and date-times
//   cloned. CMPI_chars values are stored as CMPI_string, as getters report.
// - newInstance takes namespace, class, host and keys from its path, the
//   keys also as properties; getObjectPath gives a new path whose key
//   values follow the instance's properties of the same names. A property
//   filter drops later setProperty calls for unlisted, non-key properties.
// - Getters report misses as: getProperty/getPropertyAt, getKeyAt, getArgAt,
//   getEntry/getEntryAt, getElementAt CMPI_RC_ERR_NO_SUCH_PROPERTY; getKey,
//   getArg, getNext CMPI_RC_ERR_NOT_FOUND; a null or foreign object
//   CMPI_RC_ERR_INVALID_HANDLE; a null name CMPI_RC_ERR_INVALID_PARAMETER.
//   A null CMPIStatus* is accepted everywhere.
// - Broker up-calls (enumerateInstanceNames, ...) and newSelectExp answer
//   CMPI_RC_ERR_NOT_SUPPORTED; classPathIsA compares class names only.
#pragma once

#include <cmpidt.h>
#include <cmpift.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace cmpihost {

// The broker that every provider and builder in this process is given.
const CMPIBroker *broker();

// One object or value handed to a request's result, in delivery order.
// An instance or path of the request itself (or of the process arena) is
// recorded as the very object the provider handed over; one of another
// request is copied into this one first. Data keeps the type the provider
// gave: CMPI_chars stays chars (value.chars, a copy owned by the request).
struct Delivery {
    enum class Kind { Instance, ObjectPath, Data };
    Kind kind;
    const CMPIInstance *instance = nullptr;  // Kind::Instance, owned by the request
    const CMPIObjectPath *path = nullptr;    // Kind::ObjectPath, owned by the request
    CMPIData data{};                         // Kind::Data; chars/strings owned by the request
    int doneBefore = 0;                      // returnDone calls made before this delivery
};

class Request {
  public:
    Request();
    ~Request();
    Request(const Request &) = delete;
    Request &operator=(const Request &) = delete;

    const CMPIResult *result();
    const CMPIContext *context();

    // Objects owned by this request.
    CMPIObjectPath *newObjectPath(const std::string &ns, const std::string &cls);
    CMPIArgs *newArgs();

    const std::vector<Delivery> &deliveries() const;
    int doneCount() const;
    // Broker objects this request owns (its result and context included).
    std::size_t objectCount() const;

    struct Impl;
    Impl &impl();

  private:
    std::unique_ptr<Impl> impl_;
};

// Broker objects alive in the process, in every arena.
std::size_t liveObjectCount();

// ---- Helpers on CMPI objects (borrowed, nothing released) --------------
void addStringKey(CMPIObjectPath *path, const std::string &name, const std::string &value);
void addReferenceKey(CMPIObjectPath *path, const std::string &name, const CMPIObjectPath *ref);
void addStringArg(CMPIArgs *args, const std::string &name, const std::string &value);
void addReferenceArg(CMPIArgs *args, const std::string &name, const CMPIObjectPath *ref);
void addValueArg(CMPIArgs *args, const std::string &name, const CMPIValue &value, CMPIType type);

// Text of a CMPIString (empty for null).
std::string text(const CMPIString *s);
// wbemcli's form of a path: host/ns:Class.Key="value",Ref="ns:Class.Key=\"v\""
// (host part only when the path has a host name; no namespace, no "ns:").
// Key values as in instanceToString; inside quotes '"' and '\' are escaped
// with a backslash.
std::string pathToString(const CMPIObjectPath *path);
// wbemcli's form of an instance: its path, a space, then Prop=value,... in
// the order the properties were set: strings quoted, numbers and booleans
// (true/false) bare, arrays as comma lists ("p","q" or 1,2), references as
// quoted paths, null values and empty arrays as nothing (P=).
std::string instanceToString(const CMPIInstance *instance);
// Parses "[http://h:p/]ns:Class[.Key=value,...]" (values quoted strings,
// numbers, or quoted paths for references) into a new path of the current
// request; nullopt and a reason on bad syntax ("... at position N",
// counted from 0). Any host prefix (http://h:p/, //h/, h:p/) is skipped.
// Unquoted values: integers as sint64 (uint64 beyond), true/false as
// boolean, reals as real64, text holding '=' as a reference, else a string.
// A quoted value is a reference when its text starts like one
// ("[ns:]Class.key=") and parses as one; otherwise a string. Reads back
// every pathToString of a path without host.
std::optional<CMPIObjectPath *> parsePath(const std::string &text, std::string *error);
// One value as instanceToString writes it (strings quoted, null empty).
std::string valueToString(const CMPIData &data);
// The plain text of a value: the characters of a string or chars value
// unquoted, a reference as pathToString, anything else as valueToString.
std::string dataText(const CMPIData &data);
// What a method call returned: the text of the last string (or chars)
// value handed to the request's result; empty when there was none.
std::string returnedText(const Request &request);

// ---- Providers --------------------------------------------------------
struct Status {
    CMPIrc rc = CMPI_RC_OK;
    std::optional<std::string> message;  // absent when the status had no message
};

// A provider library opened with dlopen(RTLD_NOW | RTLD_GLOBAL); its
// <name>_Create_InstanceMI/AssociationMI/MethodMI factories are looked up by
// name and called with a status preset to OK.
// load() answers null, with the reason in *error, when dlopen fails (its
// dlerror text), a factory is missing ("<symbol> not found: " + dlerror
// text), returns no MI, leaves its status not OK ("<symbol> failed: rc N:
// msg") or gives an MI of a CMPI version above 1.0. Destroying the Provider
// closes the library without calling cleanup (cleanupAll is the caller's).
// An operation whose MI slot is null answers CMPI_RC_ERR_NOT_SUPPORTED.
class Provider {
  public:
    static std::unique_ptr<Provider> load(const std::string &library, const std::string &name,
                                          std::string *error);
    ~Provider();

    CMPIInstanceMI *instanceMI() const;
    CMPIAssociationMI *associationMI() const;
    CMPIMethodMI *methodMI() const;

    // Each runs one operation in the given request and returns its status;
    // what was delivered is in request.deliveries().
    Status enumInstanceNames(Request &request, const CMPIObjectPath *op) const;
    Status enumInstances(Request &request, const CMPIObjectPath *op, const char **props) const;
    Status getInstance(Request &request, const CMPIObjectPath *op, const char **props) const;
    Status createInstance(Request &request, const CMPIObjectPath *op,
                          const CMPIInstance *inst) const;
    Status modifyInstance(Request &request, const CMPIObjectPath *op, const CMPIInstance *inst,
                          const char **props) const;
    Status deleteInstance(Request &request, const CMPIObjectPath *op) const;
    Status execQuery(Request &request, const CMPIObjectPath *op, const char *query,
                     const char *lang) const;
    Status associators(Request &request, const CMPIObjectPath *op, const char *assocClass,
                       const char *resultClass, const char *role, const char *resultRole,
                       const char **props) const;
    Status associatorNames(Request &request, const CMPIObjectPath *op, const char *assocClass,
                           const char *resultClass, const char *role, const char *resultRole) const;
    Status references(Request &request, const CMPIObjectPath *op, const char *resultClass,
                      const char *role, const char **props) const;
    Status referenceNames(Request &request, const CMPIObjectPath *op, const char *resultClass,
                          const char *role) const;
    // out receives the output arguments (owned by the request).
    Status invokeMethod(Request &request, const CMPIObjectPath *op, const char *method,
                        const CMPIArgs *in, CMPIArgs *out) const;
    Status cleanupAll(bool terminating) const;

    struct Impl;

  private:
    explicit Provider(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

// Status -> "rc N" / message text helpers for tests and the command:
// "rc 6 (CMPI_RC_ERR_NOT_FOUND): the message" (": ..." only with a message).
std::string describe(const Status &status);
// "CMPI_RC_ERR_NOT_FOUND" for 6; "unknown rc" for a code CMPI 1.0 lacks.
const char *rcName(CMPIrc rc);

}  // namespace cmpihost
