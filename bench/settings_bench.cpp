// The settings file and its lock, with the real adapters (pugixml, the
// kernel file lock, the file system), each beside the bare work it stands
// on, measured in turns of equal batches so that both see the same disk:
//   first read   - a fresh document loaded under the lock, per read
//   later read   - the same key again, from memory (target: under 1 us)
//   save         - reload, change and write under the lock, beside a plain
//                  rewrite of the same bytes into the same file (target: 3x)
//   lock         - GetMutex and ReleaseMutexHandle uncontended, beside the
//                  bare calls on the open lock file (target: 1.5x)
#include <benchmark/benchmark.h>
#include <fcntl.h>
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

// What one take and release costs with nothing around the system calls,
// on a lock file that is open already: check that it is still there, take
// the kernel lock, read and write the owner record, clear it, let it go.
void bareTakeAndRelease(int fd) {
    struct stat info {};
    ::fstat(fd, &info);
    struct flock whole {};
    whole.l_type = F_WRLCK;
    ::fcntl(fd, F_OFD_SETLK, &whole);
    char record[8] = {};
    benchmark::DoNotOptimize(::pread(fd, record, sizeof record, 0));
    benchmark::DoNotOptimize(::pwrite(fd, record, sizeof record, 0));
    benchmark::DoNotOptimize(::pwrite(fd, record, sizeof record, 0));
    whole.l_type = F_UNLCK;
    ::fcntl(fd, F_OFD_SETLK, &whole);
}

void BM_LockAgainstBareCalls(benchmark::State& state) {
    Setup setup;
    // Both sides in one private folder in memory, as the user's runtime
    // folder is; the bare side on a file of its own.
    char folder[] = "/dev/shm/ostrel-bench-XXXXXX";
    if (!::mkdtemp(folder)) {
        state.SkipWithError("no folder");
        return;
    }
    ::setenv("XDG_RUNTIME_DIR", folder, 1);
    const std::string bareFile = std::string(folder) + "/bare.lock";
    const int bare = ::open(bareFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (bare < 0) {
        state.SkipWithError("no lock file");
        return;
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
        for (int i = 0; i < kBatch; ++i) bareTakeAndRelease(bare);
        const auto end = Clock::now();
        guardTime += middle - start;
        bareTime += end - middle;
        takes += kBatch;
    }
    ::close(bare);
    ::unsetenv("XDG_RUNTIME_DIR");
    std::filesystem::remove_all(folder);
    state.counters["guard_ns"] = seconds(guardTime) * 1e9 / static_cast<double>(takes);
    state.counters["bare_ns"] = seconds(bareTime) * 1e9 / static_cast<double>(takes);
    state.counters["ratio"] = seconds(guardTime) / seconds(bareTime);
}
BENCHMARK(BM_LockAgainstBareCalls)
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);

}  // namespace
