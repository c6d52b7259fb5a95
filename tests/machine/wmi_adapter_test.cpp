// The real WMI of this platform: Linux's provider against this machine's own
// files, Windows's scripting interface (Wine answers all the classes). Facts
// must be there and plausible, never invented; nothing may depend on the
// machine beyond what it says of itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "fakes/error_number.h"
#include "platform/adapters.h"
#include "runtime/convert.h"

#ifndef _WIN32
#include <sys/sysinfo.h>
#include <sys/utsname.h>

#include "platform/posix/system_info_posix.h"
#endif

namespace ostrel {
namespace {

using platform::WmiObject;
using platform::WmiServices;

constexpr std::string_view kMoniker =
    "winmgmts:{impersonationLevel=impersonate}!\\\\.\\root\\cimv2";

std::vector<std::unique_ptr<WmiObject>> objectsOf(WmiServices& services, std::string_view query) {
    std::vector<std::unique_ptr<WmiObject>> objects;
    auto set = services.execQuery(query);
    if (!set) return objects;
    const int32_t count = set->count();
    while (auto object = set->next()) objects.push_back(std::move(object));
    EXPECT_EQ(count, static_cast<int32_t>(objects.size())) << query;
    return objects;
}

std::string textOf(WmiObject& object, std::string_view name) {
    const Variant value = object.property(name);
    return value.isNull() ? std::string() : toText(value);
}

TEST(WmiAdapter, TheSystemAndItsProcessorsAreThereAndAMissingPropertyFailsAtItsRead) {
    const auto services = platform::systemWmi().connect(kMoniker);
    ASSERT_TRUE(services);
    const auto systems = objectsOf(*services, "Select * from Win32_OperatingSystem");
    ASSERT_EQ(systems.size(), 1u);
    const std::string name = textOf(*systems[0], "name");
    EXPECT_EQ(std::count(name.begin(), name.end(), '|'), 2) << name;
    EXPECT_FALSE(name.starts_with("|")) << "a caption";
    EXPECT_EQ(fakes::errorNumberOf([&] { systems[0]->property("NoSuchProperty"); }), 438);

    const auto computers = objectsOf(*services, "Select * from Win32_ComputerSystem");
    ASSERT_EQ(computers.size(), 1u);
    EXPECT_GT(toDouble(computers[0]->property("TotalPhysicalMemory")), 64.0 * 1048576);
    EXPECT_FALSE(textOf(*computers[0], "name").empty());

    const auto processors = objectsOf(*services, "Select * from Win32_Processor");
    ASSERT_GE(processors.size(), 1u);
    for (const auto& processor : processors) {
        const Variant cores = processor->property("NumberOfCores");
        if (!cores.isNull()) {
            EXPECT_GE(toLong(cores), 1);
        }
        const int32_t width = toLong(processor->property("AddressWidth"));
        EXPECT_TRUE(width == 32 || width == 64) << width;
    }
    EXPECT_TRUE(services->execQuery("Select * from Win32_LogonSession Where LogonType = 2"));
}

#ifndef _WIN32

// What the provider makes of the system's files, where a host could see it
// go wrong, without reading those files again.
TEST(LinuxWmi, TheFactsAHostSeesAndNullWhereTheFilesAreSilent) {
    const auto services = platform::systemWmi().connect(kMoniker);
    ASSERT_TRUE(services);
    const auto computer = objectsOf(*services, "Select * from Win32_ComputerSystem");
    ASSERT_EQ(computer.size(), 1u);
    struct sysinfo memory {};
    ASSERT_EQ(sysinfo(&memory), 0);
    EXPECT_EQ(textOf(*computer[0], "TotalPhysicalMemory"),
              std::to_string(uint64_t{memory.totalram} * memory.mem_unit));
    EXPECT_TRUE(computer[0]->property("Workgroup").isNull());
    const auto processors = objectsOf(*services, "Select * from Win32_Processor");
    EXPECT_EQ(textOf(*processors[0], "DeviceId"), "CPU0");
    EXPECT_TRUE(processors[0]->property("version").isNull());
    const auto os = objectsOf(*services, "Select * from Win32_OperatingSystem");
    utsname names{};
    ASSERT_EQ(uname(&names), 0);
    EXPECT_EQ(textOf(*os[0], "OSArchitecture"),
              sizeof(void*) == 8 || std::string(names.machine).find("64") != std::string::npos
                  ? "64-bit"
                  : "32-bit");
    EXPECT_TRUE(os[0]->property("ServicePackMajorVersion").isNull());
    for (const auto& session :
         objectsOf(*services, "Select * from Win32_LogonSession Where LogonType = 2")) {
        const std::string id = textOf(*session, "LogonId");
        EXPECT_TRUE(isNumeric(id)) << id;
        const auto accounts =
            objectsOf(*services, "Associators of {Win32_LogonSession.LogonId=" + id +
                                     "} Where AssocClass=Win32_LoggedOnUser Role=Dependent");
        ASSERT_EQ(accounts.size(), 1u);
        EXPECT_FALSE(textOf(*accounts[0], "name").empty());
    }
}

// One processor object per package, named and clocked by its first processor.
TEST(LinuxWmi, ProcessorsArePackagesOfCpuinfo) {
    const auto packages = platform::cpuPackages(
        "processor\t: 0\nvendor_id\t: GenuineIntel\nmodel name\t: Fast CPU\nphysical id\t: 1\n"
        "cpu MHz\t\t: 2893.6\ncpu cores\t: 4\n\nprocessor\t: 1\nmodel name\t: Other\n"
        "physical id\t: 1\n\nprocessor\t: 2\nphysical id\t: 0\n");
    ASSERT_EQ(packages.size(), 2u);
    const platform::CpuPackage& first = packages.at(1);
    EXPECT_EQ(first.firstProcessor, 0);
    EXPECT_EQ(first.name, Variant("Fast CPU"));
    EXPECT_EQ(first.mhz, Variant(int32_t{2894}));
    EXPECT_EQ(first.cores, Variant(int32_t{4}));
    EXPECT_EQ(packages.at(0).firstProcessor, 2);
    EXPECT_TRUE(packages.at(0).name.isNull() && packages.at(0).mhz.isNull());
}

TEST(LinuxWmi, OnlyThisComputersDefaultNamespaceAndTheInventorysQueries) {
    platform::WmiPort& wmi = platform::systemWmi();
    EXPECT_TRUE(wmi.connect("winmgmts:{impersonationLevel=impersonate}!\\\\.\\"));
    EXPECT_TRUE(wmi.connect("WINMGMTS:!\\\\.\\ROOT\\CIMV2"));
    EXPECT_FALSE(wmi.connect("winmgmts:{impersonationLevel=impersonate}!\\\\.\\root\\default"));
    EXPECT_FALSE(
        wmi.connect("winmgmts:{impersonationLevel=impersonate}!\\\\elsewhere\\root\\cimv2"));
    const auto services = wmi.connect(kMoniker);
    EXPECT_FALSE(services->execQuery("Select * from Win32_Printer")) << "a class it doesn't know";
    EXPECT_EQ(fakes::errorNumberOf([&] { services->execQuery("Delete everything"); }),
              static_cast<int32_t>(0x80041017));
}

#endif

}  // namespace
}  // namespace ostrel
