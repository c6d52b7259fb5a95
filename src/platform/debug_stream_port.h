// The debugger output stream: emit one text to whoever watches the process.
#pragma once

#include <string_view>

namespace ostrel::platform {

class DebugStreamPort {
  public:
    virtual ~DebugStreamPort() = default;
    // UTF-8 text, passed as it stands (the caller adds the line end).
    virtual void write(std::string_view text) = 0;
};

}  // namespace ostrel::platform
