// The network keys Linux makes from the system's facts, and the files they are made from.
#ifndef _WIN32
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fakes/test_apartment.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "machine/network.h"
#include "platform/common/registry_tree.h"
#include "platform/posix/network_keys_posix.h"

namespace ostrel::platform {
namespace {

using Lines = std::vector<std::string>;

TEST(NetworkKeys, LeaseFilesOfTheCommonClients) {
    const DhcpLease networkd = parseKeyValueLease(
        "# This is private data.\nADDRESS=192.168.1.20\nNETMASK=255.255.255.0\n"
        "ROUTER=192.168.1.1\nSERVER_ADDRESS=192.168.1.1\nDNS=192.168.1.1 9.9.9.9\n"
        "DOMAINNAME=home.example\n");
    EXPECT_EQ(networkd.address, "192.168.1.20");
    EXPECT_EQ(networkd.subnetMask, "255.255.255.0");
    EXPECT_EQ(networkd.server, "192.168.1.1");
    EXPECT_EQ(networkd.nameServers, (Lines{"192.168.1.1", "9.9.9.9"}));
    EXPECT_EQ(networkd.domain, "home.example");

    const auto dhclient = parseDhclientLeases(R"(default-duid "\000\001";
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
)");
    ASSERT_EQ(dhclient.size(), 2u);
    EXPECT_EQ(dhclient[0].domain, "old; \"odd\" {name}") << "quotes keep ; and braces inside";
    EXPECT_EQ(dhclient[1].interfaceName, "eth0");
    EXPECT_EQ(dhclient[1].address, "10.0.0.8");
    EXPECT_EQ(dhclient[1].server, "10.0.0.1");
    EXPECT_EQ(dhclient[1].nameServers, (Lines{"10.0.0.1", "10.0.0.2"}));

    const auto routes = defaultGateways(
        "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n"
        "eth0\t00000000\t010200C0\t0003\t0\t0\t0\t00000000\t0\t0\t0\n"
        "eth0\t000200C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n"
        "wg0\t00000000\t00000000\t0001\t0\t0\t0\t00000000\t0\t0\t0\n");
    EXPECT_EQ(routes, (std::vector<std::pair<std::string, std::string>>{{"eth0", "192.0.2.1"}}))
        << "only a default route through a gateway";
}

// The keys made from given facts: what each interface says, and what is left out.
TEST(NetworkKeys, TheFactsBecomeTheKeysOfEachInterface) {
    NetworkFacts facts;
    facts.hostName = "pc";
    facts.nameServers = {"10.0.0.1", "10.0.0.2"};
    InterfaceFacts iface;
    iface.name = "eth0";
    iface.index = 2;
    iface.hardware = true;
    iface.addresses = {"10.0.0.8", "172.16.0.3"};
    iface.masks = {"255.255.0.0", "255.255.255.0"};
    iface.lease =
        DhcpLease{"eth0", "10.0.0.8", "255.255.0.0", "10.0.0.1", {"10.0.0.1"}, "a\"b\\c\r\n"};
    facts.interfaces.push_back(iface);
    InterfaceFacts loopback;
    loopback.name = "lo";
    loopback.index = 1;
    loopback.loopback = true;
    loopback.addresses = {"127.0.0.1"};
    loopback.masks = {"255.0.0.0"};
    loopback.gateways = {"127.0.0.9", "127.0.0.10"};
    facts.interfaces.push_back(loopback);

    fakes::TestApartment fx;
    apartment().gobjFileSystem = makeRef<FileSystemObject>(fx.ports.fileSystem);
    fx.registry.loadKeys([&](RegistryLayer& keys) { addNetworkKeys(keys, facts); });
    Lines cards, adapters;
    for (const auto& entry : gfcolGetNetworkCards()) cards.push_back(entry.item);
    for (const auto& entry : gfcolGetAdapters()) adapters.push_back(entry.item);
    EXPECT_EQ(cards, Lines{"eth0"}) << "a card has a device behind it";
    EXPECT_EQ(adapters, (Lines{"eth0", "lo"}));
    const Ref<Dictionary> data = gfdicGetInterfaceData("eth0");
    ASSERT_TRUE(data);
    EXPECT_EQ(data->Item("HostName"), Variant("pc"));
    EXPECT_EQ(data->Item("IPAddress"), Variant("172.16.0.3")) << "the leased address aside";
    EXPECT_EQ(data->Item("SubnetMask"), Variant("255.255.255.0"));
    EXPECT_EQ(data->Item("NameServer"), Variant("10.0.0.1 10.0.0.2"));
    EXPECT_EQ(data->Item("EnableDHCP"), Variant(int32_t{1}));
    EXPECT_EQ(data->Item("DhcpIPAddress"), Variant("10.0.0.8"));
    EXPECT_EQ(data->Item("DhcpServer"), Variant("10.0.0.1"));
    EXPECT_EQ(data->Item("DhcpDomain"), Variant("a\"b\\c")) << "line ends dropped";
    EXPECT_EQ(data->Item("DefaultGateway"), Variant("")) << "no default route: left out";
    EXPECT_EQ(data->Item("Server"), Variant(""));
    const Ref<Dictionary> lo = gfdicGetInterfaceData("lo");
    ASSERT_TRUE(lo);
    EXPECT_EQ(lo->Item("IPAddress"), Variant("127.0.0.1"));
    EXPECT_EQ(lo->Item("SubnetMask"), Variant("255.0.0.0"));
    EXPECT_EQ(lo->Item("DefaultGateway"), Variant("127.0.0.9 127.0.0.10"));
    EXPECT_EQ(lo->Item("NameServer"), Variant("")) << "none on the loopback";
    EXPECT_EQ(lo->Item("EnableDHCP"), Variant(int32_t{0})) << "no lease: left out";
}

}  // namespace
}  // namespace ostrel::platform
#endif
