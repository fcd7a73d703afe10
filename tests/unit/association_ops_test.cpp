// The four association operations: refusals before the mutex, the entry and
// key traces, the existence check under the mutex, the dispatch of each
// source class with the request's arguments, and returnDone in Associators
// only, once the mutex is released.
#include "association_test_support.h"

using namespace assoc_test;

namespace {

enum class Op { ReferenceNames, References, AssociatorNames, Associators };
constexpr Op kAllOps[] = {Op::ReferenceNames, Op::References, Op::AssociatorNames, Op::Associators};

const char *op_name(Op op) {
    constexpr const char *kNames[] = {"ReferenceNames", "References", "AssociatorNames",
                                      "Associators"};
    return kNames[static_cast<int>(op)];
}

bool is_reference(Op op) {
    return op == Op::ReferenceNames || op == Op::References;
}

// The request's filters; the reference operations take resultClass and role
// only.
struct Filters {
    const char *assoc_class = nullptr;
    const char *result_class = nullptr;
    const char *role = nullptr;
    const char *result_role = nullptr;
    const char **props = nullptr;
};

CMPIStatus invoke(Op op, Call &c, const CMPIObjectPath *source, const Filters &f = {}) {
    const CMPIContext *ctx = c.req.context();
    const CMPIResult *rslt = c.req.result();
    return c.capture([&] {
        switch (op) {
            case Op::ReferenceNames:
                return zone_Provider_ReferenceNames(nullptr, ctx, rslt, source, f.result_class,
                                                    f.role);
            case Op::References:
                return zone_Provider_References(nullptr, ctx, rslt, source, f.result_class, f.role,
                                                f.props);
            case Op::AssociatorNames:
                return zone_Provider_AssociatorNames(nullptr, ctx, rslt, source, f.assoc_class,
                                                     f.result_class, f.role, f.result_role);
            case Op::Associators:
                break;
        }
        return zone_Provider_Associators(nullptr, ctx, rslt, source, f.assoc_class, f.result_class,
                                         f.role, f.result_role, f.props);
    });
}

using Keys = std::vector<std::pair<std::string, std::string>>;

CMPIObjectPath *source_path(Call &c, const std::string &cls, const Keys &keys) {
    CMPIObjectPath *path = c.req.newObjectPath(kNs, cls);
    for (const auto &[name, value] : keys) cmpihost::addStringKey(path, name, value);
    return path;
}

// Runs op, which must succeed after making, under the mutex, the queries of
// trace and delivering its "path:" and "inst:" entries, and signal
// returnDone (Associators only) once the mutex is released.
void expect_served(Call &c, Op op, const CMPIObjectPath *source, const Filters &f,
                   const Labels &trace) {
    const CMPIStatus st = invoke(op, c, source, f);
    EXPECT_EQ(st.rc, CMPI_RC_OK);
    EXPECT_EQ(st.msg, nullptr);
    Labels log = {"lock"}, expected;
    for (const std::string &t : trace)
        (t.rfind("path:", 0) == 0 || t.rfind("inst:", 0) == 0 ? expected : log).push_back(t);
    log.push_back("unlock");
    EXPECT_EQ(c.log, log);
    EXPECT_EQ(c.delivered(), expected);
    EXPECT_EQ(c.done_at_unlock, 0);
    EXPECT_EQ(c.req.doneCount(), op == Op::Associators ? 1 : 0);
}

TEST(AssociationOps, UnservedClassesAndSourcesWithoutAKeyAreRefusedBeforeTheMutex) {
    struct Source {
        const char *cls;
        Keys keys;
        bool served;          // false: a class not served at all
        bool number = false;  // an InstanceID key holding a number is added
    };
    const Source sources[] = {
        {"VORNA_DeviceAliasService", {{"InstanceID", "Z"}}, false},
        {"VORNA_Vsan", {{"InstanceID", "Z"}}, false},
        {"CIM_ZoneSet", {{"InstanceID", "Z"}}, false},
        // Served classes without an accepted key holding text.
        {"VORNA_Zone", {{"Name", "10"}}, true},
        {"VORNA_ZoneService", {{"InstanceID", "10"}}, true},
        {"VORNA_Zone", {}, true, true},
    };
    // The associator operations refuse with rc 0 and a message.
    const char *const unserved[] = {" :: reference names", " :: reference names",
                                    " associator_names", " associators... not supported"};
    for (const Source &s : sources) {
        for (const Op op : kAllOps) {
            Call c;
            CMPIObjectPath *path = source_path(c, s.cls, s.keys);
            if (s.number) {
                CMPIValue v;
                v.uint32 = 5;
                CMAddKey(path, "InstanceID", &v, CMPI_uint32);
            }
            SCOPED_TRACE(std::string(op_name(op)) + " of " + cmpihost::pathToString(path));
            const CMPIStatus st =
                invoke(op, c, path, {nullptr, nullptr, nullptr, nullptr, props()});
            EXPECT_EQ(st.rc, is_reference(op) ? CMPI_RC_ERR_NOT_SUPPORTED : CMPI_RC_OK);
            EXPECT_EQ(st.msg == nullptr ? "(none)" : cmpihost::text(st.msg),
                      s.served ? "invalid key name" : unserved[static_cast<int>(op)]);
            EXPECT_TRUE(c.log.empty());  // not even the mutex
            EXPECT_TRUE(c.delivered().empty());
            EXPECT_EQ(c.req.doneCount(), 0);
            if (s.served) {
                EXPECT_TRUE(c.printed("getInstance can't find key\n")) << c.out;
            } else {
                EXPECT_TRUE(c.printed(std::string("\tFAIL check class name ") + s.cls + " \n"));
                EXPECT_FALSE(c.printed("checking key name")) << c.out;
            }
        }
    }
}

TEST(AssociationOps, ClassesWithoutTraversalSucceedEmptyAfterTheEntryAndKeyTraces) {
    struct Source {
        const char *cls;
        Keys keys;
        std::string found;  // the key that identifies the source
    };
    const Source sources[] = {
        {"VORNA_DeviceAlias",
         {{"Name", "x"}, {"InstanceID", "20:00:00:11:22:33:44:55"}},
         "\tfound key InstanceID : 20:00:00:11:22:33:44:55"},
        // Classes that accept any key name take the first one.
        {"VORNA_HostedService", {{"Whatever", "w"}, {"Other", "o"}}, "\tfound key Whatever : w"},
        {"VORNA_ElementSettingData", {{"ManagedElement", "m"}}, "\tfound key ManagedElement : m"},
    };
    for (const Source &s : sources) {
        for (const Op op : kAllOps) {
            SCOPED_TRACE(std::string(op_name(op)) + " of " + s.cls);
            const bool associators = op == Op::Associators;
            Call c;
            expect_served(c, op, source_path(c, s.cls, s.keys), {}, {});
            std::string entry = std::string("In ") + op_name(op);
            if (!is_reference(op))
                entry += std::string("\n\nZoneProvider::") + op_name(op) + "() - " +
                         (associators ? "associators" : "associatorNames") + " :\n\tobject name " +
                         s.cls + "\n";
            EXPECT_EQ(c.out.rfind(entry, 0), 0u) << c.out;
            EXPECT_TRUE(c.printed(s.found + (associators ? "\n" : " \n"))) << c.out;
            EXPECT_EQ(c.printed("In Get Instance ZoneProvider"), associators) << c.out;
        }
    }
}

TEST(AssociationOps, UnknownSourcesAreRefusedUnderTheMutex) {
    struct Source {
        const char *cls;
        Keys keys;
        std::string lookup;
        const char *names_line;  // written by AssociatorNames before the check
    };
    const std::string long_id(300, 'x');
    const Source sources[] = {
        {"vorna_zoneset", {{"instanceid", "id^ZS"}}, "get set ZS", "Zonset Class \n"},
        // The identifier is the first accepted key, cut to 253 characters.
        {"VORNA_Zone",
         {{"Name", "10"}, {"InstanceID", long_id}},
         "get zone " + long_id.substr(0, 253),
         "Zone Class \n"},
        {"VORNA_ZoneAlias", {{"InstanceID", "id^A"}}, "get alias A", nullptr},
    };
    for (const Source &s : sources) {
        for (const Op op : kAllOps) {
            SCOPED_TRACE(std::string(op_name(op)) + " of " + s.cls);
            // Zone sets and zones are always checked, aliases by Associators
            // only; the other alias traversals return at once under these
            // filters.
            const bool checked = s.names_line != nullptr || op == Op::Associators;
            Call c;
            c.answers.clear();
            const CMPIStatus st = invoke(op, c, source_path(c, s.cls, s.keys),
                                         {"CIM_Nothing", "VORNA_ZoneHostedCollection"});
            EXPECT_EQ(st.rc, checked ? CMPI_RC_ERR_INVALID_PARAMETER : CMPI_RC_OK);
            EXPECT_EQ(st.msg, nullptr);
            EXPECT_EQ(c.log,
                      (checked ? Labels{"lock", s.lookup, "unlock"} : Labels{"lock", "unlock"}));
            EXPECT_TRUE(c.delivered().empty());
            EXPECT_EQ(c.req.doneCount(), 0);
            if (s.names_line != nullptr) {
                EXPECT_EQ(c.printed(s.names_line), op == Op::AssociatorNames) << c.out;
            }
        }
    }
}

TEST(AssociationOps, EachSourceClassReachesItsTraversalWithTheRequestsArguments) {
    struct Case {
        Op op;
        const char *cls;
        Filters filters;
        Labels trace;  // the queries made and what was delivered
    };
    const Filters hosted_refs{nullptr, "VORNA_ZoneHostedCollection", "Member", nullptr, props()};
    // resultClass also admits the VSAN.
    const Filters hosted_assoc{"VORNA_ZoneHostedCollection", "CIM_System", "Member", "Collection",
                               props()};
    const Case cases[] = {
        // Zone sets: the association class goes in assocClass for associators
        // and in resultClass for references.
        {Op::ReferenceNames,
         "vorna_zoneset",
         hosted_refs,
         {"get set ZS", "split ZS", "get set ZS", "vsan 7", "domain 7", "path:Hosted V7/ZS"}},
        {Op::References,
         "vorna_zoneset",
         hosted_refs,
         {"get set ZS", "split ZS", "get set ZS", "vsan 7", "domain 7", "inst:Hosted V7/ZS+p"}},
        {Op::AssociatorNames,
         "vorna_zoneset",
         hosted_assoc,
         {"get set ZS", "split ZS", "vsan 7", "domain 7", "path:Vsan V7"}},
        {Op::Associators,
         "vorna_zoneset",
         hosted_assoc,
         {"get set ZS", "split ZS", "vsan 7", "domain 7", "inst:Vsan V7+p"}},
        // Zones: the role reaches the references, the properties the
        // associators.
        {Op::ReferenceNames,
         "VORNA_Zone",
         {nullptr, "VORNA_ZoneMemberOfCollection", "Member"},
         {"get zone Z", "split Z", "get zone Z", "sets of zone Z", "path:MOC ZS1/Z",
          "path:MOC ZS2/Z"}},
        {Op::Associators,
         "VORNA_Zone",
         {"VORNA_ElementSettingData", "CIM_Whatever", "Member", "Collection", props()},
         {"get zone Z", "split Z", "members of zone Z", "inst:Member M1+p", "inst:Member M2+p"}},
        // Aliases: checked by the associators only.
        {Op::Associators,
         "VORNA_ZoneAlias",
         {"VORNA_ZoneHostedCollection", "CIM_AdminDomain", nullptr, nullptr, props()},
         {"get alias A", "split A", "vsan 7", "domain 7", "inst:Vsan V7+p"}},
        {Op::References,
         "VORNA_ZoneAlias",
         {nullptr, "VORNA_ElementSettingData", "Member", nullptr, props()},
         {"split A", "get alias A", "members of alias A", "inst:ESD A/M1+p", "inst:ESD A/M2+p"}},
        // Members: the associators narrow by resultClass (a null one means
        // the zones); the references always pass the empty text instead.
        {Op::AssociatorNames,
         "VORNA_ZoneMemberSettingData",
         {"VORNA_ElementSettingData", "CIM_NamedAddressCollection", "Member"},
         {"get member M", "aliases of member M", "path:Alias A1"}},
        {Op::Associators,
         "VORNA_ZoneMemberSettingData",
         {"VORNA_ElementSettingData", nullptr, nullptr, nullptr, props()},
         {"get member M", "zones of member M", "inst:Zone Z2+p", "inst:Zone Z1+p"}},
        {Op::ReferenceNames,
         "VORNA_ZoneMemberSettingData",
         {nullptr, "VORNA_ElementSettingData", "SettingData"},
         {"get member M", "zones of member M", "aliases of member M", "path:ESD Z2/M",
          "path:ESD Z1/M", "path:ESD A1/M"}},
        {Op::References,
         "VORNA_ZoneMemberSettingData",
         {nullptr, "VORNA_ElementSettingData", nullptr, nullptr, props()},
         {"get member M", "zones of member M", "aliases of member M", "inst:ESD Z2/M+p",
          "inst:ESD Z1/M+p", "inst:ESD A1/M+p"}},
        // The zone service: its Name, the globals' queue and broker; the
        // associators filter on assocClass whatever resultClass says, and
        // only they hand on the properties.
        {Op::References,
         "VORNA_ZoneService",
         {nullptr, nullptr, "Dependent", nullptr, props()},
         {"vsan 10", "domain 10", "inst:Service V10"}},
        {Op::ReferenceNames,
         "VORNA_ZoneService",
         {"VORNA_Nothing", "CIM_HostedService"},
         {"vsan 10", "domain 10", "path:Service V10"}},
        {Op::Associators,
         "VORNA_ZoneService",
         {"CIM_HostedService", "CIM_Junk", nullptr, nullptr, props()},
         {"vsan 10", "domain 10", "inst:Vsan V10+p"}},
        {Op::AssociatorNames,
         "VORNA_ZoneService",
         {nullptr, "VORNA_Nothing"},
         {"vsan 10", "domain 10", "path:Vsan V10"}},
    };
    const std::map<std::string, Keys> keys = {
        {"vorna_zoneset", {{"instanceid", "id^ZS"}}},
        {"VORNA_Zone", {{"InstanceID", "id^Z"}}},
        {"VORNA_ZoneAlias", {{"InstanceID", "id^A"}}},
        {"VORNA_ZoneMemberSettingData", {{"InstanceID", "id^M"}}},
        {"VORNA_ZoneService", {{"name", "10"}}}};
    for (const Case &k : cases) {
        SCOPED_TRACE(std::string(op_name(k.op)) + " of " + k.cls);
        Call c;
        expect_served(c, k.op, source_path(c, k.cls, keys.at(k.cls)), k.filters, k.trace);
        EXPECT_EQ(c.lists_destroyed, c.lists_made);
    }
}

}  // namespace
