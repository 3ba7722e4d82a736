#include "vek/proc/text_stream.h"

#include <cstdint>
#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <io.h>

#include "vek/exception.h"

namespace vek::proc {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using TextFile = std::unique_ptr<std::FILE, CloseFile>;

TextFile openText(fs::StreamFile& stream) {
    const auto handle = reinterpret_cast<std::intptr_t>(stream.nativeHandle());
    const int descriptor = _open_osfhandle(handle, _O_RDONLY | _O_TEXT);
    if (descriptor == -1) {
        throw OsError(ERROR_TOO_MANY_OPEN_FILES);
    }
    // The descriptor owns the handle now.
    stream.release();
    TextFile file(_fdopen(descriptor, "r"));
    if (file == nullptr) {
        _close(descriptor);
        throw OsError(ERROR_TOO_MANY_OPEN_FILES);
    }
    return file;
}

}  // namespace

std::string readText(fs::StreamFile& stream) {
    const TextFile file = openText(stream);
    std::string text;
    for (int ch = std::getc(file.get()); ch != EOF; ch = std::getc(file.get())) {
        text += static_cast<char>(ch);
    }
    if (!text.empty() && text.back() != '\n') {
        text += '\n';
    }
    return text;
}

}  // namespace vek::proc
