// WmiInfo through the Windows WMI adapter, beside the same queries run bare
// (bare_wmi.h), both in this process: the median of several runs, per call.
// Usage: ostrel_wmi_bench [runs]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include "bare_wmi.h"
#include "foundation/globals.h"
#include "machine/wmi_info.h"
#include "platform/adapters.h"

namespace {

double medianMicros(int runs, int calls, const std::function<void()>& body) {
    std::vector<double> perCall;
    for (int run = 0; run < runs; ++run) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < calls; ++i) body();
        const std::chrono::duration<double, std::micro> spent =
            std::chrono::steady_clock::now() - start;
        perCall.push_back(spent.count() / calls);
    }
    std::sort(perCall.begin(), perCall.end());
    return perCall[perCall.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    ostrel::apartment().ports = ostrel::platform::defaultPorts();
    const std::string moniker =
        "winmgmts:{impersonationLevel=impersonate}!\\\\.\\" + ostrel::gfstrGetWmiNamespace();
    size_t sink = 0;
    ostrel::WmiInfo();  // the first connection starts WMI
    const double info = medianMicros(runs, 2, [&] { sink += ostrel::WmiInfo().size(); });
    const double bare = medianMicros(runs, 2, [&] {
        sink += static_cast<size_t>(
            ostrel::bench::bareWmiQueries(ostrel::platform::systemWmi(), moniker, sink));
    });
    std::printf("WmiInfo %.0f us\nbare queries %.0f us\n(sink %zu)\n", info, bare, sink);
    return 0;
}
