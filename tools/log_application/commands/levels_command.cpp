#include "tools/log_application/commands/levels_command.h"

#include <iostream>
#include <map>
#include <string>

#include "tools/log_application/commands/each_process.h"
#include "tools/log_application/commands/process_output.h"
#include "tools/log_application/connection/client.h"
#include "tools/log_application/finding/process_finder.h"
#include "tools/log_application/show/text_table.h"

namespace log_application {

namespace {

constexpr const char* followsDefault = "default";

void writeLevelTable(const std::string& defaultLevel,
                     const std::map<std::string, std::string>& loggers) {
    TextTable table;
    table.add({"LOGGER", "LEVEL", "WHOSE"});
    table.add({"(default level)", defaultLevel, ""});
    for (const auto& [name, level] : loggers) {
        const bool follows = level == followsDefault;
        table.add({name, follows ? defaultLevel : level, follows ? "default" : "own"});
    }
    table.write(std::cout, "  ");
}

void writeLevelObject(JsonObject object, const std::string& defaultLevel,
                      const std::map<std::string, std::string>& loggers) {
    object.add("default", std::string_view(defaultLevel));
    JsonObject levels;
    for (const auto& [name, level] : loggers) {
        const bool follows = level == followsDefault;
        JsonObject logger;
        logger.add("level", std::string_view(follows ? defaultLevel : level));
        logger.add("own", !follows);
        levels.add(name, logger);
    }
    object.add("loggers", levels);
    std::cout << object.text() << "\n";
}

}  // namespace

ExitCode runLevels(const Options& options, StopSignal& stop) {
    return forEach(findProcesses(options.selection, false, stop), [&](const Process& process) {
        Client client(process, &stop);
        const std::string defaultLevel = client.defaultLevel();
        const auto loggers = client.loggers();
        if (options.output == OutputKind::json) {
            writeLevelObject(processObject(process, client.endpoint()), defaultLevel, loggers);
        } else {
            writeHeading(process, client.endpoint());
            writeLevelTable(defaultLevel, loggers);
        }
        flushOutput();
    });
}

}  // namespace log_application
