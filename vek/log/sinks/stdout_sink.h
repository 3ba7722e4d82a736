// vek::log::StdoutSink: writes messages to the standard output, in colours if that is a console.
#pragma once

#include <string>

#include "vek/log/sink.h"

namespace vek::log {

// Takes no lock on std::cout: output of other code may appear within a line, and in its colour.
class StdoutSink : public Sink {
  public:
    // Copies `settings`. Calls colorEnabled for std::cout, once, to decide whether lines are
    // coloured.
    explicit StdoutSink(const SinkConfig& settings);

    // sinkStdout.
    int type() const override { return sinkStdout; }

    using Sink::store;
    // Writes `message` and a line end to std::cout and flushes it. The colours are those of
    // levelColor and change the console at once, so std::cout must not buffer text itself; it
    // doesn't as long as it is synchronised with stdout.
    //
    // If std::cout is in a failed state, the message is lost silently. Ignores SinkConfig::enabled.
    // Throws OsError if colours are on (by VEK_FORCE_COLOR, or for the device "nul") and the
    // standard output is no console; the line is incomplete then. Throws also what std::cout
    // throws if exceptions are enabled on it, and std::bad_alloc.
    void store(const Message& message) override;

    // "stdout".
    std::string id() const override { return "stdout"; }

  private:
    const SinkConfig config;
    const bool useColor;
};

}  // namespace vek::log
