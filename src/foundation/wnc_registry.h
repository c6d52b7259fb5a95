// WNCRegistry, the registry wrapper: one open key and one enumeration
// position per instance. A second open replaces the key held; dropping the
// instance closes it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/registry_port.h"

namespace ostrel {

// Access masks the component passes through.
inline constexpr int32_t kKeyRead = 131097;  // 0x20019
inline constexpr int32_t kKeyQueryValue = 1;

class WNCRegistry {
  public:
    // Raises 429 when the wrapper can't be made (this apartment has no registry).
    WNCRegistry();

    // Raises when the key can't be opened.
    void OpenKey(int32_t vlngHive, std::string_view vstrPath, int32_t vlngAccess, int32_t vlngFlag);
    // False for a missing or refused key, with no error pending.
    bool TryOpenKey(int32_t vlngHive, std::string_view vstrPath, int32_t vlngAccess,
                    int32_t vlngFlag);
    bool GetStringValue(std::string_view vstrName, std::string& rstrValue);
    bool EnumFirstSubKey(std::string& rstrName);
    bool EnumNextSubKey(std::string& rstrName);
    bool GetLongValue(std::string_view vstrName, int32_t& rlngValue);

  private:
    platform::RegistryPort* port_;
    std::unique_ptr<platform::RegistryKey> key_;
    uint32_t nextIndex_ = 0;
};

// One value of an open wrapper, or the default; never raise.
std::string gfstrGetRegValue(WNCRegistry* vobjRegistry, std::string_view vstrValueName,
                             std::string_view vstrDefault);
int32_t gflngGetRegValue(WNCRegistry* vobjRegistry, std::string_view vstrValueName,
                         int32_t vlngDefault);

// The first (or next) sub-key name of a walk; an enumeration that answers
// False gives the empty name, whatever its output holds, which ends the walk.
std::string enumSubKeyName(WNCRegistry& vobjRegistry, bool first);

// How the wrapper renders a multi-string value as one string: its entries
// joined by one blank. Anything that makes such a value joins it alike.
inline constexpr std::string_view kMultiStringSeparator = " ";

}  // namespace ostrel
