// The encapsulated objects through their function tables, as a provider
// reaches them: deep copies, names matched without regard to case, order
// kept, typed values and states, the broker's services, and the status of
// every kind of bad input.
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include <functional>
#include <memory>
#include <vector>

#include "host/objects.h"
#include "host_test_support.h"

namespace {

using cmpihost::pathToString;
using cmpihost::Request;
using host_test::mb;
using host_test::noStatus;
using host_test::str;

CMPIObjectPath *zonePath(const char *id) {
    CMPIObjectPath *op = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Zone", nullptr);
    CMAddKey(op, "InstanceID", id, CMPI_chars);
    return op;
}

// A call whose status goes to `rc`, the rc it must leave there, and the
// call's own text to name it.
struct Refusal {
    const char *call;
    CMPIrc rc;
    std::function<void(CMPIStatus *)> run;
};
// clang-format off
#define REFUSAL(expected, ...) Refusal{#__VA_ARGS__, expected, [&](CMPIStatus *rc) { __VA_ARGS__; }}
// clang-format on

template <std::size_t N>
void expectRefusals(const Refusal (&refusals)[N]) {
    for (const Refusal &r : refusals) {
        SCOPED_TRACE(r.call);
        EXPECT_EQ(host_test::rcOf(r.run), r.rc);
    }
}

constexpr CMPIrc kHandle = CMPI_RC_ERR_INVALID_HANDLE;
constexpr CMPIrc kParam = CMPI_RC_ERR_INVALID_PARAMETER;
constexpr CMPIrc kType = CMPI_RC_ERR_INVALID_DATA_TYPE;
constexpr CMPIrc kNoSuch = CMPI_RC_ERR_NO_SUCH_PROPERTY;
constexpr CMPIrc kNotFound = CMPI_RC_ERR_NOT_FOUND;
constexpr CMPIrc kUnsupported = CMPI_RC_ERR_NOT_SUPPORTED;

TEST(Objects, EveryObjectRefusesBadHandlesAndArgumentsWithItsStatus) {
    Request request;
    CMPIString *s = CMNewString(mb(), "zone1", nullptr);
    CMPIObjectPath *op = CMNewObjectPath(mb(), "ns", "C", nullptr);
    CMPIInstance *ci = CMNewInstance(mb(), op, nullptr);
    CMPIArray *array = CMNewArray(mb(), 2, CMPI_string, nullptr);
    CMPIArgs *args = request.newArgs();
    auto *ctx = const_cast<CMPIContext *>(request.context());
    const CMPIResult *rslt = request.result();
    // A copy of the pair is not the broker's object, nor is a pair of another
    // kind handed to the wrong table.
    CMPIString copied = *s, nothing = {nullptr, s->ft};
    auto *pathAsString = reinterpret_cast<CMPIString *>(op);
    CMPIObjectPath foreign = {op, nullptr};
    CMPIObjectPath *none = nullptr, *bad = &foreign;
    CMPIString *name = s;  // getters must clear it on a miss
    CMPIUint8 eight = 8;
    const Refusal refusals[] = {
        REFUSAL(kParam, EXPECT_EQ(CMNewString(mb(), nullptr, rc), nullptr)),
        REFUSAL(kHandle, EXPECT_EQ(s->ft->getCharPtr(nullptr, rc), nullptr)),
        REFUSAL(kHandle, EXPECT_EQ(s->ft->getCharPtr(&copied, rc), nullptr)),
        REFUSAL(kHandle, EXPECT_EQ(s->ft->getCharPtr(&nothing, rc), nullptr)),
        REFUSAL(kHandle, EXPECT_EQ(s->ft->getCharPtr(pathAsString, rc), nullptr)),
        REFUSAL(kHandle, EXPECT_EQ(s->ft->clone(nullptr, rc), nullptr)),
        REFUSAL(kHandle, *rc = s->ft->release(nullptr)),
        REFUSAL(kParam, *rc = CMAddKey(op, nullptr, "x", CMPI_chars)),
        REFUSAL(kParam, *rc = CMAddKey(op, "", "x", CMPI_chars)),
        REFUSAL(kType, *rc = CMAddKey(op, "K", "x", CMPIType(0x1F00))),
        REFUSAL(kParam, *rc = CMAddKey(op, "BadRef", &bad, CMPI_ref)),
        REFUSAL(kHandle, *rc = op->ft->addKey(nullptr, "K", nullptr, CMPI_uint8)),
        REFUSAL(kParam, *rc = CMSetNameSpace(op, nullptr)),
        REFUSAL(kParam, *rc = CMSetClassName(op, nullptr)),
        REFUSAL(kParam, *rc = CMSetNameSpaceFromObjectPath(op, nullptr)),
        REFUSAL(kParam, CMGetKey(op, nullptr, rc)),
        REFUSAL(kNotFound, EXPECT_TRUE(CMGetKey(op, "Missing", rc).state & CMPI_notFound)),
        REFUSAL(kNotFound, EXPECT_EQ(CMGetKey(op, "BadRef", rc).type, CMPI_null)),
        REFUSAL(kNoSuch, CMGetKeyAt(op, 2, &name, rc); EXPECT_EQ(name, nullptr)),
        REFUSAL(kHandle, EXPECT_EQ(op->ft->getKeyCount(nullptr, rc), 0u)),
        REFUSAL(kHandle, EXPECT_EQ(op->ft->getClassName(nullptr, rc), nullptr)),
        REFUSAL(kHandle, EXPECT_EQ(op->ft->toString(nullptr, rc), nullptr)),
        REFUSAL(kUnsupported, op->ft->getClassQualifier(op, "Key", rc)),
        REFUSAL(kUnsupported, op->ft->getParameterQualifier(op, "m", "p", "q", rc)),
        REFUSAL(kParam, EXPECT_EQ(CMNewInstance(mb(), nullptr, rc), nullptr)),
        REFUSAL(kNoSuch, CMGetProperty(ci, "Absent", rc)),
        REFUSAL(kParam, CMGetProperty(ci, nullptr, rc)),
        REFUSAL(kNoSuch, CMGetPropertyAt(ci, 0, nullptr, rc)),
        REFUSAL(kParam, *rc = CMSetProperty(ci, nullptr, "x", CMPI_chars)),
        REFUSAL(kParam, *rc = CMSetObjectPath(ci, nullptr)),
        REFUSAL(kHandle, EXPECT_EQ(ci->ft->getPropertyCount(nullptr, rc), 0u)),
        REFUSAL(kHandle, EXPECT_EQ(ci->ft->getObjectPath(nullptr, rc), nullptr)),
        REFUSAL(kType, EXPECT_EQ(CMNewArray(mb(), 1, CMPIType(0x0777), rc), nullptr)),
        REFUSAL(kType, EXPECT_EQ(CMNewArray(mb(), 1, CMPI_null, rc), nullptr)),
        REFUSAL(CMPI_RC_ERR_TYPE_MISMATCH, *rc = CMSetArrayElementAt(array, 0, &eight, CMPI_uint8)),
        REFUSAL(kNoSuch, *rc = CMSetArrayElementAt(array, 2, "x", CMPI_chars)),
        REFUSAL(kNoSuch, CMGetArrayElementAt(array, 2, rc)),
        REFUSAL(kHandle, EXPECT_EQ(array->ft->getSize(nullptr, rc), 0u)),
        REFUSAL(kNotFound, CMGetArg(args, "Absent", rc)),
        REFUSAL(kNoSuch, name = s; CMGetArgAt(args, 0, &name, rc); EXPECT_EQ(name, nullptr)),
        REFUSAL(kParam, *rc = CMAddArg(args, nullptr, "x", CMPI_chars)),
        REFUSAL(kHandle, EXPECT_EQ(args->ft->getArgCount(nullptr, rc), 0u)),
        REFUSAL(kNoSuch, CMGetContextEntry(ctx, "CMPIRole", rc)),
        REFUSAL(kNoSuch, CMGetContextEntryAt(ctx, 0, nullptr, rc)),
        REFUSAL(kParam, *rc = CMReturnInstance(rslt, nullptr)),
        REFUSAL(kParam, *rc = CMReturnObjectPath(rslt, nullptr)),
        REFUSAL(kType, *rc = CMReturnData(rslt, nullptr, CMPIType(0x0777))),
        REFUSAL(kHandle, *rc = rslt->ft->returnDone(nullptr)),
        REFUSAL(kUnsupported, EXPECT_EQ(CMClone(rslt, rc), nullptr)),
        REFUSAL(kParam, EXPECT_EQ(CMNewDateTimeFromChars(mb(), nullptr, rc), nullptr)),
    };
    expectRefusals(refusals);
    // What was refused was not kept; a null value or reference is kept as null.
    EXPECT_EQ(CMGetKeyCount(op, nullptr), 0u);
    EXPECT_EQ(CMGetPropertyCount(ci, nullptr), 0u);
    EXPECT_TRUE(request.deliveries().empty());
    EXPECT_EQ(request.doneCount(), 0);
    EXPECT_EQ(CMAddKey(op, "Empty", nullptr, CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_TRUE(CMGetKey(op, "Empty", nullptr).state & CMPI_nullValue);
    EXPECT_EQ(CMAddKey(op, "NoRef", &none, CMPI_ref).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetKeyCount(op, nullptr), 2u);
}

TEST(Objects, StringsAndPathsCopyWhatTheyAreGivenAndKeepKeysInOrder) {
    Request request;
    char source[] = "1^7^0";
    CMPIStatus rc = noStatus();
    CMPIString *s = CMNewString(mb(), source, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    CMPIString *clone = CMClone(s, nullptr);
    EXPECT_NE(clone, s);

    CMPIObjectPath *op = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Zone", nullptr);
    CMSetHostname(op, "switch1");
    CMSetClassName(op, "VORNA_ZoneSet");
    CMPIUint16 vsan = 12;
    EXPECT_EQ(CMAddKey(op, "InstanceID", source, CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMAddKey(op, "Vsan", &vsan, CMPI_uint16).rc, CMPI_RC_OK);
    source[0] = '9';
    EXPECT_STREQ(CMGetCharsPtr(s, nullptr), "1^7^0");
    EXPECT_STREQ(CMGetCharPtr(clone), "1^7^0");
    // chars come back as a string of the broker, flagged as a key.
    const CMPIData key = CMGetKey(op, "instanceid", &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_EQ(key.type, CMPI_string);
    EXPECT_EQ(key.state, CMPI_keyValue);
    EXPECT_STREQ(CMGetCharPtr(key.value.string), "1^7^0");
    CMGetKeyAt(op, 5, nullptr, nullptr);  // no outputs wanted: no crash
    // A second key of the same name (any case) replaces the first in place.
    EXPECT_EQ(CMAddKey(op, "INSTANCEID", "2^1^0", CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetKeyCount(op, nullptr), 2u);
    EXPECT_STREQ(CMGetCharPtr(CMObjectPathToString(op, &rc)),
                 R"(switch1/root/cimv2:VORNA_ZoneSet.InstanceID="2^1^0",Vsan=12)");

    // A reference key holds a copy: a later change to the original does not show.
    CMPIObjectPath *target = zonePath("1^1^0");
    CMPIObjectPath *link = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Link", nullptr);
    EXPECT_EQ(CMAddKey(link, "Member", &target, CMPI_ref).rc, CMPI_RC_OK);
    CMAddKey(target, "InstanceID", "changed", CMPI_chars);
    CMPIData ref = CMGetKey(link, "Member", nullptr);
    ASSERT_EQ(ref.type, CMPI_ref);
    EXPECT_EQ(pathToString(ref.value.ref), R"(root/cimv2:VORNA_Zone.InstanceID="1^1^0")");
    // A clone is deep.
    CMPIObjectPath *copy = CMClone(link, &rc);
    ASSERT_EQ(rc.rc, CMPI_RC_OK);
    CMSetNameSpace(copy, "other");
    CMAddKey(copy, "Extra", "x", CMPI_chars);
    EXPECT_EQ(pathToString(link),
              R"(root/cimv2:VORNA_Link.Member="root/cimv2:VORNA_Zone.InstanceID=\"1^1^0\"")");
    EXPECT_NE(CMGetKey(copy, "Member", nullptr).value.ref, ref.value.ref);
    // Namespace alone, or host and namespace, from another path.
    CMPIObjectPath *bare = CMNewObjectPath(mb(), nullptr, nullptr, &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    CMSetHostname(link, "sw");
    EXPECT_EQ(CMSetNameSpaceFromObjectPath(bare, link).rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(CMGetHostname(bare, nullptr)), "");
    EXPECT_EQ(CMSetHostAndNameSpaceFromObjectPath(bare, link).rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(CMGetHostname(bare, nullptr)), "sw");
    EXPECT_STREQ(CMGetCharPtr(CMGetNameSpace(bare, nullptr)), "root/cimv2");
}

TEST(Objects, InstancesTakeKeysFromTheirPathAndStoreTypedProperties) {
    Request request;
    CMPIObjectPath *op = zonePath("1^3^0");
    CMPIStatus rc = noStatus();
    CMPIInstance *ci = CMNewInstance(mb(), op, &rc);
    ASSERT_EQ(rc.rc, CMPI_RC_OK);
    // Only the bytes of the type are read: a lone heap CMPIUint16 is enough.
    auto vsan = std::make_unique<CMPIUint16>(42);
    EXPECT_EQ(CMSetProperty(ci, "Vsan", vsan.get(), CMPI_uint16).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(ci, "Name", "zoneA", CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(ci, "Caption", nullptr, CMPI_string).rc, CMPI_RC_OK);
    const CMPIData vsanData = CMGetProperty(ci, "VSAN", &rc);
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_EQ(vsanData.state, CMPI_goodValue);
    const CMPIData caption = CMGetProperty(ci, "Caption", nullptr);
    EXPECT_EQ(caption.type, CMPI_string);
    EXPECT_TRUE(caption.state & CMPI_nullValue);
    CMPIString *name = nullptr;
    EXPECT_EQ(CMGetPropertyAt(ci, 2, &name, &rc).type, CMPI_string);
    EXPECT_STREQ(CMGetCharPtr(name), "Name");
    EXPECT_EQ(
        cmpihost::instanceToString(ci),
        R"(root/cimv2:VORNA_Zone.InstanceID="1^3^0" InstanceID="1^3^0",Vsan=42,Name="zoneA",Caption=)");

    // The path follows the key properties; the path it was made from stays.
    CMSetProperty(ci, "InstanceID", "1^4^0", CMPI_chars);
    EXPECT_EQ(pathToString(CMGetObjectPath(ci, nullptr)),
              R"(root/cimv2:VORNA_Zone.InstanceID="1^4^0")");
    EXPECT_EQ(pathToString(op), R"(root/cimv2:VORNA_Zone.InstanceID="1^3^0")");
    // A new path replaces path and key properties.
    CMPIObjectPath *other = CMNewObjectPath(mb(), "interop", "B", nullptr);
    CMAddKey(other, "InstanceID", "2", CMPI_chars);
    EXPECT_EQ(CMSetObjectPath(ci, other).rc, CMPI_RC_OK);
    EXPECT_EQ(pathToString(CMGetObjectPath(ci, nullptr)), "interop:B.InstanceID=\"2\"");
    EXPECT_EQ(str(CMGetProperty(ci, "InstanceID", nullptr)), "2");
}

TEST(Objects, APropertyFilterKeepsListedPropertiesAndKeysAndSurvivesAClone) {
    Request request;
    CMPIInstance *ci = CMNewInstance(mb(), zonePath("1^3^0"), nullptr);
    const char *props[] = {"name", nullptr};
    const char *keys[] = {"InstanceID", nullptr};
    const char *noProps[] = {nullptr};
    CMPIUint32 count = 3;
    EXPECT_EQ(CMSetPropertyFilter(ci, props, keys).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(ci, "Count", &count, CMPI_uint32).rc, CMPI_RC_OK);  // dropped
    EXPECT_EQ(CMSetProperty(ci, "Name", "zoneA", CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(ci, "InstanceID", "1^5^0", CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(cmpihost::instanceToString(ci),
              R"(root/cimv2:VORNA_Zone.InstanceID="1^5^0" InstanceID="1^5^0",Name="zoneA")");
    // An empty list keeps only the keys; a null list lifts the filter.
    CMSetPropertyFilter(ci, noProps, keys);
    CMSetProperty(ci, "Caption", "c", CMPI_chars);
    EXPECT_EQ(CMGetPropertyCount(ci, nullptr), 2u);
    CMSetPropertyFilter(ci, nullptr, nullptr);
    CMSetProperty(ci, "Count", &count, CMPI_uint32);
    EXPECT_EQ(CMGetPropertyCount(ci, nullptr), 3u);

    CMSetPropertyFilter(ci, props, keys);
    CMPIInstance *copy = CMClone(ci, nullptr);
    CMSetProperty(copy, "Caption", "c", CMPI_chars);
    CMSetProperty(copy, "Name", "other", CMPI_chars);
    EXPECT_EQ(str(CMGetProperty(ci, "Name", nullptr)), "zoneA");
    EXPECT_EQ(str(CMGetProperty(copy, "Name", nullptr)), "other");
    EXPECT_EQ(CMGetPropertyCount(copy, nullptr), 3u);
}

TEST(Objects, ArraysHaveAFixedSizeAndOneElementTypeAndAreCopiedWhole) {
    Request request;
    CMPIArray *array = CMNewArray(mb(), 2, CMPI_chars, nullptr);
    EXPECT_EQ(CMGetArrayCount(array, nullptr), 2u);
    EXPECT_EQ(CMGetArrayType(array, nullptr), CMPI_string);
    EXPECT_TRUE(CMGetArrayElementAt(array, 1, nullptr).state & CMPI_nullValue);
    EXPECT_EQ(CMSetArrayElementAt(array, 0, "p", CMPI_chars).rc, CMPI_RC_OK);
    CMPIString *q = CMNewString(mb(), "q,r", nullptr);
    EXPECT_EQ(CMSetArrayElementAt(array, 1, &q, CMPI_string).rc, CMPI_RC_OK);
    EXPECT_NE(CMGetArrayElementAt(array, 1, nullptr).value.string, q);

    CMPIInstance *ci = CMNewInstance(mb(), CMNewObjectPath(mb(), "ns", "C", nullptr), nullptr);
    EXPECT_EQ(CMSetProperty(ci, "Arr", &array, CMPI_stringA).rc, CMPI_RC_OK);
    CMSetArrayElementAt(array, 0, "changed", CMPI_chars);
    const CMPIData stored = CMGetProperty(ci, "Arr", nullptr);
    EXPECT_EQ(stored.type, CMPI_stringA);
    EXPECT_EQ(cmpihost::valueToString(stored), "\"p\",\"q,r\"");
    // The element code is also taken with the array bit set.
    EXPECT_EQ(CMGetArrayType(CMNewArray(mb(), 0, CMPI_uint32A, nullptr), nullptr), CMPI_uint32);
}

TEST(Objects, ArgsAndContextEntriesByNameAndPosition) {
    Request request;
    CMPIArgs *in = request.newArgs();
    cmpihost::addStringArg(in, "ZoneName", "z1");
    CMPIValue type{};
    type.uint16 = 2;
    cmpihost::addValueArg(in, "MemberType", type, CMPI_uint16);
    CMPIStatus rc = noStatus();
    EXPECT_EQ(str(CMGetArg(in, "zonename", &rc)), "z1");
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetArgAt(in, 1, nullptr, nullptr).value.uint16, 2);
    CMPIArgs *copy = CMClone(in, nullptr);
    cmpihost::addStringArg(copy, "ZoneName", "z2");
    EXPECT_EQ(str(CMGetArg(in, "ZoneName", nullptr)), "z1");
    EXPECT_EQ(str(CMGetArg(copy, "ZoneName", nullptr)), "z2");
    EXPECT_EQ(CMGetArgCount(copy, nullptr), 2u);
    // Helpers on null objects do nothing.
    cmpihost::addStringArg(nullptr, "x", "y");
    cmpihost::addStringKey(nullptr, "x", "y");

    auto *ctx = const_cast<CMPIContext *>(request.context());
    CMPIUint32 flags = CMPI_FLAG_LocalOnly;
    EXPECT_EQ(CMAddContextEntry(ctx, CMPIInvocationFlags, &flags, CMPI_uint32).rc, CMPI_RC_OK);
    EXPECT_EQ(CMAddContextEntry(ctx, CMPIPrincipal, "admin", CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetContextEntry(ctx, CMPIInvocationFlags, nullptr).value.uint32, 1u);
    CMPIString *name = nullptr;
    EXPECT_EQ(str(CMGetContextEntryAt(ctx, 1, &name, nullptr)), "admin");
    EXPECT_STREQ(CMGetCharPtr(name), "CMPIPrincipal");
    EXPECT_EQ(CMGetContextEntryCount(CMClone(ctx, nullptr), nullptr), 2u);
}

TEST(Objects, DateTimesConvertBetweenBinaryAndCimText) {
    Request request;
    CMPIStatus rc = noStatus();
    const CMPIUint64 micros = 1704164645000006ULL;  // 2024-01-02 03:04:05.000006 UTC
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
    EXPECT_GT(CMGetBinaryFormat(CMNewDateTime(mb(), nullptr), nullptr), micros);
}

TEST(Objects, AnEnumerationWalksItsItemsOnceAndConvertsToAnArray) {
    Request request;
    std::vector<CMPIData> items(2);
    for (std::size_t i = 0; i < items.size(); ++i) {
        items[i].type = CMPI_uint32;
        items[i].value.uint32 = static_cast<CMPIUint32>(i + 10);
    }
    CMPIEnumeration *e = cmpihost::detail::makeEnumeration(cmpihost::detail::currentArena(), items);
    EXPECT_TRUE(CMHasNext(e, nullptr));
    EXPECT_EQ(CMGetNext(e, nullptr).value.uint32, 10u);
    CMPIEnumeration *rest = CMClone(e, nullptr);
    EXPECT_EQ(CMGetNext(e, nullptr).value.uint32, 11u);
    EXPECT_FALSE(CMHasNext(e, nullptr));
    const Refusal pastTheEnd[] = {REFUSAL(kNotFound, CMGetNext(e, rc))};
    expectRefusals(pastTheEnd);
    EXPECT_EQ(CMGetNext(rest, nullptr).value.uint32, 11u);
    CMPIArray *array = CMToArray(e, nullptr);
    EXPECT_EQ(CMGetArrayCount(array, nullptr), 2u);
    EXPECT_EQ(CMGetArrayType(array, nullptr), CMPI_uint32);
}

TEST(Objects, AResultRecordsDeliveriesInOrderWithTheDoneCalls) {
    Request request;
    const CMPIResult *rslt = request.result();
    CMPIObjectPath *op = request.newObjectPath("root/cimv2", "VORNA_Zone");
    CMPIInstance *ci = CMNewInstance(mb(), op, nullptr);
    char text[] = "Success";
    CMPIUint32 zero = 0;
    EXPECT_EQ(CMReturnObjectPath(rslt, op).rc, CMPI_RC_OK);
    EXPECT_EQ(CMReturnInstance(rslt, ci).rc, CMPI_RC_OK);
    EXPECT_EQ(CMReturnData(rslt, text, CMPI_chars).rc, CMPI_RC_OK);
    text[0] = 'X';
    EXPECT_EQ(CMReturnDone(rslt).rc, CMPI_RC_OK);
    EXPECT_EQ(CMReturnData(rslt, &zero, CMPI_uint32).rc, CMPI_RC_OK);
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
}

TEST(Broker, AnswersUpCallsNotSupportedAndTellsTypesAndClassesByName) {
    Request request;
    EXPECT_EQ(CBBrokerVersion(mb()), 100u);
    EXPECT_STREQ(CBBrokerName(mb()), "cmpihost");
    const CMPIContext *ctx = request.context();
    CMPIObjectPath *op = zonePath("1");
    CMPIArray *projection = reinterpret_cast<CMPIArray *>(0x1);
    const Refusal refusals[] = {
        REFUSAL(kUnsupported, EXPECT_EQ(CBEnumInstanceNames(mb(), ctx, op, rc), nullptr)),
        REFUSAL(kUnsupported, EXPECT_EQ(CBEnumInstances(mb(), ctx, op, nullptr, rc), nullptr)),
        REFUSAL(kUnsupported, EXPECT_EQ(CBGetInstance(mb(), ctx, op, nullptr, rc), nullptr)),
        REFUSAL(kUnsupported,
                CBAssociatorNames(mb(), ctx, op, nullptr, nullptr, nullptr, nullptr, rc)),
        REFUSAL(kUnsupported, *rc = CBDeleteInstance(mb(), ctx, op)),
        REFUSAL(kUnsupported, *rc = CBModifyInstance(mb(), ctx, op, nullptr, nullptr)),
        REFUSAL(kUnsupported,
                EXPECT_TRUE(CBInvokeMethod(mb(), ctx, op, "m", nullptr, nullptr, rc).state &
                            CMPI_nullValue)),
        REFUSAL(kUnsupported, *rc = CBDeliverIndication(mb(), ctx, "root", nullptr)),
        REFUSAL(kUnsupported, mb()->eft->newSelectExp(mb(), "select *", "WQL", &projection, rc);
                EXPECT_EQ(projection, nullptr)),
        REFUSAL(kParam, EXPECT_FALSE(CMClassPathIsA(mb(), op, nullptr, rc))),
        REFUSAL(kParam, EXPECT_EQ(CDToString(mb(), nullptr, rc), nullptr)),
        REFUSAL(kParam, EXPECT_EQ(CDGetType(mb(), nullptr, rc), nullptr)),
        REFUSAL(kParam, EXPECT_FALSE(CDIsOfType(mb(), nullptr, "CMPIString", rc))),
        REFUSAL(kParam, EXPECT_EQ(CMGetMessage(mb(), "X", nullptr, rc, CMFmtArgs0()), nullptr)),
        REFUSAL(kParam, *rc = CBAttachThread(mb(), nullptr)),
    };
    expectRefusals(refusals);
    CMPIContext *attached = CBPrepareAttachThread(mb(), ctx);
    ASSERT_NE(attached, nullptr);
    EXPECT_EQ(CBAttachThread(mb(), attached).rc, CMPI_RC_OK);
    EXPECT_EQ(CBDetachThread(mb(), attached).rc, CMPI_RC_OK);

    CMPIStatus rc = noStatus();
    EXPECT_TRUE(CMClassPathIsA(mb(), op, "vorna_zone", &rc));
    EXPECT_EQ(rc.rc, CMPI_RC_OK);
    EXPECT_FALSE(CMClassPathIsA(mb(), op, "VORNA_ZoneSet", &rc));
    EXPECT_TRUE(CDIsOfType(mb(), op, "CMPIObjectPath", &rc));
    EXPECT_FALSE(CDIsOfType(mb(), op, "CMPIInstance", &rc));
    EXPECT_STREQ(CMGetCharPtr(CDGetType(mb(), request.result(), &rc)), "CMPIResult");
    EXPECT_STREQ(CMGetCharPtr(CDGetType(mb(), ctx, &rc)), "CMPIContext");
    EXPECT_STREQ(CMGetCharPtr(CDToString(mb(), op, &rc)),
                 R"(root/cimv2:VORNA_Zone.InstanceID="1")");
    EXPECT_STREQ(CMGetCharPtr(CDToString(mb(), CMNewString(mb(), "plain", nullptr), &rc)), "plain");
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
    EXPECT_EQ(CMLogMessage(mb(), 1, "host_test", "log line", nullptr).rc, CMPI_RC_OK);
    EXPECT_EQ(CMTraceMessage(mb(), 1, "host_test", nullptr, zone).rc, CMPI_RC_OK);
}

CMPI_THREAD_RETURN addOne(void *parm) {
    ++*static_cast<int *>(parm);
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
    CMPI_COND_TYPE cond = x->newCondition(0);
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
