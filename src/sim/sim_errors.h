// Error codes of the simulated switch, as its commands hand them back
// through their error out-argument (and as most operations return them).
// syserr2str() and syserr_format() give the text of each; any other code
// reads "Unknown error".
//
//   code  text
//   ----  --------------------------------------------------------------
//     -1  Unknown error
//      4  Object already present
//     24  Operation not supported
//    100  Object not found
//    101  Invalid name
//    102  VSAN not configured
//    103  Active zoning database is read-only
//    104  Member already present
//    105  Capacity exhausted
//    106  Zoning database busy
//    107  Not a zone switch database
//    108  Invalid argument
//    109  Messaging queue not open
//    110  No pending device-alias change
//    111  Zone set not active
//    112  Zoning database storage failure
//
// 1-3 and 21-23 are left alone: the provider gives those numbers meanings of
// its own, and a code passed through from here must not be read as one of
// them.
#pragma once

namespace zonesim {

inline constexpr int kOk = 0;
inline constexpr int kErrUnknown = -1;
inline constexpr int kErrAlreadyPresent = 4;
inline constexpr int kErrNotSupported = 24;
inline constexpr int kErrNotFound = 100;
inline constexpr int kErrInvalidName = 101;
inline constexpr int kErrVsanNotConfigured = 102;
inline constexpr int kErrActiveReadOnly = 103;
inline constexpr int kErrMemberPresent = 104;
inline constexpr int kErrCapacity = 105;
inline constexpr int kErrDatabaseBusy = 106;
inline constexpr int kErrNotOurDatabase = 107;
inline constexpr int kErrInvalidArgument = 108;
inline constexpr int kErrQueueNotOpen = 109;
inline constexpr int kErrNothingPending = 110;
inline constexpr int kErrZoneSetNotActive = 111;
inline constexpr int kErrStorage = 112;

// The text of a code ("Unknown error" for codes not in the table).
const char *errorText(int code);

}  // namespace zonesim
