// The simulated switch's queries and commands, called as the provider calls
// them (each measured call, or walk of calls, in a request of its own: the
// platform mutex held around it), on a tenth of the scale targets and on the
// full targets.
//
// Per-VSAN queries and single-object lookups look at the last VSAN of the
// fabric; whole-fabric walks visit every VSAN. Commands change the editable
// database of the last VSAN and are undone outside the measured time, so
// every benchmark sees the fabric as generated.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "bench_support.h"
#include "platform/zoning_platform.h"
#include "platform_calls.h"

namespace zonebench {
namespace {

int countMembers(int (*query)(int, int, int *, ZoneMemberRecord **), int vsan) {
    int count = 0;
    ZoneMemberRecord *list = nullptr;
    if (query(queue(), vsan, &count, &list) != 0) return -1;
    return listLength(list);
}

template <typename Record>
int countAll(AllQuery<Record> query, int vsan) {
    int count = 0;
    Record *records = nullptr;
    if (query(queue(), vsan, &count, &records) != 0) return -1;
    std::free(records);
    return count;
}

// The objects each size's benchmarks work on, found once per size.
struct Samples {
    int vsan = 0;
    std::string zone_set_id, zone_id, alias_id, member_id;
    uint64_t device_pwwn = 0;
    // Made once for the commands: a zone in no zone set, an alias in no zone.
    int spare_zone = 0;
    int spare_alias = 0;
};

const Samples &samples(int size) {
    static Samples found[kSizeCount];
    Samples &s = found[size];
    if (s.vsan != 0) return s;
    s.vsan = lastVsan(size);
    s.zone_set_id = firstId<ZoneSetRecord>(zs_cim_get_all_non_active_zone_sets, s.vsan);
    s.zone_id = firstId<ZoneRecord>(zs_cim_get_all_non_active_zones, s.vsan);
    s.alias_id = firstId<ZoneAliasRecord>(zs_cim_get_all_non_active_zone_aliases, s.vsan);
    s.member_id = memberInZones(s.vsan, 2);
    const DeviceAliasEntry last = lastDeviceAlias();
    std::memcpy(&s.device_pwwn, last.pwwn, sizeof s.device_pwwn);
    s.spare_zone = createObject(s.vsan, ZP_OBJECT_ZONE, "bench_spare_zone");
    s.spare_alias = createObject(s.vsan, ZP_OBJECT_ZONE_ALIAS, "bench_spare_alias");
    return s;
}

// ---- Registration -------------------------------------------------------------

// One request of the provider: the platform mutex held around the calls, as
// the provider holds it around every operation.
class Request {
  public:
    Request() { mutex_lock(); }
    ~Request() { mutex_unlock(); }
    Request(const Request &) = delete;
    Request &operator=(const Request &) = delete;
};

void query(int size, const std::string &operation, Scaling scaling,
           std::function<double(const Samples &)> op) {
    add(Entry{operation, size, scaling}, [size, op](benchmark::State &state) {
        const Samples &s = samples(size);
        timeLoop(state, [&] {
            Request request;
            return op(s);
        });
    });
}

// A command timed alone: prepare and cleanup run outside the measured time.
struct Step {
    std::function<void()> prepare;
    std::function<bool()> op;
    std::function<void()> cleanup;
};

void command(int size, const std::string &operation,
             const std::function<Step(const Samples &)> &make) {
    add(Entry{operation, size, Scaling::Flat}, [size, make](benchmark::State &state) {
        const Step step = make(samples(size));
        timeStep(
            state, step.prepare,
            [&] {
                Request request;
                return step.op();
            },
            step.cleanup);
    })->UseManualTime();
}

double atLeastOne(int n) {
    return n > 0 ? n : 1;
}

void registerQueries(int size) {
    query(size, "VSAN walk, entry by entry", Scaling::Linear, [](const Samples &) {
        VsanEntry entry{};
        int n = 0;
        while (vsan_cim_get_vsanEntry(queue(), ZP_VSAN_NEXT, &entry) == 0) ++n;
        return n;
    });
    query(size, "VSAN table, whole", Scaling::Linear, [](const Samples &) {
        int count = 0;
        VsanEntry *entries = nullptr;
        vsan_cim_get_all_vsanEntry(queue(), &count, &entries);
        std::free(entries);
        return count;
    });
    query(size, "VSAN entry by number", Scaling::Flat, [](const Samples &s) {
        VsanEntry entry{};
        entry.vsan = s.vsan;
        return vsan_cim_get_vsanEntry(queue(), ZP_VSAN_GIVEN, &entry) == 0 ? 1.0 : -1.0;
    });
    query(size, "VSAN check", Scaling::Flat,
          [](const Samples &s) { return vsan_cim_check_vsan_index(s.vsan) == 0 ? 1.0 : -1.0; });
    query(size, "domain entry", Scaling::Flat, [](const Samples &s) {
        DomainEntry entry{};
        return dm_cim_get_dmEntry(queue(), s.vsan, 1, &entry) == 0 ? 1.0 : -1.0;
    });
    query(size, "switch name", Scaling::Flat,
          [](const Samples &) { return getCSName() != nullptr ? 1 : -1; });

    query(size, "all zone sets of a VSAN, active", Scaling::Flat, [](const Samples &s) {
        return countAll<ZoneSetRecord>(zs_cim_get_all_active_zone_sets, s.vsan);
    });
    query(size, "all zone sets of a VSAN, editable", Scaling::Flat, [](const Samples &s) {
        return countAll<ZoneSetRecord>(zs_cim_get_all_non_active_zone_sets, s.vsan);
    });
    query(size, "all zones of a VSAN, active", Scaling::Flat, [](const Samples &s) {
        return countAll<ZoneRecord>(zs_cim_get_all_active_zones, s.vsan);
    });
    query(size, "all zones of a VSAN, editable", Scaling::Flat, [](const Samples &s) {
        return countAll<ZoneRecord>(zs_cim_get_all_non_active_zones, s.vsan);
    });
    query(size, "all aliases of a VSAN, active", Scaling::Flat, [](const Samples &s) {
        return countAll<ZoneAliasRecord>(zs_cim_get_all_active_zone_aliases, s.vsan);
    });
    query(size, "all aliases of a VSAN, editable", Scaling::Flat, [](const Samples &s) {
        return countAll<ZoneAliasRecord>(zs_cim_get_all_non_active_zone_aliases, s.vsan);
    });
    query(size, "all members of a VSAN, active", Scaling::Flat, [](const Samples &s) {
        return countMembers(zs_cim_get_all_active_zone_members, s.vsan);
    });
    query(size, "all members of a VSAN, editable", Scaling::Flat, [](const Samples &s) {
        return countMembers(zs_cim_get_all_non_active_zone_members, s.vsan);
    });
    query(size, "all zones of every VSAN, both databases", Scaling::Linear, [](const Samples &) {
        VsanEntry entry{};
        int n = 0;
        while (vsan_cim_get_vsanEntry(queue(), ZP_VSAN_NEXT, &entry) == 0) {
            n += countAll<ZoneRecord>(zs_cim_get_all_active_zones, entry.vsan);
            n += countAll<ZoneRecord>(zs_cim_get_all_non_active_zones, entry.vsan);
        }
        return n;
    });
    query(size, "all members of every VSAN, both databases", Scaling::Linear, [](const Samples &) {
        VsanEntry entry{};
        int n = 0;
        while (vsan_cim_get_vsanEntry(queue(), ZP_VSAN_NEXT, &entry) == 0) {
            n += countMembers(zs_cim_get_all_active_zone_members, entry.vsan);
            n += countMembers(zs_cim_get_all_non_active_zone_members, entry.vsan);
        }
        return n;
    });

    query(size, "zone set by InstanceID", Scaling::Flat, [](const Samples &s) {
        ZoneSetRecord *record = nullptr;
        const int rc = zs_cim_get_zone_set_by_instance_id(queue(), s.zone_set_id.c_str(), &record);
        std::free(record);
        return rc == 0 ? 1.0 : -1.0;
    });
    query(size, "zone by InstanceID", Scaling::Flat, [](const Samples &s) {
        ZoneRecord *record = nullptr;
        const int rc = zs_cim_get_zone_by_instance_id(queue(), s.zone_id.c_str(), &record);
        std::free(record);
        return rc == 0 ? 1.0 : -1.0;
    });
    query(size, "alias by InstanceID", Scaling::Flat, [](const Samples &s) {
        ZoneAliasRecord *record = nullptr;
        const int rc = zs_cim_get_zone_alias_by_instance_id(queue(), s.alias_id.c_str(), &record);
        std::free(record);
        return rc == 0 ? 1.0 : -1.0;
    });
    query(size, "member by InstanceID", Scaling::Flat, [](const Samples &s) {
        ZoneMemberRecord *record = nullptr;
        const int rc = zs_cim_get_zone_member_by_instance_id(queue(), s.member_id.c_str(), &record);
        std::free(record);
        return rc == 0 ? 1.0 : -1.0;
    });
    query(size, "zone set by number", Scaling::Flat, [](const Samples &s) {
        int found = 0;
        ZoneSetRecord *record = nullptr;
        zs_cim_get_zone_set(queue(), numberOf(s.zone_set_id), s.vsan, 0, &found, &record);
        std::free(record);
        return found != 0 ? 1.0 : -1.0;
    });
    query(size, "zone by number", Scaling::Flat, [](const Samples &s) {
        int found = 0;
        ZoneRecord *record = nullptr;
        zs_cim_get_zone(queue(), numberOf(s.zone_id), s.vsan, 0, &found, &record);
        std::free(record);
        return found != 0 ? 1.0 : -1.0;
    });
    query(size, "member InstanceID split", Scaling::Flat, [](const Samples &s) {
        EncodedMember member = encode(s.member_id);
        return member.length > 0 ? 1.0 : -1.0;
    });

    query(size, "zones of a zone set", Scaling::Flat, [](const Samples &s) {
        ZoneRecord *list = nullptr;
        zs_cim_get_zone_set_zones_by_instance_id(queue(), s.zone_set_id.c_str(), &list);
        return atLeastOne(listLength(list));
    });
    query(size, "zone sets of a zone", Scaling::Flat, [](const Samples &s) {
        ZoneSetRecord *list = nullptr;
        zs_cim_get_zone_zone_set_parents_by_instance_id(queue(), s.zone_id.c_str(), &list);
        return atLeastOne(listLength(list));
    });
    query(size, "aliases of a zone", Scaling::Flat, [](const Samples &s) {
        ZoneAliasRecord *list = nullptr;
        zs_cim_get_zone_zone_aliases_by_instance_id(queue(), s.zone_id.c_str(), &list);
        return atLeastOne(listLength(list));
    });
    query(size, "members of a zone", Scaling::Flat, [](const Samples &s) {
        ZoneMemberRecord *list = nullptr;
        zs_cim_get_zone_zone_members_by_instance_id(queue(), s.zone_id.c_str(), &list);
        return atLeastOne(listLength(list));
    });
    query(size, "zones of an alias", Scaling::Flat, [](const Samples &s) {
        ZoneRecord *list = nullptr;
        zs_cim_get_zone_alias_zone_parents_by_instance_id(queue(), s.alias_id.c_str(), &list);
        return atLeastOne(listLength(list));
    });
    query(size, "members of an alias", Scaling::Flat, [](const Samples &s) {
        ZoneMemberRecord *list = nullptr;
        zs_cim_get_zone_alias_zone_members_by_instance_id(queue(), s.alias_id.c_str(), &list);
        return atLeastOne(listLength(list));
    });
    query(size, "zones of a member", Scaling::Flat, [](const Samples &s) {
        cim_g_slist *list = nullptr;
        zs_cim_get_zone_member_zone_parents_by_instance_id(queue(), s.member_id.c_str(), &list);
        const int n = list != nullptr ? cim_g_slist_length(list) : 0;
        cim_g_slist_destroy(list);
        return atLeastOne(n);
    });
    query(size, "aliases of a member", Scaling::Flat, [](const Samples &s) {
        cim_g_slist *list = nullptr;
        zs_cim_get_zone_member_zone_alias_parents_by_instance_id(queue(), s.member_id.c_str(),
                                                                 &list);
        const int n = list != nullptr ? cim_g_slist_length(list) : 0;
        cim_g_slist_destroy(list);
        return atLeastOne(n);
    });

    query(size, "device-alias walk", Scaling::Linear, [](const Samples &) {
        void *first = nullptr;
        ddas_iterator *iterator = nullptr;
        if (ddas_api_get_all_device_alias_entries(queue(), &first, &iterator) != 0) return -1;
        DeviceAliasEntry entry{};
        int n = 0;
        while (ddas_api_iter_get_next_device_alias_entry(iterator, &entry) == 0) ++n;
        return n;
    });
    query(size, "device alias by pWWN", Scaling::Flat, [](const Samples &s) {
        char name[ZP_DEVICE_ALIAS_NAME_LEN] = {};
        return ddas_get_device_alias_given_pwwn(queue(), s.device_pwwn, name) == 0 ? 1.0 : -1.0;
    });
}

// ---- Commands ---------------------------------------------------------------------

struct Created {
    int number = 0;
};

void registerCreateRemove(int size, const char *noun, int type) {
    command(size, std::string("create ") + noun, [type](const Samples &s) {
        auto made = std::make_shared<Created>();
        return Step{nullptr,
                    [=] {
                        made->number = createObject(s.vsan, type, uniqueName("bench_new_"));
                        return made->number != 0;
                    },
                    [=] { removeObject(s.vsan, type, made->number); }};
    });
    command(size, std::string("remove ") + noun, [type](const Samples &s) {
        auto made = std::make_shared<Created>();
        return Step{[=] { made->number = createObject(s.vsan, type, uniqueName("bench_old_")); },
                    [=] { return removeObject(s.vsan, type, made->number); }, nullptr};
    });
}

void registerCommands(int size) {
    registerCreateRemove(size, "zone", ZP_OBJECT_ZONE);
    registerCreateRemove(size, "zone set", ZP_OBJECT_ZONE_SET);
    registerCreateRemove(size, "alias", ZP_OBJECT_ZONE_ALIAS);

    command(size, "add zone to zone set", [](const Samples &s) {
        const int set = numberOf(s.zone_set_id);
        return Step{nullptr, [=] { return changeLink(s.vsan, true, set, s.spare_zone, ZP_OP_ADD); },
                    [=] { changeLink(s.vsan, true, set, s.spare_zone, ZP_OP_REMOVE); }};
    });
    command(size, "remove zone from zone set", [](const Samples &s) {
        const int set = numberOf(s.zone_set_id);
        return Step{[=] { changeLink(s.vsan, true, set, s.spare_zone, ZP_OP_ADD); },
                    [=] { return changeLink(s.vsan, true, set, s.spare_zone, ZP_OP_REMOVE); },
                    nullptr};
    });
    command(size, "add alias to zone", [](const Samples &s) {
        const int zone = numberOf(s.zone_id);
        return Step{nullptr,
                    [=] { return changeLink(s.vsan, false, zone, s.spare_alias, ZP_OP_ADD); },
                    [=] { changeLink(s.vsan, false, zone, s.spare_alias, ZP_OP_REMOVE); }};
    });
    command(size, "remove alias from zone", [](const Samples &s) {
        const int zone = numberOf(s.zone_id);
        return Step{[=] { changeLink(s.vsan, false, zone, s.spare_alias, ZP_OP_ADD); },
                    [=] { return changeLink(s.vsan, false, zone, s.spare_alias, ZP_OP_REMOVE); },
                    nullptr};
    });
    command(size, "add new member to zone", [](const Samples &s) {
        const std::string member = freshMemberId(s.vsan, 1);
        return Step{nullptr, [=] { return changeMember(s.vsan, s.spare_zone, member, ZP_OP_ADD); },
                    [=] { changeMember(s.vsan, s.spare_zone, member, ZP_OP_REMOVE); }};
    });
    command(size, "remove member from zone", [](const Samples &s) {
        const std::string member = freshMemberId(s.vsan, 2);
        return Step{[=] { changeMember(s.vsan, s.spare_zone, member, ZP_OP_ADD); },
                    [=] { return changeMember(s.vsan, s.spare_zone, member, ZP_OP_REMOVE); },
                    nullptr};
    });
    command(size, "remove member from all parents", [](const Samples &s) {
        const std::string member = freshMemberId(s.vsan, 3);
        return Step{[=] { changeMember(s.vsan, s.spare_zone, member, ZP_OP_ADD); },
                    [=] {
                        return zs_cim_remove_zone_member_from_all_parents(queue(),
                                                                          member.c_str()) == 0;
                    },
                    nullptr};
    });
    command(size, "activate zone set", [](const Samples &s) {
        const int set = numberOf(s.zone_set_id);
        return Step{nullptr,
                    [=] {
                        int activation = 1;
                        int error = 0;
                        return zs_cim_activate_zone_set(queue(), s.vsan, 0, set, &activation,
                                                        &error) == 0;
                    },
                    nullptr};
    });
    command(size, "create device alias (with commit)", [](const Samples &) {
        auto name = std::make_shared<std::string>();
        return Step{[=] { *name = uniqueName("bench_da_"); },
                    [=] { return createDeviceAlias(*name, nextSerial()); },
                    [=] { removeDeviceAlias(*name); }};
    });
    command(size, "remove device alias (with commit)", [](const Samples &) {
        auto name = std::make_shared<std::string>();
        return Step{[=] {
                        *name = uniqueName("bench_da_");
                        createDeviceAlias(*name, nextSerial());
                    },
                    [=] { return removeDeviceAlias(*name); }, nullptr};
    });
}

}  // namespace
}  // namespace zonebench

int main(int argc, char **argv) {
    return zonebench::runBenchmarks(argc, argv, [] {
        for (int size = 0; size < zonebench::kSizeCount; ++size) {
            zonebench::registerQueries(size);
            zonebench::registerCommands(size);
        }
    });
}
