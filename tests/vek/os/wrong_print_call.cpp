// Doesn't compile: the argument doesn't fit the format.
#include "vek/os/bounded_text.h"

int wrongCall() {
    return vek::os::boundedPrint(nullptr, 0, "%d", "");
}
