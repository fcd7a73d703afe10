// Process-wide state of the platform operations (see platform_state.h).
#include "sim/platform_state.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>

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

// The request running on this thread, if any: the database its session
// holds and the switch name it has read.
struct RequestState {
    bool open = false;
    std::shared_ptr<Store> session;
    bool name_known = false;
    std::string switch_name;
};

thread_local RequestState t_request;

void endSessionOfRequest() {
    if (t_request.session) t_request.session->endSession();
    t_request.session.reset();
}

// Inside a request, the database of its first platform call becomes the
// request's session.
void joinSession(const std::shared_ptr<Store> &store) {
    if (!t_request.open || t_request.session == store) return;
    endSessionOfRequest();
    store->beginSession();
    t_request.session = store;
}

}  // namespace

namespace {

// A request works on one switch from its first platform call to its end:
// ZONE_SIM_DB is read again by the next request. (It also spares every
// platform call of a request the process-wide lock and the environment.)
Store *sessionStoreOfRequest() {
    return t_request.open ? t_request.session.get() : nullptr;
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
    t_request.open = true;
    t_request.name_known = false;
}

void endRequest() {
    endSessionOfRequest();
    t_request.open = false;
    t_request.name_known = false;
}

const std::string *knownSwitchNameOfRequest() {
    return t_request.open && t_request.name_known ? &t_request.switch_name : nullptr;
}

int switchNameOfRequest(std::string *name) {
    if (t_request.open && t_request.name_known) {
        *name = t_request.switch_name;
        return kOk;
    }
    int code = withStoreNoQueue(false, [&](Store &store) {
        *name = store.switchName();
        return kOk;
    });
    if (code == kOk && t_request.open) {
        t_request.switch_name = *name;
        t_request.name_known = true;
    }
    return code;
}

}  // namespace zonesim
