// Shared by the tests of sockets: Winsock, and connections over the loopback address.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <typeinfo>

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "vek/exception.h"
#include "vek/net/ip4_address.h"
#include "vek/net/tcp_listener.h"
#include "vek/net/tcp_socket.h"
#include "vek/net/udp_socket.h"
#include "vek/net/winsock.h"

namespace vek::test {

// Upper bound of each receive in a test.
constexpr std::uint32_t receiveLimitMs = 20000;

inline void limitReceiving(net::Socket& socket, std::uint32_t limitMs = receiveLimitMs) {
    socket.setOption(SOL_SOCKET, SO_RCVTIMEO, &limitMs, sizeof limitMs);
}

inline net::IP4Address loopbackAddress(std::uint16_t port = 0) {
    net::IP4Address address;
    address.setAddress(0x7F000001);
    address.setPort(port);
    return address;
}

// Binds to a port that the system chooses and returns the address.
inline net::IP4Address bindToLoopback(net::Socket& socket) {
    net::IP4Address address = loopbackAddress();
    socket.bind(address);
    socket.localAddress(address);
    return address;
}

// A client's socket, not connected yet.
class ClientSocket : public net::IPSocketT<net::DataSocket> {
  public:
    ClientSocket() : IPSocketT(false, net::streamType, 0) { limitReceiving(*this); }

    void writeAll(const std::string& bytes) {
        for (std::size_t sent = 0; sent < bytes.size();) {
            sent += write(bytes.data() + sent, static_cast<std::uint32_t>(bytes.size() - sent));
        }
    }

    // Returns fewer bytes only at the end of the stream.
    std::string readExactly(std::size_t size) {
        std::string bytes(size, '\0');
        std::size_t received = 0;
        while (received < size) {
            const std::uint32_t count =
                read(&bytes[received], static_cast<std::uint32_t>(size - received));
            if (count == 0) {
                break;
            }
            received += count;
        }
        bytes.resize(received);
        return bytes;
    }
};

// Winsock is started for the lifetime of this object.
class WinsockTest : public testing::Test {
  protected:
    WinsockTest() { net::startWinsock(); }
    ~WinsockTest() override { net::stopWinsock(); }
};

// A connected pair; `Server` is TCPSocket or derived from it.
template <class Server = net::TCPSocket>
class Connection {
  public:
    Connection() {
        net::TCPListener listener(false);
        const net::IP4Address address = bindToLoopback(listener);
        listener.listen(1);
        client.connect(address);
        server = std::make_unique<Server>(listener.accept());
        limitReceiving(*server);
        server->setNoDelay();
        const BOOL noDelay = TRUE;
        client.setOption(IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
    }

    ClientSocket client;
    std::unique_ptr<Server> server;
};

}  // namespace vek::test
