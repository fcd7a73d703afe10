#include "server/cim_status.h"

#include <string_view>

namespace zoneserver {

namespace {

struct CodeText {
    int code;
    std::string_view text;
};

static constexpr CodeText kStandardTexts[] = {
    {1, "A general error occurred that is not covered by a more specific error code"},
    {2, "Access to a CIM resource was not available to the client"},
    {3, "The target namespace does not exist"},
    {4, "One or more parameter values passed to the method were invalid"},
    {5, "The specified class does not exist"},
    {6, "The requested object could not be found"},
    {7, "The requested operation is not supported"},
    {8, "Operation cannot be carried out on this class since it has subclasses"},
    {9, "Operation cannot be carried out on this class since it has instances"},
    {10, "Operation cannot be carried out since the specified superclass does not exist"},
    {11, "Operation cannot be carried out because an object already exists"},
    {12, "The specified property does not exist"},
    {13, "The value supplied is incompatible with the type"},
    {14, "The query language is not recognized or supported"},
    {15, "The query is not valid for the specified query language"},
    {16, "The extrinsic method could not be executed"},
    {17, "The specified extrinsic method does not exist"},
};

}  // namespace

std::string standard_description(int code) {
    for (const CodeText &row : kStandardTexts)
        if (row.code == code) return std::string(row.text);
    return "CIM status code " + std::to_string(code);
}

CimError::CimError(int code, const std::optional<std::string> &description)
    : std::runtime_error(description.value_or(standard_description(code))),
      code_(code),
      description_(description.value_or(standard_description(code))) {}

ProtocolError::ProtocolError(int http_status, std::string cim_error, const std::string &reason)
    : std::runtime_error(reason), http_status_(http_status), cim_error_(std::move(cim_error)) {}

}  // namespace zoneserver
