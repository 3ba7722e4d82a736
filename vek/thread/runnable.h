// vek::thread::Runnable: the body of a thread.
#pragma once

namespace vek::thread {

class Runnable {
  public:
    // The body. Called on the new thread.
    virtual void run() = 0;
    virtual ~Runnable() = default;

  protected:
    Runnable() = default;
    Runnable(const Runnable&) = default;
    Runnable& operator=(const Runnable&) = default;
};

}  // namespace vek::thread
