#include "tools/log_application/commands/set_command.h"

#include <algorithm>
#include <iostream>

#include "tools/log_application/commands/each_process.h"
#include "tools/log_application/finding/process_finder.h"

namespace log_application {

namespace {

constexpr const char* followsDefault = "default";

// Converts a level as a process names it. Throws Failure if the name is unknown.
vek::log::Level levelOf(const std::string& text, const Process& process) {
    try {
        return text == followsDefault ? vek::log::DEFAULT : vek::log::parseLevel(text);
    } catch (const vek::UsageError&) {
        throw Failure(exitLost,
                      process.label() + " calls \"" + escapeControls(text) + "\" a level.",
                      "It stands on another version of the log service.");
    }
}

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
        remember(client, process, loggers);
    }
    if (options.set.defaultLevel) {
        client.setDefaultLevel(*options.set.defaultLevel);
    }
    client.setLevels(options.set.changes);
    std::cout << process.label() << ": " << changesText(options.set) << "\n";
    flushOutput();
}

void SetCommand::remember(Client& client, const Process& process,
                          const std::map<std::string, std::string>& loggers) {
    Earlier state = {process, std::nullopt, {}};
    if (options.set.defaultLevel) {
        state.defaultLevel = levelOf(client.defaultLevel(), process);
    }
    for (const LevelChange& change : options.set.changes) {
        const auto known = loggers.find(change.logger);
        state.loggers.push_back({change.logger, known == loggers.end()
                                                    ? vek::log::DEFAULT
                                                    : levelOf(known->second, process)});
    }
    earlier.push_back(state);
}

void SetCommand::waitForEnd() const {
    say("the earlier levels come back in " + std::to_string((*options.set.forMs + 999) / 1000) +
        " seconds, or at Ctrl-C");
    stop.waitFor(*options.set.forMs);
}

ExitCode SetCommand::putBack() const {
    ExitCode worst = exitDone;
    for (const Earlier& state : earlier) {
        worst = std::max(worst, forEach({state.process}, [&state](const Process& process) {
                             // Without the stop signal: it may be requested already.
                             Client client(process, nullptr);
                             if (state.defaultLevel) {
                                 client.setDefaultLevel(*state.defaultLevel);
                             }
                             client.setLevels(state.loggers);
                             std::cout << process.label() << ": the earlier levels are back\n";
                             flushOutput();
                         }));
    }
    return worst;
}

}  // namespace log_application
