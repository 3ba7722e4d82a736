// The command line, environment block and affinity mask of a child process, as pure functions.
//
// They throw nothing but std::bad_alloc. Thread-safe.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vek::proc {

// The number of bits in an affinity mask.
inline constexpr std::uint32_t maxCpus = 32;

// Returns the mask of the lowest `count` processors; `count` is 0 to maxCpus.
constexpr std::uint32_t affinityMask(std::uint32_t count) {
    return count == maxCpus ? ~std::uint32_t{0} : (std::uint32_t{1} << count) - 1;
}

// Returns the arguments, each in double quotation marks, separated by single blanks. Quotation
// marks and backslashes inside an argument aren't escaped, deliberately: the child's runtime
// interprets them.
std::string quotedCommandLine(const std::vector<std::string>& arguments);

// Returns the entries ("NAME=value"), each followed by a zero byte. The string's own terminator,
// which size() doesn't count, is the zero byte that ends the block.
std::string environmentBlock(const std::vector<std::string>& entries);

}  // namespace vek::proc
