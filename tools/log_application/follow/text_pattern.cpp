#include "tools/log_application/follow/text_pattern.h"

#include <cstddef>
#include <iterator>

#include "tools/log_application/program/deep_stack.h"
#include "tools/log_application/program/failure.h"
#include "tools/log_application/show/escape.h"

namespace log_application {

namespace {

// Thrown by the iterators, through the library's recursion.
struct GivenUp {};

// Left for the steps between two checks and for the unwinding.
constexpr std::size_t stackReserve = std::size_t{128} << 10;

struct Limits {
    std::size_t lowestAddress;
    std::uint64_t stepsLeft;

    void checkStack() const {
        const volatile char here = 0;
        if (reinterpret_cast<std::size_t>(&here) < lowestAddress) {
            throw GivenUp();
        }
    }

    void countStep() {
        if (stepsLeft-- == 0) {
            throw GivenUp();
        }
    }
};

// A pointer into the text that checks the limits wherever the library reads or compares.
class CheckedPointer {
  public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CheckedPointer() = default;
    CheckedPointer(const char* position, Limits& searchLimits)
        : at(position), limits(&searchLimits) {}

    reference operator*() const {
        limits->checkStack();
        limits->countStep();
        return *at;
    }
    CheckedPointer& operator++() {
        ++at;
        return *this;
    }
    CheckedPointer operator++(int) {
        CheckedPointer before = *this;
        ++at;
        return before;
    }
    CheckedPointer& operator--() {
        --at;
        return *this;
    }
    CheckedPointer operator--(int) {
        CheckedPointer before = *this;
        --at;
        return before;
    }
    bool operator==(const CheckedPointer& other) const {
        if (limits != nullptr) {
            limits->checkStack();
        }
        return at == other.at;
    }

  private:
    const char* at = nullptr;
    Limits* limits = nullptr;
};

}  // namespace

TextPattern::Found TextPattern::search(const std::string& text, std::uint64_t limit) const {
    Limits limits = {stackBottom() + stackReserve, limit};
    const CheckedPointer begin(text.data(), limits);
    const CheckedPointer end(text.data() + text.size(), limits);
    try {
        return std::regex_search(begin, end, expression) ? Found::yes : Found::no;
    } catch (const GivenUp&) {
        return Found::undecided;
    } catch (const std::regex_error&) {
        // Some libraries have limits of their own.
        return Found::undecided;
    }
}

TextPattern parsePattern(const std::string& name, const std::string& text) {
    try {
        return TextPattern(text);
    } catch (const std::regex_error&) {
        throw Failure(
            exitUsage,
            "\"" + escapeControls(text) + "\", given to " + name + ", is no regular expression.",
            "Put a backslash in front of ( [ { * + ? . and others that are meant as they stand.");
    }
}

}  // namespace log_application
