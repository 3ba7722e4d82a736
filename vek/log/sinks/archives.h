// The archives of a log file: their names, and which of the files beside a log file they are.
//
// A log file "x.log" has the archives "x.log.old.1", "x.log.old.2" and so on, or, compressed,
// "x.log.old.1.gz". The numbers start at 1, and a higher number is older.
//
// None touches the disk. Safe from any thread on separate strings.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vek::log {

// The path of archive `number` of the log file `path`. Throws nothing but std::bad_alloc.
std::string archiveName(const std::string& path, std::uint32_t number, bool compressed);

// The pattern that matches all archives of `path`, and other files too. Throws nothing but
// std::bad_alloc.
std::string archivePattern(const std::string& path);

// Whether the last two characters of `archive` are "gz"; deliberately not the three of ".gz".
bool isCompressedArchive(const std::string& archive);

// The number of the archive at `path`, or nothing if it isn't one. The whole path is looked at: it
// is split at its dots, those of directories included, and empty pieces don't count; once a last
// "gz" is taken away, at least three pieces are left, the last of which is the number, in decimal
// digits, and the one ahead of it "old".
//
// Throws std::out_of_range, which is no vek::Exception, for a number beyond 32 bits.
std::optional<std::uint32_t> archiveNumber(const std::string& path);

// The archives among `paths` by their numbers. Of two with one number the first is taken, and the
// other left alone. Throws as archiveNumber does.
std::map<std::uint32_t, std::string> archivesByNumber(const std::vector<std::string>& paths);

}  // namespace vek::log
