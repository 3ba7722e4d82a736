#include "vek/log/sinks/message_format.h"

#include <cstdint>
#include <iostream>
#include <ostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/vek/log/captured_errors.h"

namespace vek::log {

static bool operator==(const FormatToken& left, const FormatToken& right) {
    return left.text == right.text && left.keyword == right.keyword;
}

static void PrintTo(const FormatToken& token, std::ostream* stream) {
    *stream << token.keyword << '"' << token.text << '"';
}

}  // namespace vek::log

namespace {

using vek::log::compileFormat;
using vek::log::FormatToken;
using vek::test::CapturedErrors;
using Tokens = std::vector<FormatToken>;

constexpr std::size_t megabyte = 1024 * 1024;

FormatToken literal(const std::string& text) {
    return {text, 10};
}

FormatToken keyword(std::int32_t value) {
    return {"", value};
}

std::string reportOf(const std::string& unknown) {
    return "Unknown veklog message format keyword '" + unknown + "' encountered!\n";
}

// Compiles without a report.
Tokens compileKnown(const std::string& format) {
    const CapturedErrors errors;
    Tokens tokens = compileFormat(format);
    EXPECT_EQ(errors.text(), "") << format;
    return tokens;
}

constexpr struct {
    const char* text;
    std::int32_t value;
} table[] = {
    {"{level}", 0},       {"{scope}", 0}, {"{category}", 1},    {"{agent}", 1},
    {"{msg}", 2},         {"{pid}", 3},   {"{tid}", 4},         {"{date}", 5},
    {"{timestamp_s}", 6}, {"{attrs}", 7}, {"{color_start}", 8}, {"{color_end}", 9},
};

// Compiled before main.
const Tokens compiledEarly = compileFormat("a{timestamp_s}b{agent}");

TEST(FormatToken, HasItsTextAheadOfItsKeyword) {
    const auto& [text, value] = FormatToken{"a", 7};
    EXPECT_EQ(text, "a");
    EXPECT_EQ(value, 7);
}

TEST(CompileFormat, KnowsEachKeyword) {
    for (const auto& row : table) {
        EXPECT_EQ(compileKnown(row.text), (Tokens{literal(""), keyword(row.value), literal("")}));
    }
}

TEST(CompileFormat, KnowsTheKeywordsAheadOfMain) {
    EXPECT_EQ(compiledEarly,
              (Tokens{literal("a"), keyword(6), literal("b"), keyword(1), literal("")}));
}

TEST(CompileFormat, TextWithoutKeywordsIsOneLiteral) {
    EXPECT_EQ(compileKnown("abc"), Tokens{literal("abc")});
    EXPECT_EQ(compileKnown("}a}"), Tokens{literal("}a}")});
    EXPECT_EQ(compileKnown("level %s \\n $msg"), Tokens{literal("level %s \\n $msg")});
}

TEST(CompileFormat, EmptyFormatIsOneEmptyLiteral) {
    EXPECT_EQ(compileKnown(""), Tokens{literal("")});
}

TEST(CompileFormat, AdjacentKeywordsHaveEmptyLiteralsAroundThem) {
    EXPECT_EQ(compileKnown("{level}{msg}"),
              (Tokens{literal(""), keyword(0), literal(""), keyword(2), literal("")}));
}

TEST(CompileFormat, TextAroundKeywordsStandsInLiterals) {
    EXPECT_EQ(compileKnown("a {level}: {msg}}\n"),
              (Tokens{literal("a "), keyword(0), literal(": "), keyword(2), literal("}\n")}));
}

TEST(CompileFormat, UnknownKeywordIsReportedOnceAndStaysAsText) {
    const CapturedErrors errors;
    EXPECT_EQ(compileFormat("{nosuch} x"), (Tokens{literal(""), literal("{nosuch} x")}));
    EXPECT_EQ(errors.text(), "Unknown veklog message format keyword '{nosuch}' encountered!\n");
    EXPECT_EQ(errors.flushedText(), errors.text());
}

TEST(CompileFormat, KeywordsAreMatchedByteForByte) {
    for (const std::string format :
         {"{Level}", "{LEVEL}", "{ level}", "{level }", "{}", "{leve}", "{levels}", "{timestamp}",
          "{color}", "{msg\n}", "{msg,5}", "{m\xC3\xA9ssage}", "{\xFF}"}) {
        const CapturedErrors errors;
        EXPECT_EQ(compileFormat(format), (Tokens{literal(""), literal(format)}));
        EXPECT_EQ(errors.text(), reportOf(format));
    }
}

TEST(CompileFormat, EachUnknownKeywordIsReportedInItsOrder) {
    const CapturedErrors errors;
    EXPECT_EQ(compileFormat("{a}{msg}{b} {a}"),
              (Tokens{literal(""), literal("{a}"), keyword(2), literal(""), literal("{b} "),
                      literal("{a}")}));
    EXPECT_EQ(errors.text(), reportOf("{a}") + reportOf("{b}") + reportOf("{a}"));
}

TEST(CompileFormat, BraceThatNothingClosesIsTextWithoutAReport) {
    EXPECT_EQ(compileKnown("a{b"), (Tokens{literal("a"), literal("{b")}));
    EXPECT_EQ(compileKnown("{"), (Tokens{literal(""), literal("{")}));
    EXPECT_EQ(compileKnown("{{"), (Tokens{literal(""), literal("{"), literal("{")}));
    EXPECT_EQ(compileKnown("}{level"), (Tokens{literal("}"), literal("{level")}));
    EXPECT_EQ(compileKnown("{msg}{"), (Tokens{literal(""), keyword(2), literal(""), literal("{")}));
}

TEST(CompileFormat, SearchGoesOnWithinAnUnknownKeyword) {
    const CapturedErrors errors;
    EXPECT_EQ(compileFormat("{x{level}"),
              (Tokens{literal(""), literal("{x"), keyword(0), literal("")}));
    EXPECT_EQ(errors.text(), reportOf("{x{level}"));
}

TEST(CompileFormat, DoubledBracesAreNoEscape) {
    const CapturedErrors errors;
    EXPECT_EQ(compileFormat("{{level}}"),
              (Tokens{literal(""), literal("{"), keyword(0), literal("}")}));
    EXPECT_EQ(errors.text(), reportOf("{{level}"));
}

TEST(CompileFormat, NulBytesAreText) {
    using namespace std::string_literals;
    EXPECT_EQ(compileKnown("a\0b{msg}\0"s), (Tokens{literal("a\0b"s), keyword(2), literal("\0"s)}));
    const CapturedErrors errors;
    EXPECT_EQ(compileFormat("{msg\0}"s), (Tokens{literal(""), literal("{msg\0}"s)}));
    EXPECT_EQ(errors.text(), reportOf("{msg\0}"s));
}

TEST(CompileFormat, TenThousandKeywordsAreTenThousandTokens) {
    std::string format;
    for (int count = 0; count < 10000; ++count) {
        format += "{msg}";
    }
    const Tokens tokens = compileKnown(format);
    ASSERT_EQ(tokens.size(), 20001u);
    for (std::size_t index = 0; index < tokens.size(); ++index) {
        ASSERT_EQ(tokens[index], index % 2 == 0 ? literal("") : keyword(2)) << index;
    }
}

TEST(CompileFormat, OneMegabyteOfTextIsOneLiteral) {
    for (const char character : {'a', '}', '\0'}) {
        const std::string format(megabyte, character);
        const Tokens tokens = compileKnown(format);
        ASSERT_EQ(tokens.size(), 1u);
        EXPECT_TRUE(tokens[0] == literal(format));
    }
}

// Also in a time that doesn't grow with the square of their number: that would take minutes.
TEST(CompileFormat, OneMegabyteOfOpeningBracesIsText) {
    const Tokens tokens = compileKnown(std::string(megabyte, '{'));
    ASSERT_EQ(tokens.size(), megabyte + 1);
    EXPECT_EQ(tokens.front(), literal(""));
    for (std::size_t index = 1; index < tokens.size(); ++index) {
        ASSERT_EQ(tokens[index], literal("{")) << index;
    }
}

TEST(CompileFormat, EachOfManyBracesThatOneClosesIsReported) {
    constexpr std::size_t count = 300;
    const std::string format = std::string(count, '{') + '}';
    const CapturedErrors errors;
    const Tokens tokens = compileFormat(format);
    ASSERT_EQ(tokens.size(), count + 1);
    EXPECT_EQ(tokens.back(), literal("{}"));
    std::string expected;
    for (std::size_t open = 0; open < count; ++open) {
        expected += reportOf(format.substr(open));
    }
    EXPECT_EQ(errors.text(), expected);
}

// The compilation as a list of steps, which searches anew each time.
Tokens compiledByStep(const std::string& format, std::string& reports) {
    Tokens tokens;
    std::size_t pos = 0;
    std::size_t open = 0;
    for (;;) {
        const std::size_t brace =
            open >= format.size() ? std::string::npos : format.find('{', open);
        tokens.push_back(literal(brace == std::string::npos ? format.substr(pos)
                                                            : format.substr(pos, brace - pos)));
        if (brace == std::string::npos) {
            return tokens;
        }
        pos = open = brace;
        const std::size_t close = format.find('}', open);
        if (close != std::string::npos) {
            const std::string candidate = format.substr(open, close - open + 1);
            bool known = false;
            for (const auto& row : table) {
                if (candidate == row.text) {
                    tokens.push_back(keyword(row.value));
                    pos = close + 1;
                    known = true;
                }
            }
            if (!known) {
                reports += reportOf(candidate);
            }
        }
        ++open;
    }
}

TEST(CompileFormat, RandomPiecesGiveWhatTheStepsGive) {
    const std::string pieces[] = {"{",      "}",       "{msg}",  "{level", "attrs}", "{x",
                                  "{date}", "{scope}", "{agent", "pid}",   " ",      "a"};
    std::mt19937 random(20240229);
    for (int round = 0; round < 5000; ++round) {
        std::string format;
        for (std::size_t left = random() % 12; left > 0; --left) {
            format += pieces[random() % std::size(pieces)];
        }
        std::string reports;
        const Tokens expected = compiledByStep(format, reports);
        const CapturedErrors errors;
        ASSERT_EQ(compileFormat(format), expected) << format;
        ASSERT_EQ(errors.text(), reports) << format;
    }
}

TEST(CompileFormat, ThreadsCompileAtOnce) {
    const Tokens expected = compileKnown("{level} {agent}: {msg}{attrs}");
    std::vector<std::thread> threads;
    std::vector<int> wrong(4);
    for (int& count : wrong) {
        threads.emplace_back([&] {
            for (int round = 0; round < 2000; ++round) {
                count += compileFormat("{level} {agent}: {msg}{attrs}") == expected ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, std::vector<int>(4));
}

}  // namespace
