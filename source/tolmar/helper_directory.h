// The directory that the command line names: it holds the installed executable.
#pragma once

#include "source/tolmar/command_tail.h"

namespace tolmar {

// Written once, before its first use, and read by every path of the helper.
extern PathBuffer helperDirectory;

// `format` with its one "%s" replaced by helperDirectory.
PathBuffer helperPath(const char* format);

}  // namespace tolmar
