// The server's sockets as the system sees them: how they are set, and what it does to them.
#include <atomic>

#include "tests/support/replaced_import.h"
#include "tests/vek/log/service/log_service.h"
#include "tests/vek/net/host_timers.h"

namespace {

using namespace vek;
using namespace vek::test;

const std::string request = "get-default-scope:";
const std::string reply = "default-scope:scope=WARN";

// The socket of this process that `fits`; INVALID_SOCKET if there is none.
template <class Fits>
SOCKET findSocket(Fits fits) {
    constexpr SOCKET handleLimit = 0x10000;
    for (SOCKET handle = 4; handle < handleLimit; handle += 4) {
        if (fits(handle)) {
            return handle;
        }
    }
    return INVALID_SOCKET;
}

// 0 if `handle` has no such option, as it doesn't if it is no socket.
DWORD optionOf(SOCKET handle, int level, int name) {
    DWORD value = 0;
    int size = sizeof value;
    return getsockopt(handle, level, name, reinterpret_cast<char*>(&value), &size) == 0 ? value : 0;
}

using AddressQuery = int(WSAAPI*)(SOCKET, sockaddr*, int*);

// 0 if `handle` has no such address.
std::uint16_t portOf(SOCKET handle, AddressQuery query) {
    sockaddr_in address = {};
    int length = sizeof address;
    return query(handle, reinterpret_cast<sockaddr*>(&address), &length) == 0
               ? ntohs(address.sin_port)
               : std::uint16_t{0};
}

SOCKET listenerAt(std::uint16_t port) {
    return findSocket([port](SOCKET handle) {
        return optionOf(handle, SOL_SOCKET, SO_ACCEPTCONN) != 0 &&
               portOf(handle, getsockname) == port;
    });
}

// Closes the socket `taken` and gives its handle, which the system uses again soon, to one of those
// that `make` makes; the others are closed by `drop`. False if it didn't come to that.
bool replace(SOCKET taken, SOCKET (*make)(), void (*drop)(SOCKET)) {
    std::vector<SOCKET> others;
    closesocket(taken);
    SOCKET made = make();
    while (made != taken && others.size() < 1000) {
        others.push_back(made);
        made = make();
    }
    for (const SOCKET other : others) {
        drop(other);
    }
    return made == taken;
}

// Holds the server up in the midst of a reply about sinks.
class HoldingSink : public log::Sink {
  public:
    explicit HoldingSink(const vek_test::Door& toPass) : Sink(config), door(toPass) {}
    int type() const override { return log::sinkStdout; }
    using Sink::store;
    void store(const log::Message& /*message*/) override {}
    std::string id() const override {
        door.pass();
        return "holding";
    }

  private:
    const log::SinkConfig config;
    const vek_test::Door& door;
};

class HeldServer : public LogServiceTest {
  protected:
    void SetUp() override { start(); }

    // Holds the server up between two waits.
    void hold(ServiceClient& client) {
        manager.addSink(new HoldingSink(door));
        client.send("evidence-info:");
        ASSERT_TRUE(door.isReached());
    }

    // Holds it up, and has what `make` makes take its listener's handle.
    void takeListener(ServiceClient& client, SOCKET (*make)(), void (*drop)(SOCKET)) {
        hold(client);
        listener = listenerAt(port);
        ASSERT_NE(listener, INVALID_SOCKET);
        EXPECT_TRUE(replace(listener, make, drop));
    }

    // Lets the server go on.
    void release(ServiceClient& client) {
        door.open();
        EXPECT_NE(client.receive().find("id=holding"), std::string::npos);
        EXPECT_EQ(client.receive(), "evidence-info:end-of-reply");
    }

    vek_test::Door door;
    SOCKET listener = INVALID_SOCKET;
};

// Calls of the server, which go on to the system.
std::atomic<int> askedBacklog = 0;
std::atomic<bool> ignoresLostReceivers = false;
decltype(&listen) systemListen = nullptr;
decltype(&WSAIoctl) systemIoctl = nullptr;

int WSAAPI recordListen(SOCKET socket, int backlog) {
    askedBacklog = backlog;
    return systemListen(socket, backlog);
}

int WSAAPI recordIoctl(SOCKET socket, DWORD code, LPVOID input, DWORD inputSize, LPVOID output,
                       DWORD outputSize, LPDWORD count, LPWSAOVERLAPPED overlapped,
                       LPWSAOVERLAPPED_COMPLETION_ROUTINE completion) {
    constexpr DWORD udpConnectionReset = 0x9800000C;
    if (code == udpConnectionReset && *static_cast<const BOOL*>(input) == FALSE) {
        ignoresLostReceivers = true;
    }
    return systemIoctl(socket, code, input, inputSize, output, outputSize, count, overlapped,
                       completion);
}

class StartingServer : public LogServiceTest {};

// The system takes the number as a hint and may let more connections wait, so this looks at the
// call.
TEST_F(StartingServer, AsksForABacklogOfEight) {
    const support::ReplacedImport<decltype(&listen)> replaced("listen", recordListen);
    systemListen = replaced.getOriginal();
    start();
    EXPECT_EQ(askedBacklog, 8);
}

// Wine never reports a lost asker, so this looks at the call.
TEST_F(StartingServer, HasLostAskersNotReported) {
    const support::ReplacedImport<decltype(&WSAIoctl)> replaced("WSAIoctl", recordIoctl);
    systemIoctl = replaced.getOriginal();
    start();
    EXPECT_TRUE(ignoresLostReceivers);
}

TEST_F(HeldServer, LetsEightConnectionsWait) {
    ServiceClient client(port);
    hold(client);
    std::vector<std::unique_ptr<ServiceClient>> clients;
    for (int i = 0; i < 8; ++i) {
        clients.push_back(std::make_unique<ServiceClient>(port));
        clients.back()->send(request);
    }
    release(client);
    for (const auto& waiting : clients) {
        EXPECT_EQ(waiting->receive(), reply);
    }
    EXPECT_EQ(errors.text(), "");
}

TEST_F(HeldServer, ReportsThatAcceptingFailedAndServesTheOthers) {
    ServiceClient client(port);
    takeListener(
        client, [] { return ::socket(AF_INET, SOCK_DGRAM, 0); },
        [](SOCKET other) { closesocket(other); });
    // What comes in makes it ready, but it knows no connections.
    net::IP4Address target = loopbackAddress();
    int length = target.length;
    ASSERT_EQ(::bind(listener, static_cast<sockaddr*>(target.sockaddr), length), 0);
    ASSERT_EQ(getsockname(listener, static_cast<sockaddr*>(target.sockaddr), &length), 0);
    net::UDPSocket(false).sendTo("x", 1, target);
    release(client);
    EXPECT_TRUE(
        errors.waitFor("log-server: caught exception while processing a configuration "
                       "client/message:\n\n"));
    EXPECT_TRUE(errors.waitFor("(10045)\n\n"));
    char datagram = 0;
    EXPECT_EQ(::recv(listener, &datagram, 1, 0), 1);
    EXPECT_EQ(client.ask(request), reply);
    EXPECT_NE(discovery->ask("discover-request:"), "");
}

TEST_F(HeldServer, EndsItsThreadWhenItCanNotWaitAndTheProcessGoesOn) {
    ServiceClient client(port);
    takeListener(
        client,
        [] { return reinterpret_cast<SOCKET>(CreateEventA(nullptr, TRUE, FALSE, nullptr)); },
        [](SOCKET other) { CloseHandle(reinterpret_cast<HANDLE>(other)); });
    release(client);
    EXPECT_TRUE(errors.waitFor("Thread log-server ("));
    EXPECT_TRUE(errors.waitFor("(10038)\n\n"));
    server->stop();
    server = std::make_unique<log::Server>(configurator.get());
    EXPECT_TRUE(client.isClosedByServer());
    CloseHandle(reinterpret_cast<HANDLE>(listener));
}

class ServerSockets : public LogServiceTest {
  protected:
    void SetUp() override { start(); }

    // The server's end of the connection.
    static SOCKET socketOf(ServiceClient& client) {
        const std::uint16_t port = client.address().port();
        return findSocket([port](SOCKET handle) { return portOf(handle, getpeername) == port; });
    }
};

TEST_F(ServerSockets, AcceptedClientIsAnsweredWithoutDelayAndAskedWhetherItLives) {
    ServiceClient client(port);
    EXPECT_EQ(client.ask(request), reply);
    const SOCKET socket = socketOf(client);
    ASSERT_NE(socket, INVALID_SOCKET);
    EXPECT_NE(optionOf(socket, IPPROTO_TCP, TCP_NODELAY), 0u);
    EXPECT_NE(optionOf(socket, SOL_SOCKET, SO_KEEPALIVE), 0u);
    if (!hostTellsTimers()) {
        GTEST_SKIP() << "the host system doesn't tell the times";
    }
    const std::uint16_t clientPort = client.address().port();
    // What was sent last has a timer of its own until it has arrived.
    EXPECT_TRUE(eventually([&] { return keepAliveTimer(port, clientPort) >= 0; }));
    EXPECT_LE(keepAliveTimer(port, clientPort), 510);
}

TEST_F(ServerSockets, StreamingClientIsNotReadAnyMore) {
    const auto client = streamingClient();
    client->send(request);
    const SOCKET socket = socketOf(*client);
    ASSERT_NE(socket, INVALID_SOCKET);
    char byte = 0;
    EXPECT_EQ(::recv(socket, &byte, 1, MSG_PEEK), SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAESHUTDOWN);
}

TEST_F(ServerSockets, DiscoveryTakesBroadcasts) {
    const auto isDiscovery = [](SOCKET handle) {
        return portOf(handle, getsockname) == log::Server::discoveryPort;
    };
    const auto takesBroadcasts = [](SOCKET handle) {
        return optionOf(handle, SOL_SOCKET, SO_BROADCAST) != 0;
    };
    EXPECT_NE(findSocket([&](SOCKET s) { return isDiscovery(s) && takesBroadcasts(s); }),
              INVALID_SOCKET);
    EXPECT_EQ(findSocket([&](SOCKET s) { return isDiscovery(s) && !takesBroadcasts(s); }),
              INVALID_SOCKET);
}

}  // namespace
