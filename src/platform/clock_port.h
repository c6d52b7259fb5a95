// The local wall clock.
#pragma once

#include "runtime/format.h"

namespace ostrel::platform {

class ClockPort {
  public:
    virtual ~ClockPort() = default;
    virtual DateTimeParts now() = 0;
};

}  // namespace ostrel::platform
