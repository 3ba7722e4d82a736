// Files and directories renamed or moved.
#pragma once

#include <cstdint>
#include <string>

#include "vek/fs/copy_options.h"

namespace vek::fs {

// Renames `from`, a file or a directory, to `to` on the same volume. The entry keeps its times,
// attributes and access list, also in a directory with another one. Of `options`, CopyOptions, only
// overwriteTarget counts. Calls MoveFileExA.
//
// Throws RuntimeError "Error while moving FROM -> TO", whose cause is NotSameDeviceError if the two
// are on different volumes and FsError for every other failure; both name `from`.
void move(const std::string& from, const std::string& to, std::uint32_t options = 0);

// The same, but moves a file across volumes too: copies it by a Copier with `options` and removes
// the original. Then only the contents are kept: the new file has the time of the copy, default
// attributes and the access list of its directory, and further data streams are lost. A directory
// can't be moved across volumes; that throws FileAccessError.
//
// Throws what `stat`, `move`, Copier, removeFile and removeDirectory throw. A copy that fails half
// way is removed; an existing `to` is left alone if the copy can't begin.
void moveAnywhere(const std::string& from, const std::string& to, std::uint32_t options = 0);

}  // namespace vek::fs
