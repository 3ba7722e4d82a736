// log_application::EventStream: what one browser sees, as server-sent events.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

#include "tools/log_application/follow/line_filter.h"
#include "tools/log_application/program/stop_signal.h"
#include "tools/log_application/web/http_server.h"
#include "tools/log_application/web/line_store.h"
#include "tools/log_application/web/message_rates.h"
#include "tools/log_application/web/watched_processes.h"

namespace log_application {

// What all streams show. Nothing is owned.
struct WebSources {
    LineStore& store;
    MessageRates& rates;
    WatchedProcesses& processes;
    StopSignal& stop;
};

// Events and their data, which is JSON:
//
// - "processes": WatchedProcesses::json, at the start and after each change,
// - "rates": arrays of the counts of MessageRates, one for each second, up to the last whole one;
//   the first event has the last ten minutes, later ones the seconds since,
// - "lines": an array of [NUMBER, PROCESS, OBJECT] for a line, whose object is that of `jsonOf`, or
//   [NUMBER, PROCESS, TEXT] for a notice. The event's id is the last number looked at,
// - "missed": the number of lines that came too fast for this browser and for the store,
// - "undecided": null, when a line is shown because a search for a pattern was given up,
// - "refused": why the request isn't served, as a text. Nothing follows.
//
// Not thread-safe; each connection has its own.
class EventStream : public vek::NoCopy {
  public:
    // The most lines of the past that a page gets.
    static constexpr std::size_t mostPastLines = 100'000;

    explicit EventStream(const WebSources& webSources) : sources(webSources) {}

    // Writes until the browser has gone or the stop is requested. Parameters of the request, all
    // optional: "level"; "include", "exclude" and "logger", repeatable, as for `tail`; "hide",
    // repeatable: the name of a process; "after": the number of the last line that the page has.
    // "Last-Event-ID" comes before "after": a browser sends it when it connects again. Needs a deep
    // stack for the filter.
    void run(const WebRequest& request, const BodyWriter& write);

  private:
    bool sendState(const BodyWriter& write);
    bool sendRates(const BodyWriter& write);
    bool sendLines(const LineFilter& filter, const BodyWriter& write);
    static void add(std::string& list, std::uint64_t number, const MergedItem& item);

    const WebSources sources;
    std::set<std::string> hidden;
    std::uint64_t next = 0;
    std::uint64_t version = 0;
    std::int64_t ratesUpTo = -1;
    bool undecided = false;
    bool undecidedSent = false;
};

}  // namespace log_application
