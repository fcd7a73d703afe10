// Deleting zoning objects and their links, and the device-alias methods,
// through the zonecim command against the simulated switch.
#include "zonecim_session.h"

namespace zonetest {
namespace {

constexpr int kVsan = 10;

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

    void add_member(const std::string &service, const std::string &parent,
                    const std::string &member) {
        change(service, "AddZoneMembershipSettingData.SystemSpecificCollection=" + parent +
                            ",ZoneMembershipSettingData=" + member);
    }

    // deleteInstance refused with the given reason; the database as before.
    void refused_delete(const std::string &path, const std::string &reason) {
        const std::string before = database();
        const ZonecimRun run = zonecim({"di", path});
        EXPECT_NE(run.status, 0) << path;
        EXPECT_EQ(run.out, "") << path;
        EXPECT_NE(run.err.find(reason), std::string::npos) << path << "\n" << run.err;
        EXPECT_EQ(database(), before) << path;
    }
};

TEST_F(DeleteAndDeviceAliasTest, DeletedZoneLeavesEveryListingAndLink) {
    const std::string zone_set = named(kZoneSet, kVsan, "prod_a_cfg", false);
    const std::string zone = named(kZone, kVsan, "z_db01_array1", false);
    const std::string other_zone = named(kZone, kVsan, "z_web01_array1", false);
    const std::string alias_a = named(kZoneAlias, kVsan, "array1_ctl_a", false);
    const std::string alias_b = named(kZoneAlias, kVsan, "array1_ctl_b", false);
    const std::vector<std::string> own_members = neighbours(zone, kMember);
    ASSERT_EQ(own_members.size(), 2u);  // the zone's two pWWNs, held by no other parent

    // Before: the zone is in its zone set, holds two aliases and two members,
    // and is hosted by its VSAN.
    EXPECT_EQ(mentioning(links_naming(zone), kMemberOf).size(), 3u);
    EXPECT_EQ(mentioning(links_naming(zone), kSettingLink).size(), 2u);
    EXPECT_EQ(mentioning(links_naming(zone), kHostedLink).size(), 1u);

    remove(zone);

    EXPECT_FALSE(listed(names(kZone), zone));
    EXPECT_EQ(links_naming(zone), std::vector<std::string>{});
    EXPECT_EQ(mentioning(instances(kZone), zone), std::vector<std::string>{});
    const ZonecimRun gone = zonecim({"gi", zone});
    EXPECT_EQ(gone.status, 1);
    EXPECT_NE(gone.err.find("CIM_ERR_NOT_FOUND"), std::string::npos) << gone.err;
    EXPECT_FALSE(listed(neighbours(zone_set, kZone), zone));
    for (const std::string &member : own_members) EXPECT_FALSE(listed(names(kMember), member));

    // What the zone held or was held by stays; so does its active copy.
    EXPECT_TRUE(listed(neighbours(zone_set, kZone), other_zone));
    EXPECT_TRUE(listed(names(kZoneAlias), alias_a));
    EXPECT_TRUE(listed(names(kZoneAlias), alias_b));
    EXPECT_EQ(neighbours(other_zone, kZoneAlias), std::vector<std::string>{alias_a});
    EXPECT_TRUE(listed(names(kZone), active_copy(zone)));
    EXPECT_EQ(neighbours(active_copy(zone), kMember).size(), 2u);
}

TEST_F(DeleteAndDeviceAliasTest, DeletingLinksRemovesOneMembershipOnly) {
    const std::string service = zone_service(kVsan);
    const std::string zone_set = named(kZoneSet, kVsan, "prod_a_cfg", false);
    const std::string db_zone = named(kZone, kVsan, "z_db01_array1", false);
    const std::string web_zone = named(kZone, kVsan, "z_web01_array1", false);
    const std::string alias_a = named(kZoneAlias, kVsan, "array1_ctl_a", false);
    const std::string alias_b = named(kZoneAlias, kVsan, "array1_ctl_b", false);
    const std::string member = kMember + ".InstanceID=\"10^10^31:00:00:00:00:4c:a1:b2^0\"";
    const std::string sibling = kMember + ".InstanceID=\"10^10^31:00:00:00:00:4c:a1:b3^0\"";

    // The member joins a second zone and an alias: three parents.
    add_member(service, web_zone, member);
    add_member(service, alias_b, member);
    EXPECT_EQ(mentioning(names(kSettingLink), member).size(), 3u);

    // An element-setting-data link goes; the member stays in its other parents.
    remove(link_between(kSettingLink, web_zone, member));
    EXPECT_FALSE(listed(neighbours(web_zone, kMember), member));
    EXPECT_TRUE(listed(neighbours(db_zone, kMember), member));
    EXPECT_TRUE(listed(neighbours(alias_b, kMember), member));
    EXPECT_TRUE(listed(names(kMember), member));
    EXPECT_EQ(mentioning(names(kSettingLink), member).size(), 2u);

    // The member itself goes from every zone and alias at once; its
    // neighbours and its active copy stay.
    remove(member);
    EXPECT_FALSE(listed(names(kMember), member));
    EXPECT_EQ(mentioning(names(kSettingLink), member), std::vector<std::string>{});
    EXPECT_EQ(neighbours(db_zone, kMember), std::vector<std::string>{sibling});
    EXPECT_EQ(neighbours(alias_b, kMember).size(), 1u);
    EXPECT_TRUE(listed(names(kMember), active_copy(member)));

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
    const std::string active_zone = named(kZone, kVsan, "z_db01_array1", true);
    const std::string active_alias = named(kZoneAlias, kVsan, "array1_ctl_a", true);
    const std::string active_member = kMember + ".InstanceID=\"10^10^31:00:00:00:00:4c:a1:b2^1\"";
    const std::string not_modifiable =
        "Cim: (4) CIM_ERR_INVALID_PARAMETER: cannot modify active zoning object!";

    refused_delete(active_zone, not_modifiable);
    refused_delete(active_set, not_modifiable);
    refused_delete(active_alias, not_modifiable);
    refused_delete(link_between(kMemberOf, active_set, active_zone),
                   "Invalid parent objectpath of CIM_MemberOfCollection!");
    refused_delete(link_between(kSettingLink, active_zone, active_member),
                   "Invalid parent objectpath of CIM_MemberOfCollection!");
    refused_delete(active_member, "Cim: (1) CIM_ERR_FAILED: Unknown Error");
    // Objects and links the switch doesn't have: its own answer.
    const std::string zone_set = named(kZoneSet, kVsan, "prod_a_cfg", false);
    const std::string backup_zone = named(kZone, kVsan, "z_backup01_tape1", false);
    const std::string alias = named(kZoneAlias, kVsan, "array1_ctl_a", false);
    const std::string editable_member = kMember + ".InstanceID=\"10^10^31:00:00:00:00:4c:a1:b2^0\"";
    refused_delete(kZone + ".InstanceID=\"10^999^0\"", "Object not found");
    refused_delete(
        kMemberOf + ".Collection=" + zone_set + ",Member=" + kZone + ".InstanceID=\"10^999^0\"",
        "Object not found");
    refused_delete(kMemberOf + ".Collection=" + backup_zone + ",Member=" + alias,
                   "Object not found");
    refused_delete(
        kSettingLink + ".ManagedElement=" + backup_zone + ",SettingData=" + editable_member,
        "Object not found");
    // A link whose member is named before its parent is no link.
    refused_delete(kSettingLink + ".SettingData=" + editable_member +
                       ",ManagedElement=" + named(kZone, kVsan, "z_db01_array1", false),
                   "Invalid objectpath of CIM_ElementSettingData!");

    EXPECT_TRUE(listed(names(kZone), active_zone));
    EXPECT_TRUE(listed(neighbours(active_set, kZone), active_zone));
}

TEST_F(DeleteAndDeviceAliasTest, DeviceAliasIsCreatedFoundAndRemoved) {
    const std::string service = "root/cimv2:VORNA_DeviceAliasService";
    const std::string alias = kDeviceAlias + ".InstanceID=\"21:00:00:24:ff:4c:a1:01\"";
    const std::vector<std::string> before = names(kDeviceAlias);
    ASSERT_FALSE(before.empty());
    ASSERT_FALSE(listed(before, alias));

    change(service,
           "CreateDeviceAlias.DeviceAliasName=\"flow_host0\",PWWN=\"21:00:00:24:FF:4C:A1:01\"");

    const std::vector<std::string> after = names(kDeviceAlias);
    EXPECT_EQ(after.size(), before.size() + 1);
    EXPECT_TRUE(listed(after, alias));
    const std::vector<std::string> described = mentioning(instances(kDeviceAlias), alias + " ");
    ASSERT_EQ(described.size(), 1u);
    EXPECT_NE(described[0].find("ElementName=\"flow_host0\""), std::string::npos) << described[0];
    EXPECT_NE(described[0].find("PWWN=\"21:00:00:24:ff:4c:a1:01\""), std::string::npos)
        << described[0];
    // getInstance by the pWWN, however the pWWN is spelt.
    for (const char *pwwn : {"21:00:00:24:ff:4c:a1:01", "21000024FF4CA101"}) {
        const ZonecimRun one = zonecim({"gi", kDeviceAlias + ".InstanceID=\"" + pwwn + "\""});
        EXPECT_EQ(one.status, 0) << one.err;
        EXPECT_NE(one.out.find("ElementName=\"flow_host0\""), std::string::npos) << one.out;
    }
    // The zone service takes the device-alias methods as well.
    change(zone_service(kVsan),
           "CreateDeviceAlias.DeviceAliasName=\"flow_host1\",PWWN=\"21:00:00:24:ff:4c:a1:02\"");
    EXPECT_EQ(names(kDeviceAlias).size(), before.size() + 2);

    change(service, "RemoveDeviceAlias.DeviceAliasName=\"flow_host0\"");
    change(service, "RemoveDeviceAlias.DeviceAliasName=\"flow_host1\"");
    EXPECT_EQ(names(kDeviceAlias), before);
    EXPECT_EQ(mentioning(instances(kDeviceAlias), "flow_host"), std::vector<std::string>{});
    // getInstance of the freed pWWN no longer carries the name.
    const ZonecimRun freed = zonecim({"gi", alias});
    EXPECT_EQ(freed.out.find("flow_host0"), std::string::npos) << freed.out;

    // Removing it again: the database's own answer, nothing changed.
    EXPECT_EQ(invoke(service, "RemoveDeviceAlias.DeviceAliasName=\"flow_host0\"").text,
              "Object not found");
    EXPECT_EQ(names(kDeviceAlias), before);
}

TEST_F(DeleteAndDeviceAliasTest, RefusedDeviceAliasesChangeNothing) {
    const std::string service = "root/cimv2:VORNA_DeviceAliasService";
    const std::string before = database();
    struct Refusal {
        std::string call;
        std::string text;
    };
    const std::string create = "CreateDeviceAlias.DeviceAliasName=";
    const std::vector<Refusal> refusals = {
        // pWWNs that aren't eight bytes of hexadecimal pairs.
        {create + "\"flow_host0\",PWWN=\"21:00:00:zz:ff:4c:a1:01\"", "Unknown error"},
        {create + "\"flow_host0\",PWWN=\"21:00:00:24:ff:4c:a1\"", "Unknown error"},
        {create + "\"flow_host0\",PWWN=\"21:00:00:24:ff:4c:a1:01:02\"", "Unknown error"},
        {create + "\"flow_host0\",PWWN=\"\"", "Unknown error"},
        // A name or a pWWN that is taken: the switch's code 4.
        {create + "\"db01_hba0\",PWWN=\"21:00:00:24:ff:4c:a1:01\"", "Zone Already Present"},
        {create + "\"flow_host0\",PWWN=\"31:00:00:00:00:4c:a1:b2\"", "Zone Already Present"},
        // Names the switch doesn't accept.
        {create + "\"\",PWWN=\"21:00:00:24:ff:4c:a1:01\"", "Invalid name"},
        {create + "\"flow host\",PWWN=\"21:00:00:24:ff:4c:a1:01\"", "Invalid name"},
    };
    for (const Refusal &refusal : refusals) {
        SCOPED_TRACE(refusal.call);
        EXPECT_EQ(invoke(service, refusal.call).text, refusal.text);
        EXPECT_EQ(database(), before);
    }

    // zonecim prints the last return value, the dispatcher's text of the
    // code; the one the handler hands over first is the switch's own text.
    cmpihost::Request request;
    CMPIArgs *in = request.newArgs();
    cmpihost::addStringArg(in, "DeviceAliasName", "db01_hba0");
    cmpihost::addStringArg(in, "PWWN", "21:00:00:24:ff:4c:a1:01");
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
    EXPECT_EQ(database(), before);
}

}  // namespace
}  // namespace zonetest
