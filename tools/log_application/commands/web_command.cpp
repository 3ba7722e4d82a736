#include "tools/log_application/commands/web_command.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include "tools/log_application/program/console.h"
#include "tools/log_application/program/waiting.h"
#include "tools/log_application/web/token.h"
#include "tools/log_application/web/watched_processes.h"
#include "tools/log_application/web/web_page.h"

namespace log_application {

namespace {

// Requests the stop in any case, so that the threads end whose owners are destroyed next.
class StopAtEnd : public vek::NoCopy {
  public:
    explicit StopAtEnd(StopSignal& stopSignal) : stop(stopSignal) {}
    ~StopAtEnd() { stop.request(); }

  private:
    StopSignal& stop;
};

}  // namespace

WebCommand::WebCommand(const Options& commandOptions, StopSignal& stopSignal)
    : options(commandOptions),
      stop(stopSignal),
      queue(commandOptions.follow.bufferLines),
      merger(TimeMerger::usualWindowMs),
      lines(commandOptions.follow.bufferLines) {}

ExitCode WebCommand::run() {
    const std::string token = randomToken();
    WatchedProcesses processes(options.selection, stop, queue);
    WebPage page({lines, rates, processes, stop});
    const StopAtEnd first(stop);
    const HttpServer server(
        options.web.port, token,
        [&page](const WebRequest& request) { return page.answer(request); }, WebPage::postPaths);
    const StopAtEnd second(stop);
    std::cout << "http://127.0.0.1:" << server.port() << "/" << token << "/\n";
    flushOutput();
    say("Open this address in a browser of this machine. It holds a password: whoever knows it can "
        "read the messages and change levels. Ctrl-C ends the page.");
    loop(processes);
    return exitDone;
}

void WebCommand::loop(WatchedProcesses& processes) {
    while (!stop.isRequested()) {
        vek::time::MonotonicClock deadline(true);
        const std::int64_t now = deadline.getValue();
        const std::int64_t ready = merger.nextReady().value_or(now + stopPollMs);
        deadline += std::clamp<std::int64_t>(ready - now, 0, stopPollMs);
        take(queue.take(deadline), processes);
        store(merger.takeReady(monotonicMs()));
    }
}

void WebCommand::take(std::vector<Arrival> arrivals, WatchedProcesses& processes) {
    const std::int64_t now = monotonicMs();
    for (Arrival& arrival : arrivals) {
        if (arrival.kind == Arrival::ended) {
            processes.noteEnd(arrival.source);
            continue;
        }
        MergedItem item = itemOf(std::move(arrival));
        // The line has all of it.
        if (item.line) {
            item.arrival.text.clear();
        }
        if (item.arrival.kind == Arrival::message) {
            rates.count(now / 1000, item.line ? item.line->level : std::nullopt);
        }
        merger.add(std::move(item), now);
    }
}

void WebCommand::store(std::vector<MergedItem> items) {
    if (!items.empty()) {
        lines.add(std::move(items));
    }
}

}  // namespace log_application
