// log_application::StopSignal: tells every thread of the program that it is to come to its end.
#pragma once

#include <atomic>
#include <cstdint>

#include "vek/base/no_copy.h"
#include "vek/net/socket_set.h"
#include "vek/net/wakeup_channel.h"
#include "vek/thread/condition.h"
#include "vek/time/clock.h"

namespace log_application {

// Any thread may request the stop, and any may wait for it. A request stays.
class StopSignal : public vek::NoCopy {
  public:
    // Ctrl-C, or another way in which the console asks the program to quit: requests the stop. The
    // second time the process ends at once, for an output that takes nothing any more.
    void onQuit();

    // Throws nothing.
    void request();

    bool isRequested() const { return requested; }

    // Waits for the stop until `deadline`, at most. True if it is requested.
    bool waitUntil(const vek::time::MonotonicClock& deadline);
    bool waitFor(std::int64_t milliseconds);

    // Lets a select on `set` return, from the request on.
    void addTo(vek::net::SocketSet& set) const { wakeup.addTo(set); }

  private:
    std::atomic<bool> requested = false;
    std::atomic<int> quits = 0;
    vek::thread::Condition condition;
    // Its one byte is never taken, so that it wakes all who select.
    vek::net::WakeupChannel wakeup;
};

}  // namespace log_application
