// The encapsulated objects through their function tables, as a provider
// reaches them: values in and out, types, states, and the status of every
// kind of bad input.
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include <memory>

#include "host/objects.h"
#include "host_test_support.h"

namespace {

using cmpihost::Request;
using host_test::noStatus;
using host_test::str;

const CMPIBroker *mb() {
    return cmpihost::broker();
}

TEST(StringObject, CopiesItsTextKeepsItInHdlAndRefusesBadHandles) {
    Request request;
    char source[] = "zone1";
    CMPIStatus rc = noStatus();
    CMPIString *s = CMNewString(mb(), source, &rc);
    source[0] = 'X';
    ASSERT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(s), "zone1");
    EXPECT_STREQ(CMGetCharsPtr(s, &rc), "zone1");
    EXPECT_FALSE(CMIsNullObject(s));

    CMPIString *copy = CMClone(s, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_NE(copy, s);
    EXPECT_STREQ(CMGetCharPtr(copy), "zone1");

    // Releasing frees nothing before the request ends: the text stays valid.
    EXPECT_EQ(CMRelease(s).rc, CMPI_RC_OK);
    EXPECT_EQ(CMRelease(s).rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(s), "zone1");

    EXPECT_EQ(CMNewString(mb(), nullptr, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_NE(CMNewString(mb(), "", nullptr), nullptr);

    EXPECT_EQ(s->ft->getCharPtr(nullptr, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(s->ft->clone(nullptr, nullptr), nullptr);
    EXPECT_EQ(s->ft->release(nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
    // A copy of the pair is not the broker's object, nor is a pair of
    // another kind handed to the wrong table.
    CMPIString copied = *s;
    EXPECT_EQ(s->ft->getCharPtr(&copied, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_HANDLE);
    CMPIString nothing = {nullptr, s->ft};
    EXPECT_EQ(s->ft->getCharPtr(&nothing, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_HANDLE);
    CMPIObjectPath *op = CMNewObjectPath(mb(), "ns", "C", nullptr);
    EXPECT_EQ(s->ft->getCharPtr(reinterpret_cast<CMPIString *>(op), &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_HANDLE);
}

TEST(ObjectPathObject, KeepsNamesAndTypedKeysInOrder) {
    Request request;
    CMPIStatus rc = noStatus();
    CMPIObjectPath *op = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Zone", &rc);
    ASSERT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(CMGetNameSpace(op, nullptr)), "root/cimv2");
    EXPECT_STREQ(CMGetCharPtr(CMGetClassName(op, nullptr)), "VORNA_Zone");
    EXPECT_STREQ(CMGetCharPtr(CMGetHostname(op, nullptr)), "");
    EXPECT_EQ(CMSetHostname(op, "switch1").rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetClassName(op, "VORNA_ZoneSet").rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(CMGetHostname(op, nullptr)), "switch1");

    char id[] = "1^7^0";
    CMPIUint16 vsan = 12;
    EXPECT_EQ(CMAddKey(op, "InstanceID", id, CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMAddKey(op, "Vsan", &vsan, CMPI_uint16).rc, CMPI_RC_OK);
    id[0] = '9';
    EXPECT_EQ(CMGetKeyCount(op, &rc), 2u);

    // chars come back as a string of the broker, flagged as a key.
    CMPIData key = CMGetKey(op, "instanceid", &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_EQ(key.type, CMPI_string);
    EXPECT_EQ(key.state, CMPI_keyValue);
    EXPECT_STREQ(CMGetCharPtr(key.value.string), "1^7^0");

    CMPIString *name = nullptr;
    key = CMGetKeyAt(op, 1, &name, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(name), "Vsan");
    EXPECT_EQ(key.type, CMPI_uint16);
    EXPECT_EQ(key.value.uint16, 12);

    // A second key of the same name (any case) replaces the first in place.
    EXPECT_EQ(CMAddKey(op, "INSTANCEID", "2^1^0", CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetKeyCount(op, nullptr), 2u);
    key = CMGetKeyAt(op, 0, &name, nullptr);
    EXPECT_STREQ(CMGetCharPtr(name), "InstanceID");
    EXPECT_EQ(str(key), "2^1^0");

    key = CMGetKey(op, "Missing", &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_TRUE(key.state & CMPI_notFound);
    name = reinterpret_cast<CMPIString *>(0x1);
    CMGetKeyAt(op, 2, &name, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(name, nullptr);
    CMGetKeyAt(op, 5, nullptr, nullptr);  // no outputs wanted: no crash

    EXPECT_EQ(CMGetCharPtr(CMObjectPathToString(op, &rc)),
              std::string("switch1/root/cimv2:VORNA_ZoneSet.InstanceID=\"2^1^0\",Vsan=12"));
}

TEST(ObjectPathObject, ClonesDeeplyAndCopiesNamespaceAndHost) {
    Request request;
    CMPIObjectPath *target = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Zone", nullptr);
    CMAddKey(target, "InstanceID", "1^1^0", CMPI_chars);
    CMPIObjectPath *link = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Link", nullptr);
    EXPECT_EQ(CMAddKey(link, "Member", &target, CMPI_ref).rc, CMPI_RC_OK);
    // The key holds a copy: a later change to the original does not show.
    CMAddKey(target, "InstanceID", "changed", CMPI_chars);
    CMPIData ref = CMGetKey(link, "Member", nullptr);
    ASSERT_EQ(ref.type, CMPI_ref);
    EXPECT_NE(ref.value.ref, target);
    EXPECT_EQ(cmpihost::pathToString(ref.value.ref), "root/cimv2:VORNA_Zone.InstanceID=\"1^1^0\"");

    CMPIStatus rc = noStatus();
    CMPIObjectPath *copy = CMClone(link, &rc);
    ASSERT_EQ(rc.rc, CMPI_RC_OK);
    CMSetNameSpace(copy, "other");
    CMAddKey(copy, "Extra", "x", CMPI_chars);
    EXPECT_EQ(CMGetKeyCount(link, nullptr), 1u);
    EXPECT_STREQ(CMGetCharPtr(CMGetNameSpace(link, nullptr)), "root/cimv2");
    EXPECT_NE(CMGetKey(copy, "Member", nullptr).value.ref, ref.value.ref);

    CMPIObjectPath *bare = CMNewObjectPath(mb(), nullptr, nullptr, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    CMSetHostname(link, "sw");
    EXPECT_EQ(CMSetNameSpaceFromObjectPath(bare, link).rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(CMGetHostname(bare, nullptr)), "");
    EXPECT_EQ(CMSetHostAndNameSpaceFromObjectPath(bare, link).rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(CMGetHostname(bare, nullptr)), "sw");
    EXPECT_STREQ(CMGetCharPtr(CMGetNameSpace(bare, nullptr)), "root/cimv2");
}

TEST(ObjectPathObject, RefusesBadArgumentsWithTheirStatus) {
    Request request;
    CMPIObjectPath *op = CMNewObjectPath(mb(), "ns", "C", nullptr);
    CMPIStatus rc = noStatus();
    EXPECT_EQ(CMAddKey(op, nullptr, "x", CMPI_chars).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMAddKey(op, "", "x", CMPI_chars).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMAddKey(op, "K", "x", CMPIType(0x1F00)).rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_EQ(CMSetNameSpace(op, nullptr).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMSetClassName(op, nullptr).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMSetNameSpaceFromObjectPath(op, nullptr).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    CMGetKey(op, nullptr, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMGetKeyCount(op, nullptr), 0u);

    // A null value is kept as a null key, not refused.
    EXPECT_EQ(CMAddKey(op, "Empty", nullptr, CMPI_chars).rc, CMPI_RC_OK);
    CMPIData empty = CMGetKey(op, "Empty", nullptr);
    EXPECT_TRUE(empty.state & CMPI_nullValue);
    // So is a reference to nothing; a reference to a foreign object is refused.
    CMPIObjectPath *none = nullptr;
    EXPECT_EQ(CMAddKey(op, "NoRef", &none, CMPI_ref).rc, CMPI_RC_OK);
    CMPIObjectPath foreign = {op, nullptr};
    CMPIObjectPath *bad = &foreign;
    EXPECT_EQ(CMAddKey(op, "BadRef", &bad, CMPI_ref).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMGetKey(op, "BadRef", &rc).type, CMPI_null);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_FOUND);

    const CMPIObjectPathFT *ft = op->ft;
    EXPECT_EQ(ft->getKeyCount(nullptr, &rc), 0u);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(ft->getClassName(nullptr, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(ft->addKey(nullptr, "K", nullptr, CMPI_uint8).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(ft->toString(nullptr, nullptr), nullptr);
    ft->getClassQualifier(op, "Key", &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    ft->getParameterQualifier(op, "m", "p", "q", &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST(InstanceObject, TakesKeysFromItsPathAndStoresTypedProperties) {
    Request request;
    CMPIObjectPath *op = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Zone", nullptr);
    CMAddKey(op, "InstanceID", "1^3^0", CMPI_chars);
    CMPIStatus rc = noStatus();
    CMPIInstance *ci = CMNewInstance(mb(), op, &rc);
    ASSERT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetPropertyCount(ci, nullptr), 1u);
    EXPECT_EQ(str(CMGetProperty(ci, "InstanceID", nullptr)), "1^3^0");

    // Only the bytes of the type are read: a lone heap CMPIUint16 is enough.
    auto vsan = std::make_unique<CMPIUint16>(42);
    auto active = std::make_unique<CMPIBoolean>(1);
    EXPECT_EQ(CMSetProperty(ci, "Vsan", vsan.get(), CMPI_uint16).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(ci, "Active", active.get(), CMPI_boolean).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(ci, "Name", "zoneA", CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(ci, "Caption", nullptr, CMPI_string).rc, CMPI_RC_OK);

    CMPIData vsanData = CMGetProperty(ci, "VSAN", &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_EQ(vsanData.type, CMPI_uint16);
    EXPECT_EQ(vsanData.state, CMPI_goodValue);
    EXPECT_EQ(vsanData.value.uint16, 42);
    EXPECT_EQ(CMGetProperty(ci, "Active", nullptr).value.boolean, 1);
    CMPIData caption = CMGetProperty(ci, "Caption", nullptr);
    EXPECT_EQ(caption.type, CMPI_string);
    EXPECT_TRUE(caption.state & CMPI_nullValue);

    CMPIString *name = nullptr;
    CMPIData third = CMGetPropertyAt(ci, 3, &name, &rc);
    EXPECT_STREQ(CMGetCharPtr(name), "Name");
    EXPECT_EQ(third.type, CMPI_string);
    CMGetPropertyAt(ci, 5, &name, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    CMGetProperty(ci, "Absent", &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    CMGetProperty(ci, nullptr, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMSetProperty(ci, nullptr, "x", CMPI_chars).rc, CMPI_RC_ERR_INVALID_PARAMETER);

    // The path follows the key properties.
    CMSetProperty(ci, "InstanceID", "1^4^0", CMPI_chars);
    CMPIObjectPath *path = CMGetObjectPath(ci, &rc);
    ASSERT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_EQ(cmpihost::pathToString(path), "root/cimv2:VORNA_Zone.InstanceID=\"1^4^0\"");
    EXPECT_EQ(cmpihost::pathToString(op), "root/cimv2:VORNA_Zone.InstanceID=\"1^3^0\"");

    EXPECT_EQ(CMNewInstance(mb(), nullptr, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(ci->ft->getPropertyCount(nullptr, &rc), 0u);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(ci->ft->getObjectPath(nullptr, nullptr), nullptr);
    EXPECT_EQ(CMSetObjectPath(ci, nullptr).rc, CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST(InstanceObject, PropertyFilterKeepsListedPropertiesAndKeys) {
    Request request;
    CMPIObjectPath *op = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Zone", nullptr);
    CMAddKey(op, "InstanceID", "1^3^0", CMPI_chars);
    CMPIInstance *ci = CMNewInstance(mb(), op, nullptr);
    const char *props[] = {"name", nullptr};
    const char *keys[] = {"InstanceID", nullptr};
    EXPECT_EQ(CMSetPropertyFilter(ci, props, keys).rc, CMPI_RC_OK);
    CMPIUint32 count = 3;
    EXPECT_EQ(CMSetProperty(ci, "Count", &count, CMPI_uint32).rc, CMPI_RC_OK);  // dropped
    EXPECT_EQ(CMSetProperty(ci, "Name", "zoneA", CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(ci, "InstanceID", "1^5^0", CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(cmpihost::instanceToString(ci),
              "root/cimv2:VORNA_Zone.InstanceID=\"1^5^0\" InstanceID=\"1^5^0\",Name=\"zoneA\"");

    // An empty list keeps only the keys; a null list lifts the filter.
    const char *none[] = {nullptr};
    CMSetPropertyFilter(ci, none, keys);
    CMSetProperty(ci, "Caption", "c", CMPI_chars);
    EXPECT_EQ(CMGetPropertyCount(ci, nullptr), 2u);
    CMSetPropertyFilter(ci, nullptr, nullptr);
    CMSetProperty(ci, "Count", &count, CMPI_uint32);
    EXPECT_EQ(CMGetPropertyCount(ci, nullptr), 3u);

    // A clone is deep and keeps the filter.
    CMSetPropertyFilter(ci, props, keys);
    CMPIStatus rc = noStatus();
    CMPIInstance *copy = CMClone(ci, &rc);
    ASSERT_EQ(rc.rc, CMPI_RC_OK);
    CMSetProperty(copy, "Count", &count, CMPI_uint32);
    CMSetProperty(copy, "Name", "other", CMPI_chars);
    EXPECT_EQ(str(CMGetProperty(ci, "Name", nullptr)), "zoneA");
    EXPECT_EQ(str(CMGetProperty(copy, "Name", nullptr)), "other");
    EXPECT_EQ(CMGetPropertyCount(copy, nullptr), 3u);
}

TEST(InstanceObject, SetObjectPathReplacesPathAndKeyProperties) {
    Request request;
    CMPIObjectPath *first = CMNewObjectPath(mb(), "root/cimv2", "A", nullptr);
    CMAddKey(first, "Id", "1", CMPI_chars);
    CMPIInstance *ci = CMNewInstance(mb(), first, nullptr);
    CMPIObjectPath *second = CMNewObjectPath(mb(), "interop", "B", nullptr);
    CMAddKey(second, "Id", "2", CMPI_chars);
    EXPECT_EQ(CMSetObjectPath(ci, second).rc, CMPI_RC_OK);
    EXPECT_EQ(cmpihost::pathToString(CMGetObjectPath(ci, nullptr)), "interop:B.Id=\"2\"");
    EXPECT_EQ(str(CMGetProperty(ci, "Id", nullptr)), "2");
}

TEST(ArrayObject, HasAFixedSizeAndOneElementType) {
    Request request;
    CMPIStatus rc = noStatus();
    CMPIArray *array = CMNewArray(mb(), 2, CMPI_chars, &rc);
    ASSERT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetArrayCount(array, nullptr), 2u);
    EXPECT_EQ(CMGetArrayType(array, nullptr), CMPI_string);
    CMPIData element = CMGetArrayElementAt(array, 1, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_TRUE(element.state & CMPI_nullValue);

    EXPECT_EQ(CMSetArrayElementAt(array, 0, "p", CMPI_chars).rc, CMPI_RC_OK);
    CMPIString *q = CMNewString(mb(), "q,r", nullptr);
    EXPECT_EQ(CMSetArrayElementAt(array, 1, &q, CMPI_string).rc, CMPI_RC_OK);
    EXPECT_EQ(str(CMGetArrayElementAt(array, 0, nullptr)), "p");
    EXPECT_NE(CMGetArrayElementAt(array, 1, nullptr).value.string, q);

    CMPIUint8 eight = 8;
    EXPECT_EQ(CMSetArrayElementAt(array, 0, &eight, CMPI_uint8).rc, CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(CMSetArrayElementAt(array, 2, "x", CMPI_chars).rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    CMGetArrayElementAt(array, 2, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);

    // As a property it is copied whole; printed as a quoted list.
    CMPIObjectPath *op = CMNewObjectPath(mb(), "ns", "C", nullptr);
    CMPIInstance *ci = CMNewInstance(mb(), op, nullptr);
    EXPECT_EQ(CMSetProperty(ci, "Arr", &array, CMPI_stringA).rc, CMPI_RC_OK);
    CMSetArrayElementAt(array, 0, "changed", CMPI_chars);
    CMPIData stored = CMGetProperty(ci, "Arr", nullptr);
    EXPECT_EQ(stored.type, CMPI_stringA);
    EXPECT_EQ(cmpihost::valueToString(stored), "\"p\",\"q,r\"");

    EXPECT_EQ(CMNewArray(mb(), 1, CMPIType(0x0777), &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_EQ(CMNewArray(mb(), 1, CMPI_null, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
    // The element code is also taken with the array bit set.
    CMPIArray *numbers = CMNewArray(mb(), 0, CMPI_uint32A, &rc);
    EXPECT_EQ(CMGetArrayType(numbers, nullptr), CMPI_uint32);
    EXPECT_EQ(array->ft->getSize(nullptr, &rc), 0u);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_HANDLE);
}

TEST(ArgsObject, GivesArgumentsByNameAndPosition) {
    Request request;
    CMPIArgs *in = request.newArgs();
    CMPIObjectPath *zone = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Zone", nullptr);
    CMAddKey(zone, "InstanceID", "1^1^0", CMPI_chars);
    cmpihost::addStringArg(in, "ZoneName", "z1");
    cmpihost::addReferenceArg(in, "Zone", zone);
    CMPIValue type{};
    type.uint16 = 2;
    cmpihost::addValueArg(in, "MemberType", type, CMPI_uint16);
    EXPECT_EQ(CMGetArgCount(in, nullptr), 3u);

    CMPIStatus rc = noStatus();
    EXPECT_EQ(str(CMGetArg(in, "zonename", &rc)), "z1");
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    CMPIString *name = nullptr;
    CMPIData second = CMGetArgAt(in, 1, &name, &rc);
    EXPECT_STREQ(CMGetCharPtr(name), "Zone");
    ASSERT_EQ(second.type, CMPI_ref);
    EXPECT_EQ(cmpihost::pathToString(second.value.ref),
              "root/cimv2:VORNA_Zone.InstanceID=\"1^1^0\"");
    EXPECT_EQ(CMGetArgAt(in, 2, nullptr, nullptr).value.uint16, 2);

    CMGetArg(in, "Absent", &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_FOUND);
    CMGetArgAt(in, 3, &name, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(CMAddArg(in, nullptr, "x", CMPI_chars).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(in->ft->getArgCount(nullptr, &rc), 0u);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_HANDLE);

    CMPIArgs *copy = CMClone(in, &rc);
    cmpihost::addStringArg(copy, "ZoneName", "z2");
    EXPECT_EQ(str(CMGetArg(in, "ZoneName", nullptr)), "z1");
    EXPECT_EQ(str(CMGetArg(copy, "ZoneName", nullptr)), "z2");
    EXPECT_EQ(CMGetArgCount(copy, nullptr), 3u);

    // Helpers on null objects do nothing.
    cmpihost::addStringArg(nullptr, "x", "y");
    cmpihost::addStringKey(nullptr, "x", "y");
}

TEST(ContextObject, HoldsEntriesOfTheRequest) {
    Request request;
    auto *ctx = const_cast<CMPIContext *>(request.context());
    CMPIUint32 flags = CMPI_FLAG_LocalOnly;
    EXPECT_EQ(CMAddContextEntry(ctx, CMPIInvocationFlags, &flags, CMPI_uint32).rc, CMPI_RC_OK);
    EXPECT_EQ(CMAddContextEntry(ctx, CMPIPrincipal, "admin", CMPI_chars).rc, CMPI_RC_OK);
    CMPIStatus rc = noStatus();
    EXPECT_EQ(CMGetContextEntryCount(ctx, &rc), 2u);
    EXPECT_EQ(CMGetContextEntry(ctx, CMPIInvocationFlags, &rc).value.uint32, 1u);
    CMPIString *name = nullptr;
    EXPECT_EQ(str(CMGetContextEntryAt(ctx, 1, &name, &rc)), "admin");
    EXPECT_STREQ(CMGetCharPtr(name), "CMPIPrincipal");
    CMGetContextEntry(ctx, "CMPIRole", &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    CMGetContextEntryAt(ctx, 2, nullptr, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    CMPIContext *copy = CMClone(ctx, &rc);
    EXPECT_EQ(CMGetContextEntryCount(copy, nullptr), 2u);
}

TEST(DateTimeObject, ConvertsBetweenBinaryAndCimText) {
    Request request;
    CMPIStatus rc = noStatus();
    // 2024-01-02 03:04:05.000006 UTC.
    const CMPIUint64 micros = 1704164645000006ULL;
    CMPIDateTime *stamp = CMNewDateTimeFromBinary(mb(), micros, 0, &rc);
    ASSERT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(CMGetStringFormat(stamp, nullptr)), "20240102030405.000006+000");
    EXPECT_FALSE(CMIsInterval(stamp, nullptr));

    // The same moment written an hour east of UTC.
    CMPIDateTime *east = CMNewDateTimeFromChars(mb(), "20240102040405.000006+060", &rc);
    ASSERT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetBinaryFormat(east, nullptr), micros);

    CMPIDateTime *interval = CMNewDateTimeFromChars(mb(), "00000001020304.000005:000", &rc);
    ASSERT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_TRUE(CMIsInterval(interval, nullptr));
    EXPECT_EQ(CMGetBinaryFormat(interval, nullptr), ((86400ULL + 7384) * 1000000ULL) + 5);
    EXPECT_STREQ(CMGetCharPtr(CMGetStringFormat(interval, nullptr)), "00000001020304.000005:000");

    for (const char *bad : {"", "2024", "20241302030405.000000+000", "20240102030405.000000*000",
                            "0000000102030x.000000:000", "00000001020304.000000:001"}) {
        EXPECT_EQ(CMNewDateTimeFromChars(mb(), bad, &rc), nullptr) << bad;
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_PARAMETER) << bad;
    }
    EXPECT_EQ(CMNewDateTimeFromChars(mb(), nullptr, &rc), nullptr);

    CMPIDateTime *now = CMNewDateTime(mb(), &rc);
    EXPECT_GT(CMGetBinaryFormat(now, nullptr), micros);
}

TEST(EnumerationObject, WalksItsItemsOnceAndConvertsToAnArray) {
    Request request;
    std::vector<CMPIData> items(2);
    for (std::size_t i = 0; i < items.size(); ++i) {
        items[i].type = CMPI_uint32;
        items[i].state = CMPI_goodValue;
        items[i].value.uint32 = static_cast<CMPIUint32>(i + 10);
    }
    CMPIEnumeration *e = cmpihost::detail::makeEnumeration(cmpihost::detail::currentArena(), items);
    CMPIStatus rc = noStatus();
    EXPECT_TRUE(CMHasNext(e, nullptr));
    EXPECT_EQ(CMGetNext(e, &rc).value.uint32, 10u);
    CMPIEnumeration *rest = CMClone(e, nullptr);
    EXPECT_EQ(CMGetNext(e, &rc).value.uint32, 11u);
    EXPECT_FALSE(CMHasNext(e, nullptr));
    CMGetNext(e, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(CMGetNext(rest, nullptr).value.uint32, 11u);
    CMPIArray *array = CMToArray(e, &rc);
    EXPECT_EQ(CMGetArrayCount(array, nullptr), 2u);
    EXPECT_EQ(CMGetArrayType(array, nullptr), CMPI_uint32);
}

TEST(ResultObject, RecordsDeliveriesInOrderWithTheDoneCalls) {
    Request request;
    const CMPIResult *rslt = request.result();
    CMPIObjectPath *op = request.newObjectPath("root/cimv2", "VORNA_Zone");
    cmpihost::addStringKey(op, "InstanceID", "1^1^0");
    CMPIInstance *ci = CMNewInstance(mb(), op, nullptr);
    char text[] = "Success";
    CMPIUint32 zero = 0;

    EXPECT_EQ(CMReturnObjectPath(rslt, op).rc, CMPI_RC_OK);
    EXPECT_EQ(CMReturnInstance(rslt, ci).rc, CMPI_RC_OK);
    EXPECT_EQ(CMReturnData(rslt, text, CMPI_chars).rc, CMPI_RC_OK);
    text[0] = 'X';
    EXPECT_EQ(CMReturnDone(rslt).rc, CMPI_RC_OK);
    EXPECT_EQ(CMReturnData(rslt, &zero, CMPI_uint32).rc, CMPI_RC_OK);
    EXPECT_EQ(CMReturnInstance(rslt, nullptr).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMReturnObjectPath(rslt, nullptr).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMReturnData(rslt, nullptr, CMPIType(0x0777)).rc, CMPI_RC_ERR_INVALID_DATA_TYPE);

    const auto &got = request.deliveries();
    ASSERT_EQ(got.size(), 4u);
    EXPECT_EQ(got[0].kind, cmpihost::Delivery::Kind::ObjectPath);
    EXPECT_EQ(got[0].path, op);  // the request's own object is kept as it is
    EXPECT_EQ(got[1].kind, cmpihost::Delivery::Kind::Instance);
    EXPECT_EQ(got[1].instance, ci);
    EXPECT_EQ(got[2].kind, cmpihost::Delivery::Kind::Data);
    EXPECT_EQ(got[2].data.type, CMPI_chars);  // as the provider typed it, copied
    EXPECT_STREQ(got[2].data.value.chars, "Success");
    EXPECT_EQ(got[2].doneBefore, 0);
    EXPECT_EQ(got[3].data.type, CMPI_uint32);
    EXPECT_EQ(got[3].doneBefore, 1);
    EXPECT_EQ(request.doneCount(), 1);

    CMPIStatus rc = noStatus();
    EXPECT_EQ(CMClone(rslt, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(rslt->ft->returnDone(nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(request.doneCount(), 1);
}

TEST(Broker, AnswersUpCallsNotSupportedAndNamesItself) {
    Request request;
    EXPECT_EQ(CBBrokerVersion(mb()), 100u);
    EXPECT_STREQ(CBBrokerName(mb()), "cmpihost");
    EXPECT_FALSE(CMIsNullObject(mb()));
    const CMPIContext *ctx = request.context();
    CMPIObjectPath *op = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Zone", nullptr);
    CMPIStatus rc = noStatus();
    EXPECT_EQ(CBEnumInstanceNames(mb(), ctx, op, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(CBEnumInstances(mb(), ctx, op, nullptr, nullptr), nullptr);
    EXPECT_EQ(CBGetInstance(mb(), ctx, op, nullptr, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(CBAssociatorNames(mb(), ctx, op, nullptr, nullptr, nullptr, nullptr, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(CBDeleteInstance(mb(), ctx, op).rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(CBModifyInstance(mb(), ctx, op, nullptr, nullptr).rc, CMPI_RC_ERR_NOT_SUPPORTED);
    CMPIData data = CBInvokeMethod(mb(), ctx, op, "m", nullptr, nullptr, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_TRUE(data.state & CMPI_nullValue);
    EXPECT_EQ(CBDeliverIndication(mb(), ctx, "root", nullptr).rc, CMPI_RC_ERR_NOT_SUPPORTED);

    CMPIArray *projection = reinterpret_cast<CMPIArray *>(0x1);
    EXPECT_EQ(mb()->eft->newSelectExp(mb(), "select * from X", "WQL", &projection, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(projection, nullptr);

    CMPIContext *attached = CBPrepareAttachThread(mb(), ctx);
    ASSERT_NE(attached, nullptr);
    EXPECT_EQ(CBAttachThread(mb(), attached).rc, CMPI_RC_OK);
    EXPECT_EQ(CBDetachThread(mb(), attached).rc, CMPI_RC_OK);
    EXPECT_EQ(CBAttachThread(mb(), nullptr).rc, CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST(Broker, TellsTypesAndClassesByName) {
    Request request;
    CMPIObjectPath *op = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Zone", nullptr);
    CMAddKey(op, "InstanceID", "1", CMPI_chars);
    CMPIStatus rc = noStatus();
    EXPECT_TRUE(CMClassPathIsA(mb(), op, "vorna_zone", &rc));
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_FALSE(CMClassPathIsA(mb(), op, "VORNA_ZoneSet", &rc));
    EXPECT_FALSE(CMClassPathIsA(mb(), op, nullptr, &rc));
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_PARAMETER);

    EXPECT_TRUE(CDIsOfType(mb(), op, "CMPIObjectPath", &rc));
    EXPECT_FALSE(CDIsOfType(mb(), op, "CMPIInstance", &rc));
    EXPECT_STREQ(CMGetCharPtr(CDGetType(mb(), request.result(), &rc)), "CMPIResult");
    EXPECT_STREQ(CMGetCharPtr(CDGetType(mb(), request.context(), &rc)), "CMPIContext");
    EXPECT_STREQ(CMGetCharPtr(CDToString(mb(), op, &rc)), "root/cimv2:VORNA_Zone.InstanceID=\"1\"");
    CMPIString *s = CMNewString(mb(), "plain", nullptr);
    EXPECT_STREQ(CMGetCharPtr(CDToString(mb(), s, &rc)), "plain");
    EXPECT_EQ(CDToString(mb(), nullptr, &rc), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CDGetType(mb(), nullptr, &rc), nullptr);
    EXPECT_FALSE(CDIsOfType(mb(), nullptr, "CMPIString", &rc));
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST(Broker, FormatsTheDefaultMessageWithItsInserts) {
    Request request;
    CMPIStatus rc = noStatus();
    CMPIString *zone = CMNewString(mb(), "zoneA", nullptr);
    CMPIString *message = CMGetMessage(
        mb(), "ZONE001", "$0 of $1 in VSAN $2 ($3, $4, $5) $9", &rc,
        CMFmtArgs6(CMFmtChars("member"), CMFmtString(zone), CMFmtUint(12), CMFmtSint(-1),
                   CMFmtBoolean(1), CMFmtUint64(18446744073709551615ULL)));
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(message),
                 "member of zoneA in VSAN 12 (-1, true, 18446744073709551615) $9");
    message = CMGetMessage(mb(), "X", "cost $0", &rc, CMFmtArgs1(CMFmtReal(1.5)));
    EXPECT_STREQ(CMGetCharPtr(message), "cost 1.5");
    EXPECT_EQ(CMGetMessage(mb(), "X", nullptr, &rc, CMFmtArgs0()), nullptr);
    EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMLogMessage(mb(), 1, "host_test", "log line", nullptr).rc, CMPI_RC_OK);
    EXPECT_EQ(CMTraceMessage(mb(), 1, "host_test", nullptr, zone).rc, CMPI_RC_OK);
}

CMPI_THREAD_RETURN addOne(void *parm) {
    auto *counter = static_cast<int *>(parm);
    ++*counter;
    return parm;
}

int onceRuns = 0;
void countOnce() {
    ++onceRuns;
}

TEST(Broker, GivesThreadsMutexesConditionsKeysAndOnce) {
    const CMPIBrokerExtFT *x = mb()->xft;
    int counter = 0;
    CMPI_THREAD_TYPE thread = x->newThread(addOne, &counter, 0);
    ASSERT_NE(thread, nullptr);
    CMPI_THREAD_RETURN back = nullptr;
    EXPECT_EQ(x->joinThread(thread, &back), 0);
    EXPECT_EQ(back, &counter);
    EXPECT_EQ(counter, 1);

    CMPI_MUTEX_TYPE mutex = x->newMutex(0);
    x->lockMutex(mutex);
    x->lockMutex(mutex);  // recursive
    x->unlockMutex(mutex);
    x->unlockMutex(mutex);
    CMPI_COND_TYPE cond = x->newCondition(0);
    x->lockMutex(mutex);
    timespec past{1, 0};
    EXPECT_NE(x->timedCondWait(cond, mutex, &past), 0);  // already expired
    x->unlockMutex(mutex);
    EXPECT_EQ(x->signalCondition(cond), 0);
    x->destroyCondition(cond);
    x->destroyMutex(mutex);

    CMPI_THREAD_KEY_TYPE key;
    ASSERT_EQ(x->createThreadKey(&key, nullptr), 0);
    EXPECT_EQ(x->setThreadSpecific(key, &counter), 0);
    EXPECT_EQ(x->getThreadSpecific(key), &counter);
    EXPECT_EQ(x->destroyThreadKey(key), 0);

    int once = 0;
    x->threadOnce(&once, countOnce);
    x->threadOnce(&once, countOnce);
    EXPECT_EQ(onceRuns, 1);
    EXPECT_EQ(x->threadSleep(1), 0);

    char *file = x->resolveFileName("zone_provider");
    EXPECT_STREQ(file, "libzone_provider.so");
    free(file);
    EXPECT_EQ(x->resolveFileName(nullptr), nullptr);
}

}  // namespace
