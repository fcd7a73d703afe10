// What a Request holds: its arena, its result and context, and the record
// of what the provider handed to the result.
#pragma once

#include "host/arena.h"
#include "host/cmpihost.h"
#include "host/objects.h"

namespace cmpihost {

struct Request::Impl {
    detail::Arena arena;
    std::vector<Delivery> deliveries;
    int done = 0;
    CMPIResult *result = nullptr;
    CMPIContext *context = nullptr;
    detail::Arena *previous = nullptr;  // current on this thread before the request
};

}  // namespace cmpihost
