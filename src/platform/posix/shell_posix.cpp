// The folder dialogue of a system without one: the title goes to the
// terminal (stderr) and the folder is read from stdin, one line. An empty
// line or the end of input is a cancel; a name that is no folder is asked
// for again, as the dialogue offers only folders.
#include <sys/stat.h>

#include <iostream>
#include <string>

#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

class TypedFolderItem final : public ShellFolderItem {
  public:
    explicit TypedFolderItem(std::string path) : path_(std::move(path)) {}
    std::string path() override { return path_; }

  private:
    std::string path_;
};

class TypedFolder final : public ShellFolder {
  public:
    explicit TypedFolder(std::string path) : path_(std::move(path)) {}
    std::unique_ptr<ShellFolderItem> self() override {
        return std::make_unique<TypedFolderItem>(path_);
    }

  private:
    std::string path_;
};

bool isFolder(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

class TerminalShell final : public ShellApplication {
  public:
    std::unique_ptr<ShellFolder> browseForFolder(int32_t, std::string_view title, int32_t,
                                                 std::string_view rootFolder) override {
        if (!title.empty()) std::cerr << title << '\n';
        for (;;) {
            std::cerr << "Folder";
            if (!rootFolder.empty()) std::cerr << " (under " << rootFolder << ")";
            std::cerr << ", empty to cancel: " << std::flush;
            std::string line;
            if (!std::getline(std::cin, line)) return nullptr;
            if (!line.empty() && line.back() == '\r') line.pop_back();
            if (line.empty()) return nullptr;
            if (isFolder(line)) return std::make_unique<TypedFolder>(line);
            std::cerr << "Not a folder: " << line << '\n';
        }
    }
};

class PosixShell final : public ShellPort {
  public:
    std::unique_ptr<ShellApplication> createApplication() override {
        return std::make_unique<TerminalShell>();
    }
};

}  // namespace

ShellPort& systemShell() {
    static PosixShell shell;
    return shell;
}

}  // namespace ostrel::platform
