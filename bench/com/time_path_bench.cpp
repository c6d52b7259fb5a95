// gfdatConvertToGMT per call beside the bare conversion with the three
// calendar calls (SystemTimeToFileTime, LocalFileTimeToFileTime,
// FileTimeToSystemTime), and gfstrGetLongPathFilename on an existing path
// beside a bare GetLongPathNameA: the Linux time and path benchmark's rows,
// through the Win32 adapters. Prints the median ns per call of the runs.
// Usage: ostrel_time_path_bench [runs]

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/globals.h"
#include "foundation/paths.h"
#include "foundation/time_conversion.h"
#include "platform/adapters.h"

namespace {

using namespace ostrel;
using Clock = std::chrono::steady_clock;

constexpr double kDate = 45366.604166666664;  // 15 Mar 2024 14:30:00

volatile double sinkDate;
volatile size_t sinkSize;

double nanosecondsPerCall(int calls, const std::function<void()>& call) {
    const auto start = Clock::now();
    for (int i = 0; i < calls; ++i) call();
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count() / calls;
}

double median(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

// The routine and its baseline in turns, batch by batch, so that both see
// the same load of the machine: the median ns per call of each.
std::pair<double, double> compare(int runs, int calls, const std::function<void()>& routine,
                                  const std::function<void()>& bare) {
    routine();  // one call of each that isn't counted: the first use loads what it needs
    bare();
    std::vector<double> routineTimes, bareTimes;
    for (int run = 0; run < runs; ++run) {
        routineTimes.push_back(nanosecondsPerCall(calls, routine));
        bareTimes.push_back(nanosecondsPerCall(calls, bare));
    }
    return {median(routineTimes), median(bareTimes)};
}

}  // namespace

int main(int argc, char** argv) {
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    apartment() = OstrelGlobals(platform::defaultPorts());

    const auto [convert, bare] = compare(
        runs, 20000, [] { sinkDate = gfdatConvertToGMT(kDate); },
        [] {
            SYSTEMTIME time{2024, 3, 5, 15, 14, 30, 0, 0};
            FILETIME local{}, utc{};
            SystemTimeToFileTime(&time, &local);
            LocalFileTimeToFileTime(&local, &utc);
            FileTimeToSystemTime(&utc, &time);
            sinkSize = time.wHour;
        });
    std::printf("gfdatConvertToGMT: %.0f ns\nbare calendar calls: %.0f ns\n", convert, bare);

    char own[MAX_PATH];
    const DWORD length = GetModuleFileNameA(nullptr, own, MAX_PATH);
    const std::string path(own, length);
    const auto [longPath, bareLong] = compare(
        runs, 500, [&] { sinkSize = gfstrGetLongPathFilename(path).size(); },
        [&] {
            char buffer[MAX_PATH];
            sinkSize = GetLongPathNameA(path.c_str(), buffer, MAX_PATH);
        });
    std::printf("gfstrGetLongPathFilename: %.0f ns\nbare GetLongPathNameA: %.0f ns\n", longPath,
                bareLong);
    return 0;
}
