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
#include <string>
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

struct Fields {
    int vsan = -1, number = -1, active = -1;
};

inline Fields fieldsOf(const char *instance_id) {
    Fields f;
    EXPECT_EQ(
        0, zs_cim_get_fields_from_generic_instance_id(instance_id, &f.vsan, &f.number, &f.active))
        << instance_id;
    return f;
}

// Names (or InstanceIDs) of an array of records, in array order; frees it.
template <typename Record>
std::vector<std::string> takeArray(Record *array, int count, bool ids = false) {
    std::vector<std::string> out;
    for (int i = 0; i < count; ++i) out.push_back(ids ? array[i].instance_id : array[i].name);
    std::free(array);
    return out;
}

// Names (or InstanceIDs) of a linked list, in list order; frees every node.
template <typename Record>
std::vector<std::string> takeList(Record *head, bool ids = false) {
    std::vector<std::string> out;
    while (head != nullptr) {
        Record *next = head->next;
        out.push_back(ids ? head->instance_id : head->name);
        std::free(head);
        head = next;
    }
    return out;
}

inline std::vector<std::string> takeMembers(ZoneMemberRecord *head) {
    std::vector<std::string> out;
    while (head != nullptr) {
        ZoneMemberRecord *next = head->next;
        out.push_back(head->instance_id);
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
        Fields f = fieldsOf(static_cast<const char *>(record));
        std::free(record);
        return f.number;
    }
    int createError(int vsan, int type, const char *name) {
        void *record = nullptr;
        int error = 0;
        int rc = zs_cim_create_zoning_object(q_, ZP_OP_ADD, vsan, type, name, &record, &error);
        EXPECT_EQ(rc, error);
        EXPECT_EQ(nullptr, record);
        return error;
    }
    int removeObject(int vsan, int type, int number) {
        int error = 0;
        int rc = zs_cim_create_zoning_object_with_id(q_, ZP_OP_REMOVE, vsan, type, number, nullptr,
                                                     &error);
        EXPECT_EQ(rc, error);
        return rc;
    }
    int addZone(int vsan, int set, int zone, int op = ZP_OP_ADD) {
        int error = 0;
        int rc = zs_cim_add_zone_to_zone_set(q_, op, vsan, set, zone, &error);
        EXPECT_EQ(rc, error);
        return rc;
    }
    int addAlias(int vsan, int zone, int alias, int op = ZP_OP_ADD) {
        int error = 0;
        int rc = zs_cim_add_alias_to_zone(q_, op, vsan, zone, alias, &error);
        EXPECT_EQ(rc, error);
        return rc;
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
        int error = 0;
        int rc = zs_cim_add_zoning_member(q_, op, vsan, 0, parent_type, parent, code, value,
                                          &length, &error);
        EXPECT_EQ(rc, error);
        return rc;
    }
    int activate(int vsan, int active, int number, int flag = 1) {
        int error = 0;
        int rc = zs_cim_activate_zone_set(q_, vsan, active, number, &flag, &error);
        EXPECT_EQ(rc, error);
        return rc;
    }

    std::vector<std::string> zoneSets(int vsan, bool active, bool ids = false) {
        int count = -1;
        ZoneSetRecord *records = nullptr;
        int rc = active ? zs_cim_get_all_active_zone_sets(q_, vsan, &count, &records)
                        : zs_cim_get_all_non_active_zone_sets(q_, vsan, &count, &records);
        EXPECT_EQ(0, rc);
        return takeArray(records, count, ids);
    }
    std::vector<std::string> zones(int vsan, bool active, bool ids = false) {
        int count = -1;
        ZoneRecord *records = nullptr;
        int rc = active ? zs_cim_get_all_active_zones(q_, vsan, &count, &records)
                        : zs_cim_get_all_non_active_zones(q_, vsan, &count, &records);
        EXPECT_EQ(0, rc);
        return takeArray(records, count, ids);
    }
    std::vector<std::string> aliases(int vsan, bool active, bool ids = false) {
        int count = -1;
        ZoneAliasRecord *records = nullptr;
        int rc = active ? zs_cim_get_all_active_zone_aliases(q_, vsan, &count, &records)
                        : zs_cim_get_all_non_active_zone_aliases(q_, vsan, &count, &records);
        EXPECT_EQ(0, rc);
        return takeArray(records, count, ids);
    }
    std::vector<std::string> members(int vsan, bool active) {
        int count = -1;
        ZoneMemberRecord *list = nullptr;
        int rc = active ? zs_cim_get_all_active_zone_members(q_, vsan, &count, &list)
                        : zs_cim_get_all_non_active_zone_members(q_, vsan, &count, &list);
        EXPECT_EQ(0, rc);
        std::vector<std::string> ids = takeMembers(list);
        EXPECT_EQ(static_cast<int>(ids.size()), count);
        return ids;
    }
    std::vector<std::string> zoneMembers(const std::string &zone_id) {
        ZoneMemberRecord *list = nullptr;
        EXPECT_EQ(0, zs_cim_get_zone_zone_members_by_instance_id(q_, zone_id.c_str(), &list));
        return takeMembers(list);
    }
    std::vector<std::string> setZones(const std::string &set_id) {
        ZoneRecord *list = nullptr;
        EXPECT_EQ(0, zs_cim_get_zone_set_zones_by_instance_id(q_, set_id.c_str(), &list));
        return takeList(list);
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
