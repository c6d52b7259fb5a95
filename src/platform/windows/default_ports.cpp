#include "platform/adapters.h"
#include "platform/windows/debug_stream_win32.h"

namespace ostrel::platform {

Ports defaultPorts() {
    Ports ports;
    ports.registry = &systemRegistry();
    ports.debugStream = &systemDebugStream();
    ports.clock = &systemClock();
    ports.messageBox = &systemMessageBox();
    ports.fileSystem = &systemFileSystem();
    ports.environment = &systemEnvironment();
    ports.locale = &systemLocale();
    ports.systemInfo = &systemInfo();
    return ports;
}

// The debugger keeps every text either way; the tool's --trace adds stderr.
void setTraceToStderr(bool on) {
    setDebugStreamEcho(on);
}

}  // namespace ostrel::platform
