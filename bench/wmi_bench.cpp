// WmiInfo on this machine's real WMI provider, beside the same queries run
// bare (bare_wmi.h): what the sections, converters and text cost on top.
#include <benchmark/benchmark.h>

#include "bare_wmi.h"
#include "foundation/globals.h"
#include "machine/wmi_info.h"
#include "platform/adapters.h"

namespace {

const std::string kMoniker = "winmgmts:{impersonationLevel=impersonate}!\\\\.\\";

void useRealPorts() {
    ostrel::apartment().ports = ostrel::platform::defaultPorts();
}

void BM_WmiInfo(benchmark::State& state) {
    useRealPorts();
    for (auto _ : state) benchmark::DoNotOptimize(ostrel::WmiInfo());
}
BENCHMARK(BM_WmiInfo)->Unit(benchmark::kMicrosecond);

void BM_BareWmiQueries(benchmark::State& state) {
    useRealPorts();
    size_t sink = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            ostrel::bench::bareWmiQueries(ostrel::platform::systemWmi(), kMoniker, sink));
    }
    benchmark::DoNotOptimize(sink);
}
BENCHMARK(BM_BareWmiQueries)->Unit(benchmark::kMicrosecond);

}  // namespace
