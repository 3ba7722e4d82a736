#include "vek/fs/append_buffer.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "vek/exception.h"
#include "vek/fs/system_path.h"
#include "vek/os/file.h"

namespace vek::fs {

AppendBuffer::~AppendBuffer() {
    close();
}

bool AppendBuffer::open(const std::string& path) {
    if (isOpen()) {
        close();
    }
    try {
        file.adopt(CreateFileA(systemPath(path), FILE_APPEND_DATA,
                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                               OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    } catch (const FsError&) {
        return false;  // the path has a zero byte in it
    }
    if (isOpen()) {
        // So that the position is the file's size from the beginning on. Fails for a device, which
        // has none.
        SetFilePointerEx(file.nativeHandle(), LARGE_INTEGER(), nullptr, FILE_END);
    }
    return isOpen();
}

bool AppendBuffer::close() {
    if (!isOpen()) {
        return false;
    }
    const bool written = writeOut();
    return CloseHandle(file.release()) != 0 && written;
}

std::streamsize AppendBuffer::xsputn(const char* text, std::streamsize size) {
    const char* const end = text + size;
    const char* rest = text;
    while (rest != end) {
        const std::size_t left = static_cast<std::size_t>(end - rest);
        const void* const lineEnd = std::memchr(rest, '\n', left);
        const char* const stop = lineEnd != nullptr ? static_cast<const char*>(lineEnd) : end;
        if (!append(rest, static_cast<std::size_t>(stop - rest))) {
            break;
        }
        rest = stop;
        if (rest != end) {
            if (!append("\r\n", 2)) {
                break;
            }
            ++rest;
        }
    }
    return rest - text;
}

AppendBuffer::int_type AppendBuffer::overflow(int_type character) {
    if (traits_type::eq_int_type(character, traits_type::eof())) {
        return sync() == 0 ? traits_type::not_eof(character) : traits_type::eof();
    }
    const char byte = traits_type::to_char_type(character);
    return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
}

int AppendBuffer::sync() {
    return isOpen() && writeOut() ? 0 : -1;
}

AppendBuffer::pos_type AppendBuffer::seekoff(off_type offset, std::ios_base::seekdir from,
                                             std::ios_base::openmode) {
    if (!isOpen() || offset != 0 || from != std::ios_base::cur) {
        return pos_type(off_type(-1));
    }
    const std::int64_t position = os::filePosition(file.nativeHandle());
    return pos_type(position < 0 ? off_type(-1) : position + static_cast<off_type>(used));
}

bool AppendBuffer::append(const char* bytes, std::size_t size) {
    if (!isOpen()) {
        return false;
    }
    while (size != 0) {
        if (used == capacity && !writeOut()) {
            return false;
        }
        const std::size_t part = std::min(size, capacity - used);
        std::memcpy(pending.data() + used, bytes, part);
        used += part;
        bytes += part;
        size -= part;
    }
    return true;
}

bool AppendBuffer::writeOut() {
    const char* bytes = pending.data();
    for (std::size_t left = std::exchange(used, 0); left != 0;) {
        DWORD written = 0;
        if (WriteFile(file.nativeHandle(), bytes, static_cast<DWORD>(left), &written, nullptr) ==
                0 ||
            written == 0) {
            return false;
        }
        bytes += written;
        left -= written;
    }
    return true;
}

}  // namespace vek::fs
