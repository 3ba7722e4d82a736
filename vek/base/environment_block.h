// vek::EnvironmentBlock: a copy of all variables of this process.
#pragma once

#include "vek/base/no_copy.h"

namespace vek {

// Owns the block that the system made. Its entries, "NAME=value", follow each other, each ended by
// a zero byte, and an empty entry ends the block. To iterate:
//
//     for (const char* entry = block.begin(); entry != block.end(); entry += strlen(entry) + 1)
//
// The block doesn't show later changes. Thread-safe once it is constructed.
class EnvironmentBlock : public NoCopy {
  public:
    // Compares equal to every pointer to an empty entry.
    struct EndMarker {
        friend bool operator==(const char* entry, EndMarker) { return *entry == '\0'; }
    };

    // Calls GetEnvironmentStrings. Throws OsError with GetLastError() on failure.
    EnvironmentBlock();

    // Calls FreeEnvironmentStringsA. Throws nothing: a failure is reported on std::cerr.
    ~EnvironmentBlock();

    // The first entry. The pointer is valid as long as this object lives.
    const char* begin() const { return block; }
    EndMarker end() const { return {}; }

  private:
    char* block;
};

}  // namespace vek
