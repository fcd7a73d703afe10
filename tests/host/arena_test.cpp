// Ownership: every broker object belongs to one arena and dies with it.
// Run under ASan or valgrind these also show that nothing leaks and that a
// delivery never points into a dead request.
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include "host/objects.h"
#include "host_test_support.h"

namespace {

using cmpihost::liveObjectCount;
using cmpihost::Request;
namespace detail = cmpihost::detail;

const CMPIBroker *mb() {
    return cmpihost::broker();
}

// Makes one object of every kind through the broker, some of them nested.
void makeOneOfEach() {
    CMPIObjectPath *op = CMNewObjectPath(mb(), "root/cimv2", "VORNA_Zone", nullptr);
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
    CMNewString(mb(), "text", nullptr);
}

TEST(Arena, ARequestFreesEverythingMadeWhileItIsCurrent) {
    const std::size_t before = liveObjectCount();
    {
        Request request;
        const std::size_t own = request.objectCount();  // its result and context
        makeOneOfEach();
        EXPECT_GT(request.objectCount(), own + 10);
        EXPECT_EQ(liveObjectCount(), before + request.objectCount());
    }
    EXPECT_EQ(liveObjectCount(), before);
}

TEST(Arena, ReleaseNeverFreesSoReleasingTwiceIsHarmless) {
    const std::size_t before = liveObjectCount();
    {
        Request request;
        CMPIObjectPath *op = CMNewObjectPath(mb(), "ns", "C", nullptr);
        CMPIString *s = CMNewString(mb(), "kept", nullptr);
        CMPIObjectPath *copy = CMClone(op, nullptr);
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(CMRelease(op).rc, CMPI_RC_OK);
            EXPECT_EQ(CMRelease(s).rc, CMPI_RC_OK);
            EXPECT_EQ(CMRelease(copy).rc, CMPI_RC_OK);
        }
        EXPECT_STREQ(CMGetCharPtr(s), "kept");
        EXPECT_EQ(cmpihost::pathToString(copy), "ns:C");
    }
    EXPECT_EQ(liveObjectCount(), before);
}

TEST(Arena, RequestsNestAndTheOuterOneIsCurrentAgainAfterTheInner) {
    Request outer;
    CMPIString *first = CMNewString(mb(), "outer", nullptr);
    EXPECT_EQ(detail::arenaOf(first), detail::arenaOf(outer.result()));
    const std::size_t outerCount = outer.objectCount();
    {
        Request inner;
        CMPIString *second = CMNewString(mb(), "inner", nullptr);
        EXPECT_EQ(detail::arenaOf(second), detail::arenaOf(inner.result()));
        EXPECT_EQ(outer.objectCount(), outerCount);
    }
    CMPIString *third = CMNewString(mb(), "outer again", nullptr);
    EXPECT_EQ(detail::arenaOf(third), detail::arenaOf(outer.result()));
    // Objects a request makes for itself go to it whatever is current.
    Request other;
    CMPIObjectPath *mine = outer.newObjectPath("ns", "C");
    EXPECT_EQ(detail::arenaOf(mine), detail::arenaOf(outer.result()));
    EXPECT_EQ(detail::arenaOf(other.newArgs()), detail::arenaOf(other.result()));
}

TEST(Arena, ObjectsMadeWithNoRequestBelongToTheProcess) {
    ASSERT_EQ(detail::explicitCurrent(), nullptr);
    CMPIString *s = CMNewString(mb(), "process", nullptr);
    EXPECT_EQ(detail::arenaOf(s), &detail::processArena());
    {
        Request request;
        // Kept by pointer: the process arena outlives the request.
        CMReturnData(request.result(), &s, CMPI_string);
        CMPIObjectPath *op = CMNewObjectPath(mb(), "ns", "C", nullptr);
        EXPECT_NE(detail::arenaOf(op), &detail::processArena());
    }
    EXPECT_STREQ(CMGetCharPtr(s), "process");
}

TEST(Arena, ADeliveryOfAnotherRequestsObjectIsCopiedIntoTheResult) {
    Request outer;
    const CMPIObjectPath *delivered = nullptr;
    {
        Request inner;
        CMPIObjectPath *op = CMNewObjectPath(mb(), "ns", "C", nullptr);
        CMAddKey(op, "Id", "short-lived", CMPI_chars);
        CMPIInstance *ci = CMNewInstance(mb(), op, nullptr);
        EXPECT_EQ(CMReturnObjectPath(outer.result(), op).rc, CMPI_RC_OK);
        EXPECT_EQ(CMReturnInstance(outer.result(), ci).rc, CMPI_RC_OK);
        delivered = outer.deliveries()[0].path;
        EXPECT_NE(delivered, op);
        EXPECT_NE(outer.deliveries()[1].instance, ci);
    }
    // The inner request is gone; what the outer one recorded is still whole.
    EXPECT_EQ(cmpihost::pathToString(delivered), "ns:C.Id=\"short-lived\"");
    EXPECT_EQ(cmpihost::instanceToString(outer.deliveries()[1].instance),
              "ns:C.Id=\"short-lived\" Id=\"short-lived\"");
}

TEST(Arena, ParsedPathsBelongToTheCurrentRequest) {
    const std::size_t before = liveObjectCount();
    {
        Request request;
        std::string error;
        auto op = cmpihost::parsePath(R"(ns:L.Left="ns:A.Id=\"x\"",Right="ns:B.Id=\"y\"")", &error);
        ASSERT_TRUE(op.has_value()) << error;
        EXPECT_EQ(detail::arenaOf(*op), detail::arenaOf(request.result()));
        EXPECT_FALSE(cmpihost::parsePath("ns:L.Left=\"unterminated", &error).has_value());
    }
    EXPECT_EQ(liveObjectCount(), before);
}

}  // namespace
