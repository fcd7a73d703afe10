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

using zonecim::TextPath;
using zonecim::UsageError;

const zoneschema::Schema &schema() {
    static const zoneschema::Schema loaded =
        zoneschema::Schema::load(std::string(ZONE_SOURCE_DIR) + "/schema/zoning_classes.json");
    return loaded;
}

// A parsed path as text: namespace:Class, then .Key=value for each key, a
// value "quoted", bare or a {nested path}.
std::string shown(const TextPath &path) {
    std::string text = path.name_space + ":" + path.class_name;
    for (const zonecim::TextBinding &key : path.keys) {
        text += "." + key.name + "=";
        if (key.value.kind == zonecim::TextValue::Kind::Path)
            text += "{" + shown(*key.value.path) + "}";
        else if (key.value.kind == zonecim::TextValue::Kind::Quoted)
            text += "\"" + key.value.text + "\"";
        else
            text += key.value.text;
    }
    return text;
}

// Name=type:value of each key of a path, or argument of a method call, in
// order (an argument's position is its index).
std::string keys_of(const CMPIObjectPath *path) {
    std::string keys;
    for (unsigned i = 0; i < path->ft->getKeyCount(path, nullptr); ++i) {
        CMPIString *name = nullptr;
        const CMPIData data = path->ft->getKeyAt(path, i, &name, nullptr);
        keys += (i ? " " : "") + cmpihost::text(name) + "=" + zonecim::param_type_text(data.type) +
                ":" + zonecim::bare_value_text(data);
    }
    return keys;
}
std::string arguments_of(const CMPIArgs *args) {
    std::string seen;
    for (unsigned i = 0; i < args->ft->getArgCount(args, nullptr); ++i) {
        CMPIString *name = nullptr;
        const CMPIData data = args->ft->getArgAt(args, i, &name, nullptr);
        seen += (i ? " " : "") + cmpihost::text(name) + "=" + zonecim::param_type_text(data.type) +
                ":" + zonecim::bare_value_text(data);
    }
    return seen;
}

// The UsageError message of a call that must throw one.
template <typename Call>
std::string refusal(Call call) {
    try {
        call();
    } catch (const UsageError &e) {
        return e.what();
    }
    return "<accepted>";
}

TEST(ZonecimSyntaxTest, PathsReadAsWbemcliWritesThem) {
    const auto scope = zonecim::schema_scope(schema());
    const std::pair<const char *, const char *> paths[] = {
        {"http://user:pw@host:5988/root/cimv2:VORNA_Zone", "root/cimv2:VORNA_Zone"},
        {R"(VORNA_ZoneSet.InstanceID="a \"b\", c:d=e\\f")",
         R"(:VORNA_ZoneSet.InstanceID="a "b", c:d=e\f")"},
        {"root/cimv2:VORNA_ZoneService.Name=10,Flag=true",
         "root/cimv2:VORNA_ZoneService.Name=10.Flag=true"},
        // An association path whose references carry several keys: the schema
        // says that Dependent belongs to the association, not to the VSAN.
        {R"(root/cimv2:VORNA_HostedService.Antecedent=root/cimv2:VORNA_Vsan.CreationClassName="VORNA_Vsan",Name="10",)"
         R"(Dependent=VORNA_ZoneService.SystemCreationClassName="VORNA_Vsan",SystemName="10",CreationClassName="VORNA_ZoneService",Name="10")",
         R"(root/cimv2:VORNA_HostedService.Antecedent={root/cimv2:VORNA_Vsan.CreationClassName="VORNA_Vsan".Name="10"})"
         R"(.Dependent={:VORNA_ZoneService.SystemCreationClassName="VORNA_Vsan".SystemName="10".CreationClassName="VORNA_ZoneService".Name="10"})"},
        // A class the schema doesn't know: a nested path keeps the names that
        // are keys of its own class, and gives back the rest.
        {R"(X_Link.Left=VORNA_Vsan.CreationClassName="VORNA_Vsan",Name="1",Right=5)",
         R"(:X_Link.Left={:VORNA_Vsan.CreationClassName="VORNA_Vsan".Name="1"}.Right=5)"},
    };
    for (const auto &[text, expected] : paths)
        EXPECT_EQ(shown(zonecim::parse_path(text, scope)), expected);
    // Without any schema a nested path keeps only its first key.
    EXPECT_EQ(shown(zonecim::parse_path(R"(X_Link.Left=Y.A="1",B="2")", zonecim::blind_scope())),
              R"(:X_Link.Left={:Y.A="1"}.B="2")");

    const std::pair<const char *, const char *> bad_paths[] = {
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
    };
    for (const auto &[text, message] : bad_paths)
        EXPECT_NE(refusal([&] { zonecim::parse_path(text, scope); }).find(message),
                  std::string::npos)
            << text;

    EXPECT_EQ(zonecim::parse_property_list(" InstanceID , ElementName"),
              (std::vector<std::string>{"InstanceID", "ElementName"}));
    EXPECT_TRUE(zonecim::parse_property_list("").empty());
    EXPECT_THROW(zonecim::parse_property_list("A,,B"), UsageError);
    EXPECT_THROW(zonecim::parse_property_list("A B"), UsageError);
}

TEST(ZonecimMarshalTest, MethodArgumentsReachTheProviderInDeclaredOrderAndType) {
    cmpihost::Request request;
    const zonecim::Marshaller marshaller(schema(), "root/cimv2");
    const CMPIObjectPath *service =
        marshaller.object_path(R"(interop/x:VORNA_ZoneService.Name="10")");
    const std::pair<const char *, const char *> calls[] = {
        {R"(CreateZoneSet.ZoneSetName="zs1")", "ZoneSetName=string:zs1"},
        // Command-line order is not the provider's order.
        {R"(CreateZone.ZoneSubType=4,ZoneName="z 1",ZoneType=2)",
         "ZoneName=string:z 1 ZoneType=uint16:2 ZoneSubType=uint16:4"},
        {R"(AddZone.Zone=VORNA_Zone.InstanceID="10^2^0",ZoneSet=VORNA_ZoneSet.InstanceID="10^1^0")",
         R"(ZoneSet=reference:interop/x:VORNA_ZoneSet.InstanceID="10^1^0" )"
         R"(Zone=reference:interop/x:VORNA_Zone.InstanceID="10^2^0")"},
        {R"(ActivateZoneSet.Activate=false,ZoneSet=root/cimv2:VORNA_ZoneSet.InstanceID="10^1^0")",
         R"(ZoneSet=reference:root/cimv2:VORNA_ZoneSet.InstanceID="10^1^0" Activate=boolean:FALSE)"},
        {R"(CreateZoneMembershipSettingData.SystemSpecificCollection="VORNA_Zone.InstanceID=\"10^2^0\"",ConnectivityMemberID=2100001122334455,ConnectivityMemberType=2)",
         R"(ConnectivityMemberType=uint16:2 ConnectivityMemberID=string:2100001122334455 )"
         R"(SystemSpecificCollection=reference:interop/x:VORNA_Zone.InstanceID="10^2^0")"},
        // Names are matched without regard to case and passed as written.
        {R"(CreateDeviceAlias.pwwn="21:00:00:11:22:33:44:55",devicealiasname=host1)",
         "devicealiasname=string:host1 pwwn=string:21:00:00:11:22:33:44:55"},
        // Argument counts are the provider's to check.
        {"CreateZone.ZoneName=z1", "ZoneName=string:z1"},
        {"CreateZoneSet", ""},
        // Method names go to the provider as written (it compares them
        // exactly); a method the class doesn't declare is sent without
        // arguments, for the provider to refuse.
        {"createzoneset", ""},
        {"NoSuchMethod", ""},
    };
    for (const auto &[text, expected] : calls) {
        SCOPED_TRACE(text);
        const auto call = marshaller.method_call(service, text);
        EXPECT_EQ(call.method, std::string(text).substr(0, std::string(text).find('.')));
        EXPECT_EQ(arguments_of(call.in), expected);
    }

    const CMPIObjectPath *dmtf_service =
        marshaller.object_path(R"(root/cimv2:CIM_ZoneService.Name="10")");
    const CMPIObjectPath *unknown = marshaller.object_path(R"(root/cimv2:X_Service.Name="10")");
    const std::tuple<const CMPIObjectPath *, const char *, const char *> refused[] = {
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
    for (const auto &[target, text, message] : refused)
        EXPECT_NE(refusal([&] { marshaller.method_call(target, text); }).find(message),
                  std::string::npos)
            << text;
}

TEST(ZonecimMarshalTest, PathKeysAreTypedByTheSchemaOrByTheirSpelling) {
    cmpihost::Request request;
    const zonecim::Marshaller marshaller(schema(), "root/cimv2");

    // A string key stays text however it is written; the namespace defaults.
    const CMPIObjectPath *service = marshaller.object_path("VORNA_ZoneService.Name=10");
    EXPECT_EQ(cmpihost::text(service->ft->getNameSpace(service, nullptr)), "root/cimv2");
    EXPECT_EQ(keys_of(service), "Name=string:10");

    // Unknown keys keep the type their spelling gives; class and key names
    // keep the user's spelling, so the provider's own checks can be tried.
    const CMPIObjectPath *odd = marshaller.object_path(
        R"(vorna_zone.Count=-5,Big=18446744073709551615,Flag=TRUE,Text="7",Word=abc,instanceid="1^2^0")");
    EXPECT_EQ(cmpihost::text(odd->ft->getClassName(odd, nullptr)), "vorna_zone");
    EXPECT_EQ(keys_of(odd),
              "Count=sint64:-5 Big=uint64:18446744073709551615 Flag=boolean:TRUE Text=string:7 "
              "Word=string:abc instanceid=string:1^2^0");

    // Reference keys become references, nested paths taking the outer
    // namespace, also when quoted.
    EXPECT_EQ(keys_of(marshaller.object_path(
                  R"(ns1:VORNA_ZoneMemberOfCollection.Collection=VORNA_ZoneSet.InstanceID="1^1^0",)"
                  R"(Member="other:VORNA_Zone.InstanceID=\"1^2^0\"")")),
              R"(Collection=reference:ns1:VORNA_ZoneSet.InstanceID="1^1^0" )"
              R"(Member=reference:other:VORNA_Zone.InstanceID="1^2^0")");

    EXPECT_THROW(marshaller.object_path(R"(VORNA_HostedService.Antecedent="10")"), UsageError);
    EXPECT_THROW(marshaller.object_path(R"(VORNA_Zone.InstanceID=VORNA_Zone.InstanceID="1")"),
                 UsageError);
}

TEST(ZonecimRenderTest, PathsInstancesResultsAndStatusesPrintAsWbemcliPrintsThem) {
    cmpihost::Request request;
    const zonecim::Marshaller marshaller(schema(), "root/cimv2");

    // What zonecim prints for a path it reads back as the same path.
    const std::string link_text =
        R"(root/cimv2:VORNA_HostedService.Antecedent=root/cimv2:VORNA_Vsan.CreationClassName="VORNA_Vsan",Name="10",)"
        R"(Dependent=root/cimv2:VORNA_ZoneService.SystemCreationClassName="VORNA_Vsan",SystemName="10",CreationClassName="VORNA_ZoneService",Name="10")";
    EXPECT_EQ(zonecim::path_text(marshaller.object_path(link_text)), link_text);

    const CMPIObjectPath *path = marshaller.object_path(R"(VORNA_Zone.InstanceID="1^2^0")");
    CMPIInstance *instance =
        cmpihost::broker()->eft->newInstance(cmpihost::broker(), path, nullptr);
    ASSERT_NE(instance, nullptr);
    auto set = [&](const char *name, CMPIValue value, CMPIType type) {
        instance->ft->setProperty(instance, name, &value, type);
    };
    auto array = [](CMPIType type, std::vector<const char *> items) {
        CMPIArray *a =
            cmpihost::broker()->eft->newArray(cmpihost::broker(), items.size(), type, nullptr);
        for (CMPICount i = 0; i < items.size(); ++i)
            a->ft->setElementAt(a, i, reinterpret_cast<const CMPIValue *>(items[i]), CMPI_chars);
        return a;
    };
    for (const auto &[name, text] : {std::pair{"ElementName", "say \"hi\", ok"}, {"Empty", ""}})
        instance->ft->setProperty(instance, name, reinterpret_cast<const CMPIValue *>(text),
                                  CMPI_chars);
    set("Active", {.boolean = 1}, CMPI_boolean);
    set("ZoneType", {.uint16 = 2}, CMPI_uint16);
    set("Offset", {.sint32 = -7}, CMPI_sint32);
    set("Self", {.ref = const_cast<CMPIObjectPath *>(path)}, CMPI_ref);
    set("Names", {.array = array(CMPI_string, {"a", "b,c"})}, CMPI_stringA);
    set("None", {.array = array(CMPI_uint16, {})}, CMPI_uint16A);
    set("Unset", CMPIValue{}, CMPI_null);
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
