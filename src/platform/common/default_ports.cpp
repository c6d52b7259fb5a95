// Gathers the real adapters of the platform this build is for.
#include "platform/adapters.h"

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
    ports.namedMutex = &systemNamedMutex();
    ports.xml = &systemXml();
    ports.programSettings = &systemProgramSettings();
    ports.processes = &systemProcesses();
    ports.timeZone = &systemTimeZone();
    ports.paths = &systemPaths();
    ports.shell = &systemShell();
    ports.help = &systemHelp();
    ports.ansiRegistry = &systemAnsiRegistry();
    ports.windowing = &systemWindowing();
    ports.wmi = &systemWmi();
    return ports;
}

}  // namespace ostrel::platform
