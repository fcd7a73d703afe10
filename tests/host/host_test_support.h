// Shared by the host tests: the broker, where the test provider library is,
// and small readers of CMPI data and statuses.
#pragma once

#include <cmpidt.h>
#include <cmpift.h>

#include <cstdlib>
#include <string>

#include "host/cmpihost.h"

namespace host_test {

inline const CMPIBroker *mb() {
    return cmpihost::broker();
}

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

// A status no broker function leaves behind, so a call that forgets to
// write its status shows.
inline CMPIStatus noStatus() {
    return CMPIStatus{CMPI_RC_ERR_FAILED, nullptr};
}

// The rc a call leaves in the CMPIStatus it is handed.
template <typename Call>
CMPIrc rcOf(Call call) {
    CMPIStatus rc = noStatus();
    call(&rc);
    return rc.rc;
}

inline std::string str(const CMPIData &data) {
    return cmpihost::dataText(data);
}

}  // namespace host_test
