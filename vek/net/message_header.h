// vek::net::MessageHeader: the argument of the gather and scatter calls.
#pragma once

#include <cstdint>
#include <vector>

#include "vek/base/windows.h"
#include "vek/net/address.h"

namespace vek::net {

// A piece of a message, not owned.
struct MessageBuffer {
    void* data;
    std::uint32_t size;  // in bytes
};

struct MessageHeader {
    // Filled by the call; afterwards it holds the flags and the length of the control data.
    WSAMSG message = {};
    // The receiver or sender of the message; may be null. Not owned.
    Address* peer = nullptr;
    // Must not be empty.
    std::vector<MessageBuffer> buffers;
    // The buffer for control data, not owned, and its size in bytes, which may be 0.
    void* control = nullptr;
    std::uint32_t controlLength = 0;
};

}  // namespace vek::net
