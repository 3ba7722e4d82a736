#include "vek/base/units.h"

#include <locale>
#include <sstream>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "vek/base/text.h"
#include "vek/exception.h"

namespace {

using vek::parseDuration;
using vek::parseFileSize;

// The text of the ParseError that `parse` throws for `text`, and the input it names.
template <class Parse>
std::string failureOf(Parse parse, const std::string& text, const std::string& expectedInput) {
    try {
        parse(text);
    } catch (const vek::ParseError& error) {
        EXPECT_EQ(error.input(), expectedInput);
        return error.description();
    }
    return "nothing was thrown";
}

std::string parseErrorText(const std::string& input, const std::string& reason) {
    return "Parse error: Couldn't parse '" + input + "': " + reason;
}

void expectNoNumber(const std::string& text) {
    const std::string expected = parseErrorText(text, "no positive integer could be parsed");
    EXPECT_EQ(failureOf(parseFileSize, text, text), expected);
    EXPECT_EQ(failureOf(parseDuration, text, text), expected);
}

void expectNoUnit(const std::string& text) {
    const std::string expected =
        parseErrorText(text, "Couldn't find unit specification after value");
    EXPECT_EQ(failureOf(parseFileSize, text, text), expected);
    EXPECT_EQ(failureOf(parseDuration, text, text), expected);
}

std::string mixedCase(std::string text) {
    for (std::size_t i = 0; i < text.size(); i += 2) {
        text[i] = static_cast<char>(text[i] - 'a' + 'A');
    }
    return text;
}

template <class Parse>
void expectUnit(Parse parse, const std::string& shortForm, const std::string& longForm,
                const std::string& value, std::uint64_t expected) {
    for (const std::string& form : {shortForm, longForm}) {
        std::string upper = form;
        vek::toUpper(upper);
        for (const std::string& unit : {form, upper, mixedCase(form)}) {
            EXPECT_EQ(parse(value + unit), expected) << value + unit;
            EXPECT_EQ(parse(" \t" + value + "\n " + unit + " and more"), expected) << value + unit;
        }
    }
}

TEST(ParseDuration, KnowsEveryUnitInBothFormsAndAnyCase) {
    expectUnit(parseDuration, "ns", "nanoseconds", "2999999", 2);
    expectUnit(parseDuration, "us", "microseconds", "2999", 2);
    expectUnit(parseDuration, "ms", "milliseconds", "3", 3);
    expectUnit(parseDuration, "s", "seconds", "3", 3'000);
    expectUnit(parseDuration, "m", "minutes", "3", 180'000);
    expectUnit(parseDuration, "h", "hours", "3", 10'800'000);
    expectUnit(parseDuration, "d", "days", "3", 259'200'000);
    expectUnit(parseDuration, "w", "weeks", "3", 1'814'400'000);
    expectUnit(parseDuration, "mon", "months", "3", 7'776'000'000);
    expectUnit(parseDuration, "y", "years", "3", 93'312'000'000);
}

TEST(ParseFileSize, KnowsEveryUnitInBothFormsAndAnyCase) {
    expectUnit(parseFileSize, "b", "bytes", "3", 3);
    expectUnit(parseFileSize, "kb", "kilobytes", "3", 3'072);
    expectUnit(parseFileSize, "mb", "megabytes", "3", 3'145'728);
    expectUnit(parseFileSize, "gb", "gigabytes", "3", 3'221'225'472);
    expectUnit(parseFileSize, "tb", "terabytes", "3", 3'298'534'883'328);
}

TEST(ParseDuration, CutsOffWhatIsLessThanAMillisecond) {
    EXPECT_EQ(parseDuration("1500 us"), 1u);
    EXPECT_EQ(parseDuration("999 us"), 0u);
    EXPECT_EQ(parseDuration("1000 us"), 1u);
    EXPECT_EQ(parseDuration("999999 ns"), 0u);
    EXPECT_EQ(parseDuration("1000000 ns"), 1u);
}

TEST(ParseDuration, AYearIsTwelveMonthsOfThirtyDays) {
    EXPECT_EQ(parseDuration("1 y"), 31'104'000'000u);
    EXPECT_EQ(parseDuration("1 y"), parseDuration("360 d"));
    EXPECT_EQ(parseDuration("1 mon"), parseDuration("30 d"));
}

TEST(ParseDuration, UnknownUnitIsNamedInLowerCase) {
    for (const std::string unit : {"Month", "min", "sec", "year", "kb", "S.", "\xC4"}) {
        std::string lower = unit;
        vek::toLower(lower);
        EXPECT_EQ(failureOf(parseDuration, "1 " + unit + " x", lower),
                  parseErrorText(lower, "couldn't deduce time unit"));
    }
}

TEST(ParseFileSize, UnknownUnitIsNamedInLowerCase) {
    for (const std::string unit : {"Byte", "k", "KiB", "pb", "ms", "b,", "\xC4"}) {
        std::string lower = unit;
        vek::toLower(lower);
        EXPECT_EQ(failureOf(parseFileSize, "1 " + unit + " x", lower),
                  parseErrorText(lower, "couldn't deduce file size unit"));
    }
}

TEST(ParseUnits, ZeroIsTaken) {
    EXPECT_EQ(parseFileSize("0 b"), 0u);
    EXPECT_EQ(parseFileSize("-0 tb"), 0u);
    EXPECT_EQ(parseDuration("0 y"), 0u);
}

TEST(ParseUnits, ReadsTheNumberAsTheStreamsDo) {
    EXPECT_EQ(parseFileSize("1KB"), 1024u);
    EXPECT_EQ(parseFileSize("+5 kb"), 5120u);
    EXPECT_EQ(parseFileSize("010b"), 10u);
    EXPECT_EQ(parseFileSize("\v\f\r\n\t 1 b"), 1u);
    EXPECT_EQ(parseDuration("10d"), 864'000'000u);
}

TEST(ParseUnits, WithoutANumberFails) {
    for (const char* text :
         {"", " ", "kb", "-1 kb", "-1", "- 1 kb", "+-1 kb", ".5 kb", "x1 kb", "\xFF"}) {
        expectNoNumber(text);
    }
    expectNoNumber(
        std::string("\0"
                    "1 kb",
                    5));
}

TEST(ParseUnits, WithoutAUnitFails) {
    expectNoUnit("10");
    expectNoUnit(" 10 \t\n");
    expectNoUnit("9223372036854775807");
}

TEST(ParseUnits, ZeroBytesArePartOfTheUnit) {
    const std::string unit("\0kb", 3);
    EXPECT_EQ(failureOf(parseFileSize, "10" + unit, unit),
              parseErrorText(unit, "couldn't deduce file size unit"));
}

TEST(ParseUnits, OtherNotationsLeaveTheirRestAsTheUnit) {
    EXPECT_EQ(failureOf(parseFileSize, "1.5 kb", ".5"),
              parseErrorText(".5", "couldn't deduce file size unit"));
    EXPECT_EQ(failureOf(parseFileSize, "0x10 b", "x10"),
              parseErrorText("x10", "couldn't deduce file size unit"));
    EXPECT_EQ(failureOf(parseFileSize, "1,000 b", ",000"),
              parseErrorText(",000", "couldn't deduce file size unit"));
}

// As a language with points or commas in its numbers would bring along.
class Grouping : public std::numpunct<char> {
  protected:
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(ParseUnits, GlobalLocaleDoesNotMatter) {
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new Grouping));
    const std::string error = failureOf(parseFileSize, "1,000 b", ",000");
    std::locale::global(before);
    EXPECT_EQ(error, parseErrorText(",000", "couldn't deduce file size unit"));
}

TEST(ParseUnits, TakeAMegabyteOfText) {
    EXPECT_EQ(parseFileSize("1 kb " + std::string(1 << 20, 'x')), 1024u);
    EXPECT_EQ(parseFileSize(std::string(1 << 20, ' ') + "1 kb"), 1024u);
    EXPECT_EQ(parseFileSize(std::string(1 << 20, '0') + "1 kb"), 1024u);
    expectNoNumber(std::string(1 << 20, '9') + " kb");
}

TEST(ParseUnits, NumberEndsAtTheBorderOfSigned64Bits) {
    EXPECT_EQ(parseFileSize("9223372036854775807 b"), 9223372036854775807u);
    EXPECT_EQ(parseDuration("9223372036854775807 ms"), 9223372036854775807u);
    EXPECT_EQ(parseDuration("9223372036854775807 us"), 9223372036854775u);
    EXPECT_EQ(parseDuration("9223372036854775807 ns"), 9223372036854u);
    expectNoNumber("9223372036854775808 b");
    expectNoNumber("18446744073709551616 b");
    expectNoNumber("-9223372036854775808 b");
    expectNoNumber("-9223372036854775809 b");
}

TEST(ParseUnits, ResultsWrapAroundAt64Bits) {
    EXPECT_EQ(parseFileSize("9223372036854775807 kb"), 18446744073709550592u);
    EXPECT_EQ(parseFileSize("9223372036854775807 mb"), 18446744073708503040u);
    EXPECT_EQ(parseFileSize("9223372036854775807 gb"), 18446744072635809792u);
    EXPECT_EQ(parseFileSize("9223372036854775807 tb"), 18446742974197923840u);
    EXPECT_EQ(parseFileSize("18014398509481983 kb"), 18446744073709550592u);
    EXPECT_EQ(parseFileSize("18014398509481984 kb"), 0u);
    EXPECT_EQ(parseDuration("9223372036854775807 s"), 18446744073709550616u);
    EXPECT_EQ(parseDuration("9223372036854775807 m"), 18446744073709491616u);
    EXPECT_EQ(parseDuration("9223372036854775807 h"), 18446744073705951616u);
    EXPECT_EQ(parseDuration("9223372036854775807 d"), 18446744073623151616u);
    EXPECT_EQ(parseDuration("9223372036854775807 w"), 18446744073104751616u);
    EXPECT_EQ(parseDuration("9223372036854775807 mon"), 18446744071117551616u);
    EXPECT_EQ(parseDuration("9223372036854775807 y"), 18446744042605551616u);
}

template <class T>
concept Printable = requires(std::ostream& stream, T value) {
    stream << value;
};

template <class T>
std::string printed(T value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

TEST(Units, ArePrintedWithTheirUnit) {
    EXPECT_EQ(printed(vek::Nanoseconds(5)), "5 ns");
    EXPECT_EQ(printed(vek::Microseconds(5)), "5 us");
    EXPECT_EQ(printed(vek::Milliseconds(5)), "5 ms");
    EXPECT_EQ(printed(vek::Seconds(5)), "5 s");
    EXPECT_EQ(printed(vek::Minutes(5)), "5 m");
    EXPECT_EQ(printed(vek::Bytes(1)), "1 bytes");
    EXPECT_EQ(printed(vek::Kilobytes(5)), "5 kb");
    EXPECT_EQ(printed(vek::Megabytes(5)), "5 mb");
    EXPECT_EQ(printed(vek::Gigabytes(5)), "5 gb");
    EXPECT_EQ(printed(vek::Terabytes(18446744073709551615u)), "18446744073709551615 tb");
}

TEST(Units, LongerOnesHaveNoPrintedForm) {
    static_assert(Printable<vek::Minutes>);
    static_assert(!Printable<vek::Hours>);
    static_assert(!Printable<vek::Days>);
    static_assert(!Printable<vek::Weeks>);
    static_assert(!Printable<vek::Months>);
    static_assert(!Printable<vek::Years>);
}

template <class Unit>
void expectForms(const std::string& shortForm, const std::string& longForm) {
    EXPECT_EQ(Unit::longName(), longForm);
    EXPECT_TRUE(Unit::isForm(shortForm));
    EXPECT_TRUE(Unit::isForm(longForm));
    EXPECT_FALSE(Unit::isForm(""));
    EXPECT_FALSE(Unit::isForm(longForm + "s"));
    EXPECT_FALSE(Unit::isForm(longForm.substr(0, longForm.size() - 1)));
    EXPECT_FALSE(Unit::isForm(mixedCase(shortForm)));
}

TEST(Units, KnowTheirTwoForms) {
    expectForms<vek::Nanoseconds>("ns", "nanoseconds");
    expectForms<vek::Microseconds>("us", "microseconds");
    expectForms<vek::Milliseconds>("ms", "milliseconds");
    expectForms<vek::Seconds>("s", "seconds");
    expectForms<vek::Minutes>("m", "minutes");
    expectForms<vek::Hours>("h", "hours");
    expectForms<vek::Days>("d", "days");
    expectForms<vek::Weeks>("w", "weeks");
    expectForms<vek::Months>("mon", "months");
    expectForms<vek::Years>("y", "years");
    expectForms<vek::Bytes>("b", "bytes");
    expectForms<vek::Kilobytes>("kb", "kilobytes");
    expectForms<vek::Megabytes>("mb", "megabytes");
    expectForms<vek::Gigabytes>("gb", "gigabytes");
    expectForms<vek::Terabytes>("tb", "terabytes");
}

TEST(Units, ConvertWithinTheirFamily) {
    EXPECT_EQ(vek::Seconds(vek::Minutes(2)).count(), 120u);
    EXPECT_EQ(vek::Minutes(vek::Seconds(119)).count(), 1u);
    EXPECT_EQ(vek::Nanoseconds(vek::Milliseconds(3)).count(), 3'000'000u);
    EXPECT_EQ(vek::Days(vek::Years(1)).count(), 360u);
    EXPECT_EQ(vek::Months(vek::Years(1)).count(), 12u);
    EXPECT_EQ(vek::Weeks(vek::Days(13)).count(), 1u);
    EXPECT_EQ(vek::Kilobytes(vek::Megabytes(3)).count(), 3072u);
    EXPECT_EQ(vek::Gigabytes(vek::Bytes(4'294'967'295)).count(), 3u);
    EXPECT_EQ(vek::Terabytes(vek::Terabytes(7)).count(), 7u);
    EXPECT_EQ(vek::Hours(vek::Hours(7)), vek::Hours(7));
}

TEST(Units, ConvertByWayOfTheBaseUnit) {
    EXPECT_EQ(vek::Microseconds(vek::Nanoseconds(1'999'999)).count(), 1'000u);
    EXPECT_EQ(vek::Nanoseconds(1'999'999).toBase(), 1u);
    EXPECT_EQ(vek::Kilobytes(3).toBase(), 3072u);
}

TEST(Units, FamiliesDontMix) {
    static_assert(std::is_constructible_v<vek::Seconds, vek::Years>);
    static_assert(!std::is_constructible_v<vek::Seconds, vek::Bytes>);
    static_assert(!std::is_convertible_v<vek::Years, vek::Seconds>);
}

}  // namespace
