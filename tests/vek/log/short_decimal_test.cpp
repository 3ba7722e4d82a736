#include "vek/log/short_decimal.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

using vek::log::shortDecimalSize;
using Print = char* (*)(char*, double, int);

// What the runtime prints.
std::string printed(const char* pattern, double number, int precision) {
    char text[400];
    return {text,
            static_cast<std::size_t>(std::snprintf(text, sizeof text, pattern, precision, number))};
}

// Empty if the number isn't treated.
std::string shortText(Print print, double number, int precision) {
    char room[shortDecimalSize];
    char* const end = room + sizeof room;
    const char* const start = print(end, number, precision);
    return start == nullptr ? std::string()
                            : std::string(start, static_cast<std::size_t>(end - start));
}

// Whether `number` is treated. If so the text must be the runtime's.
bool agrees(double number, int precision) {
    int treated = 0;
    for (const auto& [print, pattern] :
         {std::pair{&vek::log::shortGeneral, "%.*g"}, std::pair{&vek::log::shortFixed, "%.*f"}}) {
        const std::string text = shortText(print, number, precision);
        if (!text.empty()) {
            EXPECT_EQ(text, printed(pattern, number, precision)) << pattern << " " << precision;
            ++treated;
        }
    }
    return treated != 0;
}

TEST(ShortDecimal, PrintsEverydayNumbers) {
    EXPECT_EQ(shortText(vek::log::shortGeneral, 12.5, 6), "12.5");
    EXPECT_EQ(shortText(vek::log::shortGeneral, -0.003, 6), "-0.003");
    EXPECT_EQ(shortText(vek::log::shortGeneral, 100000, 6), "100000");
    EXPECT_EQ(shortText(vek::log::shortGeneral, 1.0 / 3, 6), "0.333333");
    EXPECT_EQ(shortText(vek::log::shortGeneral, 0.1, 1), "0.1");
    EXPECT_EQ(shortText(vek::log::shortFixed, 12.5, 2), "12.50");
    EXPECT_EQ(shortText(vek::log::shortFixed, -0.001, 2), "-0.00");
    EXPECT_EQ(shortText(vek::log::shortFixed, 7, 0), "7");
}

TEST(ShortDecimal, RoundsHalvesToTheEvenDigit) {
    EXPECT_EQ(shortText(vek::log::shortFixed, 0.5, 0), "0");
    EXPECT_EQ(shortText(vek::log::shortFixed, 1.5, 0), "2");
    EXPECT_EQ(shortText(vek::log::shortFixed, 2.5, 0), "2");
    EXPECT_EQ(shortText(vek::log::shortFixed, 0.125, 2), "0.12");
    EXPECT_EQ(shortText(vek::log::shortFixed, 0.375, 2), "0.38");
    EXPECT_EQ(shortText(vek::log::shortGeneral, 1234.5, 4), "1234");
    EXPECT_EQ(shortText(vek::log::shortGeneral, 1235.5, 4), "1236");
}

TEST(ShortDecimal, LeavesOtherNumbersAlone) {
    using Limits = std::numeric_limits<double>;
    for (const double number : {0.0, -0.0, 1e-300, 1e10, 1e300, Limits::infinity(),
                                -Limits::infinity(), Limits::quiet_NaN(), Limits::denorm_min()}) {
        EXPECT_EQ(shortText(vek::log::shortGeneral, number, 6), "") << number;
        EXPECT_EQ(shortText(vek::log::shortFixed, number, 6), "") << number;
    }
    // These have an exponent once they are rounded.
    EXPECT_EQ(shortText(vek::log::shortGeneral, 999999.5, 6), "");
    EXPECT_EQ(shortText(vek::log::shortGeneral, 1234567, 6), "");
    EXPECT_EQ(shortText(vek::log::shortGeneral, 0.00009, 6), "");
    EXPECT_EQ(shortText(vek::log::shortGeneral, 1, 0), "");
    EXPECT_EQ(shortText(vek::log::shortGeneral, 1, 10), "");
    EXPECT_EQ(shortText(vek::log::shortFixed, 1, 10), "");
    EXPECT_EQ(shortText(vek::log::shortFixed, 1, -1), "");
}

TEST(ShortDecimal, IsWhatTheRuntimePrints) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> exponent(-6, 8);
    int treated = 0;
    for (int i = 0; i < 150'000; ++i) {
        const double number = std::pow(10.0, exponent(random)) * (i % 2 == 0 ? 1 : -1);
        treated += agrees(number, static_cast<int>(random() % 11));
        // Few digits, and so many that lie exactly between two texts.
        const double binary = static_cast<double>(random() % (1 << 20)) / (1 << (random() % 20));
        treated += agrees(binary, static_cast<int>(random() % 11));
        const double decimal = static_cast<double>(random() % 1'000'000) / 1000;
        treated += agrees(decimal, static_cast<int>(random() % 11));
    }
    EXPECT_GT(treated, 250'000);
}

TEST(ShortDecimal, IsWhatTheRuntimePrintsAroundPowersOfTen) {
    int treated = 0;
    for (int power = -5; power <= 9; ++power) {
        for (int precision = 0; precision <= 10; ++precision) {
            double up = std::pow(10.0, power);
            double down = up;
            for (int step = 0; step < 20; ++step) {
                treated += agrees(up, precision) + agrees(down, precision);
                up = std::nextafter(up, 1e10);
                down = std::nextafter(down, 0);
            }
            treated +=
                agrees(std::pow(10.0, power) * (1 - 0.5 * std::pow(10.0, -precision)), precision);
        }
    }
    EXPECT_GT(treated, 1000);
}

}  // namespace
