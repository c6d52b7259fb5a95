#include "platform/adapters.h"
#include "platform/posix/debug_stream_posix.h"

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

void setTraceToStderr(bool on) {
    setDebugStreamEcho(on);
}

}  // namespace ostrel::platform
