#include "source/tolmar/helper_directory.h"

#include "vek/os/bounded_text.h"

namespace tolmar {

PathBuffer helperDirectory = {};

PathBuffer helperPath(const char* format) {
    // Never truncates: the limit on the tail leaves room for the longest suffix.
    PathBuffer path;
    vek::os::boundedPrint(path.data(), path.size(), format, helperDirectory.data());
    return path;
}

}  // namespace tolmar
