// AddZone, AddZoneAlias and ActivateZoneSet: the checks before the change
// (arguments, InstanceIDs, objects active or of another VSAN), AddZone's
// lookups and their outcomes, the exact change asked of the zone server,
// and what is handed to the result.
#include "methods/method_fixture.h"

namespace {

using namespace method_test;

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
