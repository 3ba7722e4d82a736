// log_application::ForwardCommand: sends the messages of one or several processes to a log
// collector.
#pragma once

#include <string>

#include "tools/log_application/commands/options.h"
#include "tools/log_application/follow/following.h"
#include "tools/log_application/forward/sender.h"
#include "tools/log_application/program/exit_code.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

// Not thread-safe. Starts a thread for each process and one for the collector.
class ForwardCommand : public vek::NoCopy, private LineOutput {
  public:
    // The time for what is left at the end, in milliseconds. Shorter than the system gives a
    // program whose console is closed.
    static constexpr std::int64_t flushLimitMs = 3000;

    // Neither is owned; both must outlive this.
    ForwardCommand(const Options& commandOptions, StopSignal& stopSignal);

    // Blocks until the stop or the end of --timeout, and up to `flushLimitMs` longer. Returns
    // exitDone, or exitLost if not all messages were sent then. Throws Failure if the search fails.
    ExitCode run();

  private:
    void write(const LogLine& line, const Follower& from) override;
    void writeDropped(const std::string& label, std::uint64_t count) override;
    void reportUndecided(const std::string& label) override;
    void flush() override {}
    void poll() override;
    SyslogOrigin originOf(const Follower& from) const;

    const int facility;
    const std::string hostName;
    bool undecidedReported = false;
    Sender sender;
    // Destroyed first: its threads end then.
    Following following;
};

}  // namespace log_application
