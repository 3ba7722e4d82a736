// log_application::StopSignal: asks all threads of the program to end.
#pragma once

#include <atomic>
#include <cstdint>

#include "vek/base/no_copy.h"
#include "vek/net/socket_set.h"
#include "vek/net/wakeup_channel.h"
#include "vek/thread/condition.h"
#include "vek/time/clock.h"

namespace log_application {

// Thread-safe. A request is never taken back.
class StopSignal : public vek::NoCopy {
  public:
    // Called for Ctrl-C and the other console events. Requests the stop. The second call ends the
    // process at once by TerminateProcess, since a blocked output would hold up an orderly end.
    void onQuit();

    // Wakes all threads that wait here or in a select. Throws nothing; an error is written to
    // std::cerr.
    void request();

    bool isRequested() const { return requested; }

    // Blocks until the stop is requested or `deadline` has passed. Returns whether it is requested.
    bool waitUntil(const vek::time::MonotonicClock& deadline);
    // The same for a number of milliseconds from now.
    bool waitFor(std::int64_t milliseconds);

    // Adds a socket that is readable once the stop is requested.
    void addTo(vek::net::SocketSet& set) const { wakeup.addTo(set); }

  private:
    std::atomic<bool> requested = false;
    std::atomic<int> quits = 0;
    vek::thread::Condition condition;
    // The byte is never read, so it wakes every select, now and later.
    vek::net::WakeupChannel wakeup;
};

}  // namespace log_application
