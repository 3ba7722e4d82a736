#include "vek/log/sinks/file_sink_config.h"

#include <utility>

namespace vek::log {

FileSinkConfig::FileSinkConfig(std::string logFile) : path(std::move(logFile)) {}

std::ostream& operator<<(std::ostream& stream, const FileSinkConfig& config) {
    return stream << "path: " << config.path << "\nrotate: " << (config.rotate ? '1' : '0')
                  << "\nmax_archives: " << std::to_string(config.max_archives)
                  << "\nrotate_size: " << std::to_string(config.rotate_size)
                  << " kb\nrotate_interval: " << std::to_string(config.rotate_interval)
                  << " s\ncompress_archives: " << (config.compress_archives ? '1' : '0');
}

}  // namespace vek::log
