// Who owns what the switch hands back: every array, node, record and
// generic list is the caller's to free exactly once (the sanitizer and
// valgrind runs catch a double free or a leak), and empty or failed answers
// hand back nothing that needs freeing twice.
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
    ZoneRecord *zones = nullptr;
    ASSERT_EQ(0, zs_cim_get_all_active_zones(q_, 7, &count, &zones));
    EXPECT_EQ(0, count);
    std::free(zones);
    ZoneAliasRecord *aliases = nullptr;
    ASSERT_EQ(0, zs_cim_get_all_active_zone_aliases(q_, 7, &count, &aliases));
    std::free(aliases);

    count = -1;
    ZoneMemberRecord *members = nullptr;
    ASSERT_EQ(0, zs_cim_get_all_non_active_zone_members(q_, 7, &count, &members));
    EXPECT_EQ(0, count);
    EXPECT_EQ(nullptr, members);

    int zone = create(7, ZP_OBJECT_ZONE, "lonely");
    int set = create(7, ZP_OBJECT_ZONE_SET, "empty");
    ZoneAliasRecord *alias_list = nullptr;
    EXPECT_EQ(0, zs_cim_get_zone_zone_aliases_by_instance_id(q_, id(7, zone).c_str(), &alias_list));
    EXPECT_EQ(nullptr, alias_list);
    ZoneSetRecord *set_list = nullptr;
    EXPECT_EQ(0,
              zs_cim_get_zone_zone_set_parents_by_instance_id(q_, id(7, zone).c_str(), &set_list));
    EXPECT_EQ(nullptr, set_list);
    ZoneRecord *zone_list = nullptr;
    EXPECT_EQ(0, zs_cim_get_zone_set_zones_by_instance_id(q_, id(7, set).c_str(), &zone_list));
    EXPECT_EQ(nullptr, zone_list);
    ZoneMemberRecord *member_list = nullptr;
    EXPECT_EQ(0,
              zs_cim_get_zone_zone_members_by_instance_id(q_, id(7, zone).c_str(), &member_list));
    EXPECT_EQ(nullptr, member_list);

    // The VSAN table of the switch: one allocation for the whole array.
    VsanEntry *entries = nullptr;
    ASSERT_EQ(0, vsan_cim_get_all_vsanEntry(q_, &count, &entries));
    ASSERT_EQ(2, count);
    EXPECT_EQ(1, entries[0].vsan);
    EXPECT_EQ(7, entries[1].vsan);
    const auto *first = reinterpret_cast<const SimVsanEntry *>(&entries[0]);
    EXPECT_STREQ("VSAN0001", first->name);
    EXPECT_EQ(1, first->has_domain);
    EXPECT_EQ(0, reinterpret_cast<const SimVsanEntry *>(&entries[1])->has_domain);
    std::free(entries);
}

TEST_F(OwnershipTest, FailedQueriesHandNothingBack) {
    // Sentinels that a failed query must leave alone (never freed here).
    int sentinel_storage = 0;
    auto *sentinel = reinterpret_cast<ZoneRecord *>(&sentinel_storage);
    int count = 42;
    ZoneRecord *zones = sentinel;
    EXPECT_EQ(kVsanNotConfigured, zs_cim_get_all_non_active_zones(q_, 3, &count, &zones));
    EXPECT_EQ(sentinel, zones);
    EXPECT_EQ(42, count);
    EXPECT_EQ(kQueueNotOpen, zs_cim_get_all_non_active_zones(-1, 1, &count, &zones));
    EXPECT_EQ(sentinel, zones);

    ZoneRecord *list = sentinel;
    EXPECT_EQ(kNotFound, zs_cim_get_zone_set_zones_by_instance_id(q_, "1^99^0", &list));
    EXPECT_EQ(sentinel, list);
    EXPECT_EQ(kInvalidArgument, zs_cim_get_zone_set_zones_by_instance_id(q_, nullptr, &list));
    EXPECT_EQ(kInvalidArgument, zs_cim_get_all_non_active_zones(q_, 1, nullptr, &zones));

    cim_g_slist *parents = cim_g_slist_alloc();
    EXPECT_EQ(kNotFound,
              zs_cim_get_zone_member_zone_parents_by_instance_id(q_, "1^3^0x010101^0", &parents));
    EXPECT_EQ(0, cim_g_slist_length(parents));
    cim_g_slist_destroy(parents);
    cim_g_slist_destroy(nullptr);
    EXPECT_EQ(0, cim_g_slist_length(nullptr));
    EXPECT_EQ(nullptr, cim_g_slist_nth_data(nullptr, 0));
}

TEST_F(OwnershipTest, ListsAreNodesThatTheCallerFreesOneByOne) {
    int set = create(1, ZP_OBJECT_ZONE_SET, "s");
    std::vector<int> zone_numbers;
    for (const char *name : {"za", "zb", "zc"}) {
        zone_numbers.push_back(create(1, ZP_OBJECT_ZONE, name));
        ASSERT_EQ(0, addZone(1, set, zone_numbers.back()));
        ASSERT_EQ(0, member(1, ZP_OBJECT_ZONE, zone_numbers.back(), 3, "0x0a0b0c"));
    }
    ZoneRecord *list = nullptr;
    ASSERT_EQ(0, zs_cim_get_zone_set_zones_by_instance_id(q_, id(1, set).c_str(), &list));
    // Separate blocks: detaching and freeing the head leaves the rest intact.
    ZoneRecord *second = list->next;
    list->next = nullptr;
    std::free(list);
    EXPECT_STREQ("zb", second->name);
    EXPECT_EQ((std::vector<std::string>{"zb", "zc"}), takeList(second));

    // A member in three zones is one member: one node per member.
    EXPECT_EQ(1u, members(1, false).size());
    // Generic lists own their records; a null variable gets a new list.
    cim_g_slist *parents = nullptr;
    ASSERT_EQ(0,
              zs_cim_get_zone_member_zone_parents_by_instance_id(q_, "1^3^0x0a0b0c^0", &parents));
    ASSERT_NE(nullptr, parents);
    EXPECT_EQ(3, cim_g_slist_length(parents));
    EXPECT_EQ(id(1, zone_numbers[2]),
              static_cast<ZoneRecord *>(cim_g_slist_nth_data(parents, 2))->instance_id);
    EXPECT_EQ(nullptr, cim_g_slist_nth_data(parents, -1));
    cim_g_slist_destroy(parents);

    // A created object's record is the caller's as well.
    void *record = nullptr;
    int error = -1;
    ASSERT_EQ(0, zs_cim_create_zoning_object(q_, ZP_OP_ADD, 1, ZP_OBJECT_ZONE_ALIAS, "al", &record,
                                             &error));
    EXPECT_EQ(0, error);
    EXPECT_STREQ("al", static_cast<ZoneAliasRecord *>(record)->name);
    std::free(record);
    record = reinterpret_cast<void *>(&error);  // removal hands nothing back
    ASSERT_EQ(0, zs_cim_create_zoning_object_with_id(q_, ZP_OP_REMOVE, 1, ZP_OBJECT_ZONE,
                                                     zone_numbers[0], &record, &error));
    EXPECT_EQ(nullptr, record);
}

}  // namespace
}  // namespace simtest
