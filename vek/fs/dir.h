// vek::fs::Dir: goes through the entries of a directory.
#pragma once

#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/fs/operations.h"

namespace vek::fs {

// Entries come in the system's order, "." and ".." left out. Not to be used by two threads at once.
class Dir : public NoCopy {
  public:
    // Nothing is open yet.
    Dir() = default;

    // Closes. A failure of that is reported on std::cerr.
    ~Dir();

    // Opens `path`; what is open already is closed first. The first entry is reached by `next`. An
    // empty path means the root of the current drive. Stands on FindFirstFileA with all entries as
    // its pattern. Throws FsError, also for what isn't a directory, and what `close` throws.
    void open(const std::string& path);

    // Closes; nothing happens if nothing is open. Afterwards it is closed in any case. Stands on
    // FindClose. Throws OsError.
    void close();

    // Goes to the next entry; false behind the last, and from then on. Stands on FindNextFileA.
    // Throws UsageError if nothing is open, and OsError.
    bool next();

    // The name of the current entry, without its directory; empty if there is none.
    std::string name() const;

    // What the system tells of the current entry. Throws UsageError without a current entry, and
    // what the `stat` of vek/fs/operations.h throws.
    Stat stat() const;

    // Opens the current entry, a directory, in `dir`, which may be this object. Throws UsageError
    // without a current entry, and what `open` throws.
    void openEntry(Dir& dir) const;

    // Whether the name at hand is "." or "..". Never the case behind `next`; between `open` and the
    // first `next` it tells of the entry that the system has found first.
    bool isDotEntry() const;

  protected:
    HANDLE findHandle = INVALID_HANDLE_VALUE;

  private:
    bool hasEntry() const;
    std::string entryPath() const;

    std::string path;
    // The entry that FindFirstFileA gave hasn't been delivered yet, so it is nobody's current one.
    bool firstPending = false;
    WIN32_FIND_DATAA entry = {};
};

}  // namespace vek::fs
