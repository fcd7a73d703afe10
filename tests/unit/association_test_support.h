// Support for the tests of the associations: a request against a platform
// that answers from the test's data and logs every query, with every record,
// array and node it hands back its own malloc'ed block (so the sanitizers
// check that the provider frees each exactly once, on failed queries too),
// and CMPI objects labelled by their class name so that a test can read back
// what was built, from what, and in which order it reached the result.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "host/cmpihost.h"
#include "platform_mock.h"
#include "provider/zone_provider.h"

// The generic list of the platform, as the tests make it: the addresses of
// the records it holds, which it owns.
struct cim_g_slist {
    std::vector<void *> entries;
};

namespace assoc_test {

using ::testing::_;
using ::testing::Return;

constexpr int kQueue = 42;
constexpr const char *kNs = "root/zoning";
constexpr int kVsan = 7;  // the VSAN of every InstanceID the platform splits
inline const char *const kProps[] = {"InstanceID", nullptr};

inline const char **props() {
    return const_cast<const char **>(kProps);
}
inline const char *shown(const char *s) {
    return s != nullptr ? s : "(null)";
}

using Labels = std::vector<std::string>;

// ---- Records ----------------------------------------------------------------

inline std::string id_of(const std::string &name) {
    return "id^" + name;
}
inline std::string name_of(const std::string &id) {
    return id.rfind("id^", 0) == 0 ? id.substr(3) : id;
}

// A record named name, whose InstanceID is id_of(name); a member's value
// text is name.
template <typename Record>
void fill_record(Record &record, const std::string &name) {
    std::snprintf(record.instance_id, sizeof record.instance_id, "%s", id_of(name).c_str());
    if constexpr (std::is_same_v<Record, ZoneMemberRecord>) {
        record.cim_member_type = 1;
        std::snprintf(record.member_value, sizeof record.member_value, "%s", name.c_str());
    } else {
        std::snprintf(record.name, sizeof record.name, "%s", name.c_str());
    }
}

template <typename Record>
Record *new_record(const std::string &name) {
    auto *record = static_cast<Record *>(std::calloc(1, sizeof(Record)));
    fill_record(*record, name);
    return record;
}

// An array of records in one heap block, as the all-objects queries answer.
template <typename Record>
Record *array_of(const Labels &names) {
    auto *records = static_cast<Record *>(std::calloc(names.size() + 1, sizeof(Record)));
    for (std::size_t i = 0; i < names.size(); ++i) fill_record(records[i], names[i]);
    return records;
}

// A linked list of records, each node its own heap block, in the given order.
template <typename Record>
Record *list_of(const Labels &names) {
    Record *head = nullptr;
    for (auto it = names.rbegin(); it != names.rend(); ++it) {
        Record *node = new_record<Record>(*it);
        node->next = head;
        head = node;
    }
    return head;
}

// ---- Labelled CMPI objects --------------------------------------------------------

inline CMPIObjectPath *labelled_path(cmpihost::Request &request, const std::string &label) {
    return request.newObjectPath(kNs, label);
}

inline CMPIInstance *labelled_instance(cmpihost::Request &request, const std::string &label) {
    return CMNewInstance(cmpihost::broker(), labelled_path(request, label), nullptr);
}

inline std::string class_of(const CMPIObjectPath *path) {
    return path == nullptr ? "null" : cmpihost::text(CMGetClassName(path, nullptr));
}

// The label of a built object: the short name of the class it was built
// for (a class without one as it was given), then what it was built from,
// "/"-separated: records by name, paths by label, VSAN entries as V<number>
// and texts as they are; "+p" when it got the test's property list.
struct Label {
    explicit Label(const std::string &cls) {
        static const std::map<std::string, std::string> kShort = {
            {"VORNA_ZoneSet", "ZoneSet"},
            {"VORNA_Zone", "Zone"},
            {"VORNA_ZoneAlias", "Alias"},
            {"VORNA_ZoneMemberSettingData", "Member"},
            {"VORNA_Vsan", "Vsan"},
            {"VORNA_ElementSettingData", "ESD"},
            {"VORNA_ZoneMemberOfCollection", "MOC"},
            {"VORNA_ZoneHostedCollection", "Hosted"},
            {"VORNA_HostedService", "Service"}};
        const auto it = kShort.find(cls);
        text = it != kShort.end() ? it->second : cls;
    }
    void add(const std::string &part) { text += (parts++ == 0 ? " " : "/") + part; }
    template <typename Record>
    void operator()(const Record *r) {
        if constexpr (std::is_same_v<Record, ZoneMemberRecord>)
            add(r->member_value);
        else
            add(r->name);
    }
    void operator()(const CMPIObjectPath *path) { add(class_of(path)); }
    void operator()(const VsanEntry *vsan) { add("V" + std::to_string(vsan->vsan)); }
    void operator()(const DeviceAliasEntry *alias) { add(alias->name); }
    void operator()(int number) { add(std::to_string(number)); }
    void operator()(const DomainEntry *domain) { EXPECT_NE(domain, nullptr); }
    void operator()(const char *word) { add(word); }
    void operator()(const char **props) { marks = props == kProps ? "+p" : props ? "+?" : ""; }
    void operator()(const CMPIBroker *broker) { EXPECT_EQ(broker, cmpihost::broker()); }

    std::string text;
    std::string marks;  // of the property list, written last
    int parts = 0;
};

// Prefixes every label with kind ("path" or "inst").
inline Labels as(const std::string &kind, const Labels &labels) {
    Labels out;
    for (const std::string &l : labels) out.push_back(kind + ":" + l);
    return out;
}

// One step of a traversal: the query it logs (none when empty) and what it
// delivers, as names and as objects.
struct Step {
    char letter;
    std::string query;
    Labels names;
    Labels objects;
};

// A step whose objects are labelled as its names, with "+p" when they get
// the request's property list.
inline Step step(char letter, std::string query, const Labels &built = {}, bool props = true) {
    Step s{letter, std::move(query), as("path", built), {}};
    for (const std::string &b : built) s.objects.push_back("inst:" + b + (props ? "+p" : ""));
    return s;
}

inline bool has(const std::string &taken, char letter) {
    return taken.find(letter) != std::string::npos;
}

// Answers written "<query>: <name> <name> ..." ("-" names a null entry).
inline std::map<std::string, Labels> answers_of(const Labels &lines) {
    std::map<std::string, Labels> out;
    for (const std::string &line : lines) {
        const std::size_t colon = line.find(':');
        Labels &names = out[line.substr(0, colon)];
        std::istringstream words(line.substr(colon + 1));
        for (std::string word; words >> word;) names.push_back(word == "-" ? "" : word);
    }
    return out;
}

// The switch the associations are tested on: zone set ZS holds zones Z1
// and Z2; zone Z is in zone sets ZS1 and ZS2 and holds aliases A1, A2 and
// members M1, M2; alias A is held by zones Z1, Z2 and holds members M1, M2;
// member M is held by zones Z1, Z2 (a null entry between them) and alias
// A1. VSANs kVsan and 10 have their domain entries.
inline const std::map<std::string, Labels> kSwitch =
    answers_of({"get set ZS:", "zones of set ZS: Z1 Z2", "get zone Z:", "sets of zone Z: ZS1 ZS2",
                "aliases of zone Z: A1 A2", "members of zone Z: M1 M2",
                "get alias A:", "zones of alias A: Z1 Z2", "members of alias A: M1 M2",
                "get member M:", "zones of member M: Z1 - Z2", "aliases of member M: A1",
                "vsan 7:", "domain 7:", "vsan 10:", "domain 10:"});

// ---- The request and its platform -------------------------------------------------

// One request, with the provider's globals pointing at the test's queue and
// the host's broker, against a platform that answers from answers (by
// default, kSwitch).
//
// Every query is logged, in order, as "<what> <name>" (a name is an
// InstanceID without its "id^"; VSANs by number), and succeeds when that
// line is a key of answers, handing back the records named there. A failing
// list or all-objects query still hands back a record named "lost", which
// must be freed all the same (the all-members queries hand back none). The
// VSAN walk ("next vsan <n>") answers the first name as the next VSAN
// number; every InstanceID splits into VSAN kVsan; the device aliases walked
// are those of "device aliases". Every builder makes an object labelled as
// Label says; the mutex is logged as "lock" and "unlock", the switch's name
// as "switch name". A test may still expect a call itself: its expectation,
// being newer, is the one that answers.
struct Call {
    Call();

    // Runs fn with stdout captured into out; returns what fn returned.
    template <typename Fn>
    auto capture(Fn &&fn) {
        testing::internal::CaptureStdout();
        auto rc = fn();
        out = testing::internal::GetCapturedStdout();
        return rc;
    }
    bool printed(const std::string &text) const { return out.find(text) != std::string::npos; }
    // What reached the result, in order: "path:<label>" or "inst:<label>".
    Labels delivered() const {
        Labels out;
        for (const cmpihost::Delivery &d : req.deliveries()) {
            if (d.kind == cmpihost::Delivery::Kind::Instance)
                out.push_back("inst:" + class_of(CMGetObjectPath(d.instance, nullptr)));
            else
                out.push_back(d.path != nullptr ? "path:" + class_of(d.path) : "data");
        }
        return out;
    }

    cmpihost::Request req;
    ::testing::StrictMock<PlatformMock> m;
    std::map<std::string, Labels> answers = kSwitch;
    Labels log;
    std::string out;
    int queue = kQueue;  // the queue every query must be given
    int done_at_unlock = -1;
    int lists_made = 0;
    int lists_destroyed = 0;
    bool locked = false;
    int built_unlocked = 0;  // objects built while the mutex was not held
    Labels aliases_left;     // of the device alias walk

  private:
    template <typename Expectation, typename Action>
    static void any(Expectation &expectation, Action action) {
        expectation.Times(::testing::AnyNumber()).WillRepeatedly(action);
    }

    const Labels *ask(const std::string &line) {
        log.push_back(line);
        const auto it = answers.find(line);
        return it != answers.end() ? &it->second : nullptr;
    }

    // A lookup by InstanceID finds the record of that name.
    template <typename Record>
    auto lookup(std::string what) {
        return [this, what](int q, const char *id, Record **record) {
            EXPECT_EQ(q, queue);
            if (!ask(what + " " + name_of(id))) return 1;
            *record = new_record<Record>(name_of(id));
            return 0;
        };
    }

    template <typename Record>
    auto list(std::string what) {
        return [this, what](int q, const char *id, Record **head) {
            EXPECT_EQ(q, queue);
            EXPECT_EQ(*head, nullptr) << "the list head is cleared before the call";
            const Labels *found = ask(what + " " + name_of(id));
            *head = list_of<Record>(found ? *found : Labels{"lost"});
            return found ? 0 : 1;
        };
    }

    // Appends the records to the generic list; an empty name appends null.
    template <typename Record>
    auto parents(std::string what) {
        return [this, what](int q, const char *id, cim_g_slist **list) {
            EXPECT_EQ(q, queue);
            EXPECT_NE(*list, nullptr);
            const Labels *found = ask(what + " " + name_of(id));
            for (const std::string &name : found ? *found : Labels{"lost"})
                (*list)->entries.push_back(name.empty() ? nullptr : new_record<Record>(name));
            return found ? 0 : 1;
        };
    }

    template <typename Record>
    auto all(std::string what) {
        return [this, what](int q, int vsan, int *count, Record **records) {
            EXPECT_EQ(q, queue);
            EXPECT_EQ(*records, nullptr);
            const Labels *found = ask(what + " " + std::to_string(vsan));
            const Labels &names = found ? *found : Labels{"lost"};
            *count = static_cast<int>(names.size());
            *records = array_of<Record>(names);
            return found ? 0 : 1;
        };
    }

    template <typename... Expectations>
    void paths(Expectations &...builders) {
        (any(builders, build<CMPIObjectPath>()), ...);
    }
    template <typename... Expectations>
    void instances(Expectations &...builders) {
        (any(builders, build<CMPIInstance>()), ...);
    }

    template <typename Object>
    auto build() {
        return [this](const char *cls, const char *ns, auto... args) -> Object * {
            EXPECT_STREQ(ns, kNs);
            Label label(cls);
            (label(args), ...);
            built_unlocked += locked ? 0 : 1;
            if constexpr (std::is_same_v<Object, CMPIInstance>)
                return labelled_instance(req, label.text + label.marks);
            else
                return labelled_path(req, label.text + label.marks);
        };
    }
};

inline Call::Call() {
    mts_q = kQueue;
    _broker = cmpihost::broker();
    any(EXPECT_CALL(m, mutex_lock), [this] {
        log.push_back("lock");
        locked = true;
    });
    any(EXPECT_CALL(m, mutex_unlock), [this] {
        log.push_back("unlock");
        locked = false;
        done_at_unlock = req.doneCount();
    });
    any(EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id),
        [this](const char *id, int *vsan, int *number, int *active) {
            log.push_back("split " + name_of(id));
            *vsan = kVsan;
            *number = 3;
            *active = 0;
            return 0;
        });
    any(EXPECT_CALL(m, zs_cim_get_zone_set_by_instance_id), lookup<ZoneSetRecord>("get set"));
    any(EXPECT_CALL(m, zs_cim_get_zone_by_instance_id), lookup<ZoneRecord>("get zone"));
    any(EXPECT_CALL(m, zs_cim_get_zone_alias_by_instance_id), lookup<ZoneAliasRecord>("get alias"));
    any(EXPECT_CALL(m, zs_cim_get_zone_member_by_instance_id),
        lookup<ZoneMemberRecord>("get member"));
    any(EXPECT_CALL(m, zs_cim_get_zone_set_zones_by_instance_id), list<ZoneRecord>("zones of set"));
    any(EXPECT_CALL(m, zs_cim_get_zone_zone_set_parents_by_instance_id),
        list<ZoneSetRecord>("sets of zone"));
    any(EXPECT_CALL(m, zs_cim_get_zone_zone_aliases_by_instance_id),
        list<ZoneAliasRecord>("aliases of zone"));
    any(EXPECT_CALL(m, zs_cim_get_zone_zone_members_by_instance_id),
        list<ZoneMemberRecord>("members of zone"));
    any(EXPECT_CALL(m, zs_cim_get_zone_alias_zone_parents_by_instance_id),
        list<ZoneRecord>("zones of alias"));
    any(EXPECT_CALL(m, zs_cim_get_zone_alias_zone_members_by_instance_id),
        list<ZoneMemberRecord>("members of alias"));
    any(EXPECT_CALL(m, zs_cim_get_zone_member_zone_parents_by_instance_id),
        parents<ZoneRecord>("zones of member"));
    any(EXPECT_CALL(m, zs_cim_get_zone_member_zone_alias_parents_by_instance_id),
        parents<ZoneAliasRecord>("aliases of member"));
    any(EXPECT_CALL(m, zs_cim_get_all_active_zone_sets), all<ZoneSetRecord>("active sets"));
    any(EXPECT_CALL(m, zs_cim_get_all_non_active_zone_sets), all<ZoneSetRecord>("editable sets"));
    any(EXPECT_CALL(m, zs_cim_get_all_active_zones), all<ZoneRecord>("active zones"));
    any(EXPECT_CALL(m, zs_cim_get_all_non_active_zones), all<ZoneRecord>("editable zones"));
    any(EXPECT_CALL(m, zs_cim_get_all_active_zone_aliases), all<ZoneAliasRecord>("active aliases"));
    any(EXPECT_CALL(m, zs_cim_get_all_non_active_zone_aliases),
        all<ZoneAliasRecord>("editable aliases"));
    any(EXPECT_CALL(m, vsan_cim_get_vsanEntry), [this](int q, int mode, VsanEntry *entry) {
        EXPECT_EQ(q, queue);
        const auto found =
            ask((mode == ZP_VSAN_GIVEN ? "vsan " : "next vsan ") + std::to_string(entry->vsan));
        if (found && mode == ZP_VSAN_NEXT) entry->vsan = std::stoi(found->at(0));
        return found ? 0 : 1;
    });
    any(EXPECT_CALL(m, dm_cim_get_dmEntry), [this](int q, int vsan, int mode, DomainEntry *) {
        EXPECT_EQ(q, queue);
        EXPECT_EQ(mode, 1);
        return ask("domain " + std::to_string(vsan)) ? 0 : 1;
    });
    any(EXPECT_CALL(m, vsan_cim_get_all_vsanEntry), [this](int q, int *count, VsanEntry **table) {
        EXPECT_EQ(q, queue);
        EXPECT_EQ(*table, nullptr);
        const auto found = ask("vsan table");
        const Labels vsans = found ? *found : Labels{"1"};
        *count = static_cast<int>(vsans.size());
        *table = static_cast<VsanEntry *>(std::calloc(vsans.size() + 1, sizeof(VsanEntry)));
        for (std::size_t i = 0; i < vsans.size(); ++i) (*table)[i].vsan = std::stoi(vsans[i]);
        return found ? 0 : 1;
    });
    any(EXPECT_CALL(m, cim_g_slist_alloc), [this] {
        ++lists_made;
        return new cim_g_slist;
    });
    any(EXPECT_CALL(m, cim_g_slist_length),
        [](cim_g_slist *l) { return static_cast<int>(l->entries.size()); });
    any(EXPECT_CALL(m, cim_g_slist_nth_data), [](cim_g_slist *l, int n) -> void * {
        return n >= 0 && n < static_cast<int>(l->entries.size()) ? l->entries[n] : nullptr;
    });
    any(EXPECT_CALL(m, cim_g_slist_destroy), [this](cim_g_slist *l) {
        ++lists_destroyed;
        for (void *entry : l->entries) std::free(entry);
        delete l;
    });
    // All members of a database come as a list; a failed query hands back none.
    const auto members = [this](std::string what) {
        return [this, what](int q, int vsan, int *count, ZoneMemberRecord **head) {
            EXPECT_EQ(q, queue);
            const Labels *found = ask(what + " " + std::to_string(vsan));
            *count = found ? static_cast<int>(found->size()) : 0;
            *head = found ? list_of<ZoneMemberRecord>(*found) : nullptr;
            return found ? 0 : 1;
        };
    };
    any(EXPECT_CALL(m, zs_cim_get_all_active_zone_members), members("active members"));
    any(EXPECT_CALL(m, zs_cim_get_all_non_active_zone_members), members("editable members"));
    any(EXPECT_CALL(m, vsan_cim_check_vsan_index),
        [this](int vsan) { return ask("vsan " + std::to_string(vsan)) ? 0 : 1; });
    any(EXPECT_CALL(m, getCSName), [this] {
        log.push_back("switch name");
        return "switch";
    });
    // The device aliases: one walk at a time over the names answered.
    any(EXPECT_CALL(m, ddas_api_get_all_device_alias_entries),
        [this](int q, void **, ddas_iterator **walk) {
            EXPECT_EQ(q, queue);
            const Labels *found = ask("device aliases");
            aliases_left = found ? *found : Labels{};
            *walk = reinterpret_cast<ddas_iterator *>(&aliases_left);
            return found ? 0 : 1;
        });
    any(EXPECT_CALL(m, ddas_api_iter_get_num_entries), [this](ddas_iterator *, int *count) {
        *count = static_cast<int>(aliases_left.size());
        return 0;
    });
    any(EXPECT_CALL(m, ddas_api_iter_get_next_device_alias_entry),
        [this](ddas_iterator *, DeviceAliasEntry *entry) {
            if (aliases_left.empty()) return 1;
            std::snprintf(entry->name, sizeof entry->name, "%s", aliases_left.front().c_str());
            aliases_left.erase(aliases_left.begin());
            return 0;
        });
    any(EXPECT_CALL(m, ddas_get_device_alias_given_pwwn), [this](int q, uint64_t, char *name) {
        EXPECT_EQ(q, queue);
        const Labels *found = ask("alias of pwwn");
        std::snprintf(name, ZP_DEVICE_ALIAS_NAME_LEN, "%s", found ? found->at(0).c_str() : "");
        return found ? 0 : 1;
    });
    paths(EXPECT_CALL(m, zone_set_fill_reference), EXPECT_CALL(m, zone_fill_reference),
          EXPECT_CALL(m, zone_alias_fill_reference), EXPECT_CALL(m, zone_member_fill_reference),
          EXPECT_CALL(m, vsan_fill_reference), EXPECT_CALL(m, zmoc_fill_reference_zoneSetZone),
          EXPECT_CALL(m, zmoc_fill_reference), EXPECT_CALL(m, esd_fill_reference_zoneZoneMember),
          EXPECT_CALL(m, esd_fill_reference_zoneAliasZoneMember),
          EXPECT_CALL(m, hosted_collection_fill_reference_zset),
          EXPECT_CALL(m, hosted_collection_fill_reference_zone),
          EXPECT_CALL(m, hosted_service_fill_reference),
          EXPECT_CALL(m, zone_hosted_collection_fill_reference),
          EXPECT_CALL(m, zone_service_fill_reference), EXPECT_CALL(m, device_alias_fill_reference));
    instances(
        EXPECT_CALL(m, zone_set_build_instance), EXPECT_CALL(m, zone_build_instance),
        EXPECT_CALL(m, zone_alias_build_instance), EXPECT_CALL(m, zone_member_build_instance),
        EXPECT_CALL(m, vsan_build_instance), EXPECT_CALL(m, zmoc_build_instance_zoneSetZone),
        EXPECT_CALL(m, zmoc_build_instance), EXPECT_CALL(m, zmoc_build_instance_MemberCollection),
        EXPECT_CALL(m, esd_build_instance_zoneZoneMember),
        EXPECT_CALL(m, esd_build_instance_zoneAliasZoneMember), EXPECT_CALL(m, esd_build_instance),
        EXPECT_CALL(m, hosted_collection_build_instance_zset),
        EXPECT_CALL(m, hosted_collection_build_instance_zone),
        EXPECT_CALL(m, hosted_service_build_instance),
        EXPECT_CALL(m, association_class_build_instance_path),
        EXPECT_CALL(m, zone_service_build_instance), EXPECT_CALL(m, device_alias_build_instance));
}

// Expects the log and the deliveries of the steps taken, in step order: a
// step's letter in taken means queried and delivered, its lower case
// queried only.
inline void expect_steps(const Call &call, const std::vector<Step> &steps, const std::string &taken,
                         bool objects) {
    Labels log, built;
    for (const Step &s : steps) {
        const bool delivered = has(taken, s.letter);
        if (!delivered && !has(taken, static_cast<char>(std::tolower(s.letter)))) continue;
        if (!s.query.empty()) log.push_back(s.query);
        const Labels &labels = objects ? s.objects : s.names;
        if (delivered) built.insert(built.end(), labels.begin(), labels.end());
    }
    EXPECT_EQ(call.log, log);
    EXPECT_EQ(call.delivered(), built);
}

// ---- The traversals of zone sets, zones and aliases -------------------------------

// The four traversals of one kind of source, which share their signatures.
struct Traversals {
    decltype(&get_zone_associator_names) associator_names;
    decltype(&get_zone_associators) associators;
    decltype(&get_zone_reference_names) reference_names;
    decltype(&get_zone_references) references;
};

enum Entry { kAssociatorNames, kAssociators, kReferenceNames, kReferences };
inline const char *const kEntryNames[] = {"associator names", "associators", "reference names",
                                          "references"};

inline bool builds_objects(Entry entry) {
    return entry == kAssociators || entry == kReferences;
}

// Runs one traversal of the source id with its two filters (assocClass and
// resultClass, or resultClass and role) and the test's property list, with
// stdout captured.
inline int traverse(Call &call, const Traversals &t, Entry entry, const char *id, const char *first,
                    const char *second) {
    const CMPIResult *r = call.req.result();
    return call.capture([&] {
        switch (entry) {
            case kAssociatorNames:
                return t.associator_names(id, first, second, "Member", "Collection", r, kNs);
            case kAssociators:
                return t.associators(id, first, second, "Member", "Collection", props(), r, kNs);
            case kReferenceNames:
                return t.reference_names(id, first, second, r, kNs);
            case kReferences:
                break;
        }
        return t.references(id, first, second, props(), r, kNs);
    });
}

}  // namespace assoc_test
