#include "vek/net/tcp_buffer.h"

#include <random>
#include <thread>
#include <vector>

#include "tests/vek/net/loopback.h"
#include "tests/vek/net/watched_socket.h"

namespace {

using namespace vek::net;
using namespace vek::test;
using vek::RuntimeError;

constexpr std::uint32_t sendSize = 16384;
constexpr std::uint32_t recvSize = 1024;

class TCPBufferTest : public WinsockTest {
  protected:
    // Returns the next payload, or a text that no frame has at the end of the stream.
    std::string next() {
        std::uint32_t length = 77;
        const char* const payload = buffer.nextMessage(length);
        if (payload == nullptr) {
            EXPECT_EQ(length, 0u);
            return "<end>";
        }
        return std::string(payload, length);
    }

    std::string textOfNext() {
        return textThrownBy<RuntimeError>([&] { next(); });
    }

    // Copies `payload` into the send buffer and commits it.
    std::uint32_t send(const std::string& payload) {
        payload.copy(buffer.sendPayload(), buffer.maxPayload());
        return buffer.commit(static_cast<std::uint32_t>(payload.size()));
    }

    // Waits until `size` bytes have arrived at the buffer's socket.
    void waitForArrival(std::size_t size) {
        u_long arrived = 0;
        for (int i = 0; i < 2000 && arrived < size; ++i) {
            ioctlsocket(server.nativeHandle(), static_cast<long>(FIONREAD), &arrived);
            if (arrived < size) {
                Sleep(1);
            }
        }
        ASSERT_EQ(arrived, size);
    }

    void sendWhole(const std::string& bytes) {
        client.writeAll(bytes);
        waitForArrival(bytes.size());
    }

    Connection<WatchedSocket> connection;
    ClientSocket& client = connection.client;
    WatchedSocket& server = *connection.server;
    TCPBuffer buffer{sendSize, recvSize, &server};
};

std::string pattern(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        text[i] = static_cast<char>(i * 31 + i / 256);
    }
    return text;
}

TEST_F(TCPBufferTest, KnowsItsSizes) {
    EXPECT_EQ(buffer.maxMessageSize(), 1020u);
    EXPECT_EQ(buffer.maxPayload(), 16380u);
    EXPECT_EQ(buffer.available(), 0u);
    EXPECT_EQ(buffer.socket(), &server);
    EXPECT_EQ(buffer.byteOrder, 0);
}

TEST_F(TCPBufferTest, NeedsRoomForTheLength) {
    EXPECT_THROW(TCPBuffer(3, 1024), vek::UsageError);
    EXPECT_THROW(TCPBuffer(1024, 3), vek::UsageError);
    EXPECT_THROW(TCPBuffer(0, 0), vek::UsageError);
    TCPBuffer least(4, 4, &server);
    EXPECT_EQ(least.commit(0), 4u);
    EXPECT_EQ(client.readExactly(4), frame(""));
    EXPECT_THROW(least.commit(1), RuntimeError);
    client.writeAll(frame("") + frame("x"));
    std::uint32_t length = 0;
    EXPECT_THROW(least.nextMessage(length), RuntimeError);
}

TEST_F(TCPBufferTest, WithoutASocketSaysSo) {
    TCPBuffer none(sendSize, recvSize);
    std::uint32_t length = 5;
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { none.socket(); }), "no socket set");
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { none.commit(0); }),
              "Commited send buffer, but no socket set yet!");
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { none.nextMessage(length); }),
              "Called nextMessage but no DataSocket is set yet!");
    EXPECT_EQ(length, 5u);
    EXPECT_FALSE(none.hasMessage());
    EXPECT_EQ(none.available(), 0u);
    none.setSocket(&server);
    EXPECT_EQ(none.socket(), &server);
    EXPECT_EQ(none.commit(0), 4u);
}

TEST_F(TCPBufferTest, LengthIsLookedAtAheadOfTheSocket) {
    TCPBuffer none(sendSize, recvSize);
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { none.commit(16381); }),
              "TCPBuffer: Commited send buffer is larger than fits into buffer: buffer = 16384, "
              "encountered = 16381");
}

TEST_F(TCPBufferTest, TakesNoDatagramSocket) {
    UDPSocket datagrams(false);
    TCPBuffer none(sendSize, recvSize);
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { none.setSocket(&datagrams); }),
              "Unreliable socket provided");
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { none.setSocket(nullptr); }),
              "Unreliable socket provided");
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { none.socket(); }), "no socket set");
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { buffer.setSocket(&datagrams); }),
              "Unreliable socket provided");
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { TCPBuffer(sendSize, recvSize, &datagrams); }),
              "Unreliable socket provided");
}

// Returns what a datagram socket returns for one of the two predicates.
class HalfReliable : public TCPSocket {
  public:
    HalfReliable(bool isItReliable, bool isItLossy)
        : TCPSocket(SocketHandle(INVALID_SOCKET)), reliable(isItReliable), lossy(isItLossy) {}
    bool isReliable() const override { return reliable; }
    bool isLossy() const override { return lossy; }

  private:
    const bool reliable;
    const bool lossy;
};

TEST_F(TCPBufferTest, AsksBothQuestionsOfItsSocket) {
    HalfReliable lossy(true, true);
    HalfReliable unreliable(false, false);
    HalfReliable good(true, false);
    TCPBuffer none(sendSize, recvSize);
    EXPECT_THROW(none.setSocket(&lossy), RuntimeError);
    EXPECT_THROW(none.setSocket(&unreliable), RuntimeError);
    none.setSocket(&good);
    EXPECT_EQ(none.socket(), &good);
}

TEST_F(TCPBufferTest, TakesOneSocketOnly) {
    Connection<> other;
    const std::string text = "You re-assigned a socket, this kills buffer state";
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { buffer.setSocket(other.server.get()); }), text);
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { buffer.setSocket(&server); }), text);
    EXPECT_EQ(buffer.socket(), &server);
}

TEST_F(TCPBufferTest, DoesNothingToItsSocketAtItsEnd) {
    { TCPBuffer passing(sendSize, recvSize, &server); }
    EXPECT_TRUE(server.isOpen());
    EXPECT_EQ(send("x"), 5u);
    EXPECT_EQ(client.readExactly(5), frame("x"));
}

// Sending.

TEST_F(TCPBufferTest, SendsAFrameInOneCall) {
    EXPECT_EQ(send("hello"), 9u);
    EXPECT_EQ(server.writes, 1);
    const std::string expected("\0\0\0\5hello", 9);
    EXPECT_EQ(client.readExactly(9), expected);
}

TEST_F(TCPBufferTest, SendsAnEmptyFrame) {
    EXPECT_EQ(buffer.commit(0), 4u);
    EXPECT_EQ(client.readExactly(4), std::string(4, '\0'));
}

TEST_F(TCPBufferTest, SendsTheLargestFrame) {
    const std::string payload = pattern(16380);
    EXPECT_EQ(send(payload), 16384u);
    const std::string received = client.readExactly(16384);
    EXPECT_EQ(received.substr(0, 4), std::string("\x00\x00\x3F\xFC", 4));
    EXPECT_TRUE(received.substr(4) == payload);
}

TEST_F(TCPBufferTest, RefusesALargerOneAndSendsNothing) {
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { send(pattern(16381)); }),
              "TCPBuffer: Commited send buffer is larger than fits into buffer: buffer = 16384, "
              "encountered = 16381");
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { buffer.commit(0xFFFFFFFF); }),
              "TCPBuffer: Commited send buffer is larger than fits into buffer: buffer = 16384, "
              "encountered = 4294967295");
    EXPECT_EQ(server.writes, 0);
    send("next");
    EXPECT_EQ(client.readExactly(8), frame("next"));
}

TEST_F(TCPBufferTest, SendsLengthsInTheMachinesOrderIfToldTo) {
    buffer.byteOrder = 1;
    send("hello");
    EXPECT_EQ(client.readExactly(9), std::string("\5\0\0\0hello", 9));
    // It has no effect on reading.
    client.writeAll(frame("hello"));
    EXPECT_EQ(next(), "hello");
    buffer.byteOrder = 2;
    send("hello");
    EXPECT_EQ(client.readExactly(9), frame("hello"));
}

TEST_F(TCPBufferTest, FinishesAPartialWrite) {
    const std::string payload = pattern(1000);
    for (const std::uint32_t limit : {1u, 3u, 4u, 5u, 999u, 1003u}) {
        server.writeLimit = limit;
        server.writes = 0;
        const std::uint32_t calls = (1004 + limit - 1) / limit;
        EXPECT_EQ(send(payload), 1004 - (calls - 1) * limit);
        EXPECT_EQ(server.writes, static_cast<int>(calls));
        EXPECT_TRUE(client.readExactly(1004) == frame(payload)) << limit;
    }
}

TEST_F(TCPBufferTest, BlocksUntilAPeerThatReadsSlowlyHasRoom) {
    const std::string payload = pattern(16380);
    constexpr int frames = 600;
    std::string received;
    std::thread reader([&] { received = client.readExactly(frames * 16384u); });
    for (int i = 0; i < frames; ++i) {
        send(payload);
    }
    reader.join();
    ASSERT_EQ(received.size(), frames * 16384u);
    for (unsigned i = 0; i < frames; ++i) {
        ASSERT_EQ(received.compare(i * 16384u, 16384u, frame(payload)), 0) << i;
    }
}

TEST_F(TCPBufferTest, FailureInTheMiddleOfAFrameComesOut) {
    server.writeLimit = 2;
    server.writesBeforeClosing = 3;
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { send("hello"); }), 10038u);
    EXPECT_EQ(client.readExactly(100), frame("hello").substr(0, 6));
}

// Receiving.

TEST_F(TCPBufferTest, FrameIsTheSameWhereverItIsSplit) {
    const std::string bytes = frame("hello") + frame("x") + frame(pattern(40));
    for (std::size_t cut = 1; cut < bytes.size(); ++cut) {
        std::thread sender([&] {
            client.writeAll(bytes.substr(0, cut));
            Sleep(1);
            client.writeAll(bytes.substr(cut));
        });
        EXPECT_EQ(next(), "hello") << cut;
        EXPECT_EQ(next(), "x") << cut;
        EXPECT_EQ(next(), pattern(40)) << cut;
        EXPECT_EQ(buffer.available(), 0u);
        sender.join();
    }
}

TEST_F(TCPBufferTest, FramesMayArriveByteByByte) {
    server.readLimit = 1;
    client.writeAll(frame("hello") + frame(pattern(300)));
    EXPECT_EQ(next(), "hello");
    EXPECT_EQ(server.reads, 9);
    EXPECT_EQ(next(), pattern(300));
    EXPECT_EQ(server.reads, 9 + 304);
}

TEST_F(TCPBufferTest, SecondOfTwoFramesInOneReadNeedsNoRead) {
    sendWhole(frame("first") + frame("second"));
    EXPECT_EQ(next(), "first");
    EXPECT_EQ(server.reads, 1);
    EXPECT_EQ(buffer.available(), 10u);
    EXPECT_EQ(next(), "second");
    EXPECT_EQ(server.reads, 1);
}

TEST_F(TCPBufferTest, IsEmptyOnceTheLastByteReceivedWasTaken) {
    sendWhole(frame("first") + frame("second"));
    next();
    next();
    EXPECT_EQ(buffer.available(), 0u);
    const char* const start = server.lastReadTarget;
    client.writeAll(frame("x"));
    EXPECT_EQ(next(), "x");
    EXPECT_EQ(server.lastReadTarget, start);
    EXPECT_EQ(server.lastReadSize, recvSize);
}

TEST_F(TCPBufferTest, ReadsBehindWhatIsLeftUntilTheBufferIsFull) {
    sendWhole(frame("first") + frame("second").substr(0, 7));
    EXPECT_EQ(next(), "first");
    const char* const start = server.lastReadTarget;
    client.writeAll(frame("second").substr(7));
    EXPECT_EQ(next(), "second");
    EXPECT_EQ(server.lastReadTarget, start + 16);
    EXPECT_EQ(server.lastReadSize, recvSize - 16);
}

TEST_F(TCPBufferTest, AcceptsTheLargestPayload) {
    client.writeAll(frame(pattern(1020)) + frame("next"));
    EXPECT_TRUE(next() == pattern(1020));
    EXPECT_EQ(next(), "next");
}

TEST_F(TCPBufferTest, FrameThatStraddlesTheEndOfTheBufferIsMovedToItsStart) {
    const std::string large = pattern(1020);
    sendWhole(frame(pattern(500)) + frame(large));
    EXPECT_TRUE(next() == pattern(500));
    EXPECT_TRUE(next() == large);
    EXPECT_EQ(server.reads, 2);
    EXPECT_EQ(buffer.available(), 0u);
}

class BadLength : public TCPBufferTest, public testing::WithParamInterface<std::uint32_t> {};

TEST_P(BadLength, IsAnErrorThatStays) {
    const std::string text =
        "TCPBuffer received a message that is longer than can ever be received: buffer size = "
        "1024, encountered size = " +
        std::to_string(GetParam());
    sendWhole(frame("good") + frame(pattern(1200), GetParam()));
    EXPECT_EQ(next(), "good");
    EXPECT_EQ(textOfNext(), text);
    // Nothing was consumed, not even the bad length.
    EXPECT_EQ(buffer.available(), recvSize - 8);
    EXPECT_EQ(textThrownBy<RuntimeError>([&] { buffer.hasMessage(); }), text);
    // Each later call throws too.
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(textOfNext(), text);
    }
    EXPECT_EQ(server.reads, 1);
    send("the other direction");
    EXPECT_EQ(client.readExactly(23), frame("the other direction"));
}

INSTANTIATE_TEST_SUITE_P(, BadLength,
                         testing::Values(1021u, 1024u, 1025u, 0x10000u, 0x7FFFFFFFu, 0x80000000u,
                                         0xFFFFFFFCu, 0xFFFFFFFFu));

TEST_F(TCPBufferTest, TextThatIsNoFrameIsALengthThatIsTooLarge) {
    client.writeAll("GET / HTTP/1.0\r\n\r\n");
    EXPECT_NE(textOfNext().find("encountered size = 1195725856"), std::string::npos);
}

TEST_F(TCPBufferTest, EmptyFramesAreNeverGiven) {
    for (const char* const text : {"one", "two"}) {
        client.writeAll(frame(""));
        waitForArrival(4);
        std::thread sender([&] {
            Sleep(20);
            client.writeAll(frame("") + frame("") + frame(text));
            Sleep(20);
            client.writeAll(frame("more"));
            Sleep(20);
            client.writeAll(frame("more"));
        });
        EXPECT_EQ(next(), text);
        sender.join();
        EXPECT_EQ(next(), "more");
        EXPECT_EQ(next(), "more");
    }
}

// Deliberately so.
TEST_F(TCPBufferTest, BehindAnEmptyFrameTheSocketIsReadFirst) {
    sendWhole(frame("") + frame("there already"));
    std::uint32_t readsBefore = 0;
    std::thread sender([&] {
        Sleep(50);
        readsBefore = static_cast<std::uint32_t>(server.reads);
        client.writeAll(frame("later"));
    });
    EXPECT_EQ(next(), "there already");
    EXPECT_EQ(server.reads, 2);
    EXPECT_EQ(next(), "later");
    EXPECT_EQ(server.reads, 2);
    sender.join();
    EXPECT_EQ(readsBefore, 2u) << "still waits in the second read";
}

TEST_F(TCPBufferTest, EmptyFramesFillTheBufferManyTimesOver) {
    std::string bytes;
    for (int i = 0; i < 2000; ++i) {
        bytes += frame("");
    }
    std::thread sender([&] {
        client.writeAll(bytes + frame("at last"));
        client.shutdown(true, false);
    });
    sender.join();
    // Each call that sees the end of the stream consumes one more empty frame.
    int calls = 1;
    while (next() != "at last" && calls < 3000) {
        ++calls;
    }
    EXPECT_LT(calls, 3000);
}

TEST_F(TCPBufferTest, EndOfTheStreamIsNullAgainAndAgain) {
    client.writeAll(frame("last"));
    client.shutdown(true, false);
    EXPECT_EQ(next(), "last");
    EXPECT_EQ(next(), "<end>");
    EXPECT_EQ(next(), "<end>");
    EXPECT_EQ(buffer.available(), 0u);
}

class CutFrame : public TCPBufferTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(CutFrame, EndsTheStreamAsAnyOther) {
    sendWhole(frame("hello").substr(0, GetParam()));
    client.shutdown(true, false);
    EXPECT_EQ(next(), "<end>");
    EXPECT_EQ(buffer.available(), GetParam() < 4 ? GetParam() : GetParam() - 4);
    EXPECT_EQ(next(), "<end>");
    EXPECT_FALSE(buffer.hasMessage());
}

INSTANTIATE_TEST_SUITE_P(, CutFrame, testing::Range<std::size_t>(0, 9));

TEST_F(TCPBufferTest, FailureOfTheSocketComesOutAndLosesNothing) {
    sendWhole(frame("hello").substr(0, 6));
    server.readLimit = 6;
    const std::uint32_t quickly = 10;
    server.setOption(SOL_SOCKET, SO_RCVTIMEO, &quickly, sizeof quickly);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { next(); }), 10060u);
    EXPECT_EQ(buffer.available(), 2u);
    sendWhole(frame("hello").substr(6));
    EXPECT_EQ(next(), "hello");
}

TEST_F(TCPBufferTest, HasAMessageOnceItIsComplete) {
    EXPECT_FALSE(buffer.hasMessage());
    sendWhole(frame("first") + frame("second") + frame("third").substr(0, 8));
    EXPECT_FALSE(buffer.hasMessage());
    EXPECT_EQ(server.reads, 0);
    EXPECT_EQ(next(), "first");
    EXPECT_TRUE(buffer.hasMessage());
    EXPECT_TRUE(buffer.hasMessage());
    EXPECT_EQ(next(), "second");
    EXPECT_FALSE(buffer.hasMessage());
    EXPECT_EQ(buffer.available(), 4u);
    EXPECT_EQ(server.reads, 1);
    client.writeAll(frame("third").substr(8));
    EXPECT_EQ(next(), "third");
    EXPECT_FALSE(buffer.hasMessage());
}

TEST_F(TCPBufferTest, EmptyFrameIsNoMessage) {
    sendWhole(frame("first") + frame("") + frame("second"));
    EXPECT_EQ(next(), "first");
    EXPECT_FALSE(buffer.hasMessage());
    EXPECT_TRUE(buffer.hasMessage());
    EXPECT_EQ(next(), "second");
    EXPECT_EQ(server.reads, 1);
}

TEST_F(TCPBufferTest, PartOfALengthIsNoMessage) {
    sendWhole(frame("first") + frame("second").substr(0, 3));
    EXPECT_EQ(next(), "first");
    EXPECT_FALSE(buffer.hasMessage());
    EXPECT_EQ(buffer.available(), 3u);
}

TEST_F(TCPBufferTest, ResetForgetsTheBytesButNotALength) {
    sendWhole(frame("first") + frame("second").substr(0, 6));
    EXPECT_EQ(next(), "first");
    EXPECT_FALSE(buffer.hasMessage());
    buffer.reset();
    EXPECT_EQ(buffer.available(), 0u);
    client.writeAll("SECOND" + frame("third"));
    EXPECT_EQ(next(), "SECOND");
    EXPECT_EQ(next(), "third");
}

TEST_F(TCPBufferTest, CompactMovesTheBytesToTheStart) {
    EXPECT_EQ(buffer.compact(), 0u);
    sendWhole(frame("first") + frame("second").substr(0, 7));
    EXPECT_EQ(next(), "first");
    const char* const start = server.lastReadTarget;
    EXPECT_EQ(buffer.compact(), 9u);
    EXPECT_EQ(buffer.compact(), 0u);
    EXPECT_EQ(buffer.available(), 7u);
    client.writeAll(frame("second").substr(7));
    EXPECT_EQ(next(), "second");
    EXPECT_EQ(server.lastReadTarget, start + 7);
}

TEST_F(TCPBufferTest, PayloadStaysUntilTheNextCall) {
    sendWhole(frame("first") + frame("second"));
    std::uint32_t length = 0;
    const char* const payload = buffer.nextMessage(length);
    buffer.sendPayload()[0] = 'x';
    buffer.commit(1);
    EXPECT_TRUE(buffer.hasMessage());
    EXPECT_EQ(std::string(payload, length), "first");
}

TEST_F(TCPBufferTest, FramesOfAllSizesInPiecesOfAllSizes) {
    std::mt19937 random(1);
    std::vector<std::string> payloads;
    std::string bytes;
    for (int i = 0; i < 500; ++i) {
        payloads.push_back(pattern(1 + random() % 1020));
        bytes += frame(payloads.back());
    }
    std::thread sender([&] {
        for (std::size_t sent = 0; sent < bytes.size();) {
            const std::size_t size = 1 + random() % 3000;
            client.writeAll(bytes.substr(sent, size));
            sent += size;
        }
        client.shutdown(true, false);
    });
    for (const std::string& payload : payloads) {
        ASSERT_TRUE(next() == payload);
    }
    EXPECT_EQ(next(), "<end>");
    sender.join();
}

// For any input each call returns a payload within the bounds, throws, or returns the end.
TEST_F(TCPBufferTest, NoiseNeverHangsNorLeavesTheBuffer) {
    std::mt19937 random(2);
    for (int round = 0; round < 50; ++round) {
        Connection<WatchedSocket> noisy;
        TCPBuffer noisyBuffer(64, 64, noisy.server.get());
        std::string bytes;
        for (int i = 0; i < 300; ++i) {
            bytes += static_cast<char>(random() % 4 == 0 ? random() % 70 : 0);
        }
        noisy.client.writeAll(bytes);
        noisy.client.shutdown(true, false);
        for (;;) {
            std::uint32_t length = 0;
            try {
                const char* const payload = noisyBuffer.nextMessage(length);
                if (payload == nullptr) {
                    break;
                }
                ASSERT_GE(length, 1u);
                ASSERT_LE(length, 60u);
            } catch (const RuntimeError&) {
                break;
            }
            ASSERT_LE(noisyBuffer.available(), 64u);
        }
    }
}

}  // namespace
