// Durations and file sizes with their units, and parsing them.
//
// The two tables define each unit: its names, its value in the base unit, and whether it can be
// printed. Counts are unsigned and deliberately wrap at 64 bits without a check.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace vek {

// A row of a unit table. A count of the unit is count * multiplier / divisor of the family's base
// unit, the millisecond or the byte.
struct UnitRow {
    std::string_view shortForm;
    std::string_view longForm;
    std::uint64_t multiplier;
    std::uint64_t divisor;
    std::string_view printedAs;  // printed after the value; empty: can't be printed

    // Returns whether `text` is one of the two forms, which are in lower case.
    constexpr bool isForm(std::string_view text) const {
        return text == shortForm || text == longForm;
    }
    constexpr std::uint64_t toBase(std::uint64_t count) const {
        return count * multiplier / divisor;
    }
    constexpr std::uint64_t fromBase(std::uint64_t base) const {
        return base * divisor / multiplier;
    }
};

// A month is 30 days and a year twelve such months, that is 360 days, deliberately.
inline constexpr std::array<UnitRow, 10> durationUnits = {{
    {"ns", "nanoseconds", 1, 1'000'000, " ns"},
    {"us", "microseconds", 1, 1'000, " us"},
    {"ms", "milliseconds", 1, 1, " ms"},
    {"s", "seconds", 1'000, 1, " s"},
    {"m", "minutes", 60'000, 1, " m"},
    {"h", "hours", 3'600'000, 1, ""},
    {"d", "days", 86'400'000, 1, ""},
    {"w", "weeks", 604'800'000, 1, ""},
    {"mon", "months", 2'592'000'000, 1, ""},
    {"y", "years", 31'104'000'000, 1, ""},
}};

// The same for file sizes.
inline constexpr std::array<UnitRow, 5> fileSizeUnits = {{
    {"b", "bytes", 1, 1, " bytes"},
    {"kb", "kilobytes", std::uint64_t{1} << 10, 1, " kb"},
    {"mb", "megabytes", std::uint64_t{1} << 20, 1, " mb"},
    {"gb", "gigabytes", std::uint64_t{1} << 30, 1, " gb"},
    {"tb", "terabytes", std::uint64_t{1} << 40, 1, " tb"},
}};

// A count of one unit: row `index` of `table`.
template <const auto& table, std::size_t index>
class UnitValue {
  public:
    constexpr explicit UnitValue(std::uint64_t ownCount) : ownCountValue(ownCount) {}

    // Converts by way of the base unit; both steps truncate.
    template <std::size_t otherIndex>
    constexpr explicit UnitValue(const UnitValue<table, otherIndex>& other)
        : ownCountValue(row.fromBase(other.toBase())) {}

    // The number of units.
    constexpr std::uint64_t count() const { return ownCountValue; }

    // The amount in the family's base unit: milliseconds or bytes.
    constexpr std::uint64_t toBase() const { return row.toBase(ownCountValue); }

    // The long name of the unit, and whether `text` is one of its names, as in UnitRow.
    static constexpr std::string_view longName() { return row.longForm; }
    static constexpr bool isForm(std::string_view text) { return row.isForm(text); }

    friend constexpr bool operator==(const UnitValue&, const UnitValue&) = default;

    // Only for the units that have a printed form.
    friend std::ostream& operator<<(std::ostream& stream, const UnitValue& value) requires(
        !table[index].printedAs.empty()) {
        return stream << value.count() << row.printedAs;
    }

  private:
    static constexpr const UnitRow& row = table[index];

    std::uint64_t ownCountValue;
};

// Durations.
using Nanoseconds = UnitValue<durationUnits, 0>;
using Microseconds = UnitValue<durationUnits, 1>;
using Milliseconds = UnitValue<durationUnits, 2>;
using Seconds = UnitValue<durationUnits, 3>;
using Minutes = UnitValue<durationUnits, 4>;
using Hours = UnitValue<durationUnits, 5>;
using Days = UnitValue<durationUnits, 6>;
using Weeks = UnitValue<durationUnits, 7>;
using Months = UnitValue<durationUnits, 8>;
using Years = UnitValue<durationUnits, 9>;

// File sizes.
using Bytes = UnitValue<fileSizeUnits, 0>;
using Kilobytes = UnitValue<fileSizeUnits, 1>;
using Megabytes = UnitValue<fileSizeUnits, 2>;
using Gigabytes = UnitValue<fileSizeUnits, 3>;
using Terabytes = UnitValue<fileSizeUnits, 4>;

// Parse a decimal number from 0 to 2^63 - 1 and a unit in either form and any case, such as "10 MB"
// or "1500us". White space before both is skipped; text after the unit is ignored.
//
// Throw ParseError with the text if there is no such number, although 0 is accepted, or no unit;
// with the unit in lower case if it is unknown. Thread-safe.
std::uint64_t parseFileSize(const std::string& text);  // bytes
std::uint64_t parseDuration(const std::string& text);  // milliseconds

}  // namespace vek
