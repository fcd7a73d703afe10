// The switch's test mode of failing calls (ZONE_SIM_FAIL_AT and
// ZONE_SIM_FAIL_COUNT): which calls count, how each fails (with its trace
// line), that every mutex_lock starts a new count, and that a failure count
// lets the switch recover. The hardening sweeps rely on all of it; a mode
// that never fired would let them pass without testing anything.
#include "host/cmpihost.h"
#include "sim_switch_support.h"

namespace simtest {
namespace {

constexpr int kInjected = 106;  // "Zoning database busy"

class FaultInjectionTest : public SwitchTest {
  protected:
    void TearDown() override {
        unsetenv("ZONE_SIM_FAIL_AT");
        unsetenv("ZONE_SIM_FAIL_COUNT");
        SwitchTest::TearDown();
    }
    // A query that fails with a code of its own: no VSAN follows the last
    // possible number.
    int nextVsan() {
        VsanEntry entry{};
        entry.vsan = 100000;
        return vsan_cim_get_vsanEntry(q_, ZP_VSAN_NEXT, &entry);
    }
    // A creation in a VSAN the switch doesn't have; the code also goes
    // through *error.
    int createZone() {
        return command([&](int *error) {
            void *record = nullptr;
            int rc =
                zs_cim_create_zoning_object(q_, ZP_OP_ADD, 10, ZP_OBJECT_ZONE, "z", &record, error);
            EXPECT_EQ(record, nullptr);
            return rc;
        });
    }
    bool servicePathBuilt() {
        return zone_service_fill_reference("VORNA_ZoneService", "root/cimv2", 10,
                                           cmpihost::broker()) != nullptr;
    }
    cmpihost::Request request_;
};

// The kth counted call of a request fails, and every call after it; the
// next request counts from the start again. A failure count lets the switch
// recover after that many failures.
TEST_F(FaultInjectionTest, FailsTheKthCountedCallOfARequestAndEveryCallAfterItOrCountOnly) {
    setenv("ZONE_SIM_FAIL_AT", "2", 1);
    testing::internal::CaptureStderr();
    mutex_lock();
    EXPECT_EQ(nextVsan(), kNotFound);  // call 1 answers as the switch would
    int fields[3];
    EXPECT_EQ(0, zs_cim_get_fields_from_generic_instance_id("10^2^0", &fields[0], &fields[1],
                                                            &fields[2]));  // not counted
    EXPECT_FALSE(servicePathBuilt());    // call 2: a builder answers null
    EXPECT_EQ(createZone(), kInjected);  // call 3: the code
    mutex_unlock();

    mutex_lock();
    EXPECT_EQ(nextVsan(), kNotFound);
    EXPECT_EQ(nextVsan(), kInjected);
    mutex_unlock();

    setenv("ZONE_SIM_FAIL_AT", "1", 1);
    setenv("ZONE_SIM_FAIL_COUNT", "1", 1);
    mutex_lock();
    EXPECT_EQ(createZone(), kInjected);
    EXPECT_EQ(createZone(), kVsanNotConfigured);  // the switch's own answer again
    mutex_unlock();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "zone switch simulator: injected fault at call 2: zone_service_fill_reference\n"
              "zone switch simulator: injected fault at call 3: zs_cim_create_zoning_object\n"
              "zone switch simulator: injected fault at call 2: vsan_cim_get_vsanEntry\n"
              "zone switch simulator: injected fault at call 1: zs_cim_create_zoning_object\n");
}

TEST_F(FaultInjectionTest, NothingFailsWithoutAUsablePlan) {
    for (const char *setting : {"", "0", "-3", "two", "2x", static_cast<const char *>(nullptr)}) {
        SCOPED_TRACE(setting != nullptr ? setting : "unset");
        if (setting != nullptr) {
            setenv("ZONE_SIM_FAIL_AT", setting, 1);
        } else {
            unsetenv("ZONE_SIM_FAIL_AT");
        }
        mutex_lock();
        for (int i = 0; i < 3; ++i) EXPECT_EQ(nextVsan(), kNotFound);
        EXPECT_TRUE(servicePathBuilt());
        mutex_unlock();
    }
}

}  // namespace
}  // namespace simtest
