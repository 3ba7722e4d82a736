// What --help writes.
#include "tools/log_application/help_text.h"

#include <iomanip>

#include "tools/log_application/command_options.h"
#include "vek/base/text.h"

namespace log_application {

namespace {

constexpr int nameWidth = 24;

std::ostream& column(std::ostream& output, const std::string& text) {
    return output << "  " << std::left << std::setw(nameWidth) << text << ' ';
}

void writeExample(std::ostream& output, const CommandRow& row) {
    output << "  " << row.example << "\n      " << row.exampleMeaning << "\n";
}

// "--name NAME".
std::string formOf(const TCLAP::Arg& argument) {
    const std::string id = argument.longID();
    const std::size_t type = id.find('<');
    std::string form = argument.isValueRequired() && type != std::string::npos
                           ? id.substr(type + 1, id.find('>') - type - 1)
                           : "";
    return "--" + argument.getName() + (form.empty() ? "" : " " + form);
}

}  // namespace

void writeHelp(std::ostream& output) {
    output << "log_application: finds processes by their log service, changes their levels, "
              "follows their log.\n\n"
              "log_application COMMAND [OPTION]...\n\nCommands:\n";
    for (const CommandRow& row : commandTable) {
        column(output, std::string(row.name)) << row.summary << "\n";
    }
    column(output, "COMMAND --help") << "the options of a command\n\nExamples:\n";
    for (const CommandRow& row : commandTable) {
        writeExample(output, row);
    }
    output << "\nExit codes:\n"
              "  0  done\n"
              "  1  nothing found, refused by the process, or an expectation not met\n"
              "  2  wrong usage\n"
              "  3  the connection was lost, or the output can't be written\n";
}

void CommandOptions::writeHelp(std::ostream& stream) const {
    stream << "log_application " << row.name << (row.operands.empty() ? "" : " ") << row.operands
           << " [OPTION]...: " << row.summary << "\n\nExample:\n";
    writeExample(stream, row);
    stream << "\nOptions:\n";
    if (isFor(Command::set)) {
        column(stream, "NAME=LEVEL")
            << "the level of a logger; DEFAULT lets it follow the default level\n";
    }
    for (const TCLAP::Arg* const argument : shown) {
        std::string description = argument->getDescription();
        if (isFor(Command::tail) && argument->getName() == "output") {
            description = "text, json (one object a line) or raw (the bytes of the message alone)";
        }
        column(stream, formOf(*argument)) << description << "\n";
    }
}

}  // namespace log_application
