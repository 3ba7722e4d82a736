// vek::EnvironmentBlock: a copy of all variables of this process.
#pragma once

#include "vek/base/no_copy.h"

namespace vek {

// Owns the block that the system made. Its entries, "NAME=value", follow each other, each ended by
// a zero byte, and an empty entry ends the block. They are gone through by their lengths:
//
//     for (const char* entry = block.begin(); entry != block.end(); entry += strlen(entry) + 1)
//
// The block doesn't follow later changes. Safe from any thread once it is constructed.
class EnvironmentBlock : public NoCopy {
  public:
    // Equal to every pointer to an empty entry.
    struct EndMarker {
        friend bool operator==(const char* entry, EndMarker) { return *entry == '\0'; }
    };

    // Throws OsError with GetLastError() if the system gives no block. Stands on
    // GetEnvironmentStrings.
    EnvironmentBlock();

    // Throws nothing: if the system doesn't take the block back, that is reported on std::cerr.
    // Stands on FreeEnvironmentStringsA.
    ~EnvironmentBlock();

    // The first entry. The pointer lives as long as this object.
    const char* begin() const { return block; }
    EndMarker end() const { return {}; }

  private:
    char* block;
};

}  // namespace vek
