#include "tools/log_application/web/event_stream.h"

#include <algorithm>
#include <optional>

#include "tools/log_application/connection/level_change.h"
#include "tools/log_application/program/failure.h"
#include "tools/log_application/program/waiting.h"
#include "tools/log_application/show/ansi_text.h"
#include "tools/log_application/show/escape.h"
#include "tools/log_application/show/line_renderer.h"

namespace log_application {

namespace {

// The most lines in one event, and the longest wait for any.
constexpr std::size_t mostLines = 1000;
constexpr std::int64_t waitMs = 100;

std::string event(const std::string& name, const std::string& json, const std::string& id = "") {
    return "event: " + name + "\n" + (id.empty() ? "" : "id: " + id + "\n") + "data: " + json +
           "\n\n";
}

std::string jsonString(const std::string& text) {
    std::string json;
    appendJsonString(json, utf8Of(text));
    return json;
}

std::vector<std::string> valuesOf(const WebRequest& request, const std::string& name) {
    std::vector<std::string> values;
    const auto [begin, end] = request.parameters.equal_range(name);
    for (auto parameter = begin; parameter != end; ++parameter) {
        values.push_back(parameter->second);
    }
    return values;
}

// Throws Failure.
FilterOptions filterOf(const WebRequest& request) {
    FilterOptions options;
    if (const std::string level = request.parameter("level"); !level.empty()) {
        options.level = parseSeverity("level", level);
    }
    for (const std::string& text : valuesOf(request, "include")) {
        options.include.push_back(parsePattern("the filter", text));
    }
    for (const std::string& text : valuesOf(request, "exclude")) {
        options.exclude.push_back(parsePattern("the filter", text));
    }
    options.loggers = valuesOf(request, "logger");
    return options;
}

// The number behind the last line that the page has, if it has any.
std::optional<std::uint64_t> nextOf(const WebRequest& request) {
    const std::string& text =
        request.lastEventId.empty() ? request.parameter("after") : request.lastEventId;
    constexpr std::size_t mostDigits = 18;
    if (text.empty() || text.size() > mostDigits ||
        text.find_first_not_of("0123456789") != std::string::npos) {
        return std::nullopt;
    }
    return std::stoull(text) + 1;
}

}  // namespace

void EventStream::run(const WebRequest& request, const BodyWriter& write) {
    std::optional<LineFilter> filter;
    try {
        filter.emplace(filterOf(request));
    } catch (const Failure& failure) {
        write(event("refused", jsonString(failure.description())));
        return;
    }
    const auto hide = valuesOf(request, "hide");
    hidden.insert(hide.begin(), hide.end());
    const std::uint64_t end = sources.store.end();
    next = std::min(end, nextOf(request).value_or(end > mostPastLines ? end - mostPastLines : 0));
    while (!sources.stop.isRequested() && sendState(write) && sendLines(*filter, write)) {
    }
}

bool EventStream::sendState(const BodyWriter& write) {
    // Read first: a change in between is sent next time.
    const std::uint64_t now = sources.processes.version();
    if (now != version) {
        version = now;
        if (!write(event("processes", sources.processes.json()))) {
            return false;
        }
    }
    return sendRates(write);
}

bool EventStream::sendRates(const BodyWriter& write) {
    const std::int64_t last = monotonicMs() / 1000 - 1;
    if (last <= ratesUpTo) {
        return true;
    }
    const auto oldest = last - static_cast<std::int64_t>(MessageRates::secondsKept) + 2;
    std::string list;
    for (const MessageRates::Second& second :
         sources.rates.between(std::max(oldest, ratesUpTo + 1), last)) {
        std::string counts;
        for (const std::uint32_t count : second) {
            counts += (counts.empty() ? "" : ",") + std::to_string(count);
        }
        list += (list.empty() ? "[" : ",[") + counts + "]";
    }
    ratesUpTo = last;
    return write(event("rates", "[" + list + "]"));
}

bool EventStream::sendLines(const LineFilter& filter, const BodyWriter& write) {
    vek::time::MonotonicClock deadline(true);
    deadline += waitMs;
    const LineStore::Taken taken = sources.store.take(next, mostLines, deadline);
    if (taken.missed != 0 && !write(event("missed", std::to_string(taken.missed)))) {
        return false;
    }
    std::string list;
    for (std::size_t i = 0; i < taken.items.size(); ++i) {
        const MergedItem& item = *taken.items[i];
        const bool isHidden =
            item.line && hidden.contains(sources.processes.nameOf(item.arrival.source));
        const LineFilter::Verdict verdict = isHidden    ? LineFilter::Verdict::hidden
                                            : item.line ? filter.judge(*item.line)
                                                        : LineFilter::Verdict::shown;
        undecided = undecided || verdict == LineFilter::Verdict::undecided;
        if (verdict != LineFilter::Verdict::hidden) {
            add(list, taken.first + i, item);
        }
    }
    next = taken.first + taken.items.size();
    if (undecided && !undecidedSent) {
        undecidedSent = true;
        if (!write(event("undecided", "null"))) {
            return false;
        }
    }
    return list.empty() || write(event("lines", "[" + list + "]", std::to_string(next - 1)));
}

void EventStream::add(std::string& list, std::uint64_t number, const MergedItem& item) {
    std::string content;
    switch (item.arrival.kind) {
        case Arrival::message:
            content = item.line ? jsonOf(*item.line)
                                : jsonString("A message that can't be read was left out.");
            break;
        case Arrival::notice:
            content = jsonString(item.arrival.text);
            break;
        case Arrival::dropped:
            content = jsonString(std::to_string(item.arrival.count) +
                                 " lines were dropped, as they came too fast; --buffer gives them "
                                 "more room");
            break;
        case Arrival::ended:
            return;
    }
    list += (list.empty() ? "[" : ",[") + std::to_string(number) + "," +
            std::to_string(item.arrival.source) + "," + content + "]";
}

}  // namespace log_application
