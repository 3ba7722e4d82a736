#include "tools/log_application/commands/forward_command.h"

#include "tools/log_application/forward/own_host_name.h"
#include "tools/log_application/forward/syslog_message.h"
#include "tools/log_application/program/console.h"
#include "vek/base/windows.h"
#include "vek/time/clock.h"

namespace log_application {

ForwardCommand::ForwardCommand(const Options& commandOptions, StopSignal& stopSignal)
    : facility(commandOptions.forward.facility),
      hostName(ownHostName()),
      sender(commandOptions.forward.to, commandOptions.follow.bufferLines,
             [this](std::uint64_t count, std::uint32_t number) {
                 const std::int64_t now = vek::time::RealtimeClock(true).getValue();
                 return octetCounted(
                     lossMessage(count, hostName, facility, number, now, GetCurrentProcessId()));
             }),
      following(commandOptions.selection, commandOptions.follow, stopSignal) {}

ExitCode ForwardCommand::run() {
    sender.start();
    following.find();
    following.run(*this);
    const std::uint64_t left = sender.finish(flushLimitMs);
    poll();
    if (left != 0) {
        say(std::to_string(left) +
            " messages may not have reached the collector: it wasn't there, or took too long");
        return exitLost;
    }
    return exitDone;
}

void ForwardCommand::write(const LogLine& line, const Follower& from) {
    const SyslogOrigin origin = originOf(from);
    sender.add([&](std::uint32_t number) {
        return octetCounted(syslogMessage(line, origin, facility, number));
    });
}

void ForwardCommand::writeDropped(const std::string& /*label*/, std::uint64_t count) {
    sender.addLost(count);
}

void ForwardCommand::reportUndecided(const std::string& label) {
    if (!undecidedReported) {
        say("a line of " + label + " is too long for a regular expression; such lines are sent");
    }
    undecidedReported = true;
}

void ForwardCommand::poll() {
    for (const std::string& notice : sender.takeNotices()) {
        say(notice);
    }
}

SyslogOrigin ForwardCommand::originOf(const Follower& from) const {
    const std::optional<Process> process = from.lastProcess();
    if (!process || process->endpoints.empty()) {
        return {hostName, ""};
    }
    const Endpoint& endpoint = process->endpoints.front();
    return {endpoint.isLoopback() ? hostName : endpoint.address, process->name};
}

}  // namespace log_application
