// Stack for recursions whose depth depends on input.
#pragma once

#include <cstddef>
#include <functional>

namespace log_application {

// The stack of the thread that `runOnDeepStack` makes, in bytes of address space. The regular
// expressions of the C++ library recurse once or more for each character of a line.
inline constexpr std::size_t deepStackBytes = std::size_t{64} << 20;

// Runs `work` on a thread with a deep stack, blocks until it has returned, and rethrows what it has
// thrown. Other threads keep the small stack that the program's header asks for. Calls
// _beginthreadex. Throws std::system_error if the thread can't be made.
void runOnDeepStack(const std::function<void()>& work);

// Returns the address of the lowest byte of the calling thread's stack. Calls VirtualQuery.
std::size_t stackBottom();

}  // namespace log_application
