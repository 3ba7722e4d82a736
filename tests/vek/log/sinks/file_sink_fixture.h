// What the tests of the file sink share: a directory of their own with the log file "x.log", and
// ways to look at the results.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/vek/log/sample_message.h"
#include "tests/vek/temporary_directory.h"
#include "vek/base/windows.h"
#include "vek/log/sinks/file_sink.h"
#include "vek/log/sinks/message_format.h"

namespace vek::test {

using Names = std::vector<std::string>;

class FileSinkTest : public TemporaryDirectoryTest {
  protected:
    // Rotates beyond 1 KiB, compresses nothing, and writes nothing but the text of a message.
    log::FileSinkConfig settings() const {
        log::FileSinkConfig config(path("x.log"));
        config.enabled = true;
        config.format = log::compileFormat("{msg}");
        config.rotate = true;
        config.rotate_size = 1;
        config.compress_archives = false;
        return config;
    }

    static void store(log::FileSink& sink, const std::string& text) {
        sink.store(SampleMessage(log::INFO, text));
    }

    // Stores "0", "1" and so on.
    static void storeMany(log::FileSink& sink, int count, int first = 0) {
        for (int i = first; i < first + count; ++i) {
            store(sink, std::to_string(i));
        }
    }

    // What storeMany writes.
    static std::string lines(int count, int first = 0) {
        std::string text;
        for (int i = first; i < first + count; ++i) {
            text += std::to_string(i) + "\r\n";
        }
        return text;
    }

    // The names of what is in the directory, in their order.
    Names names() const {
        Names found;
        for (const auto& entry : std::filesystem::directory_iterator(path())) {
            found.push_back(entry.path().filename().string());
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    // Makes the archives `names`, each of which holds its own name.
    void writeArchives(const Names& names) const {
        for (const std::string& name : names) {
            writeFile(name, name);
        }
    }

    static const log::FileSinkConfig& configOf(const log::FileSink& sink) {
        return static_cast<const log::FileSinkConfig&>(sink.getConfig());
    }
};

// Holds a file open as other programs do, with what they let others do to it meanwhile.
class HeldFile {
  public:
    HeldFile(const std::string& path, DWORD sharing)
        : handle(CreateFileA(path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, 0,
                             nullptr)) {
        EXPECT_NE(handle, INVALID_HANDLE_VALUE) << path << ": error " << GetLastError();
    }
    ~HeldFile() { CloseHandle(handle); }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

    // What can be read from where the last call has ended.
    std::string readOn() {
        std::string text(65536, '\0');
        DWORD size = 0;
        EXPECT_NE(ReadFile(handle, text.data(), static_cast<DWORD>(text.size()), &size, nullptr),
                  0);
        text.resize(size);
        return text;
    }

  private:
    const HANDLE handle;
};

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD shareNothing = 0;

}  // namespace vek::test
