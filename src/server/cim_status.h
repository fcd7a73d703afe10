// CIM status codes as the server reports them, and the two kinds of failure
// a request can meet: a CIM error (answered with HTTP 200 and an ERROR
// element) and a protocol error (answered with an HTTP error status and a
// CIMError header, without a CIM-XML body).
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

namespace zoneserver {

// The CIM status codes of CIM operations over HTTP; the numbers are those of
// CMPIrc, so a provider's rc goes on the wire unchanged.
enum CimCode : int {
    kCimFailed = 1,
    kCimAccessDenied = 2,
    kCimInvalidNamespace = 3,
    kCimInvalidParameter = 4,
    kCimInvalidClass = 5,
    kCimNotFound = 6,
    kCimNotSupported = 7,
    kCimAlreadyExists = 11,
    kCimMethodNotFound = 17,
};

// The standard description of a code; a generic one for codes beyond those
// CIM defines.
std::string standard_description(int code);

class CimError : public std::runtime_error {
  public:
    // Without a description the standard text of the code is sent.
    explicit CimError(int code, const std::optional<std::string> &description = std::nullopt);
    int code() const { return code_; }
    const std::string &description() const { return description_; }

  private:
    int code_;
    std::string description_;
};

class ProtocolError : public std::runtime_error {
  public:
    // http_status: 400 or 501; cim_error: the CIMError header token
    // ("request-not-well-formed", "request-not-valid", ...).
    ProtocolError(int http_status, std::string cim_error, const std::string &reason);
    int http_status() const { return http_status_; }
    const std::string &cim_error() const { return cim_error_; }

  private:
    int http_status_;
    std::string cim_error_;
};

}  // namespace zoneserver
