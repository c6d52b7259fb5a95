#include "foundation/settings.h"

namespace ostrel {

// Not stored anywhere yet: every read gives its default.
std::string gfstrGetApplicationSetting(std::string_view, std::string_view, std::string_view,
                                       std::string_view vstrDefault) {
    return std::string(vstrDefault);
}

void gsubSaveApplicationSetting(std::string_view, std::string_view, std::string_view,
                                std::string_view) {}

}  // namespace ostrel
