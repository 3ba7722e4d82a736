// log_application tail: what is shown, and when it ends.
#include <atomic>

#include "tests/support/files.h"
#include "tests/tools/log_application/support/output_pipe.h"
#include "tests/tools/log_application/support/tool_test.h"

namespace {

using namespace log_application_test;
using Peer = ScriptedServer::Peer;

class TailTest : public ToolTest {
  protected:
    // Runs tail with `options` against a server that sends these telegrams and ends.
    static ToolResult tailOf(const std::string& options,
                             const std::vector<std::string>& telegrams) {
        ScriptedServer server([&telegrams](Peer& peer) {
            peer.request();
            for (const std::string& telegram : telegrams) {
                peer.sendFrame(telegram);
            }
        });
        return runTool("tail " + options + " " + server.connect());
    }
};

TEST_F(TailTest, ShowsTextUnlessTold) {
    const ToolResult result =
        tailOf("", {messageTelegram("one"), messageTelegram("two\nlines", 0, "ERR")});
    ASSERT_EQ(lineCount(result.output), 2u);
    EXPECT_TRUE(holds(result.output, " [ INFO] demo: one\n")) << result.output;
    EXPECT_TRUE(holds(result.output, " [  ERR] demo: two\\nlines\n")) << result.output;
    EXPECT_TRUE(holds(result.errors, " has ended\n")) << result.errors;
    EXPECT_EQ(result.code, static_cast<DWORD>(exitLost));
}

TEST_F(TailTest, TakesTheFormatOfTheLog) {
    EXPECT_EQ(
        tailOf("--format \"{timestamp_s}|{scope}|{agent}|{msg}{nosuch}\"", {messageTelegram("one")})
            .output,
        "1700000000 s| INFO|demo|one{nosuch}\n");
}

TEST_F(TailTest, FiltersByLevelLoggerAndText) {
    const std::vector<std::string> telegrams = {messageTelegram("net up", 0, "ERR", "net"),
                                                messageTelegram("net noise", 0, "INFO", "net"),
                                                messageTelegram("net detail", 0, "DEBUG", "net"),
                                                messageTelegram("disk full", 0, "ERR", "disk")};
    EXPECT_EQ(tailOf("--output raw --level INFO", telegrams).output,
              "net up\nnet noise\ndisk full\n");
    EXPECT_EQ(tailOf("--output raw --logger disk", telegrams).output, "disk full\n");
    EXPECT_EQ(tailOf("--output raw --include ^net --exclude noise", telegrams).output,
              "net up\nnet detail\n");
}

TEST_F(TailTest, EndsWith0AtTheExpectedMessage) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        for (const char* const text : {"one", "ready 7", "three"}) {
            peer.sendFrame(messageTelegram(text));
        }
        peer.waitForEnd();
    });
    const ToolResult result =
        runTool("tail --output raw --expect \"ready [0-9]\" --timeout 50s " + server.connect());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone)) << result.errors;
    EXPECT_EQ(result.output, "one\nready 7\n");
}

TEST_F(TailTest, EndsWith1IfTheExpectedMessageDoesNotComeInTime) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        peer.sendFrame(messageTelegram("one"));
        peer.waitForEnd();
    });
    const ToolResult result =
        runTool("tail --output raw --expect two --timeout 1s " + server.connect());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitNotDone));
    EXPECT_EQ(result.output, "one\n");
    EXPECT_TRUE(holds(result.errors, "The expected message didn't come in time.")) << result.errors;
}

TEST_F(TailTest, EndsWith1IfTheProcessEndsAheadOfTheExpectedMessage) {
    const ToolResult result = tailOf("--output raw --expect two", {messageTelegram("one")});
    EXPECT_EQ(result.code, static_cast<DWORD>(exitNotDone));
    EXPECT_TRUE(holds(result.errors, "The expected message didn't come.")) << result.errors;
}

TEST_F(TailTest, AMessageThatIsNotShownIsNotTheExpectedOne) {
    EXPECT_EQ(tailOf("--expect one --level WARN", {messageTelegram("one")}).code,
              static_cast<DWORD>(exitNotDone));
}

TEST_F(TailTest, EndsWith0AtTheEndOfItsTime) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        peer.waitForEnd();
    });
    const ToolResult result = runTool("tail --timeout 500ms " + server.connect());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone)) << result.errors;
    EXPECT_EQ(result.errors, "");
}

TEST_F(TailTest, MergesSeveralProcessesByTime) {
    const auto script = [](std::int64_t first) {
        return [first](Peer& peer) {
            peer.request();
            std::string frames;
            for (std::int64_t i = 0; i < 50; ++i) {
                frames += frameOf(messageTelegram(std::to_string(first + 2 * i), 0, "INFO", "demo",
                                                  first + 2 * i));
            }
            peer.sendBytes(frames);
            peer.waitForEnd();
        };
    };
    std::string expected;
    for (int i = 1000; i < 1100; ++i) {
        expected += std::to_string(i) + "\n";
    }
    // On a busy machine the lines of one process can arrive later than a line is held back. Lines
    // that aren't merged don't come in order in any attempt.
    ToolResult result = {};
    for (int attempt = 0; attempt < 10 && result.output != expected; ++attempt) {
        ScriptedServer even(script(1000));
        ScriptedServer odd(script(1001));
        result = runTool("tail --output raw --expect ^1099$ --timeout 30s " + even.connect() + " " +
                         odd.connect());
    }
    EXPECT_EQ(result.output, expected) << result.errors;
}

TEST_F(TailTest, GoesOnWithOthersWhenOneHasEnded) {
    ScriptedServer first([](Peer& peer) {
        peer.request();
        peer.sendFrame(messageTelegram("first"));
    });
    std::atomic<bool> isTold = false;
    ScriptedServer second([&isTold](Peer& peer) {
        peer.request();
        support::waitUntil([&isTold] { return isTold.load(); }, ToolRun::limitMs);
        peer.sendFrame(messageTelegram("second"));
        peer.waitForEnd();
    });
    ToolRun run("tail --output raw --expect second --timeout 30s " + first.connect() + " " +
                second.connect());
    EXPECT_TRUE(run.waitForErrors("127.0.0.1:" + std::to_string(first.port) + " has ended\n"))
        << run.errors();
    isTold = true;
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitDone)) << run.errors();
    EXPECT_EQ(run.output(), "first\nsecond\n");
}

TEST_F(TailTest, SaysThatAProcessHasClosedTheConnectionButIsThere) {
    // The probes of whether the process is there connect too.
    ScriptedServer server([](Peer& peer) { peer.request(); }, 200);
    const ToolResult result = runTool("tail " + server.connect());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitLost));
    EXPECT_TRUE(
        holds(result.errors, "has closed the connection, but is still there; --reconnect goes on"))
        << result.errors;
    server.stop();
}

TEST_F(TailTest, AProcessWhosePortIsOpenButSilentHasEnded) {
    // Such as a port that a child of the process has inherited.
    vek::net::TCPListener listener(false);
    const std::string place =
        "127.0.0.1:" + std::to_string(vek::test::bindToLoopback(listener).port());
    listener.listen(8);
    ToolRun run("tail --output raw --connect " + place);
    {
        vek::net::TCPSocket socket(listener.accept());
        vek::test::limitReceiving(socket);
        Peer peer(socket);
        peer.request();
        peer.sendFrame(messageTelegram("first"));
    }
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitLost));
    EXPECT_EQ(run.output(), "first\n");
    EXPECT_EQ(run.errors(), "log_application: " + place + " has ended\n");
}

TEST_F(TailTest, ReconnectsWhenToldTo) {
    int conversations = 0;
    ScriptedServer server(
        [&conversations](Peer& peer) {
            if (!peer.request().starts_with("get-messages")) {
                return;
            }
            peer.sendFrame(messageTelegram("conversation " + std::to_string(++conversations)));
        },
        200);
    ToolRun run("tail --output raw --reconnect --expect \"conversation 3\" --timeout 50s " +
                server.connect());
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitDone)) << run.errors();
    EXPECT_EQ(run.output(), "conversation 1\nconversation 2\nconversation 3\n");
    EXPECT_TRUE(holds(run.errors(), "following 127.0.0.1:")) << run.errors();
    server.stop();
}

TEST_F(TailTest, FollowsTwoHundredProcessesAtOnce) {
    // One port at two hundred addresses of this host.
    constexpr int count = 200;
    vek::net::TCPListener listener(false);
    vek::net::IP4Address address;
    listener.bind(address);
    listener.listen(count);
    listener.localAddress(address);
    std::string options;
    for (int i = 1; i <= count; ++i) {
        options += " --connect 127.0.0." + std::to_string(i) + ":" + std::to_string(address.port());
    }
    ToolRun run("tail --output raw --expect last --timeout 50s" + options);
    std::vector<std::unique_ptr<vek::net::TCPSocket>> sockets;
    for (int i = 0; i < count; ++i) {
        vek::net::SocketSet reading;
        reading.add(listener.nativeHandle());
        ASSERT_TRUE(vek::net::Socket::select(&reading, nullptr, nullptr, 30'000))
            << i << run.errors();
        sockets.push_back(std::make_unique<vek::net::TCPSocket>(listener.accept()));
        vek::test::limitReceiving(*sockets.back());
        Peer peer(*sockets.back());
        EXPECT_EQ(peer.request(), "get-messages:");
        peer.sendFrame(messageTelegram("number " + std::to_string(i)));
    }
    // Otherwise the last line could be read ahead of one on another connection, and end the run.
    EXPECT_TRUE(support::waitUntil([&run] { return lineCount(run.output()) == std::size_t{count}; },
                                   ToolRun::limitMs));
    Peer(*sockets.back()).sendFrame(messageTelegram("last"));
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitDone)) << run.errors();
    EXPECT_EQ(lineCount(run.output()), std::size_t{count} + 1) << run.output();
}

TEST_F(TailTest, WritesUtf8WhateverTheProcessSends) {
    const std::string sent = "gr\xFC\xDF gr\xC3\xBC\xC3\x9F";
    const std::string shown = "gr\xC3\xBC\xC3\x9F gr\xC3\xBC\xC3\x9F";
    EXPECT_EQ(tailOf("--format {agent}:{msg}", {messageTelegram(sent, 0, "INFO", "\xFC")}).output,
              "\xC3\xBC:" + shown + "\n");
    EXPECT_TRUE(holds(tailOf("--output json", {messageTelegram(sent)}).output,
                      "\"message\":\"" + shown + "\""));
    EXPECT_EQ(tailOf("--output raw", {messageTelegram(sent)}).output, sent + "\n");
}

TEST_F(TailTest, SaysHowManyLinesItHadToDrop) {
    // Many times as many as its buffer and the pipe hold.
    constexpr int count = 1000;
    const std::string text(1000, 'x');
    std::atomic<bool> isAllQueued = false;
    ScriptedServer server(
        [&](Peer& peer) {
            if (!peer.request().starts_with("get-messages")) {
                // It looks whether the process is there, because it has read to the end.
                isAllQueued = true;
                return;
            }
            for (int i = 0; i < count; ++i) {
                peer.sendFrame(messageTelegram(text));
            }
        },
        2);
    // A pipe that isn't read for a while acts as a slow terminal.
    OutputPipe pipe;
    ToolRun run("tail --output raw --buffer 100 " + server.connect(), "", pipe.output());
    pipe.closeWriteEnd();
    EXPECT_TRUE(
        support::waitUntil([&isAllQueued] { return isAllQueued.load(); }, ToolRun::burstLimitMs));
    const std::string output = pipe.readAll();
    EXPECT_EQ(run.wait(ToolRun::burstLimitMs), static_cast<DWORD>(exitLost));
    const std::string errors = run.errors();
    std::size_t dropped = 0;
    for (std::size_t at = 0; (at = errors.find(" lines of ", at)) != std::string::npos; ++at) {
        const std::size_t number = errors.rfind(' ', at - 1) + 1;
        dropped += std::stoul(errors.substr(number, at - number));
    }
    EXPECT_GT(dropped, 0u) << errors;
    EXPECT_EQ(lineCount(output) + dropped, static_cast<std::size_t>(count)) << errors;
    EXPECT_TRUE(
        holds(errors, " were dropped, as the output was too slow; --buffer gives it more room"));
}

TEST_F(TailTest, ALostOutputEndsIt) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        for (int i = 0; i < 1000; ++i) {
            peer.sendFrame(messageTelegram("message"));
            Sleep(10);
        }
    });
    OutputPipe pipe;
    ToolRun run("tail --output raw " + server.connect(), "", pipe.output());
    pipe.closeWriteEnd();
    pipe.closeReadEnd();
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitLost));
    EXPECT_TRUE(holds(run.errors(), "The output can't be written.")) << run.errors();
}

}  // namespace
