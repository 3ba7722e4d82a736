// vek::log::StdoutSink: writes messages to the standard output, in colours where that is a console.
#pragma once

#include <string>

#include "vek/log/sink.h"

namespace vek::log {

// No lock stands between this sink and others that write to std::cout: their output may fall
// between the pieces of a line, and get its colour.
class StdoutSink : public Sink {
  public:
    // Copies `settings`. Whether the lines are coloured is settled here, by what colorEnabled says
    // of std::cout now.
    explicit StdoutSink(const SinkConfig& settings);

    // sinkStdout.
    int type() const override { return sinkStdout; }

    using Sink::store;
    // Writes `message` and a line end to std::cout and flushes it. The colours are those of
    // levelColor, and act on the console at once: std::cout must not hold text back by a buffer of
    // its own, as it doesn't unless a program parts it from stdout.
    //
    // A std::cout in a failed state takes nothing, in silence; SinkConfig::enabled isn't looked at.
    // Throws OsError where colours are on (by VEK_FORCE_COLOR, or for the device "nul") and the
    // standard output is no console: the line is left unfinished then. Throws besides what
    // std::cout throws if it is set up to do that, and std::bad_alloc.
    void store(const Message& message) override;

    // "stdout".
    std::string id() const override { return "stdout"; }

  private:
    const SinkConfig config;
    const bool useColor;
};

}  // namespace vek::log
