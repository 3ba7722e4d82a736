#include "vek/base/code_page.h"

#include <string>

#include <gtest/gtest.h>

#include "vek/base/windows.h"

namespace {

using vek::isTrailByte;
using vek::lastBackslash;
using vek::LeadBytes;

// The lead bytes of code page 932.
LeadBytes japanese() {
    LeadBytes leads;
    for (unsigned byte = 0x81; byte <= 0xFC; ++byte) {
        leads[byte] = byte <= 0x9F || byte >= 0xE0;
    }
    return leads;
}

TEST(AnsiLeadBytes, AreThoseOfTheSystem) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        EXPECT_EQ(vek::ansiLeadBytes()[byte], IsDBCSLeadByte(static_cast<BYTE>(byte)) != 0) << byte;
    }
}

TEST(IsTrailByte, LooksAtTheWholeRunOfLeadBytes) {
    // Two characters of two bytes, the second with a backslash; and a half-width one ahead of it.
    const std::string text = "a\x95\x95\x95\\\xB1\\";
    const bool trail[] = {false, false, true, false, true, false, false};
    for (std::size_t i = 0; i < text.size(); ++i) {
        EXPECT_EQ(isTrailByte(text, i, japanese()), trail[i]) << i;
    }
    EXPECT_FALSE(isTrailByte("\\", 0, japanese()));
}

TEST(IsTrailByte, IsFalseInACodePageOfOneByteCharacters) {
    EXPECT_FALSE(isTrailByte("\x95\\", 1, LeadBytes()));
}

TEST(LastBackslash, IsACharacterOfItsOwn) {
    EXPECT_EQ(lastBackslash("C:\\a\x95\\", japanese()), 2u);
    EXPECT_EQ(lastBackslash("C:\\\x95\\\\b", japanese()), 5u);
    EXPECT_EQ(lastBackslash("\x95\\", japanese()), std::string::npos);
    EXPECT_EQ(lastBackslash("\x95\\", LeadBytes()), 1u);
    EXPECT_EQ(lastBackslash("\\", japanese()), 0u);
    EXPECT_EQ(lastBackslash("", japanese()), std::string::npos);
}

}  // namespace
