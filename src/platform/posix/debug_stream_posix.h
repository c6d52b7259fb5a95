// The switch between the debugger stream adapter and setTraceToStderr.
#pragma once

namespace ostrel::platform {

// Off: the stream is silent, as there is no debugger to listen on Linux.
void setDebugStreamEcho(bool on);

}  // namespace ostrel::platform
