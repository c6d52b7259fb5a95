// The Windows side of own_file.h: writing a file of our own in a shared place.
#pragma once

#include <windows.h>

#include <string_view>

namespace ostrel::platform {

// Writes content over target in place, as the XML document object writes a
// file, so that a replaced file keeps its owner and permissions; a missing
// one is created (never a missing folder). Only where this user could write
// the file itself: a reparse point, anything but a regular file or a file
// with several hard links is left alone with ERROR_ACCESS_DENIED. 0 when
// done, else the system error.
DWORD replaceOwnFile(std::string_view target, std::string_view content);

}  // namespace ostrel::platform
