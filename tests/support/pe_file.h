// support::PeFile: what the header of a 32-bit Windows program says, read from the file itself.
#pragma once

#include <string>
#include <vector>

#include "vek/base/windows.h"

namespace support {

class PeFile {
  public:
    // Reads `path`. Throws vek::FsError, and std::runtime_error if it is no 32-bit PE file.
    explicit PeFile(const std::string& path);

    const IMAGE_FILE_HEADER& fileHeader() const { return headers.FileHeader; }
    const IMAGE_OPTIONAL_HEADER32& optionalHeader() const { return headers.OptionalHeader; }

    // The DLLs that it imports, in the order of the file, as spelled there.
    std::vector<std::string> importedDlls() const;

    // How many places the system adjusts when it loads the program somewhere else.
    std::size_t relocationCount() const;

  private:
    // `size` bytes at a relative virtual address. Throws std::runtime_error if the file has none.
    const char* at(DWORD address, std::size_t size) const;
    const IMAGE_DATA_DIRECTORY& directory(unsigned index) const;

    std::string contents;
    IMAGE_NT_HEADERS32 headers = {};
    std::vector<IMAGE_SECTION_HEADER> sections;
};

}  // namespace support
