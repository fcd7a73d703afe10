// The instance side over the example fabric: every class enumerates the same
// objects by name and by instance, getInstance finds each of them again, and
// the association classes link exactly what the associations reach.
#include <nlohmann/json.hpp>

#include <fstream>
#include <set>

#include "switch_fixture.h"

namespace zonetest {
namespace {

using Pairs = std::multiset<std::pair<std::string, std::string>>;

std::string rendered(const CMPIData &value) {
    return value.type == CMPI_ref ? canonical(value.value.ref) : cmpihost::dataText(value);
}

class ReadSideTest : public SwitchTest {
  protected:
    // (source, far end) pairs reached by associatorNames from every object of
    // the source class through the association class.
    Pairs reached(const char *source_class, const char *assoc_class, const char *result_class) {
        Pairs pairs;
        cmpihost::Request listing;
        for (const CMPIObjectPath *source : paths_of(listing, source_class)) {
            cmpihost::Request request;
            QuietStdout quiet;
            provider().associatorNames(request, source, assoc_class, result_class, nullptr,
                                       nullptr);
            for (const std::string &far : delivered_paths(request))
                pairs.emplace(canonical(source), far);
        }
        return pairs;
    }

    // (parent, member) pairs of the instances of an association class.
    Pairs links(const char *assoc_class, const char *parent_key, const char *member_key) {
        cmpihost::Request request;
        Pairs pairs;
        for (const CMPIObjectPath *link : paths_of(request, assoc_class))
            pairs.emplace(reference_key(link, parent_key), reference_key(link, member_key));
        return pairs;
    }
};

TEST_F(ReadSideTest, EveryObjectIsListedByNameAndInstanceAndFoundAgain) {
    for (const char *cls : {"VORNA_ZoneService", "VORNA_HostedService", "VORNA_ZoneSet",
                            "VORNA_Zone", "VORNA_ZoneAlias", "VORNA_ZoneMemberSettingData",
                            "VORNA_DeviceAlias", "VORNA_ZoneMemberOfCollection",
                            "VORNA_ElementSettingData", "VORNA_ZoneHostedCollection"}) {
        SCOPED_TRACE(cls);
        const std::vector<std::string> names = names_of(cls);
        EXPECT_FALSE(names.empty());
        EXPECT_EQ(instance_paths_of(cls), names);

        cmpihost::Request listing;
        for (const CMPIObjectPath *path : paths_of(listing, cls)) {
            cmpihost::Request request;
            cmpihost::Status status;
            {
                QuietStdout quiet;
                status = provider().getInstance(request, path, nullptr);
            }
            ASSERT_EQ(status.rc, CMPI_RC_OK) << canonical(path) << " " << describe(status);
            ASSERT_EQ(request.deliveries().size(), 1u) << canonical(path);
            // The instance carries every key of the path it was asked for.
            const CMPIInstance *instance = request.deliveries().front().instance;
            ASSERT_NE(instance, nullptr);
            for (CMPICount i = 0; i < path->ft->getKeyCount(path, nullptr); ++i) {
                CMPIString *name = nullptr;
                const CMPIData key = path->ft->getKeyAt(path, i, &name, nullptr);
                const CMPIData property =
                    instance->ft->getProperty(instance, cmpihost::text(name).c_str(), nullptr);
                EXPECT_EQ(rendered(property), rendered(key))
                    << canonical(path) << " key " << cmpihost::text(name);
            }
        }
    }

    // One zone service per VSAN of the fabric but the reserved 4094.
    std::ifstream file(kExampleFabric);
    const nlohmann::json fabric = nlohmann::json::parse(file);
    std::set<std::string> vsans;
    for (const auto &vsan : fabric["vsans"])
        if (vsan["number"].get<int>() != 4094)
            vsans.insert(std::to_string(vsan["number"].get<int>()));
    std::set<std::string> served;
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
        QuietStdout quiet;
        const cmpihost::Status status = provider().getInstance(request, path, nullptr);
        EXPECT_EQ(status.rc, service ? CMPI_RC_ERR_FAILED : CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(status.message.value_or(""), service ? "could not find or construct instance"
                                                       : "Could not find or construct instance");
        EXPECT_TRUE(request.deliveries().empty());
    }

    // The VSANs are listed by name only; the hosted collections not at all.
    cmpihost::Request request;
    QuietStdout quiet;
    EXPECT_EQ(provider().enumInstances(request, class_path(request, "VORNA_Vsan"), nullptr).rc,
              CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(provider().enumInstanceNames(request, class_path(request, "VORNA_Vsan")).rc,
              CMPI_RC_OK);
    EXPECT_EQ(provider()
                  .enumInstances(request, class_path(request, "VORNA_HostedCollection"), nullptr)
                  .rc,
              CMPI_RC_OK);
    EXPECT_TRUE(request.deliveries().empty());
}

TEST_F(ReadSideTest, AssociationClassesLinkWhatTheAssociationsReach) {
    struct Reach {
        const char *source_class;
        const char *result_class;
    };
    struct Case {
        const char *assoc_class;
        const char *parent_key;
        const char *member_key;
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
        Pairs expected;
        for (const Reach &reach : c.reaches)
            for (const auto &[source, far] :
                 reached(reach.source_class, c.assoc_class, reach.result_class))
                expected.emplace(c.from_member ? far : source, c.from_member ? source : far);
        EXPECT_FALSE(expected.empty());
        EXPECT_EQ(links(c.assoc_class, c.parent_key, c.member_key), expected);
    }
}

}  // namespace
}  // namespace zonetest
