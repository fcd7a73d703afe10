// Shared by the host tests: where the test provider library is, and small
// readers of CMPI data.
#pragma once

#include <cmpidt.h>
#include <cmpift.h>

#include <cstdlib>
#include <string>

#include "host/cmpihost.h"

namespace host_test {

// The build passes the test provider's path; a run outside the build tree
// may name it in CMPIHOST_TEST_PROVIDER instead.
inline std::string testProviderPath() {
    if (const char *path = std::getenv("CMPIHOST_TEST_PROVIDER")) return path;
#ifdef CMPIHOST_TEST_PROVIDER
    return CMPIHOST_TEST_PROVIDER;
#else
    return {};
#endif
}

inline CMPIStatus noStatus() {
    return CMPIStatus{CMPI_RC_ERR_FAILED, nullptr};
}

inline std::string str(const CMPIData &data) {
    return cmpihost::dataText(data);
}

}  // namespace host_test
