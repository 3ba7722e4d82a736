#include "vek/base/text.h"

#include <gtest/gtest.h>

namespace {

using Fields = std::vector<std::string>;

Fields splitFields(const std::string& text, bool trimFields, bool keepEmpty) {
    Fields fields = {"left over"};
    vek::split(text, ',', fields, trimFields, keepEmpty);
    return fields;
}

TEST(Trim, RemovesWhiteSpaceFromBothEnds) {
    EXPECT_EQ(vek::trimmed(" \t\r\n\v\fa b \n"), "a b");
    EXPECT_EQ(vek::trimmed(" \t "), "");
    EXPECT_EQ(vek::trimmed(""), "");
}

TEST(Trim, WithACharacterRemovesExactlyThat) {
    EXPECT_EQ(vek::trimmed("xx a xx", 'x'), " a ");
    EXPECT_EQ(vek::trimmed(" a ", 'x'), " a ");
}

TEST(Trim, WorksInPlaceAndGivesTheStringBack) {
    std::string text = " a ";
    EXPECT_EQ(&vek::trim(text), &text);
    EXPECT_EQ(text, "a");
}

TEST(Trim, TakesBytesAboveAsciiAsText) {
    EXPECT_EQ(vek::trimmed(" \xE4\xA0 "), "\xE4\xA0");
}

TEST(ToLower, TurnsAsciiLettersOnly) {
    std::string text = "AbC-\xC4";
    EXPECT_EQ(&vek::toLower(text), &text);
    EXPECT_EQ(text, "abc-\xC4");
}

TEST(Split, LeavesEmptyFieldsOut) {
    EXPECT_EQ(splitFields("a,,b", false, false), (Fields{"a", "b"}));
    EXPECT_EQ(splitFields(",,a,b,,", false, false), (Fields{"a", "b"}));
    EXPECT_EQ(splitFields(",,,", false, false), Fields{});
    EXPECT_EQ(splitFields("", false, false), Fields{});
}

TEST(Split, KeepsEmptyFieldsIfAsked) {
    EXPECT_EQ(splitFields("a,,b", false, true), (Fields{"a", "", "b"}));
    EXPECT_EQ(splitFields(",a,", false, true), (Fields{"", "a", ""}));
    EXPECT_EQ(splitFields("", false, true), Fields{""});
}

TEST(Split, TrimsFieldsIfAsked) {
    EXPECT_EQ(splitFields(" a , b ", true, false), (Fields{"a", "b"}));
    EXPECT_EQ(splitFields(" a , b ", false, false), (Fields{" a ", " b "}));
}

TEST(Split, LeavesOutWhatTrimmingEmptied) {
    EXPECT_EQ(splitFields("a, ,b", true, false), (Fields{"a", "b"}));
    EXPECT_EQ(splitFields("a, ,b", true, true), (Fields{"a", "", "b"}));
    EXPECT_EQ(splitFields("a, ,b", false, false), (Fields{"a", " ", "b"}));
}

TEST(ReplaceChar, ReplacesEveryOne) {
    std::string text = "a\\b\\\\c";
    EXPECT_EQ(&vek::replaceChar(text, '\\', '/'), &text);
    EXPECT_EQ(text, "a/b//c");
}

}  // namespace
