// vek::log::Manager: all log output of a process passes through this object.
//
// It owns the loggers, a bounded queue of messages, the sinks, and a worker thread, "log-manager",
// which takes each message off the queue and offers it to every sink in turn. A slow sink delays
// the output, but not the statements, until the queue is full: then the statements block. Nothing
// is dropped.
//
// Its states:
//
//     built      from the first `instance`. Loggers, sinks and levels can be managed. Messages wait
//                in the queue; a statement that finds it full blocks until `start`.
//     running    from `start`. Messages reach the sinks.
//     stopped    from `shutdown`. The loggers and sinks are gone. New loggers may be made; their
//                messages wait in the queue, as before `start`.
//     destroyed  at the end of the process, by return from main or by exit on any thread. If the
//                manager is running, the messages in the queue reach the sinks first. Sinks and
//                messages are destroyed then, but the manager and its loggers stay in memory for
//                the threads that the process hasn't ended yet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "vek/base/no_copy.h"
#include "vek/base/std_mutex.h"
#include "vek/log/level.h"
#include "vek/log/logger.h"
#include "vek/log/message.h"
#include "vek/log/queue/bounded_queue.h"
#include "vek/log/sink.h"
#include "vek/log/spent_messages.h"
#include "vek/thread/runnable.h"
#include "vek/thread/thread.h"

namespace vek::log {

class LevelSource;

// Thread-safe, but not to be called from within a sink: the manager's mutex is held during the
// output of a message. Every operation but `submit` waits for that output.
//
// Every operation throws std::system_error if a mutex or a condition fails.
class Manager : public thread::Runnable, public NoCopy {
  public:
    // The number of messages that the queue holds.
    static constexpr std::size_t queueCapacity = 10000;

    // Programs use `instance`.
    Manager();

    // The worker's body. Not to be called from elsewhere.
    void run() override;

    // Shuts down, and destroys the rest: the messages still in the queue, unseen, and the sinks of
    // a manager that was never started. If the worker has been ended by an exception, it doesn't
    // wait for the queue, which may be full. Throws nothing; failures are reported on std::cerr.
    ~Manager() override;

    // The manager of this process, built on first use. The end of the process does what the
    // destructor does, but keeps the manager and its loggers in memory. A sink that calls exit ends
    // the process without any of that.
    static Manager& instance();

    // --- loggers ---

    // Returns the logger `name`, never null. If there is none, makes one at the default level, or
    // at the level that the configurator has for it. Names are compared byte by byte. The manager
    // owns the logger, which is valid until `shutdown`.
    Logger* getLogger(const std::string& name);

    // All loggers, by name. Valid until `shutdown`.
    std::vector<Logger*> listLoggers() const;

    // A logger that has a level of its own.
    struct LoggerLevel {
        std::string name;
        Level level;
    };

    // The levels of all loggers that have one of their own, by name, as of one moment. They are
    // complete while `shutdown` waits for the sinks. Throws RuntimeError, "The log has been shut
    // down.", once `shutdown` has dropped the loggers, until `start` or another configurator.
    std::vector<LoggerLevel> ownLevels() const;

    // Sets the level of all loggers that follow the default level, now and later; INFO at first.
    // Throws UsageError, "log manager: bad default level value", for DEFAULT and above, and changes
    // nothing then. Deliberately doesn't check for negative values.
    void setDefaultLevel(Level level);

    // Gives the logger `name` a level of its own or, with DEFAULT, makes it follow the default
    // level. Does nothing if there is no such logger: the level isn't remembered.
    void setLoggerLevel(const std::string& name, Level level);

    // --- messages and sinks ---

    // For loggers: returns a message to be used again, with old contents, or null. Throws nothing.
    std::unique_ptr<Message> takeSpent() { return spent.take(); }

    // Queues `message` and takes ownership of it. Blocks, without a time-out, while the queue is
    // full. Throws UsageError, "log manager: received null message", and std::bad_alloc.
    void submit(Message* message);

    // Takes ownership of `sink`, which sees the messages that are taken off the queue from now on.
    // A sink that throws a vek::Exception is reported on std::cerr, removed and destroyed, after
    // the other sinks have seen the message. Any other exception ends the worker, with the report
    // of vek::thread::Thread: from then on nothing leaves the queue, statements block once it is
    // full, and `shutdown` then blocks for good; the end of the process doesn't. Throws UsageError
    // for null.
    void addSink(Sink* sink);

    // Does as `addSink` and returns true, unless `shutdown` has destroyed the sinks and neither
    // `start` nor another configurator has followed: then it returns false, and the caller keeps
    // `sink`.
    bool addSinkUnlessShutDown(Sink* sink);

    // Removes `sink`, once it isn't in use, and returns its ownership to the caller. Does nothing
    // if the manager doesn't have it, or no longer has it.
    void removeSink(Sink* sink);

    // Calls `visit(sinks, pid)` with a const std::list<Sink*>& in order of adding and the process
    // id, with the manager's mutex held, and returns its result. For listing the sinks: `visit`
    // must call nothing of the manager.
    template <class Visit>
    auto withSinks(Visit visit) const {
        const StdGuard guard(mutex);
        return visit(sinks, pid);
    }

    // --- life ---

    // Starts the worker. Throws UsageError, "The thread has already been started.", and
    // std::system_error if the system gives no thread.
    void start();

    // Blocks until the sinks have seen all messages that were queued before this call, and ends the
    // worker; then destroys the sinks and drops the loggers. Returns at once, and destroys nothing,
    // if the worker isn't running.
    //
    // Don't use a Logger from here on. A thread that logs nevertheless does no harm, though: the
    // loggers are muted once the end of the queue is marked, so that new statements aren't written,
    // and stay in memory for statements that have passed already. Messages behind the mark are
    // destroyed unseen, so that no thread blocks behind them. Levels stay as they were set until
    // the loggers are dropped. A later `getLogger` of the same name reuses the memory.
    void shutdown();

    // Sets the source of the levels of new loggers; null for none. Not owned. `shutdown` forgets
    // it.
    void setConfigurator(LevelSource* newConfigurator);

    // Updates the process id that new messages carry. For the child after a fork, on systems that
    // have one.
    void onFork();

  private:
    // By name.
    using Loggers = std::map<std::string, std::unique_ptr<Logger>>;

    // What `shutdown` has done to the loggers and sinks: nothing; muted the loggers, while the
    // queue drains; dropped both.
    enum class Phase { open, draining, closed };

    void dispatch(const Message& message);
    void finishShutdown() VEK_REQUIRES(lifecycle);
    void muteLoggers();
    void dropAll();
    void destroySinks() VEK_REQUIRES(mutex);
    void end();

    Level defaultLevel VEK_GUARDED_BY(mutex) = INFO;
    SpentMessages spent;
    BoundedQueue<std::unique_ptr<Message>> queue{queueCapacity};
    Loggers loggers VEK_GUARDED_BY(mutex);
    // Owned.
    std::list<Sink*> sinks VEK_GUARDED_BY(mutex);
    vek::thread::Thread thread;
    // Held during each dispatch. Locked before a sink's own locks and before the configurator's,
    // and never together with the queue's.
    mutable StdMutex mutex;
    std::uint32_t pid VEK_GUARDED_BY(mutex);
    LevelSource* configurator VEK_GUARDED_BY(mutex) = nullptr;
    // From before a `shutdown`, muted. Kept for threads that still use them, and for `getLogger`.
    Loggers formerLoggers VEK_GUARDED_BY(mutex);
    Phase phase VEK_GUARDED_BY(mutex) = Phase::open;
    // An exception has ended the worker, which hasn't been joined yet.
    bool workerFailed VEK_GUARDED_BY(mutex) = false;
    // The destructor runs, or the process ends.
    bool ending VEK_GUARDED_BY(mutex) = false;
    // Guards the starting and joining of the worker. Locked before all others.
    StdMutex lifecycle;
};

}  // namespace vek::log
