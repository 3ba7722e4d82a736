#include "tools/log_application/program/deep_stack.h"

#include <cstdint>
#include <exception>
#include <system_error>

#include <process.h>

#include "vek/base/windows.h"

namespace log_application {

namespace {

struct Work {
    const std::function<void()>& function;
    std::exception_ptr failure;
};

unsigned __stdcall enter(void* argument) {
    Work& work = *static_cast<Work*>(argument);
    try {
        work.function();
    } catch (...) {
        work.failure = std::current_exception();
    }
    return 0;
}

}  // namespace

void runOnDeepStack(const std::function<void()>& work) {
    Work shared = {work, nullptr};
    const std::uintptr_t created = _beginthreadex(nullptr, deepStackBytes, enter, &shared,
                                                  STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (created == 0) {
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    }
    const auto thread = reinterpret_cast<HANDLE>(created);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    if (shared.failure) {
        std::rethrow_exception(shared.failure);
    }
}

std::size_t stackBottom() {
    MEMORY_BASIC_INFORMATION region = {};
    VirtualQuery(&region, &region, sizeof region);
    return reinterpret_cast<std::size_t>(region.AllocationBase);
}

}  // namespace log_application
