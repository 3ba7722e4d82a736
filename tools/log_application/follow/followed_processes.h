// log_application::FollowedProcesses: which processes are being followed, so that none is twice.
#pragma once

#include <mutex>
#include <set>

#include "tools/log_application/connection/endpoint.h"
#include "vek/base/no_copy.h"

namespace log_application {

// Safe from any thread.
class FollowedProcesses : public vek::NoCopy {
  public:
    // False if somebody else follows what answers at `endpoint`.
    bool claim(const Endpoint& endpoint) {
        const std::lock_guard guard(lock);
        return endpoints.insert(endpoint).second;
    }

    void release(const Endpoint& endpoint) {
        const std::lock_guard guard(lock);
        endpoints.erase(endpoint);
    }

  private:
    std::mutex lock;
    std::set<Endpoint> endpoints;
};

}  // namespace log_application
