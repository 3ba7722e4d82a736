// process_end_program HOW: logs, and ends its process HOW it is told to, with exit code 7. A sink
// tells on the standard error how many messages it has seen when it is destroyed. Started by
// process_end_test.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <thread>

#include "vek/base/windows.h"
#include "vek/log/configurator.h"
#include "vek/log/manager.h"
#include "vek/log/statement.h"
#include "vek/pal.h"

namespace {

using namespace vek::log;

constexpr int exitCode = 7;

class CountingSink final : public Sink {
  public:
    CountingSink(DWORD delay, bool failing, bool exiting)
        : Sink(config), delayMs(delay), fails(failing), exits(exiting) {}
    ~CountingSink() override {
        std::fprintf(stderr, "%d seen%s\n", count, inOrder ? "" : " out of order");
    }
    int type() const override { return -1; }
    std::string id() const override { return "counting"; }
    void store(const Message& message) override {
        if (exits) {
            std::exit(exitCode);
        }
        if (delayMs != 0) {
            Sleep(delayMs);
        }
        if (fails) {
            throw std::runtime_error("broken");
        }
        inOrder = inOrder && message.text == std::to_string(count);
        ++count;
    }

  private:
    SinkConfig config;
    const DWORD delayMs;
    const bool fails;
    const bool exits;
    int count = 0;
    bool inOrder = true;
};

void logMessages(int count) {
    Logger& logger = *Manager::instance().getLogger("x");
    for (int i = 0; i < count; ++i) {
        VEK_LOG(logger, WARN, i);
    }
}

[[noreturn]] void leaveOnAnotherThread() {
    std::thread([] { std::exit(exitCode); }).detach();
    Sleep(INFINITE);
    std::abort();
}

// Returns when the shutdown waits for room in the queue. A `late` one doesn't run again until
// others have had time to take up the room that comes.
void shutDownOnAnotherThread(bool late) {
    static std::atomic<DWORD> id = 0;
    std::thread([] {
        id = GetCurrentThreadId();
        Manager::instance().shutdown();
    }).detach();
    Sleep(200);
    if (late) {
        const HANDLE thread = OpenThread(THREAD_SUSPEND_RESUME, FALSE, id);
        SuspendThread(thread);
        std::thread([thread] {
            Sleep(500);
            ResumeThread(thread);
        }).detach();
    }
}

// Constructed before the manager, and so destroyed after it.
struct ToldLast {
    ~ToldLast() { std::fprintf(stderr, "statics end\n"); }
};

int run(const char* how) {
    const auto is = [how](const char* other) { return std::strcmp(how, other) == 0; };
    static const ToldLast told;
    if (is("untouched")) {
        return exitCode;
    }
    Manager& manager = Manager::instance();
    if (is("built")) {
        return exitCode;
    }
    manager.addSink(new CountingSink(is("slow")                ? 1
                                     : is("broken-at-the-end") ? 1000
                                                               : 0,
                                     std::string_view(how).starts_with("broken"),
                                     is("exit-of-the-sink")));
    if (is("not-started")) {
        logMessages(100);
        return exitCode;
    }
    if (is("broken")) {
        manager.start();
        logMessages(100);
        return exitCode;
    }
    if (is("broken-full") || is("broken-at-the-end") || is("broken-shutdown") ||
        is("broken-shutdown-busy")) {
        manager.start();
        // One in the worker's hand, and as many as the queue holds.
        logMessages(1 + static_cast<int>(Manager::queueCapacity));
        if (is("broken-shutdown-busy")) {
            // They take up whatever room the queue has.
            for (int i = 0; i < 8; ++i) {
                std::thread([] {
                    for (;;) {
                        Manager::instance().getLogger("y")->emit(WARN, "busy");
                    }
                }).detach();
            }
        }
        if (!is("broken-full") && !is("broken-at-the-end")) {
            shutDownOnAnotherThread(is("broken-shutdown-busy"));
        }
        return exitCode;
    }
    const vek::VekPal pal(false, 0, 4, nullptr);
    Configurator configurator(nullptr);
    if (is("not-configured")) {
        logMessages(100);
        return exitCode;
    }
    configurator.configure("program");
    logMessages(is("slow") ? 300 : 5000);
    if (is("return")) {
        return exitCode;
    }
    if (is("exit") || is("slow")) {
        std::exit(exitCode);
    }
    if (is("exit-after-shutdown")) {
        manager.shutdown();
        logMessages(10);
        std::exit(exitCode);
    }
    if (is("exit-of-another-thread")) {
        leaveOnAnotherThread();
    }
    if (is("exit-while-logging")) {
        std::thread([] { std::exit(exitCode); }).detach();
        Logger& logger = *manager.getLogger("x");
        for (int i = 5000;; ++i) {
            VEK_LOG(logger, WARN, i);
        }
    }
    if (is("exit-of-the-sink")) {
        Sleep(INFINITE);
    }
    if (is("full")) {
        // More than the queue holds, from a thread that will never get done.
        std::thread([] {
            for (;;) {
                Manager::instance().getLogger("y")->emit(TRACE, "never ends");
            }
        }).detach();
        Sleep(50);
        leaveOnAnotherThread();
    }
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    return argc == 2 ? run(argv[1]) : 2;
}
