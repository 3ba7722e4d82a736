#include "vek/log/sinks/stdout_sink.h"

#include <iostream>

#include "vek/base/console_colors.h"

namespace vek::log {

StdoutSink::StdoutSink(const SinkConfig& settings)
    : Sink(config), config(settings), useColor(colorEnabled(std::cout)) {}

void StdoutSink::store(const Message& message) {
    render(std::cout, message, useColor);
    std::cout << std::endl;
}

}  // namespace vek::log
