/*
 * Every routine of the zone provider, as the rest of the library calls it.
 *
 * All of them have C linkage and are exported from libzone_provider.so under
 * these exact names (see exports.map); the internal helpers of each unit stay
 * hidden. Conventions shared by the handlers:
 *  - cls is the class name as the request wrote it (or a literal class name),
 *    ns the namespace of the request's object path, props the request's
 *    property list (a null-terminated list of names, or null for all);
 *  - result is the request's CMPI result: handlers deliver each object to it
 *    as soon as it is built;
 *  - st is the request's status record, set by a retrieval that fails;
 *  - queue and broker are the globals mts_q and _broker handed down.
 */
#ifndef ZONE_PROVIDER_H
#define ZONE_PROVIDER_H

#include <stdint.h>

#include <cmpidt.h>
#include <cmpift.h>

/* Everything declared here is part of the library's interface: visible
 * even though the rest of the provider is built with hidden visibility. */
#pragma GCC visibility push(default)

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Globals ---------------------------------------------------------- */

/* Broker of the latest factory call; written without the mutex. */
extern const CMPIBroker *_broker;
/* Handle of the messaging response queue; -1 until init_mts opens it. */
extern int mts_q;

/* ---- Factories, start-up, do-nothing operations, debugging ----------- */

CMPIInstanceMI *ZoneProvider_Create_InstanceMI(const CMPIBroker *broker, const CMPIContext *ctx,
                                               CMPIStatus *rc);
CMPIAssociationMI *ZoneProvider_Create_AssociationMI(const CMPIBroker *broker,
                                                     const CMPIContext *ctx, CMPIStatus *rc);
CMPIMethodMI *ZoneProvider_Create_MethodMI(const CMPIBroker *broker, const CMPIContext *ctx,
                                           CMPIStatus *rc);
void initialize(void);

CMPIStatus zone_Provider_Cleanup(CMPIInstanceMI *mi, const CMPIContext *ctx,
                                 CMPIBoolean terminating);
CMPIStatus zone_Provider_AssociationCleanup(CMPIAssociationMI *mi, const CMPIContext *ctx,
                                            CMPIBoolean terminating);
CMPIStatus zone_Provider_MethodCleanup(CMPIMethodMI *mi, const CMPIContext *ctx,
                                       CMPIBoolean terminating);
CMPIStatus zone_Provider_CreateInstance(CMPIInstanceMI *mi, const CMPIContext *ctx,
                                        const CMPIResult *result, const CMPIObjectPath *op,
                                        const CMPIInstance *inst);
CMPIStatus zone_Provider_ModifyInstance(CMPIInstanceMI *mi, const CMPIContext *ctx,
                                        const CMPIResult *result, const CMPIObjectPath *op,
                                        const CMPIInstance *inst, const char **props);
CMPIStatus zone_Provider_ExecQuery(CMPIInstanceMI *mi, const CMPIContext *ctx,
                                   const CMPIResult *result, const CMPIObjectPath *op,
                                   const char *query, const char *lang);

/* Stops the process for a debugger when the marker file exists. */
void debug_attach_hook(void);
void print_char_array_zp(const char **list);

/* ---- Class names, keys and references --------------------------------- */

int check_class_name_zm(const char *class_name);
int check_key_name_zm(const char *class_name, const char *key_name);
/* Copies at most 253 characters of the key's text into buffer (>= 254). */
int get_key_from_reference(const CMPIObjectPath *op, const char *key_name, char *buffer);
uint64_t string_to_wwn(const char *text);
/* kind: 1 zone, 2 zone set, 3 zone alias. */
int validate_zone_instance(const char *instance_id, int kind);

/* ---- Instance operations ---------------------------------------------- */

CMPIStatus zone_Provider_EnumInstanceNames(CMPIInstanceMI *mi, const CMPIContext *ctx,
                                           const CMPIResult *result, const CMPIObjectPath *op);
CMPIStatus zone_Provider_EnumInstances(CMPIInstanceMI *mi, const CMPIContext *ctx,
                                       const CMPIResult *result, const CMPIObjectPath *op,
                                       const char **props);
CMPIStatus zone_Provider_GetInstance(CMPIInstanceMI *mi, const CMPIContext *ctx,
                                     const CMPIResult *result, const CMPIObjectPath *op,
                                     const char **props);
CMPIStatus zone_Provider_DeleteInstance(CMPIInstanceMI *mi, const CMPIContext *ctx,
                                        const CMPIResult *result, const CMPIObjectPath *op);

/* ---- Zone service and hosted service ------------------------------------ */

/* mode 1: instances, any other value: names. */
int get_zone_service_helper(const char *cls, int mode, const CMPIResult *result, const char **props,
                            const char *ns, int queue, const CMPIBroker *broker);
int get_zone_service_all_instances(const char *cls, const CMPIResult *result, const char *ns,
                                   int queue, const CMPIBroker *broker);
int get_zone_service_keys(const char *cls, const CMPIResult *result, const char *ns, int queue,
                          const CMPIBroker *broker);
int get_zone_service_instance(const char *cls, const char *key, const CMPIResult *result,
                              const char **props, const char *ns, int queue,
                              const CMPIBroker *broker, CMPIStatus *st);
int get_hosted_service_all_instances(const char *cls, const CMPIResult *result, const char *ns,
                                     int queue, const char **props, const CMPIBroker *broker);
int get_hosted_service_keys(const char *cls, const CMPIResult *result, const char *ns, int queue,
                            const CMPIBroker *broker);
int get_hosted_service_instance(const CMPIObjectPath *op, const CMPIResult *result,
                                const char **props, int queue, const CMPIBroker *broker,
                                CMPIStatus *st);

/* ---- Zone sets, zones, zone aliases ------------------------------------ */

int get_zone_set_keys(const char *cls, const CMPIResult *result, const char *ns);
int get_zone_set_all_instances(const char *cls, const CMPIResult *result, const char **props,
                               const char *ns);
int get_zone_set_instance(const char *cls, const char *instance_id, const CMPIResult *result,
                          const char **props, const char *ns, CMPIStatus *st);
int get_zone_keys(const char *cls, const CMPIResult *result, const char *ns);
int get_zone_all_instances(const char *cls, const CMPIResult *result, const char **props,
                           const char *ns);
int get_zone_instance(const char *cls, const char *instance_id, const CMPIResult *result,
                      const char **props, const char *ns, CMPIStatus *st);
int get_zone_alias_keys(const char *cls, const CMPIResult *result, const char *ns);
int get_zone_alias_all_instances(const char *cls, const CMPIResult *result, const char **props,
                                 const char *ns);
int get_zone_alias_instance(const char *cls, const char *instance_id, const CMPIResult *result,
                            const char **props, const char *ns, CMPIStatus *st);

/* ---- Zone members ------------------------------------------------------- */

int get_zone_member_all_instances(const char *cls, const CMPIResult *result, const char **props,
                                  const char *ns);
int get_zone_member_keys(const char *cls, const CMPIResult *result, const char *ns);
int get_zone_member_instance(const char *cls, const char *instance_id, const CMPIResult *result,
                             const char **props, const char *ns, CMPIStatus *st);

/* ---- Element setting data, member of collection, hosted collections ---- */

int get_esd_all_instances(const char *cls, const CMPIResult *result, const char **props,
                          const char *ns);
int get_esd_keys(const char *cls, const CMPIResult *result, const char *ns);
int get_esd_instance(const CMPIObjectPath *op, const CMPIResult *result, const char **props);
int get_moc_all_instances(const char *cls, const CMPIResult *result, const char **props,
                          const char *ns);
int get_moc_keys(const char *cls, const CMPIResult *result, const char *ns);
int get_moc_instance(const CMPIObjectPath *op, const CMPIResult *result, const char **props);
/* mode 1: instances, 0: names. */
int get_zone_hosted_collection_helper(const char *cls, int mode, const CMPIResult *result,
                                      const char *ns, const char **props, int queue,
                                      const CMPIBroker *broker);
int get_zone_hosted_collection_all_instances(const char *cls, const CMPIResult *result,
                                             const char *ns, int queue, const char **props,
                                             const CMPIBroker *broker);
int get_zone_hosted_collection_keys(const char *cls, const CMPIResult *result, const char *ns,
                                    int queue, const CMPIBroker *broker);
int get_zone_hosted_collection_instance(const CMPIObjectPath *op, const CMPIResult *result,
                                        const char **props, int queue, const CMPIBroker *broker);

/* ---- Association operations and traversals ----------------------------- */

/* Mode codes handed to the zone service and zone member traversals. */
#define ZONE_ASSOC_ASSOCIATORS 1
#define ZONE_ASSOC_ASSOCIATOR_NAMES 2
#define ZONE_ASSOC_REFERENCES 3
#define ZONE_ASSOC_REFERENCE_NAMES 4

CMPIStatus zone_Provider_Associators(CMPIAssociationMI *mi, const CMPIContext *ctx,
                                     const CMPIResult *result, const CMPIObjectPath *op,
                                     const char *assoc_class, const char *result_class,
                                     const char *role, const char *result_role, const char **props);
CMPIStatus zone_Provider_AssociatorNames(CMPIAssociationMI *mi, const CMPIContext *ctx,
                                         const CMPIResult *result, const CMPIObjectPath *op,
                                         const char *assoc_class, const char *result_class,
                                         const char *role, const char *result_role);
CMPIStatus zone_Provider_References(CMPIAssociationMI *mi, const CMPIContext *ctx,
                                    const CMPIResult *result, const CMPIObjectPath *op,
                                    const char *result_class, const char *role, const char **props);
CMPIStatus zone_Provider_ReferenceNames(CMPIAssociationMI *mi, const CMPIContext *ctx,
                                        const CMPIResult *result, const CMPIObjectPath *op,
                                        const char *result_class, const char *role);

int get_zone_service_associator_reference_helper(const char *id, int mode, const char *filter,
                                                 const CMPIResult *result, const char *ns,
                                                 const char **props, int queue,
                                                 const CMPIBroker *broker);

#define ZONE_DECLARE_TRAVERSALS(object)                                                            \
    int get_##object##_associator_names(                                                           \
        const char *id, const char *assoc_class, const char *result_class, const char *role,       \
        const char *result_role, const CMPIResult *result, const char *ns);                        \
    int get_##object##_associators(                                                                \
        const char *id, const char *assoc_class, const char *result_class, const char *role,       \
        const char *result_role, const char **props, const CMPIResult *result, const char *ns);    \
    int get_##object##_reference_names(const char *id, const char *result_class, const char *role, \
                                       const CMPIResult *result, const char *ns);                  \
    int get_##object##_references(const char *id, const char *result_class, const char *role,      \
                                  const char **props, const CMPIResult *result, const char *ns);

ZONE_DECLARE_TRAVERSALS(zone_set)
ZONE_DECLARE_TRAVERSALS(zone)
ZONE_DECLARE_TRAVERSALS(zone_alias)
#undef ZONE_DECLARE_TRAVERSALS

int get_zone_member_references(const char *id, const char *first_class, int mode,
                               const char *second_class, const char **props,
                               const CMPIResult *result, const char *ns);

/* ---- Methods ------------------------------------------------------------ */

CMPIStatus zone_Provider_InvokeMethod(CMPIMethodMI *mi, const CMPIContext *ctx,
                                      const CMPIResult *result, const CMPIObjectPath *op,
                                      const char *method, const CMPIArgs *in, CMPIArgs *out);

/* Outcome of a zoning handler whose target carries no usable zone service
 * key; never a zone server code. */
#define ZONE_SERVICE_KEY_REFUSAL INT32_MIN

#define ZONE_DECLARE_METHOD(handler)                                                \
    int handler(CMPIMethodMI *mi, const CMPIContext *ctx, const CMPIResult *result, \
                const CMPIObjectPath *op, const char *method, const CMPIArgs *in, CMPIArgs *out);

ZONE_DECLARE_METHOD(ZoneSetCreation)
ZONE_DECLARE_METHOD(ZoneCreation)
ZONE_DECLARE_METHOD(ZoneAliasCreation)
ZONE_DECLARE_METHOD(ZoneMemberCreation)
ZONE_DECLARE_METHOD(AddZone)
ZONE_DECLARE_METHOD(AddZoneAlias)
ZONE_DECLARE_METHOD(AddZoneMembershipSettingData)
ZONE_DECLARE_METHOD(ActivateZoneSet)
ZONE_DECLARE_METHOD(CreateDeviceAlias)
ZONE_DECLARE_METHOD(RemoveDeviceAlias)
#undef ZONE_DECLARE_METHOD

/* ---- Device aliases ----------------------------------------------------- */

int get_device_alias_keys(const char *cls, const CMPIResult *result, const char *ns);
int get_device_alias_instance(const char *cls, const CMPIResult *result, const char **props,
                              const char *ns);
int get_device_alias_instance_gi(const char *cls, const char *instance_id, const CMPIResult *result,
                                 const char **props, const char *ns);

#ifdef __cplusplus
}
#endif

#pragma GCC visibility pop

#endif /* ZONE_PROVIDER_H */
