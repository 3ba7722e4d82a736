// log_application ps, on real processes.
#include <memory>

#include "tests/support/files.h"
#include "tests/tools/log_application/support/scripted_discovery.h"
#include "tests/tools/log_application/support/tool_test.h"
#include "vek/base/environment.h"

namespace {

using namespace log_application_test;

class PsTest : public ToolTest {};

// Is in the folder of this test's own program.
std::string serviceProgram() {
    std::string path(MAX_PATH, '\0');
    path.resize(GetModuleFileNameA(nullptr, path.data(), MAX_PATH));
    return path.substr(0, path.find_last_of('\\') + 1) + "log_service_program.exe";
}

TEST_F(PsTest, FindsSeveralProcessesAndSortsThem) {
    ServiceProcess beta("idle", ownName("beta"));
    ServiceProcess alpha("idle", ownName("alpha"));
    const std::string names = "--name " + beta.name + " --name " + alpha.name;
    const ToolResult result = runTool("ps --output json " + names);
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone));
    const auto line = [](ServiceProcess& service) {
        return "{\"name\":\"" + service.name +
               "\",\"pid\":" + std::to_string(service.process().processId()) +
               ",\"address\":\"127.0.0.1\",\"port\":" + std::to_string(service.port) + "}\n";
    };
    EXPECT_EQ(result.output, line(alpha) + line(beta));
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(lineCount(runTool("ps " + names).output), 3u);
}

TEST_F(PsTest, ListsEveryProcessOnDefaultSettings) {
    const std::string config = support::temporaryDirectory() + "\\log_application.defaults.conf";
    support::writeFile(config, "defaults : {};\nprocesses : {};\n");
    vek::setEnv("LOG_SERVICE_NAME", "defaults");
    std::vector<std::unique_ptr<ToolRun>> services;
    for (int i = 0; i < 3; ++i) {
        services.push_back(std::make_unique<ToolRun>("idle -- --logcfg \"" + config + "\"",
                                                     serviceProgram(), nullptr, DETACHED_PROCESS));
    }
    std::string output;
    const auto countListed = [&] {
        output = runTool("ps --output json").output;
        return std::ranges::count_if(services, [&output](const auto& service) {
            return holds(output, ",\"pid\":" + std::to_string(service->processId()) + ",");
        });
    };
    for (int i = 0; i < 20 && countListed() != 3; ++i) {
    }
    EXPECT_EQ(countListed(), 3) << output;
    // One of them answers the search, the others are known to the system.
    EXPECT_TRUE(holds(output, "{\"name\":\"defaults\",")) << output;
    EXPECT_TRUE(holds(output, "{\"name\":\"log_service_program\",")) << output;
    const std::string pid = std::to_string(services[0]->processId());
    EXPECT_EQ(lineCount(runTool("ps --pid " + pid).output), 2u);
    services.clear();
    DeleteFileA(config.c_str());
}

TEST_F(PsTest, SaysThatOthersMayBeHiddenIfOnlyOneCanBeSeen) {
    ScriptedDiscovery server([](const std::string& id) { return helloOf(id, "demo"); });
    const ToolResult result = runTool("ps " + server.host());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone));
    EXPECT_TRUE(holds(result.errors, "Only one process can be seen.")) << result.errors;
    EXPECT_TRUE(holds(result.errors, "discovery_addr = \"0.0.0.0\"")) << result.errors;
}

TEST_F(PsTest, EndsWith1IfNothingIsFound) {
    const ToolResult result = runTool("ps --host 127.0.0.1:1");
    EXPECT_EQ(result.code, static_cast<DWORD>(exitNotDone));
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(holds(result.errors, "No process answers.\n  Does it run,")) << result.errors;
    EXPECT_TRUE(holds(result.errors, "--connect HOST:PORT")) << result.errors;
}

TEST_F(PsTest, TellsWhoIsThereIfTheNameIsNot) {
    ScriptedDiscovery server([](const std::string& id) { return helloOf(id, "alpha"); });
    const ToolResult result = runTool("ps --name alhpa " + server.host());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitNotDone));
    EXPECT_TRUE(
        holds(result.errors, "No process with the name \"alhpa\" answers; there is alpha (4242)."))
        << result.errors;
    EXPECT_EQ(runTool("ps --pid 4242 " + server.host()).code, static_cast<DWORD>(exitDone));
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
