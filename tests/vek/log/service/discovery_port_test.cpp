// A discovery port that another program has for itself alone. Nobody else gets it meanwhile, so
// this can't run beside other tests.
#include "tests/vek/log/service/log_service.h"

namespace {

using namespace vek;
using namespace vek::test;

using DiscoveryPort = LogServiceTest;

TEST_F(DiscoveryPort, DiscoveryPortInUseByOneThatDoesNotShareEndsTheThread) {
    // With it goes the process's own server, which has the port elsewhere.
    configurator->stop();
    net::UDPSocket occupant(false);
    net::IP4Address occupied = loopbackAddress(log::Server::discoveryPort);
    occupied.fromString(address);
    // Processes of other runs may have it for a while.
    const auto occupy = [&] {
        try {
            occupant.bind(occupied);
            return true;
        } catch (const NetError&) {
            return false;
        }
    };
    if (!eventually(occupy)) {
        GTEST_SKIP() << "other processes of this machine hold the port";
    }
    server->start();
    EXPECT_TRUE(errors.waitFor("Thread log-server ("));
    server->stop();
    const std::string report = errors.text();
    // Which of the two depends on the system.
    EXPECT_TRUE(report.ends_with("(10048)\n\n") || report.ends_with("(10013)\n\n")) << report;
}

}  // namespace
