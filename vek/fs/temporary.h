// Files and directories with names that nothing else has.
#pragma once

#include <string>

#include "vek/fs/stream_file.h"

namespace vek::fs {

// Makes a file beside `path` and opens it for reading and writing, for contents that are to get
// that name once they are complete. `path` becomes the name of the new file, which begins with up
// to 3 bytes of the old one. A path without a separator is taken to stand in the current directory.
// The file stays until somebody removes it. Stands on GetTempFileNameA.
//
// Throws FsError if no file can be made, what File::open throws, and what currentDirectory throws.
// If nothing was made `path` names no new file; it may have been made absolute.
StreamFile makeTemporary(std::string& path);

// Makes a directory in the one for temporary files and gives back its path; its name begins with up
// to 3 bytes of `base`. Throws NoSuchFileError if the directory to hold it vanishes meanwhile,
// FsError for any other failure, and what temporaryDirectory throws.
std::string makeTemporaryDirectory(const std::string& base);

}  // namespace vek::fs
