#include "vek/base/terminate_handler.h"

#include <exception>
#include <stdexcept>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

// The runtime's exit code for abort.
constexpr int aborted = 3;

template <class T>
void throwIt(const T& thrown) {
    throw thrown;
}

// Lets `thrown` reach the terminate handler.
template <class T>
[[noreturn]] void throwUncaught(const T& thrown) {
    vek::installTerminateHandler();
    [&]() noexcept { throwIt(thrown); }();
    std::abort();
}

struct EndsTheProgramWhenDestroyed {
    ~EndsTheProgramWhenDestroyed() { std::terminate(); }
};

// The whole error output, with either kind of line end.
std::string exactly(std::string text) {
    std::string pattern = "^";
    for (const char ch : text) {
        if (ch == '\n') {
            pattern += "\r?\n";
        } else if (std::string("().*+?[]{}|\\^$").find(ch) != std::string::npos) {
            pattern += std::string("\\") + ch;
        } else {
            pattern += ch;
        }
    }
    return pattern;
}

TEST(TerminateHandlerDeathTest, TellsAFrameworkExceptionWithItsCauses) {
    EXPECT_EXIT(throwUncaught(vek::RuntimeError("outer", vek::RuntimeError("inner"))),
                testing::ExitedWithCode(aborted),
                exactly(">>> unhandled exception occured <<<\n"
                        "vek::Exception:\nouter\ninner\n\nTerminating program\n\n"));
}

TEST(TerminateHandlerDeathTest, TellsAStandardException) {
    EXPECT_EXIT(throwUncaught(std::runtime_error("plain")), testing::ExitedWithCode(aborted),
                exactly(">>> unhandled exception occured <<<\n"
                        "std::exception:\n\nplain\nTerminating program\n\n"));
}

TEST(TerminateHandlerDeathTest, TellsOfAnyOtherException) {
    EXPECT_EXIT(throwUncaught(42), testing::ExitedWithCode(aborted),
                exactly(">>> unhandled exception occured <<<\n"
                        "unknown exception type\nTerminating program\n\n"));
}

TEST(TerminateHandlerDeathTest, ExceptionThatIsStillOnItsWayCountsAsOneThatCantBeLookedAt) {
    EXPECT_EXIT(
        {
            vek::installTerminateHandler();
            try {
                const EndsTheProgramWhenDestroyed object;
                throwIt(std::runtime_error("on its way"));
            } catch (const std::exception&) {
            }
        },
        testing::ExitedWithCode(aborted),
        exactly(">>> unhandled exception occured <<<\n"
                "unknown exception type\nTerminating program\n\n"));
}

TEST(TerminateHandlerDeathTest, TellsThatTheReasonIsUnknown) {
    EXPECT_EXIT(
        {
            vek::installTerminateHandler();
            std::terminate();
        },
        testing::ExitedWithCode(aborted),
        exactly("Program terminated for an unknown reason (e.g. pure virtual method call)\n"
                "Terminating program\n\n"));
}

TEST(TerminateHandler, IsNotInstalledWhenTheEnvironmentSaysSo) {
    const std::terminate_handler before = std::get_terminate();
    for (const char* value : {"1", ""}) {
        SetEnvironmentVariableA("VEKPAL_NO_TERMINATE_HANDLER", value);
        EXPECT_NO_THROW(vek::installTerminateHandler());
        EXPECT_EQ(std::get_terminate(), before) << '"' << value << '"';
    }
    SetEnvironmentVariableA("VEKPAL_NO_TERMINATE_HANDLER", nullptr);
    vek::installTerminateHandler();
    EXPECT_NE(std::get_terminate(), before);
    std::set_terminate(before);
}

}  // namespace
