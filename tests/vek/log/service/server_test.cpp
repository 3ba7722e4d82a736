// The server's life: its addresses, its start, its end, and the wait for a client.
#include "tests/vek/log/service/log_service.h"
#include "vek/thread/thread.h"

namespace {

using namespace vek;
using namespace vek::test;

using ServerLife = LogServiceTest;

const std::string badListenAddress =
    ": Failed to set custom listen_addr. Falling back to using localhost.\n\n";

bool canConnect(const std::string& address, std::uint16_t port) {
    net::IP4Address target = loopbackAddress(port);
    target.fromString(address);
    try {
        ClientSocket().connect(target);
        return true;
    } catch (const NoPeer&) {
        return false;
    }
}

TEST_F(ServerLife, ListensOnTheLoopbackAddressOnly) {
    start();
    EXPECT_TRUE(canConnect("127.0.0.1", port));
    // Others of this host's own would be served by the wildcard address.
    EXPECT_FALSE(canConnect("127.0.0.2", port));
}

TEST_F(ServerLife, ListenAddressIsWhereItListens) {
    server->setListenAddress("127.0.0.2");
    start();
    EXPECT_TRUE(canConnect("127.0.0.2", port));
    EXPECT_FALSE(canConnect("127.0.0.1", port));
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServerLife, WildcardListenAddressOpensItToAll) {
    server->setListenAddress("0.0.0.0");
    start();
    EXPECT_TRUE(canConnect("127.0.0.1", port));
    EXPECT_TRUE(canConnect("127.0.0.3", port));
}

TEST_F(ServerLife, ListenAddressThatIsNoneIsReportedAndTheLoopbackAddressUsed) {
    server->setListenAddress("not-an-address");
    start();
    EXPECT_TRUE(canConnect("127.0.0.1", port));
    EXPECT_FALSE(canConnect("127.0.0.2", port));
    const std::string report = errors.text();
    const std::size_t at = report.find(badListenAddress);
    ASSERT_NE(at, std::string::npos) << report;
    EXPECT_NE(report.substr(0, at).find("trySetCustomIP"), std::string::npos) << report;
    EXPECT_TRUE(report.ends_with("(22)\n\n")) << report;
}

TEST_F(ServerLife, DiscoveryAddressThatIsNoneIsReportedAndTheLoopbackAddressUsed) {
    server->setDiscoveryAddress("not-an-address");
    server->start();
    DiscoveryClient client("127.0.0.1");
    const std::string own = "pid=" + std::to_string(GetCurrentProcessId());
    EXPECT_NE(client.askUntilAnswered("discover-request:name=demo\x1F" + own), "");
    EXPECT_TRUE(errors.waitFor(
        ": Failed to set custom discovery_addr. Falling back to using localhost.\n\n"));
}

TEST_F(ServerLife, ListenAddressWithAPortIsNone) {
    server->setListenAddress("127.0.0.1:80");
    start();
    EXPECT_NE(errors.text().find(badListenAddress), std::string::npos);
}

TEST_F(ServerLife, EmptyAddressesGiveNoReport) {
    server->setListenAddress("");
    start();
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServerLife, ListenAddressThatCanNotBeBoundEndsTheThread) {
    server->setListenAddress("192.0.2.1");
    server->start();
    EXPECT_TRUE(errors.waitFor("Thread log-server ("));
    EXPECT_TRUE(errors.waitFor("died with VEK exception:"));
    EXPECT_TRUE(errors.waitFor("(10049)\n\n"));
    server->stop();
}

TEST_F(ServerLife, DiscoveryPortIsSharedBySeveralServers) {
    start();
    log::Server other(configurator.get());
    other.setDiscoveryAddress(address);
    other.start();
    // One of the two gets it.
    EXPECT_NE(discovery->askUntilAnswered("discover-request:id=1"), "");
    other.stop();
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServerLife, SettingsAreReadOnceAtTheStart) {
    start();
    server->setListenAddress("bad");
    server->setDiscoveryAddress("bad");
    server->start();
    EXPECT_EQ(discovery->ask("discover-request:id=1").substr(0, 10), "hello:id=1");
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServerLife, SecondStartDoesNothing) {
    start();
    const std::uint32_t threads = thread::Thread::liveCount();
    EXPECT_NO_THROW(server->start());
    EXPECT_EQ(thread::Thread::liveCount(), threads);
    server->stop();
    EXPECT_NO_THROW(server->start());
    EXPECT_EQ(thread::Thread::liveCount(), threads - 1);
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServerLife, StopEndsTheThreadAndClosesThePorts) {
    start();
    const std::uint32_t threads = thread::Thread::liveCount();
    server->stop();
    EXPECT_EQ(thread::Thread::liveCount(), threads - 1);
    EXPECT_FALSE(canConnect("127.0.0.1", port));
    const DWORD shortMs = 100;
    discovery->socket.setOption(SOL_SOCKET, SO_RCVTIMEO, &shortMs, sizeof shortMs);
    // Servers of other processes may be there.
    const std::string own = "pid=" + std::to_string(GetCurrentProcessId());
    for (int i = 0; i < 3; ++i) {
        EXPECT_THROW(discovery->ask("discover-request:name=demo\x1F" + own), NetError);
    }
    EXPECT_NO_THROW(server->stop());
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServerLife, StopOfAServerThatWasNeverStartedDoesNothing) {
    EXPECT_NO_THROW(server->stop());
    start();
    EXPECT_EQ(discovery->ask("discover-request:id=1").substr(0, 10), "hello:id=1");
}

TEST_F(ServerLife, StopDuringTheStartEndsTheThread) {
    for (int i = 0; i < 20; ++i) {
        log::Server other(configurator.get());
        other.setDiscoveryAddress(address);
        other.start();
        if (i % 2 == 1) {
            Sleep(static_cast<DWORD>(i / 4));
        }
        other.stop();
    }
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServerLife, ClientsStayConnectedThroughStopAndAreClosedByTheDestructor) {
    start();
    ServiceClient first(port);
    ServiceClient second(port);
    EXPECT_EQ(first.ask("get-default-scope:"), "default-scope:scope=WARN");
    EXPECT_EQ(second.ask("get-default-scope:"), "default-scope:scope=WARN");
    server->stop();
    // Taken, and not answered.
    const DWORD shortMs = 200;
    first.socket.setOption(SOL_SOCKET, SO_RCVTIMEO, &shortMs, sizeof shortMs);
    first.send("get-default-scope:");
    EXPECT_EQ(codeThrownBy<NetError>([&] { first.receive(); }),
              static_cast<std::uint32_t>(WSAETIMEDOUT));
    limitReceiving(first.socket);
    server = std::make_unique<log::Server>(configurator.get());
    EXPECT_TRUE(first.isClosedByServer());
    EXPECT_TRUE(second.isClosedByServer());
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServerLife, LevelsAreNotSavedOnceTheLogHasShutDown) {
    start();
    ServiceClient client(port);
    manager.shutdown();
    EXPECT_EQ(client.ask("persist-config:"), "persist-config:error=The log has been shut down.");
    EXPECT_EQ(client.ask("get-default-scope:"), "default-scope:scope=WARN");
}

TEST_F(ServerLife, ClientForMessagesIsClosedOnceTheLogHasShutDown) {
    start();
    manager.shutdown();
    ServiceClient client(port);
    client.send("get-messages:");
    EXPECT_TRUE(client.isClosedByServer());
    EXPECT_EQ(sinkCount(), 0u);
    // Others are served.
    EXPECT_EQ(ServiceClient(port).ask("get-default-scope:"), "default-scope:scope=WARN");
}

TEST_F(ServerLife, ServerThatWasNeverStartedHasNoClientToWaitFor) {
    EXPECT_EQ(textThrownBy<RuntimeError>([this] { server->waitForClient(); }),
              "Server was not initialized");
}

TEST_F(ServerLife, WaitForClientReturnsOnceMessagesAreAskedFor) {
    start();
    std::atomic<bool> returned = false;
    vek_test::ScopedThread waiter([&] {
        server->waitForClient();
        returned = true;
    });
    ServiceClient client(port);
    EXPECT_EQ(client.ask("get-default-scope:"), "default-scope:scope=WARN");
    EXPECT_EQ(client.ask("agent-list:").substr(0, 11), "agent-list:");
    Sleep(100);
    EXPECT_FALSE(returned);
    client.send("get-messages:");
    waiter.join();
    EXPECT_TRUE(returned);
    // The sink stood before the wait ended.
    EXPECT_EQ(sinkCount(), 1u);
}

TEST_F(ServerLife, WaitForClientReturnsAtOnceIfOneCameEarlier) {
    start();
    auto client = streamingClient();
    server->waitForClient();
    client.reset();
    // Also once it has gone, and once the server has.
    server->waitForClient();
    server->stop();
    server->waitForClient();
}

TEST(TrySetCustomIP, ChangesTheAddressAndNotThePort) {
    net::IP4Address changed = loopbackAddress(123);
    const SharedErrors errors;
    EXPECT_TRUE(log::Server::trySetCustomIP(changed, "10.1.2.3", "no"));
    EXPECT_EQ(changed.toString(), "10.1.2.3");
    EXPECT_EQ(changed.port(), 123);
    EXPECT_FALSE(log::Server::trySetCustomIP(changed, "", "no"));
    EXPECT_EQ(changed.toString(), "10.1.2.3");
    EXPECT_EQ(errors.text(), "");
    EXPECT_FALSE(log::Server::trySetCustomIP(changed, "10.1.2", "Too short."));
    EXPECT_EQ(changed.toString(), "10.1.2.3");
    EXPECT_NE(errors.text().find(": Too short.\n\n"), std::string::npos);
}

}  // namespace
