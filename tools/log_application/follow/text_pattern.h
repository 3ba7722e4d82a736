// log_application::TextPattern: a regular expression that can't exhaust the stack or hang.
#pragma once

#include <cstdint>
#include <regex>
#include <string>

namespace log_application {

// ECMAScript syntax. Thread-safe.
class TextPattern {
  public:
    enum class Found {
        no,
        yes,
        undecided,  // the search was given up
    };

    // The most characters that one search looks at, again and again. Enough for every search whose
    // time grows with the square of a line's length.
    static constexpr std::uint64_t mostSteps = 300'000'000;

    // Throws std::regex_error.
    explicit TextPattern(const std::string& pattern) : expression(pattern) {}

    // Searches `text`. Gives up when the calling thread's stack is nearly used up, which needs a
    // long text and a repeated group, and after `limit` steps.
    Found search(const std::string& text, std::uint64_t limit = mostSteps) const;

  private:
    std::regex expression;
};

// Compiles `text`, the value of the option `name`. Throws Failure (exitUsage) if it isn't a regular
// expression.
TextPattern parsePattern(const std::string& name, const std::string& text);

}  // namespace log_application
