// ResourceIDNumbers: the numbers of the texts and pictures in the language
// store. A window names a text or picture only through one of these.
#pragma once

#include <cstdint>

namespace ostrel::ResourceIDNumbers {

inline constexpr int32_t kApplicationName = 108;
inline constexpr int32_t kOKCaption = 131;
inline constexpr int32_t kCharacterSet = 279;
inline constexpr int32_t kFontEntry = 280;
inline constexpr int32_t kFormIcon = 286;
inline constexpr int32_t kAboutCaption = 312;
inline constexpr int32_t kSystemInfoCaption = 313;
inline constexpr int32_t kLogo = 314;
inline constexpr int32_t kStartupFailure = 338;

}  // namespace ostrel::ResourceIDNumbers
