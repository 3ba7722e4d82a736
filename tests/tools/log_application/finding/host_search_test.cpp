// The search in the port tables of a host, and the commands on what it finds. The tests share the
// discovery port with nobody.
#include "tools/log_application/finding/host_search.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <iostream>
#include <sstream>
#include <thread>

#include "tests/support/files.h"
#include "tests/tools/log_application/support/scripted_discovery.h"
#include "tests/tools/log_application/support/scripted_tables.h"
#include "tests/tools/log_application/support/tool_test.h"
#include "tools/log_application/commands/levels_command.h"
#include "tools/log_application/commands/ps_command.h"
#include "tools/log_application/commands/save_command.h"
#include "tools/log_application/commands/set_command.h"
#include "tools/log_application/commands/sinks_command.h"
#include "tools/log_application/commands/tail_command.h"
#include "tools/log_application/program/failure.h"

namespace {

using namespace log_application;
using namespace log_application_test;
using Peer = ScriptedServer::Peer;

constexpr std::uint32_t firstPid = 4'000'000'001;
constexpr int manyClients = 100;

// Answers as a log service does, and counts the clients that ask for messages.
void serve(Peer& peer, std::atomic<int>& streams) {
    for (;;) {
        const std::string request = peer.request();
        const std::string type = request.substr(0, request.find(':'));
        if (type == "get-default-scope") {
            peer.sendFrame("default-scope:scope=INFO");
        } else if (type == "agent-list") {
            peer.sendFrame("agent-list:net=DEBUG");
        } else if (type == "change-default-scope") {
            peer.sendFrame("change-default-scope:ack");
        } else if (type == "evidence-info") {
            peer.sendFrame(
                "evidence-info:custom_format=false\x1F"
                "enabled=true\x1Fid=file#0\x1Fmax_scope=INFO\x1Fpath=C:\\x.log");
            peer.sendFrame("evidence-info:end-of-reply");
        } else if (type == "persist-config") {
            peer.sendFrame("persist-config:ack");
        } else if (type == "get-messages") {
            ++streams;
            peer.sendFrame(messageTelegram("live"));
            return;
        } else {
            return;
        }
    }
}

class HostSearchTest : public ToolTest {
  protected:
    HostSearchTest() { options.selection.tables = &tables; }

    // The processes of the script alone, as other tests' processes may run.
    std::vector<Process> search() {
        std::vector<Process> own;
        for (const Process& process : searchProcesses(options.selection, stop).processes) {
            if (process.pid >= firstPid) {
                own.push_back(process);
            }
        }
        return own;
    }

    // What `command` writes to std::cout.
    template <class Command>
    std::string outputOf(const Command& command, ExitCode expected = exitDone) {
        std::ostringstream output;
        std::streambuf* const before = std::cout.rdbuf(output.rdbuf());
        try {
            EXPECT_EQ(command(), expected);
        } catch (const Failure& failure) {
            ADD_FAILURE() << failure.description();
        }
        std::cout.rdbuf(before);
        return output.str();
    }

    ScriptedTables tables;
    Options options;
    StopSignal stop;
};

class ThreeHiddenProcesses : public HostSearchTest {
  protected:
    ThreeHiddenProcesses() {
        for (std::uint32_t i = 0; i < 3; ++i) {
            const std::string name = "demo" + std::to_string(i);
            tables.addHolder(firstPid + i, name);
            servers.push_back(std::make_unique<ScriptedServer>(
                [&count = streams[i]](Peer& peer) { serve(peer, count); }, manyClients));
            tables.addListener(firstPid + i, servers.back()->port);
            options.selection.pids.push_back(firstPid + i);
        }
    }
    ~ThreeHiddenProcesses() override {
        for (const auto& server : servers) {
            server->stop();
        }
    }

    std::array<std::atomic<int>, 3> streams = {};
    std::vector<std::unique_ptr<ScriptedServer>> servers;
};

TEST_F(ThreeHiddenProcesses, AreAllFoundWithTheirPorts) {
    const std::vector<Process> found = search();
    ASSERT_EQ(found.size(), 3u);
    for (std::uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(found[i].label(),
                  "demo" + std::to_string(i) + "* (" + std::to_string(firstPid + i) + ")");
        ASSERT_EQ(found[i].endpoints.size(), 1u);
        EXPECT_EQ(found[i].endpoints[0], (Endpoint{"127.0.0.1", servers[i]->port}));
    }
}

TEST_F(ThreeHiddenProcesses, AreListedByPs) {
    options.command = Command::ps;
    const std::string table = outputOf([&] { return runPs(options, stop); });
    EXPECT_EQ(lineCount(table), 4u) << table;
    EXPECT_TRUE(holds(table, "\ndemo1*  4000000002  " + std::to_string(servers[1]->port))) << table;
    options.output = OutputKind::json;
    const std::string json = outputOf([&] { return runPs(options, stop); });
    EXPECT_TRUE(holds(json,
                      "{\"name\":\"demo2\",\"pid\":4000000003,\"address\":\"127.0.0.1\","
                      "\"port\":" +
                          std::to_string(servers[2]->port) + ",\"name_of_program\":true}\n"))
        << json;
}

TEST_F(ThreeHiddenProcesses, AreReachedByLevelsAndSet) {
    const std::string levels = outputOf([&] { return runLevels(options, stop); });
    for (const auto& server : servers) {
        EXPECT_TRUE(holds(levels, " at 127.0.0.1:" + std::to_string(server->port) + "\n"))
            << levels;
    }
    options.selection.all = true;
    options.set.defaultLevel = vek::log::DEBUG;
    const std::string set = outputOf([&] { return SetCommand(options, stop).run(); });
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(holds(set, "demo" + std::to_string(i) + "* (")) << set;
    }
}

TEST_F(ThreeHiddenProcesses, AreReachedByTail) {
    options.output = OutputKind::raw;
    const std::string shown = outputOf([&] { return TailCommand(options, stop).run(); }, exitLost);
    EXPECT_EQ(shown, "live\nlive\nlive\n");
}

TEST_F(ThreeHiddenProcesses, AreFollowedAgainByTailWithReconnect) {
    options.output = OutputKind::raw;
    options.follow.reconnect = true;
    options.follow.timeoutMs = 60'000;
    // Each server ends the connection behind its message and stays. With the fourth connection to
    // a server two of its messages at least have arrived.
    const std::jthread stopper([this] {
        support::waitUntil(
            [this] {
                return std::ranges::all_of(streams, [](const auto& count) { return count >= 4; });
            },
            ToolRun::limitMs);
        stop.request();
    });
    const std::string shown = outputOf([&] { return TailCommand(options, stop).run(); });
    EXPECT_GE(lineCount(shown), 6u) << shown;
    EXPECT_EQ(shown.find_first_not_of("live\n"), std::string::npos) << shown;
}

TEST_F(ThreeHiddenProcesses, AreReachedBySinksAndSave) {
    const std::string sinks = outputOf([&] { return runSinks(options, stop); });
    options.selection.all = true;
    const std::string save = outputOf([&] { return runSave(options, stop); });
    for (std::size_t i = 0; i < servers.size(); ++i) {
        const std::string label = "demo" + std::to_string(i) + "* (" +
                                  std::to_string(firstPid + static_cast<std::uint32_t>(i)) + ")";
        EXPECT_TRUE(
            holds(sinks, label + " at 127.0.0.1:" + std::to_string(servers[i]->port) + "\n"))
            << sinks;
        EXPECT_TRUE(holds(save, label + ": the levels are saved\n")) << save;
    }
    EXPECT_TRUE(holds(sinks, "  file#0  true     INFO       false       C:\\x.log\n")) << sinks;
}

TEST_F(ThreeHiddenProcesses, AreSelectedByTheNameOfTheProgram) {
    options.selection.pids.clear();
    options.selection.names = {"demo1"};
    const std::string levels = outputOf([&] { return runLevels(options, stop); });
    EXPECT_EQ(levels.find("demo1* (4000000002) at "), 0u) << levels;
    EXPECT_FALSE(holds(levels, "demo0"));
}

TEST_F(HostSearchTest, AProcessWhosePortIsNotToldIsListedWithAnAdvice) {
    tables.addHolder(firstPid, "demo");
    const std::vector<Process> found = search();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_TRUE(found[0].endpoints.empty());
    options.selection.pids = {firstPid};
    testing::internal::CaptureStderr();
    const std::string table = outputOf([&] { return runPs(options, stop); });
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(holds(table, "demo*  4000000001  ?     ?\n")) << table;
    EXPECT_TRUE(holds(errors, "doesn't tell a port that is shown as ?. Give it by --connect"))
        << errors;
    options.output = OutputKind::json;
    EXPECT_TRUE(holds(outputOf([&] { return runPs(options, stop); }),
                      "\"address\":null,\"port\":null,\"name_of_program\":true}"));
    EXPECT_EQ(outputOf([&] { return runLevels(options, stop); }, exitLost), "");
}

TEST_F(HostSearchTest, AProcessWithoutAProgramNameIsListedToo) {
    tables.addHolder(firstPid, "");
    const std::vector<Process> found = search();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].label(), "? (4000000001)");
}

TEST_F(HostSearchTest, APortThatIsNoLogServiceIsPassedOver) {
    ScriptedServer other([](Peer& peer) { peer.sendBytes("HTTP/1.1 400\r\n\r\n"); });
    ScriptedServer silent([](Peer& peer) { peer.waitForEnd(); });
    std::atomic<int> streams = 0;
    ScriptedServer service([&streams](Peer& peer) { serve(peer, streams); });
    tables.addHolder(firstPid, "demo");
    tables.addListener(firstPid, other.port);
    tables.addListener(firstPid, silent.port);
    tables.addListener(firstPid, service.port, "0.0.0.0");
    const std::vector<Process> found = search();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].endpoints, (std::vector<Endpoint>{{"127.0.0.1", service.port}}));
}

TEST_F(HostSearchTest, APortOfAnotherProcessIsNotSpokenTo) {
    std::atomic<int> clients = 0;
    ScriptedServer foreign([&clients](Peer&) { ++clients; }, manyClients);
    // It holds another UDP port, and a listener of its own.
    tables.udp->push_back({firstPid + 1, {"127.0.0.1", 30'452}});
    tables.addListener(firstPid + 1, foreign.port);
    tables.addHolder(firstPid, "demo");
    EXPECT_EQ(search().size(), 1u);
    EXPECT_EQ(clients, 0);
    foreign.stop();
}

TEST_F(HostSearchTest, ASilentHolderOfAnotherAddressIsAskedForItsNameByPid) {
    // Holds the port at an address where nobody else does.
    vek::net::UDPSocket socket(false);
    vek::net::IP4Address address;
    address.fromString("127.0.0.77");
    address.setPort(vek::log::Server::discoveryPort);
    socket.setReuseAddress();
    socket.bind(address);
    const DWORD limitMs = 20'000;
    socket.setOption(SOL_SOCKET, SO_RCVTIMEO, &limitMs, sizeof limitMs);
    std::string request;
    std::thread answerer([&] {
        std::string room(1024, '\0');
        vek::net::IP4Address sender;
        // Wine takes requests to other addresses of this host here too.
        while (!holds(request, "pid=")) {
            room.resize(1024);
            room.resize(socket.receiveFrom(room.data(), 1024, sender));
            request = room;
        }
        const std::string reply =
            "hello:id=" + room.substr(room.find('=') + 1, room.find('\x1F') - room.find('=') - 1) +
            "\x1Fname=own\x1Fpid=4000000001\x1Ftcpport=7";
        socket.sendTo(reply.data(), static_cast<std::uint32_t>(reply.size()), sender);
    });
    tables.addHolder(firstPid, "demo", "127.0.0.77");
    const std::vector<Process> found = search();
    answerer.join();
    EXPECT_TRUE(holds(request, "\x1Fpid=4000000001")) << request;
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].label(), "own (4000000001)");
    EXPECT_EQ(found[0].endpoints[0].port, 7);
}

TEST_F(HostSearchTest, AHolderWithTwoSocketsIsOneProcess) {
    tables.addHolder(firstPid, "demo");
    tables.addHolder(firstPid, "demo", "127.0.0.2");
    EXPECT_EQ(search().size(), 1u);
}

TEST_F(HostSearchTest, IsCompleteIfTheSystemKnowsTheProcessOfEachSocket) {
    tables.addHolder(firstPid, "demo");
    EXPECT_TRUE(searchProcesses(options.selection, stop).complete);
    tables.udp->push_back({0, {"127.0.0.1", vek::log::Server::discoveryPort}});
    EXPECT_FALSE(searchProcesses(options.selection, stop).complete);
    tables.udp.reset();
    EXPECT_FALSE(searchProcesses(options.selection, stop).complete);
}

TEST_F(HostSearchTest, TablesThatTheSystemRefusesAreNoFailure) {
    tables.addHolder(firstPid, "demo");
    tables.tcp.reset();
    EXPECT_EQ(search().size(), 1u);
    tables.udp.reset();
    EXPECT_TRUE(search().empty());
}

TEST_F(HostSearchTest, AskingAnotherHostDoesNotReadTheTables) {
    tables.addHolder(firstPid, "demo");
    options.selection.hosts = {{"127.0.0.1", 1}};
    EXPECT_TRUE(search().empty());
}

TEST_F(HostSearchTest, TheTablesOfTheSystemHoldThisProcess) {
    vek::net::UDPSocket socket(false);
    const std::uint16_t port = vek::test::bindToLoopback(socket).port();
    const auto sockets = systemPortTables().udpSockets();
    ASSERT_TRUE(sockets.has_value());
    const auto own = std::ranges::find_if(*sockets, [port](const HeldPort& held) {
        return held.endpoint == Endpoint{"127.0.0.1", port};
    });
    ASSERT_NE(own, sockets->end());
    // Wine doesn't know the owner of each.
    EXPECT_TRUE(own->pid == GetCurrentProcessId() || own->pid == 0) << own->pid;
    vek::net::TCPListener listener(false);
    const std::uint16_t tcpPort = vek::test::bindToLoopback(listener).port();
    listener.listen(1);
    const auto listeners = systemPortTables().tcpListeners();
    ASSERT_TRUE(listeners.has_value());
    EXPECT_TRUE(std::ranges::any_of(*listeners, [tcpPort](const HeldPort& held) {
        return held.endpoint == Endpoint{"127.0.0.1", tcpPort};
    }));
    EXPECT_EQ(systemPortTables().programName(GetCurrentProcessId()), "log_application_test");
    EXPECT_EQ(systemPortTables().programName(0xFFFFFFFC), "");
}

}  // namespace
