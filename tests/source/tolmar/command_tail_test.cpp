#include "source/tolmar/command_tail.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using tolmar::commandTail;
using tolmar::Mode;
using tolmar::PathBuffer;
using tolmar::selectMode;

// The directory that `tail` yields, or "<range check>" where the process must end.
std::string directoryOf(const std::string& tail) {
    PathBuffer directory;
    directory.fill('~');
    return tolmar::copyDirectory(tail.c_str(), selectMode(tail.c_str()), directory)
               ? directory.data()
               : "<range check>";
}

TEST(CommandTail, FollowsAQuotedName) {
    EXPECT_STREQ(commandTail("\"C:\\a b\\tolmarhlp.exe\" C:\\dir"), "C:\\dir");
    EXPECT_STREQ(commandTail("\"C:\\a b\\tolmarhlp.exe\" \"C:\\a dir\""), "\"C:\\a dir\"");
}

TEST(CommandTail, FollowsAnUnquotedName) {
    EXPECT_STREQ(commandTail("tolmarhlp.exe -restartgui C:\\a dir "), "-restartgui C:\\a dir ");
}

TEST(CommandTail, FollowsANameWithBytesAbove7F) {
    EXPECT_STREQ(commandTail("C:\\M\xFCller\\tolmarhlp.exe -restartgui C:\\d"),
                 "-restartgui C:\\d");
    EXPECT_STREQ(commandTail("\x80\xFF\xA0 C:\\d"), "C:\\d");
    EXPECT_STREQ(commandTail("\"C:\\M\xFCller\\tolmarhlp.exe\" C:\\d"), "C:\\d");
}

TEST(CommandTail, KeepsItsLeadingBytesAbove7F) {
    EXPECT_STREQ(commandTail("tolmarhlp.exe \xDC"
                             "bung"),
                 "\xDC"
                 "bung");
    EXPECT_STREQ(commandTail("tolmarhlp.exe \xA0\xFF"), "\xA0\xFF");
}

TEST(CommandTail, QuotesWithinTheNameHideItsBlanks) {
    EXPECT_STREQ(commandTail("C:\\\"a b\"\\x\" \".exe C:\\d"), "C:\\d");
    EXPECT_STREQ(commandTail("\"a\"\"b c\" C:\\d"), "C:\\d");
    EXPECT_STREQ(commandTail("\"C:\\x.exe\"C:\\d e"), "e") << "no blank behind the quote";
}

TEST(CommandTail, QuoteWithoutItsPartnerHidesEverythingBehindIt) {
    EXPECT_STREQ(commandTail("\"C:\\x.exe C:\\d"), "");
    EXPECT_STREQ(commandTail("x\" C:\\d\t"), "");
}

TEST(CommandTail, QuotesWithinItArePassedOn) {
    EXPECT_STREQ(commandTail("x.exe \"a\" \"b\""), "\"a\" \"b\"");
}

TEST(CommandTail, AnyBlankOrControlCharacterEndsTheName) {
    for (int byte = 1; byte < 0x100; ++byte) {
        const std::string separator(1, static_cast<char>(byte));
        const std::string tail = commandTail(("x" + separator +
                                              "\x01"
                                              "d")
                                                 .c_str());
        EXPECT_EQ(tail, byte == '"'                   ? ""
                        : byte == ' ' || byte == '\t' ? "\x01"
                                                        "d"
                        : byte < ' '                  ? separator +
                                           "\x01"
                                           "d"
                                     : "\x01"
                                       "d")
            << byte;
    }
}

TEST(CommandTail, BlanksAndTabsAheadOfItAreSkippedAndNoOthers) {
    EXPECT_STREQ(commandTail("x.exe \t  \t C:\\d \t"), "C:\\d \t");
    EXPECT_STREQ(commandTail("x.exe \nC:\\d"), "\nC:\\d");
    EXPECT_STREQ(commandTail("x.exe \x01 C:\\d"), "\x01 C:\\d");
}

TEST(CommandTail, IsEmptyIfNothingFollowsTheName) {
    EXPECT_STREQ(commandTail("x.exe"), "");
    EXPECT_STREQ(commandTail("x.exe \t "), "");
    EXPECT_STREQ(commandTail("\"C:\\a b\\x.exe\""), "");
    EXPECT_STREQ(commandTail(""), "");
}

TEST(CommandTail, OfACommandLineWithoutANameIsAllOfIt) {
    EXPECT_STREQ(commandTail(" C:\\d"), "C:\\d");
    EXPECT_STREQ(commandTail("\tC:\\d e"), "C:\\d e");
    EXPECT_STREQ(commandTail("\"\" C:\\d"), "C:\\d") << "an empty name in quotes";
}

TEST(SelectMode, EmptyTailAsksForNothing) {
    EXPECT_EQ(selectMode(""), Mode::nothing);
}

TEST(SelectMode, TailOf222BytesIsTakenAndOneOf223IsNot) {
    EXPECT_EQ(selectMode(std::string(222, 'x').c_str()), Mode::replace);
    EXPECT_EQ(selectMode(std::string(223, 'x').c_str()), Mode::nothing);
    EXPECT_EQ(selectMode(std::string(100000, 'x').c_str()), Mode::nothing);
}

TEST(SelectMode, LimitCountsTheOptionToo) {
    const std::string option = "-restartgui ";
    EXPECT_EQ(selectMode((option + std::string(210, 'x')).c_str()), Mode::restartGui);
    EXPECT_EQ(selectMode((option + std::string(211, 'x')).c_str()), Mode::nothing);
}

TEST(SelectMode, ComparesExactlyElevenBytes) {
    EXPECT_EQ(selectMode("-restartgui C:\\d"), Mode::restartGui);
    EXPECT_EQ(selectMode("-restartgui"), Mode::restartGui);
    EXPECT_EQ(selectMode("-restartguiXC:\\d"), Mode::restartGui);
    EXPECT_EQ(selectMode("-restartgu"), Mode::replace);
    EXPECT_EQ(selectMode("-restartgux C:\\d"), Mode::replace);
    EXPECT_EQ(selectMode("-RESTARTGUI C:\\d"), Mode::replace);
    EXPECT_EQ(selectMode(" -restartgui C:\\d"), Mode::replace);
    EXPECT_EQ(selectMode("\"-restartgui\" C:\\d"), Mode::replace);
}

TEST(CopyDirectory, TakesAPlainDirectoryAsItStands) {
    EXPECT_EQ(directoryOf("C:\\dir"), "C:\\dir");
    EXPECT_EQ(directoryOf("C:\\with blank\\"), "C:\\with blank\\");
    EXPECT_EQ(directoryOf(" C:\\d "), " C:\\d ");
    EXPECT_EQ(directoryOf("-restartgui C:\\with blank"), "C:\\with blank");
}

TEST(CopyDirectory, QuotesAreOptionalInBothModes) {
    EXPECT_EQ(directoryOf("\"C:\\with blank\""), directoryOf("C:\\with blank"));
    EXPECT_EQ(directoryOf("-restartgui \"C:\\with blank\""),
              directoryOf("-restartgui C:\\with blank"));
}

TEST(CopyDirectory, RemovesOnlyOnePairOfQuotesAndTrimsNothing) {
    EXPECT_EQ(directoryOf("\"\"d\"\""), "\"d\"");
    EXPECT_EQ(directoryOf("\" d \""), " d ");
}

TEST(CopyDirectory, KeepsAQuoteWithoutItsPartner) {
    EXPECT_EQ(directoryOf("\"C:\\d"), "\"C:\\d");
    EXPECT_EQ(directoryOf("C:\\d\""), "C:\\d\"");
    EXPECT_EQ(directoryOf("\"C:\\d\" "), "\"C:\\d\" ");
    EXPECT_EQ(directoryOf("-restartgui \"C:\\d"), "\"C:\\d");
}

TEST(CopyDirectory, ReplaceModeTakesALoneQuoteAsTheDirectory) {
    EXPECT_EQ(directoryOf("\""), "\"");
}

TEST(CopyDirectory, ReplaceModeTakesTwoQuotesAsAnEmptyDirectory) {
    EXPECT_EQ(directoryOf("\"\""), "");
}

TEST(CopyDirectory, GuiModeFailsItsRangeCheckOnALoneQuote) {
    EXPECT_EQ(directoryOf("-restartgui \""), "<range check>");
}

TEST(CopyDirectory, GuiModeTakesTwoQuotesAsAnEmptyDirectory) {
    EXPECT_EQ(directoryOf("-restartgui \"\""), "");
}

TEST(CopyDirectory, GuiModeSkipsTheByteBehindTheOptionUnseen) {
    EXPECT_EQ(directoryOf("-restartguiXC:\\d"), "C:\\d");
    EXPECT_EQ(directoryOf("-restartgui\"C:\\d\""), "C:\\d\"");
    EXPECT_EQ(directoryOf("-restartgui  C:\\d"), " C:\\d");
}

TEST(CopyDirectory, GuiOptionAloneYieldsAnEmptyDirectory) {
    EXPECT_EQ(directoryOf("-restartgui"), "");
    EXPECT_EQ(directoryOf("-restartgui "), "");
    EXPECT_EQ(directoryOf("-restartgui\""), "");
}

TEST(CopyDirectory, LongestDirectoryFitsWithTheLongestSuffix) {
    const std::string longest(222, 'x');
    EXPECT_EQ(directoryOf(longest), longest);
    EXPECT_LT(longest.size() + sizeof "/tolmar.exe -gui", tolmar::pathBufferSize);
    EXPECT_EQ(directoryOf('"' + std::string(220, 'x') + '"'), std::string(220, 'x'));
}

TEST(CopyDirectory, TakesAnyBytes) {
    std::string tail;
    for (int byte = 1; byte < 0x100; ++byte) {
        tail = std::string(3, static_cast<char>(byte));
        EXPECT_EQ(directoryOf(tail), byte == '"' ? "\"" : tail);
    }
}

}  // namespace
