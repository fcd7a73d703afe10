// Support for the tests of the association traversals: platform records and
// lists handed back the way the platform hands them (every record and node
// its own malloc'ed block, so the sanitizers and valgrind check that the
// provider frees each exactly once), a working generic list for the mocked
// cim_g_slist_* calls, and CMPI objects labelled by their class name so that
// a test can read back what reached the result and in which order.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include <cstdio>
#include <cstdlib>
#include <string>
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

constexpr int kQueue = 42;
constexpr const char *kNs = "root/zoning";
constexpr int kVsan = 7;

// Points the provider's globals at the test's queue and the host's broker.
inline void use_test_globals() {
    mts_q = kQueue;
    _broker = cmpihost::broker();
}

// ---- Records ----------------------------------------------------------------

inline std::string id_of(const std::string &name) {
    return "id^" + name;
}

// One record named name, whose InstanceID is id_of(name).
template <typename Record>
Record *new_record(const std::string &name) {
    auto *record = static_cast<Record *>(std::calloc(1, sizeof(Record)));
    std::snprintf(record->instance_id, sizeof record->instance_id, "%s", id_of(name).c_str());
    std::snprintf(record->name, sizeof record->name, "%s", name.c_str());
    return record;
}

// A member whose value text is name.
template <>
inline ZoneMemberRecord *new_record<ZoneMemberRecord>(const std::string &name) {
    auto *member = static_cast<ZoneMemberRecord *>(std::calloc(1, sizeof(ZoneMemberRecord)));
    std::snprintf(member->instance_id, sizeof member->instance_id, "%d^1^%s^0", kVsan,
                  name.c_str());
    member->cim_member_type = 1;
    std::snprintf(member->member_value, sizeof member->member_value, "%s", name.c_str());
    return member;
}

// What a record is called in the labels of the objects built from it.
inline std::string label_name(const ZoneSetRecord *r) {
    return r->name;
}
inline std::string label_name(const ZoneRecord *r) {
    return r->name;
}
inline std::string label_name(const ZoneAliasRecord *r) {
    return r->name;
}
inline std::string label_name(const ZoneMemberRecord *r) {
    return r->member_value;
}

// A linked list of records, each node its own heap block, in the given order.
template <typename Record>
Record *list_of(const std::vector<std::string> &names) {
    Record *head = nullptr;
    for (auto it = names.rbegin(); it != names.rend(); ++it) {
        Record *node = new_record<Record>(*it);
        node->next = head;
        head = node;
    }
    return head;
}

// A list query (queue, InstanceID, address of the list) answering rc and,
// when rc is 0, the named records. The provider must hand a cleared pointer.
template <typename Record>
auto hand_back_list(std::vector<std::string> names, int rc = 0) {
    return [names, rc](int queue, const char *, Record **list) {
        EXPECT_EQ(queue, kQueue);
        EXPECT_EQ(*list, nullptr);
        if (rc == 0) *list = list_of<Record>(names);
        return rc;
    };
}

// A by-InstanceID lookup that finds the record named name.
template <typename Record>
auto hand_back_record(std::string name) {
    return [name](int queue, const char *, Record **record) {
        EXPECT_EQ(queue, kQueue);
        *record = new_record<Record>(name);
        return 0;
    };
}

// zs_cim_get_fields_from_generic_instance_id answering VSAN kVsan.
inline auto split_into_vsan(int vsan = kVsan) {
    return [vsan](const char *, int *v, int *number, int *active) {
        *v = vsan;
        *number = 3;
        *active = 0;
        return 0;
    };
}

// ---- Generic lists -------------------------------------------------------------

// Makes the mocked generic list work and counts what the provider does with it.
class GenericLists {
  public:
    void install(PlatformMock &mock) {
        using ::testing::_;
        using ::testing::AnyNumber;
        EXPECT_CALL(mock, cim_g_slist_alloc()).Times(AnyNumber()).WillRepeatedly([this] {
            ++allocated;
            return new cim_g_slist;
        });
        EXPECT_CALL(mock, cim_g_slist_length(_))
            .Times(AnyNumber())
            .WillRepeatedly(
                [](cim_g_slist *list) { return static_cast<int>(list->entries.size()); });
        EXPECT_CALL(mock, cim_g_slist_nth_data(_, _))
            .Times(AnyNumber())
            .WillRepeatedly([](cim_g_slist *list, int n) -> void * {
                return n >= 0 && n < static_cast<int>(list->entries.size()) ? list->entries[n]
                                                                            : nullptr;
            });
        EXPECT_CALL(mock, cim_g_slist_destroy(_))
            .Times(AnyNumber())
            .WillRepeatedly([this](cim_g_slist *list) {
                ++destroyed;
                for (void *entry : list->entries) std::free(entry);
                delete list;
            });
    }
    int allocated = 0;
    int destroyed = 0;
};

// A parents query of a member that appends the named records to the list
// (an empty name appends a null entry) and answers rc.
template <typename Record>
auto append_parents(std::vector<std::string> names, int rc = 0) {
    return [names, rc](int queue, const char *, cim_g_slist **list) {
        EXPECT_EQ(queue, kQueue);
        EXPECT_NE(*list, nullptr);
        for (const std::string &name : names)
            (*list)->entries.push_back(name.empty() ? nullptr : new_record<Record>(name));
        return rc;
    };
}

// ---- Labelled CMPI objects --------------------------------------------------------

// Paths and instances of the current request whose class name is a label.
inline CMPIObjectPath *labelled_path(cmpihost::Request &request, const std::string &label) {
    return request.newObjectPath(kNs, label);
}

inline CMPIInstance *labelled_instance(cmpihost::Request &request, const std::string &label) {
    CMPIObjectPath *path = request.newObjectPath(kNs, label);
    return CMNewInstance(cmpihost::broker(), path, nullptr);
}

// Builder actions: a path (or instance) labelled prefix + "." + the record's
// name. The argument positions are those of the builder.
template <std::size_t kRecordArg>
auto path_labelled(cmpihost::Request &request, std::string prefix) {
    return [&request, prefix](auto &&...args) -> CMPIObjectPath * {
        const auto tuple = std::forward_as_tuple(args...);
        return labelled_path(request, prefix + "." + label_name(std::get<kRecordArg>(tuple)));
    };
}

template <std::size_t kRecordArg>
auto instance_labelled(cmpihost::Request &request, std::string prefix) {
    return [&request, prefix](auto &&...args) -> CMPIInstance * {
        const auto tuple = std::forward_as_tuple(args...);
        return labelled_instance(request, prefix + "." + label_name(std::get<kRecordArg>(tuple)));
    };
}

inline auto fixed_path(cmpihost::Request &request, std::string label) {
    return
        [&request, label](auto &&...) -> CMPIObjectPath * { return labelled_path(request, label); };
}

inline auto fixed_instance(cmpihost::Request &request, std::string label) {
    return [&request, label](auto &&...) -> CMPIInstance * {
        return labelled_instance(request, label);
    };
}

// What reached the result, in order: "path:<label>" or "inst:<label>".
inline std::vector<std::string> delivered(const cmpihost::Request &request) {
    std::vector<std::string> out;
    for (const cmpihost::Delivery &d : request.deliveries()) {
        switch (d.kind) {
            case cmpihost::Delivery::Kind::ObjectPath:
                out.push_back("path:" + cmpihost::text(d.path->ft->getClassName(d.path, nullptr)));
                break;
            case cmpihost::Delivery::Kind::Instance: {
                const CMPIObjectPath *path = d.instance->ft->getObjectPath(d.instance, nullptr);
                out.push_back("inst:" + cmpihost::text(path->ft->getClassName(path, nullptr)));
                break;
            }
            case cmpihost::Delivery::Kind::Data:
                out.push_back("data");
                break;
        }
    }
    return out;
}

using Labels = std::vector<std::string>;

// Joins lists of expected deliveries.
inline Labels operator+(Labels a, const Labels &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Counts of a selection case.
inline int times(bool wanted, int n = 1) {
    return wanted ? n : 0;
}

// Expects n calls, each answered by action (no action for a call that must
// not happen: gmock warns about those).
template <typename Expectation, typename Action>
void answer(Expectation &expectation, int n, Action action) {
    expectation.Times(n);
    if (n > 0) expectation.WillRepeatedly(action);
}

// The lines of captured output that contain needle.
inline bool has_line(const std::string &out, const std::string &line) {
    return out.find(line) != std::string::npos;
}

}  // namespace assoc_test
