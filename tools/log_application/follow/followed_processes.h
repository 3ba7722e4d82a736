// log_application::FollowedProcesses: the endpoints being followed, so that none is followed twice.
#pragma once

#include <mutex>
#include <set>

#include "tools/log_application/connection/endpoint.h"
#include "vek/base/no_copy.h"

namespace log_application {

// Thread-safe.
class FollowedProcesses : public vek::NoCopy {
  public:
    // Returns false if `endpoint` is claimed already.
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
