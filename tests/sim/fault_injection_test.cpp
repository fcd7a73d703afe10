// The switch's test mode of failing calls (ZONE_SIM_FAIL_AT and
// ZONE_SIM_FAIL_COUNT): which calls count, how each fails, and that every
// mutex_lock starts a new count. The hardening sweeps rely on all of it; a
// mode that never fired would let them pass without testing anything.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "host/cmpihost.h"
#include "platform/zoning_platform.h"

namespace {

constexpr int kNotFound = 100;
constexpr int kVsanNotConfigured = 102;
constexpr int kInjected = 106;  // "Zoning database busy"

class FaultInjectionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/zonesim-faults-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        dir_ = pattern;
        setenv("ZONE_SIM_DB", (dir_ + "/switch.db").c_str(), 1);
        ASSERT_EQ(0, init_mts(&queue_));
    }
    void TearDown() override {
        unsetenv("ZONE_SIM_FAIL_AT");
        unsetenv("ZONE_SIM_FAIL_COUNT");
        std::error_code ignored;
        std::filesystem::remove_all(dir_, ignored);
    }

    // A query that fails with a code of its own: no VSAN follows the last
    // possible number.
    int next_vsan() {
        VsanEntry entry{};
        entry.vsan = 100000;
        return vsan_cim_get_vsanEntry(queue_, ZP_VSAN_NEXT, &entry);
    }
    int create_zone(int *error) {
        void *record = nullptr;
        const int rc =
            zs_cim_create_zoning_object(queue_, ZP_OP_ADD, 10, ZP_OBJECT_ZONE, "z", &record, error);
        EXPECT_EQ(record, nullptr);
        return rc;
    }
    bool service_path_built(cmpihost::Request &) {
        return zone_service_fill_reference("VORNA_ZoneService", "root/cimv2", 10,
                                           cmpihost::broker()) != nullptr;
    }

    std::string dir_;
    int queue_ = -1;
};

TEST_F(FaultInjectionTest, FailsTheKthCountedCallOfARequestAndEveryCallAfterIt) {
    setenv("ZONE_SIM_FAIL_AT", "2", 1);
    cmpihost::Request request;
    testing::internal::CaptureStderr();
    mutex_lock();
    EXPECT_EQ(next_vsan(), kNotFound);  // call 1 answers as the switch would
    int fields[3];
    EXPECT_EQ(0, zs_cim_get_fields_from_generic_instance_id("10^2^0", &fields[0], &fields[1],
                                                            &fields[2]));  // not counted
    EXPECT_FALSE(service_path_built(request));  // call 2: a builder answers null
    int error = 0;
    EXPECT_EQ(create_zone(&error), kInjected);  // call 3: the code, also through error
    EXPECT_EQ(error, kInjected);
    mutex_unlock();

    // The next request counts from the start again.
    mutex_lock();
    EXPECT_EQ(next_vsan(), kNotFound);
    EXPECT_EQ(next_vsan(), kInjected);
    mutex_unlock();
    const std::string lines = testing::internal::GetCapturedStderr();
    EXPECT_NE(lines.find("injected fault at call 2: zone_service_fill_reference\n"),
              std::string::npos)
        << lines;
    EXPECT_NE(lines.find("injected fault at call 3: zs_cim_create_zoning_object\n"),
              std::string::npos)
        << lines;
    EXPECT_NE(lines.find("injected fault at call 2: vsan_cim_get_vsanEntry\n"), std::string::npos)
        << lines;
}

TEST_F(FaultInjectionTest, AFailureCountLetsTheSwitchRecover) {
    setenv("ZONE_SIM_FAIL_AT", "1", 1);
    setenv("ZONE_SIM_FAIL_COUNT", "1", 1);
    testing::internal::CaptureStderr();
    mutex_lock();
    int error = 0;
    EXPECT_EQ(create_zone(&error), kInjected);
    error = 0;
    EXPECT_EQ(create_zone(&error), kVsanNotConfigured);  // the switch's own answer again
    EXPECT_EQ(error, kVsanNotConfigured);
    mutex_unlock();
    testing::internal::GetCapturedStderr();
}

TEST_F(FaultInjectionTest, NothingFailsWithoutAUsablePlan) {
    cmpihost::Request request;
    for (const char *setting : {"", "0", "-3", "two", "2x"}) {
        setenv("ZONE_SIM_FAIL_AT", setting, 1);
        mutex_lock();
        EXPECT_EQ(next_vsan(), kNotFound) << "'" << setting << "'";
        EXPECT_TRUE(service_path_built(request)) << "'" << setting << "'";
        mutex_unlock();
    }
    unsetenv("ZONE_SIM_FAIL_AT");
    mutex_lock();
    for (int i = 0; i < 3; ++i) EXPECT_EQ(next_vsan(), kNotFound);
    mutex_unlock();
}

}  // namespace
