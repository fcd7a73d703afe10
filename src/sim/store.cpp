// The simulated switch's state in SQLite (see store.h).
#include "sim/store.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "sim/member_types.h"
#include "sim/naming.h"
#include "sim/sim_errors.h"

namespace zonesim {

namespace {

// "ZONE" in the database header's application id: marks the file as ours.
constexpr int kApplicationId = 0x5A4F4E45;
// Schema version in the header's user version; a newer one is refused.
constexpr int kSchemaVersion = 1;
constexpr int kBusyTimeoutMs = 5000;
constexpr const char *kMagic = "zone-switch-sim";

// VSANs that exist but carry no zoning: the isolated VSAN and the reserved one.
constexpr int kIsolatedVsan = 4094;
constexpr int kReservedVsan = 4079;

// Listings of one kind across the whole switch read this index alone: it is
// led by the kind and holds every column a listing hands back, so the zone
// sets (a handful per VSAN) come out of one range of it, and zones or
// aliases without the rows of the other kinds. Files made before it existed
// get it when opened; it changes nothing that they hold.
constexpr const char *kListingIndex =
    "CREATE INDEX IF NOT EXISTS zobject_listing ON zobject(kind, vsan, active, id, number, name)";

// The usage table counts the full databases by row: 0 zones, 1 zone sets,
// 2 aliases (the object kinds), 3 member entries, 4 device aliases.

constexpr const char *kSchema = R"sql(
CREATE TABLE meta(key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
CREATE TABLE vsan(
    number INTEGER PRIMARY KEY,
    name TEXT NOT NULL,
    domain_id INTEGER,
    switch_wwn BLOB,
    principal_wwn BLOB,
    next_number INTEGER NOT NULL DEFAULT 1);
CREATE TABLE zobject(
    id INTEGER PRIMARY KEY,
    vsan INTEGER NOT NULL REFERENCES vsan(number) ON DELETE CASCADE,
    active INTEGER NOT NULL,
    kind INTEGER NOT NULL,
    number INTEGER NOT NULL,
    name TEXT NOT NULL,
    UNIQUE(vsan, active, number),
    UNIQUE(vsan, active, kind, name));
CREATE INDEX zobject_by_kind ON zobject(vsan, active, kind, id);
CREATE TABLE zlink(
    id INTEGER PRIMARY KEY,
    parent INTEGER NOT NULL REFERENCES zobject(id) ON DELETE CASCADE,
    child INTEGER NOT NULL REFERENCES zobject(id) ON DELETE CASCADE,
    UNIQUE(parent, child));
CREATE INDEX zlink_by_parent ON zlink(parent, id);
CREATE INDEX zlink_by_child ON zlink(child, id);
CREATE TABLE member(
    id INTEGER PRIMARY KEY,
    vsan INTEGER NOT NULL,
    active INTEGER NOT NULL,
    code INTEGER NOT NULL,
    match_key BLOB NOT NULL,
    value BLOB NOT NULL,
    cim_type INTEGER NOT NULL,
    id_text TEXT NOT NULL,
    value_text TEXT NOT NULL,
    UNIQUE(vsan, active, code, match_key));
CREATE INDEX member_by_database ON member(vsan, active, id);
CREATE TABLE mlink(
    id INTEGER PRIMARY KEY,
    parent INTEGER NOT NULL REFERENCES zobject(id) ON DELETE CASCADE,
    member INTEGER NOT NULL REFERENCES member(id) ON DELETE CASCADE,
    active INTEGER NOT NULL,
    UNIQUE(parent, member));
CREATE INDEX mlink_by_parent ON mlink(parent, id);
CREATE INDEX mlink_by_member ON mlink(member, id);
CREATE TABLE device_alias(
    id INTEGER PRIMARY KEY,
    name TEXT NOT NULL UNIQUE,
    pwwn BLOB NOT NULL UNIQUE);
CREATE TABLE usage(what INTEGER PRIMARY KEY, n INTEGER NOT NULL);
INSERT INTO usage(what, n) VALUES (0, 0), (1, 0), (2, 0), (3, 0), (4, 0);

-- A member exists only while a zone or alias holds it.
CREATE TRIGGER member_released AFTER DELETE ON mlink
WHEN NOT EXISTS (SELECT 1 FROM mlink WHERE member = OLD.member)
BEGIN DELETE FROM member WHERE id = OLD.member; END;

-- Usage of the full databases, kept as rows come and go so that a capacity
-- check never counts the fabric.
CREATE TRIGGER object_added AFTER INSERT ON zobject WHEN NEW.active = 0
BEGIN UPDATE usage SET n = n + 1 WHERE what = NEW.kind; END;
CREATE TRIGGER object_removed AFTER DELETE ON zobject WHEN OLD.active = 0
BEGIN UPDATE usage SET n = n - 1 WHERE what = OLD.kind; END;
CREATE TRIGGER member_entry_added AFTER INSERT ON mlink WHEN NEW.active = 0
BEGIN UPDATE usage SET n = n + 1 WHERE what = 3; END;
CREATE TRIGGER member_entry_removed AFTER DELETE ON mlink WHEN OLD.active = 0
BEGIN UPDATE usage SET n = n - 1 WHERE what = 3; END;
CREATE TRIGGER device_alias_added AFTER INSERT ON device_alias
BEGIN UPDATE usage SET n = n + 1 WHERE what = 4; END;
CREATE TRIGGER device_alias_removed AFTER DELETE ON device_alias
BEGIN UPDATE usage SET n = n - 1 WHERE what = 4; END;
)sql";

// An SQLite failure inside a transaction; transact() turns it into a code.
struct StoreFailure {
    int code;
};

int failureCode(int sqlite_rc) {
    int primary = sqlite_rc & 0xff;
    if (primary == SQLITE_BUSY || primary == SQLITE_LOCKED) return kErrDatabaseBusy;
    if (primary == SQLITE_NOTADB) return kErrNotOurDatabase;
    return kErrStorage;
}

bool fileIsEmptyOrMissing(const std::string &path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return true;
    return S_ISREG(info.st_mode) && info.st_size == 0;
}

// 231 and 109 name one member type; members keep 109.
int normalizedCode(std::uint8_t code) {
    return canonical_member_code(code);
}

bool zoningAllowed(int vsan) {
    return vsan != kIsolatedVsan && vsan != kReservedVsan;
}

ObjectKind childKindOf(ObjectKind parent) {
    return parent == ObjectKind::ZoneSet ? ObjectKind::Zone : ObjectKind::Alias;
}

int usageOf(ObjectKind kind) {
    return static_cast<int>(kind);
}

}  // namespace

// ---- Statements ------------------------------------------------------------

// A prepared statement borrowed from the cache for one use: binds in order,
// steps, reads columns, and resets itself when it goes.
class Query {
  public:
    explicit Query(sqlite3_stmt *stmt) : stmt_(stmt) {}
    ~Query() {
        sqlite3_reset(stmt_);
        sqlite3_clear_bindings(stmt_);
    }
    Query(const Query &) = delete;
    Query &operator=(const Query &) = delete;

    Query &bind(int value) { return check(sqlite3_bind_int(stmt_, ++index_, value)); }
    Query &bind(bool value) { return bind(value ? 1 : 0); }
    Query &bind(std::int64_t value) { return check(sqlite3_bind_int64(stmt_, ++index_, value)); }
    Query &bind(const std::string &text) {
        return check(sqlite3_bind_text(stmt_, ++index_, text.data(), static_cast<int>(text.size()),
                                       SQLITE_TRANSIENT));
    }
    Query &bind(const std::vector<std::uint8_t> &blob) {
        // A zero-length blob still binds as a blob, not as NULL.
        static const std::uint8_t kEmpty = 0;
        const void *data = blob.empty() ? &kEmpty : blob.data();
        return check(sqlite3_bind_blob(stmt_, ++index_, data, static_cast<int>(blob.size()),
                                       SQLITE_TRANSIENT));
    }
    Query &bind(const Wwn &wwn) { return bind(std::vector<std::uint8_t>(wwn.begin(), wwn.end())); }
    Query &bindNull() { return check(sqlite3_bind_null(stmt_, ++index_)); }

    // True with a row to read, false when done; throws on failure.
    bool next() {
        int rc = sqlite3_step(stmt_);
        if (rc == SQLITE_ROW) return true;
        if (rc == SQLITE_DONE) return false;
        throw StoreFailure{failureCode(rc)};
    }
    // Runs a statement that returns no rows: true when done, false when a
    // constraint (uniqueness) refused it; throws on any other failure.
    bool run() {
        int rc = sqlite3_step(stmt_);
        if (rc == SQLITE_DONE || rc == SQLITE_ROW) return true;
        if ((rc & 0xff) == SQLITE_CONSTRAINT) return false;
        throw StoreFailure{failureCode(rc)};
    }

    int integer(int column) const { return sqlite3_column_int(stmt_, column); }
    std::int64_t integer64(int column) const { return sqlite3_column_int64(stmt_, column); }
    bool isNull(int column) const { return sqlite3_column_type(stmt_, column) == SQLITE_NULL; }
    std::string text(int column) const {
        const unsigned char *p = sqlite3_column_text(stmt_, column);
        int n = sqlite3_column_bytes(stmt_, column);
        return p == nullptr ? std::string() : std::string(reinterpret_cast<const char *>(p), n);
    }
    // The text of a column of the current row, valid until the next step.
    std::string_view textView(int column) const {
        const unsigned char *p = sqlite3_column_text(stmt_, column);
        int n = sqlite3_column_bytes(stmt_, column);
        return p == nullptr ? std::string_view()
                            : std::string_view(reinterpret_cast<const char *>(p),
                                               static_cast<std::size_t>(n));
    }
    std::vector<std::uint8_t> blob(int column) const {
        const auto *p = static_cast<const std::uint8_t *>(sqlite3_column_blob(stmt_, column));
        int n = sqlite3_column_bytes(stmt_, column);
        return p == nullptr ? std::vector<std::uint8_t>() : std::vector<std::uint8_t>(p, p + n);
    }
    Wwn wwn(int column) const {
        Wwn out{};
        const void *p = sqlite3_column_blob(stmt_, column);
        if (p != nullptr && sqlite3_column_bytes(stmt_, column) == static_cast<int>(out.size()))
            std::memcpy(out.data(), p, out.size());
        return out;
    }

  private:
    Query &check(int rc) {
        if (rc != SQLITE_OK) throw StoreFailure{failureCode(rc)};
        return *this;
    }
    sqlite3_stmt *stmt_;
    int index_ = 0;
};

struct Store::Statements {
    std::unordered_map<std::string_view, sqlite3_stmt *> cache;
    ~Statements() {
        for (auto &entry : cache) sqlite3_finalize(entry.second);
    }
};

sqlite3_stmt *Store::statement(const char *sql) {
    auto found = statements_->cache.find(sql);
    if (found != statements_->cache.end()) return found->second;
    sqlite3_stmt *stmt = nullptr;
    int rc = sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &stmt, nullptr);
    if (rc != SQLITE_OK) throw StoreFailure{failureCode(rc)};
    statements_->cache.emplace(sql, stmt);
    return stmt;
}

Query Store::query(const char *sql) {
    return Query(statement(sql));
}

// ---- Opening -----------------------------------------------------------------

namespace {

int execute(sqlite3 *db, const char *sql) {
    return sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
}

// Reads one integer pragma; false when the file can't be read as a database.
bool readPragma(sqlite3 *db, const char *sql, int *value, int *rc_out) {
    sqlite3_stmt *stmt = nullptr;
    int rc = sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr);
    if (rc == SQLITE_OK) {
        rc = sqlite3_step(stmt);
        if (rc == SQLITE_ROW) *value = sqlite3_column_int(stmt, 0);
    }
    sqlite3_finalize(stmt);
    *rc_out = rc;
    return rc == SQLITE_ROW;
}

struct Verdict {
    int code = 0;
    std::string message;
};

Verdict refuse(const std::string &path, int code, const std::string &why) {
    return Verdict{code, "zone switch simulator: refusing " + path + ": " + why};
}

// Checks an existing file before anything is written to it.
Verdict checkExisting(sqlite3 *db, const std::string &path) {
    int app_id = 0, version = 0, rc = 0;
    if (!readPragma(db, "PRAGMA application_id", &app_id, &rc)) {
        if ((rc & 0xff) == SQLITE_BUSY) return Verdict{kErrDatabaseBusy, ""};
        return refuse(path, kErrNotOurDatabase,
                      "not a zone switch database (" + std::string(sqlite3_errstr(rc)) + ")");
    }
    readPragma(db, "PRAGMA user_version", &version, &rc);
    if (app_id == 0) {
        int tables = 0;
        readPragma(db, "SELECT count(*) FROM sqlite_schema", &tables, &rc);
        if (tables == 0) return Verdict{};  // an empty database: made ours below
    }
    if (app_id != kApplicationId)
        return refuse(path, kErrNotOurDatabase, "a database of another program");
    if (version > kSchemaVersion)
        return refuse(path, kErrNotOurDatabase,
                      "written by a newer version (schema " + std::to_string(version) +
                          ", this one knows " + std::to_string(kSchemaVersion) + ")");
    if (version < 1) return refuse(path, kErrNotOurDatabase, "schema missing");
    sqlite3_stmt *stmt = nullptr;
    bool magic = false;
    if (sqlite3_prepare_v2(db, "SELECT value FROM meta WHERE key = 'format'", -1, &stmt, nullptr) ==
            SQLITE_OK &&
        sqlite3_step(stmt) == SQLITE_ROW) {
        const unsigned char *text = sqlite3_column_text(stmt, 0);
        magic = text != nullptr && std::strcmp(reinterpret_cast<const char *>(text), kMagic) == 0;
    }
    sqlite3_finalize(stmt);
    if (!magic)
        return refuse(path, kErrNotOurDatabase, "not a zone switch database (no format mark)");
    return Verdict{};
}

int insertDefaults(sqlite3 *db) {
    std::string sql = std::string("INSERT INTO meta(key, value) VALUES ('format', '") + kMagic +
                      "'), ('switch_name', '" + Store::kDefaultSwitchName +
                      "');"
                      "INSERT INTO vsan(number, name, domain_id, switch_wwn, principal_wwn) "
                      "VALUES (1, 'VSAN0001', 1, x'3001000000000001', x'3001000000000001');";
    return execute(db, sql.c_str());
}

// Makes an empty file a database of ours, unless another process got there
// first (then its work is kept).
Verdict initialise(sqlite3 *db, const std::string &path) {
    int rc = execute(db, "BEGIN IMMEDIATE");
    if (rc != SQLITE_OK) return Verdict{failureCode(rc), ""};
    Verdict verdict = checkExisting(db, path);
    int app_id = 0, prc = 0;
    readPragma(db, "PRAGMA application_id", &app_id, &prc);
    if (verdict.code == 0 && app_id == 0) {
        std::string header = "PRAGMA application_id = " + std::to_string(kApplicationId) +
                             "; PRAGMA user_version = " + std::to_string(kSchemaVersion) + ";";
        rc = execute(db, kSchema);
        if (rc == SQLITE_OK) rc = insertDefaults(db);
        if (rc == SQLITE_OK) rc = execute(db, header.c_str());
        if (rc != SQLITE_OK)
            verdict =
                refuse(path, failureCode(rc), std::string("cannot create: ") + sqlite3_errmsg(db));
    }
    if (verdict.code != 0) {
        execute(db, "ROLLBACK");
        return verdict;
    }
    rc = execute(db, "COMMIT");
    if (rc != SQLITE_OK) {
        execute(db, "ROLLBACK");
        return Verdict{failureCode(rc), ""};
    }
    return Verdict{};
}

}  // namespace

std::string Store::defaultPath() {
    const char *env = std::getenv("ZONE_SIM_DB");
    return env != nullptr && *env != '\0' ? std::string(env) : std::string(kDefaultPathName);
}

Store::Opened Store::open(const std::string &path) {
    Opened opened;
    bool fresh = fileIsEmptyOrMissing(path);
    sqlite3 *db = nullptr;
    // No mutex of SQLite's own: a Store is used only inside transact(), under
    // its lock_, and SQLite's serialized mode would take a second mutex on
    // every call, each column read of each row included.
    int rc =
        sqlite3_open_v2(path.c_str(), &db,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (rc != SQLITE_OK) {
        opened.code = kErrStorage;
        opened.message = "zone switch simulator: cannot open " + path + ": " +
                         (db != nullptr ? sqlite3_errmsg(db) : sqlite3_errstr(rc));
        sqlite3_close(db);
        return opened;
    }
    sqlite3_busy_timeout(db, kBusyTimeoutMs);
    sqlite3_extended_result_codes(db, 1);
    Verdict verdict = fresh ? initialise(db, path) : checkExisting(db, path);
    if (verdict.code == 0 && !fresh) {
        // An empty database of SQLite's own making (no tables yet) is ours to fill.
        int app_id = 0, prc = 0;
        readPragma(db, "PRAGMA application_id", &app_id, &prc);
        if (app_id == 0) verdict = initialise(db, path);
    }
    if (verdict.code == 0) {
        // Only now, with the file known to be ours, may anything be written.
        if (execute(db, "PRAGMA journal_mode = WAL") != SQLITE_OK ||
            execute(db, "PRAGMA foreign_keys = ON") != SQLITE_OK ||
            execute(db, "PRAGMA synchronous = NORMAL") != SQLITE_OK ||
            execute(db, kListingIndex) != SQLITE_OK)
            verdict = Verdict{kErrDatabaseBusy, ""};
    }
    if (verdict.code != 0) {
        opened.code = verdict.code;
        opened.message = verdict.message.empty()
                             ? "zone switch simulator: cannot open " + path + ": database busy"
                             : verdict.message;
        sqlite3_close(db);
        return opened;
    }
    opened.store.reset(new Store(path, db));
    return opened;
}

Store::Store(std::string path, sqlite3 *db)
    : path_(std::move(path)), db_(db), statements_(std::make_unique<Statements>()) {}

Store::~Store() {
    endSession();
    statements_.reset();
    sqlite3_close(db_);
}

// BEGIN, COMMIT and ROLLBACK run as cached statements: every platform call
// is a transaction of its own, and parsing the three texts anew each time
// cost more than most of the queries between them.
int Store::control(const char *sql) {
    sqlite3_stmt *stmt = nullptr;
    try {
        stmt = statement(sql);
    } catch (...) {
        return execute(db_, sql);
    }
    int rc = sqlite3_step(stmt);
    sqlite3_reset(stmt);
    return rc == SQLITE_DONE ? SQLITE_OK : rc;
}

void Store::beginSession() {
    if (session_owner_.load() == std::this_thread::get_id()) return;
    lock_.lock();
    session_owner_.store(std::this_thread::get_id());
}

void Store::endSession() {
    if (session_owner_.load() != std::this_thread::get_id()) return;
    endSessionRead();
    session_owner_.store(std::thread::id());
    lock_.unlock();
}

void Store::endSessionRead() {
    if (!session_read_open_) return;
    session_read_open_ = false;
    if (control("COMMIT") != SQLITE_OK) control("ROLLBACK");
}

// What the last session read stays right for as long as nobody has
// committed since: our own writes drop it (transact()), and SQLite's data
// version tells whether another connection, in this process or another,
// has committed. The version is read as the read transaction's first
// statement, so it belongs to the very state the session then reads.
void Store::keepOrDropSnapshot() {
    std::int64_t version = -1;
    try {
        Query q = query("PRAGMA data_version");
        if (q.next()) version = q.integer64(0);
    } catch (const StoreFailure &) {
        version = -1;
    }
    if (version < 0 || version != snapshot_.data_version) {
        snapshot_ = Snapshot{};
        snapshot_.data_version = version;
        return;
    }
    // Kept listings serve this session too; what is not loaded yet waits
    // again for this session's own second VSAN, so that a session asking
    // about one VSAN never pays for the whole switch.
    snapshot_.walk_steps = 0;
    for (KindListing &listing : snapshot_.listings)
        if (!listing.loaded) listing.first_vsan = 0;
    if (!snapshot_.members.loaded) snapshot_.members.first_vsan = 0;
    if (!snapshot_.relations.loaded) snapshot_.relations.lookups = 0;
}

// Nothing to commit or roll back for a read: a failed one leaves the
// transaction open for the next.
int Store::sessionRead(FunctionRef<int()> fn) {
    if (!session_read_open_) {
        int rc = control("BEGIN");
        if (rc != SQLITE_OK) return failureCode(rc);
        session_read_open_ = true;
        keepOrDropSnapshot();
    }
    try {
        return fn();
    } catch (const StoreFailure &failure) {
        return failure.code;
    }
}

int Store::transact(bool for_write, FunctionRef<int()> fn) {
    std::unique_lock<std::mutex> guard(lock_, std::defer_lock);
    if (session_owner_.load() == std::this_thread::get_id()) {
        if (!for_write) return sessionRead(fn);
        endSessionRead();
    } else {
        guard.lock();
    }
    if (for_write) snapshot_ = Snapshot{};
    int rc = control(for_write ? "BEGIN IMMEDIATE" : "BEGIN");
    if (rc != SQLITE_OK) return failureCode(rc);
    int code = 0;
    try {
        code = fn();
    } catch (const StoreFailure &failure) {
        code = failure.code;
    } catch (...) {
        control("ROLLBACK");
        throw;
    }
    if (code != 0) {
        control("ROLLBACK");
        return code;
    }
    rc = control("COMMIT");
    if (rc != SQLITE_OK) {
        control("ROLLBACK");
        return failureCode(rc);
    }
    return 0;
}

// ---- Ids ---------------------------------------------------------------------

std::string ZoningObject::instanceId() const {
    return std::to_string(vsan) + "^" + std::to_string(number) + "^" + (active ? "1" : "0");
}

std::string Member::instanceId() const {
    return std::to_string(vsan) + "^" + std::to_string(cim_type) + "^" + id_text + "^" +
           (active ? "1" : "0");
}

// ---- Switch and VSANs -----------------------------------------------------------

namespace {

VsanInfo vsanFromRow(const Query &q) {
    VsanInfo info;
    info.number = q.integer(0);
    info.name = q.text(1);
    if (!q.isNull(2)) info.domain = DomainInfo{q.integer(2), q.wwn(3), q.wwn(4)};
    return info;
}

}  // namespace

std::string Store::readSwitchName() {
    Query q = query("SELECT value FROM meta WHERE key = 'switch_name'");
    return q.next() ? q.text(0) : std::string(kDefaultSwitchName);
}

const std::string &Store::switchName() {
    if (!session_read_open_) {
        switch_name_read_ = readSwitchName();
        return switch_name_read_;
    }
    if (!snapshot_.switch_name) snapshot_.switch_name = readSwitchName();
    return *snapshot_.switch_name;
}

int Store::setSwitchName(const std::string &name) {
    if (name.empty() || name.size() > 255) return kErrInvalidName;
    Query q = query("INSERT OR REPLACE INTO meta(key, value) VALUES ('switch_name', ?)");
    q.bind(name).run();
    return 0;
}

std::vector<VsanInfo> Store::readVsans() {
    Query q = query(
        "SELECT number, name, domain_id, switch_wwn, principal_wwn FROM vsan "
        "ORDER BY number");
    std::vector<VsanInfo> out;
    while (q.next()) out.push_back(vsanFromRow(q));
    return out;
}

const std::vector<VsanInfo> &Store::snapshotVsans() {
    if (snapshot_.vsans) return *snapshot_.vsans;
    std::vector<VsanInfo> table = readVsans();
    std::vector<std::uint16_t> slots(kMaxVsan + 1, 0);
    for (std::size_t i = 0; i < table.size(); ++i) {
        const int number = table[i].number;
        if (number >= 0 && number <= kMaxVsan) slots[number] = static_cast<std::uint16_t>(i + 1);
    }
    snapshot_.vsan_slots = std::move(slots);
    snapshot_.vsans = std::move(table);
    return *snapshot_.vsans;
}

std::vector<VsanInfo> Store::vsans() {
    return session_read_open_ ? snapshotVsans() : readVsans();
}

const std::vector<VsanInfo> &Store::vsanTable(std::vector<VsanInfo> *scratch) {
    if (session_read_open_) return snapshotVsans();
    *scratch = readVsans();
    return *scratch;
}

namespace {

bool numberBelow(const VsanInfo &info, int number) {
    return info.number < number;
}

}  // namespace

const VsanInfo *Store::snapshotVsan(int number) {
    const std::vector<VsanInfo> &table = snapshotVsans();
    if (number < 0 || number > kMaxVsan) return nullptr;
    const std::uint16_t slot = snapshot_.vsan_slots[static_cast<std::size_t>(number)];
    return slot != 0 ? &table[slot - 1U] : nullptr;
}

const VsanInfo *Store::snapshotVsanAfter(int after) {
    const std::vector<VsanInfo> &table = snapshotVsans();
    if (after > kMaxVsan) return nullptr;
    std::size_t next = 0;  // before any VSAN
    if (after >= 0) {
        // A walk passes the VSAN it was just given: the next one follows it.
        const std::uint16_t slot = snapshot_.vsan_slots[static_cast<std::size_t>(after)];
        next = slot != 0 ? slot
                         : static_cast<std::size_t>(std::lower_bound(table.begin(), table.end(),
                                                                     after + 1, numberBelow) -
                                                    table.begin());
    }
    return next < table.size() ? &table[next] : nullptr;
}

const VsanInfo *Store::findVsan(int number, bool next, VsanInfo *scratch) {
    if (session_read_open_) {
        if (!next && snapshot_.vsans) return snapshotVsan(number);
        // The first step of a walk costs one lookup, as a lone lookup does;
        // the second reads the table.
        if (next && (snapshot_.vsans || ++snapshot_.walk_steps > 1))
            return snapshotVsanAfter(number);
    }
    return readVsan(number, next, scratch) ? scratch : nullptr;
}

bool Store::readVsan(int number, bool next, VsanInfo *out) {
    Query q = query(next ? "SELECT number, name, domain_id, switch_wwn, principal_wwn FROM vsan "
                           "WHERE number > ? ORDER BY number LIMIT 1"
                         : "SELECT number, name, domain_id, switch_wwn, principal_wwn FROM vsan "
                           "WHERE number = ?");
    q.bind(number);
    if (!q.next()) return false;
    *out = vsanFromRow(q);
    return true;
}

namespace {

bool copyFound(const VsanInfo *found, VsanInfo *scratch, VsanInfo *out) {
    if (found == nullptr) return false;
    if (out == nullptr) return true;
    if (found == scratch)
        *out = std::move(*scratch);
    else
        *out = *found;
    return true;
}

}  // namespace

bool Store::vsan(int number, VsanInfo *out) {
    // Whether it is there, asked by every listing of a walk: the table the
    // read holds answers without a VsanInfo made and dropped.
    if (out == nullptr && session_read_open_ && snapshot_.vsans)
        return snapshotVsan(number) != nullptr;
    VsanInfo scratch;
    return copyFound(findVsan(number, false, &scratch), &scratch, out);
}

bool Store::nextVsan(int after, VsanInfo *out) {
    VsanInfo scratch;
    return copyFound(findVsan(after, true, &scratch), &scratch, out);
}

int Store::addVsan(const VsanInfo &info) {
    if (info.number < kMinVsan || info.number > kMaxVsan) return kErrInvalidArgument;
    if (info.name.size() > kMaxNameLength) return kErrInvalidName;
    Query q = query(
        "INSERT INTO vsan(number, name, domain_id, switch_wwn, principal_wwn) "
        "VALUES (?, ?, ?, ?, ?)");
    q.bind(info.number).bind(info.name);
    if (info.domain) {
        q.bind(info.domain->domain_id)
            .bind(info.domain->switch_wwn)
            .bind(info.domain->principal_wwn);
    } else {
        q.bindNull().bindNull().bindNull();
    }
    return q.run() ? 0 : kErrAlreadyPresent;
}

namespace {
struct LimitKey {
    const char *key;
    int Limits::*field;
};
constexpr LimitKey kLimitKeys[] = {
    {"limit_zone_sets", &Limits::zone_sets},
    {"limit_zones", &Limits::zones},
    {"limit_aliases", &Limits::aliases},
    {"limit_members", &Limits::members},
    {"limit_device_aliases", &Limits::device_aliases},
};
}  // namespace

Limits Store::limits() {
    Limits limits;
    Query q = query("SELECT key, value FROM meta WHERE key LIKE 'limit_%'");
    while (q.next()) {
        std::string key = q.text(0);
        for (const LimitKey &entry : kLimitKeys)
            if (key == entry.key) limits.*entry.field = std::atoi(q.text(1).c_str());
    }
    return limits;
}

int Store::setLimits(const Limits &limits) {
    for (const LimitKey &entry : kLimitKeys) {
        if (limits.*entry.field < 0) return kErrInvalidArgument;
        Query q = query("INSERT OR REPLACE INTO meta(key, value) VALUES (?, ?)");
        q.bind(std::string(entry.key)).bind(std::to_string(limits.*entry.field)).run();
    }
    return 0;
}

// ---- Zoning queries ------------------------------------------------------------

namespace {

ZoningObject objectFromRow(const Query &q) {
    ZoningObject object;
    object.row = q.integer64(0);
    object.vsan = q.integer(1);
    object.active = q.integer(2) != 0;
    object.kind = static_cast<ObjectKind>(q.integer(3));
    object.number = q.integer(4);
    object.name = q.text(5);
    return object;
}

Member memberFromRow(const Query &q) {
    Member member;
    member.row = q.integer64(0);
    member.vsan = q.integer(1);
    member.active = q.integer(2) != 0;
    member.code = static_cast<std::uint8_t>(q.integer(3));
    member.value = q.blob(4);
    member.cim_type = static_cast<std::uint16_t>(q.integer(5));
    member.id_text = q.text(6);
    member.value_text = q.text(7);
    member.key = q.blob(8);
    return member;
}

}  // namespace

std::vector<ZoningObject> Store::objects(int vsan, bool active, ObjectKind kind) {
    Query q = query(
        "SELECT id, vsan, active, kind, number, name FROM zobject "
        "WHERE vsan = ? AND active = ? AND kind = ? ORDER BY id");
    q.bind(vsan).bind(active).bind(static_cast<int>(kind));
    std::vector<ZoningObject> out;
    while (q.next()) out.push_back(objectFromRow(q));
    return out;
}

bool Store::object(int vsan, bool active, ObjectKind kind, int number, ZoningObject *out) {
    if (const Relations *relations = snapshotRelations()) {
        auto found = relations->by_number.find(objectKey(vsan, active, number));
        if (found == relations->by_number.end()) return false;
        const ZoningObject &object = relations->objects[found->second];
        if (object.kind != kind) return false;
        if (out != nullptr) *out = object;
        return true;
    }
    Query q = query(
        "SELECT id, vsan, active, kind, number, name FROM zobject "
        "WHERE vsan = ? AND active = ? AND number = ? AND kind = ?");
    q.bind(vsan).bind(active).bind(number).bind(static_cast<int>(kind));
    if (!q.next()) return false;
    if (out != nullptr) *out = objectFromRow(q);
    return true;
}

bool Store::objectByName(int vsan, bool active, ObjectKind kind, const std::string &name,
                         ZoningObject *out) {
    Query q = query(
        "SELECT id, vsan, active, kind, number, name FROM zobject "
        "WHERE vsan = ? AND active = ? AND kind = ? AND name = ?");
    q.bind(vsan).bind(active).bind(static_cast<int>(kind)).bind(name);
    if (!q.next()) return false;
    if (out != nullptr) *out = objectFromRow(q);
    return true;
}

std::vector<ZoningObject> Store::linkedObjects(Relations &relations,
                                               const Relations::Adjacency &links,
                                               std::int64_t row) {
    std::vector<ZoningObject> out;
    forEachLinked(relations, links, row,
                  [&](std::uint32_t index) { out.push_back(relations.objects[index]); });
    return out;
}

std::vector<ZoningObject> Store::children(const ZoningObject &parent) {
    if (Relations *relations = snapshotRelations())
        return linkedObjects(*relations, relations->children, parent.row);
    Query q = query(
        "SELECT o.id, o.vsan, o.active, o.kind, o.number, o.name FROM zlink l "
        "JOIN zobject o ON o.id = l.child WHERE l.parent = ? ORDER BY l.id");
    q.bind(parent.row);
    std::vector<ZoningObject> out;
    while (q.next()) out.push_back(objectFromRow(q));
    return out;
}

std::vector<ZoningObject> Store::parents(const ZoningObject &child) {
    if (Relations *relations = snapshotRelations())
        return linkedObjects(*relations, relations->parents, child.row);
    Query q = query(
        "SELECT o.id, o.vsan, o.active, o.kind, o.number, o.name FROM zlink l "
        "JOIN zobject o ON o.id = l.parent WHERE l.child = ? ORDER BY l.id");
    q.bind(child.row);
    std::vector<ZoningObject> out;
    while (q.next()) out.push_back(objectFromRow(q));
    return out;
}

std::vector<Member> Store::members(const ZoningObject &parent) {
    if (Relations *relations = snapshotRelations()) {
        std::vector<Member> out;
        forEachLinked(*relations, relations->member_links, parent.row,
                      [&](std::uint32_t index) { out.push_back(relations->members[index]); });
        return out;
    }
    Query q = query(
        "SELECT m.id, m.vsan, m.active, m.code, m.value, m.cim_type, m.id_text, "
        "m.value_text, m.match_key FROM mlink l JOIN member m ON m.id = l.member "
        "WHERE l.parent = ? ORDER BY l.id");
    q.bind(parent.row);
    std::vector<Member> out;
    while (q.next()) out.push_back(memberFromRow(q));
    return out;
}

bool Store::objectRow(int vsan, bool active, ObjectKind kind, int number, std::int64_t *row) {
    if (Relations *relations = snapshotRelations()) {
        auto found = relations->by_number.find(objectKey(vsan, active, number));
        if (found == relations->by_number.end()) return false;
        const ZoningObject &object = relations->objects[found->second];
        if (object.kind != kind) return false;
        *row = object.row;
        relations->last_row = object.row;
        relations->last_index = found->second;
        return true;
    }
    ZoningObject object;
    if (!this->object(vsan, active, kind, number, &object)) return false;
    *row = object.row;
    return true;
}

void Store::forEachRelative(std::int64_t row, Relative relative,
                            FunctionRef<void(const ZoningObject &)> fn) {
    if (Relations *relations = snapshotRelations()) {
        const auto &links = relative == Relative::Child ? relations->children : relations->parents;
        forEachLinked(*relations, links, row,
                      [&](std::uint32_t index) { fn(relations->objects[index]); });
        return;
    }
    ZoningObject object;
    object.row = row;
    for (const ZoningObject &related :
         relative == Relative::Child ? children(object) : parents(object))
        fn(related);
}

void Store::forEachMemberOf(std::int64_t row, FunctionRef<void(const Member &)> fn) {
    if (Relations *relations = snapshotRelations()) {
        forEachLinked(*relations, relations->member_links, row,
                      [&](std::uint32_t index) { fn(relations->members[index]); });
        return;
    }
    ZoningObject parent;
    parent.row = row;
    for (const Member &member : members(parent)) fn(member);
}

std::vector<Member> Store::allMembers(int vsan, bool active) {
    Query q = query(
        "SELECT id, vsan, active, code, value, cim_type, id_text, value_text, match_key "
        "FROM member WHERE vsan = ? AND active = ? ORDER BY id");
    q.bind(vsan).bind(active);
    std::vector<Member> out;
    while (q.next()) out.push_back(memberFromRow(q));
    return out;
}

Store::Relations *Store::snapshotRelations() {
    if (!session_read_open_) return nullptr;
    Relations &relations = snapshot_.relations;
    if (!relations.loaded) {
        if (++relations.lookups <= kRelationLookupsBeforeLoading) return nullptr;
        loadRelations(&relations);
    }
    return &relations;
}

bool Store::Relations::indexOfRow(std::int64_t row, std::uint32_t *index) {
    if (row == last_row) {
        *index = last_index;
        return true;
    }
    auto found = by_row.find(row);
    if (found == by_row.end()) return false;
    *index = found->second;
    return true;
}

bool Store::forEachLinked(Relations &relations, const Relations::Adjacency &links, std::int64_t row,
                          FunctionRef<void(std::uint32_t)> fn) {
    std::uint32_t index = 0;
    if (!relations.indexOfRow(row, &index)) return false;
    const Relations::Range range = links.of[index];
    for (std::uint32_t i = range.begin; i < range.end; ++i) fn(links.targets[i]);
    return true;
}

// The links grouped by the index they come from, each group in the order
// of the pairs: one counting pass, one placing pass.
Store::Relations::Adjacency Store::adjacency(std::size_t from_count, const LinkPairs &pairs) {
    Relations::Adjacency links;
    links.of.resize(from_count);
    for (const auto &pair : pairs) ++links.of[pair.first].end;
    std::uint32_t next = 0;
    for (Relations::Range &range : links.of) {
        const std::uint32_t size = range.end;
        range.begin = next;
        range.end = next;
        next += size;
    }
    links.targets.resize(pairs.size());
    for (const auto &pair : pairs) links.targets[links.of[pair.first].end++] = pair.second;
    return links;
}

// Links come in the order they were made, as the lookups one by one list
// them.
void Store::loadRelations(Relations *relations) {
    Relations loaded;
    {
        Query q = query("SELECT id, vsan, active, kind, number, name FROM zobject ORDER BY id");
        while (q.next()) {
            ZoningObject object = objectFromRow(q);
            const auto index = static_cast<std::uint32_t>(loaded.objects.size());
            loaded.by_row.emplace(object.row, index);
            loaded.by_number[objectKey(object.vsan, object.active, object.number)] = index;
            loaded.objects.push_back(std::move(object));
        }
    }
    LinkPairs links;
    {
        Query q = query("SELECT parent, child FROM zlink ORDER BY id");
        while (q.next())
            links.emplace_back(loaded.by_row.at(q.integer64(0)), loaded.by_row.at(q.integer64(1)));
    }
    loaded.children = adjacency(loaded.objects.size(), links);
    for (auto &pair : links) std::swap(pair.first, pair.second);  // child to parent
    loaded.parents = adjacency(loaded.objects.size(), links);
    std::unordered_map<std::int64_t, std::uint32_t> member_index;
    {
        Query q = query(
            "SELECT id, vsan, active, code, value, cim_type, id_text, value_text, match_key "
            "FROM member ORDER BY id");
        while (q.next()) {
            Member member = memberFromRow(q);
            member_index.emplace(member.row, static_cast<std::uint32_t>(loaded.members.size()));
            loaded.members.push_back(std::move(member));
        }
    }
    links.clear();
    {
        Query q = query("SELECT parent, member FROM mlink ORDER BY id");
        while (q.next())
            links.emplace_back(loaded.by_row.at(q.integer64(0)), member_index.at(q.integer64(1)));
    }
    loaded.member_links = adjacency(loaded.objects.size(), links);
    loaded.loaded = true;
    *relations = std::move(loaded);
}

const Store::KindListing *Store::snapshotListing(int vsan, ObjectKind kind) {
    const auto index = static_cast<std::size_t>(kind);
    if (!session_read_open_ || index >= snapshot_.listings.size()) return nullptr;
    KindListing &listing = snapshot_.listings[index];
    if (!listing.loaded) {
        if (listing.first_vsan == 0) listing.first_vsan = vsan;
        if (listing.first_vsan == vsan) return nullptr;
        loadListing(kind, &listing);
    }
    return &listing;
}

// One range of the listing index (led by the kind, holding every column
// read here) gives the objects of a kind, database after database, with no
// row of the table read. Rows of one database come in creation order; should
// a plan ever differ, each database is put in order afterwards.
void Store::loadListing(ObjectKind kind, KindListing *listing) {
    Query q = query(
        "SELECT id, vsan, active, number, name FROM zobject INDEXED BY zobject_listing "
        "WHERE kind = ?");
    q.bind(static_cast<int>(kind));
    KindListing loaded;
    while (q.next()) {
        std::string_view name = q.textView(4);
        loaded.databases[databaseKey(q.integer(1), q.integer(2) != 0)].push_back(ListedObject{
            q.integer64(0), q.integer(3), static_cast<std::uint32_t>(loaded.names.size()),
            static_cast<std::uint32_t>(name.size())});
        loaded.names.append(name);
    }
    auto byRow = [](const ListedObject &a, const ListedObject &b) { return a.row < b.row; };
    for (auto &database : loaded.databases) {
        std::vector<ListedObject> &rows = database.second;
        if (!std::is_sorted(rows.begin(), rows.end(), byRow))
            std::sort(rows.begin(), rows.end(), byRow);
    }
    loaded.first_vsan = listing->first_vsan;
    loaded.loaded = true;
    *listing = std::move(loaded);
}

std::size_t Store::listedObjectCount(int vsan, bool active, ObjectKind kind) {
    const KindListing *listing = snapshotListing(vsan, kind);
    if (listing == nullptr) return 0;
    auto found = listing->databases.find(databaseKey(vsan, active));
    return found == listing->databases.end() ? 0 : found->second.size();
}

void Store::forEachObject(int vsan, bool active, ObjectKind kind,
                          FunctionRef<void(const ObjectRow &)> fn) {
    if (const KindListing *listing = snapshotListing(vsan, kind)) {
        auto found = listing->databases.find(databaseKey(vsan, active));
        if (found == listing->databases.end()) return;
        const std::string_view names = listing->names;
        for (const ListedObject &object : found->second)
            fn(ObjectRow{vsan, active, object.number,
                         names.substr(object.name_offset, object.name_length)});
        return;
    }
    Query q = query(
        "SELECT number, name FROM zobject "
        "WHERE vsan = ? AND active = ? AND kind = ? ORDER BY id");
    q.bind(vsan).bind(active).bind(static_cast<int>(kind));
    while (q.next()) fn(ObjectRow{vsan, active, q.integer(0), q.textView(1)});
}

const std::string *Store::renderedObjects(
    int vsan, bool active, ObjectKind kind, std::size_t record_size,
    FunctionRef<void(const ObjectRow &, void *record)> render) {
    if (record_size == 0 || snapshotListing(vsan, kind) == nullptr) return nullptr;
    KindListing &listing = snapshot_.listings[static_cast<std::size_t>(kind)];
    if (listing.rendered_size != record_size) {
        listing.rendered.clear();
        listing.rendered_size = record_size;
    }
    const std::int64_t key = databaseKey(vsan, active);
    auto [kept, added] = listing.rendered.try_emplace(key);
    if (!added) return &kept->second;
    try {
        auto found = listing.databases.find(key);
        if (found == listing.databases.end()) return &kept->second;
        std::string &bytes = kept->second;
        bytes.assign(found->second.size() * record_size, '\0');
        const std::string_view names = listing.names;
        char *record = bytes.data();
        for (const ListedObject &object : found->second) {
            render(ObjectRow{vsan, active, object.number,
                             names.substr(object.name_offset, object.name_length)},
                   record);
            record += record_size;
        }
    } catch (...) {
        listing.rendered.erase(key);  // never kept half rendered
        throw;
    }
    return &kept->second;
}

const Store::MemberListing *Store::snapshotMembers(int vsan) {
    if (!session_read_open_) return nullptr;
    MemberListing &listing = snapshot_.members;
    if (!listing.loaded) {
        if (listing.first_vsan == 0) listing.first_vsan = vsan;
        if (listing.first_vsan == vsan) return nullptr;
        loadMembers(&listing);
    }
    return &listing;
}

// The member table holds nothing else: one pass over it, in creation order.
void Store::loadMembers(MemberListing *listing) {
    Query q =
        query("SELECT id, vsan, active, cim_type, id_text, value_text FROM member NOT INDEXED");
    MemberListing loaded;
    // Rows of one database mostly follow each other: the map is searched
    // only when the database changes.
    std::int64_t last_key = -1;
    std::vector<ListedMember> *same_database = nullptr;
    while (q.next()) {
        std::string_view id_text = q.textView(4);
        std::string_view value_text = q.textView(5);
        const std::int64_t key = databaseKey(q.integer(1), q.integer(2) != 0);
        if (key != last_key) {
            same_database = &loaded.databases[key];
            last_key = key;
        }
        same_database->push_back(ListedMember{q.integer64(0),
                                              static_cast<std::uint16_t>(q.integer(3)),
                                              static_cast<std::uint32_t>(loaded.texts.size()),
                                              static_cast<std::uint32_t>(id_text.size()),
                                              static_cast<std::uint32_t>(value_text.size())});
        loaded.texts.append(id_text).append(value_text);
    }
    auto byRow = [](const ListedMember &a, const ListedMember &b) { return a.row < b.row; };
    for (auto &database : loaded.databases) {
        std::vector<ListedMember> &rows = database.second;
        if (!std::is_sorted(rows.begin(), rows.end(), byRow))
            std::sort(rows.begin(), rows.end(), byRow);
    }
    loaded.first_vsan = listing->first_vsan;
    loaded.loaded = true;
    *listing = std::move(loaded);
}

void Store::forEachMember(int vsan, bool active, FunctionRef<void(const MemberRow &)> fn) {
    if (const MemberListing *listing = snapshotMembers(vsan)) {
        auto found = listing->databases.find(databaseKey(vsan, active));
        if (found == listing->databases.end()) return;
        const std::string_view texts = listing->texts;
        for (const ListedMember &member : found->second) {
            fn(MemberRow{
                vsan, active, member.cim_type, texts.substr(member.texts_offset, member.id_length),
                texts.substr(member.texts_offset + member.id_length, member.value_length)});
        }
        return;
    }
    Query q = query(
        "SELECT cim_type, id_text, value_text "
        "FROM member WHERE vsan = ? AND active = ? ORDER BY id");
    q.bind(vsan).bind(active);
    while (q.next()) {
        fn(MemberRow{vsan, active, static_cast<std::uint16_t>(q.integer(0)), q.textView(1),
                     q.textView(2)});
    }
}

bool Store::member(int vsan, bool active, std::uint8_t code, const std::vector<std::uint8_t> &key,
                   Member *out) {
    Query q = query(
        "SELECT id, vsan, active, code, value, cim_type, id_text, value_text, match_key "
        "FROM member WHERE vsan = ? AND active = ? AND code = ? AND match_key = ?");
    q.bind(vsan).bind(active).bind(normalizedCode(code)).bind(key);
    if (!q.next()) return false;
    if (out != nullptr) *out = memberFromRow(q);
    return true;
}

std::vector<ZoningObject> Store::memberParents(const Member &member, ObjectKind parent_kind) {
    Query q = query(
        "SELECT o.id, o.vsan, o.active, o.kind, o.number, o.name FROM mlink l "
        "JOIN zobject o ON o.id = l.parent WHERE l.member = ? AND o.kind = ? "
        "ORDER BY l.id");
    q.bind(member.row).bind(static_cast<int>(parent_kind));
    std::vector<ZoningObject> out;
    while (q.next()) out.push_back(objectFromRow(q));
    return out;
}

// ---- Zoning commands -------------------------------------------------------------

namespace {

int usageCount(Query &q) {
    return q.next() ? q.integer(0) : 0;
}

}  // namespace

int Store::checkCapacity(ObjectKind kind) {
    Limits limits = this->limits();
    int limit = kind == ObjectKind::Zone      ? limits.zones
                : kind == ObjectKind::ZoneSet ? limits.zone_sets
                                              : limits.aliases;
    Query q = query("SELECT n FROM usage WHERE what = ?");
    q.bind(usageOf(kind));
    return usageCount(q) >= limit ? kErrCapacity : 0;
}

int Store::insertObjectRow(ZoningObject *object) {
    Query q = query("INSERT INTO zobject(vsan, active, kind, number, name) VALUES (?, ?, ?, ?, ?)");
    q.bind(object->vsan).bind(object->active).bind(static_cast<int>(object->kind));
    q.bind(object->number).bind(object->name);
    if (!q.run()) return kErrAlreadyPresent;
    object->row = sqlite3_last_insert_rowid(db_);
    return 0;
}

int Store::nextNumber(int vsan) {
    Query q = query("SELECT next_number FROM vsan WHERE number = ?");
    q.bind(vsan);
    return q.next() ? q.integer(0) : 1;
}

int Store::reserveNumber(int vsan, int number) {
    Query q = query("UPDATE vsan SET next_number = max(next_number, ? + 1) WHERE number = ?");
    q.bind(number).bind(vsan).run();
    return 0;
}

namespace {
// The checks every zoning command makes on its VSAN first.
int zoningVsanCheck(Store &store, int vsan) {
    if (vsan < kMinVsan || vsan > kMaxVsan || !store.vsan(vsan, nullptr))
        return kErrVsanNotConfigured;
    return zoningAllowed(vsan) ? 0 : kErrNotSupported;
}
}  // namespace

int Store::createObject(int vsan, ObjectKind kind, const std::string &name, ZoningObject *created) {
    if (int code = zoningVsanCheck(*this, vsan)) return code;
    if (!isValidName(name)) return kErrInvalidName;
    if (objectByName(vsan, false, kind, name, nullptr)) return kErrAlreadyPresent;
    if (int code = checkCapacity(kind)) return code;
    ZoningObject object;
    object.vsan = vsan;
    object.kind = kind;
    object.number = nextNumber(vsan);
    object.name = name;
    if (int code = insertObjectRow(&object)) return code;
    reserveNumber(vsan, object.number);
    if (created != nullptr) *created = object;
    return 0;
}

int Store::removeObject(int vsan, ObjectKind kind, int number) {
    if (int code = zoningVsanCheck(*this, vsan)) return code;
    ZoningObject target;
    if (!object(vsan, false, kind, number, &target)) return kErrNotFound;
    Query q = query("DELETE FROM zobject WHERE id = ?");
    q.bind(target.row).run();
    return 0;
}

int Store::addChild(int vsan, ObjectKind parent_kind, int parent_number, int child_number) {
    if (int code = zoningVsanCheck(*this, vsan)) return code;
    ZoningObject parent, child;
    if (!object(vsan, false, parent_kind, parent_number, &parent)) return kErrNotFound;
    if (!object(vsan, false, childKindOf(parent_kind), child_number, &child)) return kErrNotFound;
    return insertLink(parent, child);
}

int Store::removeChild(int vsan, ObjectKind parent_kind, int parent_number, int child_number) {
    if (int code = zoningVsanCheck(*this, vsan)) return code;
    ZoningObject parent, child;
    if (!object(vsan, false, parent_kind, parent_number, &parent)) return kErrNotFound;
    if (!object(vsan, false, childKindOf(parent_kind), child_number, &child)) return kErrNotFound;
    Query q = query("DELETE FROM zlink WHERE parent = ? AND child = ?");
    q.bind(parent.row).bind(child.row).run();
    return sqlite3_changes(db_) > 0 ? 0 : kErrNotFound;
}

int Store::insertLink(const ZoningObject &parent, const ZoningObject &child) {
    Query q = query("INSERT INTO zlink(parent, child) VALUES (?, ?)");
    q.bind(parent.row).bind(child.row);
    return q.run() ? 0 : kErrMemberPresent;
}

int Store::findOrInsertMember(const Member &member, std::int64_t *row, bool *created) {
    Member found;
    *created = false;
    if (this->member(member.vsan, member.active, member.code, member.key, &found)) {
        *row = found.row;
        return 0;
    }
    Query q = query(
        "INSERT INTO member(vsan, active, code, match_key, value, cim_type, id_text, "
        "value_text) VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    q.bind(member.vsan).bind(member.active).bind(normalizedCode(member.code)).bind(member.key);
    q.bind(member.value);
    q.bind(static_cast<int>(member.cim_type)).bind(member.id_text).bind(member.value_text);
    if (!q.run()) return kErrAlreadyPresent;
    *row = sqlite3_last_insert_rowid(db_);
    *created = true;
    return 0;
}

int Store::insertMember(const ZoningObject &parent, const Member &member) {
    Member copy = member;
    copy.vsan = parent.vsan;
    copy.active = parent.active;
    std::int64_t row = 0;
    bool created = false;
    if (int code = findOrInsertMember(copy, &row, &created)) return code;
    Query q = query("INSERT INTO mlink(parent, member, active) VALUES (?, ?, ?)");
    q.bind(parent.row).bind(row).bind(parent.active);
    return q.run() ? 0 : kErrMemberPresent;
}

int Store::addMember(ObjectKind parent_kind, int parent_number, const Member &member) {
    if (int code = zoningVsanCheck(*this, member.vsan)) return code;
    if (parent_kind != ObjectKind::Zone && parent_kind != ObjectKind::Alias)
        return kErrInvalidArgument;
    ZoningObject parent;
    if (!object(member.vsan, false, parent_kind, parent_number, &parent)) return kErrNotFound;
    Query q = query("SELECT n FROM usage WHERE what = 3");
    if (usageCount(q) >= limits().members) return kErrCapacity;
    return insertMember(parent, member);
}

int Store::removeMember(ObjectKind parent_kind, int parent_number, const Member &member) {
    if (int code = zoningVsanCheck(*this, member.vsan)) return code;
    if (parent_kind != ObjectKind::Zone && parent_kind != ObjectKind::Alias)
        return kErrInvalidArgument;
    ZoningObject parent;
    Member found;
    if (!object(member.vsan, false, parent_kind, parent_number, &parent)) return kErrNotFound;
    if (!this->member(member.vsan, false, member.code, member.key, &found)) return kErrNotFound;
    Query q = query("DELETE FROM mlink WHERE parent = ? AND member = ?");
    q.bind(parent.row).bind(found.row).run();
    return sqlite3_changes(db_) > 0 ? 0 : kErrNotFound;
}

int Store::removeMemberEverywhere(const Member &member) {
    if (int code = zoningVsanCheck(*this, member.vsan)) return code;
    Member found;
    if (!this->member(member.vsan, false, member.code, member.key, &found)) return kErrNotFound;
    // Dropping its last link releases the member itself.
    Query q = query("DELETE FROM mlink WHERE member = ?");
    q.bind(found.row).run();
    return 0;
}

int Store::clearActive(int vsan) {
    Query q = query("DELETE FROM zobject WHERE vsan = ? AND active = 1");
    q.bind(vsan).run();
    return 0;
}

int Store::activate(int vsan, int zone_set_number) {
    if (int code = zoningVsanCheck(*this, vsan)) return code;
    ZoningObject source;
    if (!object(vsan, false, ObjectKind::ZoneSet, zone_set_number, &source)) return kErrNotFound;
    clearActive(vsan);

    // Each object is copied once, however many parents hold it.
    std::unordered_map<std::int64_t, ZoningObject> copies;
    auto copyOf = [&](const ZoningObject &original, ZoningObject *copy) -> int {
        auto found = copies.find(original.row);
        if (found != copies.end()) {
            *copy = found->second;
            return 0;
        }
        *copy = original;
        copy->active = true;
        if (int code = insertObjectRow(copy)) return code;
        copies.emplace(original.row, *copy);
        for (const Member &member : members(original))
            if (int code = insertMember(*copy, member)) return code;
        return 0;
    };

    ZoningObject set_copy;
    if (int code = copyOf(source, &set_copy)) return code;
    for (const ZoningObject &zone : children(source)) {
        ZoningObject zone_copy;
        if (int code = copyOf(zone, &zone_copy)) return code;
        if (int code = insertLink(set_copy, zone_copy)) return code;
        for (const ZoningObject &alias : children(zone)) {
            ZoningObject alias_copy;
            if (int code = copyOf(alias, &alias_copy)) return code;
            if (int code = insertLink(zone_copy, alias_copy)) return code;
        }
    }
    return 0;
}

int Store::deactivate(int vsan, int zone_set_number) {
    if (int code = zoningVsanCheck(*this, vsan)) return code;
    if (!object(vsan, true, ObjectKind::ZoneSet, zone_set_number, nullptr)) {
        return object(vsan, false, ObjectKind::ZoneSet, zone_set_number, nullptr)
                   ? kErrZoneSetNotActive
                   : kErrNotFound;
    }
    return clearActive(vsan);
}

// ---- Device aliases ------------------------------------------------------------------

std::vector<DeviceAlias> Store::deviceAliases() {
    Query q = query("SELECT name, pwwn FROM device_alias ORDER BY id");
    std::vector<DeviceAlias> out;
    while (q.next()) out.push_back(DeviceAlias{q.text(0), q.wwn(1)});
    return out;
}

std::shared_ptr<const std::vector<DeviceAlias>> Store::deviceAliasList() {
    if (session_read_open_ && snapshot_.device_aliases) return snapshot_.device_aliases;
    auto aliases = std::make_shared<const std::vector<DeviceAlias>>(deviceAliases());
    if (session_read_open_) snapshot_.device_aliases = aliases;
    return aliases;
}

bool Store::deviceAliasByPwwn(const Wwn &pwwn, DeviceAlias *out) {
    Query q = query("SELECT name, pwwn FROM device_alias WHERE pwwn = ?");
    q.bind(pwwn);
    if (!q.next()) return false;
    if (out != nullptr) *out = DeviceAlias{q.text(0), q.wwn(1)};
    return true;
}

bool Store::deviceAliasByName(const std::string &name, DeviceAlias *out) {
    Query q = query("SELECT name, pwwn FROM device_alias WHERE name = ?");
    q.bind(name);
    if (!q.next()) return false;
    if (out != nullptr) *out = DeviceAlias{q.text(0), q.wwn(1)};
    return true;
}

int Store::checkNewDeviceAlias(const DeviceAlias &alias) {
    if (!isValidName(alias.name)) return kErrInvalidName;
    if (deviceAliasByName(alias.name, nullptr) || deviceAliasByPwwn(alias.pwwn, nullptr))
        return kErrAlreadyPresent;
    Query q = query("SELECT n FROM usage WHERE what = 4");
    return usageCount(q) >= limits().device_aliases ? kErrCapacity : 0;
}

int Store::addDeviceAlias(const DeviceAlias &alias) {
    if (int code = checkNewDeviceAlias(alias)) return code;
    Query q = query("INSERT INTO device_alias(name, pwwn) VALUES (?, ?)");
    q.bind(alias.name).bind(alias.pwwn);
    return q.run() ? 0 : kErrAlreadyPresent;
}

int Store::removeDeviceAlias(const std::string &name) {
    Query q = query("DELETE FROM device_alias WHERE name = ?");
    q.bind(name).run();
    return sqlite3_changes(db_) > 0 ? 0 : kErrNotFound;
}

// ---- Whole state -----------------------------------------------------------------------

int Store::clearAll() {
    for (const char *sql :
         {"DELETE FROM mlink", "DELETE FROM member", "DELETE FROM zlink", "DELETE FROM zobject",
          "DELETE FROM vsan", "DELETE FROM device_alias", "UPDATE usage SET n = 0"}) {
        Query q = query(sql);
        q.run();
    }
    return 0;
}

int Store::insertObject(ZoningObject *object) {
    if (!vsan(object->vsan, nullptr)) return kErrVsanNotConfigured;
    if (int code = insertObjectRow(object)) return code;
    return reserveNumber(object->vsan, object->number);
}

}  // namespace zonesim
