// Runs the lines of "Putting the old version back" of README.md, from every state of its table that
// refers to them, with services that take 3 seconds to stop.
#include <array>
#include <fstream>

#include "tests/support/files.h"
#include "tests/support/helper_fixture.h"
#include "vek/base/text.h"

namespace {

using support::limitMs;
using support::TolmarService;

constexpr int stopDelayMs = 3000;

std::vector<std::string> linesOfTheReadme() {
    std::ifstream readme(README_PATH);
    EXPECT_TRUE(readme.good()) << README_PATH;
    std::vector<std::string> lines;
    bool inSection = false;
    bool inBlock = false;
    for (std::string line; std::getline(readme, line);) {
        vek::trim(line);
        if (line == "### Putting the old version back") {
            inSection = true;
        } else if (inSection && line == "```") {
            if (inBlock) {
                break;
            }
            inBlock = true;
        } else if (inBlock) {
            lines.push_back(line);
        }
    }
    EXPECT_FALSE(lines.empty());
    return lines;
}

// The current directory of this process and of those that it starts, while one lives.
class CurrentDirectory : public vek::NoCopy {
  public:
    explicit CurrentDirectory(const std::string& directory) {
        GetCurrentDirectoryA(MAX_PATH, before.data());
        EXPECT_NE(SetCurrentDirectoryA(directory.c_str()), 0) << GetLastError();
    }
    ~CurrentDirectory() { SetCurrentDirectoryA(before.data()); }

  private:
    std::array<char, MAX_PATH> before = {};
};

bool isWine() {
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}

std::string systemProgram(const std::string& name) {
    std::array<char, MAX_PATH> directory = {};
    GetSystemDirectoryA(directory.data(), MAX_PATH);
    return std::string(directory.data()) + "\\" + name +
           (name.find('.') == std::string::npos ? ".exe" : "");
}

enum class Shell { cmd, powerShell };

class WayBack : public support::HelperFixture, public testing::WithParamInterface<Shell> {
  protected:
    void SetUp() override {
        HelperFixture::SetUp();
        behave(1, "stop-delay-ms", stopDelayMs);
        behave(2, "stop-delay-ms", stopDelayMs);
    }

    // Makes the files those of an update: version 1 is kept, version 2 installed.
    void layUpdate() {
        ASSERT_NE(MoveFileA(installed().c_str(), kept().c_str()), 0) << GetLastError();
        support::copyFile(fresh(), installed());
    }

    // Passes the lines to the shell and ignores their exit codes.
    void putTheOldVersionBack() {
        const CurrentDirectory inInstallation(installedDirectory);
        for (const std::string& line : linesOfTheReadme()) {
            if (line == "taskkill /f /fi \"services eq tolmar\"" && isWine()) {
                TolmarService::endProcess();  // Wine's taskkill has no filters
            } else if (GetParam() == Shell::cmd) {
                runProgram("cmd", "/c " + line);
            } else {
                runInPowerShell(line);
            }
        }
    }

    // As PowerShell does, for which some names are commands of its own and not programs.
    void runInPowerShell(const std::string& line) {
        const std::string name = line.substr(0, line.find(' '));
        for (const char* const alias : {"sc", "fc", "type", "copy", "move", "del", "ren", "echo"}) {
            EXPECT_NE(name, alias) << line;
        }
        runProgram(name, line.substr(name.size() + 1));
    }

    void runProgram(const std::string& name, const std::string& tail) {
        ASSERT_TRUE(support::exists(systemProgram(name))) << name;
        support::ChildProcess program(systemProgram(name), tail, root + "\\line.txt");
        EXPECT_TRUE(program.waitForEnd(limitMs)) << name << " " << tail;
    }

    void expectTheOldVersionBack() {
        putTheOldVersionBack();
        EXPECT_TRUE(TolmarService::waitForState(SERVICE_RUNNING, limitMs));
        EXPECT_EQ(endState(), (support::EndState{.installed = 1,
                                                 .kept = 0,
                                                 .fresh = 2,
                                                 .serviceState = SERVICE_RUNNING,
                                                 .running = 1}));
    }
};

TEST_P(WayBack, LeadsFromAMissingExecutable) {
    registerService();
    ASSERT_NE(MoveFileA(installed().c_str(), kept().c_str()), 0);
    expectTheOldVersionBack();
}

TEST_P(WayBack, LeadsFromAMissingExecutableWhileTheOldVersionRunsOn) {
    behave(1, "ignores-stop", 1);
    runService();
    ASSERT_EQ(TolmarService::askToStop(), 0u);
    ASSERT_NE(MoveFileA(installed().c_str(), kept().c_str()), 0);
    ASSERT_EQ(TolmarService::state(), static_cast<DWORD>(SERVICE_RUNNING));
    expectTheOldVersionBack();
}

TEST_P(WayBack, LeadsFromAPartOfTheNewVersion) {
    registerService();
    layUpdate();
    support::writeFile(installed(), "MZ");
    expectTheOldVersionBack();
}

TEST_P(WayBack, LeadsFromANewVersionThatHasStopped) {
    registerService();
    layUpdate();
    expectTheOldVersionBack();
}

TEST_P(WayBack, LeadsFromANewVersionThatRunsAndFromReadOnlyFiles) {
    registerService();
    layUpdate();
    for (const std::string& file : {installed(), kept()}) {
        ASSERT_NE(SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_READONLY), 0);
    }
    TolmarService::start();
    ASSERT_TRUE(TolmarService::waitForState(SERVICE_RUNNING, limitMs));
    ASSERT_EQ(runningVersion(), 2);
    expectTheOldVersionBack();
    // It had the time to stop by itself.
    EXPECT_TRUE(journal().ends_with("2 stopping, 2 stopped, 1 starting, 1 running")) << journal();
}

TEST_P(WayBack, LeadsFromAHelperThatWaitsForANewVersionToStart) {
    behave(1, "stop-delay-ms", 0);
    behave(2, "starts-forever", 1);
    runService();
    const auto helper = startHelper(installedDirectory);
    ASSERT_TRUE(TolmarService::waitForState(SERVICE_START_PENDING, limitMs));
    expectTheOldVersionBack();
    EXPECT_TRUE(helper->waitForEnd(0)) << "the lines should have ended the helper";
}

TEST_P(WayBack, LeadsFromAHelperThatWaitsForANewVersionThatStaysStopped) {
    behave(1, "stop-delay-ms", 0);
    behave(2, "dies-while-starting", 1);
    runService();
    const auto helper = startHelper(installedDirectory);
    ASSERT_TRUE(support::waitUntil([&] { return journal().ends_with("2 stopped"); }, limitMs));
    expectTheOldVersionBack();
    EXPECT_TRUE(helper->waitForEnd(0)) << "the lines should have ended the helper";
}

// Not offered there, and it must not do harm.
TEST_P(WayBack, LosesNothingIfNoVersionIsKept) {
    runService();
    expectTheOldVersionBack();
}

INSTANTIATE_TEST_SUITE_P(In, WayBack, testing::Values(Shell::cmd, Shell::powerShell),
                         [](const auto& instance) {
                             return std::string(instance.param == Shell::cmd ? "Cmd"
                                                                             : "PowerShell");
                         });

}  // namespace
