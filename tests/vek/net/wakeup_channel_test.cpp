#include "vek/net/wakeup_channel.h"

#include <thread>

#include "tests/vek/net/loopback.h"

namespace {

using namespace vek::net;
using namespace vek::test;

class WakeupChannelTest : public WinsockTest {
  protected:
    // Returns true if a select on the channel alone returns before `timeout`.
    static bool isReady(const WakeupChannel& channel, std::int64_t timeout, SocketSet& set) {
        set.clear();
        channel.addTo(set);
        return Socket::select(&set, nullptr, nullptr, timeout);
    }
};

constexpr std::int64_t soon = 20000;

TEST_F(WakeupChannelTest, IsBoundToTheLoopbackAddress) {
    const WakeupChannel channel;
    EXPECT_EQ(channel.readerAddress().toString(), "127.0.0.1");
    EXPECT_NE(channel.readerAddress().port(), 0);
    const WakeupChannel other;
    EXPECT_NE(other.readerAddress().port(), channel.readerAddress().port());
}

TEST_F(WakeupChannelTest, AddsOneSocket) {
    const WakeupChannel channel;
    SocketSet set;
    channel.addTo(set);
    channel.addTo(set);
    EXPECT_EQ(set.count, 1u);
}

TEST_F(WakeupChannelTest, EndsTheSelectOfAnotherThread) {
    WakeupChannel channel;
    std::thread notifier([&] {
        Sleep(30);
        channel.notify();
    });
    SocketSet set;
    channel.addTo(set);
    EXPECT_TRUE(Socket::select(&set, nullptr, nullptr));
    EXPECT_TRUE(channel.consume(set));
    notifier.join();
}

TEST_F(WakeupChannelTest, StaysReadyUntilEachNotificationIsConsumed) {
    WakeupChannel channel;
    SocketSet set;
    EXPECT_FALSE(isReady(channel, 0, set));
    channel.notify();
    channel.notify();
    EXPECT_TRUE(isReady(channel, soon, set));
    EXPECT_TRUE(channel.consume(set));
    EXPECT_TRUE(isReady(channel, soon, set));
    EXPECT_TRUE(channel.consume(set));
    EXPECT_FALSE(isReady(channel, 0, set));
    EXPECT_FALSE(channel.consume(set));
}

TEST_F(WakeupChannelTest, ConsumesNothingIfItIsNotAmongTheReadySockets) {
    WakeupChannel channel;
    channel.notify();
    SocketSet none;
    EXPECT_FALSE(channel.consume(none));
    SocketSet set;
    EXPECT_TRUE(isReady(channel, soon, set));
}

TEST_F(WakeupChannelTest, DrainTakesOneNotification) {
    WakeupChannel channel;
    channel.notify();
    channel.notify();
    channel.drain();
    SocketSet set;
    EXPECT_TRUE(isReady(channel, soon, set));
    channel.drain();
    EXPECT_FALSE(isReady(channel, 0, set));
}

TEST_F(WakeupChannelTest, NotificationIsTheByteW) {
    UDPSocket reader(false);
    WakeupChannel channel;
    SocketSet set;
    channel.addTo(set);
    channel.notify();
    char bytes[4] = {};
    EXPECT_EQ(recv(set.handles[0], bytes, sizeof bytes, 0), 1);
    EXPECT_EQ(bytes[0], 0x57);
}

TEST_F(WakeupChannelTest, ForeignDatagramIsANotificationOfAnySize) {
    WakeupChannel channel;
    UDPSocket stranger(false);
    SocketSet set;
    for (const std::uint32_t size : {0u, 1u, 2u, 1000u}) {
        stranger.sendTo(std::string(size, 'x').data(), size, channel.readerAddress());
        EXPECT_TRUE(isReady(channel, soon, set)) << size;
        EXPECT_TRUE(channel.consume(set)) << size;
        EXPECT_FALSE(isReady(channel, 0, set)) << size;
    }
}

TEST_F(WakeupChannelTest, UnboundOneHasNoAddressAndCannotNotify) {
    WakeupChannel channel((WakeupChannel::Unbound()));
    EXPECT_EQ(channel.readerAddress().toString(), "0.0.0.0");
    EXPECT_EQ(channel.readerAddress().port(), 0);
    SocketSet set;
    channel.addTo(set);
    ASSERT_EQ(set.count, 1u);
    sockaddr_in bound = {};
    int length = sizeof bound;
    EXPECT_EQ(getsockname(set.handles[0], reinterpret_cast<sockaddr*>(&bound), &length), -1);
    EXPECT_EQ(WSAGetLastError(), WSAEINVAL);
    EXPECT_THROW(channel.notify(), vek::NetError);
}

}  // namespace
