#include "tools/log_application/forward/collector_socket.h"

#include "tests/tools/log_application/support/scripted_collector.h"

namespace {

using log_application::CollectorSocket;
using log_application_test::freePort;
using log_application_test::readAll;
using log_application_test::ScriptedCollector;
using Connection = ScriptedCollector::Connection;

constexpr std::int64_t limitMs = 20'000;

class CollectorSocketTest : public vek::test::WinsockTest {
  protected:
    static CollectorSocket connectTo(std::uint16_t port) {
        const auto isOver = [] { return false; };
        const auto addresses = log_application::resolve({"127.0.0.1", port, true}, limitMs, isOver);
        return CollectorSocket(addresses.at(0), limitMs, isOver);
    }
};

TEST_F(CollectorSocketTest, FindsTheCollectorsEndBehindItsOwn) {
    ScriptedCollector collector(readAll);
    CollectorSocket socket = connectTo(collector.port);
    EXPECT_EQ(socket.writeSome("9 <11>1 - -"), 11u);
    EXPECT_FALSE(socket.waitFor(false, 200).toRead);
    socket.endWriting();
    EXPECT_TRUE(socket.waitFor(false, limitMs).toRead);
    EXPECT_FALSE(socket.discard());
}

TEST_F(CollectorSocketTest, IsReadyToWriteAndNotToReadAtFirst) {
    ScriptedCollector collector(readAll);
    CollectorSocket socket = connectTo(collector.port);
    const CollectorSocket::Ready ready = socket.waitFor(true, limitMs);
    EXPECT_TRUE(ready.toWrite);
    EXPECT_FALSE(ready.toRead);
}

TEST_F(CollectorSocketTest, SaysThatThereIsSomethingToReadAlsoWhileItWaitsForRoom) {
    ScriptedCollector collector([](Connection& connection, int) {
        connection.send("hello");
        connection.holdOn();
    });
    CollectorSocket socket = connectTo(collector.port);
    EXPECT_TRUE(socket.waitFor(false, limitMs).toRead);
    const CollectorSocket::Ready ready = socket.waitFor(true, limitMs);
    EXPECT_TRUE(ready.toWrite);
    EXPECT_TRUE(ready.toRead);
    EXPECT_TRUE(socket.discard());
    EXPECT_FALSE(socket.waitFor(true, limitMs).toRead);
}

TEST_F(CollectorSocketTest, WaitsUpToItsLimitWhileTheCollectorReadsAndSendsNothing) {
    ScriptedCollector collector([](Connection& connection, int) { connection.holdOn(); });
    CollectorSocket socket = connectTo(collector.port);
    const std::string much(1'000'000, 'x');
    bool hasRoom = true;
    while (hasRoom) {
        socket.writeSome(much);
        hasRoom = socket.waitFor(true, 500).toWrite;
    }
    const DWORD start = GetTickCount();
    const CollectorSocket::Ready ready = socket.waitFor(true, 300);
    EXPECT_FALSE(ready.toWrite || ready.toRead);
    EXPECT_GE(GetTickCount() - start, 280u);
}

TEST_F(CollectorSocketTest, AConnectionThatIsResetIsAtItsEndOrThrows) {
    ScriptedCollector collector([](Connection& connection, int) {
        connection.readSome();
        connection.resetAtTheEnd();
    });
    CollectorSocket socket = connectTo(collector.port);
    socket.writeSome("some bytes");
    try {
        EXPECT_TRUE(socket.waitFor(false, limitMs).toRead);
        EXPECT_FALSE(socket.discard());
    } catch (const vek::NetError& error) {
        EXPECT_EQ(error.code(), static_cast<std::uint32_t>(WSAECONNRESET));
    }
}

TEST_F(CollectorSocketTest, AConnectionThatIsRefusedThrows) {
    try {
        connectTo(freePort());
        FAIL();
    } catch (const vek::NetError& error) {
        EXPECT_EQ(error.code(), static_cast<std::uint32_t>(WSAECONNREFUSED));
    }
}

}  // namespace
