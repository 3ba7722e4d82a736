// A reliable stream without a system: what is read comes from a text, in pieces of chosen sizes,
// and what is written is kept.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "vek/net/data_socket.h"

namespace vek::test {

class ScriptedSocket : public net::DataSocket {
  public:
    // The `pieces` are used in turn, for reading and for writing; 0 stands for all there is. The
    // stream ends behind `incoming`.
    ScriptedSocket(std::string incoming, std::vector<std::uint8_t> pieces)
        : DataSocket(net::invalidSocket), unread(std::move(incoming)), sizes(std::move(pieces)) {}

    bool isReliable() const override { return true; }
    bool isLossy() const override { return false; }

    std::uint32_t read(void* buffer, std::uint32_t size) override {
        const std::uint32_t left = static_cast<std::uint32_t>(unread.size() - position);
        const std::uint32_t given = nextPiece(std::min(size, left));
        std::memcpy(buffer, unread.data() + position, given);
        position += given;
        return given;
    }

    std::uint32_t write(const void* buffer, std::uint32_t size) override {
        const std::uint32_t taken = nextPiece(size);
        written.append(static_cast<const char*>(buffer), taken);
        return taken;
    }

    std::string written;

  private:
    std::uint32_t nextPiece(std::uint32_t most) {
        const std::uint8_t wanted = sizes.empty() ? 0 : sizes[turn++ % sizes.size()];
        return wanted == 0 ? most : std::min<std::uint32_t>(most, wanted);
    }

    const std::string unread;
    std::size_t position = 0;
    const std::vector<std::uint8_t> sizes;
    std::size_t turn = 0;
};

}  // namespace vek::test
