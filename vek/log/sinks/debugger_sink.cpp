#include "vek/log/sinks/debugger_sink.h"

#include "vek/base/windows.h"

namespace vek::log {

DebuggerSink::DebuggerSink(const SinkConfig& settings) : Sink(config), config(settings) {}

void DebuggerSink::store(const Message& message) {
    buffer.str("");
    // The stream is in a failed state if memory ran out in an earlier message.
    buffer.clear();
    render(buffer, message, false);
    std::string line = buffer.str();
    line += '\n';
    OutputDebugStringA(line.c_str());
}

}  // namespace vek::log
