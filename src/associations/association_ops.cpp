// The four operations of the association function table. Each one checks
// the class of the source path and takes the text of its identifying key
// (outside the mutex: they touch only the request's own objects), then,
// under the platform mutex, makes sure that a source zone set or zone (and,
// for associators, zone alias) exists and hands the work to the traversal of
// the source's class, which delivers straight into the result.
#include <cstdio>
#include <string_view>

#include <cmpimacs.h>

#include "associations/association_support.h"

namespace {

enum Operation : int {
    kReferenceNames,
    kReferences,
    kAssociatorNames,
    kAssociators,
    kOperationCount
};

// How each operation answers a request it can't serve. The associator
// operations answer with rc 0 and a message; the reference operations with
// an error code.
struct Refusals {
    CMPIrc unserved_class_rc;
    const char *unserved_class_message;
    CMPIrc missing_key_rc;
    const char *missing_key_message;
};

constexpr Refusals kRefusals[kOperationCount] = {
    /* kReferenceNames  */ {CMPI_RC_ERR_NOT_SUPPORTED, " :: reference names",
                            CMPI_RC_ERR_NOT_SUPPORTED, "invalid key name"},
    /* kReferences      */
    {CMPI_RC_ERR_NOT_SUPPORTED, " :: reference names", CMPI_RC_ERR_NOT_SUPPORTED,
     "invalid key name"},
    /* kAssociatorNames */ {CMPI_RC_OK, " associator_names", CMPI_RC_OK, "invalid key name"},
    /* kAssociators     */
    {CMPI_RC_OK, " associators... not supported", CMPI_RC_OK, "invalid key name"},
};

// Which source objects must exist before a traversal runs (validate kind:
// 1 zone, 2 zone set, 3 zone alias).
struct ExistenceCheck {
    std::string_view source_class;
    int kind;
    bool associators_only;
    const char *associator_names_line;  // written by AssociatorNames before checking
};

constexpr ExistenceCheck kExistenceChecks[] = {
    {"VORNA_ZoneSet", 2, false, "Zonset Class \n"},
    {"VORNA_Zone", 1, false, "Zone Class \n"},
    {"VORNA_ZoneAlias", 3, true, nullptr},
};

// Everything an operation received, in one place for the dispatch.
struct AssociationRequest {
    Operation operation;
    const CMPIResult *result;
    const CMPIObjectPath *source;
    const char *assoc_class;
    const char *result_class;
    const char *role;
    const char *result_role;
    const char **props;
    const char *id;  // the source identifier, once found
    const char *ns;  // the namespace of the source path, read just before dispatch
};

// ---- Dispatch by source class ----------------------------------------------------

using Traversal = void (*)(const AssociationRequest &);

// The zone set, zone and alias traversals: one routine per operation, with
// the request's own filters.
template <auto reference_names, auto references, auto associator_names, auto associators>
struct PerOperationFamily {
    static void on_reference_names(const AssociationRequest &r) {
        reference_names(r.id, r.result_class, r.role, r.result, r.ns);
    }
    static void on_references(const AssociationRequest &r) {
        references(r.id, r.result_class, r.role, r.props, r.result, r.ns);
    }
    static void on_associator_names(const AssociationRequest &r) {
        associator_names(r.id, r.assoc_class, r.result_class, r.role, r.result_role, r.result,
                         r.ns);
    }
    static void on_associators(const AssociationRequest &r) {
        associators(r.id, r.assoc_class, r.result_class, r.role, r.result_role, r.props, r.result,
                    r.ns);
    }
    static constexpr Traversal kByOperation[kOperationCount] = {
        on_reference_names, on_references, on_associator_names, on_associators};
};

using ZoneSetFamily = PerOperationFamily<get_zone_set_reference_names, get_zone_set_references,
                                         get_zone_set_associator_names, get_zone_set_associators>;
using ZoneFamily = PerOperationFamily<get_zone_reference_names, get_zone_references,
                                      get_zone_associator_names, get_zone_associators>;
using ZoneAliasFamily =
    PerOperationFamily<get_zone_alias_reference_names, get_zone_alias_references,
                       get_zone_alias_associator_names, get_zone_alias_associators>;

// Zone members: one routine taking the mode code; the role never reaches it,
// and the reference operations pass the empty text as the second class name.
struct MemberFamily {
    static void on_reference_names(const AssociationRequest &r) {
        get_zone_member_references(r.id, r.result_class, ZONE_ASSOC_REFERENCE_NAMES, "", nullptr,
                                   r.result, r.ns);
    }
    static void on_references(const AssociationRequest &r) {
        get_zone_member_references(r.id, r.result_class, ZONE_ASSOC_REFERENCES, "", r.props,
                                   r.result, r.ns);
    }
    static void on_associator_names(const AssociationRequest &r) {
        get_zone_member_references(r.id, r.assoc_class, ZONE_ASSOC_ASSOCIATOR_NAMES, r.result_class,
                                   nullptr, r.result, r.ns);
    }
    static void on_associators(const AssociationRequest &r) {
        get_zone_member_references(r.id, r.assoc_class, ZONE_ASSOC_ASSOCIATORS, r.result_class,
                                   r.props, r.result, r.ns);
    }
    static constexpr Traversal kByOperation[kOperationCount] = {
        on_reference_names, on_references, on_associator_names, on_associators};
};

// The zone service: one routine taking the mode code and one class filter;
// only Associators hands on the property list.
struct ZoneServiceFamily {
    static void on_reference_names(const AssociationRequest &r) {
        get_zone_service_associator_reference_helper(r.id, ZONE_ASSOC_REFERENCE_NAMES,
                                                     r.result_class, r.result, r.ns, nullptr, mts_q,
                                                     _broker);
    }
    static void on_references(const AssociationRequest &r) {
        get_zone_service_associator_reference_helper(r.id, ZONE_ASSOC_REFERENCES, r.result_class,
                                                     r.result, r.ns, nullptr, mts_q, _broker);
    }
    static void on_associator_names(const AssociationRequest &r) {
        get_zone_service_associator_reference_helper(r.id, ZONE_ASSOC_ASSOCIATOR_NAMES,
                                                     r.assoc_class, r.result, r.ns, nullptr, mts_q,
                                                     _broker);
    }
    static void on_associators(const AssociationRequest &r) {
        get_zone_service_associator_reference_helper(r.id, ZONE_ASSOC_ASSOCIATORS, r.assoc_class,
                                                     r.result, r.ns, r.props, mts_q, _broker);
    }
    static constexpr Traversal kByOperation[kOperationCount] = {
        on_reference_names, on_references, on_associator_names, on_associators};
};

struct SourceClass {
    std::string_view name;
    const Traversal *by_operation;
};

// Tested in this order; the other served classes have no traversal.
constexpr SourceClass kSourceClasses[] = {
    {"VORNA_ZoneSet", ZoneSetFamily::kByOperation},
    {"VORNA_Zone", ZoneFamily::kByOperation},
    {"VORNA_ZoneAlias", ZoneAliasFamily::kByOperation},
    {"VORNA_ZoneMemberSettingData", MemberFamily::kByOperation},
    {"VORNA_ZoneService", ZoneServiceFamily::kByOperation},
};

// ---- Steps of every operation -------------------------------------------------------

const char *text_of(const CMPIString *s) {
    const char *text = s != nullptr ? CMGetCharPtr(s) : nullptr;
    return text != nullptr ? text : "";
}

CMPIStatus status(CMPIrc rc, const char *message) {
    CMPIStatus st{rc, nullptr};
    if (message != nullptr && _broker != nullptr)
        st.msg = _broker->eft->newString(_broker, message, nullptr);
    return st;
}

void trace_entry(Operation operation, const char *class_name) {
    switch (operation) {
        case kReferenceNames:
            std::printf("In ReferenceNames");
            break;
        case kReferences:
            std::printf("In References");
            break;
        case kAssociatorNames:
            std::printf("In AssociatorNames");
            std::printf("\n\nZoneProvider::AssociatorNames() - associatorNames :\n");
            std::printf("\tobject name %s\n", class_name);
            break;
        case kAssociators:
            std::printf("In Associators");
            std::printf("\n\nZoneProvider::Associators() - associators :\n");
            std::printf("\tobject name %s\n", class_name);
            break;
        case kOperationCount:
            break;
    }
}

bool holds_text(const CMPIData &value) {
    return value.type == CMPI_string && (value.state & CMPI_nullValue) == 0 &&
           value.value.string != nullptr && CMGetCharPtr(value.value.string) != nullptr;
}

// Finds the first key of the source path that the class accepts and copies
// its text into id. A path without such a key, or whose accepted key holds
// no text, has no usable identifier.
bool find_source_key(Operation operation, const CMPIObjectPath *source, const char *class_name,
                     char (&id)[zone::kKeyTextSize]) {
    const unsigned int count = source->ft->getKeyCount(source, nullptr);
    if (operation == kAssociators) std::printf("In Get Instance ZoneProvider");
    for (unsigned int i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData value = source->ft->getKeyAt(source, i, &name, nullptr);
        char key_name[zone::kKeyTextSize];
        zone::copy_key_text(key_name, text_of(name));
        if (check_key_name_zm(class_name, key_name) == 0) continue;
        if (!holds_text(value)) break;
        zone::copy_key_text(id, CMGetCharPtr(value.value.string));
        if (operation == kAssociators)
            std::printf("\tfound key %s : %s\n", key_name, id);
        else
            std::printf("\tfound key %s : %s \n", key_name, id);
        return true;
    }
    std::printf("getInstance can't find key\n");
    return false;
}

// Holds the platform mutex for one scope.
class PlatformLock {
  public:
    PlatformLock() { mutex_lock(); }
    ~PlatformLock() { mutex_unlock(); }
    PlatformLock(const PlatformLock &) = delete;
    PlatformLock &operator=(const PlatformLock &) = delete;
};

// True unless a zone set, zone or (for associators) alias named by the source
// is unknown to the zone server.
bool source_exists(Operation operation, const char *class_name, const char *id) {
    for (const ExistenceCheck &check : kExistenceChecks) {
        if (!zone::same_name(class_name, check.source_class)) continue;
        if (check.associators_only && operation != kAssociators) return true;
        if (operation == kAssociatorNames && check.associator_names_line != nullptr)
            std::printf("%s", check.associator_names_line);
        return validate_zone_instance(id, check.kind) == 0;
    }
    return true;
}

void dispatch(AssociationRequest &request, const char *class_name) {
    for (const SourceClass &source : kSourceClasses) {
        if (!zone::same_name(class_name, source.name)) continue;
        request.ns = text_of(request.source->ft->getNameSpace(request.source, nullptr));
        source.by_operation[request.operation](request);
        return;
    }
}

CMPIStatus serve(AssociationRequest request) {
    const Refusals &refusals = kRefusals[request.operation];
    const char *class_name = text_of(request.source->ft->getClassName(request.source, nullptr));
    trace_entry(request.operation, class_name);

    if (check_class_name_zm(class_name) == 0)
        return status(refusals.unserved_class_rc, refusals.unserved_class_message);

    char id[zone::kKeyTextSize];
    if (!find_source_key(request.operation, request.source, class_name, id))
        return status(refusals.missing_key_rc, refusals.missing_key_message);
    request.id = id;

    {
        PlatformLock lock;
        if (!source_exists(request.operation, class_name, id))
            return status(CMPI_RC_ERR_INVALID_PARAMETER, nullptr);
        dispatch(request, class_name);
    }

    // Only associators signal the end of the result, after the mutex is free.
    if (request.operation == kAssociators) request.result->ft->returnDone(request.result);
    return status(CMPI_RC_OK, nullptr);
}

}  // namespace

// Exported under their plain names: the object manager and the other
// units of the library find them there.
#pragma GCC visibility push(default)
extern "C" {

CMPIStatus zone_Provider_ReferenceNames(CMPIAssociationMI * /*mi*/, const CMPIContext * /*ctx*/,
                                        const CMPIResult *result, const CMPIObjectPath *op,
                                        const char *result_class, const char *role) {
    return serve({kReferenceNames, result, op, nullptr, result_class, role, nullptr, nullptr,
                  nullptr, nullptr});
}

CMPIStatus zone_Provider_References(CMPIAssociationMI * /*mi*/, const CMPIContext * /*ctx*/,
                                    const CMPIResult *result, const CMPIObjectPath *op,
                                    const char *result_class, const char *role,
                                    const char **props) {
    return serve(
        {kReferences, result, op, nullptr, result_class, role, nullptr, props, nullptr, nullptr});
}

CMPIStatus zone_Provider_AssociatorNames(CMPIAssociationMI * /*mi*/, const CMPIContext * /*ctx*/,
                                         const CMPIResult *result, const CMPIObjectPath *op,
                                         const char *assoc_class, const char *result_class,
                                         const char *role, const char *result_role) {
    return serve({kAssociatorNames, result, op, assoc_class, result_class, role, result_role,
                  nullptr, nullptr, nullptr});
}

CMPIStatus zone_Provider_Associators(CMPIAssociationMI * /*mi*/, const CMPIContext * /*ctx*/,
                                     const CMPIResult *result, const CMPIObjectPath *op,
                                     const char *assoc_class, const char *result_class,
                                     const char *role, const char *result_role,
                                     const char **props) {
    return serve({kAssociators, result, op, assoc_class, result_class, role, result_role, props,
                  nullptr, nullptr});
}

}  // extern "C"
#pragma GCC visibility pop
