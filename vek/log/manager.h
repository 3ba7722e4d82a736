// vek::log::Manager: the one object through which all log output of a process passes.
//
// It owns the loggers, a bounded queue of messages, the sinks, and a worker thread, "log-manager",
// which takes each message off the queue and offers it to every sink in turn. A slow sink holds up
// the output and not the statements, until the queue is full: then the statements wait. Nothing is
// dropped on the way.
//
// What state it is in, and what works there:
//
//     built      from the first `instance`. Loggers, sinks and levels can be managed; messages
//                wait in the queue, and the one that finds it full waits for `start`.
//     running    from `start`. Messages reach the sinks.
//     stopped    from `shutdown`. The loggers and sinks are gone. New loggers may be made; their
//                messages wait in the queue, as before `start`.
//     destroyed  at the end of the process, by return from main or by exit on any thread. What is
//                queued by then reaches the sinks first, if the manager is running. Sinks and
//                messages are destroyed then, but the manager and its loggers stay where they
//                are, for the threads that the process hasn't ended yet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "vek/base/no_copy.h"
#include "vek/log/level.h"
#include "vek/log/logger.h"
#include "vek/log/message.h"
#include "vek/log/queue/bounded_queue.h"
#include "vek/log/sink.h"
#include "vek/thread/runnable.h"
#include "vek/thread/thread.h"

namespace vek::log {

class LevelSource;

// Safe from any thread, but not from within a sink: the manager's mutex is held during the output
// of a message, so that all of this but `submit` waits for that.
//
// A failure of a mutex or of a condition throws std::system_error everywhere.
class Manager : public thread::Runnable, public NoCopy {
  public:
    // The number of messages that the queue holds.
    static constexpr std::size_t queueCapacity = 10000;

    // Programs use `instance`.
    Manager();

    // The worker's body; not to be called from elsewhere.
    void run() override;

    // Shuts down, and destroys what is left: also the messages in the queue, which no sink sees any
    // more, and the sinks of a manager that was never started. Throws nothing; a failure is
    // reported on std::cerr.
    ~Manager() override;

    // The manager of this process, built on first use and ended as said above. A sink that calls
    // exit ends the process without any of that.
    static Manager& instance();

    // --- loggers ---

    // The logger `name`; if there is none yet, it is made at the default level, or at the level
    // that the configurator has for it. Never null; it belongs to the manager and is valid until
    // `shutdown`. Names are told apart byte for byte.
    Logger* getLogger(const std::string& name);

    // All loggers, by name. Valid until `shutdown`.
    std::vector<Logger*> listLoggers() const;

    // Changes the level of all loggers that follow the default level, now and in future; INFO at
    // first. Throws UsageError, "log manager: bad default level value", for DEFAULT and above, and
    // changes nothing then. Deliberately not checked for negative values.
    void setDefaultLevel(Level level);

    // Gives the logger `name` a level of its own or, with DEFAULT, has it follow the default level.
    // Does nothing if there is no such logger: no level is remembered for it.
    void setLoggerLevel(const std::string& name, Level level);

    // --- messages and sinks ---

    // Queues `message` and takes ownership of it. Waits without bound while the queue is full.
    // Throws UsageError, "log manager: received null message", and std::bad_alloc.
    void submit(Message* message);

    // Takes ownership of `sink`, which sees the messages that are taken off the queue from now on.
    // A sink that throws a vek::Exception is reported on std::cerr, removed and destroyed, after
    // the other sinks have seen the message. Any other exception ends the worker, with the report
    // of vek::thread::Thread: from then on nothing leaves the queue, statements wait once it is
    // full, and `shutdown` then waits for good. Throws UsageError for null.
    void addSink(Sink* sink);

    // Gives the ownership of `sink` back to the caller, and waits while it is in use. Nothing
    // happens if the manager doesn't have it (any more).
    void removeSink(Sink* sink);

    // Calls `visit(sinks, pid)`, a function of a const std::list<Sink*>& in order of adding and of
    // the process id, with the manager's mutex held, and gives back its result. For listing the
    // sinks: `visit` must call nothing of the manager.
    template <class Visit>
    auto withSinks(Visit visit) const {
        const std::lock_guard<std::mutex> guard(mutex);
        return visit(sinks, pid);
    }

    // --- life ---

    // Starts the worker. Throws UsageError, "The thread has already been started.", and
    // std::system_error if the system gives no thread.
    void start();

    // Waits until the sinks have seen all messages that were queued before this call, and ends the
    // worker; then destroys the sinks and drops the loggers. Returns at once, and destroys nothing,
    // if the worker isn't running.
    //
    // A Logger isn't to be used from here on. Threads that log nevertheless do no harm, though: the
    // loggers are set to OFF once the end of the queue is marked, so that new statements don't
    // pass, and live as long as the manager does, for those that have passed already. Messages that
    // stand behind the mark are destroyed unseen, so that nobody waits behind them.
    void shutdown();

    // Whose levels new loggers get; null for nobody. Not owned; forgotten at `shutdown`.
    void setConfigurator(LevelSource* newConfigurator);

    // To be called in the child after a fork, on systems that have such a thing: renews the process
    // id that new messages carry.
    void onFork();

  private:
    void dispatch(const Message& message);
    void dropAll();
    void turnLoggersOff();
    void destroySinks();
    void end();

    Level defaultLevel = INFO;
    BoundedQueue<std::unique_ptr<Message>> queue{queueCapacity};
    // Every logger in the one is in the other.
    std::set<std::unique_ptr<Logger>> loggers;
    std::map<std::string, Logger*> loggersByName;
    // Owned.
    std::list<Sink*> sinks;
    vek::thread::Thread thread;
    // Guards the level, both registries, the sinks, and the two below, and is held during each
    // dispatch. Taken ahead of a sink's own locks and of the configurator's, and never together
    // with the queue's.
    mutable std::mutex mutex;
    std::uint32_t pid;
    LevelSource* configurator = nullptr;
    // From before a `shutdown`.
    std::set<std::unique_ptr<Logger>> oldLoggers;
    // Guards the starting and joining of the worker. Taken ahead of all others.
    std::mutex lifecycle;
};

}  // namespace vek::log
