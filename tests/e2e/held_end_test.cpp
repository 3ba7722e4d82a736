// Clients of the helper's log service that hold up the helper's end: one that has sent a part of a
// frame, and 62 at once. Where the entry point returns, it waits for the service's thread; exit
// doesn't.
#include <iterator>
#include <list>

#include "tests/e2e/procedure_waits.h"
#include "tests/support/files.h"
#include "tests/support/helper_fixture.h"
#include "tests/support/peer_event.h"
#include "tests/vek/log/service/log_service.h"

namespace {

using support::EndState;
using support::limitMs;
using support::Outcome;
using support::PeerEvent;
using support::TolmarService;
using vek::test::frame;
using vek::test::ServiceClient;

// How long a test watches that the helper doesn't end.
constexpr DWORD observeMs = 3000;
// Time for the service to read what a client has sent.
constexpr DWORD readMs = 2000;
// With so many clients the service no longer watches the socket that wakes it at the end.
constexpr int tooManyClients = 62;
// The time that the old version takes to stop. The clients connect meanwhile.
constexpr int slowStopMs = 8000;

class HeldEnd : public support::HelperFixture {
  protected:
    void SetUp() override {
        vek::net::startWinsock();
        HelperFixture::SetUp();
    }
    void TearDown() override {
        clients.clear();
        HelperFixture::TearDown();
        vek::net::stopWinsock();
    }

    // Waits until the log service of `helper` answers, and connects a client to it.
    void connectClient(const support::ChildProcess& helper) {
        if (port == 0) {
            vek::test::DiscoveryClient discovery("127.0.0.1");
            port = vek::test::tcpPortIn(discovery.askUntilAnswered(
                "discover-request:pid=" + std::to_string(helper.processId())));
            ASSERT_NE(port, 0) << "the helper's log service doesn't answer";
        }
        clients.emplace_back(port);
        // Only a client that has been accepted is answered.
        ASSERT_EQ(clients.back().ask("get-default-scope:"), "default-scope:scope=WARN");
    }

    // Connects a client, sends a part of a frame, and waits until the service has read that.
    void sendPartOfAFrame(const support::ChildProcess& helper) {
        connectClient(helper);
        clients.back().socket.writeAll(frame("get-default-scope:").substr(0, 9));
        Sleep(readMs);
    }

    void expectHeldUp(support::ChildProcess& helper) {
        EXPECT_FALSE(helper.waitForEnd(observeMs)) << "it ended with " << helper.exitCode();
    }

    // Runs a restart of the GUI until the GUI has started. Calls `connect` with the helper while
    // that waits for the peer.
    template <class Connect>
    std::unique_ptr<support::ChildProcess> restartGui(Connect connect) {
        const PeerEvent event1(support::event1Name);
        const PeerEvent event2(support::event2Name);
        auto helper = startHelper("-restartgui " + installedDirectory);
        EXPECT_TRUE(event1.waitFor(limitMs)) << "the helper doesn't say that it is up";
        connect(*helper);
        event2.set();
        EXPECT_TRUE(support::waitUntil([&] { return support::isReadable(guiFile()); }, limitMs));
        return helper;
    }

    void connectClients(const support::ChildProcess& helper, int count) {
        for (int i = 0; i < count && !HasFatalFailure(); ++i) {
            connectClient(helper);
        }
    }

    // Starts to replace a version that stops slowly.
    std::unique_ptr<support::ChildProcess> startReplacement() {
        behave(1, "stop-delay-ms", slowStopMs);
        runService();
        return startHelper(installedDirectory);
    }

    std::uint16_t port = 0;
    std::list<ServiceClient> clients;
};

TEST_F(HeldEnd, OfAGuiRestartLastsUntilAClientThatSentAPartOfAFrameGoes) {
    const auto helper = restartGui([&](auto& running) { sendPartOfAFrame(running); });
    expectHeldUp(*helper);
    clients.clear();
    EXPECT_EQ(finish(*helper).exitCode, 0u);
}

TEST_F(HeldEnd, LastsUntilTheRestOfTheFrame) {
    const auto helper = restartGui([&](auto& running) { sendPartOfAFrame(running); });
    expectHeldUp(*helper);
    clients.back().socket.writeAll(frame("get-default-scope:").substr(9));
    EXPECT_EQ(finish(*helper).exitCode, 0u);
}

TEST_F(HeldEnd, OfAGuiRestartLastsUntilOneOf62ClientsGoes) {
    const auto helper = restartGui([&](auto& running) { connectClients(running, tooManyClients); });
    expectHeldUp(*helper);
    clients.erase(std::next(clients.begin(), tooManyClients / 2));
    EXPECT_EQ(finish(*helper).exitCode, 0u);
}

TEST_F(HeldEnd, IsNoneWith61Clients) {
    const auto helper =
        restartGui([&](auto& running) { connectClients(running, tooManyClients - 1); });
    EXPECT_EQ(finish(*helper).exitCode, 0u);
    EXPECT_EQ(clients.size(), tooManyClients - 1u);
}

// The message is written after the end of the log.
TEST_F(HeldEnd, OfAReplacementWithoutPathInfoIniHoldsUpItsMessageToo) {
    ASSERT_NE(DeleteFileA(pathInfo().c_str()), 0);
    const auto helper = startReplacement();
    sendPartOfAFrame(*helper);
    ASSERT_TRUE(support::waitUntil([&] { return support::exists(kept()); }, limitMs));
    expectHeldUp(*helper);
    EXPECT_EQ(helper->errorText(), "");
    EXPECT_EQ(
        endState(),
        (EndState{
            .installed = 0, .kept = 1, .fresh = 2, .serviceState = SERVICE_STOPPED, .running = 0}));
    clients.clear();
    const Outcome outcome = finish(*helper);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_TRUE(outcome.errorText.starts_with("PathInfo Error: failed to load config file: "))
        << outcome.errorText;
}

TEST_F(HeldEnd, OfARollBackKeepsItsExitCode) {
    behave(2, "falls-after-ms", 200);
    behave(2, "stop-delay-ms", 4000);
    const auto helper = startReplacement();
    sendPartOfAFrame(*helper);
    ASSERT_TRUE(support::waitUntil([&] { return journal().ends_with("2 stopped"); }, limitMs));
    ASSERT_TRUE(support::waitUntil([&] { return DeleteFileA(installed().c_str()) != 0; }, limitMs));
    ASSERT_TRUE(support::waitUntil([&] { return runningVersion() == 1; }, limitMs));
    expectHeldUp(*helper);
    clients.clear();
    EXPECT_EQ(finish(*helper).exitCode, 1u);
    EXPECT_EQ(
        endState(),
        (EndState{
            .installed = 1, .kept = 0, .fresh = 2, .serviceState = SERVICE_RUNNING, .running = 1}));
}

// By exit(0).
TEST_F(HeldEnd, IsNoneAfterAGoodUpdate) {
    const auto helper = startReplacement();
    connectClients(*helper, tooManyClients - 1);
    sendPartOfAFrame(*helper);
    EXPECT_EQ(finish(*helper).exitCode, 0u);
    EXPECT_EQ(endState().running, 2);
}

// By exit(1).
TEST_F(HeldEnd, IsNoneAfterTheLastAttempt) {
    ASSERT_NE(DeleteFileA(fresh().c_str()), 0);
    const auto helper = startReplacement();
    sendPartOfAFrame(*helper);
    const Outcome outcome = finish(*helper);
    EXPECT_EQ(outcome.exitCode, 1u);
    EXPECT_GE(outcome.milliseconds, waits::attempts);
}

TEST_F(HeldEnd, IsNotReachedWhileTheHelperWaitsForALogClient) {
    support::writeFile(helperDirectory + "\\logging.conf",
                       "defaults = { wait_log_application = true; };");
    const auto helper = startHelper("-restartgui " + installedDirectory);
    expectHeldUp(*helper);
    EXPECT_EQ(helper->errorText(),
              "Waiting for log_application program to connect before continuing\r\n");
    connectClient(*helper);
    clients.back().send("get-messages:");
    EXPECT_EQ(finish(*helper).exitCode, 0u);
}

}  // namespace
