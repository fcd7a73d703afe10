// Device aliases: the iterator walk of both enumerations, getInstance by
// pWWN, and the two methods with their argument refusals, the pWWN TLV, the
// name cut to 67 characters and the change-then-commit order.
#include <memory>

#include "methods/method_fixture.h"

using ::testing::IsNull;
using ::testing::Pointee;

namespace {

using namespace method_test;

constexpr const char *kNamespace = "root/cimv2";
constexpr const char *kClass = "VORNA_DeviceAlias";
constexpr const char *kPwwn = "20:00:00:11:22:33:44:55";
const char *kProps[] = {"Name", nullptr};
const unsigned char kWwn[8] = {0x20, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55};

ddas_iterator *const kIterator = reinterpret_cast<ddas_iterator *>(0x5a5a);

class DeviceAliasTest : public MethodTest {
  protected:
    // The database walk over `count` aliases, alias<i> with the pWWN's last
    // byte i; fetching entry `fail_at` (if any) fails. A count of -1: the
    // count query fails and leaves iterator and count alone.
    void expectWalk(int count, int fail_at) {
        EXPECT_CALL(platform, ddas_api_get_all_device_alias_entries(kQueue, Pointee(IsNull()),
                                                                    Pointee(IsNull())))
            .WillOnce(DoAll(SetArgPointee<2>(count < 0 ? nullptr : kIterator),
                            Return(count < 0 ? 3 : 0)));
        if (count < 0) {
            EXPECT_CALL(platform, ddas_api_iter_get_num_entries(IsNull(), _)).WillOnce(Return(3));
            return;
        }
        EXPECT_CALL(platform, ddas_api_iter_get_num_entries(kIterator, Pointee(0)))
            .WillOnce(DoAll(SetArgPointee<1>(count), Return(0)));
        EXPECT_CALL(platform, ddas_api_iter_get_next_device_alias_entry(kIterator, _))
            .Times(fail_at < 0 ? count : fail_at + 1)
            .WillRepeatedly([fail_at, next = std::make_shared<int>(0)](ddas_iterator *,
                                                                       DeviceAliasEntry *entry) {
                if (*next == fail_at) return 7;
                std::snprintf(entry->name, sizeof entry->name, "alias%d", *next);
                std::memcpy(entry->pwwn, kWwn, sizeof kWwn);
                entry->pwwn[7] = static_cast<unsigned char>((*next)++);
                return 0;
            });
    }
    // The instance builder answers `times` instances and keeps the entries.
    void buildsInstances(int times) {
        EXPECT_CALL(platform, device_alias_build_instance(StrEq(kClass), StrEq(kNamespace), _,
                                                          kProps, _broker))
            .Times(times)
            .WillRepeatedly([this](const char *, const char *, const DeviceAliasEntry *e,
                                   const char **, const CMPIBroker *) {
                built.push_back(*e);
                return _broker->eft->newInstance(_broker, pathIn(kNamespace, kClass), nullptr);
            });
    }
    // "<name>@<last pWWN byte>" of every entry given to a builder.
    std::vector<std::string> builtLabels() const {
        std::vector<std::string> labels;
        for (const DeviceAliasEntry &e : built)
            labels.push_back(std::string(e.name) + "@" + std::to_string(e.pwwn[7]));
        return labels;
    }

    // The encoder puts kWwn into the value; the TLV array is 12 + 4 bytes.
    void expectEncoding(int encode_result = 0) {
        EXPECT_CALL(platform, tlv_aligned_data_size_get(8)).WillOnce(Return(0x1000c));
        EXPECT_CALL(platform, wwn_cim_get_hex_from_str_wwn(StrEq(kPwwn), _))
            .WillOnce([encode_result](const char *, unsigned char *wwn) {
                std::memcpy(wwn, kWwn, sizeof kWwn);
                return encode_result;
            });
    }

    std::vector<DeviceAliasEntry> built;
};

// Names and instances follow the iterator and stop at the first failed
// fetch; no alias at all, or a failed count query, answers -1.
TEST_F(DeviceAliasTest, BothEnumerationsFollowTheIteratorWalk) {
    struct Case {
        const char *what;
        int count, fail_at, answer, delivered;
    };
    const Case cases[] = {
        {"three aliases", 3, -1, 0, 3},
        {"second fetch fails", 3, 1, 0, 1},
        {"no alias", 0, -1, -1, 0},
        {"count query fails", -1, -1, -1, 0},
    };
    for (const Case &c : cases) {
        for (const bool names : {true, false}) {
            SCOPED_TRACE(std::string(c.what) + (names ? ", names" : ", instances"));
            built.clear();
            const std::size_t before = request.deliveries().size();
            expectWalk(c.count, c.fail_at);
            if (names) {
                EXPECT_CALL(platform, device_alias_fill_reference(StrEq(kClass), StrEq(kNamespace),
                                                                  _, _broker))
                    .Times(c.delivered)
                    .WillRepeatedly([this](const char *, const char *, const DeviceAliasEntry *e,
                                           const CMPIBroker *) {
                        built.push_back(*e);
                        return pathIn(kNamespace, kClass);
                    });
            } else {
                buildsInstances(c.delivered);
            }
            testing::internal::CaptureStdout();
            EXPECT_EQ(names
                          ? get_device_alias_keys(kClass, request.result(), kNamespace)
                          : get_device_alias_instance(kClass, request.result(), kProps, kNamespace),
                      c.answer);
            trace = testing::internal::GetCapturedStdout();
            std::vector<std::string> labels;
            for (int i = 0; i < c.delivered; ++i)
                labels.push_back("alias" + std::to_string(i) + "@" + std::to_string(i));
            EXPECT_EQ(builtLabels(), labels);
            EXPECT_EQ(request.deliveries().size(), before + c.delivered);
            std::string opened = c.count < 0 ? "3 \nret_value =3 num =  0"
                                             : "0 \nret_value =0 num =  " + std::to_string(c.count);
            if (c.count > 0) opened += "\nret_value for get_next_alias_entry= 0 ";
            if (names) {
                EXPECT_THAT(trace, HasSubstr("Inside get_device_alias_keys\n\n ret_val from "
                                             "ddas_api_get_all_device_alias_entries: " +
                                             opened));
            }
            testing::Mock::VerifyAndClearExpectations(&platform);
        }
    }
}

// A pWWN without an alias still gives an instance, whose name starts all
// zeros: no stale bytes.
TEST_F(DeviceAliasTest, GetInstanceLooksTheAliasUpByPwwn) {
    uint64_t wwn_value;
    std::memcpy(&wwn_value, kWwn, sizeof wwn_value);
    EXPECT_CALL(platform, ddas_get_device_alias_given_pwwn(kQueue, wwn_value, _))
        .WillOnce([](int, uint64_t, char *name) {
            std::strcpy(name, "host-a");
            return 0;
        })
        .WillOnce(Return(12));
    buildsInstances(2);
    for (const char *pwwn : {kPwwn, "2000001122334455"})
        EXPECT_EQ(get_device_alias_instance_gi(kClass, pwwn, request.result(), kProps, kNamespace),
                  0);
    ASSERT_EQ(built.size(), 2u);
    EXPECT_STREQ(built[0].name, "host-a");
    const char zeros[ZP_DEVICE_ALIAS_NAME_LEN] = {};
    EXPECT_EQ(std::memcmp(built[1].name, zeros, sizeof zeros), 0);
    for (const DeviceAliasEntry &e : built) EXPECT_EQ(std::memcmp(e.pwwn, kWwn, 8), 0);
    EXPECT_EQ(request.deliveries().size(), 2u);
}

// A change is followed by one commit with the same context, whatever the
// change answered; the change's code is the outcome and its text the return
// value, the commit's code is only traced. A name is cut to 67 characters.
// CreateDeviceAlias hands the pWWN over as one TLV item (type 1, 8 bytes) in
// a zero-filled array.
TEST_F(DeviceAliasTest, ChangesThenCommitsAndAnswersTheChangeCode) {
    struct Case {
        Handler handler;
        std::string name;
        int code, committed;
        const char *text;
        const char *traces;
    };
    const Case cases[] = {
        {CreateDeviceAlias, "host-a", 0, 0, "no error",
         "Error before commit: 0 no error\nError after commit: 0 no error\n"},
        {CreateDeviceAlias, std::string(80, 'n'), 41, 9, "alias exists",
         "Error before commit: 41 alias exists\nError after commit: 9 other\n"},
        {RemoveDeviceAlias, "host-a", 0, 5, "no error", "Error: no error\n"},
        {RemoveDeviceAlias, std::string(70, 'r'), 41, 0, "alias exists", "Error: alias exists\n"},
    };
    for (const Case &c : cases) {
        const bool create = c.handler == CreateDeviceAlias;
        SCOPED_TRACE(std::string(create ? "create " : "remove ") + std::to_string(c.code));
        const std::size_t before = returned().size();
        EXPECT_CALL(platform, syserr2str(_)).WillRepeatedly([](int code) {
            return code == 0 ? "no error" : code == 41 ? "alias exists" : "other";
        });
        DeviceAliasCommitContext *seen_context = nullptr;
        auto changes = [&](DeviceAliasCommitContext *context) {
            EXPECT_EQ(context->operation, 6);
            seen_context = context;
            return c.code;
        };
        {
            InSequence order;
            if (create) {
                expectEncoding();
                EXPECT_CALL(platform, tlv_aligned_array_add_tlv(_, 16u, 1u, 8u, _, 0))
                    .WillOnce([&](unsigned char *buffer, uint32_t size, uint32_t, uint32_t,
                                  const void *value, int) {
                        for (uint32_t i = 0; i < size; ++i) EXPECT_EQ(buffer[i], 0) << i;
                        EXPECT_EQ(std::memcmp(value, kWwn, 8), 0);
                        std::memcpy(buffer + 4, value, 8);  // the item as the platform lays it out
                        return 0;
                    });
                EXPECT_CALL(platform, ddas_create_device_alias_entry(
                                          kQueue, StrEq(c.name.substr(0, 67)), _, _, 0, 0))
                    .WillOnce([&](int, const char *, unsigned char *tlv,
                                  DeviceAliasCommitContext *context, int, int) {
                        EXPECT_EQ(std::memcmp(tlv + 4, kWwn, 8), 0);
                        return changes(context);
                    });
            } else {
                EXPECT_CALL(platform, ddas_remove_device_alias_entry(
                                          kQueue, StrEq(c.name.substr(0, 67)), _, 0))
                    .WillOnce([&](int, const char *, DeviceAliasCommitContext *context, int) {
                        return changes(context);
                    });
            }
            EXPECT_CALL(platform, ddas_commit(kQueue, _, 0))
                .WillOnce([&](int, DeviceAliasCommitContext *context, int) {
                    EXPECT_EQ(context, seen_context);
                    EXPECT_EQ(context->operation, 6);
                    return c.committed;
                });
        }
        const std::vector<Arg> in =
            create ? std::vector{str(c.name), str(kPwwn)} : std::vector{str(c.name)};
        EXPECT_EQ(call(c.handler, nullptr, argsOf(in)), c.code);
        ASSERT_EQ(returned().size(), before + 1);
        EXPECT_EQ(returned().back(), c.text);
        // The text goes before its returnDone; each call before made one of each.
        EXPECT_EQ(request.deliveries().back().doneBefore, static_cast<int>(before));
        EXPECT_EQ(request.doneCount(), static_cast<int>(before) + 1);
        EXPECT_THAT(trace, HasSubstr(c.traces));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
}

// A wrong count changes nothing (0); an argument that is no text, or a pWWN
// over 254 characters, is refused (2); a pWWN the encoder refuses, or whose
// TLV can't be added, gives -1. None of these reaches the database.
TEST_F(DeviceAliasTest, BadArgumentsNeverReachTheDatabase) {
    struct Case {
        Handler handler;
        std::vector<Arg> in;
        int outcome;
    };
    const Case cases[] = {
        {CreateDeviceAlias, {str("host-a")}, 0},
        {CreateDeviceAlias, {str("a"), str("b"), str("c")}, 0},
        {CreateDeviceAlias, {str("host-a"), str(std::string(255, '2'))}, 2},
        {CreateDeviceAlias, {str("host-a"), u16(5)}, 2},
        {CreateDeviceAlias, {u16(5), str(kPwwn)}, 2},
        {RemoveDeviceAlias, {}, 0},
        {RemoveDeviceAlias, {str("a"), str("b")}, 0},
        {RemoveDeviceAlias, {u16(3)}, 2},
        {RemoveDeviceAlias, {nullOf(CMPI_string)}, 2},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(call(cases[i].handler, nullptr, argsOf(cases[i].in)), cases[i].outcome);
    }

    expectEncoding(1);
    EXPECT_EQ(call(CreateDeviceAlias, nullptr, argsOf({str("host-a"), str(kPwwn)})), -1);
    // A pWWN of exactly 254 characters fits its field and reaches the encoder.
    const std::string longest(254, '1');
    EXPECT_CALL(platform, tlv_aligned_data_size_get(8)).WillOnce(Return(12));
    EXPECT_CALL(platform, wwn_cim_get_hex_from_str_wwn(StrEq(longest), _)).WillOnce(Return(0));
    EXPECT_CALL(platform, tlv_aligned_array_add_tlv(_, 16u, _, _, _, _)).WillOnce(Return(1));
    EXPECT_EQ(call(CreateDeviceAlias, nullptr, argsOf({str("host-a"), str(longest)})), -1);
    EXPECT_TRUE(request.deliveries().empty());
    EXPECT_EQ(request.doneCount(), 0);
}

}  // namespace
