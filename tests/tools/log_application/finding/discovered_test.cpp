#include "tools/log_application/finding/discovered.h"

#include <gtest/gtest.h>

namespace {

using namespace log_application;

std::string hello(const std::string& name, int pid, int port, int id = 7) {
    return "hello:id=" + std::to_string(id) + "\x1Fname=" + name +
           "\x1Fpid=" + std::to_string(pid) + "\x1Ftcpport=" + std::to_string(port);
}

TEST(Discovered, MergesTheAnswersOfAProcess) {
    Discovered found(7);
    found.add(hello("demo", 4242, 49731), "10.0.0.5", false);
    found.add(hello("demo", 4242, 49731), "127.0.0.1", false);
    found.add(hello("demo", 4242, 49731), "10.0.0.5", false);
    ASSERT_EQ(found.processes().size(), 1u);
    EXPECT_EQ(found.processes()[0].endpoints,
              (std::vector<Endpoint>{{"127.0.0.1", 49731}, {"10.0.0.5", 49731}}));
}

TEST(Discovered, TriesTheLoopbackAddressFirstOfAProcessOfThisHost) {
    Discovered found(7);
    found.add(hello("demo", 4242, 49731), "10.0.0.5", true);
    EXPECT_EQ(found.processes()[0].endpoints,
              (std::vector<Endpoint>{{"127.0.0.1", 49731}, {"10.0.0.5", 49731}}));
}

TEST(Discovered, SortsByNameAndPid) {
    Discovered found(7);
    found.add(hello("b", 1, 10), "127.0.0.1", false);
    found.add(hello("a", 9, 11), "127.0.0.1", false);
    found.add(hello("a", 2, 12), "127.0.0.1", false);
    std::string order;
    for (const Process& process : found.processes()) {
        order += process.label() + " ";
    }
    EXPECT_EQ(order, "a (2) a (9) b (1) ");
}

TEST(Discovered, TellsProcessesOfOnePidOnTwoHostsApart) {
    Discovered found(7);
    found.add(hello("demo", 4, 10), "10.0.0.5", false);
    found.add(hello("demo", 4, 11), "10.0.0.6", false);
    EXPECT_EQ(found.processes().size(), 2u);
}

TEST(Discovered, LeavesOutWhatIsNoAnswer) {
    Discovered found(7);
    for (const std::string& text :
         {std::string(), std::string("hello"), std::string("hello:"),
          hello("other search", 1, 2, 8), hello("no port", 1, 0), hello("no pid", 0, 2),
          hello("port", 1, 65536), std::string("goodbye:id=7\x1Fpid=1\x1Ftcpport=2"),
          std::string("hello:id=7\x1Fpid=x\x1Ftcpport=2"), std::string(1000, '\x1F')}) {
        found.add(text, "127.0.0.1", false);
    }
    EXPECT_TRUE(found.processes().empty());
}

TEST(Discovered, LabelsAreSafeToBeShown) {
    Discovered found(7);
    found.add(hello("\x1b[2J\n", 1, 2), "127.0.0.1", false);
    EXPECT_EQ(found.processes()[0].label(), "\\x1B[2J\\n (1)");
}

}  // namespace
