// Files for the tests: functions that call the system directly. Tests of the framework's file
// classes can therefore use them too.
#pragma once

#include <functional>
#include <string>

namespace support {

// Returns the whole contents of `path`. Throws vek::FsError.
std::string readFile(const std::string& path);

// Creates or replaces `path`. Throws vek::FsError.
void writeFile(const std::string& path, const std::string& contents);

// Copies `from` to `to`, which it creates or replaces. Throws vek::FsError.
void copyFile(const std::string& from, const std::string& to);

// Creates one directory. Throws vek::FsError.
void makeDirectory(const std::string& path);

// Returns true if there is a file or a directory `path`.
bool exists(const std::string& path);

// Returns true if `path` can be opened for reading now: no process has it open without sharing.
bool isReadable(const std::string& path);

// Returns the directory for temporary files, without a separator at its end.
std::string temporaryDirectory();

// Removes `directory` with everything in it. Retries for up to `limitMs` milliseconds, as the
// executable of a process that is ending can't be deleted yet. Returns false if something is left.
bool removeTree(const std::string& directory, unsigned limitMs);

// Checks `condition` every 10 milliseconds for up to `limitMs` milliseconds. Returns false if it
// was never true.
bool waitUntil(const std::function<bool()>& condition, unsigned limitMs);

}  // namespace support
