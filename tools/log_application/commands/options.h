// log_application::Options: the parsed command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/log_application/connection/level_change.h"
#include "tools/log_application/finding/selection.h"
#include "tools/log_application/follow/following.h"
#include "tools/log_application/forward/collector_address.h"
#include "tools/log_application/forward/syslog_message.h"
#include "tools/log_application/show/line_renderer.h"

namespace log_application {

enum class Command { ps, levels, set, sinks, save, tail, web, forward };

struct SetOptions {
    std::vector<LevelChange> changes;
    std::optional<vek::log::Level> defaultLevel;
    std::optional<std::int64_t> forMs;  // restore the earlier levels after this time
};

struct TailOptions {
    std::string format;                 // empty: the default format
    std::optional<TextPattern> expect;  // tail ends at the first line whose text it is found in
};

struct WebOptions {
    std::uint16_t port = 0;  // of 127.0.0.1; 0: a free one
};

struct ForwardOptions {
    CollectorAddress to;
    int facility = userFacility;
};

struct Options {
    Command command = Command::ps;
    Selection selection;
    OutputKind output = OutputKind::text;
    SetOptions set;
    FollowOptions follow;
    TailOptions tail;
    WebOptions web;
    ForwardOptions forward;
};

}  // namespace log_application
