#include "tools/log_application/follow/follower.h"

#include <utility>

#include "tools/log_application/finding/host_search.h"
#include "tools/log_application/finding/process_finder.h"
#include "tools/log_application/show/escape.h"

namespace log_application {

namespace {

// A process that ends closes its connections a moment before its port.
constexpr std::int64_t endingTimeMs = 1500;
constexpr std::int64_t endingPollMs = 100;

}  // namespace

Follower::Follower(const FollowerContext& followerContext, std::size_t sourceNumber,
                   Selection wanted, std::optional<Process> found)
    : context(followerContext),
      source(sourceNumber),
      selection(std::move(wanted)),
      thread("follower", *this) {
    if (found) {
        setProcess(std::move(*found));
    }
}

Follower::~Follower() {
    if (thread.getId() != 0) {
        thread.join();
    }
}

void Follower::setProcess(Process now) {
    process = now;
    const vek::StdGuard guard(shownLock);
    shownProcess = std::move(now);
}

std::string Follower::label() const {
    const vek::StdGuard guard(shownLock);
    return shownProcess ? shownProcess->label() : "";
}

std::optional<Process> Follower::lastProcess() const {
    const vek::StdGuard guard(shownLock);
    return shownProcess;
}

void Follower::run() {
    try {
        for (;;) {
            if (process) {
                followOnce();
            }
            if (!context.reconnect || context.stop.isRequested()) {
                break;
            }
            while (!context.stop.waitFor(retryMs) && !findAgain()) {
            }
        }
    } catch (const std::exception& error) {
        context.queue.addNotice(source, escapeControls(error.what()));
    }
    context.queue.addEnd(source);
}

void Follower::followOnce() {
    std::optional<Endpoint> claimed;
    try {
        Client client(*process, &context.stop);
        if (!context.followed.claim(client.endpoint())) {
            return;
        }
        claimed = client.endpoint();
        client.startMessages();
        if (wasConnected || context.reconnect) {
            context.queue.addNotice(source, "following " + process->label());
        }
        wasConnected = true;
        readMessages(client);
    } catch (const Failure& failure) {
        if (!context.stop.isRequested() && !(context.reconnect && wasConnected)) {
            context.queue.addNotice(source, failure.description() + "\n  " + failure.whatNext());
        }
    }
    if (claimed) {
        context.followed.release(*claimed);
    }
}

void Follower::readMessages(Client& client) {
    std::string reason;
    try {
        std::uint32_t length = 0;
        while (const char* const telegram = client.nextMessage(length)) {
            context.queue.addMessage(source, std::string(telegram, length));
        }
        reason = client.endedInside() ? "has ended in the middle of a message" : "";
    } catch (const vek::RuntimeError& error) {
        reason = "has sent a frame that is too large: " + escapeControls(error.what());
    } catch (const vek::Exception& error) {
        reason = std::string("was cut off: ") + escapeControls(error.what());
    }
    if (!context.stop.isRequested()) {
        tellEnd(client, reason);
    }
}

void Follower::tellEnd(const Client& client, const std::string& reason) {
    const std::string label = process->label();
    if (!reason.empty()) {
        context.queue.addNotice(source, "the connection to " + label + " " + reason);
    }
    if (hasGone(client.endpoint())) {
        context.queue.addNotice(source, label + " has ended");
    } else if (reason.empty()) {
        context.queue.addNotice(source, label + " has closed the connection, but is still there; " +
                                            context.afterClosing);
    }
}

bool Follower::answers(const Endpoint& endpoint) const {
    try {
        return Client({"", 0, {endpoint}}, &context.stop).isAnswering();
    } catch (const Failure&) {
        return false;
    }
}

bool Follower::hasGone(const Endpoint& endpoint) const {
    for (std::int64_t waited = 0; waited < endingTimeMs; waited += endingPollMs) {
        if (!answers(endpoint)) {
            return true;
        }
        if (context.stop.waitFor(endingPollMs)) {
            return false;
        }
    }
    return false;
}

bool Follower::findAgain() {
    if (process && !process->endpoints.empty() && answers(process->endpoints.front())) {
        return true;
    }
    if (!selection.needsDiscovery()) {
        return false;
    }
    try {
        for (Process& candidate : searchProcesses(selection, context.stop).processes) {
            if (candidate.endpoints.empty()) {
                continue;
            }
            const Endpoint& endpoint = candidate.endpoints.front();
            // Claimed for good by followOnce.
            if (isSelected(selection, candidate) && context.followed.claim(endpoint)) {
                context.followed.release(endpoint);
                setProcess(std::move(candidate));
                return true;
            }
        }
    } catch (const vek::Exception&) {
        // The network may come back.
    }
    return false;
}

}  // namespace log_application
