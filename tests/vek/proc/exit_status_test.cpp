#include "vek/proc/exit_status.h"

#include <sstream>

#include <gtest/gtest.h>

namespace {

using vek::proc::ExitStatus;

std::string text(const ExitStatus& status) {
    std::ostringstream out;
    out << status;
    return out.str();
}

TEST(ExitStatus, StandsForARunThatHasNotEndedAtFirst) {
    const ExitStatus status;
    EXPECT_EQ(status.code, 0u);
    EXPECT_FALSE(status.killed);
    EXPECT_FALSE(status.finished);
    EXPECT_FALSE(status.succeeded());
}

TEST(ExitStatus, SucceedsOnlyIfFinishedAndNotKilledWithCodeZero) {
    EXPECT_TRUE((ExitStatus{0, false, true}.succeeded()));
    EXPECT_FALSE((ExitStatus{0, false, false}.succeeded()));
    EXPECT_FALSE((ExitStatus{0, true, true}.succeeded()));
    EXPECT_FALSE((ExitStatus{1, false, true}.succeeded()));
    EXPECT_FALSE((ExitStatus{0x80000000, false, true}.succeeded()));
}

TEST(ExitStatus, PrintsTheCodeOnlyOfAnEndThatWasNoKill) {
    EXPECT_EQ(text({}), "finished: 0\nkilled: 0");
    EXPECT_EQ(text({3, false, true}), "finished: 1\nkilled: 0\ncode: 3");
    EXPECT_EQ(text({37125, true, true}), "finished: 1\nkilled: 1");
    EXPECT_EQ(text({5, true, false}), "finished: 0\nkilled: 1");
    EXPECT_EQ(text({0xC0000005, false, true}), "finished: 1\nkilled: 0\ncode: 3221225477");
}

TEST(ExitStatus, PrintsItsNumbersAlikeOnEveryStream) {
    std::ostringstream out;
    out << std::hex << std::boolalpha << std::showbase << ExitStatus{255, false, true};
    EXPECT_EQ(out.str(), "finished: 1\nkilled: 0\ncode: 255");
}

}  // namespace
