// vek::fs::AppendBuffer: lets a C++ output stream add text to the end of a file.
#pragma once

#include <array>
#include <cstddef>
#include <streambuf>
#include <string>

#include "vek/fs/file.h"

namespace vek::fs {

// What std::filebuf is for an appending text stream, but for a file that others may read, write,
// rename and delete meanwhile, and that no child process inherits. Each line feed reaches the file
// as CR LF.
//
// A stream that writes through it fails as a file stream does: its bad flag is set by a write or a
// flush that fails, also by every write without an open file. What was held back is lost then.
//
// What is written is held back until the stream is flushed, and is then one WriteFile, at the end
// that the file has at that moment; only text beyond `capacity` bytes is written in several. So
// short lines of several processes don't mix. Allocates nothing.
//
// Not to be used by two threads at once.
class AppendBuffer : public std::streambuf {
  public:
    // The bytes that are held back at most, as they stand in the file.
    static constexpr std::size_t capacity = 16384;

    AppendBuffer() = default;
    // Closes.
    ~AppendBuffer() override;
    AppendBuffer(const AppendBuffer&) = delete;
    AppendBuffer& operator=(const AppendBuffer&) = delete;

    // Opens `path`, which is made if it is missing, and never cut. A file that is open already is
    // closed first. False if it can't be opened. Stands on CreateFileA with FILE_APPEND_DATA.
    // Throws nothing but std::bad_alloc.
    bool open(const std::string& path);

    // Writes what is held back and closes. False if nothing is open, or if one of the two fails;
    // the file is closed afterwards in any case. Throws nothing.
    bool close();

    bool isOpen() const { return file.isOpen(); }

  protected:
    // The count of characters of `text` that were taken.
    std::streamsize xsputn(const char* text, std::streamsize size) override;
    int_type overflow(int_type character) override;
    int sync() override;
    // Tells where the next byte goes, which is the file's size unless others write to it; moving
    // there isn't provided for, so that any other offset than 0 from the current place gives -1,
    // as does a buffer without a file.
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
