#include <gtest/gtest.h>

#include <string>

#include "foundation/wnc_registry.h"
#include "platform/adapters.h"

namespace ostrel::platform {
namespace {

#ifdef _WIN32
TEST(SystemRegistry, ReadsTheWindowsRegistry) {
    RegistryPort& registry = systemRegistry();
    int32_t code = -1;
    auto version = registry.open(kHiveLocalMachine,
                                 "Software\\Microsoft\\Windows NT\\CurrentVersion", kKeyRead, code);
    ASSERT_TRUE(version);
    EXPECT_EQ(code, 0);
    EXPECT_FALSE(version->stringValue("CurrentVersion").value_or("").empty());
    EXPECT_EQ(version->dwordValue("CurrentVersion"), std::nullopt);  // a string, not a dword

    auto microsoft = registry.open(kHiveLocalMachine, "SOFTWARE\\microsoft", kKeyRead, code);
    ASSERT_TRUE(microsoft);
    bool listed = false;
    for (uint32_t i = 0; auto name = microsoft->subKeyName(i); ++i) listed |= *name == "Windows";
    EXPECT_TRUE(listed);

    EXPECT_FALSE(registry.open(kHiveLocalMachine, "Software\\No\\Such\\Key", kKeyRead, code));
    EXPECT_EQ(code, 2);
}
#else
TEST(SystemRegistry, StartsEmptyOffWindows) {
    int32_t code = -1;
    EXPECT_FALSE(systemRegistry().open(kHiveLocalMachine, "Software", kKeyRead, code));
    EXPECT_EQ(code, 2);
}
#endif

}  // namespace
}  // namespace ostrel::platform
