// The null device, open while the program runs: child processes get it for streams that they are
// not given.
#pragma once

#include "vek/fs/file.h"

namespace vek::fs {

// Opens the device "nul" for reading and for writing, anew if it is open. Throws as File::open
// does; a device that was open stays as it is then. Called by the thread that starts the process
// up.
void openNullDevice();

// Closes both; does nothing if they are not open. Called by the thread that ends the process.
void closeNullDevice();

// The two files, owned here; null while the device isn't open.
File* nullInput();
File* nullOutput();

}  // namespace vek::fs
