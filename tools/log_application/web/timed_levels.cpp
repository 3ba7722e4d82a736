#include "tools/log_application/web/timed_levels.h"

#include <algorithm>

#include "tools/log_application/program/console.h"
#include "tools/log_application/program/waiting.h"
#include "tools/log_application/show/ansi_text.h"
#include "tools/log_application/show/escape.h"
#include "vek/thread/scope_guard.h"

namespace log_application {

namespace {

// The logger's name as the process writes it: the page has it in UTF-8.
std::string nameOf(const std::string& shown, const std::map<std::string, std::string>& loggers) {
    const auto found = std::ranges::find_if(
        loggers, [&shown](const auto& logger) { return utf8Of(logger.first) == shown; });
    if (found == loggers.end()) {
        throw Failure(exitNotDone, "There is no logger \"" + escapeControls(shown) + "\" any more.",
                      "The process may have been started anew.");
    }
    return found->first;
}

}  // namespace

TimedLevels::TimedLevels(StopSignal& stopSignal, Report levelReport)
    : stop(stopSignal), report(std::move(levelReport)), thread("timed-levels", *this) {
    thread.start();
}

TimedLevels::~TimedLevels() {
    thread.join();
    for (const auto& [key, change] : changes) {
        try {
            putBackLevels(change.earlier);
        } catch (const Failure& failure) {
            log_application::report(failure);
        }
    }
}

void TimedLevels::set(std::size_t id, const Process& process, const Logger& logger,
                      vek::log::Level level, std::optional<std::int64_t> forMs) {
    const std::lock_guard one(operations);
    Client client(process, &stop);
    std::vector<LevelChange> wanted;
    const auto loggers = client.loggers();
    if (logger) {
        // Checks that the protocol can carry the name.
        wanted.push_back(
            parseLevelChange(nameOf(*logger, loggers) + "=" + vek::log::levelName(level)));
    }
    EarlierLevels earlier = earlierLevels(client, process, !logger, wanted, loggers);
    if (logger) {
        client.setLevels(wanted);
    } else {
        client.setDefaultLevel(level);
    }
    const vek::thread::ScopeGuard guard(changed);
    const Key key = {id, logger};
    if (!forMs) {
        changes.erase(key);
        return;
    }
    // An earlier change keeps what was before it.
    changes.try_emplace(key, Change{std::move(earlier), 0}).first->second.end =
        monotonicMs() + *forMs;
    changed.wakeAll();
}

void TimedLevels::putBack(std::size_t id, const Logger& logger) {
    putBack(Key(id, logger));
}

std::optional<TimedLevels::Change> TimedLevels::take(const Key& key) {
    const vek::thread::ScopeGuard guard(changed);
    auto node = changes.extract(key);
    return node ? std::optional(std::move(node.mapped())) : std::nullopt;
}

void TimedLevels::putBack(const Key& key) {
    std::string reason;
    {
        const std::lock_guard one(operations);
        const std::optional<Change> change = take(key);
        if (!change) {
            return;
        }
        try {
            putBackLevels(change->earlier);
        } catch (const Failure& failure) {
            reason = failure.description();
        }
    }
    report(key.first, reason);
}

std::vector<TimedLevels::Timed> TimedLevels::of(std::size_t id) const {
    std::vector<Timed> found;
    const std::int64_t now = monotonicMs();
    const vek::thread::ScopeGuard guard(changed);
    for (const auto& [key, change] : changes) {
        if (key.first == id) {
            found.push_back({key.second, std::max<std::int64_t>(change.end - now, 0)});
        }
    }
    return found;
}

void TimedLevels::putBackDue(std::int64_t now) {
    std::vector<Key> due;
    {
        const vek::thread::ScopeGuard guard(changed);
        for (const auto& [key, change] : changes) {
            if (change.end <= now) {
                due.push_back(key);
            }
        }
    }
    for (const Key& key : due) {
        putBack(key);
    }
}

void TimedLevels::run() {
    while (!stop.isRequested()) {
        {
            const vek::thread::ScopeGuard guard(changed);
            std::int64_t wait = stopPollMs;
            for (const auto& [key, change] : changes) {
                wait = std::clamp<std::int64_t>(change.end - monotonicMs(), 0, wait);
            }
            vek::time::MonotonicClock deadline(true);
            deadline += wait;
            changed.waitUntil(deadline);
        }
        putBackDue(monotonicMs());
    }
}

}  // namespace log_application
