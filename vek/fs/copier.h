// vek::fs::Copier: copies the contents of one file to another.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/fs/copy_options.h"
#include "vek/fs/stream_file.h"

namespace vek::fs {

// A file object as source or target is treated in one of two ways:
//
//  - Between two file objects both are borrowed: they stay open, and the caller's.
//  - If the other side is a path, the file object is taken over and closed at the end, also after a
//    failure.
//
// Only contents are copied: no times, attributes, access list or further data streams. Source and
// target must be different files: the target is emptied before anything is read.
//
// All forms throw what opening, reading, writing, seeking and closing a file throws:
// NoSuchFileError, FileAccessError and FsError if a path can't be opened (FsError with 80,
// ERROR_FILE_EXISTS, for an existing target without `overwriteTarget`), OsError for every failure
// after that, which may leave a part of the contents in the target; UsageError if the buffer is
// null. At the end the source is closed, then the target. While an exception passes, errors of
// closing are dropped.
//
// A Copier can be used again. Not thread-safe.
class Copier : public NoCopy {
  public:
    // `chosen`: CopyOptions.
    explicit Copier(std::uint32_t chosen = 0) : options(chosen) {}

    // Copies through `size` bytes at `buffer`, which must outlive the Copier's use. Ignored once a
    // buffer has been set, or allocated: the first copy without a buffer allocates one of 512
    // bytes, deliberately. 64 KB copy large files four times as fast. A size of 0 counts as no
    // buffer.
    void setBuffer(char* buffer, std::uint32_t size);

    // The security attributes for targets created by path; `*given` is read at each copy. Neither
    // pointer is owned. Null, the default, means none.
    void setAttributes(SECURITY_ATTRIBUTES* const* given) { givenAttributes = given; }

    // Copies all of `from` over all of `to`; both positions are moved to the start first.
    void copy(const File& from, const File& to);

    // Copies `from`, from its current position on, to the file `to`. `from` is closed.
    void copy(File&& from, const std::string& to);

    // Opens the source first; the target isn't touched if that fails. IsASymlinkError from opening
    // the source ends the copy without an error.
    void copy(const std::string& from, const std::string& to);

    // Copies over all of `to`, whose position is moved to the start first. `to` is closed, unless
    // the source can't be opened.
    void copy(const std::string& from, File&& to);

  private:
    bool openSource(const std::string& path);
    void openTarget(const std::string& path);
    void takeAttributes();
    void emptyTarget();
    void transfer();
    char* readyBuffer();
    void finishSource();
    void finishTarget();
    static void finishQuietly(Copier* copier);
    template <class Step>
    void run(Step step);

    StreamFile source;
    StreamFile target;
    bool sourceBorrowed = false;
    bool targetBorrowed = false;
    std::uint32_t options;
    char* userBuffer = nullptr;
    std::unique_ptr<char[]> ownBuffer;
    std::uint32_t bufferSize = 0;
    SECURITY_ATTRIBUTES* attributes = nullptr;
    SECURITY_ATTRIBUTES* const* givenAttributes = nullptr;
};

}  // namespace vek::fs
