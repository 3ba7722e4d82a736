// support::PeerEvent: one of the two events of the peer that wants its GUI back.
#pragma once

#include <gtest/gtest.h>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace support {

// Their names, which the processes of all sessions share.
inline constexpr char event1Name[] = "Global\\vektolmareventguiupdate1";
inline constexpr char event2Name[] = "Global\\vektolmareventguiupdate2";

// Calls the system itself, not the framework.
class PeerEvent : public vek::NoCopy {
  public:
    explicit PeerEvent(const char* name, BOOL manualReset = FALSE)
        : handle(CreateEventA(nullptr, manualReset, FALSE, name)) {
        EXPECT_NE(handle, nullptr) << GetLastError();
        EXPECT_NE(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS)) << name;
    }
    ~PeerEvent() { CloseHandle(handle); }

    void set() const { SetEvent(handle); }
    bool waitFor(DWORD milliseconds) const {
        return WaitForSingleObject(handle, milliseconds) == WAIT_OBJECT_0;
    }

  private:
    HANDLE handle;
};

}  // namespace support
