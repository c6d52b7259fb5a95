#include "com/module.h"

#include <atomic>

extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace ostrel::com {

namespace {
std::atomic<long> locks{0};
}  // namespace

HMODULE moduleHandle() noexcept {
    return reinterpret_cast<HMODULE>(&__ImageBase);
}

std::wstring modulePath() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(moduleHandle(), path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) return {};
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

void pinModule() noexcept {
    static const bool pinned = [] {
        HMODULE self = nullptr;
        return GetModuleHandleExW(
                   GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                   reinterpret_cast<LPCWSTR>(&__ImageBase), &self) != FALSE;
    }();
    static_cast<void>(pinned);
}

void lockModule() noexcept {
    ++locks;
}
void unlockModule() noexcept {
    --locks;
}
bool moduleInUse() noexcept {
    return locks.load() != 0;
}

}  // namespace ostrel::com
