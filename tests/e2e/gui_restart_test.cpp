// The hand-shake with a peer and the start of the GUI, with real events and a real GUI program.
#include "tests/support/files.h"
#include "tests/support/helper_fixture.h"
#include "tests/support/peer_event.h"
#include "vek/exception.h"

namespace {

using support::event1Name;
using support::event2Name;
using support::limitMs;
using support::Outcome;
using support::PeerEvent;

// How long a test watches that something doesn't happen.
constexpr DWORD observeMs = 1000;

class GuiRestart : public support::HelperFixture {
  protected:
    // The GUI's raw command line, or "" if it wasn't started.
    std::string guiCommandLine(unsigned waitMs = limitMs) {
        std::string text;
        support::waitUntil(
            [&] {
                try {
                    text = support::readFile(guiFile());
                } catch (const vek::FsError&) {
                    // It isn't there, or the GUI is still giving it its name.
                    return false;
                }
                return true;
            },
            waitMs);
        return text;
    }

    // The helper passes the command line without quotes. If it contains blanks, the system tries
    // which of them ends the program's path, and puts quotes around the path that it found.
    std::string expectedCommandLine() const {
        const std::string program = installedDirectory + "/tolmar.exe";
        return (program.find(' ') == std::string::npos ? program : "\"" + program + "\"") + " -gui";
    }

    void expectNoGui(const Outcome& outcome) {
        EXPECT_EQ(outcome.exitCode, 0u);
        EXPECT_EQ(outcome.errorText, "");
        EXPECT_LT(outcome.milliseconds, support::atOnceMs);
        EXPECT_EQ(guiCommandLine(observeMs), "");
    }

    // Acts as the peer: answers once the helper is up.
    void shakeHands(const std::string& tail, BOOL manualReset) {
        const PeerEvent event1(event1Name, manualReset);
        const PeerEvent event2(event2Name, manualReset);
        const auto helper = startHelper(tail);
        ASSERT_TRUE(event1.waitFor(limitMs)) << "the helper doesn't say that it is up";
        EXPECT_FALSE(helper->waitForEnd(observeMs)) << "the helper should wait for the answer";
        EXPECT_FALSE(support::exists(guiFile())) << "the GUI should wait for the answer";
        event2.set();
        const Outcome outcome = finish(*helper);
        EXPECT_EQ(outcome.exitCode, 0u);
        EXPECT_EQ(outcome.errorText, "");
        // The helper's wait has reset an auto-reset event.
        EXPECT_EQ(event2.waitFor(0), manualReset != FALSE);
        EXPECT_EQ(guiCommandLine(), expectedCommandLine());
    }
};

TEST_F(GuiRestart, StartsTheGuiOnceThePeerAnswers) {
    shakeHands("-restartgui " + installedDirectory, FALSE);
}

TEST_F(GuiRestart, WorksWithManualResetEvents) {
    shakeHands("-restartgui " + installedDirectory, TRUE);
}

TEST_F(GuiRestart, TakesAnUnquotedDirectoryWithABlank) {
    installInto("with a blank");
    shakeHands("-restartgui " + installedDirectory, FALSE);
}

TEST_F(GuiRestart, TakesAQuotedDirectoryWithABlank) {
    installInto("with a blank");
    shakeHands("-restartgui \"" + installedDirectory + "\"", FALSE);
}

TEST_F(GuiRestart, DoesNotLookAtTheByteBehindTheOption) {
    shakeHands("-restartgui=" + installedDirectory, FALSE);
}

TEST_F(GuiRestart, TakesATailOf222Bytes) {
    installIntoPathOfLength(222 - 12);
    shakeHands("-restartgui " + installedDirectory, FALSE);
}

TEST_F(GuiRestart, IgnoresATailOf223Bytes) {
    installIntoPathOfLength(223 - 12);
    const PeerEvent event1(event1Name, FALSE);
    const PeerEvent event2(event2Name, FALSE);
    event2.set();
    expectNoGui(runHelper("-restartgui " + installedDirectory));
    EXPECT_FALSE(event1.waitFor(0));
}

TEST_F(GuiRestart, IsServedAtOnceByAnAnswerThatCameFirst) {
    const PeerEvent event1(event1Name, FALSE);
    const PeerEvent event2(event2Name, FALSE);
    event2.set();
    const Outcome outcome = runHelper("-restartgui " + installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_LT(outcome.milliseconds, support::atOnceMs);
    EXPECT_TRUE(event1.waitFor(0));
    EXPECT_EQ(guiCommandLine(), expectedCommandLine());
}

TEST_F(GuiRestart, WithoutAPeerEndsAtOnce) {
    expectNoGui(runHelper("-restartgui " + installedDirectory));
}

TEST_F(GuiRestart, WithTheFirstEventAloneEndsAtOnceWithoutASignal) {
    const PeerEvent event1(event1Name, FALSE);
    expectNoGui(runHelper("-restartgui " + installedDirectory));
    EXPECT_FALSE(event1.waitFor(0));
}

TEST_F(GuiRestart, WithTheSecondEventAloneEndsAtOnce) {
    const PeerEvent event2(event2Name, FALSE);
    event2.set();
    expectNoGui(runHelper("-restartgui " + installedDirectory));
    EXPECT_TRUE(event2.waitFor(0)) << "the helper shouldn't have waited for it";
}

TEST_F(GuiRestart, DoesNotMeetAPeerWhoseEventsBelongToOneSession) {
    const PeerEvent event1(event1Name + sizeof "Global\\" - 1, FALSE);
    const PeerEvent event2(event2Name + sizeof "Global\\" - 1, FALSE);
    event2.set();
    expectNoGui(runHelper("-restartgui " + installedDirectory));
    EXPECT_FALSE(event1.waitFor(0));
}

TEST_F(GuiRestart, EndsWithZeroWhereThereIsNoGuiToStart) {
    ASSERT_NE(DeleteFileA(installed().c_str()), 0);
    const PeerEvent event1(event1Name, FALSE);
    const PeerEvent event2(event2Name, FALSE);
    event2.set();
    expectNoGui(runHelper("-restartgui " + installedDirectory));
    EXPECT_TRUE(event1.waitFor(0));
}

TEST_F(GuiRestart, DoesNotTouchTheService) {
    runService();
    shakeHands("-restartgui " + installedDirectory, FALSE);
    EXPECT_EQ(
        endState(),
        (support::EndState{
            .installed = 1, .kept = 0, .fresh = 2, .serviceState = SERVICE_RUNNING, .running = 1}));
}

}  // namespace
