// Text forms: pathToString and instanceToString in wbemcli's form, parsePath
// reading them (and wbemcli's own forms) back, and status descriptions.
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include "host_test_support.h"

namespace {

using cmpihost::pathToString;
using cmpihost::Request;
using host_test::mb;
using host_test::str;

CMPIObjectPath *parse(const std::string &text) {
    std::string error;
    auto path = cmpihost::parsePath(text, &error);
    EXPECT_TRUE(path.has_value()) << text << ": " << error;
    return path.value_or(nullptr);
}

TEST(PathText, WritesHostNamespaceClassAndQuotedKeys) {
    Request request;
    CMPIObjectPath *op = request.newObjectPath("root/cimv2", "VORNA_Zone");
    EXPECT_EQ(pathToString(op), "root/cimv2:VORNA_Zone");
    cmpihost::addStringKey(op, "InstanceID", "a\"b\\c,d");
    CMPISint64 minus = -7;
    CMPIBoolean no = 0;
    CMAddKey(op, "Num", &minus, CMPI_sint64);
    CMAddKey(op, "Flag", &no, CMPI_boolean);
    EXPECT_EQ(pathToString(op),
              R"(root/cimv2:VORNA_Zone.InstanceID="a\"b\\c,d",Num=-7,Flag=false)");
    CMSetHostname(op, "switch1");
    EXPECT_EQ(pathToString(op).substr(0, 30), "switch1/root/cimv2:VORNA_Zone.");
    EXPECT_EQ(pathToString(request.newObjectPath("", "C")), "C");
    EXPECT_EQ(pathToString(nullptr), "");

    // A reference key is its target's text, quoted once more, at any depth;
    // parsing it gives back references, down to the innermost string.
    CMPIObjectPath *inner = request.newObjectPath("ns", "In");
    cmpihost::addStringKey(inner, "K", R"(deep \ "q" \")");
    CMPIObjectPath *mid = request.newObjectPath("ns", "Mid");
    cmpihost::addReferenceKey(mid, "Inner", inner);
    EXPECT_EQ(pathToString(mid), R"(ns:Mid.Inner="ns:In.K=\"deep \\\\ \\\"q\\\" \\\\\\\"\"")");
    CMPIObjectPath *outer = request.newObjectPath("ns", "Outer");
    cmpihost::addReferenceKey(outer, "Ref", mid);
    const std::string nested = pathToString(outer);
    CMPIObjectPath *back = parse(nested);
    EXPECT_EQ(pathToString(back), nested);
    CMPIData midRef = CMGetKey(back, "Ref", nullptr);
    ASSERT_EQ(midRef.type, CMPI_ref);
    CMPIData innerRef = CMGetKey(midRef.value.ref, "Inner", nullptr);
    ASSERT_EQ(innerRef.type, CMPI_ref);
    EXPECT_EQ(str(CMGetKey(innerRef.value.ref, "K", nullptr)), R"(deep \ "q" \")");
}

TEST(PathText, ParsesWhatItWritesAndWbemclisFormsToTheSamePath) {
    Request request;
    // The text, and what is written back for it (nullptr: the text itself).
    const std::pair<const char *, const char *> cases[] = {
        {"root/cimv2:VORNA_Zone", nullptr},
        {"Plain", nullptr},
        {R"(root/cimv2:VORNA_Zone.InstanceID="",Name="a,b=c.d:e")", nullptr},
        {R"(ns:C.Id="quote \" and backslash \\ inside",N=-5,U=18446744073709551615,B=true)",
         nullptr},
        {R"(root/cimv2:L.Left="root/cimv2:A.Id=\"x\"",Right="root/cimv2:B.Id=\"y\",N=2")", nullptr},
        // A host prefix in any of wbemcli's spellings is skipped.
        {R"(http://localhost:5988/root/cimv2:VORNA_Zone.InstanceID="1^2^0")",
         R"(root/cimv2:VORNA_Zone.InstanceID="1^2^0")"},
        {R"(127.0.0.1:5989/root/cimv2:Demo_Zone.Name="zoneA")",
         R"(root/cimv2:Demo_Zone.Name="zoneA")"},
        {"//switch/interop:C", "interop:C"},
    };
    for (const auto &[text, written] : cases)
        EXPECT_EQ(pathToString(parse(text)), written != nullptr ? written : text) << text;
}

TEST(PathText, TypesKeysByHowTheirValuesAreWritten) {
    Request request;
    CMPIObjectPath *op =
        parse(R"(root/cimv2:Demo_Link.Left=root/cimv2:Demo_Zone.Name="a,b",Name=zoneA,N=-5,)"
              R"(Big=18446744073709551615,F=FALSE,R=2.5,W=inf,Q="ns:A.Id=\"x\"",S="ns:A.Id")");
    struct Case {
        const char *key;
        CMPIType type;
        const char *text;
    };
    const Case cases[] = {
        {"Left", CMPI_ref, R"(root/cimv2:Demo_Zone.Name="a,b")"},
        {"Name", CMPI_string, "zoneA"},
        {"N", CMPI_sint64, "-5"},
        {"Big", CMPI_uint64, "18446744073709551615"},
        {"F", CMPI_boolean, "false"},
        {"R", CMPI_real64, "2.5"},
        {"W", CMPI_string, "inf"},
        {"Q", CMPI_ref, R"(ns:A.Id="x")"},
        {"S", CMPI_string, "ns:A.Id"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.key);
        const CMPIData key = CMGetKey(op, c.key, nullptr);
        EXPECT_EQ(key.type, c.type);
        EXPECT_EQ(str(key), c.text);
    }
}

TEST(PathText, NamesThePositionOfEverySyntaxError) {
    Request request;
    const std::pair<const char *, const char *> cases[] = {
        {"", "empty path at position 0"},
        {"root/cimv2:", "expected a class name at position 11"},
        {"root/cimv2:9Zone", "expected a class name at position 11"},
        {"ns:C Id=1", "expected '.' before the first key at position 7"},
        {R"(ns:C.Id="abc)", "unterminated quoted value at position 8"},
        {R"(ns:C.Id="a"x)", "expected ',' or the end at position 11"},
        {R"(ns:C.Id="a",)", "expected a key name at position 12"},
        {"ns:C.=1", "expected a key name at position 5"},
        {"ns:C.Id", "expected '=' at position 7"},
        {"ns:C.Id=", "expected a value at position 8"},
        {R"(ns:C.Id="a",id="b")", "duplicate key 'id' at position 12"},
        {"ns:C.N=99999999999999999999999", "number out of range at position 7"},
        {"http://host", "expected '/' after the host at position 11"},
        {"host:5988:C.K=1", "expected '/' after the host and port at position 4"},
        {R"(ns:C.R=ns:D.K="x,E=1)", "unterminated quoted value at position 7"},
        {R"(ns:C.R="ns:D.K=\"x")", "unterminated quoted value at position 15"},
    };
    for (const auto &[text, message] : cases) {
        std::string error;
        EXPECT_FALSE(cmpihost::parsePath(text, &error).has_value()) << text;
        EXPECT_EQ(error, message) << text;
    }
    EXPECT_FALSE(cmpihost::parsePath("", nullptr).has_value());
}

TEST(InstanceText, WritesPathThenPropertiesAsWbemcliDoes) {
    Request request;
    CMPIObjectPath *op = request.newObjectPath("root/cimv2", "VORNA_Zone");
    cmpihost::addStringKey(op, "InstanceID", "1^2^0");
    CMPIInstance *ci = CMNewInstance(mb(), op, nullptr);
    CMPIUint32 count = 5;
    CMSetProperty(ci, "Count", &count, CMPI_uint32);
    CMSetProperty(ci, "Caption", nullptr, CMPI_string);
    CMSetProperty(ci, "Empty", "", CMPI_chars);
    CMPIArray *names = CMNewArray(mb(), 2, CMPI_string, nullptr);
    CMSetArrayElementAt(names, 0, "p", CMPI_chars);
    CMSetArrayElementAt(names, 1, "q,r", CMPI_chars);
    CMSetProperty(ci, "Arr", &names, CMPI_stringA);
    CMPIArray *numbers = CMNewArray(mb(), 2, CMPI_uint16, nullptr);
    CMPIUint16 one = 1, two = 2;
    CMSetArrayElementAt(numbers, 0, &one, CMPI_uint16);
    CMSetArrayElementAt(numbers, 1, &two, CMPI_uint16);
    CMSetProperty(ci, "NArr", &numbers, CMPI_uint16A);
    CMPIArray *none = CMNewArray(mb(), 0, CMPI_string, nullptr);
    CMSetProperty(ci, "NoArr", &none, CMPI_stringA);
    CMSetProperty(ci, "Ref", &op, CMPI_ref);
    EXPECT_EQ(cmpihost::instanceToString(ci),
              R"(root/cimv2:VORNA_Zone.InstanceID="1^2^0" InstanceID="1^2^0",Count=5,Caption=,)"
              R"(Empty="",Arr="p","q,r",NArr=1,2,NoArr=,)"
              R"(Ref="root/cimv2:VORNA_Zone.InstanceID=\"1^2^0\"")");
    EXPECT_EQ(cmpihost::instanceToString(nullptr), "");
}

// Known codes, with and without a message, are read through describe() by the
// loader's tests; here what they can't reach.
TEST(StatusText, DescribesUnknownCodesAndEmptyMessages) {
    EXPECT_EQ(cmpihost::describe({CMPIrc(42), std::string()}), "rc 42 (unknown rc): ");
    EXPECT_EQ(cmpihost::text(nullptr), "");
}

}  // namespace
