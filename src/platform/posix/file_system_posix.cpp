#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "platform/adapters.h"
#include "platform/own_file.h"

namespace ostrel::platform {

namespace {

// Plain files; UTF-8 is the ANSI code page here, so text goes out as it is.
class PosixFileSystem final : public FileSystemPort {
  public:
    char separator() const override { return '/'; }

    bool fileExists(std::string_view path) override {
        struct stat info {};
        return statPath(path, info) && !S_ISDIR(info.st_mode);
    }

    bool folderExists(std::string_view path) override {
        struct stat info {};
        return statPath(path, info) && S_ISDIR(info.st_mode);
    }

    std::optional<int64_t> fileSize(std::string_view path) override {
        struct stat info {};
        if (!statPath(path, info) || S_ISDIR(info.st_mode)) return std::nullopt;
        return static_cast<int64_t>(info.st_size);
    }

    bool deleteFile(std::string_view path, bool force) override {
        struct stat info {};
        if (!statPath(path, info) || S_ISDIR(info.st_mode)) return false;
        // A file that nobody may write stands for a read-only one.
        const bool readOnly = (info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
        if (readOnly && !force) return false;
        return ::unlink(std::string(path).c_str()) == 0;
    }

    bool appendLine(std::string_view path, std::string_view utf8Text) override {
        std::string line(utf8Text);
        line += "\r\n";
        return appendOwnFile(path, line);
    }

    std::optional<std::string> readTextFile(std::string_view path) override {
        return readOwnFile(path, kMaxDataFileBytes);
    }

  private:
    static bool statPath(std::string_view path, struct stat& info) {
        const std::string name(path);
        return !name.empty() && ::stat(name.c_str(), &info) == 0;
    }
};

}  // namespace

FileSystemPort& systemFileSystem() {
    static PosixFileSystem fileSystem;
    return fileSystem;
}

}  // namespace ostrel::platform
