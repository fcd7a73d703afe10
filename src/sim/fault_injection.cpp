// Test mode of failing platform calls (see fault_injection.h).
#include "sim/fault_injection.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace zonesim {
namespace {

// The plan of the current request. Requests are serialised by the provider
// mutex; the atomics only keep a stray call from another thread (a test
// that talks to the switch without the mutex) well defined.
struct FaultPlan {
    std::atomic<long> fail_at{0};     // 0: nothing fails
    std::atomic<long> fail_count{0};  // 0: every call from fail_at on
    std::atomic<long> calls{0};
};

FaultPlan &plan() {
    static FaultPlan instance;
    return instance;
}

// A positive number from the environment; 0 when unset or not a number.
long positiveSetting(const char *name) {
    const char *text = std::getenv(name);
    if (text == nullptr || *text == '\0') return 0;
    char *end = nullptr;
    long value = std::strtol(text, &end, 10);
    return (*end == '\0' && value > 0) ? value : 0;
}

}  // namespace

void beginFaultRequest() {
    FaultPlan &p = plan();
    p.fail_at.store(positiveSetting("ZONE_SIM_FAIL_AT"));
    p.fail_count.store(positiveSetting("ZONE_SIM_FAIL_COUNT"));
    p.calls.store(0);
}

bool injectFault(const char *operation) {
    FaultPlan &p = plan();
    const long fail_at = p.fail_at.load();
    if (fail_at <= 0) return false;
    const long call = p.calls.fetch_add(1) + 1;
    const long fail_count = p.fail_count.load();
    if (call < fail_at || (fail_count > 0 && call >= fail_at + fail_count)) return false;
    std::fprintf(stderr, "zone switch simulator: injected fault at call %ld: %s\n", call,
                 operation);
    return true;
}

}  // namespace zonesim
