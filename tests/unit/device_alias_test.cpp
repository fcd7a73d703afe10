// Device aliases: the iterator walk of both enumerations, getInstance by
// pWWN, and the two methods with their argument refusals, the pWWN TLV and
// the change-then-commit order.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "host/cmpihost.h"
#include "platform_mock.h"
#include "provider/zone_provider.h"

using ::testing::_;
using ::testing::DoAll;
using ::testing::InSequence;
using ::testing::Invoke;
using ::testing::IsNull;
using ::testing::Pointee;
using ::testing::Return;
using ::testing::SetArgPointee;
using ::testing::StrEq;
using ::testing::StrictMock;

namespace {

constexpr int kQueue = 31;
constexpr const char *kNamespace = "root/cimv2";
constexpr const char *kClass = "VORNA_DeviceAlias";
const char *kProps[] = {"Name", nullptr};
const unsigned char kWwn[8] = {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55};

ddas_iterator *fake_iterator() {
    return reinterpret_cast<ddas_iterator *>(0x5a5a);
}

std::string text_of(const CMPIData &data) {
    if (data.type == CMPI_chars) return data.value.chars != nullptr ? data.value.chars : "<null>";
    if (data.type == CMPI_string) return cmpihost::text(data.value.string);
    return "<not a text>";
}

class DeviceAliasTest : public ::testing::Test {
  protected:
    DeviceAliasTest() : saved_broker_(_broker), saved_queue_(mts_q) {
        _broker = cmpihost::broker();
        mts_q = kQueue;
    }
    ~DeviceAliasTest() override {
        _broker = saved_broker_;
        mts_q = saved_queue_;
    }

    // The database walk over the given aliases; fetching entry `fail_at`
    // (if any) fails.
    void expect_walk(std::vector<std::string> names, int fail_at = -1) {
        EXPECT_CALL(platform, ddas_api_get_all_device_alias_entries(kQueue, Pointee(IsNull()),
                                                                    Pointee(IsNull())))
            .WillOnce(DoAll(SetArgPointee<2>(fake_iterator()), Return(0)));
        EXPECT_CALL(platform, ddas_api_iter_get_num_entries(fake_iterator(), Pointee(0)))
            .WillOnce(DoAll(SetArgPointee<1>(static_cast<int>(names.size())), Return(0)));
        if (names.empty()) return;
        EXPECT_CALL(platform, ddas_api_iter_get_next_device_alias_entry(fake_iterator(), _))
            .Times(fail_at < 0 ? static_cast<int>(names.size()) : fail_at + 1)
            .WillRepeatedly(Invoke([names, fail_at, next = std::make_shared<int>(0)](
                                       ddas_iterator *, DeviceAliasEntry *entry) {
                if (*next == fail_at) return 7;
                std::snprintf(entry->name, sizeof entry->name, "%s", names[*next].c_str());
                std::memcpy(entry->pwwn, kWwn, sizeof kWwn);
                entry->pwwn[7] = static_cast<unsigned char>((*next)++);
                return 0;
            }));
    }

    // Labels what the builders got: "<name>@<last pWWN byte>".
    static std::string label(const DeviceAliasEntry *entry) {
        return std::string(entry->name) + "@" + std::to_string(entry->pwwn[7]);
    }

    CMPIObjectPath *labelled_path(const DeviceAliasEntry *entry) {
        CMPIObjectPath *p = request.newObjectPath(kNamespace, kClass);
        cmpihost::addStringKey(p, "InstanceID", label(entry));
        return p;
    }

    CMPIInstance *labelled_instance(const DeviceAliasEntry *entry) {
        const CMPIBroker *broker = cmpihost::broker();
        return broker->eft->newInstance(broker, labelled_path(entry), nullptr);
    }

    std::vector<std::string> delivered_labels() {
        std::vector<std::string> out;
        for (const cmpihost::Delivery &d : request.deliveries()) {
            const CMPIObjectPath *p = d.kind == cmpihost::Delivery::Kind::ObjectPath
                                          ? d.path
                                          : d.instance->ft->getObjectPath(d.instance, nullptr);
            out.push_back(text_of(p->ft->getKey(p, "InstanceID", nullptr)));
        }
        return out;
    }

    CMPIArgs *args(std::vector<std::string> texts) {
        CMPIArgs *in = request.newArgs();
        const char *names[] = {"Name", "PWWN", "Third"};
        for (std::size_t i = 0; i < texts.size(); ++i)
            cmpihost::addStringArg(in, names[i], texts[i]);
        return in;
    }

    int invoke(decltype(&CreateDeviceAlias) handler, const CMPIArgs *in) {
        return handler(nullptr, request.context(), request.result(), nullptr,
                       handler == CreateDeviceAlias ? "CreateDeviceAlias" : "RemoveDeviceAlias", in,
                       nullptr);
    }

    std::vector<std::string> delivered_texts() {
        std::vector<std::string> out;
        for (const cmpihost::Delivery &d : request.deliveries()) {
            EXPECT_EQ(d.kind, cmpihost::Delivery::Kind::Data);
            EXPECT_EQ(d.data.type, CMPI_chars);
            EXPECT_EQ(d.doneBefore, 0);
            out.push_back(text_of(d.data));
        }
        return out;
    }

    // The encoder puts kWwn into the value; the TLV array is 12 + 4 bytes.
    void expect_encoding(int encode_result = 0) {
        EXPECT_CALL(platform, tlv_aligned_data_size_get(8)).WillOnce(Return(0x1000c));
        EXPECT_CALL(platform, wwn_cim_get_hex_from_str_wwn(StrEq("20:00:00:11:22:33:44:55"), _))
            .WillOnce(Invoke([encode_result](const char *, unsigned char *wwn) {
                std::memcpy(wwn, kWwn, sizeof kWwn);
                return encode_result;
            }));
    }

    StrictMock<PlatformMock> platform;
    cmpihost::Request request;

  private:
    const CMPIBroker *saved_broker_;
    int saved_queue_;
};

// ---- Enumerations ---------------------------------------------------------

TEST_F(DeviceAliasTest, NamesAndInstancesFollowTheIteratorAndMatchInNumber) {
    expect_walk({"alpha", "beta", "gamma"});
    EXPECT_CALL(platform, device_alias_fill_reference(StrEq("vorna_devicealias"), StrEq(kNamespace),
                                                      _, cmpihost::broker()))
        .Times(3)
        .WillRepeatedly(Invoke([this](const char *, const char *, const DeviceAliasEntry *e,
                                      const CMPIBroker *) { return labelled_path(e); }));
    testing::internal::CaptureStdout();
    EXPECT_EQ(get_device_alias_keys("vorna_devicealias", request.result(), kNamespace), 0);
    const std::string out = testing::internal::GetCapturedStdout();
    const std::vector<std::string> names = delivered_labels();
    EXPECT_EQ(names, (std::vector<std::string>{"alpha@0", "beta@1", "gamma@2"}));
    EXPECT_NE(out.find("Inside get_device_alias_keys\n"
                       "\n ret_val from ddas_api_get_all_device_alias_entries: 0 "
                       "\nret_value =0 num =  3"
                       "\nret_value for get_next_alias_entry= 0 "),
              std::string::npos)
        << out;

    cmpihost::Request second;
    expect_walk({"alpha", "beta", "gamma"});
    EXPECT_CALL(platform, device_alias_build_instance(StrEq(kClass), StrEq(kNamespace), _, kProps,
                                                      cmpihost::broker()))
        .Times(3)
        .WillRepeatedly(
            Invoke([this](const char *, const char *, const DeviceAliasEntry *e, const char **,
                          const CMPIBroker *) { return labelled_instance(e); }));
    EXPECT_EQ(get_device_alias_instance(kClass, second.result(), kProps, kNamespace), 0);
    ASSERT_EQ(second.deliveries().size(), names.size());
    for (const cmpihost::Delivery &d : second.deliveries())
        EXPECT_EQ(d.kind, cmpihost::Delivery::Kind::Instance);
}

TEST_F(DeviceAliasTest, AnEmptyDatabaseGivesNothingAndAFailedFetchEndsTheWalk) {
    expect_walk({});
    EXPECT_EQ(get_device_alias_keys(kClass, request.result(), kNamespace), -1);
    expect_walk({});
    EXPECT_EQ(get_device_alias_instance(kClass, request.result(), kProps, kNamespace), -1);
    EXPECT_TRUE(request.deliveries().empty());

    expect_walk({"alpha", "beta", "gamma"}, 1);
    EXPECT_CALL(platform, device_alias_fill_reference(_, _, _, _))
        .WillOnce(Invoke([this](const char *, const char *, const DeviceAliasEntry *e,
                                const CMPIBroker *) { return labelled_path(e); }));
    EXPECT_EQ(get_device_alias_keys(kClass, request.result(), kNamespace), 0);
    EXPECT_EQ(delivered_labels(), std::vector<std::string>{"alpha@0"});
}

TEST_F(DeviceAliasTest, ACountQueryThatFailsCountsAsNoAlias) {
    EXPECT_CALL(platform, ddas_api_get_all_device_alias_entries(kQueue, _, _)).WillOnce(Return(3));
    EXPECT_CALL(platform, ddas_api_iter_get_num_entries(IsNull(), _)).WillOnce(Return(3));
    EXPECT_EQ(get_device_alias_instance(kClass, request.result(), nullptr, kNamespace), -1);
    EXPECT_TRUE(request.deliveries().empty());
}

// ---- getInstance ------------------------------------------------------------

TEST_F(DeviceAliasTest, GetInstanceLooksTheAliasUpByPwwn) {
    uint64_t wwn_value;
    std::memcpy(&wwn_value, kWwn, sizeof wwn_value);
    EXPECT_CALL(platform, ddas_get_device_alias_given_pwwn(kQueue, wwn_value, _))
        .WillOnce(Invoke([](int, uint64_t, char *name) {
            std::strcpy(name, "host-a");
            return 0;
        }))
        .WillOnce(Return(12));  // no alias: the name field stays as it started
    std::vector<DeviceAliasEntry> built;
    EXPECT_CALL(platform, device_alias_build_instance(StrEq(kClass), StrEq(kNamespace), _, kProps,
                                                      cmpihost::broker()))
        .Times(2)
        .WillRepeatedly(Invoke([this, &built](const char *, const char *, const DeviceAliasEntry *e,
                                              const char **, const CMPIBroker *) {
            built.push_back(*e);
            return labelled_instance(e);
        }));

    EXPECT_EQ(get_device_alias_instance_gi(kClass, "20:00:00:11:22:33:44:55", request.result(),
                                           kProps, kNamespace),
              0);
    EXPECT_EQ(get_device_alias_instance_gi(kClass, "2000001122334455", request.result(), kProps,
                                           kNamespace),
              0);
    ASSERT_EQ(built.size(), 2u);
    EXPECT_STREQ(built[0].name, "host-a");
    EXPECT_EQ(std::memcmp(built[0].pwwn, kWwn, 8), 0);
    const char zeros[ZP_DEVICE_ALIAS_NAME_LEN] = {};
    EXPECT_EQ(std::memcmp(built[1].name, zeros, sizeof zeros), 0) << "no stale bytes";
    EXPECT_EQ(std::memcmp(built[1].pwwn, kWwn, 8), 0);
    EXPECT_EQ(request.deliveries().size(), 2u);
}

// ---- CreateDeviceAlias ------------------------------------------------------

TEST_F(DeviceAliasTest, CreateSendsTheTlvThenCommitsInThatOrder) {
    expect_encoding();
    DeviceAliasCommitContext *seen_context = nullptr;
    unsigned char *seen_tlv = nullptr;
    {
        InSequence order;
        EXPECT_CALL(platform, tlv_aligned_array_add_tlv(_, 16u, 1u, 8u, _, 0))
            .WillOnce(Invoke([&seen_tlv](unsigned char *buffer, uint32_t size, uint32_t, uint32_t,
                                         const void *value, int) {
                for (uint32_t i = 0; i < size; ++i) EXPECT_EQ(buffer[i], 0) << "zero-filled";
                EXPECT_EQ(std::memcmp(value, kWwn, 8), 0);
                std::memcpy(buffer + 4, value, 8);  // the item as the platform lays it out
                seen_tlv = buffer;
                return 0;
            }));
        EXPECT_CALL(platform, ddas_create_device_alias_entry(kQueue, StrEq("host-a"), _, _, 0, 0))
            .WillOnce(Invoke([&](int, const char *, unsigned char *tlv,
                                 DeviceAliasCommitContext *context, int, int) {
                EXPECT_EQ(tlv, seen_tlv);
                EXPECT_EQ(std::memcmp(tlv + 4, kWwn, 8), 0);
                EXPECT_EQ(context->operation, 6);
                seen_context = context;
                return 0;
            }));
        EXPECT_CALL(platform, syserr2str(0)).WillOnce(Return("no error"));
        EXPECT_CALL(platform, ddas_commit(kQueue, _, 0))
            .WillOnce(Invoke([&](int, DeviceAliasCommitContext *context, int) {
                EXPECT_EQ(context, seen_context);
                EXPECT_EQ(context->operation, 6);
                return 0;
            }));
        EXPECT_CALL(platform, syserr2str(0)).WillRepeatedly(Return("no error"));
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(invoke(CreateDeviceAlias, args({"host-a", "20:00:00:11:22:33:44:55"})), 0);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(delivered_texts(), std::vector<std::string>{"no error"});
    EXPECT_EQ(request.doneCount(), 1);
    EXPECT_NE(out.find("Error before commit: 0 no error\n"), std::string::npos) << out;
    EXPECT_NE(out.find("Error after commit: 0 no error\n"), std::string::npos) << out;
}

TEST_F(DeviceAliasTest, ARefusedCreateIsStillCommittedAndGivesTheDatabaseCode) {
    expect_encoding();
    EXPECT_CALL(platform, tlv_aligned_array_add_tlv(_, _, _, _, _, _)).WillOnce(Return(0));
    EXPECT_CALL(platform, syserr2str(_)).WillRepeatedly(Invoke([](int code) {
        return code == 41 ? "alias exists" : "other";
    }));
    {
        InSequence order;
        EXPECT_CALL(platform, ddas_create_device_alias_entry(_, _, _, _, _, _))
            .WillOnce(Return(41));
        EXPECT_CALL(platform, ddas_commit(kQueue, _, 0)).WillOnce(Return(9));
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(invoke(CreateDeviceAlias, args({"host-a", "20:00:00:11:22:33:44:55"})), 41);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(delivered_texts(), std::vector<std::string>{"alias exists"});
    EXPECT_NE(out.find("Error before commit: 41 alias exists\nError after commit: 9 other\n"),
              std::string::npos)
        << out;
}

TEST_F(DeviceAliasTest, ALongNameReachesTheDatabaseCutTo67Characters) {
    expect_encoding();
    EXPECT_CALL(platform, tlv_aligned_array_add_tlv(_, _, _, _, _, _)).WillOnce(Return(0));
    EXPECT_CALL(platform, syserr2str(_)).WillRepeatedly(Return("ok"));
    const std::string name(80, 'n');
    InSequence order;
    EXPECT_CALL(platform, ddas_create_device_alias_entry(_, StrEq(name.substr(0, 67)), _, _, _, _))
        .WillOnce(Return(0));
    EXPECT_CALL(platform, ddas_commit(_, _, _)).WillOnce(Return(0));
    EXPECT_EQ(invoke(CreateDeviceAlias, args({name, "20:00:00:11:22:33:44:55"})), 0);
}

TEST_F(DeviceAliasTest, CreateRefusesBadInputBeforeTheDatabase) {
    // StrictMock: none of these reaches the database, the encoder or the result.
    EXPECT_EQ(invoke(CreateDeviceAlias, args({"host-a"})), 0);
    EXPECT_EQ(invoke(CreateDeviceAlias, args({"a", "b", "c"})), 0);
    EXPECT_EQ(invoke(CreateDeviceAlias, nullptr), 0);
    EXPECT_EQ(invoke(CreateDeviceAlias, args({"host-a", std::string(255, '2')})), 2);

    CMPIArgs *numeric = request.newArgs();
    CMPIValue number;
    number.uint32 = 5;
    cmpihost::addStringArg(numeric, "Name", "host-a");
    cmpihost::addValueArg(numeric, "PWWN", number, CMPI_uint32);
    EXPECT_EQ(invoke(CreateDeviceAlias, numeric), 2);

    CMPIArgs *numeric_name = request.newArgs();
    cmpihost::addValueArg(numeric_name, "Name", number, CMPI_uint32);
    cmpihost::addStringArg(numeric_name, "PWWN", "20:00:00:11:22:33:44:55");
    EXPECT_EQ(invoke(CreateDeviceAlias, numeric_name), 2);

    EXPECT_TRUE(request.deliveries().empty());
    EXPECT_EQ(request.doneCount(), 0);
}

TEST_F(DeviceAliasTest, APwwnTheEncoderRefusesGivesMinusOneAndNoCommit) {
    expect_encoding(1);
    EXPECT_EQ(invoke(CreateDeviceAlias, args({"host-a", "20:00:00:11:22:33:44:55"})), -1);

    // A TLV that can't be added is refused the same way; a pWWN of exactly
    // 254 characters fits its field and reaches the encoder.
    const std::string longest(254, '1');
    EXPECT_CALL(platform, tlv_aligned_data_size_get(8)).WillOnce(Return(12));
    EXPECT_CALL(platform, wwn_cim_get_hex_from_str_wwn(StrEq(longest), _)).WillOnce(Return(0));
    EXPECT_CALL(platform, tlv_aligned_array_add_tlv(_, 16u, _, _, _, _)).WillOnce(Return(1));
    EXPECT_EQ(invoke(CreateDeviceAlias, args({"host-a", longest})), -1);
    EXPECT_TRUE(request.deliveries().empty());
}

// ---- RemoveDeviceAlias ------------------------------------------------------

TEST_F(DeviceAliasTest, RemoveChangesThenCommitsOnceWhateverTheChangeGave) {
    for (int code : {0, 44}) {
        SCOPED_TRACE(code);
        cmpihost::Request each;
        CMPIArgs *in = each.newArgs();
        cmpihost::addStringArg(in, "Name", std::string(70, 'r'));
        DeviceAliasCommitContext *seen_context = nullptr;
        EXPECT_CALL(platform, syserr2str(code)).WillRepeatedly(Return("database says"));
        {
            InSequence order;
            EXPECT_CALL(platform,
                        ddas_remove_device_alias_entry(kQueue, StrEq(std::string(67, 'r')), _, 0))
                .WillOnce(Invoke([&](int, const char *, DeviceAliasCommitContext *context, int) {
                    EXPECT_EQ(context->operation, 6);
                    seen_context = context;
                    return code;
                }));
            EXPECT_CALL(platform, ddas_commit(kQueue, _, 0))
                .WillOnce(Invoke([&](int, DeviceAliasCommitContext *context, int) {
                    EXPECT_EQ(context, seen_context);
                    return 5;  // not used
                }));
        }
        testing::internal::CaptureStdout();
        EXPECT_EQ(RemoveDeviceAlias(nullptr, each.context(), each.result(), nullptr,
                                    "RemoveDeviceAlias", in, nullptr),
                  code);
        const std::string out = testing::internal::GetCapturedStdout();
        ASSERT_EQ(each.deliveries().size(), 1u);
        EXPECT_EQ(text_of(each.deliveries()[0].data), "database says");
        EXPECT_EQ(each.doneCount(), 1);
        EXPECT_NE(out.find("Error: database says\n"), std::string::npos) << out;
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

TEST_F(DeviceAliasTest, RemoveRefusesBadInputBeforeTheDatabase) {
    EXPECT_EQ(invoke(RemoveDeviceAlias, args({})), 0);
    EXPECT_EQ(invoke(RemoveDeviceAlias, args({"a", "b"})), 0);
    CMPIArgs *numeric = request.newArgs();
    CMPIValue number;
    number.uint16 = 3;
    cmpihost::addValueArg(numeric, "Name", number, CMPI_uint16);
    EXPECT_EQ(invoke(RemoveDeviceAlias, numeric), 2);
    CMPIArgs *null_name = request.newArgs();
    null_name->ft->addArg(null_name, "Name", nullptr, CMPI_string);
    EXPECT_EQ(invoke(RemoveDeviceAlias, null_name), 2);
    EXPECT_TRUE(request.deliveries().empty());
}

}  // namespace
