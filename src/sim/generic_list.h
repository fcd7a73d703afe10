// The generic list of the platform (cim_g_slist): record addresses owned by
// the list, released with it by cim_g_slist_destroy().
#pragma once

#include "platform/zoning_platform.h"

namespace zonesim {

// Appends an entry that the list then owns; false (entry not taken) when
// out of memory.
bool appendToList(cim_g_slist *list, void *entry);

}  // namespace zonesim
