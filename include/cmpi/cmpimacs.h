/*
 * cmpimacs.h - CMPI 1.0 convenience macros for providers.
 *
 * Each object macro takes the object first and calls the matching slot of the
 * object's function table with the object prepended, the remaining arguments
 * in the same order.  Value arguments of setters and adders are cast to
 * const CMPIValue*, so a plain C string can be passed with CMPI_chars and the
 * address of a scalar variable with its own type code.
 *
 * Macro parameters carry a trailing underscore so that they can never
 * collide with the struct members (rc, msg, type, ...) the expansions name.
 */
#ifndef CMPIMACS_H_INCLUDED
#define CMPIMACS_H_INCLUDED

#include <stddef.h>

#include "cmpift.h"

/* ------------------------------------------------------------------------
 * Status: return from the current function, or fill a caller's record
 * ------------------------------------------------------------------------ */

#define CMReturn(rc_)                                        \
    do {                                                     \
        CMPIStatus cmpi_status_ret_ = {(CMPIrc)(rc_), NULL}; \
        return cmpi_status_ret_;                             \
    } while (0)

#define CMReturnWithString(rc_, str_)                          \
    do {                                                       \
        CMPIStatus cmpi_status_ret_ = {(CMPIrc)(rc_), (str_)}; \
        return cmpi_status_ret_;                               \
    } while (0)

#define CMReturnWithChars(mb_, rc_, chars_)                                           \
    do {                                                                              \
        CMPIStatus cmpi_status_ret_ = {(CMPIrc)(rc_),                                 \
                                       (mb_)->eft->newString((mb_), (chars_), NULL)}; \
        return cmpi_status_ret_;                                                      \
    } while (0)

/* The status record must exist: as in 1.0, NULL is not checked here. */
#define CMSetStatus(st_, rc_)      \
    do {                           \
        (st_)->rc = (CMPIrc)(rc_); \
        (st_)->msg = NULL;         \
    } while (0)

#define CMSetStatusWithString(st_, rc_, str_) \
    do {                                      \
        (st_)->rc = (CMPIrc)(rc_);            \
        (st_)->msg = (str_);                  \
    } while (0)

#define CMSetStatusWithChars(mb_, st_, rc_, chars_)                \
    do {                                                           \
        (st_)->rc = (CMPIrc)(rc_);                                 \
        (st_)->msg = (mb_)->eft->newString((mb_), (chars_), NULL); \
    } while (0)

/* ------------------------------------------------------------------------
 * Tests on objects and data
 * ------------------------------------------------------------------------ */

/* True for a NULL object and for one whose hdl (its first field) is NULL. */
#define CMIsNullObject(obj_) \
    ((const void *)(obj_) == NULL || *(void *const *)(const void *)(obj_) == NULL)

#define CMIsNullValue(data_) (((data_).state & CMPI_nullValue) != 0)
#define CMIsKeyValue(data_) (((data_).state & CMPI_keyValue) != 0)
#define CMIsArray(data_) (((data_).type & CMPI_ARRAY) != 0)

/* ------------------------------------------------------------------------
 * Any encapsulated object
 * ------------------------------------------------------------------------ */

#define CMClone(obj_, rc_) ((obj_)->ft->clone((obj_), (rc_)))
#define CMRelease(obj_) ((obj_)->ft->release((obj_)))

/* ------------------------------------------------------------------------
 * Broker factories and helpers
 * ------------------------------------------------------------------------ */

#define CMNewInstance(mb_, op_, rc_) ((mb_)->eft->newInstance((mb_), (op_), (rc_)))
#define CMNewObjectPath(mb_, ns_, cn_, rc_) ((mb_)->eft->newObjectPath((mb_), (ns_), (cn_), (rc_)))
#define CMNewString(mb_, chars_, rc_) ((mb_)->eft->newString((mb_), (chars_), (rc_)))
#define CMNewArgs(mb_, rc_) ((mb_)->eft->newArgs((mb_), (rc_)))
#define CMNewArray(mb_, size_, type_, rc_) ((mb_)->eft->newArray((mb_), (size_), (type_), (rc_)))
#define CMNewDateTime(mb_, rc_) ((mb_)->eft->newDateTime((mb_), (rc_)))
#define CMNewDateTimeFromBinary(mb_, bin_, interval_, rc_) \
    ((mb_)->eft->newDateTimeFromBinary((mb_), (bin_), (interval_), (rc_)))
#define CMNewDateTimeFromChars(mb_, chars_, rc_) \
    ((mb_)->eft->newDateTimeFromChars((mb_), (chars_), (rc_)))
#define CMNewSelectExp(mb_, query_, lang_, projection_, rc_) \
    ((mb_)->eft->newSelectExp((mb_), (query_), (lang_), (projection_), (rc_)))
#define CMClassPathIsA(mb_, op_, cn_, rc_) ((mb_)->eft->classPathIsA((mb_), (op_), (cn_), (rc_)))

#define CDToString(mb_, obj_, rc_) ((mb_)->eft->toString((mb_), (obj_), (rc_)))
#define CDIsOfType(mb_, obj_, type_, rc_) ((mb_)->eft->isOfType((mb_), (obj_), (type_), (rc_)))
#define CDGetType(mb_, obj_, rc_) ((mb_)->eft->getType((mb_), (obj_), (rc_)))

/*
 * Message formatting: the last argument of CMGetMessage is one CMFmtArgsN
 * list, which expands to N followed by N (type code, value) pairs built with
 * the CMFmt* helpers, e.g.
 *   CMGetMessage(mb, "id", "$0 of $1", &st, CMFmtArgs2(CMFmtSint(n), CMFmtChars(s)))
 */
#define CMGetMessage(mb_, id_, def_, rc_, args_) \
    ((mb_)->eft->getMessage((mb_), (id_), (def_), (rc_), args_))
#define CMLogMessage(mb_, severity_, id_, text_, string_) \
    ((mb_)->eft->logMessage((mb_), (severity_), (id_), (text_), (string_)))
#define CMTraceMessage(mb_, level_, component_, text_, string_) \
    ((mb_)->eft->trace((mb_), (level_), (component_), (text_), (string_)))

#define CMFmtSint(v_) CMPI_sint32, ((long)(v_))
#define CMFmtUint(v_) CMPI_uint32, ((unsigned long)(v_))
#define CMFmtSint64(v_) CMPI_sint64, ((long long)(v_))
#define CMFmtUint64(v_) CMPI_uint64, ((unsigned long long)(v_))
#define CMFmtReal(v_) CMPI_real64, ((double)(v_))
#define CMFmtBoolean(v_) CMPI_boolean, ((int)(v_))
#define CMFmtChars(v_) CMPI_chars, ((const char *)(v_))
#define CMFmtString(v_) CMPI_string, ((CMPIString *)(v_))

#define CMFmtArgs0() 0
#define CMFmtArgs1(a1_) 1, a1_
#define CMFmtArgs2(a1_, a2_) 2, a1_, a2_
#define CMFmtArgs3(a1_, a2_, a3_) 3, a1_, a2_, a3_
#define CMFmtArgs4(a1_, a2_, a3_, a4_) 4, a1_, a2_, a3_, a4_
#define CMFmtArgs5(a1_, a2_, a3_, a4_, a5_) 5, a1_, a2_, a3_, a4_, a5_
#define CMFmtArgs6(a1_, a2_, a3_, a4_, a5_, a6_) 6, a1_, a2_, a3_, a4_, a5_, a6_
#define CMFmtArgs7(a1_, a2_, a3_, a4_, a5_, a6_, a7_) 7, a1_, a2_, a3_, a4_, a5_, a6_, a7_
#define CMFmtArgs8(a1_, a2_, a3_, a4_, a5_, a6_, a7_, a8_) 8, a1_, a2_, a3_, a4_, a5_, a6_, a7_, a8_
#define CMFmtArgs9(a1_, a2_, a3_, a4_, a5_, a6_, a7_, a8_, a9_) \
    9, a1_, a2_, a3_, a4_, a5_, a6_, a7_, a8_, a9_
#define CMFmtArgs10(a1_, a2_, a3_, a4_, a5_, a6_, a7_, a8_, a9_, a10_) \
    10, a1_, a2_, a3_, a4_, a5_, a6_, a7_, a8_, a9_, a10_

/* ------------------------------------------------------------------------
 * CMPIString
 * ------------------------------------------------------------------------ */

/* Reads the characters straight from hdl, without a call (1.0 behaviour). */
#define CMGetCharPtr(str_) ((char *)(str_)->hdl)
#define CMGetCharsPtr(str_, rc_) ((str_)->ft->getCharPtr((str_), (rc_)))

/* ------------------------------------------------------------------------
 * CMPIInstance
 * ------------------------------------------------------------------------ */

#define CMGetProperty(inst_, name_, rc_) ((inst_)->ft->getProperty((inst_), (name_), (rc_)))
#define CMGetPropertyAt(inst_, index_, nameOut_, rc_) \
    ((inst_)->ft->getPropertyAt((inst_), (index_), (nameOut_), (rc_)))
#define CMSetProperty(inst_, name_, value_, type_) \
    ((inst_)->ft->setProperty((inst_), (name_), (const CMPIValue *)(value_), (type_)))
#define CMGetPropertyCount(inst_, rc_) ((inst_)->ft->getPropertyCount((inst_), (rc_)))
#define CMGetObjectPath(inst_, rc_) ((inst_)->ft->getObjectPath((inst_), (rc_)))
#define CMSetObjectPath(inst_, op_) ((inst_)->ft->setObjectPath((inst_), (op_)))
#define CMSetPropertyFilter(inst_, props_, keys_) \
    ((inst_)->ft->setPropertyFilter((inst_), (props_), (keys_)))

/* ------------------------------------------------------------------------
 * CMPIObjectPath
 * ------------------------------------------------------------------------ */

#define CMGetClassName(op_, rc_) ((op_)->ft->getClassName((op_), (rc_)))
#define CMSetClassName(op_, cn_) ((op_)->ft->setClassName((op_), (cn_)))
#define CMGetNameSpace(op_, rc_) ((op_)->ft->getNameSpace((op_), (rc_)))
#define CMSetNameSpace(op_, ns_) ((op_)->ft->setNameSpace((op_), (ns_)))
#define CMGetHostname(op_, rc_) ((op_)->ft->getHostname((op_), (rc_)))
#define CMSetHostname(op_, host_) ((op_)->ft->setHostname((op_), (host_)))
#define CMAddKey(op_, name_, value_, type_) \
    ((op_)->ft->addKey((op_), (name_), (const CMPIValue *)(value_), (type_)))
#define CMGetKey(op_, name_, rc_) ((op_)->ft->getKey((op_), (name_), (rc_)))
#define CMGetKeyAt(op_, index_, nameOut_, rc_) \
    ((op_)->ft->getKeyAt((op_), (index_), (nameOut_), (rc_)))
#define CMGetKeyCount(op_, rc_) ((op_)->ft->getKeyCount((op_), (rc_)))
#define CMSetNameSpaceFromObjectPath(op_, src_) \
    ((op_)->ft->setNameSpaceFromObjectPath((op_), (src_)))
#define CMSetHostAndNameSpaceFromObjectPath(op_, src_) \
    ((op_)->ft->setHostAndNameSpaceFromObjectPath((op_), (src_)))
#define CMObjectPathToString(op_, rc_) ((op_)->ft->toString((op_), (rc_)))

/* ------------------------------------------------------------------------
 * CMPIArgs
 * ------------------------------------------------------------------------ */

#define CMAddArg(args_, name_, value_, type_) \
    ((args_)->ft->addArg((args_), (name_), (const CMPIValue *)(value_), (type_)))
#define CMGetArg(args_, name_, rc_) ((args_)->ft->getArg((args_), (name_), (rc_)))
#define CMGetArgAt(args_, index_, nameOut_, rc_) \
    ((args_)->ft->getArgAt((args_), (index_), (nameOut_), (rc_)))
#define CMGetArgCount(args_, rc_) ((args_)->ft->getArgCount((args_), (rc_)))

/* ------------------------------------------------------------------------
 * CMPIArray, CMPIEnumeration, CMPIDateTime
 * ------------------------------------------------------------------------ */

#define CMGetArrayCount(ar_, rc_) ((ar_)->ft->getSize((ar_), (rc_)))
#define CMGetArrayType(ar_, rc_) ((ar_)->ft->getSimpleType((ar_), (rc_)))
#define CMGetArrayElementAt(ar_, index_, rc_) ((ar_)->ft->getElementAt((ar_), (index_), (rc_)))
#define CMSetArrayElementAt(ar_, index_, value_, type_) \
    ((ar_)->ft->setElementAt((ar_), (index_), (const CMPIValue *)(value_), (type_)))

#define CMGetNext(en_, rc_) ((en_)->ft->getNext((en_), (rc_)))
#define CMHasNext(en_, rc_) ((en_)->ft->hasNext((en_), (rc_)))
#define CMToArray(en_, rc_) ((en_)->ft->toArray((en_), (rc_)))

#define CMGetStringFormat(dt_, rc_) ((dt_)->ft->getStringFormat((dt_), (rc_)))
#define CMGetBinaryFormat(dt_, rc_) ((dt_)->ft->getBinaryFormat((dt_), (rc_)))
#define CMIsInterval(dt_, rc_) ((dt_)->ft->isInterval((dt_), (rc_)))

/* ------------------------------------------------------------------------
 * CMPIResult, CMPIContext
 * ------------------------------------------------------------------------ */

#define CMReturnData(rslt_, value_, type_) \
    ((rslt_)->ft->returnData((rslt_), (const CMPIValue *)(value_), (type_)))
#define CMReturnInstance(rslt_, inst_) ((rslt_)->ft->returnInstance((rslt_), (inst_)))
#define CMReturnObjectPath(rslt_, op_) ((rslt_)->ft->returnObjectPath((rslt_), (op_)))
#define CMReturnDone(rslt_) ((rslt_)->ft->returnDone((rslt_)))

#define CMGetContextEntry(ctx_, name_, rc_) ((ctx_)->ft->getEntry((ctx_), (name_), (rc_)))
#define CMGetContextEntryAt(ctx_, index_, nameOut_, rc_) \
    ((ctx_)->ft->getEntryAt((ctx_), (index_), (nameOut_), (rc_)))
#define CMGetContextEntryCount(ctx_, rc_) ((ctx_)->ft->getEntryCount((ctx_), (rc_)))
#define CMAddContextEntry(ctx_, name_, value_, type_) \
    ((ctx_)->ft->addEntry((ctx_), (name_), (const CMPIValue *)(value_), (type_)))

/* ------------------------------------------------------------------------
 * Broker up-calls
 * ------------------------------------------------------------------------ */

#define CBEnumInstanceNames(mb_, ctx_, op_, rc_) \
    ((mb_)->bft->enumerateInstanceNames((mb_), (ctx_), (op_), (rc_)))
#define CBEnumInstances(mb_, ctx_, op_, props_, rc_) \
    ((mb_)->bft->enumerateInstances((mb_), (ctx_), (op_), (props_), (rc_)))
#define CBGetInstance(mb_, ctx_, op_, props_, rc_) \
    ((mb_)->bft->getInstance((mb_), (ctx_), (op_), (props_), (rc_)))
#define CBCreateInstance(mb_, ctx_, op_, inst_, rc_) \
    ((mb_)->bft->createInstance((mb_), (ctx_), (op_), (inst_), (rc_)))
#define CBModifyInstance(mb_, ctx_, op_, inst_, props_) \
    ((mb_)->bft->modifyInstance((mb_), (ctx_), (op_), (inst_), (props_)))
#define CBDeleteInstance(mb_, ctx_, op_) ((mb_)->bft->deleteInstance((mb_), (ctx_), (op_)))
#define CBExecQuery(mb_, ctx_, op_, query_, lang_, rc_) \
    ((mb_)->bft->execQuery((mb_), (ctx_), (op_), (query_), (lang_), (rc_)))
#define CBAssociators(mb_, ctx_, op_, assocClass_, resultClass_, role_, resultRole_, props_, rc_) \
    ((mb_)->bft->associators((mb_), (ctx_), (op_), (assocClass_), (resultClass_), (role_),        \
                             (resultRole_), (props_), (rc_)))
#define CBAssociatorNames(mb_, ctx_, op_, assocClass_, resultClass_, role_, resultRole_, rc_)  \
    ((mb_)->bft->associatorNames((mb_), (ctx_), (op_), (assocClass_), (resultClass_), (role_), \
                                 (resultRole_), (rc_)))
#define CBReferences(mb_, ctx_, op_, resultClass_, role_, props_, rc_) \
    ((mb_)->bft->references((mb_), (ctx_), (op_), (resultClass_), (role_), (props_), (rc_)))
#define CBReferenceNames(mb_, ctx_, op_, resultClass_, role_, rc_) \
    ((mb_)->bft->referenceNames((mb_), (ctx_), (op_), (resultClass_), (role_), (rc_)))
#define CBInvokeMethod(mb_, ctx_, op_, method_, in_, out_, rc_) \
    ((mb_)->bft->invokeMethod((mb_), (ctx_), (op_), (method_), (in_), (out_), (rc_)))
#define CBSetProperty(mb_, ctx_, op_, name_, value_, type_) \
    ((mb_)->bft->setProperty((mb_), (ctx_), (op_), (name_), (const CMPIValue *)(value_), (type_)))
#define CBGetProperty(mb_, ctx_, op_, name_, rc_) \
    ((mb_)->bft->getProperty((mb_), (ctx_), (op_), (name_), (rc_)))
#define CBDeliverIndication(mb_, ctx_, ns_, ind_) \
    ((mb_)->bft->deliverIndication((mb_), (ctx_), (ns_), (ind_)))
#define CBPrepareAttachThread(mb_, ctx_) ((mb_)->bft->prepareAttachThread((mb_), (ctx_)))
#define CBAttachThread(mb_, ctx_) ((mb_)->bft->attachThread((mb_), (ctx_)))
#define CBDetachThread(mb_, ctx_) ((mb_)->bft->detachThread((mb_), (ctx_)))

#define CBBrokerVersion(mb_) ((mb_)->bft->brokerVersion)
#define CBBrokerName(mb_) ((mb_)->bft->brokerName)
#define CBGetCapabilities(mb_) ((mb_)->bft->brokerCapabilities)
/* Older name of the same field read. */
#define CBGetClassification(mb_) CBGetCapabilities(mb_)

/* ------------------------------------------------------------------------
 * MI stubs
 *
 * Each stub defines the static function table of one MI kind from the
 * functions <pfx_><Operation>, and the exported factory
 * <pn_>_Create_<Kind>MI that stores the broker in broker_, runs hook_ (a
 * statement; CMNoHook for none) and returns a static MI object with a NULL
 * hdl.  Inside hook_, the factory's context is available as ctx and the MI
 * object as mi.  The factory leaves its status argument untouched.  A stub
 * is a complete definition: write it at file scope without a trailing ';'.
 * ------------------------------------------------------------------------ */

#define CMNoHook

#define CMInstanceMIStub(pfx_, pn_, broker_, hook_)                                                \
    static CMPIInstanceMIFT cmpi_instance_mi_ft_ = {                                               \
        CMPICurrentVersion,      CMPICurrentVersion,   "instance" #pn_,   pfx_##Cleanup,           \
        pfx_##EnumInstanceNames, pfx_##EnumInstances,  pfx_##GetInstance, pfx_##CreateInstance,    \
        pfx_##ModifyInstance,    pfx_##DeleteInstance, pfx_##ExecQuery};                           \
    CMPI_EXTERN_C CMPIInstanceMI *pn_##_Create_InstanceMI(const CMPIBroker *cmpi_stub_broker_,     \
                                                          const CMPIContext *ctx, CMPIStatus *rc); \
    CMPI_EXTERN_C CMPIInstanceMI *pn_##_Create_InstanceMI(                                         \
        const CMPIBroker *cmpi_stub_broker_, const CMPIContext *ctx, CMPIStatus *rc) {             \
        static CMPIInstanceMI mi = {NULL, &cmpi_instance_mi_ft_};                                  \
        (void)ctx;                                                                                 \
        (void)rc;                                                                                  \
        broker_ = cmpi_stub_broker_;                                                               \
        hook_;                                                                                     \
        return &mi;                                                                                \
    }

#define CMAssociationMIStub(pfx_, pn_, broker_, hook_)                                           \
    static CMPIAssociationMIFT cmpi_association_mi_ft_ = {                                       \
        CMPICurrentVersion, CMPICurrentVersion,    "association" #pn_, pfx_##AssociationCleanup, \
        pfx_##Associators,  pfx_##AssociatorNames, pfx_##References,   pfx_##ReferenceNames};    \
    CMPI_EXTERN_C CMPIAssociationMI *pn_##_Create_AssociationMI(                                 \
        const CMPIBroker *cmpi_stub_broker_, const CMPIContext *ctx, CMPIStatus *rc);            \
    CMPI_EXTERN_C CMPIAssociationMI *pn_##_Create_AssociationMI(                                 \
        const CMPIBroker *cmpi_stub_broker_, const CMPIContext *ctx, CMPIStatus *rc) {           \
        static CMPIAssociationMI mi = {NULL, &cmpi_association_mi_ft_};                          \
        (void)ctx;                                                                               \
        (void)rc;                                                                                \
        broker_ = cmpi_stub_broker_;                                                             \
        hook_;                                                                                   \
        return &mi;                                                                              \
    }

#define CMMethodMIStub(pfx_, pn_, broker_, hook_)                                               \
    static CMPIMethodMIFT cmpi_method_mi_ft_ = {CMPICurrentVersion, CMPICurrentVersion,         \
                                                "method" #pn_, pfx_##MethodCleanup,             \
                                                pfx_##InvokeMethod};                            \
    CMPI_EXTERN_C CMPIMethodMI *pn_##_Create_MethodMI(const CMPIBroker *cmpi_stub_broker_,      \
                                                      const CMPIContext *ctx, CMPIStatus *rc);  \
    CMPI_EXTERN_C CMPIMethodMI *pn_##_Create_MethodMI(const CMPIBroker *cmpi_stub_broker_,      \
                                                      const CMPIContext *ctx, CMPIStatus *rc) { \
        static CMPIMethodMI mi = {NULL, &cmpi_method_mi_ft_};                                   \
        (void)ctx;                                                                              \
        (void)rc;                                                                               \
        broker_ = cmpi_stub_broker_;                                                            \
        hook_;                                                                                  \
        return &mi;                                                                             \
    }

#define CMPropertyMIStub(pfx_, pn_, broker_, hook_)                                                \
    static CMPIPropertyMIFT cmpi_property_mi_ft_ = {CMPICurrentVersion, CMPICurrentVersion,        \
                                                    "property" #pn_,    pfx_##PropertyCleanup,     \
                                                    pfx_##SetProperty,  pfx_##GetProperty};        \
    CMPI_EXTERN_C CMPIPropertyMI *pn_##_Create_PropertyMI(const CMPIBroker *cmpi_stub_broker_,     \
                                                          const CMPIContext *ctx, CMPIStatus *rc); \
    CMPI_EXTERN_C CMPIPropertyMI *pn_##_Create_PropertyMI(                                         \
        const CMPIBroker *cmpi_stub_broker_, const CMPIContext *ctx, CMPIStatus *rc) {             \
        static CMPIPropertyMI mi = {NULL, &cmpi_property_mi_ft_};                                  \
        (void)ctx;                                                                                 \
        (void)rc;                                                                                  \
        broker_ = cmpi_stub_broker_;                                                               \
        hook_;                                                                                     \
        return &mi;                                                                                \
    }

#define CMIndicationMIStub(pfx_, pn_, broker_, hook_)                                  \
    static CMPIIndicationMIFT cmpi_indication_mi_ft_ = {                               \
        CMPICurrentVersion,      CMPICurrentVersion,     "Indication" #pn_,            \
        pfx_##IndicationCleanup, pfx_##AuthorizeFilter,  pfx_##MustPoll,               \
        pfx_##ActivateFilter,    pfx_##DeActivateFilter, pfx_##EnableIndications,      \
        pfx_##DisableIndications};                                                     \
    CMPI_EXTERN_C CMPIIndicationMI *pn_##_Create_IndicationMI(                         \
        const CMPIBroker *cmpi_stub_broker_, const CMPIContext *ctx, CMPIStatus *rc);  \
    CMPI_EXTERN_C CMPIIndicationMI *pn_##_Create_IndicationMI(                         \
        const CMPIBroker *cmpi_stub_broker_, const CMPIContext *ctx, CMPIStatus *rc) { \
        static CMPIIndicationMI mi = {NULL, &cmpi_indication_mi_ft_};                  \
        (void)ctx;                                                                     \
        (void)rc;                                                                      \
        broker_ = cmpi_stub_broker_;                                                   \
        hook_;                                                                         \
        return &mi;                                                                    \
    }

#endif /* CMPIMACS_H_INCLUDED */
