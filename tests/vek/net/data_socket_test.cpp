#include "vek/net/data_socket.h"

#include <cstring>

#include "tests/vek/net/loopback.h"
#include "vek/net/message_header.h"

namespace {

using namespace vek::net;
using namespace vek::test;

class DataSocketTest : public WinsockTest {
  protected:
    DataSocketTest() : receiver(false), sender(false) {
        limitReceiving(receiver);
        address = bindToLoopback(receiver);
        senderAddress = bindToLoopback(sender);
    }

    UDPSocket receiver;
    UDPSocket sender;
    IP4Address address;
    IP4Address senderAddress;
    char bytes[16] = {};
};

std::string printed(const IP4Address& address) {
    return address.toString() + ":" + std::to_string(address.port());
}

TEST_F(DataSocketTest, HandsEachWriteOnAtOnce) {
    const vek::IInOut& stream = sender;
    EXPECT_TRUE(sender.flush());
    EXPECT_NE(&stream, nullptr);
    EXPECT_FALSE(sender.holdsBack());
    sender.beginBatch();
    sender.sendTo("one", 3, address);
    EXPECT_EQ(receiver.read(bytes, sizeof bytes), 3u);
    sender.endBatch();
    EXPECT_FALSE(sender.holdsBack());
}

TEST_F(DataSocketTest, ReadsAndWritesAStream) {
    Connection<> connection;
    vek::IInput& input = *connection.server;
    vek::IOutput& output = connection.client;
    EXPECT_EQ(output.write("hello", 5), 5u);
    EXPECT_EQ(input.read(bytes, 2), 2u);
    EXPECT_EQ(std::string(bytes, 2), "he");
    EXPECT_EQ(input.read(bytes, sizeof bytes), 3u);
    EXPECT_EQ(std::string(bytes, 3), "llo");
}

TEST_F(DataSocketTest, ReadsNothingOnceThePeerHasClosed) {
    Connection<> connection;
    connection.client.writeAll("x");
    connection.client.close();
    EXPECT_EQ(connection.server->read(bytes, sizeof bytes), 1u);
    EXPECT_EQ(connection.server->read(bytes, sizeof bytes), 0u);
    EXPECT_EQ(connection.server->read(bytes, sizeof bytes), 0u);
}

TEST_F(DataSocketTest, WriteToAPeerThatHasGoneThrowsInTheEnd) {
    Connection<> connection;
    connection.client.close();
    const std::uint32_t code = codeThrownBy<vek::NetError>([&] {
        for (int i = 0; i < 100; ++i) {
            connection.server->write("x", 1);
            Sleep(10);
        }
    });
    EXPECT_TRUE(code == 10053 || code == 10054) << code;
}

TEST_F(DataSocketTest, SizeBeyondASignedNumberIsRefused) {
    Connection<> connection;
    connection.client.writeAll("abc");
    EXPECT_THROW(connection.server->read(bytes, 0xFFFFFFFF), vek::NetError);
    EXPECT_THROW(connection.server->write(bytes, 0xFFFFFFFF), vek::NetError);
    EXPECT_EQ(connection.server->read(bytes, sizeof bytes), 3u);
}

TEST_F(DataSocketTest, ReceivesADatagramWithItsSender) {
    sender.sendTo("hello", 5, address);
    IP4Address from;
    EXPECT_EQ(receiver.receiveFrom(bytes, sizeof bytes, from), 5u);
    EXPECT_EQ(std::string(bytes, 5), "hello");
    EXPECT_EQ(printed(from), printed(senderAddress));
    EXPECT_EQ(from.length, 16);
}

class PreparedAddress final : public Address {
  public:
    PreparedAddress() { sockaddr = bytes; }
    void prepare() override {
        length = sizeof bytes;
        ++prepared;
    }
    unsigned char bytes[64] = {};
    int prepared = 0;
};

TEST_F(DataSocketTest, ReceivingPreparesTheAddressAndKeepsItsLength) {
    sender.sendTo("hello", 5, address);
    PreparedAddress from;
    EXPECT_EQ(receiver.receiveFrom(bytes, sizeof bytes, from), 5u);
    EXPECT_EQ(from.prepared, 1);
    EXPECT_EQ(from.length, 64);
    EXPECT_EQ(std::memcmp(from.bytes, senderAddress.sockaddr, 8), 0);
    sender.sendTo("hello", 5, address);
    PreparedAddress scattered;
    EXPECT_EQ(receiver.receiveMessage({{bytes, sizeof bytes}}, &scattered), 5u);
    EXPECT_EQ(scattered.prepared, 1);
    EXPECT_EQ(scattered.length, 64);
    EXPECT_EQ(std::memcmp(scattered.bytes, senderAddress.sockaddr, 8), 0);
}

TEST_F(DataSocketTest, DatagramLargerThanTheRoomIsLostAndThrows) {
    IP4Address from;
    sender.sendTo("too large", 9, address);
    sender.sendTo("next", 4, address);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { receiver.receiveFrom(bytes, 4, from); }), 10040u);
    EXPECT_EQ(receiver.receiveFrom(bytes, 4, from), 4u);
    EXPECT_EQ(std::string(bytes, 4), "next");
}

TEST_F(DataSocketTest, EmptyDatagramIsReceivedToo) {
    sender.sendTo("", 0, address);
    sender.sendTo("x", 1, address);
    EXPECT_EQ(receiver.read(bytes, sizeof bytes), 0u);
    EXPECT_EQ(receiver.read(bytes, sizeof bytes), 1u);
}

// Makes protected members public.
class PeekingSocket : public UDPSocket {
  public:
    PeekingSocket() : UDPSocket(false) {}
    using DataSocket::receive;
};

TEST_F(DataSocketTest, PeekLeavesTheDataWhereItIs) {
    PeekingSocket peeking;
    limitReceiving(peeking);
    sender.sendTo("hello", 5, bindToLoopback(peeking));
    EXPECT_EQ(peeking.receive(bytes, sizeof bytes, nullptr, true), 5u);
    IP4Address from;
    EXPECT_EQ(peeking.receive(bytes, sizeof bytes, &from, true), 5u);
    EXPECT_EQ(printed(from), printed(senderAddress));
    EXPECT_EQ(peeking.read(bytes, sizeof bytes), 5u);
}

TEST_F(DataSocketTest, EmptyAddressStandsForThePeerOfTheConnection) {
    sender.connect(address);
    sender.sendTo("one", 3, emptyAddress);
    EXPECT_EQ(receiver.read(bytes, sizeof bytes), 3u);
    EXPECT_EQ(sender.write("three", 5), 5u);
    EXPECT_EQ(receiver.read(bytes, sizeof bytes), 5u);
    EXPECT_EQ(sender.sendMessage({{bytes, 2}}, emptyAddress), 2u);
    EXPECT_EQ(receiver.read(bytes, sizeof bytes), 2u);
}

TEST_F(DataSocketTest, SendWithoutAPeerThrows) {
    // The error number of the plain system call.
    EXPECT_EQ(sendto(sender.nativeHandle(), "x", 1, 0, nullptr, 0), -1);
    const auto notAddressed = static_cast<std::uint32_t>(WSAGetLastError());
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { sender.sendTo("x", 1, emptyAddress); }),
              notAddressed);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { sender.write("x", 1); }), notAddressed);
}

TEST_F(DataSocketTest, DatagramLargerThanTheProtocolAllowsThrows) {
    const std::string large(65508, 'x');
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { sender.sendTo(large.data(), 65508, address); }),
              10040u);
    sender.sendTo(large.data(), 65507, address);
    std::string received(65507, '\0');
    EXPECT_EQ(receiver.read(received.data(), 65507), 65507u);
}

// These two calls throw a plain NetError for this number.
TEST_F(DataSocketTest, SendThatTheSystemForbidsThrowsAPlainNetError) {
    IP4Address everyone;
    everyone.fromString("255.255.255.255");
    everyone.setPort(9);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { sender.sendTo("x", 1, everyone); }), 10013u);
}

TEST_F(DataSocketTest, TransferOnAClosedSocketThrows) {
    sender.close();
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { sender.read(bytes, 1); }), 10038u);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { sender.write(bytes, 1); }), 10038u);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { sender.sendTo(bytes, 1, address); }), 10038u);
    IP4Address from;
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { sender.receiveFrom(bytes, 1, from); }), 10038u);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { sender.sendMessage({{bytes, 1}}); }), 10038u);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { sender.receiveMessage({{bytes, 1}}); }), 10038u);
}

TEST_F(DataSocketTest, GathersBuffersIntoOneMessage) {
    char hello[] = "hello";
    char world[] = ", world";
    EXPECT_EQ(sender.sendMessage({{hello, 5}, {nullptr, 0}, {world, 7}}, address), 12u);
    EXPECT_EQ(receiver.read(bytes, sizeof bytes), 12u);
    EXPECT_EQ(std::string(bytes, 12), "hello, world");
}

TEST_F(DataSocketTest, ScattersOneMessageOverBuffers) {
    char first[3] = {};
    char second[4] = {};
    sender.sendTo("abcde", 5, address);
    EXPECT_EQ(receiver.receiveMessage({{first, 3}, {second, 4}}), 5u);
    EXPECT_EQ(std::string(first, 3) + second, "abcde");
    sender.sendTo("fghij", 5, address);
    IP4Address from;
    EXPECT_EQ(receiver.receiveMessage({{first, 3}, {second, 4}}, &from), 5u);
    EXPECT_EQ(std::string(first, 3) + second, "fghij");
    EXPECT_EQ(printed(from), printed(senderAddress));
}

TEST_F(DataSocketTest, GathersOnAStreamToo) {
    Connection<> connection;
    char hello[] = "hello";
    char world[] = ", world";
    EXPECT_EQ(connection.server->sendMessage({{hello, 5}, {world, 7}}), 12u);
    EXPECT_EQ(connection.client.readExactly(12), "hello, world");
}

TEST_F(DataSocketTest, NoBufferToGatherOrScatterIsAUsageError) {
    const std::string text = "Usage error: empty vector turned in";
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { sender.sendMessage({}); }), text);
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { sender.sendMessage({}, address); }), text);
    EXPECT_EQ(textThrownBy<vek::UsageError>(
                  [&] { receiver.receiveMessage(std::vector<MessageBuffer>()); }),
              text);
    EXPECT_EQ(textThrownBy<vek::UsageError>(
                  [&] { receiver.receiveMessage(std::vector<MessageBuffer>(), nullptr); }),
              text);
    MessageHeader header;
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { receiver.receiveMessage(header); }), text);
}

TEST_F(DataSocketTest, MessageThatIsTooLargeThrowsAPlainNetError) {
    sender.sendTo("too large", 9, address);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { receiver.receiveMessage({{bytes, 4}}); }), 10040u);
}

TEST_F(DataSocketTest, HeaderIsEmptyAtFirst) {
    const MessageHeader header;
    const WSAMSG empty = {};
    EXPECT_EQ(std::memcmp(&header.message, &empty, sizeof empty), 0);
    EXPECT_EQ(header.peer, nullptr);
    EXPECT_TRUE(header.buffers.empty());
    EXPECT_EQ(header.control, nullptr);
    EXPECT_EQ(header.controlLength, 0u);
}

// IP_PKTINFO: the destination address of a datagram.
TEST_F(DataSocketTest, HeaderReceivesControlData) {
    const int on = 1;
    receiver.setOption(IPPROTO_IP, 19, &on, sizeof on);
    sender.sendTo("hello", 5, address);
    unsigned char control[64] = {};
    IP4Address from;
    MessageHeader header;
    header.buffers = {{bytes, sizeof bytes}};
    header.peer = &from;
    header.control = control;
    header.controlLength = sizeof control;
    EXPECT_EQ(receiver.receiveMessage(header), 5u);
    EXPECT_EQ(printed(from), printed(senderAddress));
    EXPECT_EQ(header.controlLength, sizeof control);
    ASSERT_GE(header.message.Control.len, sizeof(WSACMSGHDR) + 8);
    const unsigned char loopback[] = {127, 0, 0, 1};
    EXPECT_EQ(std::memcmp(control + sizeof(WSACMSGHDR), loopback, 4), 0);
    EXPECT_EQ(header.message.lpBuffers, nullptr) << "points to what is gone";
}

}  // namespace
