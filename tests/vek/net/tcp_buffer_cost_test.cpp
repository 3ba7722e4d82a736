// What the framing costs a message beyond its socket calls. A program of its own, since it counts
// every allocation.
#include <cstdlib>
#include <new>

#include "tests/vek/net/loopback.h"
#include "tests/vek/net/watched_socket.h"
#include "vek/net/tcp_buffer.h"

namespace {

std::size_t allocations = 0;

void* allocate(std::size_t size) {
    ++allocations;
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}

void* operator new[](std::size_t size) {
    return allocate(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using namespace vek::net;
using namespace vek::test;

class TCPBufferCost : public WinsockTest {};

TEST_F(TCPBufferCost, AllocationsAreCounted) {
    const std::size_t before = allocations;
    delete new int;
    delete[] new char[100];
    EXPECT_EQ(allocations, before + 2);
}

TEST_F(TCPBufferCost, BuffersAreAllocatedOnce) {
    const std::size_t before = allocations;
    { const TCPBuffer buffer(16384, 1024); }
    EXPECT_EQ(allocations, before + 2);
}

TEST_F(TCPBufferCost, MessageNeedsNoAllocationInEitherDirection) {
    Connection<> connection;
    TCPBuffer buffer(16384, 1024, connection.server.get());
    std::string bytes;
    for (std::size_t size = 1; size <= 1020; size += 17) {
        bytes += frame(std::string(size, 'x'));
    }
    connection.client.writeAll(bytes);
    connection.client.shutdown(true, false);
    const std::size_t before = allocations;
    std::uint32_t length = 0;
    int messages = 0;
    while (buffer.nextMessage(length) != nullptr) {
        ++messages;
        buffer.hasMessage();
        buffer.commit(length);
    }
    EXPECT_EQ(allocations, before);
    EXPECT_EQ(messages, 60);
}

// The place of the payload is where the socket has stored it.
TEST_F(TCPBufferCost, PayloadIsGivenWhereItWasReceived) {
    Connection<WatchedSocket> connection;
    WatchedSocket& server = *connection.server;
    TCPBuffer buffer(16384, 1024, &server);
    for (const std::size_t size : {1u, 100u, 1020u}) {
        connection.client.writeAll(frame(std::string(size, 'x')));
        std::uint32_t length = 0;
        const char* const start = buffer.nextMessage(length) - TCPBuffer::prefixSize;
        EXPECT_EQ(length, size);
        // All reads of one frame go one behind the other from the start of the buffer.
        EXPECT_GE(server.lastReadTarget, start);
        EXPECT_EQ(server.lastReadTarget + server.lastReadSize, start + 1024);
    }
}

}  // namespace
