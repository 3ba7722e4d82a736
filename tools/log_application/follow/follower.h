// log_application::Follower: reads the messages of one process on a thread of its own.
#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>

#include "tools/log_application/connection/client.h"
#include "tools/log_application/connection/process.h"
#include "tools/log_application/finding/selection.h"
#include "tools/log_application/follow/followed_processes.h"
#include "tools/log_application/follow/line_queue.h"
#include "tools/log_application/program/stop_signal.h"
#include "vek/thread/runnable.h"
#include "vek/thread/thread.h"

namespace log_application {

// What the followers of one command share. All is borrowed.
struct FollowerContext {
    LineQueue& queue;
    StopSignal& stop;
    FollowedProcesses& followed;
    bool reconnect;
};

class Follower : public vek::thread::Runnable, public vek::NoCopy {
  public:
    // How long is waited between two attempts to find the process again, in milliseconds.
    static constexpr std::int64_t retryMs = 500;

    // `wanted` is what it looks for when there is no process, or it has ended; `found` is the
    // process to begin with. `sourceNumber` is its number in the queue.
    Follower(const FollowerContext& followerContext, std::size_t sourceNumber, Selection wanted,
             std::optional<Process> found);

    // Waits for the thread; the stop has to be requested, unless it has ended by itself.
    ~Follower() override;

    void start() { thread.start(); }

    // The body. Reads as fast as it can until the process ends, and, with `reconnect`, then looks
    // for it anew. What happens to the connection goes into the queue as a notice, and an end at
    // the end.
    void run() override;

    // The process that is followed, or was last; safe from any thread.
    std::string label() const;

  private:
    void followOnce();
    void readMessages(Client& client);
    void tellEnd(const Client& client, const std::string& reason);
    bool findAgain();
    void setProcess(Process now);
    bool answers(const Endpoint& endpoint) const;
    bool hasGone(const Endpoint& endpoint) const;

    const FollowerContext context;
    const std::size_t source;
    const Selection selection;
    std::optional<Process> process;
    mutable std::mutex labelLock;
    std::string processLabel;  // guarded by `labelLock`
    bool wasConnected = false;
    vek::thread::Thread thread;
};

}  // namespace log_application
