// Files and directories with unique names.
#pragma once

#include <string>

#include "vek/fs/stream_file.h"

namespace vek::fs {

// Creates a file beside `path` and opens it for reading and writing, for contents that get the
// final name once they are complete. `path` becomes the name of the new file, which begins with up
// to 3 characters of the old name. A path without a separator is made absolute with the current
// directory. The file stays until it is removed. Calls GetTempFileNameA; after error 5, which a
// name of a file that is being deleted gives, it is called again, for some milliseconds at most.
//
// Throws FsError if no file can be created, what File::open throws, and what currentDirectory
// throws. `path` names no new file then; it may have been made absolute.
StreamFile makeTemporary(std::string& path);

// Creates a directory in the one for temporary files and returns its path; its name begins with up
// to 3 characters of `base`. A name that another thread or process takes meanwhile, or that is
// being deleted (error 5), is given up for another. Throws NoSuchFileError if the directory for
// temporary files vanishes meanwhile, FsError for any other failure, and what temporaryDirectory
// throws.
std::string makeTemporaryDirectory(const std::string& base);

}  // namespace vek::fs
