// The archives of a log file: their names, and how to recognise them among other files.
//
// A log file "x.log" has the archives "x.log.old.1", "x.log.old.2" and so on, or, compressed,
// "x.log.old.1.gz". Numbers start at 1; a higher number is older.
//
// These functions access no files. They are thread-safe on separate strings.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vek::log {

// Returns the path of archive `number` of the log file `path`. Throws nothing but std::bad_alloc.
std::string archiveName(const std::string& path, std::uint32_t number, bool compressed);

// The pattern for fs::glob that matches all archives of `path`, and may match other files. Its
// separators are backslashes, also where `path` has slashes: fs::glob returns paths without their
// directory otherwise. Throws nothing but std::bad_alloc.
std::string archivePattern(const std::string& path);

// Whether the last two characters of `archive` are "gz"; deliberately not the three of ".gz".
bool isCompressedArchive(const std::string& archive);

// Returns the number of the archive at `path`, or nothing if it isn't an archive. Splits the whole
// path at its dots, including those of directories, and ignores empty pieces. Without a trailing
// "gz" at least three pieces must be left, of which the last is the number, in decimal digits, and
// the one before it "old".
//
// Throws std::out_of_range, which is not a vek::Exception, for a number beyond 32 bits.
std::optional<std::uint32_t> archiveNumber(const std::string& path);

// The archives among `paths` by number. Of two archives with the same number the first counts.
// Throws what archiveNumber throws.
std::map<std::uint32_t, std::string> archivesByNumber(const std::vector<std::string>& paths);

}  // namespace vek::log
