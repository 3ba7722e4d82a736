#include "tests/vek/proc/proc_test.h"

namespace {

using vek::proc::Child;
using vek::test::NamedEvent;

class InterruptConsole : public vek::test::ProcTest {
  protected:
    static void startReady(Child& child, const NamedEvent& end) {
        const NamedEvent ready;
        child.setArguments(
            {vek::programDirectory() + "\\proc_console_child.exe", ready.name, end.name}, true);
        child.start();
        EXPECT_TRUE(ready.await());
    }
};

TEST_F(InterruptConsole, ReachesTheGroupOfTheChildAlone) {
    const NamedEvent end;
    Child first;
    Child second;
    startReady(first, end);
    startReady(second, end);
    EXPECT_NO_THROW(Child::interrupt(first.getProcess().dwProcessId));
    EXPECT_EQ(waited(first).code, 55u);
    EXPECT_FALSE(hasEnded(second, 200));
    end.set();
    EXPECT_TRUE(waited(second).succeeded());
}

}  // namespace
