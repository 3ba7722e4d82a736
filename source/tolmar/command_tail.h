// What the raw tail of the helper's command line asks for. Pure: no system call, no state.
#pragma once

#include <array>
#include <cstddef>

namespace tolmar {

enum class Mode { nothing, replace, restartGui };

// Room for every path that is formatted with a directory of an accepted tail.
inline constexpr std::size_t pathBufferSize = 256;
using PathBuffer = std::array<char, pathBufferSize>;

// A tail of this length or more is refused whole.
inline constexpr std::size_t refusedTailLength = 223;

// The mode that `tail`, a terminated text, asks for: `nothing` for an empty one or one of
// refusedTailLength bytes or more; `restartGui` if its first 11 bytes are "-restartgui", whatever
// follows; else `replace`.
Mode selectMode(const char* tail);

// Copies the directory of `tail`, for which `selectMode` gave `mode` (which isn't `nothing`), into
// `directory`, terminated and without its double quotes. False if the index of the closing quote is
// out of range, which is a tail that has nothing behind its one quote; the process must end then.
bool copyDirectory(const char* tail, Mode mode, PathBuffer& directory);

}  // namespace tolmar
