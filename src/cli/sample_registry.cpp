// The sample registry the tool reads on Linux when it is given none: a
// QUORL family as its installers would leave it. It shows the catalogue's
// rules at work: "Quorl Archive 2008" claims the part number of "Quorl
// Archive" and is dropped, "Temp" is passed over, the Northwind add-in has a
// part number outside the family's table, "Quorl Scheduler" stores its
// number with blanks around it, and "QRL-900" sorts after "QRL-6000".
#include "registry_source.h"

namespace ostrel::cli {

namespace {

constexpr std::string_view kSample = R"REG(Windows Registry Editor Version 5.00

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL]
"InstallDir"="C:\\Program Files\\QUORL\\"

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL\Toolbar]

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL\Toolbar\Quorl Designer]
"DisplayName"="Quorl Designer"
"ApplicationPath"="C:\\Program Files\\QUORL\\Designer"
"PartNumber"="QRL-2040"
"VersionMajor"=dword:00000009
"VersionMinor"=dword:0000001e
"VersionRevisionMajor"=dword:00000000
"VersionRevisionMinor"=dword:00000003
"Label"="Designer"
"IconFile"="C:\\Program Files\\QUORL\\Designer\\designer.ico"
"Revision"="SP1"
"Tooltip"="Draw and edit floor plans"

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL\Toolbar\Quorl Viewer]
"DisplayName"="Quorl Viewer"
"ApplicationPath"="C:\\Program Files\\QUORL\\Viewer\\"
"PartNumber"="QRL-2041"
"VersionMajor"=dword:00000009
"VersionMinor"=dword:0000001e
"VersionRevisionMajor"=dword:00000000
"VersionRevisionMinor"=dword:00000001
"Label"="Viewer"
"IconFile"="C:\\Program Files\\QUORL\\Viewer\\viewer.ico"
"Tooltip"="Open plans read-only"

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL\Toolbar\Quorl Reporter]
"DisplayName"="Quorl Reporter"
"ApplicationPath"=" C:\\Program Files\\QUORL\\Reporter "
"PartNumber"="qrl-3100"
"VersionMajor"=dword:00000004
"VersionMinor"=dword:00000007
"VersionRevisionMajor"=dword:00000002
"VersionRevisionMinor"=dword:0000000c
"Label"="Reports"
"IconFile"="C:\\Program Files\\QUORL\\Reporter\\reports.ico"
"Revision"="R2"
"Tooltip"="Print area and cost reports"

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL\Toolbar\Quorl Scheduler]
"DisplayName"="Quorl Scheduler"
"ApplicationPath"="C:\\Program Files\\QUORL\\Scheduler"
"PartNumber"=" QRL-3200 "
"VersionMajor"=dword:00000002
"VersionMinor"=dword:00000001
"Label"="Schedule"
"Tooltip"="Plan rooms and bookings"

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL\Toolbar\Quorl Archive]
"DisplayName"="Quorl Archive"
"ApplicationPath"="C:\\Program Files\\QUORL\\Archive"
"PartNumber"="QRL-4010"
"VersionMajor"=dword:00000006
"VersionMinor"=dword:00000000
"VersionRevisionMajor"=dword:00000001
"VersionRevisionMinor"=dword:00000000
"Label"="Archive"
"IconFile"="C:\\Program Files\\QUORL\\Archive\\archive.ico"
"Tooltip"="Store and find old plans"

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL\Toolbar\Quorl Archive 2008]
"DisplayName"="Quorl Archive 2008"
"ApplicationPath"="C:\\Program Files\\QUORL\\Archive 2008"
"PartNumber"="QRL-4010"
"VersionMajor"=dword:00000007
"VersionMinor"=dword:00000002
"Label"="Archive"
"Tooltip"="Store and find old plans"

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL\Toolbar\Quorl Link]
"ApplicationPath"="C:\\Program Files\\QUORL\\Link"
"PartNumber"="QRL-5001"
"VersionMajor"=dword:00000001
"VersionMinor"=dword:00000005

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL\Toolbar\Quorl Inspector]
"DisplayName"="Quorl Inspector"
"ApplicationPath"="D:\\QUORL\\Inspector"
"PartNumber"="QRL-6000"
"VersionMajor"=dword:0000000a
"VersionMinor"=dword:00000002
"VersionRevisionMajor"=dword:0000000c
"VersionRevisionMinor"=dword:00000069
"Label"="Inspect"
"IconFile"="D:\\QUORL\\Inspector\\inspect.ico"
"Revision"="B"
"Tooltip"="Check plans against the building rules"

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL\Toolbar\Quorl Toolbox]
"DisplayName"="Quorl Toolbox"
"ApplicationPath"="C:\\Program Files\\QUORL\\Toolbox"
"PartNumber"="QRL-900"
"VersionMajor"=dword:00000003
"VersionMinor"=dword:00000000
"Label"="Tools"
"Tooltip"="Small helpers for every QUORL program"

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL\Toolbar\Northwind Add-in]
"DisplayName"="Northwind Add-in"
"ApplicationPath"="C:\\Program Files\\Northwind\\QuorlAddIn"
"PartNumber"="NW-77"
"VersionMajor"=dword:00000001
"VersionMinor"=dword:00000000

[HKEY_LOCAL_MACHINE\SOFTWARE\QUORL\Toolbar\Temp]
"PartNumber"="QRL-2040"
"ApplicationPath"="C:\\Temp\\setup"
)REG";

}  // namespace

std::string_view sampleRegistryText() {
    return kSample;
}

}  // namespace ostrel::cli
