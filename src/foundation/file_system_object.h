// gobjFileSystem: the module's file system object (the scripting run time's
// FileSystemObject, as far as the component uses it).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/file_system_port.h"
#include "runtime/object.h"

namespace ostrel {

class FileSystemObject : public Object {
  public:
    // Raises 429 when there is no file system to work on.
    explicit FileSystemObject(platform::FileSystemPort* port);

    std::string BuildPath(std::string_view path, std::string_view name) const;
    // The last part of a path, its folders dropped.
    std::string GetFileName(std::string_view path) const;
    // The path up to its last part, without the separator; empty when there is none.
    std::string GetParentFolderName(std::string_view path) const;
    // The last part without its extension, and the extension without its dot.
    std::string GetBaseName(std::string_view path) const;
    std::string GetExtensionName(std::string_view path) const;
    bool FileExists(std::string_view path) const;
    bool FolderExists(std::string_view path) const;
    // Raises 53 for a missing file.
    int64_t FileSize(std::string_view path) const;
    // Raises 70 when the file can't be deleted.
    void DeleteFile(std::string_view path, bool force) const;
    // Raises 70/76 when the file can't be opened or written.
    void AppendLine(std::string_view path, std::string_view text) const;
    // Raises 53 when the file can't be read.
    std::string ReadAll(std::string_view path) const;

    platform::FileSystemPort& port() const { return *port_; }

  private:
    platform::FileSystemPort* port_;
};

// gobjFileSystem of this apartment; raises 91 when Main could not make it,
// as every path operation of the component then does at its own call site.
FileSystemObject& fileSystem();

// ProgramData\QUORL\name, joined by BuildPath: the data folder of the
// marker, the log and the settings file. An unset ProgramData leaves the
// folder relative. Raises 91 when gobjFileSystem is empty.
std::string dataFolderFile(std::string_view name);

// A registry path joined by BuildPath's rule with a backslash, whatever the
// platform (registry paths are Windows paths everywhere). Raises 91 like any
// other path operation when gobjFileSystem is empty.
std::string buildKeyPath(std::string_view path, std::string_view name);

}  // namespace ostrel
