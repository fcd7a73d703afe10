// The VSAN table, the domain manager and the switch's name.
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/zoning_platform.h"
#include "sim/fault_injection.h"
#include "sim/platform_state.h"
#include "sim/records.h"
#include "sim/sim_errors.h"
#include "sim/sim_records.h"

namespace zonesim {
namespace {

// Every field is written, the unused bytes of the texts zero; the entry's
// reserved bytes are left as they were. A walk over the VSAN table fills an
// entry for every VSAN, and clearing all two kilobytes of each cost more
// than the rest of the step.
void fillVsanEntry(VsanEntry *entry, const VsanInfo &info, const std::string &switch_name) {
    auto *sim = reinterpret_cast<SimVsanEntry *>(entry);
    std::memset(static_cast<void *>(sim), 0, offsetof(SimVsanEntry, reserved));
    sim->vsan = info.number;
    copyText(sim->name, info.name);
    copyText(sim->switch_name, switch_name);
    sim->has_domain = info.domain ? 1 : 0;
    sim->domain_id = info.domain ? info.domain->domain_id : 0;
}

void fillDomainEntry(DomainEntry *entry, int vsan, const DomainInfo &domain,
                     const std::string &switch_name) {
    auto *sim = reinterpret_cast<SimDomainEntry *>(entry);
    // The reserved bytes are left as they were, as in a VSAN entry.
    std::memset(static_cast<void *>(sim), 0, offsetof(SimDomainEntry, reserved));
    sim->vsan = vsan;
    sim->domain_id = domain.domain_id;
    std::memcpy(sim->switch_wwn, domain.switch_wwn.data(), 8);
    std::memcpy(sim->principal_wwn, domain.principal_wwn.data(), 8);
    copyText(sim->switch_name, switch_name);
}

int vsanEntry(int queue, int mode, VsanEntry *entry) {
    if (entry == nullptr || (mode != ZP_VSAN_NEXT && mode != ZP_VSAN_GIVEN))
        return kErrInvalidArgument;
    return withStore(queue, false, [&](Store &store) {
        VsanInfo scratch;
        const VsanInfo *found = store.findVsan(entry->vsan, mode == ZP_VSAN_NEXT, &scratch);
        if (found == nullptr) return mode == ZP_VSAN_NEXT ? kErrNotFound : kErrVsanNotConfigured;
        fillVsanEntry(entry, *found, store.switchName());
        return kOk;
    });
}

// The entries' reserved bytes are not cleared (see fillVsanEntry); an empty
// table is still an allocated (zeroed) entry with count 0.
int allVsanEntries(int queue, int *count, VsanEntry **entries) {
    if (count == nullptr || entries == nullptr) return kErrInvalidArgument;
    VsanEntry *array = nullptr;
    std::size_t filled = 0;
    int code = withStore(queue, false, [&](Store &store) {
        std::vector<VsanInfo> scratch;
        const std::vector<VsanInfo> &vsans = store.vsanTable(&scratch);
        const std::string &switch_name = store.switchName();
        array =
            static_cast<VsanEntry *>(vsans.empty() ? std::calloc(1, sizeof(VsanEntry))
                                                   : std::malloc(vsans.size() * sizeof(VsanEntry)));
        if (array == nullptr) return kErrUnknown;
        for (const VsanInfo &info : vsans) fillVsanEntry(&array[filled++], info, switch_name);
        return kOk;
    });
    if (code != kOk) {
        std::free(array);
        return code;
    }
    *count = static_cast<int>(filled);
    *entries = array;
    return kOk;
}

int domainEntry(int queue, int vsan, int mode, DomainEntry *entry) {
    if (entry == nullptr || mode != 1) return kErrInvalidArgument;
    return withStore(queue, false, [&](Store &store) {
        VsanInfo scratch;
        const VsanInfo *info = store.findVsan(vsan, false, &scratch);
        if (info == nullptr) return kErrVsanNotConfigured;
        if (!info->domain) return kErrNotFound;
        fillDomainEntry(entry, vsan, *info->domain, store.switchName());
        return kOk;
    });
}

}  // namespace
}  // namespace zonesim

using namespace zonesim;

#pragma GCC visibility push(default)
extern "C" {

int vsan_cim_get_vsanEntry(int queue, int mode, VsanEntry *entry) {
    if (injectFault(__func__)) return kInjectedFault;
    return vsanEntry(queue, mode, entry);
}

int vsan_cim_get_all_vsanEntry(int queue, int *count, VsanEntry **entries) {
    if (injectFault(__func__)) return kInjectedFault;
    return allVsanEntries(queue, count, entries);
}

int vsan_cim_check_vsan_index(int vsan) {
    if (injectFault(__func__)) return kInjectedFault;
    return withStoreNoQueue(false, [&](Store &store) {
        return store.vsan(vsan, nullptr) ? kOk : kErrVsanNotConfigured;
    });
}

int dm_cim_get_dmEntry(int queue, int vsan, int mode, DomainEntry *entry) {
    if (injectFault(__func__)) return kInjectedFault;
    return domainEntry(queue, vsan, mode, entry);
}

// The text stays valid until the next getCSName on the same thread. Inside a
// request (platform_state.h) the name is read once per request, and handed
// out as the request keeps it: the builders ask for every path they make.
const char *getCSName(void) {
    if (const std::string *known = knownSwitchNameOfRequest()) return known->c_str();
    // Declared past the request's answer: its first-use check costs a
    // thread-local lookup of its own, and builders ask for every path.
    thread_local std::string name;
    try {
        std::string found;
        int code = switchNameOfRequest(&found);
        name = code == kOk ? found : std::string(Store::kDefaultSwitchName);
    } catch (...) {
        return Store::kDefaultSwitchName;
    }
    return name.c_str();
}

}  // extern "C"
#pragma GCC visibility pop
