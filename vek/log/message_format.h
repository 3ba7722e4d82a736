// The format language of log lines: literal text and keywords in braces, compiled once and rendered
// by Message::printFormatted.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vek::log {

// One element of a compiled format: a literal with its text (possibly none), or a keyword with an
// empty text.
struct FormatToken {
    std::string text;
    std::int32_t keyword;
};

// The values of FormatToken::keyword.
enum FormatKeyword : std::int32_t {
    keywordLevel = 0,
    keywordCategory = 1,
    keywordMessage = 2,
    keywordPid = 3,
    keywordTid = 4,
    keywordDate = 5,
    keywordTimestampSeconds = 6,
    keywordAttrs = 7,
    keywordColorStart = 8,
    keywordColorEnd = 9,
    keywordLiteral = 10,
};

// Compiles `format`. An unknown keyword is reported on std::cerr and stays as literal text. An
// empty format gives one empty literal, which renders as nothing; only an empty array means the
// default layout. Safe from any thread. Throws nothing but std::bad_alloc.
std::vector<FormatToken> compileFormat(const std::string& format);

}  // namespace vek::log
