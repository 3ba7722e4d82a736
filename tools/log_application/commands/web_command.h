// log_application::WebCommand: shows processes, levels and messages on a page in the browser.
#pragma once

#include <vector>

#include "tools/log_application/commands/options.h"
#include "tools/log_application/follow/line_queue.h"
#include "tools/log_application/follow/time_merger.h"
#include "tools/log_application/program/exit_code.h"
#include "tools/log_application/program/stop_signal.h"
#include "tools/log_application/web/line_store.h"
#include "tools/log_application/web/message_rates.h"

namespace log_application {

class WatchedProcesses;

// Not thread-safe. Starts a thread for each process and for each connection of the browser.
class WebCommand : public vek::NoCopy {
  public:
    // Neither is owned; both must outlive this.
    WebCommand(const Options& commandOptions, StopSignal& stopSignal);

    // Prints the page's address and serves it until the stop is requested. Levels that were set for
    // a time are put back then. Returns exitDone. Throws Failure if the port can't be listened on
    // or the output fails.
    ExitCode run();

  private:
    void loop(WatchedProcesses& processes);
    void take(std::vector<Arrival> arrivals, WatchedProcesses& processes);
    void store(std::vector<MergedItem> items);

    const Options& options;
    StopSignal& stop;
    LineQueue queue;
    TimeMerger merger;
    LineStore lines;
    MessageRates rates;
};

}  // namespace log_application
