#include "tools/log_application/show/ansi_text.h"

#include <gtest/gtest.h>

#include "tools/log_application/show/utf8.h"
#include "vek/base/windows.h"

namespace {

using log_application::utf8Of;

TEST(Utf8Of, KeepsUtf8) {
    EXPECT_EQ(utf8Of("plain\n\x1b"), "plain\n\x1b");
    EXPECT_EQ(utf8Of("gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80"), "gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80");
    EXPECT_EQ(utf8Of(""), "");
}

TEST(Utf8Of, TakesOtherBytesAsAnsi) {
    ASSERT_EQ(GetACP(), 1252u) << "the prefix has another code page";
    EXPECT_EQ(utf8Of("gr\xFC\xDF"), "gr\xC3\xBC\xC3\x9F");
    EXPECT_EQ(utf8Of("\x93x\x94 \x80"), "\xE2\x80\x9Cx\xE2\x80\x9D \xE2\x82\xAC");
    // Both in one text, and a character cut short.
    EXPECT_EQ(utf8Of("\xC3\xBC \xFC \xC3"), "\xC3\xBC \xC3\xBC \xC3\x83");
}

TEST(Utf8Of, GivesUtf8ForAnyBytes) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text = utf8Of(std::string("a") + static_cast<char>(byte) + "b");
        for (std::size_t at = 0; at < text.size();) {
            const auto character = log_application::decodeUtf8(text, at);
            EXPECT_TRUE(character.valid) << byte;
            at += character.size;
        }
    }
}

}  // namespace
