// vek::fs::File: the owner of a Win32 file handle.
#pragma once

#include <cstdint>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace vek::fs {

// What a file is opened for, to be written as Access::read. Any other number means readWrite.
struct Access {
    enum Number : std::uint32_t { read = 0, write = 1, readWrite = 2 };
};

// How File::open treats a file that exists or doesn't; the bits are combined by |. Without one, the
// file must exist.
enum OpenFlags : std::uint32_t {
    createIfMissing = 1,
    mustBeNew = 2,  // wins over the other two
    replace = 4,    // wins over createIfMissing
    noFollow = 8,   // not looked at: no path is a symbolic link here
};

// Not to be used by two threads at once.
class File : public NoCopy {
  public:
    File() = default;

    // Closes. A failure of that is reported on std::cerr.
    virtual ~File();

    // The file moves to the new object; `other` is closed afterwards.
    File(File&& other) noexcept;

    // Closes what is open here, by the virtual `close`, and takes over the file of `other`, which
    // is closed afterwards. Nothing happens on an assignment to itself. Throws what `close` throws;
    // `other` then keeps its file.
    File& operator=(File&& other);

    // Opens `path` for `access`, one of Access; a file that is open already is closed first, by the
    // virtual `close`. `flags` are OpenFlags. Others may
    // read, write, rename and delete the file meanwhile. `attributes` may be null; they are used
    // for a new file only. The handle is not inherited unless they say so. Stands on CreateFileA.
    //
    // Throws NoSuchFileError for the system's errors 2 and 3, FileAccessError for 5, FsError for
    // any other, and with 123 (ERROR_INVALID_NAME) for a path with a zero byte in it; and what
    // `close` throws.
    void open(const std::string& path, std::uint32_t access, std::uint32_t flags = 0,
              SECURITY_ATTRIBUTES* attributes = nullptr);

    // Closes; nothing happens if nothing is open. Afterwards it is closed in any case. Stands on
    // CloseHandle. Throws OsError.
    virtual void close();

    bool isOpen() const { return handle != INVALID_HANDLE_VALUE; }

    // The handle, still owned by this object; INVALID_HANDLE_VALUE when closed.
    HANDLE nativeHandle() const { return handle; }

    // Closes what is open here, by the virtual `close`, and owns `adopted` from now on, which may
    // be INVALID_HANDLE_VALUE. Throws what `close` throws; `adopted` then stays the caller's.
    void adopt(HANDLE adopted);

    // Gives up the handle without closing it: it is the caller's. INVALID_HANDLE_VALUE if nothing
    // is open.
    HANDLE release();

  protected:
    HANDLE handle = INVALID_HANDLE_VALUE;
};

}  // namespace vek::fs
