#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/adapters.h"

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
        const std::string name(path);
        std::string line(utf8Text);
        line += "\r\n";
        const int fd = ::open(name.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
        if (fd < 0) return false;
        bool written = true;
        size_t done = 0;
        while (done < line.size()) {
            const ssize_t n = ::write(fd, line.data() + done, line.size() - done);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) {
                written = false;
                break;
            }
            done += static_cast<size_t>(n);
        }
        return ::close(fd) == 0 && written;
    }

    std::optional<std::string> readTextFile(std::string_view path) override {
        const std::string name(path);
        const int fd = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0) return std::nullopt;
        std::string content;
        char buffer[65536];
        for (;;) {
            const ssize_t n = ::read(fd, buffer, sizeof buffer);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) {
                ::close(fd);
                return std::nullopt;
            }
            if (n == 0) break;
            content.append(buffer, static_cast<size_t>(n));
        }
        ::close(fd);
        return content;
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
