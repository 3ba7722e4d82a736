// The format language of log lines: literal text and keywords in braces. Compile a format once, and
// print messages by Message::printFormatted.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vek::log {

// One element of a compiled format: a literal with its text, which may be empty, or a keyword with
// an empty text.
struct FormatToken {
    std::string text;
    std::int32_t keyword;
};

// The values of FormatToken::keyword. Any other value prints nothing.
enum FormatKeyword : std::int32_t {
    keywordLevel = 0,             // {level}, {scope}: the level's name, in a field of 5
    keywordCategory = 1,          // {category}, {agent}: the logger's name
    keywordMessage = 2,           // {msg}: the text
    keywordPid = 3,               // {pid}: the process id
    keywordTid = 4,               // {tid}: the thread id
    keywordDate = 5,              // {date}: local time, as 2024-02-29 13:05:09
    keywordTimestampSeconds = 6,  // {timestamp_s}: seconds since 1970, as "1709211909 s"
    keywordAttrs = 7,             // {attrs}: " (key = value, key = value)", or nothing
    keywordColorStart = 8,        // {color_start}: the level's colour from here on
    keywordColorEnd = 9,          // {color_end}: white on black from here on
    keywordLiteral = 10,
};

// Compiles `format` into keywords, which are compared byte by byte with their braces, and the
// literals before, between and after them, including empty ones: "{level}{msg}" gives five tokens.
//
// Reports an unknown keyword on std::cerr and keeps it as literal text; the search for the next
// keyword continues after its "{". A "{" without a "}" is literal text and isn't reported. An empty
// format gives one empty literal, which prints nothing; only an empty array means the default
// layout.
//
// Thread-safe, also before main; the reports of two threads may mix. Throws nothing but
// std::bad_alloc.
std::vector<FormatToken> compileFormat(const std::string& format);

}  // namespace vek::log
