// What a configuration or a command line gives as a duration, a size, a level, a change of one, a
// number, an address.
#include <charconv>
#include <functional>
#include <optional>

#include "tests/native/fuzz/fuzz.h"
#include "tools/log_application/connection/endpoint.h"
#include "tools/log_application/connection/level_change.h"
#include "tools/log_application/program/failure.h"
#include "vek/base/text.h"
#include "vek/base/units.h"
#include "vek/exception.h"

namespace {

using vek::test::require;

template <std::size_t size>
void checkUnit(const std::string& text, const std::array<vek::UnitRow, size>& table,
               const std::function<std::uint64_t(const std::string&)>& parse) {
    std::uint64_t base = 0;
    try {
        base = parse(text);
    } catch (const vek::ParseError&) {
        return;
    }
    // Taken apart by other means: the digits, and the first word behind them.
    std::string rest = vek::trimmed(text);
    if (rest.starts_with("+") || rest.starts_with("-")) {
        require(rest[0] == '+' || base == 0, "there is no number below 0");
        rest.erase(0, 1);
    }
    std::uint64_t number = 0;
    const auto [stop, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    require(error == std::errc() && number <= INT64_MAX, "there is a number");
    rest = vek::toLower(vek::trim(rest.erase(0, static_cast<std::size_t>(stop - rest.data()))));
    const std::string unit = rest.substr(0, rest.find_first_of(" \t\n\v\f\r"));
    for (const vek::UnitRow& row : table) {
        if (unit == row.shortForm || unit == row.longForm) {
            require(base == number * row.multiplier / row.divisor, "a unit is worth what it is");
            return;
        }
    }
    require(false, "the unit is known");
}

void checkLevel(const std::string& text) {
    try {
        const vek::log::Level level = vek::log::parseLevel(text);
        std::string name = vek::trimmed(text);
        require(vek::toUpper(name) == vek::log::levelName(level), "a level goes by its name");
        require(level != vek::log::INVALID, "one name is no level");
    } catch (const vek::UsageError&) {
    }
}

void checkLevelChange(const std::string& text) {
    using namespace log_application;
    try {
        const LevelChange change = parseLevelChange(text);
        require(text.starts_with(change.logger + "="), "the name is what stands ahead");
        require(vek::log::parseLevel(text.substr(change.logger.size() + 1)) == change.level,
                "the level is what stands behind");
        require(!change.logger.empty() && change.logger.size() <= longestLoggerName &&
                    change.logger.find_first_of("=\x1F") == std::string::npos,
                "the wire carries the name");
    } catch (const Failure& failure) {
        require(failure.exitCode() == exitUsage, "that is wrong usage");
    }
    try {
        require(parseSeverity("--x", text) <= vek::log::TRACE, "a severity is one");
    } catch (const Failure&) {
    }
    try {
        const std::int64_t ms = parseTime("--x", text);
        require(ms > 0 && ms <= std::int64_t{366} * 86'400'000, "a time is up to a year");
        require(parseTime("--x", std::to_string(ms / 1000 + 1)) == (ms / 1000 + 1) * 1000 ||
                    ms > std::int64_t{365} * 86'400'000,
                "a bare number counts seconds");
    } catch (const Failure&) {
    }
}

void checkEndpoint(const std::string& text) {
    using namespace log_application;
    try {
        const Endpoint endpoint = parseEndpoint("--x", text, 7);
        require(endpoint.port != 0, "an endpoint has a port");
        require(parseEndpoint("--x", endpoint.text()) == endpoint, "it is read as it is written");
    } catch (const Failure&) {
    }
    const std::optional<std::uint32_t> number = parseNumber(text, 1000);
    require(!number || *number <= 1000, "a number is within its limit");
    require(!number || text.find_first_not_of("0123456789") == std::string::npos,
            "a number has digits only");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = vek::test::textOf(data, size);
    checkUnit(text, vek::durationUnits, &vek::parseDuration);
    checkUnit(text, vek::fileSizeUnits, &vek::parseFileSize);
    checkLevel(text);
    checkLevelChange(text);
    checkEndpoint(text);
    return 0;
}
