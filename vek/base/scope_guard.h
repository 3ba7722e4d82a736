// vek::ScopeGuard: releases an object at the end of a scope, however the scope is left.
#pragma once

#include <iostream>

#include "vek/base/no_copy.h"
#include "vek/exception.h"

namespace vek {

// Not thread-safe: a local object of one scope.
template <class Object>
class ScopeGuard : public NoCopy {
  public:
    using Release = void (*)(Object*);  // called at the end of the scope

    // `guarded` is not owned and must live as long as the guard.
    ScopeGuard(Object* guarded, Release releaseGuarded)
        : object(guarded), release(releaseGuarded) {}

    // Calls `release` with the object, unless dismissed. A vek::Exception from it is reported on
    // std::cerr. Any other exception ends the process.
    ~ScopeGuard() {
        if (dismissed) {
            return;
        }
        try {
            release(object);
        } catch (const Exception& error) {
            std::cerr << "Exception caught while destroying scope guard:\n"
                      << error.printableText() << "\n";
        }
    }

    // Makes the destructor do nothing.
    void dismiss() { dismissed = true; }

  private:
    bool dismissed = false;
    Object* object;
    Release release;
};

}  // namespace vek
