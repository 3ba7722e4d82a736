// What the tests of the log share: a sink that keeps what it is given, and bounded waits.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "vek/base/std_mutex.h"
#include "vek/base/windows.h"
#include "vek/log/manager.h"
#include "vek/log/sink.h"

namespace vek_test {

// The bound of every wait for something that is bound to happen.
inline constexpr std::chrono::seconds longEnough{60};

// What a sink was given.
struct Captured {
    vek::log::Level level;
    std::string category;
    std::string text;
    std::uint32_t pid;
    std::uint32_t tid;
    std::int64_t timestamp;
    // Whether it came by the `store` of attributed messages.
    bool withAttrs;
    std::map<std::string, std::string> attrs;
};

// Adds a sink to `manager` and takes it away again at the end of the scope, whichever of the two
// goes first. Its operations are safe from any thread, and the captured messages outlive the sink.
class LogCapture {
  public:
    // Called by the sink for each message, on the worker, before it is kept; may throw.
    using OnStore = std::function<void(const vek::log::Message&)>;

    explicit LogCapture(vek::log::Manager& manager, vek::log::Level maxLevel = vek::log::INVALID,
                        OnStore onStore = nullptr)
        : usedManager(manager), sink(new CaptureSink(state, maxLevel, std::move(onStore))) {
        usedManager.addSink(sink);
    }
    ~LogCapture() {
        if (!destroyed()) {
            usedManager.removeSink(sink);
            delete sink;
        }
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // The manager has destroyed the sink.
    bool destroyed() const {
        const vek::StdGuard guard(state->mutex);
        return state->sinkDestroyed;
    }

    std::vector<Captured> messages() const {
        const vek::StdGuard guard(state->mutex);
        return state->messages;
    }

    std::vector<std::string> texts() const {
        std::vector<std::string> result;
        for (const Captured& message : messages()) {
            result.push_back(message.text);
        }
        return result;
    }

    // Waits until `count` messages have come. False if they don't in time.
    bool waitFor(std::size_t count) const {
        vek::StdGuard held(state->mutex);
        return state->changed.wait_for(held.forWait(), longEnough,
                                       [&] { return state->messages.size() >= count; });
    }

    // Waits until the manager has destroyed the sink.
    bool waitForDestruction() const {
        vek::StdGuard held(state->mutex);
        return state->changed.wait_for(held.forWait(), longEnough,
                                       [&] { return state->sinkDestroyed; });
    }

    vek::log::Sink* getSink() const { return sink; }

  private:
    struct State {
        vek::StdMutex mutex;
        std::condition_variable changed;
        std::vector<Captured> messages;
        bool sinkDestroyed = false;
    };

    class CaptureSink final : public vek::log::Sink {
      public:
        CaptureSink(std::shared_ptr<State> target, vek::log::Level maxLevel, OnStore toCall)
            : Sink(config), state(std::move(target)), onStore(std::move(toCall)) {
            config.max_level = maxLevel;
        }
        ~CaptureSink() override {
            const vek::StdGuard guard(state->mutex);
            state->sinkDestroyed = true;
            state->changed.notify_all();
        }

        int type() const override { return -1; }
        std::string id() const override { return "capture"; }
        void store(const vek::log::AttrMessage& message) override {
            keep(message, true, message.attrs);
        }
        void store(const vek::log::Message& message) override { keep(message, false, {}); }

      private:
        void keep(const vek::log::Message& message, bool withAttrs,
                  const std::map<std::string, std::string>& attrs) {
            if (onStore) {
                onStore(message);
            }
            const vek::StdGuard guard(state->mutex);
            state->messages.push_back({message.level, message.category, message.text, message.pid,
                                       message.tid, message.timestamp.getValue(), withAttrs,
                                       attrs});
            state->changed.notify_all();
        }

        vek::log::SinkConfig config;
        const std::shared_ptr<State> state;
        const OnStore onStore;
    };

    vek::log::Manager& usedManager;
    const std::shared_ptr<State> state = std::make_shared<State>();
    vek::log::Sink* const sink;
};

// A door that threads wait at until it is opened.
class Door {
  public:
    Door() = default;
    ~Door() {
        CloseHandle(event);
        CloseHandle(reached);
    }
    Door(const Door&) = delete;
    Door& operator=(const Door&) = delete;

    void open() { SetEvent(event); }
    // False if it isn't opened in time.
    bool pass() const {
        SetEvent(reached);
        return isSignaledInTime(event);
    }
    // Waits until somebody has come to it. False if nobody comes in time.
    bool isReached() const { return isSignaledInTime(reached); }

  private:
    static bool isSignaledInTime(HANDLE object) {
        return WaitForSingleObject(object, static_cast<DWORD>(longEnough.count() * 1000)) ==
               WAIT_OBJECT_0;
    }

    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    const HANDLE reached = CreateEventA(nullptr, TRUE, FALSE, nullptr);
};

// A message whose destruction, by the manager's worker and without its mutex, waits for a door: the
// queue drains and doesn't come to its end.
class HeldMessage : public vek::log::Message {
  public:
    explicit HeldMessage(const Door& doorToPass)
        : Message("x", "held", vek::log::ERR, 0), door(doorToPass) {}
    ~HeldMessage() override { door.pass(); }

  private:
    const Door& door;
};

// Joins at the end of the scope.
class ScopedThread {
  public:
    explicit ScopedThread(std::function<void()> body) : thread(std::move(body)) {}
    ~ScopedThread() { join(); }
    ScopedThread(const ScopedThread&) = delete;
    ScopedThread& operator=(const ScopedThread&) = delete;
    void join() {
        if (thread.joinable()) {
            thread.join();
        }
    }

  private:
    std::thread thread;
};

}  // namespace vek_test
