// The simulated switch's state: one SQLite database file.
//
// Where it lives: the path in the environment variable ZONE_SIM_DB, or
// "zone-switch.db" in the current directory when the variable is unset or
// empty (Store::defaultPath()). A missing or empty file becomes a new
// database holding the switch "switch-sim-01" with VSAN 1 and empty zoning
// databases. A file that is not ours (another program's SQLite database, any
// other file) or that was written by a newer schema is refused: a message on
// stderr, the file left untouched, and Store::open() answers
// kErrNotOurDatabase.
//
// What it holds: the switch name; the VSAN table with each VSAN's domain
// entry (or none); per VSAN the full (editable) and the active (enforced)
// zoning database with zone sets, zones, aliases and members and the links
// between them; the device-alias database; the capacity limits.
//
// How it is used: every piece of work runs inside read() or write(), one
// SQLite transaction each (a write takes the database's write lock at once),
// except that the reads of a session share one (beginSession() below).
// What sessions read of the switch, its VSAN table and its listings is kept
// from one session to the next for as long as the file has not changed (our
// own writes, or SQLite's data version moving when another connection or
// process commits), so another process that writes the same file is seen
// by the next transaction. The methods below may be called
// only from inside the function given to read() or write(); the commands only
// from write(). A Store serialises the threads that share it on an internal
// lock. Methods that answer an int return 0 or a simulator error code
// (sim_errors.h); lookups answer false when the object does not exist.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "sim/function_ref.h"

struct sqlite3;
struct sqlite3_stmt;

namespace zonesim {

class Query;

using Wwn = std::array<std::uint8_t, 8>;

// Object kinds, numbered as the zone server's commands number them.
enum class ObjectKind : int { Zone = 0, ZoneSet = 1, Alias = 2 };

inline constexpr int kMinVsan = 1;
inline constexpr int kMaxVsan = 4094;
inline constexpr std::size_t kMaxNameLength = 64;  // zoning and device-alias names

// The domain manager's entry of one VSAN.
struct DomainInfo {
    int domain_id = 0;  // 1..239
    Wwn switch_wwn{};
    Wwn principal_wwn{};
};

struct VsanInfo {
    int number = 0;
    std::string name;
    std::optional<DomainInfo> domain;  // none: the domain manager has no entry
};

// A zone set, zone or alias of one database of one VSAN. The number is the
// VSAN's object number (shared by the three kinds, never reused); an active
// copy keeps the number of the object it was copied from.
struct ZoningObject {
    std::int64_t row = 0;  // storage identity, valid for one transaction
    int vsan = 0;
    bool active = false;
    ObjectKind kind = ObjectKind::Zone;
    int number = 0;
    std::string name;

    // "VSAN^NUMBER^ACTIVE"
    std::string instanceId() const;
};

// A zone member. One member per (VSAN, database, zone server code, match
// key), however many zones and aliases hold it: the key is what makes two
// encoded values the same member (member_identity.h makes it).
struct Member {
    std::int64_t row = 0;
    int vsan = 0;
    bool active = false;
    std::uint16_t cim_type = 0;       // CIM member type the member carries
    std::uint8_t code = 0;            // zone server member type code (231 kept as 109)
    std::vector<std::uint8_t> value;  // encoded member value
    std::vector<std::uint8_t> key;    // match key of the value
    std::string id_text;              // member text of the InstanceID
    std::string value_text;           // identifier text as given

    // "VSAN^CIM TYPE^MEMBER TEXT^ACTIVE"
    std::string instanceId() const;
};

struct DeviceAlias {
    std::string name;
    Wwn pwwn{};
};

// Capacity of the switch, counted over the full databases of all VSANs
// (members: member entries, i.e. one per member in one zone or alias).
struct Limits {
    int zone_sets = 1000;
    int zones = 16000;
    int aliases = 8000;
    int members = 32000;
    int device_aliases = 20000;
};

class Store {
  public:
    struct Opened {
        std::unique_ptr<Store> store;  // null when refused
        int code = 0;                  // 0 or the simulator error code
        std::string message;           // why it was refused
    };
    // Opens (creating when missing or empty) the database file at path.
    static Opened open(const std::string &path);
    // ZONE_SIM_DB, or "zone-switch.db" in the current directory.
    static std::string defaultPath();
    static constexpr const char *kDefaultSwitchName = "switch-sim-01";
    static constexpr const char *kDefaultPathName = "zone-switch.db";

    ~Store();
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;
    const std::string &path() const { return path_; }

    // One transaction around fn (a callable answering an int code): committed
    // when fn answers 0, rolled back otherwise or when it throws (the
    // exception goes on). Answers fn's code, or kErrDatabaseBusy /
    // kErrStorage when the transaction itself fails. Not reentrant.
    int read(FunctionRef<int()> fn) { return transact(false, fn); }
    int write(FunctionRef<int()> fn) { return transact(true, fn); }

    // A session keeps one read transaction open across the read() calls of
    // one thread, from the first read() after beginSession() to
    // endSession(): a provider request makes thousands of small queries, and
    // a transaction apiece cost more than the queries. While the session is
    // open the Store belongs to its thread; read() and write() on other
    // threads wait for endSession(). Inside the session a write() first ends
    // the read transaction, so the write starts from the latest state and
    // the reads after it see what it did. endSession() on a thread that
    // holds no session does nothing.
    void beginSession();
    void endSession();

    // ---- Switch and VSANs ------------------------------------------------
    // Valid until the next call on this Store.
    const std::string &switchName();
    int setSwitchName(const std::string &name);
    std::vector<VsanInfo> vsans();  // ascending
    // The same, with no copy inside a session (the table the session keeps);
    // otherwise read into *scratch. Valid until the next call on this Store.
    const std::vector<VsanInfo> &vsanTable(std::vector<VsanInfo> *scratch);
    bool vsan(int number, VsanInfo *out);
    bool nextVsan(int after, VsanInfo *out);  // the lowest VSAN above after
    // The VSAN numbered number, or with next set the lowest one above it;
    // null when there is none. Inside a session the answer points into the
    // table the session keeps, with no copy made; otherwise the VSAN is read
    // into *scratch. Valid until the next call on this Store.
    const VsanInfo *findVsan(int number, bool next, VsanInfo *scratch);
    int addVsan(const VsanInfo &vsan);  // kErrAlreadyPresent when it exists
    Limits limits();
    int setLimits(const Limits &limits);

    // ---- Zoning queries ----------------------------------------------------
    // All objects of one kind of one database, in creation order.
    std::vector<ZoningObject> objects(int vsan, bool active, ObjectKind kind);
    bool object(int vsan, bool active, ObjectKind kind, int number, ZoningObject *out);
    bool objectByName(int vsan, bool active, ObjectKind kind, const std::string &name,
                      ZoningObject *out);
    // Zones of a zone set / aliases of a zone, in the order they were added.
    std::vector<ZoningObject> children(const ZoningObject &parent);
    // Zone sets holding a zone / zones holding an alias.
    std::vector<ZoningObject> parents(const ZoningObject &child);
    // Members of a zone or alias, in the order they were added.
    std::vector<Member> members(const ZoningObject &parent);
    // The same three questions for the walks, by row, each relative handed
    // to fn as it is found (valid during the call only), without copies.
    bool objectRow(int vsan, bool active, ObjectKind kind, int number, std::int64_t *row);
    enum class Relative { Child, Parent };
    void forEachRelative(std::int64_t row, Relative relative,
                         FunctionRef<void(const ZoningObject &)> fn);
    void forEachMemberOf(std::int64_t row, FunctionRef<void(const Member &)> fn);
    // All members of one database, in creation order.
    std::vector<Member> allMembers(int vsan, bool active);

    // The same listings row by row, for callers that turn each row into
    // something of their own at once: the texts point into the statement's
    // row and are valid only during the call.
    struct ObjectRow {
        int vsan;
        bool active;
        int number;
        std::string_view name;
    };
    struct MemberRow {
        int vsan;
        bool active;
        std::uint16_t cim_type;
        std::string_view id_text;
        std::string_view value_text;
    };
    void forEachObject(int vsan, bool active, ObjectKind kind,
                       FunctionRef<void(const ObjectRow &)> fn);
    void forEachMember(int vsan, bool active, FunctionRef<void(const MemberRow &)> fn);
    // How many rows forEachObject() is about to list, when that is known
    // without a query (the listing is in memory); 0 otherwise.
    std::size_t listedObjectCount(int vsan, bool active, ObjectKind kind);
    // The objects of one database as the caller renders them: record_size
    // bytes each, in listing order, rendered once by render (given each row
    // and its zeroed bytes) and kept with the listing, so for as long as the
    // file is unchanged. An enumeration's records are then copies of them.
    // Null when no listing is kept (outside a session, or for the first VSAN
    // a session lists): the caller lists the rows itself. Valid until the
    // next call on this Store.
    const std::string *renderedObjects(int vsan, bool active, ObjectKind kind,
                                       std::size_t record_size,
                                       FunctionRef<void(const ObjectRow &, void *record)> render);
    bool member(int vsan, bool active, std::uint8_t code, const std::vector<std::uint8_t> &key,
                Member *out);
    // Zones (parent_kind Zone) or aliases (Alias) holding the member.
    std::vector<ZoningObject> memberParents(const Member &member, ObjectKind parent_kind);

    // ---- Zoning commands (full database only) -----------------------------
    int createObject(int vsan, ObjectKind kind, const std::string &name, ZoningObject *created);
    int removeObject(int vsan, ObjectKind kind, int number);
    // Zone into zone set (parent_kind ZoneSet) or alias into zone (Zone).
    int addChild(int vsan, ObjectKind parent_kind, int parent_number, int child_number);
    int removeChild(int vsan, ObjectKind parent_kind, int parent_number, int child_number);
    // The member (looked up by VSAN, code and key; value, cim_type and the
    // texts are used when it is new) into or out of a zone or alias.
    int addMember(ObjectKind parent_kind, int parent_number, const Member &member);
    int removeMember(ObjectKind parent_kind, int parent_number, const Member &member);
    int removeMemberEverywhere(const Member &member);
    // Copies the full database's zone set with its zones, aliases and members
    // into the active database, replacing what was active.
    int activate(int vsan, int zone_set_number);
    // Empties the active database when it holds that zone set.
    int deactivate(int vsan, int zone_set_number);

    // ---- Device aliases ----------------------------------------------------
    std::vector<DeviceAlias> deviceAliases();  // creation order
    // The same, shared: inside a session, read once and kept while the file
    // does not change.
    std::shared_ptr<const std::vector<DeviceAlias>> deviceAliasList();
    bool deviceAliasByPwwn(const Wwn &pwwn, DeviceAlias *out);
    bool deviceAliasByName(const std::string &name, DeviceAlias *out);
    // Checks only (no change): kErrAlreadyPresent, kErrCapacity, kErrInvalidName.
    int checkNewDeviceAlias(const DeviceAlias &alias);
    int addDeviceAlias(const DeviceAlias &alias);
    int removeDeviceAlias(const std::string &name);

    // ---- Whole state (fabric files) ---------------------------------------
    // Empties the database back to a switch without VSANs or device aliases.
    int clearAll();
    // Inserts an object as given (number included, either database), without
    // capacity checks; kErrAlreadyPresent on a name or number clash.
    int insertObject(ZoningObject *object);
    int insertLink(const ZoningObject &parent, const ZoningObject &child);
    int insertMember(const ZoningObject &parent, const Member &member);
    // Makes sure the VSAN's next object number is above number.
    int reserveNumber(int vsan, int number);
    int nextNumber(int vsan);

  private:
    explicit Store(std::string path, sqlite3 *db);
    int transact(bool for_write, FunctionRef<int()> fn);
    // A read() inside the session of this thread.
    int sessionRead(FunctionRef<int()> fn);
    void endSessionRead();
    void keepOrDropSnapshot();
    // Runs a transaction control statement; an SQLite result code.
    int control(const char *sql);
    sqlite3_stmt *statement(const char *sql);
    // A cached statement, reset when the Query goes.
    Query query(const char *sql);
    int insertObjectRow(ZoningObject *object);
    int findOrInsertMember(const Member &member, std::int64_t *row, bool *created);
    int clearActive(int vsan);
    int checkCapacity(ObjectKind kind);
    std::vector<VsanInfo> readVsans();
    std::string readSwitchName();
    bool readVsan(int number, bool next, VsanInfo *out);
    // The VSAN table of the session's snapshot, read on first use.
    const std::vector<VsanInfo> &snapshotVsans();

    std::string path_;
    sqlite3 *db_;
    std::mutex lock_;
    // The thread whose session holds lock_ (none: no session), and whether
    // the session's read transaction is open.
    std::atomic<std::thread::id> session_owner_{};
    bool session_read_open_ = false;
    struct Statements;
    std::unique_ptr<Statements> statements_;
    // What read transactions of sessions have read of the switch and its
    // VSAN table. A transaction sees one snapshot of the file, so the
    // answers stay right for as long as the file is unchanged: a write of
    // this Store drops them, and a session whose data version differs from
    // theirs (another connection has committed) starts with nothing known.
    // Enumerations walk the VSAN table entry by entry and check each VSAN
    // again before its queries: from the second step of a walk on, the
    // whole table is read once and every lookup is answered from it.
    // Listings of objects walk the VSANs the same way, two queries per VSAN
    // (active database, then editable), each an index search and a row
    // lookup per object: once a kind is listed for a second VSAN, every
    // database's objects of that kind are read in one statement and listed
    // from memory.
    struct ListedObject {
        std::int64_t row;
        int number;
        std::uint32_t name_offset;
        std::uint32_t name_length;
    };
    struct KindListing {
        int first_vsan = 0;  // the VSAN listed first (0: none yet)
        bool loaded = false;
        std::unordered_map<std::int64_t, std::vector<ListedObject>> databases;  // by databaseKey
        std::string names;
        // renderedObjects(), by databaseKey, all records of rendered_size bytes.
        std::unordered_map<std::int64_t, std::string> rendered;
        std::size_t rendered_size = 0;
    };
    // Members are listed the same way, from one pass over their table.
    struct ListedMember {
        std::int64_t row;
        std::uint16_t cim_type;
        std::uint32_t texts_offset;  // the id text, then the value text
        std::uint32_t id_length;
        std::uint32_t value_length;
    };
    struct MemberListing {
        int first_vsan = 0;
        bool loaded = false;
        std::unordered_map<std::int64_t, std::vector<ListedMember>> databases;
        std::string texts;
    };
    // Every object, link and member of the file, for the walks that ask for
    // the relatives of thousands of objects one object at a time (two
    // statements per object otherwise). Read in one pass over each table once
    // a session has asked often enough that a pass costs less than the
    // questions still to come.
    struct Relations {
        int lookups = 0;  // questions asked in this session before loading
        bool loaded = false;
        // Objects and members in row order. A link is an index into them and
        // an object's relatives are one range of a link array, so that a
        // walk reads arrays instead of following map nodes all over the heap.
        struct Range {
            std::uint32_t begin = 0;
            std::uint32_t end = 0;
        };
        struct Adjacency {
            std::vector<Range> of;               // by object index
            std::vector<std::uint32_t> targets;  // in the order the links were made
        };
        std::vector<ZoningObject> objects;
        std::vector<Member> members;
        Adjacency children, parents, member_links;
        std::unordered_map<std::int64_t, std::uint32_t> by_number;  // objectKey -> index
        std::unordered_map<std::int64_t, std::uint32_t> by_row;     // row -> index
        // The object objectRow() found last: a walk asks for its relatives
        // next, and need not search for it again.
        std::int64_t last_row = -1;
        std::uint32_t last_index = 0;

        bool indexOfRow(std::int64_t row, std::uint32_t *index);
    };
    static constexpr int kRelationLookupsBeforeLoading = 64;
    static std::int64_t objectKey(int vsan, bool active, int number) {
        return databaseKey(vsan, active) * (std::int64_t{1} << 32) + number;
    }
    // The relations when the snapshot has (or now reads) them; null while a
    // session has asked too little to make reading them worth it.
    Relations *snapshotRelations();
    void loadRelations(Relations *relations);
    // Calls fn with the index of every object (or member) linked to the
    // object of that row; false when the row is no object.
    static bool forEachLinked(Relations &relations, const Relations::Adjacency &links,
                              std::int64_t row, FunctionRef<void(std::uint32_t)> fn);
    static std::vector<ZoningObject> linkedObjects(Relations &relations,
                                                   const Relations::Adjacency &links,
                                                   std::int64_t row);
    using LinkPairs = std::vector<std::pair<std::uint32_t, std::uint32_t>>;  // (from, to)
    static Relations::Adjacency adjacency(std::size_t from_count, const LinkPairs &pairs);

    struct Snapshot {
        std::int64_t data_version = -1;  // SQLite's, when this was read (-1: unknown)
        std::optional<std::string> switch_name;
        std::optional<std::vector<VsanInfo>> vsans;  // ascending
        // By VSAN number: 1 + the VSAN's position in vsans, 0 for none. A
        // walk asks for every VSAN and every query checks its VSAN first.
        std::vector<std::uint16_t> vsan_slots;
        int walk_steps = 0;
        std::array<KindListing, 3> listings;  // by ObjectKind
        MemberListing members;
        Relations relations;
        std::shared_ptr<const std::vector<DeviceAlias>> device_aliases;
    };
    static std::int64_t databaseKey(int vsan, bool active) {
        return static_cast<std::int64_t>(vsan) * 2 + (active ? 1 : 0);
    }
    // The listing of that kind when the snapshot has (or now reads) it.
    const KindListing *snapshotListing(int vsan, ObjectKind kind);
    void loadListing(ObjectKind kind, KindListing *listing);
    // The VSAN of that number (or the lowest above after) in the snapshot's
    // table; null when there is none.
    const VsanInfo *snapshotVsan(int number);
    const VsanInfo *snapshotVsanAfter(int after);
    const MemberListing *snapshotMembers(int vsan);
    void loadMembers(MemberListing *listing);
    Snapshot snapshot_;
    std::string switch_name_read_;  // what switchName() read outside a session
};

}  // namespace zonesim
