// The network keys of a Linux machine, synthesised from the live system.
// Only IPv4 is told, as the TCP/IP keys of Windows hold it. What the system
// can't tell is left out, and the inventory then reads its default.
//
// HKLM\SOFTWARE\Microsoft\Windows NT\CurrentVersion\NetworkCards
//   \<interface index>     one per interface with a device behind it
//                          (/sys/class/net/NAME/device): the network cards;
//                          loopback, bridges, tunnels and the like are none
//     ServiceName          the interface's name ("eth0")
// HKLM\SYSTEM\CurrentControlSet\Services\Tcpip\Parameters\Adapters
//   \<name>                one empty key per interface, loopback included
// HKLM\SYSTEM\CurrentControlSet\Services\Tcpip\Parameters\Interfaces
//   \<name>                one per interface:
//     HostName             the host name up to its first dot (gethostname)
//     Domain               the rest of the name qualified as the computer name
//                          is: "domain", else the first "search" of /etc/resolv.conf
//     IPAddress            multi-string: the IPv4 addresses on the interface, the
//     SubnetMask           leased one aside; multi-string: their masks, in order
//     DefaultGateway       multi-string: the gateways of the default routes through
//                          the interface (/proc/net/route)
//     NameServer           the "nameserver" lines of /etc/resolv.conf, on every
//                          interface but loopback; joined as a multi-string reads
//     EnableDHCP           dword 1 when a DHCP client's lease for the interface
//                          names an address the interface holds now; left out
//                          otherwise, as nothing says the address is static
//     DhcpIPAddress, DhcpSubnetMask, DhcpServer, DhcpNameServer, DhcpDomain
//                          from that lease: its address, mask, server identifier,
//                          name servers (joined as above) and domain name
//     Server               left out: Linux has no such setting
// Leases are read from systemd-networkd (/run/systemd/netif/leases/<index>),
// NetworkManager (/var/lib/NetworkManager: its own client's internal-*-NAME.lease,
// dhclient's *-NAME.lease) and dhclient (/var/lib/dhcp, /var/lib/dhclient).
#include "platform/posix/network_keys_posix.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "platform/common/registry_tree.h"
#include "platform/posix/system_info_posix.h"
#include "platform/registry_port.h"

namespace ostrel::platform {

namespace {

constexpr std::string_view kCardsKey =
    "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards";
constexpr std::string_view kTcpipKey = "SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters";

std::string_view trim(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

std::vector<std::string> words(std::string_view text, std::string_view separators) {
    std::vector<std::string> found;
    while (!text.empty()) {
        const auto start = text.find_first_not_of(separators);
        if (start == std::string_view::npos) break;
        text.remove_prefix(start);
        const auto end = std::min(text.find_first_of(separators), text.size());
        found.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return found;
}

std::string joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : std::string(kMultiStringSeparator)) + part;
    return text;
}

std::string dotted(in_addr address) {
    char text[INET_ADDRSTRLEN] = {};
    return inet_ntop(AF_INET, &address, text, sizeof text) ? text : "";
}

// A key name the tools that read these keys take as it stands: printable
// ASCII, no separator. Linux takes any bytes but '/' and blanks.
bool fitsKeyName(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(),
                                        [](char c) { return c > ' ' && c <= '~' && c != '\\'; });
}

// Text as the keys hold it: a lease may hold anything, and no control
// character is left in.
std::string printable(std::string_view text) {
    std::string kept;
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x20) kept += c;
    }
    return kept;
}

// Empty text and empty lists are left out: the inventory then reads its default.
void stringValue(RegistryLayer& keys, std::string_view name, std::string_view value) {
    if (!value.empty()) keys.stringValue(name, printable(value));
}

void multiStringValue(RegistryLayer& keys, std::string_view name,
                      const std::vector<std::string>& entries) {
    if (entries.empty()) return;
    std::vector<std::string> kept;
    for (const std::string& entry : entries) kept.push_back(printable(entry));
    keys.multiStringValue(name, kept);
}

// ---- leases ----------------------------------------------------------------

bool holds(const InterfaceFacts& facts, const DhcpLease& lease) {
    return !lease.address.empty() && std::find(facts.addresses.begin(), facts.addresses.end(),
                                               lease.address) != facts.addresses.end();
}

void offerLease(InterfaceFacts& facts, DhcpLease lease) {
    if (holds(facts, lease)) facts.lease = std::move(lease);
}

bool endsWith(std::string_view text, std::string_view tail) {
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

void readLeases(std::vector<InterfaceFacts>& interfaces) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    for (InterfaceFacts& facts : interfaces) {
        const std::string networkd = "/run/systemd/netif/leases/" + std::to_string(facts.index);
        if (fs::exists(networkd, ignored)) {
            offerLease(facts, parseKeyValueLease(fileText(networkd.c_str())));
        }
    }
    for (const char* folder : {"/var/lib/NetworkManager", "/var/lib/dhcp", "/var/lib/dhclient"}) {
        for (const auto& entry : fs::directory_iterator(folder, ignored)) {
            const std::string file = entry.path().filename().string();
            const std::string path = entry.path().string();
            if (file.starts_with("internal-") && endsWith(file, ".lease")) {
                for (InterfaceFacts& facts : interfaces) {
                    if (endsWith(file, "-" + facts.name + ".lease")) {
                        offerLease(facts, parseKeyValueLease(fileText(path.c_str())));
                    }
                }
            } else if (file.find("dhclient") != std::string::npos &&
                       (endsWith(file, ".lease") || endsWith(file, ".leases"))) {
                for (DhcpLease& lease : parseDhclientLeases(fileText(path.c_str()))) {
                    for (InterfaceFacts& facts : interfaces) {
                        // NetworkManager's dhclient files name the interface only in the file name.
                        const bool mine = lease.interfaceName.empty()
                                              ? endsWith(file, "-" + facts.name + ".lease")
                                              : lease.interfaceName == facts.name;
                        if (mine) offerLease(facts, lease);
                    }
                }
            }
        }
    }
}

}  // namespace

DhcpLease parseKeyValueLease(std::string_view text) {
    DhcpLease lease;
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        const auto equals = line.find('=');
        if (equals == std::string::npos) continue;
        const std::string_view name = trim(std::string_view(line).substr(0, equals));
        const std::string value(trim(std::string_view(line).substr(equals + 1)));
        if (name == "ADDRESS")
            lease.address = value;
        else if (name == "NETMASK")
            lease.subnetMask = value;
        else if (name == "SERVER_ADDRESS")
            lease.server = value;
        else if (name == "DNS")
            lease.nameServers = words(value, " \t");
        else if (name == "DOMAINNAME")
            lease.domain = value;
    }
    return lease;
}

std::vector<DhcpLease> parseDhclientLeases(std::string_view text) {
    std::vector<DhcpLease> leases;
    std::optional<DhcpLease> open;
    // Statements end in ';'; blocks open with '{' and close with '}'.
    std::string statement;
    const auto finish = [&] {
        const std::string_view s = trim(statement);
        if (open) {
            std::vector<std::string> parts = words(s, " \t\r\n");
            // Quotes dropped, a backslash's character taken as it stands.
            const auto unquoted = [](const std::string& value) {
                std::string plain;
                for (std::size_t i = 0; i < value.size(); ++i) {
                    if (value[i] == '\\' && i + 1 < value.size()) {
                        plain += value[++i];
                    } else if (value[i] != '"') {
                        plain += value[i];
                    }
                }
                return plain;
            };
            const auto rest = [&](std::size_t from) {
                std::string value;
                for (std::size_t i = from; i < parts.size(); ++i)
                    value += (i > from ? " " : "") + parts[i];
                return unquoted(value);
            };
            if (parts.size() >= 2 && parts[0] == "interface") open->interfaceName = rest(1);
            if (parts.size() >= 2 && parts[0] == "fixed-address") open->address = rest(1);
            if (parts.size() >= 3 && parts[0] == "option") {
                if (parts[1] == "subnet-mask") open->subnetMask = rest(2);
                if (parts[1] == "dhcp-server-identifier") open->server = rest(2);
                if (parts[1] == "domain-name-servers") open->nameServers = words(rest(2), ", ");
                if (parts[1] == "domain-name") open->domain = rest(2);
            }
        }
        statement.clear();
    };
    bool inQuote = false;
    bool escaped = false;
    for (const char c : text) {
        if (inQuote) {
            statement += c;
            if (escaped) {
                escaped = false;
            } else if (c == '\\') {
                escaped = true;
            } else if (c == '"') {
                inQuote = false;
            }
            continue;
        }
        if (c == '"') inQuote = true;
        if (c == ';') {
            finish();
        } else if (c == '{') {
            if (trim(statement) == "lease") open.emplace();
            statement.clear();
        } else if (c == '}') {
            finish();
            if (open) leases.push_back(std::move(*open));
            open.reset();
        } else {
            statement += c;
        }
    }
    return leases;
}

std::vector<std::pair<std::string, std::string>> defaultGateways(std::string_view routeTable) {
    constexpr unsigned kUp = 0x1;
    constexpr unsigned kGateway = 0x2;
    std::vector<std::pair<std::string, std::string>> found;
    std::istringstream lines{std::string(routeTable)};
    std::string line;
    std::getline(lines, line);  // the heading
    while (std::getline(lines, line)) {
        const std::vector<std::string> fields = words(line, " \t");
        if (fields.size() < 8) continue;
        unsigned long destination = 0, gateway = 0, flags = 0, mask = 0;
        try {
            destination = std::stoul(fields[1], nullptr, 16);
            gateway = std::stoul(fields[2], nullptr, 16);
            flags = std::stoul(fields[3], nullptr, 16);
            mask = std::stoul(fields[7], nullptr, 16);
        } catch (...) {
            continue;
        }
        if (destination != 0 || mask != 0 || (flags & (kUp | kGateway)) != (kUp | kGateway)) {
            continue;
        }
        // The kernel prints the address as the number in memory order.
        in_addr address{};
        address.s_addr = static_cast<in_addr_t>(gateway);
        found.emplace_back(fields[0], dotted(address));
    }
    return found;
}

NetworkFacts liveNetworkFacts() {
    namespace fs = std::filesystem;
    NetworkFacts facts;
    const std::string resolvConf = fileText("/etc/resolv.conf");
    const std::string qualified = qualifiedHostName(hostName(), resolvConf);
    const auto dot = qualified.find('.');
    facts.hostName = qualified.substr(0, dot);
    if (dot != std::string::npos) facts.domain = qualified.substr(dot + 1);
    std::istringstream lines(resolvConf);
    for (std::string line; std::getline(lines, line);) {
        const std::vector<std::string> parts = words(line, " \t\r");
        if (parts.size() >= 2 && parts[0] == "nameserver") facts.nameServers.push_back(parts[1]);
    }

    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator("/sys/class/net", ignored)) {
        InterfaceFacts iface;
        iface.name = entry.path().filename().string();
        if (!fitsKeyName(iface.name)) continue;
        const std::string folder = entry.path().string();
        iface.index = std::atoi(fileText((folder + "/ifindex").c_str()).c_str());
        iface.hardware = fs::exists(folder + "/device", ignored);
        iface.loopback = trim(fileText((folder + "/type").c_str())) == "772";  // ARPHRD_LOOPBACK
        facts.interfaces.push_back(std::move(iface));
    }
    std::sort(facts.interfaces.begin(), facts.interfaces.end(),
              [](const InterfaceFacts& a, const InterfaceFacts& b) { return a.name < b.name; });
    const auto named = [&](std::string_view name) -> InterfaceFacts* {
        for (InterfaceFacts& iface : facts.interfaces) {
            if (iface.name == name) return &iface;
        }
        return nullptr;
    };

    ifaddrs* list = nullptr;
    if (getifaddrs(&list) == 0) {
        for (const ifaddrs* a = list; a != nullptr; a = a->ifa_next) {
            if (a->ifa_addr == nullptr || a->ifa_addr->sa_family != AF_INET) continue;
            // An alias label ("eth0:1") is an address of its interface.
            const std::string_view label(a->ifa_name);
            InterfaceFacts* iface = named(label.substr(0, label.find(':')));
            if (iface == nullptr) continue;
            iface->addresses.push_back(
                dotted(reinterpret_cast<const sockaddr_in*>(a->ifa_addr)->sin_addr));
            iface->masks.push_back(
                a->ifa_netmask
                    ? dotted(reinterpret_cast<const sockaddr_in*>(a->ifa_netmask)->sin_addr)
                    : std::string());
        }
        freeifaddrs(list);
    }
    for (const auto& [name, gateway] : defaultGateways(fileText("/proc/net/route"))) {
        if (InterfaceFacts* iface = named(name)) iface->gateways.push_back(gateway);
    }
    readLeases(facts.interfaces);
    return facts;
}

void addNetworkKeys(RegistryLayer& keys, const NetworkFacts& facts) {
    const auto key = [&](std::string_view path) { keys.key(kHiveLocalMachine, path); };
    key(kCardsKey);
    for (const InterfaceFacts& iface : facts.interfaces) {
        if (!iface.hardware) continue;
        key(std::string(kCardsKey) + "\\" + std::to_string(iface.index));
        stringValue(keys, "ServiceName", iface.name);
    }
    const std::string adapters = std::string(kTcpipKey) + "\\Adapters";
    key(adapters);
    for (const InterfaceFacts& iface : facts.interfaces) key(adapters + "\\" + iface.name);
    const std::string interfaces = std::string(kTcpipKey) + "\\Interfaces";
    key(interfaces);
    for (const InterfaceFacts& iface : facts.interfaces) {
        key(interfaces + "\\" + iface.name);
        stringValue(keys, "HostName", facts.hostName);
        stringValue(keys, "Domain", facts.domain);
        std::vector<std::string> addresses;
        std::vector<std::string> masks;
        for (std::size_t i = 0; i < iface.addresses.size(); ++i) {
            if (iface.lease && iface.addresses[i] == iface.lease->address) continue;
            addresses.push_back(iface.addresses[i]);
            masks.push_back(iface.masks[i]);
        }
        multiStringValue(keys, "IPAddress", addresses);
        multiStringValue(keys, "SubnetMask", masks);
        multiStringValue(keys, "DefaultGateway", iface.gateways);
        if (!iface.loopback) stringValue(keys, "NameServer", joined(facts.nameServers));
        if (const auto& lease = iface.lease) {
            keys.dwordValue("EnableDHCP", 1);
            stringValue(keys, "DhcpIPAddress", lease->address);
            stringValue(keys, "DhcpSubnetMask", lease->subnetMask);
            stringValue(keys, "DhcpServer", lease->server);
            stringValue(keys, "DhcpNameServer", joined(lease->nameServers));
            stringValue(keys, "DhcpDomain", lease->domain);
        }
    }
}

}  // namespace ostrel::platform
