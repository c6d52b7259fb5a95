// GetKeyValue through the system's own A-form calls, on a volatile key of
// the current user that the test makes and removes.
#ifdef _WIN32
#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "fakes/test_apartment.h"
#include "foundation/globals.h"
#include "platform/adapters.h"
#include "ui/about_window.h"

namespace ostrel {
namespace {

constexpr int32_t kHkeyCurrentUser = static_cast<int32_t>(0x80000001u);
constexpr const char* kTestKey = "Software\\QUORL-about-test";

TEST(AnsiRegistryAdapter, GetKeyValueReadsTheSystemRegistry) {
    fakes::TestApartment fx;
    fx.use(&platform::Ports::ansiRegistry, &platform::systemAnsiRegistry());

    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kTestKey, 0, nullptr, REG_OPTION_VOLATILE,
                              KEY_ALL_ACCESS, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    // The A-form call adds the NUL that a string stored without one lacks
    // (Wine does; 1024 bytes without one then no longer fit), so the longest
    // string read whole here is 1023 bytes.
    const std::string full(1023, 'x');
    const std::string longer(1025, 'x');
    const DWORD number = 0x10;
    const wchar_t wide[] = L"Gr\u00fc\u00dfe";
    RegSetValueExA(key, "Sz", 0, REG_SZ, reinterpret_cast<const BYTE*>("C:\\Tools"), 9);
    RegSetValueExA(key, "Full", 0, REG_SZ, reinterpret_cast<const BYTE*>(full.data()), 1023);
    RegSetValueExA(key, "Longer", 0, REG_SZ, reinterpret_cast<const BYTE*>(longer.data()), 1025);
    RegSetValueExA(key, "Number", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), 4);
    RegSetValueExW(key, L"Wide", 0, REG_SZ, reinterpret_cast<const BYTE*>(wide), sizeof wide);

    std::string value;
    EXPECT_TRUE(GetKeyValue(kHkeyCurrentUser, kTestKey, "Sz", value));
    EXPECT_EQ(value, "C:\\Tools");
    EXPECT_TRUE(GetKeyValue(kHkeyCurrentUser, kTestKey, "Full", value));
    EXPECT_EQ(value, full);
    EXPECT_FALSE(GetKeyValue(kHkeyCurrentUser, kTestKey, "Longer", value));
    EXPECT_EQ(value, "");
    EXPECT_TRUE(GetKeyValue(kHkeyCurrentUser, kTestKey, "Number", value));
    EXPECT_EQ(value, "16");
    // Through the ANSI code page and back.
    value.clear();
    EXPECT_TRUE(GetKeyValue(kHkeyCurrentUser, kTestKey, "Wide", value));
    EXPECT_EQ(value, "Grüße");
    EXPECT_FALSE(GetKeyValue(kHkeyCurrentUser, "Software\\QUORL-no-such-key", "Sz", value));

    RegCloseKey(key);
    RegDeleteKeyA(HKEY_CURRENT_USER, kTestKey);
}

}  // namespace
}  // namespace ostrel
#endif
