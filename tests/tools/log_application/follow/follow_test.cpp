// log_application tail, on real processes.
#include "tests/tools/log_application/support/burst.h"
#include "tests/tools/log_application/support/output_pipe.h"
#include "tests/tools/log_application/support/tool_test.h"
#include "vek/base/text.h"

namespace {

using namespace log_application_test;

class FollowTest : public ToolTest {};

// More than the sockets hold. Under full load each message takes some milliseconds, so there are
// few; LargeBurstTest has more than the queue of the process holds.
TEST_F(FollowTest, NoneOf2000MessagesIsLostInAFile) {
    expectNoneLostInAFile(2000, 4000);
}

TEST_F(FollowTest, EveryMessageIsShownAsTheGoldenFiles) {
    for (const char* const kind : {"json", "raw"}) {
        ServiceProcess samples("samples", "samples", "default_level = \"TRACE\";", untilFollowed);
        ToolRun run("tail --logger samples --output " + std::string(kind) + " " +
                    samples.connect());
        EXPECT_EQ(run.wait(), static_cast<DWORD>(exitLost));
        std::string shown = run.output();
        if (std::string(kind) == "json") {
            const std::string pid =
                "\"pid\":" + std::to_string(samples.process().processId()) + ",";
            std::vector<std::string> lines;
            vek::split(shown, '\n', lines, false, false);
            shown.clear();
            for (const std::string& line : lines) {
                // Time and thread are those of this run.
                const std::size_t level = line.find(",\"level\"");
                const std::size_t tid = line.find("\"tid\"");
                const std::size_t message = line.find("\"message\"");
                ASSERT_TRUE(holds(line, pid)) << line;
                shown += "{" + line.substr(level + 1, line.find("\"pid\"") - level - 1) +
                         line.substr(message) + "\n";
                EXPECT_LT(tid, message);
            }
        }
        EXPECT_EQ(shown, golden(std::string("live.") + kind)) << kind;
    }
}

TEST_F(FollowTest, SeveralProcessesAreFollowedAtOnce) {
    ServiceProcess one("idle", ownName("one"), "default_level = \"INFO\";");
    ServiceProcess two("idle", ownName("two"), "default_level = \"INFO\";");
    ToolRun run("tail --timeout 3s --name " + one.name + " --name " + two.name);
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitDone)) << run.errors();
    const std::string output = run.output();
    EXPECT_TRUE(holds(output, " " + std::to_string(one.process().processId()) + " [ INFO] a: tick"))
        << output;
    EXPECT_TRUE(holds(output, " " + std::to_string(two.process().processId()) + " [ INFO] a: tick"))
        << output;
}

TEST_F(FollowTest, ARaisedLevelIsSeenLive) {
    ServiceProcess demo("idle", ownName("demo"), "default_level = \"INFO\";");
    ToolRun run("tail --expect ^detail --timeout 30s " + demo.connect());
    ASSERT_TRUE(run.waitForOutput("a: tick"));
    EXPECT_FALSE(holds(run.output(), "detail"));
    EXPECT_EQ(runTool("set b=DEBUG " + demo.connect()).code, static_cast<DWORD>(exitDone));
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitDone)) << run.errors();
    EXPECT_TRUE(holds(run.output(), " [DEBUG] b: detail")) << run.output();
}

TEST_F(FollowTest, SaysThatAKilledProcessHasEnded) {
    ServiceProcess demo("idle", ownName("demo"), "default_level = \"INFO\";");
    ToolRun run("tail --name " + demo.name);
    ASSERT_TRUE(run.waitForOutput("tick"));
    demo.kill();
    EXPECT_EQ(run.wait(), static_cast<DWORD>(exitLost));
    EXPECT_TRUE(holds(run.errors(), demo.label() + " has ended\n")) << run.errors();
}

TEST_F(FollowTest, WaitsForAProcessAndFollowsTheNextOneOfItsName) {
    const std::string name = ownName("awaited");
    ToolRun run("tail --output raw --reconnect --name " + name);
    ASSERT_TRUE(run.waitForErrors("Waiting for it."));
    {
        ServiceProcess first("idle", name, "default_level = \"INFO\";");
        EXPECT_TRUE(run.waitForErrors("following " + first.label())) << run.errors();
        EXPECT_TRUE(run.waitForOutput("tick")) << run.errors();
        first.kill();
    }
    EXPECT_TRUE(run.waitForErrors(" has ended")) << run.errors();
    ServiceProcess second("idle", name, "default_level = \"INFO\";");
    EXPECT_TRUE(run.waitForErrors("following " + second.label())) << run.errors();
}

TEST_F(FollowTest, NeverStallsTheProcessThatItFollows) {
    // An output that takes nothing.
    ServiceProcess burst(moreThanSocketsHold, "burst", "", untilFollowed);
    OutputPipe pipe;
    {
        ToolRun run("tail --buffer 100 " + burst.connect(), "", pipe.output());
        pipe.closeWriteEnd();
        EXPECT_EQ(burst.process().wait(ToolRun::burstLimitMs), 0u);
    }
}

}  // namespace
