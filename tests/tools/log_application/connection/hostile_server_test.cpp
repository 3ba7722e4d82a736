// Servers that violate the protocol.
#include <functional>

#include "tests/tools/log_application/support/tool_test.h"

namespace {

using namespace log_application_test;
using Peer = ScriptedServer::Peer;

class HostileServer : public ToolTest {
  protected:
    // Runs `command` against a server that calls `answer` after the first request.
    static ToolResult ask(const std::string& command, const std::function<void(Peer&)>& answer) {
        ScriptedServer server([&answer](Peer& peer) {
            peer.request();
            answer(peer);
        });
        return runTool(command + " " + server.connect());
    }

    static void expectLost(const ToolResult& result, const std::string& reason) {
        EXPECT_EQ(result.code, static_cast<DWORD>(exitLost)) << result.errors;
        EXPECT_TRUE(holds(result.errors, reason)) << result.errors;
        EXPECT_TRUE(holds(result.errors, "\n  ")) << result.errors;
    }
};

const char* const askingCommands[] = {"levels", "sinks", "save", "set --default INFO",
                                      "set a=INFO"};

TEST_F(HostileServer, ClosingWithoutAnAnswerIsALostConnection) {
    for (const char* const command : askingCommands) {
        expectLost(ask(command, [](Peer&) {}), "has closed the connection without an answer.");
    }
}

TEST_F(HostileServer, ClosingInTheMiddleOfAFrameIsALostConnection) {
    for (const char* const command : askingCommands) {
        expectLost(ask(command,
                       [](Peer& peer) {
                           peer.sendBytes(
                               std::string("\0\0\0\x20"
                                           "default",
                                           11));
                       }),
                   "has closed the connection without an answer.");
    }
}

TEST_F(HostileServer, AHugeFrameIsALostConnection) {
    for (const char* const command : askingCommands) {
        expectLost(ask(command,
                       [](Peer& peer) {
                           peer.sendBytes(
                               "\xFF\xFF\xFF\xFF"
                               "HTTP/1.1");
                           peer.waitForEnd();
                       }),
                   "has sent a frame that is too large");
    }
}

TEST_F(HostileServer, AFrameThatIsNoTelegramIsALostConnection) {
    expectLost(ask("levels", [](Peer& peer) { peer.sendFrame("no telegram"); }),
               "has sent what is no telegram.");
    expectLost(ask("save", [](Peer& peer) { peer.sendFrame("\x1b[2J"); }),
               "has sent what is no telegram.");
}

TEST_F(HostileServer, AnotherAnswerThanTheExpectedIsALostConnection) {
    expectLost(ask("levels", [](Peer& peer) { peer.sendFrame("hello:"); }),
               "has sent \"hello\" in place of an answer.");
    expectLost(
        ask("save", [](Peer& peer) { peer.sendFrame("\x1b[2J" + std::string(100, 'x') + ":ack"); }),
        "has sent \"\\x1B[2J" + std::string(36, 'x') + "...\" in place of an answer.");
    expectLost(ask("save", [](Peer& peer) { peer.sendFrame("persist-config:maybe"); }),
               "has sent an answer that is neither yes nor no.");
    expectLost(ask("levels", [](Peer& peer) { peer.sendFrame("default-scope:"); }),
               "has sent an answer without a level.");
}

TEST_F(HostileServer, ARequestThatTheProcessDoesNotKnowIsNotDone) {
    const ToolResult result = ask("save", [](Peer& peer) { peer.sendFrame("unsupported:"); });
    EXPECT_EQ(result.code, static_cast<DWORD>(exitNotDone));
    EXPECT_TRUE(holds(result.errors, "doesn't know this request.")) << result.errors;
}

TEST_F(HostileServer, ARefusalIsNotDoneAndShownWithItsReasonOnly) {
    const ToolResult result =
        ask("save", [](Peer& peer) { peer.sendFrame("persist-config:error=disk\nfull\x1b[2J"); });
    EXPECT_EQ(result.code, static_cast<DWORD>(exitNotDone));
    EXPECT_TRUE(holds(result.errors, " refused: disk\\nfull\\x1B[2J\n")) << result.errors;
}

TEST_F(HostileServer, ARefusalWithTheAckBehindItIsOne) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        peer.sendFrame("agent-list:");
        peer.request();
        peer.sendFrame("change-default-scope:error=no such level");
        peer.sendFrame("change-default-scope:ack");
        peer.waitForEnd();
    });
    EXPECT_EQ(runTool("set --default INFO " + server.connect()).code,
              static_cast<DWORD>(exitNotDone));
}

TEST_F(HostileServer, ASilentServerIsLeftAfterAWhile) {
    const DWORD start = GetTickCount();
    expectLost(ask("levels", [](Peer& peer) { peer.waitForEnd(); }), " doesn't answer.");
    const DWORD elapsed = GetTickCount() - start;
    EXPECT_GE(elapsed, 4500u);
    EXPECT_LE(elapsed, 15'000u);
}

TEST_F(HostileServer, ATricklingServerIsLeftAfterAWhile) {
    expectLost(ask("levels",
                   [](Peer& peer) {
                       for (int i = 0; i < 100; ++i) {
                           peer.sendBytes(std::string(1, '\0'));
                           Sleep(200);
                       }
                   }),
               " doesn't answer.");
}

TEST_F(HostileServer, AnEndlessListOfSinksIsLeft) {
    expectLost(ask("sinks",
                   [](Peer& peer) {
                       // At once: the answer as a whole has a time limit.
                       std::string frames;
                       for (int i = 0; i < 20'000; ++i) {
                           frames += frameOf("evidence-info:id=x");
                       }
                       peer.sendBytes(frames);
                       peer.waitForEnd();
                   }),
               "has sent an answer without an end.");
}

TEST_F(HostileServer, NamesAndPathsAreShownEscaped) {
    ScriptedServer server(answering({{"get-default-scope", "default-scope:scope=\x1b[2J"},
                                     {"agent-list", "agent-list:a\nb=DE\rBUG"}}));
    const ToolResult levels = runTool("levels " + server.connect());
    EXPECT_TRUE(holds(levels.output, "  a\\nb             DE\\rBUG  own\n")) << levels.output;
    EXPECT_TRUE(holds(levels.output, "  (default level)  \\x1B[2J\n")) << levels.output;
    ScriptedServer sinksServer([](Peer& peer) {
        peer.request();
        peer.sendFrame("evidence-info:");
        peer.sendFrame("evidence-info:id=x\x1Fpath=a\nb");
        peer.sendFrame("evidence-info:end-of-reply");
    });
    const ToolResult sinks = runTool("sinks " + sinksServer.connect());
    EXPECT_EQ(sinks.code, static_cast<DWORD>(exitDone)) << sinks.errors;
    EXPECT_TRUE(holds(sinks.output, "a\\nb\n")) << sinks.output;
}

TEST_F(HostileServer, ALevelThatIsNoneIsNotPutBackBlindly) {
    ScriptedServer server(answering({{"agent-list", "agent-list:a=LOUD"}}));
    const ToolResult result = runTool("set a=INFO --for 1s " + server.connect());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitLost));
    EXPECT_TRUE(holds(result.errors, "calls \"LOUD\" a level.")) << result.errors;
}

TEST_F(HostileServer, TailShowsWhatIsThereOfAMessageAndSaysSoOnce) {
    const ToolResult result = ask("tail --output json", [](Peer& peer) {
        peer.sendFrame("message:msg=only this");
        peer.sendFrame("message:");
        peer.sendFrame("no telegram");
        peer.sendFrame("hello:msg=no message");
        peer.sendFrame(messageTelegram("whole"));
    });
    EXPECT_EQ(result.code, static_cast<DWORD>(exitLost));
    EXPECT_EQ(result.output, golden("incomplete.jsonl"));
    const std::string told = "sends what is no whole message";
    EXPECT_TRUE(holds(result.errors, told)) << result.errors;
    EXPECT_EQ(result.errors.find(told), result.errors.rfind(told));
}

TEST_F(HostileServer, TailSaysThatAFrameIsTooLarge) {
    const ToolResult result = ask("tail --output raw", [](Peer& peer) {
        peer.sendFrame(messageTelegram("first"));
        peer.sendBytes("\x7F\xFF\xFF\xFF");
        peer.waitForEnd();
    });
    EXPECT_EQ(result.code, static_cast<DWORD>(exitLost));
    EXPECT_EQ(result.output, "first\n");
    EXPECT_TRUE(holds(result.errors, "has sent a frame that is too large")) << result.errors;
}

TEST_F(HostileServer, TailSaysThatAMessageWasCut) {
    const ToolResult result = ask("tail --output raw", [](Peer& peer) {
        peer.sendFrame(messageTelegram("first"));
        peer.sendBytes(frameOf(messageTelegram("second")).substr(0, 20));
    });
    EXPECT_EQ(result.output, "first\n");
    EXPECT_TRUE(holds(result.errors, "has ended in the middle of a message")) << result.errors;
}

TEST_F(HostileServer, AnExpressionOnAVeryLongLineDoesNotEndTail) {
    // More than a process of ours can send, and as much as is received.
    const std::string endless(65'000, 'x');
    for (const char* const option : {"--include", "--exclude", "--expect"}) {
        const ToolResult result =
            ask("tail --output raw " + std::string(option) + " \"^((((((x|y))))))*$\"",
                [&endless](Peer& peer) {
                    for (int i = 0; i < 3; ++i) {
                        peer.sendFrame(messageTelegram(endless));
                    }
                });
        EXPECT_NE(result.code, static_cast<DWORD>(STATUS_STACK_OVERFLOW)) << option;
        EXPECT_TRUE(holds(result.errors, " has ended\n")) << result.errors;
        EXPECT_EQ(result.output, endless + "\n" + endless + "\n" + endless + "\n") << option;
        const std::string told = "is too long for a regular expression";
        EXPECT_TRUE(holds(result.errors, told)) << result.errors;
        EXPECT_EQ(result.errors.find(told), result.errors.rfind(told));
    }
}

TEST_F(HostileServer, AnAbsurdTimeDoesNotEndTail) {
    constexpr std::int64_t times[] = {INT64_MAX, INT64_MIN,           INT64_MAX / 10'000,
                                      -1,        910'692'730'085'477, -11'644'473'600'001};
    for (const char* const kind : {"text", "json", "raw"}) {
        const ToolResult result = ask("tail --output " + std::string(kind), [&times](Peer& peer) {
            for (const std::int64_t time : times) {
                peer.sendFrame(messageTelegram("absurd", 0, "INFO", "demo", time));
            }
            peer.sendFrame(messageTelegram("last"));
        });
        EXPECT_TRUE(holds(result.errors, " has ended\n")) << result.errors;
        EXPECT_EQ(lineCount(result.output), std::size(times) + 1) << result.output;
        EXPECT_TRUE(holds(result.output, "last")) << result.output;
    }
}

TEST_F(HostileServer, TailTakesTheLargestMessageThereIs) {
    // With everything else of its telegram it fills a frame of 16380 bytes.
    const std::string text(16'380 - messageTelegram("").size(), 'x');
    const ToolResult result = ask("tail --output raw --include \"^(x|y)*$\"",
                                  [&text](Peer& peer) { peer.sendFrame(messageTelegram(text)); });
    EXPECT_EQ(result.output, text + "\n") << result.errors;
}

}  // namespace
