#include "tools/log_application/show/escape.h"

#include <gtest/gtest.h>

#include "tools/log_application/show/utf8.h"

namespace {

using namespace log_application;
using namespace std::string_literals;

std::string json(std::string_view text) {
    std::string out;
    appendJsonString(out, text);
    return out;
}

TEST(EscapeControls, KeepsPlainTextAndUtf8) {
    EXPECT_EQ(escapeControls("C:\\temp \"x\" gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80"),
              "C:\\temp \"x\" gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80");
    EXPECT_EQ(escapeControls(""), "");
}

TEST(EscapeControls, PutsLineEndsAndTabsOnOneLine) {
    EXPECT_EQ(escapeControls("a\r\nb\tc"), "a\\r\\nb\\tc");
}

TEST(EscapeControls, EscapesWhatATerminalWouldObey) {
    EXPECT_EQ(escapeControls("\x1b[31m\x07\x7f\0"s), "\\x1B[31m\\x07\\x7F\\x00");
    // The control sequence introducer, in UTF-8 and as a single byte.
    EXPECT_EQ(escapeControls("\xC2\x9B"), "\\u009B");
    EXPECT_EQ(escapeControls("\x9B"), "\\x9B");
}

TEST(EscapeControls, EscapesWhatTurnsTheTextOrEndsALine) {
    EXPECT_EQ(escapeControls("\xE2\x80\xAE"), "\\u202E");
    EXPECT_EQ(escapeControls("\xE2\x80\xA8"), "\\u2028");
    EXPECT_EQ(escapeControls("\xE2\x81\xA6"), "\\u2066");
}

TEST(EscapeControls, KeepsOtherBytesThatAreNoUtf8) {
    EXPECT_EQ(escapeControls("gr\xFC\xDF"), "gr\xFC\xDF");
}

TEST(JsonString, EscapesAsJsonAsks) {
    EXPECT_EQ(json("a\"b\\c/d\n\r\t\b\x1f\0"s), "\"a\\\"b\\\\c/d\\n\\r\\t\\u0008\\u001f\\u0000\"");
    EXPECT_EQ(json("\x7f\xC2\x85\xE2\x80\xA8"), "\"\\u007f\\u0085\\u2028\"");
}

TEST(JsonString, KeepsUtf8) {
    EXPECT_EQ(json("gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80"),
              "\"gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80\"");
}

TEST(JsonString, ReplacesEachByteThatIsNoUtf8) {
    EXPECT_EQ(json("\xFF"), "\"\\ufffd\"");
    EXPECT_EQ(json("a\xC3"), "\"a\\ufffd\"");
    EXPECT_EQ(json("\xC3(x"), "\"\\ufffd(x\"");
    // Overlong, a surrogate, beyond the last character, a lone continuation, cut short.
    EXPECT_EQ(json("\xC0\xAF"), "\"\\ufffd\\ufffd\"");
    EXPECT_EQ(json("\xED\xA0\x80"), "\"\\ufffd\\ufffd\\ufffd\"");
    EXPECT_EQ(json("\xF4\x90\x80\x80"), "\"\\ufffd\\ufffd\\ufffd\\ufffd\"");
    EXPECT_EQ(json("\x80"), "\"\\ufffd\"");
    EXPECT_EQ(json("\xF0\x9F\x98"), "\"\\ufffd\\ufffd\\ufffd\"");
}

TEST(JsonString, EverySingleByteGivesAsciiOrValidUtf8) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text = json(std::string(1, static_cast<char>(byte)));
        for (std::size_t at = 0; at < text.size();) {
            const Character character = decodeUtf8(text, at);
            EXPECT_TRUE(character.valid) << byte;
            EXPECT_GE(character.codePoint, 0x20u) << byte;
            at += character.size;
        }
    }
}

TEST(Utf8, ReadsTheFirstAndLastOfEachLength) {
    const auto read = [](std::string_view text) { return decodeUtf8(text, 0).codePoint; };
    EXPECT_EQ(read("\x7F"), 0x7Fu);
    EXPECT_EQ(read("\xC2\x80"), 0x80u);
    EXPECT_EQ(read("\xDF\xBF"), 0x7FFu);
    EXPECT_EQ(read("\xE0\xA0\x80"), 0x800u);
    EXPECT_EQ(read("\xEF\xBF\xBF"), 0xFFFFu);
    EXPECT_EQ(read("\xF0\x90\x80\x80"), 0x10000u);
    EXPECT_EQ(read("\xF4\x8F\xBF\xBF"), 0x10FFFFu);
}

}  // namespace
