#include "tools/log_application/follow/line_filter.h"

#include <algorithm>

namespace log_application {

namespace {

// Whether any of `patterns` is found; undecided only if that depends on a search that was given up.
TextPattern::Found findAny(const std::vector<TextPattern>& patterns, const std::string& text) {
    TextPattern::Found found = TextPattern::Found::no;
    for (const TextPattern& pattern : patterns) {
        const TextPattern::Found one = pattern.search(text);
        if (one == TextPattern::Found::yes) {
            return one;
        }
        found = std::max(found, one);
    }
    return found;
}

}  // namespace

LineFilter::Verdict LineFilter::judge(const LogLine& line) const {
    using Found = TextPattern::Found;
    if (line.level && *line.level > options.level) {
        return Verdict::hidden;
    }
    const std::string logger = line.logger.value_or("");
    if (!options.loggers.empty() &&
        std::ranges::find(options.loggers, logger) == options.loggers.end()) {
        return Verdict::hidden;
    }
    const std::string text = line.text.value_or("");
    const Found included = options.include.empty() ? Found::yes : findAny(options.include, text);
    if (included == Found::no) {
        return Verdict::hidden;
    }
    const Found excluded = findAny(options.exclude, text);
    if (excluded == Found::yes) {
        return Verdict::hidden;
    }
    const bool decided = included == Found::yes && excluded == Found::no;
    return decided ? Verdict::shown : Verdict::undecided;
}

}  // namespace log_application
