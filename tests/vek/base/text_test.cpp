#include "vek/base/text.h"

#include <clocale>
#include <random>

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

TEST(Trim, WithACharacterLeavesWhiteSpaceInsideAlone) {
    EXPECT_EQ(vek::trimmed("xxx", 'x'), "");
    EXPECT_EQ(vek::trimmed("x x", 'x'), " ");
    EXPECT_EQ(vek::trimmed("\xFF"
                           "a\xFF",
                           '\xFF'),
              "a");
}

TEST(Trim, TakesZeroBytesAsText) {
    const std::string text("\0 a \0", 5);
    EXPECT_EQ(vek::trimmed(text), text);
}

TEST(Trim, TakesAMegabyte) {
    EXPECT_EQ(vek::trimmed(std::string(1 << 20, ' ') + "a" + std::string(1 << 20, ' ')), "a");
}

TEST(Trimmed, LeavesItsArgumentAlone) {
    const std::string text = " a ";
    EXPECT_EQ(vek::trimmed(text), "a");
    EXPECT_EQ(text, " a ");
}

TEST(ToUpper, TurnsAsciiLettersOnly) {
    std::string text("aBc-\xE4\0z", 7);
    EXPECT_EQ(&vek::toUpper(text), &text);
    EXPECT_EQ(text, std::string("ABC-\xE4\0Z", 7));
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

TEST(Split, TakesEveryOtherByteAsText) {
    EXPECT_EQ(splitFields(std::string("a\0b,\xFF", 5), false, false),
              (Fields{std::string("a\0b", 3), "\xFF"}));
    Fields fields;
    vek::split(std::string("a\0b", 3), '\0', fields, false, false);
    EXPECT_EQ(fields, (Fields{"a", "b"}));
}

TEST(Split, TakesAMegabyte) {
    EXPECT_EQ(splitFields(std::string(1 << 20, ','), false, false), Fields{});
    EXPECT_EQ(splitFields(std::string(1 << 20, ','), false, true).size(), (1u << 20) + 1);
    EXPECT_EQ(splitFields(std::string(1 << 20, 'x'), false, false).at(0).size(), 1u << 20);
}

TEST(ReplaceChar, ReplacesEveryOne) {
    std::string text = "a\\b\\\\c";
    EXPECT_EQ(&vek::replaceChar(text, '\\', '/'), &text);
    EXPECT_EQ(text, "a/b//c");
}

std::size_t replaceAll(std::string& text, const char* find, const char* replacement) {
    return vek::replaceAll(text, find, replacement);
}

TEST(ReplaceAll, ReplacesAndCountsEach) {
    std::string text = "one two one";
    EXPECT_EQ(replaceAll(text, "one", "three"), 2u);
    EXPECT_EQ(text, "three two three");
    EXPECT_EQ(replaceAll(text, "e", ""), 4u);
    EXPECT_EQ(text, "thr two thr");
}

TEST(ReplaceAll, WithoutAnOccurrenceChangesNothing) {
    std::string text = "abc";
    EXPECT_EQ(replaceAll(text, "x", "y"), 0u);
    EXPECT_EQ(replaceAll(text, "abcd", "y"), 0u);
    EXPECT_EQ(text, "abc");
}

TEST(ReplaceAll, DoesNotSearchWhatItPutIn) {
    std::string text = "aa";
    EXPECT_EQ(replaceAll(text, "a", "aa"), 2u);
    EXPECT_EQ(text, "aaaa");
    text = "aab";
    EXPECT_EQ(replaceAll(text, "ab", "b"), 1u);
    EXPECT_EQ(text, "ab");
}

TEST(ReplaceAll, GoesOnBehindAnOccurrence) {
    std::string text = "aaa";
    EXPECT_EQ(replaceAll(text, "aa", "b"), 1u);
    EXPECT_EQ(text, "ba");
}

TEST(ReplaceAll, FindsNothingEmpty) {
    std::string text = "abc";
    EXPECT_EQ(replaceAll(text, "", "x"), 0u);
    EXPECT_EQ(text, "abc");
}

TEST(ReplaceAll, TakesTheTextItselfAsArgument) {
    std::string text = "ab";
    EXPECT_EQ(vek::replaceAll(text, text, "x"), 1u);
    EXPECT_EQ(text, "x");
    EXPECT_EQ(vek::replaceAll(text, "x", text), 1u);
    EXPECT_EQ(text, "x");
}

TEST(ReplaceAll, TakesZeroBytesAndBytesAboveAscii) {
    std::string text("a\0b\0\xFF", 5);
    EXPECT_EQ(vek::replaceAll(text, std::string(1, '\0'), "\xFE"), 2u);
    EXPECT_EQ(text,
              "a\xFE"
              "b\xFE\xFF");
}

TEST(ReplaceAll, TakesAMegabyteOfOccurrences) {
    std::string text(1 << 20, 'a');
    EXPECT_EQ(replaceAll(text, "a", "bc"), 1u << 20);
    EXPECT_EQ(text.size(), 2u << 20);
    EXPECT_EQ(text.find('a'), std::string::npos);
}

TEST(ReplaceAnyOf, ReplacesEveryCharacterByTheWholeText) {
    std::string text = "a-b_c-";
    EXPECT_EQ(vek::replaceAnyOf(text, "-_", "<>"), 3u);
    EXPECT_EQ(text, "a<>b<>c<>");
}

TEST(ReplaceAnyOf, DoesNotSearchWhatItPutIn) {
    std::string text = "ab";
    EXPECT_EQ(vek::replaceAnyOf(text, "ab", "b"), 2u);
    EXPECT_EQ(text, "bb");
}

TEST(ReplaceAnyOf, RemovesWithAnEmptyReplacement) {
    std::string text = " a\tb ";
    EXPECT_EQ(vek::replaceAnyOf(text, " \t", ""), 3u);
    EXPECT_EQ(text, "ab");
}

TEST(ReplaceAnyOf, WithAnEmptySetChangesNothing) {
    std::string text = "ab";
    EXPECT_EQ(vek::replaceAnyOf(text, "", "x"), 0u);
    EXPECT_EQ(text, "ab");
}

TEST(ReplaceAnyOf, TakesZeroBytesAndBytesAboveAscii) {
    std::string text("a\0\xFFz", 4);
    EXPECT_EQ(vek::replaceAnyOf(text, std::string("\0\xFF", 2), "."), 2u);
    EXPECT_EQ(text, "a..z");
}

using Values = std::map<std::string, std::string>;

TEST(ExpandVariables, ReplacesEachAndLeavesUnknownKeys) {
    std::string text = "{base}/x/{base}/{other}";
    EXPECT_EQ(vek::expandVariables(text, Values{{"base", "C:"}}), 2u);
    EXPECT_EQ(text, "C:/x/C:/{other}");
}

TEST(ExpandVariables, AddsUpTheCountsOfAllKeys) {
    std::string text = "{a}{b}{a}";
    EXPECT_EQ(vek::expandVariables(text, Values{{"a", "1"}, {"b", "2"}}), 3u);
    EXPECT_EQ(text, "121");
}

TEST(ExpandVariables, ValueIsOpenToLaterKeysOnly) {
    std::string text = "{a} {b}";
    EXPECT_EQ(vek::expandVariables(text, Values{{"a", "{b}"}, {"b", "{a}"}}), 3u);
    EXPECT_EQ(text, "{a} {a}");
}

TEST(ExpandVariables, ValueWithItsOwnKeyIsNotExpandedAgain) {
    std::string text = "{a}";
    EXPECT_EQ(vek::expandVariables(text, Values{{"a", "{a}{a}"}}), 1u);
    EXPECT_EQ(text, "{a}{a}");
}

TEST(ExpandVariables, KnowsNoNestingAndNoCaseFolding) {
    std::string text = "{{a}} {A} {a {} a}";
    EXPECT_EQ(vek::expandVariables(text, Values{{"a", "1"}}), 1u);
    EXPECT_EQ(text, "{1} {A} {a {} a}");
}

TEST(ExpandVariables, EmptyKeyStandsForEmptyBraces) {
    std::string text = "a{}b";
    EXPECT_EQ(vek::expandVariables(text, Values{{"", "-"}}), 1u);
    EXPECT_EQ(text, "a-b");
    EXPECT_EQ(vek::expandVariables(text, Values{}), 0u);
}

// What expandVariables promises, in its simplest form.
std::size_t expandOneByOne(std::string& text, const Values& values) {
    std::size_t count = 0;
    for (const auto& [key, value] : values) {
        count += vek::replaceAll(text, "{" + key + "}", value);
    }
    return count;
}

TEST(ExpandVariables, GivesWhatOneKeyAfterTheOtherGives) {
    std::minstd_rand random(1);
    const auto below = [&](unsigned end) { return static_cast<unsigned>(random() % end); };
    const std::vector<std::string> pieces = {"{", "}",   "{",   "}",    "a",
                                             "b", "{a}", "{b}", "{ab}", "x"};
    const auto textOf = [&](unsigned most) {
        std::string text;
        for (unsigned left = below(most + 1); left > 0; --left) {
            text += pieces[below(static_cast<unsigned>(pieces.size()))];
        }
        return text;
    };
    int expanded = 0;
    for (int round = 0; round < 100000; ++round) {
        Values values;
        for (unsigned left = below(4); left > 0; --left) {
            values[textOf(2)] = textOf(3);
        }
        const std::string text = textOf(8);
        std::string expected = text;
        const std::size_t expectedCount = expandOneByOne(expected, values);
        std::string result = text;
        ASSERT_EQ(vek::expandVariables(result, values), expectedCount) << text;
        ASSERT_EQ(result, expected) << text;
        expanded += expectedCount != 0 ? 1 : 0;
    }
    EXPECT_GT(expanded, 5000);
}

TEST(Case, FollowsTheLocaleOfTheRuntime) {
    // The runtime's other locales are those of Windows.
    const char* german = std::setlocale(LC_CTYPE, "German_Germany.1252");
    if (german == nullptr) {
        GTEST_SKIP() << "the runtime knows the C locale alone";
    }
    std::string text = "\xC4";
    EXPECT_EQ(vek::toLower(text), "\xE4");
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(vek::toLower(text = "\xC4"), "\xC4");
}

}  // namespace
