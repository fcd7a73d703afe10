// The four association operations: refusals before the mutex, the existence
// check under it, the dispatch of each source class with the request's
// arguments, and returnDone in Associators only.
#include "association_test_support.h"

using ::testing::_;
using ::testing::Eq;
using ::testing::Field;
using ::testing::InSequence;
using ::testing::Invoke;
using ::testing::IsNull;
using ::testing::Pointee;
using ::testing::Return;
using ::testing::StrEq;
using ::testing::StrictMock;

using namespace assoc_test;

namespace {

const char *const kProps[] = {"InstanceID", nullptr};
const char **props() {
    return const_cast<const char **>(kProps);
}

enum class Op { ReferenceNames, References, AssociatorNames, Associators };
constexpr Op kAllOps[] = {Op::ReferenceNames, Op::References, Op::AssociatorNames, Op::Associators};

const char *op_name(Op op) {
    switch (op) {
        case Op::ReferenceNames:
            return "ReferenceNames";
        case Op::References:
            return "References";
        case Op::AssociatorNames:
            return "AssociatorNames";
        case Op::Associators:
            return "Associators";
    }
    return "?";
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

CMPIStatus invoke(Op op, cmpihost::Request &req, const CMPIObjectPath *source,
                  const Filters &f = {}) {
    switch (op) {
        case Op::ReferenceNames:
            return zone_Provider_ReferenceNames(nullptr, req.context(), req.result(), source,
                                                f.result_class, f.role);
        case Op::References:
            return zone_Provider_References(nullptr, req.context(), req.result(), source,
                                            f.result_class, f.role, f.props);
        case Op::AssociatorNames:
            return zone_Provider_AssociatorNames(nullptr, req.context(), req.result(), source,
                                                 f.assoc_class, f.result_class, f.role,
                                                 f.result_role);
        case Op::Associators:
            return zone_Provider_Associators(nullptr, req.context(), req.result(), source,
                                             f.assoc_class, f.result_class, f.role, f.result_role,
                                             f.props);
    }
    return CMPIStatus{CMPI_RC_ERR_FAILED, nullptr};
}

CMPIObjectPath *source_path(cmpihost::Request &req, const std::string &cls,
                            std::vector<std::pair<std::string, std::string>> keys) {
    CMPIObjectPath *path = req.newObjectPath(kNs, cls);
    for (const auto &[name, value] : keys) cmpihost::addStringKey(path, name, value);
    return path;
}

std::string message(const CMPIStatus &st) {
    return st.msg == nullptr ? "(none)" : cmpihost::text(st.msg);
}

class AssociationOps : public ::testing::Test {
  protected:
    void SetUp() override { use_test_globals(); }
};

// ---- Refusals: no lock, nothing delivered, no returnDone ---------------------------

struct Refusal {
    Op op;
    CMPIrc rc;
    const char *message;
};

TEST_F(AssociationOps, UnservedClassesAreRefusedWithTheStatusOfEachOperation) {
    const Refusal cases[] = {
        {Op::ReferenceNames, CMPI_RC_ERR_NOT_SUPPORTED, " :: reference names"},
        {Op::References, CMPI_RC_ERR_NOT_SUPPORTED, " :: reference names"},
        {Op::AssociatorNames, CMPI_RC_OK, " associator_names"},
        {Op::Associators, CMPI_RC_OK, " associators... not supported"},
    };
    for (const char *cls : {"VORNA_DeviceAliasService", "VORNA_Vsan", "CIM_ZoneSet"}) {
        for (const Refusal &c : cases) {
            SCOPED_TRACE(std::string(op_name(c.op)) + " of " + cls);
            cmpihost::Request req;
            StrictMock<PlatformMock> m;  // not even the mutex
            CMPIObjectPath *path = source_path(req, cls, {{"InstanceID", id_of("Z")}});
            testing::internal::CaptureStdout();
            const CMPIStatus st =
                invoke(c.op, req, path, {nullptr, nullptr, nullptr, nullptr, props()});
            const std::string out = testing::internal::GetCapturedStdout();
            EXPECT_EQ(st.rc, c.rc);
            EXPECT_EQ(message(st), c.message);
            EXPECT_TRUE(delivered(req).empty());
            EXPECT_EQ(req.doneCount(), 0);
            EXPECT_TRUE(has_line(out, std::string("\tFAIL check class name ") + cls + " \n"));
            EXPECT_FALSE(has_line(out, "checking key name")) << out;
        }
    }
}

TEST_F(AssociationOps, SourcesWithoutAnAcceptedStringKeyAreRefusedWithInvalidKeyName) {
    const Refusal cases[] = {
        {Op::ReferenceNames, CMPI_RC_ERR_NOT_SUPPORTED, "invalid key name"},
        {Op::References, CMPI_RC_ERR_NOT_SUPPORTED, "invalid key name"},
        {Op::AssociatorNames, CMPI_RC_OK, "invalid key name"},
        {Op::Associators, CMPI_RC_OK, "invalid key name"},
    };
    // Each makes a source path in the request.
    using MakePath = CMPIObjectPath *(*)(cmpihost::Request &);
    const std::pair<const char *, MakePath> sources[] = {
        {"zone with a Name key only",
         [](cmpihost::Request &r) {
             return source_path(r, "VORNA_Zone", {{"Name", "10"}});
         }},
        {"zone without keys",
         [](cmpihost::Request &r) { return source_path(r, "VORNA_Zone", {}); }},
        {"zone service with an InstanceID key",
         [](cmpihost::Request &r) {
             return source_path(r, "VORNA_ZoneService", {{"InstanceID", "10"}});
         }},
        {"zone whose InstanceID is a number",
         [](cmpihost::Request &r) {
             CMPIObjectPath *path = source_path(r, "VORNA_Zone", {});
             CMPIValue v;
             v.uint32 = 5;
             CMAddKey(path, "InstanceID", &v, CMPI_uint32);
             return path;
         }},
        {"zone service whose Name is a reference",
         [](cmpihost::Request &r) {
             CMPIObjectPath *path = source_path(r, "VORNA_ZoneService", {});
             cmpihost::addReferenceKey(path, "Name", source_path(r, "VORNA_Vsan", {}));
             return path;
         }},
    };
    for (const auto &[what, make] : sources) {
        for (const Refusal &c : cases) {
            SCOPED_TRACE(std::string(op_name(c.op)) + " of a " + what);
            cmpihost::Request req;
            StrictMock<PlatformMock> m;
            CMPIObjectPath *path = make(req);
            testing::internal::CaptureStdout();
            const CMPIStatus st = invoke(c.op, req, path);
            const std::string out = testing::internal::GetCapturedStdout();
            EXPECT_EQ(st.rc, c.rc);
            EXPECT_EQ(message(st), c.message);
            EXPECT_TRUE(delivered(req).empty());
            EXPECT_EQ(req.doneCount(), 0);
            EXPECT_TRUE(has_line(out, "getInstance can't find key\n")) << out;
        }
    }
}

// ---- Entry traces ----------------------------------------------------------------------

TEST_F(AssociationOps, EachOperationWritesItsEntryAndKeyTraces) {
    struct Case {
        Op op;
        std::string start;
        std::string found;
    };
    const std::string id = id_of("Z");
    const Case cases[] = {
        {Op::ReferenceNames, "In ReferenceNames", "\tfound key InstanceID : " + id + " \n"},
        {Op::References, "In References", "\tfound key InstanceID : " + id + " \n"},
        {Op::AssociatorNames,
         "In AssociatorNames\n\nZoneProvider::AssociatorNames() - associatorNames :\n"
         "\tobject name VORNA_DeviceAlias\n",
         "\tfound key InstanceID : " + id + " \n"},
        {Op::Associators,
         "In Associators\n\nZoneProvider::Associators() - associators :\n"
         "\tobject name VORNA_DeviceAlias\n",
         "\tfound key InstanceID : " + id + "\n"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(op_name(c.op));
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        InSequence order;
        EXPECT_CALL(m, mutex_lock());
        EXPECT_CALL(m, mutex_unlock());
        CMPIObjectPath *path = source_path(req, "VORNA_DeviceAlias", {{"InstanceID", id}});
        testing::internal::CaptureStdout();
        const CMPIStatus st = invoke(c.op, req, path);
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(out.rfind(c.start, 0), 0u) << out;
        EXPECT_TRUE(has_line(out, c.found)) << out;
        EXPECT_EQ(has_line(out, "In Get Instance ZoneProvider"), c.op == Op::Associators) << out;
        // A device alias has no traversal: success, nothing delivered.
        EXPECT_EQ(st.rc, CMPI_RC_OK);
        EXPECT_EQ(st.msg, nullptr);
        EXPECT_TRUE(delivered(req).empty());
        EXPECT_EQ(req.doneCount(), c.op == Op::Associators ? 1 : 0);
    }
}

// ---- Existence checks -------------------------------------------------------------------

TEST_F(AssociationOps, UnknownZoneSetsAndZonesAreRefusedUnderTheMutex) {
    for (const Op op : kAllOps) {
        for (const bool zone_set : {true, false}) {
            SCOPED_TRACE(std::string(op_name(op)) + (zone_set ? " of a zone set" : " of a zone"));
            cmpihost::Request req;
            StrictMock<PlatformMock> m;
            const std::string id = id_of("gone");
            {
                InSequence order;
                EXPECT_CALL(m, mutex_lock());
                if (zone_set)
                    EXPECT_CALL(m, zs_cim_get_zone_set_by_instance_id(kQueue, StrEq(id), _))
                        .WillOnce(Return(1));
                else
                    EXPECT_CALL(m, zs_cim_get_zone_by_instance_id(kQueue, StrEq(id), _))
                        .WillOnce(Return(1));
                EXPECT_CALL(m, mutex_unlock());
            }
            CMPIObjectPath *path =
                source_path(req, zone_set ? "VORNA_ZoneSet" : "VORNA_Zone", {{"InstanceID", id}});
            testing::internal::CaptureStdout();
            const CMPIStatus st = invoke(op, req, path);
            const std::string out = testing::internal::GetCapturedStdout();
            EXPECT_EQ(st.rc, CMPI_RC_ERR_INVALID_PARAMETER);
            EXPECT_EQ(st.msg, nullptr);
            EXPECT_TRUE(delivered(req).empty());
            EXPECT_EQ(req.doneCount(), 0);
            const char *names_line = zone_set ? "Zonset Class \n" : "Zone Class \n";
            EXPECT_EQ(has_line(out, names_line), op == Op::AssociatorNames) << out;
        }
    }
}

TEST_F(AssociationOps, OnlyAssociatorsCheckThatAZoneAliasExists) {
    const std::string id = id_of("gone");
    // Filters under which the alias traversals return at once.
    const Filters nothing_known{"CIM_Nothing", nullptr, nullptr, nullptr, nullptr};
    const Filters hosted{nullptr, "VORNA_ZoneHostedCollection", nullptr, nullptr, nullptr};
    for (const Op op : kAllOps) {
        SCOPED_TRACE(op_name(op));
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        {
            InSequence order;
            EXPECT_CALL(m, mutex_lock());
            if (op == Op::Associators)
                EXPECT_CALL(m, zs_cim_get_zone_alias_by_instance_id(kQueue, StrEq(id), _))
                    .WillOnce(Return(1));
            EXPECT_CALL(m, mutex_unlock());
        }
        CMPIObjectPath *path = source_path(req, "VORNA_ZoneAlias", {{"InstanceID", id}});
        const bool references = op == Op::ReferenceNames || op == Op::References;
        const CMPIStatus st = invoke(op, req, path, references ? hosted : nothing_known);
        EXPECT_EQ(st.rc, op == Op::Associators ? CMPI_RC_ERR_INVALID_PARAMETER : CMPI_RC_OK);
        EXPECT_EQ(st.msg, nullptr);
        EXPECT_TRUE(delivered(req).empty());
        EXPECT_EQ(req.doneCount(), 0);
    }
}

// ---- Dispatch ------------------------------------------------------------------------------

// The release of the mutex, checking that returnDone has not been signalled
// while it was held.
void expect_unlock_before_done(PlatformMock &m, cmpihost::Request &req) {
    EXPECT_CALL(m, mutex_unlock()).WillOnce(Invoke([&req] { EXPECT_EQ(req.doneCount(), 0); }));
}

TEST_F(AssociationOps, ZoneSetSourcesReachTheirTraversalPerOperation) {
    const std::string id = id_of("ZS");
    for (const Op op : kAllOps) {
        SCOPED_TRACE(op_name(op));
        const bool names = op == Op::ReferenceNames || op == Op::AssociatorNames;
        const bool references = op == Op::ReferenceNames || op == Op::References;
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        {
            InSequence order;
            EXPECT_CALL(m, mutex_lock());
            EXPECT_CALL(m, zs_cim_get_zone_set_by_instance_id(kQueue, StrEq(id), _))
                .WillOnce(hand_back_record<ZoneSetRecord>("ZS"));
            EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(StrEq(id), _, _, _))
                .WillOnce(split_into_vsan());
            if (references)
                EXPECT_CALL(m, zs_cim_get_zone_set_by_instance_id(kQueue, StrEq(id), _))
                    .WillOnce(hand_back_record<ZoneSetRecord>("ZS"));
            EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, _)).WillOnce(Return(0));
            EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)).WillOnce(Return(0));
            switch (op) {
                case Op::ReferenceNames:
                    EXPECT_CALL(
                        m, hosted_collection_fill_reference_zset(_, StrEq(kNs), _, _, _, _broker))
                        .WillOnce(fixed_path(req, "Hosted"));
                    break;
                case Op::References:
                    EXPECT_CALL(m, hosted_collection_build_instance_zset(_, StrEq(kNs), _, _, _,
                                                                         Eq(kProps), _broker))
                        .WillOnce(fixed_instance(req, "Hosted"));
                    break;
                case Op::AssociatorNames:
                    EXPECT_CALL(m, vsan_fill_reference(_, StrEq(kNs), _, _, _broker))
                        .WillOnce(fixed_path(req, "Vsan"));
                    break;
                case Op::Associators:
                    EXPECT_CALL(m, vsan_build_instance(_, StrEq(kNs), _, _, Eq(kProps), _broker))
                        .WillOnce(fixed_instance(req, "Vsan"));
                    break;
            }
            expect_unlock_before_done(m, req);
        }
        CMPIObjectPath *path = source_path(req, "vorna_zoneset", {{"instanceid", id}});
        // The association class goes in assocClass for associators and in
        // resultClass for references; resultClass also admits the VSAN.
        const Filters f =
            references ? Filters{nullptr, "VORNA_ZoneHostedCollection", "Member", nullptr, props()}
                       : Filters{"VORNA_ZoneHostedCollection", "CIM_System", "Member", "Collection",
                                 props()};
        const CMPIStatus st = invoke(op, req, path, f);
        EXPECT_EQ(st.rc, CMPI_RC_OK);
        EXPECT_EQ(st.msg, nullptr);
        const std::string kind = names ? "path:" : "inst:";
        EXPECT_EQ(delivered(req), (Labels{kind + (references ? "Hosted" : "Vsan")}));
        EXPECT_EQ(req.doneCount(), op == Op::Associators ? 1 : 0);
    }
}

TEST_F(AssociationOps, ZoneSourcesHandOnTheRoleToTheReferencesAndThePropertiesToAssociators) {
    const std::string id = id_of("Z");
    {
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        InSequence order;
        EXPECT_CALL(m, mutex_lock());
        EXPECT_CALL(m, zs_cim_get_zone_by_instance_id(kQueue, StrEq(id), _))
            .WillOnce(hand_back_record<ZoneRecord>("Z"));
        EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(_, _, _, _))
            .WillOnce(split_into_vsan());
        EXPECT_CALL(m, zs_cim_get_zone_by_instance_id(kQueue, StrEq(id), _))
            .WillOnce(hand_back_record<ZoneRecord>("Z"));
        EXPECT_CALL(m, zs_cim_get_zone_zone_set_parents_by_instance_id(kQueue, StrEq(id), _))
            .WillOnce(hand_back_list<ZoneSetRecord>({"ZS1"}));
        EXPECT_CALL(m, zmoc_fill_reference_zoneSetZone(_, StrEq(kNs), _, _, _))
            .WillOnce(path_labelled<2>(req, "Link"));
        EXPECT_CALL(m, mutex_unlock());
        CMPIObjectPath *path = source_path(req, "VORNA_Zone", {{"InstanceID", id}});
        const CMPIStatus st = invoke(Op::ReferenceNames, req, path,
                                     {nullptr, "VORNA_ZoneMemberOfCollection", "Member"});
        EXPECT_EQ(st.rc, CMPI_RC_OK);
        EXPECT_EQ(delivered(req), (Labels{"path:Link.ZS1"}));
        EXPECT_EQ(req.doneCount(), 0);
    }
    {
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        InSequence order;
        EXPECT_CALL(m, mutex_lock());
        EXPECT_CALL(m, zs_cim_get_zone_by_instance_id(kQueue, StrEq(id), _))
            .WillOnce(hand_back_record<ZoneRecord>("Z"));
        EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(_, _, _, _))
            .WillOnce(split_into_vsan());
        EXPECT_CALL(m, zs_cim_get_zone_zone_members_by_instance_id(kQueue, StrEq(id), _))
            .WillOnce(hand_back_list<ZoneMemberRecord>({"M1"}));
        EXPECT_CALL(m, zone_member_build_instance(_, StrEq(kNs), _, Eq(kProps), _broker))
            .WillOnce(instance_labelled<2>(req, "Member"));
        expect_unlock_before_done(m, req);
        CMPIObjectPath *path = source_path(req, "VORNA_Zone", {{"InstanceID", id}});
        const CMPIStatus st =
            invoke(Op::Associators, req, path,
                   {"VORNA_ElementSettingData", "CIM_Whatever", "Member", "Collection", props()});
        EXPECT_EQ(st.rc, CMPI_RC_OK);
        EXPECT_EQ(delivered(req), (Labels{"inst:Member.M1"}));
        EXPECT_EQ(req.doneCount(), 1);
    }
}

TEST_F(AssociationOps, ZoneAliasSourcesReachTheirTraversal) {
    const std::string id = id_of("A");
    // Associators: the alias is checked, then its VSAN is delivered.
    {
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        InSequence order;
        EXPECT_CALL(m, mutex_lock());
        EXPECT_CALL(m, zs_cim_get_zone_alias_by_instance_id(kQueue, StrEq(id), _))
            .WillOnce(hand_back_record<ZoneAliasRecord>("A"));
        EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(StrEq(id), _, _, _))
            .WillOnce(split_into_vsan());
        EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, _)).WillOnce(Return(0));
        EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, kVsan, 1, _)).WillOnce(Return(0));
        EXPECT_CALL(m, vsan_build_instance(_, StrEq(kNs), _, _, Eq(kProps), _broker))
            .WillOnce(fixed_instance(req, "Vsan"));
        EXPECT_CALL(m, mutex_unlock());
        CMPIObjectPath *path = source_path(req, "VORNA_ZoneAlias", {{"InstanceID", id}});
        const CMPIStatus st =
            invoke(Op::Associators, req, path,
                   {"VORNA_ZoneHostedCollection", "CIM_AdminDomain", nullptr, nullptr, props()});
        EXPECT_EQ(st.rc, CMPI_RC_OK);
        EXPECT_EQ(delivered(req), (Labels{"inst:Vsan"}));
        EXPECT_EQ(req.doneCount(), 1);
    }
    // References: no existence check; the member links get the properties.
    {
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        InSequence order;
        EXPECT_CALL(m, mutex_lock());
        EXPECT_CALL(m, zs_cim_get_fields_from_generic_instance_id(StrEq(id), _, _, _))
            .WillOnce(split_into_vsan());
        EXPECT_CALL(m, zs_cim_get_zone_alias_by_instance_id(kQueue, StrEq(id), _))
            .WillOnce(hand_back_record<ZoneAliasRecord>("A"));
        EXPECT_CALL(m, zs_cim_get_zone_alias_zone_members_by_instance_id(kQueue, StrEq(id), _))
            .WillOnce(hand_back_list<ZoneMemberRecord>({"M1"}));
        EXPECT_CALL(
            m, esd_build_instance_zoneAliasZoneMember(_, StrEq(kNs), _, _, Eq(kProps), _broker))
            .WillOnce(instance_labelled<3>(req, "Link"));
        EXPECT_CALL(m, mutex_unlock());
        CMPIObjectPath *path = source_path(req, "VORNA_ZoneAlias", {{"InstanceID", id}});
        const CMPIStatus st =
            invoke(Op::References, req, path,
                   {nullptr, "VORNA_ElementSettingData", "Member", nullptr, props()});
        EXPECT_EQ(st.rc, CMPI_RC_OK);
        EXPECT_EQ(delivered(req), (Labels{"inst:Link.M1"}));
        EXPECT_EQ(req.doneCount(), 0);
    }
}

TEST_F(AssociationOps, MemberSourcesPassTheClassNamesAndModePerOperation) {
    const std::string id = "7^1^M^0";
    struct Case {
        Op op;
        Filters filters;
        bool zones;
        bool aliases;
        Labels expected;
    };
    const Case cases[] = {
        // The associators narrow by resultClass; a null one means the zones.
        {Op::AssociatorNames,
         {"VORNA_ElementSettingData", "CIM_NamedAddressCollection", "Member", nullptr, nullptr},
         false,
         true,
         {"path:Alias.A1"}},
        {Op::Associators,
         {"VORNA_ElementSettingData", nullptr, nullptr, nullptr, nullptr},
         true,
         false,
         {"inst:Zone.Z1"}},
        // The references always pass the empty text as the second name.
        {Op::ReferenceNames,
         {nullptr, "VORNA_ElementSettingData", "SettingData"},
         true,
         true,
         {"path:ZoneLink.Z1", "path:AliasLink.A1"}},
        {Op::References,
         {nullptr, "VORNA_ElementSettingData", nullptr, nullptr, nullptr},
         true,
         true,
         {"inst:ZoneLink.Z1", "inst:AliasLink.A1"}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(op_name(c.op));
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        GenericLists lists;
        lists.install(m);
        // Lookups and deliveries all happen while the mutex is held.
        InSequence order;
        EXPECT_CALL(m, mutex_lock());
        EXPECT_CALL(m, zs_cim_get_zone_member_by_instance_id(kQueue, StrEq(id), _))
            .WillOnce(hand_back_record<ZoneMemberRecord>("M"));
        if (c.zones) {
            EXPECT_CALL(m, zs_cim_get_zone_member_zone_parents_by_instance_id(kQueue, StrEq(id), _))
                .WillOnce(append_parents<ZoneRecord>({"Z1"}));
            if (c.op == Op::Associators)
                // The request's property list (none here) reaches the builder.
                EXPECT_CALL(m, zone_build_instance(_, StrEq(kNs), _, IsNull(), _))
                    .WillOnce(instance_labelled<2>(req, "Zone"));
            if (c.op == Op::ReferenceNames)
                EXPECT_CALL(m, esd_fill_reference_zoneZoneMember(_, StrEq(kNs), _, _, _))
                    .WillOnce(path_labelled<2>(req, "ZoneLink"));
            if (c.op == Op::References)
                EXPECT_CALL(m, esd_build_instance_zoneZoneMember(_, StrEq(kNs), _, _, _, _))
                    .WillOnce(instance_labelled<2>(req, "ZoneLink"));
        }
        if (c.aliases) {
            EXPECT_CALL(
                m, zs_cim_get_zone_member_zone_alias_parents_by_instance_id(kQueue, StrEq(id), _))
                .WillOnce(append_parents<ZoneAliasRecord>({"A1"}));
            if (c.op == Op::AssociatorNames)
                EXPECT_CALL(m, zone_alias_fill_reference(_, StrEq(kNs), _, _))
                    .WillOnce(path_labelled<2>(req, "Alias"));
            if (c.op == Op::ReferenceNames)
                EXPECT_CALL(m, esd_fill_reference_zoneAliasZoneMember(_, StrEq(kNs), _, _, _))
                    .WillOnce(path_labelled<2>(req, "AliasLink"));
            if (c.op == Op::References)
                EXPECT_CALL(m, esd_build_instance_zoneAliasZoneMember(_, StrEq(kNs), _, _, _, _))
                    .WillOnce(instance_labelled<2>(req, "AliasLink"));
        }
        expect_unlock_before_done(m, req);
        CMPIObjectPath *path =
            source_path(req, "VORNA_ZoneMemberSettingData", {{"InstanceID", id}});
        const CMPIStatus st = invoke(c.op, req, path, c.filters);
        EXPECT_EQ(st.rc, CMPI_RC_OK);
        EXPECT_EQ(delivered(req), c.expected);
        EXPECT_EQ(lists.destroyed, lists.allocated);
        EXPECT_EQ(req.doneCount(), c.op == Op::Associators ? 1 : 0);
    }
}

TEST_F(AssociationOps, ZoneServiceSourcesUseTheirNameAndTheGlobals) {
    struct Case {
        Op op;
        Filters filters;
        Labels expected;
    };
    const Case cases[] = {
        // References build the link without the request's property list.
        {Op::References, {nullptr, nullptr, "Dependent", nullptr, props()}, {"inst:Hosted"}},
        {Op::ReferenceNames, {"VORNA_Nothing", "CIM_HostedService", nullptr}, {"path:Hosted"}},
        // The associators filter on assocClass, whatever resultClass says.
        {Op::Associators,
         {"CIM_HostedService", "CIM_Junk", nullptr, nullptr, props()},
         {"inst:Vsan"}},
        {Op::AssociatorNames, {nullptr, "VORNA_Nothing"}, {"path:Vsan"}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(op_name(c.op));
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        InSequence order;
        EXPECT_CALL(m, mutex_lock());
        EXPECT_CALL(m, vsan_cim_get_vsanEntry(kQueue, 1, Pointee(Field(&VsanEntry::vsan, 10))))
            .WillOnce(Return(0));
        EXPECT_CALL(m, dm_cim_get_dmEntry(kQueue, 10, 1, _)).WillOnce(Return(0));
        switch (c.op) {
            case Op::References:
                EXPECT_CALL(m, hosted_service_build_instance(StrEq("VORNA_HostedService"),
                                                             StrEq(kNs), _, _, IsNull(), _broker))
                    .WillOnce(fixed_instance(req, "Hosted"));
                break;
            case Op::ReferenceNames:
                EXPECT_CALL(m, hosted_service_fill_reference(StrEq("VORNA_HostedService"),
                                                             StrEq(kNs), _, _, _broker))
                    .WillOnce(fixed_path(req, "Hosted"));
                break;
            case Op::Associators:
                EXPECT_CALL(m, vsan_build_instance(StrEq("VORNA_Vsan"), StrEq(kNs), _, _,
                                                   Eq(kProps), _broker))
                    .WillOnce(fixed_instance(req, "Vsan"));
                break;
            case Op::AssociatorNames:
                EXPECT_CALL(m, vsan_fill_reference(StrEq("VORNA_Vsan"), StrEq(kNs), _, _, _broker))
                    .WillOnce(fixed_path(req, "Vsan"));
                break;
        }
        EXPECT_CALL(m, mutex_unlock());
        CMPIObjectPath *path = source_path(req, "VORNA_ZoneService", {{"name", "10"}});
        const CMPIStatus st = invoke(c.op, req, path, c.filters);
        EXPECT_EQ(st.rc, CMPI_RC_OK);
        EXPECT_EQ(delivered(req), c.expected);
    }
    // Any other association class: nothing, still success.
    cmpihost::Request req;
    StrictMock<PlatformMock> m;
    InSequence order;
    EXPECT_CALL(m, mutex_lock());
    EXPECT_CALL(m, mutex_unlock());
    CMPIObjectPath *path = source_path(req, "VORNA_ZoneService", {{"Name", "10"}});
    const CMPIStatus st = invoke(Op::Associators, req, path, {"VORNA_HostedService"});
    EXPECT_EQ(st.rc, CMPI_RC_OK);
    EXPECT_TRUE(delivered(req).empty());
    EXPECT_EQ(req.doneCount(), 1);
}

TEST_F(AssociationOps, ClassesWithoutTraversalSucceedWithNothingDelivered) {
    struct Source {
        const char *cls;
        std::vector<std::pair<std::string, std::string>> keys;
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
    for (const Source &source : sources) {
        for (const Op op : kAllOps) {
            SCOPED_TRACE(std::string(op_name(op)) + " of " + source.cls);
            cmpihost::Request req;
            StrictMock<PlatformMock> m;
            InSequence order;
            EXPECT_CALL(m, mutex_lock());
            EXPECT_CALL(m, mutex_unlock());
            CMPIObjectPath *path = source_path(req, source.cls, source.keys);
            testing::internal::CaptureStdout();
            const CMPIStatus st = invoke(op, req, path);
            const std::string out = testing::internal::GetCapturedStdout();
            EXPECT_EQ(st.rc, CMPI_RC_OK);
            EXPECT_EQ(st.msg, nullptr);
            EXPECT_TRUE(delivered(req).empty());
            EXPECT_EQ(req.doneCount(), op == Op::Associators ? 1 : 0);
            EXPECT_TRUE(has_line(out, source.found)) << out;
        }
    }
}

// ---- The source identifier ----------------------------------------------------------------

TEST_F(AssociationOps, TheIdentifierIsTheFirstAcceptedKeyCutTo253Characters) {
    struct Case {
        const char *what;
        std::vector<std::pair<std::string, std::string>> keys;
        std::string id;
    };
    const std::string long_id(300, 'x');
    const Case cases[] = {
        {"another key first", {{"Name", "10"}, {"InstanceID", "id^Z"}}, "id^Z"},
        {"lower-case key name", {{"instanceid", "id^z"}}, "id^z"},
        {"a 300-character key", {{"InstanceID", long_id}}, long_id.substr(0, 253)},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        cmpihost::Request req;
        StrictMock<PlatformMock> m;
        InSequence order;
        EXPECT_CALL(m, mutex_lock());
        EXPECT_CALL(m, zs_cim_get_zone_by_instance_id(kQueue, StrEq(c.id), _)).WillOnce(Return(1));
        EXPECT_CALL(m, mutex_unlock());
        CMPIObjectPath *path = source_path(req, "vorna_zone", c.keys);
        const CMPIStatus st = invoke(Op::ReferenceNames, req, path);
        EXPECT_EQ(st.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    }
}

}  // namespace
