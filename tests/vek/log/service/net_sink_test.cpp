// Messages streamed to clients of the log service.
#include "vek/log/service/net_sink.h"

#include <atomic>

#include "tests/vek/log/service/log_service.h"

namespace {

using namespace vek;
using namespace vek::test;

const char* const storeReport = "Failed to store message in an sink:\n";

class Streaming : public LogServiceTest {
  protected:
    void SetUp() override { start(); }

    // The parameters that follow the text in every message of this thread.
    std::string stamp(const char* level, const log::Message& message) const {
        return "\x1Fpid=" + std::to_string(message.pid) + "\x1Fscope=" + level +
               "\x1Ftid=" + std::to_string(message.tid) +
               "\x1Fwhen=" + std::to_string(message.timestamp.getValue());
    }

    // Submits, and returns the end of the expected telegram.
    std::string submit(log::Logger& source, log::Message* message, const char* level) {
        const std::string expected = stamp(level, *message);
        source.submit(message);
        return expected;
    }

    log::Logger& logger = *manager.getLogger("demo");
};

TEST_F(Streaming, MessageArrivesWithAllItsFields) {
    const auto client = streamingClient();
    const std::string tail = submit(logger, logger.makeMessage(log::WARN, "started"), "WARN");
    EXPECT_EQ(client->receive(), "message:agent=demo\x1Fmsg=started" + tail);
    EXPECT_NE(tail.find("\x1Fpid=" + std::to_string(GetCurrentProcessId()) + "\x1F"),
              std::string::npos);
    EXPECT_NE(tail.find("\x1Ftid=" + std::to_string(GetCurrentThreadId()) + "\x1F"),
              std::string::npos);
}

TEST_F(Streaming, EveryLevelThatALoggerLetsThroughArrives) {
    const auto client = streamingClient();
    manager.setLoggerLevel("demo", log::TRACE);
    VEK_LOG(logger, log::ERR, "a");
    VEK_LOG(logger, log::TRACE, "b");
    manager.setLoggerLevel("demo", log::ERR);
    VEK_LOG(logger, log::WARN, "not passed");
    VEK_LOG(logger, log::ERR, "c");
    for (const char* const expected : {"msg=a", "msg=b", "msg=c"}) {
        EXPECT_NE(client->receive().find(expected), std::string::npos) << expected;
    }
}

TEST_F(Streaming, MessageWithoutAttributesHasNoParametersForThem) {
    const auto client = streamingClient();
    logger.submit(logger.makeMessage(log::WARN, "plain"));
    EXPECT_EQ(client->receive().find("attr_"), std::string::npos);
}

TEST_F(Streaming, AttributesArriveJoinedByBars) {
    const auto client = streamingClient();
    log::AttrMessage* const message = logger.makeAttrMessage(log::WARN, "t");
    message->attrs["b"] = "2";
    message->attrs["a"] = "1";
    const std::string tail = submit(logger, message, "WARN");
    EXPECT_EQ(client->receive(),
              "message:agent=demo\x1F"
              "attr_keys=a|b\x1F"
              "attr_values=1|2\x1Fmsg=t" +
                  tail);
}

TEST_F(Streaming, MessageWithAttributesButWithoutOneHasBareKeys) {
    const auto client = streamingClient();
    const std::string tail = submit(logger, logger.makeAttrMessage(log::WARN, "t"), "WARN");
    EXPECT_EQ(client->receive(),
              "message:agent=demo\x1F"
              "attr_keys\x1F"
              "attr_values\x1Fmsg=t" +
                  tail);
}

TEST_F(Streaming, AttributesOfOneMessageAreGoneInTheNext) {
    const auto client = streamingClient();
    log::AttrMessage* const message = logger.makeAttrMessage(log::WARN, "first");
    message->attrs["a"] = "1";
    logger.submit(message);
    const std::string tail = submit(logger, logger.makeMessage(log::WARN, "second"), "WARN");
    EXPECT_NE(client->receive().find("attr_keys=a"), std::string::npos);
    EXPECT_EQ(client->receive(), "message:agent=demo\x1Fmsg=second" + tail);
}

TEST_F(Streaming, BarsAndSeparatorsAreNotEscaped) {
    const auto client = streamingClient();
    log::AttrMessage* const message = logger.makeAttrMessage(log::WARN, "a\x1Fz=b");
    message->attrs["k|1"] = "v|";
    message->attrs["l"] = "";
    const std::string tail = submit(logger, message, "WARN");
    EXPECT_EQ(client->receive(),
              "message:agent=demo\x1F"
              "attr_keys=k|1|l\x1F"
              "attr_values=v||\x1Fmsg=a\x1Fz=b" +
                  tail);
}

TEST_F(Streaming, TextArrivesUnchanged) {
    const auto client = streamingClient();
    const std::string text = std::string("line 1\r\nline 2\n\n\ttab = : \0 \xFF", 28);
    const std::string tail = submit(logger, logger.makeMessage(log::WARN, text), "WARN");
    EXPECT_EQ(client->receive(), "message:agent=demo\x1Fmsg=" + text + tail);
    const std::string emptyTail = submit(logger, logger.makeMessage(log::WARN, ""), "WARN");
    EXPECT_EQ(client->receive(), "message:agent=demo\x1Fmsg" + emptyTail);
}

TEST_F(Streaming, SinkHasNoSettingsOfItsOwnAndTakesEveryLevel) {
    const auto client = streamingClient();
    const log::SinkConfig config = manager.withSinks(
        [](const auto& sinks, std::uint32_t) { return sinks.front()->getConfig(); });
    EXPECT_FALSE(config.enabled);
    EXPECT_FALSE(config.print_pids);
    EXPECT_FALSE(config.print_tids);
    EXPECT_FALSE(config.print_time);
    EXPECT_EQ(config.max_level, log::INVALID);
    EXPECT_TRUE(config.format.empty());
}

TEST_F(Streaming, NothingOfThePastIsTold) {
    const vek_test::LogCapture capture(manager);
    logger.emit(log::WARN, "before");
    ASSERT_TRUE(capture.waitFor(1));
    const auto client = streamingClient();
    logger.emit(log::WARN, "after");
    EXPECT_NE(client->receive().find("msg=after"), std::string::npos);
}

TEST_F(Streaming, ParametersOfTheRequestAreReportedAndIgnored) {
    ServiceClient client(port);
    client.send("get-messages:level=INFO");
    EXPECT_TRUE(
        errors.waitFor("Got unexpected arguments to 'get-evidence' message. Ignoring them.\n"));
    EXPECT_TRUE(eventually([&] { return sinkCount() == 1; }));
    logger.emit(log::WARN, "t");
    EXPECT_NE(client.receive().find("msg=t"), std::string::npos);
}

TEST_F(Streaming, NothingThatTheClientSendsAfterwardsIsServed) {
    const auto client = streamingClient();
    client->send("change-default-scope:scope=TRACE");
    client->send("get-default-scope:");
    ServiceClient other(port);
    EXPECT_EQ(other.ask("get-default-scope:"), "default-scope:scope=WARN");
    logger.emit(log::WARN, "t");
    EXPECT_NE(client->receive().find("msg=t"), std::string::npos);
}

TEST_F(Streaming, RequestBehindGetMessagesInOneWriteIsLost) {
    ServiceClient client(port);
    client.socket.writeAll(frame("get-messages:") + frame("change-default-scope:scope=TRACE"));
    EXPECT_TRUE(eventually([&] { return sinkCount() == 1; }));
    ServiceClient other(port);
    EXPECT_EQ(other.ask("get-default-scope:"), "default-scope:scope=WARN");
    logger.emit(log::WARN, "t");
    EXPECT_NE(client.receive().find("msg=t"), std::string::npos);
}

TEST_F(Streaming, TwoClientsHaveASinkEachAndBothGetEachMessage) {
    const auto first = streamingClient();
    const auto second = streamingClient();
    EXPECT_EQ(sinkCount(), 2u);
    for (int i = 0; i < 10; ++i) {
        const std::string tail = submit(logger, logger.makeMessage(log::WARN, "t"), "WARN");
        EXPECT_EQ(first->receive(), "message:agent=demo\x1Fmsg=t" + tail);
        EXPECT_EQ(second->receive(), "message:agent=demo\x1Fmsg=t" + tail);
    }
}

std::int32_t sinkNumber(const std::string& evidence) {
    const std::size_t at = evidence.find("id=net#");
    return at == std::string::npos ? -1 : std::stoi(evidence.substr(at + 7));
}

TEST_F(Streaming, NumbersGoOnCountingWhenASinkHasGone) {
    ServiceClient asking(port);
    auto client = streamingClient();
    const std::vector<std::string> before = asking.sinks();
    ASSERT_EQ(before.size(), 1u);
    client.reset();
    EXPECT_TRUE(eventually([&] {
        logger.emit(log::WARN, "t");
        return sinkCount() == 0;
    }));
    client = streamingClient();
    const std::vector<std::string> after = asking.sinks();
    ASSERT_EQ(after.size(), 1u);
    EXPECT_EQ(sinkNumber(after[0]), sinkNumber(before[0]) + 1);
}

TEST_F(Streaming, ClientThatHasGoneIsNoticedAndReportedOnce) {
    auto client = streamingClient();
    logger.emit(log::WARN, "t");
    EXPECT_NE(client->receive(), "(end)");
    client.reset();
    EXPECT_TRUE(eventually([&] {
        logger.emit(log::WARN, "t");
        return sinkCount() == 0;
    }));
    for (int i = 0; i < 10; ++i) {
        logger.emit(log::WARN, "t");
    }
    manager.shutdown();
    const std::string report = errors.text();
    EXPECT_EQ(report.rfind(storeReport, 0), 0u) << report;
    EXPECT_EQ(report.find(storeReport, 1), std::string::npos) << report;
    EXPECT_TRUE(report.ends_with("\n\nRemoving this sink ...\n")) << report;
}

TEST_F(Streaming, ClientThatHasGoneDoesNotDisturbTheOthers) {
    auto goes = streamingClient();
    const auto stays = streamingClient();
    goes.reset();
    for (int i = 0; i < 50; ++i) {
        logger.emit(log::WARN, std::to_string(i));
    }
    for (int i = 0; i < 50; ++i) {
        EXPECT_NE(stays->receive().find("msg=" + std::to_string(i) + "\x1F"), std::string::npos);
    }
    EXPECT_EQ(sinkCount(), 1u);
}

TEST_F(Streaming, LargestTelegramPassesAndOneByteMoreEndsTheSink) {
    const auto client = streamingClient();
    // All but the text is of the same length in each telegram.
    logger.submit(logger.makeMessage(log::WARN, "x"));
    const std::size_t rest = client->receive().size() - 1;
    const std::string fits(16380 - rest, 'y');
    const std::string tail = submit(logger, logger.makeMessage(log::WARN, fits), "WARN");
    EXPECT_EQ(client->receive(), "message:agent=demo\x1Fmsg=" + fits + tail);
    EXPECT_EQ(errors.text(), "");
    logger.emit(log::WARN, fits + "y");
    EXPECT_EQ(client->receive(), "(end)");
    EXPECT_TRUE(eventually([&] { return sinkCount() == 0; }));
    EXPECT_TRUE(errors.waitFor("buffer = 16384, encountered = 16381\n\nRemoving this sink ...\n"));
}

TEST_F(Streaming, ShutdownEndsTheConnectionBehindTheLastMessage) {
    const auto client = streamingClient();
    for (int i = 0; i < 1000; ++i) {
        logger.emit(log::WARN, std::to_string(i));
    }
    manager.shutdown();
    for (int i = 0; i < 1000; ++i) {
        ASSERT_NE(client->receive().find("msg=" + std::to_string(i) + "\x1F"), std::string::npos);
    }
    EXPECT_EQ(client->receive(), "(end)");
    EXPECT_EQ(errors.text(), "");
}

TEST_F(Streaming, StreamGoesOnWhenTheServerHasStopped) {
    const auto client = streamingClient();
    server->stop();
    logger.emit(log::WARN, "t");
    EXPECT_NE(client->receive().find("msg=t"), std::string::npos);
}

// Streams to all `clients` while levels change, and expects each to get every message that
// is beyond doubt, in order.
void streamWhileLevelsChange(std::uint16_t port, log::Logger& logger,
                             const std::vector<std::unique_ptr<ServiceClient>>& clients) {
    constexpr int messages = 400;
    std::atomic<bool> done = false;
    vek_test::ScopedThread changer([&] {
        ServiceClient changing(port);
        for (int i = 0; !done; ++i) {
            const std::string level = i % 2 == 0 ? "INFO" : "TRACE";
            EXPECT_EQ(changing.ask("change-scope:demo=" + level), "change-scope:ack");
            EXPECT_EQ(changing.ask("change-default-scope:scope=" + level),
                      "change-default-scope:ack");
        }
    });
    vek_test::ScopedThread source([&] {
        for (int i = 0; i < messages; ++i) {
            VEK_LOG(logger, log::WARN, i);
            VEK_LOG(logger, log::DEBUG, "sometimes");
        }
    });
    for (const auto& client : clients) {
        for (int next = 0; next < messages;) {
            const std::string telegram = client->receive();
            if (telegram.find("msg=sometimes\x1F") == std::string::npos) {
                ASSERT_NE(telegram.find("msg=" + std::to_string(next) + "\x1F"), std::string::npos)
                    << telegram;
                ++next;
            }
        }
    }
    done = true;
}

TEST_F(Streaming, MessagesReachManyClientsWhileLevelsChange) {
    std::vector<std::unique_ptr<ServiceClient>> clients;
    for (const std::size_t count : {1u, 2u, 20u}) {
        while (clients.size() < count) {
            clients.push_back(streamingClient());
        }
        streamWhileLevelsChange(port, logger, clients);
        // A message left over from this round would come before those of the next.
        clients.clear();
        EXPECT_TRUE(eventually([&] {
            VEK_LOG(logger, log::WARN, "flush");
            return sinkCount() == 0;
        }));
    }
}

// What a stream holds between its ends: messages wait there until somebody reads them.
constexpr int moreThanFits = 12000;

TEST_F(Streaming, SlowClientHoldsUpTheOutputAndGetsEverything) {
    const auto slow = streamingClient();
    const std::string text(1000, 's');
    std::atomic<int> logged = 0;
    vek_test::ScopedThread source([&] {
        for (int i = 0; i < moreThanFits * 2; ++i) {
            logger.emit(log::WARN, text);
            ++logged;
        }
    });
    // The queue is full in the end, and the statements wait.
    int last = -1;
    EXPECT_TRUE(eventually([&] {
        const int before = last;
        last = logged;
        Sleep(200);
        return last == before && last > static_cast<int>(log::Manager::queueCapacity);
    }));
    EXPECT_LT(logged, moreThanFits * 2);
    // And everything goes on once it reads.
    for (int i = 0; i < moreThanFits * 2; ++i) {
        ASSERT_NE(slow->receive().find(text), std::string::npos);
    }
    source.join();
}

TEST_F(Streaming, ProcessIsFreeAgainWhenTheClientThatDoesNotReadCloses) {
    auto stuck = streamingClient();
    const std::string text(1000, 's');
    std::atomic<bool> isDone = false;
    vek_test::ScopedThread source([&] {
        for (int i = 0; i < moreThanFits * 2; ++i) {
            logger.emit(log::WARN, text);
        }
        isDone = true;
    });
    Sleep(1500);
    EXPECT_FALSE(isDone);
    stuck.reset();
    source.join();
    EXPECT_TRUE(errors.waitFor(storeReport));
    EXPECT_EQ(sinkCount(), 0u);
}

TEST_F(Streaming, DiscoveryAndTheDefaultLevelAreServedWhileAClientDoesNotRead) {
    auto stuck = streamingClient();
    const std::string text(1000, 's');
    vek_test::ScopedThread source([&] {
        for (int i = 0; i < moreThanFits; ++i) {
            logger.emit(log::WARN, text);
        }
    });
    Sleep(500);
    EXPECT_NE(discovery->ask("discover-request:"), "");
    EXPECT_EQ(ServiceClient(port).ask("get-default-scope:"), "default-scope:scope=WARN");
    // What needs the manager has to wait.
    ServiceClient asking(port);
    asking.send("evidence-info:");
    Sleep(200);
    stuck.reset();
    std::string reply = asking.receive();
    if (reply != "evidence-info:end-of-reply") {
        // It got its turn ahead of the send that tells the sink that its client has gone.
        EXPECT_TRUE(reply.starts_with("evidence-info:")) << reply;
        reply = asking.receive();
    }
    EXPECT_EQ(reply, "evidence-info:end-of-reply");
}

TEST_F(Streaming, ClientThatReadsByteByByteGetsEverything) {
    const auto client = streamingClient();
    for (int i = 0; i < 20; ++i) {
        logger.emit(log::WARN, std::to_string(i));
    }
    for (int i = 0; i < 20; ++i) {
        std::string bytes;
        for (std::size_t size = 4; bytes.size() < size;) {
            bytes += client->socket.readExactly(1);
            if (bytes.size() == 4) {
                size += static_cast<unsigned char>(bytes[3]);
            }
            Sleep(1);
        }
        EXPECT_NE(bytes.find("msg=" + std::to_string(i) + "\x1F"), std::string::npos);
    }
}

// --- the sink by itself ---

class NetSinkAlone : public WinsockTest {
  protected:
    Connection<WatchedSocket> connection;

    std::unique_ptr<log::NetSink> makeSink() {
        watched = connection.server.get();
        auto buffer = std::make_unique<net::TCPBuffer>(16384, 1024, watched);
        return std::make_unique<log::NetSink>(log::SinkConfig(), std::move(connection.server),
                                              std::move(buffer));
    }
    WatchedSocket* watched = nullptr;
};

TEST_F(NetSinkAlone, EachMessageLeavesInOneCall) {
    const auto sink = makeSink();
    const log::Message message("a", std::string(10000, 'x'), log::WARN, 1);
    for (int i = 1; i <= 3; ++i) {
        sink->store(message);
        EXPECT_EQ(watched->writes, i);
    }
}

TEST_F(NetSinkAlone, KnowsItsTypeItsNameAndItsPeer) {
    const auto first = makeSink();
    EXPECT_EQ(first->type(), log::sinkNet);
    EXPECT_EQ(first->id().substr(0, 4), "net#");
    net::IP4Address client;
    connection.client.localAddress(client);
    EXPECT_EQ(first->peer().port(), client.port());
    EXPECT_EQ(first->peer().toString(), "127.0.0.1");
}

TEST_F(NetSinkAlone, SettingsAreACopy) {
    log::SinkConfig settings;
    settings.max_level = log::ERR;
    auto buffer = std::make_unique<net::TCPBuffer>(16384, 1024, connection.server.get());
    const log::NetSink sink(settings, std::move(connection.server), std::move(buffer));
    settings.max_level = log::TRACE;
    EXPECT_EQ(sink.getConfig().max_level, log::ERR);
}

TEST_F(NetSinkAlone, MessageToASocketThatIsNotOpenIsDropped) {
    const auto sink = makeSink();
    watched->close();
    EXPECT_NO_THROW(sink->store(log::Message("a", "t", log::WARN, 1)));
    EXPECT_NO_THROW(sink->store(log::AttrMessage("a", "t", log::WARN, 1)));
    EXPECT_EQ(watched->writes, 0);
}

TEST_F(NetSinkAlone, DestructorEndsTheConnectionAndToleratesOneThatHasEnded) {
    const SharedErrors errors;
    auto sink = makeSink();
    sink.reset();
    EXPECT_EQ(connection.client.readExactly(1), "");
    Connection<WatchedSocket> other;
    auto buffer = std::make_unique<net::TCPBuffer>(16384, 1024, other.server.get());
    WatchedSocket* const socket = other.server.get();
    sink = std::make_unique<log::NetSink>(log::SinkConfig(), std::move(other.server),
                                          std::move(buffer));
    socket->close();
    sink.reset();
    EXPECT_EQ(errors.text(), "");
}

TEST_F(NetSinkAlone, DestructorEndsTheConnectionAlsoForOtherHandlesOfIt) {
    auto sink = makeSink();
    HANDLE other = nullptr;
    ASSERT_NE(
        DuplicateHandle(GetCurrentProcess(), reinterpret_cast<HANDLE>(watched->nativeHandle()),
                        GetCurrentProcess(), &other, 0, FALSE, DUPLICATE_SAME_ACCESS),
        0);
    sink.reset();
    EXPECT_EQ(connection.client.readExactly(1), "");
    CloseHandle(other);
}

TEST_F(NetSinkAlone, SocketThatCanNotBeSetUpIsClosedAndTheFailureTold) {
    watched = connection.server.get();
    watched->close();
    auto buffer = std::make_unique<net::TCPBuffer>(16384, 1024, watched);
    EXPECT_EQ(codeThrownBy<NetError>([&] {
                  log::NetSink(log::SinkConfig(), std::move(connection.server), std::move(buffer));
              }),
              static_cast<std::uint32_t>(WSAENOTSOCK));
}

}  // namespace
