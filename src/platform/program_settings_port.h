// The older per-user settings store of the language run time (GetSetting and
// SaveSetting): a string under application, section and key.
#pragma once

#include <string>
#include <string_view>

namespace ostrel::platform {

class ProgramSettingsPort {
  public:
    virtual ~ProgramSettingsPort() = default;
    // The stored string, or the default when there is none.
    virtual std::string get(std::string_view application, std::string_view section,
                            std::string_view key, std::string_view defaultValue) = 0;
    // Stores the string; raises (5) when it can't be stored.
    virtual void save(std::string_view application, std::string_view section, std::string_view key,
                      std::string_view value) = 0;
};

}  // namespace ostrel::platform
