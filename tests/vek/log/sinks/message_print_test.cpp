#include <cstdint>
#include <ctime>
#include <functional>
#include <iomanip>
#include <iostream>
#include <limits>
#include <locale>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/vek/log/captured_errors.h"
#include "tests/vek/log/sample_message.h"
#include "vek/base/console_colors.h"
#include "vek/log/message.h"
#include "vek/log/sinks/message_format.h"

namespace {

using namespace vek::log;
using vek::test::CapturedErrors;
using vek::test::SampleAttrMessage;
using vek::test::SampleMessage;

constexpr std::size_t megabyte = 1024 * 1024;
constexpr std::int64_t leapDay = 1709211909876;  // 2024-02-29 13:05:09.876 UTC

std::string formatted(const Message& message, const std::string& format, bool useColor = false) {
    std::ostringstream stream;
    EXPECT_EQ(&message.printFormatted(stream, compileFormat(format), useColor), &stream);
    return stream.str();
}

// The default layout without its three flags.
std::string plain(const Message& message, bool useColor = false) {
    std::ostringstream stream;
    EXPECT_EQ(&message.printPlain(stream, false, false, false, useColor), &stream);
    return stream.str();
}

// What the runtime gives.
std::string localTime(std::int64_t secondsSince1970, const char* pattern) {
    const auto seconds = static_cast<std::time_t>(secondsSince1970);
    char text[100];
    return std::string(text, std::strftime(text, sizeof text, pattern, std::localtime(&seconds)));
}

TEST(PrintFormatted, RendersEachKeyword) {
    SampleAttrMessage message(WARN);
    message.attrs = {{"a", "1"}};
    const struct {
        const char* keyword;
        std::string expected;
    } rows[] = {
        {"{level}", " WARN"},        {"{scope}", " WARN"},
        {"{category}", "tolmarhlp"}, {"{agent}", "tolmarhlp"},
        {"{msg}", "text"},           {"{pid}", "4000000001"},
        {"{tid}", "4294967295"},     {"{date}", localTime(1, "%Y-%m-%d %H:%M:%S")},
        {"{timestamp_s}", "1 s"},    {"{attrs}", " (a = 1)"},
        {"{color_start}", ""},       {"{color_end}", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(formatted(message, row.keyword), row.expected) << row.keyword;
        EXPECT_EQ(formatted(message, std::string("<") + row.keyword + ">"),
                  "<" + row.expected + ">");
    }
}

TEST(PrintFormatted, PutsTheLevelAtTheRightOfFiveCharacters) {
    const struct {
        Level level;
        const char* expected;
    } rows[] = {
        {OFF, "  OFF"},   {ERR, "  ERR"},   {WARN, " WARN"},      {INFO, " INFO"},
        {DEBUG, "DEBUG"}, {TRACE, "TRACE"}, {DEFAULT, "DEFAULT"}, {INVALID, "INVALID"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(formatted(SampleMessage(row.level), "{level}"), row.expected);
        EXPECT_EQ(plain(SampleMessage(row.level)),
                  std::string("[") + row.expected + "] tolmarhlp: text");
    }
}

TEST(PrintFormatted, SecondVocabularyRendersTheSame) {
    const SampleMessage message(ERR);
    EXPECT_EQ(formatted(message, "{scope}/{agent}"), "  ERR/tolmarhlp");
    EXPECT_EQ(formatted(message, "{scope}/{agent}"), formatted(message, "{level}/{category}"));
}

TEST(PrintFormatted, WritesLiteralsAndNoLineEnd) {
    const SampleMessage message(INFO);
    EXPECT_EQ(formatted(message, "abc"), "abc");
    EXPECT_EQ(formatted(message, ""), "");
    EXPECT_EQ(formatted(message, "a{b"), "a{b");
    EXPECT_EQ(formatted(message, "{level}{msg}"), " INFOtext");
    EXPECT_EQ(formatted(message, "{msg}\n"), "text\n");
}

TEST(PrintFormatted, LeavesUnknownKeywordsAsTheyAre) {
    const CapturedErrors errors;
    const SampleMessage message(INFO);
    EXPECT_EQ(formatted(message, "{nosuch} x"), "{nosuch} x");
    EXPECT_EQ(formatted(message, "{x{level}"), "{x INFO");
    EXPECT_EQ(formatted(message, "{{msg}}"), "{text}");
}

TEST(PrintFormatted, TextOfATokenGoesAheadOfItsKeywordAndOtherKeywordsAreNothing) {
    const SampleMessage message(INFO);
    const std::vector<FormatToken> tokens = {{"a", keywordMessage}, {"", -1}, {"", 10}, {"", 11},
                                             {"", 1 << 30},         {"b", 99}};
    std::ostringstream stream;
    message.printFormatted(stream, tokens, true);
    EXPECT_EQ(stream.str(), "ab");
}

TEST(PrintFormatted, NoTokensRenderNothing) {
    std::ostringstream stream;
    SampleMessage(INFO).printFormatted(stream, {}, true);
    EXPECT_EQ(stream.str(), "");
}

TEST(PrintFormatted, CutsTheTimestampToWholeSeconds) {
    SampleMessage message(INFO);
    const struct {
        std::int64_t milliseconds;
        const char* expected;
    } rows[] = {
        {0, "0 s"},
        {999, "0 s"},
        {1000, "1 s"},
        {1999, "1 s"},
        {leapDay, "1709211909 s"},
        {-1, "0 s"},
        {-999, "0 s"},
        {-1999, "-1 s"},
        {std::numeric_limits<std::int64_t>::max(), "9223372036854775 s"},
        {std::numeric_limits<std::int64_t>::min(), "-9223372036854775 s"},
    };
    for (const auto& row : rows) {
        message.setTime(row.milliseconds);
        EXPECT_EQ(formatted(message, "{timestamp_s}"), row.expected) << row.milliseconds;
    }
}

TEST(PrintFormatted, GivesTheDateInLocalTimeWithoutMilliseconds) {
    SampleMessage message(INFO);
    for (const std::int64_t milliseconds : {std::int64_t{0}, std::int64_t{999}, leapDay}) {
        message.setTime(milliseconds);
        EXPECT_EQ(formatted(message, "{date}"),
                  localTime(milliseconds / 1000, "%Y-%m-%d %H:%M:%S"));
    }
    EXPECT_TRUE(std::regex_match(formatted(message, "{date}"),
                                 std::regex("2024-0[23]-(28|29|01) \\d\\d:\\d5:09")));
    // The half second before 1970 is truncated towards it.
    message.setTime(-500);
    EXPECT_EQ(formatted(message, "{date}"), localTime(0, "%Y-%m-%d %H:%M:%S"));
}

TEST(PrintFormatted, TimesThatNoCalendarKnowsDoNoHarm) {
    SampleMessage message(INFO);
    for (const std::int64_t milliseconds :
         {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()}) {
        message.setTime(milliseconds);
        EXPECT_NE(formatted(message, "<{date}>").size(), 0u);
        std::ostringstream stream;
        message.printPlain(stream, false, false, true, false);
        EXPECT_TRUE(stream.str().ends_with(" | [ INFO] tolmarhlp: text")) << stream.str();
    }
}

TEST(PrintFormatted, ShowsTheTimeOfTheStatement) {
    const std::int64_t before = vek::time::RealtimeClock(true).getValue() / 1000;
    const Message message("logger", "text", INFO, 1);
    const std::int64_t after = vek::time::RealtimeClock(true).getValue() / 1000;
    const std::int64_t shown = std::stoll(formatted(message, "{timestamp_s}"));
    EXPECT_GE(shown, before);
    EXPECT_LE(shown, after);
}

TEST(PrintFormatted, ListsAttributesInTheOrderOfTheirKeys) {
    SampleAttrMessage message(INFO);
    message.attrs["b"] = "2";
    EXPECT_EQ(formatted(message, "{attrs}"), " (b = 2)");
    message.attrs["a"] = "1";
    EXPECT_EQ(formatted(message, "{attrs}"), " (a = 1, b = 2)");
    message.attrs["A b"] = "";
    message.attrs[""] = "x, y)";
    EXPECT_EQ(formatted(message, "{msg}{attrs}{msg}"), "text ( = x, y), A b = , a = 1, b = 2)text");
}

TEST(PrintFormatted, MessagesWithoutAttributesAddNothingForThem) {
    EXPECT_EQ(formatted(SampleMessage(INFO), "<{attrs}>"), "<>");
    EXPECT_EQ(formatted(SampleAttrMessage(INFO), "<{attrs}>"), "<>");
    EXPECT_EQ(plain(SampleMessage(INFO)), "[ INFO] tolmarhlp: text");
    EXPECT_EQ(plain(SampleAttrMessage(INFO)), "[ INFO] tolmarhlp: text");
}

TEST(PrintPlain, PutsTheAttributesBehindTheCategory) {
    SampleAttrMessage message(INFO);
    message.attrs = {{"b", "2"}, {"a", "1"}};
    EXPECT_EQ(plain(message), "[ INFO] tolmarhlp (a = 1, b = 2): text");
}

TEST(PrintPlain, EachFlagShowsItsPart) {
    const SampleMessage message(WARN);
    const std::string time = localTime(1, "%c") + " | ";
    for (int flags = 0; flags < 8; ++flags) {
        std::ostringstream stream;
        EXPECT_EQ(&message.printPlain(stream, (flags & 1) != 0, (flags & 2) != 0, (flags & 4) != 0,
                                      false),
                  &stream);
        EXPECT_EQ(stream.str(), std::string((flags & 1) != 0 ? "PID=4000000001 | " : "") +
                                    ((flags & 2) != 0 ? "TID=4294967295 | " : "") +
                                    ((flags & 4) != 0 ? time : "") + "[ WARN] tolmarhlp: text");
    }
}

TEST(PrintPlain, GivesTheTimeAsTheRuntimesLocaleDoes) {
    SampleMessage message(INFO);
    message.setTime(leapDay);
    std::ostringstream stream;
    message.printPlain(stream, false, false, true, false);
    EXPECT_EQ(stream.str(), localTime(leapDay / 1000, "%c") + " | [ INFO] tolmarhlp: text");
}

TEST(Print, TextsGoThroughUnchanged) {
    using namespace std::string_literals;
    for (const std::string& text :
         {""s, "two\r\nlines\n"s, "{msg} {level} {nosuch}"s, "100 % %s %n"s, "a\0b\0"s,
          "\x1b[31m\xff\x80"s, std::string(megabyte, 'x')}) {
        const CapturedErrors errors;
        SampleAttrMessage message(ERR, text);
        message.category = text;
        message.attrs = {{text, text}};
        EXPECT_TRUE(formatted(message, "{msg}|{category}|{attrs}") ==
                    text + "|" + text + "| (" + text + " = " + text + ")");
        EXPECT_TRUE(plain(message) ==
                    "[  ERR] " + text + " (" + text + " = " + text + "): " + text);
        EXPECT_EQ(errors.text(), "");
    }
}

TEST(Print, ManyKeywordsRenderEach) {
    std::string format;
    std::string expected;
    for (int count = 0; count < 10000; ++count) {
        format += "{msg}{level} ";
        expected += "textDEBUG ";
    }
    EXPECT_TRUE(formatted(SampleMessage(DEBUG), format) == expected);
}

// What a program may have left on a stream that it shares with the log.
struct LeftByOthers {
    const char* what;
    std::function<void(std::ostream&)> leave;
    const char* level;  // as a message of WARN shows it then
};

class Grouping : public std::numpunct<char> {
  protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

const LeftByOthers leftByOthers[] = {
    {"a field width", [](std::ostream& stream) { stream << std::setw(40); }, " WARN"},
    {"a base", [](std::ostream& stream) { stream << std::hex << std::showbase; }, " WARN"},
    {"octal", [](std::ostream& stream) { stream << std::oct; }, " WARN"},
    {"a plus sign", [](std::ostream& stream) { stream << std::showpos; }, " WARN"},
    {"grouping of digits",
     [](std::ostream& stream) { stream.imbue(std::locale(std::locale(), new Grouping)); }, " WARN"},
    {"the left side", [](std::ostream& stream) { stream << std::left; }, "WARN "},
    {"a fill", [](std::ostream& stream) { stream << std::setfill('*'); }, "*WARN"},
};

TEST(Print, WhatOthersLeftOnTheStreamTouchesTheFieldOfTheLevelOnly) {
    SampleMessage message(WARN);
    message.setTime(leapDay);
    for (const LeftByOthers& left : leftByOthers) {
        std::ostringstream stream;
        left.leave(stream);
        message.printFormatted(stream, compileFormat("{pid}|{tid}|{timestamp_s}|{level}|{msg}|"),
                               false);
        message.printPlain(stream, true, true, false, false);
        const std::string level = left.level;
        EXPECT_EQ(stream.str(), "4000000001|4294967295|1709211909 s|" + level +
                                    "|text|PID=4000000001 | TID=4294967295 | [" + level +
                                    "] tolmarhlp: text")
            << left.what;
    }
}

TEST(Print, StreamKeepsWhatOthersLeftOnIt) {
    const SampleMessage message(WARN);
    for (const LeftByOthers& left : leftByOthers) {
        std::ostringstream stream;
        std::ostringstream untouched;
        left.leave(stream);
        left.leave(untouched);
        message.printPlain(stream, true, true, true, false);
        EXPECT_EQ(stream.flags(), untouched.flags()) << left.what;
        EXPECT_EQ(stream.width(), untouched.width()) << left.what;
        EXPECT_EQ(stream.fill(), untouched.fill()) << left.what;
        EXPECT_EQ(stream.precision(), untouched.precision()) << left.what;
    }
}

TEST(Print, StreamInAFailedStateTakesNothingInSilence) {
    const SampleMessage message(WARN);
    std::ostringstream stream;
    stream.setstate(std::ios_base::failbit);
    EXPECT_NO_THROW(message.printPlain(stream, true, true, true, true));
    EXPECT_NO_THROW(message.printFormatted(stream, compileFormat("a{level}{pid}{date}"), true));
    EXPECT_EQ(stream.rdstate(), std::ios_base::failbit);
    stream.clear();
    stream << 1;
    EXPECT_EQ(stream.str(), "1") << "the level's field is left behind";
}

TEST(Print, WhatTheStreamThrowsPassesThrough) {
    const SampleMessage message(WARN);
    std::ostream nowhere(nullptr);
    EXPECT_NO_THROW(message.printPlain(nowhere, true, true, true, false));
    nowhere.clear();
    EXPECT_THROW(nowhere.exceptions(std::ios_base::badbit), std::ios_base::failure);
    EXPECT_THROW(message.printPlain(nowhere, false, false, false, false), std::ios_base::failure);
    EXPECT_THROW(message.printFormatted(nowhere, compileFormat("{msg}"), false),
                 std::ios_base::failure);
}

// The streams of this program are no console; colours act on a console at once or throw.
class PrintColors : public testing::Test {
  protected:
    ~PrintColors() override { vek::setConsoleColors(false, false); }
};

TEST_F(PrintColors, DoNothingOnStreamsThatAreNotTheStandardOnes) {
    vek::setConsoleColors(true, true);
    for (int level = OFF; level <= INVALID; ++level) {
        const SampleMessage message(static_cast<Level>(level));
        EXPECT_EQ(formatted(message, "{color_start}{msg}{color_end}", true), "text");
        EXPECT_EQ(plain(message, true), plain(message, false));
    }
}

TEST_F(PrintColors, DoNothingUnlessAskedFor) {
    vek::setConsoleColors(true, true);
    const SampleMessage message(ERR);
    const std::vector<FormatToken> tokens = compileFormat("{color_start}{color_end}");
    EXPECT_NO_THROW(message.printFormatted(std::cout, tokens, false));
    EXPECT_NO_THROW(message.printFormatted(std::cerr, tokens, false));
    const CapturedErrors errors;
    EXPECT_NO_THROW(message.printPlain(std::cerr, false, false, false, false));
    EXPECT_EQ(errors.text(), "[  ERR] tolmarhlp: text");
}

}  // namespace
