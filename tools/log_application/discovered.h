// log_application::Discovered: gathers the answers of a search.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/log_application/process.h"

namespace log_application {

class Discovered {
  public:
    // `searchId` is the correlation number that answers have to bear.
    explicit Discovered(std::uint32_t searchId) : id(searchId) {}

    // Takes the datagram `text` that came from the numeric address `sender`. Answers of a process
    // that is known add their sender to it, the loopback address ahead of others; what is no answer
    // to this search is counted.
    void add(std::string_view text, const std::string& sender);

    // By name, then by pid.
    std::vector<Process> processes() const;

    // The number of datagrams that were no answer.
    std::size_t strangers() const { return strange; }

  private:
    const std::uint32_t id;
    std::vector<Process> found;
    std::size_t strange = 0;
};

}  // namespace log_application
