// The code page that the pure sources see on the machine that builds, which has none itself.
#pragma once

#include "vek/base/code_page.h"

namespace vek::test {

// What ansiLeadBytes returns there. Empty at first.
extern LeadBytes leadBytes;

}  // namespace vek::test
