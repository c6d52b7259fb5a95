// The named-mutex guard: work that must not run in two processes or
// apartments at once is bracketed by GetMutex and ReleaseMutexHandle. A
// failure never raises; the caller learns of it from a handle of 0.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel {

// The lock of the settings file, and how long a caller waits for it.
inline constexpr std::string_view kSettingsMutexName = "QUORL_OSTREL_SETTINGS";
inline constexpr int32_t kSettingsMutexTimeoutMs = 3000;

// Creates or opens the named mutex and waits for it: the handle of the now
// owned mutex, or 0.
int32_t GetMutex(std::string_view vstrName, int32_t vlngTimeoutMs);
// Releases and closes the handle in the variable, which is 0 afterwards.
// True when the release succeeded or the variable was 0 already.
bool ReleaseMutexHandle(int32_t& rlngHandle);
// The system's text for an error code; -1 is the thread's last error.
std::string gfstrGetSystemErrorText(int32_t vlngError);

}  // namespace ostrel
