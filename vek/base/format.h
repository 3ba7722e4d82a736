// printf-style formatting into a std::string.
#pragma once

#include <cstdarg>
#include <string>

namespace vek {

// The text of `pattern`, which is a printf format of the C runtime, either plain ("%s %d") or with
// numbered arguments ("%2$s %1$d"; then all must be numbered, and no number be left out). A text
// may have any length and may hold zero bytes (by "%c").
//
// An argument that the runtime can't encode, and a format that it refuses, give the empty string;
// so does a null `pattern`. The arguments must be of the types that the format names. Throws
// nothing but std::bad_alloc. Safe from any thread. Stands on vsnprintf and _vsprintf_p.
std::string format(const char* pattern, ...);

// The same with the arguments of a caller that has its own "...". `arguments` can be used again
// afterwards; the caller ends it.
std::string formatv(const char* pattern, std::va_list arguments);

}  // namespace vek
