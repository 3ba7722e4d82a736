// The entry point of tolmarhlp.exe.
#include "source/tolmar/run_helper.h"
#include "source/tolmar/win32_system.h"
#include "vek/log/configurator.h"
#include "vek/pal.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    tolmar::Win32System system;
    return tolmar::runHelper<vek::VekPal, vek::log::Configurator>(
        system, tolmar::commandTail(GetCommandLineA()));
}
