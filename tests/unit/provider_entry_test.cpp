// Factories and queue start-up, and the operations that do no work. (That
// each table slot reaches its operation is seen by every integration test,
// which calls the provider through its tables.)
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "host/cmpihost.h"
#include "platform_mock.h"
#include "provider/zone_provider.h"

using ::testing::Return;
using ::testing::StrictMock;

namespace {

// Each factory call records the broker and opens the queue under the mutex
// (lock, init_mts with the address of mts_q, unlock), also after a cleanup;
// a failed start-up is reported by a line of its own and the factory still
// hands out its static object. The caller's status is left as it was.
TEST(ProviderEntryTest, EveryFactoryCallRecordsTheBrokerAndOpensTheQueue) {
    StrictMock<PlatformMock> platform;
    const CMPIBroker *broker = cmpihost::broker();
    void *first[3] = {};
    for (int init_result : {0, -5}) {
        SCOPED_TRACE(init_result);
        testing::Sequence order;
        for (int i = 0; i < 3; ++i) {
            EXPECT_CALL(platform, mutex_lock()).InSequence(order).RetiresOnSaturation();
            EXPECT_CALL(platform, init_mts(&mts_q))
                .InSequence(order)
                .WillOnce(Return(init_result))
                .RetiresOnSaturation();
            EXPECT_CALL(platform, mutex_unlock()).InSequence(order).RetiresOnSaturation();
        }
        _broker = nullptr;
        CMPIStatus status{CMPI_RC_OK, nullptr};
        testing::internal::CaptureStdout();
        CMPIInstanceMI *instance = ZoneProvider_Create_InstanceMI(broker, nullptr, &status);
        CMPIAssociationMI *association =
            ZoneProvider_Create_AssociationMI(broker, nullptr, &status);
        CMPIMethodMI *method = ZoneProvider_Create_MethodMI(broker, nullptr, &status);
        const std::string line = "get_using_cmi done init mts response q with error\n";
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  init_result == 0 ? "" : line + line + line);
        ASSERT_NE(instance, nullptr);
        ASSERT_NE(association, nullptr);
        ASSERT_NE(method, nullptr);
        EXPECT_EQ(_broker, broker);
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        EXPECT_EQ(status.msg, nullptr);
        EXPECT_EQ(instance->hdl, nullptr);
        // The interface version the broker checks before it uses a table.
        for (int version :
             {instance->ft->ftVersion, instance->ft->miVersion, association->ft->ftVersion,
              association->ft->miVersion, method->ft->ftVersion, method->ft->miVersion})
            EXPECT_EQ(version, 100);
        void *objects[3] = {instance, association, method};
        if (init_result == 0) {
            EXPECT_NE(objects[0], objects[1]);
            EXPECT_NE(objects[1], objects[2]);
            std::copy(objects, objects + 3, first);
            // The cleanups release nothing: the next round gets the same objects.
            EXPECT_EQ(instance->ft->cleanup(instance, nullptr, 1).rc, CMPI_RC_OK);
            EXPECT_EQ(association->ft->cleanup(association, nullptr, 0).rc, CMPI_RC_OK);
            EXPECT_EQ(method->ft->cleanup(method, nullptr, 1).rc, CMPI_RC_OK);
        } else {
            EXPECT_TRUE(std::equal(objects, objects + 3, first));
        }
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

// Creating, modifying and querying instances is not supported, and the
// cleanups succeed, all without a platform call (the strict double fails on
// any), a message or a line of output; so is a property list trace of no
// list or an empty one.
TEST(ProviderEntryTest, DoNothingOperationsTouchNoServiceAndCarryNoMessage) {
    StrictMock<PlatformMock> platform;
    testing::internal::CaptureStdout();
    const CMPIStatus results[] = {
        zone_Provider_CreateInstance(nullptr, nullptr, nullptr, nullptr, nullptr),
        zone_Provider_ModifyInstance(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
        zone_Provider_ExecQuery(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
        zone_Provider_Cleanup(nullptr, nullptr, 1),
        zone_Provider_AssociationCleanup(nullptr, nullptr, 0),
        zone_Provider_MethodCleanup(nullptr, nullptr, 1),
    };
    const char *empty[] = {nullptr};
    print_char_array_zp(nullptr);
    print_char_array_zp(empty);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(results[i].rc, i < 3 ? CMPI_RC_ERR_NOT_SUPPORTED : CMPI_RC_OK) << i;
        EXPECT_EQ(results[i].msg, nullptr) << i;
    }
}

}  // namespace
