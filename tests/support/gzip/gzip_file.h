// Files compressed in the gzip format, and read back.
#pragma once

#include <string>

namespace support {

// Puts "PATH.gz" in the place of the file `path`. Throws std::runtime_error, and leaves `path` as
// it is, if one of them can't be read or written, or if "PATH.gz" exists.
void gzip(const std::string& path);

// What the compressed file `path` holds. Throws std::runtime_error if it isn't compressed, or isn't
// whole.
std::string gunzip(const std::string& path);

}  // namespace support
