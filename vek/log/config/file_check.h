// What a configuration file has to pass ahead of its parser.
#pragma once

#include <cstddef>
#include <string>

namespace vek::log {

inline constexpr std::size_t maxConfigSize = 16 << 20;  // bytes
inline constexpr std::size_t maxConfigSettings = 5000;
inline constexpr std::size_t maxConfigElements = 500000;
inline constexpr std::size_t maxConfigPiece = 1 << 20;  // bytes

// Reads the file `path` through, since the parser ends the process where the system refuses to read
// on, as from a file of which another process has locked a part, and needs minutes for files that
// no human wrote.
//
// Throws OsError if the file can't be read, and RuntimeError if it is beyond one of the limits
// above. A file that can't be opened is left to the parser: nothing happens. Stands on CreateFileA
// and ReadFile.
void checkConfigFile(const std::string& path);

}  // namespace vek::log
