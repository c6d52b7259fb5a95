// The ANSI code page at the edge of the A-form system calls and of the log file.
#pragma once

#include <string>
#include <string_view>

namespace ostrel::platform {

std::string toAnsi(std::string_view utf8);
std::string fromAnsi(std::string_view ansi);

}  // namespace ostrel::platform
