// The helper's raw command tail, as it arrives from the program that starts it.
#include "tests/support/files.h"
#include "tests/support/helper_fixture.h"

namespace {

using support::EndState;
using support::Outcome;

const EndState unregistered = {
    .installed = 1, .kept = 0, .fresh = 2, .serviceState = 0, .running = 0};
const EndState stopped = {
    .installed = 1, .kept = 0, .fresh = 2, .serviceState = SERVICE_STOPPED, .running = 0};
const EndState untouched = {
    .installed = 1, .kept = 0, .fresh = 2, .serviceState = SERVICE_RUNNING, .running = 1};
const EndState updated = {
    .installed = 2, .kept = 1, .fresh = 2, .serviceState = SERVICE_RUNNING, .running = 2};

class CommandTail : public support::HelperFixture {
  protected:
    void expectNothingDone(const std::string& tail) { expectNothingDone(*startHelper(tail)); }
    void expectNothingDone(support::ChildProcess& helper) {
        const Outcome outcome = finish(helper);
        EXPECT_EQ(outcome.exitCode, 0u);
        EXPECT_EQ(outcome.errorText, "");
        EXPECT_LT(outcome.milliseconds, support::atOnceMs);
    }
};

TEST_F(CommandTail, ThatIsEmptyDoesNothing) {
    registerService();
    expectNothingDone("");
    EXPECT_EQ(endState(), stopped);
}

TEST_F(CommandTail, Of222BytesIsProcessed) {
    installIntoPathOfLength(222);
    runService();
    EXPECT_EQ(runHelper(installedDirectory).exitCode, 0u);
    EXPECT_EQ(endState(), updated);
}

TEST_F(CommandTail, Of223BytesDoesNothing) {
    installIntoPathOfLength(223);
    registerService();
    expectNothingDone(installedDirectory);
    EXPECT_EQ(endState(), stopped);
}

TEST_F(CommandTail, Of223BytesWithItsQuotesDoesNothing) {
    installIntoPathOfLength(221);
    registerService();
    expectNothingDone("\"" + installedDirectory + "\"");
    EXPECT_EQ(endState(), stopped);
}

TEST_F(CommandTail, OfTheOptionAloneEndsWithZero) {
    expectNothingDone("-restartgui");
    EXPECT_EQ(endState(), unregistered);
}

TEST_F(CommandTail, OfTheOptionAndOneLoneQuoteEndsTheProcessAtOnce) {
    const Outcome outcome = runHelper("-restartgui \"");
    EXPECT_EQ(outcome.exitCode, 0xC0000409u);
    EXPECT_EQ(outcome.errorText, "");
    EXPECT_EQ(endState(), unregistered);
}

// The program's name in a command line may be any text: CreateProcess gets the path separately.

TEST_F(CommandTail, BehindAnUnquotedNameWithAnUmlautSelectsItsMode) {
    runService();
    expectNothingDone(*startHelper(
        support::CommandLine{"C:\\M\xFCller\\tolmarhlp.exe -restartgui " + installedDirectory}));
    EXPECT_EQ(endState(), untouched);
}

TEST_F(CommandTail, BehindAnUnquotedNameWithAnUmlautNamesTheDirectory) {
    runService();
    const Outcome outcome = finish(
        *startHelper(support::CommandLine{"C:\\M\xFCller\\tolmarhlp.exe \t" + installedDirectory}));
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(endState(), updated);
}

// The umlaut is a part of the tail, which is too long with it.
TEST_F(CommandTail, ThatStartsWithAnUmlautKeepsIt) {
    installIntoPathOfLength(222);
    runService();
    expectNothingDone("\xDC" + installedDirectory);
    EXPECT_EQ(endState(), untouched);
}

}  // namespace
