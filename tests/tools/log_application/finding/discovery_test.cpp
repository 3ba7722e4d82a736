#include "tools/log_application/finding/discovery.h"

#include <algorithm>
#include <thread>

#include <gtest/gtest.h>

#include "tests/tools/log_application/support/ioctl_spy.h"
#include "tests/tools/log_application/support/scripted_discovery.h"
#include "tools/log_application/program/failure.h"
// Needs windows.h.
#include <mswsock.h>

namespace {

using namespace log_application;
using namespace log_application_test;

class DiscoveryTest : public vek::test::WinsockTest {
  protected:
    StopSignal stop;
};

// Windows alone reports them on a receive, so only the request not to can be seen here.
TEST_F(DiscoveryTest, PortsThatNobodyHoldsAreNotReported) {
    const IoctlSpy spy;
    EXPECT_TRUE(discover({{"127.0.0.1", 1}}, stop).empty());
    const auto calls = spy.callsOf(SIO_UDP_CONNRESET);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].input, std::string(sizeof(BOOL), '\0'));
}

TEST_F(DiscoveryTest, TheStopEndsTheSearchAtOnce) {
    stop.request();
    // The quickest of some: beside other work one may take longer.
    DWORD quickest = INFINITE;
    for (int i = 0; i < 10; ++i) {
        const DWORD start = GetTickCount();
        discover({{"127.0.0.1", 1}}, stop);
        quickest = std::min(quickest, GetTickCount() - start);
    }
    EXPECT_LT(quickest, static_cast<DWORD>(discoveryTimeMs) / 2);
}

TEST_F(DiscoveryTest, ASearchThatCanBeSentNowhereIsAFailure) {
    try {
        // The address is no host's.
        discover({{"0.1.2.3", 1}}, stop);
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), exitLost);
        EXPECT_TRUE(failure.description().starts_with(
            "The question for processes can't be sent: 0.1.2.3:1: "))
            << failure.description();
    }
}

TEST_F(DiscoveryTest, APlaceThatCannotBeSentToDoesNotHideTheOthers) {
    ScriptedDiscovery server([](const std::string& id) { return helloOf(id, "demo"); });
    const auto found = discover({{"0.1.2.3", 1}, {"127.0.0.1", server.port}}, stop);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].label(), "demo (4242)");
}

}  // namespace
