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

class ZoningWorkflowTest : public ZonecimSession {
  protected:
    // Paths of one database (editable or active) of one VSAN.
    static std::vector<std::string> in_database(const std::vector<std::string> &paths, int vsan,
                                                bool active) {
        std::vector<std::string> found;
        for (const std::string &path : of_vsan(paths, vsan))
            if (instance_id_of(path).ends_with(active ? "^1" : "^0")) found.push_back(path);
        return sorted(found);
    }

    // The fabric dump without one VSAN: what a change in that VSAN must not touch.
    std::string database_without(int vsan) {
        nlohmann::json dump = nlohmann::json::parse(database(), nullptr, false);
        if (dump.is_discarded()) return "<unreadable dump>";
        auto &vsans = dump["vsans"];
        for (auto it = vsans.begin(); it != vsans.end(); ++it) {
            if ((*it)["number"] == vsan) {
                vsans.erase(it);
                break;
            }
        }
        return dump.dump(1);
    }

    std::string new_member(const std::string &service, int type, const std::string &id,
                           const std::string &parent) {
        return create(
            service,
            "CreateZoneMembershipSettingData.ConnectivityMemberType=" + std::to_string(type) +
                ",ConnectivityMemberID=\"" + id + "\",SystemSpecificCollection=" + parent,
            "ZoneMembershipSettingData");
    }
};

TEST_F(ZoningWorkflowTest, ZoneSetBuiltByMethodsIsActivatedWithItsZonesAliasesAndMembers) {
    const std::string service = zone_service(kVsan);
    const std::string untouched = database_without(kVsan);

    const std::string zone_set =
        create(service, "CreateZoneSet.ZoneSetName=\"flow_cfg\"", "ZoneSet");
    const std::string web =
        create(service, "CreateZone.ZoneName=\"flow_web\",ZoneType=2,ZoneSubType=2", "Zone");
    // The methods are served on the generic zone service class as well.
    const std::string generic_service = "root/cimv2:CIM_ZoneService.Name=\"10\"";
    const std::string db =
        create(generic_service, "CreateZone.ZoneName=\"flow_db\",ZoneType=2,ZoneSubType=2", "Zone");
    const std::string alias =
        create(service, "CreateZoneAlias.CollectionAlias=\"flow_array\"", "ZoneAlias");
    for (const auto &[path, cls] : {std::pair{zone_set, kZoneSet}, std::pair{web, kZone},
                                    std::pair{db, kZone}, std::pair{alias, kZoneAlias}}) {
        EXPECT_EQ(path.rfind(cls + ".InstanceID=\"10^", 0), 0u) << path;
        EXPECT_TRUE(path.ends_with("^0\"")) << path;  // born in the editable database
    }

    // Members: a pWWN as WWN text and as bare digits, a domain and port, and
    // a pWWN in the alias. WWN text comes back in the switch's spelling.
    const std::string host = new_member(service, 10, "21:00:00:24:FF:4C:A1:01", web);
    const std::string port = new_member(service, 4, "10:5", web);
    const std::string hba = new_member(service, 2, "21000024ff4ca102", db);
    const std::string array_port = new_member(service, 10, "50:06:01:60:3b:20:19:a7", alias);
    EXPECT_EQ(host, kMember + ".InstanceID=\"10^10^21:00:00:24:ff:4c:a1:01^0\"");
    EXPECT_EQ(port, kMember + ".InstanceID=\"10^4^10:5^0\"");
    EXPECT_EQ(hba, kMember + ".InstanceID=\"10^2^21000024ff4ca102^0\"");
    EXPECT_EQ(array_port, kMember + ".InstanceID=\"10^10^50:06:01:60:3b:20:19:a7^0\"");

    change(service, "AddZoneAlias.Zone=" + db + ",ZoneAlias=" + alias);
    change(service, "AddZone.ZoneSet=" + zone_set + ",Zone=" + web);
    change(service, "AddZone.ZoneSet=" + zone_set + ",Zone=" + db);
    EXPECT_EQ(neighbours(zone_set, kZone), sorted({web, db}));
    EXPECT_EQ(neighbours(db, kZoneAlias), std::vector<std::string>{alias});

    change(service, "ActivateZoneSet.ZoneSet=" + zone_set + ",Activate=true");

    // The active database of the VSAN now holds this zone set alone (the
    // one active before is replaced) and exactly what it reaches.
    const std::string active_set = active_copy(zone_set);
    const std::string active_web = active_copy(web);
    const std::string active_db = active_copy(db);
    const std::string active_alias = active_copy(alias);
    EXPECT_EQ(in_database(names(kZoneSet), kVsan, true), std::vector<std::string>{active_set});
    EXPECT_EQ(in_database(names(kZone), kVsan, true), sorted({active_web, active_db}));
    EXPECT_EQ(in_database(names(kZoneAlias), kVsan, true), std::vector<std::string>{active_alias});
    EXPECT_EQ(
        in_database(names(kMember), kVsan, true),
        sorted({active_copy(host), active_copy(port), active_copy(hba), active_copy(array_port)}));

    // Following the associations from the active zone set.
    EXPECT_EQ(neighbours(active_set, kZone), sorted({active_web, active_db}));
    EXPECT_EQ(neighbours(active_web, kMember), sorted({active_copy(host), active_copy(port)}));
    EXPECT_EQ(neighbours(active_web, kZoneAlias), std::vector<std::string>{});
    EXPECT_EQ(neighbours(active_db, kMember), std::vector<std::string>{active_copy(hba)});
    EXPECT_EQ(neighbours(active_db, kZoneAlias), std::vector<std::string>{active_alias});
    EXPECT_EQ(neighbours(active_alias, kMember), std::vector<std::string>{active_copy(array_port)});
    EXPECT_EQ(neighbours(active_alias, kZone), std::vector<std::string>{active_db});
    EXPECT_EQ(neighbours(active_db, kZoneSet), std::vector<std::string>{active_set});

    const ZonecimRun active_instance = zonecim({"gi", active_set});
    ASSERT_EQ(active_instance.status, 0) << active_instance.err;
    EXPECT_NE(active_instance.out.find("ElementName=\"flow_cfg\""), std::string::npos);
    EXPECT_NE(active_instance.out.find("Active=TRUE"), std::string::npos) << active_instance.out;
    // The editable copy stays editable, with its zones.
    const ZonecimRun editable_instance = zonecim({"gi", zone_set});
    EXPECT_NE(editable_instance.out.find("Active=FALSE"), std::string::npos)
        << editable_instance.out;
    EXPECT_EQ(neighbours(zone_set, kZone), sorted({web, db}));

    change(service, "ActivateZoneSet.ZoneSet=" + zone_set + ",Activate=false");

    // Deactivated: nothing of the VSAN is enforced any more, the editable
    // database keeps everything that was built.
    EXPECT_EQ(in_database(names(kZoneSet), kVsan, true), std::vector<std::string>{});
    EXPECT_EQ(in_database(names(kZone), kVsan, true), std::vector<std::string>{});
    EXPECT_EQ(in_database(names(kZoneAlias), kVsan, true), std::vector<std::string>{});
    EXPECT_EQ(in_database(names(kMember), kVsan, true), std::vector<std::string>{});
    EXPECT_NE(zonecim({"gi", active_set}).status, 0);
    EXPECT_EQ(neighbours(zone_set, kZone), sorted({web, db}));
    EXPECT_EQ(neighbours(alias, kMember), std::vector<std::string>{array_port});

    // Deactivating again: the switch says there is nothing active.
    EXPECT_EQ(invoke(service, "ActivateZoneSet.ZoneSet=" + zone_set + ",Activate=false").text,
              "Zone set not active");

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
    const std::string active_alias = named(kZoneAlias, kVsan, "array1_ctl_a", true);
    const std::string member = kMember + ".InstanceID=\"10^10^31:00:00:00:00:4c:a1:b2^0\"";
    const std::string active_member = active_copy(member);
    const std::string missing_zone = kZone + ".InstanceID=\"10^999^0\"";
    const std::string missing_set = kZoneSet + ".InstanceID=\"10^998^0\"";
    const std::string missing_alias = kZoneAlias + ".InstanceID=\"10^997^0\"";
    auto add_zone = [](const std::string &set, const std::string &z) {
        return "AddZone.ZoneSet=" + set + ",Zone=" + z;
    };
    auto add_alias = [](const std::string &z, const std::string &a) {
        return "AddZoneAlias.Zone=" + z + ",ZoneAlias=" + a;
    };
    auto new_member_call = [](int type, const std::string &id, const std::string &parent) {
        return "CreateZoneMembershipSettingData.ConnectivityMemberType=" + std::to_string(type) +
               ",ConnectivityMemberID=\"" + id + "\",SystemSpecificCollection=" + parent;
    };
    auto add_member = [](const std::string &parent, const std::string &m) {
        return "AddZoneMembershipSettingData.SystemSpecificCollection=" + parent +
               ",ZoneMembershipSettingData=" + m;
    };

    struct Refusal {
        std::string target;
        std::string call;
        std::string text;
    };
    const std::vector<Refusal> refusals = {
        // Objects of VSAN 10 named to the zone service of VSAN 20.
        {other_service, add_zone(zone_set, zone), kNotThisService},
        {other_service, add_alias(zone, alias), kNotThisService},
        {other_service, new_member_call(10, "21:00:00:24:ff:4c:a1:09", zone), kNotThisService},
        {other_service, add_member(zone, member), kNotThisService},
        {other_service, "ActivateZoneSet.ZoneSet=" + zone_set + ",Activate=true", kNotThisService},
        // Objects of the active database.
        {service, add_zone(active_set, zone), kNotThisService},
        {service, add_zone(zone_set, active_zone), kNotThisService},
        {service, add_alias(zone, active_alias), kNotThisService},
        {service, add_alias(active_zone, alias), kNotThisService},
        {service, new_member_call(10, "21:00:00:24:ff:4c:a1:09", active_zone), kNotThisService},
        {service, add_member(zone, active_member), kNotThisService},
        // Missing objects and existing links.
        {service, add_zone(zone_set, missing_zone), "Zone Not Present"},
        {service, add_zone(missing_set, zone), "Zone Set Not Present"},
        {service, add_zone(zone_set, zone), "Zone already member in ZoneSet"},
        {service, add_alias(zone, missing_alias), "Object not found"},
        {service, add_alias(zone, alias), "Member already present"},
        {service, add_member(zone, member), "Member already present"},
        {service, "ActivateZoneSet.ZoneSet=" + missing_set + ",Activate=true", "Object not found"},
        // Member identifiers that are no member of their type.
        {service, new_member_call(10, "21:00:00:zz:00:00:00:01", zone), kInvalidParameter},
        {service, new_member_call(10, "21:00:00:24:ff:4c:a1", zone), kInvalidParameter},
        {service, new_member_call(2, "21000024ff4ca1zz", zone), kInvalidParameter},
        {service, new_member_call(4, "10", zone), kInvalidParameter},
        {service, new_member_call(4, "port:5", zone), kInvalidParameter},
        {service, new_member_call(10, "", zone), kInvalidParameter},
        {service, new_member_call(999, "10:5", zone), kInvalidParameter},
        // Names the VSAN already uses.
        {service, "CreateZone.ZoneName=\"z_db01_array1\",ZoneType=2,ZoneSubType=2",
         "Zone Already Present"},
        {service, "CreateZoneSet.ZoneSetName=\"prod_a_cfg\"", "Zone Already Present"},
        {service, "CreateZoneAlias.CollectionAlias=\"array1_ctl_a\"", "Zone Already Present"},
        {service, "CreateZoneSet.ZoneSetName=\"\"", kInvalidParameter},
        // A zone service key in range whose VSAN the switch doesn't have.
        {"root/cimv2:VORNA_ZoneService.Name=\"4096\"", "CreateZoneSet.ZoneSetName=\"flow_cfg\"",
         "VSAN not configured"},
    };
    const std::string before = database();
    for (const Refusal &refusal : refusals) {
        SCOPED_TRACE(refusal.target + " " + refusal.call);
        EXPECT_EQ(invoke(refusal.target, refusal.call).text, refusal.text);
        EXPECT_EQ(database(), before);
    }

    // Requests the provider turns away with a failed status: no return value
    // on standard output, the reason on standard error, a non-zero exit.
    struct Failure {
        std::string target;
        std::string call;
        std::string reason;
    };
    const std::string key_refusal = "Cim: (4) CIM_ERR_INVALID_PARAMETER: invalid zoneservice key";
    const std::string no_method = "Cim: (17) CIM_ERR_METHOD_NOT_FOUND";
    const std::vector<Failure> failures = {
        {"root/cimv2:VORNA_ZoneService.Name=\"0\"", "CreateZoneSet.ZoneSetName=\"flow_cfg\"",
         key_refusal},
        {"root/cimv2:VORNA_ZoneService.Name=\"4097\"", add_zone(zone_set, zone), key_refusal},
        {"root/cimv2:VORNA_ZoneService.Name=\"ten\"", add_alias(zone, alias), key_refusal},
        {"root/cimv2:VORNA_ZoneService.SystemName=\"10\"",
         "ActivateZoneSet.ZoneSet=" + zone_set + ",Activate=false", key_refusal},
        {service, "RemoveZone", no_method},
        {service, "createzoneset.ZoneSetName=\"flow_cfg\"", no_method},
    };
    for (const Failure &failure : failures) {
        SCOPED_TRACE(failure.target + " " + failure.call);
        const ZonecimRun run = zonecim({"cm", failure.target, failure.call});
        EXPECT_NE(run.status, 0);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find(failure.reason), std::string::npos) << run.err;
        EXPECT_EQ(database(), before);
    }

    // Names are per VSAN: a name VSAN 20 uses is free in VSAN 10.
    create(service, "CreateZone.ZoneName=\"z_app01_array2\",ZoneType=2,ZoneSubType=2", "Zone");
    EXPECT_NE(database(), before);
}

}  // namespace
}  // namespace zonetest
