// gsubDebugPrint with the log on (real file system, clock and locale; the
// debugger stream silent as on Linux by default), beside a plain append of
// the same line to a file opened and closed each time. The two run in turns
// of equal batches, so both see the same disk; "ratio" is the log's time over
// the plain append's (target: within 1.3).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "fakes/fake_ports.h"
#include "fakes/test_apartment.h"
#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "platform/adapters.h"

namespace {

using namespace ostrel;
using Clock = std::chrono::steady_clock;

constexpr int kBatch = 100;
constexpr std::string_view kText =
    "[wncSoftwareProducts.ReadAll] Part number 'qp-00042' of 'Product00042' is there already: "
    "dropped";

void appendPlain(const std::string& path, std::string_view line) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (fd < 0) return;
    benchmark::DoNotOptimize(::write(fd, line.data(), line.size()));
    ::close(fd);
}

void BM_DebugPrintAgainstPlainAppend(benchmark::State& state) {
    const auto folder = std::filesystem::temp_directory_path() / "ostrel-bench-log";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder / "QUORL");
    fakes::writeBytes(folder / "QUORL" / "debug_ot", "");

    fakes::FakeEnvironment environment;
    environment.variables["ProgramData"] = fakes::utf8Of(folder);
    platform::Ports ports = platform::defaultPorts();
    ports.environment = &environment;
    apartment() = OstrelGlobals(ports);
    apartment().gobjFileSystem = makeRef<FileSystemObject>(ports.fileSystem);
    gsubInitDebug("", 0);
    if (apartment().gstrLogFilename.empty()) {
        state.SkipWithError("the log did not start");
        return;
    }

    const std::string plainFile = fakes::utf8Of(folder / "plain.log");
    const std::string plainLine = "14:07:09 05-Mar-2024 " + std::string(kText) + "\r\n";
    Clock::duration logTime{}, plainTime{};
    int64_t lines = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        for (int i = 0; i < kBatch; ++i) gsubDebugPrint(kText);
        const auto middle = Clock::now();
        for (int i = 0; i < kBatch; ++i) appendPlain(plainFile, plainLine);
        const auto end = Clock::now();
        logTime += middle - start;
        plainTime += end - middle;
        lines += kBatch;
    }

    const double logSeconds = std::chrono::duration<double>(logTime).count();
    const double plainSeconds = std::chrono::duration<double>(plainTime).count();
    state.counters["log_lines_per_s"] = static_cast<double>(lines) / logSeconds;
    state.counters["plain_lines_per_s"] = static_cast<double>(lines) / plainSeconds;
    state.counters["ratio"] = logSeconds / plainSeconds;

    apartment() = OstrelGlobals(platform::defaultPorts());
    std::filesystem::remove_all(folder);
}
BENCHMARK(BM_DebugPrintAgainstPlainAppend)
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

}  // namespace
