#include "tools/log_application/connection/earlier_levels.h"

#include "tools/log_application/show/escape.h"
#include "vek/exception.h"

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

}  // namespace

EarlierLevels earlierLevels(Client& client, const Process& process, bool changesDefault,
                            const std::vector<LevelChange>& changes,
                            const std::map<std::string, std::string>& loggers) {
    EarlierLevels earlier = {process, std::nullopt, {}};
    if (changesDefault) {
        earlier.defaultLevel = levelOf(client.defaultLevel(), process);
    }
    for (const LevelChange& change : changes) {
        const auto known = loggers.find(change.logger);
        earlier.loggers.push_back({change.logger, known == loggers.end()
                                                      ? vek::log::DEFAULT
                                                      : levelOf(known->second, process)});
    }
    return earlier;
}

void putBackLevels(const EarlierLevels& earlier) {
    Client client(earlier.process, nullptr);
    if (earlier.defaultLevel) {
        client.setDefaultLevel(*earlier.defaultLevel);
    }
    client.setLevels(earlier.loggers);
}

}  // namespace log_application
