// Deleting zoning objects and their links, and the device-alias methods,
// through the zonecim command against the simulated switch.
#include "zonecim_session.h"

namespace zonetest {
namespace {

constexpr int kVsan = 10;
const std::string kDeviceAliasService = "root/cimv2:VORNA_DeviceAliasService";

class DeleteAndDeviceAliasTest : public ZonecimSession {
  protected:
    // Every association path of the three link classes that names the object.
    std::vector<std::string> links_naming(const std::string &path) {
        std::vector<std::string> links;
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

    std::string member(const std::string &wwn, int active = 0) {
        return kMember + ".InstanceID=\"10^10^" + wwn + "^" + std::to_string(active) + "\"";
    }
    std::string zone(const std::string &name, bool active = false) {
        return named(kZone, kVsan, name, active);
    }
    std::string alias(const std::string &name, bool active = false) {
        return named(kZoneAlias, kVsan, name, active);
    }
};

TEST_F(DeleteAndDeviceAliasTest, DeletedZoneLeavesEveryListingAndLink) {
    const std::string zone_set = named(kZoneSet, kVsan, "prod_a_cfg", false);
    const std::string db_zone = zone("z_db01_array1");
    const std::string web_zone = zone("z_web01_array1");
    const std::string alias_a = alias("array1_ctl_a");
    const std::vector<std::string> own_members = neighbours(db_zone, kMember);
    ASSERT_EQ(own_members.size(), 2u);  // the zone's two pWWNs, held by no other parent

    // Before: the zone is in its zone set, holds two aliases and two members,
    // and is hosted by its VSAN.
    const std::vector<std::string> links = links_naming(db_zone);
    EXPECT_EQ(mentioning(links, kMemberOf).size(), 3u);
    EXPECT_EQ(mentioning(links, kSettingLink).size(), 2u);
    EXPECT_EQ(mentioning(links, kHostedLink).size(), 1u);

    remove(db_zone);

    EXPECT_FALSE(listed(names(kZone), db_zone));
    EXPECT_EQ(links_naming(db_zone), std::vector<std::string>{});
    EXPECT_EQ(mentioning(instances(kZone), db_zone), std::vector<std::string>{});
    const Outcome gone = zonecim({"gi", db_zone});
    EXPECT_EQ(gone.status, 1);
    EXPECT_NE(gone.err.find("CIM_ERR_NOT_FOUND"), std::string::npos) << gone.err;
    for (const std::string &m : own_members) EXPECT_FALSE(listed(names(kMember), m));

    // What the zone held or was held by stays; so does its active copy.
    EXPECT_FALSE(listed(neighbours(zone_set, kZone), db_zone));
    EXPECT_TRUE(listed(neighbours(zone_set, kZone), web_zone));
    for (const std::string &a : {alias_a, alias("array1_ctl_b")})
        EXPECT_TRUE(listed(names(kZoneAlias), a)) << a;
    EXPECT_EQ(neighbours(web_zone, kZoneAlias), std::vector<std::string>{alias_a});
    EXPECT_TRUE(listed(names(kZone), active_copy(db_zone)));
    EXPECT_EQ(neighbours(active_copy(db_zone), kMember).size(), 2u);
}

TEST_F(DeleteAndDeviceAliasTest, DeletingLinksRemovesOneMembershipOnly) {
    const std::string service = zone_service(kVsan);
    const std::string zone_set = named(kZoneSet, kVsan, "prod_a_cfg", false);
    const std::string db_zone = zone("z_db01_array1");
    const std::string web_zone = zone("z_web01_array1");
    const std::string alias_a = alias("array1_ctl_a");
    const std::string alias_b = alias("array1_ctl_b");
    const std::string held = member("31:00:00:00:00:4c:a1:b2");
    const std::string sibling = member("31:00:00:00:00:4c:a1:b3");

    // The member joins a second zone and an alias: three parents.
    for (const std::string &parent : {web_zone, alias_b})
        change(service, "AddZoneMembershipSettingData.SystemSpecificCollection=" + parent +
                            ",ZoneMembershipSettingData=" + held);
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
    EXPECT_EQ(mentioning(names(kSettingLink), held), std::vector<std::string>{});
    EXPECT_EQ(neighbours(db_zone, kMember), std::vector<std::string>{sibling});
    EXPECT_EQ(neighbours(alias_b, kMember).size(), 1u);
    EXPECT_TRUE(listed(names(kMember), active_copy(held)));

    // A (zone set, zone) link goes; the zone stays, outside the set.
    remove(link_between(kMemberOf, zone_set, web_zone));
    EXPECT_FALSE(listed(neighbours(zone_set, kZone), web_zone));
    EXPECT_TRUE(listed(neighbours(zone_set, kZone), db_zone));
    EXPECT_TRUE(listed(names(kZone), web_zone));
    EXPECT_EQ(neighbours(web_zone, kZoneSet), std::vector<std::string>{});
    EXPECT_EQ(mentioning(names(kHostedLink), web_zone).size(), 1u);

    // A (zone, alias) link goes; the alias stays in its other zone.
    remove(link_between(kMemberOf, db_zone, alias_a));
    EXPECT_EQ(neighbours(db_zone, kZoneAlias), std::vector<std::string>{alias_b});
    EXPECT_EQ(neighbours(alias_a, kZone), std::vector<std::string>{web_zone});
    EXPECT_TRUE(listed(names(kZoneAlias), alias_a));
}

TEST_F(DeleteAndDeviceAliasTest, RefusedDeletionsChangeNothing) {
    const std::string active_set = named(kZoneSet, kVsan, "prod_a_cfg", true);
    const std::string active_zone = zone("z_db01_array1", true);
    const std::string backup_zone = zone("z_backup01_tape1");
    const std::string editable_member = member("31:00:00:00:00:4c:a1:b2");
    const std::string not_modifiable =
        "Cim: (4) CIM_ERR_INVALID_PARAMETER: cannot modify active zoning object!";
    const std::string bad_parent = "Invalid parent objectpath of CIM_MemberOfCollection!";
    const std::vector<std::pair<std::string, std::string>> refusals = {
        {active_zone, not_modifiable},
        {alias("array1_ctl_a", true), not_modifiable},
        {link_between(kMemberOf, active_set, active_zone), bad_parent},
        {link_between(kSettingLink, active_zone, member("31:00:00:00:00:4c:a1:b2", 1)), bad_parent},
        {member("31:00:00:00:00:4c:a1:b2", 1), "Cim: (1) CIM_ERR_FAILED: Unknown Error"},
        // Objects and links the switch doesn't have: its own answer.
        {kZone + ".InstanceID=\"10^999^0\"", "Object not found"},
        {kMemberOf + ".Collection=" + backup_zone + ",Member=" + alias("array1_ctl_a"),
         "Object not found"},
        {kSettingLink + ".ManagedElement=" + backup_zone + ",SettingData=" + editable_member,
         "Object not found"},
        // A link whose member is named before its parent is no link.
        {kSettingLink + ".SettingData=" + editable_member +
             ",ManagedElement=" + zone("z_db01_array1"),
         "Invalid objectpath of CIM_ElementSettingData!"},
    };
    for (const auto &[path, reason] : refusals) {
        SCOPED_TRACE(path);
        refused({"di", path}, reason);
    }
    EXPECT_TRUE(listed(neighbours(active_set, kZone), active_zone));
}

TEST_F(DeleteAndDeviceAliasTest, DeviceAliasIsCreatedFoundAndRemoved) {
    const std::string alias = kDeviceAlias + ".InstanceID=\"21:00:00:24:ff:4c:a1:01\"";
    const std::vector<std::string> before = names(kDeviceAlias);
    ASSERT_FALSE(before.empty());
    ASSERT_FALSE(listed(before, alias));

    change(kDeviceAliasService,
           "CreateDeviceAlias.DeviceAliasName=\"flow_host0\",PWWN=\"21:00:00:24:FF:4C:A1:01\"");

    const std::vector<std::string> after = names(kDeviceAlias);
    EXPECT_EQ(after.size(), before.size() + 1);
    EXPECT_TRUE(listed(after, alias));
    EXPECT_EQ(
        mentioning(instances(kDeviceAlias), alias + " "),
        std::vector<std::string>{alias + " InstanceID=\"21:00:00:24:ff:4c:a1:01\",ElementName="
                                         "\"flow_host0\",PWWN=\"21:00:00:24:ff:4c:a1:01\""});
    // getInstance by the pWWN, however the pWWN is spelt.
    for (const char *pwwn : {"21:00:00:24:ff:4c:a1:01", "21000024FF4CA101"}) {
        const Outcome one = zonecim({"gi", kDeviceAlias + ".InstanceID=\"" + pwwn + "\""});
        EXPECT_EQ(one.status, 0) << one.err;
        EXPECT_NE(one.out.find("ElementName=\"flow_host0\""), std::string::npos) << one.out;
    }
    // The zone service takes the device-alias methods as well.
    change(zone_service(kVsan),
           "CreateDeviceAlias.DeviceAliasName=\"flow_host1\",PWWN=\"21:00:00:24:ff:4c:a1:02\"");
    EXPECT_EQ(names(kDeviceAlias).size(), before.size() + 2);

    change(kDeviceAliasService, "RemoveDeviceAlias.DeviceAliasName=\"flow_host0\"");
    change(zone_service(kVsan), "RemoveDeviceAlias.DeviceAliasName=\"flow_host1\"");
    EXPECT_EQ(names(kDeviceAlias), before);
    EXPECT_EQ(mentioning(instances(kDeviceAlias), "flow_host"), std::vector<std::string>{});
    // getInstance of the freed pWWN no longer carries the name.
    EXPECT_EQ(zonecim({"gi", alias}).out.find("flow_host0"), std::string::npos);

    // Removing it again: the database's own answer, nothing changed.
    EXPECT_EQ(invoke(kDeviceAliasService, "RemoveDeviceAlias.DeviceAliasName=\"flow_host0\"").text,
              "Object not found");
    EXPECT_EQ(names(kDeviceAlias), before);
}

TEST_F(DeleteAndDeviceAliasTest, RefusedDeviceAliasesChangeNothing) {
    const std::string before = fabric_dump();
    const std::string create = "CreateDeviceAlias.DeviceAliasName=";
    const std::pair<std::string, std::string> refusals[] = {
        // pWWNs that aren't eight bytes of hexadecimal pairs (which ones are
        // is the switch's own test).
        {create + "\"flow_host0\",PWWN=\"21:00:00:zz:ff:4c:a1:01\"", "Unknown error"},
        {create + "\"flow_host0\",PWWN=\"21:00:00:24:ff:4c:a1:01:02\"", "Unknown error"},
        // A name or a pWWN that is taken: the switch's code 4.
        {create + "\"db01_hba0\",PWWN=\"21:00:00:24:ff:4c:a1:01\"", "Zone Already Present"},
        {create + "\"flow_host0\",PWWN=\"31:00:00:00:00:4c:a1:b2\"", "Zone Already Present"},
        // Names the switch doesn't accept.
        {create + "\"\",PWWN=\"21:00:00:24:ff:4c:a1:01\"", "Invalid name"},
        {create + "\"flow host\",PWWN=\"21:00:00:24:ff:4c:a1:01\"", "Invalid name"},
    };
    for (const auto &[call, text] : refusals) {
        SCOPED_TRACE(call);
        EXPECT_EQ(invoke(kDeviceAliasService, call).text, text);
        EXPECT_EQ(fabric_dump(), before);
    }

    // zonecim prints the last return value, the dispatcher's text of the
    // code; the one the handler hands over first is the switch's own text.
    cmpihost::Request request;
    CMPIArgs *in = method_args(request, {{"DeviceAliasName", CMPI_string, "db01_hba0"},
                                         {"PWWN", CMPI_string, "21:00:00:24:ff:4c:a1:01"}});
    cmpihost::Status status;
    {
        QuietStdout quiet;
        status = provider().invokeMethod(request, class_path(request, "VORNA_DeviceAliasService"),
                                         "CreateDeviceAlias", in, request.newArgs());
    }
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    std::vector<std::string> values;
    for (const cmpihost::Delivery &d : request.deliveries())
        if (d.kind == cmpihost::Delivery::Kind::Data) values.push_back(cmpihost::dataText(d.data));
    EXPECT_EQ(values, (std::vector<std::string>{"Object already present", "Zone Already Present"}));
    EXPECT_EQ(fabric_dump(), before);
}

}  // namespace
}  // namespace zonetest
