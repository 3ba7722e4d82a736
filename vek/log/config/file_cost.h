// What a configuration file would cost its parser.
#pragma once

#include <cstddef>
#include <string_view>

namespace vek::log {

// The three counts that the parser's time grows with by the square. By far more than a file for
// human eyes has, these would keep a program from starting for minutes.
struct ConfigCost {
    // Names with a value. Each is searched for among those of its group.
    std::size_t settings = 0;
    // Elements of arrays and lists. Settings that end by a comma count too.
    std::size_t elements = 0;
    // Bytes of the longest comment line, text or stretch of blanks and words.
    std::size_t longestPiece = 0;
};

// Counts in `text`, which need not be well-formed; what it includes is not looked at. Throws
// nothing.
ConfigCost costOfConfig(std::string_view text);

}  // namespace vek::log
