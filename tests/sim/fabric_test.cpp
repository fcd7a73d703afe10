// Fabric files: the example fabric, dump and load round trips, the
// generator, and malformed files refused with the field and its position
// while the database stays as it was.
#include "sim_switch_support.h"

namespace simtest {
namespace {

const std::string kExample =
    (std::filesystem::path(__FILE__).parent_path() / "../../examples/fabric.json").string();

class FabricTest : public SwitchTest {
  protected:
    void SetUp() override {
        SwitchTest::SetUp();
        zonesim::Store::Opened opened = zonesim::Store::open(db_);
        ASSERT_TRUE(opened.store) << opened.message;
        store_ = std::move(opened.store);
    }
    void TearDown() override {
        store_.reset();
        SwitchTest::TearDown();
    }
    int load(const std::string &text) { return zonesim::loadFabricText(*store_, text, &error_); }
    std::string dump() {
        std::string text;
        EXPECT_EQ(0, zonesim::dumpFabricText(*store_, &text));
        return text;
    }
    std::unique_ptr<zonesim::Store> store_;
    zonesim::FabricError error_;
};

TEST_F(FabricTest, TheExampleLoadsAndDumpsBackToTheSameState) {
    ASSERT_EQ(0, zonesim::loadFabric(*store_, kExample, &error_)) << error_.describe();
    EXPECT_EQ((std::vector<int>{1, 10, 20}), walkVsans());
    // Objects in file order; the active copy carries its editable twin's number.
    EXPECT_EQ((std::vector<std::string>{"z_db01_array1", "z_web01_array1", "z_backup01_tape1"}),
              zones(10, false));
    EXPECT_EQ((std::vector<std::string>{"z_db01_array1", "z_web01_array1"}), zones(10, true));
    std::vector<std::string> full = zoneSets(10, false, true), active = zoneSets(10, true, true);
    ASSERT_EQ(1u, active.size());
    EXPECT_EQ(numberOf(full[0]), numberOf(active[0]));
    std::vector<std::string> vsan20_members = members(20, false);
    ASSERT_EQ(5u, vsan20_members.size());
    EXPECT_EQ("20^32768^fc1/5^0", vsan20_members[0]);

    std::string text = dump();
    std::vector<std::string> ids = zones(10, false, true);
    ASSERT_EQ(0, load(text)) << error_.describe();
    EXPECT_EQ(text, dump());
    EXPECT_EQ(ids, zones(10, false, true));
}

TEST_F(FabricTest, LoadingReplacesTheWholeState) {
    create(1, ZP_OBJECT_ZONE, "leftover");
    ASSERT_EQ(0, load(R"({"switch_name": "core-2",
        "vsans": [{"number": 30, "full": {"zones": [{"name": "fresh", "number": 41}]}}]})"))
        << error_.describe();
    EXPECT_EQ(kVsanNotConfigured, vsan_cim_check_vsan_index(1));
    EXPECT_STREQ("core-2", getCSName());
    EXPECT_EQ(std::vector<std::string>{id(30, 41)}, zones(30, false, true));
    EXPECT_EQ(42, create(30, ZP_OBJECT_ZONE, "next"));
}

TEST_F(FabricTest, TheGeneratorIsDeterministicAndItsFabricsLoad) {
    // Seed, VSANs, zone sets, zones, aliases, members per zone, device aliases.
    zonesim::GeneratorSettings settings{7, 3, 4, 20, 6, 3, 10};
    std::string text = zonesim::generateFabric(settings);
    EXPECT_EQ(text, zonesim::generateFabric(settings));
    settings.seed = 8;
    EXPECT_NE(text, zonesim::generateFabric(settings));

    ASSERT_EQ(0, load(text)) << error_.describe();
    std::size_t total_zones = 0;
    for (int vsan : {1, 2, 3}) {
        std::vector<std::string> ids = zones(vsan, false, true);
        total_zones += ids.size();
        for (const std::string &zone : ids) EXPECT_EQ(3u, zoneMembers(zone).size()) << zone;
        EXPECT_EQ(1u, zoneSets(vsan, true).size());
    }
    EXPECT_EQ(20u, total_zones);
    EXPECT_EQ(2u, aliases(1, false).size());

    settings.vsans = 0;
    EXPECT_EQ("", zonesim::generateFabric(settings));
}

TEST_F(FabricTest, MalformedFilesAreRefusedWithFieldAndPositionAndWriteNothing) {
    ASSERT_EQ(0, zonesim::loadFabric(*store_, kExample, &error_));
    const std::string before = dump();

    struct BadFile {
        const char *text;
        const char *pointer;
        const char *marker;  // the offending value starts at its first occurrence (+ shift)
        int shift;
    };
    static const BadFile kBadFiles[] = {
        {R"({"vsans": [{"number": 1,, "name": "x"}]})", "/vsans/0", ",,", 1},
        {R"({"vsans": [{"number": 1}]} x)", "", "x", 0},
        {R"({"vsans": [{"number": "ten"}]})", "/vsans/0/number", "\"ten\"", 0},
        {R"({"vsans": [{"number": 5000}]})", "/vsans/0/number", "5000", 0},
        {R"({"vsans": [{"number": 1}, {"number": 1}]})", "/vsans/1/number", "1}]", 0},
        {R"({"vsans": [{"number": 1, "zonesets": []}]})", "/vsans/0/zonesets", "[]", 0},
        {R"({"vsans": [{"number": 1, "a/b~": 0}]})", "/vsans/0/a~1b~0", "0}", 0},
        {R"({"vsans": [{"number": 1, "full": {"zones": [{"members": []}]}}]})",
         "/vsans/0/full/zones/0", "{\"members\"", 0},
        {R"({"vsans": [{"number": 1, "full": {"zone_sets": [{"name": "s", "zones": ["nope"]}]}}]})",
         "/vsans/0/full/zone_sets/0/zones/0", "\"nope\"", 0},
        {R"({"vsans": [{"number": 1, "full": {"zones": [{"name": "z"}, {"name": "z"}]}}]})",
         "/vsans/0/full/zones/1/name", "\"z\"}]", 0},
        {R"({"vsans": [{"number": 1, "full": {"zones": [{"name": "bad name"}]}}]})",
         "/vsans/0/full/zones/0/name", "\"bad name\"", 0},
        {R"({"vsans": [{"number": 1, "full": {"aliases": [{"name": "a",
            "members": [{"type": 10, "id": "31:00:00:00:00:4c:a1:b2"}, {"type": 10, "id": "xyz"}]}]}}]})",
         "/vsans/0/full/aliases/0/members/1/id", "\"xyz\"", 0},
        {R"({"vsans": [{"number": 1, "full": {"zones": [{"name": "z",
            "members": [{"type": 77, "id": "x"}]}]}}]})",
         "/vsans/0/full/zones/0/members/0/type", "77", 0},
        {R"({"vsans": [{"number": 1, "active": {"zone_sets": [{"name": "s1"}, {"name": "s2"}]}}]})",
         "/vsans/0/active/zone_sets", "[{\"name\": \"s1\"", 0},
        {R"({"device_aliases": [{"name": "a", "pwwn": "21:00:00:00:00:00:00:01"},
                                {"name": "b", "pwwn": "2100000000000001"}]})",
         "/device_aliases/1/pwwn", "\"2100000000000001\"", 0},
        {R"({"vsans": [{"number": 1, "domain": {"id": 240}}]})", "/vsans/0/domain/id", "240", 0},
    };
    for (const BadFile &bad : kBadFiles) {
        const std::string text = bad.text;
        SCOPED_TRACE(text);
        error_ = zonesim::FabricError{};
        EXPECT_EQ(kInvalidArgument, load(text));
        EXPECT_EQ(bad.pointer, error_.pointer) << error_.describe();
        EXPECT_EQ(text.find(bad.marker) + bad.shift, error_.offset) << error_.describe();
        EXPECT_FALSE(error_.message.empty());
    }
    EXPECT_NE(0, zonesim::loadFabric(*store_, dir_ + "/missing.json", &error_));
    EXPECT_EQ(before, dump());
}

}  // namespace
}  // namespace simtest
