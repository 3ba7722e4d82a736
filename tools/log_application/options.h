// log_application::Options: what the user asked for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "tools/log_application/endpoint.h"
#include "tools/log_application/level_change.h"
#include "tools/log_application/line_filter.h"
#include "tools/log_application/line_renderer.h"

namespace log_application {

enum class Command { ps, levels, set, sinks, save, tail };

// Which processes are meant: those of `connect`, and those found that have one of the names or of
// the ids. With nothing given, whichever are found.
struct Selection {
    std::vector<std::string> names;
    std::vector<std::uint32_t> pids;
    std::vector<Endpoint> connect;
    std::vector<Endpoint> hosts;  // where to ask; empty: on this host, and by broadcast
    bool all = false;             // all that are found may be changed

    bool isEmpty() const { return names.empty() && pids.empty() && connect.empty(); }
    bool needsDiscovery() const { return connect.empty() || !names.empty() || !pids.empty(); }
};

struct SetOptions {
    std::vector<LevelChange> changes;
    std::optional<vek::log::Level> defaultLevel;
    std::optional<std::int64_t> forMs;  // put the earlier levels back after so long
};

struct TailOptions {
    FilterOptions filter;
    std::string format;                // empty: the one that fits
    std::optional<std::regex> expect;  // ends with the first line whose text it is found in
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
