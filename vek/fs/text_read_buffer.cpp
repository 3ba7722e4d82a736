#include "vek/fs/text_read_buffer.h"

#include <ios>

#include <fcntl.h>
#include <io.h>

#include "vek/exception.h"

namespace vek::fs {

TextReadBuffer::TextReadBuffer(HANDLE file) {
    HANDLE own = nullptr;
    if (DuplicateHandle(GetCurrentProcess(), file, GetCurrentProcess(), &own, 0, FALSE,
                        DUPLICATE_SAME_ACCESS) == 0) {
        throw OsError(GetLastError());
    }
    descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(own), _O_RDONLY | _O_TEXT);
    if (descriptor == -1) {
        CloseHandle(own);
        throw OsError(ERROR_TOO_MANY_OPEN_FILES);
    }
}

TextReadBuffer::~TextReadBuffer() {
    _close(descriptor);
}

TextReadBuffer::int_type TextReadBuffer::underflow() {
    const int count = _read(descriptor, buffer.data(), static_cast<unsigned>(buffer.size()));
    if (count < 0) {
        // Kept at once: throwing makes system calls of its own.
        readError = GetLastError();
        throw std::ios_base::failure("read");  // the stream turns it into its bad bit
    }
    if (count == 0) {
        return traits_type::eof();
    }
    setg(buffer.data(), buffer.data(), buffer.data() + count);
    return traits_type::to_int_type(buffer[0]);
}

}  // namespace vek::fs
