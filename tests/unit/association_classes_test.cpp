// The association classes served as instances: element setting data,
// member of collection and hosted collections. Walk order across VSANs,
// kinds of parent and databases; queries that fail without stopping the
// other passes; names that match instances; getInstance built from the
// request's path alone. Every array and node the mock hands back is
// malloc'ed, so the sanitizers check that each is freed exactly once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <cmpimacs.h>

#include "host/cmpihost.h"
#include "platform_mock.h"
#include "provider/zone_provider.h"

using ::testing::_;
using ::testing::Invoke;
using ::testing::IsNull;
using ::testing::Return;
using ::testing::StrEq;
using ::testing::StrictMock;

namespace {

constexpr int kQueue = 23;
constexpr const char *kNamespace = "root/zoning";
const char *kProps[] = {"InstanceID", nullptr};

// ---- Records as the platform hands them back ------------------------------

template <typename Record>
void name_record(Record &record, const std::string &id) {
    std::snprintf(record.instance_id, sizeof record.instance_id, "%s", id.c_str());
    std::snprintf(record.name, sizeof record.name, "n%s", id.c_str());
}

template <typename Record>
Record *array_of(const std::vector<std::string> &ids) {
    auto *records = static_cast<Record *>(std::calloc(ids.size() + 1, sizeof(Record)));
    for (std::size_t i = 0; i < ids.size(); ++i) name_record(records[i], ids[i]);
    return records;
}

template <typename Record>
Record *list_of(const std::vector<std::string> &ids) {
    Record *head = nullptr;
    for (auto it = ids.rbegin(); it != ids.rend(); ++it) {
        auto *node = static_cast<Record *>(std::calloc(1, sizeof(Record)));
        name_record(*node, *it);
        node->next = head;
        head = node;
    }
    return head;
}

template <>
void name_record(ZoneMemberRecord &record, const std::string &value) {
    std::snprintf(record.instance_id, sizeof record.instance_id, "1^1^%s^0", value.c_str());
    record.cim_member_type = 1;
    std::snprintf(record.member_value, sizeof record.member_value, "%s", value.c_str());
}

// A query for all objects of one database: an array, or a failure.
template <typename Record>
auto all_of(std::vector<std::string> ids) {
    return [ids](int queue, int, int *count, Record **records) {
        EXPECT_EQ(queue, kQueue);
        EXPECT_EQ(*records, nullptr);
        *count = static_cast<int>(ids.size());
        *records = array_of<Record>(ids);
        return 0;
    };
}

template <typename Record>
auto none_found() {
    return [](int, int, int *, Record **) { return 1; };
}

// A query for the children of one parent, keyed by the parent's InstanceID.
// The parent is given by its record's address; unknown parents fail.
template <typename Child>
auto children_of(std::map<std::string, std::vector<std::string>> lists) {
    return [lists](int queue, const char *parent_id, Child **list) {
        EXPECT_EQ(queue, kQueue);
        EXPECT_EQ(*list, nullptr) << "the list head is cleared before the call";
        auto it = lists.find(parent_id);
        if (it == lists.end()) return 1;
        *list = list_of<Child>(it->second);
        return 0;
    };
}

// The walk's position is shared by every copy of the action.
auto walk_vsans(std::vector<int> vsans) {
    auto next = std::make_shared<std::size_t>(0);
    return [vsans, next](int queue, int mode, VsanEntry *cursor) {
        EXPECT_EQ(queue, kQueue);
        EXPECT_EQ(mode, 0);
        EXPECT_EQ(cursor->vsan, *next == 0 ? 0 : vsans[*next - 1]);
        if (*next == vsans.size()) return 1;
        cursor->vsan = vsans[(*next)++];
        return 0;
    };
}

// ---- CMPI objects with labels ---------------------------------------------

class Labels {
  public:
    explicit Labels(cmpihost::Request &request) : request_(request) {}

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

    std::string of(const void *object) const {
        if (object == nullptr) return "<null>";
        auto it = labels_.find(object);
        return it != labels_.end() ? it->second : "<unlabelled>";
    }

    // Labels of what reached the result, in order; kinds as I/P.
    std::vector<std::string> delivered(std::string *kinds = nullptr) const {
        std::vector<std::string> out;
        for (const cmpihost::Delivery &d : request_.deliveries()) {
            const bool instance = d.kind == cmpihost::Delivery::Kind::Instance;
            if (kinds != nullptr) *kinds += instance ? "I" : "P";
            out.push_back(of(instance ? static_cast<const void *>(d.instance)
                                      : static_cast<const void *>(d.path)));
        }
        return out;
    }

  private:
    cmpihost::Request &request_;
    std::map<const void *, std::string> labels_;
};

class AssociationClassTest : public ::testing::Test {
  protected:
    AssociationClassTest() : saved_broker_(_broker), saved_queue_(mts_q) {
        _broker = cmpihost::broker();
        mts_q = kQueue;
    }
    ~AssociationClassTest() override {
        _broker = saved_broker_;
        mts_q = saved_queue_;
    }

    // Reference builders label their paths "<kind> <InstanceID>" (members:
    // "member <value>"), checking class, namespace and broker.
    template <typename Record>
    auto reference(const char *kind) {
        return [this, kind](const char *, const char *ns, const Record *record,
                            const CMPIBroker *broker) {
            EXPECT_STREQ(ns, kNamespace);
            EXPECT_EQ(broker, cmpihost::broker());
            return labels.path(std::string(kind) + " " + record->instance_id);
        };
    }

    auto member_reference() {
        return [this](const char *, const char *ns, const ZoneMemberRecord *record,
                      const CMPIBroker *) {
            EXPECT_STREQ(ns, kNamespace);
            return labels.path(std::string("member ") + record->member_value);
        };
    }

    // Pair builders label "<parent label> / <child label>".
    auto pair_instance(const char **expected_props) {
        return [this, expected_props](const char *, const char *ns, const CMPIObjectPath *parent,
                                      const CMPIObjectPath *child, const char **props,
                                      const CMPIBroker *broker) {
            EXPECT_STREQ(ns, kNamespace);
            EXPECT_EQ(props, expected_props);
            EXPECT_EQ(broker, cmpihost::broker());
            return labels.instance(labels.of(parent) + " / " + labels.of(child));
        };
    }

    template <typename Parent, typename Child>
    auto pair_path(const char *parent_kind, const char *child_kind) {
        return [this, parent_kind, child_kind](const char *, const char *ns, const Parent *parent,
                                               const Child *child, const CMPIBroker *) {
            EXPECT_STREQ(ns, kNamespace);
            return labels.path(std::string(parent_kind) + " " + parent->instance_id + " / " +
                               child_kind + " " + label_of_child(*child));
        };
    }

    template <typename Child>
    static std::string label_of_child(const Child &child) {
        if constexpr (std::is_same_v<Child, ZoneMemberRecord>)
            return child.member_value;
        else
            return child.instance_id;
    }

    std::vector<std::string> run(const std::function<void()> &call, std::string *out) {
        testing::internal::CaptureStdout();
        call();
        *out = testing::internal::GetCapturedStdout();
        return labels.delivered();
    }

    StrictMock<PlatformMock> platform;
    cmpihost::Request request;
    Labels labels{request};

  private:
    const CMPIBroker *saved_broker_;
    int saved_queue_;
};

// ---- Element setting data -------------------------------------------------

class ElementSettingDataTest : public AssociationClassTest {
  protected:
    // VSAN 1: a zone with three members and an alias with one, each in
    // both databases. VSAN 2: the active zone query fails; of its two
    // editable zones the first one's member query fails; its alias queries
    // find nothing (an empty array, then a failure).
    void expect_configuration(bool instances) {
        EXPECT_CALL(platform, vsan_cim_get_vsanEntry(_, _, _))
            .WillRepeatedly(Invoke(walk_vsans({1, 2})));
        EXPECT_CALL(platform, zs_cim_get_all_active_zones(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneRecord>({"1^10^1"})));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zones(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneRecord>({"1^10^0"})));
        EXPECT_CALL(platform, zs_cim_get_all_active_zone_aliases(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneAliasRecord>({"1^20^1"})));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zone_aliases(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneAliasRecord>({"1^20^0"})));
        EXPECT_CALL(platform, zs_cim_get_all_active_zones(kQueue, 2, _, _))
            .WillOnce(Invoke(none_found<ZoneRecord>()));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zones(kQueue, 2, _, _))
            .WillOnce(Invoke(all_of<ZoneRecord>({"2^5^0", "2^6^0"})));
        EXPECT_CALL(platform, zs_cim_get_all_active_zone_aliases(kQueue, 2, _, _))
            .WillOnce(Invoke(all_of<ZoneAliasRecord>({})));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zone_aliases(kQueue, 2, _, _))
            .WillOnce(Invoke(none_found<ZoneAliasRecord>()));
        EXPECT_CALL(platform, zs_cim_get_zone_zone_members_by_instance_id(kQueue, _, _))
            .Times(4)
            .WillRepeatedly(Invoke(children_of<ZoneMemberRecord>({{"1^10^1", {"m1", "m2", "m3"}},
                                                                  {"1^10^0", {"m1", "m2", "m3"}},
                                                                  {"2^6^0", {"m9"}}})));
        EXPECT_CALL(platform, zs_cim_get_zone_alias_zone_members_by_instance_id(kQueue, _, _))
            .Times(2)
            .WillRepeatedly(
                Invoke(children_of<ZoneMemberRecord>({{"1^20^1", {"m4"}}, {"1^20^0", {"m4"}}})));
        if (instances) {
            EXPECT_CALL(platform, zone_fill_reference(StrEq("VORNA_Zone"), _, _, _))
                .Times(4)
                .WillRepeatedly(Invoke(reference<ZoneRecord>("zone")));
            EXPECT_CALL(platform, zone_alias_fill_reference(StrEq("VORNA_ZoneAlias"), _, _, _))
                .Times(2)
                .WillRepeatedly(Invoke(reference<ZoneAliasRecord>("alias")));
            EXPECT_CALL(platform,
                        zone_member_fill_reference(StrEq("VORNA_ZoneMemberSettingData"), _, _, _))
                .Times(9)
                .WillRepeatedly(Invoke(member_reference()));
            EXPECT_CALL(platform,
                        esd_build_instance(StrEq("VORNA_ElementSettingData"), _, _, _, _, _))
                .Times(9)
                .WillRepeatedly(Invoke(pair_instance(kProps)));
        } else {
            EXPECT_CALL(platform, esd_fill_reference_zoneZoneMember(
                                      StrEq("VORNA_ElementSettingData"), _, _, _, _))
                .Times(7)
                .WillRepeatedly(Invoke(pair_path<ZoneRecord, ZoneMemberRecord>("zone", "member")));
            EXPECT_CALL(platform, esd_fill_reference_zoneAliasZoneMember(
                                      StrEq("VORNA_ElementSettingData"), _, _, _, _))
                .Times(2)
                .WillRepeatedly(
                    Invoke(pair_path<ZoneAliasRecord, ZoneMemberRecord>("alias", "member")));
        }
    }

    const std::vector<std::string> expected_order = {
        "zone 1^10^1 / member m1",  "zone 1^10^1 / member m2",  "zone 1^10^1 / member m3",
        "zone 1^10^0 / member m1",  "zone 1^10^0 / member m2",  "zone 1^10^0 / member m3",
        "alias 1^20^1 / member m4", "alias 1^20^0 / member m4", "zone 2^6^0 / member m9",
    };
};

TEST_F(ElementSettingDataTest, InstancesComeVsanByVsanZonesBeforeAliasesActiveFirst) {
    expect_configuration(true);
    std::string out;
    // The class name as the request wrote it is not used: the builders get
    // the association's own name.
    const auto delivered = run(
        [&] {
            EXPECT_EQ(get_esd_all_instances("vorna_elementsettingdata", request.result(), kProps,
                                            kNamespace),
                      0);
        },
        &out);
    EXPECT_EQ(delivered, expected_order);
    EXPECT_NE(out.find("\tfound zone 1^10^1 -- n1^10^1 \n"
                       "\t found zone zone member -- m1\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("\tfound zone alias1^20^0 -- n1^20^0 \n\t found zone zone member -- m4\n"),
              std::string::npos)
        << out;
}

TEST_F(ElementSettingDataTest, NamesArePathsOfTheSamePairsInTheSameOrder) {
    expect_configuration(false);
    std::string out;
    std::string kinds;
    run([&] { EXPECT_EQ(get_esd_keys("x", request.result(), kNamespace), 0); }, &out);
    EXPECT_EQ(labels.delivered(&kinds), expected_order);
    EXPECT_EQ(kinds, std::string(expected_order.size(), 'P'));
}

TEST_F(ElementSettingDataTest, ASwitchWithoutVsansGivesNothing) {
    EXPECT_CALL(platform, vsan_cim_get_vsanEntry(kQueue, 0, _)).WillOnce(Return(1));
    EXPECT_EQ(get_esd_keys("x", request.result(), kNamespace), 0);
    EXPECT_TRUE(request.deliveries().empty());
}

// ---- Member of collection -------------------------------------------------

class MemberOfCollectionTest : public AssociationClassTest {
  protected:
    // VSAN 1: a zone set with zones Z1 and Z2 in both databases; Z1 holds
    // alias A in both databases, Z2 holds none. VSAN 3: its zone set
    // queries fail and its zone alias query of the only zone fails; a zone
    // outside every zone set (3^7^0) still gives its aliases.
    void expect_configuration(bool instances) {
        EXPECT_CALL(platform, vsan_cim_get_vsanEntry(_, _, _))
            .WillRepeatedly(Invoke(walk_vsans({1, 3})));
        EXPECT_CALL(platform, zs_cim_get_all_active_zone_sets(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneSetRecord>({"1^1^1"})));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zone_sets(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneSetRecord>({"1^1^0"})));
        EXPECT_CALL(platform, zs_cim_get_zone_set_zones_by_instance_id(kQueue, _, _))
            .Times(2)
            .WillRepeatedly(Invoke(children_of<ZoneRecord>(
                {{"1^1^1", {"1^10^1", "1^11^1"}}, {"1^1^0", {"1^10^0", "1^11^0"}}})));
        EXPECT_CALL(platform, zs_cim_get_all_active_zones(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneRecord>({"1^10^1", "1^11^1"})));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zones(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneRecord>({"1^10^0", "1^11^0"})));
        EXPECT_CALL(platform, zs_cim_get_all_active_zone_sets(kQueue, 3, _, _))
            .WillOnce(Invoke(none_found<ZoneSetRecord>()));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zone_sets(kQueue, 3, _, _))
            .WillOnce(Invoke(none_found<ZoneSetRecord>()));
        EXPECT_CALL(platform, zs_cim_get_all_active_zones(kQueue, 3, _, _))
            .WillOnce(Invoke(all_of<ZoneRecord>({"3^6^1"})));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zones(kQueue, 3, _, _))
            .WillOnce(Invoke(all_of<ZoneRecord>({"3^7^0"})));
        EXPECT_CALL(platform, zs_cim_get_zone_zone_aliases_by_instance_id(kQueue, _, _))
            .Times(6)
            .WillRepeatedly(Invoke(children_of<ZoneAliasRecord>({{"1^10^1", {"1^20^1"}},
                                                                 {"1^10^0", {"1^20^0"}},
                                                                 {"1^11^1", {}},
                                                                 {"1^11^0", {}},
                                                                 {"3^7^0", {"3^8^0"}}})));
        if (instances) {
            EXPECT_CALL(platform, zone_set_fill_reference(StrEq("VORNA_ZoneSet"), _, _, _))
                .Times(2)
                .WillRepeatedly(Invoke(reference<ZoneSetRecord>("set")));
            // Four zones as members of zone sets, six zones as collections.
            EXPECT_CALL(platform, zone_fill_reference(StrEq("VORNA_Zone"), _, _, _))
                .Times(10)
                .WillRepeatedly(Invoke(reference<ZoneRecord>("zone")));
            EXPECT_CALL(platform, zone_alias_fill_reference(StrEq("VORNA_ZoneAlias"), _, _, _))
                .Times(3)
                .WillRepeatedly(Invoke(reference<ZoneAliasRecord>("alias")));
            EXPECT_CALL(platform, zmoc_build_instance_MemberCollection(
                                      StrEq("VORNA_ZoneMemberOfCollection"), _, _, _, _, _))
                .Times(7)
                .WillRepeatedly(Invoke(pair_instance(nullptr)));
        } else {
            EXPECT_CALL(platform, zmoc_fill_reference_zoneSetZone(
                                      StrEq("VORNA_ZoneMemberOfCollection"), _, _, _, _))
                .Times(4)
                .WillRepeatedly(Invoke(pair_path<ZoneSetRecord, ZoneRecord>("set", "zone")));
            EXPECT_CALL(platform,
                        zmoc_fill_reference(StrEq("VORNA_ZoneMemberOfCollection"), _, _, _, _))
                .Times(3)
                .WillRepeatedly(Invoke(pair_path<ZoneRecord, ZoneAliasRecord>("zone", "alias")));
        }
    }

    const std::vector<std::string> expected_order = {
        "set 1^1^1 / zone 1^10^1",  "set 1^1^1 / zone 1^11^1",    "set 1^1^0 / zone 1^10^0",
        "set 1^1^0 / zone 1^11^0",  "zone 1^10^1 / alias 1^20^1", "zone 1^10^0 / alias 1^20^0",
        "zone 3^7^0 / alias 3^8^0",
    };
};

TEST_F(MemberOfCollectionTest, ZoneSetPairsComeBeforeZonePairsActiveFirst) {
    expect_configuration(true);
    std::string out;
    const auto delivered = run(
        [&] { EXPECT_EQ(get_moc_all_instances("x", request.result(), nullptr, kNamespace), 0); },
        &out);
    EXPECT_EQ(delivered, expected_order);
    // The editable pass uses the same words as the active one.
    EXPECT_NE(out.find("found 1 active zone set in vsan 1\n\t found zone in zone set -- n1^10^1\n"
                       "\t found zone in zone set -- n1^11^1\n"
                       "found 1 active zone set in vsan 1\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("\tfound zone 1^10^1 -- n1^10^1 \ngetting zone alias of zone -- 1^10^1\n"
                       "\t found  zone alias -- n1^20^1\n"),
              std::string::npos)
        << out;
}

TEST_F(MemberOfCollectionTest, NamesArePathsOfTheSamePairsInTheSameOrder) {
    expect_configuration(false);
    std::string out;
    std::string kinds;
    run([&] { EXPECT_EQ(get_moc_keys("x", request.result(), kNamespace), 0); }, &out);
    EXPECT_EQ(labels.delivered(&kinds), expected_order);
    EXPECT_EQ(kinds, std::string(expected_order.size(), 'P'));
}

// ---- getInstance of both families -----------------------------------------

TEST_F(AssociationClassTest, GetInstanceBuildsFromThePathWithoutAnyZoningQuery) {
    CMPIObjectPath *zone = labels.path("zone");
    CMPIObjectPath *member = labels.path("member");
    CMPIObjectPath *zone_set = labels.path("zone set");

    CMPIObjectPath *esd = request.newObjectPath(kNamespace, "VORNA_ElementSettingData");
    cmpihost::addReferenceKey(esd, "settingdata", member);
    cmpihost::addReferenceKey(esd, "MANAGEDELEMENT", zone);
    CMPIObjectPath *moc = request.newObjectPath(kNamespace, "VORNA_ZoneMemberOfCollection");
    cmpihost::addReferenceKey(moc, "collection", zone_set);
    cmpihost::addStringKey(moc, "Member", "not a reference");

    // The references reach the builders by value: the path's own key values.
    auto expect_pair = [this](const std::string &parent, const std::string &child) {
        return
            [this, parent, child](const char *, const char *ns, const CMPIObjectPath *p,
                                  const CMPIObjectPath *c, const char **props, const CMPIBroker *) {
                EXPECT_STREQ(ns, kNamespace);
                EXPECT_EQ(props, kProps);
                EXPECT_EQ(p == nullptr ? "<null>" : cmpihost::pathToString(p), parent);
                EXPECT_EQ(c == nullptr ? "<null>" : cmpihost::pathToString(c), child);
                return labels.instance("built");
            };
    };
    EXPECT_CALL(platform, esd_build_instance(StrEq("VORNA_ElementSettingData"), _, _, _, _, _))
        .WillOnce(
            Invoke(expect_pair(cmpihost::pathToString(zone), cmpihost::pathToString(member))));
    // A member key that holds no reference leaves the member null.
    EXPECT_CALL(platform, zmoc_build_instance_MemberCollection(
                              StrEq("VORNA_ZoneMemberOfCollection"), _, _, IsNull(), _, _))
        .WillOnce(Invoke(expect_pair(cmpihost::pathToString(zone_set), "<null>")));

    EXPECT_EQ(get_esd_instance(esd, request.result(), kProps), 0);
    EXPECT_EQ(get_moc_instance(moc, request.result(), kProps), 0);
    EXPECT_EQ(labels.delivered(), (std::vector<std::string>{"built", "built"}));
}

// ---- Hosted collections ---------------------------------------------------

class HostedCollectionTest : public AssociationClassTest {
  protected:
    static VsanEntry *vsan_table(std::vector<int> vsans) {
        auto *table = static_cast<VsanEntry *>(std::calloc(vsans.size() + 1, sizeof(VsanEntry)));
        for (std::size_t i = 0; i < vsans.size(); ++i) table[i].vsan = vsans[i];
        return table;
    }

    // VSANs 1, 4094, 5 and 7. VSAN 1 holds a zone set and two zones, each
    // in both databases, and no alias (an empty array, then a failure);
    // VSAN 5 has no domain entry; VSAN 7's active zone set query fails, and
    // it has one editable zone set, one active zone and one active alias.
    void expect_configuration(bool instances) {
        EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _))
            .WillOnce(Invoke([](int, int *count, VsanEntry **table) {
                EXPECT_EQ(*table, nullptr);
                *count = 4;
                *table = vsan_table({1, 4094, 5, 7});
                return 0;
            }));
        for (int vsan : {1, 5, 7})
            EXPECT_CALL(platform, dm_cim_get_dmEntry(kQueue, vsan, 1, _))
                .WillOnce(Return(vsan == 5 ? 1 : 0));
        EXPECT_CALL(platform, vsan_fill_reference(StrEq("VORNA_Vsan"), StrEq(kNamespace), _, _,
                                                  cmpihost::broker()))
            .Times(2)
            .WillRepeatedly(Invoke([this](const char *, const char *, const VsanEntry *entry,
                                          const DomainEntry *, const CMPIBroker *) {
                return labels.path("vsan " + std::to_string(entry->vsan));
            }));
        EXPECT_CALL(platform, zs_cim_get_all_active_zone_sets(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneSetRecord>({"1^1^1"})));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zone_sets(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneSetRecord>({"1^1^0"})));
        EXPECT_CALL(platform, zs_cim_get_all_active_zones(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneRecord>({"1^10^1", "1^11^1"})));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zones(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneRecord>({"1^10^0", "1^11^0"})));
        EXPECT_CALL(platform, zs_cim_get_all_active_zone_aliases(kQueue, 1, _, _))
            .WillOnce(Invoke(all_of<ZoneAliasRecord>({})));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zone_aliases(kQueue, 1, _, _))
            .WillOnce(Invoke(none_found<ZoneAliasRecord>()));
        EXPECT_CALL(platform, zs_cim_get_all_active_zone_sets(kQueue, 7, _, _))
            .WillOnce(Invoke(none_found<ZoneSetRecord>()));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zone_sets(kQueue, 7, _, _))
            .WillOnce(Invoke(all_of<ZoneSetRecord>({"7^1^0"})));
        EXPECT_CALL(platform, zs_cim_get_all_active_zones(kQueue, 7, _, _))
            .WillOnce(Invoke(all_of<ZoneRecord>({"7^2^1"})));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zones(kQueue, 7, _, _))
            .WillOnce(Invoke(all_of<ZoneRecord>({})));
        EXPECT_CALL(platform, zs_cim_get_all_active_zone_aliases(kQueue, 7, _, _))
            .WillOnce(Invoke(all_of<ZoneAliasRecord>({"7^30^1"})));
        EXPECT_CALL(platform, zs_cim_get_all_non_active_zone_aliases(kQueue, 7, _, _))
            .WillOnce(Invoke(all_of<ZoneAliasRecord>({})));
        EXPECT_CALL(platform, zone_set_fill_reference(StrEq("VORNA_ZoneSet"), _, _, _))
            .Times(3)
            .WillRepeatedly(Invoke(reference<ZoneSetRecord>("set")));
        EXPECT_CALL(platform, zone_fill_reference(StrEq("VORNA_Zone"), _, _, _))
            .Times(5)
            .WillRepeatedly(Invoke(reference<ZoneRecord>("zone")));
        EXPECT_CALL(platform, zone_alias_fill_reference(StrEq("VORNA_ZoneAlias"), _, _, _))
            .WillOnce(Invoke(reference<ZoneAliasRecord>("alias")));
        auto link_label = [this](const CMPIObjectPath *vsan, const CMPIObjectPath *collection) {
            return labels.of(vsan) + " / " + labels.of(collection);
        };
        if (instances) {
            EXPECT_CALL(platform, association_class_build_instance_path(
                                      StrEq("VORNA_ZoneHostedCollection"), StrEq(kNamespace), _, _,
                                      StrEq("Antecedent"), StrEq("Dependent"), cmpihost::broker()))
                .Times(9)
                .WillRepeatedly(Invoke(
                    [this, link_label](const char *, const char *, const CMPIObjectPath *vsan,
                                       const CMPIObjectPath *collection, const char *, const char *,
                                       const CMPIBroker *) {
                        return labels.instance(link_label(vsan, collection));
                    }));
        } else {
            EXPECT_CALL(platform, zone_hosted_collection_fill_reference(
                                      StrEq("VORNA_ZoneHostedCollection"), StrEq(kNamespace), _, _,
                                      cmpihost::broker()))
                .Times(9)
                .WillRepeatedly(Invoke(
                    [this, link_label](const char *, const char *, const CMPIObjectPath *vsan,
                                       const CMPIObjectPath *collection, const CMPIBroker *) {
                        return labels.path(link_label(vsan, collection));
                    }));
        }
    }

    const std::vector<std::string> expected_order = {
        "vsan 1 / set 1^1^1",   "vsan 1 / set 1^1^0",   "vsan 1 / zone 1^10^1",
        "vsan 1 / zone 1^11^1", "vsan 1 / zone 1^10^0", "vsan 1 / zone 1^11^0",
        "vsan 7 / set 7^1^0",   "vsan 7 / zone 7^2^1",  "vsan 7 / alias 7^30^1",
    };
};

TEST_F(HostedCollectionTest, SixPassesPerVsanInTableOrder) {
    expect_configuration(true);
    EXPECT_EQ(get_zone_hosted_collection_all_instances("x", request.result(), kNamespace, kQueue,
                                                       kProps, cmpihost::broker()),
              0);
    std::string kinds;
    EXPECT_EQ(labels.delivered(&kinds), expected_order);
    EXPECT_EQ(kinds, std::string(expected_order.size(), 'I'));
}

TEST_F(HostedCollectionTest, NamesArePathsOfTheSamePairsInTheSameOrder) {
    expect_configuration(false);
    EXPECT_EQ(get_zone_hosted_collection_keys("x", request.result(), kNamespace, kQueue,
                                              cmpihost::broker()),
              0);
    std::string kinds;
    EXPECT_EQ(labels.delivered(&kinds), expected_order);
    EXPECT_EQ(kinds, std::string(expected_order.size(), 'P'));
}

TEST_F(HostedCollectionTest, AnUnreadableOrEmptyVsanTableGivesNothing) {
    EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _))
        .WillOnce(Return(1))
        .WillOnce(Invoke([](int, int *count, VsanEntry **table) {
            *count = 0;
            *table = vsan_table({});  // an array with no entry is still freed
            return 0;
        }));
    EXPECT_EQ(get_zone_hosted_collection_helper("x", 1, request.result(), kNamespace, nullptr,
                                                kQueue, cmpihost::broker()),
              -1);
    EXPECT_EQ(get_zone_hosted_collection_helper("x", 0, request.result(), kNamespace, nullptr,
                                                kQueue, cmpihost::broker()),
              0);
    EXPECT_TRUE(request.deliveries().empty());
}

TEST_F(HostedCollectionTest, GetInstanceRepeatsTheReferencesOnAPathOfTheSwitch) {
    CMPIObjectPath *vsan = request.newObjectPath(kNamespace, "VORNA_Vsan");
    cmpihost::addStringKey(vsan, "Name", "VSAN1");
    CMPIObjectPath *zone = request.newObjectPath(kNamespace, "VORNA_Zone");
    cmpihost::addStringKey(zone, "InstanceID", "1^10^0");
    CMPIObjectPath *op = request.newObjectPath(kNamespace, "VORNA_ZoneHostedCollection");
    cmpihost::addReferenceKey(op, "dependent", zone);
    cmpihost::addReferenceKey(op, "ANTECEDENT", vsan);
    EXPECT_CALL(platform, getCSName()).WillOnce(Return("switch-7"));

    EXPECT_EQ(get_zone_hosted_collection_instance(op, request.result(), nullptr, kQueue,
                                                  cmpihost::broker()),
              0);
    ASSERT_EQ(request.deliveries().size(), 1u);
    const CMPIInstance *instance = request.deliveries()[0].instance;
    ASSERT_NE(instance, nullptr);
    const CMPIObjectPath *path = CMGetObjectPath(instance, nullptr);
    EXPECT_EQ(cmpihost::text(CMGetHostname(path, nullptr)), "switch-7");
    EXPECT_EQ(cmpihost::text(CMGetClassName(path, nullptr)), "VORNA_ZoneHostedCollection");
    EXPECT_EQ(cmpihost::text(CMGetNameSpace(path, nullptr)), kNamespace);
    const CMPIData antecedent = CMGetProperty(instance, "Antecedent", nullptr);
    const CMPIData dependent = CMGetProperty(instance, "Dependent", nullptr);
    ASSERT_EQ(antecedent.type, CMPI_ref);
    ASSERT_EQ(dependent.type, CMPI_ref);
    EXPECT_EQ(cmpihost::pathToString(antecedent.value.ref), cmpihost::pathToString(vsan));
    EXPECT_EQ(cmpihost::pathToString(dependent.value.ref), cmpihost::pathToString(zone));
}

TEST_F(HostedCollectionTest, GetInstanceWithAMissingKeyLeavesItsPropertyNull) {
    CMPIObjectPath *zone = request.newObjectPath(kNamespace, "VORNA_Zone");
    CMPIObjectPath *op = request.newObjectPath(kNamespace, "VORNA_ZoneHostedCollection");
    cmpihost::addReferenceKey(op, "Dependent", zone);
    EXPECT_CALL(platform, getCSName()).WillOnce(Return("switch-7"));
    get_zone_hosted_collection_instance(op, request.result(), nullptr, kQueue, cmpihost::broker());
    ASSERT_EQ(request.deliveries().size(), 1u);
    const CMPIInstance *instance = request.deliveries()[0].instance;
    const CMPIData antecedent = CMGetProperty(instance, "Antecedent", nullptr);
    EXPECT_TRUE(antecedent.state & (CMPI_nullValue | CMPI_notFound)) << antecedent.state;
    EXPECT_EQ(CMGetProperty(instance, "Dependent", nullptr).type, CMPI_ref);
}

}  // namespace
