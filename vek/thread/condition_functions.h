// The system's condition variables, which older systems lack.
#pragma once

#include "vek/base/shared_lib.h"
#include "vek/base/windows.h"

namespace vek::thread {

struct ConditionFunctions {
    decltype(&::InitializeConditionVariable) initialize;
    decltype(&::WakeConditionVariable) wakeOne;
    decltype(&::WakeAllConditionVariable) wakeAll;
    decltype(&::SleepConditionVariableCS) sleep;
};

// Looks the functions up, once per process; a later call does nothing. All of them have to be found
// for any to be used. The start-up object calls this, and otherwise the first Condition. Throws
// nothing that is a vek::Exception. Safe from any thread, but a second one doesn't wait for the
// look-up of the first: it finds the functions missing meanwhile.
void resolveConditionFunctions();

// The same look-up in another library than kernel32. A process that calls this first, with a
// library that lacks the functions, has all of its conditions emulated.
void resolveConditionFunctions(const SharedLib& library);

// Forgets the functions, so that the next look-up is done anew. Conditions that exist keep on
// working as they do. To be called when no other thread makes a condition.
void resetConditionFunctions();

// The functions, or null if the system lacks them or they were not looked up.
const ConditionFunctions* nativeConditions();

}  // namespace vek::thread
