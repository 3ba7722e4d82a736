// Parses the helper's command line. Pure: no system call, no state.
#pragma once

#include <array>
#include <cstddef>

namespace tolmar {

enum class Mode { nothing, replace, restartGui };

// Size of the buffers for paths: holds the directory of any accepted tail with any suffix.
inline constexpr std::size_t pathBufferSize = 256;
using PathBuffer = std::array<char, pathBufferSize>;

// A tail of this length or more is refused.
inline constexpr std::size_t refusedTailLength = 223;

// Returns the command tail: what follows the program's name in `commandLine`, the process's whole
// command line, terminated. The result points into `commandLine`, at its terminator if there is no
// tail.
//
// The name ends at the first blank or control character outside double quotes; the blanks and tabs
// behind it are skipped. Bytes are compared unsigned. The compiler's start-up code compares them
// signed, which takes every byte from 0x80 on as a control character: it ends an unquoted name at a
// letter such as an umlaut, and drops such letters from the start of the tail.
const char* commandTail(const char* commandLine);

// Returns the mode that `tail`, terminated, asks for: `nothing` if it is empty or has
// refusedTailLength bytes or more; `restartGui` if its first 11 bytes are "-restartgui", whatever
// follows; else `replace`.
Mode selectMode(const char* tail);

// Copies the directory of `tail` into `directory`, terminated and without its double quotes. `mode`
// is what `selectMode` returned for `tail`, and not `nothing`. Returns false if the index of the
// closing quote is out of range, which happens if nothing follows the one quote; the process must
// end then.
bool copyDirectory(const char* tail, Mode mode, PathBuffer& directory);

}  // namespace tolmar
