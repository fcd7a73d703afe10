/*
 * cmpidt.h - CMPI 1.0 data types: scalars, values, status, type codes and
 * the numeric constants shared by brokers and providers.
 *
 * Everything here is laid out to be binary compatible with brokers and
 * providers built for CMPI 1.0 on the same platform.  Sizes and offsets that
 * matter on LP64 are pinned down by tests/abi/cmpi_layout_check.c; change
 * nothing here without running it.
 */
#ifndef CMPIDT_H_INCLUDED
#define CMPIDT_H_INCLUDED

/* ------------------------------------------------------------------------
 * Interface version
 *
 * These headers describe exactly one layout, 1.0.  A build that asks for a
 * different version would silently get the wrong function tables, so it is
 * refused here instead.
 * ------------------------------------------------------------------------ */

#define CMPIVersion051 51
#define CMPIVersion060 60
#define CMPIVersion070 70
#define CMPIVersion080 80
#define CMPIVersion085 85
#define CMPIVersion086 86
#define CMPIVersion087 87
#define CMPIVersion090 90
#define CMPIVersion100 100

#ifndef CMPI_VERSION
#define CMPI_VERSION CMPIVersion100
#endif

#if CMPI_VERSION != 100
#error "these CMPI headers provide the 1.0 interface only (CMPI_VERSION 100)"
#endif

/* Each level includes everything the earlier ones introduced. */
#ifndef CMPI_VER_100
#define CMPI_VER_100
#endif
#ifndef CMPI_VER_90
#define CMPI_VER_90
#endif
#ifndef CMPI_VER_87
#define CMPI_VER_87
#endif
#ifndef CMPI_VER_86
#define CMPI_VER_86
#endif
#ifndef CMPI_VER_85
#define CMPI_VER_85
#endif
#ifndef CMPI_VER_80
#define CMPI_VER_80
#endif

/* What our function tables and MI stubs advertise in ftVersion/miVersion. */
#define CMPICurrentVersion CMPIVersion100

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------
 * Scalar types
 *
 * The 32-bit types are int-based on purpose: a long-based CMPIUint32 would
 * be 8 bytes on LP64 and shift every field behind it.
 * ------------------------------------------------------------------------ */

typedef unsigned char CMPIBoolean;
typedef unsigned short CMPIChar16;
typedef unsigned char CMPIUint8;
typedef unsigned short CMPIUint16;
typedef unsigned int CMPIUint32;
#if defined(_MSC_VER)
typedef unsigned __int64 CMPIUint64;
#else
typedef unsigned long long CMPIUint64;
#endif
typedef signed char CMPISint8;
typedef short CMPISint16;
typedef int CMPISint32;
#if defined(_MSC_VER)
typedef __int64 CMPISint64;
#else
typedef long long CMPISint64;
#endif
typedef float CMPIReal32;
typedef double CMPIReal64;

/* Element counts and indexes into arrays and select conditions. */
typedef unsigned int CMPICount;

/* A type code (see "Type codes" below); one of CMPI_null, CMPI_uint8, ... */
typedef unsigned short CMPIType;

/* Bit set describing the state of a CMPIData (CMPI_nullValue, ...). */
typedef unsigned short CMPIValueState;

/* Operation flags carried in the "CMPIInvocationFlags" context entry. */
typedef unsigned int CMPIFlags;

#define CMPI_FLAG_LocalOnly 1
#define CMPI_FLAG_DeepInheritance 2
#define CMPI_FLAG_IncludeQualifiers 4
#define CMPI_FLAG_IncludeClassOrigin 8

/* ------------------------------------------------------------------------
 * Encapsulated objects (defined with their function tables in cmpift.h)
 * ------------------------------------------------------------------------ */

typedef struct CMPIBroker CMPIBroker;
typedef struct CMPIContext CMPIContext;
typedef struct CMPIResult CMPIResult;
typedef struct CMPIString CMPIString;
typedef struct CMPIArray CMPIArray;
typedef struct CMPIEnumeration CMPIEnumeration;
typedef struct CMPIInstance CMPIInstance;
typedef struct CMPIObjectPath CMPIObjectPath;
typedef struct CMPIArgs CMPIArgs;
typedef struct CMPIDateTime CMPIDateTime;
typedef struct CMPISelectExp CMPISelectExp;
typedef struct CMPISelectCond CMPISelectCond;
typedef struct CMPISubCond CMPISubCond;
typedef struct CMPIPredicate CMPIPredicate;

/* ------------------------------------------------------------------------
 * Values
 * ------------------------------------------------------------------------ */

/* Raw memory block: address and size in bytes. */
typedef struct CMPIValuePtr {
    void *ptr;
    unsigned int length;
} CMPIValuePtr;

/*
 * One value of any CMPI type; which member is live follows from the type
 * code stored next to it.  dataPtr is the widest member and fixes the union
 * at 16 bytes on LP64 - dropping it would shrink CMPIData and break the ABI.
 */
typedef union CMPIValue {
    CMPIUint64 uint64;
    CMPIUint32 uint32;
    CMPIUint16 uint16;
    CMPIUint8 uint8;
    CMPISint64 sint64;
    CMPISint32 sint32;
    CMPISint16 sint16;
    CMPISint8 sint8;
    CMPIReal64 real64;
    CMPIReal32 real32;
    CMPIBoolean boolean;
    CMPIChar16 char16;

    CMPIInstance *inst;
    CMPIObjectPath *ref;
    CMPIArgs *args;
    CMPISelectExp *filter;
    CMPIEnumeration *Enum;
    CMPIArray *array;
    CMPIString *string;
    char *chars;
    CMPIDateTime *dateTime;

    CMPIValuePtr dataPtr;

    /* Older spellings, kept so that old provider source still compiles. */
    CMPISint8 Byte;
    CMPISint16 Short;
    CMPISint32 Int;
    CMPISint64 Long;
    CMPIReal32 Float;
    CMPIReal64 Double;
} CMPIValue;

/* A typed value as handed out by every getter of the interface. */
typedef struct CMPIData {
    CMPIType type;
    CMPIValueState state;
    CMPIValue value;
} CMPIData;

/* Callback a broker hands to the select-expression evaluators: it returns
 * the value of the named property of whatever object parm stands for. */
typedef CMPIData CMPIAccessor(const char *propertyName, void *parm);

/* ------------------------------------------------------------------------
 * Type codes
 *
 * Layout of a code:
 *   0x0002, 0x0003       boolean, char16
 *   0x0008, 0x000C       real32, real64
 *   0x0080 .. 0x00F0     integers: 0x80 = integer, 0x40 = signed,
 *                        bits 0x30 = width (8, 16, 32, 64 bits)
 *   0x1000 | n << 8      encapsulated object kind n
 *   | 0x2000             array of the element type
 * ------------------------------------------------------------------------ */

#define CMPI_null 0

#define CMPI_SIMPLE 0x0002
#define CMPI_boolean (CMPI_SIMPLE + 0)
#define CMPI_char16 (CMPI_SIMPLE + 1)

#define CMPI_REAL 0x0008
#define CMPI_real32 (CMPI_REAL + 0)
#define CMPI_real64 (CMPI_REAL + 4)

#define CMPI_UINT 0x0080
#define CMPI_SINT (CMPI_UINT | 0x0040)
#define CMPI_INTEGER (CMPI_UINT | CMPI_SINT)

#define CMPI_uint8 (CMPI_UINT | 0x0000)
#define CMPI_uint16 (CMPI_UINT | 0x0010)
#define CMPI_uint32 (CMPI_UINT | 0x0020)
#define CMPI_uint64 (CMPI_UINT | 0x0030)
#define CMPI_sint8 (CMPI_SINT | 0x0000)
#define CMPI_sint16 (CMPI_SINT | 0x0010)
#define CMPI_sint32 (CMPI_SINT | 0x0020)
#define CMPI_sint64 (CMPI_SINT | 0x0030)

#define CMPI_ENC 0x1000
#define CMPI_instance (CMPI_ENC | 0x0000)
#define CMPI_ref (CMPI_ENC | 0x0100)
#define CMPI_args (CMPI_ENC | 0x0200)
#define CMPI_class (CMPI_ENC | 0x0300) /* reserved, never produced */
#define CMPI_filter (CMPI_ENC | 0x0400)
#define CMPI_enumeration (CMPI_ENC | 0x0500)
#define CMPI_string (CMPI_ENC | 0x0600)
#define CMPI_chars (CMPI_ENC | 0x0700) /* input only: the value pointer is the char* */
#define CMPI_dateTime (CMPI_ENC | 0x0800)
#define CMPI_ptr (CMPI_ENC | 0x0900)
#define CMPI_charsptr (CMPI_ENC | 0x0A00) /* the value points at a char* */

#define CMPI_ARRAY 0x2000
#define CMPI_SIMPLEA (CMPI_ARRAY | CMPI_SIMPLE)
#define CMPI_booleanA (CMPI_ARRAY | CMPI_boolean)
#define CMPI_char16A (CMPI_ARRAY | CMPI_char16)
#define CMPI_REALA (CMPI_ARRAY | CMPI_REAL)
#define CMPI_real32A (CMPI_ARRAY | CMPI_real32)
#define CMPI_real64A (CMPI_ARRAY | CMPI_real64)
#define CMPI_UINTA (CMPI_ARRAY | CMPI_UINT)
#define CMPI_uint8A (CMPI_ARRAY | CMPI_uint8)
#define CMPI_uint16A (CMPI_ARRAY | CMPI_uint16)
#define CMPI_uint32A (CMPI_ARRAY | CMPI_uint32)
#define CMPI_uint64A (CMPI_ARRAY | CMPI_uint64)
#define CMPI_SINTA (CMPI_ARRAY | CMPI_SINT)
#define CMPI_sint8A (CMPI_ARRAY | CMPI_sint8)
#define CMPI_sint16A (CMPI_ARRAY | CMPI_sint16)
#define CMPI_sint32A (CMPI_ARRAY | CMPI_sint32)
#define CMPI_sint64A (CMPI_ARRAY | CMPI_sint64)
#define CMPI_INTEGERA (CMPI_ARRAY | CMPI_INTEGER)
#define CMPI_ENCA (CMPI_ARRAY | CMPI_ENC)
#define CMPI_instanceA (CMPI_ARRAY | CMPI_instance)
#define CMPI_refA (CMPI_ARRAY | CMPI_ref)
#define CMPI_stringA (CMPI_ARRAY | CMPI_string)
#define CMPI_charsA (CMPI_ARRAY | CMPI_chars)
#define CMPI_dateTimeA (CMPI_ARRAY | CMPI_dateTime)
#define CMPI_ptrA (CMPI_ARRAY | CMPI_ptr)
#define CMPI_charsptrA (CMPI_ARRAY | CMPI_charsptr)

/* Generic key types; meaningful when the data carries CMPI_keyValue. */
#define CMPI_keyInteger CMPI_sint64
#define CMPI_keyString CMPI_string
#define CMPI_keyBoolean CMPI_boolean
#define CMPI_keyRef CMPI_ref

/*
 * Operand kinds reported by CMPIPredicate getData.  Some collide with
 * ordinary codes (classNameString == chars, nameString == dateTimeString);
 * they are only ever read in a predicate.
 */
#define CMPI_charString CMPI_string
#define CMPI_integerString (CMPI_string | CMPI_sint64)
#define CMPI_realString (CMPI_string | CMPI_real64)
#define CMPI_numericString (CMPI_string | CMPI_sint64 | CMPI_real64)
#define CMPI_booleanString (CMPI_string | CMPI_boolean)
#define CMPI_dateTimeString (CMPI_string | CMPI_dateTime)
#define CMPI_classNameString (CMPI_string | CMPI_class)
#define CMPI_nameString (CMPI_string | CMPI_charsptr)

#ifndef CMPI_NO_SYNONYM_SUPPORT
#define CMPI_Byte CMPI_sint8
#define CMPI_Short CMPI_sint16
#define CMPI_Int CMPI_sint32
#define CMPI_Long CMPI_sint64
#define CMPI_Float CMPI_real32
#define CMPI_Double CMPI_real64
#define CMPI_ByteA CMPI_sint8A
#define CMPI_ShortA CMPI_sint16A
#define CMPI_IntA CMPI_sint32A
#define CMPI_LongA CMPI_sint64A
#define CMPI_FloatA CMPI_real32A
#define CMPI_DoubleA CMPI_real64A
#endif

/* ------------------------------------------------------------------------
 * Value states (CMPIData.state)
 * ------------------------------------------------------------------------ */

#define CMPI_goodValue 0x0000
#define CMPI_nullValue 0x0100
#define CMPI_keyValue 0x0200
#define CMPI_notFound 0x0400
#define CMPI_badValue 0x8000

/* ------------------------------------------------------------------------
 * Status
 * ------------------------------------------------------------------------ */

typedef enum CMPIrc {
    CMPI_RC_OK = 0,
    CMPI_RC_ERR_FAILED = 1,
    CMPI_RC_ERR_ACCESS_DENIED = 2,
    CMPI_RC_ERR_INVALID_NAMESPACE = 3,
    CMPI_RC_ERR_INVALID_PARAMETER = 4,
    CMPI_RC_ERR_INVALID_CLASS = 5,
    CMPI_RC_ERR_NOT_FOUND = 6,
    CMPI_RC_ERR_NOT_SUPPORTED = 7,
    CMPI_RC_ERR_CLASS_HAS_CHILDREN = 8,
    CMPI_RC_ERR_CLASS_HAS_INSTANCES = 9,
    CMPI_RC_ERR_INVALID_SUPERCLASS = 10,
    CMPI_RC_ERR_ALREADY_EXISTS = 11,
    CMPI_RC_ERR_NO_SUCH_PROPERTY = 12,
    CMPI_RC_ERR_TYPE_MISMATCH = 13,
    CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED = 14,
    CMPI_RC_ERR_INVALID_QUERY = 15,
    CMPI_RC_ERR_METHOD_NOT_AVAILABLE = 16,
    CMPI_RC_ERR_METHOD_NOT_FOUND = 17,

    /* Answers of an MI cleanup() that was not told it is terminating. */
    CMPI_RC_DO_NOT_UNLOAD = 50,
    CMPI_RC_NEVER_UNLOAD = 51,

    CMPI_RC_ERR_INVALID_HANDLE = 60,
    CMPI_RC_ERR_INVALID_DATA_TYPE = 61,

    /* The hosting operating system reported an error. */
    CMPI_RC_ERROR_SYSTEM = 100,
    CMPI_RC_ERROR = 200
} CMPIrc;

/* Outcome of a call: a code and an optional message (NULL = none). */
typedef struct CMPIStatus {
    CMPIrc rc;
    CMPIString *msg;
} CMPIStatus;

/* ------------------------------------------------------------------------
 * Context entry names (keys for the CMPIContext entry functions)
 * ------------------------------------------------------------------------ */

#define CMPIPrincipal "CMPIPrincipal"             /* string */
#define CMPIInvocationFlags "CMPIInvocationFlags" /* uint32, CMPI_FLAG_* bits */
#define CMPIInitNameSpace "CMPIInitNameSpace"     /* string */
#define CMPIRole "CMPIRole"                       /* string */

/* ------------------------------------------------------------------------
 * Broker capabilities (CMPIBrokerFT.brokerCapabilities)
 * ------------------------------------------------------------------------ */

#define CMPI_MB_Class_0 0x00000001
#define CMPI_MB_Class_1 0x00000003
#define CMPI_MB_Class_2 0x00000007

#define Supports_PropertyMI 0x00000100
#define Supports_IndicationMI 0x00000200
#define Supports_IndicationPolling 0x00000400
#define Supports_QueryNormalization 0x00000800
#define Supports_Qualifier 0x00001000
#define Supports_Schema 0x00003000

#define CMPI_MB_BasicRead 0x00000001
#define CMPI_MB_BasicWrite 0x00000003
#define CMPI_MB_InstanceManipulation 0x00000007
#define CMPI_MB_AssociationTraversal 0x00000009
#define CMPI_MB_QueryExecution 0x00000011
#define CMPI_MB_QueryNormalization 0x00000031
#define CMPI_MB_BasicQualifierSupport 0x00000047
#define CMPI_MB_OSEncapsulationSupport 0x00000100

/* ------------------------------------------------------------------------
 * Predicate operators (CMPIPredicate getData)
 * ------------------------------------------------------------------------ */

typedef enum CMPIPredOp {
    CMPI_PredOp_Equals = 1,
    CMPI_PredOp_NotEquals = 2,
    CMPI_PredOp_LessThan = 3,
    CMPI_PredOp_GreaterThanOrEquals = 4,
    CMPI_PredOp_GreaterThan = 5,
    CMPI_PredOp_LessThanOrEquals = 6,
    CMPI_PredOp_Isa = 7,
    CMPI_PredOp_NotIsa = 8,
    CMPI_PredOp_Like = 9,
    CMPI_PredOp_NotLike = 10
} CMPIPredOp;

#ifdef __cplusplus
}
#endif

#endif /* CMPIDT_H_INCLUDED */
