// The class schema (schema/zoning_classes.json), its loader and the zonecim
// command built on it. The shipped file says what the provider reads, and
// the loader refuses files that the MOF generator and zonecim could not
// rely on. Without a provider: zonecim's reading of the command line
// (wbemcli's path and method syntax, keys and method arguments typed by the
// schema, arguments in the order the method declares them, since the
// provider reads them by position) and its printing in wbemcli's text forms
// of paths, instances, method results and statuses. As a user runs it, on
// the provider and the simulated switch: wrong usage is refused with status
// 2 and a reason on standard error; standard output carries results alone
// (the provider's trace lines go nowhere, or to standard error with
// --trace); a failed operation says so as wbemcli does and exits 1; what
// zonecim prints can be fed back to it.
#include <stdlib.h>

#include <tuple>

#include "schema/schema.h"
#include "zonecim/marshal.h"
#include "zonecim/path_syntax.h"
#include "zonecim/render.h"
#include "zonecim_session.h"

namespace zonetest {
namespace {

using zonecim::TextPath;
using zonecim::UsageError;
using zoneschema::Schema;
using zoneschema::SchemaError;

const Schema &schema() {
    static const Schema loaded =
        Schema::load(std::string(ZONE_SOURCE_DIR) + "/schema/zoning_classes.json");
    return loaded;
}

// "return(Param type [class], out Param type [class], ...)" of a method as a
// class has it, parameters in declared order; "none" when it has none.
std::string signature(const char *cls, const char *name) {
    const zoneschema::Method *method = schema().find_method(cls, name);
    if (method == nullptr) return "none";
    std::string text = std::string(type_name(method->return_type)) + "(";
    for (const zoneschema::Parameter &p : method->parameters) {
        if (&p != &method->parameters.front()) text += ", ";
        text += std::string(p.in ? "" : "out ") + (p.in && p.out ? "inout " : "") + p.name + " " +
                std::string(type_name(p.type)) + (p.array ? "[]" : "");
        if (!p.reference_class.empty()) text += " " + p.reference_class;
    }
    return text + ")";
}

std::vector<std::string> class_names(const std::vector<const zoneschema::Class *> &classes) {
    std::vector<std::string> names;
    for (const zoneschema::Class *cls : classes) names.push_back(cls->name);
    return names;
}

TEST(SchemaTest, ServicesDeclareTheProviderMethodsInTheOrderItReadsThem) {
    // The provider reads the input arguments of each method by position and
    // converts them to these types; the output is the reference it adds.
    const char *const zone_service = "VORNA_ZoneService";
    const char *const alias_service = "VORNA_DeviceAliasService";
    const std::tuple<const char *, const char *, const char *> methods[] = {
        {zone_service, "CreateZoneSet",
         "string(ZoneSetName string, out ZoneSet reference VORNA_ZoneSet)"},
        {zone_service, "CreateZone",
         "string(ZoneName string, ZoneType uint16, ZoneSubType uint16, out Zone reference "
         "VORNA_Zone)"},
        {zone_service, "CreateZoneAlias",
         "string(CollectionAlias string, out ZoneAlias reference VORNA_ZoneAlias)"},
        {zone_service, "CreateZoneMembershipSettingData",
         "string(ConnectivityMemberType uint16, ConnectivityMemberID string, "
         "SystemSpecificCollection reference CIM_SystemSpecificCollection, "
         "out ZoneMembershipSettingData reference VORNA_ZoneMemberSettingData)"},
        {zone_service, "AddZone",
         "string(ZoneSet reference VORNA_ZoneSet, Zone reference VORNA_Zone)"},
        {zone_service, "AddZoneAlias",
         "string(Zone reference VORNA_Zone, ZoneAlias reference VORNA_ZoneAlias)"},
        {zone_service, "AddZoneMembershipSettingData",
         "string(SystemSpecificCollection reference CIM_SystemSpecificCollection, "
         "ZoneMembershipSettingData reference VORNA_ZoneMemberSettingData)"},
        {zone_service, "ActivateZoneSet",
         "string(ZoneSet reference VORNA_ZoneSet, Activate boolean)"},
        {zone_service, "CreateDeviceAlias", "string(DeviceAliasName string, PWWN string)"},
        {zone_service, "RemoveDeviceAlias", "string(DeviceAliasName string)"},
        {alias_service, "CreateDeviceAlias", "string(DeviceAliasName string, PWWN string)"},
        {alias_service, "RemoveDeviceAlias", "string(DeviceAliasName string)"},
        // The DMTF parent has no device-alias methods.
        {"CIM_ZoneService", "CreateDeviceAlias", "none"},
        {"CIM_ZoneService", "SessionControl", "uint32(RequestedSessionState uint16)"},
    };
    for (const auto &[cls, method, expected] : methods)
        EXPECT_EQ(signature(cls, method), expected) << cls << "." << method;
}

TEST(SchemaTest, LookupsFollowTheHierarchyWithoutRegardToCase) {
    const Schema &shipped = schema();
    ASSERT_NE(shipped.find("vorna_zonealias"), nullptr);
    EXPECT_EQ(shipped.find("vorna_zonealias")->name, "VORNA_ZoneAlias");
    EXPECT_EQ(shipped.find("VORNA_Nothing"), nullptr);

    EXPECT_EQ(class_names(shipped.superclass_chain("VORNA_Zone")),
              (std::vector<std::string>{"VORNA_Zone", "CIM_Zone", "CIM_ConnectivityCollection",
                                        "CIM_SystemSpecificCollection", "CIM_Collection",
                                        "CIM_ManagedElement"}));
    EXPECT_TRUE(shipped.superclass_chain("VORNA_Nothing").empty());
    const auto collections = class_names(shipped.subclasses("cim_systemspecificcollection"));
    for (const char *name : {"VORNA_ZoneSet", "VORNA_Zone", "VORNA_ZoneAlias"})
        EXPECT_EQ(std::count(collections.begin(), collections.end(), name), 1) << name;
    EXPECT_EQ(std::count(collections.begin(), collections.end(), "CIM_SystemSpecificCollection"),
              0);
    EXPECT_TRUE(shipped.is_a("VORNA_HostedService", "CIM_Dependency"));
    EXPECT_FALSE(shipped.is_a("CIM_Dependency", "VORNA_HostedService"));

    // Keys come from the ancestors, each where it was first declared (Name
    // becomes a key of CIM_Service, but CIM_ManagedSystemElement declared
    // it); a redeclared reference narrows its class.
    std::vector<std::string> keys;
    for (const auto &key : shipped.keys("VORNA_ZoneService")) keys.push_back(key.name);
    EXPECT_EQ(keys, (std::vector<std::string>{"Name", "SystemCreationClassName", "SystemName",
                                              "CreationClassName"}));
    const auto *antecedent = shipped.find_property("VORNA_HostedService", "antecedent");
    ASSERT_NE(antecedent, nullptr);
    EXPECT_EQ(antecedent->reference_class, "VORNA_Vsan");
    EXPECT_EQ(shipped.find_property("CIM_HostedService", "Antecedent")->reference_class,
              "CIM_System");
    EXPECT_TRUE(shipped.find_property("VORNA_ZoneSet", "InstanceID")->key);
    EXPECT_FALSE(shipped.find_property("CIM_ManagedElement", "InstanceID")->key);
}

TEST(SchemaTest, EveryServedClassIsKnownWithWhatTheBuildersSet) {
    // Property names the simulated switch's builders put into instances.
    const std::pair<const char *, const char *> served[] = {
        {"VORNA_ZoneService",
         "SystemCreationClassName SystemName CreationClassName Name ElementName SessionState "
         "RequestedSessionState"},
        {"VORNA_ZoneSet", "InstanceID ElementName Active"},
        {"VORNA_Zone", "InstanceID ElementName Active ZoneType"},
        {"VORNA_ZoneAlias", "InstanceID ElementName CollectionAlias Active"},
        {"VORNA_ZoneMemberSettingData",
         "InstanceID ElementName ConnectivityMemberType ConnectivityMemberID Active"},
        {"VORNA_DeviceAlias", "InstanceID ElementName PWWN"},
        {"VORNA_Vsan", "CreationClassName Name ElementName NameFormat"},
        {"VORNA_HostedService", "Antecedent Dependent"},
        {"VORNA_HostedCollection", "Antecedent Dependent"},
        {"VORNA_ZoneHostedCollection", "Antecedent Dependent"},
        {"VORNA_ZoneMemberOfCollection", "Collection Member"},
        {"VORNA_ElementSettingData", "ManagedElement SettingData"},
    };
    for (const auto &[cls, properties] : served) {
        std::istringstream names(properties);
        for (std::string property; names >> property;)
            EXPECT_NE(schema().find_property(cls, property), nullptr) << cls << "." << property;
    }
    // The registration claims instances of every served class and the
    // association side of every association.
    for (const auto &cls : schema().classes()) {
        if (cls.name.rfind("VORNA_", 0) != 0 || cls.name == "VORNA_Vsan") continue;
        EXPECT_TRUE(cls.provider.any()) << cls.name;
        EXPECT_EQ(cls.provider.association, cls.association) << cls.name;
    }
    EXPECT_FALSE(schema().find("VORNA_Vsan")->provider.any());
    EXPECT_TRUE(schema().find("VORNA_DeviceAliasService")->provider.method);
    EXPECT_FALSE(schema().find("VORNA_DeviceAliasService")->provider.instance);
}

TEST(SchemaTest, InconsistentFilesAreRefused) {
    const std::string head =
        R"({"namespace": "root/cimv2", "provider": {"name": "P", "location": "p", "module": "M",
            "interface_type": "CMPI", "interface_version": "2.0.0", "vendor": "V",
            "version": "1"}, "classes": [)";
    const std::string base =
        R"({"name": "A_Base", "properties": [{"name": "Id", "type": "string", "key": true}]},)";
    const std::tuple<const char *, std::string, const char *> cases[] = {
        {"not JSON", "{", "not valid JSON"},
        {"duplicate class", base + R"({"name": "a_base"})", "declared twice"},
        {"unknown superclass", R"({"name": "A_X", "superclass": "A_None"})", "unknown superclass"},
        {"loop", R"({"name": "A_X", "superclass": "A_Y"}, {"name": "A_Y", "superclass": "A_X"})",
         "loops"},
        {"typo in a member", base + R"({"name": "A_X", "superclas": "A_Base"})",
         "unknown member \"superclas\""},
        {"unknown type", R"({"name": "A_X", "properties": [{"name": "P", "type": "int"}]})",
         "unknown type"},
        {"reference without class", base + R"({"name": "A_L", "association": true, "properties": [
            {"name": "L", "type": "reference", "key": true},
            {"name": "R", "type": "reference", "reference_class": "A_Base", "key": true}]})",
         "names a class"},
        {"association with one end", base + R"({"name": "A_L", "association": true, "properties": [
            {"name": "L", "type": "reference", "reference_class": "A_Base", "key": true}]})",
         "two references"},
        {"concrete class without key", R"({"name": "A_X"})", "needs a key"},
        {"method provider without methods",
         base + R"({"name": "A_X", "superclass": "A_Base", "provider": ["method"]})",
         "without methods"},
        {"parameter neither in nor out",
         base + R"({"name": "A_X", "superclass": "A_Base", "methods": [{"name": "M",
            "return_type": "uint32", "parameters": [{"name": "P", "type": "string", "in": false}]}]})",
         "neither IN nor OUT"},
        {"inherited property retyped",
         base + R"({"name": "A_X", "superclass": "A_Base", "properties": [
            {"name": "Id", "type": "uint32"}]})",
         "changes the type"},
    };
    for (const auto &[what, classes, message] : cases) {
        SCOPED_TRACE(what);
        try {
            Schema::parse(head + classes + "]}", "test.json");
            ADD_FAILURE() << "accepted";
        } catch (const SchemaError &e) {
            EXPECT_NE(std::string(e.what()).find(message), std::string::npos) << e.what();
            EXPECT_EQ(std::string(e.what()).rfind("test.json: ", 0), 0u) << e.what();
        }
    }
    EXPECT_NO_THROW(Schema::parse(head + base.substr(0, base.size() - 1) + "]}", "test.json"));
    EXPECT_THROW(Schema::load("/nonexistent/zoning_classes.json"), SchemaError);
}

TEST(SchemaTest, InstalledPathHonoursTheEnvironmentUnlessEmpty) {
    const std::string compiled_in = std::string(ZONE_SOURCE_DIR) + "/schema/zoning_classes.json";
    for (const char *value : {static_cast<const char *>(nullptr), "/elsewhere/classes.json", ""}) {
        if (value == nullptr)
            unsetenv("ZONE_SCHEMA");
        else
            setenv("ZONE_SCHEMA", value, 1);
        EXPECT_EQ(Schema::installed_path(), value != nullptr && *value ? value : compiled_in);
    }
    unsetenv("ZONE_SCHEMA");
}

// ---- zonecim's command line, without a provider --------------------------------

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
template <typename At>
std::string typed_list(unsigned count, At at) {
    std::string text;
    for (unsigned i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData data = at(i, &name);
        text += (i ? " " : "") + cmpihost::text(name) + "=" + zonecim::param_type_text(data.type) +
                ":" + zonecim::bare_value_text(data);
    }
    return text;
}
std::string keys_of(const CMPIObjectPath *path) {
    return typed_list(path->ft->getKeyCount(path, nullptr), [&](unsigned i, CMPIString **name) {
        return path->ft->getKeyAt(path, i, name, nullptr);
    });
}
std::string arguments_of(const CMPIArgs *args) {
    return typed_list(args->ft->getArgCount(args, nullptr), [&](unsigned i, CMPIString **name) {
        return args->ft->getArgAt(args, i, name, nullptr);
    });
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

// ---- The command as a user runs it -------------------------------------------

class ZonecimTest : public ZonecimSession {};

TEST_F(ZonecimTest, WrongUsageExitsWithTwoAndSaysWhy) {
    const std::string service = kServiceClass + ".Name=\"1\"";
    // Errors of path and argument syntax are zonecim_args_test's; one of
    // each shows they end the same way.
    const std::pair<std::vector<std::string>, const char *> cases[] = {
        {{}, "subcommand is required"},
        {{"frobnicate", kServiceClass}, "unknown verb 'frobnicate'"},
        {{"ein"}, "path is required"},
        {{"cm", service}, "method is required"},
        {{"ei", "-nl", kServiceClass}, "-nl"},
        {{"gi", "root/cimv2:VORNA_Zone.InstanceID=\"1^2^0"}, "unterminated quoted string"},
        {{"cm", service, "CreateZoneSet.Bogus=\"zs1\""}, "has no parameter Bogus"},
        {{"rin", "-ac", "VORNA_ZoneMemberOfCollection", service}, "with -arc, not -ac"},
        {{"ri", "-arr", "Member", service}, "takes no -arr"},
        {{"gi", "-pl", "Name", service, "ElementName"}, "property list once"},
        {{"fabric"}, "subcommand is required"},
        {{"fabric", "load"}, "file is required"},
        {{"fabric", "generate", "--vsans", "5000"}, "out of range"},
    };
    for (const auto &[args, reason] : cases) {
        SCOPED_TRACE(args.empty() ? "(none)" : args.front() + " " + args.back());
        const Outcome run = zonecim(args);
        EXPECT_EQ(run.status, 2);
        EXPECT_NE(run.err.find(reason), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "");
    }

    const Outcome help = zonecim({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char *verb : {"ein", "ei", "gi", "di", "ain", "ai", "rin", "ri", "cm", "fabric"})
        EXPECT_NE(help.out.find(std::string("  ") + verb + " "), std::string::npos) << verb;

    const Outcome unloadable =
        zonecim({"--provider", "/nonexistent/none.so", "ein", kServiceClass});
    EXPECT_EQ(unloadable.status, 1);
    EXPECT_NE(unloadable.err.find("can't load the provider"), std::string::npos) << unloadable.err;
    EXPECT_EQ(unloadable.out, "");
}

TEST_F(ZonecimTest, OutputCarriesResultsAloneAndFeedsBackIn) {
    // ein: paths alone, the provider's trace lines nowhere; --trace sends
    // them to standard error and leaves the results as they were.
    const Outcome names = zonecim({"ein", kServiceClass});
    ASSERT_EQ(names.status, 0) << names.err;
    EXPECT_EQ(names.err, "");
    const std::vector<std::string> paths = names.lines();
    ASSERT_FALSE(paths.empty());
    for (const std::string &path : paths) EXPECT_EQ(path.rfind(kServiceClass + ".", 0), 0u) << path;
    const Outcome traced = zonecim({"--trace", "ein", kServiceClass});
    EXPECT_EQ(traced.status, 0);
    EXPECT_EQ(traced.out, names.out);
    EXPECT_NE(traced.err.find("In EnumInstanceNames ZoneProvider"), std::string::npos)
        << traced.err;

    // ei: "path properties" lines for the same paths in the same order; a
    // property list leaves the other properties out.
    const std::vector<std::string> lines = instances(kServiceClass);
    ASSERT_EQ(lines.size(), paths.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].rfind(paths[i] + " ", 0), 0u) << lines[i];
        EXPECT_NE(lines[i].find("SessionState=4"), std::string::npos) << lines[i];
    }
    for (const std::string &line : ok_lines({"ei", "-pl", "SessionState", kServiceClass})) {
        EXPECT_NE(line.find("SessionState=4"), std::string::npos) << line;
        EXPECT_EQ(line.find("ElementName="), std::string::npos) << line;
    }

    // gi of a printed path, and by the key the provider reads written the
    // short way: that one object, shown under the path it was asked for.
    const std::string service = zone_service(10);
    const std::string short_form = kServiceClass + ".Name=\"10\"";
    for (const std::string &path : {service, kServiceClass + ".Name=10"}) {
        const std::vector<std::string> one = ok_lines({"gi", path});
        ASSERT_EQ(one.size(), 1u) << path;
        EXPECT_EQ(one[0].rfind((path == service ? service : short_form) + " ", 0), 0u) << one[0];
        EXPECT_NE(one[0].find(",Name=\"10\",ElementName="), std::string::npos) << one[0];
    }

    // A failed operation: nothing on standard output, wbemcli's report on
    // standard error, exit 1.
    const Outcome missing = zonecim({"gi", kServiceClass + ".Name=\"4000\""});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.out, "");
    EXPECT_EQ(missing.err,
              "*\n* zonecim: Cim: (1) CIM_ERR_FAILED: could not find or construct instance\n*\n");

    // The association filters reach the provider: of a zone set's
    // neighbours (its zones and its VSAN) only the zones are left.
    const std::string zone_set = kZoneSet + ".InstanceID=\"10^1^0\"";
    const std::vector<std::string> zones = neighbours(zone_set, kZone);
    EXPECT_EQ(zones.size(), 3u);
    EXPECT_EQ(sorted(ok_lines(
                  {"ain", "-ac", "VORNA_ZoneMemberOfCollection", "-arc", "VORNA_Zone", zone_set})),
              zones);
}

}  // namespace
}  // namespace zonetest
