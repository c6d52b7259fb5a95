// ReadAll over a Toolbar key of 10,000 products in the real registry, beside
// a bare walk of the same keys that opens each sub-key and reads its eleven
// values without building records: the Linux catalogue benchmark's
// comparison, through the Win32 adapters. Writes the keys under
// HKEY_LOCAL_MACHINE (an administrator on Windows) afresh each time and
// deletes them at the end; a Toolbar key it didn't write itself is left alone
// and nothing is run. The table of part numbers goes to the temp folder.
// Prints the median of the runs after one run of each that isn't counted.
// Usage: ostrel_catalogue_registry_bench [runs]

#include <windows.h>
// psapi.h takes its types from windows.h
#include <psapi.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "bare_walk.h"
#include "catalogue/catalogue_factory.h"
#include "catalogue/software_product.h"
#include "catalogue/software_products.h"
#include "component/startup.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/wnc_registry.h"
#include "platform/registry_port.h"

namespace {

using namespace ostrel;

constexpr int kProducts = 10000;
constexpr const wchar_t* kQuorl = L"SOFTWARE\\QUORL";
constexpr const wchar_t* kToolbar = L"SOFTWARE\\QUORL\\Toolbar";
constexpr const wchar_t* kMarker = L"OstrelBenchmark";  // a value on the Toolbar key
using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

bool setString(HKEY key, const wchar_t* name, const std::wstring& value) {
    return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                          static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))) ==
           ERROR_SUCCESS;
}

bool setDword(HKEY key, const wchar_t* name, int value) {
    const auto data = static_cast<DWORD>(value);
    return RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&data),
                          sizeof data) == ERROR_SUCCESS;
}

bool keyExists(const wchar_t* path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

// Missing, or left by an earlier run of this program.
bool toolbarIsOurs() {
    return !keyExists(kToolbar) ||
           RegGetValueW(HKEY_LOCAL_MACHINE, kToolbar, kMarker, RRF_RT_REG_DWORD, nullptr, nullptr,
                        nullptr) == ERROR_SUCCESS;
}

// The products' keys, and their part numbers in the table file.
bool writeCatalogue(const std::filesystem::path& tableFile) {
    std::vector<int> numbers(kProducts);
    std::iota(numbers.begin(), numbers.end(), 1);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(42));
    std::ofstream table(tableFile, std::ios::binary);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kToolbar);
    HKEY toolbar = nullptr;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, kToolbar, 0, nullptr, 0, KEY_SET_VALUE, nullptr,
                        &toolbar, nullptr) != ERROR_SUCCESS) {
        return false;
    }
    const bool marked = setDword(toolbar, kMarker, 1);
    RegCloseKey(toolbar);
    if (!marked) return false;
    for (int i = 0; i < kProducts; ++i) {
        const std::wstring n = std::to_wstring(i);
        const std::wstring partNumber = L"QRL-" + std::to_wstring(numbers[static_cast<size_t>(i)]);
        table << "QRL-" << numbers[static_cast<size_t>(i)] << '\n';
        HKEY key = nullptr;
        if (RegCreateKeyExW(HKEY_LOCAL_MACHINE,
                            (std::wstring(kToolbar) + L"\\Product " + n).c_str(), 0, nullptr, 0,
                            KEY_SET_VALUE, nullptr, &key, nullptr) != ERROR_SUCCESS) {
            return false;
        }
        const bool written =
            setString(key, L"DisplayName", L"Quorl Product " + n) &&
            setString(key, L"ApplicationPath", L"C:\\Program Files\\QUORL\\Product " + n) &&
            setString(key, L"PartNumber", partNumber) && setDword(key, L"VersionMajor", i % 20) &&
            setDword(key, L"VersionMinor", i % 100) &&
            setDword(key, L"VersionRevisionMajor", i % 7) &&
            setDword(key, L"VersionRevisionMinor", i % 31) &&
            setString(key, L"Label", L"Product " + n) &&
            setString(key, L"IconFile", L"product.ico") &&
            setString(key, L"Revision", L"R" + std::to_wstring(i % 5)) &&
            setString(key, L"Tooltip", L"Starts product " + n);
        RegCloseKey(key);
        if (!written) return false;
    }
    return static_cast<bool>(table.flush());
}

// Median milliseconds of `runs` timed runs, after one that isn't counted.
// `untimed` follows each run, outside the time.
double medianMilliseconds(int runs, const std::function<void()>& body,
                          const std::function<void()>& untimed) {
    std::vector<double> spent;
    for (int run = -1; run < runs; ++run) {
        const auto start = Clock::now();
        body();
        if (run >= 0) spent.push_back(millisecondsSince(start));
        untimed();
    }
    std::sort(spent.begin(), spent.end());
    return spent[spent.size() / 2];
}

// Starts the apartment on the written catalogue and times both; 0 when each
// run saw every product.
int measure(int runs, const std::filesystem::path& tableFile) {
    SetEnvironmentVariableW(L"OSTREL_PART_NUMBERS", tableFile.c_str());
    ensureStarted();
    if (apartment().startState != StartState::Started) {
        std::fprintf(stderr, "the component didn't start\n");
        return 1;
    }
    size_t sink = 0;
    int subKeys = 0;
    const double walkMs = medianMilliseconds(
        runs, [&] { subKeys = bench::bareWalk(sink); }, [] {});
    Ref<wncSoftwareProducts> products;
    int32_t count = 0;
    const double readAllMs = medianMilliseconds(
        runs,
        [&] {
            products = newSoftwareProducts();
            products->ReadAll();
        },
        [&] {
            // Break the record <-> collection cycle so each run starts afresh.
            count = products->Count();
            for (const auto& product : products->items()) product->Parent(nullptr);
            products.reset();
        });
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    std::printf("median of %d runs\n", runs);
    std::printf("bare walk   %8.1f ms  (%d sub-keys, sink %zu)\n", walkMs, subKeys, sink);
    std::printf("ReadAll     %8.1f ms  (%d products)\n", readAllMs, count);
    std::printf("ratio ReadAll / bare walk  %.2f\n", readAllMs / walkMs);
    std::printf("peak working set %.1f MB\n",
                static_cast<double>(memory.PeakWorkingSetSize) / (1024.0 * 1024.0));
    return subKeys == kProducts && count == kProducts ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 9;
    const auto tableFile = std::filesystem::temp_directory_path() / "ostrel-bench-part-numbers.txt";
    if (!toolbarIsOurs()) {
        std::fprintf(stderr, "HKLM\\SOFTWARE\\QUORL\\Toolbar is there already: not touched\n");
        return 1;
    }
    const bool quorlWasThere = keyExists(kQuorl);
    const auto setupStart = Clock::now();
    int status = 1;
    if (writeCatalogue(tableFile)) {
        std::printf("setup: %d keys written in %.0f ms\n", kProducts,
                    millisecondsSince(setupStart));
        status = measure(runs, tableFile);
    } else {
        std::fprintf(stderr, "can't write HKLM\\SOFTWARE\\QUORL\\Toolbar or the table\n");
    }
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, quorlWasThere ? kToolbar : kQuorl);
    std::error_code ignored;
    std::filesystem::remove(tableFile, ignored);
    return status;
}
