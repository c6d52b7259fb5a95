// The WMI inventory: one block of text for people (the clipboard), built from
// six WMI sections. Best effort: a section that can't be read leaves a gap and
// a log line, and nothing is ever raised to the caller.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/wmi_port.h"
#include "runtime/variant.h"

namespace ostrel {

// The whole block, lines ending in CR LF; "" when WMI can't be reached.
std::string WmiInfo();
// "Default Namespace" of HKLM\Software\Microsoft\WBEM\Scripting, or "".
std::string gfstrGetWmiNamespace();

// The sections; each traps its own failures and returns what it has.
std::string GetWmiComputerInfo(platform::WmiServices* services);
std::string GetWmiBiosInfo(platform::WmiServices* services);
std::string GetWmiProcessorInfo(platform::WmiServices* services);
std::string GetWmiVideoProcessor(platform::WmiServices* services);
std::string GetWmiOSInfo(platform::WmiServices* services);
std::string GetWmiUserAccountInfo(platform::WmiServices* services);

// The converters of property values; they never raise.
std::string mfstrWmiString(const Variant& value);
int32_t mflngWmiLong(const Variant& value);
double mfdblWmiDouble(const Variant& value);

// What the sections read, for a tool that saves the objects and replays them:
// per class its query and its properties in the order they are read.
struct WmiClassReading {
    std::string_view className;
    std::string_view query;
    std::span<const std::string_view> properties;
};
// The five classes of one shape, then Win32_LogonSession (its LogonId).
std::span<const WmiClassReading> wmiInventoryReadings();
// The accounts of a logon session: their query and properties.
std::string wmiLogonAccountsQuery(const Variant& logonId);
std::span<const std::string_view> wmiAccountProperties();
// Every object of every class above as JSON, one array per class, sessions
// with their "Accounts"; a class whose query gives a null result set, or
// whose query or enumeration fails, stays out, as do the accounts of a
// session whose associators can't be enumerated.
std::string wmiSavedInventory(platform::WmiServices& services);

}  // namespace ostrel
