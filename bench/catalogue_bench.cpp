// ReadAll over a Toolbar key of 10,000 products, beside a bare walk of the
// same keys that opens each sub-key and reads its eleven values without
// building records. The .reg file and the table of part numbers are
// generated here. peak_rss_mb is the process's peak resident size so far.
#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "bare_walk.h"
#include "catalogue/catalogue_factory.h"
#include "catalogue/software_product.h"
#include "catalogue/software_products.h"
#include "component/startup.h"
#include "fakes/test_apartment.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/wnc_registry.h"
#include "platform/registry_port.h"

namespace ostrel {
namespace {

constexpr int kProducts = 10000;

double peakRssMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;  // kilobytes on Linux
}

std::string hex8(int value) {
    char text[9];
    std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(value));
    return text;
}

// An apartment on the generated registry. Made inside each benchmark: it has
// to go before this thread's globals do.
class Catalogue {
  public:
    Catalogue() {
        std::vector<int> numbers(kProducts);
        std::iota(numbers.begin(), numbers.end(), 1);
        std::shuffle(numbers.begin(), numbers.end(), std::mt19937(42));

        std::string reg =
            "Windows Registry Editor Version 5.00\r\n\r\n"
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar]\r\n\r\n";
        std::string table;
        for (int i = 0; i < kProducts; ++i) {
            const std::string partNumber = "QRL-" + std::to_string(numbers[static_cast<size_t>(i)]);
            table += partNumber + "\n";
            reg += "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Product " + std::to_string(i) +
                   "]\r\n";
            reg += "\"DisplayName\"=\"Quorl Product " + std::to_string(i) + "\"\r\n";
            reg += "\"ApplicationPath\"=\"C:\\\\Program Files\\\\QUORL\\\\Product " +
                   std::to_string(i) + "\"\r\n";
            reg += "\"PartNumber\"=\"" + partNumber + "\"\r\n";
            reg += "\"VersionMajor\"=dword:" + hex8(i % 20) + "\r\n";
            reg += "\"VersionMinor\"=dword:" + hex8(i % 100) + "\r\n";
            reg += "\"VersionRevisionMajor\"=dword:" + hex8(i % 7) + "\r\n";
            reg += "\"VersionRevisionMinor\"=dword:" + hex8(i % 31) + "\r\n";
            reg += "\"Label\"=\"Product " + std::to_string(i) + "\"\r\n";
            reg += "\"IconFile\"=\"product.ico\"\r\n";
            reg += "\"Revision\"=\"R" + std::to_string(i % 5) + "\"\r\n";
            reg += "\"Tooltip\"=\"Starts product " + std::to_string(i) + "\"\r\n\r\n";
        }
        const auto regFile = apartment_.programData / "toolbar-10000.reg";
        const auto tableFile = apartment_.programData / "part-numbers.txt";
        fakes::writeBytes(regFile, reg);
        fakes::writeBytes(tableFile, table);
        apartment_.registry.loadFile(fakes::utf8Of(regFile));
        apartment_.environment.variables["OSTREL_PART_NUMBERS"] = fakes::utf8Of(tableFile);
        ensureStarted();
    }

  private:
    fakes::TestApartment apartment_;
};

void BM_BareWalk(benchmark::State& state) {
    const Catalogue catalogue;
    int64_t subKeys = 0;
    size_t sink = 0;
    for (auto _ : state) {
        subKeys += bench::bareWalk(sink);
    }
    benchmark::DoNotOptimize(sink);
    state.counters["sub_keys"] =
        static_cast<double>(subKeys) / static_cast<double>(state.iterations());
    state.counters["peak_rss_mb"] = peakRssMegabytes();
}
BENCHMARK(BM_BareWalk)->Unit(benchmark::kMillisecond);

void BM_ReadAll(benchmark::State& state) {
    const Catalogue catalogue;
    int32_t count = 0;
    for (auto _ : state) {
        Ref<wncSoftwareProducts> products = newSoftwareProducts();
        products->ReadAll();
        count = products->Count();
        state.PauseTiming();
        // Break the record <-> collection cycle so each round starts afresh.
        for (const auto& product : products->items()) product->Parent(nullptr);
        products.reset();
        state.ResumeTiming();
    }
    state.counters["products"] = count;
    state.counters["peak_rss_mb"] = peakRssMegabytes();
}
BENCHMARK(BM_ReadAll)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ostrel
