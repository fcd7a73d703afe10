// Requests on different threads are independent: each thread builds and
// delivers into its own request while the others do the same, and objects
// made with no request land safely in the shared process arena.
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "host_test_support.h"

namespace {

using cmpihost::Request;

constexpr int kThreads = 6;
constexpr int kRequestsPerThread = 40;
constexpr int kObjectsPerRequest = 25;

const CMPIBroker *mb() {
    return cmpihost::broker();
}

// One request's worth of work; false when what came back is not what went in.
bool runOneRequest(int thread, int round) {
    Request request;
    const std::string ns = "ns" + std::to_string(thread);
    for (int i = 0; i < kObjectsPerRequest; ++i) {
        CMPIObjectPath *op = CMNewObjectPath(mb(), ns.c_str(), "VORNA_Zone", nullptr);
        const std::string id = std::to_string(round) + "^" + std::to_string(i);
        CMAddKey(op, "InstanceID", id.c_str(), CMPI_chars);
        CMPIInstance *ci = CMNewInstance(mb(), op, nullptr);
        CMPIUint32 value = static_cast<CMPIUint32>(i);
        CMSetProperty(ci, "Index", &value, CMPI_uint32);
        CMReturnInstance(request.result(), ci);
    }
    CMReturnDone(request.result());
    if (request.deliveries().size() != kObjectsPerRequest || request.doneCount() != 1) {
        return false;
    }
    for (int i = 0; i < kObjectsPerRequest; ++i) {
        const CMPIInstance *ci = request.deliveries()[i].instance;
        const std::string expected = ns + ":VORNA_Zone.InstanceID=\"" + std::to_string(round) +
                                     "^" + std::to_string(i) + "\"";
        if (cmpihost::pathToString(CMGetObjectPath(ci, nullptr)) != expected) return false;
        if (CMGetProperty(ci, "Index", nullptr).value.uint32 != static_cast<CMPIUint32>(i)) {
            return false;
        }
    }
    return true;
}

TEST(Concurrency, ThreadsFillTheirOwnRequestsAtOnce) {
    const std::size_t before = cmpihost::liveObjectCount();
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, &failures] {
            for (int round = 0; round < kRequestsPerThread; ++round) {
                if (!runOneRequest(t, round)) ++failures;
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(cmpihost::liveObjectCount(), before);
}

TEST(Concurrency, ThreadsWithoutARequestShareTheProcessArena) {
    const std::size_t before = cmpihost::liveObjectCount();
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < kObjectsPerRequest; ++i) CMNewString(mb(), "shared", nullptr);
        });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(cmpihost::liveObjectCount(), before + kThreads * kObjectsPerRequest);
}

TEST(Concurrency, ARequestIsCurrentOnlyOnItsOwnThread) {
    Request request;
    const std::size_t own = request.objectCount();
    const void *seen = nullptr;
    std::thread other([&seen] { seen = CMNewString(mb(), "elsewhere", nullptr); });
    other.join();
    EXPECT_NE(seen, nullptr);
    EXPECT_EQ(request.objectCount(), own);
    CMNewString(mb(), "here", nullptr);
    EXPECT_EQ(request.objectCount(), own + 1);
}

}  // namespace
