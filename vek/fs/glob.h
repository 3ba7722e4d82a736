// Directory entries found by a pattern.
#pragma once

#include <string>
#include <vector>

namespace vek::fs {

// Returns the entries, of any kind, that match `pattern`, whose last component may hold wildcards
// ("*" and "?") with the system's meaning: "*.htm" also finds "a.html" where that has a short name.
// Each is preceded by the directory of the pattern as written there, except after a lone leading
// backslash ("\*.txt"), deliberately. "." and ".." are included if they match. In ascending order
// of their bytes if `sorted`, else in the system's order.
//
// Separators at the end of the pattern are ignored. Returns an empty list if nothing matches, but
// throws for a missing directory. Calls FindFirstFileA, FindNextFileA and FindClose. Throws FsError
// if the search can't begin, OsError if it can't go on.
std::vector<std::string> glob(const std::string& pattern, bool sorted);

}  // namespace vek::fs
