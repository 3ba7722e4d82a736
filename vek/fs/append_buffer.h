// vek::fs::AppendBuffer: lets a C++ output stream append text to a file.
#pragma once

#include <array>
#include <cstddef>
#include <streambuf>
#include <string>

#include "vek/fs/file.h"

namespace vek::fs {

// What std::filebuf is for a text stream that appends, but for a file that others may read, write,
// rename and delete meanwhile, and that no child process inherits. Each line feed is written as
// CR LF.
//
// A stream that uses it sets its bad flag if a write or a flush fails, and at every write without
// an open file. The text in the buffer is lost then.
//
// Text stays in the buffer until the stream is flushed, and is then written by one WriteFile at the
// file's end of that moment; only text beyond `capacity` bytes takes several. So short lines of
// several processes don't mix. Allocates nothing. Not thread-safe.
class AppendBuffer : public std::streambuf {
  public:
    // Size of the buffer in bytes, line ends counted as CR LF.
    static constexpr std::size_t capacity = 16384;

    AppendBuffer() = default;
    // Closes.
    ~AppendBuffer() override;
    AppendBuffer(const AppendBuffer&) = delete;
    AppendBuffer& operator=(const AppendBuffer&) = delete;

    // Closes an open file and opens `path`, which is created if it is missing and never truncated.
    // Returns false if it can't be opened. Calls CreateFileA with FILE_APPEND_DATA. Throws nothing
    // but std::bad_alloc.
    bool open(const std::string& path);

    // Writes the buffer and closes the file, which is closed afterwards in any case. Returns false
    // if no file is open, or if one of the two fails. Throws nothing.
    bool close();

    // Whether a file is open. Throws nothing.
    bool isOpen() const { return file.isOpen(); }

  protected:
    // Returns the number of characters of `text` that were taken.
    std::streamsize xsputn(const char* text, std::streamsize size) override;
    int_type overflow(int_type character) override;
    int sync() override;
    // Returns the position of the next byte, which is the file's size unless others write to it.
    // Seeking isn't supported: any other offset than 0 from the current position returns -1, and so
    // does a buffer without a file.
    pos_type seekoff(off_type offset, std::ios_base::seekdir from,
                     std::ios_base::openmode which) override;

  private:
    bool append(const char* bytes, std::size_t size);
    bool writeOut();

    File file;
    std::size_t used = 0;
    std::array<char, capacity> pending;
};

}  // namespace vek::fs
