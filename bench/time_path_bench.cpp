// gfdatConvertToGMT per call beside the bare conversion with the C library's
// calls (the offset in force now from localtime_r, then gmtime_r), and
// gfstrGetLongPathFilename on an existing path beside the bare stat() the
// Linux adapter makes. Real ports, the zone of the environment (TZ).
#include <benchmark/benchmark.h>
#include <sys/stat.h>

#include <ctime>
#include <filesystem>
#include <string>

#include "foundation/globals.h"
#include "foundation/paths.h"
#include "foundation/time_conversion.h"
#include "platform/adapters.h"

namespace {

using namespace ostrel;

constexpr double kDate = 45366.604166666664;  // 15 Mar 2024 14:30:00

void useRealPorts() {
    apartment() = OstrelGlobals(platform::defaultPorts());
}

void BM_ConvertToGMT(benchmark::State& state) {
    useRealPorts();
    for (auto _ : state) benchmark::DoNotOptimize(gfdatConvertToGMT(kDate));
}
BENCHMARK(BM_ConvertToGMT);

void BM_BareConvertToGMT(benchmark::State& state) {
    for (auto _ : state) {
        std::tm fields{};
        fields.tm_year = 2024 - 1900;
        fields.tm_mon = 2;
        fields.tm_mday = 15;
        fields.tm_hour = 14;
        fields.tm_min = 30;
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        localtime_r(&now, &local);
        const std::time_t gmt = timegm(&fields) - local.tm_gmtoff;
        std::tm result{};
        benchmark::DoNotOptimize(gmtime_r(&gmt, &result));
    }
}
BENCHMARK(BM_BareConvertToGMT);

std::string existingPath() {
    return std::filesystem::temp_directory_path().string();
}

void BM_GetLongPathFilename(benchmark::State& state) {
    useRealPorts();
    const std::string path = existingPath();
    for (auto _ : state) benchmark::DoNotOptimize(gfstrGetLongPathFilename(path));
}
BENCHMARK(BM_GetLongPathFilename);

void BM_BareLongPath(benchmark::State& state) {
    const std::string path = existingPath();
    for (auto _ : state) {
        struct stat info {};
        benchmark::DoNotOptimize(::stat(path.c_str(), &info));
    }
}
BENCHMARK(BM_BareLongPath);

}  // namespace
