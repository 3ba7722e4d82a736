// Sockets and child processes: no child may keep a port or a connection of this process open.
#include <memory>

#include "tests/support/idle_child.h"
#include "tests/vek/net/loopback.h"
#include "vek/exception.h"
#include "vek/net/udp_socket.h"
#include "vek/net/wakeup_channel.h"

namespace {

using namespace vek::net;
using namespace vek::test;

class Inheritance : public WinsockTest {
  protected:
    static bool isInheritable(NativeSocket socket) {
        DWORD flags = HANDLE_FLAG_INHERIT;
        EXPECT_NE(GetHandleInformation(reinterpret_cast<HANDLE>(socket), &flags), 0);
        return (flags & HANDLE_FLAG_INHERIT) != 0;
    }
};

TEST_F(Inheritance, SystemMakesSocketsInheritable) {
    // Otherwise the next tests would prove nothing.
    const SOCKET plain = ::socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_TRUE(isInheritable(plain));
    closesocket(plain);
}

TEST_F(Inheritance, NoSocketIsInheritable) {
    const Socket socket(AF_INET, SOCK_STREAM, 0);
    const TCPListener listener(false);
    const UDPSocket datagrams(false);
    const ClientSocket client;
    const Connection<> connection;
    for (const Socket* const made :
         {&socket, static_cast<const Socket*>(&listener), static_cast<const Socket*>(&datagrams),
          static_cast<const Socket*>(&client), static_cast<const Socket*>(&connection.client),
          static_cast<const Socket*>(connection.server.get())}) {
        EXPECT_FALSE(isInheritable(made->nativeHandle()));
    }
    SocketSet set;
    const WakeupChannel channel;
    channel.addTo(set);
    ASSERT_EQ(set.count, 1u);
    EXPECT_FALSE(isInheritable(set.handles[0]));
}

TEST_F(Inheritance, AcceptedConnectionIsNotInheritableBeforeItIsTaken) {
    TCPListener listener(false);
    const IP4Address address = bindToLoopback(listener);
    listener.listen(1);
    ClientSocket client;
    client.connect(address);
    SocketHandle accepted = listener.accept();
    const NativeSocket handle = accepted.take();
    EXPECT_FALSE(isInheritable(handle));
    closesocket(handle);
}

TEST_F(Inheritance, ClosedListenerRefusesThoughAChildLives) {
    auto listener = std::make_unique<TCPListener>(false);
    const IP4Address address = bindToLoopback(*listener);
    listener->listen(1);
    const support::IdleChild child;
    listener.reset();
    ClientSocket client;
    EXPECT_THROW(client.connect(address), vek::NoPeer);
    EXPECT_TRUE(child.lives());
}

TEST_F(Inheritance, BothEndsOfAConnectionSeeItsEndThoughAChildLives) {
    Connection<> first;
    Connection<> second;
    const support::IdleChild child;
    first.server.reset();
    EXPECT_EQ(first.client.readExactly(1), "");
    second.client.close();
    char byte = 0;
    EXPECT_EQ(second.server->read(&byte, 1), 0u);
    EXPECT_TRUE(child.lives());
}

TEST_F(Inheritance, DatagramPortIsFreeAgainThoughAChildLives) {
    auto socket = std::make_unique<UDPSocket>(false);
    const IP4Address address = bindToLoopback(*socket);
    const support::IdleChild child;
    socket.reset();
    UDPSocket next(false);
    EXPECT_NO_THROW(next.bind(address));
    EXPECT_TRUE(child.lives());
}

}  // namespace
