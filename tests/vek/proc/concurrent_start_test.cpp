#include <atomic>
#include <thread>

#include "tests/vek/proc/inherited_pipes.h"
#include "tests/vek/proc/proc_test.h"
#include "vek/fs/stream_file.h"

namespace {

using vek::proc::Child;
using vek::proc::Pipe;
using vek::proc::PipeEnd;
using vek::proc::Program;
using vek::test::NamedEvent;

// A barrier for two threads. (std::barrier of this compiler's library sometimes doesn't wake a
// thread.)
class Meeting {
  public:
    void arriveAndWait() {
        const int mine = ++arrivals;
        const int both = mine + mine % 2;
        while (arrivals < both) {
            std::this_thread::yield();
        }
    }

  private:
    std::atomic<int> arrivals = 0;
};

class ConcurrentStart : public vek::test::ProcTest {};

TEST_F(ConcurrentStart, PipedChildrenOfTwoThreadsGetOnlyTheirOwnEnds) {
    constexpr int rounds = 25;
    const std::string expected = std::to_string(vek::test::pipesWithoutOurs() + 3);
    Meeting together;
    std::atomic<int> strays = 0;
    const auto startChildren = [&] {
        Program program;
        prepare(program, {"pipes"});
        for (int i = 0; i < rounds; ++i) {
            std::string input;
            std::string output;
            std::string errors;
            together.arriveAndWait();
            program.exchange(&input, &output, &errors);
            strays += output == expected ? 0 : 1;
        }
    };
    std::thread first(startChildren);
    std::thread second(startChildren);
    first.join();
    second.join();
    EXPECT_EQ(strays, 0);
}

TEST_F(ConcurrentStart, OutputEndsWithItsChildThoughAnotherStartedAtTheSameTimeLives) {
    constexpr int rounds = 20;
    for (int i = 0; i < rounds; ++i) {
        const NamedEvent end;
        Program living;
        Program brief;
        prepare(living, {"wait", end.name, "0"});
        prepare(brief, {"say", "text", "", "0"});
        Meeting together;
        std::thread starting([&] {
            together.arriveAndWait();
            living.start(Program::StdinPipe | Program::StdoutPipe | Program::StderrPipe);
        });
        together.arriveAndWait();
        std::string output;
        EXPECT_TRUE(brief.exchange(nullptr, &output, nullptr));
        EXPECT_EQ(output, "text");
        starting.join();
        EXPECT_FALSE(hasEnded(living, 0));
        end.set();
        EXPECT_TRUE(living.finish());
    }
}

TEST_F(ConcurrentStart, InheritableEndOfTheProgramsOwnPipeGetsIntoEveryChild) {
    Pipe pipe;
    pipe.keepReadEnd();
    const NamedEvent end;
    Child other;
    prepare(other, {"wait", end.name, "0"});
    other.start();
    Child child;
    prepare(child, {"say", "text", "", "0"});
    child.setStdoutHandle(pipe, PipeEnd::write);
    child.start();
    pipe.closeWriteEnd();
    waited(child);
    vek::fs::StreamFile reader;
    reader.takeReadEnd(pipe);
    char text[8] = {};
    EXPECT_EQ(reader.read(text, sizeof text), 4u);
    // The other child has inherited the end: the stream doesn't end before that child exits.
    std::atomic<bool> ended = false;
    std::thread reading([&] {
        EXPECT_EQ(reader.read(text, sizeof text), 0u);
        ended = true;
    });
    Sleep(200);
    EXPECT_FALSE(ended);
    end.set();
    reading.join();
    waited(other);
}

}  // namespace
