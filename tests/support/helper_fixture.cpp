#include "tests/support/helper_fixture.h"

#include <ostream>
#include <sstream>

#include "tests/support/files.h"

namespace support {

std::ostream& operator<<(std::ostream& out, const EndState& state) {
    return out << "tolmar.exe is version " << state.installed << ", tolmar.old is version "
               << state.kept << ", the new one is version " << state.fresh
               << ", the service's state is " << state.serviceState << ", version " << state.running
               << " runs";
}

void HelperFixture::SetUp() {
    ASSERT_EQ(TolmarService::state(), 0u) << "a service \"tolmar\" exists already";
    root = temporaryDirectory() + "\\tolmar-e2e-" + std::to_string(GetCurrentProcessId());
    installedDirectory = root + "\\installed";
    freshDirectory = root + "\\fresh";
    helperDirectory = root + "\\helper";
    for (const std::string& path : {root, installedDirectory, freshDirectory, helperDirectory}) {
        makeDirectory(path);
    }
    copyFile(FAKE_SERVICE_V1, installed());
    copyFile(FAKE_SERVICE_V2, fresh());
    copyFile(TOLMARHLP, helper());
    writeFile(settings(), "");
    writeFile(pathInfo(), "# made for a test\r\nQadDataDir = " + freshDirectory + "\\\r\n");
}

void HelperFixture::TearDown() {
    if (root.empty()) {
        return;
    }
    // Without its settings the service stops by itself, whatever state it is in.
    DeleteFileA(settings().c_str());
    EXPECT_TRUE(waitUntil(
        [] {
            const DWORD state = TolmarService::state();
            return state == 0 || state == SERVICE_STOPPED;
        },
        limitMs))
        << "the service doesn't stop";
    EXPECT_TRUE(TolmarService::remove(limitMs)) << "the service stays in the database";
    EXPECT_TRUE(removeTree(root, limitMs)) << root << " can't be removed";
}

void HelperFixture::installInto(const std::string& leafName) {
    const std::string target = root + "\\" + leafName;
    ASSERT_NE(MoveFileA(installedDirectory.c_str(), target.c_str()), 0) << GetLastError();
    installedDirectory = target;
}

void HelperFixture::installIntoPathOfLength(std::size_t length) {
    ASSERT_GT(length, root.size() + 1);
    installInto(std::string(length - root.size() - 1, 'd'));
    ASSERT_EQ(installedDirectory.size(), length);
}

void HelperFixture::behave(int version, const char* key, int value) {
    const std::string section = "version " + std::to_string(version);
    ASSERT_NE(WritePrivateProfileStringA(section.c_str(), key, std::to_string(value).c_str(),
                                         settings().c_str()),
              0)
        << GetLastError();
}

void HelperFixture::registerService() {
    TolmarService::install(installed());
}

void HelperFixture::startService() {
    TolmarService::start();
    ASSERT_TRUE(TolmarService::waitForState(SERVICE_RUNNING, limitMs));
    ASSERT_EQ(runningVersion(), 1);
}

void HelperFixture::runService() {
    registerService();
    startService();
}

std::unique_ptr<ChildProcess> HelperFixture::startHelper(const std::string& tail) {
    return std::make_unique<ChildProcess>(helper(), tail, root + "\\stderr.txt");
}

std::unique_ptr<ChildProcess> HelperFixture::startHelper(const CommandLine& commandLine) {
    return std::make_unique<ChildProcess>(helper(), commandLine, root + "\\stderr.txt");
}

Outcome HelperFixture::runHelper(const std::string& tail) {
    return finish(*startHelper(tail));
}

Outcome HelperFixture::finish(ChildProcess& helper) {
    EXPECT_TRUE(helper.waitForEnd(limitMs)) << "the helper doesn't end";
    return {helper.exitCode(), helper.errorText(), helper.elapsedMs()};
}

EndState HelperFixture::endState() const {
    return {versionOf(installed()), versionOf(kept()), versionOf(fresh()), TolmarService::state(),
            runningVersion()};
}

int HelperFixture::versionOf(const std::string& path) const {
    if (!exists(path)) {
        return 0;
    }
    if ((GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return -1;
    }
    const std::string contents = readFile(path);
    return contents == readFile(FAKE_SERVICE_V1)   ? 1
           : contents == readFile(FAKE_SERVICE_V2) ? 2
                                                   : -1;
}

int HelperFixture::runningVersion() const {
    const std::string states = journal();
    return TolmarService::state() != SERVICE_RUNNING ? 0
           : states.ends_with("1 running")           ? 1
           : states.ends_with("2 running")           ? 2
                                                     : -1;
}

std::string HelperFixture::journal() const {
    if (!exists(installedDirectory + "\\tolmar.journal")) {
        return "";
    }
    std::istringstream lines(readFile(installedDirectory + "\\tolmar.journal"));
    std::string result;
    std::string word;
    std::string version;
    std::string state;
    while (lines >> word >> version >> state) {
        result += (result.empty() ? "" : ", ") + version + " " + state;
    }
    return result;
}

}  // namespace support
