// Finds the processes that a command is for.
#pragma once

#include <string>
#include <vector>

#include "tools/log_application/connection/process.h"
#include "tools/log_application/finding/selection.h"
#include "tools/log_application/program/failure.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

// The hint shown when only one process answers: others may share its port.
extern const char* const onlyOneVisible;

// Returns the processes of `selection`: first those given by endpoint, unchecked, then those found,
// sorted by name. Blocks for the time of a search.
//
// Throws Failure: exitNotDone if nothing is found; exitUsage if `toChange` is set, several are
// found, and `selection` neither names processes nor allows all; and what `discover` throws.
std::vector<Process> findProcesses(const Selection& selection, bool toChange, StopSignal& stop);

// True if `process` has one of the names or ids of `selection`, or `selection` has none.
bool isSelected(const Selection& selection, const Process& process);

// Returns the Failure for a search in which only `others` answered, none of them selected.
Failure nothingFound(const Selection& selection, const std::vector<Process>& others);

}  // namespace log_application
