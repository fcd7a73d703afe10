// Eight clients at once through one loaded provider, as a CIM server's
// worker threads call it: each works in a VSAN of its own and on device
// aliases of its own names, mixing enumerations, associations, creations,
// additions, deletions, activations and device-alias changes, each call in
// a request of its own. Every client keeps a model of its VSAN that follows
// only the calls that reported success; in the end the switch must hold
// exactly what the models say, and along the way each client's reads of
// its own VSAN must agree with its model whatever the others are doing.
//
// Standard output is redirected once for the whole run (the redirection is
// process-wide); the clients note what went wrong and the test reports it
// once the threads are done and output is back.
#include <nlohmann/json.hpp>

#include <array>
#include <map>
#include <random>
#include <thread>

#include "switch_fixture.h"

namespace zonetest {
namespace {

constexpr int kClients = 8;
constexpr int kRequestsPerClient = 200;
constexpr int kFirstVsan = 101;

// ---- What a client believes its VSAN holds ----------------------------------

// The kinds of zoning object: a zone set holds zones, a zone holds aliases.
enum Kind { kSets, kZones, kAliases };
const char *const kClass[] = {"VORNA_ZoneSet", "VORNA_Zone", "VORNA_ZoneAlias"};
const char *const kDumpList[] = {"zone_sets", "zones", "aliases"};

struct ZoningObject {
    std::string instance_id;
    std::vector<std::string> children;  // zone set: zones; zone: aliases
    std::vector<std::string> members;   // zone, alias: member texts (port WWNs)
};
using Objects = std::map<std::string, ZoningObject>;
using Database = std::array<Objects, 3>;  // by Kind

// As the fabric dump shows a database, without the object numbers: objects
// by name, children and members (port WWNs) in the order they were added.
nlohmann::json dumped(const Database &database) {
    nlohmann::json out;
    for (const Kind kind : {kSets, kZones, kAliases}) {
        nlohmann::json &list = out[kDumpList[kind]] = nlohmann::json::array();
        for (const auto &[name, object] : database[kind]) {
            nlohmann::json entry = {{"name", name}};
            if (kind != kAliases) entry[kind == kSets ? "zones" : "aliases"] = object.children;
            if (kind == kSets) {
                list.push_back(entry);
                continue;
            }
            nlohmann::json &members = entry["members"] = nlohmann::json::array();
            for (const std::string &wwn : object.members)
                members.push_back({{"type", 10}, {"id", wwn}});
            list.push_back(entry);
        }
    }
    return out;
}

// A database of the fabric dump as a model shows it.
nlohmann::json without_numbers(nlohmann::json database) {
    for (const char *kind : kDumpList) {
        nlohmann::json &list = database[kind];
        if (list.is_null()) list = nlohmann::json::array();
        for (nlohmann::json &object : list) object.erase("number");
        std::sort(list.begin(), list.end(), [](const nlohmann::json &a, const nlohmann::json &b) {
            return a["name"] < b["name"];
        });
    }
    return database;
}

struct VsanModel {
    Database full, active;
    std::string active_zone_set;                        // empty: nothing active
    std::map<std::string, std::string> member_ids;      // member text -> member InstanceID
    std::map<std::string, std::string> device_aliases;  // name -> port WWN
};

// The active database after activating a zone set: a copy of it with its
// zones and their aliases.
Database activated_copy(const Database &full, const std::string &zone_set) {
    Database active;
    const ZoningObject &set = full[kSets].at(zone_set);
    active[kSets][zone_set] = {"", set.children, {}};
    for (const std::string &zone : set.children) {
        const ZoningObject &z = full[kZones].at(zone);
        active[kZones][zone] = {"", z.children, z.members};
        for (const std::string &alias : z.children)
            active[kAliases][alias] = {"", {}, full[kAliases].at(alias).members};
    }
    return active;
}

bool holds(const std::vector<std::string> &items, const std::string &item) {
    return std::find(items.begin(), items.end(), item) != items.end();
}

// ---- The fabric the clients start from ---------------------------------------

std::string member_text(int client, int serial, int kind) {
    char text[32];
    std::snprintf(text, sizeof text, "%02x:00:00:00:00:%02x:%02x:%02x", kind, client,
                  (serial >> 8) & 0xff, serial & 0xff);
    return text;
}

// Per client VSAN: zone set "base_cfg" (number 1) holding zone "base_zone"
// (number 2) with one port WWN member; plus one device alias per client.
std::string starting_fabric() {
    nlohmann::json vsans = nlohmann::json::array();
    nlohmann::json device_aliases = nlohmann::json::array();
    for (int c = 0; c < kClients; ++c) {
        const int vsan = kFirstVsan + c;
        char wwn[32];
        std::snprintf(wwn, sizeof wwn, "30:%02x:00:00:00:5a:10:01", vsan);
        nlohmann::json database = {
            {"zone_sets", {{{"name", "base_cfg"}, {"number", 1}, {"zones", {"base_zone"}}}}},
            {"zones",
             {{{"name", "base_zone"},
               {"number", 2},
               {"members", {{{"type", 10}, {"id", member_text(c, 0, 0x21)}}}}}}}};
        vsans.push_back({{"number", vsan},
                         {"name", "stress_" + std::to_string(vsan)},
                         {"domain", {{"id", vsan}, {"switch_wwn", wwn}, {"principal_wwn", wwn}}},
                         {"full", database},
                         {"active", nlohmann::json::object()}});
        device_aliases.push_back(
            {{"name", "c" + std::to_string(c) + "_base"}, {"pwwn", member_text(c, 0, 0x23)}});
    }
    return nlohmann::json{{"version", 1},
                          {"switch_name", "switch-sim-01"},
                          {"vsans", vsans},
                          {"device_aliases", device_aliases}}
        .dump(2);
}

// ---- One client ----------------------------------------------------------------

class Client {
  public:
    Client(const cmpihost::Provider &provider, int index)
        : provider_(provider),
          index_(index),
          vsan_(kFirstVsan + index),
          random_(static_cast<std::mt19937::result_type>(7919 * (index + 1))) {
        const std::string member = member_text(index, 0, 0x21);
        const std::string vsan = std::to_string(vsan_);
        model_.full[kSets]["base_cfg"] = {vsan + "^1^0", {"base_zone"}, {}};
        model_.full[kZones]["base_zone"] = {vsan + "^2^0", {}, {member}};
        model_.member_ids[member] = vsan + "^10^" + member + "^0";
        model_.device_aliases["c" + std::to_string(index) + "_base"] = member_text(index, 0, 0x23);
    }

    // One request of a kind drawn at random; reads weigh a little more.
    void run(int requests) {
        using Step = void (*)(Client &);
        static constexpr Step kSteps[] = {
            [](Client &c) { c.create(kSets); },          [](Client &c) { c.create(kZones); },
            [](Client &c) { c.create(kAliases); },       [](Client &c) { c.create_member(); },
            [](Client &c) { c.add_member(); },           [](Client &c) { c.add_child(kSets); },
            [](Client &c) { c.add_child(kZones); },      [](Client &c) { c.activate(); },
            [](Client &c) { c.delete_object(); },        [](Client &c) { c.unlink_zone(); },
            [](Client &c) { c.create_device_alias(); },  [](Client &c) { c.remove_device_alias(); },
            [](Client &c) { c.check_zone_set_zones(); }, [](Client &c) { c.check_get_instance(); },
            [](Client &c) { c.read_anything(); },        [](Client &c) { c.read_anything(); }};
        for (int i = 0; i < requests; ++i) kSteps[below(std::size(kSteps))](*this);
    }

    const VsanModel &model() const { return model_; }
    const std::vector<std::string> &problems() const { return problems_; }
    int successes() const { return successes_; }

  private:
    int below(std::size_t n) {
        return std::uniform_int_distribution<int>(0, static_cast<int>(n) - 1)(random_);
    }

    template <typename Map>
    const typename Map::value_type *pick(const Map &items) {
        if (items.empty()) return nullptr;
        return &*std::next(items.begin(), below(items.size()));
    }

    void problem(const std::string &what) {
        problems_.push_back("client " + std::to_string(index_) + ": " + what);
    }

    std::string fresh_name(const char *kind) {
        return "c" + std::to_string(index_) + "_" + kind + std::to_string(++serial_);
    }

    std::string path_of(Kind kind, const std::string &name) {
        return zoning_path(kClass[kind], model_.full[kind].at(name).instance_id);
    }

    // A call that must succeed: counted, or noted as a problem.
    bool succeeded(const cmpihost::Status &status, const std::string &what,
                   const std::string &answer = "Success") {
        if (status.rc == CMPI_RC_OK && answer == "Success") {
            ++successes_;
            return true;
        }
        problem(what + " answered " + cmpihost::describe(status) + " / " + answer);
        return false;
    }

    // Runs a method on this client's zone service; true when it answered
    // "Success". *created receives the InstanceID of the output reference
    // named output, when there is one.
    bool invoke(const char *method, const std::vector<Arg> &args, const char *output = nullptr,
                std::string *created = nullptr) {
        const auto [status, text] =
            call_zone_service(provider_, vsan_, method, args, output, created);
        if (!succeeded(status, method, text)) return false;
        if (output != nullptr && created->empty()) {
            problem(std::string(method) + " gave no " + output);
            return false;
        }
        return true;
    }

    void create(Kind kind) {
        static const char *const kMethods[] = {"CreateZoneSet", "CreateZone", "CreateZoneAlias"};
        static const char *const kOutputs[] = {"ZoneSet", "Zone", "ZoneAlias"};
        const std::string name = fresh_name(kOutputs[kind]);
        std::vector<Arg> args{{"Name", CMPI_string, name}};
        if (kind == kZones)
            args.insert(args.end(),
                        {{"ZoneType", CMPI_uint16, "2"}, {"ZoneSubType", CMPI_uint16, "2"}});
        std::string id;
        if (invoke(kMethods[kind], args, kOutputs[kind], &id))
            model_.full[kind][name] = {id, {}, {}};
    }

    // A new port WWN member in a zone or an alias.
    void create_member() {
        const Kind kind = below(3) != 0 || model_.full[kAliases].empty() ? kZones : kAliases;
        const auto *parent = pick(model_.full[kind]);
        if (parent == nullptr) return create(kZones);
        const std::string member = member_text(index_, ++serial_, 0x21);
        std::string id;
        if (invoke("CreateZoneMembershipSettingData",
                   {{"ConnectivityMemberType", CMPI_uint16, "10"},
                    {"ConnectivityMemberID", CMPI_string, member},
                    {"Parent", CMPI_ref, path_of(kind, parent->first)}},
                   "ZoneMembershipSettingData", &id)) {
            model_.full[kind][parent->first].members.push_back(member);
            model_.member_ids[member] = id;
        }
    }

    // A member some zone or alias holds, into another that doesn't.
    void add_member() {
        const auto *member = pick(model_.member_ids);
        const Kind kind = below(2) == 0 ? kZones : kAliases;
        const auto *parent = pick(model_.full[kind]);
        if (member == nullptr || parent == nullptr) return create_member();
        if (holds(parent->second.members, member->first)) return;
        if (invoke(
                "AddZoneMembershipSettingData",
                {{"Parent", CMPI_ref, path_of(kind, parent->first)},
                 {"Member", CMPI_ref, zoning_path("VORNA_ZoneMemberSettingData", member->second)}}))
            model_.full[kind][parent->first].members.push_back(member->first);
    }

    // A child not yet in the parent: zone into zone set, alias into zone.
    void add_child(Kind parent_kind) {
        const Kind child_kind = parent_kind == kSets ? kZones : kAliases;
        const auto *parent = pick(model_.full[parent_kind]);
        const auto *child = pick(model_.full[child_kind]);
        if (parent == nullptr || child == nullptr) return;
        if (holds(parent->second.children, child->first)) return;
        if (invoke(parent_kind == kSets ? "AddZone" : "AddZoneAlias",
                   {{"Parent", CMPI_ref, path_of(parent_kind, parent->first)},
                    {"Child", CMPI_ref, path_of(child_kind, child->first)}}))
            model_.full[parent_kind][parent->first].children.push_back(child->first);
    }

    // Mostly activations; now and then the active zone set is deactivated.
    void activate() {
        const bool deactivate = !model_.active_zone_set.empty() && below(4) == 0 &&
                                model_.full[kSets].count(model_.active_zone_set) != 0;
        const auto *set = pick(model_.full[kSets]);
        if (set == nullptr) return;
        const std::string name = deactivate ? model_.active_zone_set : set->first;
        if (!invoke("ActivateZoneSet", {{"ZoneSet", CMPI_ref, path_of(kSets, name)},
                                        {"Activate", CMPI_boolean, deactivate ? "false" : "true"}}))
            return;
        model_.active = deactivate ? Database{} : activated_copy(model_.full, name);
        model_.active_zone_set = deactivate ? "" : name;
    }

    bool delete_instance(const std::string &path) {
        cmpihost::Request request;
        return succeeded(provider_.deleteInstance(request, parsed(path)), "deleting " + path);
    }

    // A zone set, zone or alias of the editable database, with every link
    // to it; a member that no zone or alias holds any more is gone too.
    void delete_object() {
        const Kind kind = static_cast<Kind>(below(3));
        const auto *victim = pick(model_.full[kind]);
        if (victim == nullptr || !delete_instance(path_of(kind, victim->first))) return;
        const std::string name = victim->first;
        model_.full[kind].erase(name);
        if (kind != kSets)
            for (auto &[parent_name, parent] : model_.full[kind - 1])
                std::erase(parent.children, name);
        std::erase_if(model_.member_ids, [this](const auto &member) {
            for (const Kind holder : {kZones, kAliases})
                for (const auto &[name, object] : model_.full[holder])
                    if (holds(object.members, member.first)) return false;
            return true;
        });
    }

    // A zone out of a zone set, through its member-of-collection association.
    void unlink_zone() {
        const auto *set = pick(model_.full[kSets]);
        if (set == nullptr || set->second.children.empty()) return;
        const std::string zone = set->second.children[below(set->second.children.size())];
        if (delete_instance(link_path("VORNA_ZoneMemberOfCollection", "Collection",
                                      path_of(kSets, set->first), "Member", path_of(kZones, zone))))
            std::erase(model_.full[kSets][set->first].children, zone);
    }

    void create_device_alias() {
        const std::string name = fresh_name("da");
        const std::string pwwn = member_text(index_, ++serial_, 0x23);
        if (invoke("CreateDeviceAlias", {{"Name", CMPI_string, name}, {"PWWN", CMPI_string, pwwn}}))
            model_.device_aliases[name] = pwwn;
    }

    void remove_device_alias() {
        const auto *alias = pick(model_.device_aliases);
        if (alias == nullptr) return create_device_alias();
        const std::string name = alias->first;
        if (invoke("RemoveDeviceAlias", {{"Name", CMPI_string, name}}))
            model_.device_aliases.erase(name);
    }

    // The zones a zone set's associators name are the ones the model holds
    // in it, whatever the other clients are doing meanwhile.
    void check_zone_set_zones() {
        const auto *set = pick(model_.full[kSets]);
        if (set == nullptr) return;
        cmpihost::Request request;
        const cmpihost::Status status = provider_.associatorNames(
            request, parsed(path_of(kSets, set->first)), nullptr, nullptr, nullptr, nullptr);
        std::vector<std::string> seen, expected;
        for (const cmpihost::Delivery &d : request.deliveries())
            if (d.kind == cmpihost::Delivery::Kind::ObjectPath &&
                cmpihost::text(d.path->ft->getClassName(d.path, nullptr)) == "VORNA_Zone")
                seen.push_back(
                    cmpihost::dataText(d.path->ft->getKey(d.path, "InstanceID", nullptr)));
        for (const std::string &zone : set->second.children)
            expected.push_back(model_.full[kZones].at(zone).instance_id);
        std::sort(seen.begin(), seen.end());
        std::sort(expected.begin(), expected.end());
        succeeded(status, "associatorNames of " + set->first,
                  seen == expected ? "Success" : "other zones than the zone set holds");
    }

    // One zone (or alias) of the model, fetched by its key, comes back once.
    void check_get_instance() {
        const Kind kind = below(2) == 0 ? kZones : kAliases;
        const auto *object = pick(model_.full[kind]);
        if (object == nullptr) return;
        cmpihost::Request request;
        const cmpihost::Status status =
            provider_.getInstance(request, parsed(path_of(kind, object->first)), nullptr);
        succeeded(status, "getInstance of " + object->first,
                  request.deliveries().size() == 1 ? "Success" : "not one instance");
    }

    // Reads across every VSAN, racing with the other clients' changes: they
    // must simply succeed.
    void read_anything() {
        const std::string cls = kInstanceClasses[below(kInstanceClasses.size())];
        cmpihost::Request request;
        CMPIObjectPath *path = request.newObjectPath(kNamespace, cls);
        switch (below(3)) {
            case 0:
                succeeded(provider_.enumInstanceNames(request, path), "enumInstanceNames " + cls);
                break;
            case 1:
                succeeded(provider_.enumInstances(request, path, nullptr), "enumInstances " + cls);
                break;
            default:
                succeeded(provider_.references(request, parsed(zone_service_path(vsan_)), nullptr,
                                               nullptr, nullptr),
                          "references of the zone service");
        }
    }

    const cmpihost::Provider &provider_;
    const int index_;
    const int vsan_;
    std::mt19937 random_;
    VsanModel model_;
    int serial_ = 0;
    int successes_ = 0;
    std::vector<std::string> problems_;
};

class ConcurrencyStressTest : public SwitchTest {
  protected:
    void SetUp() override {
        fabric_file_ = std::filesystem::temp_directory_path() /
                       ("zone-stress-" + std::to_string(getpid()) + ".json");
        std::ofstream(fabric_file_) << starting_fabric();
        load_fabric(fabric_file_.string());
    }
    void TearDown() override { std::filesystem::remove(fabric_file_); }

    std::filesystem::path fabric_file_;
};

TEST_F(ConcurrencyStressTest, ClientsInTheirOwnVsansEndWithWhatTheirSuccessfulCallsMade) {
    std::vector<std::unique_ptr<Client>> clients;
    for (int c = 0; c < kClients; ++c) clients.push_back(std::make_unique<Client>(provider(), c));
    {
        QuietStdout quiet;
        std::vector<std::thread> threads;
        for (auto &client : clients)
            threads.emplace_back([&client] { client->run(kRequestsPerClient); });
        for (std::thread &thread : threads) thread.join();
    }

    for (const auto &client : clients) {
        for (const std::string &problem : client->problems()) ADD_FAILURE() << problem;
        // Nearly every request is one that should succeed; a run in which
        // few did would prove nothing about the final state.
        EXPECT_GT(client->successes(), kRequestsPerClient / 2);
    }

    const nlohmann::json state = nlohmann::json::parse(fabric_dump());
    std::map<int, nlohmann::json> vsans;
    for (const nlohmann::json &vsan : state.at("vsans")) vsans[vsan.at("number").get<int>()] = vsan;
    ASSERT_EQ(vsans.size(), static_cast<std::size_t>(kClients));
    std::map<std::string, std::string> expected_aliases, aliases;
    for (int c = 0; c < kClients; ++c) {
        SCOPED_TRACE("VSAN " + std::to_string(kFirstVsan + c));
        const VsanModel &model = clients[static_cast<std::size_t>(c)]->model();
        ASSERT_EQ(vsans.count(kFirstVsan + c), 1u);
        const nlohmann::json &vsan = vsans[kFirstVsan + c];
        EXPECT_EQ(without_numbers(vsan.at("full")), dumped(model.full));
        EXPECT_EQ(without_numbers(vsan.at("active")), dumped(model.active));
        expected_aliases.insert(model.device_aliases.begin(), model.device_aliases.end());
    }
    for (const nlohmann::json &alias : state.at("device_aliases"))
        aliases[alias.at("name").get<std::string>()] = alias.at("pwwn").get<std::string>();
    EXPECT_EQ(aliases, expected_aliases);
}

}  // namespace
}  // namespace zonetest
