// What docs/log-service.md says that a client can do to a process, as far as no other test shows
// it, and the way out of each.
#include <atomic>

#include "tests/support/heap_use.h"
#include "tests/support/turns.h"
#include "tests/vek/log/service/log_service.h"

namespace {

using namespace vek;
using namespace vek::test;

// How long it is watched that nothing happens.
constexpr DWORD observeMs = 300;

class ClientHarm : public LogServiceTest {
  protected:
    void SetUp() override { start(); }

    // What runs `action`, which is expected to block.
    class Blocked {
      public:
        template <class Action>
        explicit Blocked(Action action)
            : thread([this, action] {
                  action();
                  hasReturned = true;
              }) {}

        // Watches it for `ms` milliseconds, on a busy machine for longer.
        bool lasts(DWORD ms) const {
            for (DWORD watched = 0; watched < ms && !hasReturned; watched += 10) {
                support::letTurnPass();
            }
            return !hasReturned;
        }
        void join() { thread.join(); }

      private:
        std::atomic<bool> hasReturned = false;
        vek_test::ScopedThread thread;
    };
};

TEST_F(ClientHarm, UnreadAnswersAboutSinksBlockTheLogUntilTheClientEnds) {
    std::vector<std::unique_ptr<vek_test::LogCapture>> sinks;
    for (int i = 0; i < 2000; ++i) {
        sinks.push_back(std::make_unique<vek_test::LogCapture>(manager));
    }
    log::Logger& logger = *manager.getLogger("x");
    ServiceClient client(port);
    // Of a fixed size, as otherwise the system makes room for more when it has waited for a while.
    const int received = 16 * 1024;
    EXPECT_EQ(setsockopt(client.socket.nativeHandle(), SOL_SOCKET, SO_RCVBUF,
                         reinterpret_cast<const char*>(&received), sizeof received),
              0);
    EXPECT_EQ(client.ask("change-scope:"), "change-scope:ack");
    std::unique_ptr<Blocked> loggerMaker;
    // Each answer is some 130 KB; the system's buffers take several.
    for (int i = 0; i < 1000 && loggerMaker == nullptr; ++i) {
        client.send("evidence-info:");
        auto maker = std::make_unique<Blocked>([this] { manager.getLogger("late"); });
        if (maker->lasts(20) && maker->lasts(2000)) {
            loggerMaker = std::move(maker);
        }
    }
    ASSERT_NE(loggerMaker, nullptr) << errors.text();
    Blocked levelSetter([this] { manager.setDefaultLevel(log::INFO); });
    logger.emit(log::WARN, "held");
    EXPECT_TRUE(loggerMaker->lasts(observeMs));
    EXPECT_TRUE(levelSetter.lasts(0));
    EXPECT_TRUE(sinks[0]->texts().empty());
    // Statements go on until the queue is full.
    logger.emit(log::WARN, "held too");

    client.socket.close();
    loggerMaker->join();
    levelSetter.join();
    EXPECT_TRUE(sinks[0]->waitFor(2));
    EXPECT_TRUE(errors.waitFor("caught exception while processing a configuration client/message"));
    EXPECT_EQ(ServiceClient(port).ask("change-scope:"), "change-scope:ack");
}

TEST_F(ClientHarm, HalfAFrameHoldsUpTheEndOfTheServerUntilItsClientEnds) {
    auto client = std::make_unique<ServiceClient>(port);
    EXPECT_EQ(client->ask("change-scope:"), "change-scope:ack");
    client->socket.writeAll(std::string("\0\0", 2));
    // The server may not have begun to read it.
    Sleep(observeMs);
    Blocked stopping([this] { server->stop(); });
    EXPECT_TRUE(stopping.lasts(observeMs));
    client.reset();
    stopping.join();
}

TEST_F(ClientHarm, ListenersThatHaveGoneStayInAQuietProcessUntilOneOrTwoMessages) {
    for (int i = 0; i < 20; ++i) {
        streamingClient();
    }
    ServiceClient asker(port);
    EXPECT_EQ(asker.sinks().size(), 20u);
    Sleep(observeMs);
    EXPECT_EQ(asker.sinks().size(), 20u);
    log::Logger& logger = *manager.getLogger("x");
    logger.emit(log::WARN, "first");
    // The first write after a close may still succeed, and is answered by a reset.
    Sleep(observeMs);
    logger.emit(log::WARN, "second");
    EXPECT_TRUE(eventually([this] { return sinkCount() == 0; }));
    EXPECT_TRUE(asker.sinks().empty());
}

TEST_F(ClientHarm, EveryNameInChangeScopeIsKept) {
    ServiceClient client(port);
    EXPECT_EQ(client.ask("change-scope:first=DEBUG"), "change-scope:ack");
    const support::HeapUse before = support::heapUse();
    constexpr int requests = 100;
    constexpr int namesInOne = 50;
    for (int i = 0; i < requests; ++i) {
        std::string request = "change-scope:";
        for (int name = 0; name < namesInOne; ++name) {
            request += "name" + std::to_string(i * namesInOne + name) + "=DEBUG\x1F";
        }
        ASSERT_EQ(client.ask(request), "change-scope:ack");
    }
    const support::HeapUse after = support::heapUse();
    const double perName =
        double(after.bytes - before.bytes) / static_cast<double>(requests * namesInOne);
    // "Some 100 bytes a name".
    EXPECT_GT(perName, 40);
    EXPECT_LT(perName, 160);
    EXPECT_EQ(client.ask("agent-list:"), "agent-list:");
    EXPECT_EQ(manager.getLogger("name0")->level(), log::DEBUG);
    EXPECT_EQ(manager.getLogger("name4999")->level(), log::DEBUG);
}

}  // namespace
