// The null device, open for the whole run: what a child process gets in place of a stream of its
// own.
#pragma once

#include "vek/fs/file.h"

namespace vek::fs {

// Opens the device "nul" for reading and for writing, anew if it is open. Throws as File::open; a
// device that was open stays as it is then. For the thread that starts the process up.
void openNullDevice();

// Closes both; does nothing if they are not open. For the thread that ends the process.
void closeNullDevice();

// The two, owned here; null while the device isn't open.
File* nullInput();
File* nullOutput();

}  // namespace vek::fs
