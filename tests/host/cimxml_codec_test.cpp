// The CIM-XML pieces of the server: the escaping writer, CMPI objects in
// CIM-XML, CIM-XML read back into typed CMPI objects, and whole requests
// through the service against the host's test provider ("HostTest": key Id,
// instances a, b, c, no instance "missing"; methods Echo and Count).
//
// What a client relies on: answers that are well-formed whatever the data
// holds; the shapes wbemcli reads (no self-closed VALUE, RETURNVALUE first,
// NULL outputs left out); keys and arguments typed by the class, arguments
// in the method's declared order; the right CIM status for each refusal and
// protocol errors for what isn't a CIM-XML request. The served process with
// wbemcli as its client is integration/cimxml_server_test's.
#include <gtest/gtest.h>

#include <pugixml.hpp>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "host/cmpihost.h"
#include "host_test_support.h"
#include "schema/schema.h"
#include "server/cim_status.h"
#include "server/cimxml_decode.h"
#include "server/cimxml_encode.h"
#include "server/cimxml_service.h"
#include "server/xml_writer.h"

namespace {

using zoneserver::CimError;
using Names = std::vector<std::string>;

const char *const kSchemaJson = R"({
  "namespace": "root/cimv2",
  "provider": {"name": "HostTest", "location": "test", "module": "TestModule",
               "interface_type": "CMPI", "interface_version": "2.0.0", "vendor": "t",
               "version": "1"},
  "classes": [
    {"name": "Test_Element", "abstract": true,
     "properties": [{"name": "Id", "type": "string", "key": true},
                    {"name": "Caption", "type": "string"}]},
    {"name": "HostTest", "superclass": "Test_Element", "provider": ["instance", "method"],
     "properties": [{"name": "Count", "type": "uint32"}, {"name": "Label", "type": "string"},
                    {"name": "Sizes", "type": "uint16", "array": true}],
     "methods": [
       {"name": "Echo", "return_type": "string",
        "parameters": [{"name": "Text", "type": "string"},
                       {"name": "Result", "type": "string", "in": false, "out": true}]},
       {"name": "Count", "return_type": "uint32",
        "parameters": [{"name": "Alpha", "type": "string"}, {"name": "Beta", "type": "uint16"},
                       {"name": "Target", "type": "reference", "reference_class": "HostTest"},
                       {"name": "Flags", "type": "boolean", "array": true},
                       {"name": "First", "type": "string", "in": false, "out": true}]}]},
    {"name": "Test_Typed",
     "properties": [{"name": "Port", "type": "uint16", "key": true},
                    {"name": "Name", "type": "string", "key": true},
                    {"name": "On", "type": "boolean", "key": true}]},
    {"name": "Test_Link", "association": true,
     "properties": [
       {"name": "Left", "type": "reference", "reference_class": "Test_Element", "key": true},
       {"name": "Right", "type": "reference", "reference_class": "Test_Element", "key": true}]}
  ]
})";

const zoneschema::Schema &schema() {
    static const zoneschema::Schema parsed = zoneschema::Schema::parse(kSchemaJson, "test schema");
    return parsed;
}

// A document, or a writer's fragment wrapped so that it parses as one.
pugi::xml_document parse(const std::string &xml, bool fragment = false) {
    pugi::xml_document doc;
    const auto result = doc.load_string((fragment ? "<ROOT>" + xml + "</ROOT>" : xml).c_str());
    EXPECT_TRUE(result) << result.description() << "\n" << xml;
    return doc;
}

// The text of a key and, in *type, its type.
std::string key_text(const CMPIObjectPath *path, const char *key, CMPIType *type) {
    CMPIStatus rc{CMPI_RC_OK, nullptr};
    const CMPIData data = path->ft->getKey(path, key, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_OK) << key;
    *type = data.type;
    return cmpihost::dataText(data);
}

// Runs body and returns the CIM status it threw (0 when it threw none).
template <typename Body>
int cim_code(Body body) {
    try {
        body();
    } catch (const CimError &e) {
        return e.code();
    }
    return 0;
}

TEST(CimXmlWriter, EscapesEverythingAndNeverSelfCloses) {
    zoneserver::XmlWriter out;
    out.open("A").attribute("NAME", "q\"<&>'").open("VALUE").close();
    out.element("VALUE", "a<b & c>\"d'\x01\ttab");
    const std::string xml = out.take();  // closes A
    EXPECT_EQ(xml,
              "<A NAME=\"q&quot;&lt;&amp;&gt;&apos;\"><VALUE></VALUE>"
              "<VALUE>a&lt;b &amp; c&gt;&quot;d&apos;?\ttab</VALUE></A>");
    const auto doc = parse(xml);
    EXPECT_STREQ(doc.child("A").attribute("NAME").value(), "q\"<&>'");
    EXPECT_STREQ(doc.child("A").last_child().child_value(), "a<b & c>\"d'?\ttab");
}

// Long answers are kept in blocks: what is written across their borders,
// escaped or not, and fragments moved in from other writers must come out
// exactly as one string would have held them, in order.
TEST(CimXmlWriter, LongMarkupSurvivesBlocksAndMovedFragments) {
    zoneserver::XmlWriter out;
    out.open("R");
    std::string expected = "<R>";
    const std::string long_text(100 * 1024, 'x');
    for (int i = 0; i < 300; ++i) {
        // Escaped text that keeps landing on block borders.
        const std::string run =
            std::to_string(i) + std::string(500, static_cast<char>('a' + i % 26));
        out.element("VALUE", "<&>" + run);
        expected += "<VALUE>&lt;&amp;&gt;" + run + "</VALUE>";
        if (i % 100 != 50) continue;
        // A fragment bigger than a block, and a tiny one with an element left open.
        zoneserver::XmlWriter big, small;
        big.element("BIG", long_text);
        small.open("S").attribute("N", "\"");
        out.append(std::move(big)).append(std::move(small));
        expected += "<BIG>" + long_text + "</BIG><S N=\"&quot;\"></S>";
        EXPECT_EQ(big.size(), 0u);
        EXPECT_EQ(small.depth(), 0u);
    }
    // An open start tag is finished before a fragment lands behind it.
    zoneserver::XmlWriter inner;
    inner.element("U", "1");
    out.open("T").append(std::move(inner));
    expected += "<T><U>1</U></T></R>";
    EXPECT_EQ(out.str() + "</T></R>", expected);

    zoneserver::XmlText text = out.take_text();
    EXPECT_EQ(out.size(), 0u);
    EXPECT_EQ(out.str(), "");
    ASSERT_EQ(text.size(), expected.size());
    EXPECT_GT(text.blocks().size(), 4u);
    EXPECT_TRUE(text.str() == expected);
    // A sender frees blocks as it goes; the rest stays as it was.
    const std::string last = text.blocks().back();
    text.release_block(0);
    EXPECT_TRUE(text.blocks().front().empty());
    EXPECT_EQ(text.blocks().back(), last);
    EXPECT_EQ(text.size(), expected.size());
}

// Paths and instances in the shapes clients read: references in keys as
// LOCALINSTANCEPATH (in the request's namespace when the path has none of
// its own), full paths with the server's host, keys typed, an instance's
// properties in the order the provider set them and then the class's others
// as NULL, a filter keeping only the listed ones, NULL method results left
// out altogether.
TEST(CimXmlEncode, PathsInstancesAndMethodResultsInTheShapesClientsRead) {
    cmpihost::Request request;
    CMPIObjectPath *other = request.newObjectPath("root/cimv2", "HostTest");
    cmpihost::addStringKey(other, "Id", "o&1");
    CMPIObjectPath *link = request.newObjectPath("", "Test_Link");
    cmpihost::addReferenceKey(link, "Left", other);
    CMPIValue port{}, on{}, count{};
    port.uint16 = 80;
    on.boolean = 1;
    count.uint32 = 5;
    link->ft->addKey(link, "Port", &port, CMPI_uint16);
    link->ft->addKey(link, "On", &on, CMPI_boolean);
    CMPIInstance *instance =
        cmpihost::broker()->eft->newInstance(cmpihost::broker(), other, nullptr);
    instance->ft->setProperty(instance, "Count", &count, CMPI_uint32);
    instance->ft->setProperty(instance, "Label", reinterpret_cast<const CMPIValue *>("x<y"),
                              CMPI_chars);
    CMPIData null_string{}, reference{};
    null_string.type = CMPI_string;
    null_string.state = CMPI_nullValue;
    reference.type = CMPI_ref;
    reference.value.ref = other;

    const zoneserver::Encoder encoder(schema(), "root/cimv2", "server.example");
    zoneserver::XmlWriter out;
    encoder.instance_name(out, link);
    encoder.object_path(out, other);
    encoder.named_instance(out, instance, zoneserver::PropertyFilter());
    encoder.instance(out, instance, zoneserver::PropertyFilter(Names{"label"}));
    encoder.return_value(out, null_string);
    encoder.param_value(out, "Nothing", null_string);
    encoder.param_value(out, "Made", reference);

    const std::string ns =
        R"(<LOCALNAMESPACEPATH><NAMESPACE NAME="root"></NAMESPACE><NAMESPACE NAME="cimv2"></NAMESPACE></LOCALNAMESPACEPATH>)";
    const std::string name =
        R"(<INSTANCENAME CLASSNAME="HostTest"><KEYBINDING NAME="Id"><KEYVALUE VALUETYPE="string">o&amp;1</KEYVALUE></KEYBINDING></INSTANCENAME>)";
    const std::string ref = "<VALUE.REFERENCE><LOCALINSTANCEPATH>" + ns + name +
                            "</LOCALINSTANCEPATH></VALUE.REFERENCE>";
    const std::string label =
        R"(<PROPERTY NAME="Label" TYPE="string"><VALUE>x&lt;y</VALUE></PROPERTY>)";
    EXPECT_EQ(
        out.take(),
        R"(<INSTANCENAME CLASSNAME="Test_Link"><KEYBINDING NAME="Left">)" + ref +
            R"(</KEYBINDING><KEYBINDING NAME="Port"><KEYVALUE VALUETYPE="numeric">80</KEYVALUE></KEYBINDING>)"
            R"(<KEYBINDING NAME="On"><KEYVALUE VALUETYPE="boolean">TRUE</KEYVALUE></KEYBINDING></INSTANCENAME>)"
            "<OBJECTPATH><INSTANCEPATH><NAMESPACEPATH><HOST>server.example</HOST>" +
            ns + "</NAMESPACEPATH>" + name + "</INSTANCEPATH></OBJECTPATH>" +
            "<VALUE.NAMEDINSTANCE>" + name + R"(<INSTANCE CLASSNAME="HostTest">)" +
            R"(<PROPERTY NAME="Id" TYPE="string"><VALUE>o&amp;1</VALUE></PROPERTY>)"
            R"(<PROPERTY NAME="Count" TYPE="uint32"><VALUE>5</VALUE></PROPERTY>)" +
            label +
            R"(<PROPERTY NAME="Caption" TYPE="string"></PROPERTY>)"
            R"(<PROPERTY.ARRAY NAME="Sizes" TYPE="uint16"></PROPERTY.ARRAY></INSTANCE></VALUE.NAMEDINSTANCE>)"
            R"(<INSTANCE CLASSNAME="HostTest">)" +
            label + "</INSTANCE>" + R"(<PARAMVALUE NAME="Made" PARAMTYPE="reference">)" + ref +
            "</PARAMVALUE>");
}

TEST(CimXmlDecode, KeysTakeTheTypesOfTheClass) {
    cmpihost::Request request;
    const zoneserver::Decoder decoder(schema(), "root/cimv2");
    pugi::xml_document doc;
    auto name = [&](const std::string &cls, const std::string &bindings) {
        doc.load_string(
            ("<INSTANCENAME CLASSNAME=\"" + cls + "\">" + bindings + "</INSTANCENAME>").c_str());
        return decoder.instance_name(doc.child("INSTANCENAME"), "root/cimv2");
    };
    auto binding = [](const std::string &key, const std::string &value, std::string type = "") {
        if (!type.empty()) type = " VALUETYPE=\"" + type + "\"";
        return "<KEYBINDING NAME=\"" + key + "\"><KEYVALUE" + type + ">" + value +
               "</KEYVALUE></KEYBINDING>";
    };
    // wbemcli sends VALUETYPE from the user's spelling; a class the schema
    // knows decides, and an unknown one is typed by VALUETYPE.
    const CMPIObjectPath *typed =
        name("Test_Typed", binding("port", "8080", "string") + binding("Name", "123", "numeric") +
                               binding("On", "true", "boolean"));
    const CMPIObjectPath *other = name("Other", binding("N", "-5", "numeric") + binding("S", "7"));
    struct Case {
        const CMPIObjectPath *path;
        const char *key;
        const char *text;
        CMPIType type;
    };
    const Case cases[] = {
        {typed, "Port", "8080", CMPI_uint16}, {typed, "Name", "123", CMPI_string},
        {typed, "On", "true", CMPI_boolean},  {other, "N", "-5", CMPI_sint64},
        {other, "S", "7", CMPI_string},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.key);
        CMPIType type = CMPI_null;
        EXPECT_EQ(key_text(c.path, c.key, &type), c.text);
        EXPECT_EQ(type, c.type);
    }
    // Text that isn't a value of the key's type is refused.
    for (const auto &[key, bad] : std::vector<std::pair<std::string, std::string>>{
             {"Port", "abc"}, {"Port", "70000"}, {"Port", "-1"}, {"Port", ""}, {"On", "maybe"}}) {
        SCOPED_TRACE(key + "=" + bad);
        EXPECT_EQ(cim_code([&] { name("Test_Typed", binding(key, bad)); }),
                  zoneserver::kCimInvalidParameter);
    }
}

TEST(CimXmlDecode, ReferencesInEveryShapeAndNoDeeperThanALimit) {
    cmpihost::Request request;
    const zoneserver::Decoder decoder(schema(), "root/cimv2");
    const std::string name =
        R"(<INSTANCENAME CLASSNAME="HostTest"><KEYBINDING NAME="Id"><KEYVALUE>a</KEYVALUE></KEYBINDING></INSTANCENAME>)";
    const std::string ns =
        R"(<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="other"/></LOCALNAMESPACEPATH>)";
    const std::pair<std::string, const char *> cases[] = {
        {"<INSTANCEPATH><NAMESPACEPATH><HOST>h1</HOST>" + ns + "</NAMESPACEPATH>" + name +
             "</INSTANCEPATH>",
         "h1/root/other:HostTest.Id=\"a\""},
        {"<LOCALINSTANCEPATH>" + ns + name + "</LOCALINSTANCEPATH>",
         "root/other:HostTest.Id=\"a\""},
        {name, "root/cimv2:HostTest.Id=\"a\""},
    };
    for (const auto &[xml, text] : cases) {
        SCOPED_TRACE(xml);
        const auto doc = parse("<VALUE.REFERENCE>" + xml + "</VALUE.REFERENCE>");
        EXPECT_EQ(cmpihost::pathToString(decoder.reference(doc.first_child())), text);
    }
    // A reference key holding a reference key holding ... is cut off.
    std::string nested = name;
    for (int i = 0; i < 40; ++i)
        nested =
            R"(<INSTANCENAME CLASSNAME="Test_Link"><KEYBINDING NAME="Left"><VALUE.REFERENCE>)" +
            nested + "</VALUE.REFERENCE></KEYBINDING></INSTANCENAME>";
    const auto deep = parse(nested);
    EXPECT_EQ(cim_code([&] { decoder.instance_name(deep.first_child(), "root/cimv2"); }),
              zoneserver::kCimInvalidParameter);
}

TEST(CimXmlDecode, MethodArgumentsComeInDeclaredOrderTypedByTheSchema) {
    cmpihost::Request request;
    const zoneserver::Decoder decoder(schema(), "root/cimv2");
    CMPIObjectPath *target = request.newObjectPath("root/cimv2", "HostTest");
    cmpihost::addStringKey(target, "Id", "a");
    pugi::xml_document doc;
    auto arguments = [&](const std::string &params) {
        doc.load_string(("<METHODCALL NAME=\"Count\">" + params + "</METHODCALL>").c_str());
        return decoder.method_arguments(target, "count", doc.child("METHODCALL"));
    };
    const CMPIArgs *args = arguments(
        R"(<PARAMVALUE NAME="flags"><VALUE.ARRAY><VALUE>TRUE</VALUE><VALUE>false</VALUE></VALUE.ARRAY></PARAMVALUE>)"
        R"(<PARAMVALUE NAME="Target"><VALUE>HostTest.Id="b"</VALUE></PARAMVALUE>)"
        R"(<PARAMVALUE NAME="BETA"><VALUE>7</VALUE></PARAMVALUE>)"
        R"(<PARAMVALUE NAME="alpha"><VALUE>first</VALUE></PARAMVALUE>)");
    ASSERT_EQ(args->ft->getArgCount(args, nullptr), 4u);
    Names names;
    std::vector<CMPIType> types;
    for (unsigned int i = 0; i < 4; ++i) {
        CMPIString *arg_name = nullptr;
        types.push_back(args->ft->getArgAt(args, i, &arg_name, nullptr).type);
        names.push_back(cmpihost::text(arg_name));
    }
    EXPECT_EQ(names, (Names{"Alpha", "Beta", "Target", "Flags"}));
    EXPECT_EQ(types, (std::vector<CMPIType>{CMPI_string, CMPI_uint16, CMPI_ref,
                                            static_cast<CMPIType>(CMPI_ARRAY | CMPI_boolean)}));
    EXPECT_EQ(cmpihost::dataText(args->ft->getArg(args, "Target", nullptr)),
              "root/cimv2:HostTest.Id=\"b\"");
    EXPECT_EQ(cmpihost::valueToString(args->ft->getArg(args, "Flags", nullptr)), "true,false");

    // Refusals: an unknown name, an output parameter, a value of the wrong type.
    for (const char *bad :
         {R"(<PARAMVALUE NAME="Gamma"><VALUE>1</VALUE></PARAMVALUE>)",
          R"(<PARAMVALUE NAME="First"><VALUE>1</VALUE></PARAMVALUE>)",
          R"(<PARAMVALUE NAME="Beta"><VALUE>lots</VALUE></PARAMVALUE>)",
          R"(<PARAMVALUE NAME="Target"><VALUE>not a path</VALUE></PARAMVALUE>)"}) {
        SCOPED_TRACE(bad);
        EXPECT_EQ(cim_code([&] { arguments(bad); }), zoneserver::kCimInvalidParameter);
    }
}

// ---- Whole requests through the service -------------------------------------

class CimXmlServiceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string error;
        provider_ = cmpihost::Provider::load(host_test::testProviderPath(), "HostTest", &error);
        ASSERT_NE(provider_, nullptr) << error;
        service_ = std::make_unique<zoneserver::CimXmlService>(*provider_, schema(), "testhost");
    }

    static std::string envelope(const std::string &call) {
        return R"(<?xml version="1.0" encoding="utf-8" ?><CIM CIMVERSION="2.0" DTDVERSION="2.0">)"
               R"(<MESSAGE ID="4711" PROTOCOLVERSION="1.0"><SIMPLEREQ>)" +
               call + "</SIMPLEREQ></MESSAGE></CIM>";
    }
    static std::string intrinsic(
        const std::string &op, const std::string &params,
        const std::string &ns = "<NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/>") {
        return envelope("<IMETHODCALL NAME=\"" + op + "\"><LOCALNAMESPACEPATH>" + ns +
                        "</LOCALNAMESPACEPATH>" + params + "</IMETHODCALL>");
    }
    static std::string param(const std::string &name, const std::string &value) {
        return "<IPARAMVALUE NAME=\"" + name + "\">" + value + "</IPARAMVALUE>";
    }
    static std::string class_param(const std::string &name, const std::string &cls) {
        return param(name, "<CLASSNAME NAME=\"" + cls + "\"/>");
    }
    static std::string instance_name(const std::string &cls, const std::string &id) {
        return "<INSTANCENAME CLASSNAME=\"" + cls + "\"><KEYBINDING NAME=\"Id\"><KEYVALUE>" + id +
               "</KEYVALUE></KEYBINDING></INSTANCENAME>";
    }
    // An extrinsic call on HostTest.Id="a".
    static std::string method(const std::string &name, const std::string &params) {
        return envelope("<METHODCALL NAME=\"" + name +
                        R"("><LOCALINSTANCEPATH><LOCALNAMESPACEPATH><NAMESPACE NAME="root"/>)"
                        R"(<NAMESPACE NAME="cimv2"/></LOCALNAMESPACEPATH>)" +
                        instance_name("HostTest", "a") + "</LOCALINSTANCEPATH>" + params +
                        "</METHODCALL>");
    }

    // The IMETHODRESPONSE or METHODRESPONSE of an answer with status 200.
    pugi::xml_node response(const std::string &body) {
        const zoneserver::Answer answer = service_->handle(body);
        EXPECT_EQ(answer.http_status, 200) << answer.summary;
        const std::string text = answer.body.str();
        EXPECT_EQ(text.size(), answer.body.size());
        EXPECT_EQ(text.rfind("<?xml version=\"1.0\" encoding=\"utf-8\" ?>", 0), 0u);
        EXPECT_EQ(text.find("/>"), std::string::npos) << text;
        doc_ = parse(text);
        const auto message = doc_.child("CIM").child("MESSAGE");
        EXPECT_STREQ(message.attribute("ID").value(), "4711");
        const auto rsp = message.child("SIMPLERSP");
        return rsp.child("IMETHODRESPONSE") ? rsp.child("IMETHODRESPONSE")
                                            : rsp.child("METHODRESPONSE");
    }
    int error_code(const std::string &body) {
        return response(body).child("ERROR").attribute("CODE").as_int();
    }

    std::unique_ptr<cmpihost::Provider> provider_;
    std::unique_ptr<zoneserver::CimXmlService> service_;
    pugi::xml_document doc_;
};

TEST_F(CimXmlServiceTest, WhatIsNoCimXmlRequestIsAProtocolError) {
    const std::string message =
        R"(<CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION=)";
    // A body, the HTTP status and the CIMError header it is answered with.
    const std::tuple<std::string, int, const char *> cases[] = {
        {"", 400, "request-not-well-formed"},
        {"<HTML></HTML>", 400, "request-not-valid"},
        {message + R"("1.0"><SIMPLERSP/></MESSAGE></CIM>)", 400, "request-not-valid"},
        {message + R"("2.0"><SIMPLEREQ/></MESSAGE></CIM>)", 501, "unsupported-protocol-version"},
        {R"(<CIM CIMVERSION="3.0" DTDVERSION="2.0"></CIM>)", 501, "unsupported-cim-version"},
    };
    for (const auto &[body, status, cim_error] : cases) {
        SCOPED_TRACE(body);
        const zoneserver::Answer answer = service_->handle(body);
        EXPECT_EQ(answer.http_status, status);
        EXPECT_EQ(answer.cim_error, cim_error);
        EXPECT_TRUE(answer.body.empty());
    }
}

TEST_F(CimXmlServiceTest, RefusalsCarryTheirCimStatus) {
    const std::string names = class_param("ClassName", "HostTest");
    EXPECT_EQ(error_code(intrinsic("GetProperty", names)), zoneserver::kCimNotSupported);
    EXPECT_EQ(error_code(intrinsic("EnumerateInstanceNames", names + class_param("Bogus", "X"))),
              zoneserver::kCimInvalidParameter);
    EXPECT_EQ(error_code(intrinsic("GetInstance", "")), zoneserver::kCimInvalidParameter);
    EXPECT_EQ(error_code(intrinsic("AssociatorNames", class_param("ObjectName", "HostTest"))),
              zoneserver::kCimNotSupported);
    // A refused argument never reaches the provider.
    EXPECT_EQ(
        error_code(method("Echo", R"(<PARAMVALUE NAME="Result"><VALUE>x</VALUE></PARAMVALUE>)")),
        zoneserver::kCimInvalidParameter);

    // The provider's rc and message reach the client; the standard text
    // stands in when it gave none.
    const auto missing =
        response(
            intrinsic("GetInstance", param("InstanceName", instance_name("HostTest", "missing"))))
            .child("ERROR");
    EXPECT_EQ(missing.attribute("CODE").as_int(), zoneserver::kCimNotFound);
    EXPECT_STREQ(missing.attribute("DESCRIPTION").value(), "no instance missing");
    const auto modify =
        response(
            intrinsic(
                "ModifyInstance",
                param("ModifiedInstance",
                      "<VALUE.NAMEDINSTANCE>" + instance_name("HostTest", "a") +
                          R"(<INSTANCE CLASSNAME="HostTest"><PROPERTY NAME="Count" TYPE="uint32">)"
                          R"(<VALUE>3</VALUE></PROPERTY></INSTANCE></VALUE.NAMEDINSTANCE>)")))
            .child("ERROR");
    EXPECT_EQ(modify.attribute("CODE").as_int(), zoneserver::kCimNotSupported);
    EXPECT_EQ(std::string(modify.attribute("DESCRIPTION").value()),
              zoneserver::standard_description(zoneserver::kCimNotSupported));
}

TEST_F(CimXmlServiceTest, NamesMatchInAnyCaseAndEmptyAnswersAreNoErrors) {
    // The operation name is echoed as sent; the namespace may be spelt in any case.
    const auto names =
        response(intrinsic("enumerateinstancenames", class_param("classname", "test_element"),
                           "<NAMESPACE NAME=\"ROOT\"/><NAMESPACE NAME=\"CIMV2\"/>"));
    EXPECT_STREQ(names.attribute("NAME").value(), "enumerateinstancenames");
    const auto found = names.child("IRETURNVALUE").children("INSTANCENAME");
    EXPECT_EQ(std::distance(found.begin(), found.end()), 3);
    // A class without instances of its own or below it: empty, not an error.
    const auto none =
        response(intrinsic("EnumerateInstances", class_param("ClassName", "Test_Typed")));
    EXPECT_TRUE(none.child("IRETURNVALUE"));
    EXPECT_FALSE(none.child("IRETURNVALUE").first_child());
    EXPECT_FALSE(none.child("ERROR"));
    const auto deleted = response(
        intrinsic("DeleteInstance", param("InstanceName", instance_name("HostTest", "a"))));
    EXPECT_FALSE(deleted.first_child()) << "DeleteInstance answers nothing";
}

TEST_F(CimXmlServiceTest, MethodsAnswerReturnValueFirstThenTheOutputs) {
    const auto counted = response(method(
        "Count",
        R"(<PARAMVALUE NAME="beta"><VALUE>2</VALUE></PARAMVALUE><PARAMVALUE NAME="ALPHA"><VALUE>x</VALUE></PARAMVALUE>)"));
    ASSERT_TRUE(counted.first_child());
    EXPECT_STREQ(counted.first_child().name(), "RETURNVALUE");
    EXPECT_STREQ(counted.child("RETURNVALUE").attribute("PARAMTYPE").value(), "uint32");
    EXPECT_STREQ(counted.child("RETURNVALUE").child_value("VALUE"), "2");
    EXPECT_STREQ(
        counted.find_child_by_attribute("PARAMVALUE", "NAME", "First").child_value("VALUE"),
        "Alpha");
    const auto echoed =
        response(method("Echo", R"(<PARAMVALUE NAME="Text"><VALUE>a&lt;b</VALUE></PARAMVALUE>)"));
    EXPECT_STREQ(echoed.child("RETURNVALUE").attribute("PARAMTYPE").value(), "string");
    EXPECT_STREQ(echoed.child("RETURNVALUE").child_value("VALUE"), "a<b");
    EXPECT_STREQ(echoed.child("PARAMVALUE").child_value("VALUE"), "a<b");
}

TEST_F(CimXmlServiceTest, ClassesComeFromTheSchema) {
    // LocalOnly defaults to TRUE: only what the class declares itself.
    const auto local = response(intrinsic("GetClass", class_param("ClassName", "HostTest")))
                           .child("IRETURNVALUE")
                           .child("CLASS");
    EXPECT_STREQ(local.attribute("SUPERCLASS").value(), "Test_Element");
    EXPECT_FALSE(local.find_child_by_attribute("PROPERTY", "NAME", "Id"));

    const auto all =
        response(intrinsic("GetClass", class_param("ClassName", "HostTest") +
                                           param("LocalOnly", "<VALUE>false</VALUE>") +
                                           param("IncludeClassOrigin", "<VALUE>TRUE</VALUE>")))
            .child("IRETURNVALUE")
            .child("CLASS");
    auto qualifier = [](pugi::xml_node node, const char *name) {
        return std::string(
            node.find_child_by_attribute("QUALIFIER", "NAME", name).child_value("VALUE"));
    };
    const auto id = all.find_child_by_attribute("PROPERTY", "NAME", "Id");
    EXPECT_STREQ(id.attribute("CLASSORIGIN").value(), "Test_Element");
    EXPECT_STREQ(id.attribute("PROPAGATED").value(), "true");
    EXPECT_EQ(qualifier(id, "Key"), "TRUE");
    const auto count = all.find_child_by_attribute("METHOD", "NAME", "Count");
    EXPECT_STREQ(count.attribute("TYPE").value(), "uint32");
    Names parameters;
    for (auto parameter : count.children()) parameters.push_back(parameter.name());
    EXPECT_EQ(parameters, (Names{"PARAMETER", "PARAMETER", "PARAMETER.REFERENCE", "PARAMETER.ARRAY",
                                 "PARAMETER"}));
    EXPECT_STREQ(count.find_child_by_attribute("PARAMETER.REFERENCE", "NAME", "Target")
                     .attribute("REFERENCECLASS")
                     .value(),
                 "HostTest");
    const auto first = count.find_child_by_attribute("PARAMETER", "NAME", "First");
    EXPECT_EQ(qualifier(first, "OUT"), "TRUE");
    EXPECT_EQ(qualifier(first, "IN"), "FALSE");

    auto class_names = [&](const std::string &params) {
        Names found;
        for (auto name :
             response(intrinsic("EnumerateClassNames", params)).child("IRETURNVALUE").children())
            found.push_back(name.attribute("NAME").value());
        return found;
    };
    EXPECT_EQ(class_names(""), (Names{"Test_Element", "Test_Typed", "Test_Link"}));
    EXPECT_EQ(class_names(class_param("ClassName", "Test_Element")), Names{"HostTest"});
    EXPECT_EQ(class_names(param("DeepInheritance", "<VALUE>TRUE</VALUE>")).size(),
              schema().classes().size());
}

}  // namespace
