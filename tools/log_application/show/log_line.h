// log_application::LogLine: one message of a process, as it came over the wire.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "vek/log/level.h"

namespace log_application {

// A field is empty where the telegram lacks it or holds something that can't be read.
struct LogLine {
    std::optional<std::int64_t> when;  // milliseconds since 1970-01-01 00:00 UTC
    std::optional<vek::log::Level> level;
    std::optional<std::string> logger;
    std::optional<std::uint32_t> pid;
    std::optional<std::uint32_t> tid;
    std::optional<std::string> text;
    std::map<std::string, std::string> attributes;

    // Whether each field that every message has is there.
    bool isComplete() const { return when && level && logger && pid && tid && text; }
};

// The line that the telegram `payload` carries; none if its type isn't "message". The wire has no
// escape for its separator 0x1F: a text that holds it is put together again from what stands around
// it. Attributes whose keys and values can't be paired, since one of them holds a bar, are given as
// one attribute, with all keys as its key. Throws vek::log::Telegram::ParseError for what is no
// telegram.
std::optional<LogLine> parseLogLine(std::string_view payload);

}  // namespace log_application
