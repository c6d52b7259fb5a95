// The operating system's version, processor and naming calls, as records
// shaped like the Windows ones. Linux fills them from uname, /proc/cpuinfo,
// sysconf and the resolver (see system_info_posix.cpp for the mapping).
#pragma once

#include <cstdint>
#include <string>

namespace ostrel::platform {

// OSVERSIONINFOEX in its ANSI form; fields as the component reads them
// (signed, as the run time holds them).
struct OsVersionRecord {
    int32_t dwOSVersionInfoSize = 0;
    int32_t dwMajorVersion = 0;
    int32_t dwMinorVersion = 0;
    int32_t dwBuildNumber = 0;
    int32_t dwPlatformId = 0;
    std::string szCSDVersion;  // the 128-character buffer, possibly NUL-padded
    int16_t wServicePackMajor = 0;
    int16_t wServicePackMinor = 0;
    int16_t wSuiteMask = 0;
    uint8_t wProductType = 0;
};

// SYSTEM_INFO, the fields the component reads.
struct SystemRecord {
    int16_t wProcessorArchitecture = 0;  // 0 x86, 9 x64, 12 ARM64
    int32_t dwActiveProcessorMask = 0;
    int32_t dwNumberOfProcessors = 0;
    int32_t dwProcessorType = 0;
    int16_t wProcessorLevel = 0;
    int16_t wProcessorRevision = 0;
};

class SystemInfoPort {
  public:
    virtual ~SystemInfoPort() = default;
    // GetVersionExA: true on success; the record is filled as far as the call got.
    virtual bool getVersionEx(OsVersionRecord& record) = 0;
    virtual void getSystemInfo(SystemRecord& record) = 0;
    virtual void getNativeSystemInfo(SystemRecord& record) = 0;
    // GetComputerNameExA / GetUserNameExA with a caller-made buffer (runs of
    // NUL) and size, as the calls take them; true on success. The buffer is
    // handed back as the call left it.
    virtual bool computerNameEx(int32_t format, std::string& buffer, uint32_t& size) = 0;
    virtual bool userNameEx(int32_t format, std::string& buffer, uint32_t& size) = 0;
};

}  // namespace ostrel::platform
