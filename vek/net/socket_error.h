// Which exception tells of a failed socket call.
#pragma once

namespace vek::net {

// The calls that have exceptions of their own for some error numbers.
enum class SocketCall {
    create,
    bind,
    connect,
    transfer,  // reading and writing, but for the gather and scatter calls
    other,     // all else: always NetError
};

// Throws what the last failed socket call of this thread, which was a `call`, is reported by. To be
// called before anything else touches the system's last error.
[[noreturn]] void throwSocketError(SocketCall call);

}  // namespace vek::net
