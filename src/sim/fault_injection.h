// Test mode of the simulated switch: a switch that stops answering in the
// middle of a request, so that hardening tests can check what the provider
// makes of every failure it may meet.
//
//   ZONE_SIM_FAIL_AT=k     the k-th counted call of a request (1-based) and
//                          every counted call after it fail
//   ZONE_SIM_FAIL_COUNT=n  only n calls fail, from the k-th on (a switch
//                          that hiccups and recovers); unset or 0: all
//
// A request is what runs between mutex_lock() and mutex_unlock():
// mutex_lock() reads both variables anew and starts the count at zero, so a
// test changes them between requests and the next request obeys. Unset,
// empty, 0 or unparsable: nothing fails (the normal switch).
//
// Counted calls, each failing the way the real service fails it:
//  - every query and command of the VSAN table, domain manager, zone server
//    and device-alias database (including the device-alias iterator's
//    calls and vsan_cim_check_vsan_index): they answer kInjectedFault (106,
//    "Zoning database busy") before doing anything, write that code through
//    their error argument when they have one, and hand nothing back;
//  - every builder (*_build_instance, *_fill_reference,
//    association_class_build_instance_path): it answers null.
// Not counted: mutex_lock/unlock, init_mts, the pure conversions (InstanceID
// splitting, member types and values, WWN text, formatters, TLV packing),
// error texts, getCSName and the generic list helpers. They touch no
// switch service, and the builders use some of them internally.
//
// Each injected failure writes one line to standard error:
//   "zone switch simulator: injected fault at call <n>: <operation>"
// which is how a test learns that its request reached the k-th call.
#pragma once

#include "sim/sim_errors.h"

namespace zonesim {

inline constexpr int kInjectedFault = kErrDatabaseBusy;

// Called by mutex_lock(): reads the plan from the environment and starts
// the count of the new request.
void beginFaultRequest();

// Counts one call of the named operation; true when the test mode wants it
// to fail (the standard error line is then written).
bool injectFault(const char *operation);

}  // namespace zonesim
