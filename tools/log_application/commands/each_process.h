// Runs an action for each of several processes.
#pragma once

#include <algorithm>
#include <functional>
#include <vector>

#include "tools/log_application/connection/process.h"
#include "tools/log_application/program/console.h"

namespace log_application {

// Calls `action` for each process. A Failure is reported on std::cerr and doesn't end the loop.
// Returns the worst exit code.
inline ExitCode forEach(const std::vector<Process>& processes,
                        const std::function<void(const Process&)>& action) {
    ExitCode worst = exitDone;
    for (const Process& process : processes) {
        try {
            action(process);
        } catch (const Failure& failure) {
            worst = std::max(worst, report(failure));
        }
    }
    return worst;
}

}  // namespace log_application
