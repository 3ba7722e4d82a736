#include "tools/log_application/forward/sender.h"

#include <algorithm>
#include <utility>

#include "tools/log_application/program/waiting.h"
#include "tools/log_application/show/escape.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/thread/scope_guard.h"
#include "vek/time/clock.h"

namespace log_application {

namespace {

using vek::thread::ScopeGuard;

// The most that is written at once, in bytes.
constexpr std::size_t chunkSize = 65'536;

// How often the connection is looked at while there is nothing to send, in milliseconds.
constexpr std::int64_t idleMs = 200;

// A connection that breaks earlier than this, in milliseconds, isn't reported as being back.
constexpr std::int64_t soundAfterMs = 1000;

vek::time::MonotonicClock in(std::int64_t milliseconds) {
    vek::time::MonotonicClock deadline(true);
    deadline += milliseconds;
    return deadline;
}

// The collector has closed its side.
class ClosedByCollector : public vek::ExceptionOf<ClosedByCollector> {
  public:
    ClosedByCollector() : ExceptionOf("it has closed the connection") {}
};

// Whether the collector's host was there to end the connection: it had acknowledged what was
// written earlier.
bool isEndedByCollector(const std::exception& error) {
    const auto* const failure = dynamic_cast<const vek::NetError*>(&error);
    return failure == nullptr || failure->code() == WSAECONNRESET;
}

}  // namespace

Sender::Sender(CollectorAddress target, std::size_t mostFrames, SendBuffer::MakeLossFrame lossFrame)
    : collector(std::move(target)),
      buffer(mostFrames,
             [this, lossFrame = std::move(lossFrame)](std::uint64_t count,
                                                      std::uint32_t number) VEK_NO_LOCK_ANALYSIS {
                 // The buffer is used under the lock.
                 addNotice(std::to_string(count) +
                           " messages were lost, as the collector was away or too slow; --buffer "
                           "keeps more");
                 return lossFrame(count, number);
             }),
      thread("sender", *this) {}

Sender::~Sender() {
    if (thread.getId() != 0) {
        finish(0);
    }
}

void Sender::add(const SendBuffer::MakeFrame& makeFrame) {
    const ScopeGuard guard(condition);
    buffer.add(makeFrame);
    condition.wakeOne();
}

void Sender::addLost(std::uint64_t count) {
    const ScopeGuard guard(condition);
    buffer.addLost(count);
    condition.wakeOne();
}

void Sender::addNotice(std::string text) {
    notices.push_back(std::move(text));
}

std::vector<std::string> Sender::takeNotices() {
    const ScopeGuard guard(condition);
    return std::exchange(notices, {});
}

std::uint64_t Sender::finish(std::int64_t limitMs) {
    {
        const ScopeGuard guard(condition);
        finishAt = monotonicMs() + limitMs;
        condition.wakeAll();
    }
    thread.join();
    const ScopeGuard guard(condition);
    return buffer.waiting() + buffer.unreported();
}

bool Sender::isFinishing() {
    const ScopeGuard guard(condition);
    return finishAt.has_value();
}

bool Sender::isOver() {
    const ScopeGuard guard(condition);
    const bool isDone = isAllTaken || (!socket && !buffer.hasWork());
    return finishAt && (isDone || monotonicMs() >= *finishAt);
}

void Sender::run() {
    std::int64_t pauseMs = firstPauseMs;
    while (!isOver()) {
        const std::int64_t begin = monotonicMs();
        try {
            connect();
            exchange(begin);
        } catch (const std::exception& error) {
            if (!socket && isOver()) {
                // The attempt was given up.
                return;
            }
            const std::int64_t now = monotonicMs();
            pauseMs = now - begin > longestPauseMs ? firstPauseMs : pauseMs;
            onBreak(error, now);
            pause(pauseMs);
            pauseMs = std::min(2 * pauseMs, longestPauseMs);
        }
    }
}

void Sender::connect() {
    const auto isEnding = [this] { return isOver(); };
    const std::vector<RawAddress> addresses = resolve(collector, connectLimitMs, isEnding);
    for (std::size_t i = 0; !socket; ++i) {
        try {
            socket = std::make_unique<CollectorSocket>(addresses[i], connectLimitMs, isEnding);
        } catch (const vek::NetError&) {
            if (i + 1 == addresses.size()) {
                throw;
            }
        }
    }
    if (!isSaidAway) {
        const ScopeGuard guard(condition);
        addNotice("sending to " + collector.text());
    }
}

void Sender::exchange(std::int64_t begin) {
    for (;;) {
        const std::string bytes = waitForWork();
        if (isOver()) {
            return;
        }
        if (bytes.empty() && isFinishing()) {
            waitForCollectorsEnd();
            return;
        }
        const CollectorSocket::Ready ready =
            socket->waitFor(!bytes.empty(), bytes.empty() ? 0 : idleMs);
        if (ready.toRead && !socket->discard()) {
            throw ClosedByCollector();
        }
        recordWritten(ready.toWrite ? socket->writeSome(bytes) : 0, bytes.size());
        if (isSaidAway && monotonicMs() - begin >= soundAfterMs) {
            isSaidAway = false;
            const ScopeGuard guard(condition);
            addNotice("sending to " + collector.text() + " again");
        }
    }
}

std::string Sender::waitForWork() {
    const ScopeGuard guard(condition);
    if (!buffer.hasWork() && !finishAt) {
        condition.waitUntil(in(idleMs));
    }
    return buffer.next(chunkSize);
}

void Sender::recordWritten(std::size_t size, std::size_t wanted) {
    const std::int64_t now = monotonicMs();
    const ScopeGuard guard(condition);
    buffer.written(size, now);
    if (size < wanted) {
        buffer.holdUp(now);
    } else {
        buffer.settle(now);
    }
}

void Sender::waitForCollectorsEnd() {
    constexpr std::int64_t pollMs = 50;
    socket->endWriting();
    while (!isAllTaken && !isOver()) {
        isAllTaken = socket->waitFor(false, pollMs).toRead && !socket->discard();
    }
}

void Sender::onBreak(const std::exception& error, std::int64_t now) {
    const std::string what =
        socket ? "the connection to the collector " + collector.text() + " was lost: "
               : "the collector " + collector.text() + " can't be reached: ";
    socket.reset();
    const ScopeGuard guard(condition);
    buffer.rewind(now, isEndedByCollector(error) ? doubtfulMs : SendBuffer::keptMs);
    if (!std::exchange(isSaidAway, true)) {
        addNotice(what + escapeControls(error.what()) + "; messages are kept until it is back");
    }
}

void Sender::pause(std::int64_t milliseconds) {
    constexpr std::int64_t finishingPauseMs = 100;
    const ScopeGuard guard(condition);
    const bool isFinishingNow = finishAt.has_value();
    const vek::time::MonotonicClock deadline = in(isFinishingNow ? finishingPauseMs : milliseconds);
    while (finishAt.has_value() == isFinishingNow && condition.waitUntil(deadline)) {
    }
}

}  // namespace log_application
