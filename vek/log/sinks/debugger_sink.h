// vek::log::DebuggerSink: sends messages to the debugger, or to another program that reads the
// system's debugger output.
#pragma once

#include <sstream>
#include <string>

#include "vek/log/sink.h"

namespace vek::log {

class DebuggerSink : public Sink {
  public:
    // Copies `settings`.
    explicit DebuggerSink(const SinkConfig& settings);

    // sinkDebugger.
    int type() const override { return sinkDebugger; }

    using Sink::store;
    // Calls OutputDebugStringA with `message` and a line feed as one text, without colours. Has no
    // effect if no program reads it. The system cuts the text, including the line feed, at its
    // first NUL. Ignores SinkConfig::enabled. Throws nothing but std::bad_alloc.
    void store(const Message& message) override;

    // "debugger".
    std::string id() const override { return "debugger"; }

  private:
    // Reused for each message, to keep its memory.
    std::stringstream buffer;
    const SinkConfig config;
};

}  // namespace vek::log
