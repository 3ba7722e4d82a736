#include "tools/log_application/command_table.h"

#include <algorithm>

namespace log_application {

const CommandRow& rowOf(Command command) {
    return *std::ranges::find(commandTable, command, &CommandRow::command);
}

const CommandRow* findCommand(std::string_view name) {
    const auto found = std::ranges::find(commandTable, name, &CommandRow::name);
    return found == commandTable.end() ? nullptr : &*found;
}

}  // namespace log_application
