// The user's locale, as far as the formats need it.
#pragma once

#include "runtime/format.h"

namespace ostrel::platform {

class LocalePort {
  public:
    virtual ~LocalePort() = default;
    virtual LocaleFacts facts() = 0;
};

}  // namespace ostrel::platform
