#include "tools/log_application/commands/tail_command.h"

#include <iostream>

#include "tools/log_application/program/console.h"

namespace log_application {

TailCommand::TailCommand(const Options& commandOptions, StopSignal& stopSignal)
    : options(commandOptions),
      following(commandOptions.selection, commandOptions.follow, stopSignal) {}

ExitCode TailCommand::run() {
    following.find();
    const char* const layout =
        following.isSeveral() ? LineRenderer::formatForSeveral : LineRenderer::formatForOne;
    const std::string format = options.tail.format.empty() ? layout : options.tail.format;
    renderer.emplace(options.output, format, options.output == OutputKind::text && takesColors());
    following.run(*this);
    return result();
}

void TailCommand::write(const LogLine& line, const Follower& from) {
    renderer->write(std::cout, line);
    if (!options.tail.expect) {
        return;
    }
    const TextPattern::Found found = options.tail.expect->search(line.text.value_or(""));
    isMet = found == TextPattern::Found::yes;
    if (found == TextPattern::Found::undecided) {
        reportUndecided(from.label());
    }
}

void TailCommand::writeDropped(const std::string& label, std::uint64_t count) {
    say(std::to_string(count) + " lines of " + label +
        " were dropped, as the output was too slow; --buffer gives it more room");
}

void TailCommand::reportUndecided(const std::string& label) {
    if (!undecidedReported) {
        say("a line of " + label +
            " is too long for a regular expression; such lines are shown, and aren't the expected "
            "message");
    }
    undecidedReported = true;
}

void TailCommand::flush() {
    flushOutput();
}

ExitCode TailCommand::result() const {
    if (options.tail.expect) {
        if (!isMet) {
            say(following.isTimeUp() ? "The expected message didn't come in time."
                                     : "The expected message didn't come.");
        }
        return isMet ? exitDone : exitNotDone;
    }
    return following.haveAllEnded() ? exitLost : exitDone;
}

}  // namespace log_application
