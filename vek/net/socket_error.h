// Maps the error number of a failed socket call to an exception class.
#pragma once

namespace vek::net {

// The calls that have their own exception classes for some error numbers.
enum class SocketCall {
    create,
    bind,
    connect,
    transfer,  // recvfrom and sendto, not the gather and scatter calls
    other,     // everything else: always NetError
};

// Throws the exception for this thread's last failed socket call, which was a `call`. Call it
// before anything else changes the thread's last error.
[[noreturn]] void throwSocketError(SocketCall call);

}  // namespace vek::net
