// Finding the processes that a command is for.
#pragma once

#include <string>
#include <vector>

#include "tools/log_application/connection/process.h"
#include "tools/log_application/finding/selection.h"
#include "tools/log_application/program/failure.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

// What is said where only one process answers for this host, since there may be others behind it.
extern const char* const onlyOneVisible;

// The processes of `selection`, in the order of their names; those named by endpoint come first and
// aren't asked whether they are there. With `toChange`, and nothing that says which, there may be
// one only.
//
// Throws Failure: not done if nothing is found, wrong usage for several to change, and what
// `discover` throws.
std::vector<Process> findProcesses(const Selection& selection, bool toChange, StopSignal& stop);

// Whether `process` has one of the names or of the ids, or `selection` has none.
bool isSelected(const Selection& selection, const Process& process);

// What is to be thrown where none of `others`, which answered, is selected.
Failure nothingFound(const Selection& selection, const std::vector<Process>& others);

}  // namespace log_application
