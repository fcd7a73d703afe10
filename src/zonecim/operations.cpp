#include "zonecim/operations.h"

#include <cstdio>

#include "zonecim/marshal.h"
#include "zonecim/render.h"

namespace zonecim {

const std::vector<VerbInfo> &verbs() {
    static const std::vector<VerbInfo> table = {
        {"ein", Verb::EnumInstanceNames, "enumerate instance names of a class", false, false,
         false},
        {"ei", Verb::EnumInstances, "enumerate instances of a class", true, false, false},
        {"gi", Verb::GetInstance, "get one instance", true, false, false},
        {"di", Verb::DeleteInstance, "delete one instance", false, false, false},
        {"ain", Verb::AssociatorNames, "names of the objects associated with an instance", false,
         true, false},
        {"ai", Verb::Associators, "objects associated with an instance", true, true, false},
        {"rin", Verb::ReferenceNames, "names of the associations that refer to an instance", false,
         false, true},
        {"ri", Verb::References, "associations that refer to an instance", true, false, true},
        {"cm", Verb::CallMethod, "call a method of an instance", false, false, false},
    };
    return table;
}

namespace {

// A property list as CMPI takes it: names followed by a null, or no list.
class PropertyList {
  public:
    explicit PropertyList(const std::optional<std::vector<std::string>> &names) {
        if (!names) return;
        present_ = true;
        for (const auto &name : *names) pointers_.push_back(name.c_str());
        pointers_.push_back(nullptr);
    }
    const char **get() { return present_ ? pointers_.data() : nullptr; }

  private:
    bool present_ = false;
    std::vector<const char *> pointers_;
};

const char *or_null(const std::optional<std::string> &text) {
    return text ? text->c_str() : nullptr;
}

void report_failure(const cmpihost::Status &status) {
    std::fprintf(stderr, "*\n* zonecim: %s\n*\n",
                 status_text(status.rc, status.message.value_or("")).c_str());
}

void print_paths(const cmpihost::Request &request, OutputChannel &out) {
    for (const auto &delivery : request.deliveries()) {
        if (delivery.kind == cmpihost::Delivery::Kind::ObjectPath)
            out.line(path_text(delivery.path));
    }
}

void print_instances(const cmpihost::Request &request, OutputChannel &out) {
    for (const auto &delivery : request.deliveries()) {
        if (delivery.kind == cmpihost::Delivery::Kind::Instance)
            out.line(instance_text(delivery.instance));
    }
}

// gi shows the path that was asked for, as wbemcli does, with the
// properties of the instance that came back.
void print_requested_instance(const cmpihost::Request &request, const CMPIObjectPath *asked,
                              OutputChannel &out) {
    for (const auto &delivery : request.deliveries()) {
        if (delivery.kind == cmpihost::Delivery::Kind::Instance)
            out.line(path_text(asked) + " " + properties_text(delivery.instance));
    }
}

// The method's return value is the last value the provider handed over:
// the dispatch's text comes after anything a handler handed on its own.
const CMPIData *return_value(const cmpihost::Request &request) {
    const CMPIData *last = nullptr;
    for (const auto &delivery : request.deliveries()) {
        if (delivery.kind == cmpihost::Delivery::Kind::Data) last = &delivery.data;
    }
    return last;
}

}  // namespace

int run_operation(const ProviderLoader &load, const zoneschema::Schema &schema,
                  const Operation &operation, OutputChannel &out) {
    // Declared first so that it outlives the request and its objects.
    std::unique_ptr<cmpihost::Provider> loaded;
    cmpihost::Request request;
    const Marshaller marshaller(schema, schema.default_namespace());
    const CMPIObjectPath *path = marshaller.object_path(operation.path);
    std::optional<Marshaller::MethodCall> call;
    if (operation.verb == Verb::CallMethod)
        call = marshaller.method_call(path, operation.method_call);
    PropertyList properties(operation.properties);

    loaded = load();
    if (!loaded) return 1;
    const cmpihost::Provider &provider = *loaded;
    cmpihost::Status status;
    switch (operation.verb) {
        case Verb::EnumInstanceNames:
            status = provider.enumInstanceNames(request, path);
            if (status.rc == CMPI_RC_OK) print_paths(request, out);
            break;
        case Verb::EnumInstances:
            status = provider.enumInstances(request, path, properties.get());
            if (status.rc == CMPI_RC_OK) print_instances(request, out);
            break;
        case Verb::GetInstance:
            status = provider.getInstance(request, path, properties.get());
            if (status.rc == CMPI_RC_OK) print_requested_instance(request, path, out);
            break;
        case Verb::DeleteInstance:
            status = provider.deleteInstance(request, path);
            break;
        case Verb::AssociatorNames:
            status = provider.associatorNames(
                request, path, or_null(operation.assoc_class), or_null(operation.result_class),
                or_null(operation.role), or_null(operation.result_role));
            if (status.rc == CMPI_RC_OK) print_paths(request, out);
            break;
        case Verb::Associators:
            status = provider.associators(request, path, or_null(operation.assoc_class),
                                          or_null(operation.result_class), or_null(operation.role),
                                          or_null(operation.result_role), properties.get());
            if (status.rc == CMPI_RC_OK) print_instances(request, out);
            break;
        case Verb::ReferenceNames:
            status = provider.referenceNames(request, path, or_null(operation.result_class),
                                             or_null(operation.role));
            if (status.rc == CMPI_RC_OK) print_paths(request, out);
            break;
        case Verb::References:
            status = provider.references(request, path, or_null(operation.result_class),
                                         or_null(operation.role), properties.get());
            if (status.rc == CMPI_RC_OK) print_instances(request, out);
            break;
        case Verb::CallMethod: {
            CMPIArgs *outputs = request.newArgs();
            status = provider.invokeMethod(request, path, call->method.c_str(), call->in, outputs);
            if (status.rc == CMPI_RC_OK)
                out.line(method_text(path, call->method, return_value(request), outputs));
            break;
        }
    }
    if (status.rc == CMPI_RC_OK) return 0;
    report_failure(status);
    return 1;
}

}  // namespace zonecim
