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

class CommandTail : public support::HelperFixture {
  protected:
    void expectNothingDone(const std::string& tail) {
        const Outcome outcome = runHelper(tail);
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
    EXPECT_EQ(
        endState(),
        (EndState{
            .installed = 2, .kept = 1, .fresh = 2, .serviceState = SERVICE_RUNNING, .running = 2}));
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

}  // namespace
