#include "foundation/wnc_registry.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "foundation/globals.h"
#include "platform/common/registry_regfile.h"
#include "runtime/automation_error.h"

namespace ostrel {
namespace {

using platform::RegFileRegistry;
using platform::RegistryKey;
using platform::RegistryPort;

const char* const kToolbar =
    "Windows Registry Editor Version 5.00\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Beta]\n"
    "\"PartNumber\"=\" PN-2 \"\n"
    "\"Build\"=dword:fffffffe\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\alpha]\n"
    "\"PartNumber\"=\"PN-1\"\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Gamma]\n";

// A key whose every read fails at run time.
class BrokenKey : public RegistryKey {
  public:
    std::optional<std::string> stringValue(std::string_view) const override {
        throw std::runtime_error("broken");
    }
    std::optional<int32_t> dwordValue(std::string_view) const override {
        throw std::runtime_error("broken");
    }
    std::optional<std::string> subKeyName(uint32_t) const override {
        throw std::runtime_error("broken");
    }
};

// Records what reaches the port, and answers with a broken key, a refusal or
// the file registry behind it.
class RecordingPort : public RegistryPort {
  public:
    std::unique_ptr<RegistryKey> open(int32_t hive, std::string_view path, int32_t access,
                                      int32_t& errorCode) override {
        calls.push_back({hive, std::string(path), access});
        if (path == "Broken") {
            errorCode = 0;
            return std::make_unique<BrokenKey>();
        }
        if (path == "Refused") {
            errorCode = 5;
            return nullptr;
        }
        return files.open(hive, path, access, errorCode);
    }

    struct Call {
        int32_t hive;
        std::string path;
        int32_t access;
    };
    std::vector<Call> calls;
    RegFileRegistry files;
};

class WNCRegistryTest : public ::testing::Test {
  protected:
    void SetUp() override {
        port_.files.loadText(kToolbar, "toolbar");
        saved_ = apartment().ports.registry;
        apartment().ports.registry = &port_;
    }
    void TearDown() override { apartment().ports.registry = saved_; }

    RecordingPort port_;
    RegistryPort* saved_ = nullptr;
};

TEST_F(WNCRegistryTest, CantBeMadeWithoutARegistry) {
    apartment().ports.registry = nullptr;
    try {
        WNCRegistry registry;
        FAIL() << "no error";
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number, 429);
    }
}

TEST_F(WNCRegistryTest, MissingOrRefusedKeys) {
    WNCRegistry registry;
    ASSERT_TRUE(registry.TryOpenKey(2, "SOFTWARE\\QUORL\\Toolbar\\Beta", kKeyRead, 0));
    EXPECT_FALSE(registry.TryOpenKey(1, "Refused", kKeyQueryValue, 0));
    EXPECT_EQ(port_.calls[0].hive, 2);
    EXPECT_EQ(port_.calls[0].access, 131097);
    EXPECT_EQ(port_.calls[1].hive, 1);
    EXPECT_EQ(port_.calls[1].access, 1);

    // A failed open drops the key held before.
    std::string text = "untouched";
    int32_t number = 7;
    EXPECT_FALSE(registry.GetStringValue("PartNumber", text));
    EXPECT_FALSE(registry.GetLongValue("Build", number));
    EXPECT_FALSE(registry.EnumFirstSubKey(text));
    EXPECT_EQ(text, "untouched");
    EXPECT_EQ(number, 7);

    auto openError = [&](std::string_view path) {
        try {
            registry.OpenKey(2, path, kKeyRead, 0);
        } catch (const AutomationError& error) {
            return error.number;
        }
        return 0;
    };
    EXPECT_EQ(openError("SOFTWARE\\QUORL\\Toolbar\\Missing"), 53);
    EXPECT_EQ(openError("Refused"), 70);
}

TEST_F(WNCRegistryTest, EnumeratesAndASecondOpenStartsOver) {
    WNCRegistry parent;
    WNCRegistry child;
    parent.OpenKey(2, "SOFTWARE\\QUORL\\Toolbar", kKeyRead, 0);

    // The catalogue's walk: the parent enumerates while a second instance
    // opens each child in turn without closing anything.
    std::vector<std::string> seen;
    std::string name;
    for (bool more = parent.EnumFirstSubKey(name); more; more = parent.EnumNextSubKey(name)) {
        child.OpenKey(2, "SOFTWARE\\QUORL\\Toolbar\\" + name, kKeyRead, 0);
        seen.push_back(name + "=" + gfstrGetRegValue(&child, "PartNumber", "none"));
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"alpha=PN-1", "Beta= PN-2 ", "Gamma=none"}));
    EXPECT_FALSE(parent.EnumNextSubKey(name));

    // Re-opening resets the position; EnumFirstSubKey does too.
    ASSERT_TRUE(parent.EnumFirstSubKey(name));
    ASSERT_TRUE(parent.EnumNextSubKey(name));
    EXPECT_EQ(name, "Beta");
    parent.OpenKey(2, "SOFTWARE\\QUORL\\Toolbar", kKeyRead, 0);
    ASSERT_TRUE(parent.EnumNextSubKey(name));
    EXPECT_EQ(name, "alpha");
    ASSERT_TRUE(parent.EnumFirstSubKey(name));
    EXPECT_EQ(name, "alpha");

    parent.OpenKey(2, "SOFTWARE\\QUORL\\Toolbar\\Gamma", kKeyRead, 0);
    EXPECT_FALSE(parent.EnumFirstSubKey(name));
}

TEST_F(WNCRegistryTest, ReadsValuesAndDefaultsNeverRaise) {
    EXPECT_EQ(gfstrGetRegValue(nullptr, "PartNumber", "dflt"), "dflt");
    EXPECT_EQ(gflngGetRegValue(nullptr, "Build", 9), 9);

    WNCRegistry registry;
    EXPECT_EQ(gfstrGetRegValue(&registry, "PartNumber", "dflt"), "dflt");  // no key open
    registry.OpenKey(2, "SOFTWARE\\QUORL\\Toolbar\\Beta", kKeyRead, 0);
    std::string text;
    EXPECT_TRUE(registry.GetStringValue("partnumber", text));
    EXPECT_EQ(text, " PN-2 ");
    EXPECT_EQ(gfstrGetRegValue(&registry, "PartNumber", "dflt"), " PN-2 ");
    EXPECT_EQ(gflngGetRegValue(&registry, "Build", 9), -2);
    EXPECT_EQ(gfstrGetRegValue(&registry, "Build", "dflt"), "dflt");  // a dword isn't a string
    EXPECT_EQ(gflngGetRegValue(&registry, "PartNumber", 9), 9);
    EXPECT_EQ(gflngGetRegValue(&registry, "Missing", 0), 0);

    registry.OpenKey(2, "Broken", kKeyRead, 0);
    EXPECT_EQ(gfstrGetRegValue(&registry, "PartNumber", "dflt"), "dflt");
    EXPECT_EQ(gflngGetRegValue(&registry, "Build", 9), 9);
}

}  // namespace
}  // namespace ostrel
