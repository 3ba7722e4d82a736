#include <atomic>
#include <functional>
#include <thread>

#include "tests/support/files.h"
#include "tests/vek/proc/proc_test.h"
#include "vek/proc/shepherd.h"
#include "vek/thread/scope_guard.h"

namespace {

using vek::RuntimeError;
using vek::UsageError;
using vek::proc::Child;
using vek::proc::currentShepherd;
using vek::proc::ExitStatus;
using vek::test::NamedEvent;

// Runs an action and counts the calls.
class Callback final : public vek::proc::IChildCallback {
  public:
    using Action = std::function<void(Child&)>;

    explicit Callback(Action todo = [](Child&) {}) : action(std::move(todo)) {}

    void childExited(Child& child) override {
        // Counted however the action ends.
        struct Counted {
            std::atomic<int>& count;
            ~Counted() { ++count; }
        } counted{calls};
        thread = vek::thread::Thread::currentId();
        told = &child;
        action(child);
    }

    bool awaitCalls(int count) const {
        return support::waitUntil([&] { return calls >= count; }, vek::test::limitMs);
    }

    std::atomic<int> calls = 0;
    std::atomic<std::uint32_t> thread = 0;
    std::atomic<Child*> told = nullptr;

  private:
    const Action action;
};

class ChildCallback : public vek::test::ProcTest {
  protected:
    static void start(Child& child, Callback& callback, const std::string& code = "0") {
        prepare(child, {"exit", code});
        child.setNotifyCallback(&callback);
        child.start();
    }

    // Returns what is written to the standard error while a child runs and `callback` is called.
    static std::string reportOf(Callback& callback) {
        Child child;
        testing::internal::CaptureStderr();
        start(child, callback);
        callback.awaitCalls(1);
        // The shepherd has written the report before it notices this child.
        Child next;
        prepare(next, {"exit", "0"});
        next.start();
        waited(next);
        const std::string report = testing::internal::GetCapturedStderr();
        EXPECT_TRUE(waited(child).succeeded());
        return report;
    }
};

TEST_F(ChildCallback, IsToldOnceOnTheShepherdsThreadWithTheChild) {
    Callback callback;
    Child child;
    start(child, callback);
    EXPECT_TRUE(callback.awaitCalls(1));
    EXPECT_EQ(callback.told, &child);
    EXPECT_NE(callback.thread, vek::thread::Thread::currentId());
    EXPECT_NE(callback.thread, 0u);
    EXPECT_TRUE(waited(child).succeeded());
    // A second start calls the callback again; a child without a callback doesn't.
    child.start();
    EXPECT_TRUE(callback.awaitCalls(2));
    waited(child);
    child.setNotifyCallback(nullptr);
    child.start();
    waited(child);
    Child other;
    start(other, callback);
    EXPECT_TRUE(callback.awaitCalls(3));
    EXPECT_EQ(callback.told, &other);
    waited(other);
    EXPECT_EQ(callback.calls, 3);
}

TEST_F(ChildCallback, CannotBeSetWhileAChildIsThere) {
    Callback callback;
    Child child;
    prepare(child, {"exit", "0"});
    child.start();
    const std::string message = "Can't set notify callback if child is already running";
    EXPECT_EQ(thrown<RuntimeError>([&] { child.setNotifyCallback(&callback); }), message);
    ASSERT_TRUE(hasEnded(child));
    EXPECT_EQ(thrown<RuntimeError>([&] { child.setNotifyCallback(nullptr); }), message);
    waited(child);
    EXPECT_NO_THROW(child.setNotifyCallback(&callback));
    EXPECT_EQ(callback.calls, 0);
}

TEST_F(ChildCallback, GetsTheResultOfItsOwnChildAtOnce) {
    std::atomic<std::uint32_t> code = 0;
    Callback callback([&](Child& child) { code = waited(child).code; });
    Child child;
    start(child, callback, "17");
    EXPECT_TRUE(callback.awaitCalls(1));
    EXPECT_EQ(code, 17u);
    EXPECT_EQ(child.getProcess().dwProcessId, 0u);
}

TEST_F(ChildCallback, ResultIsThereForOthersBeforeTheCallbackHasReturned) {
    const NamedEvent release;
    Callback callback([&](Child&) {
        const HANDLE event = OpenEventA(SYNCHRONIZE, FALSE, release.name.c_str());
        WaitForSingleObject(event, vek::test::limitMs);
        CloseHandle(event);
    });
    Child child;
    start(child, callback, "18");
    EXPECT_EQ(waited(child).code, 18u);
    EXPECT_EQ(callback.calls, 0);
    release.set();
    EXPECT_TRUE(callback.awaitCalls(1));
}

TEST_F(ChildCallback, OwnerThatWaitsForItsSignalTooMayDestroyItAndTheChild) {
    // The signal is the callback's last step; nothing of it or of the child is used after that.
    struct Signalling final : vek::proc::IChildCallback {
        explicit Signalling(HANDLE toSet) : exited(toSet) {}
        ~Signalling() { exited = nullptr; }
        // Doesn't look at the child, which the owner waits for at the same time.
        void childExited(Child&) override {
            Sleep(delayMs);
            SetEvent(exited);
        }
        HANDLE exited;
        DWORD delayMs = 0;
    };
    const HANDLE exited = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    for (int i = 0; i < 30; ++i) {
        const auto callback = std::make_unique<Signalling>(exited);
        callback->delayMs = static_cast<DWORD>(i % 3);
        const auto child = std::make_unique<Child>();
        prepare(*child, {"exit", "3"});
        child->setNotifyCallback(callback.get());
        child->start();
        EXPECT_EQ(waited(*child).code, 3u);
        EXPECT_EQ(WaitForSingleObject(exited, vek::test::limitMs), WAIT_OBJECT_0);
    }
    CloseHandle(exited);
}

TEST_F(ChildCallback, WaitsForItsChildAlsoWithTheShepherdsLockHeld) {
    std::atomic<std::uint32_t> code = 0;
    Callback callback([&](Child& child) {
        const vek::thread::ScopeGuard guard(currentShepherd()->getLock());
        code = waited(child).code;
    });
    Child child;
    start(child, callback, "17");
    EXPECT_TRUE(callback.awaitCalls(1));
    EXPECT_EQ(code, 17u);
}

TEST_F(ChildCallback, GetsTheResultOfAnotherChildWhoseExitHasBeenNoticed) {
    Child former;
    Child later;
    prepare(former, {"exit", "4"});
    former.start();
    ASSERT_TRUE(hasEnded(former));
    prepare(later, {"exit", "0"});
    later.start();
    waited(later);
    std::atomic<std::uint32_t> code = 0;
    Callback callback([&](Child&) { code = waited(former).code; });
    Child child;
    start(child, callback);
    EXPECT_TRUE(callback.awaitCalls(1));
    EXPECT_EQ(code, 4u);
    waited(child);
}

TEST_F(ChildCallback, RunsOutsideTheShepherdsLock) {
    std::atomic<bool> held = true;
    Callback callback([&](Child&) {
        held = currentShepherd()->getLock().getMutex().isHeldByCaller();
        const vek::thread::ScopeGuard guard(currentShepherd()->getLock());
    });
    Child child;
    start(child, callback);
    EXPECT_TRUE(callback.awaitCalls(1));
    EXPECT_FALSE(held);
    waited(child);
}

TEST_F(ChildCallback, MayStartFurtherChildren) {
    std::vector<std::unique_ptr<Child>> further;
    Callback* self = nullptr;
    Callback callback([&](Child& child) {
        waited(child);
        if (further.size() < 4) {
            further.push_back(std::make_unique<Child>());
            start(*further.back(), *self);
        }
    });
    self = &callback;
    Child child;
    start(child, callback);
    EXPECT_TRUE(callback.awaitCalls(5));
    EXPECT_EQ(further.size(), 4u);
}

TEST_F(ChildCallback, MayStartItsOwnChildAgain) {
    std::atomic<int> rounds = 0;
    Callback callback([&](Child& child) {
        waited(child);
        if (++rounds < 3) {
            child.start();
        }
    });
    Child child;
    start(child, callback);
    EXPECT_TRUE(callback.awaitCalls(3));
}

TEST_F(ChildCallback, WaitForAnotherChildThrowsAndTheOthersGoOn) {
    const NamedEvent end;
    Child running;
    Child third;
    prepare(running, {"wait", end.name, "0"});
    prepare(third, {"wait", end.name, "3"});
    Callback ofRunning;
    running.setNotifyCallback(&ofRunning);
    running.start();
    third.start();
    HANDLE watched = nullptr;
    DuplicateHandle(GetCurrentProcess(), running.getProcess().hProcess, GetCurrentProcess(),
                    &watched, 0, FALSE, DUPLICATE_SAME_ACCESS);
    std::string message;
    Callback callback([&](Child&) { message = thrown<RuntimeError>([&] { waited(running); }); });
    Child child;
    testing::internal::CaptureStderr();
    start(child, callback);
    EXPECT_TRUE(callback.awaitCalls(1));
    EXPECT_EQ(message, "need no lock but my result's not there?!");
    EXPECT_EQ(running.getProcess().dwProcessId, 0u);
    EXPECT_THROW(waited(running), UsageError);
    waited(child);
    end.set();
    EXPECT_EQ(WaitForSingleObject(watched, vek::test::limitMs), WAIT_OBJECT_0);
    EXPECT_EQ(waited(third).code, 3u);
    Callback later;
    start(child, later);
    EXPECT_TRUE(later.awaitCalls(1));
    waited(child);
    // The child whose handle was closed isn't watched any more: no failing waits, no calls.
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(ofRunning.calls, 0);
    CloseHandle(watched);
}

TEST_F(ChildCallback, ExceptionIsReportedAndTheShepherdLivesOn) {
    Callback callback([](Child&) { throw RuntimeError("outer", RuntimeError("inner")); });
    EXPECT_EQ(reportOf(callback),
              "vek::proc::Shepherd::notifyChildExited: callback has thrown an exception:\n"
              "outer\ninner\n\n");
    Callback standard([](Child&) { throw std::runtime_error("plain"); });
    EXPECT_EQ(reportOf(standard),
              "vek::proc::Shepherd::notifyChildExited: callback has thrown an exception:\n"
              "plain\n");
}

TEST_F(ChildCallback, ExceptionOfAnotherKindEndsTheShepherd) {
    Callback callback([](Child&) { throw 42; });
    Child child;
    Child next;
    testing::internal::CaptureStderr();
    start(child, callback);
    EXPECT_TRUE(callback.awaitCalls(1));
    EXPECT_TRUE(support::waitUntil([] { return vek::thread::Thread::liveCount() == 0; },
                                   vek::test::limitMs));
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_EQ(report.substr(0, 17), "Thread shepherd (");
    EXPECT_NE(report.find(") died with an unknown exception"), std::string::npos);
    EXPECT_TRUE(waited(child).finished);
    // Nobody notices the exit of the next child.
    prepare(next, {"exit", "0"});
    next.start();
    ASSERT_TRUE(hasEnded(next));
    EXPECT_FALSE(waitedUpTo(next, 100).finished);
    vek::proc::shutdownShepherd();
    EXPECT_THROW(waited(next), RuntimeError);
}

TEST_F(ChildCallback, CannotShutTheShepherdDown) {
    Callback callback([](Child&) { vek::proc::shutdownShepherd(); });
    Child child;
    testing::internal::CaptureStderr();
    start(child, callback);
    EXPECT_TRUE(callback.awaitCalls(1));
    vek::proc::shutdownShepherd();
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_EQ(report.find("vek::proc::Shepherd::notifyChildExited: callback has thrown"), 0u);
    EXPECT_THROW(waited(child), RuntimeError);
}

}  // namespace
