// Who owns what the switch hands back: every array, node, record and
// generic list is the caller's to free exactly once (the sanitizer and
// valgrind runs catch a double free or a leak), and empty or failed answers
// hand back nothing that needs freeing twice. The fixture's helpers free
// every record, array and generic list they read, and lists node by node, so
// every test of the switch checks the ownership of what it reads; this file
// adds the empty and failed answers.
#include "sim/sim_records.h"
#include "sim_switch_support.h"

namespace simtest {
namespace {

class OwnershipTest : public SwitchTest {
  protected:
    void SetUp() override {
        SwitchTest::SetUp();
        loadFabric(R"({"vsans": [{"number": 1, "domain": {"id": 1}}, {"number": 7}]})");
    }
};

TEST_F(OwnershipTest, EmptyDatabasesAnswerAllocatedArraysAndNullLists) {
    int count = -1;
    ZoneSetRecord *sets = nullptr;
    ASSERT_EQ(0, zs_cim_get_all_non_active_zone_sets(q_, 7, &count, &sets));
    EXPECT_EQ(0, count);
    EXPECT_NE(nullptr, sets);
    std::free(sets);
    EXPECT_TRUE(zones(7, true).empty());
    EXPECT_TRUE(aliases(7, true).empty());
    ZoneMemberRecord *members = nullptr;
    ASSERT_EQ(0, zs_cim_get_all_non_active_zone_members(q_, 7, &count, &members));
    EXPECT_EQ(0, count);
    EXPECT_EQ(nullptr, members);

    const std::string zone = id(7, create(7, ZP_OBJECT_ZONE, "lonely"));
    const std::string set = id(7, create(7, ZP_OBJECT_ZONE_SET, "empty"));
    ZoneAliasRecord *alias_list = nullptr;
    EXPECT_EQ(0, zs_cim_get_zone_zone_aliases_by_instance_id(q_, zone.c_str(), &alias_list));
    EXPECT_EQ(nullptr, alias_list);
    ZoneSetRecord *set_list = nullptr;
    EXPECT_EQ(0, zs_cim_get_zone_zone_set_parents_by_instance_id(q_, zone.c_str(), &set_list));
    EXPECT_EQ(nullptr, set_list);
    EXPECT_TRUE(setZones(set).empty());
    EXPECT_TRUE(zoneMembers(zone).empty());

    // The VSAN table of the switch: one allocation for the whole array.
    VsanEntry *entries = nullptr;
    ASSERT_EQ(0, vsan_cim_get_all_vsanEntry(q_, &count, &entries));
    ASSERT_EQ(2, count);
    const auto *described = reinterpret_cast<const SimVsanEntry *>(entries);
    EXPECT_EQ(1, described[0].vsan);
    EXPECT_STREQ("VSAN0001", described[0].name);
    EXPECT_EQ(1, described[0].has_domain);
    EXPECT_EQ(7, described[1].vsan);
    EXPECT_EQ(0, described[1].has_domain);
    std::free(entries);
}

TEST_F(OwnershipTest, FailedQueriesHandNothingBack) {
    // Sentinels that a failed query must leave alone (never freed here).
    int sentinel_storage = 0;
    auto *sentinel = reinterpret_cast<ZoneRecord *>(&sentinel_storage);
    int count = 42;
    ZoneRecord *zones = sentinel;
    EXPECT_EQ(kVsanNotConfigured, zs_cim_get_all_non_active_zones(q_, 3, &count, &zones));
    EXPECT_EQ(kQueueNotOpen, zs_cim_get_all_non_active_zones(-1, 1, &count, &zones));
    EXPECT_EQ(kNotFound, zs_cim_get_zone_set_zones_by_instance_id(q_, "1^99^0", &zones));
    EXPECT_EQ(kInvalidArgument, zs_cim_get_zone_set_zones_by_instance_id(q_, nullptr, &zones));
    EXPECT_EQ(kInvalidArgument, zs_cim_get_all_non_active_zones(q_, 1, nullptr, &zones));
    EXPECT_EQ(sentinel, zones);
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
    const int zone = create(1, ZP_OBJECT_ZONE, "z");
    record = &count;
    ASSERT_EQ(0, command([&](int *error) {
                  return zs_cim_create_zoning_object_with_id(q_, ZP_OP_REMOVE, 1, ZP_OBJECT_ZONE,
                                                             zone, &record, error);
              }));
    EXPECT_EQ(nullptr, record);
}

}  // namespace
}  // namespace simtest
