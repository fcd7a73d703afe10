// CMPIString, CMPIArray, CMPIDateTime and CMPIEnumeration.
#include <cstring>

#include "host/objects.h"

namespace cmpihost::detail {

// ---- CMPIString -----------------------------------------------------------

namespace {

char *stringGetCharPtr(const CMPIString *s, CMPIStatus *rc) {
    auto *state = stateOf<StringState>(s);
    setStatus(rc, state ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return state ? state->chars() : nullptr;
}

constexpr CMPIStringFT kStringTable = {
    CMPICurrentVersion,
    releaseSlot<StringState>,
    cloneSlot<StringState, cloneString>,
    stringGetCharPtr,
};

}  // namespace

// hdl is the characters: CMGetCharPtr reads it directly. The text is never
// changed after construction, so the pointer stays valid for the lifetime.
StringState::StringState(std::string_view text, char *block_memory)
    : Object(&kStringTable), block(block_memory), length(text.size()) {
    const auto self = reinterpret_cast<std::uintptr_t>(this);
    std::memcpy(block, &self, sizeof self);
    std::memcpy(chars(), text.data(), text.size());
    chars()[text.size()] = '\0';
    pair.hdl = chars();
}
const CMPIStringFT *StringState::table() {
    return &kStringTable;
}

StringState *StringState::fromHdl(void *hdl) {
    std::uintptr_t state = 0;
    std::memcpy(&state, static_cast<char *>(hdl) - sizeof state, sizeof state);
    return reinterpret_cast<StringState *>(state);
}

CMPIString *makeString(Arena &arena, std::string_view text) {
    auto *block = static_cast<char *>(
        arena.allocate(StringState::kBlockOverhead + text.size(), alignof(StringState *)));
    return arena.make<StringState>(text, block)->cmpi();
}

CMPIString *cloneString(Arena &arena, const CMPIString *s) {
    auto *state = stateOf<StringState>(s);
    return state ? makeString(arena, state->text()) : nullptr;
}

// ---- CMPIArray ------------------------------------------------------------

namespace {

// chars are stored as strings, in arrays as everywhere else.
CMPIType storedElementType(CMPIType type) {
    return type == CMPI_chars || type == CMPI_charsptr ? CMPIType(CMPI_string) : type;
}

CMPICount arrayGetSize(const CMPIArray *a, CMPIStatus *rc) {
    auto *state = stateOf<ArrayState>(a);
    setStatus(rc, state ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return state ? static_cast<CMPICount>(state->elements.size()) : 0;
}

CMPIType arrayGetSimpleType(const CMPIArray *a, CMPIStatus *rc) {
    auto *state = stateOf<ArrayState>(a);
    setStatus(rc, state ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return state ? state->elementType : CMPIType(CMPI_null);
}

CMPIData arrayGetElementAt(const CMPIArray *a, CMPICount index, CMPIStatus *rc) {
    auto *state = stateOf<ArrayState>(a);
    if (state == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_HANDLE);
        return notFoundData();
    }
    if (index >= state->elements.size()) {
        setStatus(rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
        return notFoundData();
    }
    setStatus(rc, CMPI_RC_OK);
    return state->elements[index];
}

// The size is fixed at creation; the value must have the element type (chars
// counts as string).
CMPIStatus arraySetElementAt(CMPIArray *a, CMPICount index, const CMPIValue *value, CMPIType type) {
    auto *state = stateOf<ArrayState>(a);
    if (state == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    if (index >= state->elements.size()) return makeStatus(CMPI_RC_ERR_NO_SUCH_PROPERTY);
    if (storedElementType(type) != state->elementType) {
        return makeStatus(CMPI_RC_ERR_TYPE_MISMATCH);
    }
    return guardStatus([&] {
        CMPIData stored;
        CMPIrc rc = storeValue(*state->arena, value, type, &stored);
        if (rc == CMPI_RC_OK) state->elements[index] = stored;
        return makeStatus(rc);
    });
}

constexpr CMPIArrayFT kArrayTable = {
    CMPICurrentVersion, releaseSlot<ArrayState>, cloneSlot<ArrayState, cloneArray>,
    arrayGetSize,       arrayGetSimpleType,      arrayGetElementAt,
    arraySetElementAt,
};

}  // namespace

ArrayState::ArrayState(CMPICount size, CMPIType type)
    : Object(&kArrayTable),
      elementType(storedElementType(type)),
      elements(size, nullData(storedElementType(type))) {}
const CMPIArrayFT *ArrayState::table() {
    return &kArrayTable;
}

CMPIArray *makeArray(Arena &arena, CMPICount size, CMPIType elementType) {
    return arena.make<ArrayState>(size, elementType)->cmpi();
}

CMPIArray *cloneArray(Arena &arena, const CMPIArray *a) {
    auto *state = stateOf<ArrayState>(a);
    if (state == nullptr) return nullptr;
    auto *copy = arena.make<ArrayState>(0, state->elementType);
    copy->elements.reserve(state->elements.size());
    for (const CMPIData &element : state->elements) {
        CMPIData stored;
        if (copyData(arena, element, &stored) != CMPI_RC_OK) return nullptr;
        copy->elements.push_back(stored);
    }
    return copy->cmpi();
}

// ---- CMPIDateTime ---------------------------------------------------------

namespace {

CMPIUint64 dateTimeGetBinary(const CMPIDateTime *d, CMPIStatus *rc) {
    auto *state = stateOf<DateTimeState>(d);
    setStatus(rc, state ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return state ? state->micros : 0;
}

CMPIString *dateTimeGetString(const CMPIDateTime *d, CMPIStatus *rc) {
    auto *state = stateOf<DateTimeState>(d);
    if (state == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_HANDLE);
        return nullptr;
    }
    return guard(rc, static_cast<CMPIString *>(nullptr), [&] {
        setStatus(rc, CMPI_RC_OK);
        return makeString(currentArena(), dateTimeText(state->micros, state->interval));
    });
}

CMPIBoolean dateTimeIsInterval(const CMPIDateTime *d, CMPIStatus *rc) {
    auto *state = stateOf<DateTimeState>(d);
    setStatus(rc, state ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return state && state->interval ? 1 : 0;
}

constexpr CMPIDateTimeFT kDateTimeTable = {
    CMPICurrentVersion, releaseSlot<DateTimeState>, cloneSlot<DateTimeState, cloneDateTime>,
    dateTimeGetBinary,  dateTimeGetString,          dateTimeIsInterval,
};

}  // namespace

DateTimeState::DateTimeState(CMPIUint64 microseconds, bool isInterval)
    : Object(&kDateTimeTable), micros(microseconds), interval(isInterval) {}
const CMPIDateTimeFT *DateTimeState::table() {
    return &kDateTimeTable;
}

CMPIDateTime *makeDateTime(Arena &arena, CMPIUint64 micros, bool interval) {
    return arena.make<DateTimeState>(micros, interval)->cmpi();
}

CMPIDateTime *cloneDateTime(Arena &arena, const CMPIDateTime *d) {
    auto *state = stateOf<DateTimeState>(d);
    return state ? makeDateTime(arena, state->micros, state->interval) : nullptr;
}

// ---- CMPIEnumeration ------------------------------------------------------

namespace {

// A cursor moves on a const object: the table takes const self.
CMPIData enumerationGetNext(const CMPIEnumeration *e, CMPIStatus *rc) {
    auto *state = stateOf<EnumerationState>(e);
    if (state == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_HANDLE);
        return notFoundData();
    }
    if (state->next >= state->items.size()) {
        setStatus(rc, CMPI_RC_ERR_NOT_FOUND);
        return notFoundData();
    }
    setStatus(rc, CMPI_RC_OK);
    return state->items[state->next++];
}

CMPIBoolean enumerationHasNext(const CMPIEnumeration *e, CMPIStatus *rc) {
    auto *state = stateOf<EnumerationState>(e);
    setStatus(rc, state ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return state && state->next < state->items.size() ? 1 : 0;
}

// Every item, whatever the cursor has consumed; the element type is the
// first item's (CMPI_null for an empty enumeration).
CMPIArray *enumerationToArray(const CMPIEnumeration *e, CMPIStatus *rc) {
    auto *state = stateOf<EnumerationState>(e);
    if (state == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_HANDLE);
        return nullptr;
    }
    return guard(rc, static_cast<CMPIArray *>(nullptr), [&]() -> CMPIArray * {
        Arena &arena = currentArena();
        CMPIType type = state->items.empty() ? CMPIType(CMPI_null) : state->items[0].type;
        auto *array = arena.make<ArrayState>(0, type);
        for (const CMPIData &item : state->items) {
            CMPIData copy;
            if (copyData(arena, item, &copy) != CMPI_RC_OK) {
                setStatus(rc, CMPI_RC_ERR_FAILED);
                return nullptr;
            }
            array->elements.push_back(copy);
        }
        setStatus(rc, CMPI_RC_OK);
        return array->cmpi();
    });
}

constexpr CMPIEnumerationFT kEnumerationTable = {
    CMPICurrentVersion,
    releaseSlot<EnumerationState>,
    cloneSlot<EnumerationState, cloneEnumeration>,
    enumerationGetNext,
    enumerationHasNext,
    enumerationToArray,
};

}  // namespace

EnumerationState::EnumerationState() : Object(&kEnumerationTable) {}
const CMPIEnumerationFT *EnumerationState::table() {
    return &kEnumerationTable;
}

CMPIEnumeration *makeEnumeration(Arena &arena, const std::vector<CMPIData> &items) {
    auto *state = arena.make<EnumerationState>();
    state->items.reserve(items.size());
    for (const CMPIData &item : items) {
        CMPIData copy;
        if (copyData(arena, item, &copy) != CMPI_RC_OK) return nullptr;
        state->items.push_back(copy);
    }
    return state->cmpi();
}

CMPIEnumeration *cloneEnumeration(Arena &arena, const CMPIEnumeration *e) {
    auto *state = stateOf<EnumerationState>(e);
    if (state == nullptr) return nullptr;
    CMPIEnumeration *copy = makeEnumeration(arena, state->items);
    if (copy != nullptr) stateOf<EnumerationState>(copy)->next = state->next;
    return copy;
}

}  // namespace cmpihost::detail
