// The network keys of a Linux machine, made from the live system into the
// registry's key tree, so that the network inventory reads them like a
// Windows registry. The mapping is told at the top of network_keys_posix.cpp.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel::platform {

class RegistryLayer;

// What a DHCP client recorded for one interface; empty fields it didn't say.
struct DhcpLease {
    std::string interfaceName;  // "" when the file doesn't say (networkd's are by index)
    std::string address;
    std::string subnetMask;
    std::string server;
    std::vector<std::string> nameServers;
    std::string domain;
};

struct InterfaceFacts {
    std::string name;
    int32_t index = 0;
    bool hardware = false;  // a device behind it: a network card
    bool loopback = false;
    std::vector<std::string> addresses;  // IPv4, dotted, with their masks in the same order
    std::vector<std::string> masks;
    std::vector<std::string> gateways;  // of the default routes through it
    std::optional<DhcpLease> lease;     // one whose address the interface holds now
};

struct NetworkFacts {
    std::string hostName;  // up to its first dot
    std::string domain;
    std::vector<std::string> nameServers;
    std::vector<InterfaceFacts> interfaces;  // in name order
};

// The facts of this machine, read from /sys, the address list, /proc/net/route,
// /etc/resolv.conf and the lease files of the common DHCP clients.
NetworkFacts liveNetworkFacts();

// Makes the three network keys holding those facts, in HKEY_LOCAL_MACHINE.
void addNetworkKeys(RegistryLayer& keys, const NetworkFacts& facts);

// Lease files: systemd-networkd's and NetworkManager's own client
// (KEY=VALUE lines), and dhclient's ("lease { ... }" blocks; every block,
// oldest first).
DhcpLease parseKeyValueLease(std::string_view text);
std::vector<DhcpLease> parseDhclientLeases(std::string_view text);

// The default routes of /proc/net/route text: interface and gateway, dotted.
std::vector<std::pair<std::string, std::string>> defaultGateways(std::string_view routeTable);

}  // namespace ostrel::platform
