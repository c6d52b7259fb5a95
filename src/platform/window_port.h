// The component's own windows on the screen: the screen's resolution, and a
// form shown modally over its owner. Windows makes a real dialog of the
// form; Linux has no desktop for it.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "platform/form.h"

namespace ostrel::platform {

class WindowPort {
  public:
    // Decides what a press of a command button does (by the control's name):
    // true unloads the window.
    using ClickHandler = std::function<bool(std::string_view controlName)>;

    virtual ~WindowPort() = default;
    // The screen's logical dots per inch; 96 where there is no screen.
    virtual int32_t dotsPerInch() = 0;
    // Shows the form modally over the owner window (0: none) and returns when
    // it is unloaded. Enter presses the default button (or the focused
    // command button), Escape the cancel button; the close box unloads the
    // window. Raises 429 where no window can be shown; an error the handler
    // raises unloads the window and goes on to the caller.
    virtual void showModal(const Form& form, int64_t ownerWindow, const ClickHandler& onClick) = 0;
};

}  // namespace ostrel::platform
