// Loading a large .reg export: 10,000 product-like keys of 10 values each,
// as a version 5 file in UTF-16LE and as a REGEDIT4 file in UTF-8; and the
// peak memory of loading a 200 MB file (OSTREL_BENCH_LARGE_MIB sets another
// size), generated here: of about 1.8 million keys, and of one key rewritten.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/common/registry_regfile.h"
#include "runtime/text.h"

namespace {

constexpr int kKeys = 10000;
constexpr int kValuesPerKey = 10;

std::string exportText(bool version5) {
    std::string text =
        version5 ? "Windows Registry Editor Version 5.00\r\n\r\n" : "REGEDIT4\r\n\r\n";
    char line[256];
    for (int i = 0; i < kKeys; ++i) {
        std::snprintf(line, sizeof line,
                      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Product%05d]\r\n"
                      "\"ProductName\"=\"QUORL Product %d\"\r\n"
                      "\"PartNumber\"=\"QP-%05d\"\r\n",
                      i, i, i);
        text += line;
        std::snprintf(
            line, sizeof line,
            "\"Path\"=\"C:\\\\Program Files\\\\QUORL\\\\Product%05d\\\\bin\\\\app.exe\"\r\n"
            "\"InstallDir\"=\"C:\\\\Program Files\\\\QUORL\\\\Product%05d\\\\\"\r\n",
            i, i);
        text += line;
        std::snprintf(line, sizeof line,
                      "\"Version\"=\"14.15.%d.0\"\r\n"
                      "\"Language\"=\"en\"\r\n"
                      "\"Publisher\"=\"QUORL\"\r\n"
                      "\"Major\"=dword:0000000e\r\n"
                      "\"Minor\"=dword:0000000f\r\n"
                      "\"Build\"=dword:%08x\r\n\r\n",
                      i, static_cast<unsigned>(i));
        text += line;
    }
    return text;
}

std::string writeExport(bool version5) {
    const std::string text = exportText(version5);
    const auto path = std::filesystem::temp_directory_path() /
                      (version5 ? "ostrel_bench_v5_utf16.reg" : "ostrel_bench_regedit4.reg");
    std::ofstream out(path, std::ios::binary);
    if (version5) {
        out << "\xFF\xFE";
        for (char16_t unit : ostrel::toUtf16(text)) {
            out.put(static_cast<char>(unit & 0xFF));
            out.put(static_cast<char>(unit >> 8));
        }
    } else {
        out << text;
    }
    return path.string();
}

// A field of /proc/self/status in kB (VmHWM); 0 where there is none.
double statusKb(const char* field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    const std::string prefix = std::string(field) + ":";
    while (std::getline(status, line)) {
        if (line.rfind(prefix, 0) == 0) return std::stod(line.substr(prefix.size()));
    }
    return 0;
}

void loadExport(benchmark::State& state) {
    const bool version5 = state.range(0) != 0;
    const std::string path = writeExport(version5);
    state.SetLabel(version5 ? "version 5, UTF-16LE" : "REGEDIT4, UTF-8");

    // Memory of one load, measured outside the timed loop: the heap a loaded
    // registry keeps, and the process's peak resident size while loading
    // (writing 5 to clear_refs restarts VmHWM from the current size).
    const auto heapBefore = mallinfo2().uordblks;
    { std::ofstream("/proc/self/clear_refs") << "5"; }
    double heldMiB = 0;
    double peakMiB = 0;
    {
        ostrel::platform::RegFileRegistry registry;
        registry.loadFile(path);
        heldMiB = static_cast<double>(mallinfo2().uordblks - heapBefore) / (1024.0 * 1024.0);
        peakMiB = statusKb("VmHWM") / 1024;
    }

    for (auto _ : state) {
        ostrel::platform::RegFileRegistry registry;
        registry.loadFile(path);
        benchmark::DoNotOptimize(registry);
    }

    const auto loads = static_cast<double>(state.iterations());
    state.counters["keys/s"] = benchmark::Counter(loads * kKeys, benchmark::Counter::kIsRate);
    state.counters["values/s"] =
        benchmark::Counter(loads * kKeys * kValuesPerKey, benchmark::Counter::kIsRate);
    state.counters["held_MiB"] = heldMiB;
    state.counters["peak_rss_MiB"] = peakMiB;
    state.counters["file_MiB"] =
        static_cast<double>(std::filesystem::file_size(path)) / (1024.0 * 1024.0);
    std::filesystem::remove(path);
}
BENCHMARK(loadExport)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

// A REGEDIT4 file of about `mebibytes`, written a piece at a time: many
// product keys of two values each (about 114 bytes a key), or one key whose
// values are written again and again.
std::string writeLargeExport(bool oneKey, double mebibytes) {
    const auto path = std::filesystem::temp_directory_path() /
                      (oneKey ? "ostrel_bench_one_key.reg" : "ostrel_bench_many_keys.reg");
    std::ofstream out(path, std::ios::binary);
    const auto target = static_cast<std::uintmax_t>(mebibytes * 1024 * 1024);
    std::string piece = "REGEDIT4\r\n\r\n";
    if (oneKey) piece += "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Product]\r\n";
    char line[256];
    std::uintmax_t written = 0;
    for (int i = 0; written < target; ++i) {
        if (oneKey) {
            std::snprintf(line, sizeof line,
                          "\"PartNumber\"=\"QRL-%07d\"\r\n\"Label\"=\"Product %d\"\r\n", i % 100,
                          i);
        } else {
            std::snprintf(line, sizeof line,
                          "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Product %07d]\r\n"
                          "\"PartNumber\"=\"QRL-%07d\"\r\n\"Label\"=\"Product %d\"\r\n\r\n",
                          i, i, i);
        }
        piece += line;
        if (piece.size() > 1 << 20) {
            out << piece;
            written += piece.size();
            piece.clear();
        }
    }
    out << piece;
    return path.string();
}

void loadLargeFile(benchmark::State& state) {
    const bool oneKey = state.range(0) != 0;
    const char* size = std::getenv("OSTREL_BENCH_LARGE_MIB");
    const std::string path = writeLargeExport(oneKey, size ? std::atof(size) : 200.0);
    state.SetLabel(oneKey ? "one key rewritten" : "many keys");
    const double fileMiB =
        static_cast<double>(std::filesystem::file_size(path)) / (1024.0 * 1024.0);
    malloc_trim(0);  // what an earlier run freed is no part of this one
    const double baseMiB = statusKb("VmRSS") / 1024;
    { std::ofstream("/proc/self/clear_refs") << "5"; }
    for (auto _ : state) {
        ostrel::platform::RegFileRegistry registry;
        registry.loadFile(path);
        benchmark::DoNotOptimize(registry);
    }
    const double peakMiB = statusKb("VmHWM") / 1024;
    state.counters["file_MiB"] = fileMiB;
    state.counters["peak_rss_MiB"] = peakMiB;
    // The target: the load's own peak within twice the file's size.
    state.counters["peak_over_file"] = (peakMiB - baseMiB) / fileMiB;
    std::filesystem::remove(path);
}
BENCHMARK(loadLargeFile)->Arg(0)->Arg(1)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
