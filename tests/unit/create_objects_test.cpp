// CreateZoneSet, CreateZone and CreateZoneAlias: what reaches the zone
// server, what comes back to the client (output reference, own return
// value), and every refusal, which must leave the zone server alone.
#include "methods/method_fixture.h"

using ::testing::_;
using ::testing::DoAll;
using ::testing::Invoke;
using ::testing::Return;
using ::testing::SetArgPointee;
using ::testing::StrEq;

namespace {

using namespace method_test;

struct CreationCase {
    const char *method;
    Handler handler;
    int required_count;
    int object_type;
    const char *class_name;
    const char *output_name;
    std::vector<Returned> own_return;
    const char *success_trace;    // printed when "fabricA" is created
    const char *null_name_trace;  // printed when position 0 holds a null value
};

std::vector<CreationCase> creationCases() {
    return {
        {"CreateZoneSet",
         ZoneSetCreation,
         1,
         1,
         "VORNA_ZoneSet",
         "ZoneSet",
         {uint32Zero()},
         "ZoneProvider:: invokeMethod(): zoneset name is fabricA \n",
         "ZoneProvider:: invokeMethod(): No Zoneset name specified\n"},
        {"CreateZone",
         ZoneCreation,
         3,
         0,
         "VORNA_Zone",
         "Zone",
         {},
         "zone name is fabricA \n",
         "No Zone name specified\n"},
        {"CreateZoneAlias",
         ZoneAliasCreation,
         1,
         2,
         "VORNA_ZoneAlias",
         "ZoneAlias",
         {sint32Zero()},
         "ZoneAliasCreation: Enter",
         "Bad input parameter!"},
    };
}

class CreateObjectsTest : public MethodTest<> {
  protected:
    // Arguments of the required count; position 0 holds the name.
    CMPIArgs *argsWithName(const CreationCase &c, const std::string &name) {
        CMPIArgs *in = args();
        cmpihost::addStringArg(in, "Name", name);
        for (int i = 1; i < c.required_count; ++i)
            cmpihost::addStringArg(in, "Extra" + std::to_string(i), "ignored");
        return in;
    }

    // The builder of the case's class, answering with a path made here.
    void expectReference(const CreationCase &c, void *record, CMPIObjectPath *path) {
        switch (c.object_type) {
            case 1:
                EXPECT_CALL(platform,
                            zone_set_fill_reference(StrEq(c.class_name), StrEq("root/cimv2"),
                                                    static_cast<ZoneSetRecord *>(record), _broker))
                    .WillOnce(Return(path));
                break;
            case 0:
                EXPECT_CALL(platform,
                            zone_fill_reference(StrEq(c.class_name), StrEq("root/cimv2"),
                                                static_cast<ZoneRecord *>(record), _broker))
                    .WillOnce(Return(path));
                break;
            default:
                EXPECT_CALL(platform, zone_alias_fill_reference(
                                          StrEq(c.class_name), StrEq("root/cimv2"),
                                          static_cast<ZoneAliasRecord *>(record), _broker))
                    .WillOnce(Return(path));
        }
    }

    void *newObjectRecord(const CreationCase &c) {
        if (c.object_type == 1) return newRecord<ZoneSetRecord>("zs-id", "fabricA");
        return newRecord<ZoneRecord>("z-id", "fabricA");
    }
};

TEST_F(CreateObjectsTest, CreatesInTheZoneServiceVsanAndHandsBackAReferenceInRootCimv2) {
    for (const CreationCase &c : creationCases()) {
        SCOPED_TRACE(c.method);
        output = request.newArgs();
        const size_t delivered_before = returned().size();
        void *record = newObjectRecord(c);
        CMPIObjectPath *built = pathIn("root/cimv2", c.class_name);
        EXPECT_CALL(platform, zs_cim_create_zoning_object(kQueue, 1, 12, c.object_type,
                                                          StrEq("fabricA"), _, _))
            .WillOnce(DoAll(SetArgPointee<5>(record), Return(0)));
        expectReference(c, record, built);

        testing::internal::CaptureStdout();
        // "12x" reads as VSAN 12: the conversion stops at the first non-digit.
        const int outcome = call(c.handler, zoneService("12x"), argsWithName(c, "fabricA"));
        const std::string trace = testing::internal::GetCapturedStdout();

        EXPECT_EQ(outcome, 0);
        ASSERT_EQ(outputCount(), 1u);
        const auto ref = outputRef();
        EXPECT_EQ(ref.name, c.output_name);
        EXPECT_EQ(ref.type, CMPI_ref);
        EXPECT_EQ(ref.ns, "root/cimv2");
        EXPECT_EQ(ref.cls, c.class_name);
        const std::vector<Returned> all = returned();
        EXPECT_EQ(std::vector<Returned>(all.begin() + delivered_before, all.end()), c.own_return);
        EXPECT_EQ(request.doneCount(), 0);
        EXPECT_THAT(trace, testing::HasSubstr(c.success_trace));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

TEST_F(CreateObjectsTest, AcceptsVsansOneToFourThousandNinetySixAndRefusesTheRest) {
    for (const CreationCase &c : creationCases()) {
        SCOPED_TRACE(c.method);
        for (const char *accepted : {"1", "4096"}) {
            EXPECT_CALL(platform, zs_cim_create_zoning_object(kQueue, 1, std::atoi(accepted),
                                                              c.object_type, _, _, _))
                .WillOnce(DoAll(SetArgPointee<6>(24), Return(-1)));
            EXPECT_EQ(call(c.handler, zoneService(accepted), argsWithName(c, "n")), 24);
        }
        // Refused before anything else is looked at: the strict double sees
        // no call, whatever the arguments.
        for (const std::string &refused : refusedVsanTexts())
            EXPECT_EQ(call(c.handler, zoneService(refused), argsWithName(c, "n")),
                      ZONE_SERVICE_KEY_REFUSAL)
                << refused;
        EXPECT_EQ(call(c.handler, keylessZoneService(), argsWithName(c, "n")),
                  ZONE_SERVICE_KEY_REFUSAL);
        EXPECT_EQ(call(c.handler, nullptr, argsWithName(c, "n")), ZONE_SERVICE_KEY_REFUSAL);
        // A "Name" key that holds no text is no VSAN either.
        CMPIObjectPath *numeric = keylessZoneService();
        const CMPIUint16 twelve = 12;
        CMAddKey(numeric, "Name", &twelve, CMPI_uint16);
        EXPECT_EQ(call(c.handler, numeric, argsWithName(c, "n")), ZONE_SERVICE_KEY_REFUSAL);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(outputCount(), 0u);
}

TEST_F(CreateObjectsTest, RefusesBadArgumentsWithOutcomeTwoAndCreatesNothing) {
    for (const CreationCase &c : creationCases()) {
        SCOPED_TRACE(c.method);
        CMPIObjectPath *target = zoneService("5");
        // Wrong counts: one fewer, one more, none; and no args object at all.
        CMPIArgs *fewer = args();
        for (int i = 0; i + 1 < c.required_count; ++i)
            cmpihost::addStringArg(fewer, "A" + std::to_string(i), "n");
        CMPIArgs *more = argsWithName(c, "n");
        cmpihost::addStringArg(more, "Surplus", "n");
        EXPECT_EQ(call(c.handler, target, fewer), 2);
        EXPECT_EQ(call(c.handler, target, more), 2);
        EXPECT_EQ(call(c.handler, target, args()), 2);
        EXPECT_EQ(call(c.handler, target, nullptr), 2);

        // An empty name, a name of another type, a null name.
        EXPECT_EQ(call(c.handler, target, argsWithName(c, "")), 2);
        CMPIArgs *numeric = args();
        CMPIValue number{};
        number.uint16 = 7;
        cmpihost::addValueArg(numeric, "Name", number, CMPI_uint16);
        for (int i = 1; i < c.required_count; ++i)
            cmpihost::addStringArg(numeric, "Extra" + std::to_string(i), "x");
        EXPECT_EQ(call(c.handler, target, numeric), 2);
        CMPIArgs *null_name = args();
        CMPIValue none{};
        cmpihost::addValueArg(null_name, "Name", none, CMPI_string);
        for (int i = 1; i < c.required_count; ++i)
            cmpihost::addStringArg(null_name, "Extra" + std::to_string(i), "x");
        testing::internal::CaptureStdout();
        EXPECT_EQ(call(c.handler, target, null_name), 2);
        const std::string trace = testing::internal::GetCapturedStdout();
        EXPECT_THAT(trace, testing::HasSubstr(c.null_name_trace));
    }
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(outputCount(), 0u);
    EXPECT_EQ(request.doneCount(), 0);
}

TEST_F(CreateObjectsTest, CutsLongNamesTo253Characters) {
    const std::string long_name(300, 'n');
    for (const CreationCase &c : creationCases()) {
        SCOPED_TRACE(c.method);
        EXPECT_CALL(platform, zs_cim_create_zoning_object(kQueue, 1, 9, c.object_type,
                                                          StrEq(long_name.substr(0, 253)), _, _))
            .WillOnce(DoAll(SetArgPointee<6>(4), Return(-1)));
        EXPECT_EQ(call(c.handler, zoneService("9"), argsWithName(c, long_name)), 4);
    }
}

TEST_F(CreateObjectsTest, PassesTheZoneServerRefusalThroughAndTouchesNoOutput) {
    for (const CreationCase &c : creationCases()) {
        SCOPED_TRACE(c.method);
        // A record handed back together with a failure is still released.
        EXPECT_CALL(platform, zs_cim_create_zoning_object(kQueue, 1, 3, c.object_type, _, _, _))
            .WillOnce(DoAll(SetArgPointee<5>(newObjectRecord(c)), SetArgPointee<6>(4), Return(1)));
        EXPECT_EQ(call(c.handler, zoneService("3"), argsWithName(c, "dup")), 4);
    }
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(outputCount(), 0u);
}

TEST_F(CreateObjectsTest, AddsNoOutputWhenTheBuilderCannotMakeThePath) {
    const CreationCase c = creationCases()[0];
    void *record = newObjectRecord(c);
    EXPECT_CALL(platform, zs_cim_create_zoning_object(kQueue, 1, 3, 1, _, _, _))
        .WillOnce(DoAll(SetArgPointee<5>(record), Return(0)));
    expectReference(c, record, nullptr);
    EXPECT_EQ(call(c.handler, zoneService("3"), argsWithName(c, "zs")), 0);
    EXPECT_EQ(outputCount(), 0u);
    EXPECT_EQ(returned(), std::vector<Returned>{uint32Zero()});
}

}  // namespace
