// levels, set, sinks and save, on real processes.
#include "tests/support/files.h"
#include "tests/tools/log_application/support/scripted_discovery.h"
#include "tests/tools/log_application/support/tool_test.h"

namespace {

using namespace log_application_test;

class RequestsTest : public ToolTest {
  protected:
    // The output of `levels` for `service`, without its heading.
    static std::string levelsOf(const ServiceProcess& service) {
        const std::string output = runTool("levels " + service.connect()).output;
        return output.substr(output.find('\n') + 1);
    }

    ServiceProcess demo{"idle", ownName("demo"),
                        "default_level = \"WARN\"; loggers : { b = \"ERR\"; };"};
};

TEST_F(RequestsTest, LevelsShowsTheDefaultAndEachLogger) {
    const ToolResult result = runTool("levels --name " + demo.name);
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone));
    EXPECT_EQ(result.output, demo.label() + " at 127.0.0.1:" + std::to_string(demo.port) + "\n" +
                                 golden("levels.txt"));
    EXPECT_EQ(result.errors, "");
}

TEST_F(RequestsTest, LevelsAsJson) {
    const ToolResult result = runTool("levels --output json " + demo.connect());
    EXPECT_EQ(result.output, replaced(golden("levels.jsonl"), "PORT", std::to_string(demo.port)));
}

TEST_F(RequestsTest, SetChangesSeveralLevelsAtOnce) {
    const ToolResult result = runTool("set a=DEBUG b=trace --default info --name " + demo.name);
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone)) << result.errors;
    EXPECT_EQ(result.output, demo.label() + ": default level INFO, a DEBUG, b TRACE\n");
    EXPECT_EQ(levelsOf(demo), golden("levels-changed.txt"));
    EXPECT_EQ(runTool("set a=DEFAULT " + demo.connect()).code, static_cast<DWORD>(exitDone));
    EXPECT_TRUE(holds(levelsOf(demo), "  a                INFO   default\n"));
}

TEST_F(RequestsTest, SetSaysThatALoggerIsNotThereYet) {
    const ToolResult result = runTool("set nosuch=DEBUG " + demo.connect());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone));
    EXPECT_TRUE(holds(result.errors, "has no logger \"nosuch\" yet")) << result.errors;
}

TEST_F(RequestsTest, SetTakesMoreLevelsThanOneRequestHolds) {
    std::string changes;
    for (int i = 0; i < 200; ++i) {
        changes += "a" + std::string(10, 'x') + std::to_string(i) + "=DEBUG ";
    }
    EXPECT_EQ(runTool("set " + changes + " a=TRACE " + demo.connect()).code,
              static_cast<DWORD>(exitDone));
    EXPECT_TRUE(holds(levelsOf(demo), "  a                TRACE  own\n"));
}

TEST_F(RequestsTest, SetPutsTheEarlierLevelsBackAfterATime) {
    const std::string before = levelsOf(demo);
    ToolRun run("set a=TRACE b=OFF --default DEBUG --for 3s " + demo.connect());
    ASSERT_TRUE(run.waitForErrors("the earlier levels come back in 3 seconds, or at Ctrl-C"));
    const std::string meanwhile = levelsOf(demo);
    EXPECT_TRUE(holds(meanwhile, "  a                TRACE  own\n")) << meanwhile;
    EXPECT_TRUE(holds(meanwhile, "  (default level)  DEBUG\n")) << meanwhile;
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitDone)) << run.errors();
    EXPECT_TRUE(holds(run.output(), "the earlier levels are back\n"));
    EXPECT_EQ(levelsOf(demo), before);
}

TEST_F(RequestsTest, SetForATimeSaysIfTheProcessHasEndedMeanwhile) {
    ToolRun run("set a=TRACE --for 4s " + demo.connect());
    ASSERT_TRUE(run.waitForErrors("come back"));
    demo.process().terminate();
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitLost));
    EXPECT_TRUE(holds(run.errors(), "can't be connected to")) << run.errors();
}

TEST_F(RequestsTest, SetChangesAllMatchingProcesses) {
    ServiceProcess second("idle", demo.name);
    ServiceProcess other("idle", ownName("other"));
    const ToolResult named = runTool("set --default TRACE --name " + demo.name);
    EXPECT_EQ(lineCount(named.output), 2u) << named.output;
    EXPECT_TRUE(holds(levelsOf(demo), "TRACE"));
    EXPECT_TRUE(holds(levelsOf(second), "TRACE"));
    EXPECT_FALSE(holds(levelsOf(other), "TRACE"));
}

TEST_F(RequestsTest, SetWantsToKnowWhichOfSeveralProcesses) {
    // Answers of a search of its own, so that nothing else of this machine is changed.
    const auto script = answering(
        {{"agent-list", "agent-list:"}, {"change-default-scope", "change-default-scope:ack"}});
    ScriptedServer first(script);
    ScriptedServer second(script);
    const auto hello = [](const ScriptedServer& server, const std::string& name) {
        return [&server, name](const std::string& id) { return helloOf(id, name, server.port); };
    };
    ScriptedDiscovery one(hello(first, "one"));
    ScriptedDiscovery two(hello(second, "two"));
    const std::string hosts = one.host() + " " + two.host();
    const ToolResult refused = runTool("set --default TRACE " + hosts);
    EXPECT_EQ(refused.code, static_cast<DWORD>(exitUsage));
    EXPECT_TRUE(holds(refused.errors, "There are several processes: one (4242), two (4242)."))
        << refused.errors;
    EXPECT_TRUE(holds(refused.errors, "Say which by --name or --pid, or give --all."))
        << refused.errors;
    const ToolResult all = runTool("set --default OFF --all " + hosts);
    EXPECT_EQ(all.code, static_cast<DWORD>(exitDone)) << all.errors;
    EXPECT_EQ(all.output, "one (4242): default level OFF\ntwo (4242): default level OFF\n");
}

TEST_F(RequestsTest, OneProcessThatFailsDoesNotKeepTheOthers) {
    const ToolResult result =
        runTool("set --default TRACE --connect 127.0.0.1:1 " + demo.connect());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitLost));
    EXPECT_TRUE(holds(levelsOf(demo), "TRACE"));
}

TEST_F(RequestsTest, SaveWritesTheLevelsIntoTheConfiguration) {
    EXPECT_EQ(runTool("set a=TRACE " + demo.connect()).code, static_cast<DWORD>(exitDone));
    const ToolResult result = runTool("save --name " + demo.name);
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone)) << result.errors;
    EXPECT_EQ(result.output, demo.label() + ": the levels are saved\n");
    EXPECT_TRUE(holds(demo.configuration(), "a = \"TRACE\"")) << demo.configuration();
}

TEST_F(RequestsTest, SaveTellsWhyAProcessCannot) {
    // Without its file there is nothing to write the levels into.
    ASSERT_NE(DeleteFileA(demo.configurationPath().c_str()), 0);
    const ToolResult result = runTool("save " + demo.connect());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitNotDone));
    EXPECT_TRUE(holds(result.errors, " refused: ")) << result.errors;
}

TEST_F(RequestsTest, SinksShowsFilesAndClients) {
    const std::string path =
        support::temporaryDirectory() + "\\log_application." + demo.name + ".log";
    const std::string quoted = replaced(path, "\\", "\\\\");
    {
        ServiceProcess logging("idle", "logging",
                               "sink : { file : { enabled = true; path = \"" + quoted +
                                   "\"; max_level = \"WARN\"; format = \"{msg}\"; }; };");
        ToolRun client("tail --output json " + logging.connect());
        ASSERT_TRUE(support::waitUntil(
            [&] { return holds(runTool("sinks " + logging.connect()).output, "net#0"); }, 20'000));
        const ToolResult text = runTool("sinks " + logging.connect());
        EXPECT_TRUE(holds(text.output, "  SINK    ENABLED  MAX LEVEL  OWN FORMAT  PATH OR PEER\n"))
            << text.output;
        EXPECT_TRUE(holds(text.output, "  file#0  true     WARN       true        " + path + "\n"))
            << text.output;
        EXPECT_TRUE(holds(text.output, "  net#0   false    INVALID    false       127.0.0.1:"))
            << text.output;
        const ToolResult json = runTool("sinks --output json " + logging.connect());
        EXPECT_TRUE(holds(json.output,
                          "\"sink\":\"file#0\",\"enabled\":true,\"max_level\":\"WARN\","
                          "\"own_format\":true,\"path\":\"" +
                              quoted + "\",\"peer\":null}\n"))
            << json.output;
    }
    DeleteFileA(path.c_str());
}

TEST_F(RequestsTest, SinksOfAProcessWithoutAnyIsTheHeadingAlone) {
    const ToolResult result = runTool("sinks " + demo.connect());
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone));
    EXPECT_EQ(lineCount(result.output), 2u) << result.output;
}

TEST_F(RequestsTest, ARefusedConnectionEndsWith3AndTellsWhatToTry) {
    const ToolResult result = runTool("levels --connect 127.0.0.1:1");
    EXPECT_EQ(result.code, static_cast<DWORD>(exitLost));
    EXPECT_TRUE(holds(result.errors, "127.0.0.1:1 can't be connected to.")) << result.errors;
    EXPECT_TRUE(holds(result.errors, "\"log_application ps\" shows who is there."))
        << result.errors;
}

TEST_F(RequestsTest, WrongUsageEndsWith2) {
    const ToolResult result = runTool("levels --nosuch");
    EXPECT_EQ(result.code, static_cast<DWORD>(exitUsage));
    EXPECT_TRUE(holds(result.errors, "\"log_application levels --help\" tells what there is."))
        << result.errors;
}

}  // namespace
