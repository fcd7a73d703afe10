// A small provider for the host's loader tests, built as its own library.
//
// "HostTest" serves class paths it is given: three instances with key Id
// "a", "b", "c" (and "missing" is not there), a link from any object to the
// object "linked" of the same class, and the methods Echo and Count. The
// other names exist to fail at load: NoInstance lacks its instance factory,
// NullMI's returns no MI, BadStatus's reports a failure, Future's MI wants
// a newer CMPI.
#include <cmpidt.h>
#include <cmpift.h>
#include <cmpimacs.h>

#include <cstring>

namespace {

const CMPIBroker *gBroker = nullptr;  // set by every factory, read by the operations

constexpr const char *kIds[] = {"a", "b", "c"};
const char *kKeyList[] = {"Id", nullptr};

CMPIObjectPath *pathLike(const CMPIObjectPath *model, const char *cls, const char *id) {
    CMPIString *ns = CMGetNameSpace(model, nullptr);
    CMPIObjectPath *op = CMNewObjectPath(gBroker, CMGetCharPtr(ns), cls, nullptr);
    CMAddKey(op, "Id", id, CMPI_chars);
    return op;
}

CMPIObjectPath *pathOf(const CMPIObjectPath *model, const char *id) {
    return pathLike(model, CMGetCharPtr(CMGetClassName(model, nullptr)), id);
}

CMPIInstance *instanceOf(const CMPIObjectPath *model, const char *id, const char **props,
                         CMPIUint32 count) {
    CMPIInstance *ci = CMNewInstance(gBroker, pathOf(model, id), nullptr);
    CMSetPropertyFilter(ci, props, kKeyList);
    CMSetProperty(ci, "Count", &count, CMPI_uint32);
    CMSetProperty(ci, "Label", "label \"quoted\"", CMPI_chars);
    return ci;
}

// ---- Instance MI ------------------------------------------------------------

CMPIStatus testCleanup(CMPIInstanceMI *, const CMPIContext *, CMPIBoolean terminating) {
    CMReturn(terminating ? CMPI_RC_OK : CMPI_RC_DO_NOT_UNLOAD);
}

CMPIStatus testEnumInstanceNames(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *rslt,
                                 const CMPIObjectPath *op) {
    for (const char *id : kIds) CMReturnObjectPath(rslt, pathOf(op, id));
    CMReturnDone(rslt);
    CMReturn(CMPI_RC_OK);
}

CMPIStatus testEnumInstances(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *rslt,
                             const CMPIObjectPath *op, const char **props) {
    CMPIUint32 count = 0;
    for (const char *id : kIds) CMReturnInstance(rslt, instanceOf(op, id, props, ++count));
    CMReturnDone(rslt);
    CMReturn(CMPI_RC_OK);
}

CMPIStatus testGetInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *rslt,
                           const CMPIObjectPath *op, const char **props) {
    CMPIStatus rc = {CMPI_RC_OK, nullptr};
    CMPIData id = CMGetKey(op, "Id", &rc);
    if (rc.rc != CMPI_RC_OK) CMReturnWithChars(gBroker, CMPI_RC_ERR_INVALID_PARAMETER, "no Id key");
    const char *text = CMGetCharPtr(id.value.string);
    if (std::strcmp(text, "missing") == 0) {
        CMReturnWithChars(gBroker, CMPI_RC_ERR_NOT_FOUND, "no instance missing");
    }
    CMReturnInstance(rslt, instanceOf(op, text, props, 7));
    CMReturnDone(rslt);
    CMReturn(CMPI_RC_OK);
}

CMPIStatus testCreateInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *rslt,
                              const CMPIObjectPath *, const CMPIInstance *inst) {
    CMReturnObjectPath(rslt, CMGetObjectPath(inst, nullptr));
    CMReturn(CMPI_RC_OK);
}

CMPIStatus testModifyInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                              const CMPIObjectPath *, const CMPIInstance *, const char **) {
    CMReturn(CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIStatus testDeleteInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *rslt,
                              const CMPIObjectPath *) {
    CMReturnData(rslt, "deleted", CMPI_chars);
    CMReturnDone(rslt);
    CMReturn(CMPI_RC_OK);
}

CMPIStatus testExecQuery(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                         const CMPIObjectPath *, const char *, const char *) {
    CMReturn(CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIInstanceMIFT instanceTable = {
    CMPICurrentVersion,    CMPICurrentVersion, "instanceHostTest", testCleanup,
    testEnumInstanceNames, testEnumInstances,  testGetInstance,    testCreateInstance,
    testModifyInstance,    testDeleteInstance, testExecQuery,
};
CMPIInstanceMI instanceMI = {nullptr, &instanceTable};

CMPIInstanceMIFT futureTable = {
    210,
    210,
    "instanceFuture",
    testCleanup,
    testEnumInstanceNames,
    testEnumInstances,
    testGetInstance,
    testCreateInstance,
    testModifyInstance,
    testDeleteInstance,
    testExecQuery,
};
CMPIInstanceMI futureMI = {nullptr, &futureTable};

// ---- Association MI ---------------------------------------------------------

CMPIObjectPath *linkPath(const CMPIObjectPath *op) {
    CMPIObjectPath *link = CMNewObjectPath(gBroker, CMGetCharPtr(CMGetNameSpace(op, nullptr)),
                                           "HostTest_Link", nullptr);
    CMPIObjectPath *other = pathOf(op, "linked");
    CMAddKey(link, "Left", &op, CMPI_ref);
    CMAddKey(link, "Right", &other, CMPI_ref);
    return link;
}

CMPIStatus testAssociationCleanup(CMPIAssociationMI *, const CMPIContext *, CMPIBoolean) {
    CMReturn(CMPI_RC_OK);
}

CMPIStatus testAssociators(CMPIAssociationMI *, const CMPIContext *, const CMPIResult *rslt,
                           const CMPIObjectPath *op, const char *, const char *, const char *,
                           const char *, const char **props) {
    CMReturnInstance(rslt, instanceOf(op, "linked", props, 1));
    CMReturnDone(rslt);
    CMReturn(CMPI_RC_OK);
}

CMPIStatus testAssociatorNames(CMPIAssociationMI *, const CMPIContext *, const CMPIResult *rslt,
                               const CMPIObjectPath *op, const char *, const char *, const char *,
                               const char *) {
    CMReturnObjectPath(rslt, pathOf(op, "linked"));
    CMReturnDone(rslt);
    CMReturn(CMPI_RC_OK);
}

CMPIStatus testReferences(CMPIAssociationMI *, const CMPIContext *, const CMPIResult *rslt,
                          const CMPIObjectPath *op, const char *, const char *, const char **) {
    CMReturnInstance(rslt, CMNewInstance(gBroker, linkPath(op), nullptr));
    CMReturnDone(rslt);
    CMReturn(CMPI_RC_OK);
}

CMPIStatus testReferenceNames(CMPIAssociationMI *, const CMPIContext *, const CMPIResult *rslt,
                              const CMPIObjectPath *op, const char *, const char *) {
    CMReturnObjectPath(rslt, linkPath(op));
    CMReturnDone(rslt);
    CMReturn(CMPI_RC_OK);
}

CMPIAssociationMIFT associationTable = {
    CMPICurrentVersion, CMPICurrentVersion,  "associationHostTest", testAssociationCleanup,
    testAssociators,    testAssociatorNames, testReferences,        testReferenceNames,
};
CMPIAssociationMI associationMI = {nullptr, &associationTable};

// ---- Method MI --------------------------------------------------------------

CMPIStatus testMethodCleanup(CMPIMethodMI *, const CMPIContext *, CMPIBoolean) {
    CMReturnWithChars(gBroker, CMPI_RC_NEVER_UNLOAD, "method side stays");
}

// Echo: Result = Text, and Text is the return value. Count: the number of
// arguments is returned, the name of the first one is the output First.
CMPIStatus testInvokeMethod(CMPIMethodMI *, const CMPIContext *, const CMPIResult *rslt,
                            const CMPIObjectPath *, const char *method, const CMPIArgs *in,
                            CMPIArgs *out) {
    CMPIStatus rc = {CMPI_RC_OK, nullptr};
    if (std::strcmp(method, "Echo") == 0) {
        CMPIData text = CMGetArg(in, "Text", &rc);
        if (rc.rc != CMPI_RC_OK)
            CMReturnWithChars(gBroker, CMPI_RC_ERR_INVALID_PARAMETER, "no Text");
        CMAddArg(out, "Result", &text.value.string, CMPI_string);
        CMReturnData(rslt, CMGetCharPtr(text.value.string), CMPI_chars);
        CMReturnDone(rslt);
        CMReturn(CMPI_RC_OK);
    }
    if (std::strcmp(method, "Count") == 0) {
        CMPIUint32 count = CMGetArgCount(in, nullptr);
        CMPIString *first = nullptr;
        CMGetArgAt(in, 0, &first, &rc);
        if (rc.rc == CMPI_RC_OK) CMAddArg(out, "First", &first, CMPI_string);
        CMReturnData(rslt, &count, CMPI_uint32);
        CMReturnDone(rslt);
        CMReturn(CMPI_RC_OK);
    }
    CMReturnWithChars(gBroker, CMPI_RC_ERR_METHOD_NOT_FOUND, "unknown method");
}

CMPIMethodMIFT methodTable = {
    CMPICurrentVersion, CMPICurrentVersion, "methodHostTest", testMethodCleanup, testInvokeMethod,
};
CMPIMethodMI methodMI = {nullptr, &methodTable};

template <class MI>
MI *hand(MI *mi, const CMPIBroker *broker) {
    gBroker = broker;
    return mi;
}

}  // namespace

// ---- Factories ----------------------------------------------------------------

CMPI_EXTERN_C CMPIInstanceMI *HostTest_Create_InstanceMI(const CMPIBroker *broker,
                                                         const CMPIContext *, CMPIStatus *) {
    return hand(&instanceMI, broker);
}
CMPI_EXTERN_C CMPIAssociationMI *HostTest_Create_AssociationMI(const CMPIBroker *broker,
                                                               const CMPIContext *, CMPIStatus *) {
    return hand(&associationMI, broker);
}
CMPI_EXTERN_C CMPIMethodMI *HostTest_Create_MethodMI(const CMPIBroker *broker, const CMPIContext *,
                                                     CMPIStatus *) {
    return hand(&methodMI, broker);
}

CMPI_EXTERN_C CMPIAssociationMI *NoInstance_Create_AssociationMI(const CMPIBroker *broker,
                                                                 const CMPIContext *,
                                                                 CMPIStatus *) {
    return hand(&associationMI, broker);
}
CMPI_EXTERN_C CMPIMethodMI *NoInstance_Create_MethodMI(const CMPIBroker *broker,
                                                       const CMPIContext *, CMPIStatus *) {
    return hand(&methodMI, broker);
}

CMPI_EXTERN_C CMPIInstanceMI *NullMI_Create_InstanceMI(const CMPIBroker *, const CMPIContext *,
                                                       CMPIStatus *) {
    return nullptr;
}

CMPI_EXTERN_C CMPIInstanceMI *BadStatus_Create_InstanceMI(const CMPIBroker *broker,
                                                          const CMPIContext *, CMPIStatus *rc) {
    CMSetStatusWithChars(broker, rc, CMPI_RC_ERR_FAILED, "not ready");
    return hand(&instanceMI, broker);
}

CMPI_EXTERN_C CMPIInstanceMI *Future_Create_InstanceMI(const CMPIBroker *broker,
                                                       const CMPIContext *, CMPIStatus *) {
    return hand(&futureMI, broker);
}
