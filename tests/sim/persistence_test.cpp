// The switch's state lives in its database file: it survives reopening, is
// shared by processes, and a file that isn't ours is refused and left as it
// was.
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

bool exists(const std::string &path) {
    return std::filesystem::exists(path);
}

void runSql(const std::string &path, const char *sql) {
    sqlite3 *db = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(path.c_str(), &db));
    char *message = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_exec(db, sql, nullptr, nullptr, &message)) << message;
    sqlite3_free(message);
    sqlite3_close(db);
}

class PersistenceTest : public SwitchTest {
  protected:
    // Makes the platform let go of the database and open it again.
    void reopen() {
        std::string elsewhere = dir_ + "/elsewhere.db";
        setenv("ZONE_SIM_DB", elsewhere.c_str(), 1);
        EXPECT_EQ(0, vsan_cim_check_vsan_index(1));
        setenv("ZONE_SIM_DB", db_.c_str(), 1);
    }
    // Writes one byte into the pipe / waits for one.
    static void signal(int fd) { ASSERT_EQ(1, write(fd, "x", 1)); }
    static bool wait(int fd) {
        char c = 0;
        return read(fd, &c, 1) == 1;
    }
};

TEST_F(PersistenceTest, StateSurvivesReopening) {
    int set = create(1, ZP_OBJECT_ZONE_SET, "kept");
    int zone = create(1, ZP_OBJECT_ZONE, "zone_kept");
    ASSERT_EQ(0, addZone(1, set, zone));
    ASSERT_EQ(0, member(1, ZP_OBJECT_ZONE, zone, 10, "35:00:00:00:3b:20:19:a5"));
    ASSERT_EQ(0, activate(1, 0, set));
    reopen();
    EXPECT_EQ(std::vector<std::string>{"kept"}, zoneSets(1, true));
    EXPECT_EQ(std::vector<std::string>{"zone_kept"}, setZones(id(1, set)));
    EXPECT_EQ(std::vector<std::string>{"1^10^35:00:00:00:3b:20:19:a5^0"}, members(1, false));
    // Numbers go on where they stopped.
    EXPECT_GT(create(1, ZP_OBJECT_ZONE, "later"), zone);
}

TEST_F(PersistenceTest, TwoProcessesSeeEachOthersChanges) {
    int to_child[2], to_parent[2];
    ASSERT_EQ(0, pipe(to_child));
    ASSERT_EQ(0, pipe(to_parent));
    std::fflush(nullptr);  // nothing buffered twice
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // The child reports by its exit status only, and exits normally so
        // that the switch closes its database (leak checkers follow it).
        int queue = -1;
        int error = 0;
        void *record = nullptr;
        bool ok = init_mts(&queue) == 0 &&
                  zs_cim_create_zoning_object(queue, ZP_OP_ADD, 1, ZP_OBJECT_ZONE, "from_child",
                                              &record, &error) == 0;
        std::free(record);
        ok = ok && write(to_parent[1], "x", 1) == 1 && wait(to_child[0]);
        int count = 0;
        ZoneRecord *zones = nullptr;
        ok = ok && zs_cim_get_all_non_active_zones(queue, 1, &count, &zones) == 0 && count == 2 &&
             std::string(zones[1].name) == "from_parent";
        std::free(zones);
        std::exit(ok ? 0 : 1);
    }
    ASSERT_TRUE(wait(to_parent[0]));
    EXPECT_EQ(std::vector<std::string>{"from_child"}, zones(1, false));
    create(1, ZP_OBJECT_ZONE, "from_parent");
    signal(to_child[1]);
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    for (int fd : {to_child[0], to_child[1], to_parent[0], to_parent[1]}) close(fd);
}

TEST_F(PersistenceTest, AFileThatIsNotADatabaseIsRefusedAndUntouched) {
    {
        std::ofstream out(db_, std::ios::binary);
        for (int i = 0; i < 200; ++i) out << "zone set notes, line " << i << "\n";
    }
    std::string before = fileBytes(db_);
    testing::internal::CaptureStderr();
    int count = 0;
    ZoneRecord *zones = nullptr;
    EXPECT_EQ(kNotOurDatabase, zs_cim_get_all_non_active_zones(q_, 1, &count, &zones));
    EXPECT_EQ(kNotOurDatabase, createError(1, ZP_OBJECT_ZONE, "z"));
    EXPECT_EQ(kNotOurDatabase, vsan_cim_check_vsan_index(1));
    std::string message = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, message.find(db_)) << message;
    EXPECT_EQ(message.find('\n'), message.rfind('\n')) << "reported once: " << message;
    EXPECT_STREQ("switch-sim-01", getCSName());
    EXPECT_STREQ("Not a zone switch database", syserr2str(kNotOurDatabase));
    EXPECT_EQ(before, fileBytes(db_));
    EXPECT_FALSE(exists(db_ + "-wal"));
    EXPECT_FALSE(exists(db_ + "-shm"));
}

TEST_F(PersistenceTest, AnotherProgramsDatabaseAndANewerSchemaAreRefused) {
    runSql(db_,
           "CREATE TABLE inventory(id INTEGER PRIMARY KEY, item TEXT);"
           "INSERT INTO inventory(item) VALUES ('cable');");
    std::string before = fileBytes(db_);
    testing::internal::CaptureStderr();
    EXPECT_EQ(kNotOurDatabase, createError(1, ZP_OBJECT_ZONE, "z"));
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(before, fileBytes(db_));

    // Our own file, written by a later version of the switch.
    std::string ours = dir_ + "/ours.db";
    setenv("ZONE_SIM_DB", ours.c_str(), 1);
    EXPECT_EQ(1, create(1, ZP_OBJECT_ZONE, "z"));
    // An empty file is simply a new database (and lets go of ours).
    std::string empty = dir_ + "/empty.db";
    std::ofstream(empty).close();
    setenv("ZONE_SIM_DB", empty.c_str(), 1);
    EXPECT_EQ(0, vsan_cim_check_vsan_index(1));
    runSql(ours, "PRAGMA user_version = 2");
    std::string newer = fileBytes(ours);
    setenv("ZONE_SIM_DB", ours.c_str(), 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(kNotOurDatabase, vsan_cim_check_vsan_index(1));
    std::string message = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, message.find("newer")) << message;
    EXPECT_EQ(newer, fileBytes(ours));
}

int countSql(const std::string &path, const char *sql) {
    sqlite3 *db = nullptr;
    int n = -1;
    if (sqlite3_open(path.c_str(), &db) == SQLITE_OK) {
        sqlite3_stmt *stmt = nullptr;
        if (sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) == SQLITE_OK &&
            sqlite3_step(stmt) == SQLITE_ROW)
            n = sqlite3_column_int(stmt, 0);
        sqlite3_finalize(stmt);
    }
    sqlite3_close(db);
    return n;
}

// Files written before the listing index existed get it when opened, and
// the listings read through it answer what they answered without it.
TEST_F(PersistenceTest, AnOlderFileGetsTheListingIndexAndListsTheSame) {
    {
        zonesim::Store::Opened other = zonesim::Store::open(db_);
        ASSERT_TRUE(other.store) << other.message;
        zonesim::VsanInfo vsan;
        vsan.number = 7;
        vsan.name = "VSAN0007";
        ASSERT_EQ(0, other.store->write([&] { return other.store->addVsan(vsan); }));
    }
    for (int vsan : {1, 7}) {
        int set = create(vsan, ZP_OBJECT_ZONE_SET, "set_b");
        create(vsan, ZP_OBJECT_ZONE_SET, "set_a");
        int zone = create(vsan, ZP_OBJECT_ZONE, "zone_b");
        create(vsan, ZP_OBJECT_ZONE_ALIAS, "alias_a");
        create(vsan, ZP_OBJECT_ZONE, "zone_a");
        ASSERT_EQ(0, addZone(vsan, set, zone));
        ASSERT_EQ(0, activate(vsan, 0, set));
    }
    auto everything = [&] {
        std::vector<std::vector<std::string>> listed;
        for (int vsan : {1, 7}) {
            for (bool active : {true, false}) {
                listed.push_back(zoneSets(vsan, active, true));
                listed.push_back(zones(vsan, active, true));
                listed.push_back(aliases(vsan, active, true));
            }
        }
        return listed;
    };
    mutex_lock();  // inside a request, listings for a second VSAN read the index
    const std::vector<std::vector<std::string>> expected = everything();
    mutex_unlock();
    EXPECT_EQ(std::vector<std::string>({"set_b", "set_a"}), zoneSets(7, false));
    EXPECT_EQ(std::vector<std::string>({"set_b"}), zoneSets(7, true));
    EXPECT_EQ(std::vector<std::string>({"zone_b", "zone_a"}), zones(1, false));

    const char *indexed =
        "SELECT count(*) FROM sqlite_schema WHERE type = 'index' AND name = 'zobject_listing'";
    std::string elsewhere = dir_ + "/elsewhere.db";
    setenv("ZONE_SIM_DB", elsewhere.c_str(), 1);
    EXPECT_EQ(0, vsan_cim_check_vsan_index(1));  // the platform lets go of the file
    EXPECT_EQ(1, countSql(db_, indexed));
    runSql(db_, "DROP INDEX zobject_listing");
    ASSERT_EQ(0, countSql(db_, indexed));
    setenv("ZONE_SIM_DB", db_.c_str(), 1);

    mutex_lock();
    EXPECT_EQ(expected, everything());
    mutex_unlock();
    EXPECT_EQ(1, countSql(db_, indexed));
}

}  // namespace
}  // namespace simtest
