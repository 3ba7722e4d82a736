// printf-style formatting into a std::string.
#pragma once

#include <cstdarg>
#include <string>

#include "vek/base/compiler.h"

namespace vek {

// Returns the text of `pattern`, a printf format of the C runtime, either plain ("%s %d") or with
// numbered arguments ("%2$s %1$d"; then all must be numbered, without gaps). The text may have any
// length and may contain zero bytes (by "%c").
//
// Returns the empty string for an argument that the runtime can't encode, for a format that it
// refuses, and for a null `pattern`. The arguments must have the types that the format names; the
// compiler checks this for literal patterns. Throws nothing but std::bad_alloc. Thread-safe. Calls
// vsnprintf and _vsprintf_p.
VEK_PRINTF(1, 2) std::string format(const char* pattern, ...);

// The same with the arguments of a caller that has its own "...". `arguments` can be used again
// afterwards; the caller calls va_end.
VEK_PRINTF(1, 0) std::string formatv(const char* pattern, std::va_list arguments);

}  // namespace vek
