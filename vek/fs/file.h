// vek::fs::File: the owner of a Win32 file handle.
#pragma once

#include <cstdint>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace vek::fs {

// What a file is opened for, written as Access::read. Any other number means readWrite.
struct Access {
    // The values.
    enum Number : std::uint32_t { read = 0, write = 1, readWrite = 2 };
};

// How File::open treats existing and missing files; bits, combined by |. Without any of the first
// three the file must exist.
enum OpenFlags : std::uint32_t {
    createIfMissing = 1,
    mustBeNew = 2,  // wins over the other two
    replace = 4,    // truncates an existing file; wins over createIfMissing
    noFollow = 8,   // ignored: links are always followed
};

// Not thread-safe.
class File : public NoCopy {
  public:
    File() = default;

    // Closes. A failure is reported on std::cerr.
    virtual ~File();

    // Takes over the file of `other`, which is closed afterwards.
    File(File&& other) noexcept;

    // Closes what is open here, by the virtual `close`, and takes over the file of `other`, which
    // is closed afterwards. Assignment to itself does nothing. Throws what `close` throws; `other`
    // then keeps its file.
    File& operator=(File&& other);

    // Closes what is open here, by the virtual `close`, and opens `path` for `access`, one of
    // Access. `flags`: OpenFlags. Others may read, write, rename and delete the file meanwhile.
    // `attributes` apply to a new file only and may be null; the handle isn't inherited unless they
    // say so. Calls CreateFileA.
    //
    // Throws NoSuchFileError for the system's errors 2 and 3, FileAccessError for 5, FsError for
    // any other, and with 123 (ERROR_INVALID_NAME) for a path with a zero byte; and what `close`
    // throws. Error 5 is also what a directory gives, a file that is being deleted, and, with
    // `replace`, a read-only, hidden or system file.
    void open(const std::string& path, std::uint32_t access, std::uint32_t flags = 0,
              SECURITY_ATTRIBUTES* attributes = nullptr);

    // Closes; does nothing if nothing is open. It is closed afterwards even if this throws. Calls
    // CloseHandle. Throws OsError.
    virtual void close();

    bool isOpen() const { return handle != INVALID_HANDLE_VALUE; }  // without a system call

    // The handle, still owned by this object; INVALID_HANDLE_VALUE when closed.
    HANDLE nativeHandle() const { return handle; }

    // Closes what is open here, by the virtual `close`, and takes ownership of `adopted`, which may
    // be INVALID_HANDLE_VALUE. Throws what `close` throws; `adopted` then stays the caller's.
    void adopt(HANDLE adopted);

    // Returns the handle, which is the caller's from now on, without closing it.
    // INVALID_HANDLE_VALUE if nothing is open.
    HANDLE release();

  protected:
    HANDLE handle = INVALID_HANDLE_VALUE;
};

}  // namespace vek::fs
