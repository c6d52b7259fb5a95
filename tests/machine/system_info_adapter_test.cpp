// The real system information adapter of this platform.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "platform/adapters.h"
#include "runtime/text.h"

namespace ostrel {
namespace {

TEST(SystemInfoAdapter, FillsTheRecordsLikeAnNtSystem) {
    platform::SystemInfoPort& port = platform::systemInfo();
    platform::OsVersionRecord version;
    version.dwOSVersionInfoSize = 156;
    ASSERT_TRUE(port.getVersionEx(version));
    EXPECT_EQ(version.dwPlatformId, 2);
    EXPECT_GE(version.dwMajorVersion, 3);

    platform::SystemRecord native;
    port.getNativeSystemInfo(native);
    EXPECT_TRUE(native.wProcessorArchitecture == 0 || native.wProcessorArchitecture == 9 ||
                native.wProcessorArchitecture == 12)
        << native.wProcessorArchitecture;
    EXPECT_GE(native.dwNumberOfProcessors, 1);
    EXPECT_NE(native.dwActiveProcessorMask, 0);
    if (native.wProcessorArchitecture == 9) {
        EXPECT_EQ(native.dwProcessorType, 8664);
    }
}

TEST(SystemInfoAdapter, ComputerNameNeedsRoomForItsNul) {
    platform::SystemInfoPort& port = platform::systemInfo();
    std::string buffer(256, '\0');
    uint32_t size = 255;
    ASSERT_TRUE(port.computerNameEx(7, buffer, size));
    const std::string name = gfstrTrimAtNull(buffer);
    ASSERT_FALSE(name.empty());
    EXPECT_EQ(size, name.size());

    std::string small(256, '\0');
    uint32_t tooSmall = static_cast<uint32_t>(name.size());
    EXPECT_FALSE(port.computerNameEx(7, small, tooSmall));
    EXPECT_EQ(tooSmall, name.size() + 1);
}

#ifndef _WIN32
// Linux has no directory names: the failing format 2 call carries the login
// name only where USERNAME can't.
TEST(SystemInfoAdapter, LinuxUserNameCallsFailAndFormat2CarriesTheLoginName) {
    platform::SystemInfoPort& port = platform::systemInfo();
    const std::string fresh(256, '\0');
    std::string buffer = fresh;
    uint32_t size = 255;
    EXPECT_FALSE(port.userNameEx(7, buffer, size));
    setenv("USERNAME", "pat", 1);
    EXPECT_FALSE(port.userNameEx(2, buffer, size));
    EXPECT_EQ(buffer, fresh);
    unsetenv("USERNAME");
    EXPECT_FALSE(port.userNameEx(2, buffer, size));
    EXPECT_FALSE(gfstrTrimAtNull(buffer).empty());
}
#endif

}  // namespace
}  // namespace ostrel
