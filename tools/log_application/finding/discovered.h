// log_application::Discovered: gathers the answers of a search.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/log_application/connection/process.h"

namespace log_application {

class Discovered {
  public:
    // `searchId` is the correlation number that answers have to bear.
    explicit Discovered(std::uint32_t searchId) : id(searchId) {}

    // Takes the datagram `text` that came from the numeric address `sender`; if that `isLocal`, one
    // of this host, the process may listen on the loopback address as well. Answers of a process
    // that is known add to its endpoints, the loopback address ahead of others. What is no answer
    // to this search is left out.
    void add(std::string_view text, const std::string& sender, bool isLocal);

    // By name, then by pid.
    std::vector<Process> processes() const;

  private:
    const std::uint32_t id;
    std::vector<Process> found;
};

}  // namespace log_application
