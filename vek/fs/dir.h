// vek::fs::Dir: iterates over the entries of a directory.
#pragma once

#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/fs/operations.h"

namespace vek::fs {

// Entries come in the system's order, without "." and "..". Not thread-safe.
class Dir : public NoCopy {
  public:
    // Opens nothing.
    Dir() = default;

    // Closes. A failure is reported on std::cerr.
    ~Dir();

    // Closes what is open and opens `path`. The first call of `next` moves to the first entry. An
    // empty path means the root of the current drive. Calls FindFirstFileA with the path and "\*".
    // Throws FsError, also if `path` is no directory, and what `close` throws.
    void open(const std::string& path);

    // Closes; does nothing if nothing is open. It is closed afterwards even if this throws. Calls
    // FindClose. Throws OsError.
    void close();

    // Moves to the next entry. Returns false behind the last one, and at every later call. Calls
    // FindNextFileA. Throws UsageError if nothing is open, and OsError.
    bool next();

    // The name of the current entry, without its directory; empty if there is none. Characters that
    // the ANSI code page doesn't have are replaced by "?" or by similar ones: such a name leads to
    // no entry, or to another.
    std::string name() const;

    // The file attributes (FILE_ATTRIBUTE_...) of the current entry as the search returned them,
    // without a system call; for a link those of the link. Throws UsageError without a current
    // entry.
    DWORD attributes() const;

    // Opens the current entry and returns its data. Throws UsageError without a current entry, and
    // what the `stat` of vek/fs/operations.h throws.
    Stat stat() const;

    // Opens the current entry, a directory, in `dir`, which may be this object. Throws UsageError
    // without a current entry, and what `open` throws.
    void openEntry(Dir& dir) const;

    // Whether the current name is "." or "..". Never true after `next`; between `open` and the
    // first `next` it is about the entry that the system found first.
    bool isDotEntry() const;

  protected:
    HANDLE findHandle = INVALID_HANDLE_VALUE;

  private:
    bool hasEntry() const;
    void requireEntry() const;
    std::string entryPath() const;

    std::string path;
    // The entry of FindFirstFileA hasn't been returned by `next` yet, so it isn't the current one.
    bool firstPending = false;
    WIN32_FIND_DATAA entry = {};
};

}  // namespace vek::fs
