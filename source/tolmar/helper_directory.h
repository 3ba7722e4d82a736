// The directory named by the command line, which contains the installed executable.
#pragma once

#include "source/tolmar/command_tail.h"

namespace tolmar {

// Written once, before its first use, and read by every path of the helper.
extern PathBuffer helperDirectory;

// Returns `format` with its one "%s" replaced by helperDirectory, terminated.
PathBuffer helperPath(const char* format);

}  // namespace tolmar
