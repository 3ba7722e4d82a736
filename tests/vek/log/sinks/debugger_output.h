// What the program hands to OutputDebugStringA.
#pragma once

#include <string>
#include <vector>

#include "vek/base/windows.h"

namespace vek::test {

// While it lives, takes each text whole, as a debugger would: the call raises an exception for the
// debugger, which is handled here instead. One at a time.
class DebuggerOutput {
  public:
    DebuggerOutput() { taken.clear(); }
    ~DebuggerOutput() { RemoveVectoredExceptionHandler(handler); }
    DebuggerOutput(const DebuggerOutput&) = delete;
    DebuggerOutput& operator=(const DebuggerOutput&) = delete;

    const std::vector<std::string>& texts() const { return taken; }

  private:
    static LONG CALLBACK take(EXCEPTION_POINTERS* raised) {
        constexpr DWORD debugPrint = 0x40010006;
        const EXCEPTION_RECORD& record = *raised->ExceptionRecord;
        if (record.ExceptionCode != debugPrint || record.NumberParameters < 2) {
            return EXCEPTION_CONTINUE_SEARCH;
        }
        // The size, including the NUL, and the address.
        taken.emplace_back(reinterpret_cast<const char*>(record.ExceptionInformation[1]),
                           record.ExceptionInformation[0] - 1);
        return EXCEPTION_CONTINUE_EXECUTION;
    }

    inline static std::vector<std::string> taken;
    void* const handler = AddVectoredExceptionHandler(1, take);
};

}  // namespace vek::test
