// The texts and the number that a child process is started with, worked out from plain values.
//
// Throw nothing but std::bad_alloc. Safe from any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vek::proc {

// The processors that one affinity mask has room for.
inline constexpr std::uint32_t maxCpus = 32;

// The mask of the lowest `count` processors; `count` is 0 to maxCpus.
constexpr std::uint32_t affinityMask(std::uint32_t count) {
    return count == maxCpus ? ~std::uint32_t{0} : (std::uint32_t{1} << count) - 1;
}

// Each argument between double quotation marks, with single blanks between them. A quotation mark
// or a backslash within an argument isn't protected, deliberately: the child sees what its own
// runtime makes of them.
std::string quotedCommandLine(const std::vector<std::string>& arguments);

// Each entry ("NAME=value") followed by a zero byte. The string's own terminator, which c_str() has
// and size() doesn't count, is the zero byte that closes the block.
std::string environmentBlock(const std::vector<std::string>& entries);

}  // namespace vek::proc
