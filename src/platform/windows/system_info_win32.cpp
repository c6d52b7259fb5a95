// The system information calls on Windows, in their A forms. Names come back
// in the ANSI code page and are handed to the core as UTF-8.
#include <windows.h>
#define SECURITY_WIN32
#include <secext.h>

#include <string>

#include "platform/adapters.h"
#include "platform/system_info_port.h"
#include "platform/windows/ansi_win32.h"

namespace ostrel::platform {

namespace {

// The buffer as the call left it: its text up to the first NUL converted,
// what follows kept as it is.
void bufferToUtf8(std::string& buffer) {
    const auto nul = buffer.find('\0');
    if (nul == std::string::npos) {
        buffer = fromAnsi(buffer);
        return;
    }
    buffer = fromAnsi(buffer.substr(0, nul)) + buffer.substr(nul);
}

// A name call on the caller's buffer and size, as the A-form calls take
// them; the buffer comes back converted as far as its text goes.
template <class Call>
bool callWithBuffer(std::string& buffer, uint32_t& size, Call call) {
    if (buffer.size() < size) buffer.resize(size, '\0');
    unsigned long length = size;
    const bool ok = call(buffer.data(), &length);
    size = static_cast<uint32_t>(length);
    bufferToUtf8(buffer);
    return ok;
}

void copySystemInfo(const SYSTEM_INFO& info, SystemRecord& record) {
    record.wProcessorArchitecture = static_cast<int16_t>(info.wProcessorArchitecture);
    // The low 32 bits, as the run time's Long holds them.
    record.dwActiveProcessorMask =
        static_cast<int32_t>(static_cast<uint32_t>(info.dwActiveProcessorMask & 0xFFFFFFFFu));
    record.dwNumberOfProcessors = static_cast<int32_t>(info.dwNumberOfProcessors);
    record.dwProcessorType = static_cast<int32_t>(info.dwProcessorType);
    record.wProcessorLevel = static_cast<int16_t>(info.wProcessorLevel);
    record.wProcessorRevision = static_cast<int16_t>(info.wProcessorRevision);
}

class Win32SystemInfo final : public SystemInfoPort {
  public:
    bool getVersionEx(OsVersionRecord& record) override {
        OSVERSIONINFOEXA info{};
        info.dwOSVersionInfoSize = static_cast<DWORD>(record.dwOSVersionInfoSize);
        const BOOL ok = GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&info));
        record.dwMajorVersion = static_cast<int32_t>(info.dwMajorVersion);
        record.dwMinorVersion = static_cast<int32_t>(info.dwMinorVersion);
        record.dwBuildNumber = static_cast<int32_t>(info.dwBuildNumber);
        record.dwPlatformId = static_cast<int32_t>(info.dwPlatformId);
        record.szCSDVersion.assign(info.szCSDVersion, sizeof info.szCSDVersion);
        bufferToUtf8(record.szCSDVersion);
        record.wServicePackMajor = static_cast<int16_t>(info.wServicePackMajor);
        record.wServicePackMinor = static_cast<int16_t>(info.wServicePackMinor);
        record.wSuiteMask = static_cast<int16_t>(info.wSuiteMask);
        record.wProductType = info.wProductType;
        return ok != FALSE;
    }

    void getSystemInfo(SystemRecord& record) override {
        SYSTEM_INFO info{};
        GetSystemInfo(&info);
        copySystemInfo(info, record);
    }

    void getNativeSystemInfo(SystemRecord& record) override {
        // Looked up by name: the entry point is missing before XP.
        using NativeSystemInfo = void(WINAPI*)(LPSYSTEM_INFO);
        static const auto native = [] {
            const HMODULE kernel = GetModuleHandleA("kernel32.dll");
            const FARPROC proc = kernel ? GetProcAddress(kernel, "GetNativeSystemInfo") : nullptr;
            return reinterpret_cast<NativeSystemInfo>(reinterpret_cast<void (*)()>(proc));
        }();
        SYSTEM_INFO info{};
        if (native != nullptr) {
            native(&info);
        } else {
            GetSystemInfo(&info);
        }
        copySystemInfo(info, record);
    }

    bool computerNameEx(int32_t format, std::string& buffer, uint32_t& size) override {
        return callWithBuffer(buffer, size, [format](char* data, unsigned long* length) {
            return GetComputerNameExA(static_cast<COMPUTER_NAME_FORMAT>(format), data, length) !=
                   FALSE;
        });
    }

    bool userNameEx(int32_t format, std::string& buffer, uint32_t& size) override {
        return callWithBuffer(buffer, size, [format](char* data, unsigned long* length) {
            return GetUserNameExA(static_cast<EXTENDED_NAME_FORMAT>(format), data, length) != FALSE;
        });
    }
};

}  // namespace

SystemInfoPort& systemInfo() {
    static Win32SystemInfo port;
    return port;
}

}  // namespace ostrel::platform
