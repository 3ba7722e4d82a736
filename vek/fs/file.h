// vek::fs::File: the owner of a Win32 file handle.
#pragma once

#include <cstdint>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace vek::fs {

// What a file is opened for.
enum class Access { read, write, readWrite };

// How File::open treats a file that exists or doesn't; the bits are combined by |. Without one, the
// file must exist.
enum OpenFlags : std::uint32_t {
    createIfMissing = 1,
    mustBeNew = 2,  // wins over the other two
    replace = 4,    // wins over createIfMissing
};

// Not to be used by two threads at once.
class File : public NoCopy {
  public:
    File() = default;

    // Closes. A failure of that is reported on std::cerr.
    virtual ~File();

    // Opens `path`; a file that is open already is closed first, by the virtual `close`. Others may
    // read, write, rename and delete the file meanwhile. `attributes` may be null; they are used
    // for a new file only. The handle is not inherited unless they say so. Stands on CreateFileA.
    //
    // Throws NoSuchFileError for the system's errors 2 and 3, FileAccessError for 5, FsError for
    // any other; and what `close` throws.
    void open(const std::string& path, Access access, std::uint32_t flags = 0,
              SECURITY_ATTRIBUTES* attributes = nullptr);

    // Closes; nothing happens if nothing is open. Afterwards it is closed in any case. Stands on
    // CloseHandle. Throws OsError.
    virtual void close();

    bool isOpen() const { return handle != INVALID_HANDLE_VALUE; }

    // The handle, still owned by this object; INVALID_HANDLE_VALUE when closed.
    HANDLE nativeHandle() const { return handle; }

  protected:
    HANDLE handle = INVALID_HANDLE_VALUE;
};

}  // namespace vek::fs
