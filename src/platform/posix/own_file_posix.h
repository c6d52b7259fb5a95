// The Linux side of own_file.h: replacing a file of our own in a shared place.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace ostrel::platform {

// Writes content to a new file beside target and renames it over target, so
// that a crash never leaves half a file. Only where this process could have
// written target itself: a link, anything but a regular file, a file with
// several hard links, or one whose permission bits don't let this user write
// it (root too: root needs at least one write bit, so a 0444 file stays as it
// is) is left alone with EACCES. A replaced file keeps its mode, and under
// root its owner; a new one gets newMode. 0 when done, else the error number;
// the temporary file never stays behind.
int replaceOwnFile(const std::string& target, std::string_view content, mode_t newMode);

}  // namespace ostrel::platform
