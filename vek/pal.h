// vek::VekPal: the object that a program makes first and destroys last. While it lives, the
// framework's process-wide facilities stand ready.
#pragma once

#include "vek/base/no_copy.h"

namespace vek {

class VekPal : public NoCopy {
  public:
    // No facility needs a start yet, so the four arguments have no effect: whether to handle
    // console control events, two numbers, and an opaque pointer for the program.
    VekPal(bool handleQuit, int, int, void* quitContext);
    virtual ~VekPal();

    // The object constructed last; null once any has been destroyed.
    static VekPal* current();
};

}  // namespace vek
