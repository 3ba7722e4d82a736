// Typed look-up of functions that older systems don't have.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/shared_lib.h"
#include "vek/exception.h"

namespace vek {

// Returns the function `symbol` of `library`, as a pointer of the type `Function`. Take the type
// from the system's own declaration:
//
//     resolveFunction<decltype(&::GetTickCount64)>(kernel32Library(), "GetTickCount64")
//
// Throws as SharedLib::resolve does.
template <class Function>
Function resolveFunction(const SharedLib& library, const std::string& symbol) {
    // By way of the one function type that may be cast to any other.
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(library.resolve(symbol)));
}

// A set of functions that are used only together, looked up once per process. `Functions` is a
// struct of function pointers. An object of this class has static storage duration.
//
// A thread doesn't wait for a look-up that another thread has begun: until that is finished, `get`
// returns null.
template <class Functions>
class OptionalFunctions : public NoCopy {
  public:
    constexpr OptionalFunctions() = default;

    // Calls `lookUp`, which returns `Functions` or throws, unless this was done before. A
    // vek::Exception from it means that the functions are missing, and is swallowed. Thread-safe:
    // one thread does the look-up.
    template <class LookUp>
    void resolve(LookUp lookUp) {
        if (counter != 0 || counter.fetch_add(1) != 0) {
            return;
        }
        found = false;
        try {
            functions = lookUp();
            found = true;
        } catch (const Exception&) {
            // An older system: `found` stays false.
        }
    }

    // Forgets the functions, so that the next `resolve` looks them up again. No other thread may
    // call `resolve` or `get` at the same time.
    void reset() {
        found = false;
        functions = {};
        counter = 0;
    }

    // Returns the functions, or null if they are missing or were not looked up.
    const Functions* get() const { return found ? &functions : nullptr; }

  private:
    std::atomic<std::uint32_t> counter = 0;
    std::atomic<bool> found = false;
    Functions functions = {};
};

}  // namespace vek
