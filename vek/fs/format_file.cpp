#include "vek/fs/format_file.h"

#include <istream>

#include "vek/base/text.h"
#include "vek/exception.h"
#include "vek/fs/current_directory.h"
#include "vek/fs/operations.h"
#include "vek/fs/stream_file.h"
#include "vek/fs/text_read_buffer.h"

namespace vek {

namespace {

// Two different texts may lead to one file, by the case of a letter to begin with.
bool isSameFile(const std::string& a, const std::string& b) {
    if (fs::expand(a) == fs::expand(b)) {
        return true;
    }
    try {
        const fs::Stat first = fs::stat(a);
        const fs::Stat second = fs::stat(b);
        return first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
               first.nFileIndexHigh == second.nFileIndexHigh &&
               first.nFileIndexLow == second.nFileIndexLow;
    } catch (const Exception&) {
        return false;  // one of them doesn't exist
    }
}

void openOrTell(fs::StreamFile& file, const std::string& path, std::uint32_t access,
                std::uint32_t flags, const char* purpose) {
    try {
        file.open(path, access, flags);
    } catch (const FsError& error) {
        throw FsError("Unable to open '" + path + "' for " + purpose + ".", error.osError().code());
    }
}

void writeAll(fs::StreamFile& file, const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
        done += file.write(text.data() + done, static_cast<std::uint32_t>(text.size() - done));
    }
}

}  // namespace

std::size_t formatFile(const std::string& source, const std::string& target,
                       const std::map<std::string, std::string>& values) {
    if (isSameFile(source, target)) {
        throw UsageError("formatFile: Both source and dest point to the same file.");
    }
    fs::StreamFile in;
    openOrTell(in, source, fs::Access::read, 0, "reading");
    fs::StreamFile out;
    openOrTell(out, target, fs::Access::write, fs::createIfMissing | fs::replace, "writing");

    fs::TextReadBuffer buffer(in.nativeHandle());
    std::istream lines(&buffer);
    std::size_t count = 0;
    std::string line;
    while (std::getline(lines, line)) {
        count += expandVariables(line, values);
        line += '\n';
        replaceAll(line, "\n", "\r\n");  // a value may bring in line ends of its own
        writeAll(out, line);
    }
    if (lines.bad()) {
        throw OsError(buffer.error());
    }
    out.close();
    return count;
}

}  // namespace vek
