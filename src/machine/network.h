// The network adapter inventory: the names of the installed network cards
// and of the TCP/IP adapters, and one interface's TCP/IP configuration, all
// read from the registry without any network call. None of these raises.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "runtime/dictionary.h"
#include "runtime/keyed_list.h"
#include "runtime/object.h"

namespace ostrel {

class WNCRegistry;

// Registry paths under HKEY_LOCAL_MACHINE.
inline constexpr std::string_view kNetworkCardsPath =
    "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards";
inline constexpr std::string_view kAdaptersPath =
    "SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Adapters";
inline constexpr std::string_view kInterfacesPath =
    "SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces\\";

// Each name is both the item and its key.
using NameList = KeyedList<std::string>;

// The ServiceName of every card; a duplicate empties the list.
NameList gfcolGetNetworkCards();
// The sub-key names of the adapters key; a duplicate empties the list.
NameList gfcolGetAdapters();
// The thirteen values of the interface, in their order; an empty dictionary
// when the interface has no key, null after a failure.
Ref<Dictionary> gfdicGetInterfaceData(std::string_view vstrInterfaceName);

// Move one value of the open key into the dictionary and answer it.
std::string fstrAddNetworkInterfaceValue(WNCRegistry& vobjRegistry, Dictionary& vdicData,
                                         std::string_view vstrValueName,
                                         std::string_view vstrDefault);
int32_t flngAddNetworkInterfaceValue(WNCRegistry& vobjRegistry, Dictionary& vdicData,
                                     std::string_view vstrValueName, int32_t vlngDefault);

}  // namespace ostrel
