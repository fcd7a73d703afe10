// The instance side over the example fabric: every class enumerates the same
// objects by name and by instance, getInstance finds each of them again, and
// the association classes link exactly what the associations reach.
#include <nlohmann/json.hpp>

#include <fstream>
#include <set>

#include "switch_fixture.h"

namespace zonetest {
namespace {

const char *const kServedClasses[] = {
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

nlohmann::json example_fabric() {
    std::ifstream file(std::string(ZONE_SOURCE_DIR) + "/examples/fabric.json");
    return nlohmann::json::parse(file);
}

class ReadSideTest : public SwitchTest {};

std::string rendered(const CMPIData &value) {
    return value.type == CMPI_ref ? canonical(value.value.ref) : cmpihost::dataText(value);
}

TEST_F(ReadSideTest, NamesAndInstancesListTheSameObjectsInTheSameOrder) {
    for (const char *cls : kServedClasses) {
        const std::vector<std::string> names = names_of(cls);
        EXPECT_FALSE(names.empty()) << cls;
        EXPECT_EQ(instance_paths_of(cls), names) << cls;
    }
}

TEST_F(ReadSideTest, ZoneServicesAreOnePerVsanOfTheFabric) {
    const nlohmann::json fabric = example_fabric();
    std::set<std::string> expected;
    for (const auto &vsan : fabric["vsans"])
        if (vsan["number"].get<int>() != 4094)
            expected.insert(std::to_string(vsan["number"].get<int>()));

    std::set<std::string> served;
    cmpihost::Request request;
    {
        QuietStdout quiet;
        provider().enumInstanceNames(request, class_path(request, "VORNA_ZoneService"));
    }
    for (const cmpihost::Delivery &d : request.deliveries()) {
        const CMPIData name = d.path->ft->getKey(d.path, "Name", nullptr);
        served.insert(cmpihost::dataText(name));
    }
    EXPECT_EQ(served, expected);
}

TEST_F(ReadSideTest, GetInstanceFindsEveryEnumeratedObjectAgain) {
    for (const char *cls : kServedClasses) {
        cmpihost::Request listing;
        {
            QuietStdout quiet;
            provider().enumInstanceNames(listing, class_path(listing, cls));
        }
        for (const cmpihost::Delivery &d : listing.deliveries()) {
            cmpihost::Request request;
            cmpihost::Status status;
            {
                QuietStdout quiet;
                status = provider().getInstance(request, d.path, nullptr);
            }
            ASSERT_EQ(status.rc, CMPI_RC_OK)
                << canonical(d.path) << " " << cmpihost::describe(status);
            ASSERT_EQ(request.deliveries().size(), 1u) << canonical(d.path);
            // The instance carries every key of the path it was asked for.
            const CMPIInstance *instance = request.deliveries().front().instance;
            ASSERT_NE(instance, nullptr);
            const CMPICount keys = d.path->ft->getKeyCount(d.path, nullptr);
            for (CMPICount i = 0; i < keys; ++i) {
                CMPIString *name = nullptr;
                const CMPIData key = d.path->ft->getKeyAt(d.path, i, &name, nullptr);
                const CMPIData property =
                    instance->ft->getProperty(instance, cmpihost::text(name).c_str(), nullptr);
                EXPECT_EQ(rendered(property), rendered(key))
                    << canonical(d.path) << " key " << cmpihost::text(name);
            }
        }
    }
}

TEST_F(ReadSideTest, UnknownObjectsAreNotFound) {
    const char *const zoning_classes[] = {"VORNA_ZoneSet", "VORNA_Zone", "VORNA_ZoneAlias",
                                          "VORNA_ZoneMemberSettingData"};
    for (const char *cls : zoning_classes) {
        cmpihost::Request request;
        CMPIObjectPath *path = class_path(request, cls);
        cmpihost::addStringKey(path, "InstanceID", "77^123456^0");
        cmpihost::Status status;
        {
            QuietStdout quiet;
            status = provider().getInstance(request, path, nullptr);
        }
        EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND) << cls;
        EXPECT_EQ(status.message.value_or(""), "Could not find or construct instance") << cls;
        EXPECT_TRUE(request.deliveries().empty()) << cls;
    }
    cmpihost::Request request;
    CMPIObjectPath *service = class_path(request, "VORNA_ZoneService");
    cmpihost::addStringKey(service, "Name", "4000");
    QuietStdout quiet;
    const cmpihost::Status status = provider().getInstance(request, service, nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(status.message.value_or(""), "could not find or construct instance");
}

TEST_F(ReadSideTest, UnservedClassesAreRefusedAndHostedCollectionIsEmpty) {
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

class AssociationClassTest : public SwitchTest {
  protected:
    // (source, far end) pairs reached by associatorNames from every object of
    // the source class through the association class.
    std::multiset<std::pair<std::string, std::string>> reached(const char *source_class,
                                                               const char *assoc_class,
                                                               const char *result_class) {
        std::multiset<std::pair<std::string, std::string>> pairs;
        cmpihost::Request listing;
        {
            QuietStdout quiet;
            provider().enumInstanceNames(listing, class_path(listing, source_class));
        }
        for (const cmpihost::Delivery &d : listing.deliveries()) {
            cmpihost::Request request;
            {
                QuietStdout quiet;
                provider().associatorNames(request, d.path, assoc_class, result_class, nullptr,
                                           nullptr);
            }
            for (const std::string &far : delivered_paths(request))
                pairs.emplace(canonical(d.path), far);
        }
        return pairs;
    }

    std::multiset<std::pair<std::string, std::string>> links(const char *assoc_class,
                                                             const char *parent_key,
                                                             const char *member_key) {
        cmpihost::Request request;
        {
            QuietStdout quiet;
            provider().enumInstanceNames(request, class_path(request, assoc_class));
        }
        std::multiset<std::pair<std::string, std::string>> pairs;
        for (const cmpihost::Delivery &d : request.deliveries())
            pairs.emplace(reference_key(d.path, parent_key), reference_key(d.path, member_key));
        return pairs;
    }
};

TEST_F(AssociationClassTest, ElementSettingDataLinksWhatZonesAndAliasesReach) {
    auto expected = reached("VORNA_Zone", "VORNA_ElementSettingData", nullptr);
    for (const auto &pair : reached("VORNA_ZoneAlias", "VORNA_ElementSettingData", nullptr))
        expected.insert(pair);
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(links("VORNA_ElementSettingData", "ManagedElement", "SettingData"), expected);
}

TEST_F(AssociationClassTest, MemberOfCollectionLinksZoneSetsToZonesAndZonesToAliases) {
    auto expected = reached("VORNA_ZoneSet", "VORNA_ZoneMemberOfCollection", nullptr);
    for (const auto &pair :
         reached("VORNA_Zone", "VORNA_ZoneMemberOfCollection", "VORNA_ZoneAlias"))
        expected.insert(pair);
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(links("VORNA_ZoneMemberOfCollection", "Collection", "Member"), expected);
}

TEST_F(AssociationClassTest, HostedCollectionsLinkEveryCollectionToItsVsan) {
    // Reached from the collections, so the pairs come out as (collection, VSAN).
    std::multiset<std::pair<std::string, std::string>> expected;
    for (const char *cls : {"VORNA_ZoneSet", "VORNA_Zone", "VORNA_ZoneAlias"})
        for (const auto &[collection, vsan] : reached(cls, "VORNA_ZoneHostedCollection", nullptr))
            expected.emplace(vsan, collection);
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(links("VORNA_ZoneHostedCollection", "Antecedent", "Dependent"), expected);
}

}  // namespace
}  // namespace zonetest
