// Operations on the text of a path. None touches the disk.
//
// Components are split at the backslash; a slash counts as a separator only where that is said.
// Throw nothing but std::bad_alloc. Safe from any thread on separate strings.
#pragma once

#include <string>

namespace vek::fs {

// The first 3 bytes of a path that starts with a drive and a backslash ("C:\"), the first 2 if it
// starts with a drive alone ("C:"), else empty.
std::string rootOf(const std::string& path);

// Removes the backslashes and slashes at the end of `path`, in place, but nothing of its root.
// Gives back `path`.
std::string& removeTrailingSeparators(std::string& path);

// Cuts `path` ahead of its last backslash, in place; without a backslash it becomes ".". Gives back
// `path`.
std::string& dirName(std::string& path);

}  // namespace vek::fs
