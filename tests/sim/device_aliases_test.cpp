// The device-alias database: changes that a commit applies, their refusals
// (reported by the change call, committing nothing), lookups by pWWN, walks
// and the database's capacity.
#include "sim_switch_support.h"

namespace simtest {
namespace {

constexpr int kCommitSession = 6;

class DeviceAliasTest : public SwitchTest {
  protected:
    // The pWWN as a TLV array, packed and sized as the provider does.
    std::vector<unsigned char> tlv(const char *pwwn) {
        std::size_t size = static_cast<uint16_t>(tlv_aligned_data_size_get(8)) + 4u;
        std::vector<unsigned char> buffer(size, 0);
        unsigned char value[8];
        EXPECT_EQ(0, wwn_cim_get_hex_from_str_wwn(pwwn, value));
        EXPECT_EQ(0, tlv_aligned_array_add_tlv(buffer.data(), static_cast<uint32_t>(size), 1, 8,
                                               value, 0));
        return buffer;
    }
    static DeviceAliasCommitContext context(int operation = kCommitSession) {
        DeviceAliasCommitContext c;
        std::memset(&c, 0xAB, sizeof c);  // the provider leaves all but the first field as is
        c.operation = operation;
        return c;
    }
    // Create (or remove, with pwwn null) and commit; answers the change
    // call's code and the commit's.
    std::pair<int, int> change(const std::string &name, const char *pwwn) {
        DeviceAliasCommitContext c = context();
        int rc;
        if (pwwn != nullptr) {
            std::vector<unsigned char> packed = tlv(pwwn);
            rc = ddas_create_device_alias_entry(q_, name.c_str(), packed.data(), &c, 0, 0);
        } else {
            rc = ddas_remove_device_alias_entry(q_, name.c_str(), &c, 0);
        }
        return {rc, ddas_commit(q_, &c, 0)};
    }
    // "name=pWWN" of every alias, in walk order.
    std::vector<std::string> walk() {
        void *first = nullptr;
        ddas_iterator *iterator = nullptr;
        EXPECT_EQ(0, ddas_api_get_all_device_alias_entries(q_, &first, &iterator));
        int count = -1;
        EXPECT_EQ(0, ddas_api_iter_get_num_entries(iterator, &count));
        std::vector<std::string> out;
        DeviceAliasEntry entry;
        while (ddas_api_iter_get_next_device_alias_entry(iterator, &entry) == 0) {
            char wwn[128];
            cim_sprintf_wwn(wwn, entry.pwwn);
            out.push_back(std::string(entry.name) + "=" + wwn);
        }
        EXPECT_EQ(count, static_cast<int>(out.size()));
        return out;
    }
    // The alias of a pWWN, or the lookup's code.
    std::string aliasOf(const char *pwwn) {
        unsigned char bytes[8];
        EXPECT_EQ(0, wwn_cim_get_hex_from_str_wwn(pwwn, bytes));
        uint64_t value;
        std::memcpy(&value, bytes, 8);
        char name[ZP_DEVICE_ALIAS_NAME_LEN] = {};
        int rc = ddas_get_device_alias_given_pwwn(q_, value, name);
        return rc == 0 ? name : "rc " + std::to_string(rc) + " " + name;
    }
};

TEST_F(DeviceAliasTest, ChangesApplyOnlyAtCommit) {
    EXPECT_TRUE(walk().empty());
    DeviceAliasCommitContext c = context();
    std::vector<unsigned char> packed = tlv("31:00:00:00:00:4c:a1:b2");
    ASSERT_EQ(0, ddas_create_device_alias_entry(q_, "host_a", packed.data(), &c, 0, 0));
    EXPECT_TRUE(walk().empty());  // staged, not applied
    ASSERT_EQ(0, ddas_commit(q_, &c, 0));
    EXPECT_EQ(kNothingPending, ddas_commit(q_, &c, 0));  // applied once

    EXPECT_EQ(std::make_pair(0, 0), change("host_b", "31:00:00:00:00:4c:a1:b3"));
    EXPECT_EQ((std::vector<std::string>{"host_a=31:00:00:00:00:4c:a1:b2",
                                        "host_b=31:00:00:00:00:4c:a1:b3"}),
              walk());
    EXPECT_EQ("host_b", aliasOf("31:00:00:00:00:4c:a1:b3"));
    EXPECT_EQ("rc 100 ", aliasOf("31:00:00:00:00:4c:a1:b9"));  // not found, no name written

    EXPECT_EQ(std::make_pair(0, 0), change("host_a", nullptr));
    EXPECT_EQ(std::vector<std::string>{"host_b=31:00:00:00:00:4c:a1:b3"}, walk());
}

TEST_F(DeviceAliasTest, RefusalsAreReportedByTheChangeCallAndCommitNothing) {
    ASSERT_EQ(std::make_pair(0, 0), change("host_a", "31:00:00:00:00:4c:a1:b2"));
    // One alias per pWWN and one pWWN per alias; names of 1 to 64 characters.
    const std::pair refused_with(kAlreadyPresent, kNothingPending);
    EXPECT_EQ(refused_with, change("host_a", "31:00:00:00:00:4c:a1:b3"));
    EXPECT_EQ(refused_with, change("other", "31:00:00:00:00:4c:a1:b2"));
    for (const std::string &name : {std::string(), std::string("has blank"), std::string(65, 'n')})
        EXPECT_EQ(std::make_pair(kInvalidName, kNothingPending),
                  change(name, "31:00:00:00:00:4c:a1:b4"))
            << name;
    EXPECT_EQ(std::make_pair(0, 0), change(std::string(64, 'n'), "31:00:00:00:00:4c:a1:b4"));
    EXPECT_EQ(std::make_pair(kNotFound, kNothingPending), change("nobody", nullptr));

    DeviceAliasCommitContext c = context(5);  // not a commit session
    std::vector<unsigned char> packed = tlv("31:00:00:00:00:4c:a1:b5");
    EXPECT_EQ(kInvalidArgument, ddas_create_device_alias_entry(q_, "x", packed.data(), &c, 0, 0));
    std::vector<unsigned char> no_pwwn(packed.size(), 0);
    c = context();
    EXPECT_EQ(kInvalidArgument, ddas_create_device_alias_entry(q_, "x", no_pwwn.data(), &c, 0, 0));
    EXPECT_EQ(kNothingPending, ddas_commit(q_, &c, 0));
    EXPECT_EQ(kInvalidArgument, ddas_commit(q_, nullptr, 0));
    EXPECT_EQ(2u, walk().size());
}

TEST_F(DeviceAliasTest, ANewWalkReplacesTheThreadsPreviousOne) {
    ASSERT_EQ(0, change("one", "21:00:00:00:00:00:00:01").first);
    void *first = nullptr;
    ddas_iterator *old_walk = nullptr, *new_walk = nullptr;
    ASSERT_EQ(0, ddas_api_get_all_device_alias_entries(q_, &first, &old_walk));
    ASSERT_EQ(0, change("two", "21:00:00:00:00:00:00:02").first);
    ASSERT_EQ(0, ddas_api_get_all_device_alias_entries(q_, &first, &new_walk));
    int count = 0;
    DeviceAliasEntry entry;
    EXPECT_EQ(kInvalidArgument, ddas_api_iter_get_num_entries(old_walk, &count));
    EXPECT_EQ(kInvalidArgument, ddas_api_iter_get_next_device_alias_entry(old_walk, &entry));
    EXPECT_EQ(kInvalidArgument, ddas_api_iter_get_num_entries(nullptr, &count));
    ASSERT_EQ(0, ddas_api_iter_get_num_entries(new_walk, &count));
    EXPECT_EQ(2, count);
    EXPECT_EQ(0, ddas_api_iter_get_next_device_alias_entry(new_walk, &entry));
    EXPECT_STREQ("one", entry.name);
    EXPECT_EQ(0, ddas_api_iter_get_next_device_alias_entry(new_walk, &entry));
    EXPECT_NE(0, ddas_api_iter_get_next_device_alias_entry(new_walk, &entry));
}

TEST_F(DeviceAliasTest, TheDatabaseHasACapacity) {
    loadFabric(R"({"limits": {"device_aliases": 1},
                   "device_aliases": [{"name": "only", "pwwn": "21:00:00:00:00:00:00:01"}]})");
    EXPECT_EQ(kCapacity, change("more", "21:00:00:00:00:00:00:02").first);
    EXPECT_EQ(0, change("only", nullptr).first);
    EXPECT_EQ(0, change("more", "21:00:00:00:00:00:00:02").first);
}

}  // namespace
}  // namespace simtest
