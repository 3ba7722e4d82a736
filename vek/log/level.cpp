#include "vek/log/level.h"

#include <array>
#include <cstddef>

#include "vek/base/text.h"
#include "vek/exception.h"

namespace vek::log {

namespace {

// By value. Initialised at compile time, since it is used before main.
constexpr std::array<const char*, 8> names = {"OFF",   "ERR",   "WARN",    "INFO",
                                              "DEBUG", "TRACE", "DEFAULT", "INVALID"};

}  // namespace

const char* levelName(Level level) {
    return names[static_cast<std::size_t>(level)];
}

Level parseLevel(const std::string& text) {
    std::string name = trimmed(text);
    toUpper(name);
    // Deliberately without the last name.
    for (std::int32_t value = OFF; value <= DEFAULT; ++value) {
        if (name == levelName(static_cast<Level>(value))) {
            return static_cast<Level>(value);
        }
    }
    throw UsageError("Invalid LEVEL string \"" + text + "\"");
}

}  // namespace vek::log
