// The read side over the example fabric, in-process: every class enumerates
// the same objects by name and by instance, getInstance finds each of them
// again and refuses what the switch doesn't have; however an association is
// asked for (associatorNames, associators, referenceNames, the association
// class's own instances) it reaches the same far ends, and every association
// can be followed back to where it started.
#include <nlohmann/json.hpp>

#include <fstream>
#include <set>

#include "switch_fixture.h"

namespace zonetest {
namespace {

using Texts = std::multiset<std::string>;
using Pairs = std::multiset<std::pair<std::string, std::string>>;

std::string rendered(const CMPIData &value) {
    return value.type == CMPI_ref ? canonical(value.value.ref) : cmpihost::dataText(value);
}

class ReadSideTest : public SwitchTest {
  protected:
    // An association operation on source, in request; what it delivered as
    // canonical paths (an instance by its own path).
    template <typename Operation>
    Texts delivered(cmpihost::Request &request, const CMPIObjectPath *source, Operation operation) {
        EXPECT_EQ(quietly([&] { return operation(request); }).rc, CMPI_RC_OK) << canonical(source);
        const std::vector<std::string> paths = delivered_paths(request);
        return {paths.begin(), paths.end()};
    }
    Texts associator_names(cmpihost::Request &request, const CMPIObjectPath *source,
                           const char *assoc_class = nullptr, const char *result_class = nullptr) {
        return delivered(request, source, [&](cmpihost::Request &r) {
            return provider().associatorNames(r, source, assoc_class, result_class, nullptr,
                                              nullptr);
        });
    }

    // The far end of each association path that referenceNames delivers:
    // the one reference key that does not name the source.
    Texts reference_far_ends(const CMPIObjectPath *source) {
        cmpihost::Request request;
        delivered(request, source, [&](cmpihost::Request &r) {
            return provider().referenceNames(r, source, nullptr, nullptr);
        });
        Texts ends;
        for (const cmpihost::Delivery &d : request.deliveries()) {
            std::vector<std::string> others;
            for (CMPICount i = 0; i < d.path->ft->getKeyCount(d.path, nullptr); ++i) {
                const CMPIData key = d.path->ft->getKeyAt(d.path, i, nullptr, nullptr);
                if (key.type == CMPI_ref && canonical(key.value.ref) != canonical(source))
                    others.push_back(canonical(key.value.ref));
            }
            EXPECT_EQ(others.size(), 1u) << canonical(d.path);
            ends.insert(others.begin(), others.end());
        }
        return ends;
    }
};

TEST_F(ReadSideTest, EveryObjectIsListedByNameAndInstanceAndFoundAgain) {
    for (const std::string &cls : kInstanceClasses) {
        if (cls == "VORNA_HostedCollection") continue;  // never holds an instance
        SCOPED_TRACE(cls);
        const std::vector<std::string> names = names_of(cls);
        EXPECT_FALSE(names.empty());
        EXPECT_EQ(instance_paths_of(cls), names);

        cmpihost::Request listing;
        for (const CMPIObjectPath *path : paths_of(listing, cls)) {
            cmpihost::Request request;
            const cmpihost::Status status =
                quietly([&] { return provider().getInstance(request, path, nullptr); });
            ASSERT_EQ(status.rc, CMPI_RC_OK) << canonical(path) << " " << describe(status);
            ASSERT_EQ(request.deliveries().size(), 1u) << canonical(path);
            // The instance carries every key of the path it was asked for.
            const CMPIInstance *instance = request.deliveries().front().instance;
            ASSERT_NE(instance, nullptr);
            for (CMPICount i = 0; i < path->ft->getKeyCount(path, nullptr); ++i) {
                CMPIString *name = nullptr;
                const CMPIData key = path->ft->getKeyAt(path, i, &name, nullptr);
                EXPECT_EQ(rendered(instance->ft->getProperty(instance, cmpihost::text(name).c_str(),
                                                             nullptr)),
                          rendered(key))
                    << canonical(path) << " key " << cmpihost::text(name);
            }
        }
    }

    // One zone service per VSAN of the fabric but the reserved 4094.
    const nlohmann::json fabric = nlohmann::json::parse(std::ifstream(kExampleFabric));
    std::set<std::string> vsans, served;
    for (const auto &vsan : fabric["vsans"])
        if (vsan["number"].get<int>() != 4094)
            vsans.insert(std::to_string(vsan["number"].get<int>()));
    cmpihost::Request request;
    for (const CMPIObjectPath *service : paths_of(request, "VORNA_ZoneService"))
        served.insert(cmpihost::dataText(service->ft->getKey(service, "Name", nullptr)));
    EXPECT_EQ(served, vsans);
}

TEST_F(ReadSideTest, UnknownObjectsAndUnservedClassesAreRefused) {
    // The zoning objects answer not found, the zone service failed.
    for (const char *cls : {"VORNA_ZoneSet", "VORNA_Zone", "VORNA_ZoneAlias",
                            "VORNA_ZoneMemberSettingData", "VORNA_ZoneService"}) {
        SCOPED_TRACE(cls);
        const bool service = std::string(cls) == "VORNA_ZoneService";
        cmpihost::Request request;
        CMPIObjectPath *path = class_path(request, cls);
        cmpihost::addStringKey(path, service ? "Name" : "InstanceID",
                               service ? "4000" : "77^123456^0");
        const cmpihost::Status status =
            quietly([&] { return provider().getInstance(request, path, nullptr); });
        EXPECT_EQ(status.rc, service ? CMPI_RC_ERR_FAILED : CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(status.message.value_or(""), service ? "could not find or construct instance"
                                                       : "Could not find or construct instance");
        EXPECT_TRUE(request.deliveries().empty());
    }

    // The VSANs are listed by name only; the hosted collections not at all.
    cmpihost::Request request;
    auto enumerate = [&](const char *cls, bool names) {
        CMPIObjectPath *path = class_path(request, cls);
        return quietly([&] {
                   return names ? provider().enumInstanceNames(request, path)
                                : provider().enumInstances(request, path, nullptr);
               })
            .rc;
    };
    EXPECT_EQ(enumerate("VORNA_Vsan", false), CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(enumerate("VORNA_Vsan", true), CMPI_RC_OK);
    EXPECT_EQ(enumerate("VORNA_HostedCollection", false), CMPI_RC_OK);
    EXPECT_TRUE(request.deliveries().empty());
}

TEST_F(ReadSideTest, EveryWayOfAskingForAnAssociationReachesTheSameObjectsAndLeadsBack) {
    for (const char *cls : {"VORNA_ZoneService", "VORNA_ZoneSet", "VORNA_Zone", "VORNA_ZoneAlias",
                            "VORNA_ZoneMemberSettingData"}) {
        cmpihost::Request listing;
        for (const CMPIObjectPath *source : paths_of(listing, cls)) {
            const std::string self = canonical(source);
            SCOPED_TRACE(self);
            cmpihost::Request request, instances;
            const Texts names = associator_names(request, source);
            EXPECT_EQ(reference_far_ends(source), names);
            EXPECT_EQ(delivered(instances, source,
                                [&](cmpihost::Request &r) {
                                    return provider().associators(r, source, nullptr, nullptr,
                                                                  nullptr, nullptr, nullptr);
                                }),
                      names);
            EXPECT_EQ(instances.doneCount(), 1);
            // Back from every far end but the VSANs, which are never a source.
            for (const cmpihost::Delivery &far : request.deliveries()) {
                if (cmpihost::text(far.path->ft->getClassName(far.path, nullptr)) == "VORNA_Vsan")
                    continue;
                cmpihost::Request back;
                EXPECT_EQ(associator_names(back, far.path).count(self), 1u)
                    << "back from " << canonical(far.path);
            }
        }
    }
}

TEST_F(ReadSideTest, AssociationClassesLinkWhatTheAssociationsReach) {
    struct Reach {
        const char *source_class;
        const char *result_class;
    };
    struct Case {
        const char *assoc_class, *parent_key, *member_key;
        std::vector<Reach> reaches;
        bool from_member;  // the associations are followed from the member's side
    };
    const Case cases[] = {
        {"VORNA_ElementSettingData",
         "ManagedElement",
         "SettingData",
         {{"VORNA_Zone", nullptr}, {"VORNA_ZoneAlias", nullptr}},
         false},
        {"VORNA_ZoneMemberOfCollection",
         "Collection",
         "Member",
         {{"VORNA_ZoneSet", nullptr}, {"VORNA_Zone", "VORNA_ZoneAlias"}},
         false},
        // Every collection is hosted by its VSAN.
        {"VORNA_ZoneHostedCollection",
         "Antecedent",
         "Dependent",
         {{"VORNA_ZoneSet", nullptr}, {"VORNA_Zone", nullptr}, {"VORNA_ZoneAlias", nullptr}},
         true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.assoc_class);
        // (parent, member) pairs reached from every object of the source classes...
        Pairs expected;
        for (const Reach &reach : c.reaches) {
            cmpihost::Request listing;
            for (const CMPIObjectPath *source : paths_of(listing, reach.source_class)) {
                cmpihost::Request request;
                for (const std::string &far :
                     associator_names(request, source, c.assoc_class, reach.result_class))
                    expected.emplace(c.from_member ? far : canonical(source),
                                     c.from_member ? canonical(source) : far);
            }
        }
        EXPECT_FALSE(expected.empty());
        // ...are the instances of the association class.
        Pairs links;
        cmpihost::Request request;
        for (const CMPIObjectPath *link : paths_of(request, c.assoc_class))
            links.emplace(reference_key(link, c.parent_key), reference_key(link, c.member_key));
        EXPECT_EQ(links, expected);
    }
}

}  // namespace
}  // namespace zonetest
