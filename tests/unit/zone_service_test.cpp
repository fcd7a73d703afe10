// Zone service and hosted service: one of each per VSAN of the table except
// 4094, and the zone service fetched by its decimal "Name". (The hosted
// service rebuilt from a request's path is tested with the other links.)
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "read_side_support.h"

namespace {

using readside::kNamespace;
using readside::kQueue;
using testing::_;
using testing::InSequence;
using testing::Return;
using testing::StrEq;

// The VSAN table as vsan_cim_get_all_vsanEntry hands it back; each entry's
// first description byte repeats its number.
auto hand_back_table(std::vector<int> vsans) {
    return [vsans](int, int *count, VsanEntry **entries) {
        EXPECT_EQ(*entries, nullptr);
        *count = static_cast<int>(vsans.size());
        *entries = static_cast<VsanEntry *>(
            std::calloc(vsans.empty() ? 1 : vsans.size(), sizeof(VsanEntry)));
        for (std::size_t i = 0; i < vsans.size(); ++i) {
            (*entries)[i].vsan = vsans[i];
            (*entries)[i].description[0] = static_cast<unsigned char>(vsans[i]);
        }
        return 0;
    };
}

const CMPIBroker *broker() {
    return cmpihost::broker();
}

using ZoneServiceTest = readside::ReadSideTest;

// Every listing gives the zone services of VSANs 10 and 1 in table order,
// never 4094. The builders get the literal class name whatever the request
// wrote; mode 1 makes instances, any other mode names; the wrappers pass no
// property list.
TEST_F(ZoneServiceTest, OneServicePerVsanExcept4094InTableOrder) {
    const char *props[] = {"Name", nullptr};
    const CMPIBroker *b = broker();
    // The mode of the helper, or of the wrapper that calls it.
    for (const auto &[mode, wrapper] :
         {std::pair{0, false}, {1, false}, {2, false}, {0, true}, {1, true}}) {
        SCOPED_TRACE(std::string(wrapper ? "wrapper" : "helper") + " mode " + std::to_string(mode));
        const bool instances = mode == 1;
        EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _))
            .WillOnce(hand_back_table({10, 4094, 1}));
        cmpihost::Request each;
        readside::LabelledObjects seen(each);
        InSequence order;
        for (int vsan : {10, 1}) {
            const std::string label = "zs" + std::to_string(vsan);
            if (instances)
                EXPECT_CALL(platform, zone_service_build_instance(
                                          StrEq("VORNA_ZoneService"), StrEq(kNamespace), vsan,
                                          wrapper ? nullptr : props, kQueue, b))
                    .WillOnce(Return(seen.instance(label)));
            else
                EXPECT_CALL(platform, zone_service_fill_reference(StrEq("VORNA_ZoneService"),
                                                                  StrEq(kNamespace), vsan, b))
                    .WillOnce(Return(seen.path(label)));
        }
        const CMPIResult *result = each.result();
        EXPECT_EQ(!wrapper    ? get_zone_service_helper("vorna_zoneservice", mode, result, props,
                                                        kNamespace, kQueue, b)
                  : instances ? get_zone_service_all_instances("x", result, kNamespace, kQueue, b)
                              : get_zone_service_keys("x", result, kNamespace, kQueue, b),
                  0);
        EXPECT_EQ(seen.delivered(), (std::vector<std::string>{"zs10", "zs1"}));
        EXPECT_EQ(seen.kinds(), instances ? "II" : "PP");
        EXPECT_EQ(each.doneCount(), 0);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

// An unreadable table gives -1; a table of 4094 alone, an empty one (with
// or without an array) and a builder that makes nothing give nothing. Every
// array is released.
TEST_F(ZoneServiceTest, UnreadableOrReservedOnlyTablesAndMissingBuildsGiveNothing) {
    auto keys = [&] {
        return get_zone_service_keys("VORNA_ZoneService", request.result(), kNamespace, kQueue,
                                     broker());
    };
    EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _))
        .WillOnce(Return(5))
        .WillOnce(hand_back_table({4094}))
        .WillOnce(hand_back_table({}))
        .WillOnce([](int, int *count, VsanEntry **) {
            *count = 0;
            return 0;
        })
        .WillOnce(hand_back_table({7}));
    EXPECT_EQ(keys(), -1);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(keys(), 0);
    EXPECT_CALL(platform, zone_service_build_instance(_, _, 7, _, _, _)).WillOnce(Return(nullptr));
    get_zone_service_helper("VORNA_ZoneService", 1, request.result(), nullptr, kNamespace, kQueue,
                            broker());
    EXPECT_TRUE(request.deliveries().empty());
}

// The key is read as a decimal number, as strtol reads it; any VSAN the
// platform accepts is served, 4094 included. An unknown VSAN (-1) or a
// builder that makes nothing usable (0) is refused with FAILED.
TEST_F(ZoneServiceTest, RetrievalReadsTheVsanFromTheKeyAsDecimal) {
    enum class Built { Object, Null, NullHandle };
    struct Row {
        const char *key;
        int vsan;
        bool known = true;
        Built built = Built::Object;
        int returned = 0;
    };
    const Row rows[] = {{"10", 10},
                        {"10abc", 10},
                        {"  42", 42},
                        {"+7", 7},
                        {"0x10", 0},
                        {"4094", 4094},
                        {"", 0},
                        {"99", 99, false, Built::Null, -1},
                        {"99", 99, true, Built::Null},
                        {"99", 99, true, Built::NullHandle}};
    const char *props[] = {"Name", nullptr};
    for (const Row &row : rows) {
        SCOPED_TRACE(std::string(row.key) + (row.known ? "" : " unknown") +
                     (row.built == Built::Object ? "" : " built null"));
        cmpihost::Request each;
        InSequence order;
        EXPECT_CALL(platform, vsan_cim_check_vsan_index(row.vsan))
            .WillOnce(Return(row.known ? 0 : 1));
        if (row.known)
            EXPECT_CALL(platform,
                        zone_service_build_instance(StrEq("VORNA_ZoneService"), StrEq(kNamespace),
                                                    row.vsan, props, kQueue, broker()))
                .WillOnce(Return(row.built == Built::Object ? objects.instance(row.key)
                                 : row.built == Built::Null ? nullptr
                                                            : readside::hollow_instance()));
        CMPIStatus st{CMPI_RC_OK, nullptr};
        EXPECT_EQ(get_zone_service_instance("whatever", row.key, each.result(), props, kNamespace,
                                            kQueue, broker(), &st),
                  row.returned);
        const bool ok = row.built == Built::Object;
        EXPECT_EQ(st.rc, ok ? CMPI_RC_OK : CMPI_RC_ERR_FAILED);
        EXPECT_EQ(readside::message_of(st), ok ? "<none>" : "could not find or construct instance");
        EXPECT_EQ(each.deliveries().size(), ok ? 1u : 0u);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

// Hosted services come only for the VSANs the domain manager knows, in
// table order, never 4094; the builders get the whole table entry and the
// domain entry. An unreadable table gives -1.
TEST_F(ZoneServiceTest, HostedServicesOnlyForVsansTheDomainManagerKnows) {
    const char *props[] = {"Antecedent", nullptr};
    auto label = [](const VsanEntry *entry, const DomainEntry *domain) {
        EXPECT_NE(domain, nullptr);
        // The entry of the table itself, not a copy of its number.
        EXPECT_EQ(entry->description[0], static_cast<unsigned char>(entry->vsan));
        return "hs" + std::to_string(entry->vsan);
    };
    for (bool instances : {false, true}) {
        SCOPED_TRACE(instances ? "instances" : "names");
        EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _))
            .WillOnce(hand_back_table({1, 4094, 5, 7}));
        {
            InSequence order;
            EXPECT_CALL(platform, dm_cim_get_dmEntry(kQueue, 1, 1, _)).WillOnce(Return(0));
            EXPECT_CALL(platform, dm_cim_get_dmEntry(kQueue, 5, 1, _)).WillOnce(Return(1));
            EXPECT_CALL(platform, dm_cim_get_dmEntry(kQueue, 7, 1, _)).WillOnce(Return(0));
        }
        cmpihost::Request each;
        readside::LabelledObjects seen(each);
        EXPECT_CALL(platform,
                    hosted_service_build_instance(StrEq("VORNA_HostedService"), StrEq(kNamespace),
                                                  _, _, props, broker()))
            .Times(instances ? 2 : 0)
            .WillRepeatedly([&](auto, auto, auto entry, auto domain, auto, auto) {
                return seen.instance(label(entry, domain));
            });
        EXPECT_CALL(platform, hosted_service_fill_reference(StrEq("VORNA_HostedService"),
                                                            StrEq(kNamespace), _, _, broker()))
            .Times(instances ? 0 : 2)
            .WillRepeatedly([&](auto, auto, auto entry, auto domain, auto) {
                return seen.path(label(entry, domain));
            });
        const CMPIResult *result = each.result();
        EXPECT_EQ(instances ? get_hosted_service_all_instances("vorna_hostedservice", result,
                                                               kNamespace, kQueue, props, broker())
                            : get_hosted_service_keys("x", result, kNamespace, kQueue, broker()),
                  0);
        EXPECT_EQ(seen.delivered(), (std::vector<std::string>{"hs1", "hs7"}));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _)).WillOnce(Return(1));
    EXPECT_EQ(get_hosted_service_keys("VORNA_HostedService", request.result(), kNamespace, kQueue,
                                      broker()),
              -1);
}

}  // namespace
