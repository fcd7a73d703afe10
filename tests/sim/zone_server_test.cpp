// The zone server of the simulated switch: the VSAN table, commands and
// their refusals, queries, member identity, activation, removal and
// capacity, through the platform operations.
#include "sim/sim_records.h"
#include "sim_switch_support.h"

namespace simtest {
namespace {

class ZoneServerTest : public SwitchTest {
  protected:
    void SetUp() override {
        SwitchTest::SetUp();
        loadFabric(R"({"vsans": [{"number": 1, "domain": {"id": 1}},
                                 {"number": 10, "name": "prod", "domain": {"id": 10}},
                                 {"number": 4094, "name": "isolated"}]})");
    }
};

TEST_F(SwitchTest, FreshDatabaseIsOneVsanWithADomain) {
    EXPECT_EQ(std::vector<int>{1}, walkVsans());
    EXPECT_EQ(0, vsan_cim_check_vsan_index(1));
    EXPECT_EQ(kVsanNotConfigured, vsan_cim_check_vsan_index(2));
    DomainEntry domain{};
    EXPECT_EQ(0, dm_cim_get_dmEntry(q_, 1, 1, &domain));
    EXPECT_STREQ("switch-sim-01", getCSName());

    // A queue that init_mts did not hand out is refused; a second init_mts
    // keeps the handle usable.
    VsanEntry entry{};
    EXPECT_EQ(kQueueNotOpen, vsan_cim_get_vsanEntry(-1, ZP_VSAN_GIVEN, &entry));
    int again = q_;
    EXPECT_EQ(0, init_mts(&again));
    EXPECT_EQ(q_, again);
    EXPECT_LT(init_mts(nullptr), 0);
}

TEST_F(ZoneServerTest, VsanTableWalksInOrderAndKnowsDomains) {
    EXPECT_EQ((std::vector<int>{1, 10, 4094}), walkVsans());
    VsanEntry entry{};
    entry.vsan = 10;
    EXPECT_EQ(0, vsan_cim_get_vsanEntry(q_, ZP_VSAN_GIVEN, &entry));
    EXPECT_EQ(10, entry.vsan);
    entry.vsan = 11;
    EXPECT_NE(0, vsan_cim_get_vsanEntry(q_, ZP_VSAN_GIVEN, &entry));

    DomainEntry domain{};
    EXPECT_EQ(0, dm_cim_get_dmEntry(q_, 10, 1, &domain));
    EXPECT_EQ(kNotFound, dm_cim_get_dmEntry(q_, 4094, 1, &domain));  // no domain entry
    EXPECT_EQ(kVsanNotConfigured, dm_cim_get_dmEntry(q_, 2, 1, &domain));

    // The whole table in one allocation; a VSAN without a name is called
    // after its number.
    int count = -1;
    VsanEntry *entries = nullptr;
    ASSERT_EQ(0, vsan_cim_get_all_vsanEntry(q_, &count, &entries));
    ASSERT_EQ(3, count);
    const auto *described = reinterpret_cast<const SimVsanEntry *>(entries);
    EXPECT_STREQ("VSAN0001", described[0].name);
    EXPECT_STREQ("prod", described[1].name);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ((std::vector<int>{1, 10, 4094})[i], described[i].vsan);
        EXPECT_EQ(i < 2 ? 1 : 0, described[i].has_domain) << i;
    }
    std::free(entries);
}

TEST_F(ZoneServerTest, CreationChecksNamesUniquenessAndVsans) {
    int zone = create(10, ZP_OBJECT_ZONE, "z1");
    int set = create(10, ZP_OBJECT_ZONE_SET, "z1");  // names are unique per kind
    int alias = create(10, ZP_OBJECT_ZONE_ALIAS, "a$_^-9");
    EXPECT_LT(zone, set);
    EXPECT_LT(set, alias);
    EXPECT_EQ(create(1, ZP_OBJECT_ZONE, "z1"), 1);  // numbers are per VSAN

    EXPECT_EQ(kAlreadyPresent, createError(10, ZP_OBJECT_ZONE, "z1"));
    EXPECT_EQ(kInvalidName, createError(10, ZP_OBJECT_ZONE, ""));
    EXPECT_EQ(kInvalidName, createError(10, ZP_OBJECT_ZONE, "with blank"));
    EXPECT_EQ(kInvalidName, createError(10, ZP_OBJECT_ZONE, std::string(65, 'z').c_str()));
    EXPECT_GT(create(10, ZP_OBJECT_ZONE, std::string(64, 'z').c_str()), 0);
    EXPECT_EQ(kVsanNotConfigured, createError(2, ZP_OBJECT_ZONE, "z"));
    EXPECT_EQ(kNotSupported, createError(4094, ZP_OBJECT_ZONE, "z"));
    EXPECT_EQ(kInvalidArgument, createError(10, 7, "z"));
    void *record = nullptr;
    int error = 0;
    EXPECT_EQ(kNotSupported, zs_cim_create_zoning_object(q_, ZP_OP_REMOVE, 10, ZP_OBJECT_ZONE, "z1",
                                                         &record, &error));
    EXPECT_EQ(kQueueNotOpen,
              zs_cim_create_zoning_object(-1, ZP_OP_ADD, 10, ZP_OBJECT_ZONE, "q", &record, &error));
    EXPECT_EQ(nullptr, record);

    // A removed number is never handed out again.
    EXPECT_EQ(0, removeObject(10, ZP_OBJECT_ZONE, zone));
    int next = create(10, ZP_OBJECT_ZONE, "z1");
    EXPECT_GT(next, alias);
    EXPECT_EQ(kNotFound, removeObject(10, ZP_OBJECT_ZONE, zone));
    EXPECT_EQ(kNotFound, removeObject(10, ZP_OBJECT_ZONE_SET, next));  // wrong kind
    EXPECT_EQ((std::vector<std::string>{std::string(64, 'z'), "z1"}), zones(10, false));
}

TEST_F(ZoneServerTest, LookupsByInstanceIdAndNumber) {
    int zone = create(10, ZP_OBJECT_ZONE, "z1");
    int set = create(10, ZP_OBJECT_ZONE_SET, "s1");

    ZoneRecord *record = nullptr;
    ASSERT_EQ(0, zs_cim_get_zone_by_instance_id(q_, id(10, zone).c_str(), &record));
    EXPECT_STREQ("z1", record->name);
    EXPECT_EQ(id(10, zone), record->instance_id);
    EXPECT_EQ(nullptr, record->next);
    std::free(record);
    for (const std::string &unknown :
         {id(10, set), id(10, zone, 1), id(1, zone), std::string("10^1"), std::string("a^b^c"),
          std::string("10^1^0^0"), std::string("10^-1^0"), std::string("")}) {
        record = nullptr;
        EXPECT_NE(0, zs_cim_get_zone_by_instance_id(q_, unknown.c_str(), &record)) << unknown;
        EXPECT_EQ(nullptr, record) << unknown;
    }

    int found = 0;
    ZoneSetRecord *set_record = nullptr;
    EXPECT_EQ(0, zs_cim_get_zone_set(q_, set, 10, 0, &found, &set_record));
    ASSERT_EQ(1, found);
    EXPECT_STREQ("s1", set_record->name);
    std::free(set_record);
    set_record = nullptr;
    found = 0;  // the caller's to preset
    EXPECT_EQ(0, zs_cim_get_zone_set(q_, zone, 10, 0, &found, &set_record));  // not a zone set
    EXPECT_EQ(0, found);
    EXPECT_EQ(nullptr, set_record);
    EXPECT_EQ(0, zs_cim_get_zone(q_, zone, 10, 1, &found, &record));  // no active copy
    EXPECT_EQ(0, found);
    EXPECT_NE(0, zs_cim_get_zone(q_, zone, 2, 0, &found, &record));
    EXPECT_EQ(nullptr, record);
}

TEST_F(ZoneServerTest, LinksAndSharedMembers) {
    int set = create(10, ZP_OBJECT_ZONE_SET, "s1");
    int z1 = create(10, ZP_OBJECT_ZONE, "z1");
    int z2 = create(10, ZP_OBJECT_ZONE, "z2");
    int alias = create(10, ZP_OBJECT_ZONE_ALIAS, "a1");

    EXPECT_EQ(0, addZone(10, set, z2));
    EXPECT_EQ(0, addZone(10, set, z1));
    EXPECT_EQ(kMemberPresent, addZone(10, set, z1));
    EXPECT_EQ(kNotFound, addZone(10, set, alias));  // not a zone
    EXPECT_EQ(kNotFound, addZone(1, set, z1));      // wrong VSAN
    EXPECT_EQ((std::vector<std::string>{"z2", "z1"}), setZones(id(10, set)));
    EXPECT_EQ(0, addAlias(10, z1, alias));
    EXPECT_EQ(kMemberPresent, addAlias(10, z1, alias));

    const char *wwn = "31:00:00:00:00:4c:a1:b2";
    EXPECT_EQ(0, member(10, ZP_OBJECT_ZONE, z1, 10, wwn));
    EXPECT_EQ(0, member(10, ZP_OBJECT_ZONE, z2, 10, wwn));
    EXPECT_EQ(0, member(10, ZP_OBJECT_ZONE_ALIAS, alias, 10, wwn));
    EXPECT_EQ(kMemberPresent, member(10, ZP_OBJECT_ZONE, z1, 10, wwn));
    EXPECT_EQ(kInvalidArgument, member(10, ZP_OBJECT_ZONE_SET, set, 10, wwn));
    EXPECT_EQ(kNotFound, member(10, ZP_OBJECT_ZONE, 999, 10, wwn));

    // One member, held by three parents.
    std::string member_id = "10^10^" + std::string(wwn) + "^0";
    EXPECT_EQ(std::vector<std::string>{member_id}, members(10, false));
    EXPECT_EQ((std::vector<std::string>{"z1", "z2", "a1"}), parentNames(member_id));

    // Out of one zone, still in the others; then out of everything.
    EXPECT_EQ(0, member(10, ZP_OBJECT_ZONE, z1, 10, wwn, ZP_OP_REMOVE));
    EXPECT_EQ(kNotFound, member(10, ZP_OBJECT_ZONE, z1, 10, wwn, ZP_OP_REMOVE));
    EXPECT_TRUE(zoneMembers(id(10, z1)).empty());
    EXPECT_EQ(std::vector<std::string>{member_id}, zoneMembers(id(10, z2)));
    EXPECT_EQ(0, zs_cim_remove_zone_member_from_all_parents(q_, member_id.c_str()));
    EXPECT_TRUE(members(10, false).empty());
    EXPECT_TRUE(zoneMembers(id(10, z2)).empty());
    EXPECT_EQ(kNotFound, zs_cim_remove_zone_member_from_all_parents(q_, member_id.c_str()));

    EXPECT_EQ(0, addZone(10, set, z1, ZP_OP_REMOVE));
    EXPECT_EQ(kNotFound, addZone(10, set, z1, ZP_OP_REMOVE));
    EXPECT_EQ(std::vector<std::string>{"z2"}, setZones(id(10, set)));
}

TEST_F(ZoneServerTest, MemberInstanceIdsAreTheProvidersAndSplitBack) {
    int zone = create(10, ZP_OBJECT_ZONE, "z1");
    // Text kinds keep the client's spelling; binary kinds the formatted one.
    EXPECT_EQ(0, member(10, ZP_OBJECT_ZONE, zone, 2, "31000000004CA1B2"));
    EXPECT_EQ(0, member(10, ZP_OBJECT_ZONE, zone, 10, "31:00:00:00:00:4C:A1:B3"));
    EXPECT_EQ(0, member(10, ZP_OBJECT_ZONE, zone, 32771, "host^one"));
    // The same port WWN written differently is the same type-2 member.
    EXPECT_EQ(kMemberPresent, member(10, ZP_OBJECT_ZONE, zone, 2, "31:00:00:00:00:4c:a1:b2"));
    EXPECT_EQ((std::vector<std::string>{"10^2^31000000004CA1B2^0",
                                        "10^10^31:00:00:00:00:4c:a1:b3^0", "10^32771^host^one^0"}),
              zoneMembers(id(10, zone)));

    // Found by any spelling of its id; the record carries the stored one.
    ZoneMemberRecord *record = nullptr;
    ASSERT_EQ(0,
              zs_cim_get_zone_member_by_instance_id(q_, "10^2^31:00:00:00:00:4c:a1:b2^0", &record));
    EXPECT_STREQ("10^2^31000000004CA1B2^0", record->instance_id);
    EXPECT_EQ(2, record->cim_member_type);
    EXPECT_STREQ("31000000004CA1B2", record->member_value);
    std::free(record);
    record = nullptr;
    EXPECT_EQ(kNotFound,
              zs_cim_get_zone_member_by_instance_id(q_, "10^2^31000000004CA1B2^1", &record));
    EXPECT_EQ(kInvalidArgument, zs_cim_get_zone_member_by_instance_id(q_, "10^77^x^0", &record));
    EXPECT_EQ(nullptr, record);

    int vsan = 0, length = 0, active = -1;
    uint8_t code = 0;
    unsigned char value[255] = {};
    auto split = [&](const char *member_id) {
        return zs_cim_get_fields_from_member_instance_id(member_id, &vsan, &code, value, &length,
                                                         &active, 0);
    };
    ASSERT_EQ(0, split("10^32771^host^one^0"));
    EXPECT_EQ(10, vsan);
    EXPECT_EQ(0, active);
    EXPECT_EQ(get_member_value_length(code), length);
    EXPECT_STREQ("host^one", reinterpret_cast<const char *>(value));
    EXPECT_NE(0, split("10^10^nonsense^0"));
    EXPECT_NE(0, split("10^10^0"));
    ASSERT_EQ(0, split("10^10^31:00:00:00:00:4c:a1:b3^1"));
    EXPECT_EQ(109, code);
    EXPECT_EQ(1, active);
    // The split-off fields remove the member again, as deleteInstance does;
    // a value of the wrong length is refused.
    int error = 0;
    EXPECT_EQ(0, zs_cim_add_zoning_member(q_, ZP_OP_REMOVE, vsan, 0, ZP_OBJECT_ZONE, zone, code,
                                          value, &length, &error));
    length = 3;
    EXPECT_EQ(kInvalidArgument, zs_cim_add_zoning_member(q_, ZP_OP_ADD, 10, 0, ZP_OBJECT_ZONE, zone,
                                                         code, value, &length, &error));
}

TEST_F(ZoneServerTest, RemovalTakesLinksAndOrphanedMembersAlong) {
    int set = create(10, ZP_OBJECT_ZONE_SET, "s1");
    int zone = create(10, ZP_OBJECT_ZONE, "z1");
    int other = create(10, ZP_OBJECT_ZONE, "z2");
    int alias = create(10, ZP_OBJECT_ZONE_ALIAS, "a1");
    ASSERT_EQ(0, addZone(10, set, zone));
    ASSERT_EQ(0, addAlias(10, zone, alias));
    ASSERT_EQ(0, member(10, ZP_OBJECT_ZONE, zone, 3, "0x010203"));  // only in z1
    ASSERT_EQ(0, member(10, ZP_OBJECT_ZONE, zone, 4, "3:17"));      // also in z2
    ASSERT_EQ(0, member(10, ZP_OBJECT_ZONE, other, 4, "3:17"));
    ASSERT_EQ(0, member(10, ZP_OBJECT_ZONE_ALIAS, alias, 32768, "fc1/2"));

    EXPECT_EQ(0, removeObject(10, ZP_OBJECT_ZONE, zone));
    EXPECT_TRUE(setZones(id(10, set)).empty());
    EXPECT_EQ((std::vector<std::string>{"10^4^3:17^0", "10^32768^fc1/2^0"}), members(10, false));
    ZoneRecord *parents = nullptr;
    EXPECT_EQ(
        0, zs_cim_get_zone_alias_zone_parents_by_instance_id(q_, id(10, alias).c_str(), &parents));
    EXPECT_EQ(nullptr, parents);

    EXPECT_EQ(0, removeObject(10, ZP_OBJECT_ZONE_ALIAS, alias));
    EXPECT_EQ(std::vector<std::string>{"10^4^3:17^0"}, members(10, false));
    EXPECT_EQ(0, removeObject(10, ZP_OBJECT_ZONE_SET, set));
    EXPECT_EQ(std::vector<std::string>{"z2"}, zones(10, false));
}

TEST_F(ZoneServerTest, ActivationCopiesTheZoneSetAndReplacesTheActiveOne) {
    int a = create(10, ZP_OBJECT_ZONE_SET, "A");
    int b = create(10, ZP_OBJECT_ZONE_SET, "B");
    int z1 = create(10, ZP_OBJECT_ZONE, "z1");
    int z2 = create(10, ZP_OBJECT_ZONE, "z2");
    int z3 = create(10, ZP_OBJECT_ZONE, "z3");
    int alias = create(10, ZP_OBJECT_ZONE_ALIAS, "a1");
    ASSERT_EQ(0, addZone(10, a, z1));
    ASSERT_EQ(0, addZone(10, a, z2));
    ASSERT_EQ(0, addZone(10, b, z3));
    ASSERT_EQ(0, addAlias(10, z2, alias));
    ASSERT_EQ(0, member(10, ZP_OBJECT_ZONE, z1, 2, "2100000000000001"));
    ASSERT_EQ(0, member(10, ZP_OBJECT_ZONE, z2, 2, "2100000000000001"));
    ASSERT_EQ(0, member(10, ZP_OBJECT_ZONE_ALIAS, alias, 2, "2100000000000002"));
    ASSERT_EQ(0, member(10, ZP_OBJECT_ZONE, z3, 2, "2100000000000003"));

    EXPECT_EQ(kNotFound, activate(10, 0, z1));  // not a zone set
    EXPECT_EQ(kActiveReadOnly, activate(10, 1, a));
    EXPECT_EQ(kZoneSetNotActive, activate(10, 0, a, -1));
    EXPECT_EQ(kInvalidArgument, activate(10, 0, a, 0));
    ASSERT_EQ(0, activate(10, 0, a));

    // The copy keeps every number, with the active flag set.
    EXPECT_EQ(std::vector<std::string>{id(10, a, 1)}, zoneSets(10, true, true));
    EXPECT_EQ((std::vector<std::string>{id(10, z1, 1), id(10, z2, 1)}), zones(10, true, true));
    EXPECT_EQ(std::vector<std::string>{id(10, alias, 1)}, aliases(10, true, true));
    EXPECT_EQ((std::vector<std::string>{"10^2^2100000000000001^1", "10^2^2100000000000002^1"}),
              members(10, true));
    EXPECT_EQ((std::vector<std::string>{"z1", "z2"}), setZones(id(10, a, 1)));

    // Editing the full database leaves the active one alone; commands refuse
    // the active copy.
    ASSERT_EQ(0, removeObject(10, ZP_OBJECT_ZONE, z2));
    EXPECT_EQ((std::vector<std::string>{"z1", "z2"}), setZones(id(10, a, 1)));
    int error = 0;
    int length = get_member_value_length(1);
    unsigned char value[255] = {};
    ASSERT_EQ(0, get_member_value_from_cim_member_type_value("2100000000000009", 1, value));
    EXPECT_EQ(kActiveReadOnly, zs_cim_add_zoning_member(q_, ZP_OP_ADD, 10, 1, ZP_OBJECT_ZONE, z1, 1,
                                                        value, &length, &error));
    EXPECT_EQ(kActiveReadOnly,
              zs_cim_remove_zone_member_from_all_parents(q_, "10^2^2100000000000001^1"));
    EXPECT_EQ(2u, members(10, true).size());

    // Activating another zone set replaces everything that was active.
    ASSERT_EQ(0, activate(10, 0, b));
    EXPECT_EQ(std::vector<std::string>{"B"}, zoneSets(10, true));
    EXPECT_EQ(std::vector<std::string>{"z3"}, zones(10, true));
    EXPECT_TRUE(aliases(10, true).empty());
    EXPECT_EQ(std::vector<std::string>{"10^2^2100000000000003^1"}, members(10, true));

    // Deactivation by either copy's id empties the active database only.
    EXPECT_EQ(kZoneSetNotActive, activate(10, 0, a, -1));
    ASSERT_EQ(0, activate(10, 1, b, -1));
    EXPECT_TRUE(zoneSets(10, true).empty());
    EXPECT_TRUE(zones(10, true).empty());
    EXPECT_TRUE(members(10, true).empty());
    EXPECT_EQ((std::vector<std::string>{"A", "B"}), zoneSets(10, false));
    EXPECT_EQ(kZoneSetNotActive, activate(10, 0, b, -1));
}

TEST_F(SwitchTest, CapacityLimitsRefuseCommands) {
    loadFabric(R"({"limits": {"zones": 2, "members": 1},
                   "vsans": [{"number": 1, "full": {"zones": [{"name": "z0"}]}}]})");
    int zone = create(1, ZP_OBJECT_ZONE, "z1");
    EXPECT_EQ(kCapacity, createError(1, ZP_OBJECT_ZONE, "z2"));
    EXPECT_EQ(0, member(1, ZP_OBJECT_ZONE, zone, 3, "0x010101"));
    EXPECT_EQ(kCapacity, member(1, ZP_OBJECT_ZONE, zone, 3, "0x010102"));
    EXPECT_EQ(0, removeObject(1, ZP_OBJECT_ZONE, zone));  // frees a zone and a member entry
    zone = create(1, ZP_OBJECT_ZONE, "z2");
    EXPECT_EQ(0, member(1, ZP_OBJECT_ZONE, zone, 3, "0x010102"));
}

// Who owns what the switch hands back: every array, node, record and
// generic list is the caller's to free exactly once (the sanitizer runs
// catch a double free or a leak). The fixture's helpers free all they read,
// so every test of the switch checks that; these are the empty and failed
// answers: an empty database answers an allocated array (one free) and a
// null list, a failed query leaves the caller's variables alone.
TEST_F(ZoneServerTest, EmptyAndFailedAnswersHandBackOnlyWhatTheCallerFrees) {
    int count = -1;
    ZoneSetRecord *sets = nullptr;
    ASSERT_EQ(0, zs_cim_get_all_non_active_zone_sets(q_, 10, &count, &sets));
    EXPECT_EQ(0, count);
    EXPECT_NE(nullptr, sets);
    std::free(sets);
    EXPECT_TRUE(zones(10, true).empty());
    EXPECT_TRUE(aliases(10, true).empty());
    ZoneMemberRecord *member_list = nullptr;
    ASSERT_EQ(0, zs_cim_get_all_non_active_zone_members(q_, 10, &count, &member_list));
    EXPECT_EQ(0, count);
    EXPECT_EQ(nullptr, member_list);
    const int lonely = create(10, ZP_OBJECT_ZONE, "lonely");
    const std::string zone = id(10, lonely), set = id(10, create(10, ZP_OBJECT_ZONE_SET, "empty"));
    ZoneAliasRecord *alias_list = nullptr;
    EXPECT_EQ(0, zs_cim_get_zone_zone_aliases_by_instance_id(q_, zone.c_str(), &alias_list));
    EXPECT_EQ(nullptr, alias_list);
    ZoneSetRecord *set_list = nullptr;
    EXPECT_EQ(0, zs_cim_get_zone_zone_set_parents_by_instance_id(q_, zone.c_str(), &set_list));
    EXPECT_EQ(nullptr, set_list);
    EXPECT_TRUE(setZones(set).empty());
    EXPECT_TRUE(zoneMembers(zone).empty());

    // Sentinels that a failed query must leave alone (never freed here).
    int sentinel_storage = 0;
    auto *sentinel = reinterpret_cast<ZoneRecord *>(&sentinel_storage);
    count = 42;
    ZoneRecord *zone_list = sentinel;
    EXPECT_EQ(kVsanNotConfigured, zs_cim_get_all_non_active_zones(q_, 2, &count, &zone_list));
    EXPECT_EQ(kQueueNotOpen, zs_cim_get_all_non_active_zones(-1, 1, &count, &zone_list));
    EXPECT_EQ(kNotFound, zs_cim_get_zone_set_zones_by_instance_id(q_, "1^99^0", &zone_list));
    EXPECT_EQ(kInvalidArgument, zs_cim_get_zone_set_zones_by_instance_id(q_, nullptr, &zone_list));
    EXPECT_EQ(kInvalidArgument, zs_cim_get_all_non_active_zones(q_, 1, nullptr, &zone_list));
    EXPECT_EQ(sentinel, zone_list);
    EXPECT_EQ(42, count);
    cim_g_slist *parents = cim_g_slist_alloc();
    EXPECT_EQ(kNotFound,
              zs_cim_get_zone_member_zone_parents_by_instance_id(q_, "1^3^0x010101^0", &parents));
    EXPECT_EQ(0, cim_g_slist_length(parents));
    cim_g_slist_destroy(parents);
    cim_g_slist_destroy(nullptr);
    EXPECT_EQ(0, cim_g_slist_length(nullptr));
    EXPECT_EQ(nullptr, cim_g_slist_nth_data(nullptr, 0));

    // A created object's record is the caller's (a record of its kind); a
    // removal hands none back.
    void *record = nullptr;
    ASSERT_EQ(0, command([&](int *error) {
                  return zs_cim_create_zoning_object(q_, ZP_OP_ADD, 1, ZP_OBJECT_ZONE_ALIAS, "al",
                                                     &record, error);
              }));
    EXPECT_STREQ("al", static_cast<ZoneAliasRecord *>(record)->name);
    std::free(record);
    record = &count;
    ASSERT_EQ(0, command([&](int *error) {
                  return zs_cim_create_zoning_object_with_id(q_, ZP_OP_REMOVE, 10, ZP_OBJECT_ZONE,
                                                             lonely, &record, error);
              }));
    EXPECT_EQ(nullptr, record);
}

}  // namespace
}  // namespace simtest
