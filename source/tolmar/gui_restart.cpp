#include "source/tolmar/gui_restart.h"

#include "source/tolmar/helper_directory.h"
#include "vek/log/statement.h"

namespace tolmar {

namespace {

constexpr std::uint32_t peerTimeoutMs = 90000;

}  // namespace

void restartGui(System& system, vek::log::Logger& logger) {
    // An early return leaves the events open; the system closes them when the process ends.
    HANDLE guiEvent1 = nullptr;
    HANDLE guiEvent2 = nullptr;
    if (system.openEvent(&guiEvent1, "vektolmareventguiupdate1") == 0 ||
        system.openEvent(&guiEvent2, "vektolmareventguiupdate2") == 0 ||
        system.setEvent(guiEvent1) == 0) {
        return;
    }
    VEK_LOG(logger, vek::log::DEBUG, "wait for event2");
    std::uint32_t waited = 0;
    if (system.waitObject(guiEvent2, peerTimeoutMs, &waited) == 0) {
        VEK_LOG(logger, vek::log::DEBUG, "wait for event2");  // the same text again, deliberately
        return;
    }
    if (waited == WAIT_TIMEOUT) {
        VEK_LOG(logger, vek::log::DEBUG, "timeout waiting for event2");
        return;
    }
    VEK_LOG(logger, vek::log::DEBUG, "event2 triggert");
    if (system.closeObject(guiEvent1) == 0 || system.closeObject(guiEvent2) == 0) {
        return;
    }
    const PathBuffer commandBuffer = helperPath("%s/tolmar.exe -gui");
    const UINT started = system.winExec(commandBuffer.data(), SW_SHOW);
    VEK_LOG(logger, vek::log::DEBUG, "start tolmar.exe -gui wuth retcode=" << started);
}

}  // namespace tolmar
