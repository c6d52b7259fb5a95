// The real adapters, one per port, each defined in its platform's file
// (platform/windows/*_win32.cpp or platform/posix/*_posix.cpp); defaultPorts()
// gathers them.
#pragma once

#include "platform/ports.h"

namespace ostrel::platform {

RegistryPort& systemRegistry();  // Windows: the Win32 registry; Linux: an empty .reg registry
DebugStreamPort& systemDebugStream();
ClockPort& systemClock();
MessageBoxPort& systemMessageBox();
FileSystemPort& systemFileSystem();
EnvironmentPort& systemEnvironment();
LocalePort& systemLocale();
SystemInfoPort& systemInfo();
NamedMutexPort& systemNamedMutex();
XmlPort& systemXml();  // Windows: the platform's XML document object; Linux: pugixml
ProgramSettingsPort& systemProgramSettings();  // Windows: HKCU; Linux: a per-user INI file
ProcessPort& systemProcesses();
TimeZonePort& systemTimeZone();  // Linux: the time-zone database through the C library
PathPort& systemPaths();
ShellPort& systemShell();  // Windows: "Shell.Application"; Linux: a question on the terminal
HelpPort& systemHelp();    // Windows: HtmlHelpA and WinHelpA; Linux: xdg-open
AnsiRegistryPort& systemAnsiRegistry();  // Linux: no registry, every key missing
WindowPort& systemWindowing();           // Windows: real dialogs; Linux: none
WmiPort& systemWmi();  // Windows: the scripting interface; Linux: a provider over /proc, /sys, /etc

}  // namespace ostrel::platform
