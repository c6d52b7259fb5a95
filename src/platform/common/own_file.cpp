#include "platform/own_file.h"

namespace ostrel::platform {

OwnFileRefused::OwnFileRefused(const std::string& path, std::string why)
    : AutomationError(75, standardDescription(75) + ": \"" + path + "\" " + why),
      reason(std::move(why)) {}

}  // namespace ostrel::platform
