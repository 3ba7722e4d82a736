// log_application::Follower: reads the messages of one process on a thread of its own.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "tools/log_application/connection/client.h"
#include "tools/log_application/connection/process.h"
#include "tools/log_application/finding/selection.h"
#include "tools/log_application/follow/followed_processes.h"
#include "tools/log_application/follow/line_queue.h"
#include "tools/log_application/program/stop_signal.h"
#include "vek/base/std_mutex.h"
#include "vek/thread/runnable.h"
#include "vek/thread/thread.h"

namespace log_application {

// What the followers of one command share. Nothing is owned.
struct FollowerContext {
    LineQueue& queue;
    StopSignal& stop;
    FollowedProcesses& followed;
    bool reconnect;
    // What follows the report that a process has closed the connection and still runs.
    const char* afterClosing;
};

class Follower : public vek::thread::Runnable, public vek::NoCopy {
  public:
    // The time between two attempts to find the process again, in milliseconds.
    static constexpr std::int64_t retryMs = 500;

    // Follows `found` first; without it, and after its end, searches for `wanted`. `sourceNumber`
    // is the source of its arrivals in the queue.
    Follower(const FollowerContext& followerContext, std::size_t sourceNumber, Selection wanted,
             std::optional<Process> found);

    // Joins the thread, which ends by itself or when the stop is requested.
    ~Follower() override;

    void start() { thread.start(); }

    // Runs on the thread. Reads until the process ends; with `reconnect` it then searches for it
    // again. Adds messages, notices about the connection, and finally an end to the queue.
    void run() override;

    // The label of the process that is or was followed last. Thread-safe.
    std::string label() const;

    // That process. None if none was found yet. Thread-safe.
    std::optional<Process> lastProcess() const;

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
    std::optional<Process> process;  // used on the thread alone
    mutable vek::StdMutex shownLock;
    std::optional<Process> shownProcess VEK_GUARDED_BY(shownLock);
    bool wasConnected = false;
    vek::thread::Thread thread;
};

}  // namespace log_application
