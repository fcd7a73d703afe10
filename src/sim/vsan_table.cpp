// The VSAN table, the domain manager and the switch's name.
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

// Every field is written; the entry's reserved bytes and those after a
// text's NUL are left as the caller had them. A walk over the VSAN table
// fills an entry for every VSAN, and clearing its two kilobytes first cost
// more than the rest of the step.
void fillVsanEntry(VsanEntry *entry, const VsanInfo &info, const std::string &switch_name) {
    auto *sim = reinterpret_cast<SimVsanEntry *>(entry);
    sim->vsan = info.number;
    copyText(sim->name, info.name);
    copyText(sim->switch_name, switch_name);
    sim->has_domain = info.domain ? 1 : 0;
    sim->domain_id = info.domain ? info.domain->domain_id : 0;
}

void fillDomainEntry(DomainEntry *entry, int vsan, const DomainInfo &domain,
                     const std::string &switch_name) {
    auto *sim = reinterpret_cast<SimDomainEntry *>(entry);
    std::memset(sim, 0, sizeof *sim);
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

int allVsanEntries(int queue, int *count, VsanEntry **entries) {
    if (count == nullptr || entries == nullptr) return kErrInvalidArgument;
    std::vector<VsanInfo> vsans;
    std::string switch_name;
    int code = withStore(queue, false, [&](Store &store) {
        vsans = store.vsans();
        switch_name = store.switchName();
        return kOk;
    });
    if (code != kOk) return code;
    std::size_t n = vsans.empty() ? 1 : vsans.size();
    auto *array = static_cast<VsanEntry *>(std::calloc(n, sizeof(VsanEntry)));
    if (array == nullptr) return kErrUnknown;
    for (std::size_t i = 0; i < vsans.size(); ++i) fillVsanEntry(&array[i], vsans[i], switch_name);
    *count = static_cast<int>(vsans.size());
    *entries = array;
    return kOk;
}

int domainEntry(int queue, int vsan, int mode, DomainEntry *entry) {
    if (entry == nullptr || mode != 1) return kErrInvalidArgument;
    return withStore(queue, false, [&](Store &store) {
        VsanInfo info;
        if (!store.vsan(vsan, &info)) return kErrVsanNotConfigured;
        if (!info.domain) return kErrNotFound;
        fillDomainEntry(entry, vsan, *info.domain, store.switchName());
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
