// Process-wide state of the simulated switch's platform operations: the
// messaging queue handle, the database of the current ZONE_SIM_DB, and the
// frame every operation runs its work in.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "sim/store.h"

namespace zonesim {

// The handle init_mts hands out; operations given any other queue answer
// kErrQueueNotOpen.
inline constexpr int kQueueHandle = 1;

// The database named by ZONE_SIM_DB now, opened on first use and reopened
// when the variable names another file. Null, with the code, when the file
// can't be opened or is refused (the reason goes to stderr once per file).
std::shared_ptr<Store> currentStore(int *code);

// Runs fn in one transaction of the current database (a write transaction
// when write is set) and answers its code; checks the queue first. No
// exception leaves: anything thrown is answered with kErrUnknown.
int withStore(int queue, bool write, FunctionRef<int(Store &)> fn);
// The same for the operations that take no queue.
int withStoreNoQueue(bool write, FunctionRef<int(Store &)> fn);

// Runs fn, answering kErrUnknown for anything it throws.
int guarded(FunctionRef<int()> fn);

// A request of the provider is what runs on one thread between mutex_lock()
// and mutex_unlock(). Its reads share one read transaction of the database
// (a session, store.h), which the request holds until it ends: an
// enumeration makes a query per VSAN or per zone, thousands in all. The
// builders ask for the switch's name for every path they make; inside a
// request it is read once and kept until the request ends. Outside a
// request every call is a transaction of its own and reads the name anew.
void beginRequest();
void endRequest();
// The switch's name as getCSName hands it out; 0 or the simulator code.
int switchNameOfRequest(std::string *name);
// The name the request on this thread has already read, null when none has
// (or no request runs). It stays as it is until this thread's next request
// reads the name again.
const std::string *knownSwitchNameOfRequest();

}  // namespace zonesim
