// The stdout sink in the hands of the manager.
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/vek/log/captured_errors.h"
#include "tests/vek/log/log_capture.h"
#include "vek/base/console_colors.h"
#include "vek/exception.h"
#include "vek/log/manager.h"
#include "vek/log/sinks/stdout_sink.h"

namespace {

using namespace vek::log;
using vek::test::CapturedErrors;
using vek_test::LogCapture;
using Texts = std::vector<std::string>;

StdoutSink* newSink(Level maxLevel = INVALID, bool attributes = false) {
    return new StdoutSink(
        {true, false, false, false, maxLevel,
         attributes ? compileFormat("{msg}{attrs}") : std::vector<FormatToken>()});
}

std::size_t sinksOf(const Manager& manager) {
    return manager.withSinks([](const auto& sinks, std::uint32_t) { return sinks.size(); });
}

// What the manager's worker writes to the standard output, a pipe or a file as the tests' runner
// has it, of what `work` logs.
template <class Work>
std::string outputOf(Manager& manager, Work work) {
    testing::internal::CaptureStdout();
    work();
    manager.start();
    manager.shutdown();
    return testing::internal::GetCapturedStdout();
}

TEST(ManagerStdout, ForcedColorsOnAFileRemoveTheSinkWithThisReport) {
    Manager manager;
    LogCapture behind(manager);
    vek::setConsoleColors(true, false);
    const CapturedErrors errors;
    const std::string output = outputOf(manager, [&] {
        manager.addSink(newSink());
        manager.getLogger("x")->emit(ERR, "first");
        manager.getLogger("x")->emit(ERR, "second");
    });
    vek::setConsoleColors(false, false);
    EXPECT_EQ(output, "");
    EXPECT_EQ(errors.text(), "Failed to store message in an sink:\n" +
                                 std::string(vek::OsError(ERROR_INVALID_HANDLE).what()) +
                                 "\n\nRemoving this sink ...\n");
    EXPECT_EQ(behind.texts(), (Texts{"first", "second"}));
}

TEST(ManagerStdout, MessagesBeyondItsLevelDontReachTheSink) {
    Manager manager;
    EXPECT_EQ(outputOf(manager,
                       [&] {
                           manager.addSink(newSink(WARN));
                           for (const Level level : {INFO, WARN, TRACE, ERR}) {
                               manager.getLogger("x")->emit(level, levelName(level));
                           }
                       }),
              "[ WARN] x: WARN\n[  ERR] x: ERR\n");
}

TEST(ManagerStdout, SinkWithAFailedStreamStaysAndWritesAgain) {
    Manager manager;
    LogCapture marker(manager);
    testing::internal::CaptureStdout();
    const CapturedErrors errors;
    std::cout.setstate(std::ios_base::failbit);
    manager.addSink(newSink());
    manager.start();
    manager.getLogger("x")->emit(ERR, "lost");
    // The second message is marked as seen once the sink has had the first.
    manager.getLogger("x")->emit(ERR, "lost, too");
    ASSERT_TRUE(marker.waitFor(2));
    // With the manager's mutex held, no sink is at work.
    manager.withSinks([](const auto&, std::uint32_t) { std::cout.clear(); });
    EXPECT_EQ(sinksOf(manager), 2u);
    manager.getLogger("x")->emit(ERR, "written");
    manager.shutdown();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "[  ERR] x: written\n");
    EXPECT_EQ(errors.text(), "");
}

TEST(ManagerStdout, AttributesAreWrittenWhereTheFormatAsksForThem) {
    Manager manager;
    EXPECT_EQ(outputOf(manager,
                       [&] {
                           manager.addSink(newSink(INVALID, true));
                           AttrMessage* const message =
                               manager.getLogger("x")->makeAttrMessage(INFO, "text");
                           message->attrs = {{"b", "2"}, {"a", "1"}};
                           manager.submit(message);
                           manager.getLogger("x")->emit(INFO, "none");
                       }),
              "text (a = 1, b = 2)\nnone\n");
}

}  // namespace
