#include "vek/auxiliary/line_parser.h"

#include <istream>

#include "vek/exception.h"
#include "vek/fs/stream_file.h"
#include "vek/fs/text_read_buffer.h"

namespace vek::aux {

void LineParser::parse(const std::string& path, LineCallback& callback) {
    fs::StreamFile file;
    file.open(path, fs::Access::read);
    fs::TextReadBuffer buffer(file.nativeHandle());
    std::istream stream(&buffer);
    callback.parser = this;
    callback.parseStart();
    std::string line;
    do {
        std::getline(stream, line);
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
