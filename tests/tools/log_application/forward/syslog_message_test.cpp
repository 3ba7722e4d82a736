#include "tools/log_application/forward/syslog_message.h"

#include <limits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace log_application;

LogLine sample() {
    LogLine line;
    line.when = 1'700'000'000'123;
    line.level = vek::log::INFO;
    line.logger = "net";
    line.pid = 4242;
    line.tid = 77;
    line.text = "started";
    return line;
}

std::string messageOf(const LogLine& line, const SyslogOrigin& origin = {"host", "demo"},
                      int facility = userFacility, std::uint32_t number = 1) {
    return syslogMessage(line, origin, facility, number);
}

// The header field of the message with this number, from 0, which is PRI and version.
std::string field(const std::string& message, int number) {
    std::size_t at = 0;
    for (int i = 0; i < number; ++i) {
        at = message.find(' ', at) + 1;
    }
    return message.substr(at, message.find(' ', at) - at);
}

std::string withAttribute(const std::string& key, const std::string& value) {
    LogLine line = sample();
    line.attributes = {{key, value}};
    const std::string message = messageOf(line);
    const std::size_t begin = message.find("[attributes@32473 ") + 18;
    return message.substr(begin, message.find("] \xEF\xBB\xBF") - begin);
}

TEST(SyslogMessage, HasEachFieldInItsPlace) {
    LogLine line = sample();
    line.attributes = {{"user", "Ann"}, {"code", "7"}};
    EXPECT_EQ(messageOf(line, {"box.example.com", "tolmarhlp"}, 16, 7),
              "<134>1 2023-11-14T22:13:20.123Z box.example.com tolmarhlp 4242 net "
              "[meta sequenceId=\"7\"][attributes@32473 code=\"7\" user=\"Ann\"] "
              "\xEF\xBB\xBFstarted");
}

TEST(SyslogMessage, WithoutAttributesHasItsNumberAlone) {
    EXPECT_EQ(messageOf(sample()),
              "<14>1 2023-11-14T22:13:20.123Z host demo 4242 net [meta sequenceId=\"1\"] "
              "\xEF\xBB\xBFstarted");
}

TEST(SyslogMessage, UnknownFieldsAreADash) {
    EXPECT_EQ(messageOf(LogLine(), {"", ""}), "<13>1 - - - - - [meta sequenceId=\"1\"]");
}

TEST(SyslogMessage, AnEmptyTextIsAByteOrderMarkAlone) {
    LogLine line = sample();
    line.text = "";
    EXPECT_TRUE(messageOf(line).ends_with("\"] \xEF\xBB\xBF"));
}

TEST(SyslogMessage, HasTheSeverityOfTheLevel) {
    using namespace vek::log;
    for (const auto& [level, severity] : std::vector<std::pair<Level, int>>{
             {ERR, 3}, {WARN, 4}, {INFO, 6}, {DEBUG, 7}, {TRACE, 7}, {OFF, 5}, {DEFAULT, 5}}) {
        LogLine line = sample();
        line.level = level;
        EXPECT_EQ(field(messageOf(line, {}, 0), 0), "<" + std::to_string(severity) + ">1");
        EXPECT_EQ(field(messageOf(line, {}, 23), 0), "<" + std::to_string(184 + severity) + ">1");
    }
    EXPECT_EQ(severityOf(std::nullopt), 5);
}

TEST(SyslogMessage, TimesOutsideFourDigitYearsAreADash) {
    LogLine line = sample();
    for (const std::int64_t when :
         {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max(),
          std::int64_t{253'402'300'800'000}, std::int64_t{-62'167'219'200'001}}) {
        line.when = when;
        EXPECT_EQ(field(messageOf(line), 1), "-") << when;
    }
    line.when = 253'402'300'799'999;
    EXPECT_EQ(field(messageOf(line), 1), "9999-12-31T23:59:59.999Z");
    line.when = -1;
    EXPECT_EQ(field(messageOf(line), 1), "1969-12-31T23:59:59.999Z");
}

TEST(SyslogMessage, HeaderFieldsArePrintableAsciiOfTheirLength) {
    LogLine line = sample();
    line.logger = "a b\n\x7F\xC3\xBC\xFF]\"";
    const std::string message = messageOf(line, {"h ost\t", "d\x1B[0m x"});
    EXPECT_EQ(field(message, 2), "h_ost_");
    EXPECT_EQ(field(message, 3), "d_[0m_x");
    EXPECT_EQ(field(message, 5), "a_b____]\"");
    line.logger = std::string(1000, 'l');
    const std::string longest = messageOf(line, {std::string(1000, 'h'), std::string(1000, 'p')});
    EXPECT_EQ(field(longest, 2), std::string(255, 'h'));
    EXPECT_EQ(field(longest, 3), std::string(48, 'p'));
    EXPECT_EQ(field(longest, 5), std::string(32, 'l'));
}

TEST(SyslogMessage, AttributesCannotForgeStructure) {
    EXPECT_EQ(withAttribute("k", "a\"b\\c]d"), R"(k="a\"b\\c\]d")");
    EXPECT_EQ(withAttribute("k", ""), "k=\"\"");
    EXPECT_EQ(withAttribute("", "v"), "_=\"v\"");
    EXPECT_EQ(withAttribute("a=b] \"c\xC3\xBC", "v"), "a_b___c_=\"v\"");
    EXPECT_EQ(withAttribute(std::string(100, 'k'), "v"), std::string(32, 'k') + "=\"v\"");
    // A line feed becomes a backslash and an n, and the backslash is escaped in turn.
    EXPECT_EQ(withAttribute("k", "a\nb"), R"(k="a\\nb")");
}

TEST(SyslogMessage, ATextIsUtf8WithoutControlCharacters) {
    LogLine line = sample();
    line.text = std::string("two\nlines \x1B[31m\0 gr\xC3\xBC\xC3\x9F", 23);
    EXPECT_TRUE(
        messageOf(line).ends_with("\xEF\xBB\xBFtwo\\nlines \\x1B[31m\\x00 gr\xC3\xBC\xC3\x9F"))
        << messageOf(line);
}

TEST(SyslogMessage, IsCountedInBytes) {
    EXPECT_EQ(octetCounted("gr\xC3\xBC"), "4 gr\xC3\xBC");
    EXPECT_EQ(octetCounted(std::string(12345, 'x')).substr(0, 7), "12345 x");
}

TEST(SyslogMessage, OfALossSaysHowMany) {
    EXPECT_EQ(lossMessage(12, "box", 16, 9, 1'700'000'000'123, 99),
              "<132>1 2023-11-14T22:13:20.123Z box log_application 99 lost "
              "[meta sequenceId=\"9\"][lost@32473 count=\"12\"] \xEF\xBB\xBF"
              "12 messages were lost: the collector was away or too slow, and the buffer was full");
}

TEST(Facility, IsANameOrANumber) {
    const std::vector<std::string> names = {
        "kern",   "user",   "mail",     "daemon", "auth",   "syslog", "lpr",    "news",
        "uucp",   "cron",   "authpriv", "ftp",    "12",     "13",     "14",     "15",
        "local0", "local1", "local2",   "local3", "local4", "local5", "local6", "local7"};
    ASSERT_EQ(names.size(), 24u);
    for (int i = 0; i < 24; ++i) {
        EXPECT_EQ(parseFacility(names[static_cast<std::size_t>(i)]), i);
        EXPECT_EQ(parseFacility(std::to_string(i)), i);
    }
    EXPECT_EQ(parseFacility("LOCAL0"), 16);
    for (const char* const text : {"", "24", "-1", "local8", "user ", "1x", "99999999999"}) {
        EXPECT_FALSE(parseFacility(text)) << text;
    }
}

}  // namespace
