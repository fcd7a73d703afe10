// deleteInstance: the key search before the lock, the answer of every
// outcome, the refusal of the enforced database, and the two association
// branches with their key-order rule.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "host/cmpihost.h"
#include "platform_mock.h"
#include "provider/zone_provider.h"

using ::testing::_;
using ::testing::DoAll;
using ::testing::InSequence;
using ::testing::Invoke;
using ::testing::Return;
using ::testing::SetArgPointee;
using ::testing::StrEq;
using ::testing::StrictMock;

namespace {

constexpr int kQueue = 17;
constexpr const char *kNamespace = "root/cimv2";

// What one request answered.
struct Answered {
    CMPIrc rc;
    std::string message;  // "<none>" when the status carries none
    std::vector<std::string> data;
    int done = 0;
    std::string out;  // standard output of the request
};

std::string text_of(const CMPIData &data) {
    if (data.type == CMPI_chars) return data.value.chars != nullptr ? data.value.chars : "<null>";
    if (data.type == CMPI_string) return cmpihost::text(data.value.string);
    return "<not a text>";
}

class DeleteInstanceTest : public ::testing::Test {
  protected:
    DeleteInstanceTest() : saved_broker_(_broker), saved_queue_(mts_q) {
        _broker = cmpihost::broker();
        mts_q = kQueue;
    }
    ~DeleteInstanceTest() override {
        _broker = saved_broker_;
        mts_q = saved_queue_;
    }

    CMPIObjectPath *path(const char *cls) { return request.newObjectPath(kNamespace, cls); }

    CMPIObjectPath *keyed(const char *cls, const char *key, const char *value) {
        CMPIObjectPath *p = path(cls);
        cmpihost::addStringKey(p, key, value);
        return p;
    }

    // An association path with its references in the order given.
    CMPIObjectPath *link(const char *cls,
                         std::vector<std::pair<const char *, const CMPIObjectPath *>> refs) {
        CMPIObjectPath *p = path(cls);
        for (const auto &[name, ref] : refs) cmpihost::addReferenceKey(p, name, ref);
        return p;
    }

    Answered remove(const CMPIObjectPath *op) { return remove_in(request, op); }

    // The request answers into `into` (its own result); the status message
    // is read before `into` ends.
    Answered remove_in(cmpihost::Request &into, const CMPIObjectPath *op) {
        testing::internal::CaptureStdout();
        const CMPIStatus st =
            zone_Provider_DeleteInstance(nullptr, into.context(), into.result(), op);
        Answered answered{st.rc,
                          st.msg != nullptr ? cmpihost::text(st.msg) : "<none>",
                          {},
                          0,
                          testing::internal::GetCapturedStdout()};
        for (const cmpihost::Delivery &d : into.deliveries()) {
            EXPECT_EQ(d.kind, cmpihost::Delivery::Kind::Data);
            EXPECT_EQ(d.doneBefore, 0) << "the datum comes before returnDone";
            answered.data.push_back(text_of(d.data));
        }
        answered.done = into.doneCount();
        return answered;
    }

    // The mutex is taken once and released once the result is closed.
    void expect_locked_once() {
        EXPECT_CALL(platform, mutex_lock()).WillOnce(Invoke([this] {
            EXPECT_EQ(request.doneCount(), 0);
        }));
        EXPECT_CALL(platform, mutex_unlock()).WillOnce(Invoke([this] {
            EXPECT_EQ(request.doneCount(), 1) << "released after returnDone";
            EXPECT_EQ(request.deliveries().size(), 1u);
        }));
    }

    // The InstanceID split of a zone set, zone or alias.
    void expect_split(const char *id, int vsan, int number, int active, int result = 0) {
        EXPECT_CALL(platform, zs_cim_get_fields_from_generic_instance_id(StrEq(id), _, _, _))
            .WillOnce(DoAll(SetArgPointee<1>(vsan), SetArgPointee<2>(number),
                            SetArgPointee<3>(active), Return(result)));
    }

    StrictMock<PlatformMock> platform;
    cmpihost::Request request;

  private:
    const CMPIBroker *saved_broker_;
    int saved_queue_;
};

void expect_success(const Answered &a) {
    EXPECT_EQ(a.rc, CMPI_RC_OK);
    EXPECT_EQ(a.message, "Success!\n");
    EXPECT_EQ(a.data, std::vector<std::string>{"Success"});
    EXPECT_EQ(a.done, 1);
    EXPECT_NE(a.out.find(" ******* Success******\nI m in SUCCESS!\nend of delete_instance!\n"),
              std::string::npos)
        << a.out;
}

void expect_failure(const Answered &a, const std::string &text) {
    EXPECT_EQ(a.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(a.message, text);
    EXPECT_EQ(a.data, std::vector<std::string>{text});
    EXPECT_EQ(a.done, 1);
}

// ---- Before the lock ----------------------------------------------------

TEST_F(DeleteInstanceTest, PathsWithoutAUsableKeyAreTurnedAwayBeforeTheLock) {
    // StrictMock: no mutex, no platform call at all.
    const CMPIObjectPath *no_keys = path("VORNA_Zone");
    const CMPIObjectPath *wrong_key = keyed("VORNA_Zone", "Name", "1^2^0");
    const CMPIObjectPath *unserved = keyed("VORNA_Vsan", "InstanceID", "1^2^0");
    const CMPIObjectPath *no_link_keys = path("VORNA_ElementSettingData");
    for (const CMPIObjectPath *op : {no_keys, wrong_key, unserved, no_link_keys}) {
        const Answered a = remove(op);
        EXPECT_EQ(a.rc, CMPI_RC_ERROR);
        EXPECT_EQ(a.message, "<none>");
        EXPECT_TRUE(a.data.empty());
        EXPECT_EQ(a.done, 0);
        EXPECT_NE(a.out.find("deleteInstance can't find key\n"), std::string::npos) << a.out;
        EXPECT_EQ(a.out.find("end of delete_instance!"), std::string::npos);
    }
}

// ---- The answer table -----------------------------------------------------

struct AnswerCase {
    int platform_code;  // what the remove command gives back (0: it succeeds)
    CMPIrc rc;
    const char *text;   // datum and message
    const char *trace;  // printed before the datum
};

TEST_F(DeleteInstanceTest, EveryOutcomeHasItsDatumStatusAndMessage) {
    const AnswerCase cases[] = {
        {0, CMPI_RC_OK, "Success", " ******* Success******\n"},
        {-1, CMPI_RC_ERR_FAILED, "Unknown Error ", "Unknown Error \n"},
        {2, CMPI_RC_ERR_FAILED, "Invalid parent objectpath of CIM_MemberOfCollection!",
         "Invalid parent objectpath of CIM_MemberOfCollection!\n"},
        {3, CMPI_RC_ERR_FAILED, "Invalid zone member objectpath of CIM_ElementSettingData!",
         "Invalid zone member objectpath of CIM_ElementSettingData!\n"},
        {4, CMPI_RC_ERR_FAILED, "Invalid objectpath of CIM_ElementSettingData!\n",
         "Invalid objectpath of CIM_ElementSettingData!\n"},
        {77, CMPI_RC_ERR_FAILED, "zone server busy", ""},
    };
    for (const AnswerCase &c : cases) {
        SCOPED_TRACE(c.platform_code);
        const CMPIObjectPath *op = keyed("VORNA_ZoneSet", "InstanceID", "3^12^0");
        cmpihost::Request each;  // each case answers into its own result
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        expect_split("3^12^0", 3, 12, 0);
        EXPECT_CALL(platform, zs_cim_create_zoning_object_with_id(kQueue, 0, 3, 1, 12, nullptr, _))
            .WillOnce(DoAll(SetArgPointee<6>(c.platform_code), Return(c.platform_code != 0)));
        if (c.platform_code == 77)
            EXPECT_CALL(platform, syserr_format(77)).WillOnce(Return("zone server busy"));
        EXPECT_CALL(platform, mutex_unlock());

        const Answered a = remove_in(each, op);
        EXPECT_EQ(a.rc, c.rc);
        EXPECT_EQ(a.data, std::vector<std::string>{c.text});
        EXPECT_EQ(a.message, c.platform_code == 0 ? "Success!\n" : c.text);
        EXPECT_EQ(a.done, 1);
        const std::string tail = std::string(c.trace) + "end of delete_instance!\n";
        if (c.platform_code == 0)
            expect_success(a);
        else if (c.platform_code == 77)
            EXPECT_NE(a.out.find("zone server busy\nend of delete_instance!\n"), std::string::npos)
                << a.out;
        else
            EXPECT_NE(a.out.find(tail), std::string::npos) << a.out;
    }
}

TEST_F(DeleteInstanceTest, AFailedCommandThatLeavesTheCodeAtZeroIsASuccess) {
    InSequence order;
    EXPECT_CALL(platform, mutex_lock());
    expect_split("3^12^0", 3, 12, 0);
    EXPECT_CALL(platform, zs_cim_create_zoning_object_with_id(kQueue, 0, 3, 0, 12, nullptr, _))
        .WillOnce(Return(9));
    EXPECT_CALL(platform, mutex_unlock());
    expect_success(remove(keyed("VORNA_Zone", "InstanceID", "3^12^0")));
}

// ---- Zone sets, zones, zone aliases ---------------------------------------

struct ObjectCase {
    const char *cls;
    int type_code;
};

TEST_F(DeleteInstanceTest, ZoningObjectsAreRemovedFromTheEditableDatabaseByTypeCode) {
    const ObjectCase cases[] = {{"VORNA_ZoneSet", 1}, {"vorna_zone", 0}, {"VORNA_ZONEALIAS", 2}};
    for (const ObjectCase &c : cases) {
        SCOPED_TRACE(c.cls);
        const CMPIObjectPath *op = keyed(c.cls, "instanceid", "5^40^0");
        cmpihost::Request each;
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        expect_split("5^40^0", 5, 40, 0);
        EXPECT_CALL(platform,
                    zs_cim_create_zoning_object_with_id(kQueue, 0, 5, c.type_code, 40, nullptr, _))
            .WillOnce(Return(0));
        EXPECT_CALL(platform, mutex_unlock());
        const Answered a = remove_in(each, op);
        expect_success(a);
        EXPECT_NE(a.out.find("\tDbg found key instanceid : 5^40^0\n"), std::string::npos) << a.out;
    }
}

TEST_F(DeleteInstanceTest, ActiveOrUnparsableObjectsAreRefusedWithoutACommand) {
    for (int split_result : {0, 1}) {
        SCOPED_TRACE(split_result);
        const CMPIObjectPath *op = keyed("VORNA_Zone", "InstanceID", "5^40^1");
        cmpihost::Request each;
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        expect_split("5^40^1", 5, 40, split_result == 0 ? 1 : 0, split_result);
        EXPECT_CALL(platform, mutex_unlock());
        const Answered a = remove_in(each, op);
        EXPECT_EQ(a.rc, CMPI_RC_ERR_INVALID_PARAMETER);
        EXPECT_EQ(a.message, "cannot modify active zoning object!");
        EXPECT_EQ(a.data, std::vector<std::string>{"cannot modify active zoning object!"});
        EXPECT_EQ(a.done, 1);
        EXPECT_NE(a.out.find("end of delete_instance!\n"), std::string::npos);
    }
}

// ---- Zone members and classes without a branch ----------------------------

TEST_F(DeleteInstanceTest, AMemberLeavesAllItsParentsInOneCommand) {
    const char *id = "2^1^20:00:00:11:22:33:44:55^0";
    {
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        EXPECT_CALL(platform, zs_cim_remove_zone_member_from_all_parents(kQueue, StrEq(id)))
            .WillOnce(Return(0));
        EXPECT_CALL(platform, mutex_unlock());
    }
    const Answered ok = remove(keyed("VORNA_ZoneMemberSettingData", "InstanceID", id));
    expect_success(ok);
    EXPECT_NE(ok.out.find("stat fail for /etc/cim_debug_provider_zone"), std::string::npos);

    // The command gives back no code of its own: any failure is "Unknown Error".
    const CMPIObjectPath *op = keyed("VORNA_ZoneMemberSettingData", "InstanceID", id);
    cmpihost::Request each;
    InSequence order;
    EXPECT_CALL(platform, mutex_lock());
    EXPECT_CALL(platform, zs_cim_remove_zone_member_from_all_parents(kQueue, StrEq(id)))
        .WillOnce(Return(5));
    EXPECT_CALL(platform, mutex_unlock());
    expect_failure(remove_in(each, op), "Unknown Error ");
}

TEST_F(DeleteInstanceTest, ClassesWithoutABranchAnswerSuccessAndChangeNothing) {
    const CMPIObjectPath *paths[] = {
        keyed("VORNA_DeviceAlias", "InstanceID", "20:00:00:11:22:33:44:55"),
        keyed("VORNA_ZoneService", "Name", "1"),
        keyed("VORNA_HostedService", "Anything", "x"),
        keyed("VORNA_ZoneHostedCollection", "Antecedent", "x"),
        keyed("VORNA_HostedCollection", "Whatever", "x"),
    };
    for (const CMPIObjectPath *op : paths) {
        cmpihost::Request each;
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        EXPECT_CALL(platform, mutex_unlock());
        expect_success(remove_in(each, op));
    }
}

// ---- Member of collection -------------------------------------------------

class MemberOfCollectionDeleteTest : public DeleteInstanceTest {
  protected:
    const CMPIObjectPath *zone_set = keyed("VORNA_ZoneSet", "InstanceID", "4^1^0");
    const CMPIObjectPath *zone = keyed("VORNA_Zone", "InstanceID", "4^2^0");
    const CMPIObjectPath *alias = keyed("VORNA_ZoneAlias", "InstanceID", "4^3^0");
    const CMPIObjectPath *zone_elsewhere = keyed("VORNA_Zone", "InstanceID", "9^2^0");
    const CMPIObjectPath *zone_active = keyed("VORNA_Zone", "InstanceID", "4^2^1");
    const CMPIObjectPath *zone_set_active = keyed("VORNA_ZoneSet", "InstanceID", "4^1^1");
    const CMPIObjectPath *zone_without_key = path("VORNA_Zone");

    void expect_splits() {
        EXPECT_CALL(platform, zs_cim_get_fields_from_generic_instance_id(_, _, _, _))
            .WillRepeatedly(Invoke([](const char *id, int *vsan, int *number, int *active) {
                EXPECT_EQ(*vsan, 0) << "cleared before each parse";
                EXPECT_EQ(*active, 0) << "cleared before each parse";
                return std::sscanf(id, "%d^%d^%d", vsan, number, active) == 3 ? 0 : 1;
            }));
    }

    Answered remove_pair(std::vector<std::pair<const char *, const CMPIObjectPath *>> refs) {
        return remove(link("VORNA_ZoneMemberOfCollection", std::move(refs)));
    }
};

TEST_F(MemberOfCollectionDeleteTest, AZoneLeavesItsZoneSetAndAnAliasItsZone) {
    expect_locked_once();
    expect_splits();
    EXPECT_CALL(platform, zs_cim_add_zone_to_zone_set(kQueue, 0, 4, 1, 2, _)).WillOnce(Return(0));
    const Answered a = remove_pair({{"Collection", zone_set}, {"Member", zone}});
    expect_success(a);
    EXPECT_NE(a.out.find("Dbg delZmoc ZoneSet key is  4^1^0\n"
                         "Dbg deleteInstance ZMoc found_is  is 1\n"),
              std::string::npos)
        << a.out;
}

TEST_F(MemberOfCollectionDeleteTest, AnAliasLeavesItsZoneWithTheAliasCommand) {
    expect_locked_once();
    expect_splits();
    EXPECT_CALL(platform, zs_cim_add_alias_to_zone(kQueue, 0, 4, 2, 3, _)).WillOnce(Return(0));
    expect_success(remove_pair({{"collection", zone}, {"MEMBER", alias}}));
}

struct PairCase {
    const char *what;
    const char *first_key;
    const char *first;  // name of a fixture path
    const char *second_key;
    const char *second;
    std::string text;
};

TEST_F(MemberOfCollectionDeleteTest, UnusablePairsAreAnsweredWithoutACommand) {
    const std::map<std::string, const CMPIObjectPath *> named = {
        {"zone_set", zone_set},
        {"zone", zone},
        {"alias", alias},
        {"zone_elsewhere", zone_elsewhere},
        {"zone_active", zone_active},
        {"zone_set_active", zone_set_active},
        {"zone_without_key", zone_without_key},
    };
    const std::string unknown = "Unknown Error ";
    const std::string bad_parent = "Invalid parent objectpath of CIM_MemberOfCollection!";
    const std::string bad_member = "Invalid zone member objectpath of CIM_ElementSettingData!";
    const std::string incomplete = "Invalid objectpath of CIM_ElementSettingData!\n";
    const PairCase cases[] = {
        {"zone set as member", "Collection", "zone_set", "Member", "zone_set", unknown},
        {"alias as collection", "Collection", "alias", "Member", "zone", unknown},
        {"alias in a zone set", "Collection", "zone_set", "Member", "alias", unknown},
        {"member in another VSAN", "Collection", "zone_set", "Member", "zone_elsewhere",
         bad_member},
        {"active member", "Collection", "zone_set", "Member", "zone_active", bad_member},
        {"active collection", "Collection", "zone_set_active", "Member", "zone", bad_parent},
        {"member key first", "Member", "zone", "Collection", "zone_set", incomplete},
        {"member only", "Member", "zone", "Other", "zone", incomplete},
        {"collection without key", "Collection", "zone_without_key", "Member", "zone", incomplete},
        {"member without key", "Collection", "zone_set", "Member", "zone_without_key", incomplete},
    };
    expect_splits();
    for (const PairCase &c : cases) {
        SCOPED_TRACE(c.what);
        const CMPIObjectPath *op =
            link("VORNA_ZoneMemberOfCollection",
                 {{c.first_key, named.at(c.first)}, {c.second_key, named.at(c.second)}});
        cmpihost::Request each;
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        EXPECT_CALL(platform, mutex_unlock());
        expect_failure(remove_in(each, op), c.text);
    }
}

TEST_F(MemberOfCollectionDeleteTest, ARefusedCommandIsAnsweredWithItsCode) {
    expect_splits();
    {
        cmpihost::Request each;
        const CMPIObjectPath *op =
            link("VORNA_ZoneMemberOfCollection", {{"Collection", zone_set}, {"Member", zone}});
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        EXPECT_CALL(platform, zs_cim_add_zone_to_zone_set(kQueue, 0, 4, 1, 2, _))
            .WillOnce(DoAll(SetArgPointee<5>(31), Return(1)));
        EXPECT_CALL(platform, syserr_format(31)).WillOnce(Return("zone not in zone set"));
        EXPECT_CALL(platform, mutex_unlock());
        const Answered a = remove_in(each, op);
        expect_failure(a, "zone not in zone set");
        EXPECT_NE(a.out.find("Dbg - Error delete zone Member Of collection! - return code is 31"),
                  std::string::npos);
    }
    cmpihost::Request each;
    const CMPIObjectPath *op =
        link("VORNA_ZoneMemberOfCollection", {{"Collection", zone}, {"Member", alias}});
    InSequence order;
    EXPECT_CALL(platform, mutex_lock());
    EXPECT_CALL(platform, zs_cim_add_alias_to_zone(kQueue, 0, 4, 2, 3, _))
        .WillOnce(DoAll(SetArgPointee<5>(3), Return(1)));
    EXPECT_CALL(platform, mutex_unlock());
    const Answered a = remove_in(each, op);
    expect_failure(a, "Invalid zone member objectpath of CIM_ElementSettingData!");
    EXPECT_NE(a.out.find("Dbg - Error 2 delete zone Member Of collection! - return code is 3"),
              std::string::npos);
}

// ---- Element setting data -------------------------------------------------

class ElementSettingDataDeleteTest : public MemberOfCollectionDeleteTest {
  protected:
    const CMPIObjectPath *member =
        keyed("VORNA_ZoneMemberSettingData", "InstanceID", "4^1^20:00:00:11:22:33:44:55^0");
    const CMPIObjectPath *member_elsewhere =
        keyed("VORNA_ZoneMemberSettingData", "InstanceID", "8^1^20:00:00:11:22:33:44:55^0");
    const CMPIObjectPath *member_active =
        keyed("VORNA_ZoneMemberSettingData", "InstanceID", "4^1^20:00:00:11:22:33:44:55^1");

    // The member form: VSAN, member type, value, active flag. The encoded
    // value is the text's first three bytes, type code 7.
    void expect_member_splits() {
        EXPECT_CALL(platform, zs_cim_get_fields_from_member_instance_id(_, _, _, _, _, _, 0))
            .WillRepeatedly(Invoke([](const char *id, int *vsan, uint8_t *type,
                                      unsigned char *value, int *length, int *active, int) {
                EXPECT_EQ(*vsan, 0);
                EXPECT_EQ(*active, 0);
                for (int i = 0; i < 255; ++i) EXPECT_EQ(value[i], 0) << "cleared buffer";
                char text[64] = {};
                int cim_type = 0;
                if (std::sscanf(id, "%d^%d^%63[^^]^%d", vsan, &cim_type, text, active) != 4)
                    return 1;
                *type = 7;
                std::memcpy(value, "ABC", 3);
                *length = 3;
                return 0;
            }));
    }

    Answered remove_esd(std::vector<std::pair<const char *, const CMPIObjectPath *>> refs) {
        return remove(link("VORNA_ElementSettingData", std::move(refs)));
    }
};

TEST_F(ElementSettingDataDeleteTest, OneMembershipOfAZoneOrAliasIsRemoved) {
    expect_splits();
    expect_member_splits();
    for (const auto &[parent, type_code] : {std::pair{zone, 0}, std::pair{alias, 2}}) {
        const CMPIObjectPath *op =
            link("VORNA_ElementSettingData", {{"ManagedElement", parent}, {"SettingData", member}});
        cmpihost::Request each;
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        EXPECT_CALL(platform, zs_cim_add_zoning_member(kQueue, 0, 4, 0, type_code,
                                                       type_code == 0 ? 2 : 3, 7u, _, _, _))
            .WillOnce(Invoke([](int, int, int, int, int, int, uint32_t, unsigned char *value,
                                int *length, int *) {
                EXPECT_EQ(std::memcmp(value, "ABC", 3), 0);
                EXPECT_EQ(*length, 3);
                return 0;
            }));
        EXPECT_CALL(platform, mutex_unlock());
        expect_success(remove_in(each, op));
    }
}

TEST_F(ElementSettingDataDeleteTest, UnusablePairsAreAnsweredWithoutACommand) {
    const std::map<std::string, const CMPIObjectPath *> named = {
        {"zone", zone},
        {"alias", alias},
        {"zone_set", zone_set},
        {"zone_active", zone_active},
        {"member", member},
        {"member_elsewhere", member_elsewhere},
        {"member_active", member_active},
        {"zone_without_key", zone_without_key},
    };
    const std::string unknown = "Unknown Error ";
    const std::string bad_parent = "Invalid parent objectpath of CIM_MemberOfCollection!";
    const std::string bad_member = "Invalid zone member objectpath of CIM_ElementSettingData!";
    const std::string incomplete = "Invalid objectpath of CIM_ElementSettingData!\n";
    struct EsdCase {
        PairCase pair;
        const char *trace;
    };
    const EsdCase cases[] = {
        {{"zone set as parent", "ManagedElement", "zone_set", "SettingData", "member", unknown},
         ""},
        {{"zone as setting data", "ManagedElement", "zone", "SettingData", "alias", unknown}, ""},
        {{"active parent", "ManagedElement", "zone_active", "SettingData", "member", bad_parent},
         " zs cim get fields from inst id () failed \n"},
        {{"member in another VSAN", "ManagedElement", "zone", "SettingData", "member_elsewhere",
          bad_member},
         "Dbg 33 zs cim get fields from inst id () failed \n"},
        {{"active member", "ManagedElement", "zone", "SettingData", "member_active", bad_member},
         "Dbg 33 zs cim get fields from inst id () failed \n"},
        {{"setting data first", "SettingData", "member", "ManagedElement", "zone", incomplete},
         "Dbg deleteInstance In ESD 33 found id is 1\n"},
        {{"setting data only", "SettingData", "member", "Other", "zone", incomplete},
         "Dbg deleteInstance In ESD 33 found id is 0\n"},
        {{"parent without key", "ManagedElement", "zone_without_key", "SettingData", "member",
          incomplete},
         "Dbg deleteInstance In ESD 33 found id is 0\n"},
    };
    expect_splits();
    expect_member_splits();
    for (const EsdCase &c : cases) {
        SCOPED_TRACE(c.pair.what);
        const CMPIObjectPath *op =
            link("VORNA_ElementSettingData", {{c.pair.first_key, named.at(c.pair.first)},
                                              {c.pair.second_key, named.at(c.pair.second)}});
        cmpihost::Request each;
        InSequence order;
        EXPECT_CALL(platform, mutex_lock());
        EXPECT_CALL(platform, mutex_unlock());
        const Answered a = remove_in(each, op);
        expect_failure(a, c.pair.text);
        EXPECT_NE(a.out.find(c.trace), std::string::npos) << a.out;
    }
}

TEST_F(ElementSettingDataDeleteTest, ARefusedCommandIsAnsweredWithItsCode) {
    expect_locked_once();
    expect_splits();
    expect_member_splits();
    EXPECT_CALL(platform, zs_cim_add_zoning_member(kQueue, 0, 4, 0, 0, 2, 7u, _, _, _))
        .WillOnce(DoAll(SetArgPointee<9>(-1), Return(1)));
    const Answered a = remove_esd({{"ManagedElement", zone}, {"SettingData", member}});
    expect_failure(a, "Unknown Error ");
    EXPECT_NE(a.out.find("Dbg - Error delete zone element setting data! - return code is -1"),
              std::string::npos);
}

}  // namespace
