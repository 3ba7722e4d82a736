#include "vek/log/short_decimal.h"

#include <array>
#include <bit>
#include <cstdint>
#include <optional>

namespace vek::log {

namespace {

constexpr int mostDigits = 9;

constexpr std::array<std::uint32_t, mostDigits + 1> powersOfTen = {
    1, 10, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000, 100'000'000, 1'000'000'000};

// Those that 32 bits can hold.
constexpr std::array<std::uint32_t, 14> powersOfFive = {
    1,      5,       25,        125,       625,        3'125,       15'625,
    78'125, 390'625, 1'953'125, 9'765'625, 48'828'125, 244'140'625, 1'220'703'125};

// Returns `magnitude` times ten to the power of `decimals`, rounded to the nearest integer, halves
// to the even one; nothing if the number is too large or too small for the arithmetic used, or if
// the result has more than `mostDigits` digits, or is ten to the power of that.
std::optional<std::uint32_t> scaled(double magnitude, int decimals) {
    constexpr int fractionBits = 52;
    constexpr int exponentBias = 1023;
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const int exponent = static_cast<int>(bits >> fractionBits) - exponentBias;
    // `magnitude` is `significand` divided by 2 to the power of `fractionBits - exponent`. Ten is
    // five times two, so these are the bits of the product with a power of five that are cut off.
    const int cut = fractionBits - exponent - decimals;
    if (decimals < 0 || decimals >= static_cast<int>(powersOfFive.size()) || cut < 33 || cut > 63) {
        return std::nullopt;
    }
    constexpr std::uint64_t one = 1;
    constexpr std::uint64_t lowHalf = 0xFFFF'FFFF;
    const std::uint64_t significand = (bits & ((one << fractionBits) - 1)) | one << fractionBits;
    const std::uint64_t power = powersOfFive[static_cast<std::size_t>(decimals)];
    // The product is `high` times 2 to the power of 32, and the low half of `low`.
    const std::uint64_t low = (significand & lowHalf) * power;
    const std::uint64_t high = (significand >> 32) * power + (low >> 32);
    std::uint64_t result = high >> (cut - 32);
    const std::uint64_t rest = (high & ((one << (cut - 32)) - 1)) << 32 | (low & lowHalf);
    const std::uint64_t half = one << (cut - 1);
    if (rest > half || (rest == half && result % 2 != 0)) {
        ++result;
    }
    if (result >= powersOfTen[mostDigits]) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(result);
}

// Writes `digits` with a point before the last `decimals`, if there are any.
char* write(char* end, std::uint32_t digits, int decimals, bool isNegative) {
    for (int i = 0; i < decimals; ++i, digits /= 10) {
        *--end = static_cast<char>('0' + digits % 10);
    }
    if (decimals != 0) {
        *--end = '.';
    }
    do {
        *--end = static_cast<char>('0' + digits % 10);
        digits /= 10;
    } while (digits != 0);
    if (isNegative) {
        *--end = '-';
    }
    return end;
}

// The place of the first digit of a number from 0.0001 to 999,999,999: 0 for the ones.
int firstPlace(double magnitude) {
    int place = 0;
    if (magnitude < 1) {
        constexpr std::array<double, 3> tenths = {0.1, 0.01, 0.001};
        for (place = -1; place > -4 && magnitude < tenths[static_cast<std::size_t>(-place - 1)];) {
            --place;
        }
        return place;
    }
    while (place < mostDigits - 1 &&
           magnitude >= powersOfTen[static_cast<std::size_t>(place) + 1]) {
        ++place;
    }
    return place;
}

}  // namespace

char* shortGeneral(char* end, double number, int precision) {
    const double magnitude = number < 0 ? -number : number;
    if (!(magnitude >= 0.0001) || magnitude >= powersOfTen[mostDigits] || precision < 1 ||
        precision > mostDigits) {
        return nullptr;
    }
    int decimals = precision - 1 - firstPlace(magnitude);
    std::optional<std::uint32_t> digits = scaled(magnitude, decimals);
    // Rounded up to one digit more, it may have to be printed with an exponent.
    if (!digits || *digits >= powersOfTen[static_cast<std::size_t>(precision)]) {
        return nullptr;
    }
    for (; decimals > 0 && *digits % 10 == 0; --decimals) {
        *digits /= 10;
    }
    return write(end, *digits, decimals, number < 0);
}

char* shortFixed(char* end, double number, int precision) {
    const double magnitude = number < 0 ? -number : number;
    if (precision > mostDigits) {
        return nullptr;
    }
    const std::optional<std::uint32_t> digits = scaled(magnitude, precision);
    return digits ? write(end, *digits, precision, number < 0) : nullptr;
}

}  // namespace vek::log
