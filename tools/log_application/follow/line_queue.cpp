#include "tools/log_application/follow/line_queue.h"

#include <utility>

#include "vek/thread/scope_guard.h"

namespace log_application {

void LineQueue::addMessage(std::size_t source, std::string telegram) {
    const vek::thread::ScopeGuard guard(condition);
    if (messages >= capacity || bytes + telegram.size() > mostBytes) {
        ++drops[source];
        return;
    }
    ++messages;
    bytes += telegram.size();
    add({Arrival::message, source, std::move(telegram)});
}

void LineQueue::addNotice(std::size_t source, std::string text) {
    const vek::thread::ScopeGuard guard(condition);
    add({Arrival::notice, source, std::move(text)});
}

void LineQueue::addEnd(std::size_t source) {
    const vek::thread::ScopeGuard guard(condition);
    add({Arrival::ended, source, ""});
}

void LineQueue::add(Arrival arrival) {
    // The dropped messages of this source came earlier.
    if (const auto drop = drops.extract(arrival.source)) {
        arrivals.push_back({Arrival::dropped, arrival.source, "", drop.mapped()});
    }
    arrivals.push_back(std::move(arrival));
    condition.wakeOne();
}

std::vector<Arrival> LineQueue::take(const vek::time::MonotonicClock& deadline) {
    const vek::thread::ScopeGuard guard(condition);
    while (arrivals.empty() && condition.waitUntil(deadline)) {
    }
    messages = 0;
    bytes = 0;
    std::vector<Arrival> taken = std::exchange(arrivals, {});
    for (const auto& [source, count] : std::exchange(drops, {})) {
        taken.push_back({Arrival::dropped, source, "", count});
    }
    return taken;
}

}  // namespace log_application
