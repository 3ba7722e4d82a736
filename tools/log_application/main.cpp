// The entry point of log_application.exe.
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <io.h>

#include "tools/log_application/command_line.h"
#include "tools/log_application/commands/forward_command.h"
#include "tools/log_application/commands/levels_command.h"
#include "tools/log_application/commands/ps_command.h"
#include "tools/log_application/commands/save_command.h"
#include "tools/log_application/commands/set_command.h"
#include "tools/log_application/commands/sinks_command.h"
#include "tools/log_application/commands/tail_command.h"
#include "tools/log_application/commands/web_command.h"
#include "tools/log_application/program/console.h"
#include "tools/log_application/program/console_quit.h"
#include "tools/log_application/program/console_text.h"
#include "tools/log_application/program/deep_stack.h"
#include "tools/log_application/program/stop_signal.h"
#include "vek/pal.h"

namespace {

using namespace log_application;

ExitCode runCommand(const Options& options, StopSignal& stop) {
    switch (options.command) {
        case Command::ps:
            return runPs(options, stop);
        case Command::levels:
            return runLevels(options, stop);
        case Command::set:
            return SetCommand(options, stop).run();
        case Command::sinks:
            return runSinks(options, stop);
        case Command::save:
            return runSave(options, stop);
        case Command::tail:
            return TailCommand(options, stop).run();
        case Command::web:
            return WebCommand(options, stop).run();
        case Command::forward:
            return ForwardCommand(options, stop).run();
    }
    return exitUsage;
}

ExitCode run(const std::vector<std::string>& arguments) {
    const std::optional<Options> options = parseCommandLine(arguments, std::cout);
    if (!options) {
        flushOutput();
        return exitDone;
    }
    StopSignal stop;
    const ConsoleQuit quit(stop);
    // JSON is UTF-8 on a console too, and raw output the bytes of the process.
    std::optional<ConsoleText> encoding;
    if (options->output == OutputKind::text) {
        encoding.emplace(std::cout, STD_OUTPUT_HANDLE);
    }
    return runCommand(*options, stop);
}

}  // namespace

int main(int argumentCount, char** arguments) {
    // Without translation: lines end with a line feed, raw output is byte for byte.
    _setmode(_fileno(stdout), _O_BINARY);
    const ConsoleText encoding(std::cerr, STD_ERROR_HANDLE);
    try {
        const vek::VekPal pal(false, 0, 0, nullptr);
        ExitCode code = exitDone;
        runOnDeepStack([&] { code = run({arguments + 1, arguments + argumentCount}); });
        return code;
    } catch (const Failure& failure) {
        return report(failure);
    } catch (const vek::Exception& error) {
        say(error.what());
        return exitLost;
    } catch (const std::exception& error) {
        say(error.what());
        return exitLost;
    }
}
