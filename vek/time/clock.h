// The clocks. A clock is a time stamp: it holds the time of its last refresh, in milliseconds.
// Time-outs are computed from stamps:
//
//     MonotonicClock deadline(true);
//     deadline += 500;
//     ...
//     const std::int64_t left = deadline - MonotonicClock(true);
//
// A duration is a plain std::int64_t of milliseconds. Clock objects are not thread-safe: each user
// has its own.
//
// See clock_source.h for the sources, and for the time before start-up.
#pragma once

#include <cstdint>

namespace vek::time {

// Anything that can be refreshed from the system's time.
class OsClock {
  public:
    virtual void refresh() = 0;  // reads the system's time

  protected:
    OsClock() = default;
    OsClock(const OsClock&) = default;
    OsClock& operator=(const OsClock&) = default;
    ~OsClock() = default;
};

// The time that a clock reads.
namespace clock_kind {
inline constexpr std::uint32_t REALTIME = 0;   // since 1970-01-01 00:00 UTC
inline constexpr std::uint32_t MONOTONIC = 1;  // from an arbitrary origin, never set back
inline constexpr std::uint32_t INIT = 2;       // since start-up
}  // namespace clock_kind

// What the three clocks have in common. Not thread-safe.
class ClockBase : public OsClock {
  public:
    // Reads the system's time for the clock's kind. A clock of any other kind than those above is
    // not changed. Throws OsError if the performance counter can't be read; the value is kept then.
    void refresh() override;

    // The time of the last refresh, plus what the operators below have added; starts at 0.
    std::int64_t getValue() const { return value; }
    std::uint32_t getKind() const { return kind; }  // one of clock_kind

    // Add or subtract a duration. A result beyond 64 bits wraps.
    ClockBase& operator+=(std::int64_t duration);
    ClockBase& operator-=(std::int64_t duration);

  protected:
    // A clock of `clockKind` that holds 0.
    explicit ClockBase(std::uint32_t clockKind) : kind(clockKind) {}
    ClockBase(const ClockBase&) = default;
    // Copies the value; a clock keeps its kind.
    ClockBase& operator=(const ClockBase& other);
    ~ClockBase() = default;

    const std::uint32_t kind;
    std::int64_t value = 0;
};

// Returns the duration from `earlier` to `later`, which must be of the same kind. Wraps as above.
std::int64_t operator-(const ClockBase& later, const ClockBase& earlier);

// Milliseconds since 1970-01-01 00:00 UTC: for time stamps that users see.
class RealtimeClock final : public ClockBase {
  public:
    // Reads the time, or leaves the value at 0.
    explicit RealtimeClock(bool readNow);
};

// Milliseconds of the monotonic source, from an arbitrary origin: for intervals and deadlines.
class MonotonicClock final : public ClockBase {
  public:
    // As above. Throws OsError as `refresh` does.
    explicit MonotonicClock(bool readNow);
};

// Milliseconds since start-up, by the monotonic source.
class InitClock final : public ClockBase {
  public:
    // As above.
    explicit InitClock(bool readNow);

    void refresh() override;
};

}  // namespace vek::time
