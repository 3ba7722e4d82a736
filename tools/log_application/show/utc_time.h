// Times as machines read them.
#pragma once

#include <cstdint>
#include <string>

namespace log_application {

// `milliseconds` since 1970-01-01 00:00 UTC as "2026-11-21T05:40:41.123Z", for any number; a year
// beyond four digits has its sign in front, as "+12345" and "-0001".
std::string isoUtc(std::int64_t milliseconds);

}  // namespace log_application
