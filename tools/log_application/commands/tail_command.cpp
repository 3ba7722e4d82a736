#include "tools/log_application/commands/tail_command.h"

#include <iostream>
#include <utility>

#include "tools/log_application/finding/process_finder.h"
#include "tools/log_application/program/console.h"

namespace log_application {

namespace {

// How often the stop is checked, in milliseconds.
constexpr std::int64_t pollMs = 200;

std::int64_t nowMs() {
    return vek::time::MonotonicClock(true).getValue();
}

}  // namespace

TailCommand::TailCommand(const Options& commandOptions, StopSignal& stopSignal)
    : options(commandOptions),
      stop(stopSignal),
      queue(commandOptions.tail.bufferLines),
      filter(commandOptions.tail.filter) {}

TailCommand::~TailCommand() {
    stop.request();
}

ExitCode TailCommand::run() {
    if (options.tail.timeoutMs) {
        end.emplace(true);
        *end += *options.tail.timeoutMs;
    }
    findTargets();
    const bool several = followers.size() > 1;
    const char* const layout =
        several ? LineRenderer::formatForSeveral : LineRenderer::formatForOne;
    const std::string format = options.tail.format.empty() ? layout : options.tail.format;
    renderer.emplace(options.output, format, options.output == OutputKind::text && takesColors());
    merger.emplace(several ? TimeMerger::usualWindowMs : 0);
    for (const auto& follower : followers) {
        follower->start();
    }
    loop();
    return result();
}

void TailCommand::findTargets() {
    Selection wanted = options.selection;
    wanted.connect.clear();
    for (const Endpoint& endpoint : options.selection.connect) {
        Selection fixed;
        fixed.connect = {endpoint};
        addFollower(fixed, Process{"", 0, {endpoint}});
    }
    if (!options.selection.needsDiscovery()) {
        return;
    }
    try {
        for (const Process& process : findProcesses(wanted, false, stop)) {
            Selection same = wanted;
            same.names = {process.name};
            same.pids.clear();
            addFollower(same, process);
        }
    } catch (const Failure& failure) {
        if (failure.exitCode() != exitNotDone || !options.tail.reconnect) {
            throw;
        }
        say(failure.description() + " Waiting for it.");
        addFollower(wanted, std::nullopt);
    }
}

void TailCommand::addFollower(const Selection& wanted, const std::optional<Process>& found) {
    const FollowerContext context = {queue, stop, followed, options.tail.reconnect};
    followers.push_back(std::make_unique<Follower>(context, followers.size(), wanted, found));
}

vek::time::MonotonicClock TailCommand::nextDeadline() const {
    const std::int64_t now = nowMs();
    std::int64_t wait = pollMs;
    if (const std::optional<std::int64_t> ready = merger->nextReady()) {
        wait = std::min(wait, *ready - now);
    }
    vek::time::MonotonicClock deadline(true);
    if (end) {
        wait = std::min(wait, *end - deadline);
    }
    deadline += std::max<std::int64_t>(wait, 0);
    return deadline;
}

bool TailCommand::isFinished() const {
    return isMet || timeIsUp || stop.isRequested() || ended == followers.size();
}

void TailCommand::loop() {
    while (!isFinished()) {
        take(queue.take(nextDeadline()));
        show(merger->takeReady(nowMs()));
        timeIsUp = end && *end - vek::time::MonotonicClock(true) <= 0;
    }
    if (!isMet) {
        const vek::time::MonotonicClock now(true);
        take(queue.take(now));
        show(merger->takeAll());
    }
    flushOutput();
}

void TailCommand::take(std::vector<Arrival> arrivals) {
    const std::int64_t now = nowMs();
    for (Arrival& arrival : arrivals) {
        if (arrival.kind == Arrival::ended) {
            ++ended;
            continue;
        }
        merger->add(itemOf(std::move(arrival)), now);
    }
}

void TailCommand::show(const std::vector<MergedItem>& items) {
    for (const MergedItem& item : items) {
        if (!isMet) {
            show(item);
        }
    }
    if (!items.empty()) {
        flushOutput();
    }
}

void TailCommand::show(const MergedItem& item) {
    const std::string label = followers[item.arrival.source]->label();
    switch (item.arrival.kind) {
        case Arrival::message:
            showLine(item);
            return;
        case Arrival::notice:
            flushOutput();
            say(item.arrival.text);
            return;
        case Arrival::dropped:
            flushOutput();
            say(std::to_string(item.arrival.count) + " lines of " + label +
                " were dropped, as the output was too slow; --buffer gives it more room");
            return;
        case Arrival::ended:
            return;
    }
}

void TailCommand::showLine(const MergedItem& item) {
    if ((!item.line || !item.line->isComplete()) && reported.insert(item.arrival.source).second) {
        say(followers[item.arrival.source]->label() +
            " sends what is no whole message; what there is of it is shown");
    }
    if (!item.line) {
        return;
    }
    const LineFilter::Verdict verdict = filter.judge(*item.line);
    if (verdict == LineFilter::Verdict::hidden) {
        return;
    }
    renderer->write(std::cout, *item.line);
    const TextPattern::Found expected =
        options.tail.expect ? options.tail.expect->search(item.line->text.value_or(""))
                            : TextPattern::Found::no;
    isMet = expected == TextPattern::Found::yes;
    if (verdict == LineFilter::Verdict::undecided || expected == TextPattern::Found::undecided) {
        reportUndecided(followers[item.arrival.source]->label());
    }
}

void TailCommand::reportUndecided(const std::string& label) {
    if (!undecidedReported) {
        say("a line of " + label +
            " is too long for a regular expression; such lines are shown, and aren't the expected "
            "message");
    }
    undecidedReported = true;
}

ExitCode TailCommand::result() const {
    if (options.tail.expect) {
        if (!isMet) {
            say(timeIsUp ? "The expected message didn't come in time."
                         : "The expected message didn't come.");
        }
        return isMet ? exitDone : exitNotDone;
    }
    // The stop ends the followers too.
    return ended == followers.size() && !stop.isRequested() ? exitLost : exitDone;
}

}  // namespace log_application
