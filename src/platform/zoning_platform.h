/*
 * The zoning platform: every switch service the zone provider talks to.
 *
 * The provider keeps no zoning state of its own. It reaches the VSAN table,
 * the domain manager, the zone server, the device-alias database, the
 * messaging queue and the process mutex through the operations below, and
 * turns the records they hand back into CMPI objects with the builders at
 * the end of this file. A switch vendor ships the real implementation; this
 * project ships a simulated switch (libzoning_platform.so) behind the same
 * declarations.
 *
 * Conventions for every operation unless its comment says otherwise:
 *  - the result is an int, 0 for success (found, delivered, done);
 *  - the first argument of every query and command is the messaging queue
 *    handle, passed by value;
 *  - records, arrays and list nodes handed back are malloc'ed by the platform
 *    and owned by the caller, who releases them with free(): an array with
 *    one free(), a linked list node by node, a generic list with
 *    cim_g_slist_destroy();
 *  - texts passed in are NUL-terminated and only borrowed for the call.
 *
 * Record layouts. The records cross the interface by address, so their
 * offsets are part of the contract. On a 32-bit switch (ILP32) the next
 * pointers are 4 bytes wide and the sizes are 368 (zone set), 372 (zone,
 * alias), 552 (member). On LP64 the next pointer is 8 bytes wide and sits at
 * the next 8-byte boundary; InstanceID, name, member type and member value
 * keep their offsets. Arrays of records are laid back to back with a stride
 * of sizeof(record) on either model. The static assertions at the end of the
 * file pin both layouts.
 */
#ifndef ZONING_PLATFORM_H
#define ZONING_PLATFORM_H

#include <stddef.h>
#include <stdint.h>

#include <cmpidt.h>
#include <cmpift.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------ */
/* Sizes and codes                                                     */
/* ------------------------------------------------------------------ */

#define ZP_INSTANCE_ID_LEN 288  /* InstanceID text field, with its NUL   */
#define ZP_MEMBER_VALUE_LEN 256 /* member identifier text field          */
#define ZP_VSAN_ENTRY_SIZE 2108
#define ZP_DOMAIN_ENTRY_SIZE 1152
#define ZP_DEVICE_ALIAS_NAME_LEN 68
#define ZP_DEVICE_ALIAS_ENTRY_SIZE 80
#define ZP_COMMIT_CONTEXT_SIZE 132

/* Zoning object type codes of the zone server's commands. */
#define ZP_OBJECT_ZONE 0
#define ZP_OBJECT_ZONE_SET 1
#define ZP_OBJECT_ZONE_ALIAS 2

/* Operation argument of the create and add commands. */
#define ZP_OP_REMOVE 0
#define ZP_OP_ADD 1

/* Mode of vsan_cim_get_vsanEntry. */
#define ZP_VSAN_NEXT 0
#define ZP_VSAN_GIVEN 1

/* ------------------------------------------------------------------ */
/* Records                                                             */
/* ------------------------------------------------------------------ */

/* One VSAN of the VSAN table. Only the number is the provider's business;
 * the rest is the switch's description of the VSAN, passed whole to the
 * builders. */
typedef struct VsanEntry {
    int32_t vsan;
    unsigned char description[ZP_VSAN_ENTRY_SIZE - 4];
} VsanEntry;

/* The domain manager's entry of one VSAN, opaque to the provider. */
typedef struct DomainEntry {
    unsigned char opaque[ZP_DOMAIN_ENTRY_SIZE];
} DomainEntry;

typedef struct ZoneSetRecord {
    char instance_id[ZP_INSTANCE_ID_LEN];
    char name[76];
    struct ZoneSetRecord *next;
} ZoneSetRecord;

typedef struct ZoneRecord {
    char instance_id[ZP_INSTANCE_ID_LEN];
    char name[64 + 1];
    unsigned char platform_private[15];
    struct ZoneRecord *next;
} ZoneRecord;

typedef struct ZoneAliasRecord {
    char instance_id[ZP_INSTANCE_ID_LEN];
    char name[64 + 1];
    unsigned char platform_private[15];
    struct ZoneAliasRecord *next;
} ZoneAliasRecord;

typedef struct ZoneMemberRecord {
    char instance_id[ZP_INSTANCE_ID_LEN];
    uint16_t cim_member_type;
    char member_value[ZP_MEMBER_VALUE_LEN];
    struct ZoneMemberRecord *next;
} ZoneMemberRecord;

/* One entry of the device-alias database. */
typedef struct DeviceAliasEntry {
    char name[ZP_DEVICE_ALIAS_NAME_LEN];
    unsigned char reserved[4];
    unsigned char pwwn[8]; /* WWN bytes in the order of its text form */
} DeviceAliasEntry;

/* Staging context of a device-alias change; the provider sets only the
 * first field (6) and hands it to the change call and then to the commit. */
typedef struct DeviceAliasCommitContext {
    int32_t operation;
    unsigned char platform_private[ZP_COMMIT_CONTEXT_SIZE - 4];
} DeviceAliasCommitContext;

/* Generic singly linked list of record addresses. */
typedef struct cim_g_slist cim_g_slist;

/* Iterator over the device-alias database. */
typedef struct ddas_iterator ddas_iterator;

/* ------------------------------------------------------------------ */
/* Messaging and locking                                               */
/* ------------------------------------------------------------------ */

/* Opens the response queue and stores its handle through the address;
 * negative on failure. Called again with an open handle, keeps it usable. */
int init_mts(int *queue);
/* The one process-wide, non-recursive mutex of the provider. */
void mutex_lock(void);
void mutex_unlock(void);

/* ------------------------------------------------------------------ */
/* VSAN table and domain manager                                       */
/* ------------------------------------------------------------------ */

/* Mode 0: delivers the VSAN that follows entry->vsan (a walk starts at 0 and
 * ends at the first non-zero result). Mode 1: fills the entry of the VSAN
 * whose number the caller put into entry->vsan. */
int vsan_cim_get_vsanEntry(int queue, int mode, VsanEntry *entry);
/* The whole table: *count entries in *entries, one free() for the array. */
int vsan_cim_get_all_vsanEntry(int queue, int *count, VsanEntry **entries);
/* 0 when the VSAN exists. */
int vsan_cim_check_vsan_index(int vsan);
/* Fills the caller's buffer with the domain entry of the VSAN; mode is 1. */
int dm_cim_get_dmEntry(int queue, int vsan, int mode, DomainEntry *entry);

/* ------------------------------------------------------------------ */
/* Zone server: queries                                                */
/* ------------------------------------------------------------------ */

/* Arrays of all objects of one VSAN database, in creation order. */
int zs_cim_get_all_active_zone_sets(int queue, int vsan, int *count, ZoneSetRecord **records);
int zs_cim_get_all_non_active_zone_sets(int queue, int vsan, int *count, ZoneSetRecord **records);
int zs_cim_get_all_active_zones(int queue, int vsan, int *count, ZoneRecord **records);
int zs_cim_get_all_non_active_zones(int queue, int vsan, int *count, ZoneRecord **records);
int zs_cim_get_all_active_zone_aliases(int queue, int vsan, int *count, ZoneAliasRecord **records);
int zs_cim_get_all_non_active_zone_aliases(int queue, int vsan, int *count,
                                           ZoneAliasRecord **records);
/* Linked lists of all members of one VSAN database. */
int zs_cim_get_all_active_zone_members(int queue, int vsan, int *count, ZoneMemberRecord **list);
int zs_cim_get_all_non_active_zone_members(int queue, int vsan, int *count,
                                           ZoneMemberRecord **list);

/* One record by its InstanceID; non-zero and no record when unknown. */
int zs_cim_get_zone_set_by_instance_id(int queue, const char *instance_id, ZoneSetRecord **record);
int zs_cim_get_zone_by_instance_id(int queue, const char *instance_id, ZoneRecord **record);
int zs_cim_get_zone_alias_by_instance_id(int queue, const char *instance_id,
                                         ZoneAliasRecord **record);
int zs_cim_get_zone_member_by_instance_id(int queue, const char *instance_id,
                                          ZoneMemberRecord **record);

/* Parents and children, as linked lists (null when empty). */
int zs_cim_get_zone_set_zones_by_instance_id(int queue, const char *zone_set_id, ZoneRecord **list);
int zs_cim_get_zone_zone_set_parents_by_instance_id(int queue, const char *zone_id,
                                                    ZoneSetRecord **list);
int zs_cim_get_zone_zone_aliases_by_instance_id(int queue, const char *zone_id,
                                                ZoneAliasRecord **list);
int zs_cim_get_zone_zone_members_by_instance_id(int queue, const char *zone_id,
                                                ZoneMemberRecord **list);
int zs_cim_get_zone_alias_zone_parents_by_instance_id(int queue, const char *alias_id,
                                                      ZoneRecord **list);
int zs_cim_get_zone_alias_zone_members_by_instance_id(int queue, const char *alias_id,
                                                      ZoneMemberRecord **list);
/* Parents of a member, appended to a generic list made by cim_g_slist_alloc
 * (entries: ZoneRecord* / ZoneAliasRecord*, owned by the list). */
int zs_cim_get_zone_member_zone_parents_by_instance_id(int queue, const char *member_id,
                                                       cim_g_slist **list);
int zs_cim_get_zone_member_zone_alias_parents_by_instance_id(int queue, const char *member_id,
                                                             cim_g_slist **list);

/* Lookups by object number. *found (preset 0 by the caller) becomes non-zero
 * when the object exists; the record is then the caller's. */
int zs_cim_get_zone_set(int queue, int zone_set_number, int vsan, int active, int *found,
                        ZoneSetRecord **record);
int zs_cim_get_zone(int queue, int zone_number, int vsan, int active, int *found,
                    ZoneRecord **record);

/* Splits a zone set's, zone's or alias's InstanceID. */
int zs_cim_get_fields_from_generic_instance_id(const char *instance_id, int *vsan, int *number,
                                               int *active);
/* Splits a member's InstanceID ("vsan^cim type^member text^active") into the
 * VSAN, the zone server's member type code, the encoded member value (into a
 * buffer of at least 255 bytes) with its length, and the active flag. The
 * last argument is reserved and must be 0. */
int zs_cim_get_fields_from_member_instance_id(const char *instance_id, int *vsan,
                                              uint8_t *member_type, unsigned char *value,
                                              int *value_length, int *active, int reserved);

/* ------------------------------------------------------------------ */
/* Zone server: commands (always on the editable database)             */
/* ------------------------------------------------------------------ */

/* Creates (operation 1) a zone set, zone or alias named name; on success the
 * new object's record (ZoneSetRecord / ZoneRecord / ZoneAliasRecord) is the
 * caller's. On failure *error holds the zone server's code. */
int zs_cim_create_zoning_object(int queue, int operation, int vsan, int object_type,
                                const char *name, void **record, int *error);
/* Removes (operation 0) the object with the given number; record may be null. */
int zs_cim_create_zoning_object_with_id(int queue, int operation, int vsan, int object_type,
                                        int object_number, void **record, int *error);
/* Adds (1) or removes (0) a zone in a zone set / an alias in a zone. */
int zs_cim_add_zone_to_zone_set(int queue, int operation, int vsan, int zone_set_number,
                                int zone_number, int *error);
int zs_cim_add_alias_to_zone(int queue, int operation, int vsan, int zone_number, int alias_number,
                             int *error);
/* Adds (1) or removes (0) one member of a zone (parent type 0) or alias (2). */
int zs_cim_add_zoning_member(int queue, int operation, int vsan, int parent_active, int parent_type,
                             int parent_number, uint32_t member_type, unsigned char *value,
                             int *value_length, int *error);
/* Activates (*activation == 1) or deactivates (*activation == -1) the zone
 * set named by the fields of its InstanceID (note: active flag before the
 * object number). */
int zs_cim_activate_zone_set(int queue, int vsan, int active, int zone_set_number, int *activation,
                             int *error);
/* Removes the member from every zone and alias that holds it. */
int zs_cim_remove_zone_member_from_all_parents(int queue, const char *member_id);

/* ------------------------------------------------------------------ */
/* Generic list                                                        */
/* ------------------------------------------------------------------ */

cim_g_slist *cim_g_slist_alloc(void);
int cim_g_slist_length(cim_g_slist *list);
void *cim_g_slist_nth_data(cim_g_slist *list, int n);
/* Releases the list and the records it holds. */
void cim_g_slist_destroy(cim_g_slist *list);

/* ------------------------------------------------------------------ */
/* Errors, system name, member types, WWNs, TLVs                       */
/* ------------------------------------------------------------------ */

const char *syserr2str(int code);
const char *syserr_format(int code);
const char *getCSName(void);

/* 0 when the CIM member type is known; the zone server code in *code. */
int decode_cim_member_type(uint32_t cim_member_type, uint8_t *code);
/* Length in bytes of a member value of that code; <= 0 when unknown. */
int get_member_value_length(uint8_t code);
/* Encodes the member identifier text into value; 0 on success. */
int get_member_value_from_cim_member_type_value(const char *text, uint8_t code,
                                                unsigned char *value);
/* Formatters of encoded member values into a 128-byte text. */
int cim_sprintf_wwn(char *out, const unsigned char *value);
int cim_sprintf_dom_interface_hex(char *out, const unsigned char *value);
int zs_cim_sprintf_dom_port(char *out, const unsigned char *value);

/* WWN text ("20:00:00:11:22:33:44:55") to its 8 bytes; 0 when valid. */
int wwn_cim_get_hex_from_str_wwn(const char *text, unsigned char *wwn);
/* Aligned size of one type-length-value item with a value of that size. */
uint32_t tlv_aligned_data_size_get(uint32_t value_size);
/* Appends one item to a zero-filled TLV array; 0 when added. */
int tlv_aligned_array_add_tlv(unsigned char *buffer, uint32_t buffer_size, uint32_t type,
                              uint32_t length, const void *value, int flags);

/* ------------------------------------------------------------------ */
/* Device-alias database                                               */
/* ------------------------------------------------------------------ */

int ddas_api_get_all_device_alias_entries(int queue, void **first, ddas_iterator **iterator);
int ddas_api_iter_get_num_entries(ddas_iterator *iterator, int *count);
int ddas_api_iter_get_next_device_alias_entry(ddas_iterator *iterator, DeviceAliasEntry *entry);
/* pwwn: the 8 WWN bytes as a 64-bit value whose memory order is the text's. */
int ddas_get_device_alias_given_pwwn(int queue, uint64_t pwwn, char *name);
int ddas_create_device_alias_entry(int queue, const char *name, unsigned char *pwwn_tlv,
                                   DeviceAliasCommitContext *context, int flags, int reserved);
int ddas_remove_device_alias_entry(int queue, const char *name, DeviceAliasCommitContext *context,
                                   int flags);
int ddas_commit(int queue, DeviceAliasCommitContext *context, int flags);

/* ------------------------------------------------------------------ */
/* Builders: CMPI objects made with the broker given; null when they    */
/* can't be made. cls is the class name, ns the namespace, props the    */
/* request's property list (null: all).                                 */
/* ------------------------------------------------------------------ */

CMPIInstance *zone_service_build_instance(const char *cls, const char *ns, int vsan,
                                          const char **props, int queue, const CMPIBroker *broker);
CMPIObjectPath *zone_service_fill_reference(const char *cls, const char *ns, int vsan,
                                            const CMPIBroker *broker);
CMPIInstance *hosted_service_build_instance(const char *cls, const char *ns, const VsanEntry *vsan,
                                            const DomainEntry *domain, const char **props,
                                            const CMPIBroker *broker);
CMPIObjectPath *hosted_service_fill_reference(const char *cls, const char *ns,
                                              const VsanEntry *vsan, const DomainEntry *domain,
                                              const CMPIBroker *broker);

CMPIInstance *zone_set_build_instance(const char *cls, const char *ns, const ZoneSetRecord *record,
                                      const char **props, const CMPIBroker *broker);
CMPIObjectPath *zone_set_fill_reference(const char *cls, const char *ns,
                                        const ZoneSetRecord *record, const CMPIBroker *broker);
CMPIInstance *zone_build_instance(const char *cls, const char *ns, const ZoneRecord *record,
                                  const char **props, const CMPIBroker *broker);
CMPIObjectPath *zone_fill_reference(const char *cls, const char *ns, const ZoneRecord *record,
                                    const CMPIBroker *broker);
CMPIInstance *zone_alias_build_instance(const char *cls, const char *ns,
                                        const ZoneAliasRecord *record, const char **props,
                                        const CMPIBroker *broker);
CMPIObjectPath *zone_alias_fill_reference(const char *cls, const char *ns,
                                          const ZoneAliasRecord *record, const CMPIBroker *broker);
CMPIInstance *zone_member_build_instance(const char *cls, const char *ns,
                                         const ZoneMemberRecord *record, const char **props,
                                         const CMPIBroker *broker);
CMPIObjectPath *zone_member_fill_reference(const char *cls, const char *ns,
                                           const ZoneMemberRecord *record,
                                           const CMPIBroker *broker);
CMPIInstance *device_alias_build_instance(const char *cls, const char *ns,
                                          const DeviceAliasEntry *entry, const char **props,
                                          const CMPIBroker *broker);
CMPIObjectPath *device_alias_fill_reference(const char *cls, const char *ns,
                                            const DeviceAliasEntry *entry,
                                            const CMPIBroker *broker);

/* Element setting data: a zone or alias (ManagedElement) and its member
 * (SettingData). */
CMPIInstance *esd_build_instance(const char *cls, const char *ns, const CMPIObjectPath *element,
                                 const CMPIObjectPath *setting, const char **props,
                                 const CMPIBroker *broker);
CMPIObjectPath *esd_fill_reference_zoneZoneMember(const char *cls, const char *ns,
                                                  const ZoneRecord *zone,
                                                  const ZoneMemberRecord *member,
                                                  const CMPIBroker *broker);
CMPIObjectPath *esd_fill_reference_zoneAliasZoneMember(const char *cls, const char *ns,
                                                       const ZoneAliasRecord *alias,
                                                       const ZoneMemberRecord *member,
                                                       const CMPIBroker *broker);
CMPIInstance *esd_build_instance_zoneZoneMember(const char *cls, const char *ns,
                                                const ZoneRecord *zone,
                                                const ZoneMemberRecord *member, const char **props,
                                                const CMPIBroker *broker);
CMPIInstance *esd_build_instance_zoneAliasZoneMember(const char *cls, const char *ns,
                                                     const ZoneAliasRecord *alias,
                                                     const ZoneMemberRecord *member,
                                                     const char **props, const CMPIBroker *broker);

/* Member of collection: a zone set holds a zone, a zone holds an alias. */
CMPIInstance *zmoc_build_instance_MemberCollection(const char *cls, const char *ns,
                                                   const CMPIObjectPath *collection,
                                                   const CMPIObjectPath *member, const char **props,
                                                   const CMPIBroker *broker);
CMPIObjectPath *zmoc_fill_reference_zoneSetZone(const char *cls, const char *ns,
                                                const ZoneSetRecord *zone_set,
                                                const ZoneRecord *zone, const CMPIBroker *broker);
CMPIObjectPath *zmoc_fill_reference(const char *cls, const char *ns, const ZoneRecord *zone,
                                    const ZoneAliasRecord *alias, const CMPIBroker *broker);
CMPIInstance *zmoc_build_instance_zoneSetZone(const char *cls, const char *ns,
                                              const ZoneSetRecord *zone_set, const ZoneRecord *zone,
                                              const char **props, const CMPIBroker *broker);
CMPIInstance *zmoc_build_instance(const char *cls, const char *ns, const ZoneRecord *zone,
                                  const ZoneAliasRecord *alias, const CMPIBroker *broker);

/* The VSAN as a neighbour, and the links that host collections in it. */
CMPIInstance *vsan_build_instance(const char *cls, const char *ns, const VsanEntry *vsan,
                                  const DomainEntry *domain, const char **props,
                                  const CMPIBroker *broker);
CMPIObjectPath *vsan_fill_reference(const char *cls, const char *ns, const VsanEntry *vsan,
                                    const DomainEntry *domain, const CMPIBroker *broker);
CMPIInstance *hosted_collection_build_instance_zset(const char *cls, const char *ns,
                                                    const VsanEntry *vsan,
                                                    const DomainEntry *domain,
                                                    const ZoneSetRecord *zone_set,
                                                    const char **props, const CMPIBroker *broker);
CMPIObjectPath *hosted_collection_fill_reference_zset(const char *cls, const char *ns,
                                                      const VsanEntry *vsan,
                                                      const DomainEntry *domain,
                                                      const ZoneSetRecord *zone_set,
                                                      const CMPIBroker *broker);
CMPIInstance *hosted_collection_build_instance_zone(const char *cls, const char *ns,
                                                    const VsanEntry *vsan,
                                                    const DomainEntry *domain,
                                                    const ZoneRecord *zone,
                                                    const CMPIBroker *broker);
CMPIObjectPath *hosted_collection_fill_reference_zone(const char *cls, const char *ns,
                                                      const VsanEntry *vsan,
                                                      const DomainEntry *domain,
                                                      const ZoneRecord *zone,
                                                      const CMPIBroker *broker);
CMPIObjectPath *zone_hosted_collection_fill_reference(const char *cls, const char *ns,
                                                      const CMPIObjectPath *vsan_ref,
                                                      const CMPIObjectPath *collection_ref,
                                                      const CMPIBroker *broker);
/* A two-reference association instance; name1/name2 are its property names. */
CMPIInstance *association_class_build_instance_path(const char *cls, const char *ns,
                                                    const CMPIObjectPath *ref1,
                                                    const CMPIObjectPath *ref2, const char *name1,
                                                    const char *name2, const CMPIBroker *broker);

#ifdef __cplusplus
}
#endif

/* ------------------------------------------------------------------ */
/* Layout checks                                                       */
/* ------------------------------------------------------------------ */

#ifdef __cplusplus
#define ZP_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
#else
#define ZP_STATIC_ASSERT(cond, msg) _Static_assert(cond, msg)
#endif

ZP_STATIC_ASSERT(sizeof(VsanEntry) == 2108, "VsanEntry is 2108 bytes");
ZP_STATIC_ASSERT(sizeof(DomainEntry) == 1152, "DomainEntry is 1152 bytes");
ZP_STATIC_ASSERT(sizeof(DeviceAliasEntry) == 80, "DeviceAliasEntry is 80 bytes");
ZP_STATIC_ASSERT(offsetof(DeviceAliasEntry, pwwn) == 72, "pWWN at 72");
ZP_STATIC_ASSERT(sizeof(DeviceAliasCommitContext) == 132, "commit context is 132 bytes");
ZP_STATIC_ASSERT(offsetof(ZoneSetRecord, name) == 288, "zone set name at 288");
ZP_STATIC_ASSERT(offsetof(ZoneRecord, name) == 288, "zone name at 288");
ZP_STATIC_ASSERT(offsetof(ZoneAliasRecord, name) == 288, "alias name at 288");
ZP_STATIC_ASSERT(offsetof(ZoneMemberRecord, cim_member_type) == 288, "member type at 288");
ZP_STATIC_ASSERT(offsetof(ZoneMemberRecord, member_value) == 290, "member value at 290");

#if UINTPTR_MAX == 0xffffffffu
/* The switch's own 32-bit layout. */
ZP_STATIC_ASSERT(offsetof(ZoneSetRecord, next) == 364, "zone set next at 364");
ZP_STATIC_ASSERT(sizeof(ZoneSetRecord) == 368, "ZoneSetRecord is 368 bytes");
ZP_STATIC_ASSERT(offsetof(ZoneRecord, next) == 368, "zone next at 368");
ZP_STATIC_ASSERT(sizeof(ZoneRecord) == 372, "ZoneRecord is 372 bytes");
ZP_STATIC_ASSERT(offsetof(ZoneAliasRecord, next) == 368, "alias next at 368");
ZP_STATIC_ASSERT(sizeof(ZoneAliasRecord) == 372, "ZoneAliasRecord is 372 bytes");
ZP_STATIC_ASSERT(offsetof(ZoneMemberRecord, next) == 548, "member next at 548");
ZP_STATIC_ASSERT(sizeof(ZoneMemberRecord) == 552, "ZoneMemberRecord is 552 bytes");
#else
/* LP64: 8-byte next pointers on 8-byte boundaries. */
ZP_STATIC_ASSERT(offsetof(ZoneSetRecord, next) == 368, "zone set next at 368");
ZP_STATIC_ASSERT(sizeof(ZoneSetRecord) == 376, "ZoneSetRecord is 376 bytes");
ZP_STATIC_ASSERT(offsetof(ZoneRecord, next) == 368, "zone next at 368");
ZP_STATIC_ASSERT(sizeof(ZoneRecord) == 376, "ZoneRecord is 376 bytes");
ZP_STATIC_ASSERT(offsetof(ZoneAliasRecord, next) == 368, "alias next at 368");
ZP_STATIC_ASSERT(sizeof(ZoneAliasRecord) == 376, "ZoneAliasRecord is 376 bytes");
ZP_STATIC_ASSERT(offsetof(ZoneMemberRecord, next) == 552, "member next at 552");
ZP_STATIC_ASSERT(sizeof(ZoneMemberRecord) == 560, "ZoneMemberRecord is 560 bytes");
#endif

#endif /* ZONING_PLATFORM_H */
