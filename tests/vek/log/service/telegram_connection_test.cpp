// Telegrams on a connection; the peer sees and sends bare bytes.
#include <thread>

#include "tests/vek/log/captured_errors.h"
#include "tests/vek/net/loopback.h"
#include "tests/vek/net/watched_socket.h"
#include "vek/log/telegram.h"
#include "vek/net/tcp_buffer.h"

namespace {

using vek::log::Telegram;
using namespace vek::test;

class TelegramConnection : public WinsockTest {
  protected:
    // The next frame that the telegram's side has sent, as bytes.
    std::string sentFrame() {
        const std::string prefix = client.readExactly(4);
        std::uint32_t length = 0;
        for (const char byte : prefix) {
            length = length << 8 | static_cast<unsigned char>(byte);
        }
        return prefix + client.readExactly(length);
    }

    Connection<WatchedSocket> connection;
    ClientSocket& client = connection.client;
    vek::net::TCPBuffer buffer{16384, 1024, connection.server.get()};
    Telegram telegram{&buffer};
};

TEST_F(TelegramConnection, RequestAndReplyAreTheProtocolsExamples) {
    client.writeAll(std::string("\0\0\0\x12get-default-scope:", 22));
    EXPECT_TRUE(telegram.receive());
    EXPECT_EQ(telegram.type, "get-default-scope");
    EXPECT_TRUE(telegram.params.empty());
    telegram.type = "default-scope";
    telegram.addParam("scope", "INFO");
    telegram.send();
    EXPECT_EQ(sentFrame(), std::string("\0\0\0\x18"
                                       "default-scope:scope=INFO",
                                       28));
    client.writeAll(
        std::string("\0\0\0\x1F"
                    "change-default-scope:scope=WARN",
                    35));
    EXPECT_TRUE(telegram.receive());
    telegram.sendAck();
    EXPECT_EQ(sentFrame(), std::string("\0\0\0\x18"
                                       "change-default-scope:ack",
                                       28));
}

TEST_F(TelegramConnection, MessageIsTheProtocolsExample) {
    telegram.type = "message";
    telegram.addParam("agent", "demo");
    telegram.addParam("pid", 4242);
    telegram.addParam("tid", 77);
    telegram.addParam("when", 1700000000123);
    telegram.addParam("scope", "INFO");
    telegram.addParam("msg", "started");
    telegram.send();
    EXPECT_EQ(sentFrame(),
              std::string("\0\0\0\x4C", 4) +
                  "message:agent=demo\x1Fmsg=started\x1Fpid=4242\x1Fscope=INFO\x1Ftid=77\x1F"
                  "when=1700000000123");
}

TEST_F(TelegramConnection, TelegramLeavesInOneCall) {
    telegram.type = "message";
    telegram.addParam("msg", std::string(10000, 'x'));
    telegram.send();
    EXPECT_EQ(connection.server->writes, 1);
}

TEST_F(TelegramConnection, ReceivingReplacesWhatWasThere) {
    telegram.type = "old";
    telegram.addParam("k", "v");
    client.writeAll(frame("new:m=1") + frame("newer:"));
    EXPECT_TRUE(telegram.receive());
    EXPECT_EQ(telegram.type, "new");
    EXPECT_EQ(telegram.params.size(), 1u);
    EXPECT_EQ(telegram.param("m"), "1");
    EXPECT_TRUE(telegram.receive());
    EXPECT_EQ(telegram.type, "newer");
    EXPECT_TRUE(telegram.params.empty());
    EXPECT_FALSE(telegram.closed);
}

TEST_F(TelegramConnection, ReceivingBlocksUntilTheWholeFrameIsThere) {
    std::thread sender([&] {
        for (const char byte : frame("x:a=1")) {
            client.writeAll(std::string(1, byte));
            Sleep(2);
        }
    });
    EXPECT_TRUE(telegram.receive());
    EXPECT_EQ(telegram.param("a"), "1");
    sender.join();
}

TEST_F(TelegramConnection, EndOfTheStreamClosesAnEmptyTelegram) {
    telegram.type = "old";
    telegram.addParam("k", "v");
    client.writeAll(frame("cut:off").substr(0, 6));
    client.shutdown(true, false);
    EXPECT_FALSE(telegram.receive());
    EXPECT_TRUE(telegram.closed);
    EXPECT_EQ(telegram.type, "");
    EXPECT_TRUE(telegram.params.empty());
}

TEST_F(TelegramConnection, TextThatIsNoTelegramIsAnErrorAndTheNextOneIsReceived) {
    telegram.type = "old";
    client.writeAll(frame("no colon") + frame("x:"));
    EXPECT_EQ(textThrownBy<Telegram::ParseError>([&] { telegram.receive(); }),
              "ParseError: Missing separator ':' in \"no colon\"");
    EXPECT_EQ(telegram.type, "");
    EXPECT_FALSE(telegram.closed);
    EXPECT_TRUE(telegram.receive());
    EXPECT_EQ(telegram.type, "x");
}

TEST_F(TelegramConnection, LargestTelegramIsReceivedAndALargerOneIsAnError) {
    client.writeAll(frame("x:" + std::string(1018, 'k')) + frame("x:" + std::string(1019, 'k')));
    EXPECT_TRUE(telegram.receive());
    EXPECT_TRUE(telegram.hasParam(std::string(1018, 'k')));
    EXPECT_EQ(textThrownBy<vek::RuntimeError>([&] { telegram.receive(); }),
              "TCPBuffer received a message that is longer than can ever be received: buffer size "
              "= 1024, encountered size = 1021");
    EXPECT_FALSE(telegram.closed);
}

TEST_F(TelegramConnection, LargestTelegramIsSentAndALargerOneIsAnError) {
    telegram.type = "x";
    telegram.addParam("k", std::string(16376, 'v'));
    telegram.send();
    EXPECT_TRUE(sentFrame() == frame("x:k=" + std::string(16376, 'v')));
    telegram.clearParams();
    telegram.addParam("k", std::string(16377, 'v'));
    EXPECT_EQ(textThrownBy<vek::RuntimeError>([&] { telegram.send(); }),
              "TCPBuffer: Commited send buffer is larger than fits into buffer: buffer = 16384, "
              "encountered = 16381");
    // Far beyond the buffer, too; nothing is overwritten and the next one goes out.
    telegram.clearParams();
    telegram.addParam("k", std::string(5000000, 'v'));
    EXPECT_THROW(telegram.send(), vek::RuntimeError);
    telegram.clearParams();
    telegram.send();
    EXPECT_EQ(sentFrame(), frame("x:"));
}

TEST_F(TelegramConnection, AckAndErrorLeaveTheTelegramAsItIs) {
    telegram.type = "persist-config";
    telegram.addParam("k", "v");
    telegram.sendAck();
    telegram.sendError("can't write: 5");
    telegram.sendError("");
    EXPECT_EQ(sentFrame(), frame("persist-config:ack"));
    EXPECT_EQ(sentFrame(), frame("persist-config:error=can't write: 5"));
    EXPECT_EQ(sentFrame(), frame("persist-config:error"));
    telegram.send();
    EXPECT_EQ(sentFrame(), frame("persist-config:k=v"));
}

TEST_F(TelegramConnection, FailureOfTheSocketComesOut) {
    connection.server->close();
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { telegram.receive(); }), 10038u);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { telegram.send(); }), 10038u);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { telegram.sendAck(); }), 10038u);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { telegram.sendError("x"); }), 10038u);
    EXPECT_EQ(codeThrownBy<vek::NetError>([&] { telegram.waitForAck(); }), 10038u);
}

TEST(TelegramWithoutConnection, CanBeNeitherReceivedNorSent) {
    Telegram telegram;
    EXPECT_THROW(telegram.receive(), vek::UsageError);
    EXPECT_THROW(telegram.send(), vek::UsageError);
    EXPECT_THROW(telegram.sendAck(), vek::UsageError);
    EXPECT_THROW(telegram.sendError("x"), vek::UsageError);
    EXPECT_THROW(telegram.waitForAck(), vek::UsageError);
}

// The sender's side of an ack.

class WaitForAck : public TelegramConnection {
  protected:
    WaitForAck() { telegram.type = "change-scope"; }

    bool answerTo(const std::string& reply) {
        client.writeAll(frame(reply));
        return telegram.waitForAck();
    }
};

TEST_F(WaitForAck, GetsIt) {
    const CapturedErrors errors;
    telegram.addParam("k", "v");
    EXPECT_TRUE(answerTo("change-scope:ack"));
    EXPECT_TRUE(answerTo("change-scope:ack=whatever"));
    EXPECT_EQ(telegram.type, "change-scope");
    EXPECT_EQ(telegram.param("k"), "v");
    EXPECT_EQ(errors.text(), "");
}

TEST_F(WaitForAck, UnderstandsWhatSendAckAndSendErrorSay) {
    vek::net::TCPBuffer clientBuffer(1024, 1024, &client);
    Telegram asked(&clientBuffer);
    asked.type = "change-scope";
    telegram.sendAck();
    EXPECT_TRUE(asked.waitForAck());
    telegram.sendError("refused");
    EXPECT_EQ(textThrownBy<Telegram::LogicalError>([&] { asked.waitForAck(); }),
              "LogicalError: refused");
}

TEST_F(WaitForAck, ErrorOfThePeerIsALogicalError) {
    const CapturedErrors errors;
    EXPECT_EQ(textThrownBy<Telegram::LogicalError>([&] { answerTo("change-scope:error=a:b=c"); }),
              "LogicalError: a:b=c");
    EXPECT_EQ(textThrownBy<Telegram::LogicalError>([&] { answerTo("change-scope:error"); }),
              "LogicalError: ");
    EXPECT_EQ(errors.text(), "");
}

TEST_F(WaitForAck, EndOfTheStreamIsFalseWithoutAWord) {
    const CapturedErrors errors;
    client.shutdown(true, false);
    EXPECT_FALSE(telegram.waitForAck());
    EXPECT_EQ(errors.text(), "");
}

struct Reply {
    const char* text;
    const char* report;
};

void PrintTo(const Reply& reply, std::ostream* stream) {
    *stream << testing::PrintToString(std::string(reply.text));
}

class UnexpectedReply : public WaitForAck, public testing::WithParamInterface<Reply> {};

TEST_P(UnexpectedReply, IsFalseAndReported) {
    const CapturedErrors errors;
    EXPECT_FALSE(answerTo(GetParam().text));
    EXPECT_EQ(errors.text(), GetParam().report);
    EXPECT_EQ(errors.flushedText(), GetParam().report);
}

INSTANTIATE_TEST_SUITE_P(
    , UnexpectedReply,
    testing::Values(Reply{"unsupported:", "Got 'unsupported' instead of Ack\n"},
                    Reply{":ack", "Got '' instead of Ack\n"},
                    Reply{"Change-Scope:ack", "Got 'Change-Scope' instead of Ack\n"},
                    Reply{"%s%n:error=x", "Got '%s%n' instead of Ack\n"},
                    Reply{"change-scope:", "Got 0 parameters instead of one\n"},
                    Reply{"change-scope:ack\x1F"
                          "ack",
                          "Got 2 parameters instead of one\n"},
                    Reply{"change-scope:ack\x1F"
                          "error=x\x1F"
                          "k",
                          "Got 3 parameters instead of one\n"},
                    Reply{"change-scope:ok", "Got unexpected reply waiting for ACK\n"},
                    Reply{"change-scope:ACK", "Got unexpected reply waiting for ACK\n"},
                    Reply{"change-scope:=ack", "Got unexpected reply waiting for ACK\n"}));

TEST_F(WaitForAck, ReplyThatIsNoTelegramIsAParseError) {
    EXPECT_EQ(textThrownBy<Telegram::ParseError>([&] { answerTo("ack"); }),
              "ParseError: Missing separator ':' in \"ack\"");
}

TEST_F(WaitForAck, TakesOneReplyOnly) {
    client.writeAll(frame("change-scope:error=x") + frame("change-scope:ack"));
    EXPECT_THROW(telegram.waitForAck(), Telegram::LogicalError);
    EXPECT_TRUE(telegram.waitForAck());
}

}  // namespace
