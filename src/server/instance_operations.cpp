// The intrinsic operations on instances and associations, answered by the
// provider.
//
// Classes and the hierarchy. The provider serves instances of its own
// VORNA_ classes; a request naming one of their CIM_ superclasses is served
// by those subclasses, as a CIM object manager does with its class
// hierarchy: an enumeration asks the provider once per served subclass, and
// a path of a superclass is resolved to the subclass that has the instance
// before the provider sees it. An association filter naming a superclass of
// the served association classes is asked once per served association class.
// A class the schema doesn't know is refused with CIM_ERR_INVALID_CLASS.
#include <cctype>
#include <set>
#include <string>
#include <vector>

#include "server/cim_status.h"
#include "server/operations.h"

namespace zoneserver::ops {

namespace {

using zoneschema::Class;
using Kind = cmpihost::Delivery::Kind;

std::string class_of(const CMPIObjectPath *path) {
    return cmpihost::text(path->ft->getClassName(path, nullptr));
}

const Class &known_class(const Call &call, const std::string &name) {
    const Class *cls = call.schema.find(name);
    if (cls == nullptr)
        throw CimError(kCimInvalidClass,
                       "The specified class does not exist: " + name + " in " + call.ns);
    return *cls;
}

// Classes whose instances answer a request naming cls: itself when the
// provider serves it, then its served subclasses.
std::vector<const Class *> serving_classes(const zoneschema::Schema &schema, const Class &cls) {
    std::vector<const Class *> serving;
    if (cls.provider.instance) serving.push_back(&cls);
    for (const Class *sub : schema.subclasses(cls.name))
        if (sub->provider.instance) serving.push_back(sub);
    return serving;
}

CMPIObjectPath *class_path(const Call &call, const std::string &class_name) {
    CMPIObjectPath *path = cmpihost::broker()->eft->newObjectPath(
        cmpihost::broker(), call.ns.c_str(), class_name.c_str(), nullptr);
    if (path == nullptr) throw CimError(kCimFailed, "can't make an object path");
    return path;
}

CMPIObjectPath *with_class(const CMPIObjectPath *path, const std::string &class_name) {
    CMPIObjectPath *copy = path->ft->clone(path, nullptr);
    if (copy == nullptr) throw CimError(kCimFailed, "can't copy an object path");
    copy->ft->setClassName(copy, class_name.c_str());
    return copy;
}

// The first instance delivered since index from, or null.
const CMPIInstance *first_instance(const Call &call, std::size_t from) {
    const auto &deliveries = call.request.deliveries();
    for (std::size_t i = from; i < deliveries.size(); ++i)
        if (deliveries[i].kind == Kind::Instance) return deliveries[i].instance;
    return nullptr;
}

// Reading a CMPI object makes new broker objects (the path of an instance,
// the names of its properties and keys, ...). Made in the call's request
// they would stay until the whole answer is encoded, as many again as the
// provider's own objects; so the deliveries are read in batches, each in a
// scratch request of its own that takes those objects and drops them when
// the batch is encoded. What visit keeps must not point into them.
constexpr std::size_t kScratchBatch = 64;

template <typename Visit>
void for_each_delivery(const Call &call, std::size_t from, Kind kind, Visit visit) {
    const auto &deliveries = call.request.deliveries();
    std::size_t i = from;
    while (i < deliveries.size()) {
        const cmpihost::Request scratch;
        for (std::size_t visited = 0; i < deliveries.size() && visited < kScratchBatch; ++i) {
            if (deliveries[i].kind != kind) continue;
            visit(deliveries[i]);
            ++visited;
        }
    }
}

template <typename Visit>
void for_each_instance(const Call &call, std::size_t from, Visit visit) {
    for_each_delivery(call, from, Kind::Instance,
                      [&](const cmpihost::Delivery &delivery) { visit(delivery.instance); });
}

template <typename Visit>
void for_each_path(const Call &call, std::size_t from, Visit visit) {
    for_each_delivery(call, from, Kind::ObjectPath,
                      [&](const cmpihost::Delivery &delivery) { visit(delivery.path); });
}

struct Fetched {
    const CMPIObjectPath *path;  // as the provider serves it
    const CMPIInstance *instance;
};

// One getInstance; the instance, or the provider's failure as a CimError.
Fetched get_one(Call &call, const CMPIObjectPath *path, const char **props) {
    const std::size_t from = call.request.deliveries().size();
    check(call.provider.getInstance(call.request, path, props));
    const CMPIInstance *instance = first_instance(call, from);
    if (instance == nullptr) throw CimError(kCimNotFound);
    return {path, instance};
}

// The instance a path names: from the provider directly for a class it
// serves, otherwise from the first served subclass that has it. Throws the
// provider's first failure, or CIM_ERR_NOT_FOUND when nothing serves the
// class.
Fetched fetch(Call &call, const CMPIObjectPath *path, const char **props) {
    const Class &cls = known_class(call, class_of(path));
    if (cls.provider.instance) return get_one(call, path, props);
    std::optional<CimError> first_failure;
    for (const Class *serving : serving_classes(call.schema, cls)) {
        try {
            return get_one(call, with_class(path, serving->name), props);
        } catch (const CimError &failure) {
            if (!first_failure) first_failure = failure;
        }
    }
    if (first_failure) throw *first_failure;
    throw CimError(kCimNotFound);
}

// The path to hand to the provider for a path the client sent: itself for a
// served class or a class without served subclasses, else the path of the
// subclass that has the instance.
const CMPIObjectPath *concrete_path(Call &call, const CMPIObjectPath *path) {
    const Class &cls = known_class(call, class_of(path));
    if (cls.provider.instance || serving_classes(call.schema, cls).empty()) return path;
    return fetch(call, path, nullptr).path;
}

const CMPIObjectPath *instance_name_param(Call &call, std::string_view param) {
    return call.decoder.instance_name(call.params.required_child(param, "INSTANCENAME"), call.ns);
}

// ---- Associations -----------------------------------------------------------------

enum class AssociationOperation { Associators, AssociatorNames, References, ReferenceNames };

bool names_only(AssociationOperation op) {
    return op == AssociationOperation::AssociatorNames ||
           op == AssociationOperation::ReferenceNames;
}

bool associator_side(AssociationOperation op) {
    return op == AssociationOperation::Associators || op == AssociationOperation::AssociatorNames;
}

// The association-class filters to ask the provider with: the filter as
// given when it is absent, unknown to the schema or served itself; else one
// per served association class below it (none: nothing can match).
std::vector<std::optional<std::string>> association_filters(
    const zoneschema::Schema &schema, const std::optional<std::string> &filter) {
    if (!filter) return {std::nullopt};
    const Class *cls = schema.find(*filter);
    if (cls == nullptr || cls->provider.association) return {filter};
    std::vector<std::optional<std::string>> filters;
    for (const Class *sub : schema.subclasses(cls->name))
        if (sub->provider.association) filters.emplace_back(sub->name);
    return filters;
}

const char *or_null(const std::optional<std::string> &text) {
    return text ? text->c_str() : nullptr;
}

// The source of an association operation: an instance path. A class (a
// CLASSNAME, or an INSTANCENAME without keys) is not served.
const CMPIObjectPath *association_source(Call &call) {
    const pugi::xml_node param = call.params.find("ObjectName");
    if (!param) throw CimError(kCimInvalidParameter, "ObjectName is required");
    const pugi::xml_node name = param.child("INSTANCENAME");
    const bool keyless = name && !name.child("KEYBINDING") && !name.child("KEYVALUE");
    if (!name || keyless)
        throw CimError(kCimNotSupported, "association operations on classes are not supported");
    const CMPIObjectPath *source = call.decoder.instance_name(name, call.ns);
    return concrete_path(call, source);
}

cmpihost::Status run_association(Call &call, AssociationOperation op, const CMPIObjectPath *source,
                                 const std::optional<std::string> &association_class,
                                 const char **props) {
    const auto result_class = call.params.class_name("ResultClass");
    const auto role = call.params.text("Role");
    const auto result_role = call.params.text("ResultRole");
    switch (op) {
        case AssociationOperation::Associators:
            return call.provider.associators(call.request, source, or_null(association_class),
                                             or_null(result_class), or_null(role),
                                             or_null(result_role), props);
        case AssociationOperation::AssociatorNames:
            return call.provider.associatorNames(call.request, source, or_null(association_class),
                                                 or_null(result_class), or_null(role),
                                                 or_null(result_role));
        case AssociationOperation::References:
            return call.provider.references(call.request, source, or_null(association_class),
                                            or_null(role), props);
        case AssociationOperation::ReferenceNames:
            return call.provider.referenceNames(call.request, source, or_null(association_class),
                                                or_null(role));
    }
    return {CMPI_RC_ERR_FAILED, std::nullopt};
}

void association_operation(Call &call, AssociationOperation op) {
    const CMPIObjectPath *source = association_source(call);
    // The association class is AssocClass on the associator side and
    // ResultClass on the reference side.
    const auto filter = call.params.class_name(associator_side(op) ? "AssocClass" : "ResultClass");
    const auto filters = association_filters(call.schema, filter);
    PropertyFilter properties(names_only(op) ? std::nullopt : call.params.property_list());

    std::set<std::string> seen;  // several filters may reach one object twice
    const bool deduplicate = filters.size() > 1;
    for (const auto &association_class : filters) {
        const std::size_t from = call.request.deliveries().size();
        check(run_association(call, op, source, association_class, properties.cmpi_list()));
        if (names_only(op)) {
            for_each_path(call, from, [&](const CMPIObjectPath *path) {
                if (deduplicate && !seen.insert(cmpihost::pathToString(path)).second) return;
                call.encoder.object_path(call.result, path);
            });
        } else {
            for_each_instance(call, from, [&](const CMPIInstance *instance) {
                const CMPIObjectPath *path = instance->ft->getObjectPath(instance, nullptr);
                if (deduplicate && !seen.insert(cmpihost::pathToString(path)).second) return;
                call.encoder.object_with_path(call.result, instance, properties);
            });
        }
    }
}

// The class a WQL/CQL-like query selects from: the word after FROM.
std::string query_class(std::string_view query) {
    std::string lowered(query);
    for (char &c : lowered) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    const std::size_t from = lowered.find(" from ");
    if (from == std::string::npos) return {};
    std::size_t start = from + 6;
    while (start < query.size() && query[start] == ' ') ++start;
    std::size_t end = start;
    while (end < query.size() &&
           (std::isalnum(static_cast<unsigned char>(query[end])) || query[end] == '_'))
        ++end;
    return std::string(query.substr(start, end - start));
}

}  // namespace

void check(const cmpihost::Status &status) {
    if (status.rc == CMPI_RC_OK) return;
    std::optional<std::string> message = status.message;
    if (message && message->empty()) message.reset();
    throw CimError(static_cast<int>(status.rc), message);
}

void enumerate_instance_names(Call &call) {
    const Class &cls = known_class(call, call.params.required_class_name("ClassName"));
    for (const Class *serving : serving_classes(call.schema, cls)) {
        const std::size_t from = call.request.deliveries().size();
        check(call.provider.enumInstanceNames(call.request, class_path(call, serving->name)));
        for_each_path(call, from, [&](const CMPIObjectPath *path) {
            call.encoder.instance_name(call.result, path);
        });
    }
}

void enumerate_instances(Call &call) {
    const Class &cls = known_class(call, call.params.required_class_name("ClassName"));
    PropertyFilter properties(call.params.property_list());
    for (const Class *serving : serving_classes(call.schema, cls)) {
        const std::size_t from = call.request.deliveries().size();
        check(call.provider.enumInstances(call.request, class_path(call, serving->name),
                                          properties.cmpi_list()));
        for_each_instance(call, from, [&](const CMPIInstance *instance) {
            call.encoder.named_instance(call.result, instance, properties);
        });
    }
}

void get_instance(Call &call) {
    const CMPIObjectPath *path = instance_name_param(call, "InstanceName");
    PropertyFilter properties(call.params.property_list());
    const Fetched fetched = fetch(call, path, properties.cmpi_list());
    call.encoder.instance(call.result, fetched.instance, properties);
}

void delete_instance(Call &call) {
    const CMPIObjectPath *path = concrete_path(call, instance_name_param(call, "InstanceName"));
    check(call.provider.deleteInstance(call.request, path));
    call.returns_value = false;
}

void create_instance(Call &call) {
    const pugi::xml_node node = call.params.required_child("NewInstance", "INSTANCE");
    known_class(call, node.attribute("CLASSNAME").value());
    const CMPIInstance *instance = call.decoder.instance(node, nullptr);
    const CMPIObjectPath *path = instance->ft->getObjectPath(instance, nullptr);
    const std::size_t from = call.request.deliveries().size();
    check(call.provider.createInstance(call.request, path, instance));
    const CMPIObjectPath *created = path;
    for_each_path(call, from, [&](const CMPIObjectPath *delivered) {
        if (created == path) created = delivered;
    });
    call.encoder.instance_name(call.result, created);
}

void modify_instance(Call &call) {
    const pugi::xml_node node =
        call.params.required_child("ModifiedInstance", "VALUE.NAMEDINSTANCE");
    const pugi::xml_node name = node.child("INSTANCENAME");
    const pugi::xml_node body = node.child("INSTANCE");
    if (!name || !body)
        throw CimError(kCimInvalidParameter, "ModifiedInstance needs INSTANCENAME and INSTANCE");
    const CMPIObjectPath *path = call.decoder.instance_name(name, call.ns);
    known_class(call, class_of(path));
    CMPIInstance *instance = call.decoder.instance(body, path);
    PropertyFilter properties(call.params.property_list());
    check(call.provider.modifyInstance(call.request, path, instance, properties.cmpi_list()));
    call.returns_value = false;
}

void exec_query(Call &call) {
    const auto language = call.params.text("QueryLanguage");
    const auto query = call.params.text("Query");
    if (!language || !query)
        throw CimError(kCimInvalidParameter, "ExecQuery needs QueryLanguage and Query");
    const CMPIObjectPath *path = class_path(call, query_class(*query));
    const std::size_t from = call.request.deliveries().size();
    check(call.provider.execQuery(call.request, path, query->c_str(), language->c_str()));
    for_each_instance(call, from, [&](const CMPIInstance *instance) {
        call.encoder.object_with_path(call.result, instance, PropertyFilter());
    });
}

void associators(Call &call) {
    association_operation(call, AssociationOperation::Associators);
}

void associator_names(Call &call) {
    association_operation(call, AssociationOperation::AssociatorNames);
}

void references(Call &call) {
    association_operation(call, AssociationOperation::References);
}

void reference_names(Call &call) {
    association_operation(call, AssociationOperation::ReferenceNames);
}

}  // namespace zoneserver::ops
