// CIM operations over HTTP, the part behind the HTTP layer: one CIM-XML
// request body in, one answer out, run against the loaded provider.
//
// The intrinsic methods of the instance and association side go to the
// provider; the class operations are answered from the schema; an extrinsic
// METHODCALL goes to the provider's invokeMethod with its arguments typed and
// ordered by the schema, and comes back as RETURNVALUE (first) and the
// non-NULL output PARAMVALUEs. A CIM failure is an ERROR element with the
// provider's rc and message (or the standard text of the rc). Only the
// schema's namespace is served (compared without regard to case).
//
// handle() may run on many threads at once: each call works in a
// cmpihost::Request of its own, and the provider serialises the platform.
#pragma once

#include <string>
#include <string_view>

#include "host/cmpihost.h"
#include "schema/schema.h"
#include "server/xml_writer.h"

namespace zoneserver {

struct Answer {
    int http_status = 200;
    XmlText body;           // CIM-XML; empty for protocol errors
    std::string cim_error;  // the CIMError header of a protocol error
    std::string summary;    // one line for the request log
};

class CimXmlService {
  public:
    // host: the HOST of full instance paths in answers.
    CimXmlService(const cmpihost::Provider &provider, const zoneschema::Schema &schema,
                  std::string host);

    // Never throws. A body that isn't well-formed XML, or isn't a CIM-XML
    // request, is a protocol error (400, or 501 for versions and
    // multi-requests the server doesn't support); everything else gets a
    // CIM-XML answer. The CMPI objects of the request are gone by the time
    // it returns: only the answer's markup is left.
    Answer handle(std::string_view body) const;

  private:
    const cmpihost::Provider &provider_;
    const zoneschema::Schema &schema_;
    std::string host_;
};

}  // namespace zoneserver
