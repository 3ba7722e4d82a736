#include "vek/log/fast_numbers.h"

#include <bit>
#include <cmath>
#include <iomanip>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/vek/log/log_capture.h"
#include "vek/log/manager.h"
#include "vek/log/statement.h"

namespace {

using Flags = std::ios_base::fmtflags;
using Random = std::mt19937_64;

Flags randomFlags(Random& random) {
    Flags flags = {};
    for (const Flags flag : {std::ios_base::showpos, std::ios_base::showpoint,
                             std::ios_base::uppercase, std::ios_base::showbase}) {
        if (random() % 8 == 0) {
            flags |= flag;
        }
    }
    const Flags bases[] = {std::ios_base::dec, std::ios_base::dec, Flags(),
                           std::ios_base::hex, std::ios_base::oct, std::ios_base::basefield};
    const Flags notations[] = {Flags(),
                               Flags(),
                               std::ios_base::fixed,
                               std::ios_base::fixed,
                               std::ios_base::scientific,
                               std::ios_base::fixed | std::ios_base::scientific};
    const Flags adjustments[] = {Flags(), std::ios_base::left, std::ios_base::right,
                                 std::ios_base::internal};
    return flags | bases[random() % 6] | notations[random() % 6] | adjustments[random() % 4];
}

double randomDouble(Random& random) {
    using Limits = std::numeric_limits<double>;
    switch (random() % 8) {
        case 0:
            return std::bit_cast<double>(random());
        case 1: {
            const double special[] = {0.0,
                                      -0.0,
                                      1.0,
                                      Limits::infinity(),
                                      -Limits::infinity(),
                                      Limits::quiet_NaN(),
                                      -Limits::quiet_NaN(),
                                      Limits::denorm_min(),
                                      Limits::max(),
                                      Limits::min()};
            return special[random() % std::size(special)];
        }
        case 2:
            return static_cast<double>(static_cast<std::int64_t>(random() % 2'000'000) - 1'000'000);
        case 3:
            return static_cast<double>(random() % (1 << 22)) / (1 << (random() % 22));
        default:
            return std::pow(10.0, static_cast<double>(random() % 4000) / 100 - 20) *
                   (random() % 2 == 0 ? 1 : -1);
    }
}

// Inserts a random number of a random type into both, with the same flags, and compares.
void compareOne(Random& random, std::ostringstream& fast, std::ostringstream& slow) {
    const Flags flags = randomFlags(random);
    const int precisions[] = {6, 6, 0, 1, 2, 3, 9, 15, 17, 40, 70, 400, -1};
    const int precision = precisions[random() % std::size(precisions)];
    const int width = random() % 3 == 0 ? static_cast<int>(random() % 30) : 0;
    const std::uint64_t bits = random() >> (random() % 64);
    const double number = randomDouble(random);
    const auto kind = random() % 12;
    for (std::ostringstream* const stream : {&fast, &slow}) {
        stream->str("");
        stream->flags(flags);
        stream->precision(precision);
        stream->fill(bits % 2 == 0 ? ' ' : '*');
        stream->width(width);
        switch (kind) {
            case 0:
                *stream << static_cast<short>(bits);
                break;
            case 1:
                *stream << static_cast<int>(bits);
                break;
            case 2:
                *stream << static_cast<unsigned>(bits);
                break;
            case 3:
                *stream << static_cast<long>(bits);
                break;
            case 4:
                *stream << static_cast<std::int64_t>(bits);
                break;
            case 5:
                *stream << bits;
                break;
            case 6:
                *stream << static_cast<float>(number);
                break;
            case 7:
                *stream << static_cast<long double>(number);
                break;
            default:
                *stream << number;
        }
    }
    ASSERT_EQ(fast.str(), slow.str())
        << "flags " << flags << " precision " << precision << " width " << width << " kind " << kind
        << " bits " << bits << " number " << std::hexfloat << number;
    ASSERT_EQ(fast.width(), slow.width());
    ASSERT_EQ(fast.rdstate(), slow.rdstate());
}

TEST(FastNumbers, AreTheTextsOfTheRuntime) {
    std::ostringstream fast;
    vek::log::printNumbersFast(fast);
    std::ostringstream slow;
    Random random(1);
    for (int i = 0; i < 300'000; ++i) {
        compareOne(random, fast, slow);
        if (HasFatalFailure()) {
            return;
        }
    }
}

// As of a country.
class Country : public std::numpunct<char> {
  protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

std::string numbersOf(std::ostream& stream, std::ostringstream& text) {
    text.str("");
    stream << 1234567 << " " << 1234.5 << " " << 1234567L << " " << 1.5F;
    return text.str();
}

constexpr char ofCountry[] = "1.234.567 1.234,5 1.234.567 1,5";
constexpr char classic[] = "1234567 1234.5 1234567 1.5";

TEST(FastNumbers, FollowALocaleThatTheProgramGivesTheStream) {
    std::ostringstream stream;
    vek::log::printNumbersFast(stream);
    const std::locale fast = stream.getloc();
    EXPECT_EQ(numbersOf(stream, stream), classic);
    stream.imbue(std::locale(std::locale::classic(), new Country));
    EXPECT_EQ(numbersOf(stream, stream), ofCountry);
    // One that is made of the stream's own.
    stream.imbue(std::locale(fast, new Country));
    EXPECT_EQ(numbersOf(stream, stream), ofCountry);
    stream.imbue(fast);
    EXPECT_EQ(numbersOf(stream, stream), classic);
}

TEST(FastNumbers, FollowTheLocaleThatTheStreamHasAlready) {
    std::ostringstream stream;
    stream.imbue(std::locale(std::locale::classic(), new Country));
    vek::log::printNumbersFast(stream);
    EXPECT_EQ(numbersOf(stream, stream), ofCountry);
}

TEST(FastNumbers, LocaleMayBeUsedElsewhere) {
    std::ostringstream stream;
    vek::log::printNumbersFast(stream);
    std::ostringstream other;
    other.imbue(stream.getloc());
    EXPECT_EQ(numbersOf(other, other), classic);
    other.imbue(std::locale(stream.getloc(), new Country));
    EXPECT_EQ(numbersOf(other, other), ofCountry);
    other.imbue(std::locale::classic());
    other.copyfmt(stream);
    EXPECT_EQ(numbersOf(other, other), classic);
}

// Restores the global locale at the end.
class GlobalLocale {
  public:
    explicit GlobalLocale(const std::locale& locale) : previous(std::locale::global(locale)) {}
    ~GlobalLocale() { std::locale::global(previous); }
    GlobalLocale(const GlobalLocale&) = delete;
    GlobalLocale& operator=(const GlobalLocale&) = delete;

  private:
    const std::locale previous;
};

TEST(NumbersInStatements, FollowTheLocaleOfTheLogger) {
    vek::log::Manager manager;
    const vek_test::LogCapture capture(manager);
    vek::log::Logger& logger = *manager.getLogger("x");
    VEK_LOG(logger, vek::log::INFO, 1234567 << " " << 1234.5);
    const GlobalLocale global(std::locale(std::locale::classic(), new Country));
    // A logger takes the global locale when it is made.
    VEK_LOG(*manager.getLogger("y"), vek::log::INFO, 1234567 << " " << 1234.5);
    VEK_LOG(logger, vek::log::INFO, 1234567 << " " << 1234.5);
    logger.stream().imbue(std::locale());
    logger.releaseStream();
    VEK_LOG(logger, vek::log::INFO, 1234567 << " " << 1234.5);
    manager.start();
    manager.shutdown();
    EXPECT_EQ(capture.texts(), (std::vector<std::string>{"1234567 1234.5", "1.234.567 1.234,5",
                                                         "1234567 1234.5", "1.234.567 1.234,5"}));
}

}  // namespace
