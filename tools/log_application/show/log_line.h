// log_application::LogLine: one log message as a process sent it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "vek/log/level.h"

namespace log_application {

// A field is empty if the telegram lacks it or it can't be parsed.
struct LogLine {
    std::optional<std::int64_t> when;  // milliseconds since 1970-01-01 00:00 UTC
    std::optional<vek::log::Level> level;
    std::optional<std::string> logger;
    std::optional<std::uint32_t> pid;
    std::optional<std::uint32_t> tid;
    std::optional<std::string> text;
    std::map<std::string, std::string> attributes;

    // True if all fields that every message has are present.
    bool isComplete() const { return when && level && logger && pid && tid && text; }
};

// Parses the telegram `payload`. Returns none if its type isn't "message". The protocol doesn't
// escape its separator 0x1F: a text that holds it is restored from the keys before and behind it.
// If a key or value of an attribute holds a bar, keys and values can't be paired: they are returned
// as one attribute, whose key is the text of all keys. Throws vek::log::Telegram::ParseError if
// `payload` isn't a telegram.
std::optional<LogLine> parseLogLine(std::string_view payload);

}  // namespace log_application
