// The gzip programs of the tests, and the file sink's tests that run them.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "tests/vek/log/sinks/file_sink_fixture.h"
#include "vek/base/environment.h"
#include "vek/base/windows.h"
#include "vek/proc/shepherd.h"

namespace vek::test {

inline std::string programDirectory() {
    char name[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, name, sizeof name);
    return std::filesystem::path(name).parent_path().string();
}

// The directories of the working gzip, and of one that does what its variables say.
inline std::string workingGzip() {
    return programDirectory() + "\\gzip";
}
inline std::string unreliableGzip() {
    return programDirectory() + "\\unreliable_gzip";
}

// An event that a child finds by its name.
class NamedEvent {
  public:
    explicit NamedEvent(const std::string& purpose)
        : name(purpose + std::to_string(GetCurrentProcessId())),
          handle(CreateEventA(nullptr, TRUE, FALSE, name.c_str())) {}
    ~NamedEvent() { CloseHandle(handle); }
    NamedEvent(const NamedEvent&) = delete;
    NamedEvent& operator=(const NamedEvent&) = delete;

    const std::string name;
    const HANDLE handle;
};

// PATH holds the working gzip alone, until a test changes it.
class GzipTest : public FileSinkTest {
  protected:
    GzipTest() {
        getEnv("PATH", searchPath);
        setEnv("PATH", workingGzip());
    }

    ~GzipTest() override {
        setEnv("PATH", searchPath);
        for (const char* const name : {"START", "WAIT", "SAY", "KILL", "EXIT"}) {
            unsetEnv(std::string("UNRELIABLE_GZIP_") + name);
        }
        proc::shutdownShepherd();
    }

    // Finds the one that does what `orders` say; the words are the ends of its variables' names.
    static void useUnreliableGzip(const std::map<std::string, std::string>& orders) {
        setEnv("PATH", unreliableGzip());
        for (const auto& [name, value] : orders) {
            setEnv("UNRELIABLE_GZIP_" + name, value);
        }
    }

    log::FileSinkConfig compressing() const {
        log::FileSinkConfig config = settings();
        config.compress_archives = true;
        return config;
    }

  private:
    std::string searchPath;
};

}  // namespace vek::test
