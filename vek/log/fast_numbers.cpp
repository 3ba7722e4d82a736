#include "vek/log/fast_numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <locale>
#include <string_view>
#include <system_error>

#include "vek/log/short_decimal.h"

namespace vek::log {

namespace {

using Flags = std::ios_base::fmtflags;

// The place of a stream's own mark: not 0 if its locale has a decimal point and no grouping, so
// that numbers look as std::to_chars makes them.
int markIndex() {
    static const int index = std::ios_base::xalloc();
    return index;
}

// Of the texts that are made here.
constexpr std::size_t longest = 64;

// Returns the text of `number`, made in `room`, in the notation and with the precision of `stream`;
// the empty text if the runtime has to make it.
std::string_view textOf(double number, const std::ios_base& stream,
                        std::array<char, longest>& room) {
    constexpr int usualPrecision = 6;
    const int precision =
        stream.precision() < 0
            ? usualPrecision
            : static_cast<int>(std::min<std::streamsize>(stream.precision(), longest));
    char* const start = room.data();
    char* const end = start + room.size();
    const char* quick = nullptr;
    std::chars_format notation = std::chars_format::general;
    const Flags chosen = stream.flags() & std::ios_base::floatfield;
    if (chosen == std::ios_base::fixed) {
        notation = std::chars_format::fixed;
        quick = shortFixed(end, number, precision);
    } else if (chosen == std::ios_base::scientific) {
        notation = std::chars_format::scientific;
    } else if (chosen == std::ios_base::floatfield) {
        return {};
    } else {
        quick = shortGeneral(end, number, precision);
    }
    if (quick != nullptr) {
        return {quick, static_cast<std::size_t>(end - quick)};
    }
    if (!std::isfinite(number)) {
        return {};
    }
    const auto [last, error] = std::to_chars(start, end, number, notation, precision);
    return error == std::errc() ? std::string_view(start, static_cast<std::size_t>(last - start))
                                : std::string_view();
}

class FastNumbers : public std::num_put<char> {
  protected:
    iter_type do_put(iter_type out, std::ios_base& stream, char fill, long number) const override {
        return putInteger(out, stream, fill, number);
    }
    iter_type do_put(iter_type out, std::ios_base& stream, char fill,
                     unsigned long number) const override {
        return putInteger(out, stream, fill, number);
    }
    iter_type do_put(iter_type out, std::ios_base& stream, char fill,
                     long long number) const override {
        return putInteger(out, stream, fill, number);
    }
    iter_type do_put(iter_type out, std::ios_base& stream, char fill,
                     unsigned long long number) const override {
        return putInteger(out, stream, fill, number);
    }

    iter_type do_put(iter_type out, std::ios_base& stream, char fill,
                     double number) const override {
        constexpr Flags rare =
            std::ios_base::showpos | std::ios_base::showpoint | std::ios_base::uppercase;
        if (isPlain(stream, rare)) {
            std::array<char, longest> text;
            if (const std::string_view made = textOf(number, stream, text); !made.empty()) {
                return std::copy(made.begin(), made.end(), out);
            }
        }
        return num_put::do_put(out, stream, fill, number);
    }

  private:
    static bool isPlain(std::ios_base& stream, Flags rare) {
        return (stream.flags() & rare) == 0 && stream.width() == 0 &&
               stream.iword(markIndex()) != 0;
    }

    template <class Integer>
    iter_type putInteger(iter_type out, std::ios_base& stream, char fill, Integer number) const {
        constexpr Flags rare = std::ios_base::showpos | std::ios_base::oct | std::ios_base::hex;
        if (!isPlain(stream, rare)) {
            return num_put::do_put(out, stream, fill, number);
        }
        std::array<char, 20> text;  // enough for the lowest 64-bit number with its sign
        const char* const end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
        return std::copy(static_cast<const char*>(text.data()), end, out);
    }
};

// Called when the stream gets another locale, which may have our std::num_put but other rules.
void onEvent(std::ios_base::event event, std::ios_base& stream, int index) {
    if (event == std::ios_base::imbue_event) {
        const std::locale locale = stream.getloc();
        const auto& rules = std::use_facet<std::numpunct<char>>(locale);
        stream.iword(index) = rules.decimal_point() == '.' && rules.grouping().empty() ? 1 : 0;
    }
}

}  // namespace

void printNumbersFast(std::ostream& stream) {
    stream.register_callback(&onEvent, markIndex());
    stream.imbue(std::locale(stream.getloc(), new FastNumbers));
}

}  // namespace vek::log
