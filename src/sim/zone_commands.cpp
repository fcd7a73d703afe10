// The zone server's commands. They change only the full (editable) database
// of a VSAN, each in one write transaction, and answer 0 or a simulator
// error code, which they also write through their error argument.
#include <cstdint>

#include "platform/zoning_platform.h"
#include "sim/fault_injection.h"
#include "sim/member_identity.h"
#include "sim/platform_state.h"
#include "sim/records.h"
#include "sim/sim_errors.h"

namespace zonesim {
namespace {

constexpr int kActivate = 1;
constexpr int kDeactivate = -1;

// Hands the code to the error argument (when there is one) and answers it.
int report(int code, int *error) {
    if (error != nullptr) *error = code;
    return code;
}

bool objectKindOf(int object_type, ObjectKind *kind) {
    switch (object_type) {
        case ZP_OBJECT_ZONE:
            *kind = ObjectKind::Zone;
            return true;
        case ZP_OBJECT_ZONE_SET:
            *kind = ObjectKind::ZoneSet;
            return true;
        case ZP_OBJECT_ZONE_ALIAS:
            *kind = ObjectKind::Alias;
            return true;
        default:
            return false;
    }
}

// Hands a newly created object's record to the caller, as its kind's record.
int handOverRecord(const ZoningObject &object, void **record) {
    if (record == nullptr) return kOk;
    void *made = nullptr;
    switch (object.kind) {
        case ObjectKind::ZoneSet:
            made = newRecord<ZoneSetRecord>(object);
            break;
        case ObjectKind::Zone:
            made = newRecord<ZoneRecord>(object);
            break;
        case ObjectKind::Alias:
            made = newRecord<ZoneAliasRecord>(object);
            break;
    }
    if (made == nullptr) return kErrUnknown;
    *record = made;
    return kOk;
}

int createObject(int queue, int operation, int vsan, int object_type, const char *name,
                 void **record) {
    ObjectKind kind;
    if (operation != ZP_OP_ADD) return kErrNotSupported;
    if (!objectKindOf(object_type, &kind)) return kErrInvalidArgument;
    if (name == nullptr) return kErrInvalidName;
    ZoningObject created;
    int code = withStore(
        queue, true, [&](Store &store) { return store.createObject(vsan, kind, name, &created); });
    return code != kOk ? code : handOverRecord(created, record);
}

int removeObject(int queue, int operation, int vsan, int object_type, int number, void **record) {
    ObjectKind kind;
    if (operation != ZP_OP_REMOVE) return kErrNotSupported;
    if (!objectKindOf(object_type, &kind)) return kErrInvalidArgument;
    if (record != nullptr) *record = nullptr;  // nothing is handed back on removal
    return withStore(queue, true,
                     [&](Store &store) { return store.removeObject(vsan, kind, number); });
}

int changeLink(int queue, int operation, int vsan, ObjectKind parent_kind, int parent_number,
               int child_number) {
    if (operation != ZP_OP_ADD && operation != ZP_OP_REMOVE) return kErrInvalidArgument;
    return withStore(queue, true, [&](Store &store) {
        return operation == ZP_OP_ADD
                   ? store.addChild(vsan, parent_kind, parent_number, child_number)
                   : store.removeChild(vsan, parent_kind, parent_number, child_number);
    });
}

int changeMember(int queue, int operation, int vsan, int parent_active, int parent_type,
                 int parent_number, uint32_t member_type, const unsigned char *value,
                 const int *value_length) {
    if (operation != ZP_OP_ADD && operation != ZP_OP_REMOVE) return kErrInvalidArgument;
    if (parent_active != 0) return kErrActiveReadOnly;
    if (parent_type != ZP_OBJECT_ZONE && parent_type != ZP_OBJECT_ZONE_ALIAS)
        return kErrInvalidArgument;
    if (value_length == nullptr) return kErrInvalidArgument;
    ObjectKind parent_kind = parent_type == ZP_OBJECT_ZONE ? ObjectKind::Zone : ObjectKind::Alias;
    return withStore(queue, true, [&](Store &store) {
        Member member;
        if (int code = memberFromValue(vsan, false, member_type, value, *value_length, &member))
            return code;
        return operation == ZP_OP_ADD ? store.addMember(parent_kind, parent_number, member)
                                      : store.removeMember(parent_kind, parent_number, member);
    });
}

int activation(int queue, int vsan, int active, int zone_set_number, const int *flag) {
    if (flag == nullptr || (*flag != kActivate && *flag != kDeactivate)) return kErrInvalidArgument;
    // Activation copies from the full database; the active copy itself can't
    // be activated. Either copy names the zone set to deactivate.
    if (*flag == kActivate && active != 0) return kErrActiveReadOnly;
    return withStore(queue, true, [&](Store &store) {
        return *flag == kActivate ? store.activate(vsan, zone_set_number)
                                  : store.deactivate(vsan, zone_set_number);
    });
}

int removeMemberEverywhere(int queue, const char *member_id) {
    return withStore(queue, true, [&](Store &store) {
        Member member;
        if (int code = memberFromInstanceId(member_id, &member)) return code;
        if (member.active) return kErrActiveReadOnly;
        return store.removeMemberEverywhere(member);
    });
}

}  // namespace
}  // namespace zonesim

using namespace zonesim;

#pragma GCC visibility push(default)
extern "C" {

int zs_cim_create_zoning_object(int queue, int operation, int vsan, int object_type,
                                const char *name, void **record, int *error) {
    if (injectFault(__func__)) return report(kInjectedFault, error);
    return report(createObject(queue, operation, vsan, object_type, name, record), error);
}

int zs_cim_create_zoning_object_with_id(int queue, int operation, int vsan, int object_type,
                                        int object_number, void **record, int *error) {
    if (injectFault(__func__)) return report(kInjectedFault, error);
    return report(removeObject(queue, operation, vsan, object_type, object_number, record), error);
}

int zs_cim_add_zone_to_zone_set(int queue, int operation, int vsan, int zone_set_number,
                                int zone_number, int *error) {
    if (injectFault(__func__)) return report(kInjectedFault, error);
    return report(
        changeLink(queue, operation, vsan, ObjectKind::ZoneSet, zone_set_number, zone_number),
        error);
}

int zs_cim_add_alias_to_zone(int queue, int operation, int vsan, int zone_number, int alias_number,
                             int *error) {
    if (injectFault(__func__)) return report(kInjectedFault, error);
    return report(changeLink(queue, operation, vsan, ObjectKind::Zone, zone_number, alias_number),
                  error);
}

int zs_cim_add_zoning_member(int queue, int operation, int vsan, int parent_active, int parent_type,
                             int parent_number, uint32_t member_type, unsigned char *value,
                             int *value_length, int *error) {
    if (injectFault(__func__)) return report(kInjectedFault, error);
    return report(changeMember(queue, operation, vsan, parent_active, parent_type, parent_number,
                               member_type, value, value_length),
                  error);
}

int zs_cim_activate_zone_set(int queue, int vsan, int active, int zone_set_number,
                             int *activation_flag, int *error) {
    if (injectFault(__func__)) return report(kInjectedFault, error);
    return report(activation(queue, vsan, active, zone_set_number, activation_flag), error);
}

int zs_cim_remove_zone_member_from_all_parents(int queue, const char *member_id) {
    if (injectFault(__func__)) return kInjectedFault;
    return removeMemberEverywhere(queue, member_id);
}

}  // extern "C"
#pragma GCC visibility pop
