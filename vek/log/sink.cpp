#include "vek/log/sink.h"

namespace vek::log {

void Sink::render(std::ostream& stream, const Message& message, bool useColor) const {
    if (config->format.empty()) {
        message.printPlain(stream, config->print_pids, config->print_tids, config->print_time,
                           useColor);
    } else {
        message.printFormatted(stream, config->format, useColor);
    }
}

}  // namespace vek::log
