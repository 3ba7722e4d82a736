// vek::SharedLib: a shared library, loaded and asked for its symbols.
//
// Its steady use is the look-up of system functions that older systems lack. Whoever looks up such
// a function catches SharedLibError as a vek::Exception and goes on without it.
#pragma once

#include <cstdint>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/exception.h"

namespace vek {

// A failure of the system's library calls.
//
// Its text is put together at the first call of `description`: "Dynamic linker error encountered.
// ", then, if a symbol was named, the symbol and ": ", then the system's text, or "<no error set>"
// if the system had none.
class SharedLibError : public ExceptionOf<SharedLibError> {
  public:
    // Takes the error from GetLastError, so it is to be built right behind the failed call.
    SharedLibError();
    // The same, for the symbol that wasn't found.
    explicit SharedLibError(const std::string& symbol);

    std::string description() const override;

  private:
    std::string errorText;
    std::string symbolName;
};

// One object is not to be loaded or closed while another thread uses it; `resolve` on a loaded one
// is safe from any thread.
class SharedLib : public NoCopy {
  public:
    // Nothing is loaded yet.
    SharedLib() = default;

    // As `close`, but throws nothing: a failure is reported on std::cerr by a line that begins
    // "Error closing shared library:".
    ~SharedLib();

    // Loads `name`, a path or a name that the system searches for. `flags` isn't used: the system
    // gets 0. Throws SharedLibError if the system can't load it, and UsageError if a library is
    // loaded already, which stays loaded then. Stands on LoadLibraryExA.
    void load(const std::string& name, std::uint32_t flags);

    // The address of `symbol`, never null; it is valid while the library stays loaded. Throws
    // SharedLibError if the library has no such symbol, and UsageError if none is loaded. Stands on
    // GetProcAddress. See resolveFunction for one that knows the symbol's type.
    FARPROC resolve(const std::string& symbol) const;

    // Lets the library go; does nothing if none is loaded. The object is free for another `load`
    // afterwards, also after a failure, which throws SharedLibError. Stands on FreeLibrary.
    void close();

    // The path of the file that the loaded module `handle` came from; null stands for the program.
    // A path of 260 bytes or more is cut. Throws SharedLibError. Stands on GetModuleFileNameA.
    static std::string modulePath(HMODULE handle);

  private:
    HMODULE module = nullptr;
};

// The one library that the framework looks up optional system functions in: "kernel32". Loaded at
// the first call and let go at the end of the process. Safe from any thread. Throws SharedLibError.
const SharedLib& kernel32Library();

}  // namespace vek
