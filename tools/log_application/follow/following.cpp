#include "tools/log_application/follow/following.h"

#include <algorithm>
#include <utility>

#include "tools/log_application/finding/process_finder.h"
#include "tools/log_application/program/console.h"
#include "tools/log_application/program/waiting.h"

namespace log_application {

Following::Following(const Selection& wanted, const FollowOptions& followOptions,
                     StopSignal& stopSignal)
    : selection(wanted),
      options(followOptions),
      stop(stopSignal),
      queue(followOptions.bufferLines),
      filter(followOptions.filter) {
    if (options.timeoutMs) {
        end.emplace(true);
        *end += *options.timeoutMs;
    }
}

Following::~Following() {
    stop.request();
}

void Following::find() {
    Selection wanted = selection;
    wanted.connect.clear();
    for (const Endpoint& endpoint : selection.connect) {
        Selection fixed;
        fixed.connect = {endpoint};
        addFollower(fixed, Process{"", 0, {endpoint}});
    }
    if (!selection.needsDiscovery()) {
        return;
    }
    std::vector<Process> found;
    try {
        found = findProcesses(wanted, false, stop);
    } catch (const Failure& failure) {
        if (failure.exitCode() != exitNotDone || !options.reconnect) {
            throw;
        }
        say(failure.description() + " Waiting for it.");
    }
    for (const Process& process : found) {
        Selection same = wanted;
        same.names = {process.name};
        same.pids.clear();
        addFollower(same, process);
    }
    if (options.reconnect) {
        awaitOthers(wanted, found);
    }
}

void Following::awaitOthers(const Selection& wanted, const std::vector<Process>& found) {
    const auto await = [&](const Selection& missing) {
        if (std::ranges::any_of(
                found, [&](const Process& process) { return isSelected(missing, process); })) {
            return;
        }
        if (!found.empty()) {
            say(nothingFound(missing, found).description() + " Waiting for it.");
        }
        addFollower(missing, std::nullopt);
    };
    Selection one = wanted;
    one.names.clear();
    one.pids.clear();
    if (one.names == wanted.names && one.pids == wanted.pids) {
        await(one);
    }
    for (const std::string& name : wanted.names) {
        one.names = {name};
        await(one);
    }
    one.names.clear();
    for (const std::uint32_t pid : wanted.pids) {
        one.pids = {pid};
        await(one);
    }
}

void Following::addFollower(const Selection& wanted, const std::optional<Process>& found) {
    const FollowerContext context = {queue, stop, followed, options.reconnect,
                                     options.afterClosing};
    followers.push_back(std::make_unique<Follower>(context, followers.size(), wanted, found));
}

vek::time::MonotonicClock Following::nextDeadline() const {
    const std::int64_t now = monotonicMs();
    std::int64_t wait = stopPollMs;
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

bool Following::isFinished(const LineOutput& output) const {
    return output.isDone() || timeIsUp || stop.isRequested() || ended == followers.size();
}

void Following::run(LineOutput& output) {
    merger.emplace(isSeveral() ? TimeMerger::usualWindowMs : 0);
    for (const auto& follower : followers) {
        follower->start();
    }
    while (!isFinished(output)) {
        take(queue.take(nextDeadline()));
        pass(merger->takeReady(monotonicMs()), output);
        output.poll();
        timeIsUp = end && *end - vek::time::MonotonicClock(true) <= 0;
    }
    if (!output.isDone()) {
        const vek::time::MonotonicClock now(true);
        take(queue.take(now));
        pass(merger->takeAll(), output);
    }
    output.flush();
}

void Following::take(std::vector<Arrival> arrivals) {
    const std::int64_t now = monotonicMs();
    for (Arrival& arrival : arrivals) {
        if (arrival.kind == Arrival::ended) {
            ++ended;
            continue;
        }
        merger->add(itemOf(std::move(arrival)), now);
    }
}

void Following::pass(const std::vector<MergedItem>& items, LineOutput& output) {
    for (const MergedItem& item : items) {
        if (!output.isDone()) {
            pass(item, output);
        }
    }
    if (!items.empty()) {
        output.flush();
    }
}

void Following::pass(const MergedItem& item, LineOutput& output) {
    switch (item.arrival.kind) {
        case Arrival::message:
            passLine(item, output);
            return;
        case Arrival::notice:
            output.flush();
            say(item.arrival.text);
            return;
        case Arrival::dropped:
            output.flush();
            output.writeDropped(followers[item.arrival.source]->label(), item.arrival.count);
            return;
        case Arrival::ended:
            return;
    }
}

void Following::passLine(const MergedItem& item, LineOutput& output) {
    const Follower& from = *followers[item.arrival.source];
    if ((!item.line || !item.line->isComplete()) && reported.insert(item.arrival.source).second) {
        say(from.label() + " sends what is no whole message; what there is of it is shown");
    }
    if (!item.line) {
        return;
    }
    const LineFilter::Verdict verdict = filter.judge(*item.line);
    if (verdict == LineFilter::Verdict::hidden) {
        return;
    }
    output.write(*item.line, from);
    if (verdict == LineFilter::Verdict::undecided) {
        output.reportUndecided(from.label());
    }
}

}  // namespace log_application
