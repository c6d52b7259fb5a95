// Files and folders, as the scripting file system object offers them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel::platform {

class FileSystemPort {
  public:
    virtual ~FileSystemPort() = default;
    // The path separator BuildPath joins with ('\\' on Windows, '/' elsewhere).
    virtual char separator() const = 0;
    // True for an existing file; a folder of that name does not count.
    virtual bool fileExists(std::string_view path) = 0;
    virtual bool folderExists(std::string_view path) = 0;
    virtual std::optional<int64_t> fileSize(std::string_view path) = 0;
    // Deletes a file; force also deletes a read-only one. False on failure.
    virtual bool deleteFile(std::string_view path, bool force) = 0;
    // OpenTextFile for appending in ANSI mode, creating a missing file (never
    // a missing folder), WriteLine (the text and CR LF), Close. False when the
    // file could not be opened or written, or is not a plain file (own_file.h).
    virtual bool appendLine(std::string_view path, std::string_view utf8Text) = 0;
    // The whole content of a UTF-8 text file; nullopt when it can't be
    // opened. A link, pipe, device or oversized file raises (own_file.h).
    virtual std::optional<std::string> readTextFile(std::string_view path) = 0;
};

}  // namespace ostrel::platform
