// The part of the clocks that reads the system's time.
#include "vek/time/clock.h"
#include "vek/time/clock_source.h"

namespace vek::time {

void ClockBase::refresh() {
    switch (kind) {
        case clock_kind::REALTIME:
            value = realtimeMilliseconds();
            break;
        case clock_kind::MONOTONIC:
        case clock_kind::INIT:
            value = monotonicMilliseconds();
            break;
        default:
            break;
    }
}

void InitClock::refresh() {
    ClockBase::refresh();
    *this -= clockState().clockOrigin;
}

}  // namespace vek::time
