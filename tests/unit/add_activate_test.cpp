// AddZone, AddZoneAlias and ActivateZoneSet: the checks before the change,
// their outcomes, the exact change asked of the zone server, and what is
// handed to the result.
#include <functional>

#include "methods/method_fixture.h"

using ::testing::_;
using ::testing::DoAll;
using ::testing::HasSubstr;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::SetArgPointee;
using ::testing::StrEq;

namespace {

using namespace method_test;

constexpr const char *kHookTrace = "\nstat fail for /etc/cim_debug_provider_zone\n";

class AddActivateTest : public MethodTest<> {
  protected:
    // The zone server splits every InstanceID into these fields.
    void splits(const char *id, int vsan, int number, int active) {
        EXPECT_CALL(platform, zs_cim_get_fields_from_generic_instance_id(StrEq(id), _, _, _))
            .WillOnce(DoAll(SetArgPointee<1>(vsan), SetArgPointee<2>(number),
                            SetArgPointee<3>(active), Return(0)));
    }
    void cannotSplit(const char *id) {
        EXPECT_CALL(platform, zs_cim_get_fields_from_generic_instance_id(StrEq(id), _, _, _))
            .WillOnce(Return(-1));
    }
    CMPIArgs *twoRefs(const char *cls0, const char *id0, const char *cls1, const char *id1) {
        CMPIArgs *in = args();
        cmpihost::addReferenceArg(in, "First", zoningRef(cls0, id0));
        cmpihost::addReferenceArg(in, "Second", zoningRef(cls1, id1));
        return in;
    }
    CMPIArgs *zoneSetAndZone() { return twoRefs("VORNA_ZoneSet", "zs1", "VORNA_Zone", "z1"); }
    CMPIArgs *zoneAndAlias() { return twoRefs("VORNA_Zone", "z1", "VORNA_ZoneAlias", "a1"); }
    CMPIArgs *zoneSetAndFlag(bool activate) {
        CMPIArgs *in = args();
        cmpihost::addReferenceArg(in, "ZoneSet", zoningRef("VORNA_ZoneSet", "zs1"));
        CMPIValue flag{};
        flag.boolean = activate ? 1 : 0;
        cmpihost::addValueArg(in, "Activate", flag, CMPI_boolean);
        return in;
    }

    // AddZone up to the zone lookup, with both objects editable in VSAN 8.
    void zoneSetFound() {
        splits("zs1", 8, 1, 0);
        splits("z1", 8, 2, 0);
        EXPECT_CALL(platform, zs_cim_get_zone_set(kQueue, 1, 8, 0, _, _))
            .WillOnce(DoAll(SetArgPointee<4>(1),
                            SetArgPointee<5>(newRecord<ZoneSetRecord>("zs1", "set")), Return(0)));
    }
    void zoneFound() {
        EXPECT_CALL(platform, zs_cim_get_zone(kQueue, 2, 8, 0, _, _))
            .WillOnce(DoAll(SetArgPointee<4>(1),
                            SetArgPointee<5>(newRecord<ZoneRecord>("z1", "zone")), Return(0)));
    }
    // The zone set's current zones as a list of fresh records.
    void zoneSetHolds(std::vector<const char *> ids) {
        ZoneRecord *head = nullptr;
        for (auto it = ids.rbegin(); it != ids.rend(); ++it) {
            ZoneRecord *node = newRecord<ZoneRecord>(*it);
            node->next = head;
            head = node;
        }
        EXPECT_CALL(platform, zs_cim_get_zone_set_zones_by_instance_id(kQueue, StrEq("zs1"), _))
            .WillOnce(DoAll(SetArgPointee<2>(head), Return(0)));
    }
};

TEST_F(AddActivateTest, AddZoneChecksZoneSetZoneAndMembershipThenAdds) {
    {
        InSequence order;
        zoneSetFound();
        zoneFound();
        // "z1 " and "Z1" are different zones: the comparison is exact.
        zoneSetHolds({"z10", "Z1", "z1 "});
        EXPECT_CALL(platform, zs_cim_add_zone_to_zone_set(kQueue, 1, 8, 1, 2, _))
            .WillOnce(Return(0));
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(call(AddZone, zoneService("8"), zoneSetAndZone()), 0);
    const std::string trace = testing::internal::GetCapturedStdout();
    EXPECT_EQ(returned(), std::vector<Returned>{sint32Zero()});
    EXPECT_EQ(request.doneCount(), 1);
    EXPECT_THAT(trace, HasSubstr("Zone Present"));
    // AddZone doesn't stop for a debugger.
    EXPECT_THAT(trace, testing::Not(HasSubstr("stat fail")));
}

TEST_F(AddActivateTest, AddZoneAnswersItsOwnOutcomesAndAddsNothing) {
    struct Case {
        const char *what;
        std::function<void()> expect;
        int outcome;
        const char *trace;
    };
    const Case cases[] = {
        {"zone set missing",
         [&] {
             splits("zs1", 8, 1, 0);
             splits("z1", 8, 2, 0);
             EXPECT_CALL(platform, zs_cim_get_zone_set(kQueue, 1, 8, 0, _, _)).WillOnce(Return(0));
         },
         21, "No Zoneset Present"},
        {"zone missing",
         [&] {
             zoneSetFound();
             EXPECT_CALL(platform, zs_cim_get_zone(kQueue, 2, 8, 0, _, _))
                 .WillOnce(DoAll(SetArgPointee<4>(0), Return(0)));
         },
         23, "Zone Not Present"},
        // The lookup itself failing is no "Zone Not Present": the zone may
        // well exist. The answer is -1, described by the platform's text.
        {"zone lookup failed",
         [&] {
             zoneSetFound();
             EXPECT_CALL(platform, zs_cim_get_zone(kQueue, 2, 8, 0, _, _))
                 .WillOnce(DoAll(SetArgPointee<4>(1), SetArgPointee<5>(newRecord<ZoneRecord>("z1")),
                                 Return(-5)));
         },
         -1, "Failure in Obtaining Zones"},
        {"already a member",
         [&] {
             zoneSetFound();
             zoneFound();
             zoneSetHolds({"z0", "z1", "z2"});
         },
         22, "Zone already in Zoneset"},
        {"zone server refuses",
         [&] {
             zoneSetFound();
             zoneFound();
             zoneSetHolds({});
             EXPECT_CALL(platform, zs_cim_add_zone_to_zone_set(kQueue, 1, 8, 1, 2, _))
                 .WillOnce(DoAll(SetArgPointee<5>(24), Return(-1)));
         },
         24, ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        c.expect();
        testing::internal::CaptureStdout();
        EXPECT_EQ(call(AddZone, zoneService("8"), zoneSetAndZone()), c.outcome);
        EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr(c.trace));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(request.doneCount(), 0);
}

TEST_F(AddActivateTest, AddZoneRefusesActiveForeignAndBadInputBeforeAnyLookup) {
    struct Case {
        const char *what;
        int zone_set_vsan, zone_set_active, zone_vsan, zone_active;
        int outcome;
    };
    const Case cases[] = {
        {"active zone set", 8, 1, 8, 0, 3},
        {"active zone", 8, 0, 8, 1, 3},
        {"zone set of another VSAN", 9, 0, 8, 0, 3},
        {"zone of another VSAN", 8, 0, 9, 0, 3},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        splits("zs1", c.zone_set_vsan, 1, c.zone_set_active);
        splits("z1", c.zone_vsan, 2, c.zone_active);
        EXPECT_EQ(call(AddZone, zoneService("8"), zoneSetAndZone()), c.outcome);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }

    cannotSplit("zs1");
    EXPECT_EQ(call(AddZone, zoneService("8"), zoneSetAndZone()), 1);
    splits("zs1", 8, 1, 0);
    cannotSplit("z1");
    EXPECT_EQ(call(AddZone, zoneService("8"), zoneSetAndZone()), 1);
    testing::Mock::VerifyAndClearExpectations(&platform);

    // No split at all for these: wrong count, missing args, a missing key,
    // a position that holds no reference, a reference without keys.
    CMPIArgs *one = args();
    cmpihost::addReferenceArg(one, "ZoneSet", zoningRef("VORNA_ZoneSet", "zs1"));
    EXPECT_EQ(call(AddZone, zoneService("8"), one), 2);
    EXPECT_EQ(call(AddZone, zoneService("8"), nullptr), 2);
    CMPIArgs *text_instead = args();
    cmpihost::addReferenceArg(text_instead, "ZoneSet", zoningRef("VORNA_ZoneSet", "zs1"));
    cmpihost::addStringArg(text_instead, "Zone", "z1");
    EXPECT_EQ(call(AddZone, zoneService("8"), text_instead), 2);
    CMPIArgs *keyless = args();
    cmpihost::addReferenceArg(keyless, "ZoneSet", pathIn("root/cimv2", "VORNA_ZoneSet"));
    cmpihost::addReferenceArg(keyless, "Zone", zoningRef("VORNA_Zone", "z1"));
    EXPECT_EQ(call(AddZone, zoneService("8"), keyless), 2);
    CMPIArgs *null_ref = args();
    CMPIValue none{};
    cmpihost::addValueArg(null_ref, "ZoneSet", none, CMPI_ref);
    cmpihost::addReferenceArg(null_ref, "Zone", zoningRef("VORNA_Zone", "z1"));
    EXPECT_EQ(call(AddZone, zoneService("8"), null_ref), 2);

    for (const std::string &refused : refusedVsanTexts())
        EXPECT_EQ(call(AddZone, zoneService(refused), zoneSetAndZone()), ZONE_SERVICE_KEY_REFUSAL);
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
    testing::internal::CaptureStdout();
    EXPECT_EQ(call(AddZoneAlias, zoneService("8"), zoneAndAlias()), 0);
    EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr(kHookTrace));
    EXPECT_EQ(returned(), std::vector<Returned>{sint32Zero()});
    EXPECT_EQ(request.doneCount(), 1);
    testing::Mock::VerifyAndClearExpectations(&platform);

    // Swapped references: the alias's number goes as the zone number; the
    // zone server decides.
    splits("z1", 8, 20, 0);
    splits("a1", 8, 30, 0);
    EXPECT_CALL(platform, zs_cim_add_alias_to_zone(kQueue, 1, 8, 30, 20, _))
        .WillOnce(DoAll(SetArgPointee<5>(77), Return(-1)));
    EXPECT_EQ(
        call(AddZoneAlias, zoneService("8"), twoRefs("VORNA_ZoneAlias", "a1", "VORNA_Zone", "z1")),
        77);
    EXPECT_EQ(request.doneCount(), 1);
}

TEST_F(AddActivateTest, AddZoneAliasRefusals) {
    struct Case {
        int alias_vsan, alias_active, zone_vsan, zone_active;
    };
    for (const Case &c : {Case{8, 1, 8, 0}, Case{8, 0, 8, 1}, Case{9, 0, 8, 0}, Case{8, 0, 9, 0}}) {
        splits("a1", c.alias_vsan, 30, c.alias_active);
        splits("z1", c.zone_vsan, 20, c.zone_active);
        EXPECT_EQ(call(AddZoneAlias, zoneService("8"), zoneAndAlias()), 3);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    cannotSplit("a1");
    EXPECT_EQ(call(AddZoneAlias, zoneService("8"), zoneAndAlias()), 1);
    testing::Mock::VerifyAndClearExpectations(&platform);

    CMPIArgs *three = zoneAndAlias();
    cmpihost::addStringArg(three, "Extra", "x");
    EXPECT_EQ(call(AddZoneAlias, zoneService("8"), three), 2);
    EXPECT_EQ(call(AddZoneAlias, zoneService("8"), nullptr), 2);
    // Position 1 holds a boolean instead of the alias reference.
    CMPIArgs *no_alias = args();
    cmpihost::addReferenceArg(no_alias, "Zone", zoningRef("VORNA_Zone", "z1"));
    CMPIValue flag{};
    cmpihost::addValueArg(no_alias, "Alias", flag, CMPI_boolean);
    EXPECT_EQ(call(AddZoneAlias, zoneService("8"), no_alias), 2);

    // The key refusal comes before the debugger hook.
    testing::internal::CaptureStdout();
    EXPECT_EQ(call(AddZoneAlias, zoneService("0"), zoneAndAlias()), ZONE_SERVICE_KEY_REFUSAL);
    EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::Not(HasSubstr("stat fail")));
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(request.doneCount(), 0);
}

TEST_F(AddActivateTest, ActivateZoneSetPassesOneOrMinusOneWithTheZoneSetFields) {
    for (const bool activate : {true, false}) {
        SCOPED_TRACE(activate);
        // Either database may be named: the active flag 1 goes through.
        splits("zs1", 8, 5, 1);
        EXPECT_CALL(platform, zs_cim_activate_zone_set(kQueue, 8, 1, 5, _, _))
            .WillOnce([activate](int, int, int, int, int *flag, int *) {
                EXPECT_EQ(*flag, activate ? 1 : -1);
                return 0;
            });
        testing::internal::CaptureStdout();
        EXPECT_EQ(call(ActivateZoneSet, zoneService("8"), zoneSetAndFlag(activate)), 0);
        const std::string trace = testing::internal::GetCapturedStdout();
        EXPECT_THAT(trace, HasSubstr(kHookTrace));
        EXPECT_THAT(trace, HasSubstr("Returning Success"));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_EQ(returned(), (std::vector<Returned>{uint32Zero(), uint32Zero()}));
    EXPECT_EQ(request.doneCount(), 2);
}

TEST_F(AddActivateTest, ActivateZoneSetRefusals) {
    // One argument: "Invalid Zoning Object", unlike the adds.
    CMPIArgs *one = args();
    cmpihost::addReferenceArg(one, "ZoneSet", zoningRef("VORNA_ZoneSet", "zs1"));
    EXPECT_EQ(call(ActivateZoneSet, zoneService("8"), one), 1);
    EXPECT_EQ(call(ActivateZoneSet, zoneService("8"), args()), 1);
    EXPECT_EQ(call(ActivateZoneSet, zoneService("8"), nullptr), 2);

    // The flag must be a boolean.
    CMPIArgs *text_flag = args();
    cmpihost::addReferenceArg(text_flag, "ZoneSet", zoningRef("VORNA_ZoneSet", "zs1"));
    cmpihost::addStringArg(text_flag, "Activate", "true");
    EXPECT_EQ(call(ActivateZoneSet, zoneService("8"), text_flag), 2);
    CMPIArgs *null_flag = args();
    cmpihost::addReferenceArg(null_flag, "ZoneSet", zoningRef("VORNA_ZoneSet", "zs1"));
    // No value at all: the broker records a null boolean.
    null_flag->ft->addArg(null_flag, "Activate", nullptr, CMPI_boolean);
    EXPECT_EQ(call(ActivateZoneSet, zoneService("8"), null_flag), 2);
    // No reference at position 0.
    CMPIArgs *no_ref = args();
    cmpihost::addStringArg(no_ref, "ZoneSet", "zs1");
    CMPIValue yes{};
    yes.boolean = 1;
    cmpihost::addValueArg(no_ref, "Activate", yes, CMPI_boolean);
    EXPECT_EQ(call(ActivateZoneSet, zoneService("8"), no_ref), 2);

    cannotSplit("zs1");
    EXPECT_EQ(call(ActivateZoneSet, zoneService("8"), zoneSetAndFlag(true)), 1);
    splits("zs1", 9, 5, 0);
    EXPECT_EQ(call(ActivateZoneSet, zoneService("8"), zoneSetAndFlag(true)), 3);
    testing::Mock::VerifyAndClearExpectations(&platform);

    splits("zs1", 8, 5, 0);
    EXPECT_CALL(platform, zs_cim_activate_zone_set(kQueue, 8, 0, 5, _, _))
        .WillOnce(DoAll(SetArgPointee<5>(31), Return(-1)));
    EXPECT_EQ(call(ActivateZoneSet, zoneService("8"), zoneSetAndFlag(false)), 31);

    for (const std::string &refused : refusedVsanTexts())
        EXPECT_EQ(call(ActivateZoneSet, zoneService(refused), zoneSetAndFlag(true)),
                  ZONE_SERVICE_KEY_REFUSAL);
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(request.doneCount(), 0);
}

}  // namespace
