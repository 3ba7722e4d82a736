// What the configuration says of the log service: its addresses, and the wait for a client. The
// program is a process of its own, and its client the test.
#include "tests/support/child_process.h"
#include "tests/support/files.h"
#include "tests/vek/log/config/config_fixture.h"
#include "tests/vek/log/service/log_service.h"
#include "vek/pal.h"
#include "vek/proc/child.h"

namespace {

using namespace vek::test;
using vek::net::IP4Address;

// An address of this host that no other test looks at, whichever checkout it belongs to.
std::string addressOfThisMoment() {
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    const auto part = [&](int shift) {
        return "." + std::to_string(1 + (now.QuadPart >> shift) % 254);
    };
    return "127" + part(22) + part(14) + part(6);
}

class ConfiguratorService : public WinsockTest {
  protected:
    static constexpr DWORD limitMs = 60000;

    ConfiguratorService()
        : root(support::temporaryDirectory() + "\\vek-config-service-" +
               std::to_string(GetCurrentProcessId())) {
        support::makeDirectory(root);
    }
    ~ConfiguratorService() override {
        if (program != nullptr) {
            program->terminate();
        }
        support::removeTree(root, limitMs);
    }

    // Starts the program "p" with `file` and `options`. It logs once it is configured, and stays.
    void start(const std::string& file, const std::string& options = "") {
        support::writeFile(root + "\\logging.conf", file);
        program = std::make_unique<support::ChildProcess>(
            CONFIGURED_PROGRAM,
            "configure=p log=WARN:a:text stay -- --logcfg " + root + "\\logging.conf " + options,
            root + "\\error.txt");
    }

    // The port of the program, looked for at `address`.
    static std::uint16_t portAt(const std::string& processAddress) {
        return tcpPortIn(
            DiscoveryClient(processAddress).askUntilAnswered("discover-request:name=p"));
    }

    bool isWaiting() const {
        return support::waitUntil(
            [this] {
                return program->errorText() ==
                       "Waiting for log_application program to connect before continuing\r\n";
            },
            limitMs);
    }

    // Expects that the program waits, goes on for a client, and sends it its message.
    void expectWait() {
        EXPECT_TRUE(isWaiting()) << program->errorText();
        const std::uint16_t port = portAt(address);
        ASSERT_NE(port, 0);
        ServiceClient other(port);
        EXPECT_EQ(other.ask("get-default-scope:"), "default-scope:scope=WARN");
        EXPECT_FALSE(program->waitForEnd(200)) << "that was no client for messages";
        ServiceClient client(port);
        client.send("get-messages:");
        const std::string message = client.receive();
        EXPECT_NE(message.find("text"), std::string::npos) << message;
        EXPECT_TRUE(program->errorText().ends_with("continuing\r\n"));
    }

    std::string discoveryAddress() const { return "discovery_addr = \"" + address + "\";"; }

    const std::string root;
    const std::string address = addressOfThisMoment();
    std::unique_ptr<support::ChildProcess> program;
};

bool canConnect(const std::string& address, std::uint16_t port) {
    IP4Address target = loopbackAddress(port);
    target.fromString(address);
    try {
        ClientSocket().connect(target);
        return true;
    } catch (const vek::NoPeer&) {
        return false;
    }
}

TEST_F(ConfiguratorService, WaitsIfTheFileSaysSoUntilAClientAsksForMessages) {
    start("defaults = { wait_log_application = true; " + discoveryAddress() + " };");
    expectWait();
}

TEST_F(ConfiguratorService, WaitsIfTheOptionSaysSo) {
    start("defaults = { " + discoveryAddress() + " };", "--wait-log-application");
    expectWait();
}

TEST_F(ConfiguratorService, OptionWinsOverBothGroups) {
    start("defaults = { wait_log_application = false; " + discoveryAddress() +
              " }; processes = { p = { wait_log_application = false; }; };",
          "--wait-log-application");
    EXPECT_TRUE(isWaiting());
}

TEST_F(ConfiguratorService, GroupOfTheProcessWinsOverTheDefaultsInTheWait) {
    start("defaults = { wait_log_application = false; " + discoveryAddress() +
          " }; processes = { p = { wait_log_application = true; }; };");
    EXPECT_TRUE(isWaiting());
    program->terminate();
    start("defaults = { wait_log_application = true; " + discoveryAddress() +
          " }; processes = { p = { wait_log_application = false; }; };");
    EXPECT_NE(portAt(address), 0);
    EXPECT_EQ(program->errorText(), "");
}

// No client can come any more, and it waits all the same.
TEST_F(ConfiguratorService, WaitsAlsoForAServiceThatHasDied) {
    support::writeFile(root + "\\logging.conf",
                       "defaults = { wait_log_application = true; listen_addr = \"192.0.2.1\"; " +
                           discoveryAddress() + " };");
    program = std::make_unique<support::ChildProcess>(
        CONFIGURED_PROGRAM, "configure=p threads -- --logcfg " + root + "\\logging.conf",
        root + "\\error.txt");
    const auto reports = [this](const char* text) {
        return program->errorText().find(text) != std::string::npos;
    };
    EXPECT_TRUE(support::waitUntil(
        [&] {
            return reports("Waiting for log_application program to connect") &&
                   reports("died with VEK exception:");
        },
        limitMs))
        << program->errorText();
    EXPECT_FALSE(program->waitForEnd(200));
}

TEST_F(ConfiguratorService, ReportsThatNobodyReadsStopTheServiceUntilTheyAreRead) {
    support::writeFile(root + "\\logging.conf", "defaults = { " + discoveryAddress() + " };");
    const vek::VekPal pal(false, 0, 4, nullptr);
    vek::proc::Pipe errors;
    errors.keepReadEnd();
    vek::proc::Child child;
    child.setArguments(
        {CONFIGURED_PROGRAM, "configure=p", "stay", "--", "--logcfg", root + "\\logging.conf"},
        true);
    child.setStderrHandle(errors, vek::proc::PipeEnd::write);
    child.start();
    errors.closeWriteEnd();
    const std::uint16_t port = portAt(address);
    ASSERT_NE(port, 0);
    // Long enough for an answer of a service that isn't stopped.
    const DWORD answerMs = 3000;
    int reports = 0;
    bool isStopped = false;
    while (reports < 100 && !isStopped) {
        ServiceClient client(port);
        client.socket.setOption(SOL_SOCKET, SO_RCVTIMEO, &answerMs, sizeof answerMs);
        try {
            // The report repeats the type.
            EXPECT_EQ(client.ask(std::string(1000, 'x') + ":"), "unsupported:");
            ++reports;
        } catch (const vek::NetError&) {
            isStopped = true;
        }
    }
    EXPECT_TRUE(isStopped);
    EXPECT_LE(reports, 4);
    ServiceClient other(port);
    other.socket.setOption(SOL_SOCKET, SO_RCVTIMEO, &answerMs, sizeof answerMs);
    other.send("get-default-scope:");
    EXPECT_THROW(other.receive(), vek::NetError);
    limitReceiving(other.socket);

    vek_test::ScopedThread reader([&] {
        char buffer[1000];
        DWORD count = 0;
        while (ReadFile(errors.readEnd, buffer, sizeof buffer, &count, nullptr) != 0) {
        }
    });
    EXPECT_EQ(other.receive(), "default-scope:scope=WARN");
    vek::proc::Child::kill(child.getProcess().dwProcessId);
    vek::proc::ExitStatus status;
    child.wait(status);
    reader.join();
    errors.closeReadEnd();
}

TEST_F(ConfiguratorService, SavesItselfForAClientWhichLearnsOfAFailureInOneReply) {
    start("defaults = { " + discoveryAddress() + " };");
    const std::uint16_t port = portAt(address);
    ASSERT_NE(port, 0);
    ServiceClient client(port);
    EXPECT_EQ(client.ask("change-scope:a=DEBUG"), "change-scope:ack");
    EXPECT_EQ(client.ask("persist-config:what=ever"), "persist-config:ack");
    const std::string file = root + "\\logging.conf";
    EXPECT_NE(support::readFile(file).find("a = \"DEBUG\""), std::string::npos)
        << support::readFile(file);
    ASSERT_NE(DeleteFileA(file.c_str()), 0);
    EXPECT_EQ(client.ask("persist-config:"), "persist-config:error=FileIOException");
    EXPECT_EQ(client.ask("get-default-scope:"), "default-scope:scope=WARN");
}

TEST_F(ConfiguratorService, ListensWhereTheFileSays) {
    start("defaults = { listen_addr = \"127.0.0.2\"; " + discoveryAddress() + " };");
    const std::uint16_t port = portAt(address);
    ASSERT_NE(port, 0);
    EXPECT_TRUE(canConnect("127.0.0.2", port));
    EXPECT_FALSE(canConnect("127.0.0.1", port));
}

TEST_F(ConfiguratorService, GroupOfTheProcessWinsOverTheDefaultsInBothAddresses) {
    start(
        "defaults = { listen_addr = \"127.0.0.2\"; discovery_addr = \"127.0.0.2\"; };"
        "processes = { p = { listen_addr = \"127.0.0.3\"; " +
        discoveryAddress() + " }; };");
    const std::uint16_t port = portAt(address);
    ASSERT_NE(port, 0);
    EXPECT_TRUE(canConnect("127.0.0.3", port));
    EXPECT_FALSE(canConnect("127.0.0.2", port));
}

TEST_F(ConfiguratorService, AddressThatIsNoneIsReportedByTheServerAndTheLoopbackAddressUsed) {
    start("defaults = { listen_addr = \"here\"; " + discoveryAddress() + " };");
    const std::uint16_t port = portAt(address);
    ASSERT_NE(port, 0);
    EXPECT_TRUE(canConnect("127.0.0.1", port));
    EXPECT_NE(program->errorText().find(
                  ": Failed to set custom listen_addr. Falling back to using localhost."),
              std::string::npos)
        << program->errorText();
}

}  // namespace
