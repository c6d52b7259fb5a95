// frmAbout: the component's About window. Its load builds the form from the
// language texts and pictures; the System Info button starts the system's
// information tool, read from the registry through the A-form calls.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/form.h"

namespace ostrel {

inline constexpr int32_t kHkeyLocalMachine = static_cast<int32_t>(0x80000002u);
// Query, set value, create sub-key, enumerate, notify, create link, read
// control: write access asked on purpose, see GetKeyValue.
inline constexpr uint32_t kSysInfoKeyAccess = 0x2003F;
inline constexpr const char* kSysInfoUnavailable = "System Information Is Unavailable At This Time";

// The window as it is designed, before its load.
Form frmAboutDesign();
// The window as its load leaves it at a screen of that resolution (the
// picture box takes its picture's pixels): texts and pictures from the language
// text object, the version label, the language font last. No error trap: a
// failure of the language text object goes on to the caller.
Form frmAboutLoad(int32_t dotsPerInch = 96);

// Starts the system's information tool, or says it is unavailable.
void StartSysInfo();
// One registry value as text; false (and value empty) when the key or the
// value can't be read.
bool GetKeyValue(int32_t hive, const std::string& keyName, const std::string& valueName,
                 std::string& value);

// A press of one of the window's buttons: true when it unloads the window.
bool frmAboutClick(std::string_view controlName);
// Loads the window and shows it modally over the owner window (0: none).
void gsubShowAbout(int64_t ownerWindow);

}  // namespace ostrel
