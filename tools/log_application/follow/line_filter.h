// log_application::LineFilter: decides which lines are shown.
#pragma once

#include <regex>
#include <string>
#include <vector>

#include "tools/log_application/show/log_line.h"

namespace log_application {

struct FilterOptions {
    vek::log::Level level = vek::log::TRACE;  // the most verbose level shown
    std::vector<std::regex> include;          // one has to be found in the text, if there are any
    std::vector<std::regex> exclude;          // none may be found in it
    std::vector<std::string> loggers;         // one has to be the logger's name, if there are any
};

class LineFilter {
  public:
    explicit LineFilter(FilterOptions filterOptions) : options(std::move(filterOptions)) {}

    // A line without a level isn't filtered by level.
    bool accepts(const LogLine& line) const;

  private:
    const FilterOptions options;
};

// Compiles `text`, the value of the option `name`, as an ECMAScript regular expression. Throws
// Failure (exitUsage) if it isn't one.
std::regex parseRegex(const std::string& name, const std::string& text);

}  // namespace log_application
