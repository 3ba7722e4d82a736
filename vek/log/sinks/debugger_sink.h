// vek::log::DebuggerSink: hands messages to the debugger, or to whatever else listens to the
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
    // Hands `message` with a line feed behind it, as one text and never with colours, to
    // OutputDebugStringA; without a listener that has no effect. The system takes the text up to
    // its first NUL, so that a message that holds one is cut there, the line feed included.
    // SinkConfig::enabled isn't looked at. Throws nothing but std::bad_alloc.
    void store(const Message& message) override;

    // "debugger".
    std::string id() const override { return "debugger"; }

  private:
    // Kept between messages for its memory.
    std::stringstream buffer;
    const SinkConfig config;
};

}  // namespace vek::log
