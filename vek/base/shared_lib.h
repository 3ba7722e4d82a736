// vek::SharedLib: loads a shared library and looks up its symbols.
//
// Its main use is the look-up of system functions that older systems don't have: the caller catches
// SharedLibError as a vek::Exception and goes on without the function.
#pragma once

#include <cstdint>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/exception.h"

namespace vek {

// A failed library call of the system.
//
// The text is built at the first call of `description`: "Dynamic linker error encountered. ", then,
// if a symbol was named, the symbol and ": ", then the system's text, or "<no error set>" if that
// is empty.
class SharedLibError : public ExceptionOf<SharedLibError> {
  public:
    // Takes the error from GetLastError: construct it right after the failed call.
    SharedLibError();
    // The same, for the symbol that wasn't found.
    explicit SharedLibError(const std::string& symbol);

    std::string description() const override;

  private:
    std::string errorText;
    std::string symbolName;
};

// `resolve` on a loaded object is thread-safe. An object must not be loaded or closed while another
// thread uses it.
class SharedLib : public NoCopy {
  public:
    // Nothing is loaded yet.
    SharedLib() = default;

    // Like `close`, but throws nothing: a failure is reported on std::cerr in a line that begins
    // "Error closing shared library:".
    ~SharedLib();

    // Loads `name`, a path or a name that the system searches for. Calls LoadLibraryExA with the
    // flags 0; `flags` is ignored. Throws SharedLibError on failure, and UsageError if a library is
    // loaded already, which stays loaded then.
    void load(const std::string& name, std::uint32_t flags);

    // Returns the address of `symbol`, never null, valid while the library is loaded. Throws
    // SharedLibError if the library has no such symbol, and UsageError if no library is loaded.
    // Calls GetProcAddress. For a typed result see resolveFunction.
    FARPROC resolve(const std::string& symbol) const;

    // Releases the library; does nothing if none is loaded. Calls FreeLibrary. Throws
    // SharedLibError on failure. `load` may be called again afterwards, also after a failure.
    void close();

    // Returns the path of the file of the loaded module `handle`; null means the program. A path of
    // 260 bytes or more is truncated. Calls GetModuleFileNameA. Throws SharedLibError on failure.
    static std::string modulePath(HMODULE handle);

  private:
    HMODULE module = nullptr;
};

// Returns the library in which the framework looks up optional system functions: "kernel32". Loaded
// at the first call and released at the end of the process. Thread-safe. Throws SharedLibError.
const SharedLib& kernel32Library();

}  // namespace vek
