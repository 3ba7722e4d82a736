#include "tools/log_application/forward/send_buffer.h"

#include <algorithm>
#include <utility>

namespace log_application {

std::uint32_t SendBuffer::numberBehind(std::uint32_t number, std::uint64_t count) {
    constexpr std::uint64_t highest = 2'147'483'647;
    return count == 0 ? number
                      : static_cast<std::uint32_t>((number + (count - 1) % highest) % highest + 1);
}

// Whether `frame` was written at least `ageMs` ago, and the collector has read since then.
bool SendBuffer::isOld(const Frame& frame, std::int64_t now, std::int64_t ageMs) const {
    return now - std::max(frame.writtenAt, heldUpAt) >= ageMs;
}

void SendBuffer::push(Frame frame) {
    bytes += frame.bytes.size();
    reports += frame.isReport ? 1 : 0;
    frames.push_back(std::move(frame));
}

// Releases the oldest frame, which is written.
void SendBuffer::release() {
    bytes -= frames.front().bytes.size();
    reports -= frames.front().isReport ? 1 : 0;
    frames.pop_front();
    --nextFrame;
}

void SendBuffer::reportLoss() {
    if (lost != 0) {
        push({makeLossFrame(std::exchange(lost, 0), nextNumber()), 0, true});
    }
}

void SendBuffer::add(const MakeFrame& makeFrame) {
    while (isFull() && nextFrame != 0) {
        release();
    }
    if (isFull()) {
        ++lost;
        nextNumber();
        return;
    }
    reportLoss();
    push({makeFrame(nextNumber()), 0, false});
}

void SendBuffer::addLost(std::uint64_t count) {
    lost += count;
    number = numberBehind(number, count);
}

std::string SendBuffer::next(std::size_t size) {
    if (waiting() == 0) {
        reportLoss();
    }
    std::string chunk;
    std::size_t skipped = writtenPart;
    for (std::size_t i = nextFrame; i < frames.size() && chunk.size() < size; ++i) {
        chunk.append(frames[i].bytes, skipped, size - chunk.size());
        skipped = 0;
    }
    return chunk;
}

void SendBuffer::written(std::size_t size, std::int64_t now) {
    while (size != 0) {
        Frame& frame = frames[nextFrame];
        const std::size_t left = frame.bytes.size() - writtenPart;
        if (size < left) {
            writtenPart += size;
            return;
        }
        size -= left;
        frame.writtenAt = now;
        writtenPart = 0;
        ++nextFrame;
    }
}

void SendBuffer::settle(std::int64_t now) {
    while (nextFrame != 0 && isOld(frames.front(), now, keptMs)) {
        release();
    }
}

void SendBuffer::rewind(std::int64_t now, std::int64_t doubtfulMs) {
    while (nextFrame != 0 && isOld(frames.front(), now, doubtfulMs)) {
        release();
    }
    nextFrame = 0;
    writtenPart = 0;
}

}  // namespace log_application
