// invokeMethod: exact matching of target classes and method names, the
// outcome texts, the statuses, returnDone, and the zoning mutex held around
// the handler and released on every path.
#include "methods/method_fixture.h"

using ::testing::_;
using ::testing::DoAll;
using ::testing::Expectation;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::SetArgPointee;
using ::testing::StrEq;

namespace {

using namespace method_test;

template <template <typename> class MockKind>
class DispatchTest : public MethodTest<MockKind> {
  protected:
    using MethodTest<MockKind>::request;
    using MethodTest<MockKind>::output;
    using MethodTest<MockKind>::args;
    using MethodTest<MockKind>::platform;

    CMPIStatus invoke(const CMPIObjectPath *target, const char *method, const CMPIArgs *in) {
        return zone_Provider_InvokeMethod(nullptr, request.context(), request.result(), target,
                                          method, in, output);
    }
    CMPIArgs *nameArg(const std::string &name) {
        CMPIArgs *in = args();
        cmpihost::addStringArg(in, "ZoneSetName", name);
        return in;
    }
    void expectMutexOnce() {
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        EXPECT_CALL(platform, mutex_unlock());
    }
};

using MethodDispatchTest = DispatchTest<::testing::StrictMock>;
using LenientDispatchTest = DispatchTest<::testing::NiceMock>;

struct OutcomeCase {
    int outcome;
    const char *text;
    bool described_by_platform;
};

// Zone server codes passed through by CreateZoneSet become these texts.
TEST_F(MethodDispatchTest, TurnsEveryOutcomeIntoItsReturnText) {
    const OutcomeCase cases[] = {
        {1, "Invalid Zoning Object", false},
        {2, "Invalid Number of Parameters Passed/Invalid Parameter", false},
        {3, "Zone Service Active Zone Config Not Supported", false},
        {4, "Zone Already Present", false},
        {21, "Zone Set Not Present", false},
        {22, "Zone already member in ZoneSet", false},
        {23, "Zone Not Present", false},
        {24, "Operation Not Supported", false},
        {5, "platform text of 5", true},
        {20, "platform text of 20", true},
        {-1, "platform text of -1", true},
    };
    for (const OutcomeCase &c : cases) {
        SCOPED_TRACE(c.outcome);
        const size_t before = returned().size();
        const int done_before = request.doneCount();
        {
            InSequence order;
            EXPECT_CALL(platform, mutex_lock());
            EXPECT_CALL(platform, zs_cim_create_zoning_object(kQueue, 1, 7, 1, StrEq("zs"), _, _))
                .WillOnce(DoAll(SetArgPointee<6>(c.outcome), Return(-1)));
            if (c.described_by_platform)
                EXPECT_CALL(platform, syserr2str(c.outcome)).WillOnce(Return(c.text));
            EXPECT_CALL(platform, mutex_unlock());
        }
        testing::internal::CaptureStdout();
        const CMPIStatus st = invoke(zoneService("7"), "CreateZoneSet", nameArg("zs"));
        const std::string trace = testing::internal::GetCapturedStdout();

        EXPECT_EQ(st.rc, CMPI_RC_OK);
        EXPECT_EQ(st.msg, nullptr);
        const std::vector<Returned> all = returned();
        EXPECT_EQ(std::vector<Returned>(all.begin() + before, all.end()),
                  std::vector<Returned>{textValue(c.text)});
        EXPECT_EQ(request.doneCount(), done_before + 1);
        EXPECT_EQ(trace.find("create zone set can't find key\n") != std::string::npos,
                  c.outcome == 2);
        EXPECT_EQ(trace.find("syserr_format \n") != std::string::npos, c.described_by_platform);
        EXPECT_THAT(trace, testing::StartsWith(
                               "ZoneProvider:invokeMethod(): className is VORNA_ZoneService\n"));
        EXPECT_THAT(trace, testing::EndsWith("ZoneProvider:invokeMethod(): Exit \n"));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

TEST_F(MethodDispatchTest, UnknownMethodNamesAreNotFoundAndLeaveTheResultUntouched) {
    for (const char *method :
         {"createZoneSet", "CreateZoneSet ", "CREATEZONE", "Bogus", "", "AddZoneMembership"}) {
        SCOPED_TRACE(method);
        expectMutexOnce();
        const CMPIStatus st = invoke(zoneService("7"), method, nameArg("zs"));
        EXPECT_EQ(st.rc, CMPI_RC_ERR_METHOD_NOT_FOUND);
        EXPECT_EQ(st.msg, nullptr);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    expectMutexOnce();
    EXPECT_EQ(invoke(zoneService("7"), nullptr, nameArg("zs")).rc, CMPI_RC_ERR_METHOD_NOT_FOUND);
    EXPECT_TRUE(request.deliveries().empty());
    EXPECT_EQ(request.doneCount(), 0);
    EXPECT_EQ(outputCount(), 0u);
}

TEST_F(MethodDispatchTest, RefusesOtherTargetClassesWithInvokeMethodButAnswersSuccess) {
    int calls = 0;
    for (const char *cls : {"vorna_zoneservice", "VORNA_ZONESERVICE", "CIM_ZoneServiceX",
                            "VORNA_ZoneSet", "VORNA_DeviceAlias", ""}) {
        SCOPED_TRACE(cls);
        expectMutexOnce();
        // The handler is never reached: the strict double sees no creation.
        const CMPIStatus st = invoke(zoneService("7", cls), "CreateZoneSet", nameArg("zs"));
        ++calls;
        EXPECT_EQ(st.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(cmpihost::text(st.msg), "invoke Method");
        EXPECT_EQ(returned().size(), static_cast<size_t>(calls));
        EXPECT_EQ(returned().back(), textValue("Success"));
        EXPECT_EQ(request.doneCount(), calls);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    // A target without a path at all is refused the same way.
    expectMutexOnce();
    EXPECT_EQ(invoke(nullptr, "CreateZoneSet", nameArg("zs")).rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(outputCount(), 0u);
}

TEST_F(MethodDispatchTest, ServesEveryMethodOnEachOfTheThreeClassesAlike) {
    int done = 0;
    for (const char *cls : {"CIM_ZoneService", "VORNA_ZoneService", "VORNA_DeviceAliasService"}) {
        SCOPED_TRACE(cls);
        output = request.newArgs();
        const size_t before = returned().size();
        {
            InSequence order;
            EXPECT_CALL(platform, mutex_lock());
            EXPECT_CALL(platform, zs_cim_create_zoning_object(kQueue, 1, 40, 0, StrEq("z1"), _, _))
                .WillOnce(DoAll(SetArgPointee<5>(newRecord<ZoneRecord>("z-id", "z1")), Return(0)));
            EXPECT_CALL(platform,
                        zone_fill_reference(StrEq("VORNA_Zone"), StrEq("root/cimv2"), _, _broker))
                .WillOnce(Return(pathIn("root/cimv2", "VORNA_Zone")));
            EXPECT_CALL(platform, mutex_unlock());
        }
        CMPIArgs *in = args();
        cmpihost::addStringArg(in, "ZoneName", "z1");
        cmpihost::addStringArg(in, "B", "");
        cmpihost::addStringArg(in, "C", "");
        const CMPIStatus st = invoke(zoneService("40", cls), "CreateZone", in);
        EXPECT_EQ(st.rc, CMPI_RC_OK);
        // CreateZone hands no value of its own: only the text.
        const std::vector<Returned> all = returned();
        EXPECT_EQ(std::vector<Returned>(all.begin() + before, all.end()),
                  std::vector<Returned>{textValue("Success")});
        EXPECT_EQ(request.doneCount(), ++done);
        EXPECT_EQ(outputRef().name, "Zone");
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

TEST_F(MethodDispatchTest, AKeyRefusalFailsWithInvalidParameterAndNoReturnValue) {
    for (const char *method :
         {"CreateZoneSet", "CreateZone", "CreateZoneAlias", "CreateZoneMembershipSettingData",
          "AddZone", "AddZoneAlias", "AddZoneMembershipSettingData", "ActivateZoneSet"}) {
        SCOPED_TRACE(method);
        expectMutexOnce();
        const int done_before = request.doneCount();
        const CMPIStatus st = invoke(zoneService("4097"), method, nameArg("zs"));
        EXPECT_EQ(st.rc, CMPI_RC_ERR_INVALID_PARAMETER);
        EXPECT_EQ(cmpihost::text(st.msg), "invalid zoneservice key");
        EXPECT_EQ(request.doneCount(), done_before + 1);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_TRUE(request.deliveries().empty());
}

TEST_F(MethodDispatchTest, ASuccessfulAddZoneDeliversItsNumberThenTheText) {
    {
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        EXPECT_CALL(platform, zs_cim_get_fields_from_generic_instance_id(StrEq("zs1"), _, _, _))
            .WillOnce(
                DoAll(SetArgPointee<1>(8), SetArgPointee<2>(1), SetArgPointee<3>(0), Return(0)));
        EXPECT_CALL(platform, zs_cim_get_fields_from_generic_instance_id(StrEq("z1"), _, _, _))
            .WillOnce(
                DoAll(SetArgPointee<1>(8), SetArgPointee<2>(2), SetArgPointee<3>(0), Return(0)));
        EXPECT_CALL(platform, zs_cim_get_zone_set(kQueue, 1, 8, 0, _, _))
            .WillOnce(DoAll(SetArgPointee<4>(1), Return(0)));
        EXPECT_CALL(platform, zs_cim_get_zone(kQueue, 2, 8, 0, _, _))
            .WillOnce(DoAll(SetArgPointee<4>(1), Return(0)));
        EXPECT_CALL(platform, zs_cim_get_zone_set_zones_by_instance_id(kQueue, StrEq("zs1"), _))
            .WillOnce(Return(0));
        EXPECT_CALL(platform, zs_cim_add_zone_to_zone_set(kQueue, 1, 8, 1, 2, _))
            .WillOnce(Return(0));
        EXPECT_CALL(platform, mutex_unlock());
    }
    CMPIArgs *in = args();
    cmpihost::addReferenceArg(in, "ZoneSet", zoningRef("VORNA_ZoneSet", "zs1"));
    cmpihost::addReferenceArg(in, "Zone", zoningRef("VORNA_Zone", "z1"));
    const CMPIStatus st = invoke(zoneService("8", "CIM_ZoneService"), "AddZone", in);
    EXPECT_EQ(st.rc, CMPI_RC_OK);
    EXPECT_EQ(returned(), (std::vector<Returned>{sint32Zero(), textValue("Success")}));
    EXPECT_EQ(request.doneCount(), 2);
}

TEST_F(LenientDispatchTest, DeviceAliasMethodsAreReachedOnTheZoneService) {
    // With the wrong argument count the device-alias handlers change nothing;
    // the call must get past the dispatcher to them (not "not found").
    ON_CALL(platform, syserr2str(_)).WillByDefault(Return("text"));
    for (const char *method : {"CreateDeviceAlias", "RemoveDeviceAlias"}) {
        const CMPIStatus st = invoke(zoneService("1"), method, args());
        EXPECT_EQ(st.rc, CMPI_RC_OK) << method;
    }
    EXPECT_FALSE(returned().empty());
    EXPECT_EQ(request.doneCount(), 2);
}

TEST_F(MethodDispatchTest, SurvivesMissingArgumentObjects) {
    expectMutexOnce();
    const CMPIStatus st =
        zone_Provider_InvokeMethod(nullptr, request.context(), request.result(), zoneService("7"),
                                   "CreateZoneSet", nullptr, nullptr);
    EXPECT_EQ(st.rc, CMPI_RC_OK);
    EXPECT_EQ(returned(), std::vector<Returned>{
                              textValue("Invalid Number of Parameters Passed/Invalid Parameter")});
}

}  // namespace
