// log_application_test::IoctlSpy: records the calls of WSAIoctl.
#pragma once

#include <string>
#include <vector>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace log_application_test {

// While one exists, each call of WSAIoctl by this program is recorded and then made. Replaces the
// entry of the program's import table. At most one instance may exist; not thread-safe.
class IoctlSpy : public vek::NoCopy {
  public:
    IoctlSpy();
    ~IoctlSpy();

    struct Call {
        DWORD code;
        std::string input;
    };

    // The calls so far with the control code `code`.
    std::vector<Call> callsOf(DWORD code) const;
};

}  // namespace log_application_test
