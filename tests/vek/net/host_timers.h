// Reads the timers of TCP connections from the host system under Wine.
#pragma once

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

namespace vek::test {

inline const char* const hostConnections = "Z:\\proc\\net\\tcp";

inline bool hostTellsTimers() {
    return std::ifstream(hostConnections).is_open();
}

// Returns the time until the next keep-alive probe on the loopback connection between the two
// ports, in hundredths of a second; -1 if no probe is due.
inline long keepAliveTimer(std::uint16_t port, std::uint16_t peerPort) {
    char ends[64];
    std::snprintf(ends, sizeof ends, "0100007F:%04X 0100007F:%04X", port, peerPort);
    std::ifstream list(hostConnections);
    for (std::string line; std::getline(list, line);) {
        if (line.find(ends) == std::string::npos) {
            continue;
        }
        std::istringstream fields(line);
        std::string timer;
        for (int i = 0; i < 6; ++i) {
            fields >> timer;
        }
        // The kind of timer, and its time in hexadecimal.
        return timer.starts_with("02:") ? std::stol(timer.substr(3), nullptr, 16) : -1;
    }
    return -1;
}

}  // namespace vek::test
