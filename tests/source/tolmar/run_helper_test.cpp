#include "source/tolmar/run_helper.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <gtest/gtest.h>

#include "tests/source/tolmar/scripted_system.h"
#include "vek/exception.h"
#include "vek/log/configurator.h"
#include "vek/pal.h"
#include "vek/pathinfo.h"

namespace {

using tolmar::test::Exited;
using tolmar::test::LogRecorder;
using tolmar::test::RangeCheckFailed;
using tolmar::test::ScriptedSystem;
using tolmar::test::Trace;

// The trace into which the entry point's two locals write, and where they fail.
Trace* life = nullptr;
enum class FailAt { nowhere, pal, configurator, configure } failAt = FailAt::nowhere;

struct RecordedPal {
    RecordedPal(bool handleQuit, int first, int second, void* quitContext) {
        life->push_back("pal(" + std::to_string(handleQuit) + ", " + std::to_string(first) + ", " +
                        std::to_string(second) + ", " + (quitContext ? "context" : "null") + ")");
        if (failAt == FailAt::pal) {
            throw vek::RuntimeError("no platform");
        }
    }
    ~RecordedPal() { life->push_back("~pal"); }
};

struct RecordedConfigurator {
    explicit RecordedConfigurator(TCLAP::CmdLineInterface* cmd) {
        life->push_back(cmd == nullptr ? "configurator(null)" : "configurator(parser)");
        if (failAt == FailAt::configurator) {
            throw vek::RuntimeError("no log");
        }
    }
    ~RecordedConfigurator() { life->push_back("~configurator"); }
    void configure(const std::string& name) {
        life->push_back("configure(" + name + ")");
        if (failAt == FailAt::configure) {
            throw std::runtime_error("bad settings");
        }
    }
};

class RunHelper : public testing::Test {
  protected:
    RunHelper() {
        life = &system.trace;
        failAt = FailAt::nowhere;
    }

    // Runs the helper and keeps what it wrote to std::cerr. Its result, or the code of its exit.
    int run(const std::string& tail) {
        testing::internal::CaptureStderr();
        int code = -1;
        try {
            code = tolmar::runHelper<RecordedPal, RecordedConfigurator>(system, tail.c_str());
        } catch (const Exited& exited) {
            code = exited.code;
        } catch (const RangeCheckFailed&) {
            code = -2;
        }
        errorOutput = testing::internal::GetCapturedStderr();
        return code;
    }

    ScriptedSystem system;
    std::string errorOutput;
};

const Trace framed = {"pal(0, 0, 4, null)", "configurator(null)", "~configurator", "~pal"};

TEST_F(RunHelper, EmptyTailDoesNothing) {
    EXPECT_EQ(run(""), 0);
    EXPECT_EQ(system.trace, framed);
    EXPECT_EQ(errorOutput, "");
}

TEST_F(RunHelper, TailThatIsTooLongDoesNothing) {
    EXPECT_EQ(run(std::string(223, 'x')), 0);
    EXPECT_EQ(system.trace, framed);
}

TEST_F(RunHelper, LongestTailIsProcessed) {
    system.serviceExists = false;
    EXPECT_EQ(run(std::string(222, 'x')), 0);
    EXPECT_EQ(system.trace[2], "configure(tolmarhlp)");
}

TEST_F(RunHelper, ReplaceModeReturnsThroughTheCommonEnd) {
    system.serviceExists = false;
    EXPECT_EQ(run("D"), 0);
    EXPECT_EQ(system.trace,
              (Trace{"pal(0, 0, 4, null)", "configurator(null)", "configure(tolmarhlp)",
                     "OpenSCManagerA(null, null, 0xF003F)",
                     "OpenServiceA(manager, tolmar, 0xF01FF)", "CloseServiceHandle(null)",
                     "CloseServiceHandle(manager)", "~configurator", "~pal"}));
}

TEST_F(RunHelper, GuiModeReturnsThroughTheCommonEnd) {
    EXPECT_EQ(run("-restartgui \"C:\\a dir\""), 0);
    EXPECT_EQ(
        system.trace,
        (Trace{"pal(0, 0, 4, null)", "configurator(null)", "configure(tolmarhlp-gui)",
               "openEvent(vektolmareventguiupdate1)", "openEvent(vektolmareventguiupdate2)",
               "setEvent(vektolmareventguiupdate1)", "waitObject(vektolmareventguiupdate2, 90000)",
               "closeObject(vektolmareventguiupdate1)", "closeObject(vektolmareventguiupdate2)",
               "WinExec(C:\\a dir/tolmar.exe -gui, 5)", "~configurator", "~pal"}));
}

TEST_F(RunHelper, EachModeLogsToItsOwnLogger) {
    vek::log::Manager& manager = vek::log::Manager::instance();
    vek::log::Logger& replaceLogger = *manager.getLogger("TOLMAR_HELPER");
    vek::log::Logger& guiLogger = *manager.getLogger("TOLMAR_GUIHELPER");
    Trace replaceLines;
    Trace guiLines;
    LogRecorder replaceRecorder(replaceLogger, replaceLines);
    LogRecorder guiRecorder(guiLogger, guiLines);
    replaceLogger.setLevel(vek::log::DEBUG, false);
    guiLogger.setLevel(vek::log::DEBUG, false);
    system.serviceExists = false;
    run("D");
    EXPECT_EQ(replaceLines, (Trace{"log: start tolmarhlp", "log: stopping tolmar"}));
    EXPECT_EQ(guiLines, Trace{});
    run("-restartgui D");
    EXPECT_EQ(replaceLines.size(), 2u);
    EXPECT_EQ(guiLines, (Trace{"log: wait for event2", "log: event2 triggert",
                               "log: start tolmar.exe -gui wuth retcode=33"}));
    replaceLogger.setLevel(vek::log::WARN, false);
    guiLogger.setLevel(vek::log::WARN, false);
}

// Keeps what helperDirectory was when a logger's first line was written.
class DirectoryAtFirstLine : public std::streambuf {
  public:
    explicit DirectoryAtFirstLine(vek::log::Logger& watchedLogger)
        : logger(watchedLogger), ownBuffer(logger.stream().rdbuf(this)) {
        logger.releaseStream();
    }
    ~DirectoryAtFirstLine() override {
        logger.stream().rdbuf(ownBuffer);
        logger.releaseStream();
    }

    std::string line;
    std::string directory;

  protected:
    std::streamsize xsputn(const char* text, std::streamsize length) override {
        if (line.empty()) {
            line.assign(text, static_cast<std::size_t>(length));
            directory = tolmar::helperDirectory.data();
        }
        return ownBuffer->sputn(text, length);
    }

  private:
    vek::log::Logger& logger;
    std::streambuf* ownBuffer;
};

TEST_F(RunHelper, LineOfTheStartComesAheadOfTheQuoteStripping) {
    vek::log::Logger& logger = *vek::log::Manager::instance().getLogger("TOLMAR_HELPER");
    logger.setLevel(vek::log::DEBUG, false);
    system.serviceExists = false;
    std::strcpy(tolmar::helperDirectory.data(), "not written yet");
    {
        const DirectoryAtFirstLine first(logger);
        run("\"D\"");
        EXPECT_EQ(first.line, "start tolmarhlp");
        EXPECT_EQ(first.directory, "not written yet");
    }
    EXPECT_STREQ(tolmar::helperDirectory.data(), "D");
    logger.setLevel(vek::log::WARN, false);
}

TEST_F(RunHelper, GuiModeHasNoLineOfItsStart) {
    vek::log::Logger& guiLogger = *vek::log::Manager::instance().getLogger("TOLMAR_GUIHELPER");
    Trace guiLines;
    LogRecorder recorder(guiLogger, guiLines);
    guiLogger.setLevel(vek::log::DEBUG, false);
    EXPECT_EQ(run("-restartgui \""), -2);
    EXPECT_EQ(guiLines, Trace{});
    guiLogger.setLevel(vek::log::WARN, false);
}

TEST_F(RunHelper, LoneQuoteInGuiModeEndsTheProcessAtOnce) {
    EXPECT_EQ(run("-restartgui \""), -2);
    EXPECT_EQ(Trace(system.trace.begin(), system.trace.begin() + 4),
              (Trace{"pal(0, 0, 4, null)", "configurator(null)", "configure(tolmarhlp-gui)",
                     "rangeCheckFailure()"}));
}

TEST_F(RunHelper, EmptyDirectoryMakesPathsThatStartWithTheSlash) {
    run("\"\"");
    EXPECT_NE(std::find(system.trace.begin(), system.trace.end(), "DeleteFileA(/tolmar.old)"),
              system.trace.end());
}

TEST_F(RunHelper, QuotedDirectoryYieldsTheSamePathsAsAPlainOne) {
    run("\"D\"");
    EXPECT_NE(std::find(system.trace.begin(), system.trace.end(),
                        "MoveFileA(D/tolmar.exe, D/tolmar.old)"),
              system.trace.end());
}

TEST_F(RunHelper, FailingPalConstructorIsToldAndChangesNothing) {
    failAt = FailAt::pal;
    EXPECT_EQ(run("D"), 0);
    EXPECT_EQ(errorOutput, "no platform");
    EXPECT_EQ(system.trace, (Trace{"pal(0, 0, 4, null)"}));
}

TEST_F(RunHelper, FailingConfiguratorConstructorIsToldAndChangesNothing) {
    failAt = FailAt::configurator;
    EXPECT_EQ(run("D"), 0);
    EXPECT_EQ(errorOutput, "no log");
    EXPECT_EQ(system.trace, (Trace{"pal(0, 0, 4, null)", "configurator(null)", "~pal"}));
}

TEST_F(RunHelper, AnyStandardExceptionIsToldWithoutALineEnd) {
    failAt = FailAt::configure;
    EXPECT_EQ(run("D"), 0);
    EXPECT_EQ(errorOutput, "bad settings");
    EXPECT_EQ(Trace(system.trace.end() - 2, system.trace.end()), (Trace{"~configurator", "~pal"}));
}

TEST_F(RunHelper, ExceptionWithinTheProcedureIsToldAndGivesZero) {
    system.fails = [](const std::string& call, int, int) { return call == "PathInfo::get"; };
    EXPECT_EQ(run("D"), 0);
    EXPECT_EQ(errorOutput, "PathInfo Error: scripted failure");
    EXPECT_EQ(Trace(system.trace.end() - 2, system.trace.end()), (Trace{"~configurator", "~pal"}));
}

TEST_F(RunHelper, OtherExceptionsPass) {
    system.before = [](const std::string&) { throw 42; };
    EXPECT_THROW(run("D"), int);
    testing::internal::GetCapturedStderr();
}

TEST_F(RunHelper, WorksOnTheRealLocals) {
    EXPECT_EQ((tolmar::runHelper<vek::VekPal, vek::log::Configurator>(system, "")), 0);
    EXPECT_EQ(system.trace, Trace{});
    EXPECT_EQ(vek::VekPal::current(), nullptr);
}

// Ends the process for real, which the locals must not notice, while static objects do.

struct TellingPal {
    TellingPal(bool, int, int, void*) {}
    ~TellingPal() { std::fputs("pal destroyed\n", stderr); }
};

struct TellingConfigurator {
    explicit TellingConfigurator(TCLAP::CmdLineInterface*) {}
    ~TellingConfigurator() { std::fputs("configurator destroyed\n", stderr); }
    void configure(const std::string&) {
        static const struct Static {
            ~Static() { std::fputs("static destroyed\n", stderr); }
        } object;
    }
};

TEST(RunHelperDeathTest, ExitRunsStaticDestructorsButNotThoseOfTheLocals) {
    const auto runToExit = [] {
        ScriptedSystem system;
        system.before = [](const std::string& call) {
            if (call == "exit") {
                std::exit(0);
            }
        };
        tolmar::runHelper<TellingPal, TellingConfigurator>(system, "D");
    };
    EXPECT_EXIT(runToExit(), testing::ExitedWithCode(0), "^static destroyed\r?\n$");
}

}  // namespace
