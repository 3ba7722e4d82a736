// Reads a stream to its end in the C runtime's text mode.
#pragma once

#include <string>

#include "vek/fs/stream_file.h"

namespace vek::proc {

// Returns all lines of `stream`, each with a line end, also the last one, and closes the stream. CR
// LF is a line end, and the text ends at a Ctrl-Z. Throws OsError with 4
// (ERROR_TOO_MANY_OPEN_FILES) if the runtime has no free file; `stream` may be open or closed then.
// Calls _open_osfhandle and _fdopen.
std::string readText(fs::StreamFile& stream);

}  // namespace vek::proc
