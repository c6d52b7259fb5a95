// Message boxes: the system's own box on Windows, stderr elsewhere.
#pragma once

#include <cstdint>
#include <string_view>

namespace ostrel::platform {

class MessageBoxPort {
  public:
    virtual ~MessageBoxPort() = default;
    // style as the run time's MsgBox takes it (16 critical stop, 48 exclamation).
    virtual void show(std::string_view text, int32_t style, std::string_view title) = 0;
};

}  // namespace ostrel::platform
