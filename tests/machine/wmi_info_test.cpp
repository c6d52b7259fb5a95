#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "fakes/test_apartment.h"
#include "foundation/globals.h"
#include "machine/wmi_info.h"
#include "platform/common/wmi_json.h"
#include "runtime/convert.h"

namespace ostrel {
namespace {

using platform::WmiRecord;
using Lines = std::vector<std::string>;
const Variant kNull{NullValue{}};

// The properties in the order the inventory reads them.
WmiRecord record(std::initializer_list<Variant> namesAndValues) {
    WmiRecord made;
    for (auto it = namesAndValues.begin(); it != namesAndValues.end(); it += 2)
        made.set(toText(it[0]), it[1]);
    return made;
}
WmiRecord computer(Variant domain, Variant workgroup, Variant memory = "17179869184") {
    return record({"Manufacturer", " Quux Ltd ", "Model", "Box 9", "SystemType", "x64-based PC",
                   "TotalPhysicalMemory", std::move(memory), "DNSHostName", "pc1", "Domain",
                   std::move(domain), "Workgroup", std::move(workgroup), "name", "PC1"});
}
WmiRecord bios(Variant name = "BIOS 1.2") {
    return record({"name", std::move(name), "BuildNumber", kNull, "IdentificationCode", "",
                   "Manufacturer", "Quux", "SerialNumber", "SN9", "version", "QUUX - 1"});
}
WmiRecord processor() {
    return record({"name", "Fast CPU", "MaxClockSpeed", "3000", "NumberOfCores", int32_t{4},
                   "AddressWidth", int32_t{64}, "version", kNull, "DeviceId", "CPU0", "ProcessorId",
                   "BFEBFBFF000906EA"});
}
WmiRecord video(Variant name) {
    return record({"name", std::move(name), "VideoProcessor", "VP", "DriverVersion", kNull,
                   "AdapterRAM", int32_t{1024}, "VideoModeDescription", kNull});
}
WmiRecord os(Variant name, Variant major = int32_t{0}, Variant minor = int32_t{0}) {
    return record({"OSArchitecture", "64-bit", "name", std::move(name), "ServicePackMajorVersion",
                   std::move(major), "ServicePackMinorVersion", std::move(minor)});
}
WmiRecord account(Variant fullName, Variant name) {
    return record({"Caption", "CORP\\x", "Description", kNull, "Domain", "CORP", "FullName",
                   std::move(fullName), "name", std::move(name)});
}
WmiRecord session(std::string id, std::optional<std::vector<WmiRecord>> accounts) {
    return {record({"LogonId", id}).properties, std::move(accounts)};
}

class WmiInventory : public ::testing::Test {
  protected:
    WmiInventory() {
        auto& classes = fx.wmi.classes;
        classes["Win32_ComputerSystem"] = {computer("corp.example", kNull)};
        classes["Win32_BIOS"] = {bios()};
        classes["Win32_Processor"] = {processor()};
        classes["Win32_VideoController"] = {video("Vid")};
        classes["Win32_OperatingSystem"] = {
            os("Sys 10|C:\\WINDOWS|\\Device\\Harddisk0\\Partition1")};
        classes["Win32_LogonSession"] = {session("999", {{account("Ann Example", "ann")}})};
    }
    const Lines& said() const { return fx.debugStream.texts; }
    platform::WmiServices* services() {
        services_ = fx.wmi.connect("winmgmts:");
        return services_.get();
    }

    fakes::TestApartment fx;
    std::unique_ptr<platform::WmiServices> services_;
};

TEST_F(WmiInventory, TheWholeBlockWithItsStampAndTheUserLineOnEveryRun) {
    fx.loadRegistry(
        "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\WBEM\\Scripting]\n"
        "\"Default Namespace\"=\"root\\\\cimv2\"\n");
    EXPECT_EQ(WmiInfo(),
              "//2024-Mar-05 14:07:09\r\n"
              "//Quux Ltd, Box 9, x64-based PC, 16.0GB, PC1.corp.example  \r\n"
              "//BIOS 1.2, Quux, SN9  \r\n"
              "//CPU_0 Fast CPU, BFEBFBFF000906EA, 3000Mhz  \r\n"
              "//Video_0 Vid, VP  \r\n"
              "//Sys 10, 64-bit, C:\\WINDOWS (\\Device\\Harddisk0\\Partition1) \r\n"
              "//Ann Example, ann, CORP\r\n");
    EXPECT_EQ(fx.wmi.monikers,
              Lines{"winmgmts:{impersonationLevel=impersonate}!\\\\.\\root\\cimv2"});
    EXPECT_EQ(fx.wmi.queries.back(),
              "Associators of {Win32_LogonSession.LogonId=999} Where AssocClass=Win32_LoggedOnUser "
              "Role=Dependent");
    EXPECT_EQ(said(), Lines{"GetWmiUserAccountInfo ERR(0) \r\n"});
}

TEST_F(WmiInventory, WithoutANamespaceOrWmiTheMonikerEndsInTheBackslashAndNothingIsSaid) {
    fx.wmi.unreachable = true;
    EXPECT_EQ(WmiInfo(), "");
    EXPECT_EQ(fx.wmi.monikers, Lines{"winmgmts:{impersonationLevel=impersonate}!\\\\.\\"});
    EXPECT_TRUE(said().empty());
    fx.use(&platform::Ports::wmi, nullptr);
    EXPECT_EQ(WmiInfo(), "");
    EXPECT_TRUE(said().empty());
}

TEST(WmiConverters, NullEmptyAndWhatIsNoNumberGiveTheStartingValue) {
    fakes::TestApartment fx;
    const Variant object{Ref<Object>(new Object)};
    struct Case {
        Variant value;
        std::string text;
        int32_t whole;
        double number;
    };
    for (const Case& c : std::vector<Case>{
             {kNull, "", 0, 0.0},
             {Variant(), "", 0, 0.0},
             {"  padded  ", "padded", 0, 0.0},
             {" 42 ", "42", 42, 42.0},
             {"2147483648", "2147483648", 0, 2147483648.0},  // beyond 32 bits: swallowed
             {2.5, "2.5", 2, 2.5},                           // banker's rounding
             {int32_t{-7}, "-7", -7, -7.0},
             {true, "True", -1, -1.0},
             {object, "", 0, 0.0},
         }) {
        const std::string shown = c.text.empty() ? "(empty)" : c.text;
        EXPECT_EQ(mfstrWmiString(c.value), c.text) << shown;
        EXPECT_EQ(mflngWmiLong(c.value), c.whole) << shown;
        EXPECT_EQ(mfdblWmiDouble(c.value), c.number) << shown;
    }
}

TEST_F(WmiInventory, TheComputerLineTestsWorkgroupButShowsDomain) {
    fx.locale.localeFacts.decimalSeparator = ",";
    WmiRecord bare = computer(kNull, kNull);
    bare.properties[1].second = "";     // Model
    bare.properties[2].second = kNull;  // SystemType
    bare.properties[7].second = "";     // name
    WmiRecord silent = computer("d", kNull);
    silent.properties[0].second = "  ";  // no manufacturer: nothing
    fx.wmi.classes["Win32_ComputerSystem"] = {computer(kNull, "WORKGROUP", int32_t{1073741824}),
                                              computer(kNull, kNull, kNull), silent, bare};
    EXPECT_EQ(GetWmiComputerInfo(services()),
              "Quux Ltd, Box 9, x64-based PC, 1,0GB, PC1.  "
              "Quux Ltd, Box 9, x64-based PC, 0,0GB, \r\nPC1  Quux Ltd, 16,0GB  \r\n");
    EXPECT_EQ(GetWmiComputerInfo(nullptr), "");
}

TEST_F(WmiInventory, SeveralObjectsShareOneLineAndSilentCardsUseANumber) {
    fx.wmi.classes["Win32_VideoController"] = {video(kNull), video("Second"), video("Third")};
    fx.wmi.classes["Win32_BIOS"] = {bios(), bios("")};
    EXPECT_EQ(GetWmiVideoProcessor(services()), "Video_1 Second, VP  Video_2 Third, VP  \r\n");
    EXPECT_EQ(GetWmiBiosInfo(services()), "BIOS 1.2, Quux, SN9  \r\n");
    fx.wmi.classes["Win32_VideoController"] = {video("")};
    EXPECT_EQ(GetWmiVideoProcessor(services()), "") << "no line end after nothing";
}

// Each object on the one line, in order; a caption-less one is passed over.
TEST_F(WmiInventory, TheServicePackRulesAndThePartsOfTheSystemName) {
    fx.wmi.classes["Win32_OperatingSystem"] = {
        os("Sys|C:\\W|Dev", int32_t{2}, int32_t{0}), os("Sys|C:\\W|Dev", "3", "1"),
        os("Sys|C:\\W|", int32_t{0}, int32_t{1}), os(" Sys | | Dev |extra", kNull, kNull),
        os("|C:\\W|Dev", int32_t{1}, int32_t{1})};
    EXPECT_EQ(GetWmiOSInfo(services()),
              "Sys, 64-bit, SP 2, C:\\W (Dev) Sys, 64-bit, SP 3.1, C:\\W (Dev) "
              "Sys, 64-bit, C:\\W Sys, 64-bit, Dev \r\n");
    EXPECT_TRUE(said().empty());
}

// A failure ends the section where it is, with one line at any verbosity;
// "not supported" is said only for a null result set.
TEST_F(WmiInventory, FailuresLeaveAGapAndALineNullSetsSayNotSupported) {
    fx.wmi.classes["Win32_Processor"][0].properties.erase(
        fx.wmi.classes["Win32_Processor"][0].properties.begin() + 2);  // NumberOfCores
    fx.wmi.classes["Win32_VideoController"] = {video("Vid"), video("Two").set("x", 1)};
    fx.wmi.classes["Win32_VideoController"][1].properties.erase(
        fx.wmi.classes["Win32_VideoController"][1].properties.begin() + 4);
    fx.wmi.classes.erase("Win32_BIOS");
    fx.wmi.failingClasses = {"Win32_ComputerSystem"};
    EXPECT_EQ(WmiInfo(),
              "//2024-Mar-05 14:07:09\r\n"
              "//"
              "//Win32_BIOS not supported\r\n"
              "//"
              "//Video_0 Vid, VP  "
              "//Sys 10, 64-bit, C:\\WINDOWS (\\Device\\Harddisk0\\Partition1) \r\n"
              "//Ann Example, ann, CORP\r\n");
    const std::string missing = ") Object doesn't support this property or method\r\n";
    EXPECT_EQ(said(), (Lines{"GetWmiComputerInfo ERR(-2147217392) Invalid class\r\n",
                             "GetWmiProcessorInfo ERR(438" + missing,
                             "GetWmiVideoProcessor ERR(438" + missing,
                             "GetWmiUserAccountInfo ERR(0) \r\n"}));

    fx.wmi.classes.clear();
    fx.wmi.failingClasses.clear();
    EXPECT_EQ(WmiInfo(),
              "//2024-Mar-05 14:07:09\r\n"
              "//Win32_ComputerSystem not supported\r\n"
              "//Win32_BIOS not supported\r\n"
              "//Win32_Processor not supported\r\n"
              "////"
              "//Win32_LogonSession not supported\r\n");

    fx.wmi.classes["Win32_OperatingSystem"] = {os("only|two"), os("Sys||")};
    fx.debugStream.texts.clear();
    EXPECT_EQ(GetWmiOSInfo(services()), "");
    EXPECT_EQ(said(), Lines{"GetWmiOSInfo ERR(9) Subscript out of range\r\n"});
    fx.wmi.classes["Win32_OperatingSystem"] = {os("Sys||", int32_t{40000})};
    EXPECT_EQ(GetWmiOSInfo(services()), "");
    EXPECT_EQ(said().back(), "GetWmiOSInfo ERR(6) Overflow\r\n") << "16-bit service pack";
}

TEST_F(WmiInventory, AnAccountWithAFullNameReplacesTheLinesBeforeIt) {
    auto& sessions = fx.wmi.classes["Win32_LogonSession"];
    sessions = {session("1", {{account("Ann Example", "ann")}}),
                session("2", {{account("Bob Example", ""), account("", "carl")}})};
    EXPECT_EQ(GetWmiUserAccountInfo(services()), "//Bob Example, CORP\r\n");

    sessions = {session("1", {{account("", "ann")}}), session("2", std::nullopt),
                session("3", {{}}), session("4", {{account("Dee", "dee")}})};
    sessions[2].associated->clear();
    EXPECT_EQ(GetWmiUserAccountInfo(services()), "//Dee, dee, CORP\r\n");

    fx.debugStream.texts.clear();
    sessions = {session("1", {{account("", "ann")}}), WmiRecord().set("Id", "2")};
    EXPECT_EQ(GetWmiUserAccountInfo(services()), "//Win32_LogonSession USER count:2\r\n");
    EXPECT_EQ(GetWmiUserAccountInfo(nullptr), "");
    EXPECT_EQ(said(), (Lines{"GetWmiUserAccountInfo ERR(438) Object doesn't support this "
                             "property or method\r\n",
                             "GetWmiUserAccountInfo ERR(91) Object variable or With block "
                             "variable not set\r\n"}));
}

// A class, or a session's accounts, whose enumeration fails stays out of the
// saved inventory, and the rest is saved: what the replay then finds.
TEST_F(WmiInventory, TheSavedInventoryLeavesOutWhatCantBeEnumerated) {
    struct FailingSet final : platform::WmiResultSet {
        int32_t count() override { return 1; }
        std::unique_ptr<platform::WmiObject> next() override { raise(-2147217407); }
    };
    struct Services final : platform::WmiServices {
        std::unique_ptr<platform::WmiServices> machine;
        std::unique_ptr<platform::WmiResultSet> execQuery(std::string_view query) override {
            if (query.ends_with("Win32_Processor") || query.find("LogonId=7}") != query.npos)
                return std::make_unique<FailingSet>();
            return machine->execQuery(query);
        }
    } services;
    services.machine = fx.wmi.connect("winmgmts:");
    fx.wmi.classes["Win32_LogonSession"].push_back(session("7", std::vector<WmiRecord>{}));
    platform::WmiJsonProvider replay;
    replay.loadText(wmiSavedInventory(services), "saved");
    const auto saved = replay.connect("winmgmts:");
    EXPECT_FALSE(saved->execQuery("Select * from Win32_Processor"));
    EXPECT_EQ(saved->execQuery("Select * from Win32_BIOS")->count(), 1);
    EXPECT_EQ(saved->execQuery(wmiLogonAccountsQuery("999"))->count(), 1);
    EXPECT_FALSE(saved->execQuery(wmiLogonAccountsQuery("7")));
}

}  // namespace
}  // namespace ostrel
