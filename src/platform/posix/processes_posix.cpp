// Processes on Linux. The snapshot is /proc read at once, in the order of
// the process ids; an entry's file name is that of the program the process
// runs (the link /proc/PID/exe where it can be read, else the first word of
// its command line, else its short name). A program starts without a
// terminal: in a session of its own, its standard streams on /dev/null, and
// handed to init so that it never lingers as a zombie of its starter. The
// command line is split into words as the C run time of Windows splits it,
// and nothing in it is expanded. A program that can't be found raises 53, as
// the run time's start does; one that the system refuses to run (a folder,
// a file without the x bit) 70, and one that is no program 5: the start
// waits for the system's answer to exec.
#include <dirent.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/adapters.h"
#include "platform/common/command_line.h"
#include "runtime/automation_error.h"

namespace ostrel::platform {

namespace {

thread_local int32_t tlsLastError = 0;

std::string exeFileOf(const std::string& pid) {
    const std::string folder = "/proc/" + pid;
    char target[4096];
    const ssize_t n = ::readlink((folder + "/exe").c_str(), target, sizeof target - 1);
    if (n > 0) {
        std::string file(target, static_cast<size_t>(n));
        const std::string deleted = " (deleted)";
        if (file.size() > deleted.size() && file.ends_with(deleted)) {
            file.resize(file.size() - deleted.size());
        }
        return file;
    }
    std::ifstream cmdline(folder + "/cmdline", std::ios::binary);
    std::string first;
    if (std::getline(cmdline, first, '\0') && !first.empty()) return first;
    std::ifstream comm(folder + "/comm");
    std::string name;
    std::getline(comm, name);
    return name;
}

// The program file a word names: as given when it holds a '/' (exec tells
// what is wrong with it), else the first executable of that name on PATH;
// "" when there is none.
std::string resolveProgram(const std::string& word) {
    if (word.empty()) return std::string();
    if (word.find('/') != std::string::npos) return word;
    const char* path = std::getenv("PATH");
    std::string rest = path ? path : "/usr/local/bin:/usr/bin:/bin";
    size_t start = 0;
    while (start <= rest.size()) {
        const size_t end = std::min(rest.find(':', start), rest.size());
        const std::string folder = end > start ? rest.substr(start, end - start) : ".";
        const std::string candidate = folder + "/" + word;
        if (::access(candidate.c_str(), X_OK) == 0) return candidate;
        start = end + 1;
    }
    return std::string();
}

class PosixProcesses final : public ProcessPort {
  public:
    int64_t createSnapshot(uint32_t, uint32_t) override {
        DIR* proc = ::opendir("/proc");
        if (!proc) {
            tlsLastError = errno;
            return kInvalidSnapshot;
        }
        std::map<uint32_t, std::string> byId;
        while (const dirent* entry = ::readdir(proc)) {
            char* end = nullptr;
            const unsigned long id = std::strtoul(entry->d_name, &end, 10);
            if (end == entry->d_name || *end != '\0') continue;
            byId[static_cast<uint32_t>(id)] = exeFileOf(entry->d_name);
        }
        ::closedir(proc);
        std::vector<ProcessEntry> list;
        for (auto& [id, file] : byId) list.push_back(ProcessEntry{id, std::move(file)});
        const std::lock_guard<std::mutex> guard(lock_);
        const int64_t handle = nextHandle_++;
        snapshots_[handle] = Walk{std::move(list), 0};
        return handle;
    }

    bool firstProcess(int64_t snapshot, ProcessEntry& entry) override {
        return step(snapshot, entry, true);
    }
    bool nextProcess(int64_t snapshot, ProcessEntry& entry) override {
        return step(snapshot, entry, false);
    }

    bool closeSnapshot(int64_t snapshot) override {
        const std::lock_guard<std::mutex> guard(lock_);
        return snapshots_.erase(snapshot) == 1;
    }

    int32_t lastError() override { return tlsLastError; }

    uint32_t start(std::string_view commandLine, int32_t) override {
        std::vector<std::string> words = splitCommandLine(commandLine);
        const std::string program = resolveProgram(words.front());
        if (program.empty()) raise(kErrFileNotFound);
        std::vector<char*> argv;
        for (std::string& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);
        const Started started = spawnDetached(program.c_str(), argv.data());
        switch (started.error) {
            case 0:
                return static_cast<uint32_t>(started.id);
            case ENOENT:
            case ENOTDIR:
            case ENAMETOOLONG:
            case ELOOP:
                raise(kErrFileNotFound);
            case EACCES:
            case EPERM:
                raise(kErrPermissionDenied);
            default:
                raise(kErrInvalidCall);
        }
    }

    uint32_t tickCount() override {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return static_cast<uint32_t>(
            std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
    }

    void sleep(uint32_t milliseconds) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }

  private:
    struct Walk {
        std::vector<ProcessEntry> list;
        size_t next = 0;
    };

    bool step(int64_t snapshot, ProcessEntry& entry, bool first) {
        const std::lock_guard<std::mutex> guard(lock_);
        const auto found = snapshots_.find(snapshot);
        if (found == snapshots_.end()) return false;
        Walk& walk = found->second;
        if (first) walk.next = 0;
        if (walk.next >= walk.list.size()) return false;
        entry = walk.list[walk.next++];
        return true;
    }

    struct Started {
        pid_t id = -1;
        int error = 0;  // errno of the fork or the exec that failed
    };

    // Forks twice: the middle process starts a session, forks the program and
    // ends, so the program belongs to init. The middle one waits for the
    // program's exec, which closes a close-on-exec pipe when it succeeds and
    // sends its errno through it when it fails, and passes the id and the
    // errno back through a pipe of its own. Only what is safe after a fork
    // runs in the children.
    static Started spawnDetached(const char* program, char* const* argv) {
        int toStarter[2];
        if (::pipe2(toStarter, O_CLOEXEC) != 0) return Started{-1, errno};
        const pid_t middle = ::fork();
        if (middle < 0) {
            const int error = errno;
            ::close(toStarter[0]);
            ::close(toStarter[1]);
            return Started{-1, error};
        }
        if (middle == 0) {
            ::setsid();
            Started started;
            int fromProgram[2];
            if (::pipe2(fromProgram, O_CLOEXEC) != 0) {
                started.error = errno;
            } else if ((started.id = ::fork()) == 0) {
                const int null = ::open("/dev/null", O_RDWR);
                if (null >= 0) {
                    ::dup2(null, 0);
                    ::dup2(null, 1);
                    ::dup2(null, 2);
                }
                ::execv(program, argv);
                const int error = errno;
                (void)!::write(fromProgram[1], &error, sizeof error);
                ::_exit(127);
            } else {
                if (started.id < 0) started.error = errno;
                ::close(fromProgram[1]);
                if (readOnce(fromProgram[0], &started.error, sizeof started.error) != 0 &&
                    started.error != 0) {
                    started.id = -1;
                }
            }
            const ssize_t written = ::write(toStarter[1], &started, sizeof started);
            ::_exit(written == sizeof started ? 0 : 1);
        }
        ::close(toStarter[1]);
        Started started;
        if (readOnce(toStarter[0], &started, sizeof started) != sizeof started) {
            started = Started{-1, ECHILD};
        }
        ::close(toStarter[0]);
        int status = 0;
        while (::waitpid(middle, &status, 0) < 0 && errno == EINTR) {
        }
        return started;
    }

    // One read of a few bytes, again after a signal: what it got.
    static ssize_t readOnce(int fd, void* into, size_t size) {
        ssize_t got = 0;
        do {
            got = ::read(fd, into, size);
        } while (got < 0 && errno == EINTR);
        return got;
    }

    std::mutex lock_;
    std::map<int64_t, Walk> snapshots_;
    int64_t nextHandle_ = 1;
};

}  // namespace

ProcessPort& systemProcesses() {
    static PosixProcesses processes;
    return processes;
}

}  // namespace ostrel::platform
