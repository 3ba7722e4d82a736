#include "tools/log_application/web/watched_processes.h"

#include <algorithm>
#include <utility>

#include "tools/log_application/finding/host_search.h"
#include "tools/log_application/finding/process_finder.h"
#include "tools/log_application/program/failure.h"
#include "tools/log_application/show/ansi_text.h"
#include "tools/log_application/show/json_object.h"

namespace log_application {

namespace {

// What the page calls a process.
std::string shownNameOf(const Process& process) {
    return utf8Of(process.pid == 0 ? process.endpoints.front().text()
                                   : escapeControls(process.shownName()));
}

bool isSame(const Process& one, const Process& other) {
    const bool shareEndpoint =
        std::ranges::find_first_of(one.endpoints, other.endpoints) != one.endpoints.end();
    return one.pid == other.pid &&
           (shareEndpoint || one.endpoints.empty() || other.endpoints.empty());
}

void addTo(std::string& list, const std::string& json) {
    list += (list.empty() ? "" : ",") + json;
}

std::string jsonString(const std::string& text) {
    std::string json;
    appendJsonString(json, utf8Of(text));
    return json;
}

}  // namespace

WatchedProcesses::WatchedProcesses(const Selection& selection, StopSignal& stopSignal,
                                   LineQueue& lineQueue)
    : wanted(selection), stop(stopSignal), queue(lineQueue), thread("watch", *this) {
    levels = std::make_unique<TimedLevels>(
        stop, [this](std::size_t id, const std::string& failure) { noteLevels(id, failure); });
    thread.start();
}

WatchedProcesses::~WatchedProcesses() {
    thread.join();
    levels.reset();
}

void WatchedProcesses::run() {
    do {
        search();
    } while (!stop.waitFor(searchEveryMs));
}

void WatchedProcesses::search() {
    std::string failure;
    const std::vector<Process> present = found(failure);
    if (stop.isRequested()) {
        return;
    }
    forgetGone(present);
    for (const Process& process : present) {
        update(process);
    }
    const std::lock_guard guard(lock);
    if (!searched || problem != failure) {
        searched = true;
        problem = failure;
        ++changeCount;
    }
}

std::vector<Process> WatchedProcesses::found(std::string& failure) const {
    std::vector<Process> present;
    for (const Endpoint& endpoint : wanted.connect) {
        present.push_back({"", 0, {endpoint}});
    }
    if (!wanted.needsDiscovery()) {
        return present;
    }
    try {
        SearchResult result = searchProcesses(wanted, stop);
        for (Process& process : result.processes) {
            if (isSelected(wanted, process)) {
                present.push_back(std::move(process));
            }
        }
        if (result.processes.size() == 1 && !result.complete && wanted.hosts.empty()) {
            failure = onlyOneVisible;
        }
    } catch (const vek::Exception& error) {
        failure = error.what();
    }
    return present;
}

// Removes processes that were never followed and aren't found any more. Those that are followed are
// told by their follower that they have ended.
void WatchedProcesses::forgetGone(const std::vector<Process>& present) {
    const std::lock_guard guard(lock);
    std::size_t ended = 0;
    for (auto next = processes.rbegin(); next != processes.rend();) {
        const Watched& watched = next->second;
        ended += watched.state == State::ended ? 1 : 0;
        const bool isPresent = std::ranges::any_of(
            present, [&](const Process& process) { return isSame(process, watched.process); });
        if ((watched.state == State::silent && !isPresent) ||
            (watched.state == State::ended && ended > mostEnded)) {
            next = std::make_reverse_iterator(processes.erase(std::next(next).base()));
            ++changeCount;
        } else {
            ++next;
        }
    }
}

void WatchedProcesses::update(const Process& process) {
    std::size_t id = 0;
    {
        const std::lock_guard guard(lock);
        const auto known = std::ranges::find_if(processes, [&process](const auto& entry) {
            return entry.second.state != State::ended && isSame(entry.second.process, process);
        });
        if (known != processes.end()) {
            id = known->first;
            if (known->second.state == State::silent) {
                // It may have got a port meanwhile.
                known->second.process = process;
            }
        } else {
            id = nextId++;
            processes[id].process = process;
            names[id] = shownNameOf(process);
            ++changeCount;
        }
    }
    readLevels(id);
    follow(id);
}

void WatchedProcesses::readLevels(std::size_t id) {
    Process process;
    {
        const std::lock_guard guard(lock);
        const auto known = processes.find(id);
        if (known == processes.end() || known->second.state == State::ended) {
            return;
        }
        process = known->second.process;
    }
    std::string reason;
    std::string defaultLevel;
    std::map<std::string, std::string> loggers;
    try {
        Client client(process, &stop);
        defaultLevel = client.defaultLevel();
        loggers = client.loggers();
    } catch (const Failure& failure) {
        reason = failure.description() + " " + failure.whatNext();
    }
    const std::lock_guard guard(lock);
    const auto known = processes.find(id);
    if (known == processes.end()) {
        return;
    }
    Watched& watched = known->second;
    if (reason != watched.reason) {
        watched.reason = reason;
        ++changeCount;
    }
    if (reason.empty() && (defaultLevel != watched.defaultLevel || loggers != watched.loggers)) {
        watched.defaultLevel = defaultLevel;
        watched.loggers = loggers;
        ++changeCount;
    }
}

// Follows the process unless it is followed already or doesn't answer.
void WatchedProcesses::follow(std::size_t id) {
    std::string name;
    bool isNew = false;
    {
        const std::lock_guard guard(lock);
        Watched& watched = processes.at(id);
        if (watched.state != State::silent || !watched.reason.empty()) {
            return;
        }
        name = names[id];
        isNew = searched;
        const FollowerContext context = {queue, stop, followed, false, "it is followed again"};
        Selection same;
        watched.follower = std::make_unique<Follower>(context, id, same, watched.process);
        watched.state = State::live;
        watched.follower->start();
        ++changeCount;
    }
    removeEnded(name);
    if (isNew) {
        queue.addNotice(id, "following " + name);
    }
}

// Removes the former processes of this name: the new one takes their place.
void WatchedProcesses::removeEnded(const std::string& name) {
    const std::lock_guard guard(lock);
    std::erase_if(processes, [&](const auto& entry) {
        return entry.second.state == State::ended && names[entry.first] == name;
    });
}

void WatchedProcesses::noteEnd(std::size_t id) {
    const std::lock_guard guard(lock);
    const auto known = processes.find(id);
    if (known != processes.end()) {
        known->second.state = State::ended;
        known->second.reason.clear();
        ++changeCount;
    }
}

std::optional<Process> WatchedProcesses::liveProcess(std::size_t id) const {
    const std::lock_guard guard(lock);
    const auto known = processes.find(id);
    return known != processes.end() && known->second.state == State::live
               ? std::optional(known->second.process)
               : std::nullopt;
}

void WatchedProcesses::setLevel(std::size_t id, const TimedLevels::Logger& logger,
                                vek::log::Level level, std::optional<std::int64_t> forMs) {
    const std::optional<Process> process = liveProcess(id);
    if (!process) {
        throw Failure(exitNotDone, "The process has ended.", "Levels go with their process.");
    }
    levels->set(id, *process, logger, level, forMs);
    noteLevels(id, "");
}

void WatchedProcesses::putBack(std::size_t id, const TimedLevels::Logger& logger) {
    levels->putBack(id, logger);
}

void WatchedProcesses::noteLevels(std::size_t id, const std::string& failure) {
    if (!failure.empty() && liveProcess(id)) {
        queue.addNotice(id, "The earlier level couldn't be put back. " + failure);
    }
    readLevels(id);
    ++changeCount;
}

std::string WatchedProcesses::nameOf(std::size_t id) const {
    const std::lock_guard guard(lock);
    const auto known = names.find(id);
    return known == names.end() ? "" : known->second;
}

std::string WatchedProcesses::jsonOf(std::size_t id, const Watched& watched) const {
    static constexpr const char* stateNames[] = {"live", "silent", "ended"};
    JsonObject object;
    object.add("id", static_cast<std::int64_t>(id));
    object.add("name", std::string_view(names.at(id)));
    object.add("pid", std::int64_t{watched.process.pid});
    object.add("address", watched.process.endpoints.empty()
                              ? std::nullopt
                              : std::optional(watched.process.endpoints.front().text()));
    object.add("state", std::string_view(stateNames[static_cast<int>(watched.state)]));
    object.add("reason", watched.reason.empty() ? std::nullopt : std::optional(watched.reason));
    object.add("default", std::string_view(watched.defaultLevel));
    std::string loggers;
    for (const auto& [name, level] : watched.loggers) {
        addTo(loggers, "[" + jsonString(name) + "," + jsonString(level) + "]");
    }
    object.addJson("loggers", "[" + loggers + "]");
    std::string timed;
    for (const TimedLevels::Timed& change : levels->of(id)) {
        addTo(timed, "[" + (change.logger ? jsonString(*change.logger) : "null") + "," +
                         std::to_string(change.leftMs) + "]");
    }
    object.addJson("timed", "[" + timed + "]");
    return object.text();
}

std::string WatchedProcesses::json() const {
    const std::lock_guard guard(lock);
    std::string list;
    for (const auto& [id, watched] : processes) {
        addTo(list, jsonOf(id, watched));
    }
    JsonObject object;
    object.add("searched", searched);
    object.add("problem", problem.empty() ? std::nullopt : std::optional(problem));
    object.addJson("processes", "[" + list + "]");
    return object.text();
}

}  // namespace log_application
