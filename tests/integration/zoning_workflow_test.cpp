// Zoning a VSAN end to end through the zonecim command against the simulated
// switch: building a zone set with the zoning methods, activating and
// deactivating it, and the refusals that must leave the switch untouched.
#include <nlohmann/json.hpp>

#include "zonecim_session.h"

namespace zonetest {
namespace {

constexpr int kVsan = 10;       // prod_a of the example fabric, with an active zone set
constexpr int kOtherVsan = 20;  // prod_b

const std::string kInvalidParameter = "Invalid Number of Parameters Passed/Invalid Parameter";
const std::string kNotThisService = "Zone Service Active Zone Config Not Supported";

std::string new_member_call(int type, const std::string &id, const std::string &parent) {
    return "CreateZoneMembershipSettingData.ConnectivityMemberType=" + std::to_string(type) +
           ",ConnectivityMemberID=\"" + id + "\",SystemSpecificCollection=" + parent;
}
std::string add_zone(const std::string &zone_set, const std::string &zone) {
    return "AddZone.ZoneSet=" + zone_set + ",Zone=" + zone;
}
std::string add_alias(const std::string &zone, const std::string &alias) {
    return "AddZoneAlias.Zone=" + zone + ",ZoneAlias=" + alias;
}
std::string add_member(const std::string &parent, const std::string &member) {
    return "AddZoneMembershipSettingData.SystemSpecificCollection=" + parent +
           ",ZoneMembershipSettingData=" + member;
}
std::string activate(const std::string &zone_set, bool on) {
    return "ActivateZoneSet.ZoneSet=" + zone_set + ",Activate=" + (on ? "true" : "false");
}

class ZoningWorkflowTest : public ZonecimSession {
  protected:
    // Paths of the active database of the VSAN.
    std::vector<std::string> active_of(const std::string &cls) {
        std::vector<std::string> found;
        for (const std::string &path : of_vsan(names(cls), kVsan))
            if (instance_id_of(path).ends_with("^1")) found.push_back(path);
        return sorted(found);
    }

    // The fabric dump without one VSAN: what a change in that VSAN must not touch.
    std::string database_without(int vsan) {
        nlohmann::json dump = nlohmann::json::parse(fabric_dump(), nullptr, false);
        if (dump.is_discarded()) return "<unreadable dump>";
        auto &vsans = dump["vsans"];
        for (auto it = vsans.begin(); it != vsans.end(); ++it)
            if ((*it)["number"] == vsan) {
                vsans.erase(it);
                break;
            }
        return dump.dump(1);
    }
};

std::vector<std::string> active_copies(const std::vector<std::string> &paths) {
    std::vector<std::string> copies;
    for (const std::string &path : paths) copies.push_back(active_copy(path));
    return sorted(copies);
}

TEST_F(ZoningWorkflowTest, ZoneSetBuiltByMethodsIsActivatedWithItsZonesAliasesAndMembers) {
    const std::string service = zone_service(kVsan);
    const std::string untouched = database_without(kVsan);

    const std::string zone_set =
        create(service, "CreateZoneSet.ZoneSetName=\"flow_cfg\"", "ZoneSet");
    const std::string web =
        create(service, "CreateZone.ZoneName=\"flow_web\",ZoneType=2,ZoneSubType=2", "Zone");
    // The methods are served on the generic zone service class as well.
    const std::string db =
        create("root/cimv2:CIM_ZoneService.Name=\"10\"",
               "CreateZone.ZoneName=\"flow_db\",ZoneType=2,ZoneSubType=2", "Zone");
    const std::string alias =
        create(service, "CreateZoneAlias.CollectionAlias=\"flow_array\"", "ZoneAlias");
    for (const auto &[path, cls] : {std::pair{zone_set, kZoneSet}, std::pair{web, kZone},
                                    std::pair{db, kZone}, std::pair{alias, kZoneAlias}}) {
        EXPECT_EQ(path.rfind(cls + ".InstanceID=\"10^", 0), 0u) << path;
        EXPECT_TRUE(path.ends_with("^0\"")) << path;  // born in the editable database
    }

    // Members: a pWWN as WWN text and as bare digits, a domain and port, and
    // a pWWN in the alias. WWN text comes back in the switch's spelling.
    const std::string member = "ZoneMembershipSettingData";
    const std::string host =
        create(service, new_member_call(10, "21:00:00:24:FF:4C:A1:01", web), member);
    const std::string port = create(service, new_member_call(4, "10:5", web), member);
    const std::string hba = create(service, new_member_call(2, "21000024ff4ca102", db), member);
    const std::string array_port =
        create(service, new_member_call(10, "50:06:01:60:3b:20:19:a7", alias), member);
    EXPECT_EQ(host, kMember + ".InstanceID=\"10^10^21:00:00:24:ff:4c:a1:01^0\"");
    EXPECT_EQ(port, kMember + ".InstanceID=\"10^4^10:5^0\"");
    EXPECT_EQ(hba, kMember + ".InstanceID=\"10^2^21000024ff4ca102^0\"");
    EXPECT_EQ(array_port, kMember + ".InstanceID=\"10^10^50:06:01:60:3b:20:19:a7^0\"");

    change(service, add_alias(db, alias));
    change(service, add_zone(zone_set, web));
    change(service, add_zone(zone_set, db));
    EXPECT_EQ(neighbours(zone_set, kZone), sorted({web, db}));
    EXPECT_EQ(neighbours(db, kZoneAlias), std::vector<std::string>{alias});

    change(service, activate(zone_set, true));

    // The active database of the VSAN now holds this zone set alone (the
    // one active before is replaced) and exactly what it reaches.
    const std::pair<std::string, std::vector<std::string>> built[] = {
        {kZoneSet, {zone_set}},
        {kZone, {web, db}},
        {kZoneAlias, {alias}},
        {kMember, {host, port, hba, array_port}}};
    for (const auto &[cls, objects] : built) EXPECT_EQ(active_of(cls), active_copies(objects));

    // Following the associations from the active zone set.
    const std::string active_set = active_copy(zone_set);
    const std::string active_db = active_copy(db);
    const std::string active_alias = active_copy(alias);
    EXPECT_EQ(neighbours(active_set, kZone), active_copies({web, db}));
    EXPECT_EQ(neighbours(active_copy(web), kMember), active_copies({host, port}));
    EXPECT_EQ(neighbours(active_copy(web), kZoneAlias), std::vector<std::string>{});
    EXPECT_EQ(neighbours(active_db, kMember), active_copies({hba}));
    EXPECT_EQ(neighbours(active_db, kZoneAlias), std::vector<std::string>{active_alias});
    EXPECT_EQ(neighbours(active_alias, kMember), active_copies({array_port}));
    EXPECT_EQ(neighbours(active_alias, kZone), std::vector<std::string>{active_db});
    EXPECT_EQ(neighbours(active_db, kZoneSet), std::vector<std::string>{active_set});

    const Outcome active_instance = zonecim({"gi", active_set});
    ASSERT_EQ(active_instance.status, 0) << active_instance.err;
    EXPECT_NE(active_instance.out.find("ElementName=\"flow_cfg\""), std::string::npos);
    EXPECT_NE(active_instance.out.find("Active=TRUE"), std::string::npos) << active_instance.out;
    // The editable copy stays editable, with its zones.
    EXPECT_NE(zonecim({"gi", zone_set}).out.find("Active=FALSE"), std::string::npos);
    EXPECT_EQ(neighbours(zone_set, kZone), sorted({web, db}));

    change(service, activate(zone_set, false));

    // Deactivated: nothing of the VSAN is enforced any more, the editable
    // database keeps everything that was built.
    for (const auto &[cls, objects] : built) EXPECT_EQ(active_of(cls), std::vector<std::string>{});
    EXPECT_NE(zonecim({"gi", active_set}).status, 0);
    EXPECT_EQ(neighbours(zone_set, kZone), sorted({web, db}));
    EXPECT_EQ(neighbours(alias, kMember), std::vector<std::string>{array_port});

    // Deactivating again: the switch says there is nothing active.
    EXPECT_EQ(invoke(service, activate(zone_set, false)).text, "Zone set not active");

    // Nothing outside the VSAN moved at any point.
    EXPECT_EQ(database_without(kVsan), untouched);
}

TEST_F(ZoningWorkflowTest, RefusedMethodsLeaveTheDatabaseAsItWas) {
    const std::string service = zone_service(kVsan);
    const std::string other_service = zone_service(kOtherVsan);
    const std::string zone_set = named(kZoneSet, kVsan, "prod_a_cfg", false);
    const std::string active_set = named(kZoneSet, kVsan, "prod_a_cfg", true);
    const std::string zone = named(kZone, kVsan, "z_db01_array1", false);  // in prod_a_cfg
    const std::string active_zone = named(kZone, kVsan, "z_db01_array1", true);
    const std::string alias = named(kZoneAlias, kVsan, "array1_ctl_a", false);
    const std::string member = kMember + ".InstanceID=\"10^10^31:00:00:00:00:4c:a1:b2^0\"";
    const std::string missing_set = kZoneSet + ".InstanceID=\"10^998^0\"";

    struct Refusal {
        std::string target;
        std::string call;
        std::string text;
    };
    const Refusal refusals[] = {
        // Objects of VSAN 10 named to the zone service of VSAN 20, and objects
        // of the active database (the other methods' refusals of them are the
        // unit tests'; these show the switch's InstanceIDs read right).
        {other_service, add_zone(zone_set, zone), kNotThisService},
        {other_service, activate(zone_set, true), kNotThisService},
        {service, add_zone(active_set, zone), kNotThisService},
        {service, add_alias(active_zone, alias), kNotThisService},
        {service, new_member_call(10, "21:00:00:24:ff:4c:a1:09", active_zone), kNotThisService},
        {service, add_member(zone, active_copy(member)), kNotThisService},
        // Missing objects and existing links.
        {service, add_zone(zone_set, kZone + ".InstanceID=\"10^999^0\""), "Zone Not Present"},
        {service, add_zone(missing_set, zone), "Zone Set Not Present"},
        {service, add_zone(zone_set, zone), "Zone already member in ZoneSet"},
        {service, add_alias(zone, kZoneAlias + ".InstanceID=\"10^997^0\""), "Object not found"},
        {service, add_alias(zone, alias), "Member already present"},
        {service, add_member(zone, member), "Member already present"},
        {service, activate(missing_set, true), "Object not found"},
        // Member identifiers that are no member of their type (which ones
        // are is the switch's own test).
        {service, new_member_call(10, "21:00:00:zz:00:00:00:01", zone), kInvalidParameter},
        {service, new_member_call(999, "10:5", zone), kInvalidParameter},
        // Names the VSAN already uses.
        {service, "CreateZone.ZoneName=\"z_db01_array1\",ZoneType=2,ZoneSubType=2",
         "Zone Already Present"},
        {service, "CreateZoneSet.ZoneSetName=\"prod_a_cfg\"", "Zone Already Present"},
        {service, "CreateZoneAlias.CollectionAlias=\"array1_ctl_a\"", "Zone Already Present"},
        {service, "CreateZoneSet.ZoneSetName=\"\"", kInvalidParameter},
        // A zone service key in range whose VSAN the switch doesn't have.
        {kServiceClass + ".Name=\"4096\"", "CreateZoneSet.ZoneSetName=\"flow_cfg\"",
         "VSAN not configured"},
    };
    const std::string before = fabric_dump();
    for (const Refusal &refusal : refusals) {
        SCOPED_TRACE(refusal.target + " " + refusal.call);
        EXPECT_EQ(invoke(refusal.target, refusal.call).text, refusal.text);
        EXPECT_EQ(fabric_dump(), before);
    }

    // Requests the provider turns away with a failed status.
    const std::string key_refusal = "Cim: (4) CIM_ERR_INVALID_PARAMETER: invalid zoneservice key";
    const std::string no_method = "Cim: (17) CIM_ERR_METHOD_NOT_FOUND";
    const Refusal failures[] = {
        {kServiceClass + ".Name=\"0\"", "CreateZoneSet.ZoneSetName=\"flow_cfg\"", key_refusal},
        {kServiceClass + ".Name=\"4097\"", add_zone(zone_set, zone), key_refusal},
        {kServiceClass + ".Name=\"ten\"", add_alias(zone, alias), key_refusal},
        {kServiceClass + ".SystemName=\"10\"", activate(zone_set, false), key_refusal},
        {service, "RemoveZone", no_method},
        {service, "createzoneset.ZoneSetName=\"flow_cfg\"", no_method},
    };
    for (const Refusal &failure : failures) {
        SCOPED_TRACE(failure.target + " " + failure.call);
        refused({"cm", failure.target, failure.call}, failure.text);
    }

    // Names are per VSAN: a name VSAN 20 uses is free in VSAN 10.
    create(service, "CreateZone.ZoneName=\"z_app01_array2\",ZoneType=2,ZoneSubType=2", "Zone");
    EXPECT_NE(fabric_dump(), before);
}

}  // namespace
}  // namespace zonetest
