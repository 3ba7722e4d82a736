#include "vek/log/sinks/time_text.h"

#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "vek/time/date_time.h"

namespace {

std::string fresh(std::int64_t seconds, const char* pattern) {
    vek::time::DateTime local;
    local.setLocalFromSeconds(seconds);
    return local.format(pattern);
}

constexpr char datePattern[] = "%Y-%m-%d %H:%M:%S";

TEST(TimeText, IsThatOfItsSecondWhateverWasAskedForBefore) {
    for (const std::int64_t seconds : {0, 1709211909, 1709211909, 0, 1709211910, 86399, 86400}) {
        EXPECT_EQ(vek::log::dateText(seconds), fresh(seconds, datePattern));
        EXPECT_EQ(vek::log::localTimeText(seconds), fresh(seconds, "%c"));
    }
}

TEST(TimeText, OfTheFirstSecondIsNotTakenForOneThatIsKnown) {
    std::string date;
    std::string time;
    std::thread([&] {
        date = vek::log::dateText(0);
        time = vek::log::localTimeText(0);
    }).join();
    EXPECT_EQ(date, fresh(0, datePattern));
    EXPECT_EQ(time, fresh(0, "%c"));
}

TEST(TimeText, OfOneThreadIsNotDisturbedByAnother) {
    const std::string_view here = vek::log::dateText(1000);
    std::thread([] { vek::log::dateText(2000); }).join();
    EXPECT_EQ(here, fresh(1000, datePattern));
}

}  // namespace
