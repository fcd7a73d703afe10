// CreateZoneSet, CreateZone and CreateZoneAlias: what reaches the zone
// server (VSAN, type, name cut to 253 characters), what comes back to the
// client (output reference, own return value, nothing on failure), the
// release of a record handed back with a failure, and every argument
// refusal, which must leave the zone server alone.
#include "methods/method_fixture.h"

namespace {

using namespace method_test;

struct Creation {
    const char *method;
    Handler handler;
    int required_count;
    int object_type;
    const char *class_name;     // output argument: the name without "VORNA_"
    const char *own_return;     // null: none
    const char *named_trace;    // printed when "fabricA" is created
    const char *unnamed_trace;  // printed when position 0 holds a null value
};
const Creation kCreations[] = {
    {"CreateZoneSet", ZoneSetCreation, 1, 1, "VORNA_ZoneSet", "uint32 0",
     "ZoneProvider:: invokeMethod(): zoneset name is fabricA \n",
     "ZoneProvider:: invokeMethod(): No Zoneset name specified\n"},
    {"CreateZone", ZoneCreation, 3, 0, "VORNA_Zone", nullptr, "zone name is fabricA \n",
     "No Zone name specified\n"},
    {"CreateZoneAlias", ZoneAliasCreation, 1, 2, "VORNA_ZoneAlias", "sint32 0",
     "ZoneAliasCreation: Enter", "Bad input parameter!"},
};

class CreateObjectsTest : public MethodTest {
  protected:
    // The required count of arguments: `first` at position 0, then texts.
    CMPIArgs *argsWith(const Creation &c, Arg first) {
        std::vector<Arg> list{std::move(first)};
        while (static_cast<int>(list.size()) < c.required_count) list.push_back(str("ignored"));
        return argsOf(list);
    }

    // The builder of the case's class is given the record, answers `path`.
    void builds(const Creation &c, void *record, CMPIObjectPath *path) {
        const auto cls = StrEq(c.class_name);
        const auto ns = StrEq("root/cimv2");
        if (c.object_type == 1)
            EXPECT_CALL(platform, zone_set_fill_reference(
                                      cls, ns, static_cast<ZoneSetRecord *>(record), _broker))
                .WillOnce(Return(path));
        else if (c.object_type == 0)
            EXPECT_CALL(platform,
                        zone_fill_reference(cls, ns, static_cast<ZoneRecord *>(record), _broker))
                .WillOnce(Return(path));
        else
            EXPECT_CALL(platform, zone_alias_fill_reference(
                                      cls, ns, static_cast<ZoneAliasRecord *>(record), _broker))
                .WillOnce(Return(path));
    }
};

// Three ways a creation ends, in VSANs "12x" (read as 12: the conversion
// stops at the first non-digit), 4096 and 1, the last and first accepted:
// - the reference is built and handed back with the method's own value;
// - the builder can't make the path: no output is added (the object exists
//   all the same, and a null reference would tell the client nothing);
// - the zone server refuses: its code is passed through, a record handed
//   back with the refusal is released, nothing is returned. The name given
//   is cut to 253 characters.
TEST_F(CreateObjectsTest, CreatesInTheZoneServiceVsanAndHandsBackAReferenceInRootCimv2) {
    const std::string long_name(300, 'n');
    for (const Creation &c : kCreations) {
        for (const int vsan : {12, 4096, 1}) {
            const bool built = vsan == 12, refused = vsan == 1;
            SCOPED_TRACE(std::string(c.method) + " in " + std::to_string(vsan));
            output = request.newArgs();
            std::vector<std::string> expected = returned();
            void *record = newRecord<ZoneSetRecord>("id");
            const std::string name = refused ? long_name : "fabricA";
            EXPECT_CALL(platform, zs_cim_create_zoning_object(kQueue, 1, vsan, c.object_type,
                                                              StrEq(name.substr(0, 253)), _, _))
                .WillOnce(DoAll(SetArgPointee<5>(record), SetArgPointee<6>(refused ? 4 : 0),
                                Return(refused ? 1 : 0)));
            if (!refused) builds(c, record, built ? pathIn("root/cimv2", c.class_name) : nullptr);

            const std::string key = built ? "12x" : std::to_string(vsan);
            EXPECT_EQ(call(c.handler, zoneService(key), argsWith(c, str(name))), refused ? 4 : 0);
            EXPECT_EQ(outputCount(), built ? 1u : 0u);
            EXPECT_EQ(outputRef(),
                      built ? std::string(c.class_name).substr(6) + " -> root/cimv2:" + c.class_name
                            : "no reference");
            if (c.own_return != nullptr && !refused) expected.push_back(c.own_return);
            EXPECT_EQ(returned(), expected);
            EXPECT_EQ(request.doneCount(), 0);
            if (!refused) {
                EXPECT_THAT(trace, HasSubstr(c.named_trace));
            }
            testing::Mock::VerifyAndClearExpectations(&platform);
        }
    }
}

TEST_F(CreateObjectsTest, RefusesBadArgumentsWithOutcomeTwoAndCreatesNothing) {
    for (const Creation &c : kCreations) {
        SCOPED_TRACE(c.method);
        CMPIObjectPath *target = zoneService("5");
        // Wrong counts: one fewer, one more, none.
        EXPECT_EQ(call(c.handler, target, argsOf(std::vector(c.required_count - 1, str("n")))), 2);
        EXPECT_EQ(call(c.handler, target, argsOf(std::vector(c.required_count + 1, str("n")))), 2);
        EXPECT_EQ(call(c.handler, target, args()), 2);
        // An empty name, a name of another type, a null name.
        EXPECT_EQ(call(c.handler, target, argsWith(c, str(""))), 2);
        EXPECT_EQ(call(c.handler, target, argsWith(c, u16(7))), 2);
        EXPECT_EQ(call(c.handler, target, argsWith(c, nullOf(CMPI_string))), 2);
        EXPECT_THAT(trace, HasSubstr(c.unnamed_trace));
    }
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(outputCount(), 0u);
    EXPECT_EQ(request.doneCount(), 0);
}

}  // namespace
