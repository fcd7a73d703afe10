// Ownership: every broker object belongs to one arena and dies with it;
// release() frees nothing, requests nest, objects made with no request
// belong to the process, and a delivery never points into a dead request.
// A request of the size of a full-fabric enumeration carves objects and
// strings of every size (one far larger than any block) out of the arena's
// own blocks: each keeps its own, well-aligned memory until the request
// goes. ASan and UBSan show any leak, wrong read or use after free.
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include <string>
#include <vector>

#include "host/objects.h"
#include "host_test_support.h"

namespace {

using cmpihost::liveObjectCount;
using cmpihost::Request;
using host_test::mb;
using host_test::str;
namespace detail = cmpihost::detail;
using detail::arenaOf;

TEST(Arena, ARequestFreesEverythingMadeWhileItIsCurrentAndReleaseFreesNothing) {
    const std::size_t before = liveObjectCount();
    {
        Request request;
        const std::size_t own = request.objectCount();  // its result and context
        // One object of every kind, some nested, some made by getters and clones.
        CMPIObjectPath *op = CMNewObjectPath(mb(), "ns", "C", nullptr);
        CMAddKey(op, "InstanceID", "1^1^0", CMPI_chars);
        CMPIInstance *ci = CMNewInstance(mb(), op, nullptr);
        CMPIArray *array = CMNewArray(mb(), 1, CMPI_ref, nullptr);
        CMSetArrayElementAt(array, 0, &op, CMPI_ref);
        CMSetProperty(ci, "Refs", &array, CMPI_refA);
        CMPIArgs *args = CMNewArgs(mb(), nullptr);
        CMAddArg(args, "Zone", &ci, CMPI_instance);
        CMNewDateTime(mb(), nullptr);
        CMClone(args, nullptr);
        CMGetObjectPath(ci, nullptr);
        CMPIString *name = nullptr;
        CMGetKeyAt(op, 0, &name, nullptr);
        std::string error;
        auto parsed = cmpihost::parsePath(R"(ns:L.Left="ns:A.Id=\"x\"",R="ns:B.Id=\"y\"")", &error);
        ASSERT_TRUE(parsed.has_value()) << error;
        EXPECT_EQ(arenaOf(*parsed), arenaOf(request.result()));
        EXPECT_FALSE(cmpihost::parsePath("ns:L.Left=\"unterminated", &error).has_value());
        EXPECT_GT(request.objectCount(), own + 10);
        EXPECT_EQ(liveObjectCount(), before + request.objectCount());

        // A provider that releases what it made, even twice, frees nothing.
        CMPIString *s = CMNewString(mb(), "kept", nullptr);
        CMPIObjectPath *copy = CMClone(op, nullptr);
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(CMRelease(op).rc, CMPI_RC_OK);
            EXPECT_EQ(CMRelease(s).rc, CMPI_RC_OK);
            EXPECT_EQ(CMRelease(copy).rc, CMPI_RC_OK);
        }
        EXPECT_STREQ(CMGetCharPtr(s), "kept");
        EXPECT_EQ(cmpihost::pathToString(copy), R"(ns:C.InstanceID="1^1^0")");
    }
    EXPECT_EQ(liveObjectCount(), before);
}

TEST(Arena, RequestsNestAndTheOuterOneIsCurrentAgainAfterTheInner) {
    Request outer;
    EXPECT_EQ(arenaOf(CMNewString(mb(), "outer", nullptr)), arenaOf(outer.result()));
    const std::size_t outerCount = outer.objectCount();
    {
        Request inner;
        EXPECT_EQ(arenaOf(CMNewString(mb(), "inner", nullptr)), arenaOf(inner.result()));
        EXPECT_EQ(outer.objectCount(), outerCount);
    }
    EXPECT_EQ(arenaOf(CMNewString(mb(), "again", nullptr)), arenaOf(outer.result()));
    // Objects a request makes for itself go to it whatever is current.
    Request other;
    EXPECT_EQ(arenaOf(outer.newObjectPath("ns", "C")), arenaOf(outer.result()));
    EXPECT_EQ(arenaOf(other.newArgs()), arenaOf(other.result()));
}

TEST(Arena, ObjectsMadeWithNoRequestBelongToTheProcess) {
    ASSERT_EQ(detail::explicitCurrent(), nullptr);
    CMPIString *s = CMNewString(mb(), "process", nullptr);
    EXPECT_EQ(arenaOf(s), &detail::processArena());
    {
        Request request;
        // Kept by pointer: the process arena outlives the request.
        CMReturnData(request.result(), &s, CMPI_string);
        EXPECT_NE(arenaOf(CMNewObjectPath(mb(), "ns", "C", nullptr)), &detail::processArena());
    }
    EXPECT_STREQ(CMGetCharPtr(s), "process");
}

TEST(Arena, ADeliveryOfAnotherRequestsObjectIsCopiedIntoTheResult) {
    Request outer;
    {
        Request inner;
        CMPIObjectPath *op = CMNewObjectPath(mb(), "ns", "C", nullptr);
        CMAddKey(op, "Id", "short-lived", CMPI_chars);
        CMPIInstance *ci = CMNewInstance(mb(), op, nullptr);
        EXPECT_EQ(CMReturnObjectPath(outer.result(), op).rc, CMPI_RC_OK);
        EXPECT_EQ(CMReturnInstance(outer.result(), ci).rc, CMPI_RC_OK);
        EXPECT_NE(outer.deliveries()[0].path, op);
        EXPECT_NE(outer.deliveries()[1].instance, ci);
    }
    // The inner request is gone; what the outer one recorded is still whole.
    EXPECT_EQ(cmpihost::pathToString(outer.deliveries()[0].path), "ns:C.Id=\"short-lived\"");
    EXPECT_EQ(cmpihost::instanceToString(outer.deliveries()[1].instance),
              "ns:C.Id=\"short-lived\" Id=\"short-lived\"");
}

std::string textOf(int i) {
    if (i == 17) return std::string(200000, 'x');
    return std::string(static_cast<std::size_t>(i % 301), static_cast<char>('a' + i % 26)) +
           std::to_string(i);
}

TEST(Arena, ManyObjectsOfMixedSizesKeepTheirContentsUntilTheRequestEnds) {
    constexpr int kObjects = 20000;
    const std::size_t before = cmpihost::liveObjectCount();
    {
        cmpihost::Request request;
        std::vector<CMPIString *> strings;
        std::vector<CMPIInstance *> instances;
        for (int i = 0; i < kObjects; ++i) {
            strings.push_back(CMNewString(mb(), textOf(i).c_str(), nullptr));
            CMPIObjectPath *op = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Zone", nullptr);
            CMSetHostname(op, "switch-sim-01");
            CMAddKey(op, "InstanceID", std::to_string(i).c_str(), CMPI_chars);
            CMPIInstance *ci = CMNewInstance(mb(), op, nullptr);
            const CMPIUint16 type = static_cast<CMPIUint16>(i);
            CMSetProperty(ci, "ZoneType", &type, CMPI_uint16);
            CMSetProperty(ci, "ElementName", textOf(i + 1).c_str(), CMPI_chars);
            instances.push_back(ci);
            CMReturnInstance(request.result(), ci);
        }
        ASSERT_EQ(request.deliveries().size(), static_cast<std::size_t>(kObjects));
        for (int i = 0; i < kObjects; ++i) {
            ASSERT_EQ(CMGetCharPtr(strings[i]), textOf(i)) << i;
            ASSERT_EQ(CMGetProperty(instances[i], "ZoneType", nullptr).value.uint16,
                      static_cast<CMPIUint16>(i));
            ASSERT_EQ(str(CMGetProperty(instances[i], "ElementName", nullptr)), textOf(i + 1));
            ASSERT_EQ(str(CMGetProperty(instances[i], "InstanceID", nullptr)), std::to_string(i));
        }
        EXPECT_EQ(cmpihost::liveObjectCount(), before + request.objectCount());
    }
    EXPECT_EQ(cmpihost::liveObjectCount(), before);
}

}  // namespace
