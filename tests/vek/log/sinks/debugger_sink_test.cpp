#include "vek/log/sinks/debugger_sink.h"

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/vek/log/sample_message.h"
#include "tests/vek/log/sinks/debugger_output.h"
#include "vek/base/console_colors.h"
#include "vek/base/windows.h"

namespace {

using namespace vek::log;
using vek::test::DebuggerOutput;
using vek::test::SampleAttrMessage;
using vek::test::SampleMessage;

constexpr std::size_t megabyte = 1024 * 1024;

SinkConfig withoutFlags(const std::vector<FormatToken>& format = {}) {
    return {true, false, false, false, INVALID, format};
}

// The only text that a sink with these settings hands over for `message`.
std::string shown(const SinkConfig& config, const Message& message) {
    const DebuggerOutput debugger;
    DebuggerSink(config).store(message);
    EXPECT_EQ(debugger.texts().size(), 1u);
    return debugger.texts().empty() ? std::string() : debugger.texts().front();
}

TEST(DebuggerSink, TellsItsTypeAndItsNameWhichAllInstancesShare) {
    const DebuggerSink first((SinkConfig()));
    const DebuggerSink second(withoutFlags());
    EXPECT_EQ(first.type(), 3);
    EXPECT_EQ(first.id(), "debugger");
    EXPECT_EQ(second.id(), first.id());
}

TEST(DebuggerSink, HasACopyOfItsSettings) {
    SinkConfig config = withoutFlags();
    config.max_level = WARN;
    const DebuggerSink sink(config);
    config = SinkConfig();
    EXPECT_NE(&sink.getConfig(), &config);
    EXPECT_FALSE(sink.getConfig().print_pids);
    EXPECT_TRUE(sink.accepts(WARN));
    EXPECT_FALSE(sink.accepts(INFO));
}

TEST(DebuggerSink, HandsOverOneTextWithOneLineFeedAtItsEnd) {
    EXPECT_EQ(shown(withoutFlags(), SampleMessage(WARN)), "[ WARN] tolmarhlp: text\n");
    EXPECT_EQ(shown(withoutFlags(compileFormat("{msg}|{pid}")), SampleMessage(WARN)),
              "text|4000000001\n");
    EXPECT_EQ(shown(withoutFlags(compileFormat("")), SampleMessage(WARN)), "\n");
    const std::string all = shown(SinkConfig(), SampleMessage(WARN));
    EXPECT_TRUE(all.starts_with("PID=4000000001 | TID=4294967295 | ")) << all;
    EXPECT_TRUE(all.ends_with(" | [ WARN] tolmarhlp: text\n")) << all;
}

TEST(DebuggerSink, ShowsAttributes) {
    SampleAttrMessage message(INFO);
    message.attrs = {{"b", "2"}, {"a", "1"}};
    const DebuggerOutput debugger;
    DebuggerSink sink(withoutFlags());
    static_cast<Sink&>(sink).store(static_cast<const AttrMessage&>(message));
    EXPECT_EQ(debugger.texts(),
              std::vector<std::string>{"[ INFO] tolmarhlp (a = 1, b = 2): text\n"});
}

TEST(DebuggerSink, EachMessageStandsAlone) {
    const DebuggerOutput debugger;
    DebuggerSink sink(withoutFlags(compileFormat("{msg}")));
    sink.store(SampleMessage(INFO, "a long text that comes first"));
    sink.store(SampleMessage(INFO, ""));
    sink.store(SampleMessage(INFO, "short"));
    EXPECT_EQ(debugger.texts(),
              (std::vector<std::string>{"a long text that comes first\n", "\n", "short\n"}));
}

TEST(DebuggerSink, TextsGoThroughUnchanged) {
    const SinkConfig config = withoutFlags(compileFormat("{msg}"));
    for (const std::string& text : {std::string("two\r\nlines\n"), std::string("100 % %s %n"),
                                    std::string("\xff\x80"), std::string(megabyte, 'x')}) {
        EXPECT_TRUE(shown(config, SampleMessage(INFO, text)) == text + "\n");
    }
}

TEST(DebuggerSink, SystemTakesATextUpToItsFirstNul) {
    using namespace std::string_literals;
    EXPECT_EQ(shown(withoutFlags(), SampleMessage(INFO, "a\0b"s)), "[ INFO] tolmarhlp: a");
}

TEST(DebuggerSink, DoesNotAskWhetherItIsEnabledAndDoesNotFilterByItself) {
    SinkConfig config = withoutFlags();
    config.enabled = false;
    config.max_level = OFF;
    EXPECT_EQ(shown(config, SampleMessage(TRACE)), "[TRACE] tolmarhlp: text\n");
}

TEST(DebuggerSink, HasNoColorsWhereTheyAreForced) {
    vek::setConsoleColors(true, true);
    EXPECT_EQ(shown(withoutFlags(), SampleMessage(ERR)), "[  ERR] tolmarhlp: text\n");
    EXPECT_EQ(
        shown(withoutFlags(compileFormat("{color_start}{msg}{color_end}")), SampleMessage(ERR)),
        "text\n");
    vek::setConsoleColors(false, false);
}

TEST(DebuggerSink, GoesOnWithoutADebugger) {
    ASSERT_FALSE(IsDebuggerPresent());
    DebuggerSink sink((SinkConfig()));
    EXPECT_NO_THROW(sink.store(SampleMessage(ERR)));
    EXPECT_NO_THROW(sink.store(SampleMessage(ERR)));
}

// Listens to the debugger output of all programs of the session, as a monitor does.
class Monitor {
  public:
    Monitor() {
        EXPECT_TRUE(isTheOnlyOne) << "another monitor is running";
        EXPECT_NE(buffer, nullptr);
        listener = std::thread([this] { listen(); });
    }

    ~Monitor() {
        end();
        UnmapViewOfFile(buffer);
        CloseHandle(mapping);
        CloseHandle(isReady);
        CloseHandle(hasData);
    }

    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

    // What this process has sent until now.
    const std::string& received() {
        end();
        return ownTexts;
    }

  private:
    static constexpr DWORD bufferSize = 4096;
    static constexpr DWORD limitMs = 10000;

    void listen() {
        while (WaitForSingleObject(hasData, limitMs) == WAIT_OBJECT_0 && !ending) {
            DWORD sender = 0;
            std::memcpy(&sender, buffer, sizeof sender);
            if (sender == GetCurrentProcessId()) {
                ownTexts += buffer + sizeof sender;
            }
            SetEvent(isReady);
        }
    }

    void end() {
        if (listener.joinable()) {
            // The listener has taken the last text once it is ready again.
            EXPECT_EQ(WaitForSingleObject(isReady, limitMs), WAIT_OBJECT_0);
            ending = true;
            SetEvent(hasData);
            listener.join();
        }
    }

    const HANDLE isReady = CreateEventA(nullptr, FALSE, TRUE, "DBWIN_BUFFER_READY");
    const HANDLE hasData = CreateEventA(nullptr, FALSE, FALSE, "DBWIN_DATA_READY");
    const HANDLE mapping = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                              bufferSize, "DBWIN_BUFFER");
    const bool isTheOnlyOne = GetLastError() != ERROR_ALREADY_EXISTS;
    const char* const buffer =
        static_cast<const char*>(MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0));
    std::atomic<bool> ending = false;
    std::string ownTexts;
    std::thread listener;
};

TEST(DebuggerSink, ReachesAMonitorOfTheSession) {
    std::string received;
    {
        Monitor monitor;
        DebuggerSink sink(withoutFlags());
        sink.store(SampleMessage(ERR, "first"));
        sink.store(SampleMessage(INFO, "second"));
        received = monitor.received();
    }
    EXPECT_EQ(received, "[  ERR] tolmarhlp: first\n[ INFO] tolmarhlp: second\n");
}

}  // namespace
