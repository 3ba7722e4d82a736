// Socket::select.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory>
#include <thread>
#include <vector>

#include "tests/vek/net/loopback.h"

namespace {

using namespace vek::net;
using namespace vek::test;

class Select : public WinsockTest {
  protected:
    SocketSet setOf(const Socket& socket) {
        SocketSet set;
        set.add(socket.nativeHandle());
        return set;
    }
};

double secondsOf(const auto& work) {
    LARGE_INTEGER frequency;
    LARGE_INTEGER start;
    LARGE_INTEGER end;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    work();
    QueryPerformanceCounter(&end);
    return static_cast<double>(end.QuadPart - start.QuadPart) /
           static_cast<double>(frequency.QuadPart);
}

TEST_F(Select, LeavesTheReadySocketsInTheSets) {
    const Connection<> ready;
    Connection<> silent;
    ready.server->write("x", 1);
    SocketSet reading = setOf(ready.client);
    reading.add(silent.client.nativeHandle());
    SocketSet writing = setOf(silent.client);
    SocketSet errors = setOf(silent.client);
    EXPECT_TRUE(Socket::select(&reading, &writing, &errors));
    EXPECT_TRUE(reading.isSet(ready.client.nativeHandle()));
    EXPECT_FALSE(reading.isSet(silent.client.nativeHandle()));
    EXPECT_EQ(reading.count, 1u);
    EXPECT_TRUE(writing.isSet(silent.client.nativeHandle()));
    EXPECT_EQ(errors.count, 0u);
}

TEST_F(Select, WaitsUntilASocketIsReady) {
    Connection<> connection;
    std::atomic<bool> sent = false;
    std::thread sender([&] {
        // Long enough that the other thread is most likely waiting.
        Sleep(50);
        sent = true;
        connection.client.write("x", 1);
    });
    SocketSet reading = setOf(*connection.server);
    EXPECT_TRUE(Socket::select(&reading, nullptr, nullptr));
    EXPECT_TRUE(sent);
    sender.join();
}

TEST_F(Select, ReportsAConnectionThatWaitsForItsAcceptance) {
    TCPListener listener(false);
    const IP4Address address = bindToLoopback(listener);
    listener.listen(1);
    SocketSet reading = setOf(listener);
    EXPECT_FALSE(Socket::select(&reading, nullptr, nullptr, 0));
    ClientSocket client;
    client.connect(address);
    reading = setOf(listener);
    EXPECT_TRUE(Socket::select(&reading, nullptr, nullptr));
}

TEST_F(Select, RefusedConnectionIsAnError) {
    TCPListener unused(false);
    const IP4Address address = bindToLoopback(unused);
    ClientSocket client;
    u_long on = 1;
    ioctlsocket(client.nativeHandle(), static_cast<long>(FIONBIO), &on);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { client.connect(address); }), 10035u);
    SocketSet errors = setOf(client);
    EXPECT_TRUE(Socket::select(nullptr, nullptr, &errors));
    EXPECT_TRUE(errors.isSet(client.nativeHandle()));
}

TEST_F(Select, GivesFalseAfterItsTime) {
    UDPSocket udp(false);
    bindToLoopback(udp);
    SocketSet reading = setOf(udp);
    bool result = true;
    const double seconds =
        secondsOf([&] { result = Socket::select(&reading, nullptr, nullptr, 1000); });
    EXPECT_FALSE(result);
    EXPECT_EQ(reading.count, 0u);
    EXPECT_GT(seconds, 0.9);
    EXPECT_LT(seconds, 10);
}

TEST_F(Select, TakesWhatIsLeftOfAThousandForMicroseconds) {
    UDPSocket udp(false);
    bindToLoopback(udp);
    double quickest = 10;
    for (int i = 0; i < 3; ++i) {
        SocketSet reading = setOf(udp);
        quickest = std::min(quickest, secondsOf([&] {
                                EXPECT_FALSE(Socket::select(&reading, nullptr, nullptr, 999));
                            }));
    }
    EXPECT_LT(quickest, 0.3);
}

TEST_F(Select, TakesTimesThatTheSystemHasNoRoomFor) {
    Connection<> connection;
    for (const std::int64_t timeout : {INT64_MAX, 4294967296000ll, INT64_MIN, -1ll}) {
        std::thread sender([&] { connection.client.write("x", 1); });
        SocketSet reading = setOf(*connection.server);
        const bool ready = Socket::select(&reading, nullptr, nullptr, timeout);
        EXPECT_TRUE(ready || timeout < 0) << timeout;
        sender.join();
        char byte = 0;
        connection.server->read(&byte, 1);
    }
}

TEST_F(Select, WithoutSocketsThrowsThePlainSystemError) {
    EXPECT_EQ(codeThrownBy<vek::OsError>([] { Socket::select(nullptr, nullptr, nullptr); }),
              10022u);
    SocketSet empty;
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { Socket::select(&empty, &empty, &empty); }), 10022u);
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { Socket::select(&empty, nullptr, nullptr, 5); }),
              10022u);
}

TEST_F(Select, OnAClosedSocketThrows) {
    UDPSocket udp(false);
    SocketSet set = setOf(udp);
    udp.close();
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { Socket::select(&set, nullptr, nullptr); }), 10038u);
}

TEST_F(Select, HoldsSixtyFourSockets) {
    std::vector<std::unique_ptr<UDPSocket>> sockets;
    SocketSet set;
    for (int i = 0; i < 64; ++i) {
        sockets.push_back(std::make_unique<UDPSocket>(false));
        const IP4Address address = bindToLoopback(*sockets.back());
        sockets.back()->sendTo("x", 1, address);
        set.add(sockets.back()->nativeHandle());
    }
    EXPECT_EQ(set.count, 64u);
    char byte = 0;
    for (const auto& socket : sockets) {
        // Until the last datagram has arrived.
        EXPECT_EQ(socket->read(&byte, 1), 1u);
    }
    EXPECT_FALSE(Socket::select(&set, nullptr, nullptr, 0));
}

// select fails until the set has a socket, while errno says that the call was interrupted.
TEST_F(Select, TriesAgainWhileTheLibrarySaysThatItWasInterrupted) {
    Connection<> connection;
    connection.client.write("x", 1);
    SocketSet set;
    std::atomic<bool> failed = false;
    std::atomic<bool> ready = false;
    std::thread waiter([&] {
        errno = WSAEINTR;
        try {
            ready = Socket::select(&set, nullptr, nullptr);
        } catch (const vek::OsError&) {
            failed = true;
        }
        errno = 0;
    });
    Sleep(100);
    EXPECT_FALSE(failed);
    set.handles[0] = connection.server->nativeHandle();
    std::atomic_ref<std::uint32_t>(set.count).store(1);
    waiter.join();
    EXPECT_TRUE(ready);
}

}  // namespace
