// The methods that create and change zoning objects: CreateZoneSet,
// CreateZone and CreateZoneAlias (what reaches the zone server: VSAN, type,
// name cut to 253 characters; what comes back: output reference, own return
// value, nothing on failure; the release of a record handed back with a
// failure; every argument refusal, which leaves the zone server alone), and
// AddZone, AddZoneAlias and ActivateZoneSet (the checks before the change:
// arguments, InstanceIDs, objects active or of another VSAN; AddZone's
// lookups and their outcomes; the exact change asked of the zone server;
// what is handed to the result).
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

constexpr const char *kHookTrace = "\nstat fail for /etc/cim_debug_provider_zone\n";

class AddActivateTest : public MethodTest {
  protected:
    CMPIArgs *zoneSetAndZone() {
        return argsOf({ref(zoningRef("VORNA_ZoneSet", "zs1")), ref(zoningRef("VORNA_Zone", "z1"))});
    }

    // AddZone's lookups after both InstanceIDs split into editable objects
    // of VSAN 8, in call order: zone set, zone, the zone set's zones (fresh
    // records), the add. A call stops at its first refusal: `calls` says how
    // many of the four it reaches.
    struct Lookups {
        int calls;
        int zone_set_found = 1, zone_found = 1, zone_answer = 0;
        std::vector<const char *> held = {};
        int add_error = 0;
    };
    void looksUp(const Lookups &l) {
        InSequence order;
        splits("zs1", 8, 1, 0);
        splits("z1", 8, 2, 0);
        EXPECT_CALL(platform, zs_cim_get_zone_set(kQueue, 1, 8, 0, _, _))
            .WillOnce(DoAll(SetArgPointee<4>(l.zone_set_found),
                            SetArgPointee<5>(newRecord<ZoneSetRecord>("zs1")), Return(0)));
        if (l.calls < 2) return;
        EXPECT_CALL(platform, zs_cim_get_zone(kQueue, 2, 8, 0, _, _))
            .WillOnce(DoAll(SetArgPointee<4>(l.zone_found),
                            SetArgPointee<5>(newRecord<ZoneRecord>("z1")), Return(l.zone_answer)));
        if (l.calls < 3) return;
        ZoneRecord *head = nullptr;
        for (auto it = l.held.rbegin(); it != l.held.rend(); ++it) {
            ZoneRecord *node = newRecord<ZoneRecord>(*it);
            node->next = head;
            head = node;
        }
        EXPECT_CALL(platform, zs_cim_get_zone_set_zones_by_instance_id(kQueue, StrEq("zs1"), _))
            .WillOnce(DoAll(SetArgPointee<2>(head), Return(0)));
        if (l.calls < 4) return;
        EXPECT_CALL(platform, zs_cim_add_zone_to_zone_set(kQueue, 1, 8, 1, 2, _))
            .WillOnce(DoAll(SetArgPointee<5>(l.add_error), Return(l.add_error != 0 ? -1 : 0)));
    }
};

// Zone set, zone and membership are checked in turn; only the add itself
// hands back a value. AddZone doesn't stop for a debugger.
TEST_F(AddActivateTest, AddZoneChecksZoneSetZoneAndMembershipThenAdds) {
    struct Case {
        const char *what;
        Lookups lookups;
        int outcome;
        const char *trace;
    };
    const Case cases[] = {
        // "z1 " and "Z1" are other zones: the comparison is exact.
        {"added", Lookups{.calls = 4, .held = {"z10", "Z1", "z1 "}}, 0, "Zone Present"},
        {"zone set missing", Lookups{.calls = 1, .zone_set_found = 0}, 21, "No Zoneset Present"},
        {"zone missing", Lookups{.calls = 2, .zone_found = 0}, 23, "Zone Not Present"},
        // The lookup itself failing is no "Zone Not Present": the zone may
        // well exist. The answer is -1, described by the platform's text.
        {"zone lookup failed", Lookups{.calls = 2, .zone_answer = -5}, -1,
         "Failure in Obtaining Zones"},
        {"already a member", Lookups{.calls = 3, .held = {"z0", "z1", "z2"}}, 22,
         "Zone already in Zoneset"},
        {"zone server refuses", Lookups{.calls = 4, .add_error = 24}, 24, "Zone Present"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        looksUp(c.lookups);
        EXPECT_EQ(call(AddZone, zoneService("8"), zoneSetAndZone()), c.outcome);
        EXPECT_THAT(trace, HasSubstr(c.trace));
        EXPECT_THAT(trace, testing::Not(HasSubstr("stat fail")));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_EQ(returned(), std::vector<std::string>{"sint32 0"});
    EXPECT_EQ(request.doneCount(), 1);
}

// Both adds take two references, split their InstanceIDs in a fixed order
// and change only objects of the editable database of their own VSAN.
TEST_F(AddActivateTest, TheAddsRefuseBadReferencesAndActiveOrForeignObjects) {
    struct Method {
        Handler handler;
        const char *cls0, *id0, *cls1, *id1;  // the references at positions 0 and 1
        const char *split_first, *split_second;
    };
    const Method methods[] = {
        {AddZone, "VORNA_ZoneSet", "zs1", "VORNA_Zone", "z1", "zs1", "z1"},
        {AddZoneAlias, "VORNA_Zone", "z1", "VORNA_ZoneAlias", "a1", "a1", "z1"},
    };
    struct Fields {
        int first_vsan, first_active, second_vsan, second_active;
    };
    for (const Method &m : methods) {
        SCOPED_TRACE(m.split_first);
        const Arg ref0 = ref(zoningRef(m.cls0, m.id0));
        const Arg ref1 = ref(zoningRef(m.cls1, m.id1));
        for (const Fields &f :
             {Fields{8, 1, 8, 0}, Fields{8, 0, 8, 1}, Fields{9, 0, 8, 0}, Fields{8, 0, 9, 0}}) {
            splits(m.split_first, f.first_vsan, 30, f.first_active);
            splits(m.split_second, f.second_vsan, 20, f.second_active);
            EXPECT_EQ(call(m.handler, zoneService("8"), argsOf({ref0, ref1})), 3);
            testing::Mock::VerifyAndClearExpectations(&platform);
        }
        cannotSplit(m.split_first);
        EXPECT_EQ(call(m.handler, zoneService("8"), argsOf({ref0, ref1})), 1);
        splits(m.split_first, 8, 30, 0);
        cannotSplit(m.split_second);
        EXPECT_EQ(call(m.handler, zoneService("8"), argsOf({ref0, ref1})), 1);
        testing::Mock::VerifyAndClearExpectations(&platform);

        // Nothing is split for these: a wrong count, a position that holds
        // no reference, a reference without keys, a null reference.
        const std::vector<std::vector<Arg>> refused = {
            {ref0},
            {ref0, ref1, str("x")},
            {str(m.id0), ref1},
            {ref0, flag(false)},
            {ref(pathIn("root/cimv2", m.cls0)), ref1},
            {ref0, nullOf(CMPI_ref)},
        };
        for (const std::vector<Arg> &in : refused)
            EXPECT_EQ(call(m.handler, zoneService("8"), argsOf(in)), 2);
    }
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(request.doneCount(), 0);
}

TEST_F(AddActivateTest, AddZoneAliasAsksTheZoneServerWithZoneAndAliasNumbers) {
    {
        InSequence order;
        // The alias's InstanceID is split before the zone's.
        splits("a1", 8, 30, 0);
        splits("z1", 8, 20, 0);
        EXPECT_CALL(platform, zs_cim_add_alias_to_zone(kQueue, 1, 8, 20, 30, _))
            .WillOnce(Return(0));
    }
    const Arg zone = ref(zoningRef("VORNA_Zone", "z1"));
    const Arg alias = ref(zoningRef("VORNA_ZoneAlias", "a1"));
    EXPECT_EQ(call(AddZoneAlias, zoneService("8"), argsOf({zone, alias})), 0);
    EXPECT_THAT(trace, HasSubstr(kHookTrace));
    EXPECT_EQ(returned(), std::vector<std::string>{"sint32 0"});
    EXPECT_EQ(request.doneCount(), 1);
    testing::Mock::VerifyAndClearExpectations(&platform);

    // Swapped references: the alias's number goes as the zone number; the
    // zone server decides, and its code is passed through.
    splits("z1", 8, 20, 0);
    splits("a1", 8, 30, 0);
    EXPECT_CALL(platform, zs_cim_add_alias_to_zone(kQueue, 1, 8, 30, 20, _))
        .WillOnce(DoAll(SetArgPointee<5>(77), Return(-1)));
    EXPECT_EQ(call(AddZoneAlias, zoneService("8"), argsOf({alias, zone})), 77);
    EXPECT_EQ(request.doneCount(), 1);
}

// Either database may be named: the zone set's fields go through with 1 to
// activate or -1 to deactivate, and the zone server's code comes back. A
// wrong argument count is "Invalid Zoning Object", unlike the adds.
TEST_F(AddActivateTest, ActivateZoneSetPassesOneOrMinusOneWithTheZoneSetFields) {
    const Arg zone_set = ref(zoningRef("VORNA_ZoneSet", "zs1"));
    struct Case {
        const char *what;
        std::vector<Arg> in;
        int split_vsan, split_active;  // split_vsan 0: not split, -1: can't be split
        int flag;                      // the zone server's flag; 0: not called
        int outcome;
    };
    const Case cases[] = {
        {"activate", {zone_set, flag(true)}, 8, 1, 1, 0},
        {"deactivate", {zone_set, flag(false)}, 8, 0, -1, 31},
        {"one argument", {zone_set}, 0, 0, 0, 1},
        {"no arguments", {}, 0, 0, 0, 1},
        {"text flag", {zone_set, str("true")}, 0, 0, 0, 2},
        {"null flag", {zone_set, nullOf(CMPI_boolean)}, 0, 0, 0, 2},
        {"no reference", {str("zs1"), flag(true)}, 0, 0, 0, 2},
        {"can't be split", {zone_set, flag(true)}, -1, 0, 0, 1},
        {"another VSAN", {zone_set, flag(true)}, 9, 0, 0, 3},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        if (c.split_vsan != 0)
            splits("zs1", c.split_vsan, 5, c.split_active, c.split_vsan < 0 ? -1 : 0);
        if (c.flag != 0) {
            EXPECT_CALL(platform, zs_cim_activate_zone_set(kQueue, 8, c.split_active, 5, _, _))
                .WillOnce([&c](int, int, int, int, int *flag, int *error) {
                    EXPECT_EQ(*flag, c.flag);
                    *error = c.outcome;
                    return c.outcome == 0 ? 0 : -1;
                });
        }
        EXPECT_EQ(call(ActivateZoneSet, zoneService("8"), argsOf(c.in)), c.outcome);
        EXPECT_THAT(trace, HasSubstr(kHookTrace));
        EXPECT_EQ(trace.find("Returning Success") != std::string::npos, c.outcome == 0);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_EQ(returned(), std::vector<std::string>{"uint32 0"});
    EXPECT_EQ(request.doneCount(), 1);
}

}  // namespace
