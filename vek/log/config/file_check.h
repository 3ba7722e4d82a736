// Checks a configuration file before it is parsed.
#pragma once

#include <cstddef>
#include <string>

namespace vek::log {

inline constexpr std::size_t maxConfigSize = 16 << 20;  // bytes
inline constexpr std::size_t maxConfigSettings = 5000;
inline constexpr std::size_t maxConfigElements = 500000;
inline constexpr std::size_t maxConfigPiece = 1 << 20;  // bytes

// Reads the whole file `path`. The parser would end the process if a read fails, for instance since
// another process has locked part of the file, and would need minutes for files that no human
// wrote.
//
// Throws OsError if the file can't be read, and RuntimeError if it exceeds one of the limits above.
// Does nothing if it can't be opened: the parser reports that. Calls CreateFileA and ReadFile.
void checkConfigFile(const std::string& path);

}  // namespace vek::log
