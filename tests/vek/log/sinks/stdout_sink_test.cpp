#include "vek/log/sinks/stdout_sink.h"

#include <functional>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/standard_output.h"
#include "tests/vek/log/sample_message.h"
#include "vek/base/console_colors.h"
#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

using namespace vek::log;
using support::StandardOutputTo;
using vek::test::SampleAttrMessage;
using vek::test::SampleMessage;

SinkConfig withoutFlags(const std::vector<FormatToken>& format = {}) {
    return {true, false, false, false, INVALID, format};
}

// Something that isn't a console and can be read back.
class Target {
  public:
    virtual ~Target() = default;

    void printTo(const std::function<void()>& print) const {
        const StandardOutputTo redirection(handle);
        print();
    }

    // What has reached it, all of it or since the last time.
    virtual std::string read() = 0;

    HANDLE handle = nullptr;
};

class PipeTarget : public Target {
  public:
    PipeTarget() { EXPECT_NE(CreatePipe(&readEnd, &handle, nullptr, 0), 0); }
    ~PipeTarget() override {
        CloseHandle(handle);
        CloseHandle(readEnd);
    }

    std::string read() override {
        DWORD size = 0;
        EXPECT_NE(PeekNamedPipe(readEnd, nullptr, 0, nullptr, &size, nullptr), 0);
        std::string text(size, '\0');
        if (size != 0) {
            EXPECT_NE(ReadFile(readEnd, text.data(), size, &size, nullptr), 0);
        }
        return text;
    }

  private:
    HANDLE readEnd = nullptr;
};

class FileTarget : public Target {
  public:
    FileTarget() {
        char directory[MAX_PATH];
        char name[MAX_PATH];
        EXPECT_NE(GetTempPathA(sizeof directory, directory), 0u);
        EXPECT_NE(GetTempFileNameA(directory, "vek", 0, name), 0u);
        handle = CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                             FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        EXPECT_NE(handle, INVALID_HANDLE_VALUE);
    }
    ~FileTarget() override { CloseHandle(handle); }

    std::string read() override {
        DWORD size = GetFileSize(handle, nullptr);
        std::string text(size, '\0');
        SetFilePointer(handle, 0, nullptr, FILE_BEGIN);
        EXPECT_NE(ReadFile(handle, text.data(), size, &size, nullptr), 0);
        return text;
    }
};

class StdoutSinkTest : public testing::Test {
  protected:
    StdoutSinkTest() {
        SetEnvironmentVariableA("VEK_NO_COLOR", nullptr);
        SetEnvironmentVariableA("VEK_FORCE_COLOR", nullptr);
    }

    ~StdoutSinkTest() override {
        SetEnvironmentVariableA("VEK_FORCE_COLOR", nullptr);
        vek::setConsoleColors(false, false);
    }

    // What a sink with these settings writes into a pipe.
    static std::string written(const SinkConfig& config, const Message& message) {
        PipeTarget pipe;
        pipe.printTo([&] { StdoutSink(config).store(message); });
        return pipe.read();
    }
};

TEST_F(StdoutSinkTest, TellsItsTypeAndItsNameWhichAllInstancesShare) {
    const StdoutSink first((SinkConfig()));
    const StdoutSink second(withoutFlags());
    EXPECT_EQ(first.type(), 0);
    EXPECT_EQ(first.id(), "stdout");
    EXPECT_EQ(second.id(), first.id());
}

TEST_F(StdoutSinkTest, HasACopyOfItsSettings) {
    SinkConfig config = withoutFlags(compileFormat("a{msg}"));
    config.max_level = WARN;
    const auto sink = std::make_unique<StdoutSink>(config);
    config = SinkConfig();
    EXPECT_NE(&sink->getConfig(), &config);
    EXPECT_EQ(sink->getConfig().format.size(), 3u);
    EXPECT_TRUE(sink->accepts(WARN));
    EXPECT_FALSE(sink->accepts(INFO));
}

TEST_F(StdoutSinkTest, WritesOneLineForEachMessage) {
    EXPECT_EQ(written(withoutFlags(), SampleMessage(WARN)), "[ WARN] tolmarhlp: text\r\n");
    EXPECT_EQ(written(withoutFlags(compileFormat("{msg}|{pid}")), SampleMessage(WARN)),
              "text|4000000001\r\n");
    EXPECT_EQ(written(withoutFlags(compileFormat("")), SampleMessage(WARN)), "\r\n");
    const std::string all = written(SinkConfig(), SampleMessage(WARN));
    EXPECT_TRUE(all.starts_with("PID=4000000001 | TID=4294967295 | ")) << all;
    EXPECT_TRUE(all.ends_with(" | [ WARN] tolmarhlp: text\r\n")) << all;
}

TEST_F(StdoutSinkTest, ShowsAttributes) {
    SampleAttrMessage message(INFO);
    message.attrs = {{"b", "2"}, {"a", "1"}};
    PipeTarget pipe;
    pipe.printTo([&] {
        StdoutSink sink(withoutFlags());
        static_cast<Sink&>(sink).store(static_cast<const AttrMessage&>(message));
    });
    EXPECT_EQ(pipe.read(), "[ INFO] tolmarhlp (a = 1, b = 2): text\r\n");
}

TEST_F(StdoutSinkTest, DoesNotAskWhetherItIsEnabled) {
    SinkConfig config = withoutFlags();
    config.enabled = false;
    EXPECT_EQ(written(config, SampleMessage(WARN)), "[ WARN] tolmarhlp: text\r\n");
}

TEST_F(StdoutSinkTest, DoesNotFilterByItself) {
    SinkConfig config = withoutFlags();
    config.max_level = OFF;
    EXPECT_EQ(written(config, SampleMessage(TRACE)), "[TRACE] tolmarhlp: text\r\n");
}

TEST_F(StdoutSinkTest, EachMessageIsThereWhenStoreReturns) {
    PipeTarget pipe;
    FileTarget file;
    for (Target* const target : {static_cast<Target*>(&pipe), static_cast<Target*>(&file)}) {
        std::string early;
        target->printTo([&] {
            StdoutSink sink(withoutFlags());
            sink.store(SampleMessage(ERR, "first"));
            early = target->read();
        });
        EXPECT_EQ(early, "[  ERR] tolmarhlp: first\r\n");
    }
}

TEST_F(StdoutSinkTest, TextsGoThroughUnchanged) {
    using namespace std::string_literals;
    constexpr std::size_t megabyte = 1024 * 1024;
    for (const std::string& text :
         {"a\0b\0"s, "100 % %s"s, "\x1b[31m"s, std::string(megabyte, 'x')}) {
        FileTarget file;
        file.printTo([&] { StdoutSink(withoutFlags()).store(SampleMessage(ERR, text)); });
        EXPECT_TRUE(file.read() == "[  ERR] tolmarhlp: " + text + "\r\n");
    }
}

TEST_F(StdoutSinkTest, WidthThatOthersLeftOnTheStreamIsTheirs) {
    PipeTarget pipe;
    pipe.printTo([] {
        std::cout << std::setw(6) << std::hex;
        StdoutSink({true, true, false, false, INVALID, {}}).store(SampleMessage(ERR));
        std::cout << 31 << std::dec << std::endl;
    });
    EXPECT_EQ(pipe.read(), "PID=4000000001 | [  ERR] tolmarhlp: text\r\n    1f\r\n");
}

TEST_F(StdoutSinkTest, StreamInAFailedStateTakesNothingInSilence) {
    PipeTarget pipe;
    pipe.printTo([] {
        StdoutSink sink(withoutFlags());
        std::cout.setstate(std::ios_base::failbit);
        EXPECT_NO_THROW(sink.store(SampleMessage(ERR, "lost")));
        std::cout.clear();
        sink.store(SampleMessage(ERR, "kept"));
    });
    EXPECT_EQ(pipe.read(), "[  ERR] tolmarhlp: kept\r\n");
}

TEST_F(StdoutSinkTest, OutputThatCannotBeWrittenIsLostInSilence) {
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    ASSERT_NE(CreatePipe(&readEnd, &writeEnd, nullptr, 0), 0);
    CloseHandle(readEnd);
    {
        const StandardOutputTo redirection(writeEnd);
        StdoutSink sink((SinkConfig()));
        EXPECT_NO_THROW(sink.store(SampleMessage(ERR)));
        EXPECT_FALSE(std::cout.good());
        EXPECT_NO_THROW(sink.store(SampleMessage(ERR)));
    }
    CloseHandle(writeEnd);
}

TEST_F(StdoutSinkTest, WhatTheStreamThrowsPassesThrough) {
    PipeTarget pipe;
    pipe.printTo([] {
        StdoutSink sink(withoutFlags());
        std::cout.setstate(std::ios_base::badbit);
        EXPECT_THROW(std::cout.exceptions(std::ios_base::badbit), std::ios_base::failure);
        EXPECT_THROW(sink.store(SampleMessage(ERR)), std::ios_base::failure);
        std::cout.clear();
        std::cout.exceptions(std::ios_base::goodbit);
    });
}

TEST_F(StdoutSinkTest, FilesAndPipesAreNotColored) {
    PipeTarget pipe;
    FileTarget file;
    for (Target* const target : {static_cast<Target*>(&pipe), static_cast<Target*>(&file)}) {
        target->printTo([] {
            vek::initConsoleColors();
            StdoutSink plain(withoutFlags());
            StdoutSink formatted(withoutFlags(compileFormat("<{color_start}{msg}{color_end}>")));
            for (int level = OFF; level <= INVALID; ++level) {
                EXPECT_NO_THROW(plain.store(SampleMessage(static_cast<Level>(level))));
            }
            EXPECT_NO_THROW(formatted.store(SampleMessage(ERR)));
        });
        EXPECT_EQ(target->read(),
                  "[  OFF] tolmarhlp: text\r\n[  ERR] tolmarhlp: text\r\n"
                  "[ WARN] tolmarhlp: text\r\n[ INFO] tolmarhlp: text\r\n"
                  "[DEBUG] tolmarhlp: text\r\n[TRACE] tolmarhlp: text\r\n"
                  "[DEFAULT] tolmarhlp: text\r\n[INVALID] tolmarhlp: text\r\n<text>\r\n");
    }
}

// The error that the system has for an output that is no console.
DWORD noConsole(HANDLE handle) {
    CONSOLE_SCREEN_BUFFER_INFO info;
    EXPECT_EQ(GetConsoleScreenBufferInfo(handle, &info), 0);
    return GetLastError();
}

// What reaches `target` of one message while colours are forced, whose `store` has to throw.
std::string leftByAFailure(Target& target, const SinkConfig& config, Level level) {
    SetEnvironmentVariableA("VEK_FORCE_COLOR", "1");
    target.printTo([&] {
        vek::initConsoleColors();
        StdoutSink sink(config);
        try {
            sink.store(SampleMessage(level));
            ADD_FAILURE() << "nothing was thrown";
        } catch (const vek::Exception& thrown) {
            const auto* const error = dynamic_cast<const vek::OsError*>(&thrown);
            EXPECT_NE(error, nullptr);
            EXPECT_TRUE(error != nullptr && error->code() == noConsole(target.handle));
        }
    });
    return target.read();
}

TEST_F(StdoutSinkTest, ForcedColorsOnAFileOrAPipeAreAnErrorOfTheSystem) {
    for (int level = OFF; level <= INVALID; ++level) {
        const bool touches =
            level == ERR || level == WARN || level == DEBUG || level == TRACE || level == DEFAULT;
        PipeTarget pipe;
        FileTarget file;
        for (Target* const target : {static_cast<Target*>(&pipe), static_cast<Target*>(&file)}) {
            const std::string left =
                leftByAFailure(*target, withoutFlags(), static_cast<Level>(level));
            // A level without a colour fails at the end of the colours, after its text.
            EXPECT_EQ(left.empty(), touches) << level << left;
            EXPECT_EQ(left.find('\n'), std::string::npos) << left;
        }
    }
}

TEST_F(StdoutSinkTest, ForcedColorsFailAtTheKeywordThatAsksForThem) {
    PipeTarget pipe;
    EXPECT_EQ(leftByAFailure(pipe, withoutFlags(compileFormat("{msg}{color_start}x")), ERR),
              "text");
    EXPECT_EQ(
        leftByAFailure(pipe, withoutFlags(compileFormat("a{color_start}b{color_end}c")), INFO),
        "ab");
    pipe.printTo(
        [] { StdoutSink(withoutFlags(compileFormat("{msg}"))).store(SampleMessage(ERR)); });
    EXPECT_EQ(pipe.read(), "text\r\n") << "a format that asks for none needs no console";
}

// It is taken for a console, being a character device.
TEST_F(StdoutSinkTest, NulDeviceIsColoredAndThereforeAnError) {
    const HANDLE nul =
        CreateFileA("nul", GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    {
        const StandardOutputTo redirection(nul);
        vek::initConsoleColors();
        StdoutSink sink(withoutFlags());
        EXPECT_THROW(sink.store(SampleMessage(ERR)), vek::OsError);
    }
    CloseHandle(nul);
}

TEST_F(StdoutSinkTest, ColorsAreSettledWhenTheSinkIsMade) {
    PipeTarget pipe;
    pipe.printTo([] {
        StdoutSink sink(withoutFlags());
        vek::setConsoleColors(true, true);
        EXPECT_NO_THROW(sink.store(SampleMessage(ERR)));
        EXPECT_THROW(StdoutSink(withoutFlags()).store(SampleMessage(ERR)), vek::OsError);
        vek::setConsoleColors(false, true);
        EXPECT_NO_THROW(StdoutSink(withoutFlags()).store(SampleMessage(ERR)));
    });
    EXPECT_EQ(pipe.read(), "[  ERR] tolmarhlp: text\r\n[  ERR] tolmarhlp: text\r\n");
}

}  // namespace
