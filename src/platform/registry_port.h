// The registry as the core sees it: open a key, read its string and 32-bit
// values, and list its sub-keys in the order the registry reports them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel::platform {

// Hives as the registry wrapper numbers them (HKEY_CLASSES_ROOT is 0).
enum Hive : int32_t {
    kHiveClassesRoot = 0,
    kHiveCurrentUser = 1,
    kHiveLocalMachine = 2,
    kHiveUsers = 3,
    kHiveCurrentConfig = 5,
};

// How the registry wrapper renders a multi-string value as one string: its
// entries joined by one blank. What makes such values up joins them alike.
inline constexpr std::string_view kMultiStringSeparator = " ";

class RegistryKey {
  public:
    virtual ~RegistryKey() = default;
    // A string value (REG_SZ or REG_EXPAND_SZ, unexpanded); nullopt when the
    // value is missing or of another type. "" names the default value.
    virtual std::optional<std::string> stringValue(std::string_view name) const = 0;
    // A REG_MULTI_SZ value, its entries in order; nullopt when missing or of
    // another type.
    virtual std::optional<std::vector<std::string>> multiStringValue(std::string_view name) const {
        (void)name;
        return std::nullopt;
    }
    // A REG_DWORD value as a signed 32-bit number; nullopt when missing or of another type.
    virtual std::optional<int32_t> dwordValue(std::string_view name) const = 0;
    // The name of the sub-key at this index, in the registry's own order;
    // nullopt past the last.
    virtual std::optional<std::string> subKeyName(uint32_t index) const = 0;
};

class RegistryPort {
  public:
    virtual ~RegistryPort() = default;
    // Opens hive\path with the platform's access mask; nullptr when the key
    // is missing or refused, with the system's error code in errorCode
    // (2 not found, 5 access denied).
    virtual std::unique_ptr<RegistryKey> open(int32_t hive, std::string_view path, int32_t access,
                                              int32_t& errorCode) = 0;
};

}  // namespace ostrel::platform
