// In place of tests/support/replaced_import.h: there is no import table here, and the one function
// that the tests replace asks for its replacement.
#pragma once

#include <atomic>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

// What WaitForMultipleObjects calls; the next function at first.
extern std::atomic<decltype(&WaitForMultipleObjects)> currentWaitForMultipleObjects;

// `alertable` has no meaning here.
DWORD WaitForMultipleObjectsEx(DWORD count, const HANDLE* objects, BOOL waitAll, DWORD timeoutMs,
                               BOOL alertable);

namespace support {

template <class Function>
class ReplacedImport : public vek::NoCopy {
  public:
    ReplacedImport(const std::string& /*name*/, Function replacement)
        : original(currentWaitForMultipleObjects.exchange(replacement)) {}
    ~ReplacedImport() { currentWaitForMultipleObjects = original; }

  private:
    const Function original;
};

}  // namespace support
