// Synchronises with the peer that asked for a new GUI, over the two events that the peer has
// created, and starts the GUI again.
#pragma once

#include "source/tolmar/system.h"
#include "vek/log/logger.h"

namespace tolmar {

// Signals "vektolmareventguiupdate1", blocks for up to 90 seconds until "vektolmareventguiupdate2"
// is signalled, then starts "tolmar.exe -gui" of helperDirectory. Returns at the first failure,
// without starting the GUI; only the log at level DEBUG shows which it was. For one thread; throws
// nothing.
void restartGui(System& system, vek::log::Logger& logger);

}  // namespace tolmar
