// zonecim's reading of the command line and its printing, without a
// provider: wbemcli's path and method syntax, the typing of keys and method
// arguments by the class schema (arguments reach the provider in the order
// the method declares them, since the provider reads them by position), and
// wbemcli's text forms of paths, instances, method results and statuses.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/cmpihost.h"
#include "schema/schema.h"
#include "zonecim/marshal.h"
#include "zonecim/path_syntax.h"
#include "zonecim/render.h"

namespace {

using zonecim::Marshaller;
using zonecim::TextPath;
using zonecim::TextValue;
using zonecim::UsageError;

const zoneschema::Schema &schema() {
    static const zoneschema::Schema loaded =
        zoneschema::Schema::load(std::string(ZONE_SOURCE_DIR) + "/schema/zoning_classes.json");
    return loaded;
}

// One argument as the provider will see it: its position is its index.
struct SeenArgument {
    std::string name;
    CMPIType type;
    std::string value;  // text, number, TRUE/FALSE or the path of a reference
};

std::vector<SeenArgument> arguments_of(const CMPIArgs *args) {
    std::vector<SeenArgument> seen;
    const unsigned count = args->ft->getArgCount(args, nullptr);
    for (unsigned i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData data = args->ft->getArgAt(args, i, &name, nullptr);
        seen.push_back({cmpihost::text(name), data.type, zonecim::bare_value_text(data)});
    }
    return seen;
}

// Keys of a path as name=type:value, in order.
std::vector<std::string> keys_of(const CMPIObjectPath *path) {
    std::vector<std::string> keys;
    const unsigned count = path->ft->getKeyCount(path, nullptr);
    for (unsigned i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData data = path->ft->getKeyAt(path, i, &name, nullptr);
        keys.push_back(cmpihost::text(name) + "=" + zonecim::param_type_text(data.type) + ":" +
                       zonecim::bare_value_text(data));
    }
    return keys;
}

TEST(ZonecimSyntaxTest, PathsReadAsWbemcliWritesThem) {
    const auto scope = zonecim::schema_scope(schema());

    const TextPath plain =
        zonecim::parse_path("http://user:pw@host:5988/root/cimv2:VORNA_Zone", scope);
    EXPECT_EQ(plain.name_space, "root/cimv2");
    EXPECT_EQ(plain.class_name, "VORNA_Zone");
    EXPECT_TRUE(plain.keys.empty());

    const TextPath quoted =
        zonecim::parse_path(R"(VORNA_ZoneSet.InstanceID="a \"b\", c:d=e\\f")", scope);
    EXPECT_EQ(quoted.name_space, "");
    ASSERT_EQ(quoted.keys.size(), 1u);
    EXPECT_EQ(quoted.keys[0].value.kind, TextValue::Kind::Quoted);
    EXPECT_EQ(quoted.keys[0].value.text, "a \"b\", c:d=e\\f");

    const TextPath bare =
        zonecim::parse_path("root/cimv2:VORNA_ZoneService.Name=10,Flag=true", scope);
    ASSERT_EQ(bare.keys.size(), 2u);
    EXPECT_EQ(bare.keys[0].value.kind, TextValue::Kind::Bare);
    EXPECT_EQ(bare.keys[0].value.text, "10");

    // An association path whose references carry several keys: the schema
    // says that Dependent belongs to the association, not to the VSAN.
    const TextPath link = zonecim::parse_path(
        R"(root/cimv2:VORNA_HostedService.Antecedent=root/cimv2:VORNA_Vsan.CreationClassName="VORNA_Vsan",Name="10",)"
        R"(Dependent=VORNA_ZoneService.SystemCreationClassName="VORNA_Vsan",SystemName="10",CreationClassName="VORNA_ZoneService",Name="10")",
        scope);
    ASSERT_EQ(link.keys.size(), 2u);
    EXPECT_EQ(link.keys[0].name, "Antecedent");
    ASSERT_EQ(link.keys[0].value.kind, TextValue::Kind::Path);
    EXPECT_EQ(link.keys[0].value.path->name_space, "root/cimv2");
    EXPECT_EQ(link.keys[0].value.path->keys.size(), 2u);
    EXPECT_EQ(link.keys[1].name, "Dependent");
    ASSERT_EQ(link.keys[1].value.kind, TextValue::Kind::Path);
    EXPECT_EQ(link.keys[1].value.path->class_name, "VORNA_ZoneService");
    EXPECT_EQ(link.keys[1].value.path->keys.size(), 4u);

    // A class the schema doesn't know: a nested path keeps the names that
    // are keys of its own class, and gives back the rest.
    const TextPath unknown = zonecim::parse_path(
        R"(X_Link.Left=VORNA_Vsan.CreationClassName="VORNA_Vsan",Name="1",Right=5)", scope);
    ASSERT_EQ(unknown.keys.size(), 2u);
    EXPECT_EQ(unknown.keys[0].value.path->keys.size(), 2u);
    EXPECT_EQ(unknown.keys[1].name, "Right");

    // Without any schema a nested path keeps only its first key.
    const TextPath blind =
        zonecim::parse_path(R"(X_Link.Left=Y.A="1",B="2")", zonecim::blind_scope());
    ASSERT_EQ(blind.keys.size(), 2u);
    EXPECT_EQ(blind.keys[1].name, "B");

    struct Bad {
        const char *text;
        const char *message;
    };
    for (const Bad &bad : std::vector<Bad>{
             {"", "expected a class name"},
             {"root/cimv2:", "expected a class name"},
             {"http://host:5988", "expected a namespace after the host"},
             {"VORNA_Zone.", "expected a name"},
             {"VORNA_Zone.InstanceID", "expected '='"},
             {R"(VORNA_Zone.InstanceID="1^2^0)", "unterminated quoted string"},
             {R"(VORNA_Zone.InstanceID="1"x)", "unexpected 'x'"},
             {R"(VORNA_Zone.InstanceID="1",)", "expected a name"},
             {"VORNA Zone", "expected '.'"},
             {"root cimv2:VORNA_Zone", "in the namespace"},
         }) {
        SCOPED_TRACE(bad.text);
        try {
            zonecim::parse_path(bad.text, scope);
            ADD_FAILURE() << "accepted";
        } catch (const UsageError &e) {
            EXPECT_NE(std::string(e.what()).find(bad.message), std::string::npos) << e.what();
        }
    }

    EXPECT_EQ(zonecim::parse_property_list(" InstanceID , ElementName"),
              (std::vector<std::string>{"InstanceID", "ElementName"}));
    EXPECT_TRUE(zonecim::parse_property_list("").empty());
    EXPECT_THROW(zonecim::parse_property_list("A,,B"), UsageError);
    EXPECT_THROW(zonecim::parse_property_list("A B"), UsageError);
}

TEST(ZonecimMarshalTest, MethodArgumentsReachTheProviderInDeclaredOrderAndType) {
    cmpihost::Request request;
    const Marshaller marshaller(schema(), "root/cimv2");
    const CMPIObjectPath *service =
        marshaller.object_path(R"(interop/x:VORNA_ZoneService.Name="10")");

    struct Case {
        const char *call;
        std::vector<SeenArgument> expected;
    };
    const std::vector<Case> cases = {
        {R"(CreateZoneSet.ZoneSetName="zs1")", {{"ZoneSetName", CMPI_string, "zs1"}}},
        // Command-line order is not the provider's order.
        {R"(CreateZone.ZoneSubType=4,ZoneName="z 1",ZoneType=2)",
         {{"ZoneName", CMPI_string, "z 1"},
          {"ZoneType", CMPI_uint16, "2"},
          {"ZoneSubType", CMPI_uint16, "4"}}},
        {R"(AddZone.Zone=VORNA_Zone.InstanceID="10^2^0",ZoneSet=VORNA_ZoneSet.InstanceID="10^1^0")",
         {{"ZoneSet", CMPI_ref, R"(interop/x:VORNA_ZoneSet.InstanceID="10^1^0")"},
          {"Zone", CMPI_ref, R"(interop/x:VORNA_Zone.InstanceID="10^2^0")"}}},
        {R"(ActivateZoneSet.Activate=false,ZoneSet=root/cimv2:VORNA_ZoneSet.InstanceID="10^1^0")",
         {{"ZoneSet", CMPI_ref, R"(root/cimv2:VORNA_ZoneSet.InstanceID="10^1^0")"},
          {"Activate", CMPI_boolean, "FALSE"}}},
        {R"(CreateZoneMembershipSettingData.SystemSpecificCollection="VORNA_Zone.InstanceID=\"10^2^0\"",ConnectivityMemberID=2100001122334455,ConnectivityMemberType=2)",
         {{"ConnectivityMemberType", CMPI_uint16, "2"},
          {"ConnectivityMemberID", CMPI_string, "2100001122334455"},
          {"SystemSpecificCollection", CMPI_ref, R"(interop/x:VORNA_Zone.InstanceID="10^2^0")"}}},
        // Names are matched without regard to case and passed as written.
        {R"(CreateDeviceAlias.pwwn="21:00:00:11:22:33:44:55",devicealiasname=host1)",
         {{"devicealiasname", CMPI_string, "host1"},
          {"pwwn", CMPI_string, "21:00:00:11:22:33:44:55"}}},
        // Argument counts are the provider's to check.
        {"CreateZone.ZoneName=z1", {{"ZoneName", CMPI_string, "z1"}}},
        {"CreateZoneSet", {}},
        // Method names go to the provider as written (it compares them
        // exactly); a method the class doesn't declare is sent without
        // arguments, for the provider to refuse.
        {"createzoneset", {}},
        {"NoSuchMethod", {}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.call);
        const auto call = marshaller.method_call(service, c.call);
        EXPECT_EQ(call.method, std::string(c.call).substr(0, std::string(c.call).find('.')));
        const auto seen = arguments_of(call.in);
        ASSERT_EQ(seen.size(), c.expected.size());
        for (std::size_t i = 0; i < seen.size(); ++i) {
            EXPECT_EQ(seen[i].name, c.expected[i].name) << "position " << i;
            EXPECT_EQ(seen[i].type, c.expected[i].type) << "position " << i;
            EXPECT_EQ(seen[i].value, c.expected[i].value) << "position " << i;
        }
    }
}

TEST(ZonecimMarshalTest, ArgumentsTheMethodCanNotTakeAreRefused) {
    cmpihost::Request request;
    const Marshaller marshaller(schema(), "root/cimv2");
    const CMPIObjectPath *service =
        marshaller.object_path(R"(root/cimv2:VORNA_ZoneService.Name="10")");
    const CMPIObjectPath *dmtf_service =
        marshaller.object_path(R"(root/cimv2:CIM_ZoneService.Name="10")");
    const CMPIObjectPath *unknown = marshaller.object_path(R"(root/cimv2:X_Service.Name="10")");

    struct Case {
        const CMPIObjectPath *target;
        const char *call;
        const char *message;
    };
    const std::vector<Case> cases = {
        {service, R"(CreateZoneSet.Name="zs1")", "has no parameter Name"},
        {service, R"(CreateZoneSet.ZoneSetName="a",ZoneSet=VORNA_ZoneSet.InstanceID="1^1^0")",
         "ZoneSet is an output parameter"},
        {service, R"(CreateZoneSet.ZoneSetName="a",zonesetname="b")", "given twice"},
        {service, "CreateZone.ZoneName=z,ZoneType=70000", "'70000' is no uint16"},
        {service, "CreateZone.ZoneName=z,ZoneType=-1", "'-1' is no uint16"},
        {service, "CreateZone.ZoneName=z,ZoneType=2x", "'2x' is no uint16"},
        {service, R"(ActivateZoneSet.Activate=yes)", "neither true nor false"},
        {service, R"(AddZone.ZoneSet="zs1")", "is no object path"},
        {service, R"(CreateZoneSet.ZoneSetName=VORNA_Zone.InstanceID="1")", "not a reference"},
        {service, "NoSuchMethod.A=1", "declares no method NoSuchMethod"},
        {dmtf_service, R"(CreateDeviceAlias.DeviceAliasName="a")", "declares no method"},
        {unknown, R"(CreateZoneSet.ZoneSetName="zs1")", "declares no method"},
        {service, "CreateZoneSet.", "expected a name"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.call);
        try {
            marshaller.method_call(c.target, c.call);
            ADD_FAILURE() << "accepted";
        } catch (const UsageError &e) {
            EXPECT_NE(std::string(e.what()).find(c.message), std::string::npos) << e.what();
        }
    }
}

TEST(ZonecimMarshalTest, PathKeysAreTypedByTheSchemaOrByTheirSpelling) {
    cmpihost::Request request;
    const Marshaller marshaller(schema(), "root/cimv2");

    // A string key stays text however it is written; the namespace defaults.
    const CMPIObjectPath *service = marshaller.object_path("VORNA_ZoneService.Name=10");
    EXPECT_EQ(cmpihost::text(service->ft->getNameSpace(service, nullptr)), "root/cimv2");
    EXPECT_EQ(keys_of(service), (std::vector<std::string>{"Name=string:10"}));

    // Unknown keys keep the type their spelling gives; class and key names
    // keep the user's spelling, so the provider's own checks can be tried.
    const CMPIObjectPath *odd = marshaller.object_path(
        R"(vorna_zone.Count=-5,Big=18446744073709551615,Flag=TRUE,Text="7",Word=abc,instanceid="1^2^0")");
    EXPECT_EQ(cmpihost::text(odd->ft->getClassName(odd, nullptr)), "vorna_zone");
    EXPECT_EQ(keys_of(odd),
              (std::vector<std::string>{"Count=sint64:-5", "Big=uint64:18446744073709551615",
                                        "Flag=boolean:TRUE", "Text=string:7", "Word=string:abc",
                                        "instanceid=string:1^2^0"}));

    // Reference keys become references, nested paths taking the outer
    // namespace, also when quoted.
    const CMPIObjectPath *link = marshaller.object_path(
        R"(ns1:VORNA_ZoneMemberOfCollection.Collection=VORNA_ZoneSet.InstanceID="1^1^0",)"
        R"(Member="other:VORNA_Zone.InstanceID=\"1^2^0\"")");
    EXPECT_EQ(keys_of(link), (std::vector<std::string>{
                                 R"(Collection=reference:ns1:VORNA_ZoneSet.InstanceID="1^1^0")",
                                 R"(Member=reference:other:VORNA_Zone.InstanceID="1^2^0")"}));

    EXPECT_THROW(marshaller.object_path(R"(VORNA_HostedService.Antecedent="10")"), UsageError);
    EXPECT_THROW(marshaller.object_path(R"(VORNA_Zone.InstanceID=VORNA_Zone.InstanceID="1")"),
                 UsageError);
}

TEST(ZonecimRenderTest, PathsAndInstancesPrintAsWbemcliPrintsThemAndReadBack) {
    cmpihost::Request request;
    const Marshaller marshaller(schema(), "root/cimv2");

    // What zonecim prints for a path it reads back as the same path.
    const std::string link_text =
        R"(root/cimv2:VORNA_HostedService.Antecedent=root/cimv2:VORNA_Vsan.CreationClassName="VORNA_Vsan",Name="10",)"
        R"(Dependent=root/cimv2:VORNA_ZoneService.SystemCreationClassName="VORNA_Vsan",SystemName="10",CreationClassName="VORNA_ZoneService",Name="10")";
    const CMPIObjectPath *link = marshaller.object_path(link_text);
    EXPECT_EQ(zonecim::path_text(link), link_text);
    EXPECT_EQ(zonecim::path_text(marshaller.object_path(zonecim::path_text(link))), link_text);

    const CMPIObjectPath *path = marshaller.object_path(R"(VORNA_Zone.InstanceID="1^2^0")");
    CMPIStatus rc{CMPI_RC_OK, nullptr};
    CMPIInstance *instance = cmpihost::broker()->eft->newInstance(cmpihost::broker(), path, &rc);
    ASSERT_NE(instance, nullptr);
    auto set = [&](const char *name, CMPIValue value, CMPIType type) {
        instance->ft->setProperty(instance, name, &value, type);
    };
    instance->ft->setProperty(instance, "ElementName",
                              reinterpret_cast<const CMPIValue *>("say \"hi\", ok"), CMPI_chars);
    instance->ft->setProperty(instance, "Empty", reinterpret_cast<const CMPIValue *>(""),
                              CMPI_chars);
    CMPIValue value{};
    value.boolean = 1;
    set("Active", value, CMPI_boolean);
    value.uint16 = 2;
    set("ZoneType", value, CMPI_uint16);
    value.sint32 = -7;
    set("Offset", value, CMPI_sint32);
    value.ref = const_cast<CMPIObjectPath *>(path);
    set("Self", value, CMPI_ref);
    CMPIArray *names = cmpihost::broker()->eft->newArray(cmpihost::broker(), 2, CMPI_string, &rc);
    names->ft->setElementAt(names, 0, reinterpret_cast<const CMPIValue *>("a"), CMPI_chars);
    names->ft->setElementAt(names, 1, reinterpret_cast<const CMPIValue *>("b,c"), CMPI_chars);
    value.array = names;
    set("Names", value, CMPI_stringA);
    CMPIArray *none = cmpihost::broker()->eft->newArray(cmpihost::broker(), 0, CMPI_uint16, &rc);
    value.array = none;
    set("None", value, CMPI_uint16A);
    value = CMPIValue{};
    set("Unset", value, CMPI_null);

    EXPECT_EQ(zonecim::instance_text(instance),
              R"(root/cimv2:VORNA_Zone.InstanceID="1^2^0" InstanceID="1^2^0",)"
              R"(ElementName="say \"hi\", ok",Empty="",)"
              R"(Active=TRUE,ZoneType=2,Offset=-7,Self=root/cimv2:VORNA_Zone.InstanceID="1^2^0",)"
              R"(Names="a","b,c",None=,Unset=)");

    // cm: the return value and the outputs, none of them quoted.
    CMPIArgs *out = request.newArgs();
    cmpihost::addReferenceArg(out, "ZoneSet", path);
    cmpihost::addStringArg(out, "Note", "two words");
    CMPIData success{};
    success.type = CMPI_chars;
    success.value.chars = const_cast<char *>("Success");
    const CMPIObjectPath *service = marshaller.object_path(R"(VORNA_ZoneService.Name="10")");
    EXPECT_EQ(
        zonecim::method_text(service, "CreateZoneSet", &success, out),
        R"(root/cimv2:VORNA_ZoneService.Name="10" CreateZoneSet: Success, )"
        R"(ZoneSet (reference): root/cimv2:VORNA_Zone.InstanceID="1^2^0", Note (string): two words)");
    EXPECT_EQ(zonecim::method_text(service, "AddZone", nullptr, nullptr),
              R"(root/cimv2:VORNA_ZoneService.Name="10" AddZone: )");

    EXPECT_EQ(zonecim::status_text(CMPI_RC_ERR_NOT_FOUND, "Could not find or construct instance"),
              "Cim: (6) CIM_ERR_NOT_FOUND: Could not find or construct instance");
    EXPECT_EQ(zonecim::status_text(CMPI_RC_ERR_METHOD_NOT_FOUND, ""),
              "Cim: (17) CIM_ERR_METHOD_NOT_FOUND: ");
    EXPECT_EQ(zonecim::status_text(CMPI_RC_ERROR, "x"),
              "Cim: (200) Invalid/Unknown CIM Error Code: x");
}

}  // namespace
