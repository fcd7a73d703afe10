// Associations over the example fabric: associatorNames and referenceNames
// reach the same far ends, and every association can be followed back to
// where it started.
#include <set>

#include "switch_fixture.h"

namespace zonetest {
namespace {

const char *const kSourceClasses[] = {"VORNA_ZoneService", "VORNA_ZoneSet", "VORNA_Zone",
                                      "VORNA_ZoneAlias", "VORNA_ZoneMemberSettingData"};

class AssociationConsistencyTest : public SwitchTest {
  protected:
    std::vector<const CMPIObjectPath *> objects_of(cmpihost::Request &request, const char *cls) {
        {
            QuietStdout quiet;
            provider().enumInstanceNames(request, class_path(request, cls));
        }
        std::vector<const CMPIObjectPath *> paths;
        for (const cmpihost::Delivery &d : request.deliveries()) paths.push_back(d.path);
        return paths;
    }

    std::multiset<std::string> associator_names(const CMPIObjectPath *source) {
        cmpihost::Request request;
        cmpihost::Status status;
        {
            QuietStdout quiet;
            status =
                provider().associatorNames(request, source, nullptr, nullptr, nullptr, nullptr);
        }
        EXPECT_EQ(status.rc, CMPI_RC_OK) << canonical(source);
        const std::vector<std::string> paths = delivered_paths(request);
        return {paths.begin(), paths.end()};
    }

    // The far end of each association path that referenceNames delivers:
    // the reference key that does not name the source.
    std::multiset<std::string> reference_far_ends(const CMPIObjectPath *source) {
        cmpihost::Request request;
        cmpihost::Status status;
        {
            QuietStdout quiet;
            status = provider().referenceNames(request, source, nullptr, nullptr);
        }
        EXPECT_EQ(status.rc, CMPI_RC_OK) << canonical(source);
        const std::string self = canonical(source);
        std::multiset<std::string> ends;
        for (const cmpihost::Delivery &d : request.deliveries()) {
            std::vector<std::string> others;
            const CMPICount count = d.path->ft->getKeyCount(d.path, nullptr);
            for (CMPICount i = 0; i < count; ++i) {
                const CMPIData key = d.path->ft->getKeyAt(d.path, i, nullptr, nullptr);
                if (key.type == CMPI_ref && canonical(key.value.ref) != self)
                    others.push_back(canonical(key.value.ref));
            }
            EXPECT_EQ(others.size(), 1u) << canonical(d.path);
            if (!others.empty()) ends.insert(others.front());
        }
        return ends;
    }
};

TEST_F(AssociationConsistencyTest, AssociatorNamesAndReferenceNamesReachTheSameObjects) {
    for (const char *cls : kSourceClasses) {
        cmpihost::Request listing;
        for (const CMPIObjectPath *source : objects_of(listing, cls))
            EXPECT_EQ(associator_names(source), reference_far_ends(source)) << canonical(source);
    }
}

TEST_F(AssociationConsistencyTest, EveryAssociationLeadsBackToItsSource) {
    for (const char *cls :
         {"VORNA_ZoneSet", "VORNA_Zone", "VORNA_ZoneAlias", "VORNA_ZoneMemberSettingData"}) {
        cmpihost::Request listing;
        for (const CMPIObjectPath *source : objects_of(listing, cls)) {
            cmpihost::Request request;
            {
                QuietStdout quiet;
                provider().associatorNames(request, source, nullptr, nullptr, nullptr, nullptr);
            }
            for (const cmpihost::Delivery &far : request.deliveries()) {
                const std::string far_class =
                    cmpihost::text(far.path->ft->getClassName(far.path, nullptr));
                if (far_class == "VORNA_Vsan") continue;  // never a source
                EXPECT_EQ(associator_names(far.path).count(canonical(source)), 1u)
                    << canonical(source) << " -> " << canonical(far.path);
            }
        }
    }
}

TEST_F(AssociationConsistencyTest, AssociatorsDeliverTheInstancesOfTheNamedObjects) {
    for (const char *cls : kSourceClasses) {
        cmpihost::Request listing;
        for (const CMPIObjectPath *source : objects_of(listing, cls)) {
            cmpihost::Request request;
            cmpihost::Status status;
            {
                QuietStdout quiet;
                status = provider().associators(request, source, nullptr, nullptr, nullptr, nullptr,
                                                nullptr);
            }
            EXPECT_EQ(status.rc, CMPI_RC_OK);
            EXPECT_EQ(request.doneCount(), 1);
            const std::vector<std::string> paths = delivered_paths(request);
            EXPECT_EQ(std::multiset<std::string>(paths.begin(), paths.end()),
                      associator_names(source))
                << canonical(source);
        }
    }
}

}  // namespace
}  // namespace zonetest
