// A TCP socket that records its calls and can limit their sizes. The data goes over a real one.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "vek/net/tcp_socket.h"

namespace vek::test {

class WatchedSocket : public net::TCPSocket {
  public:
    using TCPSocket::TCPSocket;

    std::uint32_t read(void* buffer, std::uint32_t size) override {
        ++reads;
        lastReadTarget = static_cast<const char*>(buffer);
        lastReadSize = size;
        return TCPSocket::read(buffer, std::min(size, readLimit));
    }

    std::uint32_t write(const void* buffer, std::uint32_t size) override {
        ++writes;
        if (writes > writesBeforeClosing) {
            close();
        }
        return TCPSocket::write(buffer, std::min(size, writeLimit));
    }

    // Upper bound of the size of one call.
    std::uint32_t readLimit = UINT32_MAX;
    std::uint32_t writeLimit = UINT32_MAX;
    int writesBeforeClosing = INT32_MAX;

    std::atomic<int> reads = 0;
    int writes = 0;
    const char* lastReadTarget = nullptr;
    std::uint32_t lastReadSize = 0;
};

// Returns a frame with the prefix `length`; a length other than that of `payload` breaks the
// stream.
inline std::string frame(const std::string& payload, std::uint32_t length) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(length >> shift & 0xFF);
    }
    return bytes + payload;
}

inline std::string frame(const std::string& payload) {
    return frame(payload, static_cast<std::uint32_t>(payload.size()));
}

}  // namespace vek::test
