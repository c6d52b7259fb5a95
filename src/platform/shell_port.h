// The shell object "Shell.Application" as far as its folder dialogue goes:
// a new object per use, each member reached by name at run time. Linux,
// having no such dialogue, asks on the terminal (shell_posix.cpp).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace ostrel::platform {

// A FolderItem: Path.
class ShellFolderItem {
  public:
    virtual ~ShellFolderItem() = default;
    virtual std::string path() = 0;
};

// A Folder: Self, null for Nothing.
class ShellFolder {
  public:
    virtual ~ShellFolder() = default;
    virtual std::unique_ptr<ShellFolderItem> self() = 0;
};

// The application object: BrowseForFolder shows the dialogue and blocks
// until the user closes it; null (Nothing) when cancelled.
class ShellApplication {
  public:
    virtual ~ShellApplication() = default;
    virtual std::unique_ptr<ShellFolder> browseForFolder(int32_t ownerHwnd, std::string_view title,
                                                         int32_t options,
                                                         std::string_view rootFolder) = 0;
};

class ShellPort {
  public:
    virtual ~ShellPort() = default;
    // CreateObject("Shell.Application"); raises the run time's error (429)
    // when it can't be made.
    virtual std::unique_ptr<ShellApplication> createApplication() = 0;
};

}  // namespace ostrel::platform
