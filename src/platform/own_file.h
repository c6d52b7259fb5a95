// Files the component opens of its own accord, in places that other users of
// the machine may be able to write: the data folder, the older settings
// store, the data files beside the component. Each is opened only as what it
// claims to be: never through a symbolic link (on Windows, no reparse point),
// only a regular file (a pipe, a device or a folder is refused without waiting
// on it), never a file with several hard links, and read up to a cap that no
// real file of ours reaches. Files a user names on a command line are not
// read here: they may be pipes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "runtime/automation_error.h"

namespace ostrel::platform {

// Caps, far beyond any real file of their kind.
constexpr uint64_t kMaxSettingsFileBytes = 1u << 20;  // ot_settings.xml, the older store
constexpr uint64_t kMaxDataFileBytes = 4u << 20;      // part-number table, language texts

// Raised for a file that is not one of ours: 75, "Path/File access error:
// "<path>" <reason>".
struct OwnFileRefused : AutomationError {
    OwnFileRefused(const std::string& path, std::string why);
    std::string reason;  // "is a symbolic link", "is not a regular file", ...
};

// The whole file; nullopt when nothing is at the path. Anything else that is
// not a plain file of at most maxBytes, or that can't be read, raises
// OwnFileRefused.
std::optional<std::string> readOwnFile(std::string_view path, uint64_t maxBytes);

// Appends bytes to a plain file, creating a missing one (never a missing
// folder). False when the file can't be opened as above or written.
bool appendOwnFile(std::string_view path, std::string_view bytes);

}  // namespace ostrel::platform
