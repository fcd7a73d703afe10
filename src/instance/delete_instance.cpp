// deleteInstance: removes a zone set, zone or zone alias from the editable
// database of its VSAN, a zone member from every zone and alias that holds
// it, or one link (a zone in a zone set, an alias in a zone, a member in a
// zone or alias).
//
// Every request that names a usable key makes at most one platform command,
// under the zoning mutex, and ends in exactly one answer: a text handed to
// the result, a status, the result closed, the mutex released. Nothing is
// rolled back or retried. The enforced (active) database is never changed.
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string_view>

#include <cmpidt.h>
#include <cmpift.h>

#include "classes/path_keys.h"
#include "platform/zoning_platform.h"
#include "provider/platform_records.h"
#include "provider/zone_provider.h"

namespace {

using zone::paths::class_name_of;

// ---- Answers -----------------------------------------------------------

// Outcome codes the operation finds itself; platform commands give back
// their own through the same variable.
constexpr int kOutcomeSuccess = 0;
constexpr int kOutcomeUnknown = -1;    // wrong class of parent or member
constexpr int kOutcomeBadParent = 2;   // unusable or active parent InstanceID
constexpr int kOutcomeBadMember = 3;   // unusable, active or foreign member InstanceID
constexpr int kOutcomeIncomplete = 4;  // association path without its pair

struct Answer {
    const char *trace;  // printed before the datum; null: nothing
    const char *datum;  // handed to the result as CMPI_chars
    CMPIrc rc;
    const char *message;      // status message
    const char *trace_after;  // printed as a line once the status is made; null: nothing
};

struct AnswerRow {
    int outcome;
    Answer answer;
};

// The codes 2, 3 and 4 keep their wording whichever class is deleted.
static constexpr AnswerRow kAnswers[] = {
    {kOutcomeSuccess,
     {" ******* Success******\n", "Success", CMPI_RC_OK, "Success!\n", "I m in SUCCESS!"}},
    {kOutcomeUnknown,
     {"Unknown Error \n", "Unknown Error ", CMPI_RC_ERR_FAILED, "Unknown Error ", nullptr}},
    {kOutcomeBadParent,
     {"Invalid parent objectpath of CIM_MemberOfCollection!\n",
      "Invalid parent objectpath of CIM_MemberOfCollection!", CMPI_RC_ERR_FAILED,
      "Invalid parent objectpath of CIM_MemberOfCollection!", nullptr}},
    {kOutcomeBadMember,
     {"Invalid zone member objectpath of CIM_ElementSettingData!\n",
      "Invalid zone member objectpath of CIM_ElementSettingData!", CMPI_RC_ERR_FAILED,
      "Invalid zone member objectpath of CIM_ElementSettingData!", nullptr}},
    {kOutcomeIncomplete,
     {"Invalid objectpath of CIM_ElementSettingData!\n",
      "Invalid objectpath of CIM_ElementSettingData!\n", CMPI_RC_ERR_FAILED,
      "Invalid objectpath of CIM_ElementSettingData!\n", nullptr}},
};

// A zone set, zone or alias of the enforced database (or one whose
// InstanceID can't be split) is never deleted.
static constexpr Answer kActiveObjectRefusal = {nullptr, "cannot modify active zoning object!",
                                                CMPI_RC_ERR_INVALID_PARAMETER,
                                                "cannot modify active zoning object!", nullptr};

// How a branch ends: an outcome code, or the refusal to touch the enforced
// database.
struct Verdict {
    int outcome = kOutcomeSuccess;
    bool refuse_active = false;
};

constexpr Verdict outcome(int code) {
    return Verdict{code, false};
}
constexpr Verdict kRefuseActive{kOutcomeSuccess, true};

// Any code outside the table is described by the platform; its text is
// also the status message and is echoed as a trace line.
Answer answer_for(const Verdict &verdict) {
    if (verdict.refuse_active) return kActiveObjectRefusal;
    for (const AnswerRow &row : kAnswers)
        if (row.outcome == verdict.outcome) return row.answer;
    const char *text = syserr_format(verdict.outcome);
    if (text == nullptr) text = "";
    return Answer{nullptr, text, CMPI_RC_ERR_FAILED, text, text};
}

CMPIString *new_string(const char *text) {
    if (_broker == nullptr || _broker->eft == nullptr) return nullptr;
    return _broker->eft->newString(_broker, text, nullptr);
}

// The end of every request that took the mutex: datum, status, done,
// unlock, in this order.
CMPIStatus finish(const CMPIResult *result, const Answer &answer) {
    if (answer.trace != nullptr) std::fputs(answer.trace, stdout);
    zone::paths::deliver_text(result, answer.datum);
    const CMPIStatus status{answer.rc, new_string(answer.message)};
    if (answer.trace_after != nullptr) std::printf("%s\n", answer.trace_after);
    zone::paths::deliver_done(result);
    mutex_unlock();
    std::printf("end of delete_instance!\n");
    return status;
}

// ---- Keys --------------------------------------------------------------

// The key that identifies an object of a class: the first key of its path
// that the key check accepts. Its text stays empty unless it is a string
// (the association classes' keys are references).
struct IdentifyingKey {
    char name[zone::kKeyTextSize] = {};
    char text[zone::kKeyTextSize] = {};
    bool is_string = false;
};

std::optional<IdentifyingKey> find_identifying_key(const CMPIObjectPath *path, const char *cls) {
    std::optional<IdentifyingKey> found;
    zone::paths::walk_keys(path, [&](const char *name, const CMPIData &value) {
        if (check_key_name_zm(cls, name) == 0) return false;
        found.emplace();
        zone::copy_key_text(found->name, name);
        if (const char *text = zone::paths::string_in(value); text != nullptr) {
            zone::copy_key_text(found->text, text);
            found->is_string = true;
        }
        return true;
    });
    return found;
}

// ---- Zone sets, zones, zone aliases -------------------------------------

struct DeleteRequest {
    const CMPIObjectPath *op;
    const char *instance_id;  // text of the identifying key ("" when none)
};

Verdict remove_zoning_object(const DeleteRequest &request, int object_type) {
    int vsan = 0;
    int number = 0;
    int active = 0;
    if (zs_cim_get_fields_from_generic_instance_id(request.instance_id, &vsan, &number, &active) !=
            0 ||
        active != 0)
        return kRefuseActive;
    int code = kOutcomeSuccess;
    if (zs_cim_create_zoning_object_with_id(mts_q, ZP_OP_REMOVE, vsan, object_type, number, nullptr,
                                            &code) == 0)
        return outcome(kOutcomeSuccess);
    return outcome(code);
}

// ---- Zone members ---------------------------------------------------------

// One command takes the member out of every zone and alias; it gives back
// no code of its own, so any failure is "Unknown Error".
Verdict remove_member_everywhere(const DeleteRequest &request) {
    debug_attach_hook();
    if (zs_cim_remove_zone_member_from_all_parents(mts_q, request.instance_id) == 0)
        return outcome(kOutcomeSuccess);
    return outcome(kOutcomeUnknown);
}

// ---- Links: member of collection, element setting data -------------------
//
// The keys of the association's path are walked once, in index order. The
// parent key teaches the parent; the member key counts only once the parent
// is known, and then teaches the pair. Only a known pair leads to a command.

enum class LinkState { Nothing, ParentKnown, PairKnown };

// A parent class the family accepts, and the class its member must have.
struct ParentKind {
    std::string_view cls;
    int type_code;  // zoning object type code of the zone server's commands
    std::string_view member_cls;
};

constexpr std::size_t kMemberValueSize = 255;

struct Link {
    LinkState state = LinkState::Nothing;
    const ParentKind *parent = nullptr;
    int vsan = 0;
    int parent_number = 0;
    int member_number = 0;                              // a zone or alias as member
    uint8_t member_type = 0;                            // a zone member: its type code,
    unsigned char member_value[kMemberValueSize] = {};  // encoded value
    int member_value_length = 0;                        // and the value's length
};

// The fields of a member's InstanceID that decide whether it may go.
struct MemberFields {
    int vsan = 0;
    int active = 0;
};

enum class LinkEvent {
    ParentId,       // the parent's InstanceID was found
    ParentKnown,    // the parent was accepted
    MemberClass,    // the member's class was read
    ParentRefused,  // the parent's InstanceID can't be used
    MemberRefused,  // the member's InstanceID can't be used
    Incomplete,     // the walk ended without the pair
};

struct LinkFamily {
    std::string_view parent_key;
    std::string_view member_key;
    std::span<const ParentKind> parents;
    // Splits the member's InstanceID into the link and fields; 0 on success.
    int (*split_member)(const char *id, Link &link, MemberFields &fields);
    void (*trace)(LinkEvent event, const Link &link, const char *id);
    // The platform command that dissolves a known pair; the outcome code.
    int (*dissolve)(Link &link);
};

const ParentKind *find_parent_kind(const LinkFamily &family, const char *cls) {
    for (const ParentKind &kind : family.parents)
        if (zone::same_name(cls, kind.cls)) return &kind;
    return nullptr;
}

// What one key taught: nothing final (the walk goes on), or the outcome
// that ends the request.
using KeyResult = std::optional<int>;

KeyResult learn_parent(const LinkFamily &family, const CMPIObjectPath *ref, Link &link) {
    char cls[zone::kKeyTextSize];
    zone::copy_key_text(cls, class_name_of(ref));
    const ParentKind *kind = find_parent_kind(family, cls);
    if (kind == nullptr) return kOutcomeUnknown;
    const std::optional<IdentifyingKey> id = find_identifying_key(ref, cls);
    if (!id) return std::nullopt;  // a path without its key teaches nothing
    family.trace(LinkEvent::ParentId, link, id->text);
    int vsan = 0;
    int number = 0;
    int active = 0;
    if (zs_cim_get_fields_from_generic_instance_id(id->text, &vsan, &number, &active) != 0 ||
        active != 0) {
        family.trace(LinkEvent::ParentRefused, link, id->text);
        return kOutcomeBadParent;
    }
    link.state = LinkState::ParentKnown;
    link.parent = kind;
    link.vsan = vsan;
    link.parent_number = number;
    family.trace(LinkEvent::ParentKnown, link, id->text);
    return std::nullopt;
}

KeyResult learn_member(const LinkFamily &family, const CMPIObjectPath *ref, Link &link) {
    char cls[zone::kKeyTextSize];
    zone::copy_key_text(cls, class_name_of(ref));
    family.trace(LinkEvent::MemberClass, link, "");
    if (!zone::same_name(cls, link.parent->member_cls)) return kOutcomeUnknown;
    const std::optional<IdentifyingKey> id = find_identifying_key(ref, cls);
    if (!id) return std::nullopt;
    MemberFields fields;
    if (family.split_member(id->text, link, fields) != 0 || fields.active != 0 ||
        fields.vsan != link.vsan) {
        family.trace(LinkEvent::MemberRefused, link, id->text);
        return kOutcomeBadMember;
    }
    link.state = LinkState::PairKnown;
    return std::nullopt;
}

KeyResult learn_from_key(const LinkFamily &family, const char *key_name, const CMPIData &value,
                         Link &link) {
    if (zone::same_name(key_name, family.parent_key))
        return learn_parent(family, zone::paths::reference_in(value), link);
    if (zone::same_name(key_name, family.member_key) && link.state != LinkState::Nothing)
        return learn_member(family, zone::paths::reference_in(value), link);
    return std::nullopt;
}

Verdict remove_link(const CMPIObjectPath *op, const LinkFamily &family) {
    debug_attach_hook();
    Link link;
    KeyResult finished;
    zone::paths::walk_keys(op, [&](const char *name, const CMPIData &value) {
        finished = learn_from_key(family, name, value, link);
        return finished.has_value();
    });
    if (finished) return outcome(*finished);
    if (link.state != LinkState::PairKnown) {
        family.trace(LinkEvent::Incomplete, link, "");
        return outcome(kOutcomeIncomplete);
    }
    return outcome(family.dissolve(link));
}

// Member of collection: a zone set holds zones, a zone holds aliases.
static constexpr ParentKind kCollections[] = {
    {"VORNA_Zone", ZP_OBJECT_ZONE, "VORNA_ZoneAlias"},
    {"VORNA_ZoneSet", ZP_OBJECT_ZONE_SET, "VORNA_Zone"},
};

int split_collection_member(const char *id, Link &link, MemberFields &fields) {
    return zs_cim_get_fields_from_generic_instance_id(id, &fields.vsan, &link.member_number,
                                                      &fields.active);
}

void trace_collection(LinkEvent event, const Link &, const char *id) {
    switch (event) {
        case LinkEvent::ParentId:
            std::printf("Dbg delZmoc ZoneSet key is  %s\n", id);
            break;
        case LinkEvent::ParentKnown:
        case LinkEvent::MemberClass:
            std::printf("Dbg deleteInstance ZMoc found_is  is %d\n", 1);
            break;
        case LinkEvent::ParentRefused:
            std::printf(" zs cim get fields from inst id () failed \n");
            break;
        case LinkEvent::MemberRefused:
            std::printf("Dbg 3333 zs cim get fields from inst id () failed \n");
            break;
        case LinkEvent::Incomplete:
            break;
    }
}

// Only the link goes; the zone or alias itself stays.
int dissolve_collection(Link &link) {
    int code = kOutcomeSuccess;
    if (link.parent->type_code == ZP_OBJECT_ZONE_SET) {
        if (zs_cim_add_zone_to_zone_set(mts_q, ZP_OP_REMOVE, link.vsan, link.parent_number,
                                        link.member_number, &code) == 0)
            return kOutcomeSuccess;
        std::printf("Dbg - Error delete zone Member Of collection! - return code is %d", code);
        return code;
    }
    if (zs_cim_add_alias_to_zone(mts_q, ZP_OP_REMOVE, link.vsan, link.parent_number,
                                 link.member_number, &code) == 0)
        return kOutcomeSuccess;
    std::printf("Dbg - Error 2 delete zone Member Of collection! - return code is %d", code);
    return code;
}

static constexpr LinkFamily kMemberOfCollection{
    "Collection",        "Member", kCollections, split_collection_member, trace_collection,
    dissolve_collection,
};

// Element setting data: a zone or alias and one of its members.
static constexpr ParentKind kManagedElements[] = {
    {"VORNA_Zone", ZP_OBJECT_ZONE, "VORNA_ZoneMemberSettingData"},
    {"VORNA_ZoneAlias", ZP_OBJECT_ZONE_ALIAS, "VORNA_ZoneMemberSettingData"},
};

// The final 0 is the platform's reserved argument.
int split_setting_data(const char *id, Link &link, MemberFields &fields) {
    return zs_cim_get_fields_from_member_instance_id(id, &fields.vsan, &link.member_type,
                                                     link.member_value, &link.member_value_length,
                                                     &fields.active, 0);
}

void trace_setting_data(LinkEvent event, const Link &link, const char *) {
    switch (event) {
        case LinkEvent::ParentRefused:
            std::printf(" zs cim get fields from inst id () failed \n");
            break;
        case LinkEvent::MemberRefused:
            std::printf("Dbg 33 zs cim get fields from inst id () failed \n");
            break;
        case LinkEvent::Incomplete:
            std::printf("Dbg deleteInstance In ESD 33 found id is %d\n",
                        link.state == LinkState::Nothing ? 0 : 1);
            break;
        case LinkEvent::ParentId:
        case LinkEvent::ParentKnown:
        case LinkEvent::MemberClass:
            break;
    }
}

// Only this one membership goes; the parent's active flag is 0, since
// only editable parents get this far.
int dissolve_setting_data(Link &link) {
    int code = kOutcomeSuccess;
    if (zs_cim_add_zoning_member(mts_q, ZP_OP_REMOVE, link.vsan, 0, link.parent->type_code,
                                 link.parent_number, link.member_type, link.member_value,
                                 &link.member_value_length, &code) == 0)
        return kOutcomeSuccess;
    std::printf("Dbg - Error delete zone element setting data! - return code is %d", code);
    return code;
}

static constexpr LinkFamily kElementSettingData{
    "ManagedElement",   "SettingData",      kManagedElements,
    split_setting_data, trace_setting_data, dissolve_setting_data,
};

// ---- Branches --------------------------------------------------------------

using Branch = Verdict (*)(const DeleteRequest &);

struct BranchRow {
    std::string_view cls;
    Branch run;
};

static constexpr BranchRow kBranches[] = {
    {"VORNA_ZoneSet",
     [](const DeleteRequest &r) { return remove_zoning_object(r, ZP_OBJECT_ZONE_SET); }},
    {"VORNA_Zone", [](const DeleteRequest &r) { return remove_zoning_object(r, ZP_OBJECT_ZONE); }},
    {"VORNA_ZoneAlias",
     [](const DeleteRequest &r) { return remove_zoning_object(r, ZP_OBJECT_ZONE_ALIAS); }},
    {"VORNA_ZoneMemberSettingData", remove_member_everywhere},
    {"VORNA_ZoneMemberOfCollection",
     [](const DeleteRequest &r) { return remove_link(r.op, kMemberOfCollection); }},
    {"VORNA_ElementSettingData",
     [](const DeleteRequest &r) { return remove_link(r.op, kElementSettingData); }},
};

// Served classes without a branch (device aliases, the services, hosted
// collections) have nothing to delete: success, no platform call.
Verdict run_branch(const char *cls, const DeleteRequest &request) {
    for (const BranchRow &row : kBranches)
        if (zone::same_name(cls, row.cls)) return row.run(request);
    return outcome(kOutcomeSuccess);
}

}  // namespace

extern "C" {

CMPIStatus zone_Provider_DeleteInstance(CMPIInstanceMI *, const CMPIContext *,
                                        const CMPIResult *result, const CMPIObjectPath *op) {
    const char *cls = class_name_of(op);
    std::printf("Dbg deleteInstance Start classname is %s\n", cls);
    // An unserved class is not turned away here: no key of it passes the
    // key check, so the key search does.
    check_class_name_zm(cls);

    const std::optional<IdentifyingKey> key = find_identifying_key(op, cls);
    if (!key) {
        std::printf("deleteInstance can't find key\n");
        return CMPIStatus{CMPI_RC_ERROR, nullptr};
    }
    if (key->is_string) std::printf("\tDbg found key %s : %s\n", key->name, key->text);

    mutex_lock();
    const Verdict verdict = run_branch(cls, DeleteRequest{op, key->text});
    return finish(result, answer_for(verdict));
}

}  // extern "C"
