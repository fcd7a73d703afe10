// Process-wide state of the platform operations (see platform_state.h).
#include "sim/platform_state.h"

#include <cstdio>
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

}  // namespace

std::shared_ptr<Store> currentStore(int *code) {
    std::string path = Store::defaultPath();
    OpenDatabase &database = openDatabase();
    std::lock_guard<std::mutex> guard(database.lock);
    if (database.store && database.store->path() == path) return database.store;
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

int guarded(const std::function<int()> &fn) {
    try {
        return fn();
    } catch (...) {
        return kErrUnknown;
    }
}

int withStoreNoQueue(bool write, const std::function<int(Store &)> &fn) {
    return guarded([&] {
        int code = 0;
        std::shared_ptr<Store> store = currentStore(&code);
        if (!store) return code;
        auto work = [&] { return fn(*store); };
        return write ? store->write(work) : store->read(work);
    });
}

int withStore(int queue, bool write, const std::function<int(Store &)> &fn) {
    if (queue != kQueueHandle) return kErrQueueNotOpen;
    return withStoreNoQueue(write, fn);
}

}  // namespace zonesim
