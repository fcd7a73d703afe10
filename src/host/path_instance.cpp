// CMPIObjectPath and CMPIInstance.
#include "host/cmpihost.h"
#include "host/objects.h"

namespace cmpihost::detail {

namespace {

// What a lookup of a missing item answers, per getter.
constexpr CMPIrc kMissingKey = CMPI_RC_ERR_NOT_FOUND;
constexpr CMPIrc kMissingKeyAt = CMPI_RC_ERR_NO_SUCH_PROPERTY;
constexpr CMPIrc kMissingProperty = CMPI_RC_ERR_NO_SUCH_PROPERTY;

CMPIString *newText(const std::string &value, CMPIStatus *rc) {
    return guard(rc, static_cast<CMPIString *>(nullptr), [&] {
        setStatus(rc, CMPI_RC_OK);
        return makeString(currentArena(), value);
    });
}

// ---- CMPIObjectPath -------------------------------------------------------

template <std::string PathState::*Field>
CMPIStatus pathSetText(CMPIObjectPath *op, const char *value) {
    auto *state = stateOf<PathState>(op);
    if (state == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    if (value == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    return guardStatus([&] {
        state->*Field = value;
        return makeStatus(CMPI_RC_OK);
    });
}

template <std::string PathState::*Field>
CMPIString *pathGetText(const CMPIObjectPath *op, CMPIStatus *rc) {
    auto *state = stateOf<PathState>(op);
    if (state == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_HANDLE);
        return nullptr;
    }
    return newText(state->*Field, rc);
}

CMPIStatus pathAddKey(CMPIObjectPath *op, const char *name, const CMPIValue *value, CMPIType type) {
    auto *state = stateOf<PathState>(op);
    if (state == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    return guardStatus(
        [&] { return makeStatus(state->keys.put(*state->arena, name, value, type)); });
}

// Keys are reported with CMPI_keyValue in their state.
CMPIData markKey(CMPIData data, const CMPIStatus &status, CMPIStatus *rc) {
    if (status.rc == CMPI_RC_OK) data.state |= CMPI_keyValue;
    if (rc != nullptr) *rc = status;
    return data;
}

CMPIData pathGetKey(const CMPIObjectPath *op, const char *name, CMPIStatus *rc) {
    auto *state = stateOf<PathState>(op);
    CMPIStatus status;
    CMPIData data = getNamed(state ? &state->keys : nullptr, name, &status, kMissingKey);
    return markKey(data, status, rc);
}

CMPIData pathGetKeyAt(const CMPIObjectPath *op, unsigned int index, CMPIString **name,
                      CMPIStatus *rc) {
    auto *state = stateOf<PathState>(op);
    return guard(rc, notFoundData(), [&] {
        CMPIStatus status;
        CMPIData data =
            getNamedAt(state ? &state->keys : nullptr, index, name, &status, kMissingKeyAt);
        return markKey(data, status, rc);
    });
}

unsigned int pathGetKeyCount(const CMPIObjectPath *op, CMPIStatus *rc) {
    auto *state = stateOf<PathState>(op);
    setStatus(rc, state ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return state ? static_cast<unsigned int>(state->keys.items.size()) : 0;
}

CMPIStatus pathSetNameSpaceFrom(CMPIObjectPath *op, const CMPIObjectPath *src) {
    auto *state = stateOf<PathState>(op);
    if (state == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    auto *source = stateOf<PathState>(src);
    if (source == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    return guardStatus([&] {
        state->nameSpace = source->nameSpace;
        return makeStatus(CMPI_RC_OK);
    });
}

CMPIStatus pathSetHostAndNameSpaceFrom(CMPIObjectPath *op, const CMPIObjectPath *src) {
    auto *state = stateOf<PathState>(op);
    if (state == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    auto *source = stateOf<PathState>(src);
    if (source == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    return guardStatus([&] {
        state->nameSpace = source->nameSpace;
        state->host = source->host;
        return makeStatus(CMPI_RC_OK);
    });
}

// The host keeps no class definitions, hence no qualifiers.
CMPIData noQualifier(const CMPIObjectPath *op, CMPIStatus *rc) {
    setStatus(rc, stateOf<PathState>(op) ? CMPI_RC_ERR_NOT_SUPPORTED : CMPI_RC_ERR_INVALID_HANDLE);
    return notFoundData();
}
CMPIData pathGetClassQualifier(const CMPIObjectPath *op, const char *, CMPIStatus *rc) {
    return noQualifier(op, rc);
}
CMPIData pathGetPropertyQualifier(const CMPIObjectPath *op, const char *, const char *,
                                  CMPIStatus *rc) {
    return noQualifier(op, rc);
}
CMPIData pathGetMethodQualifier(const CMPIObjectPath *op, const char *, const char *,
                                CMPIStatus *rc) {
    return noQualifier(op, rc);
}
CMPIData pathGetParameterQualifier(const CMPIObjectPath *op, const char *, const char *,
                                   const char *, CMPIStatus *rc) {
    return noQualifier(op, rc);
}

CMPIString *pathToText(const CMPIObjectPath *op, CMPIStatus *rc) {
    auto *state = stateOf<PathState>(op);
    if (state == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_HANDLE);
        return nullptr;
    }
    return guard(rc, static_cast<CMPIString *>(nullptr),
                 [&] { return newText(renderPath(*state, state->keys), rc); });
}

constexpr CMPIObjectPathFT kPathTable = {
    CMPICurrentVersion,
    releaseSlot<PathState>,
    cloneSlot<PathState, clonePath>,
    pathSetText<&PathState::nameSpace>,
    pathGetText<&PathState::nameSpace>,
    pathSetText<&PathState::host>,
    pathGetText<&PathState::host>,
    pathSetText<&PathState::className>,
    pathGetText<&PathState::className>,
    pathAddKey,
    pathGetKey,
    pathGetKeyAt,
    pathGetKeyCount,
    pathSetNameSpaceFrom,
    pathSetHostAndNameSpaceFrom,
    pathGetClassQualifier,
    pathGetPropertyQualifier,
    pathGetMethodQualifier,
    pathGetParameterQualifier,
    pathToText,
};

// ---- CMPIInstance ---------------------------------------------------------

// Takes a copy of `path` as the instance's path and its keys as properties
// (whatever the property filter says: keys are always part of an instance).
CMPIrc adoptPath(InstanceState &instance, const CMPIObjectPath *path) {
    auto *source = stateOf<PathState>(path);
    if (source == nullptr) return CMPI_RC_ERR_INVALID_PARAMETER;
    CMPIObjectPath *copy = clonePath(*instance.arena, path);
    if (copy == nullptr) return CMPI_RC_ERR_FAILED;
    instance.path = copy;
    for (const auto &[name, data] : source->keys.items) {
        CMPIData stored;
        CMPIrc rc = copyData(*instance.arena, data, &stored);
        if (rc != CMPI_RC_OK) return rc;
        if (CMPIData *existing = instance.properties.find(name)) {
            *existing = stored;
        } else {
            instance.properties.items.emplace_back(name, stored);
        }
    }
    return CMPI_RC_OK;
}

bool accepts(const InstanceState &instance, std::string_view name) {
    if (!instance.filtered) return true;
    for (const std::string &accepted : instance.accepted) {
        if (sameName(accepted, name)) return true;
    }
    return false;
}

CMPIData instanceGetProperty(const CMPIInstance *inst, const char *name, CMPIStatus *rc) {
    auto *state = stateOf<InstanceState>(inst);
    return getNamed(state ? &state->properties : nullptr, name, rc, kMissingProperty);
}

CMPIData instanceGetPropertyAt(const CMPIInstance *inst, unsigned int index, CMPIString **name,
                               CMPIStatus *rc) {
    auto *state = stateOf<InstanceState>(inst);
    return guard(rc, notFoundData(), [&] {
        return getNamedAt(state ? &state->properties : nullptr, index, name, rc, kMissingProperty);
    });
}

unsigned int instanceGetPropertyCount(const CMPIInstance *inst, CMPIStatus *rc) {
    auto *state = stateOf<InstanceState>(inst);
    setStatus(rc, state ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return state ? static_cast<unsigned int>(state->properties.items.size()) : 0;
}

// A property outside the filter is dropped silently: the provider asked for
// exactly that when it set the filter.
CMPIStatus instanceSetProperty(CMPIInstance *inst, const char *name, const CMPIValue *value,
                               CMPIType type) {
    auto *state = stateOf<InstanceState>(inst);
    if (state == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    if (name == nullptr || *name == '\0') return makeStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    return guardStatus([&] {
        if (!accepts(*state, name)) return makeStatus(CMPI_RC_OK);
        return makeStatus(state->properties.put(*state->arena, name, value, type));
    });
}

CMPIObjectPath *instanceGetObjectPath(const CMPIInstance *inst, CMPIStatus *rc) {
    auto *state = stateOf<InstanceState>(inst);
    if (state == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_HANDLE);
        return nullptr;
    }
    return guard(rc, static_cast<CMPIObjectPath *>(nullptr), [&]() -> CMPIObjectPath * {
        Arena &arena = currentArena();
        CMPIObjectPath *copy = clonePath(arena, state->path);
        auto *path = stateOf<PathState>(copy);
        if (path == nullptr || path->keys.copyFrom(arena, refreshedKeys(*state)) != CMPI_RC_OK) {
            setStatus(rc, CMPI_RC_ERR_FAILED);
            return nullptr;
        }
        setStatus(rc, CMPI_RC_OK);
        return copy;
    });
}

// propertyList null: every property again. Properties already set stay; the
// filter decides which later setProperty calls are kept.
CMPIStatus instanceSetPropertyFilter(CMPIInstance *inst, const char **propertyList,
                                     const char **keyList) {
    auto *state = stateOf<InstanceState>(inst);
    if (state == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    return guardStatus([&] {
        state->accepted.clear();
        state->filtered = propertyList != nullptr;
        if (!state->filtered) return makeStatus(CMPI_RC_OK);
        for (const char **list : {propertyList, keyList}) {
            for (; list != nullptr && *list != nullptr; ++list) state->accepted.emplace_back(*list);
        }
        return makeStatus(CMPI_RC_OK);
    });
}

CMPIStatus instanceSetObjectPath(CMPIInstance *inst, const CMPIObjectPath *op) {
    auto *state = stateOf<InstanceState>(inst);
    if (state == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    return guardStatus([&] { return makeStatus(adoptPath(*state, op)); });
}

constexpr CMPIInstanceFT kInstanceTable = {
    CMPICurrentVersion,    releaseSlot<InstanceState>, cloneSlot<InstanceState, cloneInstance>,
    instanceGetProperty,   instanceGetPropertyAt,      instanceGetPropertyCount,
    instanceSetProperty,   instanceGetObjectPath,      instanceSetPropertyFilter,
    instanceSetObjectPath,
};

}  // namespace

PathState::PathState() : Object(&kPathTable) {}
const CMPIObjectPathFT *PathState::table() {
    return &kPathTable;
}

InstanceState::InstanceState() : Object(&kInstanceTable) {}
const CMPIInstanceFT *InstanceState::table() {
    return &kInstanceTable;
}

CMPIObjectPath *makePath(Arena &arena, std::string_view ns, std::string_view className) {
    auto *state = arena.make<PathState>();
    state->nameSpace = ns;
    state->className = className;
    return state->cmpi();
}

CMPIObjectPath *clonePath(Arena &arena, const CMPIObjectPath *p) {
    auto *source = stateOf<PathState>(p);
    if (source == nullptr) return nullptr;
    auto *copy = arena.make<PathState>();
    copy->nameSpace = source->nameSpace;
    copy->host = source->host;
    copy->className = source->className;
    if (copy->keys.copyFrom(arena, source->keys) != CMPI_RC_OK) return nullptr;
    return copy->cmpi();
}

CMPIInstance *makeInstance(Arena &arena, const CMPIObjectPath *path) {
    auto *state = arena.make<InstanceState>();
    return adoptPath(*state, path) == CMPI_RC_OK ? state->cmpi() : nullptr;
}

CMPIInstance *cloneInstance(Arena &arena, const CMPIInstance *i) {
    auto *source = stateOf<InstanceState>(i);
    if (source == nullptr) return nullptr;
    auto *copy = arena.make<InstanceState>();
    copy->path = clonePath(arena, source->path);
    copy->filtered = source->filtered;
    copy->accepted = source->accepted;
    if (copy->path == nullptr ||
        copy->properties.copyFrom(arena, source->properties) != CMPI_RC_OK) {
        return nullptr;
    }
    return copy->cmpi();
}

NamedValues refreshedKeys(const InstanceState &instance) {
    NamedValues keys = stateOf<PathState>(instance.path)->keys;
    for (auto &[name, data] : keys.items) {
        if (const CMPIData *property = instance.properties.find(name)) data = *property;
    }
    return keys;
}

}  // namespace cmpihost::detail
