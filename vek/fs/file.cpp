#include "vek/fs/file.h"

#include <iostream>
#include <utility>

#include "vek/exception.h"
#include "vek/fs/system_path.h"

namespace vek::fs {

namespace {

DWORD desiredAccess(std::uint32_t access) {
    switch (access) {
        case Access::read:
            return GENERIC_READ;
        case Access::write:
            return GENERIC_WRITE;
        default:
            return GENERIC_READ | GENERIC_WRITE;
    }
}

DWORD disposition(std::uint32_t flags) {
    if ((flags & mustBeNew) != 0) {
        return CREATE_NEW;
    }
    if ((flags & replace) != 0) {
        return CREATE_ALWAYS;
    }
    return (flags & createIfMissing) != 0 ? OPEN_ALWAYS : OPEN_EXISTING;
}

[[noreturn]] void throwOpenError(const std::string& path, DWORD error) {
    switch (error) {
        case ERROR_ACCESS_DENIED:
            throw FileAccessError(path, error);
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            throw NoSuchFileError(path, error);
        default:
            throw FsError(path, error);
    }
}

}  // namespace

File::~File() {
    try {
        File::close();
    } catch (const Exception& error) {
        std::cerr << "Error closing file:" << error.printableText();
    }
}

File::File(File&& other) noexcept : handle(other.release()) {}

File& File::operator=(File&& other) {
    if (this != &other) {
        close();
        handle = other.release();
    }
    return *this;
}

void File::open(const std::string& path, std::uint32_t access, std::uint32_t flags,
                SECURITY_ATTRIBUTES* attributes) {
    close();
    handle = CreateFileA(systemPath(path), desiredAccess(access),
                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, attributes,
                         disposition(flags), FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        throwOpenError(path, GetLastError());
    }
}

void File::close() {
    const HANDLE closing = release();
    if (closing != INVALID_HANDLE_VALUE && CloseHandle(closing) == 0) {
        throw OsError(GetLastError());
    }
}

void File::adopt(HANDLE adopted) {
    close();
    handle = adopted;
}

HANDLE File::release() {
    return std::exchange(handle, INVALID_HANDLE_VALUE);
}

}  // namespace vek::fs
