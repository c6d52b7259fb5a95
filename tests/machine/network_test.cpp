#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fakes/test_apartment.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/wnc_registry.h"
#include "machine/network.h"
#include "runtime/convert.h"

#ifndef _WIN32
#include "platform/common/registry_tree.h"
#include "platform/posix/network_keys_posix.h"
#endif

namespace ostrel {
namespace {

using Lines = std::vector<std::string>;

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00\r\n\r\n";
const std::string kCards =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards";
const std::string kTcpip =
    "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters";

// The entries in order, a text quoted so that it shows apart from a number.
Lines entriesOf(const Dictionary& data) {
    Lines entries;
    for (const auto& [key, item] : data) {
        entries.push_back(key + "=" + (item.isString() ? "'" + toText(item) + "'" : toText(item)));
    }
    return entries;
}

class Network : public ::testing::Test {
  protected:
    Network() { apartment().gobjFileSystem = makeRef<FileSystemObject>(fx.ports.fileSystem); }
    void load(const std::string& keys) { fx.loadRegistry(std::string(kHeader) + keys); }
    void card(const std::string& name, const std::string& values) {
        load("[" + kCards + "\\" + name + "]\r\n" + values + "\r\n");
    }
    static std::vector<std::string> names(const NameList& list) {
        std::vector<std::string> items;
        for (const auto& entry : list) {
            EXPECT_EQ(entry.key, entry.item) << "each name is its own key";
            items.push_back(entry.item);
        }
        return items;
    }
    const Lines& said() const { return fx.debugStream.texts; }

    fakes::TestApartment fx;
};

TEST_F(Network, CardsAreTheServiceNamesAndACardWithoutOneIsPassedOver) {
    EXPECT_EQ(gfcolGetNetworkCards().count(), 0) << "no NetworkCards key";
    EXPECT_TRUE(said().empty()) << "a missing key is no failure";

    card("11", "\"ServiceName\"=\"{B2}\"\r\n\"Description\"=\"Second\"");
    card("3", "\"ServiceName\"=\"\"");
    card("7", "\"ServiceName\"=\"{A7}\"");
    apartment().glngDebugLevel = 100000;
    EXPECT_EQ(names(gfcolGetNetworkCards()), (Lines{"{B2}", "{A7}"}));
    EXPECT_TRUE(said().empty()) << "traced only above 100000";

    apartment().glngDebugLevel = 100001;
    EXPECT_EQ(gfcolGetNetworkCards().item("{b2}"), "{B2}") << "keys ignore case";
    EXPECT_EQ(said(), (Lines{"Network Adapter: {B2}\r\n", "Network Adapter: {A7}\r\n"}));
}

TEST_F(Network, ADuplicateServiceNameInAnyCaseEmptiesTheWholeList) {
    card("1", "\"ServiceName\"=\"eth0\"");
    card("2", "\"ServiceName\"=\"wlan0\"");
    card("3", "\"ServiceName\"=\"ETH0\"");
    EXPECT_EQ(gfcolGetNetworkCards().count(), 0);
    EXPECT_EQ(said(), (Lines{"[OstrelGlobals.gfcolGetNetworkCards] ERROR(457): This key is already "
                             "associated with an element of this collection\r\n"}));
}

TEST_F(Network, ABlankCardNameEndsTheListingButAnAdapterNameIsTakenAsItStands) {
    card("1", "\"ServiceName\"=\"eth0\"");
    card("   ", "\"ServiceName\"=\"blank\"");  // sorts before "1"
    EXPECT_EQ(gfcolGetNetworkCards().count(), 0);

    load("[" + kTcpip + "\\Adapters\\ lead]\r\n[" + kTcpip + "\\Adapters\\{C3}]\r\n[" + kTcpip +
         "\\Adapters\\ ]\r\n");
    EXPECT_EQ(names(gfcolGetAdapters()), (Lines{" ", " lead", "{C3}"}));
    EXPECT_TRUE(said().empty());
}

TEST_F(Network, EachRoutineReportsAFailureAndGivesItsNeutralResult) {
    card("1", "\"ServiceName\"=\"eth0\"");
    apartment().gobjFileSystem = nullptr;  // the card's path can't be joined
    EXPECT_EQ(gfcolGetNetworkCards().count(), 0);
    apartment().ports.registry = nullptr;
    EXPECT_EQ(gfcolGetAdapters().count(), 0);
    EXPECT_FALSE(gfdicGetInterfaceData("{C3}")) << "null, not an empty dictionary";
    EXPECT_EQ(said(), (Lines{"[OstrelGlobals.gfcolGetNetworkCards] ERROR(91): Object variable or "
                             "With block variable not set\r\n",
                             "[OstrelGlobals.gfcolGetAdapters] ERROR(429): ActiveX component can't "
                             "create object\r\n",
                             "[OstrelGlobals.gfdicGetInterfaceData] ERROR(429): ActiveX component "
                             "can't create object\r\n"}));
}

TEST_F(Network, InterfaceDataHoldsTheThirteenValuesInOrderWithTheirDefaults) {
    const Ref<Dictionary> missing = gfdicGetInterfaceData("{C3}");
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->Count(), 0) << "no key: empty, not null";

    // DefaultGateway as the system stores it, a multi-string, here empty.
    load("[" + kTcpip +
         "\\Interfaces\\{C3}]\r\n"
         "\"DefaultGateway\"=hex(7):00,00\r\n"
         "\"NameServer\"=\"10.0.0.1,10.0.0.2\"\r\n"
         "\"Domain\"=dword:00000001\r\n");  // of the wrong type: the default
    apartment().glngDebugLevel = 100001;
    const Ref<Dictionary> data = gfdicGetInterfaceData("{C3}");
    ASSERT_TRUE(data);
    EXPECT_EQ(
        entriesOf(*data),
        (Lines{"HostName=''", "DefaultGateway=''", "Domain=''", "IPAddress=''", "SubnetMask=''",
               "Server=''", "NameServer='10.0.0.1,10.0.0.2'", "EnableDHCP=0", "DhcpIPAddress=''",
               "DhcpSubnetMask=''", "DhcpServer=''", "DhcpNameServer=''", "DhcpDomain=''"}));
    EXPECT_FALSE(data->Exists("ipaddress")) << "keys compare case-sensitively";
    ASSERT_EQ(said().size(), 13u);
    EXPECT_EQ(said()[6], "NameServer := '10.0.0.1,10.0.0.2'\r\n");
    EXPECT_EQ(said()[7], "EnableDHCP := '0'\r\n");
}

TEST_F(Network, TheNumberRoutineLogsBeforeItAddsTheStringRoutineAfter) {
    load("[" + kTcpip +
         "\\Interfaces\\{C3}]\r\n\"EnableDHCP\"=dword:00000001\r\n"
         "\"DhcpServer\"=\"10.0.0.1\"\r\n");
    WNCRegistry registry;
    ASSERT_TRUE(registry.TryOpenKey(2, std::string(kInterfacesPath) + "{C3}", kKeyRead, 0));
    Dictionary data;
    data.Add("EnableDHCP", Variant(int32_t{7}));
    data.Add("DhcpServer", Variant("first"));
    apartment().glngDebugLevel = 100001;
    EXPECT_EQ(flngAddNetworkInterfaceValue(registry, data, "EnableDHCP", 0), 1);
    EXPECT_EQ(fstrAddNetworkInterfaceValue(registry, data, "DhcpServer", ""), "10.0.0.1");
    EXPECT_EQ(said(),
              (Lines{"EnableDHCP := '1'\r\n",
                     "[OstrelGlobals.flngAddNetworkInterfaceValue] ERROR(457): This key is already "
                     "associated with an element of this collection\r\n",
                     "[OstrelGlobals.fstrAddNetworkInterfaceValue] ERROR(457): This key is already "
                     "associated with an element of this collection\r\n"}));
    EXPECT_EQ(data.Item("EnableDHCP"), Variant(int32_t{7})) << "the first value stays";
    EXPECT_EQ(data.Item("DhcpServer"), Variant("first"));
}

#ifndef _WIN32
// Linux makes the network keys from the system's facts.
std::string leaseText(const platform::DhcpLease& lease) {
    std::string servers;
    for (const std::string& server : lease.nameServers) servers += server + ",";
    return lease.interfaceName + "|" + lease.address + "|" + lease.subnetMask + "|" + lease.server +
           "|" + servers + "|" + lease.domain;
}

TEST(NetworkKeys, LeaseFilesOfTheCommonClients) {
    EXPECT_EQ(leaseText(platform::parseKeyValueLease(
                  "# This is private data.\nADDRESS=192.168.1.20\nNETMASK=255.255.255.0\n"
                  "ROUTER=192.168.1.1\nSERVER_ADDRESS=192.168.1.1\nDNS=192.168.1.1 9.9.9.9\n"
                  "DOMAINNAME=home.example\n")),
              "|192.168.1.20|255.255.255.0|192.168.1.1|192.168.1.1,9.9.9.9,|home.example");

    // Every block, oldest first; quotes keep ; and braces inside.
    Lines dhclient;
    for (const auto& lease : platform::parseDhclientLeases(R"(default-duid "\000\001";
lease {
  interface "eth0";
  fixed-address 10.0.0.7;
  option subnet-mask 255.255.0.0;
  option domain-name "old; \"odd\" {name}";
}
lease {
  interface "eth0";
  fixed-address 10.0.0.8;
  option dhcp-server-identifier 10.0.0.1;
  option domain-name-servers 10.0.0.1,10.0.0.2;
  renew 4 2026/11/26 01:00:00;
}
)")) {
        dhclient.push_back(leaseText(lease));
    }
    EXPECT_EQ(dhclient, (Lines{"eth0|10.0.0.7|255.255.0.0|||old; \"odd\" {name}",
                               "eth0|10.0.0.8||10.0.0.1|10.0.0.1,10.0.0.2,|"}));

    const auto routes = platform::defaultGateways(
        "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n"
        "eth0\t00000000\t010200C0\t0003\t0\t0\t0\t00000000\t0\t0\t0\n"
        "eth0\t000200C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n"
        "wg0\t00000000\t00000000\t0001\t0\t0\t0\t00000000\t0\t0\t0\n");
    EXPECT_EQ(routes, (std::vector<std::pair<std::string, std::string>>{{"eth0", "192.0.2.1"}}))
        << "only a default route through a gateway";
}

// The keys made from given facts: a card has a device behind it; the leased
// address is kept apart from the others, a lease's line ends are dropped, and
// what nothing says (no default route, no lease, no name server on the
// loopback) is left out for its default.
TEST_F(Network, TheFactsBecomeTheKeysOfEachInterface) {
    platform::NetworkFacts facts;
    facts.hostName = "pc";
    facts.nameServers = {"10.0.0.1", "10.0.0.2"};
    platform::InterfaceFacts& iface = facts.interfaces.emplace_back();
    iface.name = "eth0";
    iface.index = 2;
    iface.hardware = true;
    iface.addresses = {"10.0.0.8", "172.16.0.3"};
    iface.masks = {"255.255.0.0", "255.255.255.0"};
    iface.lease = {"eth0", "10.0.0.8", "255.255.0.0", "10.0.0.1", {"10.0.0.1"}, "a\"b\\c\r\n"};
    platform::InterfaceFacts& loopback = facts.interfaces.emplace_back();
    loopback.name = "lo";
    loopback.index = 1;
    loopback.loopback = true;
    loopback.addresses = {"127.0.0.1"};
    loopback.masks = {"255.0.0.0"};
    loopback.gateways = {"127.0.0.9", "127.0.0.10"};
    fx.registry.loadKeys([&](platform::RegistryLayer& keys) { addNetworkKeys(keys, facts); });

    EXPECT_EQ(names(gfcolGetNetworkCards()), Lines{"eth0"});
    EXPECT_EQ(
        entriesOf(*gfdicGetInterfaceData("eth0")),
        (Lines{"HostName='pc'", "DefaultGateway=''", "Domain=''", "IPAddress='172.16.0.3'",
               "SubnetMask='255.255.255.0'", "Server=''", "NameServer='10.0.0.1 10.0.0.2'",
               "EnableDHCP=1", "DhcpIPAddress='10.0.0.8'", "DhcpSubnetMask='255.255.0.0'",
               "DhcpServer='10.0.0.1'", "DhcpNameServer='10.0.0.1'", "DhcpDomain='a\"b\\c'"}));
    EXPECT_EQ(entriesOf(*gfdicGetInterfaceData("lo")),
              (Lines{"HostName='pc'", "DefaultGateway='127.0.0.9 127.0.0.10'", "Domain=''",
                     "IPAddress='127.0.0.1'", "SubnetMask='255.0.0.0'", "Server=''",
                     "NameServer=''", "EnableDHCP=0", "DhcpIPAddress=''", "DhcpSubnetMask=''",
                     "DhcpServer=''", "DhcpNameServer=''", "DhcpDomain=''"}));
}
#endif

}  // namespace
}  // namespace ostrel
