#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fakes/test_apartment.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/wnc_registry.h"
#include "machine/network.h"

namespace ostrel {
namespace {

using Lines = std::vector<std::string>;

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00\r\n\r\n";
const std::string kCards =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards";
const std::string kTcpip =
    "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters";

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
    card("2", "\"Description\"=\"No service\"");
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
    ASSERT_EQ(said().size(), 1u);
    EXPECT_EQ(said()[0],
              "[OstrelGlobals.gfcolGetNetworkCards] ERROR(91): Object variable or With block "
              "variable not set\r\n");

    apartment().ports.registry = nullptr;
    EXPECT_EQ(gfcolGetAdapters().count(), 0);
    EXPECT_FALSE(gfdicGetInterfaceData("{C3}")) << "null, not an empty dictionary";
    EXPECT_EQ(Lines(said().begin() + 1, said().end()),
              (Lines{"[OstrelGlobals.gfcolGetAdapters] ERROR(429): ActiveX component can't "
                     "create object\r\n",
                     "[OstrelGlobals.gfdicGetInterfaceData] ERROR(429): ActiveX component can't "
                     "create object\r\n"}));
}

TEST_F(Network, InterfaceDataHoldsTheThirteenValuesInOrderWithTheirDefaults) {
    const Ref<Dictionary> missing = gfdicGetInterfaceData("{C3}");
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->Count(), 0) << "no key: empty, not null";

    // IPAddress and DefaultGateway as the system stores them, multi-strings.
    load("[" + kTcpip +
         "\\Interfaces\\{C3}]\r\n"
         "\"IPAddress\"=hex(7):31,00,30,00,2e,00,30,00,2e,00,30,00,2e,00,35,00,00,00,31,00,39,00,"
         "32,00,2e,00,31,00,36,00,38,00,2e,00,31,00,2e,00,39,00,00,00,00,00\r\n"
         "\"DefaultGateway\"=hex(7):00,00\r\n"
         "\"NameServer\"=\"10.0.0.1,10.0.0.2\"\r\n"
         "\"Domain\"=dword:00000001\r\n");  // of the wrong type: the default
    apartment().glngDebugLevel = 100001;
    const Ref<Dictionary> data = gfdicGetInterfaceData("{C3}");
    ASSERT_TRUE(data);
    Lines keys;
    for (const auto& entry : *data) keys.push_back(entry.key);
    EXPECT_EQ(keys, (Lines{"HostName", "DefaultGateway", "Domain", "IPAddress", "SubnetMask",
                           "Server", "NameServer", "EnableDHCP", "DhcpIPAddress", "DhcpSubnetMask",
                           "DhcpServer", "DhcpNameServer", "DhcpDomain"}));
    EXPECT_EQ(data->Item("IPAddress"), Variant("10.0.0.5 192.168.1.9"));
    EXPECT_EQ(data->Item("DefaultGateway"), Variant(""));
    EXPECT_EQ(data->Item("Domain"), Variant(""));
    EXPECT_EQ(data->Item("EnableDHCP"), Variant(int32_t{0})) << "a number, not text";
    EXPECT_FALSE(data->Exists("ipaddress")) << "keys compare case-sensitively";
    ASSERT_EQ(said().size(), 13u);
    EXPECT_EQ(said()[3], "IPAddress := '10.0.0.5 192.168.1.9'\r\n");
    EXPECT_EQ(said()[7], "EnableDHCP := '0'\r\n");

    EXPECT_EQ(gfdicGetInterfaceData("{c3}")->Count(), 13) << "the registry ignores case";
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

}  // namespace
}  // namespace ostrel
