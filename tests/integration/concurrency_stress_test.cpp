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

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <sstream>
#include <thread>

#include "switch_fixture.h"

namespace zonetest {
namespace {

constexpr int kClients = 8;
constexpr int kRequestsPerClient = 200;
constexpr int kFirstVsan = 101;

// ---- What a client believes its VSAN holds ----------------------------------

struct ZoningObject {
    std::string instance_id;
    std::vector<std::string> children;  // zone set: zones; zone: aliases
    std::vector<std::string> members;   // zone, alias: member texts (port WWNs)
};

struct Database {
    std::map<std::string, ZoningObject> zone_sets, zones, aliases;

    // One line per object, sorted by kind and name; children and members in
    // the order they were added.
    std::string render() const {
        std::ostringstream out;
        auto list = [&out](const std::vector<std::string> &items) {
            out << "[";
            for (const std::string &item : items) out << item << " ";
            out << "]";
        };
        auto kind = [&](const char *label, const std::map<std::string, ZoningObject> &objects) {
            for (const auto &[name, object] : objects) {
                out << label << " " << name << " children ";
                list(object.children);
                out << " members ";
                list(object.members);
                out << "\n";
            }
        };
        kind("zone set", zone_sets);
        kind("zone", zones);
        kind("alias", aliases);
        return out.str();
    }
};

struct VsanModel {
    Database full;
    Database active;
    std::string active_zone_set;                        // empty: nothing active
    std::map<std::string, std::string> member_ids;      // member text -> member InstanceID
    std::map<std::string, std::string> device_aliases;  // name -> port WWN
};

// The active database after activating a zone set: a copy of it with its
// zones and their aliases.
Database activated_copy(const Database &full, const std::string &zone_set) {
    Database active;
    const ZoningObject &set = full.zone_sets.at(zone_set);
    active.zone_sets[zone_set] = {"", set.children, {}};
    for (const std::string &zone : set.children) {
        const ZoningObject &z = full.zones.at(zone);
        active.zones[zone] = {"", z.children, z.members};
        for (const std::string &alias : z.children)
            active.aliases[alias] = {"", {}, full.aliases.at(alias).members};
    }
    return active;
}

// Removes an object and every link to it, as deleting it does.
void erase_object(std::map<std::string, ZoningObject> &objects, const std::string &name,
                  std::map<std::string, ZoningObject> *parents) {
    objects.erase(name);
    if (parents == nullptr) return;
    for (auto &[parent_name, parent] : *parents) std::erase(parent.children, name);
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

VsanModel starting_model(int client) {
    const int vsan = kFirstVsan + client;
    VsanModel model;
    const std::string member = member_text(client, 0, 0x21);
    model.full.zone_sets["base_cfg"] = {std::to_string(vsan) + "^1^0", {"base_zone"}, {}};
    model.full.zones["base_zone"] = {std::to_string(vsan) + "^2^0", {}, {member}};
    model.member_ids[member] = std::to_string(vsan) + "^10^" + member + "^0";
    model.device_aliases["c" + std::to_string(client) + "_base"] = member_text(client, 0, 0x23);
    return model;
}

// ---- One client ----------------------------------------------------------------

class Client {
  public:
    Client(const cmpihost::Provider &provider, int index)
        : provider_(provider),
          index_(index),
          vsan_(kFirstVsan + index),
          random_(static_cast<std::mt19937::result_type>(7919 * (index + 1))),
          model_(starting_model(index)) {}

    void run(int requests) {
        for (int i = 0; i < requests; ++i) one_request();
    }

    const VsanModel &model() const { return model_; }
    const std::vector<std::string> &problems() const { return problems_; }
    int successes() const { return successes_; }

  private:
    using Objects = std::map<std::string, ZoningObject>;

    void one_request() {
        switch (below(16)) {
            case 0:
                create("CreateZoneSet", "ZoneSet", "s", model_.full.zone_sets);
                break;
            case 1:
                create("CreateZone", "Zone", "z", model_.full.zones);
                break;
            case 2:
                create("CreateZoneAlias", "ZoneAlias", "a", model_.full.aliases);
                break;
            case 3:
                create_member();
                break;
            case 4:
                add_existing_member();
                break;
            case 5:
                add_zone();
                break;
            case 6:
                add_alias();
                break;
            case 7:
                activate();
                break;
            case 8:
                delete_object();
                break;
            case 9:
                unlink_zone();
                break;
            case 10:
                create_device_alias();
                break;
            case 11:
                remove_device_alias();
                break;
            case 12:
                check_zone_set_neighbours();
                break;
            case 13:
                check_get_instance();
                break;
            default:
                enumerate_or_traverse();
                break;
        }
    }

    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }

    template <typename Map>
    const typename Map::value_type *pick(const Map &items) {
        if (items.empty()) return nullptr;
        auto it = items.begin();
        std::advance(it, below(static_cast<int>(items.size())));
        return &*it;
    }

    void problem(const std::string &what) {
        problems_.push_back("client " + std::to_string(index_) + ": " + what);
    }

    std::string fresh_name(const char *kind) {
        return "c" + std::to_string(index_) + "_" + kind + std::to_string(++serial_);
    }

    static CMPIObjectPath *reference(cmpihost::Request &request, const char *cls,
                                     const std::string &instance_id) {
        CMPIObjectPath *path = request.newObjectPath(kNamespace, cls);
        cmpihost::addStringKey(path, "InstanceID", instance_id);
        return path;
    }

    // Runs a method on this client's zone service; true when it answered
    // "Success". *created receives the InstanceID of the output reference
    // named `output`, when there is one.
    bool invoke(const char *method,
                const std::function<void(cmpihost::Request &, CMPIArgs *)> &fill,
                const char *output = nullptr, std::string *created = nullptr) {
        cmpihost::Request request;
        CMPIObjectPath *target = request.newObjectPath(kNamespace, "VORNA_ZoneService");
        cmpihost::addStringKey(target, "Name", std::to_string(vsan_));
        CMPIArgs *in = request.newArgs();
        fill(request, in);
        CMPIArgs *out = request.newArgs();
        const cmpihost::Status status = provider_.invokeMethod(request, target, method, in, out);
        const std::string answer = cmpihost::returnedText(request);
        if (status.rc != CMPI_RC_OK || answer != "Success") {
            problem(std::string(method) + " answered " + cmpihost::describe(status) + " / " +
                    answer);
            return false;
        }
        if (output != nullptr && created != nullptr) {
            const CMPIData ref = out->ft->getArg(out, output, nullptr);
            if (ref.type != CMPI_ref || ref.value.ref == nullptr) {
                problem(std::string(method) + " gave no " + output);
                return false;
            }
            *created =
                cmpihost::dataText(ref.value.ref->ft->getKey(ref.value.ref, "InstanceID", nullptr));
        }
        ++successes_;
        return true;
    }

    void create(const char *method, const char *output, const char *kind, Objects &objects) {
        const std::string name = fresh_name(kind);
        std::string id;
        const bool zone = std::string(method) == "CreateZone";
        if (invoke(
                method,
                [&](cmpihost::Request &, CMPIArgs *in) {
                    cmpihost::addStringArg(in, "Name", name);
                    if (zone) {  // CreateZone takes three arguments
                        cmpihost::addStringArg(in, "Unused1", "");
                        cmpihost::addStringArg(in, "Unused2", "");
                    }
                },
                output, &id))
            objects[name] = {id, {}, {}};
    }

    // A new port WWN member in a zone or an alias.
    void create_member() {
        const bool in_zone = below(3) != 0 || model_.full.aliases.empty();
        Objects &parents = in_zone ? model_.full.zones : model_.full.aliases;
        const auto *parent = pick(parents);
        if (parent == nullptr) return create("CreateZone", "Zone", "z", model_.full.zones);
        const std::string member = member_text(index_, ++serial_, 0x21);
        const std::string parent_name = parent->first;
        const std::string parent_id = parent->second.instance_id;
        std::string id;
        if (invoke(
                "CreateZoneMembershipSettingData",
                [&](cmpihost::Request &request, CMPIArgs *in) {
                    CMPIValue port_wwn{};
                    port_wwn.uint16 = 10;
                    cmpihost::addValueArg(in, "ConnectivityMemberType", port_wwn, CMPI_uint16);
                    cmpihost::addStringArg(in, "ConnectivityMemberID", member);
                    cmpihost::addReferenceArg(
                        in, "Parent",
                        reference(request, in_zone ? "VORNA_Zone" : "VORNA_ZoneAlias", parent_id));
                },
                "ZoneMembershipSettingData", &id)) {
            parents[parent_name].members.push_back(member);
            model_.member_ids[member] = id;
        }
    }

    // A member some zone or alias holds, into another that doesn't.
    void add_existing_member() {
        const auto *member = pick(model_.member_ids);
        const bool to_zone = below(2) == 0;
        Objects &parents = to_zone ? model_.full.zones : model_.full.aliases;
        const auto *parent = pick(parents);
        if (member == nullptr || parent == nullptr) return create_member();
        const std::vector<std::string> &held = parent->second.members;
        if (std::find(held.begin(), held.end(), member->first) != held.end()) return;
        const std::string member_name = member->first;
        const std::string member_id = member->second;
        const std::string parent_name = parent->first;
        const std::string parent_id = parent->second.instance_id;
        if (invoke("AddZoneMembershipSettingData", [&](cmpihost::Request &request, CMPIArgs *in) {
                cmpihost::addReferenceArg(
                    in, "Parent",
                    reference(request, to_zone ? "VORNA_Zone" : "VORNA_ZoneAlias", parent_id));
                cmpihost::addReferenceArg(
                    in, "Member", reference(request, "VORNA_ZoneMemberSettingData", member_id));
            }))
            parents[parent_name].members.push_back(member_name);
    }

    // A child not yet in the parent: zone into zone set, alias into zone.
    void add_child(const char *method, Objects &parents, const char *parent_class,
                   const Objects &children, const char *child_class) {
        const auto *parent = pick(parents);
        const auto *child = pick(children);
        if (parent == nullptr || child == nullptr) return;
        const std::vector<std::string> &held = parent->second.children;
        if (std::find(held.begin(), held.end(), child->first) != held.end()) return;
        const std::string parent_name = parent->first;
        const std::string parent_id = parent->second.instance_id;
        const std::string child_name = child->first;
        const std::string child_id = child->second.instance_id;
        if (invoke(method, [&](cmpihost::Request &request, CMPIArgs *in) {
                cmpihost::addReferenceArg(in, "Parent",
                                          reference(request, parent_class, parent_id));
                cmpihost::addReferenceArg(in, "Child", reference(request, child_class, child_id));
            }))
            parents[parent_name].children.push_back(child_name);
    }

    void add_zone() {
        add_child("AddZone", model_.full.zone_sets, "VORNA_ZoneSet", model_.full.zones,
                  "VORNA_Zone");
    }
    void add_alias() {
        add_child("AddZoneAlias", model_.full.zones, "VORNA_Zone", model_.full.aliases,
                  "VORNA_ZoneAlias");
    }

    // Mostly activations; now and then the active zone set is deactivated.
    void activate() {
        const bool deactivate = !model_.active_zone_set.empty() && below(4) == 0 &&
                                model_.full.zone_sets.count(model_.active_zone_set) != 0;
        const auto *set = pick(model_.full.zone_sets);
        if (set == nullptr) return;
        const std::string name = deactivate ? model_.active_zone_set : set->first;
        const std::string id = model_.full.zone_sets.at(name).instance_id;
        if (!invoke("ActivateZoneSet", [&](cmpihost::Request &request, CMPIArgs *in) {
                cmpihost::addReferenceArg(in, "ZoneSet", reference(request, "VORNA_ZoneSet", id));
                CMPIValue on{};
                on.boolean = deactivate ? 0 : 1;
                cmpihost::addValueArg(in, "Activate", on, CMPI_boolean);
            }))
            return;
        if (deactivate) {
            model_.active = Database{};
            model_.active_zone_set.clear();
        } else {
            model_.active = activated_copy(model_.full, name);
            model_.active_zone_set = name;
        }
    }

    bool delete_instance(const CMPIObjectPath *path, cmpihost::Request &request,
                         const std::string &what) {
        const cmpihost::Status status = provider_.deleteInstance(request, path);
        if (status.rc != CMPI_RC_OK) {
            problem("deleting " + what + " answered " + cmpihost::describe(status));
            return false;
        }
        ++successes_;
        return true;
    }

    // A zone set, zone or alias of the editable database.
    void delete_object() {
        static constexpr const char *kClasses[] = {"VORNA_ZoneSet", "VORNA_Zone",
                                                   "VORNA_ZoneAlias"};
        const int kind = below(3);
        Objects *objects[] = {&model_.full.zone_sets, &model_.full.zones, &model_.full.aliases};
        Objects *parents[] = {nullptr, &model_.full.zone_sets, &model_.full.zones};
        const auto *victim = pick(*objects[kind]);
        if (victim == nullptr) return;
        const std::string name = victim->first;
        cmpihost::Request request;
        if (!delete_instance(reference(request, kClasses[kind], victim->second.instance_id),
                             request, name))
            return;
        erase_object(*objects[kind], name, parents[kind]);
        forget_unheld_members();
    }

    // A member that no zone or alias holds any more is gone from the switch.
    void forget_unheld_members() {
        for (auto it = model_.member_ids.begin(); it != model_.member_ids.end();) {
            bool held = false;
            for (const Objects *parents : {&model_.full.zones, &model_.full.aliases})
                for (const auto &[name, parent] : *parents)
                    held = held || std::find(parent.members.begin(), parent.members.end(),
                                             it->first) != parent.members.end();
            it = held ? std::next(it) : model_.member_ids.erase(it);
        }
    }

    // A zone out of a zone set, through its member-of-collection association.
    void unlink_zone() {
        const auto *set = pick(model_.full.zone_sets);
        if (set == nullptr || set->second.children.empty()) return;
        const std::string set_name = set->first;
        const std::vector<std::string> &zones = set->second.children;
        const std::string zone =
            zones[static_cast<std::size_t>(below(static_cast<int>(zones.size())))];
        cmpihost::Request request;
        CMPIObjectPath *link = request.newObjectPath(kNamespace, "VORNA_ZoneMemberOfCollection");
        cmpihost::addReferenceKey(link, "Collection",
                                  reference(request, "VORNA_ZoneSet", set->second.instance_id));
        cmpihost::addReferenceKey(
            link, "Member",
            reference(request, "VORNA_Zone", model_.full.zones.at(zone).instance_id));
        if (delete_instance(link, request, zone + " from " + set_name))
            std::erase(model_.full.zone_sets[set_name].children, zone);
    }

    void create_device_alias() {
        const std::string name = fresh_name("da");
        const std::string pwwn = member_text(index_, ++serial_, 0x23);
        if (invoke("CreateDeviceAlias", [&](cmpihost::Request &, CMPIArgs *in) {
                cmpihost::addStringArg(in, "Name", name);
                cmpihost::addStringArg(in, "PWWN", pwwn);
            }))
            model_.device_aliases[name] = pwwn;
    }

    void remove_device_alias() {
        const auto *alias = pick(model_.device_aliases);
        if (alias == nullptr) return create_device_alias();
        const std::string name = alias->first;
        if (invoke("RemoveDeviceAlias", [&](cmpihost::Request &, CMPIArgs *in) {
                cmpihost::addStringArg(in, "Name", name);
            }))
            model_.device_aliases.erase(name);
    }

    // The zones a zone set's associators name are the ones the model holds
    // in it, whatever the other clients are doing meanwhile.
    void check_zone_set_neighbours() {
        const auto *set = pick(model_.full.zone_sets);
        if (set == nullptr) return;
        cmpihost::Request request;
        const cmpihost::Status status = provider_.associatorNames(
            request, reference(request, "VORNA_ZoneSet", set->second.instance_id), nullptr, nullptr,
            nullptr, nullptr);
        if (status.rc != CMPI_RC_OK)
            return problem("associatorNames of " + set->first + " answered " +
                           cmpihost::describe(status));
        std::vector<std::string> seen;
        for (const cmpihost::Delivery &d : request.deliveries()) {
            if (d.kind != cmpihost::Delivery::Kind::ObjectPath) continue;
            if (cmpihost::text(d.path->ft->getClassName(d.path, nullptr)) != "VORNA_Zone") continue;
            seen.push_back(cmpihost::dataText(d.path->ft->getKey(d.path, "InstanceID", nullptr)));
        }
        std::vector<std::string> expected;
        for (const std::string &zone : set->second.children)
            expected.push_back(model_.full.zones.at(zone).instance_id);
        std::sort(seen.begin(), seen.end());
        std::sort(expected.begin(), expected.end());
        if (seen != expected)
            return problem("zone set " + set->first + " shows other zones than it holds");
        ++successes_;
    }

    // One zone (or alias) of the model, fetched by its key, comes back once.
    void check_get_instance() {
        const bool zone = below(2) == 0;
        const auto *object = pick(zone ? model_.full.zones : model_.full.aliases);
        if (object == nullptr) return;
        cmpihost::Request request;
        const cmpihost::Status status = provider_.getInstance(
            request,
            reference(request, zone ? "VORNA_Zone" : "VORNA_ZoneAlias", object->second.instance_id),
            nullptr);
        if (status.rc != CMPI_RC_OK || request.deliveries().size() != 1)
            return problem("getInstance of " + object->first + " answered " +
                           cmpihost::describe(status) + " with " +
                           std::to_string(request.deliveries().size()) + " deliveries");
        ++successes_;
    }

    // Reads across every VSAN, racing with the other clients' changes: they
    // must simply succeed.
    void enumerate_or_traverse() {
        static constexpr const char *kClasses[] = {"VORNA_ZoneSet",
                                                   "VORNA_Zone",
                                                   "VORNA_ZoneAlias",
                                                   "VORNA_ZoneMemberSettingData",
                                                   "VORNA_DeviceAlias",
                                                   "VORNA_ZoneMemberOfCollection",
                                                   "VORNA_ElementSettingData",
                                                   "VORNA_ZoneService",
                                                   "VORNA_ZoneHostedCollection"};
        const char *cls = kClasses[below(static_cast<int>(std::size(kClasses)))];
        cmpihost::Request request;
        CMPIObjectPath *path = request.newObjectPath(kNamespace, cls);
        cmpihost::Status status;
        std::string what;
        switch (below(3)) {
            case 0:
                what = std::string("enumInstanceNames ") + cls;
                status = provider_.enumInstanceNames(request, path);
                break;
            case 1:
                what = std::string("enumInstances ") + cls;
                status = provider_.enumInstances(request, path, nullptr);
                break;
            default: {
                CMPIObjectPath *service = request.newObjectPath(kNamespace, "VORNA_ZoneService");
                cmpihost::addStringKey(service, "Name", std::to_string(vsan_));
                what = "references of the zone service";
                status = provider_.references(request, service, nullptr, nullptr, nullptr);
                break;
            }
        }
        if (status.rc != CMPI_RC_OK)
            return problem(what + " answered " + cmpihost::describe(status));
        ++successes_;
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

// ---- The switch's state, from its dump ---------------------------------------

Database database_from_dump(const nlohmann::json &database) {
    Database out;
    auto names = [](const nlohmann::json &list) {
        std::vector<std::string> items;
        for (const nlohmann::json &item : list) items.push_back(item.get<std::string>());
        return items;
    };
    auto members = [](const nlohmann::json &list) {
        std::vector<std::string> items;
        for (const nlohmann::json &item : list) {
            const std::string id = item.at("id").get<std::string>();
            items.push_back(item.at("type").get<int>() == 10
                                ? id
                                : "type " + item.at("type").dump() + " " + id);
        }
        return items;
    };
    for (const nlohmann::json &set : database.value("zone_sets", nlohmann::json::array()))
        out.zone_sets[set.at("name").get<std::string>()] = {"", names(set.at("zones")), {}};
    for (const nlohmann::json &zone : database.value("zones", nlohmann::json::array()))
        out.zones[zone.at("name").get<std::string>()] = {"", names(zone.at("aliases")),
                                                         members(zone.at("members"))};
    for (const nlohmann::json &alias : database.value("aliases", nlohmann::json::array()))
        out.aliases[alias.at("name").get<std::string>()] = {"", {}, members(alias.at("members"))};
    return out;
}

std::string device_aliases_text(const std::map<std::string, std::string> &aliases) {
    std::string text;
    for (const auto &[name, pwwn] : aliases) text += name + "=" + pwwn + "\n";
    return text;
}

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

    std::string dump;
    ASSERT_EQ(run_zonecim({"fabric", "dump"}, &dump), 0);
    const nlohmann::json state = nlohmann::json::parse(dump);
    std::map<int, const nlohmann::json *> vsans;
    for (const nlohmann::json &vsan : state.at("vsans"))
        vsans[vsan.at("number").get<int>()] = &vsan;
    ASSERT_EQ(vsans.size(), static_cast<std::size_t>(kClients));

    std::map<std::string, std::string> expected_aliases;
    for (int c = 0; c < kClients; ++c) {
        const VsanModel &model = clients[static_cast<std::size_t>(c)]->model();
        ASSERT_EQ(vsans.count(kFirstVsan + c), 1u);
        const nlohmann::json &vsan = *vsans[kFirstVsan + c];
        EXPECT_EQ(database_from_dump(vsan.at("full")).render(), model.full.render())
            << "editable database of VSAN " << kFirstVsan + c;
        EXPECT_EQ(database_from_dump(vsan.at("active")).render(), model.active.render())
            << "active database of VSAN " << kFirstVsan + c;
        expected_aliases.insert(model.device_aliases.begin(), model.device_aliases.end());
    }
    std::map<std::string, std::string> aliases;
    for (const nlohmann::json &alias : state.at("device_aliases"))
        aliases[alias.at("name").get<std::string>()] = alias.at("pwwn").get<std::string>();
    EXPECT_EQ(device_aliases_text(aliases), device_aliases_text(expected_aliases));
}

}  // namespace
}  // namespace zonetest
