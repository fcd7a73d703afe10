// Support for the tests of the instance read side: platform records handed
// back the way the platform hands them (malloc'ed, so the provider's free()
// is checked by the sanitizers), VSAN walks, and CMPI objects labelled so
// that a test can read back what reached the result and in which order.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "host/cmpihost.h"
#include "platform_mock.h"
#include "provider/zone_provider.h"

namespace readside {

constexpr int kQueue = 42;
constexpr const char *kNamespace = "root/zoning";

template <typename Record>
void fill_record(Record &record, const std::string &id) {
    std::snprintf(record.instance_id, sizeof record.instance_id, "%s", id.c_str());
    std::snprintf(record.name, sizeof record.name, "name-%s", id.c_str());
}

// A member's text is its label and its InstanceID its member form.
inline void fill_record(ZoneMemberRecord &member, const std::string &label) {
    std::snprintf(member.instance_id, sizeof member.instance_id, "1^1^%s^0", label.c_str());
    member.cim_member_type = 1;
    std::snprintf(member.member_value, sizeof member.member_value, "%s", label.c_str());
}

// An array of records as the queries for all objects of a VSAN hand it back.
template <typename Record>
Record *record_array(const std::vector<std::string> &ids) {
    auto *records =
        static_cast<Record *>(std::calloc(ids.empty() ? 1 : ids.size(), sizeof(Record)));
    for (std::size_t i = 0; i < ids.size(); ++i) fill_record(records[i], ids[i]);
    return records;
}

template <typename Record>
Record *single_record(const std::string &id) {
    return record_array<Record>({id});
}

// A linked list of members, each node its own heap block.
inline ZoneMemberRecord *member_list(const std::vector<std::string> &labels) {
    ZoneMemberRecord *head = nullptr;
    for (auto it = labels.rbegin(); it != labels.rend(); ++it) {
        ZoneMemberRecord *node = single_record<ZoneMemberRecord>(*it);
        node->next = head;
        head = node;
    }
    return head;
}

// vsan_cim_get_vsanEntry walking the given VSANs: the cursor must start at
// 0 and come back unchanged each time; the walk ends with a non-zero answer.
inline auto walk_vsans(std::vector<int> vsans) {
    // The position is shared: the double may copy the action between calls.
    auto next = std::make_shared<std::size_t>(0);
    return [vsans, next](int queue, int mode, VsanEntry *cursor) {
        EXPECT_EQ(queue, kQueue);
        EXPECT_EQ(mode, 0);
        EXPECT_EQ(cursor->vsan, *next == 0 ? 0 : vsans[*next - 1]);
        if (*next >= vsans.size()) return 1;
        cursor->vsan = vsans[(*next)++];
        return 0;
    };
}

// A query for all objects of a VSAN: an array of records, or for members a
// linked list. The pointer must have been cleared before the call.
template <typename Record>
auto hand_back_array(std::vector<std::string> ids) {
    return [ids](int, int, int *count, Record **records) {
        EXPECT_EQ(*records, nullptr);
        *count = static_cast<int>(ids.size());
        if constexpr (std::is_same_v<Record, ZoneMemberRecord>)
            *records = member_list(ids);
        else
            *records = record_array<Record>(ids);
        return 0;
    };
}

// A by-InstanceID query that finds the record.
template <typename Record>
auto hand_back_record(std::string id) {
    return [id](int, const char *, Record **record) {
        *record = single_record<Record>(id);
        return 0;
    };
}

// CMPI objects of the current request, each with a label.
class LabelledObjects {
  public:
    explicit LabelledObjects(cmpihost::Request &request) : request_(request) {}

    CMPIObjectPath *path(const std::string &label) {
        CMPIObjectPath *p = request_.newObjectPath(kNamespace, "Labelled");
        labels_[p] = label;
        return p;
    }

    CMPIInstance *instance(const std::string &label) {
        const CMPIBroker *broker = cmpihost::broker();
        CMPIInstance *i = broker->eft->newInstance(
            broker, request_.newObjectPath(kNamespace, "Labelled"), nullptr);
        labels_[i] = label;
        return i;
    }

    // Labels of what reached the result, in delivery order.
    std::vector<std::string> delivered() const {
        std::vector<std::string> out;
        for (const cmpihost::Delivery &d : request_.deliveries()) {
            const void *object = d.kind == cmpihost::Delivery::Kind::Instance
                                     ? static_cast<const void *>(d.instance)
                                     : static_cast<const void *>(d.path);
            auto it = labels_.find(object);
            out.push_back(it != labels_.end() ? it->second : "<unlabelled>");
        }
        return out;
    }

    // Kinds of what reached the result: "I" instance, "P" path.
    std::string kinds() const {
        std::string out;
        for (const cmpihost::Delivery &d : request_.deliveries())
            out += d.kind == cmpihost::Delivery::Kind::Instance     ? 'I'
                   : d.kind == cmpihost::Delivery::Kind::ObjectPath ? 'P'
                                                                    : 'D';
        return out;
    }

  private:
    cmpihost::Request &request_;
    std::map<const void *, std::string> labels_;
};

// An instance whose handle is null: what a builder gives when it half fails.
inline CMPIInstance *hollow_instance() {
    static CMPIInstance hollow{nullptr, nullptr};
    return &hollow;
}

// Installs the provider's globals for a test and restores them after it;
// every platform call not expected by the test fails it.
class ReadSideTest : public ::testing::Test {
  protected:
    ReadSideTest() : saved_broker_(_broker), saved_queue_(mts_q) {
        _broker = cmpihost::broker();
        mts_q = kQueue;
        // A walk the test didn't plan for ends at once instead of spinning.
        ON_CALL(platform, vsan_cim_get_vsanEntry(testing::_, testing::_, testing::_))
            .WillByDefault(testing::Return(1));
    }
    ~ReadSideTest() override {
        _broker = saved_broker_;
        mts_q = saved_queue_;
    }

  public:
    testing::StrictMock<PlatformMock> platform;
    cmpihost::Request request;
    LabelledObjects objects{request};

  private:
    const CMPIBroker *saved_broker_;
    int saved_queue_;
};

inline std::string message_of(const CMPIStatus &st) {
    return st.msg != nullptr ? cmpihost::text(st.msg) : std::string("<none>");
}

}  // namespace readside
