#include "tools/log_application/web/line_store.h"

#include <algorithm>
#include <utility>

#include "vek/thread/scope_guard.h"

namespace log_application {

std::size_t LineStore::sizeOf(const MergedItem& item) {
    // Strings and nodes of the map, roughly.
    constexpr std::size_t overhead = 64;
    std::size_t size = sizeof item + item.arrival.text.size();
    if (item.line) {
        size += item.line->text.value_or("").size() + item.line->logger.value_or("").size();
        for (const auto& [key, value] : item.line->attributes) {
            size += key.size() + value.size() + overhead;
        }
    }
    return size;
}

void LineStore::add(std::vector<MergedItem> items) {
    // Made and destroyed without the lock, which the readers need.
    std::vector<Item> added;
    added.reserve(items.size());
    std::size_t addedBytes = 0;
    for (MergedItem& item : items) {
        addedBytes += sizeOf(item);
        added.push_back(std::make_shared<const MergedItem>(std::move(item)));
    }
    std::vector<Item> removed;
    const vek::thread::ScopeGuard guard(condition);
    kept.insert(kept.end(), added.begin(), added.end());
    bytes += addedBytes;
    while (kept.size() > capacity || (bytes > byteLimit && !kept.empty())) {
        bytes -= sizeOf(*kept.front());
        removed.push_back(std::move(kept.front()));
        kept.pop_front();
        ++firstNumber;
    }
    condition.wakeAll();
}

LineStore::Taken LineStore::take(std::uint64_t from, std::size_t most,
                                 const vek::time::MonotonicClock& deadline) {
    Taken taken;
    const vek::thread::ScopeGuard guard(condition);
    while (from >= firstNumber + kept.size() && condition.waitUntil(deadline)) {
    }
    taken.first = std::max(from, firstNumber);
    taken.missed = taken.first - from;
    const auto offset =
        static_cast<std::size_t>(std::min<std::uint64_t>(taken.first - firstNumber, kept.size()));
    const std::size_t count = std::min(most, kept.size() - offset);
    const auto begin = kept.begin() + static_cast<std::ptrdiff_t>(offset);
    taken.items.assign(begin, begin + static_cast<std::ptrdiff_t>(count));
    return taken;
}

std::uint64_t LineStore::end() const {
    const vek::thread::ScopeGuard guard(condition);
    return firstNumber + kept.size();
}

}  // namespace log_application
