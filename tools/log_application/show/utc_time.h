// Times in ISO 8601.
#pragma once

#include <cstdint>
#include <string>

namespace log_application {

// Formats `milliseconds` since 1970-01-01 00:00 UTC as "2026-11-21T05:40:41.123Z". Takes any
// number: a year outside 0 to 9999 is written with its sign, as "+12345" and "-0001". Throws
// nothing but std::bad_alloc.
std::string isoUtc(std::int64_t milliseconds);

}  // namespace log_application
