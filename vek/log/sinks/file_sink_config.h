// vek::log::FileSinkConfig: the settings of a file sink.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include "vek/log/sink.h"

namespace vek::log {

// A file sink replaces a 0 of the three numbers by its own default, so that a 0 never means off.
struct FileSinkConfig : SinkConfig {
    FileSinkConfig() = default;
    explicit FileSinkConfig(std::string logFile);

    // Where the log file stands.
    std::string path;
    // Whether the file is rotated at all, by its size and by its age.
    bool rotate = false;
    // How many archives there may be after a rotation. A negative number in a configuration is a
    // very large one here.
    std::uint32_t max_archives = 0;
    // In KiB: the file is rotated when it is larger than this.
    std::uint64_t rotate_size = 0;
    // In seconds: the file is rotated when it has been current for longer than this.
    std::uint64_t rotate_interval = 0;
    // Whether an archive is compressed when it is made.
    bool compress_archives = true;
};

// Writes the fields that a FileSinkConfig adds, one on each line, without a line end behind the
// last: "max_archives: 3". Numbers are decimal and flags 0 or 1, whatever the flags of `stream`
// say. Gives `stream` back.
std::ostream& operator<<(std::ostream& stream, const FileSinkConfig& config);

}  // namespace vek::log
