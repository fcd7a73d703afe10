// The class schema (schema/zoning_classes.json) and its loader: the shipped
// file says what the provider reads, and the loader refuses files that the
// MOF generator and zonecim could not rely on.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "schema/schema.h"

namespace {

using zoneschema::Schema;
using zoneschema::SchemaError;

const Schema &shipped() {
    static const Schema schema =
        Schema::load(std::string(ZONE_SOURCE_DIR) + "/schema/zoning_classes.json");
    return schema;
}

// "return(Param type [class], out Param type [class], ...)" of a method as a
// class has it, parameters in declared order; "none" when it has none.
std::string signature(const char *cls, const char *name) {
    const zoneschema::Method *method = shipped().find_method(cls, name);
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

std::vector<std::string> names_of(const std::vector<const zoneschema::Class *> &classes) {
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
    const Schema &schema = shipped();
    ASSERT_NE(schema.find("vorna_zonealias"), nullptr);
    EXPECT_EQ(schema.find("vorna_zonealias")->name, "VORNA_ZoneAlias");
    EXPECT_EQ(schema.find("VORNA_Nothing"), nullptr);

    EXPECT_EQ(names_of(schema.superclass_chain("VORNA_Zone")),
              (std::vector<std::string>{"VORNA_Zone", "CIM_Zone", "CIM_ConnectivityCollection",
                                        "CIM_SystemSpecificCollection", "CIM_Collection",
                                        "CIM_ManagedElement"}));
    EXPECT_TRUE(schema.superclass_chain("VORNA_Nothing").empty());
    const auto collections = names_of(schema.subclasses("cim_systemspecificcollection"));
    for (const char *name : {"VORNA_ZoneSet", "VORNA_Zone", "VORNA_ZoneAlias"})
        EXPECT_EQ(std::count(collections.begin(), collections.end(), name), 1) << name;
    EXPECT_EQ(std::count(collections.begin(), collections.end(), "CIM_SystemSpecificCollection"),
              0);
    EXPECT_TRUE(schema.is_a("VORNA_HostedService", "CIM_Dependency"));
    EXPECT_FALSE(schema.is_a("CIM_Dependency", "VORNA_HostedService"));

    // Keys come from the ancestors, each where it was first declared (Name
    // becomes a key of CIM_Service, but CIM_ManagedSystemElement declared
    // it); a redeclared reference narrows its class.
    std::vector<std::string> keys;
    for (const auto &key : schema.keys("VORNA_ZoneService")) keys.push_back(key.name);
    EXPECT_EQ(keys, (std::vector<std::string>{"Name", "SystemCreationClassName", "SystemName",
                                              "CreationClassName"}));
    const auto *antecedent = schema.find_property("VORNA_HostedService", "antecedent");
    ASSERT_NE(antecedent, nullptr);
    EXPECT_EQ(antecedent->reference_class, "VORNA_Vsan");
    EXPECT_EQ(schema.find_property("CIM_HostedService", "Antecedent")->reference_class,
              "CIM_System");
    EXPECT_TRUE(schema.find_property("VORNA_ZoneSet", "InstanceID")->key);
    EXPECT_FALSE(schema.find_property("CIM_ManagedElement", "InstanceID")->key);
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
            EXPECT_NE(shipped().find_property(cls, property), nullptr) << cls << "." << property;
    }
    // The registration claims instances of every served class and the
    // association side of every association.
    for (const auto &cls : shipped().classes()) {
        if (cls.name.rfind("VORNA_", 0) != 0 || cls.name == "VORNA_Vsan") continue;
        EXPECT_TRUE(cls.provider.any()) << cls.name;
        EXPECT_EQ(cls.provider.association, cls.association) << cls.name;
    }
    EXPECT_FALSE(shipped().find("VORNA_Vsan")->provider.any());
    EXPECT_TRUE(shipped().find("VORNA_DeviceAliasService")->provider.method);
    EXPECT_FALSE(shipped().find("VORNA_DeviceAliasService")->provider.instance);
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

}  // namespace
