// Shared fixture of the simulated switch's tests: every test gets its own
// database file in a fresh temporary directory (ZONE_SIM_DB) and an open
// queue, plus small helpers that drive the platform operations the way the
// provider does.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/zoning_platform.h"
#include "sim/fabric.h"
#include "sim/store.h"

namespace simtest {

// Codes of the simulated switch (its documented table).
inline constexpr int kAlreadyPresent = 4;
inline constexpr int kNotSupported = 24;
inline constexpr int kNotFound = 100;
inline constexpr int kInvalidName = 101;
inline constexpr int kVsanNotConfigured = 102;
inline constexpr int kActiveReadOnly = 103;
inline constexpr int kMemberPresent = 104;
inline constexpr int kCapacity = 105;
inline constexpr int kNotOurDatabase = 107;
inline constexpr int kInvalidArgument = 108;
inline constexpr int kQueueNotOpen = 109;
inline constexpr int kNothingPending = 110;
inline constexpr int kZoneSetNotActive = 111;

// The object number of a generic InstanceID "vsan^number^active".
inline int numberOf(const std::string &instance_id) {
    int vsan = -1, number = -1, active = -1;
    EXPECT_EQ(
        0, zs_cim_get_fields_from_generic_instance_id(instance_id.c_str(), &vsan, &number, &active))
        << instance_id;
    return number;
}

// Names (or InstanceIDs; always for members) of a linked list, in list
// order; frees every node.
template <typename Record>
std::vector<std::string> takeList(Record *head, bool ids = false) {
    std::vector<std::string> out;
    while (head != nullptr) {
        Record *next = head->next;
        if constexpr (std::is_same_v<Record, ZoneMemberRecord>) {
            out.push_back(head->instance_id);
        } else {
            out.push_back(ids ? head->instance_id : head->name);
        }
        std::free(head);
        head = next;
    }
    return out;
}

class SwitchTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/zonesim-test-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        dir_ = pattern;
        db_ = dir_ + "/switch.db";
        setenv("ZONE_SIM_DB", db_.c_str(), 1);
        ASSERT_EQ(0, init_mts(&q_));
    }
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::remove_all(dir_, ignored);
    }

    // Creates a zoning object in the full database; answers its number.
    int create(int vsan, int type, const char *name) {
        void *record = nullptr;
        int error = 0;
        EXPECT_EQ(0, zs_cim_create_zoning_object(q_, ZP_OP_ADD, vsan, type, name, &record, &error))
            << name;
        if (record == nullptr) return -1;
        int number = numberOf(static_cast<const char *>(record));
        std::free(record);
        return number;
    }
    // A command's code, which must also be what its *error says.
    static int command(const std::function<int(int *)> &call) {
        int error = 0;
        int rc = call(&error);
        EXPECT_EQ(rc, error);
        return rc;
    }
    // A refused creation's code; no record is handed back.
    int createError(int vsan, int type, const char *name) {
        void *record = nullptr;
        int rc = command([&](int *error) {
            return zs_cim_create_zoning_object(q_, ZP_OP_ADD, vsan, type, name, &record, error);
        });
        EXPECT_EQ(nullptr, record);
        return rc;
    }
    int removeObject(int vsan, int type, int number) {
        return command([&](int *error) {
            return zs_cim_create_zoning_object_with_id(q_, ZP_OP_REMOVE, vsan, type, number,
                                                       nullptr, error);
        });
    }
    int addZone(int vsan, int set, int zone, int op = ZP_OP_ADD) {
        return command(
            [&](int *e) { return zs_cim_add_zone_to_zone_set(q_, op, vsan, set, zone, e); });
    }
    int addAlias(int vsan, int zone, int alias, int op = ZP_OP_ADD) {
        return command(
            [&](int *e) { return zs_cim_add_alias_to_zone(q_, op, vsan, zone, alias, e); });
    }
    // Adds (or removes) a member given by CIM type and text, converting it as
    // the provider does (109 handed over as 231).
    int member(int vsan, int parent_type, int parent, unsigned cim_type, const char *text,
               int op = ZP_OP_ADD) {
        uint8_t code = 0;
        if (decode_cim_member_type(cim_type, &code) != 0) return -1000;
        int length = get_member_value_length(code);
        unsigned char value[256] = {};
        if (get_member_value_from_cim_member_type_value(text, code, value) != 0) return -1001;
        if (code == 109) code = 231;
        return command([&](int *error) {
            return zs_cim_add_zoning_member(q_, op, vsan, 0, parent_type, parent, code, value,
                                            &length, error);
        });
    }
    int activate(int vsan, int active, int number, int flag = 1) {
        return command([&](int *error) {
            return zs_cim_activate_zone_set(q_, vsan, active, number, &flag, error);
        });
    }

    // Listings of one database of a VSAN, in array order: names, or
    // InstanceIDs with ids.
    template <typename Record>
    std::vector<std::string> listing(int (*get)(int, int, int *, Record **), int vsan, bool ids) {
        int count = -1;
        Record *records = nullptr;
        EXPECT_EQ(0, get(q_, vsan, &count, &records));
        std::vector<std::string> out;
        for (int i = 0; i < count; ++i)
            out.push_back(ids ? records[i].instance_id : records[i].name);
        std::free(records);  // one block for the whole array
        return out;
    }
    std::vector<std::string> zoneSets(int vsan, bool active, bool ids = false) {
        return listing(
            active ? zs_cim_get_all_active_zone_sets : zs_cim_get_all_non_active_zone_sets, vsan,
            ids);
    }
    std::vector<std::string> zones(int vsan, bool active, bool ids = false) {
        return listing(active ? zs_cim_get_all_active_zones : zs_cim_get_all_non_active_zones, vsan,
                       ids);
    }
    std::vector<std::string> aliases(int vsan, bool active, bool ids = false) {
        return listing(
            active ? zs_cim_get_all_active_zone_aliases : zs_cim_get_all_non_active_zone_aliases,
            vsan, ids);
    }
    // Member InstanceIDs; the count answered is the list's length.
    std::vector<std::string> members(int vsan, bool active) {
        int count = -1;
        ZoneMemberRecord *list = nullptr;
        EXPECT_EQ(0, (active ? zs_cim_get_all_active_zone_members
                             : zs_cim_get_all_non_active_zone_members)(q_, vsan, &count, &list));
        std::vector<std::string> ids = takeList(list);
        EXPECT_EQ(static_cast<int>(ids.size()), count);
        return ids;
    }
    // Every database of the VSANs, listed one call at a time, active first:
    // zone set and zone InstanceIDs, zone names, alias and member
    // InstanceIDs.
    std::vector<std::vector<std::string>> databases(const std::vector<int> &vsans) {
        std::vector<std::vector<std::string>> listed;
        for (const int vsan : vsans)
            for (const bool active : {true, false})
                listed.insert(listed.end(), {zoneSets(vsan, active, true),
                                             zones(vsan, active, true), zones(vsan, active),
                                             aliases(vsan, active, true), members(vsan, active)});
        return listed;
    }
    std::vector<std::string> zoneMembers(const std::string &zone_id) {
        ZoneMemberRecord *list = nullptr;
        EXPECT_EQ(0, zs_cim_get_zone_zone_members_by_instance_id(q_, zone_id.c_str(), &list));
        return takeList(list);
    }
    std::vector<std::string> setZones(const std::string &set_id) {
        ZoneRecord *list = nullptr;
        EXPECT_EQ(0, zs_cim_get_zone_set_zones_by_instance_id(q_, set_id.c_str(), &list));
        return takeList(list);
    }
    // Names of a member's parent zones and then its parent aliases, read
    // into one generic list as the provider reads them (a null list
    // variable gets a new list).
    std::vector<std::string> parentNames(const std::string &member_id) {
        cim_g_slist *list = nullptr;
        EXPECT_EQ(0,
                  zs_cim_get_zone_member_zone_parents_by_instance_id(q_, member_id.c_str(), &list));
        const int zone_count = cim_g_slist_length(list);
        EXPECT_EQ(0, zs_cim_get_zone_member_zone_alias_parents_by_instance_id(q_, member_id.c_str(),
                                                                              &list));
        std::vector<std::string> out;
        const int count = cim_g_slist_length(list);
        for (int i = 0; i < count; ++i) {
            void *data = cim_g_slist_nth_data(list, i);
            out.push_back(i < zone_count ? static_cast<ZoneRecord *>(data)->name
                                         : static_cast<ZoneAliasRecord *>(data)->name);
        }
        EXPECT_EQ(nullptr, cim_g_slist_nth_data(list, count));
        EXPECT_EQ(nullptr, cim_g_slist_nth_data(list, -1));
        cim_g_slist_destroy(list);
        return out;
    }
    // The VSANs in the order the provider walks them.
    std::vector<int> walkVsans() {
        std::vector<int> numbers;
        VsanEntry cursor{};
        while (vsan_cim_get_vsanEntry(q_, ZP_VSAN_NEXT, &cursor) == 0)
            numbers.push_back(cursor.vsan);
        return numbers;
    }

    // A write through a connection of its own, as another process makes it.
    void writeFromOutside(const std::function<int(zonesim::Store &)> &change) {
        zonesim::Store::Opened other = zonesim::Store::open(db_);
        ASSERT_TRUE(other.store) << other.message;
        ASSERT_EQ(0, other.store->write([&] { return change(*other.store); }));
    }
    void addVsanFromOutside(int number) {
        zonesim::VsanInfo vsan;
        vsan.number = number;
        vsan.name = "VSAN" + std::to_string(number);
        writeFromOutside([&](zonesim::Store &store) { return store.addVsan(vsan); });
    }
    void createFromOutside(const std::string &zone) {
        writeFromOutside([&](zonesim::Store &store) {
            return store.createObject(1, zonesim::ObjectKind::Zone, zone, nullptr);
        });
    }
    // Makes the platform let go of the database file (by pointing it at
    // another one), runs what is to be done to the file meanwhile, and
    // points it back.
    void releaseDatabase(const std::function<void()> &meanwhile = {}) {
        setenv("ZONE_SIM_DB", (dir_ + "/elsewhere.db").c_str(), 1);
        EXPECT_EQ(0, vsan_cim_check_vsan_index(1));
        if (meanwhile) meanwhile();
        setenv("ZONE_SIM_DB", db_.c_str(), 1);
    }

    // Replaces the switch's state with a fabric file's text.
    void loadFabric(const std::string &json) {
        zonesim::Store::Opened opened = zonesim::Store::open(db_);
        ASSERT_TRUE(opened.store) << opened.message;
        zonesim::FabricError error;
        ASSERT_EQ(0, zonesim::loadFabricText(*opened.store, json, &error)) << error.describe();
    }

    static std::string id(int vsan, int number, int active = 0) {
        return std::to_string(vsan) + "^" + std::to_string(number) + "^" + std::to_string(active);
    }

    int q_ = -1;
    std::string dir_;
    std::string db_;
};

}  // namespace simtest
