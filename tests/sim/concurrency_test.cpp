// Concurrent callers: the provider's mutex serialises them, and the switch
// stays consistent, with distinct objects and no failed call, for callers
// that don't take it as well.
#include <set>
#include <thread>

#include "sim_switch_support.h"

namespace simtest {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 25;

TEST_F(SwitchTest, TheMutexSerialisesCallersAndTheSwitchStaysConsistentWithout) {
    int counter = 0;
    std::vector<int> failures(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            auto create_one = [&](int type, const std::string &name) {
                void *record = nullptr;
                int error = 0;
                if (zs_cim_create_zoning_object(q_, ZP_OP_ADD, 1, type, name.c_str(), &record,
                                                &error) != 0)
                    ++failures[t];
                std::free(record);
            };
            for (int r = 0; r < kRounds; ++r) {
                const std::string suffix = std::to_string(t) + "_" + std::to_string(r);
                // A read-modify-write of plain data with platform calls in
                // between is only safe when the mutex really excludes the
                // other threads.
                mutex_lock();
                int seen = counter;
                create_one(ZP_OBJECT_ZONE, "t" + suffix);
                std::this_thread::yield();
                counter = seen + 1;
                mutex_unlock();

                create_one(ZP_OBJECT_ZONE_SET, "free" + suffix);
                int count = 0;
                ZoneSetRecord *sets = nullptr;
                if (zs_cim_get_all_non_active_zone_sets(q_, 1, &count, &sets) != 0) ++failures[t];
                std::free(sets);
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(kThreads * kRounds, counter);
    EXPECT_EQ(std::vector<int>(kThreads, 0), failures);
    for (const std::vector<std::string> &ids : {zones(1, false, true), zoneSets(1, false, true)}) {
        EXPECT_EQ(static_cast<std::size_t>(kThreads * kRounds),
                  std::set<std::string>(ids.begin(), ids.end()).size());
    }
}

}  // namespace
}  // namespace simtest
