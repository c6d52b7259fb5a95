// The set of ports one apartment works through. Each platform's
// default_ports.cpp supplies the real adapters; tests put fakes in their place.
// A null port stands for a service that can't be created.
#pragma once

#include "platform/ansi_registry_port.h"
#include "platform/clock_port.h"
#include "platform/debug_stream_port.h"
#include "platform/environment_port.h"
#include "platform/file_system_port.h"
#include "platform/help_port.h"
#include "platform/locale_port.h"
#include "platform/message_box_port.h"
#include "platform/named_mutex_port.h"
#include "platform/path_port.h"
#include "platform/process_port.h"
#include "platform/program_settings_port.h"
#include "platform/registry_port.h"
#include "platform/shell_port.h"
#include "platform/system_info_port.h"
#include "platform/time_zone_port.h"
#include "platform/window_port.h"
#include "platform/wmi_port.h"
#include "platform/xml_document_port.h"

namespace ostrel::platform {

struct Ports {
    RegistryPort* registry = nullptr;
    DebugStreamPort* debugStream = nullptr;
    ClockPort* clock = nullptr;
    MessageBoxPort* messageBox = nullptr;
    FileSystemPort* fileSystem = nullptr;
    EnvironmentPort* environment = nullptr;
    LocalePort* locale = nullptr;
    SystemInfoPort* systemInfo = nullptr;
    NamedMutexPort* namedMutex = nullptr;
    XmlPort* xml = nullptr;
    ProgramSettingsPort* programSettings = nullptr;
    ProcessPort* processes = nullptr;
    TimeZonePort* timeZone = nullptr;
    PathPort* paths = nullptr;
    ShellPort* shell = nullptr;
    HelpPort* help = nullptr;
    AnsiRegistryPort* ansiRegistry = nullptr;
    WindowPort* windowing = nullptr;
    WmiPort* wmi = nullptr;
};

// The real adapters of this platform; they live as long as the process.
Ports defaultPorts();

// Where the debugger stream of the default ports goes: the command-line
// tool's --trace turns this on (Linux: stderr; Windows: always the debugger).
void setTraceToStderr(bool on);

}  // namespace ostrel::platform
