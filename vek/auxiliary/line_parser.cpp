#include "vek/auxiliary/line_parser.h"

#include <istream>
#include <string_view>

#include "vek/base/windows.h"
#include "vek/fs/stream_file.h"
#include "vek/fs/text_read_buffer.h"

namespace vek::aux {

namespace {

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view utf16Marks[] = {"\xFF\xFE", "\xFE\xFF"};

void removeByteOrderMark(const std::string& path, std::string& firstLine) {
    for (const std::string_view mark : utf16Marks) {
        if (firstLine.starts_with(mark)) {
            throw FileEncodingError(path);
        }
    }
    if (firstLine.starts_with(utf8Mark)) {
        firstLine.erase(0, utf8Mark.size());
    }
}

}  // namespace

FileEncodingError::FileEncodingError(const std::string& failedPath)
    : ExceptionOf(failedPath, ERROR_NO_UNICODE_TRANSLATION) {}

std::string FileEncodingError::description() const {
    return text + ": The file is in UTF-16. Save it in the system's ANSI code page.";
}

void LineParser::parse(const std::string& path, LineCallback& callback) {
    fs::StreamFile file;
    file.open(path, fs::Access::read);
    fs::TextReadBuffer buffer(file.nativeHandle());
    std::istream stream(&buffer);
    callback.parser = this;
    callback.parseStart();
    std::string line;
    bool isFirst = true;
    do {
        std::getline(stream, line);
        if (isFirst) {
            removeByteOrderMark(path, line);
            isFirst = false;
        }
        if (!stream.good() && (!stream.eof() || line.empty())) {
            break;
        }
        if (!callback.processLine(line)) {
            break;
        }
    } while (!stream.eof());
    if (stream.bad()) {
        throw FsError(path, buffer.error());
    }
    callback.parseEnd();
    callback.parser = nullptr;
}

}  // namespace vek::aux
