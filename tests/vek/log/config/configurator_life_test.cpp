// The configurator from its construction to its end, each in a fresh process.
#include "tests/support/files.h"
#include "tests/vek/log/config/config_fixture.h"

namespace {

using namespace vek::test;

class ConfiguratorLife : public ConfigTest {
  protected:
    // A copy of the program, as `name` in a directory of its own.
    std::string install(const std::string& name) const {
        support::copyFile(CONFIGURED_PROGRAM, path(name));
        return path(name);
    }
};

constexpr char secondInstance[] =
    "vek::UsageError: Usage error: Attempted to create more than one instance of the Configurator "
    "object\n";

TEST_F(ConfiguratorLife, WithoutFileAndVariablesNothingIsLoggedAndTwoThreadsRun) {
    EXPECT_EQ(runBare({"threads", "configure=p", "report", "threads", "log=ERR:a:text"}),
              (ProgramOutput{0, "threads 1\ninstance p\ndefault WARN\nthreads 3\n", ""}));
}

TEST_F(ConfiguratorLife, StopEndsBothThreadsAndDeliversAll) {
    EXPECT_EQ(outputWith("sink = { stdout = { enabled = true; }; };",
                         {"configure=p", "threads", "log=WARN:a:text", "stop", "threads", "stop"}),
              "threads 3\n[ WARN] a: text\nthreads 1\n");
}

TEST_F(ConfiguratorLife, SecondInstanceIsRefusedAndTheFirstGoesOn) {
    EXPECT_EQ(
        runBare({"again", "configure=p", "again", "set=a:INFO", "level=a"}),
        (ProgramOutput{0, std::string(secondInstance) + secondInstance + "a INFO own\n", ""}));
}

TEST_F(ConfiguratorLife, AnotherMayFollowTheFirst) {
    EXPECT_EQ(runBare({"configure=p", "renew", "configure=q", "report"}),
              (ProgramOutput{0, "instance q\ndefault WARN\n", ""}));
}

TEST_F(ConfiguratorLife, RefusedInstanceCountsForEver) {
    EXPECT_EQ(runBare({"again", "renew"}),
              (ProgramOutput{9, std::string(secondInstance) + secondInstance, ""}));
}

TEST_F(ConfiguratorLife, WithoutANameItIsTheFileNameUpToItsLastDot) {
    const std::string program = install("y.tool.exe");
    EXPECT_EQ(support::runProgram(program, {"configure", "report"}),
              (ProgramOutput{0, "instance y.tool\ndefault WARN\n", ""}));
}

TEST_F(ConfiguratorLife, GroupOfTheFileIsThatOfTheOwnName) {
    const std::string program = install("tool.exe");
    writeFile("logging.conf", "processes = { tool = { default_level = \"INFO\"; }; };");
    EXPECT_EQ(support::runProgram(program, {"configure", "report"}),
              (ProgramOutput{0, "instance tool\ndefault INFO\n", ""}));
}

TEST_F(ConfiguratorLife, PlaceholdersOfPathsAreExpanded) {
    const std::string program = install("y.tool.exe");
    writeFile("logging.conf",
              "defaults = { sink = { file = ("
              "{ path = \"{exedir}\\\\{base}.{instancename}.{base}.{no}.log\"; enabled = true; },"
              "{ path = \"{exedir}\\\\plain.log\"; enabled = true; } ); }; };");
    EXPECT_EQ(
        support::runProgram(program, {"configure", "report", "log=WARN:a:text"}),
        (ProgramOutput{0,
                       "instance y.tool\ndefault WARN\n" + plainFileSink(0, path("plain.log")) +
                           plainFileSink(1, path("y.y.tool.y.{no}.log")),
                       ""}));
    EXPECT_NE(readFile("y.y.tool.y.{no}.log").find("[ WARN] a: text"), std::string::npos);
    EXPECT_EQ(readFile("plain.log"), readFile("y.y.tool.y.{no}.log"));
}

// The keys are replaced in order: base, exedir, instancename.
TEST_F(ConfiguratorLife, PlaceholdersThatTheInstanceNameBringsInStay) {
    EXPECT_EQ(
        goodOutput(runWith("defaults = { sink = { file = { path = \"{instancename}\"; }; }; };",
                           {"configure={base}{exedir}", "report"})),
        "instance {base}{exedir}\ndefault WARN\n"
        "file#0 pids tids time max=INVALID format=0 path={base}{exedir} archives=3 size=5120 "
        "interval=604800 compress\n");
}

TEST_F(ConfiguratorLife, SetLevelsHoldForLoggersThatExistAndForThoseThatCome) {
    EXPECT_EQ(runBare({"level=a", "configure", "set=a:INFO", "set=b:TRACE", "level=a", "level=b",
                       "set=a:DEFAULT", "level=a", "set=c:DEFAULT", "level=c"}),
              (ProgramOutput{0, "a WARN\na INFO own\nb TRACE own\na WARN\nc DEFAULT own\n", ""}));
}

TEST_F(ConfiguratorLife, SetDefaultLevelHoldsForBothAndIsKept) {
    EXPECT_EQ(runBare({"level=a", "configure=p", "default=INFO", "level=a", "level=b", "report"}),
              (ProgramOutput{0, "a WARN\na INFO\nb INFO\ninstance p\ndefault INFO\n", ""}));
}

TEST_F(ConfiguratorLife, RefusedDefaultLevelIsNotKept) {
    EXPECT_EQ(runBare({"configure", "default=DEFAULT"}),
              (ProgramOutput{
                  9, "vek::UsageError: Usage error: log manager: bad default level value\n", ""}));
}

TEST_F(ConfiguratorLife, SinksAreMadeInTheirOrder) {
    EXPECT_EQ(outputWith("sink = { file = { enabled = true; path = \"" + escaped(path("a")) +
                         "\"; }; debugger = { enabled = true; }; stdout = { enabled = true; }; };"),
              "instance p\ndefault WARN\nstdout enabled max=INVALID format=0\n"
              "debugger enabled max=INVALID format=0\n" +
                  plainFileSink(0, path("a")));
}

TEST_F(ConfiguratorLife, SinksTakeWhatTheirMaxLevelAllows) {
    EXPECT_EQ(outputWith("default_level = \"TRACE\"; sink = { stdout = { enabled = true;"
                         " max_level = \"INFO\"; format = \"{level} {msg}\"; }; };",
                         {"configure", "log=INFO:a:taken", "log=DEBUG:a:not taken"}),
              " INFO taken\n");
}

}  // namespace
