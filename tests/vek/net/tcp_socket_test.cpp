#include "vek/net/tcp_socket.h"

#include "tests/support/open_handles.h"
#include "tests/vek/net/host_timers.h"
#include "tests/vek/net/loopback.h"

namespace {

using namespace vek::net;
using namespace vek::test;

class TCPSocketTest : public WinsockTest {};

int optionOf(const Socket& socket, int level, int name) {
    int value = 0;
    std::int32_t length = sizeof value;
    socket.getOption(level, name, &value, length);
    return value;
}

TEST_F(TCPSocketTest, TakesTheHandleOfAnAcceptedConnection) {
    TCPListener listener(false);
    const IP4Address address = bindToLoopback(listener);
    listener.listen(1);
    ClientSocket client;
    client.connect(address);
    SocketHandle accepted = listener.accept();
    EXPECT_FALSE(accepted.isReleased());
    TCPSocket socket(std::move(accepted));
    EXPECT_TRUE(accepted.isReleased());
    EXPECT_TRUE(socket.isOpen());
    EXPECT_EQ(accepted.take(), INVALID_SOCKET);
    const TCPSocket none(std::move(accepted));
    EXPECT_FALSE(none.isOpen());
    socket.write("x", 1);
    EXPECT_EQ(client.readExactly(1), "x");
}

TEST_F(TCPSocketTest, ConnectionThatNobodyTakesIsClosed) {
    TCPListener listener(false);
    const IP4Address address = bindToLoopback(listener);
    listener.listen(1);
    ClientSocket client;
    client.connect(address);
    const std::size_t before = support::openHandles().size();
    { const SocketHandle accepted = listener.accept(); }
    EXPECT_EQ(client.readExactly(1), "");
    EXPECT_EQ(support::openHandles().size(), before);
}

TEST_F(TCPSocketTest, HandleThatIsNoneIsNotClosed) {
    SocketHandle none(INVALID_SOCKET);
    EXPECT_FALSE(none.isReleased());
    EXPECT_EQ(none.take(), INVALID_SOCKET);
    EXPECT_TRUE(none.isReleased());
}

TEST_F(TCPSocketTest, ListenWithoutAnAddressThrows) {
    TCPListener listener(false);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { listener.listen(8); }), 10022u);
}

TEST_F(TCPSocketTest, AcceptWithoutListenThrows) {
    TCPListener listener(false);
    bindToLoopback(listener);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { listener.accept(); }), 10022u);
}

TEST_F(TCPSocketTest, SetsNoDelay) {
    const Connection<> connection;
    const BOOL off = FALSE;
    connection.server->setOption(IPPROTO_TCP, TCP_NODELAY, &off, sizeof off);
    EXPECT_EQ(optionOf(*connection.server, 6, 1), 0);
    connection.server->setNoDelay();
    EXPECT_EQ(optionOf(*connection.server, 6, 1), 1);
    connection.server->close();
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { connection.server->setNoDelay(); }), 10038u);
}

TEST(KeepAliveTimes, GoToTheSystemInMilliseconds) {
    EXPECT_EQ(keepAliveInput({}), (std::array<std::uint32_t, 3>{1, 0, 0}));
    EXPECT_EQ(keepAliveInput({5, 1, 5}), (std::array<std::uint32_t, 3>{1, 5000, 1000}));
    EXPECT_EQ(keepAliveInput({7200, 75, 0}), (std::array<std::uint32_t, 3>{1, 7200000, 75000}));
}

TEST(KeepAliveTimes, BeyondTheSystemsRoomAreCut) {
    EXPECT_EQ(keepAliveInput({4294967, 4294968, 0}),
              (std::array<std::uint32_t, 3>{1, 4294967000, 4294967295}));
    EXPECT_EQ(keepAliveInput({INT64_MAX, INT64_MIN, 0}),
              (std::array<std::uint32_t, 3>{1, 4294967295, 0}));
    EXPECT_EQ(keepAliveInput({-1, 10000000000000000, 0}),
              (std::array<std::uint32_t, 3>{1, 0, 4294967295}));
}

TEST_F(TCPSocketTest, KeepAliveTimesTurnTheAskingOn) {
    const Connection<> connection;
    EXPECT_EQ(optionOf(*connection.server, SOL_SOCKET, SO_KEEPALIVE), 0);
    connection.server->setKeepAliveTimes({5, 1, 5});
    EXPECT_EQ(optionOf(*connection.server, SOL_SOCKET, SO_KEEPALIVE), 1);
    connection.server->close();
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] {
                  connection.server->setKeepAliveTimes({5, 1, 5});
              }),
              10038u);
}

TEST_F(TCPSocketTest, SilentPeerIsAskedAfterTheIdleTime) {
    if (!hostTellsTimers()) {
        GTEST_SKIP() << "the host system doesn't tell";
    }
    const Connection<> connection;
    connection.server->setKeepAlive(true);
    connection.server->setKeepAliveTimes({5, 1, 5});
    IP4Address own;
    IP4Address peer;
    connection.server->localAddress(own);
    connection.server->peerAddress(peer);
    const long hundredths = keepAliveTimer(own.port(), peer.port());
    EXPECT_GT(hundredths, 100);
    EXPECT_LE(hundredths, 510);
}

}  // namespace
