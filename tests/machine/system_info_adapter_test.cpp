// The real system information adapter of this platform. The Linux user name
// calls are checked end to end, by the tool with and without USERNAME.
#include <gtest/gtest.h>

#include <string>

#include "platform/adapters.h"
#include "runtime/text.h"

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
    EXPECT_TRUE(architecture == 0 || architecture == 9 || architecture == 12) << architecture;
    EXPECT_GE(native.dwNumberOfProcessors, 1);
    EXPECT_NE(native.dwActiveProcessorMask, 0);

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

}  // namespace
}  // namespace ostrel
