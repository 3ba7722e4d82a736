#include "vek/log/text_buffer.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

namespace vek::log {

namespace {

constexpr std::size_t firstSize = 512;

}  // namespace

void TextBuffer::clear() {
    furthest = 0;
    setPosition(0);
}

std::streamsize TextBuffer::xsputn(const char* text, std::streamsize count) {
    if (count > epptr() - pptr()) {
        grow(static_cast<std::size_t>(count));
    }
    if (count > 0) {
        std::memcpy(pptr(), text, static_cast<std::size_t>(count));
        pbump(static_cast<int>(count));
    }
    return count;
}

TextBuffer::int_type TextBuffer::overflow(int_type character) {
    if (traits_type::eq_int_type(character, traits_type::eof())) {
        return traits_type::not_eof(character);
    }
    const char byte = traits_type::to_char_type(character);
    xsputn(&byte, 1);
    return character;
}

TextBuffer::pos_type TextBuffer::seekoff(off_type offset, std::ios_base::seekdir from,
                                         std::ios_base::openmode which) {
    const off_type end = static_cast<off_type>(size());
    const off_type start = from == std::ios_base::beg   ? 0
                           : from == std::ios_base::cur ? pptr() - pbase()
                                                        : end;
    if ((which & std::ios_base::out) == 0 || offset < -start || offset > end - start) {
        return pos_type(off_type(-1));
    }
    furthest = size();
    setPosition(static_cast<std::size_t>(start + offset));
    return pos_type(start + offset);
}

TextBuffer::pos_type TextBuffer::seekpos(pos_type position, std::ios_base::openmode which) {
    return seekoff(off_type(position), std::ios_base::beg, which);
}

std::size_t TextBuffer::size() const {
    return std::max(furthest, static_cast<std::size_t>(pptr() - pbase()));
}

// Makes room for `leastRoom` characters at the position. A size beyond `int` can't be the position
// of a stream buffer.
void TextBuffer::grow(std::size_t leastRoom) {
    const std::size_t position = static_cast<std::size_t>(pptr() - pbase());
    if (leastRoom > INT_MAX - position) {
        throw std::bad_alloc();
    }
    furthest = size();
    memory.resize(std::max({firstSize, 2 * memory.size(), position + leastRoom}));
    setPosition(position);
}

void TextBuffer::setPosition(std::size_t position) {
    setp(memory.data(), memory.data() + memory.size());
    pbump(static_cast<int>(position));
}

}  // namespace vek::log
