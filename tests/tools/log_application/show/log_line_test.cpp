#include "tools/log_application/show/log_line.h"

#include <gtest/gtest.h>

#include "vek/log/telegram.h"

namespace {

using namespace log_application;
using Attributes = std::map<std::string, std::string>;

LogLine parsed(const std::string& payload) {
    const std::optional<LogLine> line = parseLogLine(payload);
    EXPECT_TRUE(line.has_value()) << payload;
    return line.value_or(LogLine());
}

// A message with `middle` between the logger and the process id.
LogLine parsedAround(const std::string& middle) {
    return parsed("message:agent=demo\x1F" + middle +
                  "\x1Fpid=4242\x1Fscope=INFO\x1Ftid=77\x1Fwhen=1700000000123");
}

TEST(LogLine, HoldsEveryFieldOfAMessage) {
    const LogLine line = parsedAround("msg=started");
    EXPECT_TRUE(line.isComplete());
    EXPECT_EQ(line.logger, "demo");
    EXPECT_EQ(line.text, "started");
    EXPECT_EQ(line.pid, 4242u);
    EXPECT_EQ(line.level, vek::log::INFO);
    EXPECT_EQ(line.tid, 77u);
    EXPECT_EQ(line.when, 1'700'000'000'123);
    EXPECT_TRUE(line.attributes.empty());
}

TEST(LogLine, PairsAttributes) {
    const LogLine line = parsedAround(
        "attr_keys=a|b\x1F"
        "attr_values=1|2\x1Fmsg=m");
    EXPECT_EQ(line.attributes, (Attributes{{"a", "1"}, {"b", "2"}}));
}

TEST(LogLine, BareAttributeKeysAreNone) {
    EXPECT_TRUE(parsedAround("attr_keys\x1F"
                             "attr_values\x1Fmsg=m")
                    .attributes.empty());
}

TEST(LogLine, AnAttributeMayBeEmpty) {
    EXPECT_EQ(parsedAround("attr_keys=a|b\x1F"
                           "attr_values=|\x1Fmsg=m")
                  .attributes,
              (Attributes{{"a", ""}, {"b", ""}}));
    EXPECT_EQ(parsedAround("attr_keys=a\x1F"
                           "attr_values\x1Fmsg=m")
                  .attributes,
              (Attributes{{"a", ""}}));
}

TEST(LogLine, AttributesThatABarHasShiftedStayTogether) {
    EXPECT_EQ(parsedAround("attr_keys=a|b\x1F"
                           "attr_values=1|2|3\x1Fmsg=m")
                  .attributes,
              (Attributes{{"a|b", "1|2|3"}}));
    EXPECT_EQ(parsedAround("attr_keys=a|a\x1F"
                           "attr_values=1|2\x1Fmsg=m")
                  .attributes,
              (Attributes{{"a|a", "1|2"}}));
}

TEST(LogLine, ATextWithSeparatorsComesBackWhole) {
    EXPECT_EQ(parsedAround("msg=a\x1F"
                           "b")
                  .text,
              "a\x1F"
              "b");
    EXPECT_EQ(parsedAround("msg=a\x1F").text, "a\x1F");
    EXPECT_EQ(parsedAround("msg=\x1F\x1F"
                           "b=c")
                  .text,
              "\x1F\x1F"
              "b=c");
}

TEST(LogLine, ATextCannotForgeTheOtherFields) {
    const std::string text =
        "x\x1Fpid=1\x1Fscope=OFF\x1Ftid=2\x1Fwhen=3\x1F"
        "agent=other";
    const LogLine line = parsedAround("msg=" + text);
    EXPECT_EQ(line.text, text);
    EXPECT_EQ(line.logger, "demo");
    EXPECT_EQ(line.pid, 4242u);
    EXPECT_EQ(line.level, vek::log::INFO);
    EXPECT_EQ(line.tid, 77u);
    EXPECT_EQ(line.when, 1'700'000'000'123);
}

TEST(LogLine, ATextCannotForgeAttributes) {
    // Each of their keys is known and occurs once, but behind the text.
    for (const std::string& text : {std::string("x\x1F"
                                                "attr_keys=k\x1F"
                                                "attr_values=v"),
                                    std::string("x\x1F"
                                                "attr_keys=k"),
                                    std::string("\x1F"
                                                "attr_values")}) {
        const LogLine line = parsedAround("msg=" + text);
        EXPECT_EQ(line.text, text);
        EXPECT_EQ(line.attributes, Attributes());
        EXPECT_TRUE(line.isComplete());
    }
    const LogLine line = parsedAround(
        "attr_keys=a\x1F"
        "attr_values=1\x1Fmsg=x\x1F"
        "attr_keys=k");
    EXPECT_EQ(line.text,
              "x\x1F"
              "attr_keys=k");
    EXPECT_EQ(line.attributes, (Attributes{{"a", "1"}}));
}

TEST(LogLine, AnEmptyTextIsThere) {
    const LogLine line = parsedAround("msg");
    EXPECT_EQ(line.text, "");
    EXPECT_TRUE(line.isComplete());
}

TEST(LogLine, FieldsThatAreMissingAreNone) {
    const LogLine line = parsed("message:");
    EXPECT_FALSE(line.isComplete());
    EXPECT_FALSE(line.logger);
    EXPECT_FALSE(line.text);
    EXPECT_FALSE(line.pid);
    EXPECT_FALSE(line.level);
    EXPECT_FALSE(line.tid);
    EXPECT_FALSE(line.when);
}

TEST(LogLine, FieldsThatCannotBeReadAreNone) {
    const LogLine line =
        parsed("message:agent=a\x1Fmsg=m\x1Fpid=-1\x1Fscope=LOUD\x1Ftid=99999999999\x1Fwhen=soon");
    EXPECT_FALSE(line.pid);
    EXPECT_FALSE(line.level);
    EXPECT_FALSE(line.tid);
    EXPECT_FALSE(line.when);
    EXPECT_EQ(line.text, "m");
}

TEST(LogLine, KeysMayComeInAnyOrder) {
    const LogLine line = parsed(
        "message:when=5\x1Fmsg=m\x1F"
        "agent=a\x1Fscope=ERR\x1Fpid=1\x1Ftid=2");
    EXPECT_TRUE(line.isComplete());
    EXPECT_EQ(line.when, 5);
}

TEST(LogLine, AnUnknownKeyHarmsNothing) {
    const LogLine line = parsed(
        "message:agent=a\x1F"
        "extra=1\x1Fmsg=m\x1Fpid=1\x1Fscope=ERR\x1Ftid=2\x1Fwhen=5");
    EXPECT_TRUE(line.isComplete());
    EXPECT_EQ(line.text, "m");
}

TEST(LogLine, AnotherTelegramIsNoLine) {
    EXPECT_FALSE(parseLogLine("hello:msg=m"));
    EXPECT_FALSE(parseLogLine("messages:msg=m"));
    EXPECT_FALSE(parseLogLine(":message"));
}

TEST(LogLine, TextWithoutAColonIsNoTelegram) {
    EXPECT_THROW(parseLogLine("message"), vek::log::Telegram::ParseError);
    EXPECT_THROW(parseLogLine(""), vek::log::Telegram::ParseError);
}

}  // namespace
