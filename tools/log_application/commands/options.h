// log_application::Options: the parsed command line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/log_application/connection/level_change.h"
#include "tools/log_application/finding/selection.h"
#include "tools/log_application/follow/line_filter.h"
#include "tools/log_application/show/line_renderer.h"

namespace log_application {

enum class Command { ps, levels, set, sinks, save, tail, web };

struct SetOptions {
    std::vector<LevelChange> changes;
    std::optional<vek::log::Level> defaultLevel;
    std::optional<std::int64_t> forMs;  // restore the earlier levels after this time
};

struct TailOptions {
    FilterOptions filter;
    std::string format;                 // empty: the default format
    std::optional<TextPattern> expect;  // tail ends at the first line whose text it is found in
    std::optional<std::int64_t> timeoutMs;
    bool reconnect = false;
    std::size_t bufferLines = 200'000;  // of web too
};

struct WebOptions {
    std::uint16_t port = 0;  // of 127.0.0.1; 0: a free one
};

struct Options {
    Command command = Command::ps;
    Selection selection;
    OutputKind output = OutputKind::text;
    SetOptions set;
    TailOptions tail;
    WebOptions web;
};

}  // namespace log_application
