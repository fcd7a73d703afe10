// Text forms: pathToString and instanceToString in wbemcli's form, and
// parsePath reading them (and wbemcli's own forms) back.
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include "host_test_support.h"

namespace {

using cmpihost::Request;

const CMPIBroker *mb() {
    return cmpihost::broker();
}

CMPIObjectPath *parse(const std::string &text) {
    std::string error;
    auto path = cmpihost::parsePath(text, &error);
    EXPECT_TRUE(path.has_value()) << text << ": " << error;
    return path.value_or(nullptr);
}

TEST(PathText, WritesHostNamespaceClassAndQuotedKeys) {
    Request request;
    CMPIObjectPath *op = request.newObjectPath("root/cimv2", "VORNA_Zone");
    EXPECT_EQ(cmpihost::pathToString(op), "root/cimv2:VORNA_Zone");
    cmpihost::addStringKey(op, "InstanceID", "a\"b\\c,d");
    CMPISint64 minus = -7;
    CMPIBoolean no = 0;
    CMAddKey(op, "Num", &minus, CMPI_sint64);
    CMAddKey(op, "Flag", &no, CMPI_boolean);
    EXPECT_EQ(cmpihost::pathToString(op),
              R"(root/cimv2:VORNA_Zone.InstanceID="a\"b\\c,d",Num=-7,Flag=false)");
    CMSetHostname(op, "switch1");
    EXPECT_EQ(cmpihost::pathToString(op).substr(0, 30), "switch1/root/cimv2:VORNA_Zone.");
    EXPECT_EQ(cmpihost::pathToString(request.newObjectPath("", "C")), "C");
    EXPECT_EQ(cmpihost::pathToString(nullptr), "");

    // A reference key is its target's text, quoted once more.
    CMPIObjectPath *set = request.newObjectPath("root/cimv2", "VORNA_ZoneSet");
    cmpihost::addStringKey(set, "InstanceID", "1^1^0");
    CMPIObjectPath *link = request.newObjectPath("root/cimv2", "VORNA_ZoneMemberOfCollection");
    cmpihost::addReferenceKey(link, "Collection", set);
    EXPECT_EQ(
        cmpihost::pathToString(link),
        R"(root/cimv2:VORNA_ZoneMemberOfCollection.Collection="root/cimv2:VORNA_ZoneSet.InstanceID=\"1^1^0\"")");
}

TEST(PathText, ParsesWhatItWritesBackToTheSamePath) {
    Request request;
    const std::string texts[] = {
        "root/cimv2:VORNA_Zone",
        "Plain",
        R"(root/cimv2:VORNA_Zone.InstanceID="1^2^0")",
        R"(root/cimv2:VORNA_Zone.InstanceID="",Name="a,b=c.d:e")",
        R"(ns:C.Id="quote \" and backslash \\ inside",N=-5,U=18446744073709551615,B=true)",
        R"(root/cimv2:L.Left="root/cimv2:A.Id=\"x\"",Right="root/cimv2:B.Id=\"y\",N=2")",
    };
    for (const std::string &text : texts) {
        CMPIObjectPath *op = parse(text);
        EXPECT_EQ(cmpihost::pathToString(op), text);
    }

    // Two levels of references around a key with quotes and backslashes.
    CMPIObjectPath *inner = request.newObjectPath("ns", "In");
    cmpihost::addStringKey(inner, "K", R"(deep \ "q" \")");
    CMPIObjectPath *mid = request.newObjectPath("ns", "Mid");
    cmpihost::addReferenceKey(mid, "Inner", inner);
    CMPIObjectPath *outer = request.newObjectPath("ns", "Outer");
    cmpihost::addReferenceKey(outer, "Ref", mid);
    const std::string nested = cmpihost::pathToString(outer);
    CMPIObjectPath *back = parse(nested);
    EXPECT_EQ(cmpihost::pathToString(back), nested);
    CMPIData midRef = CMGetKey(back, "Ref", nullptr);
    ASSERT_EQ(midRef.type, CMPI_ref);
    CMPIData innerRef = CMGetKey(midRef.value.ref, "Inner", nullptr);
    ASSERT_EQ(innerRef.type, CMPI_ref);
    EXPECT_EQ(host_test::str(CMGetKey(innerRef.value.ref, "K", nullptr)), R"(deep \ "q" \")");

    CMPIObjectPath *op = parse(R"(root/cimv2:L.Left="root/cimv2:A.Id=\"x\"",Count=3)");
    CMPIData left = CMGetKey(op, "Left", nullptr);
    ASSERT_EQ(left.type, CMPI_ref);
    EXPECT_EQ(host_test::str(CMGetKey(left.value.ref, "Id", nullptr)), "x");
    EXPECT_STREQ(CMGetCharPtr(CMGetNameSpace(left.value.ref, nullptr)), "root/cimv2");
    EXPECT_EQ(CMGetKey(op, "Count", nullptr).type, CMPI_sint64);
}

TEST(PathText, ReadsWbemcliFormsAndTypesUnquotedValues) {
    Request request;
    CMPIObjectPath *op = parse(R"(http://localhost:5988/root/cimv2:VORNA_Zone.InstanceID="1^2^0")");
    EXPECT_EQ(cmpihost::pathToString(op), R"(root/cimv2:VORNA_Zone.InstanceID="1^2^0")");
    op = parse(R"(127.0.0.1:5989/root/cimv2:Demo_Zone.Name="zoneA")");
    EXPECT_EQ(cmpihost::pathToString(op), R"(root/cimv2:Demo_Zone.Name="zoneA")");
    op = parse("//switch/interop:C");
    EXPECT_EQ(cmpihost::pathToString(op), "interop:C");

    op = parse(R"(root/cimv2:Demo_Link.Left=root/cimv2:Demo_Zone.Name="a,b",Name=zoneA,)"
               R"(N=-5,Big=18446744073709551615,F=FALSE,R=2.5,W=inf)");
    CMPIData left = CMGetKey(op, "Left", nullptr);
    ASSERT_EQ(left.type, CMPI_ref);
    EXPECT_EQ(host_test::str(CMGetKey(left.value.ref, "Name", nullptr)), "a,b");
    CMPIData name = CMGetKey(op, "Name", nullptr);
    EXPECT_EQ(name.type, CMPI_string);
    EXPECT_EQ(host_test::str(name), "zoneA");
    EXPECT_EQ(CMGetKey(op, "N", nullptr).value.sint64, -5);
    EXPECT_EQ(CMGetKey(op, "Big", nullptr).type, CMPI_uint64);
    CMPIData flag = CMGetKey(op, "F", nullptr);
    EXPECT_EQ(flag.type, CMPI_boolean);
    EXPECT_EQ(flag.value.boolean, 0);
    EXPECT_EQ(CMGetKey(op, "R", nullptr).value.real64, 2.5);
    EXPECT_EQ(CMGetKey(op, "W", nullptr).type, CMPI_string);
}

TEST(PathText, NamesThePositionOfEverySyntaxError) {
    Request request;
    struct Case {
        const char *text;
        const char *error;
    };
    const Case cases[] = {
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
    for (const Case &c : cases) {
        std::string error;
        EXPECT_FALSE(cmpihost::parsePath(c.text, &error).has_value()) << c.text;
        EXPECT_EQ(error, c.error) << c.text;
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

TEST(StatusText, DescribesCodeNameAndMessage) {
    EXPECT_EQ(cmpihost::describe({CMPI_RC_OK, std::nullopt}), "rc 0 (CMPI_RC_OK)");
    EXPECT_EQ(cmpihost::describe({CMPI_RC_ERR_NOT_FOUND, std::string("no zone")}),
              "rc 6 (CMPI_RC_ERR_NOT_FOUND): no zone");
    EXPECT_EQ(cmpihost::describe({CMPIrc(42), std::string()}), "rc 42 (unknown rc): ");
    EXPECT_EQ(cmpihost::text(nullptr), "");
}

}  // namespace
