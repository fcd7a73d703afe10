// CMPIArgs and CMPIContext: named values in insertion order.
#include "host/objects.h"

namespace cmpihost::detail {

namespace {

// What a lookup of a missing item answers, per getter.
constexpr CMPIrc kMissingArg = CMPI_RC_ERR_NOT_FOUND;
constexpr CMPIrc kMissingArgAt = CMPI_RC_ERR_NO_SUCH_PROPERTY;
constexpr CMPIrc kMissingEntry = CMPI_RC_ERR_NO_SUCH_PROPERTY;

template <class State>
NamedValues *valuesOf(const typename State::CmpiType *object);
template <>
NamedValues *valuesOf<ArgsState>(const CMPIArgs *args) {
    auto *state = stateOf<ArgsState>(args);
    return state ? &state->args : nullptr;
}
template <>
NamedValues *valuesOf<ContextState>(const CMPIContext *context) {
    auto *state = stateOf<ContextState>(context);
    return state ? &state->entries : nullptr;
}

template <class State>
CMPIStatus addSlot(const typename State::CmpiType *object, const char *name, const CMPIValue *value,
                   CMPIType type) {
    NamedValues *values = valuesOf<State>(object);
    if (values == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    Arena &arena = *stateOf<State>(object)->arena;
    return guardStatus([&] { return makeStatus(values->put(arena, name, value, type)); });
}

template <class State, CMPIrc Missing>
CMPIData getSlot(const typename State::CmpiType *object, const char *name, CMPIStatus *rc) {
    return getNamed(valuesOf<State>(object), name, rc, Missing);
}

template <class State, CMPIrc Missing>
CMPIData getAtSlot(const typename State::CmpiType *object, unsigned int index, CMPIString **name,
                   CMPIStatus *rc) {
    return guard(rc, notFoundData(),
                 [&] { return getNamedAt(valuesOf<State>(object), index, name, rc, Missing); });
}

template <class State>
unsigned int countSlot(const typename State::CmpiType *object, CMPIStatus *rc) {
    NamedValues *values = valuesOf<State>(object);
    setStatus(rc, values ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return values ? static_cast<unsigned int>(values->items.size()) : 0;
}

// addEntry takes a non-const context in the 1.0 table.
CMPIStatus contextAddEntry(CMPIContext *ctx, const char *name, const CMPIValue *value,
                           CMPIType type) {
    return addSlot<ContextState>(ctx, name, value, type);
}

constexpr CMPIArgsFT kArgsTable = {
    CMPICurrentVersion,   releaseSlot<ArgsState>,          cloneSlot<ArgsState, cloneArgs>,
    addSlot<ArgsState>,   getSlot<ArgsState, kMissingArg>, getAtSlot<ArgsState, kMissingArgAt>,
    countSlot<ArgsState>,
};

constexpr CMPIContextFT kContextTable = {
    CMPICurrentVersion,
    releaseSlot<ContextState>,
    cloneSlot<ContextState, cloneContext>,
    getSlot<ContextState, kMissingEntry>,
    getAtSlot<ContextState, kMissingEntry>,
    countSlot<ContextState>,
    contextAddEntry,
};

}  // namespace

ArgsState::ArgsState() : Object(&kArgsTable) {}
const CMPIArgsFT *ArgsState::table() {
    return &kArgsTable;
}

ContextState::ContextState() : Object(&kContextTable) {}
const CMPIContextFT *ContextState::table() {
    return &kContextTable;
}

CMPIArgs *makeArgs(Arena &arena) {
    return arena.make<ArgsState>()->cmpi();
}

CMPIContext *makeContext(Arena &arena) {
    return arena.make<ContextState>()->cmpi();
}

CMPIArgs *cloneArgs(Arena &arena, const CMPIArgs *a) {
    auto *source = stateOf<ArgsState>(a);
    if (source == nullptr) return nullptr;
    auto *copy = arena.make<ArgsState>();
    return copy->args.copyFrom(arena, source->args) == CMPI_RC_OK ? copy->cmpi() : nullptr;
}

CMPIContext *cloneContext(Arena &arena, const CMPIContext *c) {
    auto *source = stateOf<ContextState>(c);
    if (source == nullptr) return nullptr;
    auto *copy = arena.make<ContextState>();
    return copy->entries.copyFrom(arena, source->entries) == CMPI_RC_OK ? copy->cmpi() : nullptr;
}

}  // namespace cmpihost::detail
