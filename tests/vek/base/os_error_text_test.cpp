#include "vek/base/os_error_text.h"

#include <gtest/gtest.h>

#include "tests/support/heap_blocks.h"
#include "vek/base/windows.h"

namespace {

using vek::osErrorText;

std::string systemsText(DWORD code) {
    char text[1024];
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr, code, 1024, text, sizeof text, nullptr);
    return std::string(text, length);
}

TEST(OsErrorText, IsTheSystemsTextWithoutItsLastTwoCharacters) {
    // 34 has inserts, which stay as they are.
    for (const DWORD code : {0u, 2u, 5u, 34u, 203u, 1062u, 10061u}) {
        const std::string expected = systemsText(code);
        ASSERT_GT(expected.size(), 2u) << code;
        EXPECT_EQ(osErrorText(code), expected.substr(0, expected.size() - 2)) << code;
    }
}

TEST(OsErrorText, HasNoLineEnd) {
    const std::string text = osErrorText(2);
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos);
}

TEST(OsErrorText, GivesTheSystemsMemoryBack) {
    EXPECT_TRUE(support::keepsNoMemory([] { osErrorText(2); }));
}

TEST(OsErrorText, UnknownNumberIsReportedAndGivesAPlaceholder) {
    testing::internal::CaptureStderr();
    const std::string text = osErrorText(99999);
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_EQ(text, "<unknown-error>");
    EXPECT_EQ(output, "vek::osErrorText: error getting error text from FormatMessage!\n");
}

}  // namespace
