// The zone service's one association: the VSAN hosting it, delivered as the
// VSAN or as the hosted-service link, by mode.
#include "association_test_support.h"

using ::testing::_;
using ::testing::Eq;
using ::testing::Field;
using ::testing::InSequence;
using ::testing::IsNull;
using ::testing::Pointee;
using ::testing::Return;
using ::testing::StrEq;
using ::testing::StrictMock;

using namespace assoc_test;

namespace {

// The helper is handed the queue and broker; they need not be the globals.
constexpr int kOwnQueue = 77;
const char *const kProps[] = {"Name", nullptr};
const char **props() {
    return const_cast<const char **>(kProps);
}
const char *shown(const char *s) {
    return s != nullptr ? s : "(null)";
}

class ZoneServiceAssoc : public ::testing::Test {
  protected:
    void SetUp() override { use_test_globals(); }
};

TEST_F(ZoneServiceAssoc, TheFilterAdmitsOnlyTheStandardHostedServiceName) {
    struct Case {
        const char *filter;
        bool served;
    };
    const Case cases[] = {
        {nullptr, true},
        {"", true},
        {"CIM_HostedService", true},
        {"cim_hostedservice", true},
        {"VORNA_HostedService", false},
        {"CIM_ZoneHostedCollection", false},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(shown(c.filter));
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        answer(EXPECT_CALL(
                   m, vsan_cim_get_vsanEntry(kOwnQueue, 1, Pointee(Field(&VsanEntry::vsan, 10)))),
               times(c.served), Return(0));
        answer(EXPECT_CALL(m, dm_cim_get_dmEntry(kOwnQueue, 10, 1, _)), times(c.served), Return(0));
        answer(EXPECT_CALL(m, vsan_fill_reference(StrEq("VORNA_Vsan"), StrEq(kNs),
                                                  Pointee(Field(&VsanEntry::vsan, 10)), _,
                                                  cmpihost::broker())),
               times(c.served), fixed_path(req, "Vsan"));
        EXPECT_EQ(get_zone_service_associator_reference_helper("10", ZONE_ASSOC_ASSOCIATOR_NAMES,
                                                               c.filter, req.result(), kNs, nullptr,
                                                               kOwnQueue, cmpihost::broker()),
                  0);
        EXPECT_EQ(delivered(req), c.served ? Labels{"path:Vsan"} : Labels{});
    }
}

TEST_F(ZoneServiceAssoc, EachModeBuildsItsOwnObjectFromBothEntries) {
    for (int mode = 0; mode <= 5; ++mode) {
        SCOPED_TRACE("mode " + std::to_string(mode));
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        InSequence order;
        EXPECT_CALL(m, vsan_cim_get_vsanEntry(kOwnQueue, 1, Pointee(Field(&VsanEntry::vsan, 10))))
            .WillOnce(Return(0));
        EXPECT_CALL(m, dm_cim_get_dmEntry(kOwnQueue, 10, 1, _)).WillOnce(Return(0));
        const auto vsan10 = Pointee(Field(&VsanEntry::vsan, 10));
        answer(EXPECT_CALL(m, vsan_build_instance(StrEq("VORNA_Vsan"), StrEq(kNs), vsan10, _,
                                                  Eq(kProps), cmpihost::broker())),
               times(mode == 1), fixed_instance(req, "Vsan"));
        answer(EXPECT_CALL(m, vsan_fill_reference(StrEq("VORNA_Vsan"), StrEq(kNs), vsan10, _,
                                                  cmpihost::broker())),
               times(mode == 2), fixed_path(req, "Vsan"));
        // The link instance is built without the request's property list.
        answer(
            EXPECT_CALL(m, hosted_service_build_instance(StrEq("VORNA_HostedService"), StrEq(kNs),
                                                         vsan10, _, IsNull(), cmpihost::broker())),
            times(mode == 3), fixed_instance(req, "Hosted"));
        answer(
            EXPECT_CALL(m, hosted_service_fill_reference(StrEq("VORNA_HostedService"), StrEq(kNs),
                                                         vsan10, _, cmpihost::broker())),
            times(mode == 4), fixed_path(req, "Hosted"));
        EXPECT_EQ(
            get_zone_service_associator_reference_helper("10", mode, nullptr, req.result(), kNs,
                                                         props(), kOwnQueue, cmpihost::broker()),
            0);
        const Labels expected[] = {
            {}, {"inst:Vsan"}, {"path:Vsan"}, {"inst:Hosted"}, {"path:Hosted"}, {}};
        EXPECT_EQ(delivered(req), expected[mode]);
    }
}

TEST_F(ZoneServiceAssoc, TheNameIsReadAsADecimalNumber) {
    struct Case {
        const char *name;
        int vsan;
    };
    const Case cases[] = {{"12abc", 12}, {"abc", 0}, {"  +42", 42}, {"-3", -3}, {"0010", 10}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        // An unknown VSAN: -1, and the domain manager is not asked.
        EXPECT_CALL(m,
                    vsan_cim_get_vsanEntry(kOwnQueue, 1, Pointee(Field(&VsanEntry::vsan, c.vsan))))
            .WillOnce(Return(1));
        EXPECT_EQ(get_zone_service_associator_reference_helper(c.name, ZONE_ASSOC_REFERENCE_NAMES,
                                                               nullptr, req.result(), kNs, nullptr,
                                                               kOwnQueue, cmpihost::broker()),
                  -1);
        EXPECT_TRUE(delivered(req).empty());
    }
}

TEST_F(ZoneServiceAssoc, AMissingDomainEntryDeliversNothingButIsNoFailure) {
    cmpihost::Request req;
    StrictMock<PlatformMock> m;
    InSequence order;
    EXPECT_CALL(m, vsan_cim_get_vsanEntry(kOwnQueue, 1, _)).WillOnce(Return(0));
    EXPECT_CALL(m, dm_cim_get_dmEntry(kOwnQueue, 10, 1, _)).WillOnce(Return(1));
    EXPECT_EQ(
        get_zone_service_associator_reference_helper("10", ZONE_ASSOC_REFERENCES, "", req.result(),
                                                     kNs, nullptr, kOwnQueue, cmpihost::broker()),
        0);
    EXPECT_TRUE(delivered(req).empty());
}

}  // namespace
