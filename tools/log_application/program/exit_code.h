// The exit codes of log_application.
#pragma once

namespace log_application {

enum ExitCode : int {
    exitDone = 0,
    exitNotDone = 1,  // nothing found, refused by the process, or an expectation not met
    exitUsage = 2,    // wrong usage
    exitLost = 3,     // the connection or the output was lost
};

}  // namespace log_application
