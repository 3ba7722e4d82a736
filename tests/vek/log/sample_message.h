// Messages whose stamps a test chooses.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "vek/log/message.h"

namespace vek::test {

// A message of the logger "tolmarhlp", of process 4000000001 and thread 4294967295, made 1999
// milliseconds after the start of 1970.
template <typename Kind>
class Sample : public Kind {
  public:
    explicit Sample(log::Level itsLevel, std::string itsText = "text")
        : Kind("tolmarhlp", std::move(itsText), itsLevel, 4000000001u) {
        this->tid = 4294967295u;
        setTime(1999);
    }

    void setTime(std::int64_t milliseconds) {
        // In two steps: the difference may be beyond 64 bits.
        this->timestamp -= this->timestamp.getValue();
        this->timestamp += milliseconds;
    }
};

using SampleMessage = Sample<log::Message>;
using SampleAttrMessage = Sample<log::AttrMessage>;

}  // namespace vek::test
