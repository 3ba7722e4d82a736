// Typed look-up of functions that a system may lack.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/shared_lib.h"
#include "vek/exception.h"

namespace vek {

// The function `symbol` of `library`, as a pointer of the type `Function`, which is best taken from
// the system's own declaration:
//
//     resolveFunction<decltype(&::GetTickCount64)>(kernel32Library(), "GetTickCount64")
//
// Throws as SharedLib::resolve does.
template <class Function>
Function resolveFunction(const SharedLib& library, const std::string& symbol) {
    // By way of the one function type that may be cast to any other.
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(library.resolve(symbol)));
}

// A set of functions that are of use only together, looked up once per process. `Functions` is a
// struct of function pointers. An object of this class is process-wide.
//
// A look-up that has begun is not waited for: a thread that asks meanwhile is told that the
// functions are missing.
template <class Functions>
class OptionalFunctions : public NoCopy {
  public:
    constexpr OptionalFunctions() = default;

    // Unless it was done before, calls `lookUp`, which gives back `Functions` or throws. A
    // vek::Exception from it means that the functions are missing, and is swallowed. Safe from any
    // thread: one of them does the look-up.
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

    // Forgets the functions, so that the next `resolve` looks them up anew. Not to be called while
    // another thread resolves or asks.
    void reset() {
        found = false;
        functions = {};
        counter = 0;
    }

    // The functions, or null if they are missing or were not looked up.
    const Functions* get() const { return found ? &functions : nullptr; }

  private:
    std::atomic<std::uint32_t> counter = 0;
    std::atomic<bool> found = false;
    Functions functions = {};
};

}  // namespace vek
