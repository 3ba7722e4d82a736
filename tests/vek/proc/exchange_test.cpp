#include <cstdlib>

#include "tests/support/open_handles.h"
#include "tests/vek/proc/inherited_pipes.h"
#include "tests/vek/proc/own_streams.h"
#include "tests/vek/proc/proc_test.h"
#include "tests/vek/proc/temporary_file.h"
#include "vek/thread/thread.h"

namespace {

using vek::UsageError;
using vek::proc::Program;

// Far more than a pipe holds.
constexpr std::size_t large = 300000;

class Exchange : public vek::test::ProcTest {
  protected:
    Program program;
    std::string input;
    std::string output;
    std::string errors;
};

TEST_F(Exchange, CarriesMoreThanAPipeHoldsInAllThreeDirectionsAtOnce) {
    prepare(program, {"copy"});
    for (std::size_t i = 0; i < large; ++i) {
        input += static_cast<char>('a' + i % 23);
    }
    EXPECT_TRUE(program.exchange(&input, &output, &errors));
    EXPECT_EQ(output, input);
    EXPECT_EQ(errors, input);
}

TEST_F(Exchange, ServesAChildThatWritesBothOutputsBeforeItReads) {
    prepare(program, {"flood", std::to_string(large)});
    input.assign(large, 'i');
    EXPECT_TRUE(program.exchange(&input, &output, &errors));
    EXPECT_EQ(output, std::string(large, 'o') + std::to_string(large));
    EXPECT_EQ(errors, std::string(large, 'e'));
}

TEST_F(Exchange, CarriesEveryByteAsItIs) {
    prepare(program, {"copy"});
    for (int i = 0; i < 256; ++i) {
        input += static_cast<char>(i);
    }
    input += "\r\n\x1A\n";
    EXPECT_TRUE(program.exchange(&input, &output, nullptr));
    EXPECT_EQ(output, input);
}

TEST_F(Exchange, AppendsToWhatIsThere) {
    prepare(program, {"say", "new", "wrong", "0"});
    output = "old ";
    errors = "quite ";
    EXPECT_TRUE(program.exchange(nullptr, &output, &errors));
    EXPECT_EQ(output, "old new");
    EXPECT_EQ(errors, "quite wrong");
}

TEST_F(Exchange, OneStringForBothOutputsGetsThemInTheirOrderThroughOnePipe) {
    prepare(program, {"say", "out ", "err", "0"});
    EXPECT_TRUE(program.exchange(nullptr, &output, &output));
    EXPECT_EQ(output, "out err");
    prepare(program, {"copy"});
    input = "ab";
    output.clear();
    EXPECT_TRUE(program.exchange(&input, &output, &output));
    EXPECT_EQ(output, "abab");
    prepare(program, {"pipes"});
    output.clear();
    EXPECT_TRUE(program.exchange(nullptr, &output, &output));
    EXPECT_EQ(output, std::to_string(vek::test::pipesWithoutOurs() + 1));
}

TEST_F(Exchange, OneStringForBothOutputsTakesMoreThanAPipeHolds) {
    prepare(program, {"flood", std::to_string(large)});
    input.assign(large, 'i');
    EXPECT_TRUE(program.exchange(&input, &output, &output));
    EXPECT_EQ(output, std::string(large, 'e') + std::string(large, 'o') + std::to_string(large));
}

TEST_F(Exchange, InputCannotBeAnOutput) {
    prepare(program, {"exit", "0"});
    const std::string message =
        "Usage error: Passed the same string object for stdin as for stdout and/or stderr";
    EXPECT_EQ(thrown<UsageError>([&] { program.exchange(&input, &input, nullptr); }), message);
    EXPECT_EQ(thrown<UsageError>([&] { program.exchange(&input, nullptr, &input); }), message);
    EXPECT_EQ(thrown<UsageError>([&] { program.exchange(&input, &input, &input); }), message);
    EXPECT_EQ(program.getProcess().dwProcessId, 0u);
}

TEST_F(Exchange, StreamsWithoutAStringAreTheNullDevice) {
    const vek::test::TemporaryFile result;
    const vek::test::TemporaryFile own;
    const vek::test::OwnStreams streams(own.handle());
    prepare(program, {"streams", result.path});
    EXPECT_TRUE(program.exchange(nullptr, nullptr, nullptr));
    EXPECT_EQ(result.contents(), "2 2 2 ");
    EXPECT_TRUE(program.exchange(&input, nullptr, nullptr));
    EXPECT_EQ(result.contents(), "3 2 2 ");
    EXPECT_TRUE(program.exchange(nullptr, &output, nullptr));
    EXPECT_EQ(result.contents(), "2 3 2 ");
    EXPECT_TRUE(program.exchange(nullptr, nullptr, &errors));
    EXPECT_EQ(result.contents(), "2 2 3 ");
}

TEST_F(Exchange, EmptyInputEndsAtOnce) {
    prepare(program, {"count"});
    EXPECT_TRUE(program.exchange(&input, &output, nullptr));
    EXPECT_EQ(output, "0");
}

TEST_F(Exchange, ChildThatClosesItsInputEarlyTakesNoMoreAndNothingIsReported) {
    prepare(program, {"close-input", "4"});
    input.assign(large, 'i');
    testing::internal::CaptureStderr();
    EXPECT_FALSE(program.exchange(&input, &output, nullptr));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(output, "closed");
    EXPECT_EQ(program.getStatus().code, 4u);
}

TEST_F(Exchange, ChildThatNeverReadsIsWaitedForToItsEnd) {
    prepare(program, {"sleep", "200", "0"});
    input.assign(large, 'i');
    testing::internal::CaptureStderr();
    EXPECT_TRUE(program.exchange(&input, &output, &errors));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(output, "");
    EXPECT_EQ(errors, "");
}

TEST_F(Exchange, ChildThatFailsGivesFalseAndItsOutput) {
    prepare(program, {"say", "out", "err", "9"});
    EXPECT_FALSE(program.exchange(nullptr, &output, &errors));
    EXPECT_EQ(output, "out");
    EXPECT_EQ(errors, "err");
    EXPECT_EQ(program.getStatus().code, 9u);
}

// Reserves all free address space in blocks of `smallest` bytes or more.
void takeTheAddressSpace(SIZE_T smallest) {
    for (SIZE_T size = 64u << 20; size >= smallest; size /= 2) {
        while (VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS) != nullptr) {
        }
    }
}

[[noreturn]] void exchangeWithoutRoom(Program& program) {
    std::string text;
    try {
        // Starts the shepherd's thread.
        program.exchange(nullptr, &text, nullptr);
        // Leaves none for the stack of another thread.
        takeTheAddressSpace(512u << 10);
        program.exchange(nullptr, &text, nullptr);
    } catch (...) {
        std::_Exit(1);
    }
    std::_Exit(2);
}

TEST_F(Exchange, ThreadThatCannotBeStartedEndsTheProcessThroughTerminate) {
    prepare(program, {"say", "text", "", "0"});
    EXPECT_EXIT(exchangeWithoutRoom(program), testing::ExitedWithCode(3), "unhandled exception");
}

// Exits with 0 if everything is as it should be.
[[noreturn]] void exchangeTooMuch(Program& program, bool merged) {
    std::string input(large, 'i');
    std::string output;
    std::string errors;
    int failures = 0;
    output.reserve(1u << 20);
    errors.reserve(1u << 20);
    // The heap itself can't grow any more below, so it gets some room first.
    { const std::vector<std::string> room(200, std::string(4096, ' ')); }
    // Leaves room for stacks, but not for an output of this size: holes of 4 MB each.
    std::vector<void*> holes;
    for (int i = 0; i < 12; ++i) {
        holes.push_back(VirtualAlloc(nullptr, 4u << 20, MEM_RESERVE, PAGE_NOACCESS));
        VirtualAlloc(nullptr, 64u << 10, MEM_RESERVE, PAGE_NOACCESS);
    }
    takeTheAddressSpace(512u << 10);
    for (void* const hole : holes) {
        VirtualFree(hole, 0, MEM_RELEASE);
    }
    try {
        program.exchange(&input, &output, merged ? &output : &errors);
        failures += 1;
    } catch (const std::bad_alloc&) {
    }
    failures += (merged ? output : errors).size() > large ? 0 : 2;
    failures += program.getProcess().dwProcessId == 0 && program.getStatus().finished ? 0 : 4;
    failures += vek::thread::Thread::liveCount() == 1 ? 0 : 8;
    std::_Exit(failures);
}

TEST_F(Exchange, OutputWithoutRoomThrowsAndTheChildIsFinished) {
    // It writes more to its errors than there is room for.
    prepare(program, {"flood", std::to_string(20 << 20)});
    EXPECT_EXIT(exchangeTooMuch(program, false), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exchangeTooMuch(program, true), testing::ExitedWithCode(0), "");
}

TEST_F(Exchange, LeavesNoHandleAndNoThread) {
    prepare(program, {"copy"});
    input = "text";
    program.exchange(&input, &output, &errors);
    const std::size_t handles = support::openHandles().size();
    const std::uint32_t threads = vek::thread::Thread::liveCount();
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(program.exchange(&input, &output, &errors));
    }
    EXPECT_EQ(support::openHandles().size(), handles);
    EXPECT_EQ(vek::thread::Thread::liveCount(), threads);
    EXPECT_EQ(output, "texttexttexttexttexttext");
}

}  // namespace
