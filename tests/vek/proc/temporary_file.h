// A temporary file for the results of a child.
#pragma once

#include <string>

#include "tests/support/files.h"
#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/stream_file.h"

namespace vek::test {

// Empty at first; removed at the end.
class TemporaryFile : public NoCopy {
  public:
    TemporaryFile() {
        char name[MAX_PATH] = {};
        if (GetTempFileNameA(support::temporaryDirectory().c_str(), "prc", 0, name) == 0) {
            throw OsError(GetLastError());
        }
        path = name;
        file.open(path, fs::Access::readWrite);
    }
    ~TemporaryFile() {
        file.close();
        DeleteFileA(path.c_str());
    }

    // Open for the lifetime of this object; not inheritable.
    HANDLE handle() const { return file.nativeHandle(); }
    std::string contents() const { return support::readFile(path); }

    std::string path;

  private:
    fs::StreamFile file;
};

}  // namespace vek::test
