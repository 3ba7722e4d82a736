// vek::NoCopy: a base that forbids copying.
#pragma once

namespace vek {

class NoCopy {
  public:
    NoCopy(const NoCopy&) = delete;
    NoCopy& operator=(const NoCopy&) = delete;

  protected:
    NoCopy() = default;
    ~NoCopy() = default;
};

}  // namespace vek
