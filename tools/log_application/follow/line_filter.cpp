#include "tools/log_application/follow/line_filter.h"

#include <algorithm>

#include "tools/log_application/program/failure.h"
#include "tools/log_application/show/escape.h"

namespace log_application {

namespace {

bool findsAny(const std::vector<std::regex>& expressions, const std::string& text) {
    return std::ranges::any_of(expressions, [&text](const std::regex& expression) {
        return std::regex_search(text, expression);
    });
}

}  // namespace

bool LineFilter::accepts(const LogLine& line) const {
    if (line.level && *line.level > options.level) {
        return false;
    }
    const std::string logger = line.logger.value_or("");
    if (!options.loggers.empty() &&
        std::ranges::find(options.loggers, logger) == options.loggers.end()) {
        return false;
    }
    const std::string text = line.text.value_or("");
    return (options.include.empty() || findsAny(options.include, text)) &&
           !findsAny(options.exclude, text);
}

std::regex parseRegex(const std::string& name, const std::string& text) {
    try {
        return std::regex(text);
    } catch (const std::regex_error&) {
        throw Failure(
            exitUsage,
            "\"" + escapeControls(text) + "\", given to " + name + ", is no regular expression.",
            "Put a backslash in front of ( [ { * + ? . and others that are meant as they stand.");
    }
}

}  // namespace log_application
