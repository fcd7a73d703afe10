// The IPARAMVALUEs of an intrinsic method call.
#include <cstring>

#include "server/cim_status.h"
#include "server/operations.h"

namespace zoneserver::ops {

namespace {

bool same(std::string_view a, std::string_view b) {
    return zoneschema::same_name(a, b);
}

[[noreturn]] void refuse(std::string_view param, const std::string &reason) {
    throw CimError(kCimInvalidParameter, std::string(param) + ": " + reason);
}

// The first child element, skipping text and comments.
pugi::xml_node first_element(pugi::xml_node node) {
    for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling())
        if (child.type() == pugi::node_element) return child;
    return {};
}

}  // namespace

void Params::add(pugi::xml_node iparamvalue) {
    const std::string name = iparamvalue.attribute("NAME").value();
    for (auto &[known, node] : items_) {
        if (same(known, name)) {
            node = iparamvalue;
            return;
        }
    }
    items_.emplace_back(name, iparamvalue);
}

pugi::xml_node Params::find(std::string_view name) const {
    for (const auto &[known, node] : items_)
        if (same(known, name)) return node;
    return {};
}

std::optional<std::string> Params::class_name(std::string_view name) const {
    const pugi::xml_node param = find(name);
    if (!param) return std::nullopt;
    const pugi::xml_node value = first_element(param);
    if (!value) return std::nullopt;
    std::string text;
    if (std::strcmp(value.name(), "CLASSNAME") == 0)
        text = value.attribute("NAME").value();
    else if (std::strcmp(value.name(), "VALUE") == 0)
        text = value.child_value();
    else
        refuse(name, "a CLASSNAME is expected");
    if (text.empty()) return std::nullopt;
    return text;
}

std::string Params::required_class_name(std::string_view name) const {
    auto found = class_name(name);
    if (!found) refuse(name, "a class name is required");
    return *found;
}

bool Params::flag(std::string_view name, bool fallback) const {
    const auto value = text(name);
    if (!value) return fallback;
    if (same(*value, "true")) return true;
    if (same(*value, "false")) return false;
    refuse(name, "\"" + *value + "\" is neither TRUE nor FALSE");
}

std::optional<std::string> Params::text(std::string_view name) const {
    const pugi::xml_node param = find(name);
    if (!param) return std::nullopt;
    const pugi::xml_node value = first_element(param);
    if (!value || std::strcmp(value.name(), "VALUE.NULL") == 0) return std::nullopt;
    if (std::strcmp(value.name(), "VALUE") != 0) refuse(name, "a VALUE is expected");
    std::string text = value.child_value();
    if (text.empty()) return std::nullopt;
    return text;
}

std::optional<std::vector<std::string>> Params::property_list() const {
    const pugi::xml_node param = find("PropertyList");
    if (!param) return std::nullopt;
    const pugi::xml_node list = first_element(param);
    if (!list || std::strcmp(list.name(), "VALUE.NULL") == 0) return std::nullopt;
    if (std::strcmp(list.name(), "VALUE.ARRAY") != 0)
        refuse("PropertyList", "a VALUE.ARRAY is expected");
    std::vector<std::string> names;
    for (pugi::xml_node value : list.children("VALUE")) names.emplace_back(value.child_value());
    return names;
}

pugi::xml_node Params::required_child(std::string_view name, const char *element) const {
    const pugi::xml_node param = find(name);
    if (!param) refuse(name, "the parameter is required");
    const pugi::xml_node value = first_element(param);
    if (!value || std::strcmp(value.name(), element) != 0)
        refuse(name, std::string("a ") + element + " is expected");
    return value;
}

}  // namespace zoneserver::ops
