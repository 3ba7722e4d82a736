#include "tests/support/gzip/gzip_file.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <zlib.h>

namespace support {

void gzip(const std::string& path) {
    std::ifstream source(path, std::ios::binary);
    std::ostringstream content;
    content << source.rdbuf();
    if (!source.is_open() || source.bad()) {
        throw std::runtime_error(path + " can't be read");
    }
    source.close();
    const std::string packed = path + ".gz";
    const gzFile target = gzopen(packed.c_str(), "wbx");
    if (target == nullptr) {
        throw std::runtime_error(packed + " can't be made");
    }
    const std::string text = content.str();
    const bool written =
        text.empty() || gzwrite(target, text.data(), static_cast<unsigned>(text.size())) > 0;
    if (gzclose(target) != Z_OK || !written) {
        std::remove(packed.c_str());
        throw std::runtime_error(packed + " can't be written");
    }
    if (std::remove(path.c_str()) != 0) {
        std::remove(packed.c_str());
        throw std::runtime_error(path + " can't be removed");
    }
}

std::string gunzip(const std::string& path) {
    const gzFile source = gzopen(path.c_str(), "rb");
    if (source == nullptr) {
        throw std::runtime_error(path + " can't be opened");
    }
    std::string text;
    std::array<char, 4096> piece;
    int size = 0;
    while ((size = gzread(source, piece.data(), piece.size())) > 0) {
        text.append(piece.data(), static_cast<std::size_t>(size));
    }
    const bool compressed = gzdirect(source) == 0;
    if (gzclose(source) != Z_OK || size != 0 || !compressed) {
        throw std::runtime_error(path + " is no whole compressed file");
    }
    return text;
}

}  // namespace support
