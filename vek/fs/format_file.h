// Text files written from a template with placeholders.
#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace vek {

// Writes the text of `source` to `target`, with every "{key}" replaced by its value in `values`,
// line by line as expandVariables of vek/base/text.h does. Returns the number of replacements.
//
// Both are text files: CR LF in the source is one line end and Ctrl-Z ends it; every line of the
// target, the last one included, ends in CR LF. An existing target is replaced.
//
// Throws UsageError if both paths lead to one file, before anything is touched; FsError with the
// path text "Unable to open 'SOURCE' for reading." or "Unable to open 'TARGET' for writing.";
// OsError if reading or writing fails, which leaves a part of the text in the target; and what
// expand of vek/fs/current_directory.h throws.
std::size_t formatFile(const std::string& source, const std::string& target,
                       const std::map<std::string, std::string>& values);

}  // namespace vek
