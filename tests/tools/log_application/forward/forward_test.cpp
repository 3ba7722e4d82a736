// log_application forward: whole runs, against collectors that behave well and badly.
#include "tests/support/files.h"
#include "tests/tools/log_application/support/burst.h"
#include "tests/tools/log_application/support/scripted_collector.h"
#include "tests/tools/log_application/support/scripted_discovery.h"
#include "tests/tools/log_application/support/tool_test.h"
#include "tools/log_application/forward/own_host_name.h"

namespace {

using namespace log_application_test;
using Peer = ScriptedServer::Peer;
using Connection = ScriptedCollector::Connection;
using Texts = std::vector<std::string>;

// A process that logs "message 0" and so on, `pauseMs` apart, and then waits.
ScriptedServer::Script logging(int count, DWORD pauseMs = 0) {
    return [count, pauseMs](Peer& peer) {
        peer.request();
        for (int i = 0; i < count; ++i) {
            peer.sendFrame(messageTelegram("message " + std::to_string(i)));
            Sleep(pauseMs);
        }
        peer.waitForEnd();
    };
}

Texts messageTexts(int count) {
    Texts texts;
    for (int i = 0; i < count; ++i) {
        texts.push_back("message " + std::to_string(i));
    }
    return texts;
}

class ForwardTest : public ToolTest {};

TEST_F(ForwardTest, SendsEachMessageInAFrameOfItsOwn) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        peer.sendFrame(messageTelegram("one"));
        peer.sendFrame(
            "message:agent=net\x1F"
            "attr_keys=a|b\x1F"
            "attr_values=1|x]y\x1F"
            "msg=two\n\x1Fpid=7"
            "\x1Fscope=ERR\x1Ftid=1\x1Fwhen=1700000000124");
        peer.waitForEnd();
    });
    ScriptedDiscovery discovery(
        [&server](const std::string& id) { return helloOf(id, "demo process", server.port); });
    ScriptedCollector collector(readAll);
    const ToolResult result = runTool("forward --timeout 4s --facility local3 " + discovery.host() +
                                      " " + collector.to());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone)) << result.errors;
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(holds(result.errors, "following demo process (4242)\n")) << result.errors;
    EXPECT_TRUE(
        holds(result.errors, "sending to 127.0.0.1:" + std::to_string(collector.port) + "\n"))
        << result.errors;
    const std::string host = log_application::ownHostName();
    EXPECT_NE(host, "");
    EXPECT_EQ(collector.messages(),
              (Texts{"<158>1 2023-11-14T22:13:20.123Z " + host +
                         " demo_process 4242 demo [meta sequenceId=\"1\"] \xEF\xBB\xBFone",
                     "<155>1 2023-11-14T22:13:20.124Z " + host +
                         " demo_process 7 net [meta sequenceId=\"2\"]"
                         "[attributes@32473 a=\"1\" b=\"x\\]y\"] \xEF\xBB\xBFtwo\\n"}));
    EXPECT_EQ(collector.connections, 1);
}

TEST_F(ForwardTest, FiltersAsTail) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        peer.sendFrame(messageTelegram("net up", 0, "ERR", "net"));
        peer.sendFrame(messageTelegram("net noise", 0, "ERR", "net"));
        peer.sendFrame(messageTelegram("net detail", 0, "DEBUG", "net"));
        peer.sendFrame(messageTelegram("disk full", 0, "ERR", "disk"));
        peer.waitForEnd();
    });
    ScriptedCollector collector(readAll);
    const ToolResult result =
        runTool("forward --timeout 5s --level INFO --logger net --exclude noise --include net " +
                server.connect() + " " + collector.to());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone)) << result.errors;
    EXPECT_EQ(collector.texts(), (Texts{"net up"}));
}

TEST_F(ForwardTest, AProcessKnownByItsPortHasNoName) {
    ScriptedServer server(logging(1));
    ScriptedCollector collector(readAll);
    runTool("forward --timeout 5s " + server.connect() + " " + collector.to());
    ASSERT_EQ(collector.messages().size(), 1u);
    EXPECT_TRUE(holds(collector.messages()[0], " - 4242 demo ")) << collector.messages()[0];
}

TEST_F(ForwardTest, FollowsTheProcessAgainAfterItsEnd) {
    int conversations = 0;
    ScriptedServer server(
        [&conversations](Peer& peer) {
            if (peer.request().starts_with("get-messages")) {
                peer.sendFrame(messageTelegram(std::to_string(++conversations)));
            }
        },
        200);
    ScriptedCollector collector(readAll);
    ToolRun run("forward --timeout 50s " + server.connect() + " " + collector.to());
    EXPECT_TRUE(collector.waitForTexts(3)) << run.errors();
    EXPECT_EQ(collector.texts()[2], "3");
    EXPECT_TRUE(
        run.waitForErrors("has closed the connection, but is still there; it is followed again\n"))
        << run.errors();
    run.terminate();
    server.stop();
}

TEST_F(ForwardTest, EndsWith3IfTheCollectorIsNeverThere) {
    ScriptedServer server(logging(2));
    const std::string port = std::to_string(freePort());
    const ToolResult result = runTool("forward --timeout 8s --to syslog+tcp://127.0.0.1:" + port +
                                      " " + server.connect());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitLost));
    EXPECT_TRUE(holds(result.errors, "the collector 127.0.0.1:" + port + " can't be reached: "))
        << result.errors;
    EXPECT_TRUE(holds(result.errors, "2 messages may not have reached the collector: "))
        << result.errors;
}

TEST_F(ForwardTest, EndsWith0IfThereWasNothingToSend) {
    ScriptedServer server(logging(0));
    const ToolResult result =
        runTool("forward --timeout 1s --to syslog+tcp://127.0.0.1:" + std::to_string(freePort()) +
                " " + server.connect());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone)) << result.errors;
}

TEST_F(ForwardTest, AHostNameThatIsUnknownIsTriedAgain) {
    ScriptedServer server(logging(1));
    ToolRun run("forward --timeout 50s --to syslog+tcp://nosuch.invalid:601 " + server.connect());
    EXPECT_TRUE(run.waitForErrors("the collector nosuch.invalid:601 can't be reached: "))
        << run.errors();
    EXPECT_EQ(run.wait(2000), static_cast<DWORD>(STILL_ACTIVE));
    run.terminate();
}

TEST_F(ForwardTest, KeepsMessagesUntilTheCollectorComes) {
    ScriptedServer server(logging(10));
    const std::uint16_t port = freePort();
    ToolRun run("forward --timeout 30s --to syslog+tcp://127.0.0.1:" + std::to_string(port) + " " +
                server.connect());
    ASSERT_TRUE(run.waitForErrors("can't be reached: ")) << run.errors();
    Sleep(1000);
    ScriptedCollector collector(readAll, port);
    EXPECT_TRUE(collector.waitForTexts(10)) << run.errors();
    EXPECT_EQ(collector.texts(), messageTexts(10));
    EXPECT_TRUE(run.waitForErrors("sending to 127.0.0.1:" + std::to_string(port) + " again\n"))
        << run.errors();
    run.terminate();
}

TEST_F(ForwardTest, WhatTheBufferCannotHoldIsReportedToTheCollector) {
    std::atomic<bool> isThere = false;
    int conversations = 0;
    ScriptedServer server(
        [&](Peer& peer) {
            if (!peer.request().starts_with("get-messages")) {
                return;
            }
            if (++conversations == 1) {
                for (int i = 0; i < 30; ++i) {
                    peer.sendFrame(messageTelegram("message " + std::to_string(i)));
                }
                return;
            }
            support::waitUntil([&isThere] { return isThere.load(); }, ToolRun::limitMs);
            peer.sendFrame(messageTelegram("later"));
            peer.waitForEnd();
        },
        200);
    const std::uint16_t port = freePort();
    ToolRun run("forward --buffer 10 --to syslog+tcp://127.0.0.1:" + std::to_string(port) + " " +
                server.connect());
    ASSERT_TRUE(run.waitForErrors("can't be reached: ")) << run.errors();
    // That is said when all messages have been taken.
    ASSERT_TRUE(run.waitForErrors("it is followed again\n")) << run.errors();
    ScriptedCollector collector(readAll, port);
    ASSERT_TRUE(collector.waitForTexts(11)) << run.errors();
    isThere = true;
    EXPECT_TRUE(collector.waitForTexts(12)) << run.errors();
    Texts expected = messageTexts(10);
    expected.push_back(
        "20 messages were lost: the collector was away or too slow, and the buffer was full");
    expected.push_back("later");
    EXPECT_EQ(collector.texts(), expected);
    const Texts messages = collector.messages();
    EXPECT_TRUE(holds(messages[10], "<12>1 ")) << messages[10];
    EXPECT_TRUE(holds(messages[10], " log_application " + std::to_string(run.processId()) +
                                        " lost [meta sequenceId=\"31\"][lost@32473 count=\"20\"] "))
        << messages[10];
    EXPECT_TRUE(
        run.waitForErrors("20 messages were lost, as the collector was away or too slow; "
                          "--buffer keeps more\n"))
        << run.errors();
    run.terminate();
    server.stop();
}

TEST_F(ForwardTest, ACollectorThatClosesAtOnceLosesNothing) {
    ScriptedServer server(logging(20, 20));
    ScriptedCollector collector([](Connection& connection, int number) {
        if (number >= 3) {
            connection.readAll();
        }
    });
    ToolRun run("forward --timeout 50s " + server.connect() + " " + collector.to());
    EXPECT_TRUE(collector.waitForTexts(20)) << run.errors();
    EXPECT_EQ(collector.texts(), messageTexts(20));
    EXPECT_TRUE(holds(run.errors(),
                      " was lost: it has closed the connection; messages are kept "
                      "until it is back\n"))
        << run.errors();
}

TEST_F(ForwardTest, ACollectorThatResetsLosesNothing) {
    ScriptedServer server(logging(40, 20));
    ScriptedCollector collector([](Connection& connection, int number) {
        if (number < 3) {
            // In the middle of a frame.
            connection.readSome(150);
            connection.resetAtTheEnd();
        } else {
            connection.readAll();
        }
    });
    ToolRun run("forward --timeout 50s " + server.connect() + " " + collector.to());
    EXPECT_TRUE(collector.waitForTexts(40)) << run.errors();
    EXPECT_EQ(collector.texts(), messageTexts(40));
}

TEST_F(ForwardTest, ACollectorThatSendsRubbishIsSentTo) {
    ScriptedServer server(logging(50, 10));
    ScriptedCollector collector([](Connection& connection, int) {
        do {
            connection.send(std::string(10'000, '\xFF'));
        } while (connection.readSome());
    });
    ToolRun run("forward --timeout 50s " + server.connect() + " " + collector.to());
    EXPECT_TRUE(collector.waitForTexts(50)) << run.errors();
    EXPECT_EQ(collector.texts(), messageTexts(50));
    EXPECT_EQ(collector.connections, 1);
}

TEST_F(ForwardTest, ACollectorThatNeverReadsStallsNobody) {
    constexpr int count = messagesOfMoreThanSocketsHold;
    std::atomic<int> sent = 0;
    ScriptedServer server([&sent](Peer& peer) {
        peer.request();
        for (; sent < count; ++sent) {
            peer.sendFrame(messageTelegram(std::string(16'000, 'x')));
        }
        peer.waitForEnd();
    });
    ScriptedCollector collector([](Connection& connection, int) { connection.holdOn(); });
    ToolRun run("forward --buffer 100 " + server.connect() + " " + collector.to());
    EXPECT_TRUE(support::waitUntil([&] { return sent == count && collector.connections == 1; },
                                   ToolRun::burstLimitMs))
        << sent << run.errors();
}

TEST_F(ForwardTest, ACollectorThatNeverReadsEndsWith3) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        // Somewhat more than the sockets hold.
        for (int i = 0; i < 100; ++i) {
            peer.sendFrame(messageTelegram(std::string(60'000, 'x')));
        }
        peer.waitForEnd();
    });
    ScriptedCollector collector([](Connection& connection, int) { connection.holdOn(); });
    ToolRun run("forward --timeout 20s " + server.connect() + " " + collector.to());
    EXPECT_EQ(run.wait(ToolRun::burstLimitMs), static_cast<DWORD>(exitLost)) << run.errors();
    EXPECT_TRUE(holds(run.errors(), " messages may not have reached the collector: "))
        << run.errors();
    EXPECT_EQ(collector.connections, 1);
}

TEST_F(ForwardTest, ACollectorThatNeverEndsTheConnectionDoesNotHoldUpTheEnd) {
    ScriptedServer server(logging(5));
    ScriptedCollector collector([](Connection& connection, int) {
        connection.readAll();
        connection.holdOn();
    });
    ToolRun run("forward --timeout 5s " + server.connect() + " " + collector.to());
    const DWORD start = GetTickCount();
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitDone)) << run.errors();
    EXPECT_LT(GetTickCount() - start, 20'000u);
    EXPECT_EQ(collector.texts(), messageTexts(5));
}

TEST_F(ForwardTest, SeveralProcessesAreSentMergedByTime) {
    const auto script = [](std::int64_t first) {
        return [first](Peer& peer) {
            peer.request();
            for (std::int64_t i = 0; i < 20; ++i) {
                peer.sendFrame(messageTelegram(std::to_string(first + 2 * i), 0, "INFO", "demo",
                                               first + 2 * i));
            }
            peer.waitForEnd();
        };
    };
    ScriptedServer even(script(1000));
    ScriptedServer odd(script(1001));
    ScriptedCollector collector(readAll);
    runTool("forward --timeout 6s " + even.connect() + " " + odd.connect() + " " + collector.to());
    Texts expected;
    for (int i = 1000; i < 1040; ++i) {
        expected.push_back(std::to_string(i));
    }
    EXPECT_EQ(collector.texts(), expected);
}

TEST_F(ForwardTest, AwaitsEachNameByItself) {
    ScriptedServer server(logging(1));
    ScriptedDiscovery discovery(
        [&server](const std::string& id) { return helloOf(id, "alpha", server.port); });
    ScriptedCollector collector(readAll);
    const ToolResult result = runTool("forward --timeout 6s --name beta --name alpha " +
                                      discovery.host() + " " + collector.to());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone)) << result.errors;
    EXPECT_TRUE(holds(result.errors,
                      "No process with the name \"beta\" answers; there is alpha (4242). "
                      "Waiting for it.\n"))
        << result.errors;
    EXPECT_EQ(collector.texts(), messageTexts(1));
}

TEST_F(ForwardTest, ACollectorThatCannotBeMeantEndsWith2) {
    for (const char* const options :
         {"", "--to host:1", "--to syslog+udp://h:1", "--to syslog+tcp://h"}) {
        const ToolResult result = runTool("forward " + std::string(options));
        EXPECT_EQ(result.code, static_cast<DWORD>(exitUsage)) << options;
        EXPECT_TRUE(holds(result.errors, "syslog+tcp://")) << result.errors;
    }
}

}  // namespace
