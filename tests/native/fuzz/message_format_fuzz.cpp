// Formats of log lines, as a configuration or a command line gives them, and lines rendered by
// them.
#include <array>
#include <iomanip>
#include <sstream>
#include <string_view>

#include "tests/native/fuzz/fuzz.h"
#include "tests/vek/log/sample_message.h"
#include "vek/log/sinks/message_format.h"
#include "vek/log/sinks/time_text.h"

namespace {

using namespace vek::log;
using vek::test::require;

struct Spelling {
    std::int32_t keyword;
    std::string_view text;
};

constexpr std::array<Spelling, 12> spellings = {{{keywordLevel, "{level}"},
                                                 {keywordLevel, "{scope}"},
                                                 {keywordCategory, "{category}"},
                                                 {keywordCategory, "{agent}"},
                                                 {keywordMessage, "{msg}"},
                                                 {keywordPid, "{pid}"},
                                                 {keywordTid, "{tid}"},
                                                 {keywordDate, "{date}"},
                                                 {keywordTimestampSeconds, "{timestamp_s}"},
                                                 {keywordAttrs, "{attrs}"},
                                                 {keywordColorStart, "{color_start}"},
                                                 {keywordColorEnd, "{color_end}"}}};

// How long the spelling of `keyword` is that `format` goes on with at `at`; 0 for none.
std::size_t spelled(std::string_view format, std::size_t at, std::int32_t keyword) {
    for (const Spelling& spelling : spellings) {
        if (spelling.keyword == keyword && format.substr(at).starts_with(spelling.text)) {
            return spelling.text.size();
        }
    }
    return 0;
}

// Whether any keyword stands somewhere in `literal`.
bool holdsKeyword(std::string_view literal) {
    for (const Spelling& spelling : spellings) {
        if (literal.find(spelling.text) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

void checkTokens(const std::string& format, const std::vector<FormatToken>& tokens) {
    std::size_t at = 0;
    for (const FormatToken& token : tokens) {
        if (token.keyword == keywordLiteral) {
            require(format.compare(at, token.text.size(), token.text) == 0,
                    "a literal is what stands there");
            require(!holdsKeyword(token.text), "no literal holds a keyword");
            at += token.text.size();
        } else {
            const std::size_t length = spelled(format, at, token.keyword);
            require(length != 0 && token.text.empty(), "a keyword is what stands there");
            at += length;
        }
    }
    require(at == format.size(), "the tokens cover the format");
}

std::string attributesOf(const AttrMessage& message) {
    std::string text;
    for (const auto& [key, value] : message.attrs) {
        text += (text.empty() ? " (" : ", ") + key + " = " + value;
    }
    return text.empty() ? text : text + ")";
}

std::string rendered(const AttrMessage& message, const FormatToken& token) {
    const std::int64_t seconds = message.timestamp.getValue() / 1000;
    const std::string level = levelName(message.level);
    switch (token.keyword) {
        case keywordLevel:
            return std::string(level.size() < 5 ? 5 - level.size() : 0, ' ') + level;
        case keywordCategory:
            return message.category;
        case keywordMessage:
            return message.text;
        case keywordPid:
            return std::to_string(message.pid);
        case keywordTid:
            return std::to_string(message.tid);
        case keywordDate:
            return std::string(dateText(seconds));
        case keywordTimestampSeconds:
            return std::to_string(seconds) + " s";
        case keywordAttrs:
            return attributesOf(message);
        default:
            return token.text;
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const vek::test::SilentErrors silent;
    FuzzedDataProvider input(data, size);
    vek::test::SampleAttrMessage message(
        static_cast<Level>(input.ConsumeIntegralInRange<std::int32_t>(OFF, INVALID)));
    message.setTime(input.ConsumeIntegral<std::int64_t>());
    message.text = input.ConsumeRandomLengthString(40);
    for (int i = input.ConsumeIntegralInRange(0, 2); i > 0; --i) {
        std::string key = input.ConsumeRandomLengthString(5);
        message.attrs[std::move(key)] = input.ConsumeRandomLengthString(5);
    }
    const auto flags = input.ConsumeIntegral<std::uint8_t>();
    const std::string format = input.ConsumeRemainingBytesAsString();
    const std::vector<FormatToken> tokens = compileFormat(format);
    checkTokens(format, tokens);
    std::string expected;
    for (const FormatToken& token : tokens) {
        expected += rendered(message, token);
    }
    std::ostringstream stream;
    // As others may have left it.
    stream << std::hex << std::showbase << std::setw(flags >> 4);
    message.printFormatted(stream, tokens, (flags & 1) != 0);
    require(stream.str() == expected, "a line is what its tokens say");
    require(stream.width() == flags >> 4, "the width is left alone");
    message.printPlain(stream, (flags & 1) != 0, (flags & 2) != 0, (flags & 4) != 0,
                       (flags & 8) != 0);
    require(stream.str().ends_with("tolmarhlp" + attributesOf(message) + ": " + message.text),
            "a plain line ends in its text");
    return 0;
}
