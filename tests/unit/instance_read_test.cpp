// The instance read operations: each served class reaching its own handler
// under the zoning mutex, the refusals of unserved classes, the key that
// getInstance picks, and the status and trace lines it ends with.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "read_side_support.h"

namespace {

using readside::hand_back_array;
using readside::kNamespace;
using readside::kQueue;
using testing::_;
using testing::DoAll;
using testing::EndsWith;
using testing::HasSubstr;
using testing::InSequence;
using testing::Not;
using testing::Return;
using testing::SetArgPointee;
using testing::StartsWith;
using testing::StrEq;

enum class Op { Names, Instances, Get };
constexpr Op kOps[] = {Op::Names, Op::Instances, Op::Get};
constexpr const char *kOpNames[] = {"enumInstanceNames", "enumInstances", "getInstance"};

const char *kProps[] = {"InstanceID", "Name", nullptr};

// Runs one operation into the request's result; its standard output goes
// to *trace.
CMPIStatus run(Op op, cmpihost::Request &request, const CMPIObjectPath *path, std::string *trace) {
    testing::internal::CaptureStdout();
    CMPIStatus st{CMPI_RC_ERR_FAILED, nullptr};
    if (op == Op::Names)
        st = zone_Provider_EnumInstanceNames(nullptr, request.context(), request.result(), path);
    else if (op == Op::Instances)
        st =
            zone_Provider_EnumInstances(nullptr, request.context(), request.result(), path, kProps);
    else
        st = zone_Provider_GetInstance(nullptr, request.context(), request.result(), path, kProps);
    *trace = testing::internal::GetCapturedStdout();
    return st;
}

const CMPIBroker *broker() {
    return cmpihost::broker();
}

// The argument of type T among a builder's, or `none` when it takes none.
template <typename T, typename... Args>
T arg_of(T none, Args... args) {
    auto take = [&](auto a) {
        if constexpr (std::is_same_v<decltype(a), T>) none = a;
    };
    (take(args), ...);
    return none;
}

// A by-InstanceID lookup that knows "key-text" only, on the provider's queue.
template <typename Record>
auto key_text() {
    return [](int queue, const char *id, Record **record) {
        if (queue != kQueue || std::strcmp(id, "key-text") != 0) return 1;
        *record = readside::single_record<Record>(id);
        return 0;
    };
}

// A parent's one child.
template <typename Record>
auto child() {
    return [](int, const char *, Record **list) {
        *list = readside::single_record<Record>("c");
        return 0;
    };
}

// The platform holds one object of every kind, all in VSAN 8, on the
// provider's queue: one active record per kind, a zone in the zone set, a
// member in the zone, one device alias. Only "key-text" is found by
// InstanceID; every database and list not named here is empty. Every
// builder labels what it makes and notes what it was asked for; the zone
// service builders make something of VSAN 8 only.
class DispatchTest : public readside::ReadSideTestWith<testing::NiceMock<PlatformMock>> {
  public:
    struct Built {
        std::string label, cls, ns;
        const CMPIBroker *broker;
        bool props_given;  // the request's property list, where the builder takes one
        bool locked;       // made under the zoning mutex
    };
    std::vector<Built> built;
    readside::LabelledObjects *seen = nullptr;
    bool locked = false;

    template <typename Made>
    auto makes(const char *label) {
        return [this, label](const char *cls, const char *ns, auto... rest) -> Made * {
            built.push_back({label, cls, ns, arg_of<const CMPIBroker *>(nullptr, rest...),
                             arg_of<const char **>(kProps, rest...) == kProps, locked});
            if constexpr (std::is_same_v<Made, CMPIObjectPath>)
                return seen->path(label);
            else
                return seen->instance(label);
        };
    }

    DispatchTest() {
        auto &p = platform;
        ON_CALL(p, mutex_lock).WillByDefault([this] { locked = true; });
        ON_CALL(p, mutex_unlock).WillByDefault([this] { locked = false; });
        ON_CALL(p, vsan_cim_get_vsanEntry(kQueue, _, _))
            .WillByDefault([](int, int, VsanEntry *cursor) {
                if (cursor->vsan != 0) return 1;
                cursor->vsan = 8;
                return 0;
            });
        ON_CALL(p, vsan_cim_get_all_vsanEntry(kQueue, _, _))
            .WillByDefault([](int, int *count, VsanEntry **out) {
                *count = 1;
                *out = static_cast<VsanEntry *>(std::calloc(1, sizeof(VsanEntry)));
                (*out)->vsan = 8;
                return 0;
            });
        ON_CALL(p, zs_cim_get_all_active_zone_sets(kQueue, 8, _, _))
            .WillByDefault(hand_back_array<ZoneSetRecord>({"s"}));
        ON_CALL(p, zs_cim_get_all_active_zones(kQueue, 8, _, _))
            .WillByDefault(hand_back_array<ZoneRecord>({"z"}));
        ON_CALL(p, zs_cim_get_all_active_zone_aliases(kQueue, 8, _, _))
            .WillByDefault(hand_back_array<ZoneAliasRecord>({"a"}));
        ON_CALL(p, zs_cim_get_all_active_zone_members(kQueue, 8, _, _))
            .WillByDefault(readside::hand_back_members({"m"}));
        ON_CALL(p, zs_cim_get_zone_set_by_instance_id).WillByDefault(key_text<ZoneSetRecord>());
        ON_CALL(p, zs_cim_get_zone_by_instance_id).WillByDefault(key_text<ZoneRecord>());
        ON_CALL(p, zs_cim_get_zone_alias_by_instance_id).WillByDefault(key_text<ZoneAliasRecord>());
        ON_CALL(p, zs_cim_get_zone_member_by_instance_id)
            .WillByDefault(key_text<ZoneMemberRecord>());
        ON_CALL(p, zs_cim_get_zone_set_zones_by_instance_id).WillByDefault(child<ZoneRecord>());
        ON_CALL(p, zs_cim_get_zone_zone_members_by_instance_id)
            .WillByDefault(child<ZoneMemberRecord>());
        static int iterator_token;
        auto *iterator = reinterpret_cast<ddas_iterator *>(&iterator_token);
        ON_CALL(p, ddas_api_get_all_device_alias_entries(kQueue, _, _))
            .WillByDefault(DoAll(SetArgPointee<2>(iterator), Return(0)));
        ON_CALL(p, ddas_api_iter_get_num_entries)
            .WillByDefault(DoAll(SetArgPointee<1>(1), Return(0)));
        ON_CALL(p, getCSName).WillByDefault(Return("switch"));

        ON_CALL(p, zone_set_fill_reference).WillByDefault(makes<CMPIObjectPath>("zone set"));
        ON_CALL(p, zone_set_build_instance).WillByDefault(makes<CMPIInstance>("zone set"));
        ON_CALL(p, zone_fill_reference).WillByDefault(makes<CMPIObjectPath>("zone"));
        ON_CALL(p, zone_build_instance).WillByDefault(makes<CMPIInstance>("zone"));
        ON_CALL(p, zone_alias_fill_reference).WillByDefault(makes<CMPIObjectPath>("alias"));
        ON_CALL(p, zone_alias_build_instance).WillByDefault(makes<CMPIInstance>("alias"));
        ON_CALL(p, zone_member_fill_reference).WillByDefault(makes<CMPIObjectPath>("member"));
        ON_CALL(p, zone_member_build_instance).WillByDefault(makes<CMPIInstance>("member"));
        ON_CALL(p, device_alias_fill_reference)
            .WillByDefault(makes<CMPIObjectPath>("device alias"));
        ON_CALL(p, device_alias_build_instance).WillByDefault(makes<CMPIInstance>("device alias"));
        ON_CALL(p, zone_service_fill_reference(_, _, 8, _))
            .WillByDefault(makes<CMPIObjectPath>("service"));
        ON_CALL(p, zone_service_build_instance(_, _, 8, _, kQueue, _))
            .WillByDefault(makes<CMPIInstance>("service"));
        ON_CALL(p, hosted_service_fill_reference).WillByDefault(makes<CMPIObjectPath>("hosted"));
        ON_CALL(p, hosted_service_build_instance).WillByDefault(makes<CMPIInstance>("hosted"));
        ON_CALL(p, esd_fill_reference_zoneZoneMember).WillByDefault(makes<CMPIObjectPath>("esd"));
        ON_CALL(p, esd_build_instance).WillByDefault(makes<CMPIInstance>("esd"));
        ON_CALL(p, zmoc_fill_reference_zoneSetZone).WillByDefault(makes<CMPIObjectPath>("moc"));
        ON_CALL(p, zmoc_build_instance_MemberCollection).WillByDefault(makes<CMPIInstance>("moc"));
        ON_CALL(p, zone_hosted_collection_fill_reference)
            .WillByDefault(makes<CMPIObjectPath>("zhc"));
        ON_CALL(p, association_class_build_instance_path).WillByDefault(makes<CMPIInstance>("zhc"));
    }
};

struct DispatchRow {
    const char *cls;  // as the request writes it
    const char *key_name;
    const char *label;        // of what the class's own builders make
    const char *builder_cls;  // the class they are given; null: as written
    bool get_from_request;    // getInstance rebuilds the link from the path alone
};

const DispatchRow kDispatchRows[] = {
    {"VORNA_ZoneSet", "InstanceID", "zone set", nullptr, false},
    {"VORNA_Zone", "InstanceID", "zone", nullptr, false},
    {"VORNA_ZoneAlias", "InstanceID", "alias", nullptr, false},
    {"VORNA_ZoneMemberSettingData", "InstanceID", "member", nullptr, false},
    {"VORNA_DeviceAlias", "InstanceID", "device alias", nullptr, false},
    {"VORNA_ZoneService", "Name", "service", "VORNA_ZoneService", false},
    {"VORNA_HostedService", "Anything", "hosted", "VORNA_HostedService", true},
    {"VORNA_ElementSettingData", "InstanceID", "esd", "VORNA_ElementSettingData", false},
    {"VORNA_ZoneMemberOfCollection", "InstanceID", "moc", "VORNA_ZoneMemberOfCollection", false},
    {"VORNA_ZoneHostedCollection", "InstanceID", "zhc", "VORNA_ZoneHostedCollection", true},
};

// Every operation on a served class, whatever the case of its name, reaches
// that class's handler, which builds under the mutex with the request's
// namespace and property list and the provider's broker. getInstance hands
// the handler the key ("key-text", VSAN 8 for the zone service).
TEST_F(DispatchTest, EachServedClassReachesItsHandlerUnderTheMutexInAnyCase) {
    for (const DispatchRow &row : kDispatchRows) {
        std::string lower = row.cls;
        for (char &c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        for (const std::string &cls : {std::string(row.cls), lower}) {
            for (Op op : kOps) {
                SCOPED_TRACE(cls + " " + kOpNames[static_cast<int>(op)]);
                cmpihost::Request each;
                readside::LabelledObjects labelled(each);
                seen = &labelled;
                built.clear();
                CMPIObjectPath *op_path = each.newObjectPath(kNamespace, cls.c_str());
                cmpihost::addStringKey(op_path, row.key_name,
                                       row.key_name == std::string("Name") ? "8" : "key-text");
                const bool from_request = op == Op::Get && row.get_from_request;
                {
                    InSequence order;
                    EXPECT_CALL(platform, mutex_lock());
                    if (from_request) EXPECT_CALL(platform, getCSName());
                    EXPECT_CALL(platform, mutex_unlock());
                }
                std::string trace;
                const CMPIStatus st = run(op, each, op_path, &trace);
                EXPECT_EQ(st.rc, CMPI_RC_OK);
                EXPECT_EQ(st.msg, nullptr);
                EXPECT_EQ(each.doneCount(), 0);
                const std::string label = from_request ? "<unlabelled>" : row.label;
                const std::vector<std::string> delivered = labelled.delivered();
                EXPECT_THAT(delivered,
                            testing::AllOf(testing::Not(testing::IsEmpty()), testing::Each(label)));
                EXPECT_EQ(labelled.kinds(),
                          std::string(delivered.size(), op == Op::Names ? 'P' : 'I'));
                for (const Built &b : built) {
                    if (b.label != label) continue;
                    EXPECT_EQ(b.cls, row.builder_cls != nullptr ? row.builder_cls : cls);
                    EXPECT_EQ(b.ns, kNamespace);
                    EXPECT_EQ(b.broker, broker());
                    EXPECT_TRUE(b.props_given);
                    EXPECT_TRUE(b.locked);
                }
                const char *start = op == Op::Names       ? "In EnumInstanceNames ZoneProvider"
                                    : op == Op::Instances ? "In EnumInstances ZoneProvider"
                                                          : "In Zone Provider:: Property [ 0 ] = "
                                                            "InstanceID \nIn Zone Provider:: "
                                                            "Property [ 1 ] = Name \nIn Get "
                                                            "Instance ZoneProvider";
                EXPECT_THAT(trace, StartsWith(start));
                if (op == Op::Get) {
                    EXPECT_THAT(trace, EndsWith(" Returnng successs always \n"));
                    EXPECT_THAT(trace, Not(HasSubstr("GetInstance() failed")));
                }
                testing::Mock::VerifyAndClearExpectations(&platform);
            }
        }
    }
}

using InstanceReadTest = readside::ReadSideTest;

// enumInstances and getInstance refuse an unserved class before taking the
// mutex (the strict double fails on any platform call); enumInstanceNames
// finds no handler and succeeds. The hosted collection is served, accepts
// any key (only the first is traced) and has no instances.
TEST_F(InstanceReadTest, UnservedClassesAreRefusedExceptByNamesAndHostedCollectionIsEmpty) {
    const std::pair<const char *, bool> rows[] = {{"VORNA_Vsan", false},
                                                  {"VORNA_DeviceAliasService", false},
                                                  {"CIM_ZoneSet", false},
                                                  {"VORNA_ZoneSetX", false},
                                                  {"", false},
                                                  {"VORNA_HostedCollection", true},
                                                  {"vorna_hostedcollection", true}};
    for (const auto &[cls, served] : rows) {
        for (Op op : kOps) {
            SCOPED_TRACE(std::string(cls) + " " + kOpNames[static_cast<int>(op)]);
            CMPIObjectPath *path = request.newObjectPath(kNamespace, cls);
            cmpihost::addStringKey(path, "First", "one");
            cmpihost::addStringKey(path, "Second", "two");
            const bool refused = !served && op != Op::Names;
            if (!refused) {
                InSequence order;
                EXPECT_CALL(platform, mutex_lock());
                EXPECT_CALL(platform, mutex_unlock());
            }
            std::string trace;
            const CMPIStatus st = run(op, request, path, &trace);
            EXPECT_EQ(st.rc, refused ? CMPI_RC_ERR_NOT_SUPPORTED : CMPI_RC_OK);
            EXPECT_EQ(st.msg, nullptr);
            if (refused) {
                EXPECT_THAT(trace,
                            HasSubstr(std::string("\tFAIL check class name ") + cls + " \n"));
                EXPECT_THAT(trace, Not(HasSubstr("Returnng")));
            }
            if (served && op == Op::Get) {
                EXPECT_THAT(trace, HasSubstr("\tfound key First : one\n"));
                EXPECT_THAT(trace, Not(HasSubstr("Second")));
            }
            testing::Mock::VerifyAndClearExpectations(&platform);
        }
    }
    EXPECT_TRUE(request.deliveries().empty());
    EXPECT_EQ(request.doneCount(), 0);
}

// The key getInstance hands on is the first key whose name the class
// accepts, when it is a string (cut to 253 characters); an empty text
// otherwise. The handler's status is the answer, after a failure line that
// names the class as the request wrote it.
TEST_F(InstanceReadTest, GetInstancePicksTheFirstAcceptedStringKeyAndReturnsTheHandlersStatus) {
    const std::string long_value(300, 'k');
    struct Row {
        const char *what;
        std::vector<std::pair<std::string, std::string>> keys;  // "#": a number
        std::string lookup_key;                                 // what the lookup receives
        const char *cls = "VORNA_ZoneSet";
        bool with_broker = true;
    };
    const std::vector<Row> rows = {
        {"found key", {{"InstanceID", "1^99^0"}}, "1^99^0"},
        {"class and key name in another case", {{"INSTANCEID", "z3"}}, "z3", "vorna_ZONESET"},
        {"key of another name", {{"Name", "z1"}}, ""},
        {"no key at all", {}, ""},
        {"accepted key after a refused one", {{"Name", "z1"}, {"InstanceID", "z2"}}, "z2"},
        {"accepted key that is no string", {{"InstanceID", "#"}, {"Name", "z1"}}, ""},
        {"long key text is cut", {{"InstanceID", long_value}}, long_value.substr(0, 253)},
        {"no broker: no message", {{"InstanceID", "z4"}}, "z4", "VORNA_ZoneSet", false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        _broker = row.with_broker ? cmpihost::broker() : nullptr;
        CMPIObjectPath *path = request.newObjectPath(kNamespace, row.cls);
        CMPIValue number{};
        number.uint16 = 12;
        for (const auto &[name, value] : row.keys) {
            if (value == "#")
                path->ft->addKey(path, name.c_str(), &number, CMPI_uint16);
            else
                cmpihost::addStringKey(path, name, value);
        }
        {
            InSequence order;
            EXPECT_CALL(platform, mutex_lock());
            EXPECT_CALL(platform,
                        zs_cim_get_zone_set_by_instance_id(kQueue, StrEq(row.lookup_key), _))
                .WillOnce(Return(1));
            EXPECT_CALL(platform, mutex_unlock());
        }
        std::string trace;
        const CMPIStatus st = run(Op::Get, request, path, &trace);
        const std::string message = row.with_broker ? "Could not find or construct instance" : "";
        EXPECT_EQ(st.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(readside::message_of(st), row.with_broker ? message : "<none>");
        const std::string found_line =
            row.lookup_key.empty()
                ? "found key"
                : "\tfound key " + row.keys.back().first + " : " + row.lookup_key + "\n";
        EXPECT_EQ(trace.find(found_line) != std::string::npos, !row.lookup_key.empty()) << trace;
        EXPECT_THAT(trace, EndsWith(std::string("--- ") + row.cls +
                                    " CMPI GetInstance() failed : " + message +
                                    " Returnng successs always \n"));
        testing::Mock::VerifyAndClearExpectations(&platform);
    }
    EXPECT_TRUE(request.deliveries().empty());
}

}  // namespace
