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

// The four ways to copy differ in what becomes of a file object:
//
// - Between two file objects, both are borrowed: they stay open and the caller's.
// - Where the other side is a path, the file object is taken over, and closed at the end, also
// after
//   a failure.
//
// Source and target have to be different files: a target is emptied before anything is read.
//
// All throw what opening, reading, writing, moving in and closing a file throws: NoSuchFileError,
// FileAccessError and FsError if a path can't be opened (FsError with 80, ERROR_FILE_EXISTS, for a
// target that exists, without `overwriteTarget`), OsError for everything behind that, which may
// leave a part of the contents in the target. UsageError if the buffer is null. At the end the
// source is closed, then the target; while an exception passes, a failure of that is dropped.
//
// A Copier can be used again. Not to be used by two threads at once.
class Copier : public NoCopy {
  public:
    // `chosen`: CopyOptions.
    explicit Copier(std::uint32_t chosen = 0) : options(chosen) {}

    // Copies through `size` bytes at `buffer`, which has to live as long as the Copier is used.
    // Ignored once a buffer has been set, or made at the first copy, which makes one of 512 bytes
    // if there is none. A size of 0 counts as no buffer.
    void setBuffer(char* buffer, std::uint32_t size);

    // Where the security attributes for targets that are made by path are found, at the time of
    // each copy. Neither is owned. Null, as at first, means none.
    void setAttributes(SECURITY_ATTRIBUTES* const* given) { givenAttributes = given; }

    // Copies all of `from` over all of `to`; both positions are moved to the start first.
    void copy(const File& from, const File& to);

    // Copies `from`, from where it stands, to a new file. `from` is closed.
    void copy(File&& from, const std::string& to);

    // The target is opened only once the source is. A source that is a symbolic link where none is
    // followed (IsASymlinkError) ends the copy without an error.
    void copy(const std::string& from, const std::string& to);

    // Copies over all of `to`, whose position is moved to the start first. `to` is closed, unless
    // the source couldn't be opened.
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
