#include "vek/time/clock.h"

namespace vek::time {

namespace {

// Sums and differences that wrap, where the signed ones would be undefined.
std::int64_t wrappingSum(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

std::int64_t wrappingDifference(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}

}  // namespace

ClockBase& ClockBase::operator=(const ClockBase& other) {
    value = other.value;
    return *this;
}

ClockBase& ClockBase::operator+=(std::int64_t duration) {
    value = wrappingSum(value, duration);
    return *this;
}

ClockBase& ClockBase::operator-=(std::int64_t duration) {
    value = wrappingDifference(value, duration);
    return *this;
}

std::int64_t operator-(const ClockBase& later, const ClockBase& earlier) {
    return wrappingDifference(later.getValue(), earlier.getValue());
}

RealtimeClock::RealtimeClock(bool readNow) : ClockBase(clock_kind::REALTIME) {
    if (readNow) {
        refresh();
    }
}

MonotonicClock::MonotonicClock(bool readNow) : ClockBase(clock_kind::MONOTONIC) {
    if (readNow) {
        refresh();
    }
}

InitClock::InitClock(bool readNow) : ClockBase(clock_kind::INIT) {
    if (readNow) {
        refresh();
    }
}

}  // namespace vek::time
