// log_application::FollowedProcesses: the endpoints being followed, so that none is followed twice.
#pragma once

#include <set>

#include "tools/log_application/connection/endpoint.h"
#include "vek/base/no_copy.h"
#include "vek/base/std_mutex.h"

namespace log_application {

// Thread-safe.
class FollowedProcesses : public vek::NoCopy {
  public:
    // Returns false if `endpoint` is claimed already.
    bool claim(const Endpoint& endpoint) {
        const vek::StdGuard guard(lock);
        return endpoints.insert(endpoint).second;
    }

    void release(const Endpoint& endpoint) {
        const vek::StdGuard guard(lock);
        endpoints.erase(endpoint);
    }

  private:
    vek::StdMutex lock;
    std::set<Endpoint> endpoints VEK_GUARDED_BY(lock);
};

}  // namespace log_application
