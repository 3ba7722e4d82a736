// Files for the tests: small helpers straight on the system's calls, so that they prove the
// framework's file classes instead of leaning on them.
#pragma once

#include <functional>
#include <string>

namespace support {

// The whole contents of `path`. Throws vek::FsError.
std::string readFile(const std::string& path);

// Makes or replaces `path`. Throws vek::FsError.
void writeFile(const std::string& path, const std::string& contents);

// Makes or replaces `to`. Throws vek::FsError.
void copyFile(const std::string& from, const std::string& to);

// Makes one directory. Throws vek::FsError.
void makeDirectory(const std::string& path);

// True for a file and for a directory.
bool exists(const std::string& path);

// True for a file that can be read at this moment: nobody holds it to themselves.
bool isReadable(const std::string& path);

// The directory for temporary files, without a separator at its end.
std::string temporaryDirectory();

// Removes `directory` with all that is in it, trying again for up to `limitMs` milliseconds, since
// the executable of a process that is just ending can't be deleted yet. False if something stays.
bool removeTree(const std::string& directory, unsigned limitMs);

// Looks every 10 milliseconds, up to `limitMs` milliseconds, whether `condition` holds. False if it
// never did.
bool waitUntil(const std::function<bool()>& condition, unsigned limitMs);

}  // namespace support
