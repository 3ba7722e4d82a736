#include "source/tolmar/gui_restart.h"

#include <cstring>

#include <gtest/gtest.h>

#include "source/tolmar/helper_directory.h"
#include "tests/source/tolmar/scripted_system.h"
#include "vek/log/manager.h"

namespace {

using tolmar::test::LogRecorder;
using tolmar::test::ScriptedSystem;
using tolmar::test::Trace;

constexpr char open1[] = "openEvent(vektolmareventguiupdate1)";
constexpr char open2[] = "openEvent(vektolmareventguiupdate2)";
constexpr char set1[] = "setEvent(vektolmareventguiupdate1)";
constexpr char wait2[] = "waitObject(vektolmareventguiupdate2, 90000)";
constexpr char close1[] = "closeObject(vektolmareventguiupdate1)";
constexpr char close2[] = "closeObject(vektolmareventguiupdate2)";

class GuiRestart : public testing::Test {
  protected:
    GuiRestart() {
        std::strcpy(tolmar::helperDirectory.data(), "C:\\a dir");
        manager.setDefaultLevel(vek::log::DEBUG);
    }

    Trace run() {
        LogRecorder recorder(logger, system.trace);
        tolmar::restartGui(system, logger);
        return system.trace;
    }

    void failOnly(const std::string& name, int which = 0) {
        system.fails = [=](const std::string& call, int, int nth) {
            return call == name && nth == which;
        };
    }

    vek::log::Manager manager;
    vek::log::Logger& logger = *manager.getLogger("TOLMAR_GUIHELPER");
    ScriptedSystem system;
};

TEST_F(GuiRestart, ShakesHandsAndStartsTheGui) {
    EXPECT_EQ(run(),
              (Trace{open1, open2, set1, "log: wait for event2", wait2, "log: event2 triggert",
                     close1, close2, "WinExec(C:\\a dir/tolmar.exe -gui, 5)",
                     "log: start tolmar.exe -gui wuth retcode=33"}));
}

TEST_F(GuiRestart, EndsWithoutALineIfTheFirstEventCantBeOpened) {
    failOnly("openEvent", 0);
    EXPECT_EQ(run(), (Trace{open1}));
}

TEST_F(GuiRestart, LeavesTheFirstEventOpenIfTheSecondCantBeOpened) {
    failOnly("openEvent", 1);
    EXPECT_EQ(run(), (Trace{open1, open2}));
}

TEST_F(GuiRestart, EndsWithoutALineIfTheEventCantBeSet) {
    failOnly("setEvent");
    EXPECT_EQ(run(), (Trace{open1, open2, set1}));
}

TEST_F(GuiRestart, SaysTheSameWordsAgainIfTheWaitFails) {
    failOnly("waitObject");
    EXPECT_EQ(run(),
              (Trace{open1, open2, set1, "log: wait for event2", wait2, "log: wait for event2"}));
}

TEST_F(GuiRestart, TimeOutLeavesTheEventsOpenAndTheGuiUnstarted) {
    system.waitResult = 258;
    EXPECT_EQ(run(), (Trace{open1, open2, set1, "log: wait for event2", wait2,
                            "log: timeout waiting for event2"}));
}

TEST_F(GuiRestart, TakesAnyOtherWaitResultAsTheSignal) {
    system.waitResult = WAIT_ABANDONED;
    EXPECT_EQ(run().back(), "log: start tolmar.exe -gui wuth retcode=33");
}

TEST_F(GuiRestart, EndsIfTheFirstEventCantBeClosed) {
    failOnly("closeObject", 0);
    EXPECT_EQ(run(), (Trace{open1, open2, set1, "log: wait for event2", wait2,
                            "log: event2 triggert", close1}));
}

TEST_F(GuiRestart, EndsIfTheSecondEventCantBeClosed) {
    failOnly("closeObject", 1);
    EXPECT_EQ(run(), (Trace{open1, open2, set1, "log: wait for event2", wait2,
                            "log: event2 triggert", close1, close2}));
}

TEST_F(GuiRestart, TellsTheCodeOfAFailedStart) {
    failOnly("WinExec");
    EXPECT_EQ(run().back(), "log: start tolmar.exe -gui wuth retcode=2");
}

TEST_F(GuiRestart, PutsASlashBehindTheDirectoryWhateverItEndsIn) {
    std::strcpy(tolmar::helperDirectory.data(), "C:\\d\\");
    EXPECT_EQ(run()[8], "WinExec(C:\\d\\/tolmar.exe -gui, 5)");
}

TEST_F(GuiRestart, LongestDirectoryIsNotCut) {
    const std::string longest(222, 'x');
    std::strcpy(tolmar::helperDirectory.data(), longest.c_str());
    EXPECT_EQ(run()[8], "WinExec(" + longest + "/tolmar.exe -gui, 5)");
}

TEST_F(GuiRestart, MakesTheSameCallsWithoutTheLog) {
    logger.setLevel(vek::log::INFO, false);
    EXPECT_EQ(run(), (Trace{open1, open2, set1, wait2, close1, close2,
                            "WinExec(C:\\a dir/tolmar.exe -gui, 5)"}));
}

}  // namespace
