#include "server/cimxml_service.h"

#include <pugixml.hpp>

#include <array>
#include <exception>
#include <utility>

#include "server/cim_status.h"
#include "server/operations.h"

namespace zoneserver {

namespace {

struct IntrinsicOperation {
    std::string_view name;
    ops::Handler handler;
    // The IPARAMVALUEs it accepts; any other is CIM_ERR_INVALID_PARAMETER.
    std::array<std::string_view, 8> parameters;
};

static constexpr IntrinsicOperation kIntrinsicOperations[] = {
    {"EnumerateInstanceNames", ops::enumerate_instance_names, {"ClassName"}},
    {"EnumerateInstances",
     ops::enumerate_instances,
     {"ClassName", "LocalOnly", "DeepInheritance", "IncludeQualifiers", "IncludeClassOrigin",
      "PropertyList"}},
    {"GetInstance",
     ops::get_instance,
     {"InstanceName", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin", "PropertyList"}},
    {"DeleteInstance", ops::delete_instance, {"InstanceName"}},
    {"CreateInstance", ops::create_instance, {"NewInstance"}},
    {"ModifyInstance",
     ops::modify_instance,
     {"ModifiedInstance", "IncludeQualifiers", "PropertyList"}},
    {"ExecQuery", ops::exec_query, {"QueryLanguage", "Query"}},
    {"Associators",
     ops::associators,
     {"ObjectName", "AssocClass", "ResultClass", "Role", "ResultRole", "IncludeQualifiers",
      "IncludeClassOrigin", "PropertyList"}},
    {"AssociatorNames",
     ops::associator_names,
     {"ObjectName", "AssocClass", "ResultClass", "Role", "ResultRole"}},
    {"References",
     ops::references,
     {"ObjectName", "ResultClass", "Role", "IncludeQualifiers", "IncludeClassOrigin",
      "PropertyList"}},
    {"ReferenceNames", ops::reference_names, {"ObjectName", "ResultClass", "Role"}},
    {"GetClass",
     ops::get_class,
     {"ClassName", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin", "PropertyList"}},
    {"EnumerateClasses",
     ops::enumerate_classes,
     {"ClassName", "DeepInheritance", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin"}},
    {"EnumerateClassNames", ops::enumerate_class_names, {"ClassName", "DeepInheritance"}},
};

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n";

bool same(std::string_view a, std::string_view b) {
    return zoneschema::same_name(a, b);
}

const IntrinsicOperation *find_operation(std::string_view name) {
    for (const IntrinsicOperation &op : kIntrinsicOperations)
        if (same(op.name, name)) return &op;
    return nullptr;
}

bool accepts(const IntrinsicOperation &op, std::string_view param) {
    for (std::string_view known : op.parameters)
        if (!known.empty() && same(known, param)) return true;
    return false;
}

// ---- The envelope --------------------------------------------------------------

struct Envelope {
    std::string message_id;
    pugi::xml_node call;  // IMETHODCALL or METHODCALL
};

[[noreturn]] void not_valid(const std::string &reason) {
    throw ProtocolError(400, "request-not-valid", reason);
}

void check_version(pugi::xml_node node, const char *attribute, std::string_view major,
                   const char *unsupported) {
    const std::string_view version = node.attribute(attribute).value();
    if (version.empty()) not_valid(std::string(node.name()) + " without " + attribute);
    if (version.substr(0, major.size()) != major)
        throw ProtocolError(
            501, unsupported,
            std::string(attribute) + " " + std::string(version) + " is not supported");
}

Envelope read_envelope(const pugi::xml_document &doc) {
    const pugi::xml_node root = doc.document_element();
    if (std::string_view(root.name()) != "CIM") not_valid("the document is no CIM element");
    check_version(root, "CIMVERSION", "2.", "unsupported-cim-version");
    check_version(root, "DTDVERSION", "2.", "unsupported-dtd-version");
    const pugi::xml_node message = root.child("MESSAGE");
    if (!message) not_valid("CIM without MESSAGE");
    if (!message.attribute("ID")) not_valid("MESSAGE without ID");
    check_version(message, "PROTOCOLVERSION", "1.", "unsupported-protocol-version");
    if (message.child("MULTIREQ"))
        throw ProtocolError(501, "multiple-requests-unsupported", "MULTIREQ is not supported");
    const pugi::xml_node request = message.child("SIMPLEREQ");
    if (!request) not_valid("MESSAGE without SIMPLEREQ");
    pugi::xml_node call = request.child("IMETHODCALL");
    if (!call) call = request.child("METHODCALL");
    if (!call) not_valid("SIMPLEREQ without IMETHODCALL or METHODCALL");
    if (call.attribute("NAME").value()[0] == '\0')
        not_valid(std::string(call.name()) + " without NAME");
    return {message.attribute("ID").value(), call};
}

void open_response(XmlWriter &out, const std::string &message_id) {
    out.raw(kDeclaration);
    out.open("CIM").attribute("CIMVERSION", "2.0").attribute("DTDVERSION", "2.0");
    out.open("MESSAGE").attribute("ID", message_id).attribute("PROTOCOLVERSION", "1.0");
    out.open("SIMPLERSP");
}

void write_error(XmlWriter &out, const CimError &error) {
    out.open("ERROR")
        .attribute("CODE", std::to_string(error.code()))
        .attribute("DESCRIPTION", error.description())
        .close();
}

// The namespace of a LOCALNAMESPACEPATH, as the schema spells it.
std::string served_namespace(const zoneschema::Schema &schema, pugi::xml_node local_namespace) {
    if (!local_namespace) throw CimError(kCimInvalidNamespace, "the request names no namespace");
    const std::string ns = namespace_path(local_namespace);
    if (!same(ns, schema.default_namespace()))
        throw CimError(kCimInvalidNamespace, "Invalid namespace " + ns);
    return schema.default_namespace();
}

// The class a call is about, for the request log.
std::string subject_of(pugi::xml_node call) {
    for (pugi::xml_node child = call.first_child(); child; child = child.next_sibling()) {
        if (pugi::xml_node name = child.child("INSTANCENAME"))
            return name.attribute("CLASSNAME").value();
        if (pugi::xml_node name = child.child("CLASSNAME")) return name.attribute("NAME").value();
        if (pugi::xml_node name = child.child("INSTANCE"))
            return name.attribute("CLASSNAME").value();
    }
    return {};
}

// Runs one operation body and turns its failure into an ERROR element.
// Returns the outcome for the request log: "0", or the code and its text.
template <typename Body>
std::string answer_or_error(XmlWriter &out, Body body) {
    try {
        body();
        return "0";
    } catch (const CimError &error) {
        write_error(out, error);
        return std::to_string(error.code()) + " " + error.description();
    } catch (const std::exception &error) {
        const CimError failure(kCimFailed, std::string("internal error: ") + error.what());
        write_error(out, failure);
        return std::to_string(failure.code()) + " " + failure.description();
    }
}

// What every operation runs against.
struct Backend {
    const cmpihost::Provider &provider;
    const zoneschema::Schema &schema;
    const std::string &host;
};

void run_intrinsic(const Backend &backend, cmpihost::Request &request, pugi::xml_node call,
                   XmlWriter &out);
void run_extrinsic(const Backend &backend, cmpihost::Request &request, pugi::xml_node call,
                   XmlWriter &out);

}  // namespace

CimXmlService::CimXmlService(const cmpihost::Provider &provider, const zoneschema::Schema &schema,
                             std::string host)
    : provider_(provider), schema_(schema), host_(std::move(host)) {}

Answer CimXmlService::handle(std::string_view body) const {
    Answer answer;
    try {
        pugi::xml_document doc;
        const pugi::xml_parse_result parsed = doc.load_buffer(
            body.data(), body.size(), pugi::parse_default | pugi::parse_ws_pcdata_single,
            pugi::encoding_utf8);
        if (!parsed)
            throw ProtocolError(
                400, "request-not-well-formed",
                std::string(parsed.description()) + " at offset " + std::to_string(parsed.offset));
        const Envelope envelope = read_envelope(doc);
        const std::string name = envelope.call.attribute("NAME").value();
        const bool intrinsic = std::string_view(envelope.call.name()) == "IMETHODCALL";

        XmlWriter out;
        open_response(out, envelope.message_id);
        out.open(intrinsic ? "IMETHODRESPONSE" : "METHODRESPONSE").attribute("NAME", name);
        std::string outcome;
        {
            // Every CMPI object of this request lives until the answer is
            // encoded, and not a moment longer: the answer is sent without
            // them.
            cmpihost::Request request;
            outcome = answer_or_error(out, [&] {
                const Backend backend{provider_, schema_, host_};
                if (intrinsic)
                    run_intrinsic(backend, request, envelope.call, out);
                else
                    run_extrinsic(backend, request, envelope.call, out);
            });
        }
        answer.body = out.take_text();
        answer.summary = name + " " + subject_of(envelope.call) + " -> " + outcome;
    } catch (const ProtocolError &error) {
        answer.http_status = error.http_status();
        answer.cim_error = error.cim_error();
        answer.body = XmlText();
        answer.summary = "refused: " + error.cim_error() + " (" + error.what() + ")";
    } catch (const std::exception &error) {
        answer.http_status = 500;
        answer.body = XmlText();
        answer.summary = std::string("internal error: ") + error.what();
    }
    return answer;
}

namespace {

void run_intrinsic(const Backend &backend, cmpihost::Request &request, pugi::xml_node call,
                   XmlWriter &out) {
    const zoneschema::Schema &schema = backend.schema;
    const std::string name = call.attribute("NAME").value();
    const IntrinsicOperation *op = find_operation(name);
    if (op == nullptr)
        throw CimError(kCimNotSupported, "The requested operation is not supported: " + name);
    const std::string ns = served_namespace(schema, call.child("LOCALNAMESPACEPATH"));
    ops::Call context{backend.provider,    schema, request, ns,  Encoder(schema, ns, backend.host),
                      Decoder(schema, ns), {},     {},      true};
    for (pugi::xml_node param : call.children("IPARAMVALUE")) {
        const std::string_view param_name = param.attribute("NAME").value();
        if (!accepts(*op, param_name))
            throw CimError(kCimInvalidParameter,
                           std::string(op->name) + " has no parameter " + std::string(param_name));
        context.params.add(param);
    }
    op->handler(context);
    if (context.returns_value) out.open("IRETURNVALUE").append(std::move(context.result)).close();
}

void run_extrinsic(const Backend &backend, cmpihost::Request &request, pugi::xml_node call,
                   XmlWriter &out) {
    const zoneschema::Schema &schema = backend.schema;
    const std::string method = call.attribute("NAME").value();
    pugi::xml_node target_node = call.child("LOCALINSTANCEPATH");
    if (!target_node) target_node = call.child("LOCALCLASSPATH");
    if (!target_node)
        throw CimError(kCimInvalidParameter,
                       "METHODCALL without LOCALINSTANCEPATH or LOCALCLASSPATH");
    const std::string ns = served_namespace(schema, target_node.child("LOCALNAMESPACEPATH"));
    const Decoder decoder(schema, ns);
    const CMPIObjectPath *target = decoder.reference(target_node);
    const std::string class_name = cmpihost::text(target->ft->getClassName(target, nullptr));
    if (schema.find(class_name) == nullptr)
        throw CimError(kCimInvalidClass, "The specified class does not exist: " + class_name);

    CMPIArgs *in = decoder.method_arguments(target, method, call);
    CMPIArgs *outputs = request.newArgs();
    const std::size_t from = request.deliveries().size();
    ops::check(backend.provider.invokeMethod(request, target, method.c_str(), in, outputs));

    // The return value is the last value the provider handed over: its
    // dispatch hands the outcome after anything a handler delivered.
    const CMPIData *returned = nullptr;
    const auto &deliveries = request.deliveries();
    for (std::size_t i = from; i < deliveries.size(); ++i)
        if (deliveries[i].kind == cmpihost::Delivery::Kind::Data) returned = &deliveries[i].data;

    const Encoder encoder(schema, ns, backend.host);
    XmlWriter body;
    if (returned != nullptr) encoder.return_value(body, *returned);
    const unsigned int count = outputs->ft->getArgCount(outputs, nullptr);
    for (unsigned int i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData data = outputs->ft->getArgAt(outputs, i, &name, nullptr);
        encoder.param_value(body, cmpihost::text(name), data);
    }
    out.append(std::move(body));
}

}  // namespace

}  // namespace zoneserver
