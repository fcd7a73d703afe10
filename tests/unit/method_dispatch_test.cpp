// invokeMethod: exact matching of target classes and method names, the
// outcome texts and statuses, returnDone, the zone service key refusal of
// every zoning method (made before anything else is looked at), and the
// zoning mutex held around the handler and released on every path.
#include "methods/method_fixture.h"

namespace {

using namespace method_test;

struct Method {
    const char *name;
    Handler handler;
    int without_args;  // outcome when the request carries no args object
};
const Method kMethods[] = {
    {"CreateZoneSet", ZoneSetCreation, 2},
    {"CreateZone", ZoneCreation, 2},
    {"CreateZoneAlias", ZoneAliasCreation, 2},
    {"CreateZoneMembershipSettingData", ZoneMemberCreation, 2},
    {"AddZone", AddZone, 2},
    {"AddZoneAlias", AddZoneAlias, 2},
    {"AddZoneMembershipSettingData", AddZoneMembershipSettingData, 2},
    {"ActivateZoneSet", ActivateZoneSet, 2},
    // A wrong argument count changes nothing and answers success.
    {"CreateDeviceAlias", CreateDeviceAlias, 0},
    {"RemoveDeviceAlias", RemoveDeviceAlias, 0},
};
constexpr const char *kBadParameter = "Invalid Number of Parameters Passed/Invalid Parameter";

// What one invokeMethod call gave: the status and its message, the values
// handed to the result and the number of returnDone calls.
struct Answer {
    CMPIrc rc;
    std::string msg;
    std::vector<std::string> values;
    int dones;
    bool operator==(const Answer &) const = default;
};
void PrintTo(const Answer &a, std::ostream *os) {
    *os << "{rc " << a.rc << ", \"" << a.msg << "\", " << testing::PrintToString(a.values) << ", "
        << a.dones << " done}";
}

class MethodDispatchTest : public MethodTest {
  protected:
    // `alone`: the call reaches no zone server call, only the mutex, taken
    // once and released.
    Answer invoke(const CMPIObjectPath *target, const char *method, const CMPIArgs *in,
                  bool alone = true) {
        if (alone) {
            InSequence order;
            EXPECT_CALL(platform, mutex_lock());
            EXPECT_CALL(platform, mutex_unlock());
        }
        const std::size_t before = returned().size();
        const int dones = request.doneCount();
        testing::internal::CaptureStdout();
        const CMPIStatus st = zone_Provider_InvokeMethod(
            nullptr, request.context(), request.result(), target, method, in, output);
        trace = testing::internal::GetCapturedStdout();
        testing::Mock::VerifyAndClearExpectations(&platform);
        const std::vector<std::string> all = returned();
        return {
            st.rc, cmpihost::text(st.msg),
            std::vector<std::string>(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()),
            request.doneCount() - dones};
    }
};

// Zone server codes passed through by CreateZoneSet become these texts; a
// success hands the handler's own value first. Each of the three classes
// is served alike.
TEST_F(MethodDispatchTest, TurnsEveryOutcomeIntoItsReturnText) {
    struct Case {
        int outcome;
        const char *text;  // "platform ...": described by the platform
    };
    const Case cases[] = {
        {0, "Success"},
        {1, "Invalid Zoning Object"},
        {2, kBadParameter},
        {3, "Zone Service Active Zone Config Not Supported"},
        {4, "Zone Already Present"},
        {21, "Zone Set Not Present"},
        {22, "Zone already member in ZoneSet"},
        {23, "Zone Not Present"},
        {24, "Operation Not Supported"},
        {5, "platform text of 5"},
        {20, "platform text of 20"},
        {-1, "platform text of -1"},
    };
    const char *classes[] = {"CIM_ZoneService", "VORNA_ZoneService", "VORNA_DeviceAliasService"};
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const Case &c = cases[i];
        const std::string cls = classes[i % 3];
        SCOPED_TRACE(std::to_string(c.outcome) + " on " + cls);
        const bool described = std::string(c.text).starts_with("platform");
        {
            InSequence order;
            EXPECT_CALL(platform, mutex_lock());
            EXPECT_CALL(platform, zs_cim_create_zoning_object(kQueue, 1, 7, 1, StrEq("zs"), _, _))
                .WillOnce(DoAll(SetArgPointee<5>(newRecord<ZoneSetRecord>("id")),
                                SetArgPointee<6>(c.outcome), Return(c.outcome == 0 ? 0 : -1)));
            if (c.outcome == 0)
                EXPECT_CALL(platform, zone_set_fill_reference(_, _, _, _))
                    .WillOnce(Return(pathIn("root/cimv2", "VORNA_ZoneSet")));
            if (described) EXPECT_CALL(platform, syserr2str(c.outcome)).WillOnce(Return(c.text));
            EXPECT_CALL(platform, mutex_unlock());
        }
        std::vector<std::string> values{c.text};
        if (c.outcome == 0) values.insert(values.begin(), "uint32 0");
        EXPECT_EQ(invoke(zoneService("7", cls), "CreateZoneSet", argsOf({str("zs")}), false),
                  (Answer{CMPI_RC_OK, "", values, 1}));
        EXPECT_EQ(trace.find("create zone set can't find key\n") != std::string::npos,
                  c.outcome == 2);
        EXPECT_EQ(trace.find("syserr_format \n") != std::string::npos, described);
        EXPECT_THAT(trace,
                    testing::StartsWith("ZoneProvider:invokeMethod(): className is " + cls + "\n"));
        EXPECT_THAT(trace, testing::EndsWith("ZoneProvider:invokeMethod(): Exit \n"));
    }
    EXPECT_EQ(outputRef(), "ZoneSet -> root/cimv2:VORNA_ZoneSet");
}

// An unknown method is "not found" with nothing returned; a target of
// another class (case counts) fails with "invoke Method" yet hands back
// "Success". The strict double sees no creation: no handler is reached.
TEST_F(MethodDispatchTest, RefusesUnknownMethodsAndOtherTargetClasses) {
    const Answer not_found{CMPI_RC_ERR_METHOD_NOT_FOUND, "", {}, 0};
    const Answer failed{CMPI_RC_ERR_FAILED, "invoke Method", {"Success"}, 1};
    for (const char *method :
         {"createZoneSet", "CreateZoneSet ", "CREATEZONE", "", "AddZoneMembership"})
        EXPECT_EQ(invoke(zoneService("7"), method, args()), not_found) << method;
    EXPECT_EQ(invoke(zoneService("7"), nullptr, args()), not_found);
    for (const char *cls :
         {"vorna_zoneservice", "CIM_ZoneServiceX", "VORNA_ZoneSet", "VORNA_DeviceAlias", ""})
        EXPECT_EQ(invoke(zoneService("7", cls), "CreateZoneSet", args()), failed) << cls;
    EXPECT_EQ(invoke(nullptr, "CreateZoneSet", args()), failed);
    EXPECT_EQ(outputCount(), 0u);
}

// Every method name is found and its handler refuses a request without an
// args object before calling the zone server. A zoning method refuses a key
// that names no VSAN before that, and before the debugger hook; the
// dispatcher makes it a failed status with no return value.
TEST_F(MethodDispatchTest, EveryHandlerIsReachedAndRefusesABadKeyThenMissingArgs) {
    std::vector<CMPIObjectPath *> refused;
    for (const char *text : {"0", "4097", "abc", "", "-3", "99999999999"})
        refused.push_back(zoneService(text));
    refused.push_back(pathIn(kRequestNamespace, "VORNA_ZoneService"));  // no key
    // A "Name" key that holds no text is no VSAN either.
    CMPIObjectPath *numeric = pathIn(kRequestNamespace, "VORNA_ZoneService");
    const CMPIUint16 twelve = 12;
    CMAddKey(numeric, "Name", &twelve, CMPI_uint16);
    refused.push_back(numeric);

    const Answer key_refusal{CMPI_RC_ERR_INVALID_PARAMETER, "invalid zoneservice key", {}, 1};
    for (const Method &m : kMethods) {
        SCOPED_TRACE(m.name);
        const char *text = m.without_args == 2 ? kBadParameter : "Success";
        EXPECT_EQ(invoke(zoneService("7"), m.name, nullptr), (Answer{CMPI_RC_OK, "", {text}, 1}));
        if (m.without_args == 0) continue;  // the device-alias methods have no key
        for (const CMPIObjectPath *target : refused) {
            EXPECT_EQ(invoke(target, m.name, nullptr), key_refusal);
            EXPECT_THAT(trace, testing::Not(HasSubstr("stat fail")));
        }
        // Called directly, without any target path.
        EXPECT_EQ(call(m.handler, nullptr, nullptr), ZONE_SERVICE_KEY_REFUSAL);
    }
    EXPECT_EQ(outputCount(), 0u);
}

}  // namespace
