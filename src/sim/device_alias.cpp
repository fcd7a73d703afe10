// The device-alias database: walks, lookups by pWWN, and changes staged in
// a commit context and applied by ddas_commit().
//
// Commit context: the caller sets the first field to 6 (change and commit in
// one session; any other value is refused). A create or remove call checks
// the change against the database, records it in the context's private
// bytes and changes nothing; ddas_commit() applies the recorded change in one
// transaction (checking it again) and clears the record. A change call
// always clears what the context held first, so a context whose change call
// failed commits nothing (kErrNothingPending).
//
// Iterators: the platform offers no release call, so each thread keeps at
// most one walk; the next walk on that thread replaces (and frees) it, and
// the last one is freed when the thread ends. An iterator that has been
// replaced is refused.
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/zoning_platform.h"
#include "sim/fault_injection.h"
#include "sim/member_types.h"
#include "sim/naming.h"
#include "sim/platform_state.h"
#include "sim/records.h"
#include "sim/sim_errors.h"

// The aliases are shared with the database's snapshot, which keeps them
// for as long as no alias changes.
struct ddas_iterator {
    std::shared_ptr<const std::vector<zonesim::DeviceAlias>> aliases;
    std::size_t next = 0;
};

namespace zonesim {
namespace {

constexpr int32_t kCommitSession = 6;
constexpr uint16_t kPwwnTlvType = 1;
constexpr uint32_t kStagedMagic = 0x44415331;  // "DAS1"

enum class StagedOperation : int32_t { None = 0, Create = 1, Remove = 2 };

// What a change call records in the context's private bytes.
struct StagedChange {
    uint32_t magic;
    StagedOperation operation;
    unsigned char pwwn[8];
    char name[ZP_DEVICE_ALIAS_NAME_LEN];
};
static_assert(sizeof(StagedChange) <= sizeof(DeviceAliasCommitContext::platform_private),
              "a staged change fits the commit context");

void writeStaged(DeviceAliasCommitContext *context, const StagedChange &change) {
    std::memcpy(context->platform_private, &change, sizeof change);
}

StagedChange readStaged(const DeviceAliasCommitContext *context) {
    StagedChange change;
    std::memcpy(&change, context->platform_private, sizeof change);
    if (change.magic != kStagedMagic) change.operation = StagedOperation::None;
    change.name[sizeof change.name - 1] = '\0';
    return change;
}

void clearStaged(DeviceAliasCommitContext *context) {
    StagedChange none{};
    none.magic = kStagedMagic;
    none.operation = StagedOperation::None;
    writeStaged(context, none);
}

thread_local std::unique_ptr<ddas_iterator> t_walk;

int openWalk(int queue, void **first, ddas_iterator **iterator) {
    if (iterator == nullptr) return kErrInvalidArgument;
    if (first != nullptr) *first = nullptr;
    auto walk = std::make_unique<ddas_iterator>();
    int code = withStore(queue, false, [&](Store &store) {
        walk->aliases = store.deviceAliasList();
        return kOk;
    });
    if (code != kOk) return code;
    t_walk = std::move(walk);
    *iterator = t_walk.get();
    return kOk;
}

bool isCurrentWalk(const ddas_iterator *iterator) {
    return iterator != nullptr && iterator == t_walk.get();
}

void fillEntry(DeviceAliasEntry *entry, const DeviceAlias &alias) {
    std::memset(entry, 0, sizeof *entry);
    copyText(entry->name, alias.name);
    std::memcpy(entry->pwwn, alias.pwwn.data(), alias.pwwn.size());
}

int aliasOfPwwn(int queue, uint64_t pwwn, char *name) {
    if (name == nullptr) return kErrInvalidArgument;
    Wwn wwn;
    std::memcpy(wwn.data(), &pwwn, wwn.size());  // memory order is the text's order
    DeviceAlias alias;
    int code = withStore(queue, false, [&](Store &store) {
        return store.deviceAliasByPwwn(wwn, &alias) ? kOk : kErrNotFound;
    });
    if (code == kOk) std::strncpy(name, alias.name.c_str(), ZP_DEVICE_ALIAS_NAME_LEN);
    return code;
}

// The pWWN carried by the caller's TLV array (one item of type 1, 8 bytes),
// sized as the caller sizes it.
bool pwwnFromTlv(const unsigned char *tlv, Wwn *pwwn) {
    std::size_t size = static_cast<uint16_t>(tlv_aligned_data_size_get(8)) + 4u;
    auto item = find_tlv(tlv, size, kPwwnTlvType);
    if (!item || item->length != pwwn->size()) return false;
    std::memcpy(pwwn->data(), item->value, pwwn->size());
    return true;
}

// Checks shared by the two change calls; clears the context first.
int beginChange(DeviceAliasCommitContext *context, const char *name) {
    if (context == nullptr) return kErrInvalidArgument;
    clearStaged(context);
    if (context->operation != kCommitSession) return kErrInvalidArgument;
    if (name == nullptr || !isValidName(name)) return kErrInvalidName;
    return kOk;
}

int stageCreate(int queue, const char *name, const unsigned char *tlv,
                DeviceAliasCommitContext *context) {
    if (int code = beginChange(context, name)) return code;
    DeviceAlias alias{name, {}};
    if (!pwwnFromTlv(tlv, &alias.pwwn)) return kErrInvalidArgument;
    int code =
        withStore(queue, false, [&](Store &store) { return store.checkNewDeviceAlias(alias); });
    if (code != kOk) return code;
    StagedChange change{};
    change.magic = kStagedMagic;
    change.operation = StagedOperation::Create;
    std::memcpy(change.pwwn, alias.pwwn.data(), sizeof change.pwwn);
    copyText(change.name, alias.name);
    writeStaged(context, change);
    return kOk;
}

int stageRemove(int queue, const char *name, DeviceAliasCommitContext *context) {
    if (int code = beginChange(context, name)) return code;
    int code = withStore(queue, false, [&](Store &store) {
        return store.deviceAliasByName(name, nullptr) ? kOk : kErrNotFound;
    });
    if (code != kOk) return code;
    StagedChange change{};
    change.magic = kStagedMagic;
    change.operation = StagedOperation::Remove;
    copyText(change.name, std::string(name));
    writeStaged(context, change);
    return kOk;
}

int commit(int queue, DeviceAliasCommitContext *context) {
    if (context == nullptr) return kErrInvalidArgument;
    StagedChange change = readStaged(context);
    if (change.operation != StagedOperation::Create && change.operation != StagedOperation::Remove)
        return kErrNothingPending;
    int code = withStore(queue, true, [&](Store &store) {
        if (change.operation == StagedOperation::Remove)
            return store.removeDeviceAlias(change.name);
        DeviceAlias alias{change.name, {}};
        std::memcpy(alias.pwwn.data(), change.pwwn, alias.pwwn.size());
        return store.addDeviceAlias(alias);
    });
    if (code == kOk) clearStaged(context);
    return code;
}

}  // namespace
}  // namespace zonesim

using namespace zonesim;

#pragma GCC visibility push(default)
extern "C" {

int ddas_api_get_all_device_alias_entries(int queue, void **first, ddas_iterator **iterator) {
    if (injectFault(__func__)) return kInjectedFault;
    return guarded([&] { return openWalk(queue, first, iterator); });
}

int ddas_api_iter_get_num_entries(ddas_iterator *iterator, int *count) {
    if (injectFault(__func__)) return kInjectedFault;
    if (!isCurrentWalk(iterator) || count == nullptr) return kErrInvalidArgument;
    *count = static_cast<int>(iterator->aliases->size());
    return kOk;
}

int ddas_api_iter_get_next_device_alias_entry(ddas_iterator *iterator, DeviceAliasEntry *entry) {
    if (injectFault(__func__)) return kInjectedFault;
    if (!isCurrentWalk(iterator) || entry == nullptr) return kErrInvalidArgument;
    if (iterator->next >= iterator->aliases->size()) return kErrNotFound;
    fillEntry(entry, (*iterator->aliases)[iterator->next++]);
    return kOk;
}

int ddas_get_device_alias_given_pwwn(int queue, uint64_t pwwn, char *name) {
    if (injectFault(__func__)) return kInjectedFault;
    return guarded([&] { return aliasOfPwwn(queue, pwwn, name); });
}

int ddas_create_device_alias_entry(int queue, const char *name, unsigned char *pwwn_tlv,
                                   DeviceAliasCommitContext *context, int /*flags*/,
                                   int /*reserved*/) {
    if (injectFault(__func__)) return kInjectedFault;
    return guarded([&] { return stageCreate(queue, name, pwwn_tlv, context); });
}

int ddas_remove_device_alias_entry(int queue, const char *name, DeviceAliasCommitContext *context,
                                   int /*flags*/) {
    if (injectFault(__func__)) return kInjectedFault;
    return guarded([&] { return stageRemove(queue, name, context); });
}

int ddas_commit(int queue, DeviceAliasCommitContext *context, int /*flags*/) {
    if (injectFault(__func__)) return kInjectedFault;
    return guarded([&] { return commit(queue, context); });
}

}  // extern "C"
#pragma GCC visibility pop
