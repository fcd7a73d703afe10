// Zone members (VORNA_ZoneMemberSettingData) of every VSAN, active database
// first, then the editable one. The platform hands the members of a database
// back as a linked list whose nodes are ours: each node is detached and
// freed as soon as its object has been delivered.
#include <cstdio>

#include <cmpimacs.h>

#include "platform/zoning_platform.h"
#include "provider/platform_records.h"
#include "provider/trace_line.h"
#include "provider/zone_provider.h"

namespace {

constexpr const char *kNotFound = "Could not find or construct instance";

using MemberQuery = int (*)(int, int, int *, ZoneMemberRecord **);

// The member's identifier text, no further than its field reaches.
void print_member_line(zone::TraceBatch &out, bool active, const ZoneMemberRecord &member) {
    out.text(active ? "\n found  zone member in get_zone_member_all_instances  -- "
                    : "\n found  zone member get_zone_member_all_instances -- ")
        .field(member.member_value)
        .text("\n");
}

void print_count_line(zone::TraceBatch &out, bool active, int count, int vsan) {
    out.text("found ")
        .number(count)
        .text(active ? " active zone member in vsan " : " non active zone member in vsan ")
        .number(vsan)
        .text("\n");
}

// One database of one VSAN; a failed query only skips it.
template <typename Deliver>
void list_members(zone::TraceBatch &out, MemberQuery query, bool active, bool traced, int vsan,
                  Deliver &&deliver) {
    int count = 0;
    zone::OwnedList<ZoneMemberRecord> members;
    if (query(mts_q, vsan, &count, members.out()) != 0) return;
    if (traced) print_count_line(out, active, count, vsan);
    members.visit([&](const ZoneMemberRecord *member) {
        if (traced) print_member_line(out, active, *member);
        deliver(*member);
    });
}

template <typename Deliver>
void enumerate_members(bool traced, Deliver &&deliver) {
    zone::TraceBatch out;
    zone::for_each_vsan(mts_q, [&](int vsan) {
        list_members(out, zs_cim_get_all_active_zone_members, true, traced, vsan, deliver);
        list_members(out, zs_cim_get_all_non_active_zone_members, false, traced, vsan, deliver);
    });
}

void report_not_found(CMPIStatus *st) {
    if (st == nullptr) return;
    st->rc = CMPI_RC_ERR_NOT_FOUND;
    st->msg = _broker != nullptr ? CMNewString(_broker, kNotFound, nullptr) : nullptr;
}

}  // namespace

extern "C" {

int get_zone_member_all_instances(const char *cls, const CMPIResult *result, const char **props,
                                  const char *ns) {
    enumerate_members(true, [&](const ZoneMemberRecord &member) {
        if (const CMPIInstance *instance =
                zone_member_build_instance(cls, ns, &member, props, _broker))
            CMReturnInstance(result, instance);
    });
    return 0;
}

int get_zone_member_keys(const char *cls, const CMPIResult *result, const char *ns) {
    enumerate_members(false, [&](const ZoneMemberRecord &member) {
        if (const CMPIObjectPath *path = zone_member_fill_reference(cls, ns, &member, _broker))
            CMReturnObjectPath(result, path);
    });
    return 0;
}

int get_zone_member_instance(const char *cls, const char *instance_id, const CMPIResult *result,
                             const char **props, const char *ns, CMPIStatus *st) {
    zone::Owned<ZoneMemberRecord> member;
    if (zs_cim_get_zone_member_by_instance_id(mts_q, instance_id != nullptr ? instance_id : "",
                                              member.out()) != 0) {
        std::printf(" GET zone member by instance id is failure\n");
        report_not_found(st);
        return 0;
    }
    std::printf(" get zone member by instance id is success \n");
    const CMPIInstance *instance =
        zone_member_build_instance(cls, ns, member.get(), props, _broker);
    if (instance == nullptr || instance->hdl == nullptr) {
        std::printf(" Instance is null\n");
        report_not_found(st);
        return 0;
    }
    std::printf("Instance is non null.. Returning Instance \n");
    CMReturnInstance(result, instance);
    return 0;
}

}  // extern "C"
