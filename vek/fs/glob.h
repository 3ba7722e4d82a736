// Files found by a pattern.
#pragma once

#include <string>
#include <vector>

namespace vek::fs {

// The entries, of any kind, that match `pattern`, which may have wildcards ("*" and "?") in its
// last component, taken as the system takes them. Each comes with the pattern's directory ahead of
// it, as that is written; after a lone leading backslash ("\*.txt") it comes alone, deliberately.
// Matching "." and ".." are among them. In ascending order of their bytes if `sorted`, otherwise in
// the system's.
//
// Separators at the end of the pattern are ignored. Nothing found gives an empty list, but a
// directory that is missing throws. Stands on FindFirstFileA and FindNextFileA. Throws FsError if
// the search can't begin, OsError if it can't go on.
std::vector<std::string> glob(const std::string& pattern, bool sorted);

}  // namespace vek::fs
