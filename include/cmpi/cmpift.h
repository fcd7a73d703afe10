/*
 * cmpift.h - CMPI 1.0 encapsulated objects, their function tables, the
 * broker tables and the management-interface (MI) tables of a provider.
 *
 * Every object is a pair { hdl, ft }: hdl belongs to whoever made the object
 * (the broker for data objects, the provider for MI objects) and ft points
 * at a table of functions that take the object as their first argument.
 * Slot order inside each table is the binary interface: never reorder, never
 * insert.  Data-object tables open with an int ftVersion followed by release
 * and clone; MI tables open with ftVersion, miVersion and miName followed by
 * cleanup.  The broker-level tables carry no release/clone.
 *
 * In every function, a trailing CMPIStatus* may be NULL when the caller does
 * not want the status; a CMPIString** name output may be NULL as well.
 */
#ifndef CMPIFT_H_INCLUDED
#define CMPIFT_H_INCLUDED

#include "cmpidt.h"
#include "cmpios.h"

/* Only pointers to it are used; the full type comes from <time.h>. */
struct timespec;

#ifdef __cplusplus
extern "C" {
#endif

typedef struct CMPIBrokerFT CMPIBrokerFT;
typedef struct CMPIBrokerEncFT CMPIBrokerEncFT;
typedef struct CMPIBrokerExtFT CMPIBrokerExtFT;
typedef struct CMPIContextFT CMPIContextFT;
typedef struct CMPIResultFT CMPIResultFT;
typedef struct CMPIStringFT CMPIStringFT;
typedef struct CMPIArrayFT CMPIArrayFT;
typedef struct CMPIEnumerationFT CMPIEnumerationFT;
typedef struct CMPIInstanceFT CMPIInstanceFT;
typedef struct CMPIObjectPathFT CMPIObjectPathFT;
typedef struct CMPIArgsFT CMPIArgsFT;
typedef struct CMPIDateTimeFT CMPIDateTimeFT;
typedef struct CMPISelectExpFT CMPISelectExpFT;
typedef struct CMPISelectCondFT CMPISelectCondFT;
typedef struct CMPISubCondFT CMPISubCondFT;
typedef struct CMPIPredicateFT CMPIPredicateFT;

typedef struct CMPIInstanceMI CMPIInstanceMI;
typedef struct CMPIAssociationMI CMPIAssociationMI;
typedef struct CMPIMethodMI CMPIMethodMI;
typedef struct CMPIPropertyMI CMPIPropertyMI;
typedef struct CMPIIndicationMI CMPIIndicationMI;

typedef struct CMPIInstanceMIFT CMPIInstanceMIFT;
typedef struct CMPIAssociationMIFT CMPIAssociationMIFT;
typedef struct CMPIMethodMIFT CMPIMethodMIFT;
typedef struct CMPIPropertyMIFT CMPIPropertyMIFT;
typedef struct CMPIIndicationMIFT CMPIIndicationMIFT;

/* ========================================================================
 * Broker
 * ======================================================================== */

/* The broker as a provider sees it: up-calls, factories and OS services. */
struct CMPIBroker {
    void *hdl;
    CMPIBrokerFT *bft;
    CMPIBrokerEncFT *eft;
    CMPIBrokerExtFT *xft;
};

/*
 * Up-calls into the object manager.  No ftVersion here: the table opens with
 * three data fields.  brokerCapabilities must stay an unsigned int - a long
 * would move every slot behind it on LP64.
 */
struct CMPIBrokerFT {
    unsigned int brokerCapabilities; /* CMPI_MB_* bits */
    unsigned int brokerVersion;
    const char *brokerName;

    /* Thread attachment: a provider thread of its own must get a context
     * with prepareAttachThread on the request thread, then attach/detach. */
    CMPIContext *(*prepareAttachThread)(const CMPIBroker *mb, const CMPIContext *ctx);
    CMPIStatus (*attachThread)(const CMPIBroker *mb, const CMPIContext *ctx);
    CMPIStatus (*detachThread)(const CMPIBroker *mb, const CMPIContext *ctx);

    CMPIStatus (*deliverIndication)(const CMPIBroker *mb, const CMPIContext *ctx, const char *ns,
                                    const CMPIInstance *indication);

    CMPIEnumeration *(*enumerateInstanceNames)(const CMPIBroker *mb, const CMPIContext *ctx,
                                               const CMPIObjectPath *classPath, CMPIStatus *rc);
    CMPIInstance *(*getInstance)(const CMPIBroker *mb, const CMPIContext *ctx,
                                 const CMPIObjectPath *instPath, const char **properties,
                                 CMPIStatus *rc);
    CMPIObjectPath *(*createInstance)(const CMPIBroker *mb, const CMPIContext *ctx,
                                      const CMPIObjectPath *classPath,
                                      const CMPIInstance *newInstance, CMPIStatus *rc);
    CMPIStatus (*modifyInstance)(const CMPIBroker *mb, const CMPIContext *ctx,
                                 const CMPIObjectPath *instPath,
                                 const CMPIInstance *modifiedInstance, const char **properties);
    CMPIStatus (*deleteInstance)(const CMPIBroker *mb, const CMPIContext *ctx,
                                 const CMPIObjectPath *instPath);
    CMPIEnumeration *(*execQuery)(const CMPIBroker *mb, const CMPIContext *ctx,
                                  const CMPIObjectPath *classPath, const char *query,
                                  const char *lang, CMPIStatus *rc);
    CMPIEnumeration *(*enumerateInstances)(const CMPIBroker *mb, const CMPIContext *ctx,
                                           const CMPIObjectPath *classPath, const char **properties,
                                           CMPIStatus *rc);
    CMPIEnumeration *(*associators)(const CMPIBroker *mb, const CMPIContext *ctx,
                                    const CMPIObjectPath *objPath, const char *assocClass,
                                    const char *resultClass, const char *role,
                                    const char *resultRole, const char **properties,
                                    CMPIStatus *rc);
    CMPIEnumeration *(*associatorNames)(const CMPIBroker *mb, const CMPIContext *ctx,
                                        const CMPIObjectPath *objPath, const char *assocClass,
                                        const char *resultClass, const char *role,
                                        const char *resultRole, CMPIStatus *rc);
    CMPIEnumeration *(*references)(const CMPIBroker *mb, const CMPIContext *ctx,
                                   const CMPIObjectPath *objPath, const char *resultClass,
                                   const char *role, const char **properties, CMPIStatus *rc);
    CMPIEnumeration *(*referenceNames)(const CMPIBroker *mb, const CMPIContext *ctx,
                                       const CMPIObjectPath *objPath, const char *resultClass,
                                       const char *role, CMPIStatus *rc);
    CMPIData (*invokeMethod)(const CMPIBroker *mb, const CMPIContext *ctx,
                             const CMPIObjectPath *objPath, const char *method, const CMPIArgs *in,
                             CMPIArgs *out, CMPIStatus *rc);
    CMPIStatus (*setProperty)(const CMPIBroker *mb, const CMPIContext *ctx,
                              const CMPIObjectPath *instPath, const char *name,
                              const CMPIValue *value, CMPIType type);
    CMPIData (*getProperty)(const CMPIBroker *mb, const CMPIContext *ctx,
                            const CMPIObjectPath *instPath, const char *name, CMPIStatus *rc);
};

/*
 * Factories for data objects and a few type-independent helpers.  Objects a
 * factory returns belong to the broker and go away when the MI call ends.
 */
struct CMPIBrokerEncFT {
    int ftVersion;

    CMPIInstance *(*newInstance)(const CMPIBroker *mb, const CMPIObjectPath *classPath,
                                 CMPIStatus *rc);
    CMPIObjectPath *(*newObjectPath)(const CMPIBroker *mb, const char *ns, const char *className,
                                     CMPIStatus *rc);
    CMPIArgs *(*newArgs)(const CMPIBroker *mb, CMPIStatus *rc);
    CMPIString *(*newString)(const CMPIBroker *mb, const char *chars, CMPIStatus *rc);
    /* elementType is the element code without CMPI_ARRAY. */
    CMPIArray *(*newArray)(const CMPIBroker *mb, CMPICount size, CMPIType elementType,
                           CMPIStatus *rc);
    CMPIDateTime *(*newDateTime)(const CMPIBroker *mb, CMPIStatus *rc);
    /* binTime: microseconds since 1970-01-01 00:00 UTC, or an interval length. */
    CMPIDateTime *(*newDateTimeFromBinary)(const CMPIBroker *mb, CMPIUint64 binTime,
                                           CMPIBoolean interval, CMPIStatus *rc);
    CMPIDateTime *(*newDateTimeFromChars)(const CMPIBroker *mb, const char *cimDateTime,
                                          CMPIStatus *rc);
    CMPISelectExp *(*newSelectExp)(const CMPIBroker *mb, const char *query, const char *lang,
                                   CMPIArray **projection, CMPIStatus *rc);
    CMPIBoolean (*classPathIsA)(const CMPIBroker *mb, const CMPIObjectPath *classPath,
                                const char *className, CMPIStatus *rc);

    /* Work on any encapsulated object. */
    CMPIString *(*toString)(const CMPIBroker *mb, const void *object, CMPIStatus *rc);
    CMPIBoolean (*isOfType)(const CMPIBroker *mb, const void *object, const char *typeName,
                            CMPIStatus *rc);
    CMPIString *(*getType)(const CMPIBroker *mb, const void *object, CMPIStatus *rc);

    /* count (type code, value) pairs follow; see CMFmtArgs* in cmpimacs.h. */
    CMPIString *(*getMessage)(const CMPIBroker *mb, const char *msgId, const char *defaultMsg,
                              CMPIStatus *rc, CMPICount count, ...);
    CMPIStatus (*logMessage)(const CMPIBroker *mb, int severity, const char *id, const char *text,
                             const CMPIString *string);
    CMPIStatus (*trace)(const CMPIBroker *mb, int level, const char *component, const char *text,
                        const CMPIString *string);
};

/* Threads, keys, mutexes and conditions provided by the broker. */
struct CMPIBrokerExtFT {
    int ftVersion;

    char *(*resolveFileName)(const char *libraryName);

    CMPI_THREAD_TYPE (*newThread)
    (CMPI_THREAD_RETURN(CMPI_THREAD_CDECL *start)(void *), void *parm, int detached);
    int (*joinThread)(CMPI_THREAD_TYPE thread, CMPI_THREAD_RETURN *retval);
    int (*exitThread)(CMPI_THREAD_RETURN returnCode);
    int (*cancelThread)(CMPI_THREAD_TYPE thread);
    int (*threadSleep)(CMPIUint32 milliseconds);
    int (*threadOnce)(int *onceFlag, void (*init)(void));

    int (*createThreadKey)(CMPI_THREAD_KEY_TYPE *key, void (*destructor)(void *));
    int (*destroyThreadKey)(CMPI_THREAD_KEY_TYPE key);
    void *(*getThreadSpecific)(CMPI_THREAD_KEY_TYPE key);
    int (*setThreadSpecific)(CMPI_THREAD_KEY_TYPE key, void *value);

    CMPI_MUTEX_TYPE (*newMutex)(int opt);
    void (*destroyMutex)(CMPI_MUTEX_TYPE mutex);
    void (*lockMutex)(CMPI_MUTEX_TYPE mutex);
    void (*unlockMutex)(CMPI_MUTEX_TYPE mutex);

    CMPI_COND_TYPE (*newCondition)(int opt);
    void (*destroyCondition)(CMPI_COND_TYPE cond);
    int (*condWait)(CMPI_COND_TYPE cond, CMPI_MUTEX_TYPE mutex);
    int (*timedCondWait)(CMPI_COND_TYPE cond, CMPI_MUTEX_TYPE mutex, struct timespec *wait);
    int (*signalCondition)(CMPI_COND_TYPE cond);
};

/* ========================================================================
 * Data objects
 * ======================================================================== */

/* Per-request context: principal, invocation flags, namespace, ... */
struct CMPIContext {
    void *hdl;
    CMPIContextFT *ft;
};

struct CMPIContextFT {
    int ftVersion;
    CMPIStatus (*release)(CMPIContext *ctx);
    CMPIContext *(*clone)(const CMPIContext *ctx, CMPIStatus *rc);
    CMPIData (*getEntry)(const CMPIContext *ctx, const char *name, CMPIStatus *rc);
    CMPIData (*getEntryAt)(const CMPIContext *ctx, unsigned int index, CMPIString **name,
                           CMPIStatus *rc);
    unsigned int (*getEntryCount)(const CMPIContext *ctx, CMPIStatus *rc);
    CMPIStatus (*addEntry)(CMPIContext *ctx, const char *name, const CMPIValue *value,
                           CMPIType type);
};

/* Where an MI puts what a request produces. */
struct CMPIResult {
    void *hdl;
    CMPIResultFT *ft;
};

struct CMPIResultFT {
    int ftVersion;
    CMPIStatus (*release)(CMPIResult *rslt);
    CMPIResult *(*clone)(const CMPIResult *rslt, CMPIStatus *rc);
    CMPIStatus (*returnData)(const CMPIResult *rslt, const CMPIValue *value, CMPIType type);
    CMPIStatus (*returnInstance)(const CMPIResult *rslt, const CMPIInstance *inst);
    CMPIStatus (*returnObjectPath)(const CMPIResult *rslt, const CMPIObjectPath *ref);
    CMPIStatus (*returnDone)(const CMPIResult *rslt);
};

/*
 * Character string.  hdl is read directly by CMGetCharPtr, so a broker keeps
 * it pointing at the NUL-terminated characters for the object's lifetime.
 */
struct CMPIString {
    void *hdl;
    CMPIStringFT *ft;
};

struct CMPIStringFT {
    int ftVersion;
    CMPIStatus (*release)(CMPIString *st);
    CMPIString *(*clone)(const CMPIString *st, CMPIStatus *rc);
    char *(*getCharPtr)(const CMPIString *st, CMPIStatus *rc);
};

/* Fixed-size array of one element type. */
struct CMPIArray {
    void *hdl;
    CMPIArrayFT *ft;
};

struct CMPIArrayFT {
    int ftVersion;
    CMPIStatus (*release)(CMPIArray *ar);
    CMPIArray *(*clone)(const CMPIArray *ar, CMPIStatus *rc);
    CMPICount (*getSize)(const CMPIArray *ar, CMPIStatus *rc);
    /* The element type, without the CMPI_ARRAY bit. */
    CMPIType (*getSimpleType)(const CMPIArray *ar, CMPIStatus *rc);
    CMPIData (*getElementAt)(const CMPIArray *ar, CMPICount index, CMPIStatus *rc);
    CMPIStatus (*setElementAt)(CMPIArray *ar, CMPICount index, const CMPIValue *value,
                               CMPIType type);
};

/* Forward-only cursor over the results of a broker up-call. */
struct CMPIEnumeration {
    void *hdl;
    CMPIEnumerationFT *ft;
};

struct CMPIEnumerationFT {
    int ftVersion;
    CMPIStatus (*release)(CMPIEnumeration *en);
    CMPIEnumeration *(*clone)(const CMPIEnumeration *en, CMPIStatus *rc);
    CMPIData (*getNext)(const CMPIEnumeration *en, CMPIStatus *rc);
    CMPIBoolean (*hasNext)(const CMPIEnumeration *en, CMPIStatus *rc);
    CMPIArray *(*toArray)(const CMPIEnumeration *en, CMPIStatus *rc);
};

/* CIM instance. */
struct CMPIInstance {
    void *hdl;
    CMPIInstanceFT *ft;
};

struct CMPIInstanceFT {
    int ftVersion;
    CMPIStatus (*release)(CMPIInstance *inst);
    CMPIInstance *(*clone)(const CMPIInstance *inst, CMPIStatus *rc);
    CMPIData (*getProperty)(const CMPIInstance *inst, const char *name, CMPIStatus *rc);
    CMPIData (*getPropertyAt)(const CMPIInstance *inst, unsigned int index, CMPIString **name,
                              CMPIStatus *rc);
    unsigned int (*getPropertyCount)(const CMPIInstance *inst, CMPIStatus *rc);
    CMPIStatus (*setProperty)(CMPIInstance *inst, const char *name, const CMPIValue *value,
                              CMPIType type);
    CMPIObjectPath *(*getObjectPath)(const CMPIInstance *inst, CMPIStatus *rc);
    /* propertyList NULL means all properties; keyList names the keys. */
    CMPIStatus (*setPropertyFilter)(CMPIInstance *inst, const char **propertyList,
                                    const char **keyList);
    CMPIStatus (*setObjectPath)(CMPIInstance *inst, const CMPIObjectPath *op);
};

/* Object path: host, namespace, class name and key bindings. */
struct CMPIObjectPath {
    void *hdl;
    CMPIObjectPathFT *ft;
};

struct CMPIObjectPathFT {
    int ftVersion;
    CMPIStatus (*release)(CMPIObjectPath *op);
    CMPIObjectPath *(*clone)(const CMPIObjectPath *op, CMPIStatus *rc);
    CMPIStatus (*setNameSpace)(CMPIObjectPath *op, const char *ns);
    CMPIString *(*getNameSpace)(const CMPIObjectPath *op, CMPIStatus *rc);
    CMPIStatus (*setHostname)(CMPIObjectPath *op, const char *hostname);
    CMPIString *(*getHostname)(const CMPIObjectPath *op, CMPIStatus *rc);
    CMPIStatus (*setClassName)(CMPIObjectPath *op, const char *className);
    CMPIString *(*getClassName)(const CMPIObjectPath *op, CMPIStatus *rc);
    CMPIStatus (*addKey)(CMPIObjectPath *op, const char *name, const CMPIValue *value,
                         CMPIType type);
    CMPIData (*getKey)(const CMPIObjectPath *op, const char *name, CMPIStatus *rc);
    CMPIData (*getKeyAt)(const CMPIObjectPath *op, unsigned int index, CMPIString **name,
                         CMPIStatus *rc);
    unsigned int (*getKeyCount)(const CMPIObjectPath *op, CMPIStatus *rc);
    CMPIStatus (*setNameSpaceFromObjectPath)(CMPIObjectPath *op, const CMPIObjectPath *src);
    CMPIStatus (*setHostAndNameSpaceFromObjectPath)(CMPIObjectPath *op, const CMPIObjectPath *src);
    CMPIData (*getClassQualifier)(const CMPIObjectPath *op, const char *qualifierName,
                                  CMPIStatus *rc);
    CMPIData (*getPropertyQualifier)(const CMPIObjectPath *op, const char *propertyName,
                                     const char *qualifierName, CMPIStatus *rc);
    CMPIData (*getMethodQualifier)(const CMPIObjectPath *op, const char *methodName,
                                   const char *qualifierName, CMPIStatus *rc);
    CMPIData (*getParameterQualifier)(const CMPIObjectPath *op, const char *methodName,
                                      const char *parameterName, const char *qualifierName,
                                      CMPIStatus *rc);
    CMPIString *(*toString)(const CMPIObjectPath *op, CMPIStatus *rc);
};

/* Method arguments, in or out. */
struct CMPIArgs {
    void *hdl;
    CMPIArgsFT *ft;
};

struct CMPIArgsFT {
    int ftVersion;
    CMPIStatus (*release)(CMPIArgs *as);
    CMPIArgs *(*clone)(const CMPIArgs *as, CMPIStatus *rc);
    /* Takes a const container even though it adds to it: that is the 1.0
     * signature, and providers' function pointers must match it. */
    CMPIStatus (*addArg)(const CMPIArgs *as, const char *name, const CMPIValue *value,
                         CMPIType type);
    CMPIData (*getArg)(const CMPIArgs *as, const char *name, CMPIStatus *rc);
    CMPIData (*getArgAt)(const CMPIArgs *as, unsigned int index, CMPIString **name, CMPIStatus *rc);
    unsigned int (*getArgCount)(const CMPIArgs *as, CMPIStatus *rc);
};

/* Point in time or interval, in microseconds. */
struct CMPIDateTime {
    void *hdl;
    CMPIDateTimeFT *ft;
};

struct CMPIDateTimeFT {
    int ftVersion;
    CMPIStatus (*release)(CMPIDateTime *dt);
    CMPIDateTime *(*clone)(const CMPIDateTime *dt, CMPIStatus *rc);
    CMPIUint64 (*getBinaryFormat)(const CMPIDateTime *dt, CMPIStatus *rc);
    CMPIString *(*getStringFormat)(const CMPIDateTime *dt, CMPIStatus *rc);
    CMPIBoolean (*isInterval)(const CMPIDateTime *dt, CMPIStatus *rc);
};

/* ========================================================================
 * Query objects
 * ======================================================================== */

/* A compiled select expression (query or indication filter). */
struct CMPISelectExp {
    void *hdl;
    CMPISelectExpFT *ft;
};

struct CMPISelectExpFT {
    int ftVersion;
    CMPIStatus (*release)(CMPISelectExp *se);
    CMPISelectExp *(*clone)(const CMPISelectExp *se, CMPIStatus *rc);
    CMPIBoolean (*evaluate)(const CMPISelectExp *se, const CMPIInstance *inst, CMPIStatus *rc);
    CMPIString *(*getString)(const CMPISelectExp *se, CMPIStatus *rc);
    /* The expression as a disjunction of conjunctions, and the reverse. */
    CMPISelectCond *(*getDOC)(const CMPISelectExp *se, CMPIStatus *rc);
    CMPISelectCond *(*getCOD)(const CMPISelectExp *se, CMPIStatus *rc);
    CMPIBoolean (*evaluateUsingAccessor)(const CMPISelectExp *se, CMPIAccessor *accessor,
                                         void *parm, CMPIStatus *rc);
};

struct CMPISelectCond {
    void *hdl;
    CMPISelectCondFT *ft;
};

struct CMPISelectCondFT {
    int ftVersion;
    CMPIStatus (*release)(CMPISelectCond *sc);
    CMPISelectCond *(*clone)(const CMPISelectCond *sc, CMPIStatus *rc);
    CMPICount (*getCountAndType)(const CMPISelectCond *sc, int *type, CMPIStatus *rc);
    CMPISubCond *(*getSubCondAt)(const CMPISelectCond *sc, unsigned int index, CMPIStatus *rc);
};

struct CMPISubCond {
    void *hdl;
    CMPISubCondFT *ft;
};

struct CMPISubCondFT {
    int ftVersion;
    CMPIStatus (*release)(CMPISubCond *sc);
    CMPISubCond *(*clone)(const CMPISubCond *sc, CMPIStatus *rc);
    CMPICount (*getCount)(const CMPISubCond *sc, CMPIStatus *rc);
    CMPIPredicate *(*getPredicateAt)(const CMPISubCond *sc, unsigned int index, CMPIStatus *rc);
    CMPIPredicate *(*getPredicate)(const CMPISubCond *sc, const char *name, CMPIStatus *rc);
};

struct CMPIPredicate {
    void *hdl;
    CMPIPredicateFT *ft;
};

struct CMPIPredicateFT {
    int ftVersion;
    CMPIStatus (*release)(CMPIPredicate *pr);
    CMPIPredicate *(*clone)(const CMPIPredicate *pr, CMPIStatus *rc);
    CMPIStatus (*getData)(const CMPIPredicate *pr, CMPIType *type, CMPIPredOp *op, CMPIString **lhs,
                          CMPIString **rhs);
    CMPIBoolean (*evaluateUsingAccessor)(const CMPIPredicate *pr, CMPIAccessor *accessor,
                                         void *parm, CMPIStatus *rc);
};

/* ========================================================================
 * Provider side: MI objects and tables
 *
 * A provider library exports one factory per MI kind it implements, named
 * <ProviderName>_Create_<Kind>MI and shaped like the typedefs below.  The
 * broker accepts an MI whose miVersion does not exceed its own version.
 * All MI functions report through their returned CMPIStatus.
 * ======================================================================== */

struct CMPIInstanceMI {
    void *hdl;
    CMPIInstanceMIFT *ft;
};

struct CMPIInstanceMIFT {
    int ftVersion;
    int miVersion;
    const char *miName;

    /* terminating true: the broker is shutting down and the MI must let go.
     * Otherwise it may answer CMPI_RC_DO_NOT_UNLOAD or CMPI_RC_NEVER_UNLOAD. */
    CMPIStatus (*cleanup)(CMPIInstanceMI *mi, const CMPIContext *ctx, CMPIBoolean terminating);
    CMPIStatus (*enumInstanceNames)(CMPIInstanceMI *mi, const CMPIContext *ctx,
                                    const CMPIResult *rslt, const CMPIObjectPath *classPath);
    CMPIStatus (*enumInstances)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                                const CMPIObjectPath *classPath, const char **properties);
    CMPIStatus (*getInstance)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                              const CMPIObjectPath *instPath, const char **properties);
    CMPIStatus (*createInstance)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                                 const CMPIObjectPath *classPath, const CMPIInstance *newInstance);
    CMPIStatus (*modifyInstance)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                                 const CMPIObjectPath *instPath,
                                 const CMPIInstance *modifiedInstance, const char **properties);
    CMPIStatus (*deleteInstance)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                                 const CMPIObjectPath *instPath);
    CMPIStatus (*execQuery)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                            const CMPIObjectPath *classPath, const char *query, const char *lang);
};

struct CMPIAssociationMI {
    void *hdl;
    CMPIAssociationMIFT *ft;
};

struct CMPIAssociationMIFT {
    int ftVersion;
    int miVersion;
    const char *miName;

    CMPIStatus (*cleanup)(CMPIAssociationMI *mi, const CMPIContext *ctx, CMPIBoolean terminating);
    CMPIStatus (*associators)(CMPIAssociationMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                              const CMPIObjectPath *objPath, const char *assocClass,
                              const char *resultClass, const char *role, const char *resultRole,
                              const char **properties);
    CMPIStatus (*associatorNames)(CMPIAssociationMI *mi, const CMPIContext *ctx,
                                  const CMPIResult *rslt, const CMPIObjectPath *objPath,
                                  const char *assocClass, const char *resultClass, const char *role,
                                  const char *resultRole);
    CMPIStatus (*references)(CMPIAssociationMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                             const CMPIObjectPath *objPath, const char *resultClass,
                             const char *role, const char **properties);
    CMPIStatus (*referenceNames)(CMPIAssociationMI *mi, const CMPIContext *ctx,
                                 const CMPIResult *rslt, const CMPIObjectPath *objPath,
                                 const char *resultClass, const char *role);
};

struct CMPIMethodMI {
    void *hdl;
    CMPIMethodMIFT *ft;
};

struct CMPIMethodMIFT {
    int ftVersion;
    int miVersion;
    const char *miName;

    CMPIStatus (*cleanup)(CMPIMethodMI *mi, const CMPIContext *ctx, CMPIBoolean terminating);
    /* The method's return value goes to rslt, output parameters to out. */
    CMPIStatus (*invokeMethod)(CMPIMethodMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                               const CMPIObjectPath *objPath, const char *method,
                               const CMPIArgs *in, CMPIArgs *out);
};

struct CMPIPropertyMI {
    void *hdl;
    CMPIPropertyMIFT *ft;
};

struct CMPIPropertyMIFT {
    int ftVersion;
    int miVersion;
    const char *miName;

    CMPIStatus (*cleanup)(CMPIPropertyMI *mi, const CMPIContext *ctx, CMPIBoolean terminating);
    /* The new value travels by value, not by pointer. */
    CMPIStatus (*setProperty)(CMPIPropertyMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                              const CMPIObjectPath *instPath, const char *name,
                              const CMPIData data);
    CMPIStatus (*getProperty)(CMPIPropertyMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                              const CMPIObjectPath *instPath, const char *name);
};

struct CMPIIndicationMI {
    void *hdl;
    CMPIIndicationMIFT *ft;
};

struct CMPIIndicationMIFT {
    int ftVersion;
    int miVersion;
    const char *miName;

    CMPIStatus (*cleanup)(CMPIIndicationMI *mi, const CMPIContext *ctx, CMPIBoolean terminating);
    CMPIStatus (*authorizeFilter)(CMPIIndicationMI *mi, const CMPIContext *ctx,
                                  const CMPISelectExp *filter, const char *className,
                                  const CMPIObjectPath *classPath, const char *owner);
    CMPIStatus (*mustPoll)(CMPIIndicationMI *mi, const CMPIContext *ctx,
                           const CMPISelectExp *filter, const char *className,
                           const CMPIObjectPath *classPath);
    CMPIStatus (*activateFilter)(CMPIIndicationMI *mi, const CMPIContext *ctx,
                                 const CMPISelectExp *filter, const char *className,
                                 const CMPIObjectPath *classPath, CMPIBoolean firstActivation);
    CMPIStatus (*deActivateFilter)(CMPIIndicationMI *mi, const CMPIContext *ctx,
                                   const CMPISelectExp *filter, const char *className,
                                   const CMPIObjectPath *classPath, CMPIBoolean lastActivation);
    /* These two return nothing in the 1.0 table. */
    void (*enableIndications)(CMPIIndicationMI *mi, const CMPIContext *ctx);
    void (*disableIndications)(CMPIIndicationMI *mi, const CMPIContext *ctx);
};

/*
 * Factory shapes.  The broker passes a status initialised to CMPI_RC_OK; a
 * NULL result or a status left non-OK means the MI could not be created.
 */
typedef CMPIInstanceMI *CMPIInstanceMIFactory(const CMPIBroker *broker, const CMPIContext *ctx,
                                              CMPIStatus *rc);
typedef CMPIAssociationMI *CMPIAssociationMIFactory(const CMPIBroker *broker,
                                                    const CMPIContext *ctx, CMPIStatus *rc);
typedef CMPIMethodMI *CMPIMethodMIFactory(const CMPIBroker *broker, const CMPIContext *ctx,
                                          CMPIStatus *rc);
typedef CMPIPropertyMI *CMPIPropertyMIFactory(const CMPIBroker *broker, const CMPIContext *ctx,
                                              CMPIStatus *rc);
typedef CMPIIndicationMI *CMPIIndicationMIFactory(const CMPIBroker *broker, const CMPIContext *ctx,
                                                  CMPIStatus *rc);

#ifdef __cplusplus
}
#endif

#endif /* CMPIFT_H_INCLUDED */
