// log_application::Discovered: collects the answers of a search.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/log_application/connection/process.h"

namespace log_application {

class Discovered {
  public:
    // `searchId` is the correlation number of the search; answers with another one are ignored.
    explicit Discovered(std::uint32_t searchId) : id(searchId) {}

    // Adds the datagram `text` that came from the numeric address `sender`. Ignores what isn't an
    // answer to this search. With `isLocal`, `sender` is an address of this host, and the loopback
    // address becomes an endpoint too. A further answer of a known process adds its endpoints; the
    // loopback address comes first.
    void add(std::string_view text, const std::string& sender, bool isLocal);

    // Returns the processes found, sorted by name and pid.
    std::vector<Process> processes() const;

  private:
    const std::uint32_t id;
    std::vector<Process> found;
};

}  // namespace log_application
