#include "vek/log/config/file_check.h"

#include <array>

#include "vek/base/format.h"
#include "vek/exception.h"
#include "vek/fs/stream_file.h"
#include "vek/log/config/file_cost.h"

namespace vek::log {

namespace {

bool openForReading(fs::StreamFile& file, const std::string& path) {
    try {
        file.open(path, fs::Access::read);
        return true;
    } catch (const FsError&) {
        return false;
    }
}

void refuseBeyond(const std::string& path, std::size_t count, std::size_t limit, const char* what) {
    if (count > limit) {
        throw RuntimeError(format("Configuration file '%s' has more than %lu %s", path.c_str(),
                                  static_cast<unsigned long>(limit), what));
    }
}

std::string readThrough(fs::StreamFile& file, const std::string& path) {
    std::string text;
    std::array<char, 65536> block;
    while (const std::uint32_t size = file.read(block.data(), block.size())) {
        text.append(block.data(), size);
        refuseBeyond(path, text.size(), maxConfigSize, "bytes");
    }
    return text;
}

}  // namespace

void checkConfigFile(const std::string& path) {
    fs::StreamFile file;
    if (!openForReading(file, path)) {
        return;
    }
    const ConfigCost cost = costOfConfig(readThrough(file, path));
    refuseBeyond(path, cost.settings, maxConfigSettings, "settings");
    refuseBeyond(path, cost.elements, maxConfigElements, "elements of lists");
    refuseBeyond(path, cost.longestPiece, maxConfigPiece, "bytes in one piece");
}

}  // namespace vek::log
