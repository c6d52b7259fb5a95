// Main on a fresh apartment with the real adapters: binds the language texts,
// makes the file system object, proves the registry wrapper, starts
// diagnostics and takes the machine facts snapshot.
#include <benchmark/benchmark.h>

#include "component/startup.h"
#include "foundation/globals.h"
#include "platform/ports.h"

namespace {

using ostrel::apartment;
using ostrel::OstrelGlobals;

void BM_Main(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        apartment() = OstrelGlobals(ostrel::platform::defaultPorts());
        state.ResumeTiming();
        ostrel::Main();
        if (apartment().startState != ostrel::StartState::Started) {
            state.SkipWithError("Main failed (is Ostrel.en.txt beside the program?)");
            break;
        }
    }
    apartment() = OstrelGlobals(ostrel::platform::defaultPorts());
}
BENCHMARK(BM_Main)->Unit(benchmark::kMicrosecond)->Repetitions(10)->ReportAggregatesOnly(true);

}  // namespace
