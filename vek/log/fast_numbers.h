// Numbers in the texts of statements. The runtime's insertion of one `double` into a stream takes
// as long as the rest of a statement; std::to_chars gives the same text in a third of the time, and
// shortGeneral of everyday numbers in a tenth.
#pragma once

#include <ostream>

namespace vek::log {

// Makes `stream` print integers and `double` by these wherever that gives the same text as
// the runtime's std::num_put, and by the latter everywhere else: with a field width, with showpos,
// showbase, showpoint or uppercase, in another base than ten, in hexadecimal notation, for infinite
// values and those that aren't numbers, for very long texts, and for `long double`.
//
// Keeps the stream's locale, in a copy that has another std::num_put. If the program gives the
// stream a locale later, that one's rules hold. Call it once for each stream, and again after
// copyfmt, which brings another stream's locale. Throws std::bad_alloc.
void printNumbersFast(std::ostream& stream);

}  // namespace vek::log
