// The real system information and WMI of this platform: Linux's against this
// machine, Windows's calls and scripting interface (Wine answers all the
// classes). Facts must be there and plausible, never invented. Nothing here
// may depend on the machine beyond what it says of itself: any kernel,
// architecture, number of processors or affinity CI may get. The Linux user
// name calls are checked end to end, by the tool with and without USERNAME.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <memory>
#include <string>
#include <vector>

#include "fakes/error_number.h"
#include "platform/adapters.h"
#include "runtime/convert.h"
#include "runtime/text.h"

#ifndef _WIN32
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

// The fully qualified computer name, as the component asks for it.
std::string computerName() {
    std::string buffer(256, '\0');
    uint32_t size = 255;
    EXPECT_TRUE(platform::systemInfo().computerNameEx(7, buffer, size));
    const std::string name = gfstrTrimAtNull(buffer);
    EXPECT_EQ(size, name.size());
    return name;
}

TEST(SystemInfoAdapter, FillsTheRecordsLikeAnNtSystemAndWantsRoomForTheNul) {
    platform::SystemInfoPort& port = platform::systemInfo();
    platform::OsVersionRecord version;
    version.dwOSVersionInfoSize = 156;
    ASSERT_TRUE(port.getVersionEx(version));
    EXPECT_EQ(version.dwPlatformId, 2);
    EXPECT_GE(version.dwMajorVersion, 3);
#ifndef _WIN32
    // What a host written for Windows expects of a current system, whatever the
    // kernel; the kernel's release is in the build number and the service-pack text.
    EXPECT_EQ(version.dwMajorVersion * 100 + version.dwMinorVersion, 1000);
    const std::string csd = gfstrTrimAtNull(version.szCSDVersion);
    ASSERT_TRUE(csd.starts_with("Linux ")) << csd;
    EXPECT_EQ(version.dwBuildNumber, platform::kernelVersionCode(csd.substr(6)));
    version.dwOSVersionInfoSize = 148;
    EXPECT_TRUE(port.getVersionEx(version));
    version.dwOSVersionInfoSize = 100;
    EXPECT_FALSE(port.getVersionEx(version));
#endif

    platform::SystemRecord native;
    port.getNativeSystemInfo(native);
    EXPECT_THAT(int{native.wProcessorArchitecture}, ::testing::AnyOf(0, 5, 9, 12, -1));
    // The mask and the count tell of the same processors.
    EXPECT_GE(native.dwNumberOfProcessors, 1);
    EXPECT_EQ(std::popcount(static_cast<uint32_t>(native.dwActiveProcessorMask)),
              native.dwNumberOfProcessors);

    const std::string name = computerName();
    std::string buffer(256, '\0');
    uint32_t size = static_cast<uint32_t>(name.size());
    EXPECT_FALSE(port.computerNameEx(7, buffer, size));
    EXPECT_EQ(size, name.size() + 1);
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
        EXPECT_TRUE(cores.isNull() || toLong(cores) >= 1);
        EXPECT_THAT(toLong(processor->property("AddressWidth")), ::testing::AnyOf(32, 64));
    }
    EXPECT_TRUE(services->execQuery("Select * from Win32_LogonSession Where LogonType = 2"));
#ifndef _WIN32
    // What the Linux provider makes of the system where a host could see it go
    // wrong: memory as WMI's decimal string, the packages numbered from CPU0, null
    // where the system is silent, the width of a 64-bit build, an account per
    // session, and the host's own name, which the computer name then qualifies.
    EXPECT_TRUE(computers[0]->property("TotalPhysicalMemory").isString());
    EXPECT_TRUE(computers[0]->property("Workgroup").isNull());
    EXPECT_EQ(textOf(*processors[0], "DeviceId"), "CPU0");
    EXPECT_TRUE(processors[0]->property("version").isNull());
    EXPECT_TRUE(systems[0]->property("ServicePackMajorVersion").isNull());
    const std::string architecture = textOf(*systems[0], "OSArchitecture");
    EXPECT_TRUE(architecture == "64-bit" || (sizeof(void*) == 4 && architecture == "32-bit"))
        << architecture;
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
    const std::string host = textOf(*computers[0], "DNSHostName"), computer = computerName();
    EXPECT_TRUE(computer == host || computer.starts_with(host + ".")) << computer << " of " << host;
#endif
}

#ifndef _WIN32
TEST(SystemInfoAdapter, LinuxKernelReleaseCodeAndProcessorMaskOfTheOnlineListUpTo31) {
    EXPECT_EQ(platform::kernelVersionCode("6.1.0-18-amd64"), (6 << 16) | (1 << 8));
    EXPECT_EQ(platform::kernelVersionCode("4.19.304"), (4 << 16) | (19 << 8) | 255);
    EXPECT_EQ(platform::kernelVersionCode("5.15"), (5 << 16) | (15 << 8));
    EXPECT_EQ(platform::processorMask("0\n"), 0x1u);
    EXPECT_EQ(platform::processorMask("0-3,8,10-11\n"), 0xD0Fu);
    EXPECT_EQ(platform::processorMask("0-63\n"), 0xFFFFFFFFu);
    EXPECT_EQ(platform::processorMask("30-33,40\n"), 0xC0000000u);
    EXPECT_EQ(platform::processorMask("32-35\n"), 0u);
    EXPECT_EQ(platform::processorMask(""), 0u);
}

TEST(SystemInfoAdapter, LinuxComputerNameIsTheHostNameWithTheLocalDomainOnly) {
    const std::string conf =
        "# comment\nnameserver 10.0.0.1\nsearch corp.example.org example.org\n"
        "options ndots:2\n";
    EXPECT_EQ(platform::qualifiedHostName("pc7", conf), "pc7.corp.example.org");
    EXPECT_EQ(platform::qualifiedHostName("pc7", conf + "domain example.net.\n"),
              "pc7.example.net");
    EXPECT_EQ(platform::qualifiedHostName("pc7.example.com", conf), "pc7.example.com");
    EXPECT_EQ(platform::qualifiedHostName("pc7", "nameserver 10.0.0.1\nsearch\n"), "pc7");
    EXPECT_EQ(platform::qualifiedHostName("", conf), "");
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
