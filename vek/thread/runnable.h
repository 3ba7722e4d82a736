// vek::thread::Runnable: anything that can be the body of a thread.
#pragma once

namespace vek::thread {

class Runnable {
  public:
    // The body, on a thread of its own.
    virtual void run() = 0;
    virtual ~Runnable() = default;

  protected:
    Runnable() = default;
    Runnable(const Runnable&) = default;
    Runnable& operator=(const Runnable&) = default;
};

}  // namespace vek::thread
