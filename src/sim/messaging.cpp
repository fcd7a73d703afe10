// The messaging queue and the provider's process-wide mutex.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "platform/zoning_platform.h"
#include "sim/fault_injection.h"
#include "sim/platform_state.h"

namespace {

// One non-recursive mutex for the whole process, with its holder so that a
// second lock by the holder (a certain deadlock) is reported instead of
// hanging, and an unlock by a thread that doesn't hold it is ignored.
struct ProviderMutex {
    std::mutex mutex;
    std::atomic<std::thread::id> holder{};
};

ProviderMutex &providerMutex() {
    static ProviderMutex instance;
    return instance;
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

// The database is opened on first use, not here: a queue is only a handle.
int init_mts(int *queue) {
    if (queue == nullptr) return -1;
    *queue = zonesim::kQueueHandle;
    return 0;
}

void mutex_lock(void) {
    ProviderMutex &m = providerMutex();
    if (m.holder.load() == std::this_thread::get_id()) {
        std::fprintf(stderr, "zone switch simulator: mutex_lock: already held by this thread\n");
        std::abort();
    }
    m.mutex.lock();
    m.holder.store(std::this_thread::get_id());
    zonesim::beginFaultRequest();  // a request starts here (fault_injection.h)
    zonesim::beginRequest();
}

void mutex_unlock(void) {
    ProviderMutex &m = providerMutex();
    if (m.holder.load() != std::this_thread::get_id()) return;
    zonesim::endRequest();
    m.holder.store(std::thread::id());
    m.mutex.unlock();
}

}  // extern "C"
#pragma GCC visibility pop
