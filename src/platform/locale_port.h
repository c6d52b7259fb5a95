// The user's locale, as far as the formats and the language texts need it.
#pragma once

#include <string>

#include "runtime/format.h"

namespace ostrel::platform {

class LocalePort {
  public:
    virtual ~LocalePort() = default;
    virtual LocaleFacts facts() = 0;
    // The user's interface language as the system names it: "de-DE" on
    // Windows, the POSIX locale name ("de_DE.UTF-8") elsewhere; empty when
    // nothing is set.
    virtual std::string uiLanguage() = 0;
};

}  // namespace ostrel::platform
