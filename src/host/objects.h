// The encapsulated objects of the broker, as the host's own code sees them.
//
// Each object is a Node of some arena holding the { hdl, ft } pair a
// provider sees. hdl leads back to the node: it is the node itself, except
// for a CMPIString, whose hdl must be its characters (CMGetCharPtr reads
// it); those are stored right behind a pointer back to the node. Before
// trusting a pair, table functions check that its ft is the host's own
// table and that hdl leads to a node holding this very pair, so a null
// object, an object of another kind, or a by-value copy of a pair is
// refused with CMPI_RC_ERR_INVALID_HANDLE instead of being misread.
//
// Values put into an object are deep copies owned by the object's arena:
// strings are copied, and references, embedded instances, arrays, args and
// date-times are cloned, so a container never points into another arena
// and later changes to the original do not show through it. Getters hand
// out the stored objects themselves (valid as long as the container's
// arena), except the names of getXxxAt, which are new strings of the
// current arena.
#pragma once

#include <cmpidt.h>
#include <cmpift.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/arena.h"

namespace cmpihost::detail {

template <class Cmpi, class Table>
struct Object : Node {
    using CmpiType = Cmpi;
    using TableType = Table;

    explicit Object(const Table *table) {
        pair.hdl = static_cast<Node *>(this);
        pair.ft = const_cast<Table *>(table);  // the tables are never written
    }
    Cmpi *cmpi() { return &pair; }
    const Cmpi *cmpi() const { return &pair; }

    Cmpi pair;
};

// The node an hdl leads to (every kind but CMPIString).
template <class State>
State *stateFromHdl(void *hdl) {
    return static_cast<State *>(static_cast<Node *>(hdl));
}

// The state behind a CMPI object made by this host, or null when the
// pointer is null, has a null hdl, uses another table or is not the pair
// its node holds.
template <class State>
State *stateOf(const typename State::CmpiType *object) {
    if (object == nullptr || object->hdl == nullptr || object->ft != State::table()) {
        return nullptr;
    }
    State *state = State::fromHdl(object->hdl);
    return state->cmpi() == object ? state : nullptr;
}

// ---- Status and data helpers -----------------------------------------

inline CMPIStatus makeStatus(CMPIrc rc) {
    return CMPIStatus{rc, nullptr};
}
inline void setStatus(CMPIStatus *status, CMPIrc rc) {
    if (status != nullptr) *status = makeStatus(rc);
}
CMPIData nullData(CMPIType type = CMPI_null);
// What a getter answers for a missing item.
CMPIData notFoundData();

// Runs the body of a table function: an exception (only std::bad_alloc can
// occur) becomes CMPI_RC_ERR_FAILED instead of crossing into C code.
template <class R, class Fn>
R guard(CMPIStatus *rc, R fallback, Fn &&body) noexcept {
    try {
        return body();
    } catch (...) {
        setStatus(rc, CMPI_RC_ERR_FAILED);
        return fallback;
    }
}
template <class Fn>
CMPIStatus guardStatus(Fn &&body) noexcept {
    try {
        return body();
    } catch (...) {
        return makeStatus(CMPI_RC_ERR_FAILED);
    }
}

// Case-insensitive comparison of CIM names.
bool sameName(std::string_view a, std::string_view b);

// Whether a type code is one the host can store (arrays included).
bool isKnownType(CMPIType type);

// Turns an input value (CMPI's convention: for CMPI_chars the pointer is the
// text itself) into data owned by `arena`. chars become CMPI_string; objects
// are cloned; a null value or null object pointer gives a null value.
CMPIrc storeValue(Arena &arena, const CMPIValue *value, CMPIType type, CMPIData *out);
// Deep copy of stored data into `arena`.
CMPIrc copyData(Arena &arena, const CMPIData &data, CMPIData *out);

// Name/value list of instances (properties), paths (keys), args and
// contexts (entries): insertion order, names matched case-insensitively,
// a second put of a name replaces the value in place.
struct NamedValues {
    std::vector<std::pair<std::string, CMPIData>> items;

    const CMPIData *find(std::string_view name) const;
    CMPIData *find(std::string_view name);
    CMPIrc put(Arena &arena, const char *name, const CMPIValue *value, CMPIType type);
    CMPIrc copyFrom(Arena &arena, const NamedValues &other);
};

// Shared bodies of getXxx(name) and getXxxAt(index, &name).
CMPIData getNamed(const NamedValues *values, const char *name, CMPIStatus *rc, CMPIrc missing);
CMPIData getNamedAt(const NamedValues *values, unsigned int index, CMPIString **name,
                    CMPIStatus *rc, CMPIrc missing);

// ---- Objects -----------------------------------------------------------

// The characters live in one block behind a pointer to their node:
// [address of the StringState][text][NUL], hdl pointing at the text. The block is memory
// of the node's arena (Arena::allocate), of kBlockOverhead + text size bytes.
struct StringState : Object<CMPIString, CMPIStringFT> {
    static constexpr std::size_t kBlockOverhead = sizeof(std::uintptr_t) + 1;
    StringState(std::string_view text, char *block);
    static const CMPIStringFT *table();
    static StringState *fromHdl(void *hdl);
    char *chars() const { return block + sizeof(std::uintptr_t); }
    std::string_view text() const { return {chars(), length}; }

    char *block;
    std::size_t length;
};

struct ArrayState : Object<CMPIArray, CMPIArrayFT> {
    ArrayState(CMPICount size, CMPIType elementType);
    static const CMPIArrayFT *table();
    static ArrayState *fromHdl(void *hdl) { return stateFromHdl<ArrayState>(hdl); }
    CMPIType elementType;
    std::vector<CMPIData> elements;
};

struct PathState : Object<CMPIObjectPath, CMPIObjectPathFT> {
    PathState();
    static const CMPIObjectPathFT *table();
    static PathState *fromHdl(void *hdl) { return stateFromHdl<PathState>(hdl); }
    std::string nameSpace, host, className;
    NamedValues keys;
};

struct InstanceState : Object<CMPIInstance, CMPIInstanceFT> {
    InstanceState();
    static const CMPIInstanceFT *table();
    static InstanceState *fromHdl(void *hdl) { return stateFromHdl<InstanceState>(hdl); }
    CMPIObjectPath *path = nullptr;  // same arena
    NamedValues properties;
    bool filtered = false;
    std::vector<std::string> accepted;  // property list plus key list, when filtered
};

struct ArgsState : Object<CMPIArgs, CMPIArgsFT> {
    ArgsState();
    static const CMPIArgsFT *table();
    static ArgsState *fromHdl(void *hdl) { return stateFromHdl<ArgsState>(hdl); }
    NamedValues args;
};

struct ContextState : Object<CMPIContext, CMPIContextFT> {
    ContextState();
    static const CMPIContextFT *table();
    static ContextState *fromHdl(void *hdl) { return stateFromHdl<ContextState>(hdl); }
    NamedValues entries;
};

struct DateTimeState : Object<CMPIDateTime, CMPIDateTimeFT> {
    DateTimeState(CMPIUint64 micros, bool interval);
    static const CMPIDateTimeFT *table();
    static DateTimeState *fromHdl(void *hdl) { return stateFromHdl<DateTimeState>(hdl); }
    CMPIUint64 micros;
    bool interval;
};

struct EnumerationState : Object<CMPIEnumeration, CMPIEnumerationFT> {
    EnumerationState();
    static const CMPIEnumerationFT *table();
    static EnumerationState *fromHdl(void *hdl) { return stateFromHdl<EnumerationState>(hdl); }
    std::vector<CMPIData> items;
    std::size_t next = 0;
};

// ---- Factories (the object belongs to `arena`) ---------------------------

CMPIString *makeString(Arena &arena, std::string_view text);
// elementType without CMPI_ARRAY; chars elements are kept as strings.
CMPIArray *makeArray(Arena &arena, CMPICount size, CMPIType elementType);
CMPIObjectPath *makePath(Arena &arena, std::string_view ns, std::string_view className);
// Namespace, class, host and keys (also set as properties) come from `path`.
CMPIInstance *makeInstance(Arena &arena, const CMPIObjectPath *path);
CMPIArgs *makeArgs(Arena &arena);
CMPIContext *makeContext(Arena &arena);
CMPIDateTime *makeDateTime(Arena &arena, CMPIUint64 micros, bool interval);
// Items are deep-copied into the arena.
CMPIEnumeration *makeEnumeration(Arena &arena, const std::vector<CMPIData> &items);

// Deep copies; null for a null or foreign object.
CMPIString *cloneString(Arena &arena, const CMPIString *s);
CMPIArray *cloneArray(Arena &arena, const CMPIArray *a);
CMPIObjectPath *clonePath(Arena &arena, const CMPIObjectPath *p);
CMPIInstance *cloneInstance(Arena &arena, const CMPIInstance *i);
CMPIArgs *cloneArgs(Arena &arena, const CMPIArgs *a);
CMPIContext *cloneContext(Arena &arena, const CMPIContext *c);
CMPIDateTime *cloneDateTime(Arena &arena, const CMPIDateTime *d);
CMPIEnumeration *cloneEnumeration(Arena &arena, const CMPIEnumeration *e);

// The request results (request.cpp): their table and the arena of one.
const void *resultTable();
Arena *resultArena(const void *object);

// The arena that owns a host object (any kind), null for a foreign one.
Arena *arenaOf(const void *object);

// ---- Text ----------------------------------------------------------------

// The path of an instance with its key values taken from the instance's
// properties of the same names, as getObjectPath builds it.
NamedValues refreshedKeys(const InstanceState &instance);
std::string renderPath(const PathState &path, const NamedValues &keys);
// One value as printed in a key list or an instance (strings quoted).
std::string renderValue(const CMPIData &data);
// CIM datetime text of a binary datetime.
std::string dateTimeText(CMPIUint64 micros, bool interval);
// Parses CIM datetime text; false on bad syntax.
bool parseDateTime(std::string_view text, CMPIUint64 *micros, bool *interval);

// ---- Slots every object table shares ------------------------------------

// release(): broker objects live until their arena dies, so it only checks
// the handle (a provider that releases what it was given frees nothing).
template <class State>
CMPIStatus releaseSlot(typename State::CmpiType *object) {
    return makeStatus(stateOf<State>(object) ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
}

// clone(): a deep copy in the current arena.
template <class State, auto Clone>
typename State::CmpiType *cloneSlot(const typename State::CmpiType *object, CMPIStatus *rc) {
    if (stateOf<State>(object) == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_HANDLE);
        return nullptr;
    }
    return guard(rc, static_cast<typename State::CmpiType *>(nullptr), [&] {
        auto *copy = Clone(currentArena(), object);
        setStatus(rc, copy ? CMPI_RC_OK : CMPI_RC_ERR_FAILED);
        return copy;
    });
}

}  // namespace cmpihost::detail
