// The settings file and its lock, with the real adapters (pugixml, the
// shared-memory lock, the file system), each beside the bare work it stands
// on, measured in turns of equal batches so that both see the same disk:
//   first read   - a fresh document loaded under the lock, per read
//   later read   - the same key again, from memory (target: under 1 us)
//   save         - reload, change and write under the lock, beside a plain
//                  rewrite of the same bytes into the same file (target: 3x)
//   lock         - GetMutex and ReleaseMutexHandle uncontended, beside the
//                  bare shm_open/mmap/lock/unlock/munmap (target: 1.5x)
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "fakes/test_apartment.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/named_mutex.h"
#include "foundation/settings.h"
#include "platform/adapters.h"

namespace {

using namespace ostrel;
using Clock = std::chrono::steady_clock;

constexpr int kBatch = 50;
const std::string kFile =
    "<Settings><OutputDebugString>1</OutputDebugString><Colour>blue</Colour>"
    "<ProgramReadyTimeout>500</ProgramReadyTimeout></Settings>";

// A test apartment on the real lock, with the settings file in place.
struct Setup {
    Setup() {
        fx.ports.namedMutex = &platform::systemNamedMutex();
        fx.install();
        apartment().gobjFileSystem = makeRef<FileSystemObject>(fx.ports.fileSystem);
        fx.writeSettings(kFile);
    }
    fakes::TestApartment fx;
};

double seconds(Clock::duration d) {
    return std::chrono::duration<double>(d).count();
}

void BM_FirstRead(benchmark::State& state) {
    Setup setup;
    for (auto _ : state) {
        apartment().gobjSettingsDoc.reset();
        benchmark::DoNotOptimize(gfstrGetApplicationSetting("Ostrel", "Settings", "Colour", ""));
    }
}
BENCHMARK(BM_FirstRead)->Unit(benchmark::kMicrosecond);

void BM_LaterRead(benchmark::State& state) {
    Setup setup;
    gfstrGetApplicationSetting("Ostrel", "Settings", "Colour", "");
    for (auto _ : state) {
        benchmark::DoNotOptimize(gfstrGetApplicationSetting("Ostrel", "Settings", "Colour", ""));
    }
}
BENCHMARK(BM_LaterRead)->Unit(benchmark::kNanosecond);

void rewritePlain(const std::string& path, const std::string& text) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_TRUNC | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) return;
    benchmark::DoNotOptimize(::write(fd, text.data(), text.size()));
    ::close(fd);
}

void BM_SaveAgainstPlainRewrite(benchmark::State& state) {
    Setup setup;
    const std::string plain = setup.fx.dataFile("plain.xml");
    Clock::duration saveTime{}, plainTime{};
    int64_t saves = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        for (int i = 0; i < kBatch; ++i)
            gsubSaveApplicationSetting("Ostrel", "Settings", "Colour", "red");
        const auto middle = Clock::now();
        for (int i = 0; i < kBatch; ++i) rewritePlain(plain, kFile);
        const auto end = Clock::now();
        saveTime += middle - start;
        plainTime += end - middle;
        saves += kBatch;
    }
    state.counters["saves_per_s"] = static_cast<double>(saves) / seconds(saveTime);
    state.counters["plain_per_s"] = static_cast<double>(saves) / seconds(plainTime);
    state.counters["ratio"] = seconds(saveTime) / seconds(plainTime);
}
BENCHMARK(BM_SaveAgainstPlainRewrite)
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);

struct BareShared {
    uint32_t state;
    pthread_mutex_t mutex;
};

// What one take and release costs with nothing around the system calls.
void bareTakeAndRelease(const char* name) {
    const int fd = ::shm_open(name, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    struct stat info {};
    ::fstat(fd, &info);
    void* memory = ::mmap(nullptr, sizeof(BareShared), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    ::close(fd);
    auto* shared = static_cast<BareShared*>(memory);
    timespec deadline{};
    ::clock_gettime(CLOCK_REALTIME, &deadline);
    deadline.tv_sec += 3;
    pthread_mutex_timedlock(&shared->mutex, &deadline);
    pthread_mutex_unlock(&shared->mutex);
    ::munmap(memory, sizeof(BareShared));
}

void BM_LockAgainstBareCalls(benchmark::State& state) {
    Setup setup;
    // The bare side gets a lock of its own, made as the adapter makes one.
    const std::string bareName = "/ostrel-bench-bare-" + std::to_string(::getpid());
    {
        const int fd = ::shm_open(bareName.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (fd < 0 || ::ftruncate(fd, sizeof(BareShared)) != 0) {
            state.SkipWithError("no shared memory");
            return;
        }
        void* memory =
            ::mmap(nullptr, sizeof(BareShared), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        ::close(fd);
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
        pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutex_init(&static_cast<BareShared*>(memory)->mutex, &attributes);
        ::munmap(memory, sizeof(BareShared));
    }
    Clock::duration guardTime{}, bareTime{};
    int64_t takes = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        for (int i = 0; i < kBatch; ++i) {
            int32_t handle = GetMutex("ostrel-bench-guard", 3000);
            ReleaseMutexHandle(handle);
        }
        const auto middle = Clock::now();
        for (int i = 0; i < kBatch; ++i) bareTakeAndRelease(bareName.c_str());
        const auto end = Clock::now();
        guardTime += middle - start;
        bareTime += end - middle;
        takes += kBatch;
    }
    ::shm_unlink(bareName.c_str());
    state.counters["guard_ns"] = seconds(guardTime) * 1e9 / static_cast<double>(takes);
    state.counters["bare_ns"] = seconds(bareTime) * 1e9 / static_cast<double>(takes);
    state.counters["ratio"] = seconds(guardTime) / seconds(bareTime);
}
BENCHMARK(BM_LockAgainstBareCalls)
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);

}  // namespace
