// Zoning a VSAN end to end through the zonecim command against the simulated
// switch: building a zone set with the zoning methods, activating and
// deactivating it, deleting objects and their links, the device-alias
// methods, and the refusals that must leave the switch untouched.
#include <nlohmann/json.hpp>

#include "zonecim_session.h"

namespace zonetest {
namespace {

constexpr int kVsan = 10;       // prod_a of the example fabric, with an active zone set
constexpr int kOtherVsan = 20;  // prod_b
const std::string kDeviceAliasService = "root/cimv2:VORNA_DeviceAliasService";

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

std::vector<std::string> active_copies(const std::vector<std::string> &paths) {
    std::vector<std::string> copies;
    for (const std::string &path : paths) copies.push_back(active_copy(path));
    return sorted(copies);
}

using Paths = std::vector<std::string>;

class ZoningWorkflowTest : public ZonecimSession {
  protected:
    // Objects of VSAN 10 of the example fabric, editable or active.
    std::string prod_a_cfg(bool active = false) {
        return named(kZoneSet, kVsan, "prod_a_cfg", active);
    }
    std::string zone_of(const std::string &name, bool active = false) {
        return named(kZone, kVsan, name, active);
    }
    std::string alias_of(const std::string &name, bool active = false) {
        return named(kZoneAlias, kVsan, name, active);
    }
    std::string member_of(const std::string &wwn, int active = 0) {
        return kMember + ".InstanceID=\"10^10^" + wwn + "^" + std::to_string(active) + "\"";
    }

    // Paths of the active database of the VSAN.
    Paths active_of(const std::string &cls) {
        Paths found;
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

    // Every association path of the three link classes that names the object.
    Paths links_naming(const std::string &path) {
        Paths links;
        for (const std::string &cls : {kMemberOf, kSettingLink, kHostedLink})
            for (const std::string &link : mentioning(names(cls), path)) links.push_back(link);
        return sorted(links);
    }

    // The link of a class between two objects, as enumerating the class prints it.
    std::string link_between(const std::string &cls, const std::string &parent,
                             const std::string &child) {
        for (const std::string &link : names(cls))
            if (link.find("=" + parent + ",") != std::string::npos && link.ends_with("=" + child))
                return link;
        ADD_FAILURE() << "no " << cls << " from " << parent << " to " << child;
        return cls + ".missing";
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
    EXPECT_EQ(neighbours(db, kZoneAlias), Paths{alias});

    change(service, activate(zone_set, true));

    // The active database of the VSAN now holds this zone set alone (the
    // one active before is replaced) and exactly what it reaches.
    const std::pair<std::string, Paths> built[] = {{kZoneSet, {zone_set}},
                                                   {kZone, {web, db}},
                                                   {kZoneAlias, {alias}},
                                                   {kMember, {host, port, hba, array_port}}};
    for (const auto &[cls, objects] : built) EXPECT_EQ(active_of(cls), active_copies(objects));

    // Following the associations from the active zone set.
    const std::string active_set = active_copy(zone_set);
    const std::string active_db = active_copy(db);
    const std::string active_alias = active_copy(alias);
    const std::tuple<std::string, std::string, Paths> reached[] = {
        {active_set, kZone, active_copies({web, db})},
        {active_copy(web), kMember, active_copies({host, port})},
        {active_copy(web), kZoneAlias, {}},
        {active_db, kMember, active_copies({hba})},
        {active_db, kZoneAlias, {active_alias}},
        {active_alias, kMember, active_copies({array_port})},
        {active_alias, kZone, {active_db}},
        {active_db, kZoneSet, {active_set}},
    };
    for (const auto &[from, cls, expected] : reached)
        EXPECT_EQ(neighbours(from, cls), expected) << from << " to " << cls;

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
    for (const auto &[cls, objects] : built) EXPECT_EQ(active_of(cls), Paths{});
    EXPECT_NE(zonecim({"gi", active_set}).status, 0);
    EXPECT_EQ(neighbours(zone_set, kZone), sorted({web, db}));
    EXPECT_EQ(neighbours(alias, kMember), Paths{array_port});

    // Deactivating again: the switch says there is nothing active.
    EXPECT_EQ(invoke(service, activate(zone_set, false)).text, "Zone set not active");

    // Nothing outside the VSAN moved at any point.
    EXPECT_EQ(database_without(kVsan), untouched);
}

TEST_F(ZoningWorkflowTest, DeletedZoneLeavesEveryListingAndLink) {
    const std::string db_zone = zone_of("z_db01_array1");
    const std::string web_zone = zone_of("z_web01_array1");
    const std::string alias_a = alias_of("array1_ctl_a");
    const Paths own_members = neighbours(db_zone, kMember);
    ASSERT_EQ(own_members.size(), 2u);  // the zone's two pWWNs, held by no other parent

    // Before: the zone is in its zone set, holds two aliases and two members,
    // and is hosted by its VSAN.
    const Paths links = links_naming(db_zone);
    EXPECT_EQ(mentioning(links, kMemberOf).size(), 3u);
    EXPECT_EQ(mentioning(links, kSettingLink).size(), 2u);
    EXPECT_EQ(mentioning(links, kHostedLink).size(), 1u);

    remove(db_zone);

    EXPECT_FALSE(listed(names(kZone), db_zone));
    EXPECT_EQ(links_naming(db_zone), Paths{});
    EXPECT_EQ(mentioning(instances(kZone), db_zone), Paths{});
    const Outcome gone = zonecim({"gi", db_zone});
    EXPECT_EQ(gone.status, 1);
    EXPECT_NE(gone.err.find("CIM_ERR_NOT_FOUND"), std::string::npos) << gone.err;
    for (const std::string &m : own_members) EXPECT_FALSE(listed(names(kMember), m));

    // What the zone held or was held by stays; so does its active copy.
    EXPECT_EQ(neighbours(prod_a_cfg(), kZone), sorted({web_zone, zone_of("z_backup01_tape1")}));
    EXPECT_EQ(neighbours(web_zone, kZoneAlias), Paths{alias_a});
    EXPECT_TRUE(listed(names(kZoneAlias), alias_of("array1_ctl_b")));
    EXPECT_TRUE(listed(names(kZone), active_copy(db_zone)));
    EXPECT_EQ(neighbours(active_copy(db_zone), kMember).size(), 2u);
}

TEST_F(ZoningWorkflowTest, DeletingLinksRemovesOneMembershipOnly) {
    const std::string service = zone_service(kVsan);
    const std::string db_zone = zone_of("z_db01_array1");
    const std::string web_zone = zone_of("z_web01_array1");
    const std::string alias_a = alias_of("array1_ctl_a");
    const std::string alias_b = alias_of("array1_ctl_b");
    const std::string held = member_of("31:00:00:00:00:4c:a1:b2");
    const std::string sibling = member_of("31:00:00:00:00:4c:a1:b3");

    // The member joins a second zone and an alias: three parents.
    for (const std::string &parent : {web_zone, alias_b}) change(service, add_member(parent, held));
    EXPECT_EQ(mentioning(names(kSettingLink), held).size(), 3u);

    // An element-setting-data link goes; the member stays in its other parents.
    remove(link_between(kSettingLink, web_zone, held));
    EXPECT_FALSE(listed(neighbours(web_zone, kMember), held));
    EXPECT_TRUE(listed(neighbours(db_zone, kMember), held));
    EXPECT_TRUE(listed(neighbours(alias_b, kMember), held));
    EXPECT_EQ(mentioning(names(kSettingLink), held).size(), 2u);

    // The member itself goes from every zone and alias at once; its
    // neighbours and its active copy stay.
    remove(held);
    EXPECT_FALSE(listed(names(kMember), held));
    EXPECT_EQ(mentioning(names(kSettingLink), held), Paths{});
    EXPECT_EQ(neighbours(db_zone, kMember), Paths{sibling});
    EXPECT_EQ(neighbours(alias_b, kMember).size(), 1u);
    EXPECT_TRUE(listed(names(kMember), active_copy(held)));

    // A (zone set, zone) link goes; the zone stays, outside the set.
    remove(link_between(kMemberOf, prod_a_cfg(), web_zone));
    EXPECT_EQ(neighbours(prod_a_cfg(), kZone), sorted({db_zone, zone_of("z_backup01_tape1")}));
    EXPECT_TRUE(listed(names(kZone), web_zone));
    EXPECT_EQ(neighbours(web_zone, kZoneSet), Paths{});
    EXPECT_EQ(mentioning(names(kHostedLink), web_zone).size(), 1u);

    // A (zone, alias) link goes; the alias stays in its other zone.
    remove(link_between(kMemberOf, db_zone, alias_a));
    EXPECT_EQ(neighbours(db_zone, kZoneAlias), Paths{alias_b});
    EXPECT_EQ(neighbours(alias_a, kZone), Paths{web_zone});
    EXPECT_TRUE(listed(names(kZoneAlias), alias_a));
}

TEST_F(ZoningWorkflowTest, DeviceAliasIsCreatedFoundAndRemoved) {
    const std::string alias = kDeviceAlias + ".InstanceID=\"21:00:00:24:ff:4c:a1:01\"";
    const Paths before = names(kDeviceAlias);
    ASSERT_FALSE(before.empty());
    ASSERT_FALSE(listed(before, alias));

    change(kDeviceAliasService,
           "CreateDeviceAlias.DeviceAliasName=\"flow_host0\",PWWN=\"21:00:00:24:FF:4C:A1:01\"");

    const Paths after = names(kDeviceAlias);
    EXPECT_EQ(after.size(), before.size() + 1);
    EXPECT_TRUE(listed(after, alias));
    EXPECT_EQ(mentioning(instances(kDeviceAlias), alias + " "),
              Paths{alias + " InstanceID=\"21:00:00:24:ff:4c:a1:01\",ElementName="
                            "\"flow_host0\",PWWN=\"21:00:00:24:ff:4c:a1:01\""});
    // getInstance by the pWWN, however the pWWN is spelt.
    for (const char *pwwn : {"21:00:00:24:ff:4c:a1:01", "21000024FF4CA101"}) {
        const Outcome one = zonecim({"gi", kDeviceAlias + ".InstanceID=\"" + pwwn + "\""});
        EXPECT_EQ(one.status, 0) << one.err;
        EXPECT_NE(one.out.find("ElementName=\"flow_host0\""), std::string::npos) << one.out;
    }
    change(kDeviceAliasService, "RemoveDeviceAlias.DeviceAliasName=\"flow_host0\"");
    EXPECT_EQ(names(kDeviceAlias), before);
    EXPECT_EQ(mentioning(instances(kDeviceAlias), "flow_host0"), Paths{});
    // getInstance of the freed pWWN no longer carries the name.
    EXPECT_EQ(zonecim({"gi", alias}).out.find("flow_host0"), std::string::npos);
    // Removing it again: the database's own answer, nothing changed.
    EXPECT_EQ(invoke(kDeviceAliasService, "RemoveDeviceAlias.DeviceAliasName=\"flow_host0\"").text,
              "Object not found");
    EXPECT_EQ(names(kDeviceAlias), before);
}

TEST_F(ZoningWorkflowTest, RefusedMethodsLeaveTheDatabaseAsItWas) {
    const std::string service = zone_service(kVsan);
    const std::string other_service = zone_service(kOtherVsan);
    const std::string zone_set = prod_a_cfg();
    const std::string active_set = prod_a_cfg(true);
    const std::string zone = zone_of("z_db01_array1");  // in prod_a_cfg
    const std::string active_zone = zone_of("z_db01_array1", true);
    const std::string alias = alias_of("array1_ctl_a");
    const std::string member = member_of("31:00:00:00:00:4c:a1:b2");
    const std::string missing_set = kZoneSet + ".InstanceID=\"10^998^0\"";
    const std::string new_alias = "CreateDeviceAlias.DeviceAliasName=";

    // Refusals the switch answers with a text of its own.
    struct Refusal {
        std::string target, call, text;
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
        // Member identifiers that are no member of their type, and pWWNs that
        // aren't eight bytes of hexadecimal pairs (which ones are is the
        // switch's own test).
        {service, new_member_call(10, "21:00:00:zz:00:00:00:01", zone), kInvalidParameter},
        {service, new_member_call(999, "10:5", zone), kInvalidParameter},
        {kDeviceAliasService, new_alias + "\"flow_host0\",PWWN=\"21:00:00:zz:ff:4c:a1:01\"",
         "Unknown error"},
        {kDeviceAliasService, new_alias + "\"flow_host0\",PWWN=\"21:00:00:24:ff:4c:a1:01:02\"",
         "Unknown error"},
        // Names (and device-alias pWWNs) the switch already uses, per VSAN.
        {service, "CreateZone.ZoneName=\"z_db01_array1\",ZoneType=2,ZoneSubType=2",
         "Zone Already Present"},
        {service, "CreateZoneSet.ZoneSetName=\"prod_a_cfg\"", "Zone Already Present"},
        {service, "CreateZoneAlias.CollectionAlias=\"array1_ctl_a\"", "Zone Already Present"},
        {kDeviceAliasService, new_alias + "\"db01_hba0\",PWWN=\"21:00:00:24:ff:4c:a1:01\"",
         "Zone Already Present"},
        {kDeviceAliasService, new_alias + "\"flow_host0\",PWWN=\"31:00:00:00:00:4c:a1:b2\"",
         "Zone Already Present"},
        // Names the switch doesn't accept.
        {service, "CreateZoneSet.ZoneSetName=\"\"", kInvalidParameter},
        {kDeviceAliasService, new_alias + "\"\",PWWN=\"21:00:00:24:ff:4c:a1:01\"", "Invalid name"},
        {kDeviceAliasService, new_alias + "\"flow host\",PWWN=\"21:00:00:24:ff:4c:a1:01\"",
         "Invalid name"},
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

    // zonecim prints the last return value, the dispatcher's text of the
    // code; the one the handler hands over first is the switch's own text.
    cmpihost::Request request;
    CMPIArgs *in = method_args(request, {{"DeviceAliasName", CMPI_string, "db01_hba0"},
                                         {"PWWN", CMPI_string, "21:00:00:24:ff:4c:a1:01"}});
    CMPIObjectPath *alias_service = class_path(request, "VORNA_DeviceAliasService");
    EXPECT_EQ(quietly([&] {
                  return provider().invokeMethod(request, alias_service, "CreateDeviceAlias", in,
                                                 request.newArgs());
              }).rc,
              CMPI_RC_OK);
    Paths values;
    for (const cmpihost::Delivery &d : request.deliveries())
        if (d.kind == cmpihost::Delivery::Kind::Data) values.push_back(cmpihost::dataText(d.data));
    EXPECT_EQ(values, (Paths{"Object already present", "Zone Already Present"}));
    EXPECT_EQ(fabric_dump(), before);

    // Names are per VSAN: a name VSAN 20 uses is free in VSAN 10.
    create(service, "CreateZone.ZoneName=\"z_app01_array2\",ZoneType=2,ZoneSubType=2", "Zone");
    EXPECT_NE(fabric_dump(), before);
}

// Requests the provider turns away with a failed status: zonecim exits
// non-zero with the reason, and the switch is as before.
TEST_F(ZoningWorkflowTest, RequestsTurnedAwayChangeNothing) {
    const std::string zone_set = prod_a_cfg(), active_set = prod_a_cfg(true);
    const std::string zone = zone_of("z_db01_array1"), active_zone = zone_of("z_db01_array1", true);
    const std::string backup_zone = zone_of("z_backup01_tape1");
    const std::string alias = alias_of("array1_ctl_a");
    const std::string member = member_of("31:00:00:00:00:4c:a1:b2");
    const std::string active_member = member_of("31:00:00:00:00:4c:a1:b2", 1);
    const std::string key_refusal = "Cim: (4) CIM_ERR_INVALID_PARAMETER: invalid zoneservice key";
    const std::string no_method = "Cim: (17) CIM_ERR_METHOD_NOT_FOUND";
    const std::string not_modifiable =
        "Cim: (4) CIM_ERR_INVALID_PARAMETER: cannot modify active zoning object!";
    const std::string bad_parent = "Invalid parent objectpath of CIM_MemberOfCollection!";
    using Args = std::vector<std::string>;
    auto call = [](const std::string &target, const std::string &text) {
        return Args{"cm", target, text};
    };
    const std::pair<Args, std::string> refusals[] = {
        {call(kServiceClass + ".Name=\"0\"", "CreateZoneSet.ZoneSetName=\"flow_cfg\""),
         key_refusal},
        {call(kServiceClass + ".Name=\"4097\"", add_zone(zone_set, zone)), key_refusal},
        {call(kServiceClass + ".Name=\"ten\"", add_alias(zone, alias)), key_refusal},
        {call(kServiceClass + ".SystemName=\"10\"", activate(zone_set, false)), key_refusal},
        {call(zone_service(kVsan), "RemoveZone"), no_method},
        {call(zone_service(kVsan), "createzoneset.ZoneSetName=\"flow_cfg\""), no_method},
        // Deleting from the active database, or what the switch doesn't have.
        {{"di", active_zone}, not_modifiable},
        {{"di", alias_of("array1_ctl_a", true)}, not_modifiable},
        {{"di", link_between(kMemberOf, active_set, active_zone)}, bad_parent},
        {{"di", link_between(kSettingLink, active_zone, active_member)}, bad_parent},
        {{"di", active_member}, "Cim: (1) CIM_ERR_FAILED: Unknown Error"},
        {{"di", kZone + ".InstanceID=\"10^999^0\""}, "Object not found"},
        {{"di", kMemberOf + ".Collection=" + backup_zone + ",Member=" + alias}, "Object not found"},
        {{"di", kSettingLink + ".ManagedElement=" + backup_zone + ",SettingData=" + member},
         "Object not found"},
        // A link whose member is named before its parent is no link.
        {{"di", kSettingLink + ".SettingData=" + member + ",ManagedElement=" + zone},
         "Invalid objectpath of CIM_ElementSettingData!"},
    };
    for (const auto &[args, reason] : refusals) {
        SCOPED_TRACE(args[1] + (args.size() > 2 ? " " + args[2] : ""));
        refused(args, reason);
    }
    EXPECT_TRUE(listed(neighbours(active_set, kZone), active_zone));
}

}  // namespace
}  // namespace zonetest
