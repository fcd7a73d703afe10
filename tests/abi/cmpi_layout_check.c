/*
 * cmpi_layout_check.c - compile-time proof that our CMPI headers lay out
 * every structure the way CMPI 1.0 brokers and providers expect.
 *
 * Nothing here runs: the file only has to compile, as C and as C++:
 *   gcc -std=c99 -fsyntax-only -I include tests/abi/cmpi_layout_check.c
 *   g++ -std=c++20 -x c++ -fsyntax-only -I include tests/abi/cmpi_layout_check.c
 * (or with -I include/cmpi, as the build's own test does).
 * A failing check names the broken size or offset.  Sizes and offsets are
 * those of LP64 (x86-64 Linux and friends); type codes, value states and
 * return codes are the same everywhere and are checked on every platform.
 */
#include <stddef.h>

/* The build puts include/cmpi itself on the path; by hand, include/ is
 * enough.  Either way the same three headers are checked. */
#if defined(__has_include)
#if __has_include(<cmpidt.h>)
#define CMPI_HEADERS_ON_PATH 1
#endif
#endif
#if defined(CMPI_HEADERS_ON_PATH)
#include <cmpidt.h>
#include <cmpift.h>
#include <cmpimacs.h>
#else
#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>
#include <cmpi/cmpimacs.h>
#endif

#if defined(__cplusplus)
#define LAYOUT_CHECK(cond) static_assert(cond, #cond)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define LAYOUT_CHECK(cond) _Static_assert(cond, #cond)
#else
/* C99 lacks _Static_assert; GCC and Clang accept it as an extension. */
#define LAYOUT_CHECK(cond) __extension__ _Static_assert(cond, #cond)
#endif

#define CHECK_SIZE(type, bytes) LAYOUT_CHECK(sizeof(type) == (bytes))
#define CHECK_OFFSET(type, member, off) LAYOUT_CHECK(offsetof(type, member) == (off))

/* Alignment through a probe struct: works in C99 and C++ alike. */
#define CHECK_ALIGN(type, bytes) \
    struct align_probe_##type {  \
        char lead;               \
        type probe;              \
    };                           \
    LAYOUT_CHECK(offsetof(struct align_probe_##type, probe) == (bytes))

/* ------------------------------------------------------------------------
 * Interface version
 * ------------------------------------------------------------------------ */

LAYOUT_CHECK(CMPI_VERSION == 100);
LAYOUT_CHECK(CMPIVersion100 == 100);
LAYOUT_CHECK(CMPICurrentVersion == 100);
LAYOUT_CHECK(CMPIVersion051 == 51 && CMPIVersion060 == 60 && CMPIVersion070 == 70);
LAYOUT_CHECK(CMPIVersion080 == 80 && CMPIVersion085 == 85 && CMPIVersion086 == 86);
LAYOUT_CHECK(CMPIVersion087 == 87 && CMPIVersion090 == 90);
#if !defined(CMPI_VER_100) || !defined(CMPI_VER_90) || !defined(CMPI_VER_87) || \
    !defined(CMPI_VER_86) || !defined(CMPI_VER_85) || !defined(CMPI_VER_80)
#error "the 1.0 level must switch on every earlier level"
#endif

/* ------------------------------------------------------------------------
 * Type codes
 * ------------------------------------------------------------------------ */

LAYOUT_CHECK(CMPI_null == 0x0000);
LAYOUT_CHECK(CMPI_SIMPLE == 0x0002 && CMPI_boolean == 0x0002 && CMPI_char16 == 0x0003);
LAYOUT_CHECK(CMPI_REAL == 0x0008 && CMPI_real32 == 0x0008 && CMPI_real64 == 0x000C);
LAYOUT_CHECK(CMPI_UINT == 0x0080 && CMPI_uint8 == 0x0080 && CMPI_uint16 == 0x0090);
LAYOUT_CHECK(CMPI_uint32 == 0x00A0 && CMPI_uint64 == 0x00B0);
LAYOUT_CHECK(CMPI_SINT == 0x00C0 && CMPI_sint8 == 0x00C0 && CMPI_sint16 == 0x00D0);
LAYOUT_CHECK(CMPI_sint32 == 0x00E0 && CMPI_sint64 == 0x00F0 && CMPI_INTEGER == 0x00C0);
LAYOUT_CHECK(CMPI_ENC == 0x1000 && CMPI_instance == 0x1000 && CMPI_ref == 0x1100);
LAYOUT_CHECK(CMPI_args == 0x1200 && CMPI_class == 0x1300 && CMPI_filter == 0x1400);
LAYOUT_CHECK(CMPI_enumeration == 0x1500 && CMPI_string == 0x1600 && CMPI_chars == 0x1700);
LAYOUT_CHECK(CMPI_dateTime == 0x1800 && CMPI_ptr == 0x1900 && CMPI_charsptr == 0x1A00);

LAYOUT_CHECK(CMPI_ARRAY == 0x2000 && CMPI_SIMPLEA == 0x2002 && CMPI_booleanA == 0x2002);
LAYOUT_CHECK(CMPI_char16A == 0x2003 && CMPI_REALA == 0x2008 && CMPI_real32A == 0x2008);
LAYOUT_CHECK(CMPI_real64A == 0x200C && CMPI_UINTA == 0x2080 && CMPI_uint8A == 0x2080);
LAYOUT_CHECK(CMPI_uint16A == 0x2090 && CMPI_uint32A == 0x20A0 && CMPI_uint64A == 0x20B0);
LAYOUT_CHECK(CMPI_SINTA == 0x20C0 && CMPI_sint8A == 0x20C0 && CMPI_sint16A == 0x20D0);
LAYOUT_CHECK(CMPI_sint32A == 0x20E0 && CMPI_sint64A == 0x20F0 && CMPI_INTEGERA == 0x20C0);
LAYOUT_CHECK(CMPI_ENCA == 0x3000 && CMPI_instanceA == 0x3000 && CMPI_refA == 0x3100);
LAYOUT_CHECK(CMPI_stringA == 0x3600 && CMPI_charsA == 0x3700 && CMPI_dateTimeA == 0x3800);
LAYOUT_CHECK(CMPI_ptrA == 0x3900 && CMPI_charsptrA == 0x3A00);

LAYOUT_CHECK(CMPI_keyInteger == 0x00F0 && CMPI_keyString == 0x1600);
LAYOUT_CHECK(CMPI_keyBoolean == 0x0002 && CMPI_keyRef == 0x1100);

LAYOUT_CHECK(CMPI_charString == 0x1600 && CMPI_integerString == 0x16F0);
LAYOUT_CHECK(CMPI_realString == 0x160C && CMPI_numericString == 0x16FC);
LAYOUT_CHECK(CMPI_booleanString == 0x1602 && CMPI_dateTimeString == 0x1E00);
LAYOUT_CHECK(CMPI_classNameString == 0x1700 && CMPI_nameString == 0x1E00);

LAYOUT_CHECK(CMPI_Byte == CMPI_sint8 && CMPI_Short == CMPI_sint16 && CMPI_Int == CMPI_sint32);
LAYOUT_CHECK(CMPI_Long == CMPI_sint64 && CMPI_Float == CMPI_real32 && CMPI_Double == CMPI_real64);
LAYOUT_CHECK(CMPI_ByteA == CMPI_sint8A && CMPI_ShortA == CMPI_sint16A && CMPI_IntA == CMPI_sint32A);
LAYOUT_CHECK(CMPI_LongA == CMPI_sint64A && CMPI_FloatA == CMPI_real32A);
LAYOUT_CHECK(CMPI_DoubleA == CMPI_real64A);

/* ------------------------------------------------------------------------
 * Value states, flags, return codes and other constants
 * ------------------------------------------------------------------------ */

LAYOUT_CHECK(CMPI_goodValue == 0x0000 && CMPI_nullValue == 0x0100);
LAYOUT_CHECK(CMPI_keyValue == 0x0200 && CMPI_notFound == 0x0400 && CMPI_badValue == 0x8000);

LAYOUT_CHECK(CMPI_FLAG_LocalOnly == 1 && CMPI_FLAG_DeepInheritance == 2);
LAYOUT_CHECK(CMPI_FLAG_IncludeQualifiers == 4 && CMPI_FLAG_IncludeClassOrigin == 8);

LAYOUT_CHECK(CMPI_RC_OK == 0 && CMPI_RC_ERR_FAILED == 1 && CMPI_RC_ERR_ACCESS_DENIED == 2);
LAYOUT_CHECK(CMPI_RC_ERR_INVALID_NAMESPACE == 3 && CMPI_RC_ERR_INVALID_PARAMETER == 4);
LAYOUT_CHECK(CMPI_RC_ERR_INVALID_CLASS == 5 && CMPI_RC_ERR_NOT_FOUND == 6);
LAYOUT_CHECK(CMPI_RC_ERR_NOT_SUPPORTED == 7 && CMPI_RC_ERR_CLASS_HAS_CHILDREN == 8);
LAYOUT_CHECK(CMPI_RC_ERR_CLASS_HAS_INSTANCES == 9 && CMPI_RC_ERR_INVALID_SUPERCLASS == 10);
LAYOUT_CHECK(CMPI_RC_ERR_ALREADY_EXISTS == 11 && CMPI_RC_ERR_NO_SUCH_PROPERTY == 12);
LAYOUT_CHECK(CMPI_RC_ERR_TYPE_MISMATCH == 13);
LAYOUT_CHECK(CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED == 14 && CMPI_RC_ERR_INVALID_QUERY == 15);
LAYOUT_CHECK(CMPI_RC_ERR_METHOD_NOT_AVAILABLE == 16 && CMPI_RC_ERR_METHOD_NOT_FOUND == 17);
LAYOUT_CHECK(CMPI_RC_DO_NOT_UNLOAD == 50 && CMPI_RC_NEVER_UNLOAD == 51);
LAYOUT_CHECK(CMPI_RC_ERR_INVALID_HANDLE == 60 && CMPI_RC_ERR_INVALID_DATA_TYPE == 61);
LAYOUT_CHECK(CMPI_RC_ERROR_SYSTEM == 100 && CMPI_RC_ERROR == 200);

LAYOUT_CHECK(CMPI_MB_Class_0 == 0x1 && CMPI_MB_Class_1 == 0x3 && CMPI_MB_Class_2 == 0x7);
LAYOUT_CHECK(Supports_PropertyMI == 0x100 && Supports_IndicationMI == 0x200);
LAYOUT_CHECK(Supports_IndicationPolling == 0x400 && Supports_QueryNormalization == 0x800);
LAYOUT_CHECK(Supports_Qualifier == 0x1000 && Supports_Schema == 0x3000);
LAYOUT_CHECK(CMPI_MB_BasicRead == 0x1 && CMPI_MB_BasicWrite == 0x3);
LAYOUT_CHECK(CMPI_MB_InstanceManipulation == 0x7 && CMPI_MB_AssociationTraversal == 0x9);
LAYOUT_CHECK(CMPI_MB_QueryExecution == 0x11 && CMPI_MB_QueryNormalization == 0x31);
LAYOUT_CHECK(CMPI_MB_BasicQualifierSupport == 0x47 && CMPI_MB_OSEncapsulationSupport == 0x100);

LAYOUT_CHECK(CMPI_PredOp_Equals == 1 && CMPI_PredOp_NotEquals == 2);
LAYOUT_CHECK(CMPI_PredOp_LessThan == 3 && CMPI_PredOp_GreaterThanOrEquals == 4);
LAYOUT_CHECK(CMPI_PredOp_GreaterThan == 5 && CMPI_PredOp_LessThanOrEquals == 6);
LAYOUT_CHECK(CMPI_PredOp_Isa == 7 && CMPI_PredOp_NotIsa == 8);
LAYOUT_CHECK(CMPI_PredOp_Like == 9 && CMPI_PredOp_NotLike == 10);

#if defined(__LP64__)

/* ------------------------------------------------------------------------
 * Scalars
 * ------------------------------------------------------------------------ */

CHECK_SIZE(CMPIBoolean, 1);
CHECK_ALIGN(CMPIBoolean, 1);
CHECK_SIZE(CMPIChar16, 2);
CHECK_ALIGN(CMPIChar16, 2);
CHECK_SIZE(CMPIUint8, 1);
CHECK_ALIGN(CMPIUint8, 1);
CHECK_SIZE(CMPIUint16, 2);
CHECK_ALIGN(CMPIUint16, 2);
CHECK_SIZE(CMPIUint32, 4);
CHECK_ALIGN(CMPIUint32, 4);
CHECK_SIZE(CMPIUint64, 8);
CHECK_ALIGN(CMPIUint64, 8);
CHECK_SIZE(CMPISint8, 1);
CHECK_ALIGN(CMPISint8, 1);
CHECK_SIZE(CMPISint16, 2);
CHECK_ALIGN(CMPISint16, 2);
CHECK_SIZE(CMPISint32, 4);
CHECK_ALIGN(CMPISint32, 4);
CHECK_SIZE(CMPISint64, 8);
CHECK_ALIGN(CMPISint64, 8);
CHECK_SIZE(CMPIReal32, 4);
CHECK_ALIGN(CMPIReal32, 4);
CHECK_SIZE(CMPIReal64, 8);
CHECK_ALIGN(CMPIReal64, 8);
CHECK_SIZE(CMPICount, 4);
CHECK_ALIGN(CMPICount, 4);
CHECK_SIZE(CMPIrc, 4);
CHECK_ALIGN(CMPIrc, 4);
CHECK_SIZE(CMPIType, 2);
CHECK_ALIGN(CMPIType, 2);
CHECK_SIZE(CMPIValueState, 2);
CHECK_ALIGN(CMPIValueState, 2);
CHECK_SIZE(CMPIFlags, 4);
CHECK_ALIGN(CMPIFlags, 4);

/* ------------------------------------------------------------------------
 * CMPIValuePtr, CMPIValue, CMPIData, CMPIStatus
 * ------------------------------------------------------------------------ */

CHECK_SIZE(CMPIValuePtr, 16);
CHECK_ALIGN(CMPIValuePtr, 8);
CHECK_OFFSET(CMPIValuePtr, ptr, 0);
CHECK_OFFSET(CMPIValuePtr, length, 8);

CHECK_SIZE(CMPIValue, 16);
CHECK_ALIGN(CMPIValue, 8);
CHECK_OFFSET(CMPIValue, uint64, 0);
CHECK_OFFSET(CMPIValue, uint32, 0);
CHECK_OFFSET(CMPIValue, uint16, 0);
CHECK_OFFSET(CMPIValue, uint8, 0);
CHECK_OFFSET(CMPIValue, sint64, 0);
CHECK_OFFSET(CMPIValue, sint32, 0);
CHECK_OFFSET(CMPIValue, sint16, 0);
CHECK_OFFSET(CMPIValue, sint8, 0);
CHECK_OFFSET(CMPIValue, real64, 0);
CHECK_OFFSET(CMPIValue, real32, 0);
CHECK_OFFSET(CMPIValue, boolean, 0);
CHECK_OFFSET(CMPIValue, char16, 0);
CHECK_OFFSET(CMPIValue, inst, 0);
CHECK_OFFSET(CMPIValue, ref, 0);
CHECK_OFFSET(CMPIValue, args, 0);
CHECK_OFFSET(CMPIValue, filter, 0);
CHECK_OFFSET(CMPIValue, Enum, 0);
CHECK_OFFSET(CMPIValue, array, 0);
CHECK_OFFSET(CMPIValue, string, 0);
CHECK_OFFSET(CMPIValue, chars, 0);
CHECK_OFFSET(CMPIValue, dateTime, 0);
CHECK_OFFSET(CMPIValue, dataPtr, 0);
CHECK_OFFSET(CMPIValue, Byte, 0);
CHECK_OFFSET(CMPIValue, Short, 0);
CHECK_OFFSET(CMPIValue, Int, 0);
CHECK_OFFSET(CMPIValue, Long, 0);
CHECK_OFFSET(CMPIValue, Float, 0);
CHECK_OFFSET(CMPIValue, Double, 0);

CHECK_SIZE(CMPIData, 24);
CHECK_ALIGN(CMPIData, 8);
CHECK_OFFSET(CMPIData, type, 0);
CHECK_OFFSET(CMPIData, state, 2);
CHECK_OFFSET(CMPIData, value, 8);

CHECK_SIZE(CMPIStatus, 16);
CHECK_OFFSET(CMPIStatus, rc, 0);
CHECK_OFFSET(CMPIStatus, msg, 8);

/* ------------------------------------------------------------------------
 * Broker and its three tables
 * ------------------------------------------------------------------------ */

CHECK_SIZE(CMPIBroker, 32);
CHECK_OFFSET(CMPIBroker, hdl, 0);
CHECK_OFFSET(CMPIBroker, bft, 8);
CHECK_OFFSET(CMPIBroker, eft, 16);
CHECK_OFFSET(CMPIBroker, xft, 24);

CHECK_SIZE(CMPIBrokerFT, 160);
CHECK_OFFSET(CMPIBrokerFT, brokerCapabilities, 0);
CHECK_OFFSET(CMPIBrokerFT, brokerVersion, 4);
CHECK_OFFSET(CMPIBrokerFT, brokerName, 8);
CHECK_OFFSET(CMPIBrokerFT, prepareAttachThread, 16);
CHECK_OFFSET(CMPIBrokerFT, attachThread, 24);
CHECK_OFFSET(CMPIBrokerFT, detachThread, 32);
CHECK_OFFSET(CMPIBrokerFT, deliverIndication, 40);
CHECK_OFFSET(CMPIBrokerFT, enumerateInstanceNames, 48);
CHECK_OFFSET(CMPIBrokerFT, getInstance, 56);
CHECK_OFFSET(CMPIBrokerFT, createInstance, 64);
CHECK_OFFSET(CMPIBrokerFT, modifyInstance, 72);
CHECK_OFFSET(CMPIBrokerFT, deleteInstance, 80);
CHECK_OFFSET(CMPIBrokerFT, execQuery, 88);
CHECK_OFFSET(CMPIBrokerFT, enumerateInstances, 96);
CHECK_OFFSET(CMPIBrokerFT, associators, 104);
CHECK_OFFSET(CMPIBrokerFT, associatorNames, 112);
CHECK_OFFSET(CMPIBrokerFT, references, 120);
CHECK_OFFSET(CMPIBrokerFT, referenceNames, 128);
CHECK_OFFSET(CMPIBrokerFT, invokeMethod, 136);
CHECK_OFFSET(CMPIBrokerFT, setProperty, 144);
CHECK_OFFSET(CMPIBrokerFT, getProperty, 152);

CHECK_SIZE(CMPIBrokerEncFT, 136);
CHECK_OFFSET(CMPIBrokerEncFT, ftVersion, 0);
CHECK_OFFSET(CMPIBrokerEncFT, newInstance, 8);
CHECK_OFFSET(CMPIBrokerEncFT, newObjectPath, 16);
CHECK_OFFSET(CMPIBrokerEncFT, newArgs, 24);
CHECK_OFFSET(CMPIBrokerEncFT, newString, 32);
CHECK_OFFSET(CMPIBrokerEncFT, newArray, 40);
CHECK_OFFSET(CMPIBrokerEncFT, newDateTime, 48);
CHECK_OFFSET(CMPIBrokerEncFT, newDateTimeFromBinary, 56);
CHECK_OFFSET(CMPIBrokerEncFT, newDateTimeFromChars, 64);
CHECK_OFFSET(CMPIBrokerEncFT, newSelectExp, 72);
CHECK_OFFSET(CMPIBrokerEncFT, classPathIsA, 80);
CHECK_OFFSET(CMPIBrokerEncFT, toString, 88);
CHECK_OFFSET(CMPIBrokerEncFT, isOfType, 96);
CHECK_OFFSET(CMPIBrokerEncFT, getType, 104);
CHECK_OFFSET(CMPIBrokerEncFT, getMessage, 112);
CHECK_OFFSET(CMPIBrokerEncFT, logMessage, 120);
CHECK_OFFSET(CMPIBrokerEncFT, trace, 128);

CHECK_SIZE(CMPIBrokerExtFT, 168);
CHECK_OFFSET(CMPIBrokerExtFT, ftVersion, 0);
CHECK_OFFSET(CMPIBrokerExtFT, resolveFileName, 8);
CHECK_OFFSET(CMPIBrokerExtFT, newThread, 16);
CHECK_OFFSET(CMPIBrokerExtFT, joinThread, 24);
CHECK_OFFSET(CMPIBrokerExtFT, exitThread, 32);
CHECK_OFFSET(CMPIBrokerExtFT, cancelThread, 40);
CHECK_OFFSET(CMPIBrokerExtFT, threadSleep, 48);
CHECK_OFFSET(CMPIBrokerExtFT, threadOnce, 56);
CHECK_OFFSET(CMPIBrokerExtFT, createThreadKey, 64);
CHECK_OFFSET(CMPIBrokerExtFT, destroyThreadKey, 72);
CHECK_OFFSET(CMPIBrokerExtFT, getThreadSpecific, 80);
CHECK_OFFSET(CMPIBrokerExtFT, setThreadSpecific, 88);
CHECK_OFFSET(CMPIBrokerExtFT, newMutex, 96);
CHECK_OFFSET(CMPIBrokerExtFT, destroyMutex, 104);
CHECK_OFFSET(CMPIBrokerExtFT, lockMutex, 112);
CHECK_OFFSET(CMPIBrokerExtFT, unlockMutex, 120);
CHECK_OFFSET(CMPIBrokerExtFT, newCondition, 128);
CHECK_OFFSET(CMPIBrokerExtFT, destroyCondition, 136);
CHECK_OFFSET(CMPIBrokerExtFT, condWait, 144);
CHECK_OFFSET(CMPIBrokerExtFT, timedCondWait, 152);
CHECK_OFFSET(CMPIBrokerExtFT, signalCondition, 160);
CHECK_SIZE(CMPI_THREAD_KEY_TYPE, 4);

/* ------------------------------------------------------------------------
 * Encapsulated data objects: { hdl, ft } and their tables
 * ------------------------------------------------------------------------ */

#define CHECK_OBJECT(type)      \
    CHECK_SIZE(type, 16);       \
    CHECK_OFFSET(type, hdl, 0); \
    CHECK_OFFSET(type, ft, 8)

CHECK_OBJECT(CMPIContext);
CHECK_OBJECT(CMPIResult);
CHECK_OBJECT(CMPIString);
CHECK_OBJECT(CMPIArray);
CHECK_OBJECT(CMPIEnumeration);
CHECK_OBJECT(CMPIInstance);
CHECK_OBJECT(CMPIObjectPath);
CHECK_OBJECT(CMPIArgs);
CHECK_OBJECT(CMPIDateTime);
CHECK_OBJECT(CMPISelectExp);
CHECK_OBJECT(CMPISelectCond);
CHECK_OBJECT(CMPISubCond);
CHECK_OBJECT(CMPIPredicate);

/* Every data-object table: ftVersion, then release and clone. */
#define CHECK_TABLE_HEAD(type)        \
    CHECK_OFFSET(type, ftVersion, 0); \
    CHECK_OFFSET(type, release, 8);   \
    CHECK_OFFSET(type, clone, 16)

CHECK_SIZE(CMPIContextFT, 56);
CHECK_TABLE_HEAD(CMPIContextFT);
CHECK_OFFSET(CMPIContextFT, getEntry, 24);
CHECK_OFFSET(CMPIContextFT, getEntryAt, 32);
CHECK_OFFSET(CMPIContextFT, getEntryCount, 40);
CHECK_OFFSET(CMPIContextFT, addEntry, 48);

CHECK_SIZE(CMPIResultFT, 56);
CHECK_TABLE_HEAD(CMPIResultFT);
CHECK_OFFSET(CMPIResultFT, returnData, 24);
CHECK_OFFSET(CMPIResultFT, returnInstance, 32);
CHECK_OFFSET(CMPIResultFT, returnObjectPath, 40);
CHECK_OFFSET(CMPIResultFT, returnDone, 48);

CHECK_SIZE(CMPIStringFT, 32);
CHECK_TABLE_HEAD(CMPIStringFT);
CHECK_OFFSET(CMPIStringFT, getCharPtr, 24);

CHECK_SIZE(CMPIArrayFT, 56);
CHECK_TABLE_HEAD(CMPIArrayFT);
CHECK_OFFSET(CMPIArrayFT, getSize, 24);
CHECK_OFFSET(CMPIArrayFT, getSimpleType, 32);
CHECK_OFFSET(CMPIArrayFT, getElementAt, 40);
CHECK_OFFSET(CMPIArrayFT, setElementAt, 48);

CHECK_SIZE(CMPIEnumerationFT, 48);
CHECK_TABLE_HEAD(CMPIEnumerationFT);
CHECK_OFFSET(CMPIEnumerationFT, getNext, 24);
CHECK_OFFSET(CMPIEnumerationFT, hasNext, 32);
CHECK_OFFSET(CMPIEnumerationFT, toArray, 40);

CHECK_SIZE(CMPIInstanceFT, 80);
CHECK_TABLE_HEAD(CMPIInstanceFT);
CHECK_OFFSET(CMPIInstanceFT, getProperty, 24);
CHECK_OFFSET(CMPIInstanceFT, getPropertyAt, 32);
CHECK_OFFSET(CMPIInstanceFT, getPropertyCount, 40);
CHECK_OFFSET(CMPIInstanceFT, setProperty, 48);
CHECK_OFFSET(CMPIInstanceFT, getObjectPath, 56);
CHECK_OFFSET(CMPIInstanceFT, setPropertyFilter, 64);
CHECK_OFFSET(CMPIInstanceFT, setObjectPath, 72);

CHECK_SIZE(CMPIObjectPathFT, 160);
CHECK_TABLE_HEAD(CMPIObjectPathFT);
CHECK_OFFSET(CMPIObjectPathFT, setNameSpace, 24);
CHECK_OFFSET(CMPIObjectPathFT, getNameSpace, 32);
CHECK_OFFSET(CMPIObjectPathFT, setHostname, 40);
CHECK_OFFSET(CMPIObjectPathFT, getHostname, 48);
CHECK_OFFSET(CMPIObjectPathFT, setClassName, 56);
CHECK_OFFSET(CMPIObjectPathFT, getClassName, 64);
CHECK_OFFSET(CMPIObjectPathFT, addKey, 72);
CHECK_OFFSET(CMPIObjectPathFT, getKey, 80);
CHECK_OFFSET(CMPIObjectPathFT, getKeyAt, 88);
CHECK_OFFSET(CMPIObjectPathFT, getKeyCount, 96);
CHECK_OFFSET(CMPIObjectPathFT, setNameSpaceFromObjectPath, 104);
CHECK_OFFSET(CMPIObjectPathFT, setHostAndNameSpaceFromObjectPath, 112);
CHECK_OFFSET(CMPIObjectPathFT, getClassQualifier, 120);
CHECK_OFFSET(CMPIObjectPathFT, getPropertyQualifier, 128);
CHECK_OFFSET(CMPIObjectPathFT, getMethodQualifier, 136);
CHECK_OFFSET(CMPIObjectPathFT, getParameterQualifier, 144);
CHECK_OFFSET(CMPIObjectPathFT, toString, 152);

CHECK_SIZE(CMPIArgsFT, 56);
CHECK_TABLE_HEAD(CMPIArgsFT);
CHECK_OFFSET(CMPIArgsFT, addArg, 24);
CHECK_OFFSET(CMPIArgsFT, getArg, 32);
CHECK_OFFSET(CMPIArgsFT, getArgAt, 40);
CHECK_OFFSET(CMPIArgsFT, getArgCount, 48);

CHECK_SIZE(CMPIDateTimeFT, 48);
CHECK_TABLE_HEAD(CMPIDateTimeFT);
CHECK_OFFSET(CMPIDateTimeFT, getBinaryFormat, 24);
CHECK_OFFSET(CMPIDateTimeFT, getStringFormat, 32);
CHECK_OFFSET(CMPIDateTimeFT, isInterval, 40);

CHECK_SIZE(CMPISelectExpFT, 64);
CHECK_TABLE_HEAD(CMPISelectExpFT);
CHECK_OFFSET(CMPISelectExpFT, evaluate, 24);
CHECK_OFFSET(CMPISelectExpFT, getString, 32);
CHECK_OFFSET(CMPISelectExpFT, getDOC, 40);
CHECK_OFFSET(CMPISelectExpFT, getCOD, 48);
CHECK_OFFSET(CMPISelectExpFT, evaluateUsingAccessor, 56);

CHECK_SIZE(CMPISelectCondFT, 40);
CHECK_TABLE_HEAD(CMPISelectCondFT);
CHECK_OFFSET(CMPISelectCondFT, getCountAndType, 24);
CHECK_OFFSET(CMPISelectCondFT, getSubCondAt, 32);

CHECK_SIZE(CMPISubCondFT, 48);
CHECK_TABLE_HEAD(CMPISubCondFT);
CHECK_OFFSET(CMPISubCondFT, getCount, 24);
CHECK_OFFSET(CMPISubCondFT, getPredicateAt, 32);
CHECK_OFFSET(CMPISubCondFT, getPredicate, 40);

CHECK_SIZE(CMPIPredicateFT, 40);
CHECK_TABLE_HEAD(CMPIPredicateFT);
CHECK_OFFSET(CMPIPredicateFT, getData, 24);
CHECK_OFFSET(CMPIPredicateFT, evaluateUsingAccessor, 32);

/* ------------------------------------------------------------------------
 * MI objects and tables
 * ------------------------------------------------------------------------ */

CHECK_OBJECT(CMPIInstanceMI);
CHECK_OBJECT(CMPIAssociationMI);
CHECK_OBJECT(CMPIMethodMI);
CHECK_OBJECT(CMPIPropertyMI);
CHECK_OBJECT(CMPIIndicationMI);

/* Every MI table: ftVersion, miVersion, miName, then cleanup. */
#define CHECK_MI_TABLE_HEAD(type)     \
    CHECK_OFFSET(type, ftVersion, 0); \
    CHECK_OFFSET(type, miVersion, 4); \
    CHECK_OFFSET(type, miName, 8);    \
    CHECK_OFFSET(type, cleanup, 16)

CHECK_SIZE(CMPIInstanceMIFT, 80);
CHECK_MI_TABLE_HEAD(CMPIInstanceMIFT);
CHECK_OFFSET(CMPIInstanceMIFT, enumInstanceNames, 24);
CHECK_OFFSET(CMPIInstanceMIFT, enumInstances, 32);
CHECK_OFFSET(CMPIInstanceMIFT, getInstance, 40);
CHECK_OFFSET(CMPIInstanceMIFT, createInstance, 48);
CHECK_OFFSET(CMPIInstanceMIFT, modifyInstance, 56);
CHECK_OFFSET(CMPIInstanceMIFT, deleteInstance, 64);
CHECK_OFFSET(CMPIInstanceMIFT, execQuery, 72);

CHECK_SIZE(CMPIAssociationMIFT, 56);
CHECK_MI_TABLE_HEAD(CMPIAssociationMIFT);
CHECK_OFFSET(CMPIAssociationMIFT, associators, 24);
CHECK_OFFSET(CMPIAssociationMIFT, associatorNames, 32);
CHECK_OFFSET(CMPIAssociationMIFT, references, 40);
CHECK_OFFSET(CMPIAssociationMIFT, referenceNames, 48);

CHECK_SIZE(CMPIMethodMIFT, 32);
CHECK_MI_TABLE_HEAD(CMPIMethodMIFT);
CHECK_OFFSET(CMPIMethodMIFT, invokeMethod, 24);

CHECK_SIZE(CMPIPropertyMIFT, 40);
CHECK_MI_TABLE_HEAD(CMPIPropertyMIFT);
CHECK_OFFSET(CMPIPropertyMIFT, setProperty, 24);
CHECK_OFFSET(CMPIPropertyMIFT, getProperty, 32);

CHECK_SIZE(CMPIIndicationMIFT, 72);
CHECK_MI_TABLE_HEAD(CMPIIndicationMIFT);
CHECK_OFFSET(CMPIIndicationMIFT, authorizeFilter, 24);
CHECK_OFFSET(CMPIIndicationMIFT, mustPoll, 32);
CHECK_OFFSET(CMPIIndicationMIFT, activateFilter, 40);
CHECK_OFFSET(CMPIIndicationMIFT, deActivateFilter, 48);
CHECK_OFFSET(CMPIIndicationMIFT, enableIndications, 56);
CHECK_OFFSET(CMPIIndicationMIFT, disableIndications, 64);

#endif /* __LP64__ */
