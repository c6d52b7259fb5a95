// The named mutex on Linux: a robust, recursive, process-shared pthread mutex
// in a shared-memory object. The object's name is derived from the lock name
// and the user, so that, like the kernel's named mutex in a logon's private
// namespace, one user's lock never blocks another's. A robust mutex tells the
// next waiter that its owner died (EOWNERDEAD): the abandoned case. Handles
// are small positive numbers from a table of this process; error texts are
// strerror's.
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

// What lives in the shared memory. The first process to map it initialises
// the mutex; the others wait until it says ready.
struct SharedLock {
    std::atomic<uint32_t> state;  // 0 new, 1 being initialised, 2 ready
    pthread_mutex_t mutex;
};
constexpr uint32_t kNew = 0;
constexpr uint32_t kInitialising = 1;
constexpr uint32_t kReady = 2;

thread_local int tlsLastError = 0;

// "/ostrel-<uid>-<name>": characters that a shared-memory name can't hold
// are written as %XX; a name too long for the system is replaced by its hash.
std::string sharedName(std::string_view name) {
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
    return "/ostrel-" + std::to_string(::getuid()) + "-" + encoded;
}

bool initialise(SharedLock& lock) {
    pthread_mutexattr_t attributes;
    if (pthread_mutexattr_init(&attributes) != 0) return false;
    const bool made = pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED) == 0 &&
                      pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST) == 0 &&
                      pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                      pthread_mutex_init(&lock.mutex, &attributes) == 0;
    pthread_mutexattr_destroy(&attributes);
    return made;
}

// Maps the lock of that shared name, initialising it if this is the first
// use; null with errno set when it can't.
SharedLock* mapLock(const std::string& shared) {
    const int fd = ::shm_open(shared.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) return nullptr;
    struct stat info {};
    if (::fstat(fd, &info) != 0 || (info.st_size < static_cast<off_t>(sizeof(SharedLock)) &&
                                    ::ftruncate(fd, sizeof(SharedLock)) != 0)) {
        const int error = errno;
        ::close(fd);
        errno = error;
        return nullptr;
    }
    void* memory = ::mmap(nullptr, sizeof(SharedLock), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    const int error = errno;
    ::close(fd);
    if (memory == MAP_FAILED) {
        errno = error;
        return nullptr;
    }
    auto* lock = static_cast<SharedLock*>(memory);
    uint32_t expected = kNew;
    if (lock->state.compare_exchange_strong(expected, kInitialising)) {
        if (!initialise(*lock)) {
            lock->state.store(kNew);
            ::munmap(memory, sizeof(SharedLock));
            errno = EINVAL;
            return nullptr;
        }
        lock->state.store(kReady);
        return lock;
    }
    // Another process is initialising it: that takes microseconds. One that
    // died half-way leaves the lock unusable, which is reported, not waited for.
    for (int i = 0; i < 2000 && lock->state.load() != kReady; ++i) {
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    if (lock->state.load() != kReady) {
        ::munmap(memory, sizeof(SharedLock));
        errno = ETIMEDOUT;
        return nullptr;
    }
    return lock;
}

timespec deadlineAfter(int32_t timeoutMs) {
    timespec deadline{};
    ::clock_gettime(CLOCK_REALTIME, &deadline);
    deadline.tv_sec += timeoutMs / 1000;
    deadline.tv_nsec += static_cast<long>(timeoutMs % 1000) * 1000000L;
    if (deadline.tv_nsec >= 1000000000L) {
        deadline.tv_sec += 1;
        deadline.tv_nsec -= 1000000000L;
    }
    return deadline;
}

class PosixNamedMutex final : public NamedMutexPort {
  public:
    int32_t create(std::string_view name) override {
        SharedLock* lock = mapLock(sharedName(name));
        if (!lock) {
            fail(errno);
            return 0;
        }
        const std::lock_guard<std::mutex> guard(tableLock_);
        const int32_t handle = nextHandle_++;
        handles_[handle] = lock;
        return handle;
    }

    uint32_t wait(int32_t handle, int32_t timeoutMs) override {
        SharedLock* lock = find(handle);
        if (!lock) {
            fail(EBADF);
            return kWaitFailed;
        }
        int result = 0;
        if (timeoutMs < 0) {
            result = pthread_mutex_lock(&lock->mutex);
        } else if (timeoutMs == 0) {
            result = pthread_mutex_trylock(&lock->mutex);
        } else {
            const timespec deadline = deadlineAfter(timeoutMs);
            do {
                result = pthread_mutex_timedlock(&lock->mutex, &deadline);
            } while (result == EINTR);
        }
        switch (result) {
            case 0:
                return kWaitObtained;
            case EOWNERDEAD:
                // Ours now; marked consistent so that the next owner sees a plain lock.
                pthread_mutex_consistent(&lock->mutex);
                return kWaitAbandoned;
            case ETIMEDOUT:
            case EBUSY: {
                fail(ETIMEDOUT);
                return kWaitTimeout;
            }
            default: {
                fail(result);
                return kWaitFailed;
            }
        }
    }

    bool release(int32_t handle) override {
        SharedLock* lock = find(handle);
        if (!lock) {
            fail(EBADF);
            return false;
        }
        const int result = pthread_mutex_unlock(&lock->mutex);
        if (result != 0) {
            fail(result);
            return false;
        }
        return true;
    }

    bool close(int32_t handle) override {
        SharedLock* lock = nullptr;
        {
            const std::lock_guard<std::mutex> guard(tableLock_);
            const auto found = handles_.find(handle);
            if (found == handles_.end()) {
                fail(EBADF);
                return false;
            }
            lock = found->second;
            handles_.erase(found);
        }
        // The object stays for other users; like a kernel object it only
        // goes from memory with the last handle, which shm can't tell us.
        if (::munmap(lock, sizeof(SharedLock)) != 0) {
            fail(errno);
            return false;
        }
        return true;
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
    static void fail(int error) { tlsLastError = error; }

    SharedLock* find(int32_t handle) {
        const std::lock_guard<std::mutex> guard(tableLock_);
        const auto found = handles_.find(handle);
        return found == handles_.end() ? nullptr : found->second;
    }

    std::mutex tableLock_;
    std::map<int32_t, SharedLock*> handles_;
    int32_t nextHandle_ = 1;
};

}  // namespace

NamedMutexPort& systemNamedMutex() {
    static PosixNamedMutex mutex;
    return mutex;
}

}  // namespace ostrel::platform
