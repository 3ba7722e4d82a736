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

enum class Command { ps, levels, set, sinks, save, tail };

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
    std::size_t bufferLines = 200'000;
};

struct Options {
    Command command = Command::ps;
    Selection selection;
    OutputKind output = OutputKind::text;
    SetOptions set;
    TailOptions tail;
};

}  // namespace log_application
