// Fabric files: the example fabric, dump and load round trips, the
// generator, and malformed files refused with the field and its position
// while the database stays as it was.
#include <fstream>
#include <iterator>

#include "sim_switch_support.h"

namespace simtest {
namespace {

std::string examplePath() {
    return (std::filesystem::path(__FILE__).parent_path() / "../../examples/fabric.json").string();
}

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
    std::string dump() {
        std::string text;
        EXPECT_EQ(0, zonesim::dumpFabricText(*store_, &text));
        return text;
    }
    std::unique_ptr<zonesim::Store> store_;
};

TEST_F(FabricTest, TheExampleLoadsAndDumpsBackToTheSameState) {
    zonesim::FabricError error;
    ASSERT_EQ(0, zonesim::loadFabric(*store_, examplePath(), &error)) << error.describe();

    std::vector<int> vsans;
    VsanEntry entry{};
    while (vsan_cim_get_vsanEntry(q_, ZP_VSAN_NEXT, &entry) == 0) vsans.push_back(entry.vsan);
    EXPECT_EQ((std::vector<int>{1, 10, 20}), vsans);
    // The active copy carries its editable twin's number.
    std::vector<std::string> full = zoneSets(10, false, true), active = zoneSets(10, true, true);
    ASSERT_EQ(1u, active.size());
    EXPECT_EQ(fieldsOf(full[0].c_str()).number, fieldsOf(active[0].c_str()).number);
    EXPECT_EQ((std::vector<std::string>{"z_db01_array1", "z_web01_array1", "z_backup01_tape1"}),
              zones(10, false));
    EXPECT_EQ((std::vector<std::string>{"z_db01_array1", "z_web01_array1"}), zones(10, true));
    EXPECT_EQ((std::vector<std::string>{"prod_b_cfg", "prod_b_cfg_next"}), zoneSets(20, false));
    std::vector<std::string> vsan20_members = members(20, false);
    EXPECT_EQ(5u, vsan20_members.size());
    EXPECT_EQ("20^32768^fc1/5^0", vsan20_members[0]);

    void *first = nullptr;
    ddas_iterator *walk = nullptr;
    int count = 0;
    ASSERT_EQ(0, ddas_api_get_all_device_alias_entries(q_, &first, &walk));
    ASSERT_EQ(0, ddas_api_iter_get_num_entries(walk, &count));
    EXPECT_EQ(12, count);

    std::string text = dump();
    std::vector<std::string> ids = zones(10, false, true);
    ASSERT_EQ(0, zonesim::loadFabricText(*store_, text, &error)) << error.describe();
    EXPECT_EQ(text, dump());
    EXPECT_EQ(ids, zones(10, false, true));
}

TEST_F(FabricTest, LoadingReplacesTheWholeState) {
    create(1, ZP_OBJECT_ZONE, "leftover");
    zonesim::FabricError error;
    ASSERT_EQ(0, zonesim::loadFabricText(*store_, R"({"switch_name": "core-2",
        "vsans": [{"number": 30, "full": {"zones": [{"name": "fresh", "number": 41}]}}]})",
                                         &error))
        << error.describe();
    EXPECT_EQ(kVsanNotConfigured, vsan_cim_check_vsan_index(1));
    EXPECT_STREQ("core-2", getCSName());
    EXPECT_EQ(std::vector<std::string>{id(30, 41)}, zones(30, false, true));
    EXPECT_EQ(42, create(30, ZP_OBJECT_ZONE, "next"));
}

TEST_F(FabricTest, TheGeneratorIsDeterministicAndItsFabricsLoad) {
    zonesim::GeneratorSettings settings;
    settings.seed = 7;
    settings.vsans = 3;
    settings.zone_sets = 4;
    settings.zones = 20;
    settings.aliases = 6;
    settings.members_per_zone = 3;
    settings.device_aliases = 10;
    std::string text = zonesim::generateFabric(settings);
    EXPECT_EQ(text, zonesim::generateFabric(settings));
    settings.seed = 8;
    EXPECT_NE(text, zonesim::generateFabric(settings));

    zonesim::FabricError error;
    ASSERT_EQ(0, zonesim::loadFabricText(*store_, text, &error)) << error.describe();
    std::size_t total_zones = 0;
    for (int vsan : {1, 2, 3}) {
        std::vector<std::string> ids = zones(vsan, false, true);
        total_zones += ids.size();
        for (const std::string &zone : ids) EXPECT_EQ(3u, zoneMembers(zone).size()) << zone;
        EXPECT_EQ(1u, zoneSets(vsan, true).size());
    }
    EXPECT_EQ(20u, total_zones);
    EXPECT_EQ(2u, aliases(1, false).size());
    EXPECT_EQ(text.size() > 0, dump().size() > 0);

    settings.vsans = 0;
    EXPECT_EQ("", zonesim::generateFabric(settings));
}

struct BadFile {
    const char *text;
    const char *pointer;
    const char *marker;  // the offending value starts at its first occurrence (+ shift)
    int shift;
};

TEST_F(FabricTest, MalformedFilesAreRefusedWithFieldAndPositionAndWriteNothing) {
    zonesim::FabricError error;
    ASSERT_EQ(0, zonesim::loadFabric(*store_, examplePath(), &error));
    const std::string before = dump();

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
        std::string text = bad.text;
        error = zonesim::FabricError{};
        EXPECT_EQ(kInvalidArgument, zonesim::loadFabricText(*store_, text, &error)) << text;
        EXPECT_EQ(bad.pointer, error.pointer) << text << "\n" << error.describe();
        EXPECT_EQ(text.find(bad.marker) + bad.shift, error.offset) << text << "\n"
                                                                   << error.describe();
        EXPECT_FALSE(error.message.empty());
    }
    EXPECT_NE(0, zonesim::loadFabric(*store_, dir_ + "/missing.json", &error));
    EXPECT_EQ(before, dump());
}

}  // namespace
}  // namespace simtest
