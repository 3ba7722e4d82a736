// vek::log::TextBuffer: the buffer of a logger's stream. Differs from std::stringbuf in that it can
// be emptied for nothing and shows its text without a copy.
#pragma once

#include <cstddef>
#include <streambuf>
#include <string_view>
#include <vector>

#include "vek/base/no_copy.h"

namespace vek::log {

// For output only. The position can be read and set within the text, as by std::ostream::tellp and
// seekp. Growing throws std::bad_alloc, which a stream turns into its bad flag. Not thread-safe.
class TextBuffer : public std::streambuf, public NoCopy {
  public:
    // Empties the buffer. Keeps its memory.
    void clear();

    // The text, up to the furthest position that was written. Valid until the next change.
    std::string_view view() const { return {pbase(), size()}; }

  protected:
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int_type overflow(int_type character) override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir from,
                     std::ios_base::openmode which) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

  private:
    std::size_t size() const;
    void grow(std::size_t leastRoom);
    void setPosition(std::size_t position);

    std::vector<char> memory;
    // The size when the position was last set.
    std::size_t furthest = 0;
};

}  // namespace vek::log
