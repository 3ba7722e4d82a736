#include "tools/log_application/connection/client_socket.h"

#include <gtest/gtest.h>

#include "tests/tools/log_application/support/ioctl_spy.h"
#include "tests/vek/net/loopback.h"
// Needs windows.h.
#include <mstcpip.h>

namespace {

using log_application::ClientSocket;
using log_application::StopSignal;
using log_application_test::IoctlSpy;

class ClientSocketTest : public vek::test::WinsockTest {
  protected:
    ClientSocketTest() {
        port = vek::test::bindToLoopback(listener).port();
        listener.listen(8);
    }

    vek::net::TCPListener listener{false};
    std::uint16_t port = 0;
};

TEST_F(ClientSocketTest, AReadEndsAtItsLimitAndNotAtTheNextSecond) {
    ClientSocket socket(nullptr);
    socket.connectTo({"127.0.0.1", port});
    socket.limitReading(200);
    const DWORD start = GetTickCount();
    char byte = 0;
    try {
        socket.read(&byte, 1);
        FAIL();
    } catch (const vek::NetError& error) {
        EXPECT_EQ(error.code(), static_cast<std::uint32_t>(WSAETIMEDOUT));
    }
    EXPECT_GE(GetTickCount() - start, 180u);
    EXPECT_LT(GetTickCount() - start, 900u);
}

TEST_F(ClientSocketTest, TheStopEndsALimitedRead) {
    StopSignal stop;
    ClientSocket socket(&stop);
    socket.connectTo({"127.0.0.1", port});
    socket.limitReading(20'000);
    stop.request();
    char byte = 0;
    EXPECT_EQ(socket.read(&byte, 1), 0u);
}

// Windows alone repeats a refused connect, so only the request for it can be seen here. Wine fails
// it, which must not matter.
TEST_F(ClientSocketTest, AConnectToThisHostIsNotRepeated) {
    const IoctlSpy spy;
    ClientSocket socket(nullptr);
    socket.connectTo({"127.0.0.1", port});
    const auto calls = spy.callsOf(SIO_TCP_INITIAL_RTO);
    ASSERT_EQ(calls.size(), 1u);
    ASSERT_EQ(calls[0].input.size(), sizeof(TCP_INITIAL_RTO_PARAMETERS));
    EXPECT_EQ(calls[0].input.substr(0, 3), "\xFF\xFF\xFE");
}

TEST_F(ClientSocketTest, AConnectToAnotherHostIsLeftToTheSystem) {
    const IoctlSpy spy;
    ClientSocket socket(nullptr);
    // No host, so that nothing is sent.
    EXPECT_THROW(socket.connectTo({"255.255.255.255", port}), vek::NetError);
    EXPECT_TRUE(spy.callsOf(SIO_TCP_INITIAL_RTO).empty());
}

TEST_F(ClientSocketTest, ARefusedConnectIsNoPeer) {
    listener.close();
    ClientSocket socket(nullptr);
    EXPECT_THROW(socket.connectTo({"127.0.0.1", port}), vek::NoPeer);
}

}  // namespace
