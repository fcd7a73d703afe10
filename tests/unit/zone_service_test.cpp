// Zone service and hosted service: one of each per VSAN of the table except
// 4094, the zone service fetched by its decimal "Name", the hosted service
// rebuilt from the request's own references.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include <cmpimacs.h>

#include "read_side_support.h"

namespace {

using readside::kNamespace;
using readside::kQueue;
using testing::_;
using testing::InSequence;
using testing::Return;
using testing::StrEq;

// The VSAN table as vsan_cim_get_all_vsanEntry hands it back.
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

using ZoneServiceTest = readside::ReadSideTest;

TEST_F(ZoneServiceTest, OneServicePerVsanExcept4094InTableOrder) {
    const char *props[] = {"Name", nullptr};
    for (int mode : {0, 1, 2}) {
        SCOPED_TRACE(mode);
        EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _))
            .WillOnce(hand_back_table({10, 4094, 1}));
        if (mode == 1) {
            InSequence order;
            for (int vsan : {10, 1})
                EXPECT_CALL(platform, zone_service_build_instance(StrEq("VORNA_ZoneService"),
                                                                  StrEq(kNamespace), vsan, props,
                                                                  kQueue, cmpihost::broker()))
                    .WillOnce(Return(objects.instance("zs" + std::to_string(vsan))));
        } else {
            InSequence order;
            for (int vsan : {10, 1})
                EXPECT_CALL(platform, zone_service_fill_reference(StrEq("VORNA_ZoneService"),
                                                                  StrEq(kNamespace), vsan,
                                                                  cmpihost::broker()))
                    .WillOnce(Return(objects.path("zs" + std::to_string(vsan))));
        }
        cmpihost::Request each;
        readside::LabelledObjects seen(each);
        // The builders get the literal class name whatever the request wrote.
        EXPECT_EQ(get_zone_service_helper("vorna_zoneservice", mode, each.result(), props,
                                          kNamespace, kQueue, cmpihost::broker()),
                  0);
        EXPECT_EQ(each.deliveries().size(), 2u);
        EXPECT_EQ(seen.kinds(), mode == 1 ? "II" : "PP");
        EXPECT_EQ(each.doneCount(), 0);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

TEST_F(ZoneServiceTest, WrappersPassNoPropertyList) {
    EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _))
        .Times(2)
        .WillRepeatedly(hand_back_table({3}));
    EXPECT_CALL(platform, zone_service_build_instance(_, _, 3, nullptr, kQueue, _))
        .WillOnce(Return(objects.instance("i3")));
    EXPECT_CALL(platform, zone_service_fill_reference(_, _, 3, _))
        .WillOnce(Return(objects.path("p3")));
    get_zone_service_all_instances("VORNA_ZoneService", request.result(), kNamespace, kQueue,
                                   cmpihost::broker());
    get_zone_service_keys("VORNA_ZoneService", request.result(), kNamespace, kQueue,
                          cmpihost::broker());
    EXPECT_EQ(objects.delivered(), (std::vector<std::string>{"i3", "p3"}));
}

TEST_F(ZoneServiceTest, UnreadableOrReservedOnlyTablesAndMissingBuildsGiveNothing) {
    EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _)).WillOnce(Return(5));
    EXPECT_EQ(get_zone_service_keys("VORNA_ZoneService", request.result(), kNamespace, kQueue,
                                    cmpihost::broker()),
              -1);

    EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _))
        .WillOnce(hand_back_table({4094}));
    EXPECT_EQ(get_zone_service_keys("VORNA_ZoneService", request.result(), kNamespace, kQueue,
                                    cmpihost::broker()),
              0);

    // An empty table may come back with or without an array.
    EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _))
        .WillOnce(hand_back_table({}))
        .WillOnce([](int, int *count, VsanEntry **) {
            *count = 0;
            return 0;
        });
    get_zone_service_keys("VORNA_ZoneService", request.result(), kNamespace, kQueue,
                          cmpihost::broker());
    get_zone_service_keys("VORNA_ZoneService", request.result(), kNamespace, kQueue,
                          cmpihost::broker());

    EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _)).WillOnce(hand_back_table({7}));
    EXPECT_CALL(platform, zone_service_build_instance(_, _, 7, _, _, _)).WillOnce(Return(nullptr));
    get_zone_service_helper("VORNA_ZoneService", 1, request.result(), nullptr, kNamespace, kQueue,
                            cmpihost::broker());

    EXPECT_TRUE(request.deliveries().empty());
}

TEST_F(ZoneServiceTest, RetrievalReadsTheVsanFromTheKeyAsDecimal) {
    struct Row {
        const char *key;
        int vsan;
    };
    const Row rows[] = {{"10", 10},  {"10abc", 10},  {"  42", 42}, {"+7", 7},
                        {"0x10", 0}, {"4094", 4094}, {"", 0}};
    const char *props[] = {"Name", nullptr};
    for (const Row &row : rows) {
        SCOPED_TRACE(row.key);
        InSequence order;
        EXPECT_CALL(platform, vsan_cim_check_vsan_index(row.vsan)).WillOnce(Return(0));
        EXPECT_CALL(platform,
                    zone_service_build_instance(StrEq("VORNA_ZoneService"), StrEq(kNamespace),
                                                row.vsan, props, kQueue, cmpihost::broker()))
            .WillOnce(Return(objects.instance(row.key)));
        cmpihost::Request each;
        CMPIStatus st{CMPI_RC_OK, nullptr};
        EXPECT_EQ(get_zone_service_instance("whatever", row.key, each.result(), props, kNamespace,
                                            kQueue, cmpihost::broker(), &st),
                  0);
        EXPECT_EQ(st.rc, CMPI_RC_OK);
        EXPECT_EQ(st.msg, nullptr);
        EXPECT_EQ(each.deliveries().size(), 1u);
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

TEST_F(ZoneServiceTest, RetrievalRefusesUnknownVsansAndFailedBuilds) {
    struct Row {
        const char *what;
        bool known;
        CMPIInstance *built;
        int returned;
    };
    const Row rows[] = {
        {"unknown VSAN", false, nullptr, -1},
        {"builder gives null", true, nullptr, 0},
        {"builder gives a null handle", true, readside::hollow_instance(), 0},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_CALL(platform, vsan_cim_check_vsan_index(99)).WillOnce(Return(row.known ? 0 : 1));
        if (row.known)
            EXPECT_CALL(platform, zone_service_build_instance(_, _, 99, _, _, _))
                .WillOnce(Return(row.built));
        CMPIStatus st{CMPI_RC_OK, nullptr};
        EXPECT_EQ(get_zone_service_instance("VORNA_ZoneService", "99", request.result(), nullptr,
                                            kNamespace, kQueue, cmpihost::broker(), &st),
                  row.returned);
        EXPECT_EQ(st.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(readside::message_of(st), "could not find or construct instance");
        EXPECT_TRUE(request.deliveries().empty());
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

TEST_F(ZoneServiceTest, HostedServicesOnlyForVsansTheDomainManagerKnows) {
    const char *props[] = {"Antecedent", nullptr};
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
        auto label = [](const VsanEntry *entry) {
            // The whole entry of the table is handed on, not a copy of the number.
            EXPECT_EQ(entry->description[0], static_cast<unsigned char>(entry->vsan));
            return "hs" + std::to_string(entry->vsan);
        };
        if (instances) {
            EXPECT_CALL(platform, hosted_service_build_instance(StrEq("VORNA_HostedService"),
                                                                StrEq(kNamespace), _, _, props,
                                                                cmpihost::broker()))
                .Times(2)
                .WillRepeatedly([&](const char *, const char *, const VsanEntry *entry,
                                    const DomainEntry *domain, const char **, const CMPIBroker *) {
                    EXPECT_NE(domain, nullptr);
                    return seen.instance(label(entry));
                });
            EXPECT_EQ(
                get_hosted_service_all_instances("vorna_hostedservice", each.result(), kNamespace,
                                                 kQueue, props, cmpihost::broker()),
                0);
        } else {
            EXPECT_CALL(platform,
                        hosted_service_fill_reference(StrEq("VORNA_HostedService"),
                                                      StrEq(kNamespace), _, _, cmpihost::broker()))
                .Times(2)
                .WillRepeatedly([&](const char *, const char *, const VsanEntry *entry,
                                    const DomainEntry *domain, const CMPIBroker *) {
                    EXPECT_NE(domain, nullptr);
                    return seen.path(label(entry));
                });
            EXPECT_EQ(get_hosted_service_keys("vorna_hostedservice", each.result(), kNamespace,
                                              kQueue, cmpihost::broker()),
                      0);
        }
        EXPECT_EQ(seen.delivered(), (std::vector<std::string>{"hs1", "hs7"}));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }

    EXPECT_CALL(platform, vsan_cim_get_all_vsanEntry(kQueue, _, _)).WillOnce(Return(1));
    EXPECT_EQ(get_hosted_service_keys("VORNA_HostedService", request.result(), kNamespace, kQueue,
                                      cmpihost::broker()),
              -1);
}

// Reads a reference property of an instance back as text ("" for none).
std::string reference_text(const CMPIInstance *instance, const char *name) {
    const CMPIData data = instance->ft->getProperty(instance, name, nullptr);
    if (data.type != CMPI_ref || CMIsNullValue(data) || data.value.ref == nullptr) return "";
    return cmpihost::pathToString(data.value.ref);
}

TEST_F(ZoneServiceTest, HostedServiceInstanceRepeatsTheRequestsReferences) {
    CMPIObjectPath *system = request.newObjectPath("root/cimv2", "CIM_ComputerSystem");
    cmpihost::addStringKey(system, "Name", "switch-a");
    CMPIObjectPath *service = request.newObjectPath("root/cimv2", "VORNA_ZoneService");
    cmpihost::addStringKey(service, "Name", "10");

    EXPECT_CALL(platform, getCSName()).Times(2).WillRepeatedly(Return("switch-a"));
    std::vector<std::string> answers;
    for (bool antecedent_first : {true, false}) {
        CMPIObjectPath *op = request.newObjectPath(kNamespace, "VORNA_HostedService");
        if (antecedent_first) {
            cmpihost::addReferenceKey(op, "Antecedent", system);
            cmpihost::addReferenceKey(op, "Dependent", service);
        } else {
            cmpihost::addReferenceKey(op, "dependent", service);
            cmpihost::addReferenceKey(op, "ANTECEDENT", system);
        }
        cmpihost::Request each;
        CMPIStatus st{CMPI_RC_OK, nullptr};
        EXPECT_EQ(get_hosted_service_instance(op, each.result(), nullptr, kQueue,
                                              cmpihost::broker(), &st),
                  0);
        EXPECT_EQ(st.rc, CMPI_RC_OK);
        ASSERT_EQ(each.deliveries().size(), 1u);
        const CMPIInstance *instance = each.deliveries()[0].instance;
        ASSERT_NE(instance, nullptr);
        EXPECT_EQ(reference_text(instance, "Antecedent"), cmpihost::pathToString(system));
        EXPECT_EQ(reference_text(instance, "Dependent"), cmpihost::pathToString(service));
        const CMPIObjectPath *path = instance->ft->getObjectPath(instance, nullptr);
        EXPECT_EQ(cmpihost::text(path->ft->getClassName(path, nullptr)), "VORNA_HostedService");
        EXPECT_EQ(cmpihost::text(path->ft->getNameSpace(path, nullptr)), kNamespace);
        EXPECT_EQ(cmpihost::text(path->ft->getHostname(path, nullptr)), "switch-a");
        answers.push_back(cmpihost::instanceToString(instance));
        EXPECT_EQ(each.doneCount(), 0);
    }
    EXPECT_EQ(answers[0], answers[1]);
}

TEST_F(ZoneServiceTest, HostedServiceInstanceWithoutReferencesHasNullOnes) {
    EXPECT_CALL(platform, getCSName()).WillOnce(Return("switch-b"));
    CMPIObjectPath *op = request.newObjectPath(kNamespace, "VORNA_HostedService");
    // A key of the right name that is no reference leaves the property null.
    cmpihost::addStringKey(op, "Antecedent", "not a reference");
    CMPIStatus st{CMPI_RC_OK, nullptr};
    get_hosted_service_instance(op, request.result(), nullptr, kQueue, cmpihost::broker(), &st);
    ASSERT_EQ(request.deliveries().size(), 1u);
    const CMPIInstance *instance = request.deliveries()[0].instance;
    EXPECT_EQ(reference_text(instance, "Antecedent"), "");
    EXPECT_EQ(reference_text(instance, "Dependent"), "");
    EXPECT_EQ(st.rc, CMPI_RC_OK);
}

}  // namespace
