// The switch's state lives in its database file: it survives reopening, is
// shared by processes, a file that isn't ours (or is of a newer schema) is
// refused and left as it was, and an older file gets the listing index.
#include <sqlite3.h>
#include <sys/wait.h>

#include <fstream>
#include <iterator>

#include "sim_switch_support.h"

namespace simtest {
namespace {

std::string fileBytes(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Runs SQL on the file; answers the first column of the first row, or -1.
int runSql(const std::string &path, const char *sql) {
    sqlite3 *db = nullptr;
    int n = -1;
    if (sqlite3_open(path.c_str(), &db) == SQLITE_OK) {
        sqlite3_stmt *stmt = nullptr;
        int rc = sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr);
        EXPECT_EQ(SQLITE_OK, rc) << sqlite3_errmsg(db);
        if (rc == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW) n = sqlite3_column_int(stmt, 0);
        sqlite3_finalize(stmt);
    }
    sqlite3_close(db);
    return n;
}

// What the switch writes on stderr while the code runs.
std::string stderrOf(const std::function<void()> &code) {
    testing::internal::CaptureStderr();
    code();
    return testing::internal::GetCapturedStderr();
}

using PersistenceTest = SwitchTest;

TEST_F(PersistenceTest, TwoProcessesSeeEachOthersChanges) {
    int to_child[2], to_parent[2];
    ASSERT_EQ(0, pipe(to_child));
    ASSERT_EQ(0, pipe(to_parent));
    char byte = 'x';
    std::fflush(nullptr);  // nothing buffered twice
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // The child reports by its exit status only, and exits normally so
        // that the switch closes its database (leak checkers follow it).
        int queue = -1, error = 0, count = 0;
        void *record = nullptr;
        bool ok = init_mts(&queue) == 0 &&
                  zs_cim_create_zoning_object(queue, ZP_OP_ADD, 1, ZP_OBJECT_ZONE, "from_child",
                                              &record, &error) == 0;
        std::free(record);
        ok = ok && write(to_parent[1], &byte, 1) == 1 && read(to_child[0], &byte, 1) == 1;
        ZoneRecord *zones = nullptr;
        ok = ok && zs_cim_get_all_non_active_zones(queue, 1, &count, &zones) == 0 && count == 2 &&
             std::string(zones[1].name) == "from_parent";
        std::free(zones);
        std::exit(ok ? 0 : 1);
    }
    ASSERT_EQ(1, read(to_parent[0], &byte, 1));
    EXPECT_EQ(std::vector<std::string>{"from_child"}, zones(1, false));
    create(1, ZP_OBJECT_ZONE, "from_parent");
    ASSERT_EQ(1, write(to_child[1], &byte, 1));
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    for (int fd : {to_child[0], to_child[1], to_parent[0], to_parent[1]}) close(fd);
}

TEST_F(PersistenceTest, AFileThatIsNotOursIsRefusedOnceAndUntouched) {
    {
        std::ofstream out(db_, std::ios::binary);
        for (int i = 0; i < 200; ++i) out << "zone set notes, line " << i << "\n";
    }
    std::string before = fileBytes(db_);
    const std::string message = stderrOf([&] {
        int count = 0;
        ZoneRecord *zones = nullptr;
        EXPECT_EQ(kNotOurDatabase, zs_cim_get_all_non_active_zones(q_, 1, &count, &zones));
        EXPECT_EQ(kNotOurDatabase, createError(1, ZP_OBJECT_ZONE, "z"));
        EXPECT_EQ(kNotOurDatabase, vsan_cim_check_vsan_index(1));
    });
    EXPECT_NE(std::string::npos, message.find(db_)) << message;
    EXPECT_EQ(message.find('\n'), message.rfind('\n')) << "reported once: " << message;
    EXPECT_STREQ("switch-sim-01", getCSName());
    EXPECT_STREQ("Not a zone switch database", syserr2str(kNotOurDatabase));
    EXPECT_EQ(before, fileBytes(db_));
    EXPECT_FALSE(std::filesystem::exists(db_ + "-wal"));
    EXPECT_FALSE(std::filesystem::exists(db_ + "-shm"));

    // Another program's database.
    const std::string other = dir_ + "/other.db";
    runSql(other, "CREATE TABLE inventory(id INTEGER PRIMARY KEY, item TEXT)");
    before = fileBytes(other);
    setenv("ZONE_SIM_DB", other.c_str(), 1);
    stderrOf([&] { EXPECT_EQ(kNotOurDatabase, createError(1, ZP_OBJECT_ZONE, "z")); });
    EXPECT_EQ(before, fileBytes(other));

    // Our own file, written by a later version of the switch.
    const std::string newer = dir_ + "/newer.db";
    setenv("ZONE_SIM_DB", newer.c_str(), 1);
    EXPECT_EQ(1, create(1, ZP_OBJECT_ZONE, "z"));
    // An empty file is simply a new database (and lets go of ours).
    const std::string empty = dir_ + "/empty.db";
    std::ofstream(empty).close();
    setenv("ZONE_SIM_DB", empty.c_str(), 1);
    EXPECT_EQ(0, vsan_cim_check_vsan_index(1));
    runSql(newer, "PRAGMA user_version = 2");
    before = fileBytes(newer);
    setenv("ZONE_SIM_DB", newer.c_str(), 1);
    EXPECT_NE(std::string::npos, stderrOf([&] {
                                     EXPECT_EQ(kNotOurDatabase, vsan_cim_check_vsan_index(1));
                                 }).find("newer"));
    EXPECT_EQ(before, fileBytes(newer));
}

// The state survives the platform letting go of its file and opening it
// again. A file written before the listing index existed gets it when
// opened, and the listings read through it answer what they answered
// without it.
TEST_F(PersistenceTest, StateSurvivesReopeningAndAnOlderFileGetsTheListingIndex) {
    addVsanFromOutside(7);
    for (int vsan : {1, 7}) {
        int set = create(vsan, ZP_OBJECT_ZONE_SET, "set_b");
        create(vsan, ZP_OBJECT_ZONE_SET, "set_a");
        int zone = create(vsan, ZP_OBJECT_ZONE, "zone_b");
        create(vsan, ZP_OBJECT_ZONE_ALIAS, "alias_a");
        create(vsan, ZP_OBJECT_ZONE, "zone_a");
        ASSERT_EQ(0, addZone(vsan, set, zone));
        ASSERT_EQ(0, member(vsan, ZP_OBJECT_ZONE, zone, 10, "35:00:00:00:3b:20:19:a5"));
        ASSERT_EQ(0, activate(vsan, 0, set));
    }
    // Inside a request, listings for a second VSAN read the index.
    auto everything = [&] {
        mutex_lock();
        std::vector<std::vector<std::string>> listed = databases({1, 7});
        for (int vsan : {1, 7})
            for (int active : {1, 0}) listed.push_back(setZones(id(vsan, 1, active)));
        mutex_unlock();
        return listed;
    };
    const std::vector<std::vector<std::string>> expected = everything();
    EXPECT_EQ(std::vector<std::string>({"set_b", "set_a"}), zoneSets(7, false));
    EXPECT_EQ(std::vector<std::string>({"set_b"}), zoneSets(7, true));
    EXPECT_EQ(std::vector<std::string>({"zone_b", "zone_a"}), zones(1, false));
    EXPECT_EQ(std::vector<std::string>({"zone_b"}), setZones(id(7, 1, 1)));

    const char *indexed =
        "SELECT count(*) FROM sqlite_schema WHERE type = 'index' AND name = 'zobject_listing'";
    releaseDatabase([&] {
        EXPECT_EQ(1, runSql(db_, indexed));
        runSql(db_, "DROP INDEX zobject_listing");
        ASSERT_EQ(0, runSql(db_, indexed));
    });
    EXPECT_EQ(expected, everything());
    EXPECT_EQ(1, runSql(db_, indexed));
    EXPECT_EQ(6, create(1, ZP_OBJECT_ZONE, "later"));  // numbers go on where they stopped
}

}  // namespace
}  // namespace simtest
