// vek::proc::IChildCallback: notified when a child exits.
#pragma once

namespace vek::proc {

class Child;

class IChildCallback {
  public:
    // Called on the thread "shepherd" once for each exit of `child`, after its result has been
    // stored. No other exit is noticed until this returns.
    //
    // It may start children and call `wait` of `child`, which returns at once. `wait` of another
    // child also returns at once if that one's exit has been noticed; otherwise it throws
    // RuntimeError, and that child is neither watched nor reported any more.
    //
    // If another thread may be in `wait` of `child` at the same time, this must not use `child` at
    // all: that `wait` writes it.
    //
    // An exception derived from std::exception is reported on std::cerr. Any other ends the
    // shepherd's thread: no `wait` without a time-out returns after that until the shepherd is shut
    // down.
    virtual void childExited(Child& child) = 0;

  protected:
    ~IChildCallback() = default;
};

}  // namespace vek::proc
