// vek::fs::StreamFile: a file that is read and written as a stream of bytes.
#pragma once

#include "vek/fs/file.h"
#include "vek/fs/stream.h"

namespace vek::fs {

// Not to be used by two threads at once.
class StreamFile : public File, public IInOut {
  public:
    // One ReadFile of up to `size` bytes. 0 at the end of the data, which includes a pipe whose
    // writer has closed. Throws OsError.
    std::uint32_t read(void* buffer, std::uint32_t size) override;

    // One WriteFile. The result may be less than `size`. Throws OsError.
    std::uint32_t write(const void* buffer, std::uint32_t size) override;

    // FlushFileBuffers. False if the handle is of a kind that can't be flushed, such as a console.
    // Throws OsError.
    bool flush() override;
};

}  // namespace vek::fs
