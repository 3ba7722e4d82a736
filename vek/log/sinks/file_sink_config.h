// vek::log::FileSinkConfig: the settings of a file sink.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include "vek/log/sink.h"

namespace vek::log {

// A file sink replaces a 0 in one of the three numbers by its own default: 0 never means off.
struct FileSinkConfig : SinkConfig {
    FileSinkConfig() = default;
    explicit FileSinkConfig(std::string logFile);

    // The path of the log file.
    std::string path;
    // Enables rotation, both by size and by age.
    bool rotate = false;
    // The most archives after a rotation. A negative number in a configuration is a very large one
    // here.
    std::uint32_t max_archives = 0;
    // The size in KiB above which the file is rotated.
    std::uint64_t rotate_size = 0;
    // The age in seconds above which the file is rotated.
    std::uint64_t rotate_interval = 0;
    // Compresses an archive when it is made.
    bool compress_archives = true;
};

// Writes the fields that a FileSinkConfig adds, one a line, as "max_archives: 3", without a line
// end after the last. Numbers are decimal and flags 0 or 1, whatever the format flags of `stream`.
// Returns `stream`.
std::ostream& operator<<(std::ostream& stream, const FileSinkConfig& config);

}  // namespace vek::log
