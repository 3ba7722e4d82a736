// log_application ps, on real processes.
#include <atomic>
#include <functional>
#include <thread>

#include "tests/tools/log_application/tool_test.h"
#include "vek/net/udp_socket.h"

namespace {

using namespace log_application_test;

class PsTest : public ToolTest {};

TEST_F(PsTest, FindsSeveralProcessesAndSortsThem) {
    ServiceProcess beta("idle", "beta");
    ServiceProcess alpha("idle", "alpha");
    const ToolResult result = runTool("ps --output json " + beta.host() + " " + alpha.host());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone));
    const auto line = [](ServiceProcess& service, const std::string& name) {
        return "{\"name\":\"" + name +
               "\",\"pid\":" + std::to_string(service.process().processId()) +
               ",\"address\":\"127.0.0.1\",\"port\":" + std::to_string(service.port) + "}\n";
    };
    EXPECT_EQ(result.output, line(alpha, "alpha") + line(beta, "beta"));
    EXPECT_EQ(result.errors, "");
}

TEST_F(PsTest, ShowsATable) {
    ServiceProcess alpha("idle", "alpha");
    const ToolResult result = runTool("ps " + alpha.host());
    const std::string pid = std::to_string(alpha.process().processId());
    const std::string port = std::to_string(alpha.port);
    const std::string gap(pid.size() > 3 ? pid.size() - 3 : 0, ' ');
    const std::string portGap(port.size() - 4, ' ');
    EXPECT_EQ(result.output, "NAME   PID" + gap + "  PORT" + portGap + "  ADDRESS\nalpha  " + pid +
                                 std::string(pid.size() < 3 ? 3 - pid.size() : 0, ' ') + "  " +
                                 port + "  127.0.0.1\n");
}

TEST_F(PsTest, SaysThatOthersMayBeHiddenIfOnlyOneCanBeSeen) {
    ServiceProcess first("idle", "first");
    const ToolResult result = runTool("ps " + first.host());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone));
    EXPECT_TRUE(holds(result.errors, "Only one process can be seen.")) << result.errors;
    EXPECT_TRUE(holds(result.errors, "discovery_addr = \"0.0.0.0\"")) << result.errors;
}

TEST_F(PsTest, SeesOneOfTwoThatShareAnAddress) {
    ServiceProcess first("idle", "shared");
    // Each binds the same address; a datagram reaches one of them.
    ServiceProcess second("idle", "shared", "", "", first.address);
    const ToolResult result = runTool("ps " + first.host());
    EXPECT_EQ(lineCount(result.output), 2u) << result.output;
    EXPECT_TRUE(holds(result.errors, "Only one process can be seen."));
}

TEST_F(PsTest, BroadcastsReachAllThatListenOnEveryAddress) {
    ServiceProcess first("idle", "everywhere1", "", "", "0.0.0.0");
    ServiceProcess second("idle", "everywhere2", "", "", "0.0.0.0");
    const ToolResult result = runTool("ps --name everywhere1 --name everywhere2");
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone)) << result.errors;
    EXPECT_EQ(lineCount(result.output), 3u) << result.output << result.errors;
    EXPECT_TRUE(holds(result.output, "everywhere1"));
    EXPECT_TRUE(holds(result.output, "everywhere2"));
}

TEST_F(PsTest, EndsWith1IfNothingIsFound) {
    const ToolResult result = runTool("ps --host " + ownAddress());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitNotDone));
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(holds(result.errors, "No process answers.\n  Does it run,")) << result.errors;
    EXPECT_TRUE(holds(result.errors, "--connect HOST:PORT")) << result.errors;
}

TEST_F(PsTest, TellsWhoIsThereIfTheNameIsNot) {
    ServiceProcess alpha("idle", "alpha");
    const ToolResult result = runTool("ps --name alhpa " + alpha.host());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitNotDone));
    EXPECT_TRUE(
        holds(result.errors, "No process with the name \"alhpa\" answers; there is alpha (" +
                                 std::to_string(alpha.process().processId()) + ")."))
        << result.errors;
    const ToolResult byPid =
        runTool("ps --pid " + std::to_string(alpha.process().processId()) + " " + alpha.host());
    EXPECT_EQ(byPid.code, static_cast<DWORD>(exitDone));
}

// Answers each datagram with `reply`, until it is told to end.
class ScriptedDiscovery {
  public:
    explicit ScriptedDiscovery(std::function<std::string(const std::string& id)> makeReply) {
        port = vek::test::bindToLoopback(socket).port();
        const DWORD limitMs = 100;
        socket.setOption(SOL_SOCKET, SO_RCVTIMEO, &limitMs, sizeof limitMs);
        thread = std::thread([this, makeReply] {
            while (!ended) {
                answer(makeReply);
            }
        });
    }

    ~ScriptedDiscovery() {
        ended = true;
        thread.join();
    }

    std::string host() const { return "--host 127.0.0.1:" + std::to_string(port); }

    std::atomic<int> requests = 0;

  private:
    void answer(const std::function<std::string(const std::string& id)>& makeReply) {
        std::string room(1024, '\0');
        vek::net::IP4Address sender;
        try {
            room.resize(socket.receiveFrom(room.data(), 1024, sender));
            ++requests;
            const std::string reply = makeReply(room.substr(room.find('=') + 1));
            socket.sendTo(reply.data(), static_cast<std::uint32_t>(reply.size()), sender);
        } catch (const vek::NetError&) {
            // Nothing came.
        }
    }

    vek::net::UDPSocket socket{false};
    std::uint16_t port = 0;
    std::atomic<bool> ended = false;
    std::thread thread;
};

std::string helloOf(const std::string& id, const std::string& name) {
    return "hello:id=" + id + "\x1Fname=" + name + "\x1Fpid=4242\x1Ftcpport=49731";
}

TEST_F(PsTest, AsksSeveralTimesAndShowsAProcessOnce) {
    ScriptedDiscovery server([](const std::string& id) { return helloOf(id, "demo"); });
    const ToolResult result = runTool("ps " + server.host());
    EXPECT_EQ(result.output, "NAME  PID   PORT   ADDRESS\ndemo  4242  49731  127.0.0.1\n");
    EXPECT_EQ(server.requests, 4);
}

TEST_F(PsTest, LivesWithALostAnswer) {
    ScriptedDiscovery server([count = 0](const std::string& id) mutable {
        return ++count < 3 ? std::string("lost") : helloOf(id, "demo");
    });
    EXPECT_EQ(runTool("ps " + server.host()).code, static_cast<DWORD>(exitDone));
}

TEST_F(PsTest, ANameCannotForgeLines) {
    ScriptedDiscovery server([](const std::string& id) { return helloOf(id, "a\nb\x1b[2J"); });
    EXPECT_TRUE(holds(runTool("ps " + server.host()).output, "\na\\nb\\x1B[2J  4242"));
    EXPECT_TRUE(holds(runTool("ps --output json " + server.host()).output,
                      "{\"name\":\"a\\nb\\u001b[2J\","));
}

TEST_F(PsTest, HostileAnswersAreNone) {
    for (const std::string& reply : {std::string("no colon"), std::string(60'000, 'x'),
                                     std::string("hello:"), helloOf("1", "wrong search")}) {
        ScriptedDiscovery server([&reply](const std::string&) { return reply; });
        const ToolResult result = runTool("ps " + server.host());
        EXPECT_EQ(result.code, static_cast<DWORD>(exitNotDone));
        EXPECT_EQ(result.output, "");
    }
}

}  // namespace
