#include "tools/log_application/follow/time_merger.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "vek/log/telegram.h"

namespace log_application {

MergedItem itemOf(Arrival arrival) {
    MergedItem item = {std::move(arrival), std::nullopt};
    if (item.arrival.kind == Arrival::message) {
        try {
            item.line = parseLogLine(item.arrival.text);
        } catch (const vek::log::Telegram::ParseError&) {
            // Without a line.
        }
    }
    return item;
}

void TimeMerger::add(MergedItem item, std::int64_t nowMs) {
    constexpr std::int64_t never = std::numeric_limits<std::int64_t>::min();
    std::int64_t& sourceTime = latest.try_emplace(item.arrival.source, never).first->second;
    const std::int64_t ownTime = item.line && item.line->when ? *item.line->when : sourceTime;
    sourceTime = std::max(sourceTime, ownTime);
    if (window == 0) {
        // In order of arrival, whatever the times.
        sourceTime = never;
    }
    kept.emplace(sourceTime, std::move(item));
    arrivals.emplace_back(nowMs, sourceTime);
}

std::vector<MergedItem> TimeMerger::takeReady(std::int64_t nowMs) {
    std::optional<std::int64_t> latestDue;
    while (!arrivals.empty() && arrivals.front().first + window <= nowMs) {
        latestDue = std::max(latestDue.value_or(arrivals.front().second), arrivals.front().second);
        arrivals.pop_front();
    }
    std::vector<MergedItem> ready;
    while (latestDue && !kept.empty() && kept.begin()->first <= *latestDue) {
        ready.push_back(std::move(kept.begin()->second));
        kept.erase(kept.begin());
    }
    return ready;
}

std::vector<MergedItem> TimeMerger::takeAll() {
    std::vector<MergedItem> all;
    for (auto& [time, item] : kept) {
        all.push_back(std::move(item));
    }
    kept.clear();
    arrivals.clear();
    return all;
}

std::optional<std::int64_t> TimeMerger::nextReady() const {
    return arrivals.empty() ? std::nullopt : std::optional(arrivals.front().first + window);
}

}  // namespace log_application
