// A request of the size of a full-fabric enumeration: objects and the
// characters of strings are carved out of the arena's own blocks, so this
// checks that every object keeps its own, well-aligned memory whatever the
// mix of sizes (one text far larger than any block), and that all of it
// goes with the request. ASan and UBSan show any wrong read or free.
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include <string>
#include <vector>

#include "host_test_support.h"

namespace {

using host_test::mb;
using host_test::str;

std::string textOf(int i) {
    if (i == 17) return std::string(200000, 'x');
    return std::string(static_cast<std::size_t>(i % 301), static_cast<char>('a' + i % 26)) +
           std::to_string(i);
}

TEST(ArenaScale, ManyObjectsOfMixedSizesKeepTheirContentsUntilTheRequestEnds) {
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
