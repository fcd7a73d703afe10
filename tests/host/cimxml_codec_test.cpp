// The CIM-XML pieces of the server: the escaping writer, CMPI objects in
// CIM-XML, CIM-XML read back into typed CMPI objects, and whole requests
// through the service against the host's test provider ("HostTest": key Id,
// instances a, b, c, no instance "missing"; methods Echo and Count).
//
// What a client relies on: answers that are well-formed whatever the data
// holds; the shapes wbemcli reads (no self-closed VALUE, RETURNVALUE first,
// NULL outputs left out); keys and arguments typed by the class, arguments
// in the method's declared order; the right CIM status for each refusal and
// protocol errors for what isn't a CIM-XML request.
#include <gtest/gtest.h>

#include <pugixml.hpp>

#include <string>
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
     "properties": [{"name": "Count", "type": "uint32"},
                    {"name": "Label", "type": "string"},
                    {"name": "Sizes", "type": "uint16", "array": true}],
     "methods": [
       {"name": "Echo", "return_type": "string",
        "parameters": [{"name": "Text", "type": "string"},
                       {"name": "Result", "type": "string", "in": false, "out": true}]},
       {"name": "Count", "return_type": "uint32",
        "parameters": [{"name": "Alpha", "type": "string"},
                       {"name": "Beta", "type": "uint16"},
                       {"name": "Target", "type": "reference", "reference_class": "HostTest"},
                       {"name": "Flags", "type": "boolean", "array": true},
                       {"name": "First", "type": "string", "in": false, "out": true}]}]},
    {"name": "Test_Typed",
     "properties": [{"name": "Port", "type": "uint16", "key": true},
                    {"name": "Name", "type": "string", "key": true},
                    {"name": "On", "type": "boolean", "key": true}]},
    {"name": "Test_Link", "association": true,
     "properties": [{"name": "Left", "type": "reference", "reference_class": "Test_Element",
                     "key": true},
                    {"name": "Right", "type": "reference", "reference_class": "Test_Element",
                     "key": true}]}
  ]
})";

const zoneschema::Schema &schema() {
    static const zoneschema::Schema parsed = zoneschema::Schema::parse(kSchemaJson, "test schema");
    return parsed;
}

pugi::xml_document parse(const std::string &xml) {
    pugi::xml_document doc;
    const auto result = doc.load_string(xml.c_str());
    EXPECT_TRUE(result) << result.description() << "\n" << xml;
    return doc;
}

// A fragment made by a writer, wrapped so that it parses as one document.
pugi::xml_document parse_fragment(const std::string &xml) {
    return parse("<ROOT>" + xml + "</ROOT>");
}

std::string key_text(const CMPIObjectPath *path, const char *key, CMPIType *type = nullptr) {
    CMPIStatus rc{CMPI_RC_OK, nullptr};
    const CMPIData data = path->ft->getKey(path, key, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_OK) << key;
    if (type != nullptr) *type = data.type;
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
    std::string expected;
    out.open("R");
    expected += "<R>";
    const std::string long_text(100 * 1024, 'x');
    for (int i = 0; i < 300; ++i) {
        // Escaped text that keeps landing on block borders.
        const std::string text =
            "v" + std::to_string(i) + "<&>" + std::string(500, static_cast<char>('a' + i % 26));
        out.element("VALUE", text);
        expected += "<VALUE>v" + std::to_string(i) + "&lt;&amp;&gt;" +
                    std::string(500, static_cast<char>('a' + i % 26)) + "</VALUE>";
        if (i % 100 == 50) {
            // A fragment bigger than a block, another one tiny, one with an
            // element left open.
            zoneserver::XmlWriter big;
            big.element("BIG", long_text);
            out.append(std::move(big));
            expected += "<BIG>" + long_text + "</BIG>";
            zoneserver::XmlWriter small;
            small.open("S").attribute("N", "\"");
            out.append(std::move(small));
            expected += "<S N=\"&quot;\"></S>";
            EXPECT_EQ(big.size(), 0u);
            EXPECT_EQ(small.depth(), 0u);
        }
    }
    // An open start tag is finished before a fragment lands behind it.
    out.open("T");
    zoneserver::XmlWriter inner;
    inner.element("U", "1");
    out.append(std::move(inner));
    expected += "<T><U>1</U></T></R>";

    EXPECT_EQ(out.str() + "</T></R>", expected);
    zoneserver::XmlText text = out.take_text();
    EXPECT_EQ(out.size(), 0u);
    EXPECT_EQ(out.str(), "");
    ASSERT_EQ(text.size(), expected.size());
    EXPECT_GT(text.blocks().size(), 4u);
    std::size_t sum = 0;
    for (const std::string &block : text.blocks()) sum += block.size();
    EXPECT_EQ(sum, expected.size());
    EXPECT_TRUE(text.str() == expected);
    // A sender frees blocks as it goes; the rest stays as it was.
    const std::string last = text.blocks().back();
    text.release_block(0);
    EXPECT_TRUE(text.blocks().front().empty());
    EXPECT_EQ(text.blocks().back(), last);
    EXPECT_EQ(text.size(), expected.size());
}

TEST(CimXmlEncode, PathsAndInstancesInTheShapesClientsRead) {
    cmpihost::Request request;
    CMPIObjectPath *other = request.newObjectPath("root/cimv2", "HostTest");
    cmpihost::addStringKey(other, "Id", "o&1");
    CMPIObjectPath *link = request.newObjectPath("", "Test_Link");
    cmpihost::addReferenceKey(link, "Left", other);
    CMPIUint16 port = 80;
    link->ft->addKey(link, "Port", reinterpret_cast<const CMPIValue *>(&port), CMPI_uint16);
    CMPIBoolean on = 1;
    link->ft->addKey(link, "On", reinterpret_cast<const CMPIValue *>(&on), CMPI_boolean);

    const zoneserver::Encoder encoder(schema(), "root/cimv2", "server.example");
    zoneserver::XmlWriter names;
    encoder.instance_name(names, link);
    encoder.object_path(names, other);
    const auto doc = parse_fragment(names.take());
    const auto name = doc.child("ROOT").child("INSTANCENAME");
    EXPECT_STREQ(name.attribute("CLASSNAME").value(), "Test_Link");
    const auto left = name.find_child_by_attribute("KEYBINDING", "NAME", "Left");
    // References in keys: LOCALINSTANCEPATH, with the request's namespace
    // when the path has none of its own.
    const auto local = left.child("VALUE.REFERENCE").child("LOCALINSTANCEPATH");
    ASSERT_TRUE(local);
    EXPECT_EQ(zoneserver::namespace_path(local.child("LOCALNAMESPACEPATH")), "root/cimv2");
    EXPECT_STREQ(local.child("INSTANCENAME").child("KEYBINDING").child_value("KEYVALUE"), "o&1");
    const auto port_value =
        name.find_child_by_attribute("KEYBINDING", "NAME", "Port").child("KEYVALUE");
    EXPECT_STREQ(port_value.attribute("VALUETYPE").value(), "numeric");
    EXPECT_STREQ(port_value.child_value(), "80");
    const auto on_value =
        name.find_child_by_attribute("KEYBINDING", "NAME", "On").child("KEYVALUE");
    EXPECT_STREQ(on_value.attribute("VALUETYPE").value(), "boolean");
    EXPECT_STREQ(on_value.child_value(), "TRUE");
    // Full paths carry the server's host.
    const auto full = doc.child("ROOT").child("OBJECTPATH").child("INSTANCEPATH");
    EXPECT_STREQ(full.child("NAMESPACEPATH").child_value("HOST"), "server.example");

    // An instance: what the provider set, in its order, then the class's
    // other properties as NULL; a filter keeps the listed ones only.
    CMPIInstance *instance =
        cmpihost::broker()->eft->newInstance(cmpihost::broker(), other, nullptr);
    CMPIUint32 count = 5;
    instance->ft->setProperty(instance, "Count", reinterpret_cast<const CMPIValue *>(&count),
                              CMPI_uint32);
    instance->ft->setProperty(instance, "Label", reinterpret_cast<const CMPIValue *>("x<y"),
                              CMPI_chars);
    zoneserver::XmlWriter body;
    encoder.named_instance(body, instance, zoneserver::PropertyFilter());
    encoder.instance(body, instance, zoneserver::PropertyFilter(std::vector<std::string>{"label"}));
    const std::string xml = body.take();
    EXPECT_EQ(xml.find("/>"), std::string::npos) << xml;
    const auto written = parse_fragment(xml);
    const auto full_instance = written.child("ROOT").child("VALUE.NAMEDINSTANCE").child("INSTANCE");
    std::vector<std::string> order;
    for (auto property : full_instance.children())
        order.push_back(property.attribute("NAME").value());
    EXPECT_EQ(order, (std::vector<std::string>{"Id", "Count", "Label", "Caption", "Sizes"}));
    const auto count_property = full_instance.find_child_by_attribute("PROPERTY", "NAME", "Count");
    EXPECT_STREQ(count_property.attribute("TYPE").value(), "uint32");
    EXPECT_STREQ(count_property.child_value("VALUE"), "5");
    const auto sizes = full_instance.find_child_by_attribute("PROPERTY.ARRAY", "NAME", "Sizes");
    EXPECT_STREQ(sizes.attribute("TYPE").value(), "uint16");
    EXPECT_FALSE(sizes.child("VALUE.ARRAY"));
    EXPECT_FALSE(
        full_instance.find_child_by_attribute("PROPERTY", "NAME", "Caption").child("VALUE"));
    const auto filtered = written.child("ROOT").child("INSTANCE");
    EXPECT_EQ(std::distance(filtered.children().begin(), filtered.children().end()), 1);
    EXPECT_STREQ(filtered.first_child().child_value("VALUE"), "x<y");

    // Method results: a NULL value or output is left out altogether.
    zoneserver::XmlWriter method;
    CMPIData null_data{};
    null_data.type = CMPI_string;
    null_data.state = CMPI_nullValue;
    encoder.return_value(method, null_data);
    encoder.param_value(method, "Nothing", null_data);
    EXPECT_EQ(method.str(), "");
    CMPIData reference{};
    reference.type = CMPI_ref;
    reference.value.ref = other;
    encoder.param_value(method, "Made", reference);
    const auto out = parse_fragment(method.take());
    EXPECT_STREQ(out.child("ROOT").child("PARAMVALUE").attribute("PARAMTYPE").value(), "reference");
    EXPECT_TRUE(
        out.child("ROOT").child("PARAMVALUE").child("VALUE.REFERENCE").child("LOCALINSTANCEPATH"));
}

TEST(CimXmlDecode, KeysTakeTheTypesOfTheClass) {
    cmpihost::Request request;
    const zoneserver::Decoder decoder(schema(), "root/cimv2");
    auto name = [&](const std::string &bindings) {
        static pugi::xml_document doc;
        doc.load_string(
            ("<INSTANCENAME CLASSNAME=\"Test_Typed\">" + bindings + "</INSTANCENAME>").c_str());
        return decoder.instance_name(doc.child("INSTANCENAME"), "root/cimv2");
    };
    // wbemcli sends VALUETYPE from the user's spelling; the class decides.
    const CMPIObjectPath *path =
        name(R"(<KEYBINDING NAME="port"><KEYVALUE VALUETYPE="string">8080</KEYVALUE></KEYBINDING>)"
             R"(<KEYBINDING NAME="Name"><KEYVALUE VALUETYPE="numeric">123</KEYVALUE></KEYBINDING>)"
             R"(<KEYBINDING NAME="On"><KEYVALUE VALUETYPE="boolean">true</KEYVALUE></KEYBINDING>)");
    CMPIType type = CMPI_null;
    EXPECT_EQ(key_text(path, "Port", &type), "8080");
    EXPECT_EQ(type, CMPI_uint16);
    EXPECT_EQ(key_text(path, "Name", &type), "123");
    EXPECT_EQ(type, CMPI_string);
    EXPECT_EQ(key_text(path, "On", &type), "true");
    EXPECT_EQ(type, CMPI_boolean);

    // Text that isn't a value of the key's type is refused.
    for (const char *bad : {"abc", "70000", "-1", ""}) {
        SCOPED_TRACE(bad);
        EXPECT_EQ(cim_code([&] {
                      name(std::string(R"(<KEYBINDING NAME="Port"><KEYVALUE>)") + bad +
                           "</KEYVALUE></KEYBINDING>");
                  }),
                  zoneserver::kCimInvalidParameter);
    }
    EXPECT_EQ(
        cim_code([&] { name(R"(<KEYBINDING NAME="On"><KEYVALUE>maybe</KEYVALUE></KEYBINDING>)"); }),
        zoneserver::kCimInvalidParameter);

    // A class the schema doesn't know: typed by VALUETYPE.
    pugi::xml_document unknown;
    unknown.load_string(
        R"(<INSTANCENAME CLASSNAME="Other"><KEYBINDING NAME="N"><KEYVALUE VALUETYPE="numeric">-5</KEYVALUE></KEYBINDING>)"
        R"(<KEYBINDING NAME="S"><KEYVALUE>7</KEYVALUE></KEYBINDING></INSTANCENAME>)");
    const CMPIObjectPath *other =
        decoder.instance_name(unknown.child("INSTANCENAME"), "root/cimv2");
    EXPECT_EQ(key_text(other, "N", &type), "-5");
    EXPECT_EQ(type, CMPI_sint64);
    EXPECT_EQ(key_text(other, "S", &type), "7");
    EXPECT_EQ(type, CMPI_string);
}

TEST(CimXmlDecode, ReferencesInEveryShapeAndNoDeeperThanALimit) {
    cmpihost::Request request;
    const zoneserver::Decoder decoder(schema(), "root/cimv2");
    const std::string name =
        R"(<INSTANCENAME CLASSNAME="HostTest"><KEYBINDING NAME="Id"><KEYVALUE>a</KEYVALUE></KEYBINDING></INSTANCENAME>)";
    const std::string ns =
        R"(<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="other"/></LOCALNAMESPACEPATH>)";
    struct Case {
        std::string xml;
        const char *text;
    };
    const std::vector<Case> cases = {
        {"<VALUE.REFERENCE><INSTANCEPATH><NAMESPACEPATH><HOST>h1</HOST>" + ns + "</NAMESPACEPATH>" +
             name + "</INSTANCEPATH></VALUE.REFERENCE>",
         "h1/root/other:HostTest.Id=\"a\""},
        {"<VALUE.REFERENCE><LOCALINSTANCEPATH>" + ns + name +
             "</LOCALINSTANCEPATH></VALUE.REFERENCE>",
         "root/other:HostTest.Id=\"a\""},
        {"<VALUE.REFERENCE>" + name + "</VALUE.REFERENCE>", "root/cimv2:HostTest.Id=\"a\""},
    };
    for (const Case &c : cases) {
        pugi::xml_document doc;
        ASSERT_TRUE(doc.load_string(c.xml.c_str()));
        EXPECT_EQ(cmpihost::pathToString(decoder.reference(doc.first_child())), c.text) << c.xml;
    }

    // A reference key holding a reference key holding ... is cut off.
    std::string nested = name;
    for (int i = 0; i < 40; ++i)
        nested =
            R"(<INSTANCENAME CLASSNAME="Test_Link"><KEYBINDING NAME="Left"><VALUE.REFERENCE>)" +
            nested + "</VALUE.REFERENCE></KEYBINDING></INSTANCENAME>";
    pugi::xml_document deep;
    ASSERT_TRUE(deep.load_string(nested.c_str()));
    EXPECT_EQ(cim_code([&] { decoder.instance_name(deep.first_child(), "root/cimv2"); }),
              zoneserver::kCimInvalidParameter);
}

TEST(CimXmlDecode, MethodArgumentsComeInDeclaredOrderTypedByTheSchema) {
    cmpihost::Request request;
    const zoneserver::Decoder decoder(schema(), "root/cimv2");
    CMPIObjectPath *target = request.newObjectPath("root/cimv2", "HostTest");
    cmpihost::addStringKey(target, "Id", "a");
    auto arguments = [&](const std::string &params) {
        static pugi::xml_document doc;
        doc.load_string(("<METHODCALL NAME=\"Count\">" + params + "</METHODCALL>").c_str());
        return decoder.method_arguments(target, "count", doc.child("METHODCALL"));
    };
    const CMPIArgs *args = arguments(
        R"(<PARAMVALUE NAME="flags"><VALUE.ARRAY><VALUE>TRUE</VALUE><VALUE>false</VALUE></VALUE.ARRAY></PARAMVALUE>)"
        R"(<PARAMVALUE NAME="Target"><VALUE>HostTest.Id="b"</VALUE></PARAMVALUE>)"
        R"(<PARAMVALUE NAME="BETA"><VALUE>7</VALUE></PARAMVALUE>)"
        R"(<PARAMVALUE NAME="alpha"><VALUE>first</VALUE></PARAMVALUE>)");
    ASSERT_EQ(args->ft->getArgCount(args, nullptr), 4u);
    std::vector<std::string> names;
    std::vector<CMPIType> types;
    for (unsigned int i = 0; i < 4; ++i) {
        CMPIString *arg_name = nullptr;
        const CMPIData data = args->ft->getArgAt(args, i, &arg_name, nullptr);
        names.push_back(cmpihost::text(arg_name));
        types.push_back(data.type);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"Alpha", "Beta", "Target", "Flags"}));
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
    static std::string class_param(const std::string &name, const std::string &cls) {
        return "<IPARAMVALUE NAME=\"" + name + "\"><CLASSNAME NAME=\"" + cls + "\"/></IPARAMVALUE>";
    }
    static std::string instance_param(const std::string &name, const std::string &cls,
                                      const std::string &id) {
        return "<IPARAMVALUE NAME=\"" + name + "\"><INSTANCENAME CLASSNAME=\"" + cls +
               "\"><KEYBINDING NAME=\"Id\"><KEYVALUE>" + id +
               "</KEYVALUE></KEYBINDING></INSTANCENAME></IPARAMVALUE>";
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
    struct Case {
        std::string body;
        int status;
        const char *cim_error;
    };
    const std::vector<Case> cases = {
        {"<CIM><MESSAGE", 400, "request-not-well-formed"},
        {"", 400, "request-not-well-formed"},
        {"<HTML></HTML>", 400, "request-not-valid"},
        {R"(<CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLERSP/></MESSAGE></CIM>)",
         400, "request-not-valid"},
        {R"(<CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><MULTIREQ/></MESSAGE></CIM>)",
         501, "multiple-requests-unsupported"},
        {R"(<CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="2.0"><SIMPLEREQ/></MESSAGE></CIM>)",
         501, "unsupported-protocol-version"},
        {R"(<CIM CIMVERSION="3.0" DTDVERSION="2.0"></CIM>)", 501, "unsupported-cim-version"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.body);
        const zoneserver::Answer answer = service_->handle(c.body);
        EXPECT_EQ(answer.http_status, c.status);
        EXPECT_EQ(answer.cim_error, c.cim_error);
        EXPECT_TRUE(answer.body.empty());
    }
}

TEST_F(CimXmlServiceTest, RefusalsCarryTheirCimStatus) {
    const std::string names = class_param("ClassName", "HostTest");
    EXPECT_EQ(error_code(intrinsic("GetProperty", names)), zoneserver::kCimNotSupported);
    EXPECT_EQ(error_code(intrinsic("EnumerateInstanceNames", names,
                                   "<NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"other\"/>")),
              zoneserver::kCimInvalidNamespace);
    EXPECT_EQ(error_code(intrinsic("EnumerateInstanceNames", class_param("ClassName", "Nope"))),
              zoneserver::kCimInvalidClass);
    EXPECT_EQ(error_code(intrinsic("GetClass", class_param("ClassName", "Nope"))),
              zoneserver::kCimNotFound);
    EXPECT_EQ(error_code(intrinsic("EnumerateInstanceNames", names + class_param("Bogus", "X"))),
              zoneserver::kCimInvalidParameter);
    EXPECT_EQ(error_code(intrinsic("GetInstance", "")), zoneserver::kCimInvalidParameter);
    EXPECT_EQ(error_code(intrinsic("AssociatorNames", class_param("ObjectName", "HostTest"))),
              zoneserver::kCimNotSupported);

    // The provider's rc and message reach the client; the standard text
    // stands in when it gave none.
    const auto missing =
        response(intrinsic("GetInstance", instance_param("InstanceName", "HostTest", "missing")));
    EXPECT_EQ(missing.child("ERROR").attribute("CODE").as_int(), zoneserver::kCimNotFound);
    EXPECT_STREQ(missing.child("ERROR").attribute("DESCRIPTION").value(), "no instance missing");
    const auto modify = response(intrinsic(
        "ModifyInstance",
        R"(<IPARAMVALUE NAME="ModifiedInstance"><VALUE.NAMEDINSTANCE><INSTANCENAME CLASSNAME="HostTest"><KEYBINDING NAME="Id"><KEYVALUE>a</KEYVALUE></KEYBINDING></INSTANCENAME>)"
        R"(<INSTANCE CLASSNAME="HostTest"><PROPERTY NAME="Count" TYPE="uint32"><VALUE>3</VALUE></PROPERTY></INSTANCE></VALUE.NAMEDINSTANCE></IPARAMVALUE>)"));
    EXPECT_EQ(modify.child("ERROR").attribute("CODE").as_int(), zoneserver::kCimNotSupported);
    EXPECT_EQ(std::string(modify.child("ERROR").attribute("DESCRIPTION").value()),
              zoneserver::standard_description(zoneserver::kCimNotSupported));

    // Names are matched without regard to case, the operation name is echoed
    // as sent, and the namespace may be spelt in any case.
    const auto echoed =
        response(intrinsic("enumerateinstancenames", class_param("classname", "hosttest"),
                           "<NAMESPACE NAME=\"ROOT\"/><NAMESPACE NAME=\"CIMV2\"/>"));
    EXPECT_STREQ(echoed.attribute("NAME").value(), "enumerateinstancenames");
    EXPECT_FALSE(echoed.child("ERROR"));
}

TEST_F(CimXmlServiceTest, ASuperclassIsServedByItsSubclasses) {
    const auto names =
        response(intrinsic("EnumerateInstanceNames", class_param("ClassName", "Test_Element")));
    std::vector<std::string> ids;
    for (auto name : names.child("IRETURNVALUE").children("INSTANCENAME")) {
        EXPECT_STREQ(name.attribute("CLASSNAME").value(), "HostTest");
        ids.push_back(name.child("KEYBINDING").child_value("KEYVALUE"));
    }
    EXPECT_EQ(ids, (std::vector<std::string>{"a", "b", "c"}));

    const auto one =
        response(intrinsic("GetInstance", instance_param("InstanceName", "Test_Element", "b")));
    EXPECT_STREQ(one.child("IRETURNVALUE").child("INSTANCE").attribute("CLASSNAME").value(),
                 "HostTest");

    // A class without instances of its own or below it: empty, not an error.
    const auto none =
        response(intrinsic("EnumerateInstances", class_param("ClassName", "Test_Typed")));
    EXPECT_TRUE(none.child("IRETURNVALUE"));
    EXPECT_FALSE(none.child("IRETURNVALUE").first_child());
    EXPECT_FALSE(none.child("ERROR"));

    const auto deleted =
        response(intrinsic("DeleteInstance", instance_param("InstanceName", "HostTest", "a")));
    EXPECT_FALSE(deleted.first_child()) << "DeleteInstance answers nothing";
}

TEST_F(CimXmlServiceTest, MethodsAnswerReturnValueFirstAndTakeArgumentsInDeclaredOrder) {
    const std::string target =
        R"(<LOCALINSTANCEPATH><LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="cimv2"/></LOCALNAMESPACEPATH>)"
        R"(<INSTANCENAME CLASSNAME="HostTest"><KEYBINDING NAME="Id"><KEYVALUE>a</KEYVALUE></KEYBINDING></INSTANCENAME></LOCALINSTANCEPATH>)";
    const auto counted = response(envelope(
        "<METHODCALL NAME=\"Count\">" + target +
        R"(<PARAMVALUE NAME="beta"><VALUE>2</VALUE></PARAMVALUE><PARAMVALUE NAME="ALPHA"><VALUE>x</VALUE></PARAMVALUE></METHODCALL>)"));
    ASSERT_TRUE(counted.first_child());
    EXPECT_STREQ(counted.first_child().name(), "RETURNVALUE");
    EXPECT_STREQ(counted.child("RETURNVALUE").attribute("PARAMTYPE").value(), "uint32");
    EXPECT_STREQ(counted.child("RETURNVALUE").child_value("VALUE"), "2");
    EXPECT_STREQ(
        counted.find_child_by_attribute("PARAMVALUE", "NAME", "First").child_value("VALUE"),
        "Alpha");

    const auto echoed = response(
        envelope("<METHODCALL NAME=\"Echo\">" + target +
                 R"(<PARAMVALUE NAME="Text"><VALUE>a&lt;b</VALUE></PARAMVALUE></METHODCALL>)"));
    EXPECT_STREQ(echoed.child("RETURNVALUE").attribute("PARAMTYPE").value(), "string");
    EXPECT_STREQ(echoed.child("RETURNVALUE").child_value("VALUE"), "a<b");
    EXPECT_STREQ(echoed.child("PARAMVALUE").child_value("VALUE"), "a<b");

    // The provider's own refusal, inside METHODRESPONSE.
    const auto unknown =
        response(envelope("<METHODCALL NAME=\"Frobnicate\">" + target + "</METHODCALL>"));
    EXPECT_EQ(unknown.child("ERROR").attribute("CODE").as_int(), zoneserver::kCimMethodNotFound);
    // A refused argument never reaches the provider.
    const auto refused = response(
        envelope("<METHODCALL NAME=\"Echo\">" + target +
                 R"(<PARAMVALUE NAME="Result"><VALUE>x</VALUE></PARAMVALUE></METHODCALL>)"));
    EXPECT_EQ(refused.child("ERROR").attribute("CODE").as_int(), zoneserver::kCimInvalidParameter);
}

TEST_F(CimXmlServiceTest, ClassesComeFromTheSchema) {
    // LocalOnly defaults to TRUE: only what the class declares itself.
    const auto local = response(intrinsic("GetClass", class_param("ClassName", "HostTest")));
    const auto cls = local.child("IRETURNVALUE").child("CLASS");
    EXPECT_STREQ(cls.attribute("SUPERCLASS").value(), "Test_Element");
    EXPECT_FALSE(cls.find_child_by_attribute("PROPERTY", "NAME", "Id"));

    const auto full = response(intrinsic(
        "GetClass",
        class_param("ClassName", "HostTest") +
            R"(<IPARAMVALUE NAME="LocalOnly"><VALUE>false</VALUE></IPARAMVALUE>)"
            R"(<IPARAMVALUE NAME="IncludeClassOrigin"><VALUE>TRUE</VALUE></IPARAMVALUE>)"));
    const auto all = full.child("IRETURNVALUE").child("CLASS");
    const auto id = all.find_child_by_attribute("PROPERTY", "NAME", "Id");
    EXPECT_STREQ(id.attribute("CLASSORIGIN").value(), "Test_Element");
    EXPECT_STREQ(id.attribute("PROPAGATED").value(), "true");
    EXPECT_STREQ(id.find_child_by_attribute("QUALIFIER", "NAME", "Key").child_value("VALUE"),
                 "TRUE");
    const auto count = all.find_child_by_attribute("METHOD", "NAME", "Count");
    EXPECT_STREQ(count.attribute("TYPE").value(), "uint32");
    std::vector<std::string> parameters;
    for (auto parameter : count.children()) parameters.push_back(parameter.name());
    EXPECT_EQ(parameters, (std::vector<std::string>{"PARAMETER", "PARAMETER", "PARAMETER.REFERENCE",
                                                    "PARAMETER.ARRAY", "PARAMETER"}));
    EXPECT_STREQ(count.find_child_by_attribute("PARAMETER.REFERENCE", "NAME", "Target")
                     .attribute("REFERENCECLASS")
                     .value(),
                 "HostTest");
    const auto first = count.find_child_by_attribute("PARAMETER", "NAME", "First");
    EXPECT_STREQ(first.find_child_by_attribute("QUALIFIER", "NAME", "OUT").child_value("VALUE"),
                 "TRUE");
    EXPECT_STREQ(first.find_child_by_attribute("QUALIFIER", "NAME", "IN").child_value("VALUE"),
                 "FALSE");

    auto class_names = [&](const std::string &params) {
        std::vector<std::string> found;
        for (auto name :
             response(intrinsic("EnumerateClassNames", params)).child("IRETURNVALUE").children())
            found.push_back(name.attribute("NAME").value());
        return found;
    };
    EXPECT_EQ(class_names(""),
              (std::vector<std::string>{"Test_Element", "Test_Typed", "Test_Link"}));
    EXPECT_EQ(class_names(class_param("ClassName", "Test_Element")),
              std::vector<std::string>{"HostTest"});
    EXPECT_EQ(
        class_names(R"(<IPARAMVALUE NAME="DeepInheritance"><VALUE>TRUE</VALUE></IPARAMVALUE>)")
            .size(),
        schema().classes().size());
}

}  // namespace
