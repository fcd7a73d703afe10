// Error texts of the simulated switch (the table is in sim_errors.h).
#include "sim/sim_errors.h"

#include "platform/zoning_platform.h"

namespace zonesim {

namespace {

struct ErrorText {
    int code;
    const char *text;
};

constexpr ErrorText kErrorTexts[] = {
    {kOk, "Success"},
    {kErrUnknown, "Unknown error"},
    {kErrAlreadyPresent, "Object already present"},
    {kErrNotSupported, "Operation not supported"},
    {kErrNotFound, "Object not found"},
    {kErrInvalidName, "Invalid name"},
    {kErrVsanNotConfigured, "VSAN not configured"},
    {kErrActiveReadOnly, "Active zoning database is read-only"},
    {kErrMemberPresent, "Member already present"},
    {kErrCapacity, "Capacity exhausted"},
    {kErrDatabaseBusy, "Zoning database busy"},
    {kErrNotOurDatabase, "Not a zone switch database"},
    {kErrInvalidArgument, "Invalid argument"},
    {kErrQueueNotOpen, "Messaging queue not open"},
    {kErrNothingPending, "No pending device-alias change"},
    {kErrZoneSetNotActive, "Zone set not active"},
    {kErrStorage, "Zoning database storage failure"},
};

}  // namespace

const char *errorText(int code) {
    for (const ErrorText &entry : kErrorTexts)
        if (entry.code == code) return entry.text;
    return "Unknown error";
}

}  // namespace zonesim

#pragma GCC visibility push(default)
extern "C" {

const char *syserr2str(int code) {
    return zonesim::errorText(code);
}

const char *syserr_format(int code) {
    return zonesim::errorText(code);
}

}  // extern "C"
#pragma GCC visibility pop
