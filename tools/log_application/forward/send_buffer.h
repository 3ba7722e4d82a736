// log_application::SendBuffer: the frames on their way to a collector.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <string>

namespace log_application {

// Frames wait here until they are written to the connection, and are kept for a while longer: a
// collector acknowledges nothing, so that what it hadn't read when the connection broke can only be
// written again. Each frame has a number of its own, by which the collector recognises it then.
//
// Not thread-safe. Times are in milliseconds, on a clock that never goes back.
class SendBuffer {
  public:
    // The limit of all frames, in bytes; the last one may exceed it.
    static constexpr std::size_t mostBytes = 128 << 20;

    // How long a written frame is kept.
    static constexpr std::int64_t keptMs = 60'000;

    // Returns the number of the frame that comes `count` frames behind the one with `number`, 0
    // for none: numbers run from 1 to 2147483647, and from 1 again.
    static std::uint32_t numberBehind(std::uint32_t number, std::uint64_t count = 1);

    // Returns the frame with this number.
    using MakeFrame = std::function<std::string(std::uint32_t number)>;
    // Returns the frame that reports the loss of `count` frames.
    using MakeLossFrame = std::function<std::string(std::uint64_t count, std::uint32_t number)>;

    // Holds at most `mostFrames` frames; those that report a loss don't count.
    SendBuffer(std::size_t mostFrames, MakeLossFrame lossFrame, std::size_t byteLimit = mostBytes)
        : capacity(mostFrames), byteCapacity(byteLimit), makeLossFrame(std::move(lossFrame)) {}

    // Adds a frame. If there is no room, the oldest written frames make room; if there is none of
    // these, the new frame is lost. Its number is used up then: the collector sees the gap. What
    // was lost is reported by a frame ahead of the next one that is added.
    void add(const MakeFrame& makeFrame);

    // Counts frames that were lost elsewhere. Their numbers are used up too.
    void addLost(std::uint64_t count);

    // Returns the bytes to be written next: at most `size`, and none if all was written. A loss
    // that no frame followed is reported then.
    std::string next(std::size_t size);

    // The first `size` bytes of `next` were written.
    void written(std::size_t size, std::int64_t now);

    // Frames that were written longer ago than `keptMs` are released, except for those that were
    // written before a `holdUp` no longer ago than that.
    void settle(std::int64_t now);

    // The connection takes no more for the moment, so the collector doesn't read.
    void holdUp(std::int64_t now) { heldUpAt = now; }

    // The connection has broken. Frames that were written partly, or no longer than `doubtfulMs`
    // ago, are to be written again; older ones are released.
    void rewind(std::int64_t now, std::int64_t doubtfulMs);

    // The number of frames that aren't written whole, and of frames lost and not reported yet.
    std::size_t waiting() const { return frames.size() - nextFrame; }
    std::uint64_t unreported() const { return lost; }

    bool hasWork() const { return waiting() != 0 || lost != 0; }

  private:
    struct Frame {
        std::string bytes;
        std::int64_t writtenAt = 0;
        bool isReport = false;
    };

    std::uint32_t nextNumber() { return number = numberBehind(number); }
    bool isFull() const { return frames.size() - reports >= capacity || bytes >= byteCapacity; }
    bool isOld(const Frame& frame, std::int64_t now, std::int64_t ageMs) const;
    void push(Frame frame);
    void release();
    void reportLoss();

    const std::size_t capacity;
    const std::size_t byteCapacity;
    const MakeLossFrame makeLossFrame;
    std::deque<Frame> frames;
    std::size_t nextFrame = 0;    // the first that isn't written whole
    std::size_t writtenPart = 0;  // how much of it is written, in bytes
    std::size_t reports = 0;      // how many frames report a loss
    std::size_t bytes = 0;
    std::uint64_t lost = 0;
    std::uint32_t number = 0;
    std::int64_t heldUpAt = std::numeric_limits<std::int64_t>::min() / 2;
};

}  // namespace log_application
