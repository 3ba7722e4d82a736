// log_application::EarlierLevels: the levels of a process before a change, to be put back later.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/log_application/connection/client.h"
#include "tools/log_application/connection/level_change.h"
#include "tools/log_application/connection/process.h"

namespace log_application {

struct EarlierLevels {
    Process process;
    std::optional<vek::log::Level> defaultLevel;  // none if the change leaves it alone
    std::vector<LevelChange> loggers;
};

// Returns the present levels of what is going to be changed: the default level if
// `changesDefault`, and the loggers of `changes`. `loggers` is what `client.loggers()` returned; a
// logger that isn't in it follows the default level. Throws Failure.
EarlierLevels earlierLevels(Client& client, const Process& process, bool changesDefault,
                            const std::vector<LevelChange>& changes,
                            const std::map<std::string, std::string>& loggers);

// Connects to the process and puts its levels back. No stop signal interrupts this, as it may be
// requested already. Throws Failure.
void putBackLevels(const EarlierLevels& earlier);

}  // namespace log_application
