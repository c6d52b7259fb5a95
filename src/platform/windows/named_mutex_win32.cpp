// The kernel's named mutex. The name goes to the A call in the ANSI code
// page, with no namespace prefix, so it lives in the caller's logon session.
// Kernel handles fit in 32 bits (the system keeps them so for 32-bit code),
// which is how the guard hands them on.
#include <windows.h>

#include <cstdint>
#include <string>

#include "platform/adapters.h"
#include "platform/windows/ansi_win32.h"

namespace ostrel::platform {

namespace {

HANDLE handleOf(int32_t handle) {
    return reinterpret_cast<HANDLE>(static_cast<intptr_t>(handle));
}

class Win32NamedMutex final : public NamedMutexPort {
  public:
    int32_t create(std::string_view name) override {
        const std::string ansi = toAnsi(name);
        HANDLE mutex = CreateMutexA(nullptr, FALSE, ansi.c_str());
        return static_cast<int32_t>(reinterpret_cast<intptr_t>(mutex));
    }

    uint32_t wait(int32_t handle, int32_t timeoutMs) override {
        // A negative time-out is INFINITE and its like, as the kernel reads it.
        return WaitForSingleObject(handleOf(handle), static_cast<DWORD>(timeoutMs));
    }

    bool release(int32_t handle) override { return ReleaseMutex(handleOf(handle)) != FALSE; }
    bool close(int32_t handle) override { return CloseHandle(handleOf(handle)) != FALSE; }
    int32_t lastError() override { return static_cast<int32_t>(GetLastError()); }

    std::string errorText(int32_t code) override {
        std::string buffer(257, '\0');
        const DWORD length =
            FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, static_cast<DWORD>(code), 0,
                           buffer.data(), 256, nullptr);
        return fromAnsi(std::string_view(buffer).substr(0, length));
    }
};

}  // namespace

NamedMutexPort& systemNamedMutex() {
    static Win32NamedMutex mutex;
    return mutex;
}

}  // namespace ostrel::platform
