// The generic list (see generic_list.h).
#include "sim/generic_list.h"

#include <cstdlib>
#include <new>
#include <vector>

struct cim_g_slist {
    std::vector<void *> entries;
};

namespace zonesim {

bool appendToList(cim_g_slist *list, void *entry) {
    if (list == nullptr) return false;
    try {
        list->entries.push_back(entry);
        return true;
    } catch (...) {
        return false;
    }
}

}  // namespace zonesim

#pragma GCC visibility push(default)
extern "C" {

cim_g_slist *cim_g_slist_alloc(void) {
    return new (std::nothrow) cim_g_slist();
}

int cim_g_slist_length(cim_g_slist *list) {
    return list == nullptr ? 0 : static_cast<int>(list->entries.size());
}

void *cim_g_slist_nth_data(cim_g_slist *list, int n) {
    if (list == nullptr || n < 0 || static_cast<std::size_t>(n) >= list->entries.size())
        return nullptr;
    return list->entries[static_cast<std::size_t>(n)];
}

void cim_g_slist_destroy(cim_g_slist *list) {
    if (list == nullptr) return;
    for (void *entry : list->entries) std::free(entry);
    delete list;
}

}  // extern "C"
#pragma GCC visibility pop
