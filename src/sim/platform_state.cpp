// Process-wide state of the platform operations (see platform_state.h).
#include "sim/platform_state.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

#include "sim/sim_errors.h"

namespace zonesim {

namespace {

struct OpenDatabase {
    std::mutex lock;
    std::shared_ptr<Store> store;
    std::string refused_path;  // the last file refused, reported once
};

OpenDatabase &openDatabase() {
    static OpenDatabase database;  // closed at exit
    return database;
}

// ZONE_SIM_DB as Store::defaultPath() reads it, without making a string:
// every platform call asks.
bool namesPath(const std::string &path) {
    const char *env = std::getenv("ZONE_SIM_DB");
    if (env == nullptr || *env == '\0') env = Store::kDefaultPathName;
    return path == env;
}

}  // namespace

std::shared_ptr<Store> currentStore(int *code) {
    OpenDatabase &database = openDatabase();
    std::lock_guard<std::mutex> guard(database.lock);
    if (database.store && namesPath(database.store->path())) return database.store;
    std::string path = Store::defaultPath();
    Store::Opened opened = Store::open(path);
    if (!opened.store) {
        if (database.refused_path != path && !opened.message.empty())
            std::fprintf(stderr, "%s\n", opened.message.c_str());
        database.refused_path = path;
        *code = opened.code;
        return nullptr;
    }
    database.refused_path.clear();
    database.store = std::shared_ptr<Store>(std::move(opened.store));
    return database.store;
}

int guarded(FunctionRef<int()> fn) {
    try {
        return fn();
    } catch (...) {
        return kErrUnknown;
    }
}

namespace {

// The request running now, if any: the database its session holds and the
// switch name it has read. Requests are serialised by the provider mutex, so
// there is at most one, and only the thread running it (the owner) touches
// anything but the owner field. It is kept for the whole process rather
// than per thread: every platform call and every path a builder makes asks
// for it, and finding a thread-local variable of a shared library costs a
// call each time.
struct RequestState {
    std::atomic<std::thread::id> owner{};
    std::shared_ptr<Store> session;
    bool name_known = false;
    std::string switch_name;
};

RequestState g_request;

bool ownsRequest() {
    return g_request.owner.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

void endSessionOfRequest() {
    if (g_request.session) g_request.session->endSession();
    g_request.session.reset();
}

// Inside a request, the database of its first platform call becomes the
// request's session.
void joinSession(const std::shared_ptr<Store> &store) {
    if (!ownsRequest() || g_request.session == store) return;
    endSessionOfRequest();
    store->beginSession();
    g_request.session = store;
}

// A request works on one switch from its first platform call to its end:
// ZONE_SIM_DB is read again by the next request. (It also spares every
// platform call of a request the process-wide lock and the environment.)
Store *sessionStoreOfRequest() {
    return ownsRequest() ? g_request.session.get() : nullptr;
}

}  // namespace

int withStoreNoQueue(bool write, FunctionRef<int(Store &)> fn) {
    return guarded([&] {
        std::shared_ptr<Store> held;
        Store *store = sessionStoreOfRequest();
        if (store == nullptr) {
            int code = 0;
            held = currentStore(&code);
            if (!held) return code;
            joinSession(held);
            store = held.get();
        }
        auto work = [&] { return fn(*store); };
        return write ? store->write(work) : store->read(work);
    });
}

int withStore(int queue, bool write, FunctionRef<int(Store &)> fn) {
    if (queue != kQueueHandle) return kErrQueueNotOpen;
    return withStoreNoQueue(write, fn);
}

void beginRequest() {
    g_request.owner.store(std::this_thread::get_id());
    g_request.name_known = false;
}

void endRequest() {
    if (!ownsRequest()) return;
    endSessionOfRequest();
    g_request.name_known = false;
    g_request.owner.store(std::thread::id());
}

const std::string *knownSwitchNameOfRequest() {
    return ownsRequest() && g_request.name_known ? &g_request.switch_name : nullptr;
}

int switchNameOfRequest(std::string *name) {
    if (const std::string *known = knownSwitchNameOfRequest()) {
        *name = *known;
        return kOk;
    }
    int code = withStoreNoQueue(false, [&](Store &store) {
        *name = store.switchName();
        return kOk;
    });
    if (code == kOk && ownsRequest()) {
        g_request.switch_name = *name;
        g_request.name_known = true;
    }
    return code;
}

}  // namespace zonesim
