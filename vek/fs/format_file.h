// Text files with placeholders, filled in.
#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace vek {

// Writes `target` as the text of `source`, in which every "{key}" has been replaced by the value
// that `values` has for it, line by line as expandVariables of vek/base/text.h does. The result is
// the count of replacements.
//
// Both are text files: CR LF in the source is one line end, a Ctrl-Z ends it, and every line end in
// the target is CR LF, also that of the last line. The target is replaced if it exists.
//
// Throws UsageError if both paths lead to one file, before anything is touched; FsError with the
// path text "Unable to open 'SOURCE' for reading." or "Unable to open 'TARGET' for writing.";
// OsError if reading or writing fails, which leaves a part of the text in the target; and what
// expand of vek/fs/current_directory.h throws.
std::size_t formatFile(const std::string& source, const std::string& target,
                       const std::map<std::string, std::string>& values);

}  // namespace vek
