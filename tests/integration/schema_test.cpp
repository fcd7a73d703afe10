// The class schema (schema/zoning_classes.json) and its loader: the shipped
// file says what the provider reads, and the loader refuses files that the
// MOF generator and zonecim could not rely on.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <algorithm>
#include <string>
#include <vector>

#include "schema/schema.h"

namespace {

using zoneschema::CimType;
using zoneschema::Schema;
using zoneschema::SchemaError;

const Schema &shipped() {
    static const Schema schema =
        Schema::load(std::string(ZONE_SOURCE_DIR) + "/schema/zoning_classes.json");
    return schema;
}

struct ExpectedParameter {
    const char *name;
    CimType type;
    const char *reference_class;  // nullptr unless a reference
};

struct ExpectedMethod {
    const char *name;
    std::vector<ExpectedParameter> inputs;  // in the positions the provider reads
    const char *output;                     // the OUT reference, or nullptr
};

// The provider reads the input arguments of each method by position; these
// are the positions, the types it converts them to, and the output it adds.
const std::vector<ExpectedMethod> &provider_methods() {
    static const std::vector<ExpectedMethod> methods = {
        {"CreateZoneSet", {{"ZoneSetName", CimType::String, nullptr}}, "ZoneSet"},
        {"CreateZone",
         {{"ZoneName", CimType::String, nullptr},
          {"ZoneType", CimType::Uint16, nullptr},
          {"ZoneSubType", CimType::Uint16, nullptr}},
         "Zone"},
        {"CreateZoneAlias", {{"CollectionAlias", CimType::String, nullptr}}, "ZoneAlias"},
        {"CreateZoneMembershipSettingData",
         {{"ConnectivityMemberType", CimType::Uint16, nullptr},
          {"ConnectivityMemberID", CimType::String, nullptr},
          {"SystemSpecificCollection", CimType::Reference, "CIM_SystemSpecificCollection"}},
         "ZoneMembershipSettingData"},
        {"AddZone",
         {{"ZoneSet", CimType::Reference, "VORNA_ZoneSet"},
          {"Zone", CimType::Reference, "VORNA_Zone"}},
         nullptr},
        {"AddZoneAlias",
         {{"Zone", CimType::Reference, "VORNA_Zone"},
          {"ZoneAlias", CimType::Reference, "VORNA_ZoneAlias"}},
         nullptr},
        {"AddZoneMembershipSettingData",
         {{"SystemSpecificCollection", CimType::Reference, "CIM_SystemSpecificCollection"},
          {"ZoneMembershipSettingData", CimType::Reference, "VORNA_ZoneMemberSettingData"}},
         nullptr},
        {"ActivateZoneSet",
         {{"ZoneSet", CimType::Reference, "VORNA_ZoneSet"},
          {"Activate", CimType::Boolean, nullptr}},
         nullptr},
        {"CreateDeviceAlias",
         {{"DeviceAliasName", CimType::String, nullptr}, {"PWWN", CimType::String, nullptr}},
         nullptr},
        {"RemoveDeviceAlias", {{"DeviceAliasName", CimType::String, nullptr}}, nullptr},
    };
    return methods;
}

TEST(SchemaTest, ZoneServiceDeclaresTheProviderMethodsInTheOrderItReadsThem) {
    for (const auto &expected : provider_methods()) {
        SCOPED_TRACE(expected.name);
        const auto *method = shipped().find_method("VORNA_ZoneService", expected.name);
        ASSERT_NE(method, nullptr);
        EXPECT_EQ(method->return_type, CimType::String);
        std::vector<const zoneschema::Parameter *> inputs;
        const zoneschema::Parameter *output = nullptr;
        for (const auto &parameter : method->parameters) {
            if (parameter.in) inputs.push_back(&parameter);
            if (parameter.out) output = &parameter;
        }
        ASSERT_EQ(inputs.size(), expected.inputs.size());
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            EXPECT_EQ(inputs[i]->name, expected.inputs[i].name) << "position " << i;
            EXPECT_EQ(inputs[i]->type, expected.inputs[i].type) << "position " << i;
            EXPECT_EQ(inputs[i]->reference_class,
                      expected.inputs[i].reference_class ? expected.inputs[i].reference_class : "");
        }
        if (expected.output == nullptr) {
            EXPECT_EQ(output, nullptr);
        } else {
            ASSERT_NE(output, nullptr);
            EXPECT_EQ(output->name, expected.output);
            EXPECT_EQ(output->type, CimType::Reference);
            EXPECT_FALSE(output->in);
        }
    }
    // The device-alias service takes the same two device-alias methods.
    for (const char *name : {"CreateDeviceAlias", "RemoveDeviceAlias"}) {
        const auto *on_service = shipped().find_method("VORNA_DeviceAliasService", name);
        const auto *on_zones = shipped().find_method("VORNA_ZoneService", name);
        ASSERT_NE(on_service, nullptr) << name;
        ASSERT_EQ(on_service->parameters.size(), on_zones->parameters.size()) << name;
        for (std::size_t i = 0; i < on_service->parameters.size(); ++i)
            EXPECT_EQ(on_service->parameters[i].name, on_zones->parameters[i].name);
    }
    // The DMTF parent has no device-alias methods.
    EXPECT_EQ(shipped().find_method("CIM_ZoneService", "CreateDeviceAlias"), nullptr);
    EXPECT_NE(shipped().find_method("CIM_ZoneService", "SessionControl"), nullptr);
}

TEST(SchemaTest, LookupsFollowTheHierarchyWithoutRegardToCase) {
    const Schema &schema = shipped();
    ASSERT_NE(schema.find("vorna_zonealias"), nullptr);
    EXPECT_EQ(schema.find("vorna_zonealias")->name, "VORNA_ZoneAlias");
    EXPECT_EQ(schema.find("VORNA_Nothing"), nullptr);

    std::vector<std::string> chain;
    for (const auto *cls : schema.superclass_chain("VORNA_Zone")) chain.push_back(cls->name);
    EXPECT_EQ(chain, (std::vector<std::string>{
                         "VORNA_Zone", "CIM_Zone", "CIM_ConnectivityCollection",
                         "CIM_SystemSpecificCollection", "CIM_Collection", "CIM_ManagedElement"}));
    EXPECT_TRUE(schema.superclass_chain("VORNA_Nothing").empty());

    std::vector<std::string> collections;
    for (const auto *cls : schema.subclasses("cim_systemspecificcollection"))
        collections.push_back(cls->name);
    for (const char *name : {"VORNA_ZoneSet", "VORNA_Zone", "VORNA_ZoneAlias"}) {
        EXPECT_NE(std::find(collections.begin(), collections.end(), name), collections.end())
            << name;
    }
    EXPECT_EQ(std::find(collections.begin(), collections.end(), "CIM_SystemSpecificCollection"),
              collections.end());
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
    EXPECT_EQ(schema.find_property("VORNA_ZoneSet", "InstanceID")->key, true);
    EXPECT_EQ(schema.find_property("CIM_ManagedElement", "InstanceID")->key, false);
}

TEST(SchemaTest, EveryServedClassIsKnownWithWhatTheBuildersSet) {
    // Property names the simulated switch's builders put into instances.
    struct Expected {
        const char *cls;
        std::vector<const char *> properties;
    };
    const std::vector<Expected> served = {
        {"VORNA_ZoneService",
         {"SystemCreationClassName", "SystemName", "CreationClassName", "Name", "ElementName",
          "SessionState", "RequestedSessionState"}},
        {"VORNA_ZoneSet", {"InstanceID", "ElementName", "Active"}},
        {"VORNA_Zone", {"InstanceID", "ElementName", "Active", "ZoneType"}},
        {"VORNA_ZoneAlias", {"InstanceID", "ElementName", "CollectionAlias", "Active"}},
        {"VORNA_ZoneMemberSettingData",
         {"InstanceID", "ElementName", "ConnectivityMemberType", "ConnectivityMemberID", "Active"}},
        {"VORNA_DeviceAlias", {"InstanceID", "ElementName", "PWWN"}},
        {"VORNA_Vsan", {"CreationClassName", "Name", "ElementName", "NameFormat"}},
        {"VORNA_HostedService", {"Antecedent", "Dependent"}},
        {"VORNA_HostedCollection", {"Antecedent", "Dependent"}},
        {"VORNA_ZoneHostedCollection", {"Antecedent", "Dependent"}},
        {"VORNA_ZoneMemberOfCollection", {"Collection", "Member"}},
        {"VORNA_ElementSettingData", {"ManagedElement", "SettingData"}},
    };
    for (const auto &expected : served) {
        for (const char *property : expected.properties)
            EXPECT_NE(shipped().find_property(expected.cls, property), nullptr)
                << expected.cls << "." << property;
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
        R"({"name": "A_Base", "properties": [{"name": "Id", "type": "string", "key": true}]})";
    struct Case {
        const char *what;
        std::string classes;
        const char *message;
    };
    const std::vector<Case> cases = {
        {"not JSON", "{", "not valid JSON"},
        {"duplicate class", base + "," + R"({"name": "a_base"})", "declared twice"},
        {"unknown superclass", R"({"name": "A_X", "superclass": "A_None"})", "unknown superclass"},
        {"loop", R"({"name": "A_X", "superclass": "A_Y"}, {"name": "A_Y", "superclass": "A_X"})",
         "loops"},
        {"typo in a member", base + "," + R"({"name": "A_X", "superclas": "A_Base"})",
         "unknown member \"superclas\""},
        {"unknown type", R"({"name": "A_X", "properties": [{"name": "P", "type": "int"}]})",
         "unknown type"},
        {"reference without class",
         base + "," + R"({"name": "A_L", "association": true, "properties": [
            {"name": "L", "type": "reference", "key": true},
            {"name": "R", "type": "reference", "reference_class": "A_Base", "key": true}]})",
         "names a class"},
        {"association with one end",
         base + "," + R"({"name": "A_L", "association": true, "properties": [
            {"name": "L", "type": "reference", "reference_class": "A_Base", "key": true}]})",
         "two references"},
        {"concrete class without key", R"({"name": "A_X"})", "needs a key"},
        {"method provider without methods",
         base + "," + R"({"name": "A_X", "superclass": "A_Base", "provider": ["method"]})",
         "without methods"},
        {"parameter neither in nor out",
         base + "," + R"({"name": "A_X", "superclass": "A_Base", "methods": [{"name": "M",
            "return_type": "uint32", "parameters": [{"name": "P", "type": "string", "in": false}]}]})",
         "neither IN nor OUT"},
        {"inherited property retyped",
         base + "," +
             R"({"name": "A_X", "superclass": "A_Base", "properties": [{"name": "Id", "type": "uint32"}]})",
         "changes the type"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        try {
            Schema::parse(head + c.classes + "]}", "test.json");
            ADD_FAILURE() << "accepted";
        } catch (const SchemaError &e) {
            EXPECT_NE(std::string(e.what()).find(c.message), std::string::npos) << e.what();
            EXPECT_EQ(std::string(e.what()).rfind("test.json: ", 0), 0u) << e.what();
        }
    }
    EXPECT_NO_THROW(Schema::parse(head + base + "]}", "test.json"));
    EXPECT_THROW(Schema::load("/nonexistent/zoning_classes.json"), SchemaError);
}

TEST(SchemaTest, InstalledPathHonoursTheEnvironment) {
    ASSERT_EQ(unsetenv("ZONE_SCHEMA"), 0);
    EXPECT_EQ(Schema::installed_path(),
              std::string(ZONE_SOURCE_DIR) + "/schema/zoning_classes.json");
    ASSERT_EQ(setenv("ZONE_SCHEMA", "/elsewhere/classes.json", 1), 0);
    EXPECT_EQ(Schema::installed_path(), "/elsewhere/classes.json");
    ASSERT_EQ(setenv("ZONE_SCHEMA", "", 1), 0);
    EXPECT_EQ(Schema::installed_path(),
              std::string(ZONE_SOURCE_DIR) + "/schema/zoning_classes.json");
    unsetenv("ZONE_SCHEMA");
}

}  // namespace
