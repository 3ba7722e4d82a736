// What the tests of the log service share: a server in this process, and clients of it, which see
// bare bytes.
#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/vek/log/log_capture.h"
#include "tests/vek/log/shared_errors.h"
#include "tests/vek/net/loopback.h"
#include "tests/vek/net/watched_socket.h"
#include "vek/log/configurator.h"
#include "vek/log/manager.h"
#include "vek/log/server.h"
#include "vek/log/statement.h"

namespace vek::test {

// An address of this host that no other process uses: all processes share the discovery port
// of an address, and each datagram reaches only one of them.
inline std::string ownLoopbackAddress() {
    std::random_device random;
    std::uniform_int_distribution<int> part(1, 254);
    std::string address = "127";
    for (int i = 0; i < 3; ++i) {
        address += "." + std::to_string(part(random));
    }
    return address;
}

// Looks for processes at one address.
class DiscoveryClient {
  public:
    explicit DiscoveryClient(const std::string& processAddress) : DiscoveryClient() {
        target.setPort(log::Server::discoveryPort);
        target.fromString(processAddress);
    }

    void send(const std::string& datagram) {
        socket.sendTo(datagram.data(), static_cast<std::uint32_t>(datagram.size()), target);
    }

    // The next datagram. Throws NetError if there is none in time.
    std::string reply() {
        std::string datagram(2000, '\0');
        net::IP4Address sender;
        datagram.resize(socket.receiveFrom(datagram.data(), 2000, sender));
        EXPECT_EQ(sender.port(), log::Server::discoveryPort);
        return datagram;
    }

    std::string ask(const std::string& datagram) {
        send(datagram);
        return reply();
    }

    // Asks until somebody answers: a server that is starting has no socket yet. Uses a socket of
    // its own, as a late answer would pass for the reply to the next request.
    std::string askUntilAnswered(const std::string& datagram) const {
        DiscoveryClient patient;
        patient.target = target;
        const DWORD shortMs = 50;
        patient.socket.setOption(SOL_SOCKET, SO_RCVTIMEO, &shortMs, sizeof shortMs);
        std::string answer;
        for (int i = 0; i < 400 && answer.empty(); ++i) {
            try {
                answer = patient.ask(datagram);
            } catch (const NetError&) {
                // Not yet.
            }
        }
        return answer;
    }

    // Whether `datagram` is left without a reply: the reply to the next one comes first.
    bool getsNoReply(const std::string& datagram) {
        const std::string mark = "id=" + std::to_string(++marks);
        send(datagram);
        const std::string next = ask("discover-request:" + mark);
        return next.rfind("hello:" + mark + "\x1F", 0) == 0;
    }

    net::UDPSocket socket{false};
    net::IP4Address target;

  private:
    DiscoveryClient() {
        bindToLoopback(socket);
        limitReceiving(socket);
    }

    int marks = 4000000;
};

// The port in a "hello"; 0 if there is none.
inline std::uint16_t tcpPortIn(const std::string& hello) {
    const std::string key = "\x1Ftcpport=";
    const std::size_t at = hello.find(key);
    return at == std::string::npos
               ? std::uint16_t{0}
               : static_cast<std::uint16_t>(std::stoul(hello.substr(at + key.size())));
}

// A connection to the service. The text of a telegram is the payload of a frame.
class ServiceClient {
  public:
    explicit ServiceClient(std::uint16_t port) { socket.connect(loopbackAddress(port)); }

    void send(const std::string& telegram) { socket.writeAll(frame(telegram)); }

    // The next telegram; "(end)" at the end of the stream.
    std::string receive() {
        const std::string prefix = socket.readExactly(4);
        if (prefix.size() != 4) {
            return "(end)";
        }
        std::uint32_t length = 0;
        for (const char byte : prefix) {
            length = length << 8 | static_cast<unsigned char>(byte);
        }
        return socket.readExactly(length);
    }

    std::string ask(const std::string& telegram) {
        send(telegram);
        return receive();
    }

    // Whether the server closes the connection, without another byte.
    bool isClosedByServer() {
        try {
            return receive() == "(end)";
        } catch (const NetError& error) {
            // What the server hadn't read yet makes a hard end of it.
            return error.code() == WSAECONNRESET || error.code() == WSAECONNABORTED;
        }
    }

    // All sinks but for the end of the reply.
    std::vector<std::string> sinks() {
        std::vector<std::string> result;
        send("evidence-info:");
        for (;;) {
            const std::string telegram = receive();
            if (telegram == "evidence-info:end-of-reply" || telegram == "(end)") {
                return result;
            }
            result.push_back(telegram);
        }
    }

    net::IP4Address address() {
        net::IP4Address own;
        socket.localAddress(own);
        return own;
    }

    ClientSocket socket;
};

// A server of its own beside that of a configured process "demo".
class LogServiceTest : public WinsockTest {
  protected:
    LogServiceTest() {
        configurator = std::make_unique<log::Configurator>(nullptr);
        configurator->configure("demo");
        server = std::make_unique<log::Server>(configurator.get());
        server->setDiscoveryAddress(address);
    }
    ~LogServiceTest() override {
        // In the order in which a process ends.
        manager.shutdown();
        server->stop();
        server.reset();
        configurator.reset();
    }

    // Starts the server and finds its port.
    void start() {
        server->start();
        discovery = std::make_unique<DiscoveryClient>(address);
        // Under Wine any address but 127.0.0.1 is all of them, so that a test of another checkout
        // may be the one that answers.
        port = tcpPortIn(discovery->askUntilAnswered("discover-request:pid=" +
                                                     std::to_string(GetCurrentProcessId())));
        ASSERT_NE(port, 0);
    }

    // A client to which messages stream already.
    std::unique_ptr<ServiceClient> streamingClient() {
        auto client = std::make_unique<ServiceClient>(port);
        const std::size_t before = sinkCount();
        client->send("get-messages:");
        EXPECT_TRUE(eventually([&] { return sinkCount() > before; }));
        return client;
    }

    std::size_t sinkCount() const {
        return manager.withSinks([](const auto& sinks, std::uint32_t) { return sinks.size(); });
    }

    template <class Condition>
    static bool eventually(Condition condition) {
        for (int i = 0; i < 4000; ++i) {
            if (condition()) {
                return true;
            }
            Sleep(5);
        }
        return false;
    }

    // Ahead of the threads that write there.
    SharedErrors errors;
    const std::string address = ownLoopbackAddress();
    log::Manager& manager = log::Manager::instance();
    std::unique_ptr<log::Configurator> configurator;
    std::unique_ptr<log::Server> server;
    std::unique_ptr<DiscoveryClient> discovery;
    std::uint16_t port = 0;
};

}  // namespace vek::test
