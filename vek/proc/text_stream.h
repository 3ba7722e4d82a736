// A stream read to its end as the C runtime reads text.
#pragma once

#include <string>

#include "vek/fs/stream_file.h"

namespace vek::proc {

// All lines of `stream`, which is closed afterwards, each with a line end, the last one too. CR LF
// is a line end, and the text stops at a Ctrl-Z. Throws OsError with 4 (ERROR_TOO_MANY_OPEN_FILES)
// if the runtime has no more files; `stream` may be closed or not then. Stands on _open_osfhandle
// and _fdopen.
std::string readText(fs::StreamFile& stream);

}  // namespace vek::proc
