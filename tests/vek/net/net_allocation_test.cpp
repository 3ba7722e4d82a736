// Heap allocations of sockets and framing. A program of its own, because it counts every
// allocation.
#include "tests/support/counted_memory.h"
#include "tests/vek/net/loopback.h"
#include "tests/vek/net/watched_socket.h"
#include "vek/net/tcp_buffer.h"
#include "vek/net/wakeup_channel.h"

namespace {

using namespace vek::net;
using namespace vek::test;
using support::allocations;

class NetAllocations : public WinsockTest {};

TEST_F(NetAllocations, AreCounted) {
    const int before = allocations();
    // Volatile, so that the compiler can't optimise them away.
    int* volatile one = new int;
    char* volatile many = new char[100];
    delete one;
    delete[] many;
    EXPECT_EQ(allocations(), before + 2);
}

TEST_F(NetAllocations, SocketCallsNeedNoAllocation) {
    Connection<> connection;
    UDPSocket datagrams(false);
    WakeupChannel wakeup;
    const IP4Address address = bindToLoopback(datagrams);
    IP4Address sender;
    char bytes[8] = {};
    const int before = allocations();
    connection.client.write("x", 1);
    datagrams.sendTo("y", 1, address);
    wakeup.notify();
    SocketSet set;
    set.add(connection.server->nativeHandle());
    Socket::select(&set, nullptr, nullptr);
    EXPECT_EQ(connection.server->read(bytes, sizeof bytes), 1u);
    EXPECT_EQ(datagrams.receiveFrom(bytes, sizeof bytes, sender), 1u);
    set.clear();
    wakeup.addTo(set);
    Socket::select(&set, nullptr, nullptr, 20000);
    EXPECT_TRUE(wakeup.consume(set));
    connection.server->setNoDelay();
    connection.server->setKeepAliveTimes({5, 1, 5});
    connection.server->peerAddress(sender);
    connection.server->shutdown(true, true);
    EXPECT_EQ(allocations(), before);
}

TEST_F(NetAllocations, BuffersAreAllocatedOnce) {
    const int before = allocations();
    { const TCPBuffer buffer(16384, 1024); }
    EXPECT_EQ(allocations(), before + 2);
}

TEST_F(NetAllocations, MessageNeedsNoAllocationInEitherDirection) {
    Connection<> connection;
    TCPBuffer buffer(16384, 1024, connection.server.get());
    std::string bytes;
    for (std::size_t size = 1; size <= 1020; size += 17) {
        bytes += frame(std::string(size, 'x'));
    }
    connection.client.writeAll(bytes);
    connection.client.shutdown(true, false);
    const int before = allocations();
    std::uint32_t length = 0;
    int messages = 0;
    while (buffer.nextMessage(length) != nullptr) {
        ++messages;
        buffer.hasMessage();
        buffer.commit(length);
    }
    EXPECT_EQ(allocations(), before);
    EXPECT_EQ(messages, 60);
}

// The payload isn't copied: it points to where the socket stored it.
TEST_F(NetAllocations, PayloadIsGivenWhereItWasReceived) {
    Connection<WatchedSocket> connection;
    WatchedSocket& server = *connection.server;
    TCPBuffer buffer(16384, 1024, &server);
    for (const std::size_t size : {1u, 100u, 1020u}) {
        connection.client.writeAll(frame(std::string(size, 'x')));
        std::uint32_t length = 0;
        const char* const start = buffer.nextMessage(length) - TCPBuffer::prefixSize;
        EXPECT_EQ(length, size);
        // All reads of one frame are contiguous from the start of the buffer.
        EXPECT_GE(server.lastReadTarget, start);
        EXPECT_EQ(server.lastReadTarget + server.lastReadSize, start + 1024);
    }
}

}  // namespace
