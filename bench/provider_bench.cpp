// Every provider operation through the in-process host, as a CIM object
// manager drives it, on a tenth of the scale targets and on the full
// targets; and, for every operation that hands back objects, its floor.
//
// The floor of an operation is what the host alone needs to make and hand
// back the same objects: the operation is run once, what it delivered is
// written down (namespace, class, host, keys and properties, references
// included), and the benchmark builds those objects again with the broker
// and returns them to a request's result, with no provider and no platform
// in between, in turns with the operation itself.
//
// Single-object operations work on objects of the last VSAN of the fabric.
// Methods and deleteInstance change the editable database of that VSAN;
// their set-up and undoing run through the platform outside the measured
// time.
#include <strings.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench_support.h"
#include "host/cmpihost.h"
#include "platform_calls.h"

namespace zonebench {
namespace {

constexpr const char *kNamespace = "root/cimv2";

const cmpihost::Provider &provider() {
    static std::unique_ptr<cmpihost::Provider> loaded = [] {
        std::string error;
        auto p = cmpihost::Provider::load(ZONE_PROVIDER_PATH, "ZoneProvider", &error);
        if (!p) {
            std::fprintf(stderr, "zone bench: cannot load the provider: %s\n", error.c_str());
            std::exit(1);
        }
        return p;
    }();
    return *loaded;
}

// ---- Objects written down and built again ---------------------------------------

struct Blueprint;

struct ValueBlueprint {
    std::string name;
    CMPIType type = CMPI_null;
    std::string text;                // CMPI_string, passed back as CMPI_chars
    CMPIValue scalar{};              // any other scalar type
    std::shared_ptr<Blueprint> ref;  // CMPI_ref
};

// An object path, or an instance on such a path.
struct Blueprint {
    bool instance = false;
    std::string ns, cls, host;
    std::vector<ValueBlueprint> keys;
    std::vector<ValueBlueprint> properties;  // instances: the properties that are not keys
};

std::shared_ptr<Blueprint> capturePath(const CMPIObjectPath *path);

bool captureValue(const std::string &name, const CMPIData &data, ValueBlueprint *out) {
    if ((data.state & CMPI_nullValue) != 0 || (data.type & CMPI_ARRAY) != 0) return false;
    out->name = name;
    out->type = data.type;
    if (data.type == CMPI_string || data.type == CMPI_chars) {
        out->type = CMPI_string;
        out->text = cmpihost::dataText(data);
    } else if (data.type == CMPI_ref) {
        out->ref = capturePath(data.value.ref);
    } else {
        out->scalar = data.value;
    }
    return true;
}

std::shared_ptr<Blueprint> capturePath(const CMPIObjectPath *path) {
    auto blueprint = std::make_shared<Blueprint>();
    blueprint->ns = cmpihost::text(path->ft->getNameSpace(path, nullptr));
    blueprint->cls = cmpihost::text(path->ft->getClassName(path, nullptr));
    blueprint->host = cmpihost::text(path->ft->getHostname(path, nullptr));
    const CMPICount count = path->ft->getKeyCount(path, nullptr);
    for (CMPICount i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData data = path->ft->getKeyAt(path, i, &name, nullptr);
        ValueBlueprint key;
        if (captureValue(cmpihost::text(name), data, &key))
            blueprint->keys.push_back(std::move(key));
    }
    return blueprint;
}

std::shared_ptr<Blueprint> captureInstance(const CMPIInstance *instance) {
    std::shared_ptr<Blueprint> blueprint =
        capturePath(instance->ft->getObjectPath(instance, nullptr));
    blueprint->instance = true;
    const CMPICount count = instance->ft->getPropertyCount(instance, nullptr);
    for (CMPICount i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData data = instance->ft->getPropertyAt(instance, i, &name, nullptr);
        const std::string property = cmpihost::text(name);
        bool is_key = false;
        for (const ValueBlueprint &key : blueprint->keys)
            is_key = is_key || strcasecmp(key.name.c_str(), property.c_str()) == 0;
        ValueBlueprint value;
        if (!is_key && captureValue(property, data, &value))
            blueprint->properties.push_back(std::move(value));
    }
    return blueprint;
}

std::vector<std::shared_ptr<Blueprint>> captureDeliveries(const cmpihost::Request &request) {
    std::vector<std::shared_ptr<Blueprint>> blueprints;
    for (const cmpihost::Delivery &d : request.deliveries()) {
        if (d.kind == cmpihost::Delivery::Kind::Instance)
            blueprints.push_back(captureInstance(d.instance));
        if (d.kind == cmpihost::Delivery::Kind::ObjectPath)
            blueprints.push_back(capturePath(d.path));
    }
    return blueprints;
}

CMPIObjectPath *buildPath(const Blueprint &blueprint);

// The value in the form the broker takes it; holder keeps a built reference.
const CMPIValue *valueOf(const ValueBlueprint &value, CMPIValue *holder, CMPIType *type) {
    *type = value.type;
    if (value.type == CMPI_string) {
        *type = CMPI_chars;
        return reinterpret_cast<const CMPIValue *>(value.text.c_str());
    }
    if (value.type == CMPI_ref) {
        holder->ref = buildPath(*value.ref);
        return holder;
    }
    return &value.scalar;
}

CMPIObjectPath *buildPath(const Blueprint &blueprint) {
    const CMPIBroker *broker = cmpihost::broker();
    CMPIObjectPath *path =
        broker->eft->newObjectPath(broker, blueprint.ns.c_str(), blueprint.cls.c_str(), nullptr);
    if (!blueprint.host.empty()) path->ft->setHostname(path, blueprint.host.c_str());
    for (const ValueBlueprint &key : blueprint.keys) {
        CMPIValue holder{};
        CMPIType type;
        const CMPIValue *value = valueOf(key, &holder, &type);
        path->ft->addKey(path, key.name.c_str(), value, type);
    }
    return path;
}

void buildAndReturn(const Blueprint &blueprint, const CMPIResult *result) {
    CMPIObjectPath *path = buildPath(blueprint);
    if (!blueprint.instance) {
        result->ft->returnObjectPath(result, path);
        return;
    }
    const CMPIBroker *broker = cmpihost::broker();
    CMPIInstance *instance = broker->eft->newInstance(broker, path, nullptr);
    for (const ValueBlueprint &property : blueprint.properties) {
        CMPIValue holder{};
        CMPIType type;
        const CMPIValue *value = valueOf(property, &holder, &type);
        instance->ft->setProperty(instance, property.name.c_str(), value, type);
    }
    result->ft->returnInstance(result, instance);
}

// ---- Sample objects ------------------------------------------------------------------

// Paths of the objects the single-object operations work on, kept in the
// host's process arena for the whole run.
struct Samples {
    int vsan = 0;
    std::string zone_set_id, zone_id, alias_id, member_id;
    const CMPIObjectPath *zone_service = nullptr;
    const CMPIObjectPath *zone_set = nullptr;
    const CMPIObjectPath *zone = nullptr;
    const CMPIObjectPath *alias = nullptr;
    const CMPIObjectPath *member = nullptr;
    const CMPIObjectPath *device_alias = nullptr;
    const CMPIObjectPath *hosted_service = nullptr;
    const CMPIObjectPath *member_of_collection = nullptr;
    const CMPIObjectPath *element_setting_data = nullptr;
    const CMPIObjectPath *hosted_collection = nullptr;
    // Made once for the methods: a zone in no zone set, an alias in no zone.
    int spare_zone = 0;
    int spare_alias = 0;
};

Blueprint keyedBlueprint(const char *cls,
                         const std::vector<std::pair<const char *, std::string>> &keys) {
    Blueprint blueprint;
    blueprint.ns = kNamespace;
    blueprint.cls = cls;
    for (const auto &[name, value] : keys) {
        ValueBlueprint key;
        key.name = name;
        key.type = CMPI_string;
        key.text = value;
        blueprint.keys.push_back(std::move(key));
    }
    return blueprint;
}

const CMPIObjectPath *instanceIdPath(const char *cls, const std::string &id) {
    return buildPath(keyedBlueprint(cls, {{"InstanceID", id}}));
}

// The first path of that class among the reference names of source.
const CMPIObjectPath *firstReference(const CMPIObjectPath *source, const char *cls) {
    std::shared_ptr<Blueprint> found;
    {
        cmpihost::Request request;
        provider().referenceNames(request, source, nullptr, nullptr);
        for (const std::shared_ptr<Blueprint> &blueprint : captureDeliveries(request)) {
            if (strcasecmp(blueprint->cls.c_str(), cls) == 0) {
                found = blueprint;
                break;
            }
        }
    }
    // Built again once the request is gone: the process arena keeps it.
    return found ? buildPath(*found) : nullptr;
}

std::string wwnText(const unsigned char *wwn) {
    char text[32];
    std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x:%02x:%02x", wwn[0], wwn[1],
                  wwn[2], wwn[3], wwn[4], wwn[5], wwn[6], wwn[7]);
    return text;
}

const Samples &samples(int size) {
    static Samples found[kSizeCount];
    Samples &s = found[size];
    if (s.vsan != 0) return s;
    s.vsan = lastVsan(size);
    const std::string vsan = std::to_string(s.vsan);
    s.zone_set_id = firstId<ZoneSetRecord>(zs_cim_get_all_non_active_zone_sets, s.vsan);
    s.zone_id = firstId<ZoneRecord>(zs_cim_get_all_non_active_zones, s.vsan);
    s.alias_id = firstId<ZoneAliasRecord>(zs_cim_get_all_non_active_zone_aliases, s.vsan);
    s.member_id = memberInZones(s.vsan, 2);
    s.zone_service =
        buildPath(keyedBlueprint("VORNA_ZoneService", {{"SystemCreationClassName", "VORNA_Vsan"},
                                                       {"SystemName", vsan},
                                                       {"CreationClassName", "VORNA_ZoneService"},
                                                       {"Name", vsan}}));
    s.zone_set = instanceIdPath("VORNA_ZoneSet", s.zone_set_id);
    s.zone = instanceIdPath("VORNA_Zone", s.zone_id);
    s.alias = instanceIdPath("VORNA_ZoneAlias", s.alias_id);
    s.member = instanceIdPath("VORNA_ZoneMemberSettingData", s.member_id);
    s.device_alias = instanceIdPath("VORNA_DeviceAlias", wwnText(lastDeviceAlias().pwwn));
    s.hosted_service = firstReference(s.zone_service, "VORNA_HostedService");
    s.member_of_collection = firstReference(s.zone_set, "VORNA_ZoneMemberOfCollection");
    s.element_setting_data = firstReference(s.zone, "VORNA_ElementSettingData");
    s.hosted_collection = firstReference(s.zone_set, "VORNA_ZoneHostedCollection");
    s.spare_zone = createObject(s.vsan, ZP_OBJECT_ZONE, "bench_spare_zone");
    s.spare_alias = createObject(s.vsan, ZP_OBJECT_ZONE_ALIAS, "bench_spare_alias");
    return s;
}

// ---- Read operations and their floors ---------------------------------------------

using ReadOperation = std::function<cmpihost::Status(cmpihost::Request &, const Samples &)>;

// The objects an operation delivered, written down once per benchmark (the
// benchmark library calls a benchmark several times) and dropped before any
// other benchmark runs. They are written down on a thread of their own, so
// that their blocks come from another heap of the C library's than the one
// of the thread that times: tens of thousands of small blocks kept alive
// between the blocks that requests free slowed down every request made
// while they lived, the operation's more than its floor's.
struct FloorCache {
    std::string name;
    std::vector<std::shared_ptr<Blueprint>> blueprints;
};

FloorCache &floorCache() {
    static FloorCache cache;
    return cache;
}

void dropFloorCache() {
    floorCache() = FloorCache{};
}

const std::vector<std::shared_ptr<Blueprint>> &floorBlueprints(const std::string &name, int size,
                                                               const ReadOperation &op) {
    FloorCache &cache = floorCache();
    if (cache.name != name) {
        dropFloorCache();
        const Samples &s = samples(size);  // made outside any request
        std::thread writer([&] {
            cmpihost::Request request;
            op(request, s);
            cache.blueprints = captureDeliveries(request);
        });
        writer.join();
        cache.name = name;
    }
    return cache.blueprints;
}

// One run of the operation in a request of its own; the objects it handed
// back. (Kept out of line, as is floorOnce, so that a profiler can single
// out one run.)
[[gnu::noinline]] double operationOnce(benchmark::State &state, const ReadOperation &op,
                                       const Samples &s) {
    cmpihost::Request request;
    const cmpihost::Status status = op(request, s);
    if (status.rc != CMPI_RC_OK) state.SkipWithError(cmpihost::describe(status).c_str());
    return static_cast<double>(request.deliveries().size());
}

// The same objects made and handed back by the host alone.
[[gnu::noinline]] double floorOnce(const std::vector<std::shared_ptr<Blueprint>> &blueprints) {
    cmpihost::Request request;
    for (const std::shared_ptr<Blueprint> &blueprint : blueprints)
        buildAndReturn(*blueprint, request.result());
    return static_cast<double>(request.deliveries().size());
}

// The operation and its floor, timed in turns.
void read(int size, const std::string &operation, Scaling scaling, ReadOperation op) {
    const Entry entry{operation, size, scaling};
    const std::string name = benchmarkName(entry);
    add(entry, [size, op, name](benchmark::State &state) {
        const std::vector<std::shared_ptr<Blueprint>> &blueprints = floorBlueprints(name, size, op);
        const Samples &s = samples(size);
        timeAgainstFloor(
            state, [&] { return operationOnce(state, op, s); },
            [&] { return floorOnce(blueprints); });
    })->UseManualTime();
}

CMPIObjectPath *classPath(cmpihost::Request &request, const char *cls) {
    return request.newObjectPath(kNamespace, cls);
}

// Every class with instances (VORNA_HostedCollection is served but empty).
constexpr const char *kEnumeratedClasses[] = {
    "VORNA_ZoneService",
    "VORNA_HostedService",
    "VORNA_ZoneSet",
    "VORNA_Zone",
    "VORNA_ZoneAlias",
    "VORNA_ZoneMemberSettingData",
    "VORNA_DeviceAlias",
    "VORNA_ZoneMemberOfCollection",
    "VORNA_ElementSettingData",
    "VORNA_ZoneHostedCollection",
};

struct SampleOf {
    const char *cls;
    const CMPIObjectPath *Samples::*path;
};

constexpr SampleOf kInstanceSamples[] = {
    {"VORNA_ZoneService", &Samples::zone_service},
    {"VORNA_HostedService", &Samples::hosted_service},
    {"VORNA_ZoneSet", &Samples::zone_set},
    {"VORNA_Zone", &Samples::zone},
    {"VORNA_ZoneAlias", &Samples::alias},
    {"VORNA_ZoneMemberSettingData", &Samples::member},
    {"VORNA_DeviceAlias", &Samples::device_alias},
    {"VORNA_ZoneMemberOfCollection", &Samples::member_of_collection},
    {"VORNA_ElementSettingData", &Samples::element_setting_data},
    {"VORNA_ZoneHostedCollection", &Samples::hosted_collection},
};

constexpr SampleOf kAssociationSources[] = {
    {"VORNA_ZoneService", &Samples::zone_service},
    {"VORNA_ZoneSet", &Samples::zone_set},
    {"VORNA_Zone", &Samples::zone},
    {"VORNA_ZoneAlias", &Samples::alias},
    {"VORNA_ZoneMemberSettingData", &Samples::member},
};

void registerReads(int size) {
    for (const char *cls : kEnumeratedClasses) {
        read(size, std::string("enumInstanceNames ") + cls, Scaling::Linear,
             [cls](cmpihost::Request &r, const Samples &) {
                 return provider().enumInstanceNames(r, classPath(r, cls));
             });
        read(size, std::string("enumInstances ") + cls, Scaling::Linear,
             [cls](cmpihost::Request &r, const Samples &) {
                 return provider().enumInstances(r, classPath(r, cls), nullptr);
             });
    }
    for (const SampleOf &sample : kInstanceSamples) {
        read(size, std::string("getInstance ") + sample.cls, Scaling::Flat,
             [sample](cmpihost::Request &r, const Samples &s) {
                 return provider().getInstance(r, s.*sample.path, nullptr);
             });
    }
    for (const SampleOf &source : kAssociationSources) {
        const std::string from = std::string(" from ") + source.cls;
        read(size, "associatorNames" + from, Scaling::Flat,
             [source](cmpihost::Request &r, const Samples &s) {
                 return provider().associatorNames(r, s.*source.path, nullptr, nullptr, nullptr,
                                                   nullptr);
             });
        read(size, "associators" + from, Scaling::Flat,
             [source](cmpihost::Request &r, const Samples &s) {
                 return provider().associators(r, s.*source.path, nullptr, nullptr, nullptr,
                                               nullptr, nullptr);
             });
        read(size, "referenceNames" + from, Scaling::Flat,
             [source](cmpihost::Request &r, const Samples &s) {
                 return provider().referenceNames(r, s.*source.path, nullptr, nullptr);
             });
        read(size, "references" + from, Scaling::Flat,
             [source](cmpihost::Request &r, const Samples &s) {
                 return provider().references(r, s.*source.path, nullptr, nullptr, nullptr);
             });
    }
}

// ---- Methods and deleteInstance --------------------------------------------------------

// What one measured change needs, made outside the measured time: the
// request that owns its arguments (made before, and gone after, the request
// of the operation itself).
struct Change {
    std::unique_ptr<cmpihost::Request> holder;
    const CMPIObjectPath *target = nullptr;
    CMPIArgs *in = nullptr;
    CMPIArgs *out = nullptr;
    std::string undo_id;  // what the undoing needs to know
};

using Prepare = std::function<void(Change &, const Samples &)>;
using Undo = std::function<void(Change &, const Samples &)>;

std::string outputInstanceId(const CMPIArgs *out, const char *name) {
    const CMPIData ref = out->ft->getArg(out, name, nullptr);
    if (ref.type != CMPI_ref || ref.value.ref == nullptr) return {};
    return cmpihost::dataText(ref.value.ref->ft->getKey(ref.value.ref, "InstanceID", nullptr));
}

void change(int size, const std::string &operation, Prepare prepare,
            std::function<cmpihost::Status(cmpihost::Request &, Change &)> op, Undo undo) {
    add(Entry{operation, size, Scaling::Flat}, [=](benchmark::State &state) {
        dropFloorCache();
        const Samples &s = samples(size);
        auto current = std::make_shared<Change>();
        std::string failure;
        timeStep(
            state,
            [&] {
                current->holder.reset();
                *current = Change{};
                current->holder = std::make_unique<cmpihost::Request>();
                prepare(*current, s);
            },
            [&] {
                cmpihost::Request request;
                const cmpihost::Status status = op(request, *current);
                const std::string text = cmpihost::returnedText(request);
                if (status.rc != CMPI_RC_OK)
                    failure = cmpihost::describe(status);
                else if (!text.empty() && text != "Success")
                    failure = "returned " + text;
                return failure.empty();
            },
            [&] {
                if (undo) undo(*current, s);
                current->holder.reset();
            });
        if (!failure.empty()) std::fprintf(stderr, "%s: %s\n", operation.c_str(), failure.c_str());
    })->UseManualTime();
}

cmpihost::Status invoke(cmpihost::Request &request, Change &c, const char *method) {
    return provider().invokeMethod(request, c.target, method, c.in, c.out);
}

void methodArgs(Change &c, const Samples &s) {
    c.target = s.zone_service;
    c.in = c.holder->newArgs();
    c.out = c.holder->newArgs();
}

CMPIValue uint16Value(CMPIUint16 n) {
    CMPIValue value{};
    value.uint16 = n;
    return value;
}

CMPIObjectPath *objectPath(Change &c, const char *cls, const std::string &id) {
    CMPIObjectPath *path = c.holder->newObjectPath(kNamespace, cls);
    cmpihost::addStringKey(path, "InstanceID", id);
    return path;
}

CMPIObjectPath *linkPath(Change &c, const char *cls, const char *first_key,
                         const CMPIObjectPath *first, const char *second_key,
                         const CMPIObjectPath *second) {
    CMPIObjectPath *path = c.holder->newObjectPath(kNamespace, cls);
    cmpihost::addReferenceKey(path, first_key, first);
    cmpihost::addReferenceKey(path, second_key, second);
    return path;
}

struct Creation {
    const char *method;
    const char *name_arg;
    int object_type;
    const char *output;
};

constexpr Creation kCreations[] = {
    {"CreateZoneSet", "ZoneSetName", ZP_OBJECT_ZONE_SET, "ZoneSet"},
    {"CreateZone", "ZoneName", ZP_OBJECT_ZONE, "Zone"},
    {"CreateZoneAlias", "CollectionAlias", ZP_OBJECT_ZONE_ALIAS, "ZoneAlias"},
};

void registerMethods(int size) {
    for (const Creation &creation : kCreations) {
        change(
            size, std::string("invokeMethod ") + creation.method,
            [creation](Change &c, const Samples &s) {
                methodArgs(c, s);
                cmpihost::addStringArg(c.in, creation.name_arg, uniqueName("bench_new_"));
                if (creation.object_type == ZP_OBJECT_ZONE) {
                    cmpihost::addValueArg(c.in, "ZoneType", uint16Value(2), CMPI_uint16);
                    cmpihost::addValueArg(c.in, "ZoneSubType", uint16Value(2), CMPI_uint16);
                }
            },
            [creation](cmpihost::Request &r, Change &c) { return invoke(r, c, creation.method); },
            [creation](Change &c, const Samples &s) {
                removeObject(s.vsan, creation.object_type,
                             numberOf(outputInstanceId(c.out, creation.output)));
            });
    }
    change(
        size, "invokeMethod CreateZoneMembershipSettingData",
        [](Change &c, const Samples &s) {
            methodArgs(c, s);
            c.undo_id = freshMemberId(s.vsan, 1);
            const std::string wwn = freshMemberWwn(1);
            cmpihost::addValueArg(c.in, "ConnectivityMemberType", uint16Value(2), CMPI_uint16);
            cmpihost::addStringArg(c.in, "ConnectivityMemberID", wwn);
            cmpihost::addReferenceArg(c.in, "SystemSpecificCollection",
                                      objectPath(c, "VORNA_Zone", objectId(s.vsan, s.spare_zone)));
        },
        [](cmpihost::Request &r, Change &c) {
            return invoke(r, c, "CreateZoneMembershipSettingData");
        },
        [](Change &c, const Samples &s) {
            changeMember(s.vsan, s.spare_zone, c.undo_id, ZP_OP_REMOVE);
        });
    change(
        size, "invokeMethod AddZone",
        [](Change &c, const Samples &s) {
            methodArgs(c, s);
            cmpihost::addReferenceArg(c.in, "ZoneSet", s.zone_set);
            cmpihost::addReferenceArg(c.in, "Zone",
                                      objectPath(c, "VORNA_Zone", objectId(s.vsan, s.spare_zone)));
        },
        [](cmpihost::Request &r, Change &c) { return invoke(r, c, "AddZone"); },
        [](Change &, const Samples &s) {
            changeLink(s.vsan, true, numberOf(s.zone_set_id), s.spare_zone, ZP_OP_REMOVE);
        });
    change(
        size, "invokeMethod AddZoneAlias",
        [](Change &c, const Samples &s) {
            methodArgs(c, s);
            cmpihost::addReferenceArg(c.in, "Zone", s.zone);
            cmpihost::addReferenceArg(
                c.in, "ZoneAlias",
                objectPath(c, "VORNA_ZoneAlias", objectId(s.vsan, s.spare_alias)));
        },
        [](cmpihost::Request &r, Change &c) { return invoke(r, c, "AddZoneAlias"); },
        [](Change &, const Samples &s) {
            changeLink(s.vsan, false, numberOf(s.zone_id), s.spare_alias, ZP_OP_REMOVE);
        });
    change(
        size, "invokeMethod AddZoneMembershipSettingData",
        [](Change &c, const Samples &s) {
            methodArgs(c, s);
            c.undo_id = freshMemberId(s.vsan, 2);
            cmpihost::addReferenceArg(c.in, "SystemSpecificCollection",
                                      objectPath(c, "VORNA_Zone", objectId(s.vsan, s.spare_zone)));
            cmpihost::addReferenceArg(c.in, "ZoneMembershipSettingData",
                                      objectPath(c, "VORNA_ZoneMemberSettingData", c.undo_id));
        },
        [](cmpihost::Request &r, Change &c) {
            return invoke(r, c, "AddZoneMembershipSettingData");
        },
        [](Change &c, const Samples &s) {
            changeMember(s.vsan, s.spare_zone, c.undo_id, ZP_OP_REMOVE);
        });
    change(
        size, "invokeMethod ActivateZoneSet",
        [](Change &c, const Samples &s) {
            methodArgs(c, s);
            cmpihost::addReferenceArg(c.in, "ZoneSet", s.zone_set);
            CMPIValue activate{};
            activate.boolean = 1;
            cmpihost::addValueArg(c.in, "Activate", activate, CMPI_boolean);
        },
        [](cmpihost::Request &r, Change &c) { return invoke(r, c, "ActivateZoneSet"); }, nullptr);
    change(
        size, "invokeMethod CreateDeviceAlias",
        [](Change &c, const Samples &s) {
            methodArgs(c, s);
            c.undo_id = uniqueName("bench_da_");
            cmpihost::addStringArg(c.in, "Name", c.undo_id);
            cmpihost::addStringArg(c.in, "PWWN", serialWwn(nextSerial()));
        },
        [](cmpihost::Request &r, Change &c) { return invoke(r, c, "CreateDeviceAlias"); },
        [](Change &c, const Samples &) { removeDeviceAlias(c.undo_id); });
    change(
        size, "invokeMethod RemoveDeviceAlias",
        [](Change &c, const Samples &s) {
            methodArgs(c, s);
            c.undo_id = uniqueName("bench_da_");
            createDeviceAlias(c.undo_id, nextSerial());
            cmpihost::addStringArg(c.in, "Name", c.undo_id);
        },
        [](cmpihost::Request &r, Change &c) { return invoke(r, c, "RemoveDeviceAlias"); }, nullptr);
}

void registerDeletes(int size) {
    for (const Creation &creation : kCreations) {
        const char *cls = creation.object_type == ZP_OBJECT_ZONE       ? "VORNA_Zone"
                          : creation.object_type == ZP_OBJECT_ZONE_SET ? "VORNA_ZoneSet"
                                                                       : "VORNA_ZoneAlias";
        change(
            size, std::string("deleteInstance ") + cls,
            [creation, cls](Change &c, const Samples &s) {
                const int number =
                    createObject(s.vsan, creation.object_type, uniqueName("bench_old_"));
                c.target = objectPath(c, cls, objectId(s.vsan, number));
            },
            [](cmpihost::Request &r, Change &c) { return provider().deleteInstance(r, c.target); },
            nullptr);
    }
    change(
        size, "deleteInstance VORNA_ZoneMemberSettingData",
        [](Change &c, const Samples &s) {
            const std::string member = freshMemberId(s.vsan, 3);
            changeMember(s.vsan, s.spare_zone, member, ZP_OP_ADD);
            c.target = objectPath(c, "VORNA_ZoneMemberSettingData", member);
        },
        [](cmpihost::Request &r, Change &c) { return provider().deleteInstance(r, c.target); },
        nullptr);
    change(
        size, "deleteInstance VORNA_ZoneMemberOfCollection",
        [](Change &c, const Samples &s) {
            changeLink(s.vsan, true, numberOf(s.zone_set_id), s.spare_zone, ZP_OP_ADD);
            c.target =
                linkPath(c, "VORNA_ZoneMemberOfCollection", "Collection", s.zone_set, "Member",
                         objectPath(c, "VORNA_Zone", objectId(s.vsan, s.spare_zone)));
        },
        [](cmpihost::Request &r, Change &c) { return provider().deleteInstance(r, c.target); },
        nullptr);
    change(
        size, "deleteInstance VORNA_ElementSettingData",
        [](Change &c, const Samples &s) {
            const std::string member = freshMemberId(s.vsan, 4);
            changeMember(s.vsan, s.spare_zone, member, ZP_OP_ADD);
            c.target =
                linkPath(c, "VORNA_ElementSettingData", "ManagedElement",
                         objectPath(c, "VORNA_Zone", objectId(s.vsan, s.spare_zone)), "SettingData",
                         objectPath(c, "VORNA_ZoneMemberSettingData", member));
        },
        [](cmpihost::Request &r, Change &c) { return provider().deleteInstance(r, c.target); },
        nullptr);
}

}  // namespace
}  // namespace zonebench

int main(int argc, char **argv) {
    return zonebench::runBenchmarks(argc, argv, [] {
        for (int size = 0; size < zonebench::kSizeCount; ++size) {
            zonebench::registerReads(size);
            zonebench::registerMethods(size);
            zonebench::registerDeletes(size);
        }
    });
}
