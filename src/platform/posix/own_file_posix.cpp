#include "platform/own_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "platform/posix/own_file_posix.h"
#include "runtime/automation_error.h"

namespace ostrel::platform {

namespace {

// No link is followed, and a pipe or a device opens without waiting for a
// partner; fstat then tells what was opened.
constexpr int kOpenFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

struct Descriptor {
    int fd;
    ~Descriptor() {
        if (fd >= 0) ::close(fd);
    }
};

[[noreturn]] void refuse(const std::string& path, std::string reason) {
    throw OwnFileRefused(path, std::move(reason));
}

std::string unreadable(int error) {
    return std::string("can't be read: ") + std::strerror(error);
}

// Why an opened file is not one of ours; nullptr when it is.
const char* whyNotPlain(const struct stat& info) {
    if (S_ISDIR(info.st_mode)) return "is a folder";
    if (!S_ISREG(info.st_mode)) return "is not a regular file";
    if (info.st_nlink > 1) return "has several hard links";
    return nullptr;
}

bool inGroup(gid_t group) {
    if (group == ::getegid()) return true;
    const int count = ::getgroups(0, nullptr);
    if (count <= 0) return false;
    std::vector<gid_t> groups(static_cast<size_t>(count));
    const int got = ::getgroups(count, groups.data());
    for (int i = 0; i < got; ++i) {
        if (groups[static_cast<size_t>(i)] == group) return true;
    }
    return false;
}

// The permission bits of the class this user falls in grant writing. Root,
// whom the kernel lets write anything, needs at least one write bit: a file
// that nobody may write is read-only for root too.
bool couldWrite(const struct stat& info) {
    const uid_t user = ::geteuid();
    if (user == 0) return (info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) != 0;
    if (user == info.st_uid) return (info.st_mode & S_IWUSR) != 0;
    if (inGroup(info.st_gid)) return (info.st_mode & S_IWGRP) != 0;
    return (info.st_mode & S_IWOTH) != 0;
}

bool writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        bytes.remove_prefix(static_cast<size_t>(n));
    }
    return true;
}

}  // namespace

std::optional<std::string> readOwnFile(std::string_view path, uint64_t maxBytes) {
    const std::string name(path);
    const Descriptor file{::open(name.c_str(), O_RDONLY | kOpenFlags)};
    if (file.fd < 0) {
        if (errno == ENOENT) return std::nullopt;
        refuse(name, errno == ELOOP ? "is a symbolic link" : unreadable(errno));
    }
    struct stat info {};
    if (::fstat(file.fd, &info) != 0) refuse(name, unreadable(errno));
    if (const char* why = whyNotPlain(info)) refuse(name, why);
    const std::string tooLarge = "is larger than " + std::to_string(maxBytes) + " bytes";
    if (static_cast<uint64_t>(info.st_size) > maxBytes) refuse(name, tooLarge);
    std::string content;
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(file.fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) refuse(name, unreadable(errno));
        if (n == 0) break;
        // A file that grows while it is read is held to the cap too.
        if (content.size() + static_cast<size_t>(n) > maxBytes) refuse(name, tooLarge);
        content.append(buffer, static_cast<size_t>(n));
    }
    return content;
}

bool appendOwnFile(std::string_view path, std::string_view bytes) {
    const std::string name(path);
    const Descriptor file{::open(name.c_str(), O_WRONLY | O_APPEND | O_CREAT | kOpenFlags, 0666)};
    struct stat info {};
    if (file.fd < 0 || ::fstat(file.fd, &info) != 0 || whyNotPlain(info)) return false;
    return writeAll(file.fd, bytes);
}

int replaceOwnFile(const std::string& target, std::string_view content, mode_t newMode) {
    struct stat old {};
    const bool exists = ::lstat(target.c_str(), &old) == 0;
    if (!exists && errno != ENOENT) return errno;
    if (exists && (S_ISLNK(old.st_mode) || whyNotPlain(old) || !couldWrite(old))) return EACCES;

    std::string temporary = target + ".XXXXXX";
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0) return errno;
    if (exists && ::geteuid() == 0) (void)::fchown(fd, old.st_uid, old.st_gid);
    bool ok = ::fchmod(fd, exists ? (old.st_mode & 0777) : newMode) == 0;
    ok = ok && writeAll(fd, content);
    int error = ok ? 0 : errno;
    if (::close(fd) != 0 && ok) {
        ok = false;
        error = errno;
    }
    if (ok && ::rename(temporary.c_str(), target.c_str()) != 0) {
        ok = false;
        error = errno;
    }
    if (!ok) ::unlink(temporary.c_str());
    return ok ? 0 : (error ? error : EIO);
}

}  // namespace ostrel::platform
