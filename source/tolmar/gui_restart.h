// Shakes hands with the peer that asked for a new GUI, over the two events that the peer has made,
// and starts the GUI again.
#pragma once

#include "source/tolmar/system.h"
#include "vek/log/logger.h"

namespace tolmar {

// Signals "vektolmareventguiupdate1", waits up to 90 seconds for "vektolmareventguiupdate2", then
// starts "tolmar.exe -gui" of helperDirectory. The first thing that fails ends it without the GUI.
// Only the log at level DEBUG tells which. For one thread; throws nothing of its own.
void restartGui(System& system, vek::log::Logger& logger);

}  // namespace tolmar
