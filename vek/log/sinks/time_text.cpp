#include "vek/log/sinks/time_text.h"

#include <algorithm>
#include <array>
#include <string>

#include "vek/time/date_time.h"

namespace vek::log {

namespace {

// Without a constructor, so that it costs nothing in threads that never log.
struct LastText {
    bool known;
    std::int64_t seconds;
    std::size_t size;
    std::array<char, 128> text;
};

std::string_view formatted(LastText& last, const char* pattern, std::int64_t seconds) {
    if (!last.known || last.seconds != seconds) {
        time::DateTime local;
        local.setLocalFromSeconds(seconds);
        const std::string text = local.format(pattern);
        last.size = std::min(text.size(), last.text.size());
        std::copy_n(text.begin(), last.size, last.text.begin());
        last.seconds = seconds;
        last.known = true;
    }
    return {last.text.data(), last.size};
}

}  // namespace

std::string_view dateText(std::int64_t seconds) {
    static thread_local LastText last;
    return formatted(last, "%Y-%m-%d %H:%M:%S", seconds);
}

std::string_view localTimeText(std::int64_t seconds) {
    static thread_local LastText last;
    return formatted(last, "%c", seconds);
}

}  // namespace vek::log
