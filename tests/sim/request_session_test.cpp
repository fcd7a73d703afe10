// Requests: what runs between mutex_lock() and mutex_unlock() reads one
// snapshot of the switch in one transaction (the switch's name included),
// answers as the same calls do outside a request, sees its own changes,
// keeps other threads out of the database until it ends, keeps what it read
// for the next request only while nobody commits, and stays on one
// database.
#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

#include "sim_switch_support.h"

namespace simtest {
namespace {

using Strings = std::vector<std::string>;

// Inside a request a walk over the VSANs reads the VSAN table, and the
// listings of a kind listed for more than one VSAN, once: what they answer
// must be what the same calls answer outside a request, stay the request's
// snapshot while another process writes, and follow the request's own
// writes.
TEST_F(SwitchTest, ARequestReadsOneSnapshotFollowsItsOwnWritesAndLeavesNothingOpen) {
    addVsanFromOutside(2);
    addVsanFromOutside(3);
    const int set = create(2, ZP_OBJECT_ZONE_SET, "set_a");
    const int zone_a = create(2, ZP_OBJECT_ZONE, "zone_a");
    const int zone_b = create(2, ZP_OBJECT_ZONE, "zone_b");
    create(1, ZP_OBJECT_ZONE, "zone_in_1");
    create(3, ZP_OBJECT_ZONE, "zone_in_3");
    create(2, ZP_OBJECT_ZONE_ALIAS, "alias_a");
    ASSERT_EQ(0, addZone(2, set, zone_b));
    ASSERT_EQ(0, addZone(2, set, zone_a));
    ASSERT_EQ(0, member(2, ZP_OBJECT_ZONE, zone_a, 2, "2100000000000001"));
    ASSERT_EQ(0, activate(2, 0, set));
    create(2, ZP_OBJECT_ZONE, "zone_c");  // after the activation: editable only

    auto everything = [&] { return databases(walkVsans()); };
    const std::vector<Strings> outside = everything();
    EXPECT_EQ(std::vector<int>({1, 2, 3}), walkVsans());
    EXPECT_EQ(Strings({"zone_a", "zone_b", "zone_c"}), zones(2, false));
    EXPECT_EQ(Strings({"zone_b", "zone_a"}), zones(2, true));

    mutex_lock();
    EXPECT_EQ(outside, everything());
    const std::string name_in_request = getCSName();
    addVsanFromOutside(4);
    createFromOutside("zone_from_outside");
    writeFromOutside([](zonesim::Store &store) { return store.setSwitchName("renamed"); });
    EXPECT_EQ(outside, everything());  // still the request's snapshot, name included
    EXPECT_EQ(name_in_request, getCSName());
    VsanEntry entry{};
    entry.vsan = 4;
    EXPECT_EQ(kVsanNotConfigured, vsan_cim_get_vsanEntry(q_, ZP_VSAN_GIVEN, &entry));
    int count = 0;
    ZoneRecord *records = nullptr;
    EXPECT_EQ(kVsanNotConfigured, zs_cim_get_all_non_active_zones(q_, 4, &count, &records));

    // The request's own writes: its reads from now on see them and whatever
    // was committed before them; a refused write doesn't end its reads.
    const int made = create(3, ZP_OBJECT_ZONE, "zone_made_in_request");
    EXPECT_EQ(0, member(3, ZP_OBJECT_ZONE, made, 2, "2100000000000001"));
    EXPECT_EQ(1u, zoneMembers(id(3, made)).size());
    EXPECT_EQ(kAlreadyPresent, createError(3, ZP_OBJECT_ZONE, "zone_made_in_request"));
    EXPECT_EQ(std::vector<int>({1, 2, 3, 4}), walkVsans());
    EXPECT_EQ(Strings({"zone_in_1", "zone_from_outside"}), zones(1, false));
    EXPECT_EQ(Strings({"zone_in_3", "zone_made_in_request"}), zones(3, false));
    EXPECT_TRUE(zones(4, false).empty());
    mutex_unlock();

    // Committed, and the database is free for another connection's writes.
    createFromOutside("after_request");
    EXPECT_EQ(Strings({"zone_in_1", "zone_from_outside", "after_request"}), zones(1, false));
    EXPECT_EQ(Strings({"zone_in_3", "zone_made_in_request"}), zones(3, false));
    // The next request reads the new name; outside a request every call
    // reads the latest state.
    mutex_lock();
    EXPECT_STREQ("renamed", getCSName());
    mutex_unlock();
    writeFromOutside([](zonesim::Store &store) { return store.setSwitchName("renamed-again"); });
    EXPECT_STREQ("renamed-again", getCSName());
}

// A request answers "the VSAN after n" from its table for any n, whether a
// VSAN of that number exists or not, exactly as a lookup outside it does.
TEST_F(SwitchTest, NextVsanFromAnyStartingPointAnswersAsOutsideARequest) {
    for (int number : {5, 6, 200, 4094}) addVsanFromOutside(number);
    const int starts[] = {-7, 0, 1, 2, 5, 6, 7, 199, 200, 4093, 4094, 4095, 1 << 30};
    auto answers = [&] {
        std::vector<std::pair<int, int>> found;
        for (int start : starts) {
            VsanEntry entry{};
            entry.vsan = start;
            const int code = vsan_cim_get_vsanEntry(q_, ZP_VSAN_NEXT, &entry);
            found.emplace_back(code, code == 0 ? entry.vsan : 0);
            entry.vsan = start;
            found.emplace_back(vsan_cim_get_vsanEntry(q_, ZP_VSAN_GIVEN, &entry), 0);
        }
        return found;
    };
    const auto outside = answers();
    EXPECT_EQ(1, outside[2 * 1].second);    // after 0
    EXPECT_EQ(200, outside[2 * 6].second);  // after 7, which has no VSAN
    EXPECT_NE(0, outside[2 * 10].first);    // nothing after the highest
    mutex_lock();
    walkVsans();  // the walk reads the table: the answers below come from it
    EXPECT_EQ(outside, answers());
    mutex_unlock();
}

// One listing as raw bytes: the answer code and count, then the array's
// records whole (the padding after each text included).
template <typename Record>
std::string listingBytes(int (*get)(int, int, int *, Record **), int queue, int vsan) {
    int count = -1;
    Record *records = nullptr;
    const int code = get(queue, vsan, &count, &records);
    std::string bytes = "rc " + std::to_string(code) + " count " + std::to_string(count) + "\n";
    if (code != 0) return bytes;
    const std::size_t n = count > 0 ? static_cast<std::size_t>(count) : 1;
    bytes.append(reinterpret_cast<const char *>(records), n * sizeof(Record));
    std::free(records);
    return bytes;
}

// One member list as raw bytes: the answer code and count, then every node
// whole but for its link.
std::string memberBytes(int (*get)(int, int, int *, ZoneMemberRecord **), int queue, int vsan) {
    int count = -1;
    ZoneMemberRecord *list = nullptr;
    const int code = get(queue, vsan, &count, &list);
    std::string bytes = "rc " + std::to_string(code) + " count " + std::to_string(count) + "\n";
    while (list != nullptr) {
        ZoneMemberRecord node = *list;
        node.next = nullptr;
        bytes.append(reinterpret_cast<const char *>(&node), sizeof node);
        std::free(std::exchange(list, list->next));
    }
    return bytes;
}

// A request keeps the records of what it listed and hands out copies of
// them: whole records must be the bytes a listing outside a request makes,
// whether the request read the rows (its first VSAN) or copies kept
// records, in this request or the next.
TEST_F(SwitchTest, ListedRecordsAreTheSameBytesWhetherKeptOrRead) {
    addVsanFromOutside(2);
    addVsanFromOutside(3);
    const std::string longest(64, 'z');
    const int set = create(2, ZP_OBJECT_ZONE_SET, "set_with_a_long_name_for_its_padding");
    create(2, ZP_OBJECT_ZONE_SET, "s");
    const int zone = create(2, ZP_OBJECT_ZONE, longest.c_str());
    create(2, ZP_OBJECT_ZONE, "z");
    create(3, ZP_OBJECT_ZONE, "zone_in_3");
    create(1, ZP_OBJECT_ZONE_ALIAS, "alias_in_1");
    create(2, ZP_OBJECT_ZONE_ALIAS, "a");
    ASSERT_EQ(0, addZone(2, set, zone));
    ASSERT_EQ(0, member(2, ZP_OBJECT_ZONE, zone, 2, "2100000000000001"));
    ASSERT_EQ(0, member(2, ZP_OBJECT_ZONE, zone, 3, "0x010203"));
    ASSERT_EQ(0, activate(2, 0, set));
    ASSERT_EQ(0, member(3, ZP_OBJECT_ZONE, create(3, ZP_OBJECT_ZONE, "z3"), 2, "2100000000000002"));

    auto everything = [&] {
        std::vector<std::string> listed;
        for (const int vsan : {1, 2, 3, 4})  // 4 is not configured
            for (const bool active : {true, false}) {
                listed.push_back(listingBytes(
                    active ? zs_cim_get_all_active_zone_sets : zs_cim_get_all_non_active_zone_sets,
                    q_, vsan));
                listed.push_back(listingBytes(
                    active ? zs_cim_get_all_active_zones : zs_cim_get_all_non_active_zones, q_,
                    vsan));
                listed.push_back(listingBytes(active ? zs_cim_get_all_active_zone_aliases
                                                     : zs_cim_get_all_non_active_zone_aliases,
                                              q_, vsan));
                listed.push_back(memberBytes(active ? zs_cim_get_all_active_zone_members
                                                    : zs_cim_get_all_non_active_zone_members,
                                             q_, vsan));
            }
        return listed;
    };
    const std::vector<std::string> outside = everything();
    for (int request = 0; request < 2; ++request) {
        SCOPED_TRACE("request " + std::to_string(request));
        mutex_lock();
        EXPECT_EQ(outside, everything());
        EXPECT_EQ(outside, everything());
        mutex_unlock();
    }
}

// The answer code and the InstanceIDs of a relatives query, in list order.
template <typename Record>
Strings relatives(int queue, int (*query)(int, const char *, Record **), const std::string &id) {
    Record *list = nullptr;
    const int code = query(queue, id.c_str(), &list);
    Strings found = takeList(list, true);
    found.insert(found.begin(), "rc " + std::to_string(code));
    return found;
}

// A request that asks for the relatives of many objects reads every link
// once and answers the rest from memory: the answers, their order (links in
// the order they were made, not that of the objects) and the refusals must
// be those of the database, for both databases and every kind of relative.
TEST_F(SwitchTest, RelativesAskedByTheHundredAnswerAsTheDatabaseDoes) {
    constexpr int kZones = 40;
    constexpr int kAliases = 12;
    const int set_a = create(1, ZP_OBJECT_ZONE_SET, "set_a");
    const int set_b = create(1, ZP_OBJECT_ZONE_SET, "set_b");
    std::vector<int> zones, aliases;
    for (int i = 0; i < kZones; ++i)
        zones.push_back(create(1, ZP_OBJECT_ZONE, ("zone_" + std::to_string(i)).c_str()));
    for (int i = 0; i < kAliases; ++i)
        aliases.push_back(create(1, ZP_OBJECT_ZONE_ALIAS, ("alias_" + std::to_string(i)).c_str()));
    for (int i = kZones - 1; i >= 0; --i) {
        ASSERT_EQ(0, addZone(1, set_a, zones[i]));
        if (i % 3 == 0) {
            ASSERT_EQ(0, addZone(1, set_b, zones[i]));
        }
        ASSERT_EQ(0, addAlias(1, zones[i], aliases[(i + 5) % kAliases]));
        ASSERT_EQ(0, addAlias(1, zones[i], aliases[i % kAliases]));
        const std::string wwn = "21000000000000" + std::to_string(10 + i % 7);
        ASSERT_EQ(0, member(1, ZP_OBJECT_ZONE, zones[i], 2, wwn.c_str()));
    }
    for (int i = 0; i < kAliases; ++i)
        ASSERT_EQ(0, member(1, ZP_OBJECT_ZONE_ALIAS, aliases[i], 2,
                            ("22000000000000" + std::to_string(10 + i)).c_str()));
    ASSERT_EQ(0, activate(1, 0, set_b));

    auto everything = [&] {
        std::vector<Strings> answers;
        // Every query given, about the object of that id.
        auto ask = [&](const std::string &object_id, auto... queries) {
            (answers.push_back(relatives(q_, queries, object_id)), ...);
        };
        for (int active : {0, 1}) {
            for (int set : {set_a, set_b, 9999})
                ask(id(1, set, active), zs_cim_get_zone_set_zones_by_instance_id);
            for (int zone : zones)
                ask(id(1, zone, active), zs_cim_get_zone_zone_set_parents_by_instance_id,
                    zs_cim_get_zone_zone_aliases_by_instance_id,
                    zs_cim_get_zone_zone_members_by_instance_id);
            for (int alias : aliases)
                ask(id(1, alias, active), zs_cim_get_zone_alias_zone_parents_by_instance_id,
                    zs_cim_get_zone_alias_zone_members_by_instance_id);
            // A zone set asked for as a zone is no zone.
            ask(id(1, set_a, active), zs_cim_get_zone_zone_aliases_by_instance_id);
        }
        return answers;
    };
    const std::vector<Strings> outside = everything();
    EXPECT_EQ((Strings{"rc 0", id(1, zones[39]), id(1, zones[38])}),
              Strings(outside[0].begin(), outside[0].begin() + 3));
    EXPECT_EQ(Strings{"rc " + std::to_string(kNotFound)}, outside[2]);

    mutex_lock();
    EXPECT_EQ(outside, everything());  // read one by one, then from memory
    EXPECT_EQ(outside, everything());  // from memory throughout
    mutex_unlock();
}

// What requests have read (VSAN table, listings, objects with their links
// and members) is kept for the next request only while nobody commits: a
// commit by another connection, or a command of this process, must show in
// the next request exactly as it shows outside any request.
TEST_F(SwitchTest, WhatRequestsReadIsKeptOnlyUntilSomebodyCommits) {
    addVsanFromOutside(2);
    const int set = create(2, ZP_OBJECT_ZONE_SET, "set_a");
    const int zone_a = create(2, ZP_OBJECT_ZONE, "zone_a");
    const int zone_b = create(2, ZP_OBJECT_ZONE, "zone_b");
    create(1, ZP_OBJECT_ZONE, "zone_in_1");
    ASSERT_EQ(0, addZone(2, set, zone_a));
    ASSERT_EQ(0, member(2, ZP_OBJECT_ZONE, zone_a, 2, "2100000000000001"));

    // Enough relatives asked one at a time to read the objects and links
    // whole, and listings of more than one VSAN.
    auto answers = [&] {
        std::vector<Strings> listed;
        for (int i = 0; i < 40; ++i) {
            listed.push_back(setZones(id(2, set)));
            listed.push_back(zoneMembers(id(2, zone_b)));
        }
        listed.resize(2);
        for (const int vsan : walkVsans()) {
            listed.push_back(zones(vsan, false, true));
            listed.push_back(members(vsan, false));
        }
        return listed;
    };
    auto inRequest = [&] {
        mutex_lock();
        std::vector<Strings> listed = answers();
        mutex_unlock();
        return listed;
    };
    const std::vector<std::function<void()>> changes = {
        [&] { createFromOutside("zone_from_outside"); },
        [&] { addVsanFromOutside(3); },
        [&] {
            writeFromOutside([&](zonesim::Store &store) {
                return store.addChild(2, zonesim::ObjectKind::ZoneSet, set, zone_b);
            });
        },
        [&] { ASSERT_EQ(0, member(2, ZP_OBJECT_ZONE, zone_b, 2, "2100000000000002")); },
        [&] { ASSERT_EQ(0, addZone(2, set, zone_b, ZP_OP_REMOVE)); },
        [&] { create(3, ZP_OBJECT_ZONE, "zone_in_3"); },
    };
    EXPECT_EQ(answers(), inRequest());
    for (std::size_t i = 0; i < changes.size(); ++i) {
        SCOPED_TRACE("change " + std::to_string(i));
        const std::vector<Strings> before = inRequest();
        EXPECT_EQ(before, inRequest());  // kept, and still right
        changes[i]();
        const std::vector<Strings> outside = answers();
        EXPECT_NE(before, outside);
        EXPECT_EQ(outside, inRequest());
    }
}

TEST_F(SwitchTest, OtherThreadsWaitForTheRequestAndThenSucceed) {
    std::atomic<bool> request_over{false};
    std::atomic<bool> other_started{false};
    int other_rc = -1;
    bool other_saw_request_over = false;

    mutex_lock();
    EXPECT_TRUE(zones(1, false).empty());  // the request now holds the database
    std::thread other([&] {
        other_started = true;
        void *record = nullptr;
        int error = 0;
        // No mutex: a caller that doesn't take it still may not run inside
        // the request's transaction.
        other_rc = zs_cim_create_zoning_object(q_, ZP_OP_ADD, 1, ZP_OBJECT_ZONE_SET, "other",
                                               &record, &error);
        std::free(record);
        other_saw_request_over = request_over.load();
    });
    while (!other_started) std::this_thread::yield();
    // Gives the other thread the time to reach the database; were it not
    // kept waiting, it would finish before the request is over.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_TRUE(zoneSets(1, false).empty());
    request_over = true;
    mutex_unlock();
    other.join();

    EXPECT_EQ(0, other_rc);
    EXPECT_TRUE(other_saw_request_over);
    EXPECT_EQ(Strings({"other"}), zoneSets(1, false));
}

TEST_F(SwitchTest, ARequestKeepsItsDatabaseAndTheNextFollowsZoneSimDb) {
    create(1, ZP_OBJECT_ZONE, "first_db_zone");
    const std::string second = dir_ + "/second.db";

    mutex_lock();
    EXPECT_EQ(1u, zones(1, false).size());
    setenv("ZONE_SIM_DB", second.c_str(), 1);
    EXPECT_EQ(1u, zones(1, false).size());  // one switch for the whole request
    mutex_unlock();

    EXPECT_TRUE(zones(1, false).empty());  // a new, empty switch
    create(1, ZP_OBJECT_ZONE, "second_db_zone");
    EXPECT_EQ(Strings({"second_db_zone"}), zones(1, false));
    setenv("ZONE_SIM_DB", db_.c_str(), 1);
    EXPECT_EQ(Strings({"first_db_zone"}), zones(1, false));
}

}  // namespace
}  // namespace simtest
