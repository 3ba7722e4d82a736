// log_application::Sender: sends frames to a log collector on a thread of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/log_application/forward/collector_address.h"
#include "tools/log_application/forward/collector_socket.h"
#include "tools/log_application/forward/send_buffer.h"
#include "vek/base/compiler.h"
#include "vek/thread/condition.h"
#include "vek/thread/runnable.h"
#include "vek/thread/thread.h"

namespace log_application {

// Connects, and again whenever the connection breaks. Adding never blocks for the network. Thread-
// safe but for `start` and `finish`.
class Sender : public vek::thread::Runnable, public vek::NoCopy {
  public:
    // The limit of a name's look-up and of a connect, in milliseconds.
    static constexpr std::int64_t connectLimitMs = 5000;

    // The time between two attempts to connect, in milliseconds: it doubles from the first to the
    // longest, and is the first again after a connection that lasted longer than that.
    static constexpr std::int64_t firstPauseMs = 500;
    static constexpr std::int64_t longestPauseMs = 10'000;

    // Frames that were written no longer ago than this, in milliseconds, are written again after
    // the collector has ended the connection: it answers, so it has read what is older.
    static constexpr std::int64_t doubtfulMs = 5000;

    Sender(CollectorAddress target, std::size_t mostFrames, SendBuffer::MakeLossFrame lossFrame);

    // Ends the thread, without sending more.
    ~Sender() override;

    void start() { thread.start(); }

    // As those of SendBuffer.
    void add(const SendBuffer::MakeFrame& makeFrame);
    void addLost(std::uint64_t count);

    // Returns and removes what the user should be told since the last call.
    std::vector<std::string> takeNotices();

    // Sends what is left, for up to `limitMs` milliseconds, and waits until the collector has taken
    // it: it ends the connection then. Returns the number of messages that weren't sent. Nothing
    // may be added afterwards.
    std::uint64_t finish(std::int64_t limitMs);

    // Runs on the thread.
    void run() override;

  private:
    void connect();
    // Returns once the thread has to end. Throws when the connection breaks.
    void exchange(std::int64_t begin);
    std::string waitForWork();
    void recordWritten(std::size_t size, std::size_t wanted);
    void waitForCollectorsEnd();
    void onBreak(const std::exception& error, std::int64_t now);
    void pause(std::int64_t milliseconds);
    bool isFinishing();
    bool isOver();
    void addNotice(std::string text) VEK_REQUIRES(condition);

    const CollectorAddress collector;
    vek::thread::Condition condition;
    SendBuffer buffer VEK_GUARDED_BY(condition);
    std::vector<std::string> notices VEK_GUARDED_BY(condition);
    // When the thread has to end; none until `finish`.
    std::optional<std::int64_t> finishAt VEK_GUARDED_BY(condition);
    // These are used on the thread alone.
    std::unique_ptr<CollectorSocket> socket;
    bool isSaidAway = false;
    bool isAllTaken = false;
    vek::thread::Thread thread;
};

}  // namespace log_application
