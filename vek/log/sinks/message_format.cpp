#include "vek/log/sinks/message_format.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iostream>
#include <string_view>

namespace vek::log {

namespace {

struct Keyword {
    std::string_view text;
    FormatKeyword value;
};

// In byte order. Initialised at compile time, since formats may be compiled before main.
constexpr std::array<Keyword, 12> keywords = {{
    {"{agent}", keywordCategory},
    {"{attrs}", keywordAttrs},
    {"{category}", keywordCategory},
    {"{color_end}", keywordColorEnd},
    {"{color_start}", keywordColorStart},
    {"{date}", keywordDate},
    {"{level}", keywordLevel},
    {"{msg}", keywordMessage},
    {"{pid}", keywordPid},
    {"{scope}", keywordLevel},
    {"{tid}", keywordTid},
    {"{timestamp_s}", keywordTimestampSeconds},
}};
static_assert(std::ranges::is_sorted(keywords, {}, &Keyword::text));

// Null for an unknown keyword.
const Keyword* findKeyword(std::string_view text) {
    const auto found = std::ranges::lower_bound(keywords, text, {}, &Keyword::text);
    return found != keywords.end() && found->text == text ? &*found : nullptr;
}

void reportUnknown(std::string_view keyword) {
    std::cerr << "Unknown veklog message format keyword '" << keyword << "' encountered!"
              << std::endl;
}

}  // namespace

std::vector<FormatToken> compileFormat(const std::string& format) {
    std::vector<FormatToken> tokens;
    std::size_t pos = 0;    // the start of the text that no token covers yet
    std::size_t close = 0;  // the last "}" found; npos if there is none left
    for (std::size_t open = 0;; ++open) {
        open = format.find('{', open);
        // Deliberately also if the piece is empty.
        tokens.push_back({format.substr(pos, open - pos), keywordLiteral});
        if (open == std::string::npos) {
            return tokens;
        }
        pos = open;
        if (close <= open) {
            close = format.find('}', open);
        }
        if (close == std::string::npos) {
            continue;
        }
        const std::string_view candidate(&format[open], close + 1 - open);
        if (const Keyword* const keyword = findKeyword(candidate)) {
            tokens.push_back({std::string(), keyword->value});
            pos = close + 1;
        } else {
            reportUnknown(candidate);
        }
    }
}

}  // namespace vek::log
