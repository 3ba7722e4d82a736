#include "vek/log/logger.h"

#include <utility>

namespace vek::log {

Logger::Logger(std::string loggerName, Level initialLevel)
    : ownName(std::move(loggerName)), currentLevel(initialLevel) {}

std::ostream& Logger::stream() {
    try {
        lock.lock();
    } catch (...) {
        // The mutex throws with its section entered once more; the outer statement goes on with its
        // own lock.
        lock.unlock();
        throw;
    }
    buffer.str("");
    out.clear();
    return out;
}

void Logger::emit(Level /*messageLevel*/, const std::string& /*text*/) {}

}  // namespace vek::log
