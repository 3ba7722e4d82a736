// Estimates the time that the parser needs for a configuration file.
#pragma once

#include <cstddef>
#include <string_view>

namespace vek::log {

// The three counts in which the parser's time is quadratic. Counts far beyond those of a file
// written by a human would keep a program from starting for minutes.
struct ConfigCost {
    // Names with a value. The parser compares each with all others of its group.
    std::size_t settings = 0;
    // Elements of arrays and lists. Settings that end with a comma count, too.
    std::size_t elements = 0;
    // The size in bytes of the longest comment line, text or sequence of blanks and words.
    std::size_t longestPiece = 0;
};

// Returns the counts of `text`, which need not be well-formed. Ignores included files. Throws
// nothing. Thread-safe.
ConfigCost costOfConfig(std::string_view text);

}  // namespace vek::log
