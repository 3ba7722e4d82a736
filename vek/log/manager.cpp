#include "vek/log/manager.h"

#include <iostream>
#include <utility>

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/log/level_source.h"

namespace vek::log {

Manager::Manager() : thread("log-manager", *this), pid(GetCurrentProcessId()) {}

Manager::~Manager() {
    end();
}

Manager& Manager::instance() {
    struct Instance {
        // Deliberately never destroyed: other threads may be in the middle of a statement when the
        // process ends.
        union {
            Manager manager;
        };
        Instance() : manager() {}
        ~Instance() { manager.end(); }
    };
    static Instance instance;
    return instance.manager;
}

// Does what the destructor does, but destroys nothing that other threads may still use.
void Manager::end() {
    if (thread.getId() == thread::Thread::currentId()) {
        return;
    }
    try {
        bool hasFailed = false;
        {
            const StdGuard guard(mutex);
            ending = true;
            hasFailed = workerFailed;
        }
        if (hasFailed) {
            // No worker will take a stop mark off the queue. Frees a `shutdown` that waits for room
            // for its own, which other threads may take up at once.
            queue.clear();
            while (!lifecycle.tryLock()) {
                Sleep(1);
                queue.clear();
            }
            const StdGuard guard(lifecycle, std::adopt_lock);
            if (thread.getId() != 0) {
                finishShutdown();
            }
        } else {
            shutdown();
        }
        {
            const StdGuard guard(mutex);
            destroySinks();
        }
        queue.clear();
    } catch (const std::exception& error) {
        std::cerr << "Error shutting down the log manager: " << error.what() << "\n";
    }
}

Logger* Manager::getLogger(const std::string& name) {
    const StdGuard guard(mutex);
    const auto found = loggers.find(name);
    if (found != loggers.end()) {
        return found->second.get();
    }
    auto entry = formerLoggers.find(name);
    if (entry == formerLoggers.end()) {
        entry =
            formerLoggers.emplace(name, std::make_unique<Logger>(*this, name, defaultLevel, pid))
                .first;
    } else {
        entry->second->renew(defaultLevel, pid);
    }
    Logger& logger = *entry->second;
    if (configurator != nullptr) {
        configurator->applyConfiguredLevel(logger);
    }
    logger.setMuted(phase == Phase::draining);
    loggers.insert(formerLoggers.extract(entry));
    return &logger;
}

std::vector<Logger*> Manager::listLoggers() const {
    const StdGuard guard(mutex);
    std::vector<Logger*> result;
    result.reserve(loggers.size());
    for (const auto& [name, logger] : loggers) {
        result.push_back(logger.get());
    }
    return result;
}

std::vector<Manager::LoggerLevel> Manager::ownLevels() const {
    const StdGuard guard(mutex);
    if (phase == Phase::closed) {
        throw RuntimeError("The log has been shut down.");
    }
    std::vector<LoggerLevel> levels;
    for (const auto& [name, logger] : loggers) {
        if (!logger->usesDefault()) {
            levels.push_back({name, logger->level()});
        }
    }
    return levels;
}

void Manager::setDefaultLevel(Level level) {
    if (level >= DEFAULT) {
        throw UsageError("log manager: bad default level value");
    }
    const StdGuard guard(mutex);
    defaultLevel = level;
    for (const auto& [name, logger] : loggers) {
        if (logger->usesDefault()) {
            logger->setLevel(level, true);
        }
    }
}

void Manager::setLoggerLevel(const std::string& name, Level level) {
    const StdGuard guard(mutex);
    const auto found = loggers.find(name);
    if (found == loggers.end()) {
        return;
    }
    if (level == DEFAULT) {
        found->second->setLevel(defaultLevel, true);
    } else {
        found->second->setLevel(level, false);
    }
}

void Manager::submit(Message* message) {
    if (message == nullptr) {
        throw UsageError("log manager: received null message");
    }
    queue.push(std::unique_ptr<Message>(message));
}

void Manager::addSink(Sink* sink) {
    if (sink == nullptr) {
        throw UsageError("log manager: received null sink");
    }
    const StdGuard guard(mutex);
    sinks.push_back(sink);
}

bool Manager::addSinkUnlessShutDown(Sink* sink) {
    const StdGuard guard(mutex);
    if (phase == Phase::closed) {
        return false;
    }
    sinks.push_back(sink);
    return true;
}

void Manager::removeSink(Sink* sink) {
    const StdGuard guard(mutex);
    for (auto entry = sinks.begin(); entry != sinks.end(); ++entry) {
        if (*entry == sink) {
            sinks.erase(entry);
            return;
        }
    }
}

void Manager::start() {
    const StdGuard guard(lifecycle);
    // Ahead of the worker, which holds it for as long as a sink takes to write.
    const StdGuard mutexGuard(mutex);
    thread.start();
    phase = Phase::open;
}

void Manager::run() {
    // Null is the stop mark.
    try {
        while (std::unique_ptr<Message> message = queue.pop()) {
            dispatch(*message);
            spent.keep(std::move(message));
        }
    } catch (...) {
        bool isAwaited = false;
        {
            const StdGuard guard(mutex);
            workerFailed = true;
            isAwaited = ending;
        }
        // `end` saw no failure, and may be waiting for room for its stop mark.
        while (isAwaited && queue.pop() != nullptr) {
        }
        throw;
    }
}

void Manager::dispatch(const Message& message) {
    const StdGuard guard(mutex);
    std::vector<Sink*> failed;
    for (Sink* const sink : sinks) {
        try {
            if (!sink->accepts(message.level)) {
                continue;
            }
            if (message.hasAttrs()) {
                sink->store(static_cast<const AttrMessage&>(message));
            } else {
                sink->store(message);
            }
        } catch (const Exception& error) {
            std::cerr << "Failed to store message in an sink:\n"
                      << error.what() << "\n\nRemoving this sink ...\n";
            failed.push_back(sink);
        }
    }
    for (Sink* const sink : failed) {
        // A sink that was added twice has failed twice.
        if (sinks.remove(sink) != 0) {
            delete sink;
        }
    }
}

void Manager::shutdown() {
    const StdGuard guard(lifecycle);
    if (thread.getId() == 0) {
        return;
    }
    queue.push(nullptr);
    finishShutdown();
}

// The rest of a shutdown, once the end of the queue is marked or the worker has failed.
void Manager::finishShutdown() {
    muteLoggers();
    thread.join();
    dropAll();
    // Threads that have filled the queue behind the stop mark wait for room.
    queue.clear();
}

// New messages would end up behind the stop mark and fill the queue, until their threads block for
// good.
void Manager::muteLoggers() {
    const StdGuard guard(mutex);
    phase = Phase::draining;
    for (const auto& [name, logger] : loggers) {
        logger->setMuted(true);
    }
}

// The part of a shutdown after the worker's end.
void Manager::dropAll() {
    const StdGuard guard(mutex);
    formerLoggers.merge(loggers);
    destroySinks();
    configurator = nullptr;
    workerFailed = false;
    phase = Phase::closed;
}

void Manager::destroySinks() {
    while (!sinks.empty()) {
        Sink* const sink = sinks.front();
        sinks.remove(sink);
        delete sink;
    }
}

void Manager::setConfigurator(LevelSource* newConfigurator) {
    const StdGuard guard(mutex);
    configurator = newConfigurator;
    if (configurator != nullptr && phase == Phase::closed) {
        phase = Phase::open;
    }
}

void Manager::onFork() {
    const StdGuard guard(mutex);
    pid = GetCurrentProcessId();
    for (const auto& [name, logger] : loggers) {
        logger->setPid(pid);
    }
}

}  // namespace vek::log
