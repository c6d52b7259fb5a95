// Application settings: one small XML file for all users of the machine
// (ot_settings.xml in the data folder), guarded by the settings mutex, with
// the older per-user store behind it. Every value is a string; callers convert.
#pragma once

#include <string>
#include <string_view>

namespace ostrel {

// The value of application/section/key, or the default. Never raises.
std::string gfstrGetApplicationSetting(std::string_view vstrApplication,
                                       std::string_view vstrSection, std::string_view vstrKey,
                                       std::string_view vstrDefault);

// Stores the value; never raises and reports nothing to the caller.
void gsubSaveApplicationSetting(std::string_view vstrApplication, std::string_view vstrSection,
                                std::string_view vstrKey, std::string_view vstrValue);

}  // namespace ostrel
