// The broker: up-calls (none supported: the host runs one provider and has
// no repository), factories and helpers, and the OS services.
#include <pthread.h>
#include <strings.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <new>

#include "host/cmpihost.h"
#include "host/objects.h"

namespace cmpihost::detail {

namespace {

template <class State>
Arena *arenaIf(const void *object) {
    auto *state = stateOf<State>(static_cast<const typename State::CmpiType *>(object));
    return state ? state->arena : nullptr;
}

// Every kind of host object: its type name and how to find its arena.
struct ObjectKind {
    const char *name;
    Arena *(*arena)(const void *object);
};
constexpr ObjectKind kObjectKinds[] = {
    {"CMPIString", arenaIf<StringState>},
    {"CMPIArray", arenaIf<ArrayState>},
    {"CMPIObjectPath", arenaIf<PathState>},
    {"CMPIInstance", arenaIf<InstanceState>},
    {"CMPIArgs", arenaIf<ArgsState>},
    {"CMPIContext", arenaIf<ContextState>},
    {"CMPIDateTime", arenaIf<DateTimeState>},
    {"CMPIEnumeration", arenaIf<EnumerationState>},
    {"CMPIResult", resultArena},
};

const ObjectKind *kindOf(const void *object) {
    if (object == nullptr) return nullptr;
    for (const ObjectKind &kind : kObjectKinds) {
        if (kind.arena(object) != nullptr) return &kind;
    }
    return nullptr;
}

std::string joinNamed(const NamedValues &values) {
    std::string text;
    for (const auto &[name, data] : values.items) {
        if (!text.empty()) text += ',';
        text += name + '=' + renderValue(data);
    }
    return text;
}

// toString of any host object: paths and instances in wbemcli's form,
// strings as they are, the rest as their values or their type name.
std::string objectText(const void *object, const ObjectKind &kind) {
    const std::string_view name = kind.name;
    if (name == "CMPIObjectPath") {
        return pathToString(static_cast<const CMPIObjectPath *>(object));
    }
    if (name == "CMPIInstance") return instanceToString(static_cast<const CMPIInstance *>(object));
    if (name == "CMPIString") return text(static_cast<const CMPIString *>(object));
    if (name == "CMPIDateTime") {
        auto *state = stateOf<DateTimeState>(static_cast<const CMPIDateTime *>(object));
        return dateTimeText(state->micros, state->interval);
    }
    if (name == "CMPIArray") {
        CMPIData data = nullData(CMPI_ARRAY);
        data.state = CMPI_goodValue;
        data.value.array = const_cast<CMPIArray *>(static_cast<const CMPIArray *>(object));
        data.type = CMPIType(CMPI_ARRAY | stateOf<ArrayState>(data.value.array)->elementType);
        return renderValue(data);
    }
    if (name == "CMPIArgs") {
        return joinNamed(stateOf<ArgsState>(static_cast<const CMPIArgs *>(object))->args);
    }
    if (name == "CMPIContext") {
        return joinNamed(stateOf<ContextState>(static_cast<const CMPIContext *>(object))->entries);
    }
    return kind.name;
}

// ---- Up-calls: the host serves no other provider -------------------------

CMPIContext *bPrepareAttachThread(const CMPIBroker *, const CMPIContext *ctx) {
    return guard(nullptr, static_cast<CMPIContext *>(nullptr),
                 [&] { return cloneContext(currentArena(), ctx); });
}
CMPIStatus bAttachThread(const CMPIBroker *, const CMPIContext *ctx) {
    return makeStatus(stateOf<ContextState>(ctx) ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_PARAMETER);
}
CMPIStatus bDetachThread(const CMPIBroker *mb, const CMPIContext *ctx) {
    return bAttachThread(mb, ctx);
}
CMPIStatus bDeliverIndication(const CMPIBroker *, const CMPIContext *, const char *,
                              const CMPIInstance *) {
    return makeStatus(CMPI_RC_ERR_NOT_SUPPORTED);
}
template <class R>
R unsupported(CMPIStatus *rc, R answer) {
    setStatus(rc, CMPI_RC_ERR_NOT_SUPPORTED);
    return answer;
}
CMPIEnumeration *bEnumInstanceNames(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                                    CMPIStatus *rc) {
    return unsupported<CMPIEnumeration *>(rc, nullptr);
}
CMPIInstance *bGetInstance(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                           const char **, CMPIStatus *rc) {
    return unsupported<CMPIInstance *>(rc, nullptr);
}
CMPIObjectPath *bCreateInstance(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                                const CMPIInstance *, CMPIStatus *rc) {
    return unsupported<CMPIObjectPath *>(rc, nullptr);
}
CMPIStatus bModifyInstance(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                           const CMPIInstance *, const char **) {
    return makeStatus(CMPI_RC_ERR_NOT_SUPPORTED);
}
CMPIStatus bDeleteInstance(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *) {
    return makeStatus(CMPI_RC_ERR_NOT_SUPPORTED);
}
CMPIEnumeration *bExecQuery(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                            const char *, const char *, CMPIStatus *rc) {
    return unsupported<CMPIEnumeration *>(rc, nullptr);
}
CMPIEnumeration *bEnumInstances(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                                const char **, CMPIStatus *rc) {
    return unsupported<CMPIEnumeration *>(rc, nullptr);
}
CMPIEnumeration *bAssociators(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                              const char *, const char *, const char *, const char *, const char **,
                              CMPIStatus *rc) {
    return unsupported<CMPIEnumeration *>(rc, nullptr);
}
CMPIEnumeration *bAssociatorNames(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                                  const char *, const char *, const char *, const char *,
                                  CMPIStatus *rc) {
    return unsupported<CMPIEnumeration *>(rc, nullptr);
}
CMPIEnumeration *bReferences(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                             const char *, const char *, const char **, CMPIStatus *rc) {
    return unsupported<CMPIEnumeration *>(rc, nullptr);
}
CMPIEnumeration *bReferenceNames(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                                 const char *, const char *, CMPIStatus *rc) {
    return unsupported<CMPIEnumeration *>(rc, nullptr);
}
CMPIData bInvokeMethod(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                       const char *, const CMPIArgs *, CMPIArgs *, CMPIStatus *rc) {
    return unsupported(rc, nullData());
}
CMPIStatus bSetProperty(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                        const char *, const CMPIValue *, CMPIType) {
    return makeStatus(CMPI_RC_ERR_NOT_SUPPORTED);
}
CMPIData bGetProperty(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *, const char *,
                      CMPIStatus *rc) {
    return unsupported(rc, nullData());
}

const CMPIBrokerFT kBrokerTable = {
    CMPI_MB_OSEncapsulationSupport,
    CMPICurrentVersion,
    "cmpihost",
    bPrepareAttachThread,
    bAttachThread,
    bDetachThread,
    bDeliverIndication,
    bEnumInstanceNames,
    bGetInstance,
    bCreateInstance,
    bModifyInstance,
    bDeleteInstance,
    bExecQuery,
    bEnumInstances,
    bAssociators,
    bAssociatorNames,
    bReferences,
    bReferenceNames,
    bInvokeMethod,
    bSetProperty,
    bGetProperty,
};

// ---- Factories and helpers ------------------------------------------------

// Runs a factory in the current arena; a null answer means `refusal`.
template <class T, class Fn>
T *factory(CMPIStatus *rc, CMPIrc refusal, Fn &&make) {
    return guard(rc, static_cast<T *>(nullptr), [&] {
        T *made = make(currentArena());
        setStatus(rc, made ? CMPI_RC_OK : refusal);
        return made;
    });
}

CMPIInstance *eNewInstance(const CMPIBroker *, const CMPIObjectPath *op, CMPIStatus *rc) {
    return factory<CMPIInstance>(rc, CMPI_RC_ERR_INVALID_PARAMETER,
                                 [&](Arena &arena) { return makeInstance(arena, op); });
}

CMPIObjectPath *eNewObjectPath(const CMPIBroker *, const char *ns, const char *className,
                               CMPIStatus *rc) {
    return factory<CMPIObjectPath>(rc, CMPI_RC_ERR_FAILED, [&](Arena &arena) {
        return makePath(arena, ns ? ns : "", className ? className : "");
    });
}

CMPIArgs *eNewArgs(const CMPIBroker *, CMPIStatus *rc) {
    return factory<CMPIArgs>(rc, CMPI_RC_ERR_FAILED, makeArgs);
}

CMPIString *eNewString(const CMPIBroker *, const char *chars, CMPIStatus *rc) {
    return factory<CMPIString>(rc, CMPI_RC_ERR_INVALID_PARAMETER, [&](Arena &arena) {
        return chars ? makeString(arena, chars) : nullptr;
    });
}

CMPIArray *eNewArray(const CMPIBroker *, CMPICount size, CMPIType elementType, CMPIStatus *rc) {
    const auto element = static_cast<CMPIType>(elementType & ~CMPI_ARRAY);
    if (element == CMPI_null || !isKnownType(element)) {
        setStatus(rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
        return nullptr;
    }
    return factory<CMPIArray>(rc, CMPI_RC_ERR_FAILED,
                              [&](Arena &arena) { return makeArray(arena, size, element); });
}

CMPIUint64 nowMicros() {
    using namespace std::chrono;
    return static_cast<CMPIUint64>(
        duration_cast<microseconds>(system_clock::now().time_since_epoch()).count());
}

CMPIDateTime *eNewDateTime(const CMPIBroker *, CMPIStatus *rc) {
    return factory<CMPIDateTime>(rc, CMPI_RC_ERR_FAILED, [&](Arena &arena) {
        return makeDateTime(arena, nowMicros(), false);
    });
}

CMPIDateTime *eNewDateTimeFromBinary(const CMPIBroker *, CMPIUint64 binTime, CMPIBoolean interval,
                                     CMPIStatus *rc) {
    return factory<CMPIDateTime>(rc, CMPI_RC_ERR_FAILED, [&](Arena &arena) {
        return makeDateTime(arena, binTime, interval != 0);
    });
}

CMPIDateTime *eNewDateTimeFromChars(const CMPIBroker *, const char *text, CMPIStatus *rc) {
    CMPIUint64 micros = 0;
    bool interval = false;
    if (text == nullptr || !parseDateTime(text, &micros, &interval)) {
        setStatus(rc, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    return factory<CMPIDateTime>(rc, CMPI_RC_ERR_FAILED, [&](Arena &arena) {
        return makeDateTime(arena, micros, interval);
    });
}

CMPISelectExp *eNewSelectExp(const CMPIBroker *, const char *, const char *, CMPIArray **projection,
                             CMPIStatus *rc) {
    if (projection != nullptr) *projection = nullptr;
    return unsupported<CMPISelectExp *>(rc, nullptr);
}

// The host knows no class hierarchy: a class is only itself.
CMPIBoolean eClassPathIsA(const CMPIBroker *, const CMPIObjectPath *op, const char *className,
                          CMPIStatus *rc) {
    auto *path = stateOf<PathState>(op);
    if (path == nullptr || className == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_PARAMETER);
        return 0;
    }
    setStatus(rc, CMPI_RC_OK);
    return sameName(path->className, className) ? 1 : 0;
}

CMPIString *eToString(const CMPIBroker *, const void *object, CMPIStatus *rc) {
    const ObjectKind *kind = kindOf(object);
    return factory<CMPIString>(rc, CMPI_RC_ERR_INVALID_PARAMETER, [&](Arena &arena) {
        return kind ? makeString(arena, objectText(object, *kind)) : nullptr;
    });
}

CMPIBoolean eIsOfType(const CMPIBroker *, const void *object, const char *typeName,
                      CMPIStatus *rc) {
    const ObjectKind *kind = kindOf(object);
    if (kind == nullptr || typeName == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_PARAMETER);
        return 0;
    }
    setStatus(rc, CMPI_RC_OK);
    return std::strcmp(kind->name, typeName) == 0 ? 1 : 0;
}

CMPIString *eGetType(const CMPIBroker *, const void *object, CMPIStatus *rc) {
    const ObjectKind *kind = kindOf(object);
    return factory<CMPIString>(rc, CMPI_RC_ERR_INVALID_PARAMETER, [&](Arena &arena) {
        return kind ? makeString(arena, kind->name) : nullptr;
    });
}

// ---- getMessage -------------------------------------------------------------

// getMessage takes at most ten inserts, $0 to $9 in the default message.
constexpr CMPICount kMaxInserts = 10;

std::string numberText(double value) {
    char buffer[64];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return ec == std::errc() ? std::string(buffer, end) : std::string();
}

// Reads the (type code, value) pairs CMFmtArgsN produced, as the CMFmt
// helpers promote them; stops at a type no helper produces, since its size
// on the argument list is unknown.
std::vector<std::string> readInserts(CMPICount count, va_list args) {
    std::vector<std::string> inserts;
    for (CMPICount i = 0; i < count && i < kMaxInserts; ++i) {
        const int type = va_arg(args, int);
        switch (type) {
            case CMPI_sint32:
                inserts.push_back(std::to_string(va_arg(args, long)));
                break;
            case CMPI_uint32:
                inserts.push_back(std::to_string(va_arg(args, unsigned long)));
                break;
            case CMPI_sint64:
                inserts.push_back(std::to_string(va_arg(args, long long)));
                break;
            case CMPI_uint64:
                inserts.push_back(std::to_string(va_arg(args, unsigned long long)));
                break;
            case CMPI_real32:
            case CMPI_real64:
                inserts.push_back(numberText(va_arg(args, double)));
                break;
            case CMPI_boolean:
                inserts.push_back(va_arg(args, int) ? "true" : "false");
                break;
            case CMPI_chars: {
                const char *chars = va_arg(args, const char *);
                inserts.push_back(chars ? chars : "");
                break;
            }
            case CMPI_string:
                inserts.push_back(text(va_arg(args, const CMPIString *)));
                break;
            default:
                return inserts;
        }
    }
    return inserts;
}

// "$n" becomes insert n; a "$n" without an insert stays as written.
std::string formatMessage(std::string_view pattern, const std::vector<std::string> &inserts) {
    std::string out;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool placeholder = pattern[i] == '$' && i + 1 < pattern.size() &&
                                 pattern[i + 1] >= '0' && pattern[i + 1] <= '9';
        const auto index = placeholder ? static_cast<std::size_t>(pattern[i + 1] - '0') : 0;
        if (placeholder && index < inserts.size()) {
            out += inserts[index];
            ++i;
        } else {
            out += pattern[i];
        }
    }
    return out;
}

// No message files: the default message is formatted with the inserts.
CMPIString *eGetMessage(const CMPIBroker *, const char *, const char *defaultMessage,
                        CMPIStatus *rc, CMPICount count, ...) {
    if (defaultMessage == nullptr) {
        setStatus(rc, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    std::vector<std::string> inserts;
    va_list args;
    va_start(args, count);
    try {
        inserts = readInserts(count, args);
    } catch (...) {
        va_end(args);
        setStatus(rc, CMPI_RC_ERR_FAILED);
        return nullptr;
    }
    va_end(args);
    return guard(rc, static_cast<CMPIString *>(nullptr), [&] {
        setStatus(rc, CMPI_RC_OK);
        return makeString(currentArena(), formatMessage(defaultMessage, inserts));
    });
}

// Log and trace lines go to standard error, apart from the provider's own
// trace on standard output.
CMPIStatus writeLine(const char *what, int level, const char *source, const char *message,
                     const CMPIString *string) {
    std::fprintf(stderr, "cmpihost %s[%d] %s: %s%s%s\n", what, level, source ? source : "",
                 message ? message : "", message && string ? " " : "",
                 string ? text(string).c_str() : "");
    return makeStatus(CMPI_RC_OK);
}

CMPIStatus eLogMessage(const CMPIBroker *, int severity, const char *id, const char *message,
                       const CMPIString *string) {
    return guardStatus([&] { return writeLine("log", severity, id, message, string); });
}

CMPIStatus eTrace(const CMPIBroker *, int level, const char *component, const char *message,
                  const CMPIString *string) {
    return guardStatus([&] { return writeLine("trace", level, component, message, string); });
}

const CMPIBrokerEncFT kEncTable = {
    CMPICurrentVersion,
    eNewInstance,
    eNewObjectPath,
    eNewArgs,
    eNewString,
    eNewArray,
    eNewDateTime,
    eNewDateTimeFromBinary,
    eNewDateTimeFromChars,
    eNewSelectExp,
    eClassPathIsA,
    eToString,
    eIsOfType,
    eGetType,
    eGetMessage,
    eLogMessage,
    eTrace,
};

// ---- OS services, on POSIX threads ----------------------------------------

pthread_t threadOf(CMPI_THREAD_TYPE thread) {
    return static_cast<pthread_t>(reinterpret_cast<std::uintptr_t>(thread));
}

// The library name as the dynamic loader wants it; the caller frees it.
char *xResolveFileName(const char *libraryName) {
    if (libraryName == nullptr) return nullptr;
    const std::size_t size = std::strlen(libraryName) + sizeof "lib.so";
    auto *name = static_cast<char *>(std::malloc(size));
    if (name != nullptr) std::snprintf(name, size, "lib%s.so", libraryName);
    return name;
}

CMPI_THREAD_TYPE xNewThread(CMPI_THREAD_RETURN(CMPI_THREAD_CDECL *start)(void *), void *parm,
                            int detached) {
    pthread_t thread;
    if (start == nullptr || pthread_create(&thread, nullptr, start, parm) != 0) return nullptr;
    if (detached) pthread_detach(thread);
    return reinterpret_cast<CMPI_THREAD_TYPE>(static_cast<std::uintptr_t>(thread));
}

int xJoinThread(CMPI_THREAD_TYPE thread, CMPI_THREAD_RETURN *retval) {
    return pthread_join(threadOf(thread), retval);
}

int xExitThread(CMPI_THREAD_RETURN returnCode) {
    pthread_exit(returnCode);
}

int xCancelThread(CMPI_THREAD_TYPE thread) {
    return pthread_cancel(threadOf(thread));
}

int xThreadSleep(CMPIUint32 milliseconds) {
    timespec wait{static_cast<time_t>(milliseconds / 1000),
                  static_cast<long>(milliseconds % 1000) * 1000000L};
    while (nanosleep(&wait, &wait) != 0 && errno == EINTR) {
    }
    return 0;
}

// Recursive: an init function may itself run a threadOnce of its own.
std::recursive_mutex &onceLock() {
    static std::recursive_mutex lock;
    return lock;
}

int xThreadOnce(int *onceFlag, void (*init)(void)) {
    if (onceFlag == nullptr || init == nullptr) return EINVAL;
    std::atomic_ref<int> flag(*onceFlag);
    if (flag.load(std::memory_order_acquire) != 0) return 0;
    std::lock_guard<std::recursive_mutex> hold(onceLock());
    if (flag.load(std::memory_order_relaxed) == 0) {
        init();
        flag.store(1, std::memory_order_release);
    }
    return 0;
}

int xCreateThreadKey(CMPI_THREAD_KEY_TYPE *key, void (*destructor)(void *)) {
    return key ? pthread_key_create(key, destructor) : EINVAL;
}
int xDestroyThreadKey(CMPI_THREAD_KEY_TYPE key) {
    return pthread_key_delete(key);
}
void *xGetThreadSpecific(CMPI_THREAD_KEY_TYPE key) {
    return pthread_getspecific(key);
}
int xSetThreadSpecific(CMPI_THREAD_KEY_TYPE key, void *value) {
    return pthread_setspecific(key, value);
}

// Mutexes are recursive, so that a provider may lock one it already holds.
CMPI_MUTEX_TYPE xNewMutex(int) {
    auto *mutex = new (std::nothrow) pthread_mutex_t;
    if (mutex == nullptr) return nullptr;
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    return mutex;
}
void xDestroyMutex(CMPI_MUTEX_TYPE mutex) {
    if (mutex == nullptr) return;
    auto *m = static_cast<pthread_mutex_t *>(mutex);
    pthread_mutex_destroy(m);
    delete m;
}
void xLockMutex(CMPI_MUTEX_TYPE mutex) {
    if (mutex != nullptr) pthread_mutex_lock(static_cast<pthread_mutex_t *>(mutex));
}
void xUnlockMutex(CMPI_MUTEX_TYPE mutex) {
    if (mutex != nullptr) pthread_mutex_unlock(static_cast<pthread_mutex_t *>(mutex));
}

CMPI_COND_TYPE xNewCondition(int) {
    auto *cond = new (std::nothrow) pthread_cond_t;
    if (cond != nullptr) pthread_cond_init(cond, nullptr);
    return cond;
}
void xDestroyCondition(CMPI_COND_TYPE cond) {
    if (cond == nullptr) return;
    auto *c = static_cast<pthread_cond_t *>(cond);
    pthread_cond_destroy(c);
    delete c;
}
int xCondWait(CMPI_COND_TYPE cond, CMPI_MUTEX_TYPE mutex) {
    if (cond == nullptr || mutex == nullptr) return EINVAL;
    return pthread_cond_wait(static_cast<pthread_cond_t *>(cond),
                             static_cast<pthread_mutex_t *>(mutex));
}
// `wait` is an absolute CLOCK_REALTIME time, as for pthread_cond_timedwait.
int xTimedCondWait(CMPI_COND_TYPE cond, CMPI_MUTEX_TYPE mutex, struct timespec *wait) {
    if (cond == nullptr || mutex == nullptr || wait == nullptr) return EINVAL;
    return pthread_cond_timedwait(static_cast<pthread_cond_t *>(cond),
                                  static_cast<pthread_mutex_t *>(mutex), wait);
}
int xSignalCondition(CMPI_COND_TYPE cond) {
    return cond ? pthread_cond_signal(static_cast<pthread_cond_t *>(cond)) : EINVAL;
}

const CMPIBrokerExtFT kExtTable = {
    CMPICurrentVersion, xResolveFileName,   xNewThread,        xJoinThread,      xExitThread,
    xCancelThread,      xThreadSleep,       xThreadOnce,       xCreateThreadKey, xDestroyThreadKey,
    xGetThreadSpecific, xSetThreadSpecific, xNewMutex,         xDestroyMutex,    xLockMutex,
    xUnlockMutex,       xNewCondition,      xDestroyCondition, xCondWait,        xTimedCondWait,
    xSignalCondition,
};

// hdl is never read by providers, but CMIsNullObject(broker) must be false.
char kBrokerIdentity[] = "cmpihost";

const CMPIBroker kBroker = {
    kBrokerIdentity,
    const_cast<CMPIBrokerFT *>(&kBrokerTable),
    const_cast<CMPIBrokerEncFT *>(&kEncTable),
    const_cast<CMPIBrokerExtFT *>(&kExtTable),
};

}  // namespace

Arena *arenaOf(const void *object) {
    const ObjectKind *kind = kindOf(object);
    return kind ? kind->arena(object) : nullptr;
}

}  // namespace cmpihost::detail

namespace cmpihost {

const CMPIBroker *broker() {
    return &detail::kBroker;
}

}  // namespace cmpihost
