// log_application on a real console: Ctrl-C, and colours.
#include <atomic>
#include <string>

#include "tests/support/console_fixture.h"
#include "tests/support/files.h"
#include "tests/tools/log_application/support/output_pipe.h"
#include "tests/tools/log_application/support/scripted_collector.h"
#include "tests/tools/log_application/support/tool_test.h"

namespace {

using namespace log_application_test;
using Peer = ScriptedServer::Peer;

BOOL WINAPI goOn(DWORD) {
    return TRUE;
}

class CtrlC : public ToolTest {
  protected:
    // Ctrl-C is sent to every process of the console, this one included, possibly with a delay: so
    // the handler is never removed.
    static void SetUpTestSuite() { ASSERT_NE(SetConsoleCtrlHandler(goOn, TRUE), 0); }

    static void press() { EXPECT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0); }

    static std::string levelsOf(const ServiceProcess& service) {
        const std::string output = runTool("levels " + service.connect()).output;
        return output.substr(output.find('\n') + 1);
    }
};

TEST_F(CtrlC, PutsTheEarlierLevelsBackAheadOfTheTime) {
    ServiceProcess demo("idle", ownName("demo"),
                        "default_level = \"WARN\"; loggers : { b = \"ERR\"; };");
    const std::string before = levelsOf(demo);
    ToolRun run("set --for 10m --default INFO a=DEBUG b=TRACE " + demo.connect());
    ASSERT_TRUE(run.waitForErrors("the earlier levels come back in 600 seconds, or at Ctrl-C"))
        << run.errors();
    EXPECT_NE(levelsOf(demo), before);
    press();
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitDone)) << run.errors();
    EXPECT_TRUE(holds(run.output(), ": the earlier levels are back\n")) << run.output();
    EXPECT_EQ(levelsOf(demo), before);
}

TEST_F(CtrlC, EndsTailWith0AfterWhatHasCome) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        peer.sendFrame(messageTelegram("one"));
        peer.waitForEnd();
    });
    ToolRun run("tail --output raw " + server.connect());
    ASSERT_TRUE(run.waitForOutput("one\n")) << run.errors();
    press();
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitDone)) << run.errors();
    EXPECT_EQ(run.output(), "one\n");
    EXPECT_EQ(run.errors(), "");
}

TEST_F(CtrlC, EndsTailWith1AheadOfTheExpectedMessage) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        peer.sendFrame(messageTelegram("one"));
        peer.waitForEnd();
    });
    ToolRun run("tail --output raw --expect two " + server.connect());
    ASSERT_TRUE(run.waitForOutput("one\n")) << run.errors();
    press();
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitNotDone)) << run.errors();
}

TEST_F(CtrlC, EndsTheWaitForAProcess) {
    ToolRun run("tail --reconnect --name " + ownName("never"));
    ASSERT_TRUE(run.waitForErrors("Waiting for it.")) << run.errors();
    press();
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitDone)) << run.errors();
}

TEST_F(CtrlC, EndsTheWaitForAnAnswer) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        press();
        peer.waitForEnd();
    });
    const DWORD start = GetTickCount();
    EXPECT_EQ(runTool("levels " + server.connect()).code, static_cast<DWORD>(exitLost));
    EXPECT_LT(GetTickCount() - start, 4000u);
}

TEST_F(CtrlC, EndsForwardWith0AfterWhatIsLeftWasSent) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        peer.sendFrame(messageTelegram("one"));
        peer.waitForEnd();
    });
    std::atomic<bool> isPressed = false;
    ScriptedCollector collector([&isPressed](ScriptedCollector::Connection& connection, int) {
        if (isPressed) {
            connection.readAll();
        } else {
            connection.resetAtTheEnd();
        }
    });
    ToolRun run("forward " + server.connect() + " " + collector.to());
    ASSERT_TRUE(run.waitForErrors(" was lost: ")) << run.errors();
    isPressed = true;
    press();
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitDone)) << run.errors();
    EXPECT_EQ(collector.texts(), std::vector<std::string>{"one"});
}

TEST_F(CtrlC, EndsForwardWith3WithinItsTimeIfTheCollectorIsAway) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        peer.sendFrame(messageTelegram("one"));
        peer.waitForEnd();
    });
    ToolRun run("forward --to syslog+tcp://127.0.0.1:" + std::to_string(freePort()) + " " +
                server.connect());
    ASSERT_TRUE(run.waitForErrors("following ")) << run.errors();
    Sleep(1000);
    const DWORD start = GetTickCount();
    press();
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitLost)) << run.errors();
    EXPECT_LT(GetTickCount() - start, 10'000u);
    EXPECT_TRUE(holds(run.errors(), "1 messages may not have reached the collector: "))
        << run.errors();
}

TEST_F(CtrlC, TheSecondTimeEndsTheProgramThoughItsOutputTakesNothing) {
    ScriptedServer server([](Peer& peer) {
        peer.request();
        for (DWORD i = 0; i < 4 * OutputPipe::roomBytes; ++i) {
            peer.sendFrame(messageTelegram("message"));
        }
        peer.waitForEnd();
    });
    OutputPipe pipe;
    ToolRun run("tail --output raw " + server.connect(), "", pipe.output());
    pipe.closeWriteEnd();
    EXPECT_TRUE(support::waitUntil([&pipe] { return pipe.waiting() >= OutputPipe::roomBytes; },
                                   ToolRun::limitMs));
    press();
    EXPECT_EQ(run.wait(2000), static_cast<DWORD>(STILL_ACTIVE));
    press();
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitLost));
}

class TailOnAConsole : public support::ConsoleTest {
  protected:
    void SetUp() override {
        ConsoleTest::SetUp();
        vek::net::startWinsock();
        // Clears space, so that the console doesn't scroll while lines are written.
        DWORD count = 0;
        ASSERT_NE(FillConsoleOutputCharacterA(output, ' ', columns * rows, home, &count), 0);
        ASSERT_NE(SetConsoleCursorPosition(output, home), 0);
    }
    ~TailOnAConsole() override { vek::net::stopWinsock(); }

    // Lets `tail` write `message` at each level to the console, one line each.
    void tail(const std::string& options, const std::string& message = "text") const {
        ScriptedServer server([&message](Peer& peer) {
            peer.request();
            for (const char* const level : {"ERR", "WARN", "INFO", "DEBUG", "TRACE"}) {
                peer.sendFrame(messageTelegram(message, 0, level));
            }
        });
        HANDLE console = nullptr;
        ASSERT_NE(DuplicateHandle(GetCurrentProcess(), output, GetCurrentProcess(), &console, 0,
                                  TRUE, DUPLICATE_SAME_ACCESS),
                  0);
        ToolRun run("tail " + options + " " + server.connect(), "", console);
        EXPECT_EQ(run.wait(), static_cast<DWORD>(exitLost)) << run.errors();
        CloseHandle(console);
    }

    // Row `y` without the blanks at its end.
    std::string text(SHORT y) const {
        std::string row(columns, '\0');
        DWORD count = 0;
        EXPECT_NE(ReadConsoleOutputCharacterA(output, row.data(), columns, {0, y}, &count), 0);
        return row.substr(0, row.find_last_not_of(' ') + 1);
    }

    SHORT cursorRow() const {
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        EXPECT_NE(GetConsoleScreenBufferInfo(output, &info), 0);
        return info.dwCursorPosition.Y;
    }

    // The attribute at the beginning of `part` in row `y`.
    WORD attributeOfPart(SHORT y, const std::string& part) const {
        const std::string row = text(y);
        const std::size_t column = row.find(part);
        EXPECT_NE(column, std::string::npos) << row;
        WORD attribute = 0;
        DWORD count = 0;
        EXPECT_NE(ReadConsoleOutputAttribute(output, &attribute, 1, {static_cast<SHORT>(column), y},
                                             &count),
                  0);
        return attribute;
    }

    static constexpr COORD home = {0, 0};
    static constexpr DWORD columns = 60;
    static constexpr DWORD rows = 10;
    static constexpr struct {
        const char* name;
        WORD attribute;
    } levels[] = {{"ERR", 0x0C}, {"WARN", 0x0E}, {"INFO", 0x07}, {"DEBUG", 0x02}, {"TRACE", 0x03}};
};

TEST_F(TailOnAConsole, HasTheColorOfEachLevel) {
    tail("");
    for (SHORT y = 0; y < 5; ++y) {
        EXPECT_EQ(attributeOfPart(y, levels[y].name), levels[y].attribute) << text(y);
    }
    EXPECT_EQ(attribute(), whiteOnBlack);
}

TEST_F(TailOnAConsole, HasTheColorWhereTheFormatSaysSo) {
    tail("--format \"{color_start}{scope}{color_end} {msg}\"");
    for (SHORT y = 0; y < 5; ++y) {
        EXPECT_EQ(attributeOfPart(y, levels[y].name), levels[y].attribute) << text(y);
        EXPECT_EQ(attributeOfPart(y, "text"), whiteOnBlack) << text(y);
    }
}

TEST_F(TailOnAConsole, WritesInTheCodePageOfTheConsole) {
    const UINT before = GetConsoleOutputCP();
    for (const UINT codePage : {850u, 1252u}) {
        ASSERT_NE(SetConsoleOutputCP(codePage), 0);
        ASSERT_NE(SetConsoleCursorPosition(output, home), 0);
        tail("--format \"{msg}\"", "gr\xC3\xBC\xC3\x9F");
        wchar_t row[6] = {};
        DWORD count = 0;
        EXPECT_NE(ReadConsoleOutputCharacterW(output, row, 6, home, &count), 0);
        EXPECT_EQ(std::wstring(row, 6), L"gr\u00FC\u00DF  ") << codePage;
    }
    SetConsoleOutputCP(before);
}

TEST_F(TailOnAConsole, HasNoColorsInJsonAndRaw) {
    tail("--output json");
    EXPECT_EQ(attributeOfPart(0, "{\"time\":\""), whiteOnBlack);
    tail("--output raw");
    EXPECT_EQ(attributeOfPart(static_cast<SHORT>(cursorRow() - 5), "text"), whiteOnBlack);
}

TEST_F(TailOnAConsole, HasNoColorsIfTheEnvironmentSaysSo) {
    SetEnvironmentVariableA("VEK_NO_COLOR", "1");
    tail("");
    SetEnvironmentVariableA("VEK_NO_COLOR", nullptr);
    for (SHORT y = 0; y < 5; ++y) {
        EXPECT_EQ(attributeOfPart(y, levels[y].name), whiteOnBlack) << text(y);
    }
}

}  // namespace
