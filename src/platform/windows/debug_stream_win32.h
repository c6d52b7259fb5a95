// The switch between the debugger stream adapter and setTraceToStderr.
#pragma once

namespace ostrel::platform {

// On: the debugger still gets every text, and stderr a copy of it.
void setDebugStreamEcho(bool on);

}  // namespace ostrel::platform
