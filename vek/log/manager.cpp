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
        // Deliberately never deleted: when the process ends, other threads may be in the midst of a
        // statement.
        Manager& manager = *new Manager;
        ~Instance() { manager.end(); }
    };
    static const Instance instance;
    return instance.manager;
}

// Does what the destructor does, short of tearing down what other threads may still use.
void Manager::end() {
    if (thread.getId() == thread::Thread::currentId()) {
        return;
    }
    try {
        shutdown();
        {
            const std::lock_guard<std::mutex> guard(mutex);
            destroySinks();
        }
        queue.clear();
    } catch (const std::exception& error) {
        std::cerr << "Error shutting down the log manager: " << error.what() << "\n";
    }
}

Logger* Manager::getLogger(const std::string& name) {
    const std::lock_guard<std::mutex> guard(mutex);
    const auto found = loggersByName.find(name);
    if (found != loggersByName.end()) {
        return found->second;
    }
    auto made = std::make_unique<Logger>(*this, name, defaultLevel, pid);
    if (configurator != nullptr) {
        configurator->applyConfiguredLevel(*made);
    }
    const auto entry = loggersByName.emplace(name, made.get()).first;
    try {
        loggers.insert(std::move(made));
    } catch (...) {
        loggersByName.erase(entry);
        throw;
    }
    return entry->second;
}

std::vector<Logger*> Manager::listLoggers() const {
    const std::lock_guard<std::mutex> guard(mutex);
    std::vector<Logger*> result;
    result.reserve(loggersByName.size());
    for (const auto& [name, logger] : loggersByName) {
        result.push_back(logger);
    }
    return result;
}

void Manager::setDefaultLevel(Level level) {
    if (level >= DEFAULT) {
        throw UsageError("log manager: bad default level value");
    }
    const std::lock_guard<std::mutex> guard(mutex);
    defaultLevel = level;
    for (const auto& logger : loggers) {
        if (logger->usesDefault()) {
            logger->setLevel(level, true);
        }
    }
}

void Manager::setLoggerLevel(const std::string& name, Level level) {
    const std::lock_guard<std::mutex> guard(mutex);
    const auto found = loggersByName.find(name);
    if (found == loggersByName.end()) {
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
    const std::lock_guard<std::mutex> guard(mutex);
    sinks.push_back(sink);
}

void Manager::removeSink(Sink* sink) {
    const std::lock_guard<std::mutex> guard(mutex);
    for (auto entry = sinks.begin(); entry != sinks.end(); ++entry) {
        if (*entry == sink) {
            sinks.erase(entry);
            return;
        }
    }
}

void Manager::start() {
    const std::lock_guard<std::mutex> guard(lifecycle);
    thread.start();
}

void Manager::run() {
    // Null is the stop mark.
    while (const std::unique_ptr<Message> message = queue.pop()) {
        dispatch(*message);
    }
}

void Manager::dispatch(const Message& message) {
    const std::lock_guard<std::mutex> guard(mutex);
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
    const std::lock_guard<std::mutex> guard(lifecycle);
    if (thread.getId() == 0) {
        return;
    }
    queue.push(nullptr);
    {
        // What other threads log from now on could only end up behind the stop mark, and fill the
        // queue until they wait there for good.
        const std::lock_guard<std::mutex> mutexGuard(mutex);
        turnLoggersOff();
    }
    thread.join();
    dropAll();
    // Those who filled the queue ahead of that wait behind the stop mark, for nobody.
    queue.clear();
}

// What `shutdown` does once the worker is gone.
void Manager::dropAll() {
    const std::lock_guard<std::mutex> guard(mutex);
    turnLoggersOff();
    oldLoggers.merge(loggers);
    loggersByName.clear();
    destroySinks();
    configurator = nullptr;
}

void Manager::turnLoggersOff() {
    for (const auto& logger : loggers) {
        logger->setLevel(OFF, false);
    }
}

void Manager::destroySinks() {
    while (!sinks.empty()) {
        Sink* const sink = sinks.front();
        sinks.remove(sink);
        delete sink;
    }
}

void Manager::setConfigurator(LevelSource* newConfigurator) {
    const std::lock_guard<std::mutex> guard(mutex);
    configurator = newConfigurator;
}

void Manager::onFork() {
    const std::lock_guard<std::mutex> guard(mutex);
    pid = GetCurrentProcessId();
    for (const auto& logger : loggers) {
        logger->setPid(pid);
    }
}

}  // namespace vek::log
