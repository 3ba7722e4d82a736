// The table of the commands, which the help shows.
#pragma once

#include <array>
#include <string_view>

#include "tools/log_application/commands/options.h"

namespace log_application {

struct CommandRow {
    Command command;
    std::string_view name;
    std::string_view operands;  // arguments that aren't options
    std::string_view summary;
    std::string_view example;
    std::string_view exampleMeaning;
};

inline constexpr std::array<CommandRow, 8> commandTable = {{
    {Command::ps, "ps", "", "find processes: name, pid, port and address", "log_application ps",
     "all that answer within a second"},
    {Command::levels, "levels", "", "show the default level, and each logger with its level",
     "log_application levels --name tolmarhlp", "those of one process"},
    {Command::set, "set", "[NAME=LEVEL]...", "change levels, for good or for a while",
     "log_application set --name tolmarhlp net=DEBUG --default INFO --for 10m",
     "one logger and the default level; the earlier ones come back after 10 minutes"},
    {Command::sinks, "sinks", "", "show where the messages go: files, consoles, clients",
     "log_application sinks --pid 4242", "the sinks of the process 4242"},
    {Command::save, "save", "", "have the process write its levels into its logging.conf",
     "log_application save --name tolmarhlp", "they hold from its next start on"},
    {Command::tail, "tail", "", "follow the messages of one or several processes, live",
     "log_application tail --name tolmarhlp --level INFO --reconnect",
     "all but the debugging, beyond the process's end too"},
    {Command::web, "web", "", "show processes, levels and messages on a page in the browser",
     "log_application web", "all processes of this host; prints the address to open"},
    {Command::forward, "forward", "", "send the messages to a log collector, by syslog over TCP",
     "log_application forward --name tolmarhlp --to syslog+tcp://logs.example.com:601",
     "until Ctrl-C; waits for the process and for the collector"},
}};

// Returns the row of `command`.
const CommandRow& rowOf(Command command);

// Returns null if there is no command of this name.
const CommandRow* findCommand(std::string_view name);

}  // namespace log_application
