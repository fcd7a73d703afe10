// The instance read operations: each served class reaching its own handler
// under the zoning mutex, the refusals of unserved classes, the key that
// getInstance picks, and the status and trace lines it ends with.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "association_test_support.h"
#include "read_side_support.h"

namespace {

using readside::kNamespace;
using readside::kQueue;
using testing::_;
using testing::EndsWith;
using testing::HasSubstr;
using testing::InSequence;
using testing::Not;
using testing::Return;
using testing::StartsWith;
using testing::StrEq;

enum class Op { Names, Instances, Get };
constexpr Op kOps[] = {Op::Names, Op::Instances, Op::Get};
constexpr const char *kOpNames[] = {"enumInstanceNames", "enumInstances", "getInstance"};

const char *kProps[] = {"InstanceID", "Name", nullptr};

// Runs one operation into the request's result; its standard output goes
// to *trace.
CMPIStatus run(Op op, cmpihost::Request &request, const CMPIObjectPath *path, std::string *trace,
               const char **props = kProps) {
    testing::internal::CaptureStdout();
    CMPIStatus st{CMPI_RC_ERR_FAILED, nullptr};
    if (op == Op::Names)
        st = zone_Provider_EnumInstanceNames(nullptr, request.context(), request.result(), path);
    else if (op == Op::Instances)
        st = zone_Provider_EnumInstances(nullptr, request.context(), request.result(), path, props);
    else
        st = zone_Provider_GetInstance(nullptr, request.context(), request.result(), path, props);
    *trace = testing::internal::GetCapturedStdout();
    return st;
}

struct DispatchRow {
    const char *cls;  // as the request writes it
    const char *key_name;
    const char *builder_cls;  // the class its builders are given; null: as written
    bool props;               // its instance builder takes the property list
    bool get_from_request;    // getInstance rebuilds the link from the path alone
};

const DispatchRow kDispatchRows[] = {
    {"VORNA_ZoneSet", "InstanceID", nullptr, true, false},
    {"VORNA_Zone", "InstanceID", nullptr, true, false},
    {"VORNA_ZoneAlias", "InstanceID", nullptr, true, false},
    {"VORNA_ZoneMemberSettingData", "InstanceID", nullptr, true, false},
    {"VORNA_DeviceAlias", "InstanceID", nullptr, true, false},
    {"VORNA_ZoneService", "Name", "VORNA_ZoneService", true, false},
    {"VORNA_HostedService", "Anything", "VORNA_HostedService", true, true},
    {"VORNA_ElementSettingData", "InstanceID", "VORNA_ElementSettingData", true, false},
    {"VORNA_ZoneMemberOfCollection", "InstanceID", "VORNA_ZoneMemberOfCollection", true, false},
    {"VORNA_ZoneHostedCollection", "InstanceID", "VORNA_ZoneHostedCollection", false, true},
};

// Every operation on a served class, whatever the case of its name, reaches
// that class's handler, which builds under the mutex (taken once) with the
// request's namespace and property list and the provider's broker (all
// checked by the stand-in platform's builders). getInstance hands the
// handler the key ("key-text", VSAN 8 for the zone service). The switch
// holds one active object of every kind in VSAN 8, a zone in the zone set,
// a member in the zone and one device alias; only "key-text" is found by
// InstanceID.
TEST(InstanceDispatch, EachServedClassReachesItsHandlerUnderTheMutexInAnyCase) {
    const auto one_of_each = assoc_test::answers_of(
        {"next vsan 0: 8",      "vsan table: 8",        "vsan 8:",
         "domain 8:",           "active sets 8: s",     "editable sets 8:",
         "active zones 8: z",   "editable zones 8:",    "active aliases 8: a",
         "editable aliases 8:", "active members 8: m",  "editable members 8:",
         "zones of set s: c",   "members of zone z: c", "aliases of zone z:",
         "members of alias a:", "get set key-text:",    "get zone key-text:",
         "get alias key-text:", "get member key-text:", "device aliases: d",
         "alias of pwwn: d"});
    for (const DispatchRow &row : kDispatchRows) {
        std::string lower = row.cls;
        for (char &c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        for (const std::string &cls : {std::string(row.cls), lower}) {
            for (Op op : kOps) {
                SCOPED_TRACE(cls + " " + kOpNames[static_cast<int>(op)]);
                assoc_test::Call c;
                c.answers = one_of_each;
                CMPIObjectPath *op_path = c.req.newObjectPath(kNamespace, cls.c_str());
                cmpihost::addStringKey(op_path, row.key_name,
                                       row.key_name == std::string("Name") ? "8" : "key-text");
                const bool from_request = op == Op::Get && row.get_from_request;
                std::string trace;
                const CMPIStatus st = run(op, c.req, op_path, &trace, assoc_test::props());
                EXPECT_EQ(st.rc, CMPI_RC_OK);
                EXPECT_EQ(st.msg, nullptr);
                EXPECT_EQ(c.req.doneCount(), 0);
                ASSERT_FALSE(c.log.empty());
                EXPECT_EQ(c.log.front(), "lock");
                EXPECT_EQ(c.log.back(), "unlock");
                EXPECT_EQ(std::count(c.log.begin(), c.log.end(), "lock"), 1);
                if (from_request) {
                    EXPECT_EQ(c.log, (assoc_test::Labels{"lock", "switch name", "unlock"}));
                }
                EXPECT_EQ(c.built_unlocked, 0);
                // What reached the result was made by the class's own builders.
                const std::string kind = op == Op::Names ? "path:" : "inst:";
                const std::string made =
                    from_request
                        ? std::string(row.cls)
                        : assoc_test::Label(row.builder_cls ? row.builder_cls : cls).text + " ";
                const assoc_test::Labels delivered = c.delivered();
                EXPECT_FALSE(delivered.empty());
                for (const std::string &d : delivered) {
                    EXPECT_EQ(d.rfind(kind + made, 0), 0u) << d;
                    // The zone service of VSAN 8, on the provider's queue.
                    if (row.key_name == std::string("Name")) {
                        EXPECT_EQ(d, kind + made + (op == Op::Names ? "8" : "8/42+p"));
                    }
                    EXPECT_EQ(d.ends_with("+p"), op != Op::Names && row.props && !from_request)
                        << d;
                }
                const char *start = op == Op::Names       ? "In EnumInstanceNames ZoneProvider"
                                    : op == Op::Instances ? "In EnumInstances ZoneProvider"
                                                          : "In Zone Provider:: Property [ 0 ] = "
                                                            "InstanceID \nIn Get Instance "
                                                            "ZoneProvider";
                EXPECT_THAT(trace, StartsWith(start));
                if (op == Op::Get) {
                    EXPECT_THAT(trace, EndsWith(" Returnng successs always \n"));
                    EXPECT_THAT(trace, Not(HasSubstr("GetInstance() failed")));
                }
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
