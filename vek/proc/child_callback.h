// vek::proc::IChildCallback: who is told that a child has ended.
#pragma once

namespace vek::proc {

class Child;

class IChildCallback {
  public:
    // Runs on the thread "shepherd", once for each end of `child`, whose result is there already.
    // No other end is seen until this returns. It may start children and wait for `child`; a wait
    // for another child throws RuntimeError, after which that one is neither watched nor reported
    // any more. An exception of std::exception's tree is reported on std::cerr, any other ends the
    // shepherd, and all waits with it.
    virtual void childExited(Child& child) = 0;

  protected:
    ~IChildCallback() = default;
};

}  // namespace vek::proc
