// The CMPI builders of the simulated switch, driven with the host's broker:
// the keys, properties and references of every object they make (read in
// the host's text form: host/namespace:Class.Key=value Property=value,...),
// property lists, and the null answers for missing input or a failing
// broker.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "host/cmpihost.h"
#include "platform/zoning_platform.h"
#include "sim/sim_records.h"

namespace {

constexpr const char *kNs = "root/test";

std::string str(const CMPIObjectPath *path) {
    return path != nullptr ? cmpihost::pathToString(path) : "<null>";
}
std::string str(const CMPIInstance *instance) {
    return instance != nullptr ? cmpihost::instanceToString(instance) : "<null>";
}
// Where every object is placed: the switch's host name and our namespace.
std::string at(const std::string &rest) {
    return std::string(getCSName()) + "/" + kNs + ":" + rest;
}
// A path as a quoted reference value.
std::string ref(const std::string &path) {
    std::string out = "\"";
    for (char c : path) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

CMPIType type_of(const CMPIInstance *instance, const char *name) {
    return instance->ft->getProperty(instance, name, nullptr).type;
}

template <std::size_t N>
void put(char (&field)[N], const char *text) {
    std::snprintf(field, N, "%s", text);
}
template <typename Record>
Record named(const char *id, const char *name) {
    Record record{};
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
    void SetUp() override { ASSERT_NE(getCSName(), nullptr); }

    cmpihost::Request request;
    const CMPIBroker *broker = cmpihost::broker();

    ZoneSetRecord zone_set = named<ZoneSetRecord>("10^1^1", "SetA");
    ZoneRecord zone = named<ZoneRecord>("10^2^0", "ZoneA");
    ZoneAliasRecord alias = named<ZoneAliasRecord>("10^3^0", "AliasA");
    ZoneMemberRecord member = member_record("10^2^21000024ff4ca1b2^0", 2, "21000024ff4ca1b2");
    VsanEntry vsan = vsan_entry(10);
    DomainEntry domain{};

    // The paths of the objects above.
    const std::string set_path = at(R"(VORNA_ZoneSet.InstanceID="10^1^1")");
    const std::string zone_path = at(R"(VORNA_Zone.InstanceID="10^2^0")");
    const std::string alias_path = at(R"(VORNA_ZoneAlias.InstanceID="10^3^0")");
    const std::string member_path =
        at(R"(VORNA_ZoneMemberSettingData.InstanceID="10^2^21000024ff4ca1b2^0")");
    const std::string vsan_path = at(R"(VORNA_Vsan.CreationClassName="VORNA_Vsan",Name="10")");
    const std::string service_path =
        at(R"(VORNA_ZoneService.SystemCreationClassName="VORNA_Vsan",SystemName="10",)"
           R"(CreationClassName="VORNA_ZoneService",Name="10")");
};

TEST_F(BuildersTest, ObjectsCarryTheirKeysAndWhatClientsRead) {
    EXPECT_EQ(str(zone_set_fill_reference("VORNA_ZoneSet", kNs, &zone_set, broker)), set_path);
    // The class is taken as given.
    EXPECT_EQ(str(zone_fill_reference("vorna_zone", kNs, &zone, broker)),
              at(R"(vorna_zone.InstanceID="10^2^0")"));
    EXPECT_EQ(str(zone_alias_fill_reference("VORNA_ZoneAlias", kNs, &alias, broker)), alias_path);
    EXPECT_EQ(str(zone_member_fill_reference("VORNA_ZoneMemberSettingData", kNs, &member, broker)),
              member_path);
    EXPECT_EQ(str(zone_service_fill_reference("VORNA_ZoneService", kNs, 10, broker)), service_path);
    EXPECT_EQ(str(vsan_fill_reference("VORNA_Vsan", kNs, &vsan, &domain, broker)), vsan_path);

    EXPECT_EQ(str(zone_set_build_instance("VORNA_ZoneSet", kNs, &zone_set, nullptr, broker)),
              set_path + R"( InstanceID="10^1^1",ElementName="SetA",Active=true)");
    CMPIInstance *z = zone_build_instance("VORNA_Zone", kNs, &zone, nullptr, broker);
    EXPECT_EQ(str(z),
              zone_path + R"( InstanceID="10^2^0",ElementName="ZoneA",Active=false,ZoneType=2)");
    EXPECT_EQ(str(zone_alias_build_instance("VORNA_ZoneAlias", kNs, &alias, nullptr, broker)),
              alias_path + R"( InstanceID="10^3^0",ElementName="AliasA",CollectionAlias="AliasA",)"
                           R"(Active=false)");
    ZoneMemberRecord active =
        member_record("10^10^21:00:00:24:ff:4c:a1:b2^1", 10, "21:00:00:24:ff:4c:a1:b2");
    CMPIInstance *m =
        zone_member_build_instance("VORNA_ZoneMemberSettingData", kNs, &active, nullptr, broker);
    EXPECT_EQ(str(m),
              at(R"(VORNA_ZoneMemberSettingData.InstanceID="10^10^21:00:00:24:ff:4c:a1:b2^1")"
                 R"( InstanceID="10^10^21:00:00:24:ff:4c:a1:b2^1",)"
                 R"(ElementName="21:00:00:24:ff:4c:a1:b2",ConnectivityMemberType=10,)"
                 R"(ConnectivityMemberID="21:00:00:24:ff:4c:a1:b2",Active=true)"));
    CMPIInstance *service =
        zone_service_build_instance("VORNA_ZoneService", kNs, 10, nullptr, -1, broker);
    EXPECT_EQ(str(service), service_path +
                                R"( SystemCreationClassName="VORNA_Vsan",SystemName="10",)"
                                R"(CreationClassName="VORNA_ZoneService",Name="10",)"
                                R"(ElementName="Zone service of VSAN 10",SessionState=4,)"
                                R"(RequestedSessionState=5)");
    for (const auto &[instance, name] : {std::pair{z, "ZoneType"},
                                         {m, "ConnectivityMemberType"},
                                         {service, "SessionState"},
                                         {service, "RequestedSessionState"}}) {
        EXPECT_EQ(type_of(instance, name), CMPI_uint16) << name;
    }

    // A VSAN without a name is called after its number; the domain may be null.
    EXPECT_EQ(str(vsan_build_instance("VORNA_Vsan", kNs, &vsan, &domain, nullptr, broker)),
              vsan_path + R"( CreationClassName="VORNA_Vsan",Name="10",ElementName="VSAN0010",)"
                          R"(NameFormat="Other")");
    VsanEntry fabric_a = vsan_entry(20, "Fabric_A");
    EXPECT_EQ(str(vsan_build_instance("VORNA_Vsan", kNs, &fabric_a, nullptr, nullptr, broker)),
              at(R"(VORNA_Vsan.CreationClassName="VORNA_Vsan",Name="20" )"
                 R"(CreationClassName="VORNA_Vsan",Name="20",ElementName="Fabric_A",)"
                 R"(NameFormat="Other")"));

    // A device alias is known by its pWWN in the colon form.
    DeviceAliasEntry entry{};
    put(entry.name, "host_1");
    const unsigned char pwwn[8] = {0x21, 0x00, 0x00, 0x24, 0xFF, 0x4C, 0xA1, 0xB2};
    std::memcpy(entry.pwwn, pwwn, 8);
    const std::string alias_of_host =
        at(R"(VORNA_DeviceAlias.InstanceID="21:00:00:24:ff:4c:a1:b2")");
    EXPECT_EQ(str(device_alias_fill_reference("VORNA_DeviceAlias", kNs, &entry, broker)),
              alias_of_host);
    EXPECT_EQ(str(device_alias_build_instance("VORNA_DeviceAlias", kNs, &entry, nullptr, broker)),
              alias_of_host + R"( InstanceID="21:00:00:24:ff:4c:a1:b2",ElementName="host_1",)"
                              R"(PWWN="21:00:00:24:ff:4c:a1:b2")");
}

TEST_F(BuildersTest, RecordTextsAreReadWithinTheirFields) {
    // A name that fills its field with no NUL, and an InstanceID the
    // platform can't split: the text stops at the field, Active is left out.
    ZoneRecord odd{};
    put(odd.instance_id, "not an id");
    std::memset(odd.name, 'z', sizeof odd.name);
    std::memset(odd.platform_private, 'P', sizeof odd.platform_private);
    EXPECT_EQ(str(zone_build_instance("VORNA_Zone", kNs, &odd, nullptr, broker)),
              at(R"(VORNA_Zone.InstanceID="not an id" InstanceID="not an id",ElementName=")" +
                 std::string(sizeof odd.name, 'z') + R"(",ZoneType=2)"));

    // A device alias name of all 68 bytes is read up to the reserved bytes only.
    DeviceAliasEntry entry{};
    std::memset(entry.name, 'n', sizeof entry.name);
    std::memset(entry.reserved, 'R', sizeof entry.reserved);
    CMPIInstance *instance =
        device_alias_build_instance("VORNA_DeviceAlias", kNs, &entry, nullptr, broker);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(cmpihost::dataText(instance->ft->getProperty(instance, "ElementName", nullptr)),
              std::string(68, 'n'));
}

TEST_F(BuildersTest, PropertyListKeepsKeysAndTheListedPropertiesOnly) {
    const char *some[] = {"ELEMENTNAME", "NoSuchProperty", nullptr};
    const char *none[] = {nullptr};
    const char *member_id[] = {"connectivitymemberid", "active", nullptr};
    const char *session[] = {"SessionState", nullptr};
    const char *active[] = {"Active", nullptr};
    EXPECT_EQ(str(zone_build_instance("VORNA_Zone", kNs, &zone, some, broker)),
              zone_path + R"( InstanceID="10^2^0",ElementName="ZoneA")");
    EXPECT_EQ(str(zone_build_instance("VORNA_Zone", kNs, &zone, none, broker)),
              zone_path + R"( InstanceID="10^2^0")");
    EXPECT_EQ(str(zone_member_build_instance("VORNA_ZoneMemberSettingData", kNs, &member, member_id,
                                             broker)),
              member_path + R"( InstanceID="10^2^21000024ff4ca1b2^0",)"
                            R"(ConnectivityMemberID="21000024ff4ca1b2",Active=false)");
    EXPECT_EQ(str(zone_service_build_instance("VORNA_ZoneService", kNs, 10, session, -1, broker)),
              service_path + R"( SystemCreationClassName="VORNA_Vsan",SystemName="10",)"
                             R"(CreationClassName="VORNA_ZoneService",Name="10",SessionState=4)");
    EXPECT_EQ(str(zone_alias_build_instance("VORNA_ZoneAlias", kNs, &alias, active, broker)),
              alias_path + R"( InstanceID="10^3^0",Active=false)");
    // The references of an association are its keys: always there.
    EXPECT_EQ(str(esd_build_instance_zoneZoneMember("VORNA_ElementSettingData", kNs, &zone, &member,
                                                    none, broker)),
              at("VORNA_ElementSettingData.ManagedElement=" + ref(zone_path) +
                 ",SettingData=" + ref(member_path) + " ManagedElement=" + ref(zone_path) +
                 ",SettingData=" + ref(member_path)));
}

TEST_F(BuildersTest, AssociationsReferToBothEnds) {
    // An association's path, and its instance: the path and the same
    // references as properties.
    auto link = [](const char *cls, const char *first_role, const std::string &first,
                   const char *second_role, const std::string &second) {
        const std::string refs =
            std::string(first_role) + "=" + ref(first) + "," + second_role + "=" + ref(second);
        const std::string path = at(cls + ("." + refs));
        return std::pair{path, path + " " + refs};
    };
    const char *esd = "VORNA_ElementSettingData";
    const char *moc = "VORNA_ZoneMemberOfCollection";
    const char *hosted = "VORNA_ZoneHostedCollection";
    const char *hs = "VORNA_HostedService";
    const auto esd_zone = link(esd, "ManagedElement", zone_path, "SettingData", member_path);
    const auto esd_alias = link(esd, "ManagedElement", alias_path, "SettingData", member_path);
    const auto set_zone = link(moc, "Collection", set_path, "Member", zone_path);
    const auto zone_alias = link(moc, "Collection", zone_path, "Member", alias_path);
    const auto hosted_set = link(hosted, "Antecedent", vsan_path, "Dependent", set_path);
    const auto hosted_zone = link(hosted, "Antecedent", vsan_path, "Dependent", zone_path);
    const auto hosted_alias = link(hosted, "Antecedent", vsan_path, "Dependent", alias_path);
    const auto hosted_service = link(hs, "Antecedent", vsan_path, "Dependent", service_path);

    CMPIObjectPath *zone_ref = zone_fill_reference("VORNA_Zone", kNs, &zone, broker);
    CMPIObjectPath *member_ref =
        zone_member_fill_reference("VORNA_ZoneMemberSettingData", kNs, &member, broker);
    CMPIObjectPath *set_ref = zone_set_fill_reference("VORNA_ZoneSet", kNs, &zone_set, broker);
    CMPIObjectPath *vsan_ref = vsan_fill_reference("VORNA_Vsan", kNs, &vsan, &domain, broker);
    CMPIObjectPath *alias_ref = zone_alias_fill_reference("VORNA_ZoneAlias", kNs, &alias, broker);

    // What each builder made, and what it should have made.
    struct Case {
        const char *call;
        std::string made, expected;
    };
#define MADE(call) #call, str(call)
    const Case cases[] = {
        {MADE(esd_fill_reference_zoneZoneMember(esd, kNs, &zone, &member, broker)), esd_zone.first},
        {MADE(esd_fill_reference_zoneAliasZoneMember(esd, kNs, &alias, &member, broker)),
         esd_alias.first},
        {MADE(zmoc_fill_reference_zoneSetZone(moc, kNs, &zone_set, &zone, broker)), set_zone.first},
        {MADE(zmoc_fill_reference(moc, kNs, &zone, &alias, broker)), zone_alias.first},
        {MADE(
             hosted_collection_fill_reference_zset(hosted, kNs, &vsan, &domain, &zone_set, broker)),
         hosted_set.first},
        {MADE(hosted_collection_fill_reference_zone(hosted, kNs, &vsan, &domain, &zone, broker)),
         hosted_zone.first},
        {MADE(hosted_service_fill_reference(hs, kNs, &vsan, &domain, broker)),
         hosted_service.first},
        {MADE(zone_hosted_collection_fill_reference(hosted, kNs, vsan_ref, alias_ref, broker)),
         hosted_alias.first},
        {MADE(esd_build_instance(esd, kNs, zone_ref, member_ref, nullptr, broker)),
         esd_zone.second},
        {MADE(esd_build_instance_zoneZoneMember(esd, kNs, &zone, &member, nullptr, broker)),
         esd_zone.second},
        {MADE(esd_build_instance_zoneAliasZoneMember(esd, kNs, &alias, &member, nullptr, broker)),
         esd_alias.second},
        {MADE(zmoc_build_instance_MemberCollection(moc, kNs, set_ref, zone_ref, nullptr, broker)),
         set_zone.second},
        {MADE(zmoc_build_instance_zoneSetZone(moc, kNs, &zone_set, &zone, nullptr, broker)),
         set_zone.second},
        {MADE(zmoc_build_instance(moc, kNs, &zone, &alias, broker)), zone_alias.second},
        {MADE(hosted_collection_build_instance_zset(hosted, kNs, &vsan, &domain, &zone_set, nullptr,
                                                    broker)),
         hosted_set.second},
        {MADE(hosted_collection_build_instance_zone(hosted, kNs, &vsan, &domain, &zone, broker)),
         hosted_zone.second},
        {MADE(hosted_service_build_instance(hs, kNs, &vsan, &domain, nullptr, broker)),
         hosted_service.second},
        {MADE(association_class_build_instance_path(hosted, kNs, vsan_ref, alias_ref, "Antecedent",
                                                    "Dependent", broker)),
         hosted_alias.second},
        // The general builder takes whatever role names it is told.
        {MADE(association_class_build_instance_path("VORNA_Something", kNs, zone_ref, alias_ref,
                                                    "Left", "Right", broker)),
         link("VORNA_Something", "Left", zone_path, "Right", alias_path).second},
    };
    for (const Case &c : cases) EXPECT_EQ(c.made, c.expected) << c.call;
#undef MADE
    // The references are typed as such, as keys and as properties.
    CMPIObjectPath *link_path = zmoc_fill_reference(moc, kNs, &zone, &alias, broker);
    EXPECT_EQ(link_path->ft->getKey(link_path, "Member", nullptr).type, CMPI_ref);
    CMPIInstance *link_instance = zmoc_build_instance(moc, kNs, &zone, &alias, broker);
    EXPECT_EQ(type_of(link_instance, "Collection"), CMPI_ref);
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

// Every builder without its record or reference, each shared step (broker,
// namespace, class, role name), and a broker whose factories fail: for
// paths, or for instances only (paths are still made then).
TEST_F(BuildersTest, NothingIsBuiltWithoutBrokerRecordReferenceOrName) {
    const CMPIBroker *none = nullptr;
    CMPIObjectPath *zref = zone_fill_reference("VORNA_Zone", kNs, &zone, broker);
    ASSERT_NE(zref, nullptr);
    CMPIBrokerEncFT no_instances = *broker->eft, no_paths = *broker->eft;
    no_instances.newInstance = refuse_instance;
    no_paths.newObjectPath = refuse_path;
    CMPIBroker instance_refuser = *broker, path_refuser = *broker;
    instance_refuser.eft = &no_instances;
    path_refuser.eft = &no_paths;
    EXPECT_NE(zone_fill_reference("VORNA_Zone", kNs, &zone, &instance_refuser), nullptr);
    const std::pair<const char *, const void *> cases[] = {
        {"no broker", zone_service_build_instance("C", kNs, 10, nullptr, -1, none)},
        {"no namespace", zone_service_fill_reference("C", nullptr, 10, broker)},
        {"no class", zone_service_fill_reference(nullptr, kNs, 10, broker)},
        {"zone path, no record", zone_fill_reference("C", kNs, nullptr, broker)},
        {"zone set", zone_set_build_instance("C", kNs, nullptr, nullptr, broker)},
        {"zone", zone_build_instance("C", kNs, nullptr, nullptr, broker)},
        {"alias", zone_alias_build_instance("C", kNs, nullptr, nullptr, broker)},
        {"member", zone_member_build_instance("C", kNs, nullptr, nullptr, broker)},
        {"device alias", device_alias_build_instance("C", kNs, nullptr, nullptr, broker)},
        {"device alias path", device_alias_fill_reference("C", kNs, nullptr, broker)},
        {"vsan", vsan_build_instance("C", kNs, nullptr, &domain, nullptr, broker)},
        {"vsan path", vsan_fill_reference("C", kNs, nullptr, &domain, broker)},
        {"hosted service",
         hosted_service_build_instance("C", kNs, nullptr, &domain, nullptr, broker)},
        {"hosted service path", hosted_service_fill_reference("C", kNs, nullptr, &domain, broker)},
        {"hosted zone path, no VSAN",
         hosted_collection_fill_reference_zone("C", kNs, nullptr, &domain, &zone, broker)},
        {"hosted zone set, no zone set",
         hosted_collection_build_instance_zset("C", kNs, &vsan, &domain, nullptr, nullptr, broker)},
        {"esd path, no member",
         esd_fill_reference_zoneZoneMember("C", kNs, &zone, nullptr, broker)},
        {"moc, no alias", zmoc_build_instance("C", kNs, &zone, nullptr, broker)},
        {"esd, no setting reference", esd_build_instance("C", kNs, zref, nullptr, nullptr, broker)},
        {"zone set path", zone_set_fill_reference("C", kNs, nullptr, broker)},
        {"alias path, no broker", zone_alias_fill_reference("C", kNs, &alias, none)},
        {"member path", zone_member_fill_reference("C", kNs, nullptr, broker)},
        {"esd alias path, no member",
         esd_fill_reference_zoneAliasZoneMember("C", kNs, &alias, nullptr, broker)},
        {"esd zone, no member",
         esd_build_instance_zoneZoneMember("C", kNs, &zone, nullptr, nullptr, broker)},
        {"esd alias, no alias",
         esd_build_instance_zoneAliasZoneMember("C", kNs, nullptr, &member, nullptr, broker)},
        {"moc path, no zone set",
         zmoc_fill_reference_zoneSetZone("C", kNs, nullptr, &zone, broker)},
        {"moc path, no alias", zmoc_fill_reference("C", kNs, &zone, nullptr, broker)},
        {"moc zone set, no zone",
         zmoc_build_instance_zoneSetZone("C", kNs, &zone_set, nullptr, nullptr, broker)},
        {"moc, no member reference",
         zmoc_build_instance_MemberCollection("C", kNs, zref, nullptr, nullptr, broker)},
        {"hosted zone set path, no VSAN",
         hosted_collection_fill_reference_zset("C", kNs, nullptr, &domain, &zone_set, broker)},
        {"hosted zone, no zone",
         hosted_collection_build_instance_zone("C", kNs, &vsan, &domain, nullptr, broker)},
        {"hosted collection path, no collection",
         zone_hosted_collection_fill_reference("C", kNs, zref, nullptr, broker)},
        {"association, no role name",
         association_class_build_instance_path("C", kNs, zref, zref, nullptr, "B", broker)},
        {"instance refused", zone_build_instance("C", kNs, &zone, nullptr, &instance_refuser)},
        {"link instance refused", zmoc_build_instance("C", kNs, &zone, &alias, &instance_refuser)},
        {"path refused", zone_fill_reference("C", kNs, &zone, &path_refuser)},
        {"service, path refused",
         zone_service_build_instance("C", kNs, 10, nullptr, -1, &path_refuser)},
        {"hosted zone path refused",
         hosted_collection_fill_reference_zone("C", kNs, &vsan, &domain, &zone, &path_refuser)},
    };
    for (const auto &[what, built] : cases) EXPECT_EQ(built, nullptr) << what;
}

}  // namespace
