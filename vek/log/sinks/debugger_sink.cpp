#include "vek/log/sinks/debugger_sink.h"

#include "vek/base/windows.h"

namespace vek::log {

DebuggerSink::DebuggerSink(const SinkConfig& settings) : Sink(config), config(settings) {}

void DebuggerSink::store(const Message& message) {
    buffer.str("");
    // Memory that ran out in an earlier message leaves the stream in a failed state.
    buffer.clear();
    render(buffer, message, false);
    std::string line = buffer.str();
    line += '\n';
    OutputDebugStringA(line.c_str());
}

}  // namespace vek::log
