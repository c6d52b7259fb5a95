#include "foundation/wnc_registry.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "fakes/error_number.h"
#include "fakes/test_apartment.h"
#include "foundation/globals.h"

namespace ostrel {
namespace {

using fakes::errorNumberOf;
using platform::RegistryKey;

// A key whose every read fails at run time.
struct BrokenKey : RegistryKey {
    [[noreturn]] static std::nullopt_t broken() { throw std::runtime_error("broken"); }
    std::optional<std::string> stringValue(std::string_view) const override { return broken(); }
    std::optional<int32_t> dwordValue(std::string_view) const override { return broken(); }
    std::optional<std::string> subKeyName(uint32_t) const override { return broken(); }
};

// A .reg registry that records the hive and access that reach it, and answers
// with a broken key or a refusal where the path says so.
struct RecordingPort : platform::RegFileRegistry {
    std::unique_ptr<RegistryKey> open(int32_t hive, std::string_view path, int32_t access,
                                      int32_t& errorCode) override {
        calls.push_back({hive, access});
        errorCode = path == "Refused" ? 5 : 0;
        if (path == "Broken") return std::make_unique<BrokenKey>();
        if (path == "Refused") return nullptr;
        return RegFileRegistry::open(hive, path, access, errorCode);
    }
    std::vector<std::pair<int32_t, int32_t>> calls;
};

// Each value of the key as a string and as a number, the defaults "dflt" and 9.
std::string reads(WNCRegistry* registry) {
    return gfstrGetRegValue(registry, "partnumber", "dflt") + "|" +
           gfstrGetRegValue(registry, "Build", "dflt") + "|" +
           std::to_string(gflngGetRegValue(registry, "Build", 9)) + "|" +
           std::to_string(gflngGetRegValue(registry, "PartNumber", 9));
}

struct WNCRegistryTest : ::testing::Test {
    void SetUp() override {
        port.loadText(
            "Windows Registry Editor Version 5.00\n"
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Beta]\n\"PartNumber\"=\" PN-2 \"\n"
            "\"Build\"=dword:fffffffe\n"
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\alpha]\n\"PartNumber\"=\"PN-1\"\n"
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Gamma]\n",
            "toolbar.reg");
        fx.use(&platform::Ports::registry, &port);
    }

    fakes::TestApartment fx;
    RecordingPort port;
};

// Only OpenKey raises: TryOpenKey answers False, and the reads their defaults.
TEST_F(WNCRegistryTest, OpenKeyRaisesWhereTryOpenKeyAndTheReadsDoNot) {
    EXPECT_EQ(reads(nullptr), "dflt|dflt|9|9");
    WNCRegistry registry;
    ASSERT_TRUE(registry.TryOpenKey(2, "SOFTWARE\\QUORL\\Toolbar\\Beta", kKeyRead, 0));
    EXPECT_EQ(reads(&registry), " PN-2 |dflt|-2|9") << "a dword is no string, a string no dword";
    EXPECT_FALSE(registry.TryOpenKey(1, "Refused", kKeyQueryValue, 0));
    EXPECT_EQ(port.calls, (std::vector<std::pair<int32_t, int32_t>>{{2, 131097}, {1, 1}}));

    // A failed open drops the key held before.
    EXPECT_EQ(reads(&registry), "dflt|dflt|9|9");
    std::string name;
    EXPECT_FALSE(registry.EnumFirstSubKey(name));

    EXPECT_EQ(errorNumberOf([&] { registry.OpenKey(2, "SOFTWARE\\Missing", kKeyRead, 0); }), 53);
    EXPECT_EQ(errorNumberOf([&] { registry.OpenKey(2, "Refused", kKeyRead, 0); }), 70);
    registry.OpenKey(2, "Broken", kKeyRead, 0);
    EXPECT_EQ(reads(&registry), "dflt|dflt|9|9") << "reads that fail";
}

// The catalogue's walk of the enumeration itself: the catalogue suites.
TEST_F(WNCRegistryTest, EnumerationEndsAndStartsOverOnASecondOpen) {
    WNCRegistry parent;
    parent.OpenKey(2, "SOFTWARE\\QUORL\\Toolbar", kKeyRead, 0);
    const auto next = [&] { return enumSubKeyName(parent, false); };
    EXPECT_EQ((std::vector<std::string>{enumSubKeyName(parent, true), next(), next(), next()}),
              (std::vector<std::string>{"alpha", "Beta", "Gamma", ""}))
        << "the empty name past the last";

    // Re-opening resets the position; EnumFirstSubKey does too.
    EXPECT_EQ(enumSubKeyName(parent, true), "alpha");
    parent.OpenKey(2, "SOFTWARE\\QUORL\\Toolbar", kKeyRead, 0);
    EXPECT_EQ(next(), "alpha");
    parent.OpenKey(2, "SOFTWARE\\QUORL\\Toolbar\\Gamma", kKeyRead, 0);
    std::string name;
    EXPECT_FALSE(parent.EnumFirstSubKey(name)) << "a key without sub-keys";
}

}  // namespace
}  // namespace ostrel
