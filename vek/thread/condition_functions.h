// The system's condition variables, which older systems don't have.
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

// Looks the functions up, once per process; later calls do nothing. They are used only if all of
// them are found. Called by the start-up object, otherwise by the first Condition. Throws no
// vek::Exception. Thread-safe, but a second thread doesn't wait for the look-up of the first: until
// that is finished, nativeConditions returns null.
void resolveConditionFunctions();

// The same look-up in another library than kernel32. If a process calls this first, with a library
// that doesn't have the functions, all its conditions are emulated.
void resolveConditionFunctions(const SharedLib& library);

// Forgets the functions, so that the next call looks them up again. Existing conditions are not
// affected. No other thread may construct a condition at the same time.
void resetConditionFunctions();

// Returns the functions, or null if the system doesn't have them or they were not looked up.
const ConditionFunctions* nativeConditions();

}  // namespace vek::thread
