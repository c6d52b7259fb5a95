// The named mutex on Linux: a kernel lock (an open-file-description lock,
// fcntl F_OFD_SETLK) on a small file in a folder that only the user can
// reach, so that, like the kernel's named mutex in a logon's private
// namespace, one user's lock never blocks another's and no other user can
// touch it. The folder is $XDG_RUNTIME_DIR, else /run/user/<uid>, else one
// this code makes: /run/ostrel for root, /tmp/ostrel-<uid> for others. A
// folder is used only when it is a real directory of this user with mode
// 0700, and a lock file only when it is a regular file of this user with
// mode 0600, one link and the size of a record: anything else found there
// (a link, a FIFO, another owner) is refused, never trusted.
//
// The kernel drops the lock when its holder dies, so nothing half-made is
// left behind. The abandoned case comes from the record in the file: the
// holder writes its process id there on taking the lock and clears it on a
// clean release, so a taker that finds an id left over knows its last owner
// ended without releasing. Threads: the process has one descriptor per
// name, opened with its first handle and kept for the next, shared by all
// its handles; which thread owns it, and how often, is
// kept here, and a thread that ends while it owns a lock leaves it
// abandoned in the same way. Handles are small positive numbers from a
// table of this process; error texts are strerror's.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

using Clock = std::chrono::steady_clock;

thread_local int tlsLastError = 0;

void fail(int error) {
    tlsLastError = error;
}

// The record at the start of a lock file: a mark and the id of the process
// that holds the lock, 0 once it was released cleanly. A new file is empty.
struct Record {
    char mark[4];
    int32_t holder;
};
constexpr char kMark[4] = {'O', 'S', 'M', 'X'};

// "ostrel-<name>.lock": characters that a file name can't hold are written
// as %XX; a name too long for the system is replaced by its hash.
std::string fileName(std::string_view name) {
    std::string encoded;
    for (const char ch : name) {
        const auto c = static_cast<unsigned char>(ch);
        if (std::isalnum(c) || c == '_' || c == '-' || c == '.') {
            encoded += static_cast<char>(c);
        } else {
            char hex[4];
            std::snprintf(hex, sizeof hex, "%%%02X", c);
            encoded += hex;
        }
    }
    if (encoded.size() > 200) {
        uint64_t hash = 1469598103934665603ULL;  // FNV-1a
        for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
        char hex[20];
        std::snprintf(hex, sizeof hex, "%016llx", static_cast<unsigned long long>(hash));
        encoded = std::string("#") + hex;
    }
    return "ostrel-" + encoded + ".lock";
}

// Gives the descriptor when what it opened is as this user's own, else
// closes it and gives -1 with EPERM.
int keepIfOwn(int fd, bool folder) {
    struct stat info {};
    const bool own =
        fd >= 0 && ::fstat(fd, &info) == 0 && info.st_uid == ::geteuid() &&
        (folder ? S_ISDIR(info.st_mode) && (info.st_mode & 07777) == 0700
                : S_ISREG(info.st_mode) && (info.st_mode & 07777) == 0600 && info.st_nlink == 1 &&
                      (info.st_size == 0 || info.st_size == sizeof(Record)));
    if (own || fd < 0) return fd;
    ::close(fd);
    errno = EPERM;
    return -1;
}

int openOwnFolder(const std::string& path) {
    return keepIfOwn(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC), true);
}

// The folder of this user's locks, opened and checked; -1 with errno set.
int openLockFolder() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime && runtime[0] == '/') {
        const int fd = openOwnFolder(runtime);
        if (fd >= 0) return fd;
    }
    const uid_t user = ::geteuid();
    const int fd = openOwnFolder("/run/user/" + std::to_string(user));
    if (fd >= 0) return fd;
    // Only root can make a folder in /run; in /tmp one that someone else
    // made first is refused by the check.
    const std::string own = user == 0 ? "/run/ostrel" : "/tmp/ostrel-" + std::to_string(user);
    if (::mkdir(own.c_str(), 0700) != 0 && errno != EEXIST) return -1;
    return openOwnFolder(own);
}

// The lock file of that name, made if it is missing; -1 with errno set.
int openLockFile(const std::string& file) {
    const int folder = openLockFolder();
    if (folder < 0) return -1;
    constexpr int kFlags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    int fd = ::openat(folder, file.c_str(), kFlags);
    if (fd < 0 && errno == ENOENT) {
        fd = ::openat(folder, file.c_str(), kFlags | O_CREAT | O_EXCL, 0600);
        if (fd >= 0) {
            ::fchmod(fd, 0600);  // whatever the umask took away
        } else if (errno == EEXIST) {
            fd = ::openat(folder, file.c_str(), kFlags);  // made by another process meanwhile
        }
    }
    const int error = errno;
    ::close(folder);
    errno = error;
    return keepIfOwn(fd, false);
}

// 0 or an error number.
int setKernelLock(int fd, short type, int command) {
    struct flock whole {};
    whole.l_type = type;
    whole.l_whence = SEEK_SET;
    while (::fcntl(fd, command, &whole) != 0) {
        if (errno != EINTR) return errno;
    }
    return 0;
}

// Takes the kernel lock by the deadline (none for a negative time-out),
// asking again at growing pauses; 0, ETIMEDOUT or the error.
int takeKernelLock(int fd, int32_t timeoutMs, Clock::time_point deadline) {
    if (timeoutMs < 0) return setKernelLock(fd, F_WRLCK, F_OFD_SETLKW);
    auto pause = std::chrono::microseconds(250);
    for (;;) {
        const int error = setKernelLock(fd, F_WRLCK, F_OFD_SETLK);
        if (error != EAGAIN && error != EACCES) return error;
        const auto left = deadline - Clock::now();
        if (left <= Clock::duration::zero()) return ETIMEDOUT;
        std::this_thread::sleep_for(std::min<Clock::duration>(pause, left));
        pause = std::min(pause * 2, std::chrono::microseconds(8000));
    }
}

// Under the kernel lock: reads the record (abandoned when it names a
// holder) and writes this process's; 0 or the error number.
int claimRecord(int fd, bool& abandoned) {
    Record record{};
    const ssize_t got = ::pread(fd, &record, sizeof record, 0);
    if (got < 0) return errno;
    if (got != 0 && (got != sizeof record || std::memcmp(record.mark, kMark, sizeof kMark) != 0)) {
        return EPERM;  // not a record this code wrote
    }
    abandoned = got != 0 && record.holder != 0;
    std::memcpy(record.mark, kMark, sizeof kMark);
    record.holder = static_cast<int32_t>(::getpid());
    return ::pwrite(fd, &record, sizeof record, 0) == sizeof record ? 0 : errno;
}

// One lock file of this process, shared by all the handles of its name.
struct Lock {
    explicit Lock(int file) : fd(file) {}
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() { ::close(fd); }

    // False when the file was deleted or replaced since it was opened.
    bool stillThere() const {
        struct stat info {};
        return ::fstat(fd, &info) == 0 && info.st_nlink > 0;
    }

    // The kernel lock goes; with keepRecord, the record says "abandoned".
    void letGo(bool keepRecord) {
        if (!keepRecord) {
            Record record{};
            std::memcpy(record.mark, kMark, sizeof kMark);
            (void)::pwrite(fd, &record, sizeof record, 0);
        }
        setKernelLock(fd, F_UNLCK, F_OFD_SETLK);
        owner = std::thread::id();
        depth = 0;
        freed.notify_one();
    }

    const int fd;
    std::mutex state;
    std::condition_variable freed;
    std::thread::id owner;  // the thread that owns it or is taking it
    int depth = 0;          // how often the owner took it
};

// The locks a thread owns; a thread that ends leaves them abandoned.
struct OwnedLocks {
    OwnedLocks() = default;
    OwnedLocks(const OwnedLocks&) = delete;
    OwnedLocks& operator=(const OwnedLocks&) = delete;
    ~OwnedLocks() {
        for (const auto& lock : locks) {
            const std::lock_guard<std::mutex> guard(lock->state);
            if (lock->owner == std::this_thread::get_id()) lock->letGo(true);
        }
    }
    void drop(const Lock* lock) {
        std::erase_if(locks,
                      [&](const std::shared_ptr<Lock>& owned) { return owned.get() == lock; });
    }
    std::vector<std::shared_ptr<Lock>> locks;
};
thread_local OwnedLocks tlsOwned;

class PosixNamedMutex final : public NamedMutexPort {
  public:
    int32_t create(std::string_view name) override {
        const std::string file = fileName(name);
        const std::lock_guard<std::mutex> guard(tableLock_);
        std::shared_ptr<Lock>& lock = byName_[file];
        if (!lock || (lock.use_count() == 1 && !lock->stillThere())) {
            const int fd = openLockFile(file);
            if (fd < 0) {
                fail(errno);
                return 0;
            }
            lock = std::make_shared<Lock>(fd);
        }
        const int32_t handle = nextHandle_++;
        handles_[handle] = lock;
        return handle;
    }

    uint32_t wait(int32_t handle, int32_t timeoutMs) override {
        const std::shared_ptr<Lock> lock = find(handle);
        if (!lock) {
            fail(EBADF);
            return kWaitFailed;
        }
        const auto me = std::this_thread::get_id();
        const auto deadline = Clock::now() + std::chrono::milliseconds(std::max(timeoutMs, 0));
        std::unique_lock<std::mutex> guard(lock->state);
        if (lock->owner == me) {
            ++lock->depth;
            return kWaitObtained;
        }
        // First the other threads of this process, then the other processes.
        while (lock->owner != std::thread::id()) {
            if (timeoutMs < 0) {
                lock->freed.wait(guard);
            } else if (lock->freed.wait_until(guard, deadline) == std::cv_status::timeout &&
                       lock->owner != std::thread::id()) {
                fail(ETIMEDOUT);
                return kWaitTimeout;
            }
        }
        lock->owner = me;
        guard.unlock();
        bool abandoned = false;
        int error = takeKernelLock(lock->fd, timeoutMs, deadline);
        if (error == 0) {
            error = claimRecord(lock->fd, abandoned);
            if (error != 0) setKernelLock(lock->fd, F_UNLCK, F_OFD_SETLK);
        }
        guard.lock();
        if (error != 0) {
            lock->owner = std::thread::id();
            lock->freed.notify_one();
            fail(error);
            return error == ETIMEDOUT ? kWaitTimeout : kWaitFailed;
        }
        lock->depth = 1;
        tlsOwned.locks.push_back(lock);
        return abandoned ? kWaitAbandoned : kWaitObtained;
    }

    bool release(int32_t handle) override {
        const std::shared_ptr<Lock> lock = find(handle);
        if (!lock) {
            fail(EBADF);
            return false;
        }
        const std::lock_guard<std::mutex> guard(lock->state);
        if (lock->owner != std::this_thread::get_id() || lock->depth == 0) {
            fail(EPERM);
            return false;
        }
        if (--lock->depth == 0) {
            lock->letGo(false);
            tlsOwned.drop(lock.get());
        }
        return true;
    }

    bool close(int32_t handle) override {
        const std::lock_guard<std::mutex> guard(tableLock_);
        if (handles_.erase(handle) == 0) {
            fail(EBADF);
            return false;
        }
        return true;  // the process keeps the file open for the next handle
    }

    int32_t lastError() override { return tlsLastError; }

    std::string errorText(int32_t code) override {
        char buffer[257] = {};
        const char* text = ::strerror_r(code, buffer, 256);
        std::string result = text ? std::string(text).substr(0, 256) : std::string();
        // What the system has no text for gives "", as FormatMessage does.
        if (result.rfind("Unknown error", 0) == 0) return std::string();
        return result;
    }

  private:
    std::shared_ptr<Lock> find(int32_t handle) {
        const std::lock_guard<std::mutex> guard(tableLock_);
        const auto found = handles_.find(handle);
        return found == handles_.end() ? nullptr : found->second;
    }

    std::mutex tableLock_;
    std::map<int32_t, std::shared_ptr<Lock>> handles_;
    std::map<std::string, std::shared_ptr<Lock>> byName_;
    int32_t nextHandle_ = 1;
};

}  // namespace

NamedMutexPort& systemNamedMutex() {
    // Never destroyed: threads that end after main still release through it.
    static auto* mutex = new PosixNamedMutex;
    return *mutex;
}

}  // namespace ostrel::platform
