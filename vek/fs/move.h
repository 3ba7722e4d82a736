// Files and directories given another name or place.
#pragma once

#include <cstdint>
#include <string>

#include "vek/fs/copy_options.h"

namespace vek::fs {

// Renames `from`, a file or a directory, to `to`, on the same volume. `options`: of CopyOptions,
// overwriteTarget counts. Stands on MoveFileExA.
//
// Throws RuntimeError "Error while moving FROM -> TO", whose cause is NotSameDeviceError if the two
// stand on different volumes, FsError for every other failure; both carry `from` as their path.
void move(const std::string& from, const std::string& to, std::uint32_t options = 0);

// The same, and across volumes too for a file: there it is copied, with `options` as those of the
// Copier, and then removed. A directory can't be copied, so moving one across volumes throws
// FileAccessError.
//
// Throws what `stat` and `move` throw, and what Copier and removing throw. A copy that fails half
// way is removed again; what stood at `to` before a copy that couldn't begin stays.
void moveAnywhere(const std::string& from, const std::string& to, std::uint32_t options = 0);

}  // namespace vek::fs
