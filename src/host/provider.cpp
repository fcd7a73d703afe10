// The provider loader and the operations of its three MIs.
#include <dlfcn.h>

#include "host/request.h"

namespace cmpihost {

struct Provider::Impl {
    void *library = nullptr;
    std::string name;
    CMPIInstanceMI *instance = nullptr;
    CMPIAssociationMI *association = nullptr;
    CMPIMethodMI *method = nullptr;

    ~Impl() {
        if (library != nullptr) dlclose(library);
    }
};

namespace {

std::string statusText(const CMPIStatus &status) {
    std::string out = "rc " + std::to_string(static_cast<int>(status.rc));
    if (status.msg != nullptr) out += ": " + text(status.msg);
    return out;
}

// The context factories get: the process arena's, since an MI may keep it.
const CMPIContext *loadContext() {
    static const CMPIContext *context = detail::makeContext(detail::processArena());
    return context;
}

// Looks up <name>_Create_<kind>MI, calls it with a status preset to OK and
// checks what it gives: an MI with a table whose version the host serves.
template <class MI, class Factory>
MI *createMI(void *library, const std::string &name, const char *kind, std::string *error) {
    const std::string symbol = name + "_Create_" + kind + "MI";
    dlerror();
    void *address = dlsym(library, symbol.c_str());
    if (address == nullptr) {
        const char *why = dlerror();
        *error = symbol + " not found: " + (why ? why : "null symbol");
        return nullptr;
    }
    auto *factory = reinterpret_cast<Factory *>(address);
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    MI *mi = factory(broker(), loadContext(), &status);
    if (status.rc != CMPI_RC_OK) {
        *error = symbol + " failed: " + statusText(status);
        return nullptr;
    }
    if (mi == nullptr || mi->ft == nullptr) {
        *error = symbol + " returned no MI";
        return nullptr;
    }
    if (mi->ft->miVersion > CMPICurrentVersion) {
        *error = symbol + " needs CMPI version " + std::to_string(mi->ft->miVersion);
        return nullptr;
    }
    return mi;
}

Status statusOf(const CMPIStatus &status) {
    Status out;
    out.rc = status.rc;
    if (status.msg != nullptr) out.message = text(status.msg);
    return out;
}

Status missingSlot(const char *operation) {
    return Status{CMPI_RC_ERR_NOT_SUPPORTED, std::string("provider has no ") + operation};
}

// Runs one MI slot in the request: the request's arena is current on this
// thread for the call, so what the provider makes belongs to the request
// even when another request is current here.
template <auto Slot, class MI, class... Args>
Status run(const char *operation, MI *mi, Request &request, Args... args) {
    if (mi == nullptr || mi->ft == nullptr || mi->ft->*Slot == nullptr) {
        return missingSlot(operation);
    }
    detail::CurrentArena scope(request.impl().arena);
    const CMPIStatus status = (mi->ft->*Slot)(mi, request.context(), request.result(), args...);
    return statusOf(status);
}

}  // namespace

std::unique_ptr<Provider> Provider::load(const std::string &library, const std::string &name,
                                         std::string *error) {
    std::string ignored;
    std::string &why = error ? *error : ignored;
    auto impl = std::make_unique<Impl>();
    impl->name = name;
    impl->library = dlopen(library.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (impl->library == nullptr) {
        const char *reason = dlerror();
        why = reason ? reason : "dlopen failed on " + library;
        return nullptr;
    }
    impl->instance =
        createMI<CMPIInstanceMI, CMPIInstanceMIFactory>(impl->library, name, "Instance", &why);
    if (impl->instance == nullptr) return nullptr;
    impl->association = createMI<CMPIAssociationMI, CMPIAssociationMIFactory>(impl->library, name,
                                                                              "Association", &why);
    if (impl->association == nullptr) return nullptr;
    impl->method = createMI<CMPIMethodMI, CMPIMethodMIFactory>(impl->library, name, "Method", &why);
    if (impl->method == nullptr) return nullptr;
    return std::unique_ptr<Provider>(new Provider(std::move(impl)));
}

Provider::Provider(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

// Closes the library; cleanupAll(true) first is the caller's choice, as a
// CIM server decides when to tell a provider it goes away.
Provider::~Provider() = default;

CMPIInstanceMI *Provider::instanceMI() const {
    return impl_->instance;
}
CMPIAssociationMI *Provider::associationMI() const {
    return impl_->association;
}
CMPIMethodMI *Provider::methodMI() const {
    return impl_->method;
}

Status Provider::enumInstanceNames(Request &request, const CMPIObjectPath *op) const {
    return run<&CMPIInstanceMIFT::enumInstanceNames>("enumInstanceNames", impl_->instance, request,
                                                     op);
}

Status Provider::enumInstances(Request &request, const CMPIObjectPath *op,
                               const char **props) const {
    return run<&CMPIInstanceMIFT::enumInstances>("enumInstances", impl_->instance, request, op,
                                                 props);
}

Status Provider::getInstance(Request &request, const CMPIObjectPath *op, const char **props) const {
    return run<&CMPIInstanceMIFT::getInstance>("getInstance", impl_->instance, request, op, props);
}

Status Provider::createInstance(Request &request, const CMPIObjectPath *op,
                                const CMPIInstance *inst) const {
    return run<&CMPIInstanceMIFT::createInstance>("createInstance", impl_->instance, request, op,
                                                  inst);
}

Status Provider::modifyInstance(Request &request, const CMPIObjectPath *op,
                                const CMPIInstance *inst, const char **props) const {
    return run<&CMPIInstanceMIFT::modifyInstance>("modifyInstance", impl_->instance, request, op,
                                                  inst, props);
}

Status Provider::deleteInstance(Request &request, const CMPIObjectPath *op) const {
    return run<&CMPIInstanceMIFT::deleteInstance>("deleteInstance", impl_->instance, request, op);
}

Status Provider::execQuery(Request &request, const CMPIObjectPath *op, const char *query,
                           const char *lang) const {
    return run<&CMPIInstanceMIFT::execQuery>("execQuery", impl_->instance, request, op, query,
                                             lang);
}

Status Provider::associators(Request &request, const CMPIObjectPath *op, const char *assocClass,
                             const char *resultClass, const char *role, const char *resultRole,
                             const char **props) const {
    return run<&CMPIAssociationMIFT::associators>("associators", impl_->association, request, op,
                                                  assocClass, resultClass, role, resultRole, props);
}

Status Provider::associatorNames(Request &request, const CMPIObjectPath *op, const char *assocClass,
                                 const char *resultClass, const char *role,
                                 const char *resultRole) const {
    return run<&CMPIAssociationMIFT::associatorNames>("associatorNames", impl_->association,
                                                      request, op, assocClass, resultClass, role,
                                                      resultRole);
}

Status Provider::references(Request &request, const CMPIObjectPath *op, const char *resultClass,
                            const char *role, const char **props) const {
    return run<&CMPIAssociationMIFT::references>("references", impl_->association, request, op,
                                                 resultClass, role, props);
}

Status Provider::referenceNames(Request &request, const CMPIObjectPath *op, const char *resultClass,
                                const char *role) const {
    return run<&CMPIAssociationMIFT::referenceNames>("referenceNames", impl_->association, request,
                                                     op, resultClass, role);
}

Status Provider::invokeMethod(Request &request, const CMPIObjectPath *op, const char *method,
                              const CMPIArgs *in, CMPIArgs *out) const {
    return run<&CMPIMethodMIFT::invokeMethod>("invokeMethod", impl_->method, request, op, method,
                                              in, out);
}

// Every MI's cleanup, in the order the MIs were made; the first status that
// is not OK is the answer (all three run regardless).
Status Provider::cleanupAll(bool terminating) const {
    Request request;
    const CMPIBoolean flag = terminating ? 1 : 0;
    Status answer;
    auto note = [&answer](const CMPIStatus &status) {
        if (answer.rc == CMPI_RC_OK && status.rc != CMPI_RC_OK) answer = statusOf(status);
    };
    if (impl_->instance->ft->cleanup) {
        note(impl_->instance->ft->cleanup(impl_->instance, request.context(), flag));
    }
    if (impl_->association->ft->cleanup) {
        note(impl_->association->ft->cleanup(impl_->association, request.context(), flag));
    }
    if (impl_->method->ft->cleanup) {
        note(impl_->method->ft->cleanup(impl_->method, request.context(), flag));
    }
    return answer;
}

}  // namespace cmpihost
