// The CMPI builders of the simulated switch, driven with the host's broker.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/cmpihost.h"
#include "platform/zoning_platform.h"
#include "sim/sim_records.h"

namespace {

constexpr const char *kNs = "root/test";

// ---- reading CMPI objects ---------------------------------------------------

std::string data_text(const CMPIData &data) {
    if (data.type == CMPI_string) return cmpihost::text(data.value.string);
    if (data.type == CMPI_chars && data.value.chars != nullptr) return data.value.chars;
    return "<type " + std::to_string(data.type) + ">";
}

std::string class_of(const CMPIObjectPath *path) {
    return cmpihost::text(path->ft->getClassName(path, nullptr));
}
std::string ns_of(const CMPIObjectPath *path) {
    return cmpihost::text(path->ft->getNameSpace(path, nullptr));
}
std::string host_of(const CMPIObjectPath *path) {
    return cmpihost::text(path->ft->getHostname(path, nullptr));
}

// Key name -> CMPI type of every key of the path.
std::map<std::string, CMPIType> keys_of(const CMPIObjectPath *path) {
    std::map<std::string, CMPIType> keys;
    unsigned count = path->ft->getKeyCount(path, nullptr);
    for (unsigned i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        CMPIData data = path->ft->getKeyAt(path, i, &name, nullptr);
        keys[cmpihost::text(name)] = data.type;
    }
    return keys;
}

std::string key_text(const CMPIObjectPath *path, const char *name) {
    CMPIStatus status{CMPI_RC_OK, nullptr};
    CMPIData data = path->ft->getKey(path, name, &status);
    if (status.rc != CMPI_RC_OK) return "<no key " + std::string(name) + ">";
    return data_text(data);
}

const CMPIObjectPath *key_ref(const CMPIObjectPath *path, const char *name) {
    CMPIStatus status{CMPI_RC_OK, nullptr};
    CMPIData data = path->ft->getKey(path, name, &status);
    if (status.rc != CMPI_RC_OK || data.type != CMPI_ref) return nullptr;
    return data.value.ref;
}

std::set<std::string> property_names(const CMPIInstance *instance) {
    std::set<std::string> names;
    unsigned count = instance->ft->getPropertyCount(instance, nullptr);
    for (unsigned i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        instance->ft->getPropertyAt(instance, i, &name, nullptr);
        names.insert(cmpihost::text(name));
    }
    return names;
}

std::optional<CMPIData> property(const CMPIInstance *instance, const char *name) {
    CMPIStatus status{CMPI_RC_OK, nullptr};
    CMPIData data = instance->ft->getProperty(instance, name, &status);
    if (status.rc != CMPI_RC_OK) return std::nullopt;
    return data;
}

std::string property_text(const CMPIInstance *instance, const char *name) {
    auto data = property(instance, name);
    return data ? data_text(*data) : "<no property " + std::string(name) + ">";
}

const CMPIObjectPath *path_of(const CMPIInstance *instance) {
    return instance->ft->getObjectPath(instance, nullptr);
}

// What names the object a path points at: its InstanceID, or the Name of a
// VSAN or zone service.
std::string identity_of(const CMPIObjectPath *path) {
    auto keys = keys_of(path);
    if (keys.count("InstanceID") != 0) return key_text(path, "InstanceID");
    return "Name=" + key_text(path, "Name");
}

// ---- records ----------------------------------------------------------------

template <std::size_t N>
void put(char (&field)[N], const char *text) {
    std::snprintf(field, N, "%s", text);
}

ZoneSetRecord zone_set_record(const char *id, const char *name) {
    ZoneSetRecord record{};
    put(record.instance_id, id);
    put(record.name, name);
    return record;
}

ZoneRecord zone_record(const char *id, const char *name) {
    ZoneRecord record{};
    put(record.instance_id, id);
    put(record.name, name);
    return record;
}

ZoneAliasRecord alias_record(const char *id, const char *name) {
    ZoneAliasRecord record{};
    put(record.instance_id, id);
    put(record.name, name);
    return record;
}

ZoneMemberRecord member_record(const char *id, uint16_t cim_type, const char *text) {
    ZoneMemberRecord record{};
    put(record.instance_id, id);
    record.cim_member_type = cim_type;
    put(record.member_value, text);
    return record;
}

VsanEntry vsan_entry(int vsan, const char *name = "") {
    SimVsanEntry entry{};
    entry.vsan = vsan;
    put(entry.name, name);
    VsanEntry plain;
    std::memcpy(&plain, &entry, sizeof plain);
    return plain;
}

class BuildersTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_NE(broker, nullptr);
        ASSERT_NE(getCSName(), nullptr);
    }

    void expect_placed(const CMPIObjectPath *path, const std::string &cls) {
        ASSERT_NE(path, nullptr);
        EXPECT_EQ(class_of(path), cls);
        EXPECT_EQ(ns_of(path), kNs);
        EXPECT_EQ(host_of(path), getCSName());
    }

    cmpihost::Request request;
    const CMPIBroker *broker = cmpihost::broker();

    ZoneSetRecord zone_set = zone_set_record("10^1^1", "SetA");
    ZoneRecord zone = zone_record("10^2^0", "ZoneA");
    ZoneAliasRecord alias = alias_record("10^3^0", "AliasA");
    ZoneMemberRecord member = member_record("10^2^21000024ff4ca1b2^0", 2, "21000024ff4ca1b2");
    VsanEntry vsan = vsan_entry(10);
    DomainEntry domain{};
};

// ---- zoning objects -------------------------------------------------------------

TEST_F(BuildersTest, ZoningObjectPathsAreKnownByTheirInstanceId) {
    struct Case {
        const char *cls;
        const char *instance_id;
        std::function<CMPIObjectPath *(const char *)> build;
    };
    const std::vector<Case> cases = {
        {"VORNA_ZoneSet", "10^1^1",
         [&](const char *cls) { return zone_set_fill_reference(cls, kNs, &zone_set, broker); }},
        {"vorna_zone", "10^2^0",
         [&](const char *cls) { return zone_fill_reference(cls, kNs, &zone, broker); }},
        {"VORNA_ZoneAlias", "10^3^0",
         [&](const char *cls) { return zone_alias_fill_reference(cls, kNs, &alias, broker); }},
        {"VORNA_ZoneMemberSettingData", "10^2^21000024ff4ca1b2^0",
         [&](const char *cls) { return zone_member_fill_reference(cls, kNs, &member, broker); }},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.cls);
        CMPIObjectPath *path = c.build(c.cls);
        expect_placed(path, c.cls);
        EXPECT_EQ(keys_of(path), (std::map<std::string, CMPIType>{{"InstanceID", CMPI_string}}));
        EXPECT_EQ(key_text(path, "InstanceID"), c.instance_id);
    }
}

TEST_F(BuildersTest, ZoningObjectInstancesCarryWhatClientsRead) {
    CMPIInstance *set = zone_set_build_instance("VORNA_ZoneSet", kNs, &zone_set, nullptr, broker);
    ASSERT_NE(set, nullptr);
    expect_placed(path_of(set), "VORNA_ZoneSet");
    EXPECT_EQ(key_text(path_of(set), "InstanceID"), "10^1^1");
    EXPECT_EQ(property_names(set), (std::set<std::string>{"InstanceID", "ElementName", "Active"}));
    EXPECT_EQ(property_text(set, "InstanceID"), "10^1^1");
    EXPECT_EQ(property_text(set, "ElementName"), "SetA");
    ASSERT_EQ(property(set, "Active")->type, CMPI_boolean);
    EXPECT_TRUE(property(set, "Active")->value.boolean);

    CMPIInstance *z = zone_build_instance("VORNA_Zone", kNs, &zone, nullptr, broker);
    ASSERT_NE(z, nullptr);
    EXPECT_EQ(property_names(z),
              (std::set<std::string>{"InstanceID", "ElementName", "Active", "ZoneType"}));
    EXPECT_EQ(property_text(z, "ElementName"), "ZoneA");
    EXPECT_FALSE(property(z, "Active")->value.boolean);
    ASSERT_EQ(property(z, "ZoneType")->type, CMPI_uint16);
    EXPECT_EQ(property(z, "ZoneType")->value.uint16, 2);

    CMPIInstance *a = zone_alias_build_instance("VORNA_ZoneAlias", kNs, &alias, nullptr, broker);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(property_names(a),
              (std::set<std::string>{"InstanceID", "ElementName", "CollectionAlias", "Active"}));
    EXPECT_EQ(property_text(a, "CollectionAlias"), "AliasA");
    EXPECT_FALSE(property(a, "Active")->value.boolean);

    ZoneMemberRecord active_member =
        member_record("10^10^21:00:00:24:ff:4c:a1:b2^1", 10, "21:00:00:24:ff:4c:a1:b2");
    CMPIInstance *m = zone_member_build_instance("VORNA_ZoneMemberSettingData", kNs, &active_member,
                                                 nullptr, broker);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(property_names(m),
              (std::set<std::string>{"InstanceID", "ElementName", "ConnectivityMemberType",
                                     "ConnectivityMemberID", "Active"}));
    ASSERT_EQ(property(m, "ConnectivityMemberType")->type, CMPI_uint16);
    EXPECT_EQ(property(m, "ConnectivityMemberType")->value.uint16, 10);
    EXPECT_EQ(property_text(m, "ConnectivityMemberID"), "21:00:00:24:ff:4c:a1:b2");
    EXPECT_TRUE(property(m, "Active")->value.boolean);
    CMPIInstance *inactive =
        zone_member_build_instance("VORNA_ZoneMemberSettingData", kNs, &member, nullptr, broker);
    ASSERT_NE(inactive, nullptr);
    EXPECT_FALSE(property(inactive, "Active")->value.boolean);
}

TEST_F(BuildersTest, RecordTextsAreReadWithinTheirFields) {
    // A name that fills its field with no NUL, and an InstanceID the
    // platform can't split: the text stops at the field, Active is left out.
    ZoneRecord odd{};
    put(odd.instance_id, "not an id");
    std::memset(odd.name, 'z', sizeof odd.name);
    std::memset(odd.platform_private, 'P', sizeof odd.platform_private);
    CMPIInstance *z = zone_build_instance("VORNA_Zone", kNs, &odd, nullptr, broker);
    ASSERT_NE(z, nullptr);
    EXPECT_EQ(property_text(z, "ElementName"), std::string(sizeof odd.name, 'z'));
    EXPECT_FALSE(property(z, "Active").has_value());
    EXPECT_EQ(key_text(path_of(z), "InstanceID"), "not an id");
}

TEST_F(BuildersTest, PropertyListKeepsKeysAndTheListedPropertiesOnly) {
    const char *some[] = {"ELEMENTNAME", "NoSuchProperty", nullptr};
    const char *none[] = {nullptr};
    CMPIInstance *z = zone_build_instance("VORNA_Zone", kNs, &zone, some, broker);
    ASSERT_NE(z, nullptr);
    EXPECT_EQ(property_names(z), (std::set<std::string>{"InstanceID", "ElementName"}));
    z = zone_build_instance("VORNA_Zone", kNs, &zone, none, broker);
    ASSERT_NE(z, nullptr);
    EXPECT_EQ(property_names(z), (std::set<std::string>{"InstanceID"}));

    const char *member_props[] = {"connectivitymemberid", nullptr};
    CMPIInstance *m = zone_member_build_instance("VORNA_ZoneMemberSettingData", kNs, &member,
                                                 member_props, broker);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(property_names(m), (std::set<std::string>{"InstanceID", "ConnectivityMemberID"}));

    const char *service_props[] = {"SessionState", nullptr};
    CMPIInstance *service =
        zone_service_build_instance("VORNA_ZoneService", kNs, 10, service_props, -1, broker);
    ASSERT_NE(service, nullptr);
    EXPECT_EQ(property_names(service),
              (std::set<std::string>{"SystemCreationClassName", "SystemName", "CreationClassName",
                                     "Name", "SessionState"}));

    const char *alias_props[] = {"Active", nullptr};
    CMPIInstance *a =
        zone_alias_build_instance("VORNA_ZoneAlias", kNs, &alias, alias_props, broker);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(property_names(a), (std::set<std::string>{"InstanceID", "Active"}));

    // The references of an association are its keys: always there.
    CMPIInstance *link = esd_build_instance_zoneZoneMember("VORNA_ElementSettingData", kNs, &zone,
                                                           &member, none, broker);
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(property_names(link), (std::set<std::string>{"ManagedElement", "SettingData"}));
}

TEST_F(BuildersTest, DeviceAliasesAreKnownByTheirPwwn) {
    DeviceAliasEntry entry{};
    put(entry.name, "host_1");
    const unsigned char pwwn[8] = {0x21, 0x00, 0x00, 0x24, 0xFF, 0x4C, 0xA1, 0xB2};
    std::memcpy(entry.pwwn, pwwn, 8);

    CMPIObjectPath *path = device_alias_fill_reference("VORNA_DeviceAlias", kNs, &entry, broker);
    expect_placed(path, "VORNA_DeviceAlias");
    EXPECT_EQ(keys_of(path), (std::map<std::string, CMPIType>{{"InstanceID", CMPI_string}}));
    EXPECT_EQ(key_text(path, "InstanceID"), "21:00:00:24:ff:4c:a1:b2");

    CMPIInstance *instance =
        device_alias_build_instance("VORNA_DeviceAlias", kNs, &entry, nullptr, broker);
    ASSERT_NE(instance, nullptr);
    expect_placed(path_of(instance), "VORNA_DeviceAlias");
    EXPECT_EQ(property_text(instance, "InstanceID"), "21:00:00:24:ff:4c:a1:b2");
    EXPECT_EQ(property_text(instance, "ElementName"), "host_1");
    EXPECT_EQ(property_text(instance, "PWWN"), "21:00:00:24:ff:4c:a1:b2");

    // A name that fills all 68 bytes is read up to the reserved bytes only.
    std::memset(entry.name, 'n', sizeof entry.name);
    std::memset(entry.reserved, 'R', sizeof entry.reserved);
    instance = device_alias_build_instance("VORNA_DeviceAlias", kNs, &entry, nullptr, broker);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(property_text(instance, "ElementName"), std::string(68, 'n'));
}

// ---- the zone service and the VSAN ------------------------------------------------

TEST_F(BuildersTest, ZoneServiceIsNamedByItsVsanNumber) {
    const std::map<std::string, std::string> expected_keys = {
        {"SystemCreationClassName", "VORNA_Vsan"},
        {"SystemName", "10"},
        {"CreationClassName", "VORNA_ZoneService"},
        {"Name", "10"}};
    CMPIObjectPath *path = zone_service_fill_reference("VORNA_ZoneService", kNs, 10, broker);
    expect_placed(path, "VORNA_ZoneService");
    CMPIInstance *instance =
        zone_service_build_instance("VORNA_ZoneService", kNs, 10, nullptr, -1, broker);
    ASSERT_NE(instance, nullptr);
    for (const CMPIObjectPath *p : {static_cast<const CMPIObjectPath *>(path), path_of(instance)}) {
        ASSERT_EQ(keys_of(p).size(), expected_keys.size());
        for (const auto &[name, value] : expected_keys) {
            EXPECT_EQ(key_text(p, name.c_str()), value) << name;
        }
    }
    for (const auto &[name, value] : expected_keys) {
        EXPECT_EQ(property_text(instance, name.c_str()), value) << name;
    }
    ASSERT_EQ(property(instance, "SessionState")->type, CMPI_uint16);
    EXPECT_EQ(property(instance, "SessionState")->value.uint16, 4);
    EXPECT_EQ(property(instance, "RequestedSessionState")->value.uint16, 5);
    EXPECT_TRUE(property(instance, "ElementName").has_value());
}

TEST_F(BuildersTest, VsanIsNamedByItsNumber) {
    CMPIObjectPath *path = vsan_fill_reference("VORNA_Vsan", kNs, &vsan, &domain, broker);
    expect_placed(path, "VORNA_Vsan");
    EXPECT_EQ(keys_of(path), (std::map<std::string, CMPIType>{{"CreationClassName", CMPI_string},
                                                              {"Name", CMPI_string}}));
    EXPECT_EQ(key_text(path, "CreationClassName"), "VORNA_Vsan");
    EXPECT_EQ(key_text(path, "Name"), "10");

    CMPIInstance *unnamed = vsan_build_instance("VORNA_Vsan", kNs, &vsan, &domain, nullptr, broker);
    ASSERT_NE(unnamed, nullptr);
    EXPECT_EQ(property_text(unnamed, "Name"), "10");
    EXPECT_EQ(property_text(unnamed, "ElementName"), "VSAN0010");
    EXPECT_EQ(property_text(unnamed, "NameFormat"), "Other");

    VsanEntry named = vsan_entry(20, "Fabric_A");
    CMPIInstance *instance =
        vsan_build_instance("VORNA_Vsan", kNs, &named, nullptr, nullptr, broker);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(key_text(path_of(instance), "Name"), "20");
    EXPECT_EQ(property_text(instance, "ElementName"), "Fabric_A");
}

// ---- associations -------------------------------------------------------------------

struct End {
    const char *role;
    const char *cls;
    std::string identity;
};

struct AssociationCase {
    const char *what;
    const char *cls;
    End first;
    End second;
};

class AssociationsTest : public BuildersTest {
  protected:
    void expect_end(const CMPIObjectPath *ref, const End &end) {
        ASSERT_NE(ref, nullptr) << end.role;
        expect_placed(ref, end.cls);
        EXPECT_EQ(identity_of(ref), end.identity) << end.role;
    }

    void expect_link_path(const CMPIObjectPath *path, const AssociationCase &c) {
        expect_placed(path, c.cls);
        EXPECT_EQ(keys_of(path), (std::map<std::string, CMPIType>{{c.first.role, CMPI_ref},
                                                                  {c.second.role, CMPI_ref}}));
        expect_end(key_ref(path, c.first.role), c.first);
        expect_end(key_ref(path, c.second.role), c.second);
    }

    void expect_link_instance(const CMPIInstance *instance, const AssociationCase &c) {
        ASSERT_NE(instance, nullptr);
        expect_link_path(path_of(instance), c);
        for (const End *end : {&c.first, &c.second}) {
            auto data = property(instance, end->role);
            ASSERT_TRUE(data.has_value()) << end->role;
            ASSERT_EQ(data->type, CMPI_ref) << end->role;
            expect_end(data->value.ref, *end);
        }
    }

    const End zone_end{"", "VORNA_Zone", "10^2^0"};
    const End zone_set_end{"", "VORNA_ZoneSet", "10^1^1"};
    const End alias_end{"", "VORNA_ZoneAlias", "10^3^0"};
    const End member_end{"", "VORNA_ZoneMemberSettingData", "10^2^21000024ff4ca1b2^0"};
    const End vsan_end{"", "VORNA_Vsan", "Name=10"};
    const End service_end{"", "VORNA_ZoneService", "Name=10"};

    static End as(const End &end, const char *role) { return End{role, end.cls, end.identity}; }

    AssociationCase esd_zone{"zone member", "VORNA_ElementSettingData",
                             as(zone_end, "ManagedElement"), as(member_end, "SettingData")};
    AssociationCase esd_alias{"alias member", "VORNA_ElementSettingData",
                              as(alias_end, "ManagedElement"), as(member_end, "SettingData")};
    AssociationCase moc_set_zone{"zone in zone set", "VORNA_ZoneMemberOfCollection",
                                 as(zone_set_end, "Collection"), as(zone_end, "Member")};
    AssociationCase moc_zone_alias{"alias in zone", "VORNA_ZoneMemberOfCollection",
                                   as(zone_end, "Collection"), as(alias_end, "Member")};
    AssociationCase hosted_set{"hosted zone set", "VORNA_ZoneHostedCollection",
                               as(vsan_end, "Antecedent"), as(zone_set_end, "Dependent")};
    AssociationCase hosted_zone{"hosted zone", "VORNA_ZoneHostedCollection",
                                as(vsan_end, "Antecedent"), as(zone_end, "Dependent")};
    AssociationCase hosted_alias{"hosted alias", "VORNA_ZoneHostedCollection",
                                 as(vsan_end, "Antecedent"), as(alias_end, "Dependent")};
    AssociationCase hosted_service{"hosted service", "VORNA_HostedService",
                                   as(vsan_end, "Antecedent"), as(service_end, "Dependent")};
};

TEST_F(AssociationsTest, PathsReferToBothEndsFromTheRecords) {
    const std::vector<std::pair<AssociationCase, std::function<CMPIObjectPath *()>>> cases = {
        {esd_zone,
         [&] {
             return esd_fill_reference_zoneZoneMember(esd_zone.cls, kNs, &zone, &member, broker);
         }},
        {esd_alias,
         [&] {
             return esd_fill_reference_zoneAliasZoneMember(esd_alias.cls, kNs, &alias, &member,
                                                           broker);
         }},
        {moc_set_zone,
         [&] {
             return zmoc_fill_reference_zoneSetZone(moc_set_zone.cls, kNs, &zone_set, &zone,
                                                    broker);
         }},
        {moc_zone_alias,
         [&] { return zmoc_fill_reference(moc_zone_alias.cls, kNs, &zone, &alias, broker); }},
        {hosted_set,
         [&] {
             return hosted_collection_fill_reference_zset(hosted_set.cls, kNs, &vsan, &domain,
                                                          &zone_set, broker);
         }},
        {hosted_zone,
         [&] {
             return hosted_collection_fill_reference_zone(hosted_zone.cls, kNs, &vsan, &domain,
                                                          &zone, broker);
         }},
        {hosted_service,
         [&] {
             return hosted_service_fill_reference(hosted_service.cls, kNs, &vsan, &domain, broker);
         }},
        {hosted_alias,
         [&] {
             return zone_hosted_collection_fill_reference(
                 hosted_alias.cls, kNs,
                 vsan_fill_reference("VORNA_Vsan", kNs, &vsan, &domain, broker),
                 zone_alias_fill_reference("VORNA_ZoneAlias", kNs, &alias, broker), broker);
         }},
    };
    for (const auto &[c, build] : cases) {
        SCOPED_TRACE(c.what);
        expect_link_path(build(), c);
    }
}

TEST_F(AssociationsTest, InstancesCarryTypedReferencesToBothEnds) {
    CMPIObjectPath *zone_ref = zone_fill_reference("VORNA_Zone", kNs, &zone, broker);
    CMPIObjectPath *member_ref =
        zone_member_fill_reference("VORNA_ZoneMemberSettingData", kNs, &member, broker);
    CMPIObjectPath *set_ref = zone_set_fill_reference("VORNA_ZoneSet", kNs, &zone_set, broker);
    CMPIObjectPath *vsan_ref = vsan_fill_reference("VORNA_Vsan", kNs, &vsan, &domain, broker);
    CMPIObjectPath *alias_ref = zone_alias_fill_reference("VORNA_ZoneAlias", kNs, &alias, broker);

    const std::vector<std::pair<AssociationCase, std::function<CMPIInstance *()>>> cases = {
        {esd_zone,
         [&] {
             return esd_build_instance(esd_zone.cls, kNs, zone_ref, member_ref, nullptr, broker);
         }},
        {esd_zone,
         [&] {
             return esd_build_instance_zoneZoneMember(esd_zone.cls, kNs, &zone, &member, nullptr,
                                                      broker);
         }},
        {esd_alias,
         [&] {
             return esd_build_instance_zoneAliasZoneMember(esd_alias.cls, kNs, &alias, &member,
                                                           nullptr, broker);
         }},
        {moc_set_zone,
         [&] {
             return zmoc_build_instance_MemberCollection(moc_set_zone.cls, kNs, set_ref, zone_ref,
                                                         nullptr, broker);
         }},
        {moc_set_zone,
         [&] {
             return zmoc_build_instance_zoneSetZone(moc_set_zone.cls, kNs, &zone_set, &zone,
                                                    nullptr, broker);
         }},
        {moc_zone_alias,
         [&] { return zmoc_build_instance(moc_zone_alias.cls, kNs, &zone, &alias, broker); }},
        {hosted_set,
         [&] {
             return hosted_collection_build_instance_zset(hosted_set.cls, kNs, &vsan, &domain,
                                                          &zone_set, nullptr, broker);
         }},
        {hosted_zone,
         [&] {
             return hosted_collection_build_instance_zone(hosted_zone.cls, kNs, &vsan, &domain,
                                                          &zone, broker);
         }},
        {hosted_service,
         [&] {
             return hosted_service_build_instance(hosted_service.cls, kNs, &vsan, &domain, nullptr,
                                                  broker);
         }},
        {hosted_alias,
         [&] {
             return association_class_build_instance_path(
                 hosted_alias.cls, kNs, vsan_ref, alias_ref, "Antecedent", "Dependent", broker);
         }},
    };
    for (const auto &[c, build] : cases) {
        SCOPED_TRACE(c.what);
        expect_link_instance(build(), c);
    }

    // The general builder takes whatever role names it is told.
    AssociationCase custom{"custom roles", "VORNA_Something", as(zone_end, "Left"),
                           as(alias_end, "Right")};
    expect_link_instance(association_class_build_instance_path(custom.cls, kNs, zone_ref, alias_ref,
                                                               "Left", "Right", broker),
                         custom);
}

// ---- what can't be built -----------------------------------------------------------------

TEST_F(AssociationsTest, NothingIsBuiltWithoutBrokerRecordReferenceOrName) {
    const CMPIBroker *none = nullptr;
    CMPIObjectPath *ref = zone_fill_reference("VORNA_Zone", kNs, &zone, broker);
    ASSERT_NE(ref, nullptr);
    const std::vector<std::pair<const char *, std::function<const void *()>>> cases = {
        {"zone service, no broker",
         [&] { return zone_service_build_instance("C", kNs, 10, nullptr, -1, none); }},
        {"zone service path, no broker",
         [&] { return zone_service_fill_reference("C", kNs, 10, none); }},
        {"zone service, no namespace",
         [&] { return zone_service_build_instance("C", nullptr, 10, nullptr, -1, broker); }},
        {"zone service, no class",
         [&] { return zone_service_fill_reference(nullptr, kNs, 10, broker); }},
        {"hosted service, no broker",
         [&] { return hosted_service_build_instance("C", kNs, &vsan, &domain, nullptr, none); }},
        {"hosted service, no VSAN",
         [&] {
             return hosted_service_build_instance("C", kNs, nullptr, &domain, nullptr, broker);
         }},
        {"hosted service path, no VSAN",
         [&] { return hosted_service_fill_reference("C", kNs, nullptr, &domain, broker); }},
        {"zone set, no broker",
         [&] { return zone_set_build_instance("C", kNs, &zone_set, nullptr, none); }},
        {"zone set, no record",
         [&] { return zone_set_build_instance("C", kNs, nullptr, nullptr, broker); }},
        {"zone set path, no record",
         [&] { return zone_set_fill_reference("C", kNs, nullptr, broker); }},
        {"zone, no broker", [&] { return zone_build_instance("C", kNs, &zone, nullptr, none); }},
        {"zone, no record",
         [&] { return zone_build_instance("C", kNs, nullptr, nullptr, broker); }},
        {"zone path, no broker", [&] { return zone_fill_reference("C", kNs, &zone, none); }},
        {"zone path, no record", [&] { return zone_fill_reference("C", kNs, nullptr, broker); }},
        {"alias, no record",
         [&] { return zone_alias_build_instance("C", kNs, nullptr, nullptr, broker); }},
        {"alias path, no broker",
         [&] { return zone_alias_fill_reference("C", kNs, &alias, none); }},
        {"member, no record",
         [&] { return zone_member_build_instance("C", kNs, nullptr, nullptr, broker); }},
        {"member path, no record",
         [&] { return zone_member_fill_reference("C", kNs, nullptr, broker); }},
        {"member, no broker",
         [&] { return zone_member_build_instance("C", kNs, &member, nullptr, none); }},
        {"device alias, no entry",
         [&] { return device_alias_build_instance("C", kNs, nullptr, nullptr, broker); }},
        {"device alias path, no entry",
         [&] { return device_alias_fill_reference("C", kNs, nullptr, broker); }},
        {"esd, no element",
         [&] { return esd_build_instance("C", kNs, nullptr, ref, nullptr, broker); }},
        {"esd, no setting",
         [&] { return esd_build_instance("C", kNs, ref, nullptr, nullptr, broker); }},
        {"esd, no broker", [&] { return esd_build_instance("C", kNs, ref, ref, nullptr, none); }},
        {"esd path, no zone",
         [&] { return esd_fill_reference_zoneZoneMember("C", kNs, nullptr, &member, broker); }},
        {"esd path, no member",
         [&] { return esd_fill_reference_zoneAliasZoneMember("C", kNs, &alias, nullptr, broker); }},
        {"esd instance, no member",
         [&] {
             return esd_build_instance_zoneZoneMember("C", kNs, &zone, nullptr, nullptr, broker);
         }},
        {"esd instance, no alias",
         [&] {
             return esd_build_instance_zoneAliasZoneMember("C", kNs, nullptr, &member, nullptr,
                                                           broker);
         }},
        {"moc, no member",
         [&] {
             return zmoc_build_instance_MemberCollection("C", kNs, ref, nullptr, nullptr, broker);
         }},
        {"moc path, no zone set",
         [&] { return zmoc_fill_reference_zoneSetZone("C", kNs, nullptr, &zone, broker); }},
        {"moc path, no alias",
         [&] { return zmoc_fill_reference("C", kNs, &zone, nullptr, broker); }},
        {"moc instance, no zone",
         [&] {
             return zmoc_build_instance_zoneSetZone("C", kNs, &zone_set, nullptr, nullptr, broker);
         }},
        {"moc instance, no broker",
         [&] { return zmoc_build_instance("C", kNs, &zone, &alias, none); }},
        {"vsan, no entry",
         [&] { return vsan_build_instance("C", kNs, nullptr, &domain, nullptr, broker); }},
        {"vsan path, no broker",
         [&] { return vsan_fill_reference("C", kNs, &vsan, &domain, none); }},
        {"hosted zone set, no zone set",
         [&] {
             return hosted_collection_build_instance_zset("C", kNs, &vsan, &domain, nullptr,
                                                          nullptr, broker);
         }},
        {"hosted zone set path, no VSAN",
         [&] {
             return hosted_collection_fill_reference_zset("C", kNs, nullptr, &domain, &zone_set,
                                                          broker);
         }},
        {"hosted zone, no zone",
         [&] {
             return hosted_collection_build_instance_zone("C", kNs, &vsan, &domain, nullptr,
                                                          broker);
         }},
        {"hosted zone path, no broker",
         [&] {
             return hosted_collection_fill_reference_zone("C", kNs, &vsan, &domain, &zone, none);
         }},
        {"hosted collection path, no collection",
         [&] { return zone_hosted_collection_fill_reference("C", kNs, ref, nullptr, broker); }},
        {"association, no first name",
         [&] {
             return association_class_build_instance_path("C", kNs, ref, ref, nullptr, "B", broker);
         }},
        {"association, no second reference",
         [&] {
             return association_class_build_instance_path("C", kNs, ref, nullptr, "A", "B", broker);
         }},
        {"association, no broker",
         [&] { return association_class_build_instance_path("C", kNs, ref, ref, "A", "B", none); }},
    };
    for (const auto &[what, build] : cases) {
        EXPECT_EQ(build(), nullptr) << what;
    }
}

// A broker that can't make objects: its factories fail with an error status.
CMPIObjectPath *refuse_path(const CMPIBroker *, const char *, const char *, CMPIStatus *rc) {
    if (rc != nullptr) *rc = CMPIStatus{CMPI_RC_ERR_FAILED, nullptr};
    return nullptr;
}
CMPIInstance *refuse_instance(const CMPIBroker *, const CMPIObjectPath *, CMPIStatus *rc) {
    if (rc != nullptr) *rc = CMPIStatus{CMPI_RC_ERR_FAILED, nullptr};
    return nullptr;
}

TEST_F(BuildersTest, BrokerThatFailsGivesNull) {
    CMPIBrokerEncFT no_instances = *broker->eft;
    no_instances.newInstance = refuse_instance;
    CMPIBroker instance_refuser = *broker;
    instance_refuser.eft = &no_instances;
    // Paths still work, instances don't.
    EXPECT_NE(zone_fill_reference("VORNA_Zone", kNs, &zone, &instance_refuser), nullptr);
    EXPECT_EQ(zone_build_instance("VORNA_Zone", kNs, &zone, nullptr, &instance_refuser), nullptr);
    EXPECT_EQ(
        zmoc_build_instance("VORNA_ZoneMemberOfCollection", kNs, &zone, &alias, &instance_refuser),
        nullptr);

    CMPIBrokerEncFT no_paths = *broker->eft;
    no_paths.newObjectPath = refuse_path;
    CMPIBroker path_refuser = *broker;
    path_refuser.eft = &no_paths;
    EXPECT_EQ(zone_fill_reference("VORNA_Zone", kNs, &zone, &path_refuser), nullptr);
    EXPECT_EQ(zone_service_build_instance("VORNA_ZoneService", kNs, 10, nullptr, -1, &path_refuser),
              nullptr);
    EXPECT_EQ(hosted_collection_fill_reference_zone("VORNA_ZoneHostedCollection", kNs, &vsan,
                                                    &domain, &zone, &path_refuser),
              nullptr);
}

}  // namespace
