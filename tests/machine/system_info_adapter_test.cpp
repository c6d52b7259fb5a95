// The real system information adapter of this platform. The Linux user name
// calls are checked end to end, by the tool with and without USERNAME.
// Nothing here may depend on the machine: any kernel, architecture, number of
// processors or affinity CI may get.
#include <gtest/gtest.h>

#include <bit>
#include <string>

#include "platform/adapters.h"
#include "runtime/text.h"

#ifndef _WIN32
#include <sys/utsname.h>
#include <unistd.h>

#include "platform/posix/system_info_posix.h"
#endif

namespace ostrel {
namespace {

TEST(SystemInfoAdapter, FillsTheRecordsLikeAnNtSystemAndWantsRoomForTheNul) {
    platform::SystemInfoPort& port = platform::systemInfo();
    platform::OsVersionRecord version;
    version.dwOSVersionInfoSize = 156;
    ASSERT_TRUE(port.getVersionEx(version));
    EXPECT_EQ(version.dwPlatformId, 2);
    EXPECT_GE(version.dwMajorVersion, 3);

    platform::SystemRecord native;
    port.getNativeSystemInfo(native);
    const int architecture = native.wProcessorArchitecture;
    EXPECT_TRUE(architecture == 0 || architecture == 5 || architecture == 9 || architecture == 12 ||
                architecture == -1)
        << architecture;
    // The mask and the count tell of the same processors.
    EXPECT_GE(native.dwNumberOfProcessors, 1);
    EXPECT_EQ(std::popcount(static_cast<uint32_t>(native.dwActiveProcessorMask)),
              native.dwNumberOfProcessors);

    std::string buffer(256, '\0');
    uint32_t size = 255;
    ASSERT_TRUE(port.computerNameEx(7, buffer, size));
    const std::string name = gfstrTrimAtNull(buffer);
    ASSERT_FALSE(name.empty());
    EXPECT_EQ(size, name.size());
    size = static_cast<uint32_t>(name.size());
    EXPECT_FALSE(port.computerNameEx(7, buffer, size));
    EXPECT_EQ(size, name.size() + 1);
}

#ifndef _WIN32
// What a host written for Windows expects of a current system, whatever the
// kernel; the kernel's release is in the build number and the service-pack text.
TEST(SystemInfoAdapter, LinuxReportsWindows10AndCarriesTheKernelRelease) {
    utsname names{};
    ASSERT_EQ(uname(&names), 0);
    platform::OsVersionRecord version;
    version.dwOSVersionInfoSize = 148;
    ASSERT_TRUE(platform::systemInfo().getVersionEx(version));
    EXPECT_EQ(version.dwMajorVersion, 10);
    EXPECT_EQ(version.dwMinorVersion, 0);
    EXPECT_EQ(version.dwBuildNumber, platform::kernelVersionCode(names.release));
    EXPECT_EQ(gfstrTrimAtNull(version.szCSDVersion),
              std::string(names.sysname) + " " + names.release);
    version.dwOSVersionInfoSize = 100;
    EXPECT_FALSE(platform::systemInfo().getVersionEx(version));

    EXPECT_EQ(platform::kernelVersionCode("6.1.0-18-amd64"), (6 << 16) | (1 << 8));
    EXPECT_EQ(platform::kernelVersionCode("4.19.304"), (4 << 16) | (19 << 8) | 255);
    EXPECT_EQ(platform::kernelVersionCode("5.15"), (5 << 16) | (15 << 8));
}

TEST(SystemInfoAdapter, LinuxProcessorMaskIsTheOnlineListUpTo31) {
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

    // The machine's own name: its host name, never "localhost" for a named host.
    char host[256] = {};
    ASSERT_EQ(gethostname(host, sizeof host - 1), 0);
    std::string buffer(256, '\0');
    uint32_t size = 255;
    ASSERT_TRUE(platform::systemInfo().computerNameEx(7, buffer, size));
    const std::string name = gfstrTrimAtNull(buffer);
    EXPECT_TRUE(name == host || name.starts_with(std::string(host) + ".")) << name;
}
#endif

}  // namespace
}  // namespace ostrel
