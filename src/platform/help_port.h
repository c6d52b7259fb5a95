// The help viewers: compiled HTML help through HtmlHelpA, anything else
// through the older viewer. Linux has neither and hands the file to the
// desktop (help_posix.cpp).
#pragma once

#include <cstdint>
#include <string_view>

namespace ostrel::platform {

class HelpPort {
  public:
    virtual ~HelpPort() = default;
    // HtmlHelpA with no owner window. Raises when the viewer can't be had.
    virtual void htmlHelp(std::string_view file, int32_t command, int32_t data) = 0;
    // The older viewer with a help command (3: the index). Raises when it
    // can't show the file.
    virtual void winHelp(std::string_view file, int32_t command) = 0;
};

}  // namespace ostrel::platform
