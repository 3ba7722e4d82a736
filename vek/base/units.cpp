#include "vek/base/units.h"

#include <locale>
#include <sstream>

#include "vek/base/text.h"
#include "vek/exception.h"

namespace vek {

namespace {

struct ValueWithUnit {
    std::uint64_t value;
    std::string unit;  // in lower case
};

ValueWithUnit readValueWithUnit(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    std::int64_t value = 0;
    if (!(stream >> value) || value < 0) {
        throw ParseError(text, "no positive integer could be parsed");
    }
    std::string unit;
    if (!(stream >> unit)) {
        throw ParseError(text, "Couldn't find unit specification after value");
    }
    toLower(unit);
    return {static_cast<std::uint64_t>(value), unit};
}

template <std::size_t size>
std::uint64_t parseWith(const std::array<UnitRow, size>& table, const std::string& text,
                        const char* unknownUnit) {
    const ValueWithUnit read = readValueWithUnit(text);
    for (const UnitRow& row : table) {
        if (row.isForm(read.unit)) {
            return row.toBase(read.value);
        }
    }
    throw ParseError(read.unit, unknownUnit);
}

}  // namespace

std::uint64_t parseFileSize(const std::string& text) {
    return parseWith(fileSizeUnits, text, "couldn't deduce file size unit");
}

std::uint64_t parseDuration(const std::string& text) {
    return parseWith(durationUnits, text, "couldn't deduce time unit");
}

}  // namespace vek
