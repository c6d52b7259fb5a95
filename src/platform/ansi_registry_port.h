// The registry through its A-form calls, for the routines that talk to it
// straight rather than through the registry wrapper: RegOpenKeyExA,
// RegQueryValueExA and RegCloseKey, each with the system's status code
// (0 success, 2 not found, 5 access denied, 234 more data).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel::platform {

class AnsiRegistryPort {
  public:
    virtual ~AnsiRegistryPort() = default;
    // hive is a predefined key as its 32-bit number (HKEY_LOCAL_MACHINE is
    // 0x80000002); the sub-key's name goes through the ANSI code page. On
    // success key receives the open handle; otherwise it stays as it was.
    virtual int32_t openKeyEx(int32_t hive, std::string_view subKey, uint32_t access,
                              int64_t& key) = 0;
    // buffer holds the bytes handed to the call (its length is what the call
    // may fill) and receives them as the call left them, in the ANSI code
    // page; size is the buffer's size on the way in and the value's on the
    // way out; type receives the value's type.
    virtual int32_t queryValueEx(int64_t key, std::string_view valueName, uint32_t& type,
                                 std::string& buffer, uint32_t& size) = 0;
    virtual int32_t closeKey(int64_t key) = 0;
    // Bytes of the ANSI code page as text.
    virtual std::string fromAnsi(std::string_view bytes) = 0;
};

}  // namespace ostrel::platform
