// log_application::LineFilter: decides which lines are shown.
#pragma once

#include <string>
#include <vector>

#include "tools/log_application/follow/text_pattern.h"
#include "tools/log_application/show/log_line.h"

namespace log_application {

struct FilterOptions {
    vek::log::Level level = vek::log::TRACE;  // the most verbose level shown
    std::vector<TextPattern> include;         // one has to be found in the text, if there are any
    std::vector<TextPattern> exclude;         // none may be found in it
    std::vector<std::string> loggers;         // one has to be the logger's name, if there are any
};

class LineFilter {
  public:
    explicit LineFilter(FilterOptions filterOptions) : options(std::move(filterOptions)) {}

    enum class Verdict {
        hidden,
        shown,
        undecided,  // to be shown: the search for a pattern was given up
    };

    // A line without a level isn't filtered by level.
    Verdict judge(const LogLine& line) const;

    bool accepts(const LogLine& line) const { return judge(line) != Verdict::hidden; }

  private:
    const FilterOptions options;
};

}  // namespace log_application
