// The process's environment and where the component was loaded from.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ostrel::platform {

class EnvironmentPort {
  public:
    virtual ~EnvironmentPort() = default;
    // Environ(name): nullopt when the variable is unset.
    virtual std::optional<std::string> variable(std::string_view name) = 0;
    // The folder of the component's own file (the DLL, or the tool's binary).
    virtual std::string componentFolder() = 0;
};

}  // namespace ostrel::platform
