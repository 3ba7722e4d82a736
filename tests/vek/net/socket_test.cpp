#include "vek/net/socket.h"

#include <type_traits>

#include "tests/support/open_handles.h"
#include "tests/vek/log/captured_errors.h"
#include "tests/vek/net/loopback.h"

namespace {

using namespace vek::net;
using namespace vek::test;

class SocketTest : public WinsockTest {};

int optionOf(const Socket& socket, int level, int name) {
    int value = 0;
    std::int32_t length = sizeof value;
    socket.getOption(level, name, &value, length);
    // Some options have one byte only.
    EXPECT_TRUE(length == 4 || length == 1);
    return value;
}

static_assert(!std::is_copy_constructible_v<Socket> && !std::is_copy_constructible_v<TCPSocket>);
static_assert(std::is_base_of_v<vek::IInOut, DataSocket>);
static_assert(std::is_base_of_v<IPSocketT<Socket>, TCPListener>);
static_assert(std::is_base_of_v<IPSocketT<DataSocket>, TCPSocket>);
static_assert(std::is_base_of_v<IPSocketT<DataSocket>, UDPSocket>);

TEST_F(SocketTest, KindIsThatOfAStreamForAllButDatagramSockets) {
    const Socket plain(AF_INET, SOCK_STREAM, 0);
    const TCPListener listener(false);
    const ClientSocket data;
    const Connection<> connection;
    for (const Socket* const socket :
         {&plain, static_cast<const Socket*>(&listener), static_cast<const Socket*>(&data),
          static_cast<const Socket*>(connection.server.get())}) {
        EXPECT_FALSE(socket->isDatagram());
        EXPECT_TRUE(socket->isStream());
        EXPECT_TRUE(socket->isReliable());
        EXPECT_FALSE(socket->isLossy());
        EXPECT_TRUE(socket->isOpen());
    }
}

TEST_F(SocketTest, KindOfADatagramSocketIsTheOpposite) {
    UDPSocket udp(false);
    const Socket& socket = udp;
    EXPECT_TRUE(socket.isDatagram());
    EXPECT_FALSE(socket.isStream());
    EXPECT_FALSE(socket.isReliable());
    EXPECT_TRUE(socket.isLossy());
    EXPECT_TRUE(socket.isOpen());
    udp.close();
    EXPECT_FALSE(socket.isOpen());
}

TEST_F(SocketTest, OpensForEitherFamily) {
    const auto familyAndType = [](const Socket& socket) {
        WSAPROTOCOL_INFOA info = {};
        std::int32_t length = sizeof info;
        socket.getOption(SOL_SOCKET, SO_PROTOCOL_INFOA, &info, length);
        return std::make_pair(info.iAddressFamily, info.iSocketType);
    };
    EXPECT_EQ(familyAndType(TCPListener(false)), std::make_pair(2, 1));
    EXPECT_EQ(familyAndType(TCPListener(true)), std::make_pair(23, 1));
    EXPECT_EQ(familyAndType(UDPSocket(false)), std::make_pair(2, 2));
    EXPECT_EQ(familyAndType(UDPSocket(true)), std::make_pair(23, 2));
}

TEST_F(SocketTest, ThatCannotBeMadeThrows) {
    EXPECT_EQ(codeThrownBy<vek::NetError>([] { Socket socket(99, SOCK_STREAM, 0); }), 10047u);
}

TEST(SocketWithoutWinsock, CannotBeMade) {
    EXPECT_EQ(codeThrownBy<vek::NetError>([] { Socket socket(AF_INET, SOCK_STREAM, 0); }), 10093u);
}

TEST_F(SocketTest, IsClosedByItsDestructor) {
    const std::size_t before = support::openHandles().size();
    {
        const UDPSocket udp(false);
        const Socket taken(::socket(AF_INET, SOCK_STREAM, 0));
        EXPECT_EQ(support::openHandles().size(), before + 2);
    }
    EXPECT_EQ(support::openHandles().size(), before);
}

TEST_F(SocketTest, IsInvalidOnceClosedAndItsDestructorDoesNothing) {
    const CapturedErrors errors;
    {
        UDPSocket udp(false);
        udp.close();
        EXPECT_EQ(udp.nativeHandle(), INVALID_SOCKET);
        EXPECT_FALSE(udp.isOpen());
    }
    EXPECT_EQ(errors.text(), "");
}

TEST_F(SocketTest, IsInvalidAlsoWhenClosingFails) {
    UDPSocket udp(false);
    closesocket(udp.nativeHandle());
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { udp.close(); }), 10038u);
    EXPECT_FALSE(udp.isOpen());
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { udp.close(); }), 10038u);
}

TEST_F(SocketTest, DestructorReportsThatClosingFailed) {
    const CapturedErrors errors;
    {
        const UDPSocket udp(false);
        closesocket(udp.nativeHandle());
    }
    const std::string report = errors.text();
    EXPECT_EQ(errors.flushedText(), report);
    // The look-up of the error text may print a report of its own first.
    const CapturedErrors lookUp;
    const std::string text = vek::NetError(10038).printableText();
    EXPECT_EQ(report,
              "vek::net::Socket::~Socket: error closing socket:\n\n" + lookUp.text() + text + "\n");
}

TEST_F(SocketTest, BindsToAPortThatTheSystemChooses) {
    UDPSocket udp(false);
    const IP4Address address = bindToLoopback(udp);
    EXPECT_EQ(address.toString(), "127.0.0.1");
    EXPECT_NE(address.port(), 0);
}

TEST_F(SocketTest, BindToAnAddressOfAnotherHostThrows) {
    IP4Address address;
    address.fromString("198.51.100.1");
    EXPECT_EQ(codeThrownBy<vek::NoSuchAddress>([&] { TCPListener(false).bind(address); }), 10049u);
}

TEST_F(SocketTest, BindToAPortThatIsHeldForOneAloneThrows) {
    const BOOL on = TRUE;
    TCPListener holder(false);
    holder.setOption(SOL_SOCKET, SO_EXCLUSIVEADDRUSE, &on, sizeof on);
    const IP4Address address = bindToLoopback(holder);
    TCPListener other(false);
    other.setReuseAddress();
    EXPECT_EQ(codeThrownBy<vek::PermissionError>([&] { other.bind(address); }), 10013u);
}

TEST_F(SocketTest, BindToAPortInUseThrows) {
    TCPListener holder(false);
    const IP4Address address = bindToLoopback(holder);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { TCPListener(false).bind(address); }), 10048u);
}

TEST_F(SocketTest, BindToNoAddressThrows) {
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { UDPSocket(false).bind(emptyAddress); }), 10014u);
}

TEST_F(SocketTest, ConnectToAPortWhereNobodyListensThrows) {
    TCPListener unused(false);
    const IP4Address address = bindToLoopback(unused);
    ClientSocket client;
    EXPECT_EQ(codeThrownBy<vek::NoPeer>([&] { client.connect(address); }), 10061u);
}

TEST_F(SocketTest, OtherFailureOfConnectIsANetError) {
    Connection<> connection;
    IP4Address address;
    connection.server->localAddress(address);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { connection.client.connect(address); }), 10056u);
}

TEST_F(SocketTest, KnowsBothAddressesOfAConnection) {
    const Connection<> connection;
    IP4Address serverOwn;
    IP4Address clientOwn;
    IP4Address serversPeer;
    IP4Address clientsPeer;
    connection.server->localAddress(serverOwn);
    connection.client.localAddress(clientOwn);
    connection.server->peerAddress(serversPeer);
    connection.client.peerAddress(clientsPeer);
    EXPECT_EQ(serverOwn.toString(), "127.0.0.1");
    EXPECT_EQ(serverOwn.port(), clientsPeer.port());
    EXPECT_EQ(clientOwn.port(), serversPeer.port());
    EXPECT_NE(serverOwn.port(), clientOwn.port());
    EXPECT_EQ(serverOwn.length, 16);
}

// An address with more room than the system call needs.
class RoomyAddress final : public Address {
  public:
    RoomyAddress() {
        sockaddr = bytes;
        length = 0;
    }
    void prepare() override {
        length = sizeof bytes;
        ++prepared;
    }

    unsigned char bytes[64] = {};
    int prepared = 0;
};

TEST_F(SocketTest, AddressIsPreparedAndCutToWhatTheSystemGave) {
    Connection<> connection;
    RoomyAddress own;
    connection.server->localAddress(own);
    EXPECT_EQ(own.prepared, 1);
    EXPECT_EQ(own.length, 16);
    RoomyAddress peer;
    connection.server->peerAddress(peer);
    EXPECT_EQ(peer.prepared, 1);
    EXPECT_EQ(peer.length, 16);
}

TEST_F(SocketTest, AddressOfNoConnectionThrows) {
    const UDPSocket udp(false);
    IP4Address address;
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { udp.localAddress(address); }), 10022u);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { udp.peerAddress(address); }), 10057u);
    EXPECT_EQ(address.length, 16);
}

TEST_F(SocketTest, ShutdownOfNeitherSideMakesNoSystemCall) {
    UDPSocket udp(false);
    udp.close();
    udp.shutdown(false, false);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { udp.shutdown(true, false); }), 10038u);
}

TEST_F(SocketTest, ShutdownOfTheWriteSideEndsTheStreamForThePeer) {
    Connection<> connection;
    connection.server->shutdown(true, false);
    EXPECT_EQ(connection.client.readExactly(1), "");
    connection.client.writeAll("x");
    char byte = 0;
    EXPECT_EQ(connection.server->read(&byte, 1), 1u);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { connection.server->write("x", 1); }), 10058u);
}

TEST_F(SocketTest, ShutdownOfTheReadSideLeavesTheWriteSide) {
    Connection<> connection;
    connection.server->shutdown(false, true);
    char byte = 0;
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { connection.server->read(&byte, 1); }), 10058u);
    connection.server->write("x", 1);
    EXPECT_EQ(connection.client.readExactly(1), "x");
}

TEST_F(SocketTest, ShutdownOfBothSidesEndsBoth) {
    Connection<> connection;
    connection.server->shutdown(true, true);
    char byte = 0;
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { connection.server->read(&byte, 1); }), 10058u);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { connection.server->write("x", 1); }), 10058u);
    EXPECT_EQ(connection.client.readExactly(1), "");
}

TEST_F(SocketTest, OptionsAreTurnedOnAndOff) {
    UDPSocket udp(false);
    EXPECT_EQ(optionOf(udp, SOL_SOCKET, SO_BROADCAST), 0);
    udp.setBroadcast(true);
    EXPECT_EQ(optionOf(udp, SOL_SOCKET, SO_BROADCAST), 1);
    udp.setBroadcast(false);
    EXPECT_EQ(optionOf(udp, SOL_SOCKET, SO_BROADCAST), 0);
    EXPECT_EQ(optionOf(udp, SOL_SOCKET, SO_REUSEADDR), 0);
    udp.setReuseAddress();
    EXPECT_EQ(optionOf(udp, SOL_SOCKET, SO_REUSEADDR), 1);
    ClientSocket tcp;
    EXPECT_EQ(optionOf(tcp, SOL_SOCKET, SO_KEEPALIVE), 0);
    tcp.setKeepAlive(true);
    EXPECT_EQ(optionOf(tcp, SOL_SOCKET, SO_KEEPALIVE), 1);
    tcp.setKeepAlive(false);
    EXPECT_EQ(optionOf(tcp, SOL_SOCKET, SO_KEEPALIVE), 0);
}

TEST_F(SocketTest, OptionsOfOtherSystemsAreNotLookedAt) {
    UDPSocket udp(false);
    udp.close();
    udp.setReusePort();
    udp.setTimeoutOption(true, 10);
}

TEST_F(SocketTest, TwoWithTheSameAddressNeedTheOptionForIt) {
    UDPSocket first(false);
    first.setReuseAddress();
    const IP4Address address = bindToLoopback(first);
    UDPSocket second(false);
    second.setReuseAddress();
    second.bind(address);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { UDPSocket(false).bind(address); }), 10048u);
}

TEST_F(SocketTest, BufferSizesOfBothDirectionsAreOptionsOfTheirOwn) {
    ClientSocket socket;
    std::uint32_t size = 40000;
    socket.bufferSize(false, true, size);
    size = 20000;
    socket.bufferSize(false, false, size);
    std::uint32_t sending = 0;
    std::uint32_t receiving = 0;
    socket.bufferSize(true, true, sending);
    socket.bufferSize(true, false, receiving);
    EXPECT_EQ(static_cast<int>(sending), optionOf(socket, SOL_SOCKET, SO_SNDBUF));
    EXPECT_EQ(static_cast<int>(receiving), optionOf(socket, SOL_SOCKET, SO_RCVBUF));
    EXPECT_EQ(sending, 2 * receiving);
}

TEST_F(SocketTest, OptionThatDoesNotExistThrows) {
    UDPSocket udp(false);
    int value = 0;
    std::int32_t length = sizeof value;
    EXPECT_EQ(
        codeThrownBy<vek::NetError>([&] { udp.getOption(IPPROTO_TCP, 0x7777, &value, length); }),
        10042u);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { udp.setOption(IPPROTO_TCP, 0x7777, &value, 4); }),
              10042u);
    udp.close();
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { udp.setBroadcast(true); }), 10038u);
    std::uint32_t size = 0;
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { udp.bufferSize(true, true, size); }), 10038u);
}

}  // namespace
