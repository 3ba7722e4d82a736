#include "tools/log_application/connection/level_change.h"

#include "tools/log_application/program/failure.h"
#include "tools/log_application/show/escape.h"
#include "vek/base/units.h"
#include "vek/exception.h"

namespace log_application {

namespace {

constexpr const char* levelsThereAre = "Levels are OFF, ERR, WARN, INFO, DEBUG and TRACE";

vek::log::Level parseLevel(const std::string& text, const std::string& advice) {
    try {
        return vek::log::parseLevel(text);
    } catch (const vek::UsageError&) {
        throw Failure(exitUsage, "\"" + escapeControls(text) + "\" is no level.", advice);
    }
}

}  // namespace

LevelChange parseLevelChange(const std::string& text) {
    const std::size_t equals = text.rfind('=');
    if (equals == std::string::npos || equals == 0) {
        throw Failure(
            exitUsage, "\"" + escapeControls(text) + "\" is no NAME=LEVEL.",
            "Write a logger and its level, as net=DEBUG; for the default level: --default DEBUG.");
    }
    const std::string logger = text.substr(0, equals);
    if (logger.find_first_of("=\x1F") != std::string::npos) {
        throw Failure(
            exitUsage, "The name \"" + escapeControls(logger) + "\" can't be sent.",
            "The protocol has no way to write \"=\" or the unit separator in the name of a logger; "
            "use --default for such a one.");
    }
    if (logger.size() > longestLoggerName) {
        throw Failure(
            exitUsage, "A name of " + std::to_string(logger.size()) + " characters can't be sent.",
            "The process takes requests of 1020 bytes at most; use --default for such a logger.");
    }
    const std::string advice =
        std::string(levelsThereAre) + "; DEFAULT lets a logger follow the default level.";
    return {logger, parseLevel(text.substr(equals + 1), advice)};
}

vek::log::Level parseSeverity(const std::string& option, const std::string& text) {
    const std::string advice = std::string(levelsThereAre) + ".";
    const vek::log::Level level = parseLevel(text, advice);
    if (level == vek::log::DEFAULT) {
        throw Failure(exitUsage, "DEFAULT can't be given to " + option + ".", advice);
    }
    return level;
}

std::int64_t parseTime(const std::string& option, const std::string& text) {
    constexpr std::uint64_t longest = std::uint64_t{366} * 86'400'000;
    // Can't overflow, whatever the unit.
    constexpr std::size_t mostDigits = 9;
    const std::size_t digits = text.find_first_not_of("0123456789");
    const std::string unit = digits == std::string::npos ? "s" : text.substr(digits);
    std::uint64_t milliseconds = 0;
    if (digits != 0 && text.substr(0, digits).size() <= mostDigits && !text.empty() &&
        unit.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos) {
        try {
            milliseconds = vek::parseDuration(text.substr(0, digits) + unit);
        } catch (const vek::ParseError&) {
            milliseconds = 0;
        }
    }
    if (milliseconds == 0 || milliseconds > longest) {
        throw Failure(exitUsage,
                      "\"" + escapeControls(text) + "\", given to " + option + ", is no time.",
                      "Write a number and its unit, as 30s, 10m or 2h, up to a year; a bare number "
                      "counts seconds.");
    }
    return static_cast<std::int64_t>(milliseconds);
}

}  // namespace log_application
