// deleteInstance: the key search before the lock, the one command and the
// one answer of every outcome (datum, status, done, then the mutex
// released), the refusal of the enforced database, and the two association
// branches with their key-order rule.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <strings.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "read_side_support.h"

using ::testing::_;
using ::testing::DoAll;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::SetArgPointee;
using ::testing::StrEq;

namespace {

using readside::kQueue;
constexpr const char *kNamespace = "root/cimv2";
constexpr const char *kSuccess = "Success";
constexpr const char *kUnknown = "Unknown Error ";
constexpr const char *kBadParent = "Invalid parent objectpath of CIM_MemberOfCollection!";
constexpr const char *kBadMember = "Invalid zone member objectpath of CIM_ElementSettingData!";
constexpr const char *kIncomplete = "Invalid objectpath of CIM_ElementSettingData!\n";
constexpr const char *kActive = "cannot modify active zoning object!";
constexpr const char *kBusy = "zone server busy";  // the platform's text of any other code

// The platform command a request is expected to make under the lock.
enum class Command { None, Object, Member, ZoneInSet, AliasInZone, MemberOfZone, MemberOfAlias };

class DeleteInstanceTest : public readside::ReadSideTest {
  protected:
    CMPIObjectPath *keyed(const char *cls, const char *key, const char *value) {
        CMPIObjectPath *p = request.newObjectPath(kNamespace, cls);
        if (key != nullptr) cmpihost::addStringKey(p, key, value);
        return p;
    }

    // InstanceIDs split as the platform splits them: "vsan^number^active",
    // and for members "vsan^type^value^active", the value encoded as the
    // text's first three bytes under type code 7. The outputs must have
    // been cleared before each split.
    void expect_splits() {
        EXPECT_CALL(platform, zs_cim_get_fields_from_generic_instance_id(_, _, _, _))
            .WillRepeatedly([](const char *id, int *vsan, int *number, int *active) {
                EXPECT_EQ(*vsan, 0);
                EXPECT_EQ(*active, 0);
                return std::sscanf(id, "%d^%d^%d", vsan, number, active) == 3 ? 0 : 1;
            });
        EXPECT_CALL(platform, zs_cim_get_fields_from_member_instance_id(_, _, _, _, _, _, 0))
            .WillRepeatedly([](const char *id, int *vsan, uint8_t *type, unsigned char *value,
                               int *length, int *active, int) {
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
            });
    }

    // The command, made with the given code and result. Zoning objects are
    // VSAN 3 number 12; links are in VSAN 4: zone set 1, zone 2, alias 3.
    void expect_command(Command command, int type, int code, int result) {
        switch (command) {
            case Command::None:
                return;
            case Command::Object:
                EXPECT_CALL(platform,
                            zs_cim_create_zoning_object_with_id(kQueue, 0, 3, type, 12, nullptr, _))
                    .WillOnce(DoAll(SetArgPointee<6>(code), Return(result)));
                break;
            case Command::Member:
                EXPECT_CALL(platform, zs_cim_remove_zone_member_from_all_parents(
                                          kQueue, StrEq("2^1^20:00:00:11:22:33:44:55^0")))
                    .WillOnce(Return(result));
                break;
            case Command::ZoneInSet:
                EXPECT_CALL(platform, zs_cim_add_zone_to_zone_set(kQueue, 0, 4, 1, 2, _))
                    .WillOnce(DoAll(SetArgPointee<5>(code), Return(result)));
                break;
            case Command::AliasInZone:
                EXPECT_CALL(platform, zs_cim_add_alias_to_zone(kQueue, 0, 4, 2, 3, _))
                    .WillOnce(DoAll(SetArgPointee<5>(code), Return(result)));
                break;
            case Command::MemberOfZone:
            case Command::MemberOfAlias: {
                const bool zone = command == Command::MemberOfZone;
                EXPECT_CALL(platform, zs_cim_add_zoning_member(kQueue, 0, 4, 0, zone ? 0 : 2,
                                                               zone ? 2 : 3, 7u, _, _, _))
                    .WillOnce([code, result](int, int, int, int, int, int, uint32_t,
                                             unsigned char *value, int *length, int *out) {
                        EXPECT_EQ(std::memcmp(value, "ABC", 3), 0);
                        EXPECT_EQ(*length, 3);
                        *out = code;
                        return result;
                    });
                break;
            }
        }
        const bool described = code > 4 && result != 0;
        if (described) EXPECT_CALL(platform, syserr_format(code)).WillOnce(Return(kBusy));
    }

    // Runs the request into a result of its own and checks its one answer,
    // that of `text`: datum, status and message, the lines that end the
    // output, the result closed, and the mutex released after that, with
    // `under_lock` stating the platform calls made while it is held. A null
    // text: the request is turned away before the lock, without an answer.
    // Gives the request's output.
    std::string remove(
        const CMPIObjectPath *op, const char *text,
        const std::function<void()> &under_lock = [] {}) {
        cmpihost::Request into;
        if (text != nullptr) {
            expect_splits();
            InSequence order;
            EXPECT_CALL(platform, mutex_lock()).WillOnce([&] { EXPECT_EQ(into.doneCount(), 0); });
            under_lock();
            EXPECT_CALL(platform, mutex_unlock()).WillOnce([&] {
                EXPECT_EQ(into.doneCount(), 1) << "released after returnDone";
                EXPECT_EQ(into.deliveries().size(), 1u);
            });
        }
        testing::internal::CaptureStdout();
        const CMPIStatus st =
            zone_Provider_DeleteInstance(nullptr, into.context(), into.result(), op);
        const std::string out = testing::internal::GetCapturedStdout();
        const std::string message = st.msg != nullptr ? cmpihost::text(st.msg) : "<none>";
        testing::Mock::VerifyAndClearExpectations(&platform);
        if (text == nullptr) {
            EXPECT_EQ(st.rc, CMPI_RC_ERROR);
            EXPECT_EQ(message, "<none>");
            EXPECT_TRUE(into.deliveries().empty());
            EXPECT_EQ(into.doneCount(), 0);
            EXPECT_THAT(out, HasSubstr("deleteInstance can't find key\n"));
            EXPECT_THAT(out, testing::Not(HasSubstr("end of delete_instance!")));
            return out;
        }
        const std::string t = text;
        EXPECT_EQ(st.rc, t == kSuccess  ? CMPI_RC_OK
                         : t == kActive ? CMPI_RC_ERR_INVALID_PARAMETER
                                        : CMPI_RC_ERR_FAILED);
        EXPECT_EQ(message, t == kSuccess ? "Success!\n" : t);
        EXPECT_EQ(into.doneCount(), 1);
        EXPECT_EQ(into.deliveries().size(), 1u);
        for (const cmpihost::Delivery &d : into.deliveries()) {
            EXPECT_EQ(d.kind, cmpihost::Delivery::Kind::Data);
            EXPECT_EQ(d.doneBefore, 0) << "the datum comes before returnDone";
            EXPECT_EQ(d.data.type, CMPI_chars);
            EXPECT_STREQ(d.data.value.chars, text);
        }
        const std::string before_end = t == kSuccess  ? " ******* Success******\nI m in SUCCESS!\n"
                                       : t == kActive ? ""
                                       : t.back() == '\n' ? t
                                                          : t + "\n";
        EXPECT_THAT(out, EndsWith(before_end + "end of delete_instance!\n"));
        return out;
    }
};

// A path without a key its class accepts (an unserved class has none) is
// turned away before the lock with no platform call. Zoning objects leave
// the editable database by their type code; a code the command gives back
// is answered as such (the codes the operation knows are answered through
// the links below), one it leaves at 0 is a success. An active or
// unparsable InstanceID is refused without a command. A member leaves all
// its parents in one command that has no code of its own. Classes without a
// branch answer success and change nothing.
TEST_F(DeleteInstanceTest, EveryClassMakesItsOneCommandAndEveryOutcomeHasItsAnswer) {
    struct Row {
        const char *cls, *key, *id;
        const char *text;  // null: turned away
        Command command = Command::None;
        int type = 0;  // of a zoning object
        int code = 0;  // what the command leaves in its code
        int result = 0;
    };
    const char *member = "2^1^20:00:00:11:22:33:44:55^0";
    const char *id = "instanceid";
    const Row rows[] = {
        {"VORNA_Zone", nullptr, "", nullptr},
        {"VORNA_Zone", "Name", "1^2^0", nullptr},
        {"VORNA_Vsan", "InstanceID", "1^2^0", nullptr},
        {"VORNA_ElementSettingData", nullptr, "", nullptr},
        {"VORNA_ZoneSet", id, "3^12^0", kSuccess, Command::Object, 1},
        {"vorna_zone", id, "3^12^0", kSuccess, Command::Object, 0},
        {"VORNA_ZONEALIAS", id, "3^12^0", kSuccess, Command::Object, 2},
        {"VORNA_ZoneSet", id, "3^12^0", kBusy, Command::Object, 1, 77, 1},
        {"VORNA_Zone", id, "3^12^0", kSuccess, Command::Object, 0, 0, 9},
        {"VORNA_Zone", id, "3^12^1", kActive},
        {"VORNA_Zone", id, "3^12", kActive},
        {"VORNA_ZoneMemberSettingData", id, member, kSuccess, Command::Member},
        {"VORNA_ZoneMemberSettingData", id, member, kUnknown, Command::Member, 0, 0, 5},
        {"VORNA_DeviceAlias", id, "20:00:00:11:22:33:44:55", kSuccess},
        {"VORNA_ZoneService", "Name", "1", kSuccess},
        {"VORNA_HostedService", id, "x", kSuccess},
        {"VORNA_ZoneHostedCollection", id, "x", kSuccess},
        {"VORNA_HostedCollection", id, "x", kSuccess},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(std::string(row.cls) + " " + row.id + " code " + std::to_string(row.code));
        const std::string out = remove(keyed(row.cls, row.key, row.id), row.text, [&] {
            expect_command(row.command, row.type, row.code, row.result);
        });
        const std::string found_key =
            std::string("\tDbg found key ") + (row.key ? row.key : "") + " : " + row.id + "\n";
        EXPECT_EQ(out.find(found_key) != std::string::npos, row.text != nullptr) << out;
        // The member branch offers the debug hook.
        EXPECT_EQ(out.find("stat fail for /etc/cim_debug_provider_zone") != std::string::npos,
                  row.command == Command::Member);
    }
}

// A link goes by the command of its pair; the parent key must come first,
// the parent and member must be editable, of the right classes and in one
// VSAN. Only a known pair leads to a command.
TEST_F(DeleteInstanceTest, LinksGoByTheCommandOfTheirPairAndUnusablePairsMakeNone) {
    const std::map<std::string, const CMPIObjectPath *> named = {
        {"set", keyed("VORNA_ZoneSet", "InstanceID", "4^1^0")},
        {"zone", keyed("VORNA_Zone", "InstanceID", "4^2^0")},
        {"alias", keyed("VORNA_ZoneAlias", "InstanceID", "4^3^0")},
        {"member", keyed("VORNA_ZoneMemberSettingData", "InstanceID", "4^1^20:00:00:11:22^0")},
        {"zone elsewhere", keyed("VORNA_Zone", "InstanceID", "9^2^0")},
        {"member elsewhere", keyed("VORNA_ZoneMemberSettingData", "InstanceID", "8^1^20:00^0")},
        {"active set", keyed("VORNA_ZoneSet", "InstanceID", "4^1^1")},
        {"active zone", keyed("VORNA_Zone", "InstanceID", "4^2^1")},
        {"active member", keyed("VORNA_ZoneMemberSettingData", "InstanceID", "4^1^20:00^1")},
        {"zone without key", keyed("VORNA_Zone", nullptr, nullptr)},
    };
    struct Row {
        const char *what;
        const char *first_key, *first, *second_key, *second;
        const char *text;
        const char *trace = "";
        Command command = Command::None;
        int code = 0;  // what the command gives back and leaves in its code
    };
    const char *zmoc_found =
        "Dbg delZmoc ZoneSet key is  4^1^0\nDbg deleteInstance ZMoc found_is  is 1\n";
    const char *esd_refused = "Dbg 33 zs cim get fields from inst id () failed \n";
    const Row rows[] = {
        {"zone in zone set", "Collection", "set", "Member", "zone", kSuccess, zmoc_found,
         Command::ZoneInSet},
        {"alias in zone", "collection", "zone", "MEMBER", "alias", kSuccess, "",
         Command::AliasInZone},
        {"refused zone", "Collection", "set", "Member", "zone", kBusy,
         "Dbg - Error delete zone Member Of collection! - return code is 31", Command::ZoneInSet,
         31},
        {"refused alias", "Collection", "zone", "Member", "alias", kBadMember,
         "Dbg - Error 2 delete zone Member Of collection! - return code is 3", Command::AliasInZone,
         3},
        {"zone set as member", "Collection", "set", "Member", "set", kUnknown},
        {"alias as collection", "Collection", "alias", "Member", "zone", kUnknown},
        {"alias in a zone set", "Collection", "set", "Member", "alias", kUnknown},
        {"member in another VSAN", "Collection", "set", "Member", "zone elsewhere", kBadMember},
        {"active member", "Collection", "set", "Member", "active zone", kBadMember},
        {"active collection", "Collection", "active set", "Member", "zone", kBadParent},
        {"member key first", "Member", "zone", "Collection", "set", kIncomplete},
        {"member only", "Member", "zone", "Other", "zone", kIncomplete},
        {"collection without key", "Collection", "zone without key", "Member", "zone", kIncomplete},
        {"member without key", "Collection", "set", "Member", "zone without key", kIncomplete},
        {"member of zone", "ManagedElement", "zone", "SettingData", "member", kSuccess, "",
         Command::MemberOfZone},
        {"member of alias", "ManagedElement", "alias", "SettingData", "member", kSuccess, "",
         Command::MemberOfAlias},
        {"refused member", "ManagedElement", "zone", "SettingData", "member", kUnknown,
         "Dbg - Error delete zone element setting data! - return code is -1", Command::MemberOfZone,
         -1},
        {"zone set as parent", "ManagedElement", "set", "SettingData", "member", kUnknown},
        {"zone as setting data", "ManagedElement", "zone", "SettingData", "alias", kUnknown},
        {"active parent", "ManagedElement", "active zone", "SettingData", "member", kBadParent,
         " zs cim get fields from inst id () failed \n"},
        {"member in another VSAN", "ManagedElement", "zone", "SettingData", "member elsewhere",
         kBadMember, esd_refused},
        {"active member", "ManagedElement", "zone", "SettingData", "active member", kBadMember,
         esd_refused},
        {"setting data first", "SettingData", "member", "ManagedElement", "zone", kIncomplete,
         "Dbg deleteInstance In ESD 33 found id is 1\n"},
        {"setting data only", "SettingData", "member", "Other", "zone", kIncomplete,
         "Dbg deleteInstance In ESD 33 found id is 0\n"},
        {"parent without key", "ManagedElement", "zone without key", "SettingData", "member",
         kIncomplete, "Dbg deleteInstance In ESD 33 found id is 0\n"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        const bool esd = strcasecmp(row.first_key, "ManagedElement") == 0 ||
                         strcasecmp(row.first_key, "SettingData") == 0;
        CMPIObjectPath *op = keyed(
            esd ? "VORNA_ElementSettingData" : "VORNA_ZoneMemberOfCollection", nullptr, nullptr);
        cmpihost::addReferenceKey(op, row.first_key, named.at(row.first));
        cmpihost::addReferenceKey(op, row.second_key, named.at(row.second));
        const std::string out =
            remove(op, row.text, [&] { expect_command(row.command, 0, row.code, row.code != 0); });
        EXPECT_THAT(out, HasSubstr(row.trace));
    }
}

}  // namespace
