#include "tools/log_application/command_line.h"

#include <algorithm>

#include "tools/log_application/command_options.h"
#include "tools/log_application/help_text.h"
#include "tools/log_application/program/failure.h"
#include "tools/log_application/show/escape.h"

namespace log_application {

namespace {

bool isHelp(const std::string& argument) {
    return argument == "--help" || argument == "-h";
}

}  // namespace

std::optional<Options> parseCommandLine(const std::vector<std::string>& arguments,
                                        std::ostream& output) {
    constexpr const char* seeHelp = "\"log_application --help\" tells what there is.";
    if (arguments.empty()) {
        throw Failure(exitUsage, "No command was given.", seeHelp);
    }
    if (isHelp(arguments.front()) || arguments.front() == "help") {
        writeHelp(output);
        return std::nullopt;
    }
    const CommandRow* const row = findCommand(arguments.front());
    if (row == nullptr) {
        throw Failure(exitUsage,
                      "There is no command \"" + escapeControls(arguments.front()) + "\".",
                      seeHelp);
    }
    CommandOptions options(*row);
    if (std::any_of(arguments.begin() + 1, arguments.end(), isHelp)) {
        options.writeHelp(output);
        return std::nullopt;
    }
    return options.parse({arguments.begin() + 1, arguments.end()});
}

}  // namespace log_application
