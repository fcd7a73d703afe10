// Factories, function tables, queue start-up and the operations that do no
// work.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstring>
#include <string>

#include "host/cmpihost.h"
#include "platform_mock.h"
#include "provider/zone_provider.h"

using ::testing::_;
using ::testing::Return;
using ::testing::StrictMock;

namespace {

class ProviderEntryTest : public ::testing::Test {
  protected:
    StrictMock<PlatformMock> platform;

    // One queue start-up per factory call, in order: lock, init_mts with the
    // address of mts_q, unlock.
    testing::Sequence order;
    void expect_start_up(int init_result) {
        EXPECT_CALL(platform, mutex_lock()).InSequence(order).RetiresOnSaturation();
        EXPECT_CALL(platform, init_mts(&mts_q))
            .InSequence(order)
            .WillOnce(Return(init_result))
            .RetiresOnSaturation();
        EXPECT_CALL(platform, mutex_unlock()).InSequence(order).RetiresOnSaturation();
    }
};

TEST_F(ProviderEntryTest, FactoriesHandOutTheirTablesAndOpenTheQueueEachTime) {
    for (int i = 0; i < 3; ++i) expect_start_up(0);
    CMPIStatus status{CMPI_RC_OK, nullptr};
    const CMPIBroker *broker = cmpihost::broker();

    CMPIInstanceMI *instance = ZoneProvider_Create_InstanceMI(broker, nullptr, &status);
    CMPIAssociationMI *association = ZoneProvider_Create_AssociationMI(broker, nullptr, &status);
    CMPIMethodMI *method = ZoneProvider_Create_MethodMI(broker, nullptr, &status);

    ASSERT_NE(instance, nullptr);
    ASSERT_NE(association, nullptr);
    ASSERT_NE(method, nullptr);
    EXPECT_NE(static_cast<void *>(instance), static_cast<void *>(association));
    EXPECT_NE(static_cast<void *>(association), static_cast<void *>(method));
    EXPECT_EQ(instance->hdl, nullptr);
    EXPECT_STREQ(instance->ft->miName, "instanceZoneProvider");
    EXPECT_STREQ(association->ft->miName, "associationZoneProvider");
    EXPECT_STREQ(method->ft->miName, "methodZoneProvider");
    for (int version :
         {instance->ft->ftVersion, instance->ft->miVersion, association->ft->ftVersion,
          association->ft->miVersion, method->ft->ftVersion, method->ft->miVersion})
        EXPECT_EQ(version, 100);
    EXPECT_EQ(instance->ft->enumInstanceNames, zone_Provider_EnumInstanceNames);
    EXPECT_EQ(instance->ft->deleteInstance, zone_Provider_DeleteInstance);
    EXPECT_EQ(association->ft->referenceNames, zone_Provider_ReferenceNames);
    EXPECT_EQ(method->ft->invokeMethod, zone_Provider_InvokeMethod);
    EXPECT_EQ(_broker, broker);
    // The status is left as the caller set it.
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(status.msg, nullptr);
}

TEST_F(ProviderEntryTest, FailedQueueStartUpIsReportedPerCallAndTheFactoryStillAnswers) {
    for (int i = 0; i < 2; ++i) expect_start_up(-5);
    testing::internal::CaptureStdout();
    EXPECT_NE(ZoneProvider_Create_InstanceMI(cmpihost::broker(), nullptr, nullptr), nullptr);
    EXPECT_NE(ZoneProvider_Create_MethodMI(cmpihost::broker(), nullptr, nullptr), nullptr);
    const std::string out = testing::internal::GetCapturedStdout();
    const std::string line = "get_using_cmi done init mts response q with error\n";
    EXPECT_EQ(out, line + line);
}

TEST_F(ProviderEntryTest, DoNothingOperationsTouchNoServiceAndCarryNoMessage) {
    // A StrictMock with no expectations: any platform call fails the test.
    testing::internal::CaptureStdout();
    const CMPIStatus results[] = {
        zone_Provider_CreateInstance(nullptr, nullptr, nullptr, nullptr, nullptr),
        zone_Provider_ModifyInstance(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
        zone_Provider_ExecQuery(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
    };
    for (const CMPIStatus &status : results) {
        EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
        EXPECT_EQ(status.msg, nullptr);
    }
    const CMPIStatus cleanups[] = {
        zone_Provider_Cleanup(nullptr, nullptr, 1),
        zone_Provider_AssociationCleanup(nullptr, nullptr, 0),
        zone_Provider_MethodCleanup(nullptr, nullptr, 1),
    };
    for (const CMPIStatus &status : cleanups) {
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        EXPECT_EQ(status.msg, nullptr);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(ProviderEntryTest, ProviderStaysUsableAfterACleanup) {
    for (int i = 0; i < 2; ++i) expect_start_up(0);
    CMPIInstanceMI *first = ZoneProvider_Create_InstanceMI(cmpihost::broker(), nullptr, nullptr);
    EXPECT_EQ(first->ft->cleanup(first, nullptr, 1).rc, CMPI_RC_OK);
    CMPIInstanceMI *again = ZoneProvider_Create_InstanceMI(cmpihost::broker(), nullptr, nullptr);
    EXPECT_EQ(again, first);
    EXPECT_STREQ(again->ft->miName, "instanceZoneProvider");
}

TEST(DebugHook, WithoutTheMarkerFileItOnlyTraces) {
    struct stat marker;
    ASSERT_NE(stat("/etc/cim_debug_provider_zone", &marker), 0)
        << "the debug marker file would stop this test process";
    testing::internal::CaptureStdout();
    debug_attach_hook();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\nstat fail for /etc/cim_debug_provider_zone\n");
}

TEST(PropertyListTrace, PrintsOneNumberedLinePerEntry) {
    const char *empty[] = {nullptr};
    const char *two[] = {"Name", "InstanceID", nullptr};
    testing::internal::CaptureStdout();
    print_char_array_zp(nullptr);
    print_char_array_zp(empty);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    testing::internal::CaptureStdout();
    print_char_array_zp(two);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "In Zone Provider:: Property [ 0 ] = Name \n"
              "In Zone Provider:: Property [ 1 ] = InstanceID \n");
}

}  // namespace
