// Associations over the example fabric: however an association is asked for
// (associatorNames, associators, referenceNames) it reaches the same far
// ends, and every association can be followed back to where it started.
#include <set>

#include "switch_fixture.h"

namespace zonetest {
namespace {

class AssociationConsistencyTest : public SwitchTest {
  protected:
    // What associatorNames delivers into request, as canonical texts.
    std::multiset<std::string> associator_names(const CMPIObjectPath *source,
                                                cmpihost::Request &request) {
        QuietStdout quiet;
        const cmpihost::Status status =
            provider().associatorNames(request, source, nullptr, nullptr, nullptr, nullptr);
        EXPECT_EQ(status.rc, CMPI_RC_OK) << canonical(source);
        const std::vector<std::string> paths = delivered_paths(request);
        return {paths.begin(), paths.end()};
    }

    std::multiset<std::string> associator_instances(const CMPIObjectPath *source) {
        cmpihost::Request request;
        QuietStdout quiet;
        const cmpihost::Status status =
            provider().associators(request, source, nullptr, nullptr, nullptr, nullptr, nullptr);
        EXPECT_EQ(status.rc, CMPI_RC_OK) << canonical(source);
        EXPECT_EQ(request.doneCount(), 1) << canonical(source);
        const std::vector<std::string> paths = delivered_paths(request);
        return {paths.begin(), paths.end()};
    }

    // The far end of each association path that referenceNames delivers:
    // the reference key that does not name the source.
    std::multiset<std::string> reference_far_ends(const CMPIObjectPath *source) {
        cmpihost::Request request;
        QuietStdout quiet;
        const cmpihost::Status status =
            provider().referenceNames(request, source, nullptr, nullptr);
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

TEST_F(AssociationConsistencyTest, EveryWayOfAskingReachesTheSameObjectsAndLeadsBack) {
    for (const char *cls : {"VORNA_ZoneService", "VORNA_ZoneSet", "VORNA_Zone", "VORNA_ZoneAlias",
                            "VORNA_ZoneMemberSettingData"}) {
        cmpihost::Request listing;
        for (const CMPIObjectPath *source : paths_of(listing, cls)) {
            const std::string self = canonical(source);
            SCOPED_TRACE(self);
            cmpihost::Request request;
            const std::multiset<std::string> names = associator_names(source, request);
            EXPECT_EQ(reference_far_ends(source), names);
            EXPECT_EQ(associator_instances(source), names);
            // Back from every far end but the VSANs, which are never a source.
            for (const cmpihost::Delivery &far : request.deliveries()) {
                if (cmpihost::text(far.path->ft->getClassName(far.path, nullptr)) == "VORNA_Vsan")
                    continue;
                cmpihost::Request back;
                EXPECT_EQ(associator_names(far.path, back).count(self), 1u)
                    << "back from " << canonical(far.path);
            }
        }
    }
}

}  // namespace
}  // namespace zonetest
