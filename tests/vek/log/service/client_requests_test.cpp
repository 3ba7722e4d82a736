// What a configuration client may ask for, over TCP: every type, with parameters good and bad.
#include <algorithm>

#include "tests/vek/log/service/log_service.h"
#include "vek/log/sinks/file_sink.h"

namespace {

using namespace vek;
using namespace vek::test;
using log::Level;

const char* const clientReport =
    "log-server: caught exception while processing a configuration client/message:\n\n";

class ClientRequests : public LogServiceTest {
  protected:
    void SetUp() override {
        start();
        client = std::make_unique<ServiceClient>(port);
    }

    std::string ask(const std::string& telegram) { return client->ask(telegram); }

    Level levelOf(const std::string& name) { return manager.getLogger(name)->level(); }

    // Asks on a connection of its own, which is to be closed without a reply.
    bool closesAnother(const std::string& telegram) {
        ServiceClient other(port);
        other.send(telegram);
        return other.isClosedByServer();
    }

    std::unique_ptr<ServiceClient> client;
};

// --- get-default-scope, change-default-scope ---

TEST_F(ClientRequests, DefaultLevelIsToldByName) {
    EXPECT_EQ(ask("get-default-scope:"), "default-scope:scope=WARN");
    // Whatever follows the colon.
    EXPECT_EQ(ask("get-default-scope:a=1\x1Fscope=TRACE"), "default-scope:scope=WARN");
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ClientRequests, EachLevelCanBecomeTheDefaultInAnyCase) {
    const log::Logger& follower = *manager.getLogger("follower");
    const struct {
        const char* sent;
        Level level;
        const char* name;
    } rows[] = {
        {"OFF", log::OFF, "OFF"},    {"ERR", log::ERR, "ERR"},       {"warn", log::WARN, "WARN"},
        {"Info", log::INFO, "INFO"}, {"dEBUG", log::DEBUG, "DEBUG"}, {"TRACE", log::TRACE, "TRACE"},
        {" err\t", log::ERR, "ERR"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ask(std::string("change-default-scope:scope=") + row.sent),
                  "change-default-scope:ack");
        EXPECT_EQ(ask("get-default-scope:"), std::string("default-scope:scope=") + row.name);
        EXPECT_EQ(follower.level(), row.level);
        EXPECT_EQ(levelOf(std::string("new at ") + row.sent), row.level);
    }
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ClientRequests, DefaultLevelNeedsExactlyOneParameterOfTheRightName) {
    const std::string refusal =
        "change-default-scope:error=invalid type/number of arguments encountered";
    for (const char* const params :
         {"", "scope=INFO\x1Fx", "scope=INFO\x1Fscope=INFO", "level=INFO", "Scope=INFO", "=INFO"}) {
        EXPECT_EQ(ask(std::string("change-default-scope:") + params), refusal) << params;
    }
    // One reply each, and nothing changed.
    EXPECT_EQ(ask("get-default-scope:"), "default-scope:scope=WARN");
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ClientRequests, RefusedDefaultLevelGivesAnErrorAndAnAck) {
    EXPECT_EQ(ask("change-default-scope:scope=DEFAULT"),
              "change-default-scope:error=Usage error: log manager: bad default level value");
    EXPECT_EQ(client->receive(), "change-default-scope:ack");
    EXPECT_EQ(ask("change-default-scope:scope=default"),
              "change-default-scope:error=Usage error: log manager: bad default level value");
    EXPECT_EQ(client->receive(), "change-default-scope:ack");
    EXPECT_EQ(ask("get-default-scope:"), "default-scope:scope=WARN");
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ClientRequests, DefaultLevelThatIsNoneClosesTheConnection) {
    for (const char* const level : {"NOPE", "INVALID", "", "3", "INFO="}) {
        EXPECT_TRUE(closesAnother(std::string("change-default-scope:scope=") + level)) << level;
        EXPECT_TRUE(errors.waitFor(clientReport + ("Usage error: Invalid LEVEL string \"" +
                                                   std::string(level) + "\"\n\n")))
            << errors.text();
    }
    EXPECT_EQ(ask("get-default-scope:"), "default-scope:scope=WARN");
}

// --- change-scope ---

TEST_F(ClientRequests, LevelsOfLoggersAreChangedOneByOne) {
    manager.getLogger("a");
    manager.getLogger("b");
    EXPECT_EQ(ask("change-scope:a=INFO"), "change-scope:ack");
    EXPECT_EQ(levelOf("a"), log::INFO);
    EXPECT_EQ(levelOf("b"), log::WARN);
    EXPECT_EQ(ask("change-scope:a=trace\x1F"
                  "b=Off"),
              "change-scope:ack");
    EXPECT_EQ(levelOf("a"), log::TRACE);
    EXPECT_EQ(levelOf("b"), log::OFF);
    // Of several for one logger the last counts.
    EXPECT_EQ(ask("change-scope:a=ERR\x1F"
                  "a=DEBUG"),
              "change-scope:ack");
    EXPECT_EQ(levelOf("a"), log::DEBUG);
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ClientRequests, ChangingNoLevelsIsAcknowledged) {
    EXPECT_EQ(ask("change-scope:"), "change-scope:ack");
    EXPECT_EQ(ask("change-scope:\x1F\x1F"), "change-scope:ack");
}

TEST_F(ClientRequests, LoggerSetToDefaultFollowsTheDefaultLevelAgain) {
    const log::Logger& logger = *manager.getLogger("a");
    EXPECT_EQ(ask("change-scope:a=TRACE"), "change-scope:ack");
    EXPECT_FALSE(logger.usesDefault());
    EXPECT_EQ(ask("change-scope:a=default"), "change-scope:ack");
    EXPECT_TRUE(logger.usesDefault());
    EXPECT_EQ(logger.level(), log::WARN);
    EXPECT_EQ(ask("change-default-scope:scope=INFO"), "change-default-scope:ack");
    EXPECT_EQ(logger.level(), log::INFO);
}

TEST_F(ClientRequests, LevelOfALoggerThatDoesNotExistIsKeptForLater) {
    EXPECT_EQ(ask("change-scope:still unborn=TRACE"), "change-scope:ack");
    EXPECT_EQ(ask("agent-list:").find("still unborn"), std::string::npos);
    EXPECT_EQ(levelOf("still unborn"), log::TRACE);
    EXPECT_NE(ask("agent-list:").find("still unborn=TRACE"), std::string::npos);
}

TEST_F(ClientRequests, BadLevelClosesTheConnectionAndWhatStoodAheadOfItStays) {
    for (const char* const name : {"a", "m", "z"}) {
        manager.getLogger(name);
    }
    EXPECT_TRUE(
        closesAnother("change-scope:z=INFO\x1Fm=NOPE\x1F"
                      "a=TRACE"));
    // In the order of their keys.
    EXPECT_EQ(levelOf("a"), log::TRACE);
    EXPECT_EQ(levelOf("m"), log::WARN);
    EXPECT_EQ(levelOf("z"), log::WARN);
    EXPECT_EQ(errors.text(),
              clientReport + std::string("Usage error: Invalid LEVEL string \"NOPE\"\n\n"));
    for (const char* const level : {"INVALID", "", "1"}) {
        EXPECT_TRUE(closesAnother(std::string("change-scope:a=") + level)) << level;
    }
    EXPECT_TRUE(closesAnother("change-scope:a"));
    EXPECT_EQ(ask("get-default-scope:"), "default-scope:scope=WARN");
}

// --- agent-list ---

TEST_F(ClientRequests, LoggersAreListedWithTheirLevelsOrAsDefault) {
    for (const log::Logger* const logger : manager.listLoggers()) {
        ASSERT_EQ(logger, nullptr) << logger->name();
    }
    EXPECT_EQ(ask("agent-list:"), "agent-list:");
    manager.getLogger("b");
    manager.getLogger("a");
    EXPECT_EQ(ask("change-scope:a=INFO"), "change-scope:ack");
    EXPECT_EQ(ask("agent-list:"),
              "agent-list:a=INFO\x1F"
              "b=default");
    // Upper case first. A level of its own that equals the default is reported as such.
    manager.getLogger("Z");
    EXPECT_EQ(ask("change-scope:b=WARN"), "change-scope:ack");
    EXPECT_EQ(ask("agent-list:x=1"),
              "agent-list:Z=default\x1F"
              "a=INFO\x1F"
              "b=WARN");
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ClientRequests, LoggersThatDoNotFitIntoAReplyCostTheConnection) {
    for (int i = 0; i < 100; ++i) {
        manager.getLogger(std::to_string(i) + std::string(200, 'n'));
    }
    EXPECT_TRUE(closesAnother("agent-list:"));
    EXPECT_NE(errors.text().find(clientReport + std::string("TCPBuffer: Commited send buffer is "
                                                            "larger than fits into buffer: ")),
              std::string::npos)
        << errors.text();
    EXPECT_EQ(ask("get-default-scope:"), "default-scope:scope=WARN");
}

// --- evidence-info ---

TEST_F(ClientRequests, WithoutSinksTheEndOfTheReplyIsAll) {
    EXPECT_EQ(ask("evidence-info:"), "evidence-info:end-of-reply");
    EXPECT_EQ(ask("evidence-info:x=1"), "evidence-info:end-of-reply");
    EXPECT_EQ(errors.text(), "");
}

class NamedSink : public log::Sink {
  public:
    NamedSink(bool enabled, bool formatted, Level maxLevel) : Sink(config) {
        config.enabled = enabled;
        config.max_level = maxLevel;
        if (formatted) {
            config.format = log::compileFormat("{msg}");
        }
    }
    int type() const override { return log::sinkStdout; }
    void store(const log::Message&) override {}
    std::string id() const override { return "stdout"; }

  private:
    log::SinkConfig config;
};

TEST_F(ClientRequests, SinksAreToldInTheirOrderWithTheirSettings) {
    manager.addSink(new NamedSink(true, false, log::INFO));
    manager.addSink(new NamedSink(false, true, log::INVALID));
    const std::vector<std::string> expected = {
        "evidence-info:custom_format=false\x1F"
        "enabled=true\x1Fid=stdout\x1Fmax_scope=INFO",
        "evidence-info:custom_format=true\x1F"
        "enabled=false\x1Fid=stdout\x1Fmax_scope=INVALID"};
    EXPECT_EQ(client->sinks(), expected);
}

TEST_F(ClientRequests, FileSinkIsToldWithItsPath) {
    log::FileSinkConfig config("C:\\no such directory\\a.log");
    config.enabled = false;
    config.max_level = log::DEBUG;
    auto* const sink = new log::FileSink(config);
    const std::string id = sink->id();
    manager.addSink(sink);
    EXPECT_EQ(
        client->sinks(),
        std::vector<std::string>{"evidence-info:custom_format=false\x1F"
                                 "enabled=false\x1Fid=" +
                                 id + "\x1Fmax_scope=DEBUG\x1Fpath=C:\\no such directory\\a.log"});
}

TEST_F(ClientRequests, NetworkSinkIsToldWithItsPeer) {
    const auto streaming = streamingClient();
    const std::vector<std::string> sinks = client->sinks();
    ASSERT_EQ(sinks.size(), 1u);
    const std::string start =
        "evidence-info:custom_format=false\x1F"
        "enabled=false\x1Fid=net#";
    EXPECT_EQ(sinks[0].substr(0, start.size()), start);
    EXPECT_TRUE(sinks[0].ends_with("\x1Fmax_scope=INVALID\x1Fpeer=127.0.0.1:" +
                                   std::to_string(streaming->address().port())))
        << sinks[0];
}

TEST_F(ClientRequests, NetworkSinkOfAClientThatWasResetIsToldWithThePeerThatItHad) {
    std::string peer;
    {
        const auto streaming = streamingClient();
        std::ostringstream text;
        text << streaming->address();
        peer = text.str();
        const linger reset = {1, 0};
        streaming->socket.setOption(SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    }
    // The reset may be on its way, and the system then still knows the peer.
    for (int i = 0; i < 10; ++i) {
        ServiceClient asker(port);
        const std::vector<std::string> sinks = asker.sinks();
        ASSERT_EQ(sinks.size(), 1u);
        EXPECT_TRUE(sinks[0].ends_with("\x1Fpeer=" + peer)) << sinks[0];
        EXPECT_EQ(asker.ask("get-default-scope:"), "default-scope:scope=WARN");
        Sleep(20);
    }
}

TEST_F(ClientRequests, NoMessageIsDispatchedDuringTheReplyAboutSinks) {
    // A sink that is busy holds the reply up.
    vek_test::Door door;
    {
        const vek_test::LogCapture capture(manager, log::INVALID,
                                           [&](const log::Message&) { door.pass(); });
        VEK_LOG(*manager.getLogger("x"), log::WARN, "held");
        ASSERT_TRUE(door.isReached());
        client->send("evidence-info:");
        limitReceiving(client->socket, 200);
        EXPECT_EQ(codeThrownBy<NetError>([&] { client->receive(); }),
                  static_cast<std::uint32_t>(WSAETIMEDOUT));
        limitReceiving(client->socket);
        door.open();
        EXPECT_EQ(client->receive(),
                  "evidence-info:custom_format=false\x1F"
                  "enabled=false\x1Fid=capture\x1F"
                  "max_scope=INVALID");
        EXPECT_EQ(client->receive(), "evidence-info:end-of-reply");
    }
}

// --- other types ---

TEST_F(ClientRequests, UnknownTypesAreReportedAndAnswered) {
    for (const std::string& type :
         {std::string("foo"), std::string(""), std::string("get-evidence"),
          std::string("GET-DEFAULT-SCOPE"), std::string("get-default-scope "),
          std::string("discover-request"), std::string("hello"), std::string("message"),
          std::string("unsupported")}) {
        EXPECT_EQ(ask(type + ":a=1\x1F"
                             "b"),
                  "unsupported:")
            << type;
        EXPECT_TRUE(errors.waitFor("veklog Server: unsupported telegram type encountered: '" +
                                   type +
                                   "'\nIgnoring this and replying with 'unsupported' telegram.\n"));
    }
    EXPECT_EQ(ask("get-default-scope:"), "default-scope:scope=WARN");
}

TEST_F(ClientRequests, ReplyOfAnotherTypeIsAskedForLikeAnUnknownOne) {
    EXPECT_EQ(ask("change-scope-x:"), "unsupported:");
    EXPECT_EQ(ask("default-scope:scope=INFO"), "unsupported:");
    EXPECT_EQ(ask("get-default-scope:"), "default-scope:scope=WARN");
}

TEST_F(ClientRequests, TelegramWithoutAColonClosesTheConnection) {
    EXPECT_TRUE(closesAnother("get-default-scope"));
    EXPECT_EQ(errors.text(), clientReport + std::string("ParseError: Missing separator ':' in "
                                                        "\"get-default-scope\"\n\n"));
    EXPECT_EQ(ask("get-default-scope:"), "default-scope:scope=WARN");
}

TEST_F(ClientRequests, BinaryRequestsDoNoHarm) {
    std::string allBytes;
    for (int byte = 0; byte < 256; ++byte) {
        allBytes += static_cast<char>(byte);
    }
    EXPECT_EQ(ask(allBytes), "unsupported:");
    EXPECT_TRUE(closesAnother(std::string(1000, '\0')));
    EXPECT_TRUE(closesAnother("change-scope:a=" + allBytes));
    EXPECT_EQ(ask("get-default-scope:"), "default-scope:scope=WARN");
}

TEST_F(ClientRequests, LoggerNamesAreBytes) {
    EXPECT_EQ(ask("change-scope:\x01\xFF:x=INFO\x1F=DEBUG"), "change-scope:ack");
    EXPECT_EQ(levelOf("\x01\xFF:x"), log::INFO);
    EXPECT_EQ(levelOf(""), log::DEBUG);
    EXPECT_EQ(ask("agent-list:"), "agent-list:=DEBUG\x1F\x01\xFF:x=INFO");
}

TEST_F(ClientRequests, ManyRequestsAreAnsweredOneByOne) {
    for (int i = 0; i < 300; ++i) {
        ASSERT_EQ(ask("get-default-scope:"), "default-scope:scope=WARN");
    }
}

TEST_F(ClientRequests, SeveralClientsAreServedInTurns) {
    std::vector<std::unique_ptr<ServiceClient>> clients;
    for (int i = 0; i < 20; ++i) {
        clients.push_back(std::make_unique<ServiceClient>(port));
    }
    for (const auto& each : clients) {
        each->send("get-default-scope:");
    }
    for (const auto& each : clients) {
        EXPECT_EQ(each->receive(), "default-scope:scope=WARN");
    }
}

}  // namespace
