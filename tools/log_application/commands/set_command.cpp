#include "tools/log_application/commands/set_command.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <string>

#include "tools/log_application/commands/each_process.h"
#include "tools/log_application/finding/process_finder.h"

namespace log_application {

namespace {

std::string changesText(const SetOptions& set) {
    std::string text;
    if (set.defaultLevel) {
        text = std::string("default level ") + levelName(*set.defaultLevel);
    }
    for (const LevelChange& change : set.changes) {
        text += (text.empty() ? "" : ", ") + escapeControls(change.logger) + " " +
                levelName(change.level);
    }
    return text;
}

// Reports loggers that don't exist yet: a name may be mistyped.
void tellNew(const SetOptions& set, const std::map<std::string, std::string>& loggers,
             const Process& process) {
    for (const LevelChange& change : set.changes) {
        if (!loggers.contains(change.logger)) {
            say(process.label() + " has no logger \"" + escapeControls(change.logger) +
                "\" yet; one that it makes later gets the level.");
        }
    }
}

}  // namespace

ExitCode SetCommand::run() {
    const std::vector<Process> processes = findProcesses(options.selection, true, stop);
    const ExitCode changed =
        forEach(processes, [this](const Process& process) { change(process); });
    if (!options.set.forMs || earlier.empty()) {
        return changed;
    }
    waitForEnd();
    return std::max(changed, putBack());
}

void SetCommand::change(const Process& process) {
    Client client(process, &stop);
    const auto loggers = client.loggers();
    tellNew(options.set, loggers, process);
    if (options.set.forMs) {
        earlier.push_back(earlierLevels(client, process, options.set.defaultLevel.has_value(),
                                        options.set.changes, loggers));
    }
    if (options.set.defaultLevel) {
        client.setDefaultLevel(*options.set.defaultLevel);
    }
    client.setLevels(options.set.changes);
    std::cout << process.label() << ": " << changesText(options.set) << "\n";
    flushOutput();
}

void SetCommand::waitForEnd() const {
    say("the earlier levels come back in " + std::to_string((*options.set.forMs + 999) / 1000) +
        " seconds, or at Ctrl-C");
    stop.waitFor(*options.set.forMs);
}

ExitCode SetCommand::putBack() const {
    ExitCode worst = exitDone;
    for (const EarlierLevels& state : earlier) {
        worst = std::max(worst, forEach({state.process}, [&state](const Process& process) {
                             putBackLevels(state);
                             std::cout << process.label() << ": the earlier levels are back\n";
                             flushOutput();
                         }));
    }
    return worst;
}

}  // namespace log_application
