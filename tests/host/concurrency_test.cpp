// Requests on different threads are independent: each thread builds and
// delivers into its own request while the others do the same, a request is
// current only on its own thread, and objects made with no request land
// safely in the shared process arena.
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "host_test_support.h"

namespace {

using cmpihost::Request;
using host_test::mb;

constexpr int kThreads = 6;
constexpr int kObjects = 25;

// Runs body(t) on kThreads threads at once.
template <typename Body>
void onThreads(Body body) {
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) threads.emplace_back(body, t);
    for (std::thread &thread : threads) thread.join();
}

// One request's worth of work; false when what came back is not what went in.
bool runOneRequest(int thread, int round) {
    Request request;
    const std::string ns = "ns" + std::to_string(thread);
    for (int i = 0; i < kObjects; ++i) {
        CMPIObjectPath *op = CMNewObjectPath(mb(), ns.c_str(), "VORNA_Zone", nullptr);
        const std::string id = std::to_string(round) + "^" + std::to_string(i);
        CMAddKey(op, "InstanceID", id.c_str(), CMPI_chars);
        CMReturnInstance(request.result(), CMNewInstance(mb(), op, nullptr));
    }
    CMReturnDone(request.result());
    if (request.deliveries().size() != kObjects || request.doneCount() != 1) return false;
    for (int i = 0; i < kObjects; ++i) {
        const std::string expected = ns + ":VORNA_Zone.InstanceID=\"" + std::to_string(round) +
                                     "^" + std::to_string(i) + "\"";
        const CMPIInstance *ci = request.deliveries()[i].instance;
        if (cmpihost::pathToString(CMGetObjectPath(ci, nullptr)) != expected) return false;
    }
    return true;
}

TEST(Concurrency, ThreadsFillTheirOwnRequestsAtOnceAndShareTheProcessArena) {
    const std::size_t before = cmpihost::liveObjectCount();
    std::atomic<int> failures{0};
    onThreads([&failures](int t) {
        for (int round = 0; round < 40; ++round) {
            if (!runOneRequest(t, round)) ++failures;
        }
    });
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(cmpihost::liveObjectCount(), before);

    onThreads([](int) {
        for (int i = 0; i < kObjects; ++i) CMNewString(mb(), "shared", nullptr);
    });
    EXPECT_EQ(cmpihost::liveObjectCount(), before + kThreads * kObjects);
}

TEST(Concurrency, ARequestIsCurrentOnlyOnItsOwnThread) {
    Request request;
    const std::size_t own = request.objectCount();
    std::thread other([] { CMNewString(mb(), "elsewhere", nullptr); });
    other.join();
    EXPECT_EQ(request.objectCount(), own);
    CMNewString(mb(), "here", nullptr);
    EXPECT_EQ(request.objectCount(), own + 1);
}

}  // namespace
